// The simulator over real loopback sockets: answers, state, fast sampling, faults, bad
// clients and many clients at once.

#include "sim/sim_host.h"
#include "sim_client.h"

#include <QElapsedTimer>
#include <QThread>
#include <atomic>
#include <cerrno>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

using namespace torv::sim;
using namespace torv::sim::test;

namespace {

SimOptions testOptions() {
    SimOptions o;
    o.inputsPeriodMs = 0;
    o.readTimeoutMs = 300;
    return o;
}

class SimServer : public ::testing::Test {
protected:
    void SetUp() override {
        ensureCoreApplication();
        port = host.start();
        ASSERT_NE(port, 0);
    }
    Reply ask(const QString& function, const QString& body = QStringLiteral("ID=4")) {
        return request(port, function, body);
    }
    // The answer is whole: status line, headers, a Content-Length that fits, closing tag.
    static void expectWhole(const Reply& r, const QString& function) {
        EXPECT_TRUE(r.closed);
        EXPECT_FALSE(r.reset);
        EXPECT_TRUE(r.raw.startsWith("HTTP/1.0 200 OK\r\n")) << r.raw.left(40).constData();
        EXPECT_TRUE(r.header().contains("\r\nContent-Type: text/xml"));
        const QByteArray len = "Content-Length: " + QByteArray::number(r.tagged().toUtf8().size());
        EXPECT_TRUE(r.header().contains(len)) << r.header().constData();
        EXPECT_TRUE(r.tagged().startsWith(QLatin1Char('<') + function + QLatin1Char('>')));
        EXPECT_TRUE(r.tagged().endsWith(QStringLiteral("</") + function + QLatin1Char('>')));
    }
    // Piece boundaries fall only where the given sizes put them (pieces may merge on the way).
    static void expectCutsAt(const Reply& r, QList<int> sizes) {
        QList<qsizetype> allowed;
        qsizetype at = 0;
        for (int i = 0; at < r.raw.size(); ++i) {
            at += sizes[std::min<qsizetype>(i, sizes.size() - 1)];
            allowed << at;
        }
        qsizetype cut = 0;
        for (const QByteArray& p : r.pieces) {
            cut += p.size();
            EXPECT_TRUE(allowed.contains(cut) || cut == r.raw.size()) << "cut at " << cut;
        }
    }

    SimHost host{testOptions()};
    quint16 port = 0;
};

TEST_F(SimServer, AnswersEveryFunctionInTheCardsForm) {
    const Reply status = ask(QStringLiteral("GetRTStatus"));
    expectWhole(status, QStringLiteral("GetRTStatus"));
    for (const char* name :
         {"WEIGHT", "A2D", "OUT_STATUS", "IN_STATUS", "INTEGRATION", "MAXIMUM_LOAD", "UNIT",
          "SP_STATUS", "ERROR_CODE", "ERROR_DESCRIPTION"})
        EXPECT_FALSE(status.element(QLatin1String(name)).isNull()) << name;
    EXPECT_EQ(status.element(QStringLiteral("WEIGHT")), "12.345");
    EXPECT_EQ(status.errorCode(), "0");

    for (const QString& f : Card::functions()) {
        const Reply r = ask(f, f.startsWith(QLatin1String("Set")) ? QStringLiteral("ID=1")
                                                                  : QStringLiteral("ID=4"));
        expectWhole(r, f);
        EXPECT_FALSE(r.errorCode().isNull()) << f.toStdString();
        EXPECT_FALSE(r.element(QStringLiteral("ERROR_DESCRIPTION")).isNull()) << f.toStdString();
    }
}

TEST_F(SimServer, CommandsChangeWhatLaterAnswersShow) {
    Reply r = ask(QStringLiteral("SetOutput"), QStringLiteral("ID=4&OUT_STATUS=16379"));
    EXPECT_EQ(r.element(QStringLiteral("OUT_STATUS_ECHO")), "16379");
    EXPECT_EQ(ask(QStringLiteral("GetRTStatus")).element(QStringLiteral("OUT_STATUS")), "16379");

    ask(QStringLiteral("SetSetpoints"),
        QStringLiteral("ID=1&SETPOINT_1=10&SETPOINT_2=2999.5&SETPOINT_3=-1&SETPOINT_4=-1"));
    r = ask(QStringLiteral("GetSetpoints"), QStringLiteral("ID=1"));
    EXPECT_EQ(r.element(QStringLiteral("SETPOINT_1")), "10");
    EXPECT_EQ(r.element(QStringLiteral("SETPOINT_2")), "2999.5");
    EXPECT_EQ(r.element(QStringLiteral("SETPOINT_3")), "-1");
    r = ask(QStringLiteral("GetRTStatus"));
    EXPECT_EQ(r.element(QStringLiteral("SP_STATUS")), "2"); // 12.345 >= 10
    EXPECT_EQ(r.element(QStringLiteral("OUT_STATUS")), QString::number(16379 & ~(1 << 10)));

    EXPECT_EQ(ask(QStringLiteral("SetD2A"), QStringLiteral("ID=1&D2A=128"))
                  .element(QStringLiteral("ANALOG_OUT")),
              "128");
    EXPECT_EQ(ask(QStringLiteral("SetIntegration"), QStringLiteral("ID=1&INTEGRATION=32"))
                  .element(QStringLiteral("INTEGRATION_ECHO")),
              "32");
    EXPECT_EQ(ask(QStringLiteral("GetRTStatus")).element(QStringLiteral("INTEGRATION")), "32");
    int analog = -1;
    host.withCard([&](Card& card) { analog = card.analogOut(); });
    EXPECT_EQ(analog, 128);

    // What tests set on the card shows on the wire.
    host.withCard([](Card& card) {
        card.setUnit(QStringLiteral("TON"));
        card.setInputs(0xFE);
    });
    r = ask(QStringLiteral("GetRTStatus"));
    EXPECT_EQ(r.element(QStringLiteral("UNIT")), "TON");
    EXPECT_EQ(r.element(QStringLiteral("IN_STATUS")), "254");
}

TEST_F(SimServer, KeepsALogOfEveryRequest) {
    host.clearRequests();
    ask(QStringLiteral("GetRTStatus"));
    ask(QStringLiteral("SetD2A"), QStringLiteral("ID=1&D2A=7"));
    ask(QStringLiteral("StopSample"), QString());
    const QList<RequestRecord> log = host.requests();
    ASSERT_EQ(log.size(), 3);
    EXPECT_EQ(log[0].function, "GetRTStatus");
    EXPECT_EQ(log[0].body, "ID=4");
    EXPECT_EQ(log[0].contentLength, 4);
    EXPECT_EQ(log[1].body, "ID=1&D2A=7");
    EXPECT_EQ(log[1].contentLength, 10);
    EXPECT_EQ(log[2].function, "StopSample");
    EXPECT_EQ(log[2].contentLength, 0);
    host.clearRequests();
    EXPECT_TRUE(host.requests().isEmpty());
}

TEST_F(SimServer, FastSamplingRunsFromStartToTheEndCode) {
    host.withCard([](Card& card) {
        card.setSignal({SignalKind::Ramp, 1000, 5000, 0});
        card.setIntegration(2);
    });
    host.clearRecordedSamples();
    ASSERT_EQ(ask(QStringLiteral("StartSample"), QString()).errorCode(), "0");
    EXPECT_EQ(ask(QStringLiteral("ch2_switch")).errorCode(), "200");

    QStringList got;
    int blocks = 0;
    bool stopSent = false;
    QElapsedTimer clock;
    clock.start();
    for (;;) {
        if (!stopSent && clock.elapsed() > 150) {
            EXPECT_EQ(ask(QStringLiteral("StopSample"), QString()).errorCode(), "0");
            stopSent = true;
        }
        const Reply r = ask(QStringLiteral("GetFastSampling"));
        expectWhole(r, QStringLiteral("GetFastSampling"));
        if (r.errorCode() == QLatin1String("200")) break;
        ASSERT_EQ(r.errorCode(), "0");
        int n = 0;
        while (!r.element(QStringLiteral("W%1").arg(n)).isNull())
            got << r.element(QStringLiteral("W%1").arg(n++));
        EXPECT_GE(n, 1) << "an answer while sampling runs carries at least one reading";
        EXPECT_LE(n, 500);
        EXPECT_TRUE(r.tagged().endsWith(QStringLiteral("</W%1></GetFastSampling>").arg(n - 1)));
        ASSERT_LT(++blocks, 1000);
    }
    EXPECT_TRUE(stopSent);
    EXPECT_GE(got.size(), 70); // 150 ms at a reading every 2 ms
    EXPECT_EQ(host.recordedSamples(), got);
    // The ramp rises from reading to reading.
    for (qsizetype k = 1; k < got.size(); ++k)
        ASSERT_GT(got[k].toDouble(), got[k - 1].toDouble()) << k;
    EXPECT_EQ(ask(QStringLiteral("ch2_switch")).errorCode(), "0");
    EXPECT_TRUE(ask(QStringLiteral("StopSample"), QString())
                    .tagged()
                    .contains(QStringLiteral("<ERROR_CODE>1</ERROR_CODE>")));
}

TEST_F(SimServer, ChunkedAndTrickledAnswersArriveInThosePieces) {
    host.injectFault({Fault::Kind::Chunked, {7, 30}, 20, 0, 1, {}});
    Reply r = ask(QStringLiteral("GetRTStatus"));
    expectWhole(r, QStringLiteral("GetRTStatus"));
    EXPECT_GT(r.pieces.size(), 2);
    expectCutsAt(r, {7, 30});

    host.injectFault({Fault::Kind::Trickle, {16}, 15, 0, 1, {}});
    QElapsedTimer clock;
    clock.start();
    r = ask(QStringLiteral("SetD2A"), QStringLiteral("ID=1&D2A=1"));
    expectWhole(r, QStringLiteral("SetD2A"));
    expectCutsAt(r, {16});
    EXPECT_GE(clock.elapsed(), (r.raw.size() / 16) * 15);

    r = ask(QStringLiteral("GetRTStatus")); // both faults are used up
    expectWhole(r, QStringLiteral("GetRTStatus"));
    EXPECT_TRUE(host.faults().isEmpty());
}

TEST_F(SimServer, SilentServerHoldsTheConnectionAndServesOthers) {
    host.injectFault({Fault::Kind::Silent, {}, 0, 0, 1, {}});
    Client quiet(port);
    ASSERT_TRUE(quiet.sendRequest(QStringLiteral("GetRTStatus"), QStringLiteral("ID=4")));
    EXPECT_TRUE(quiet.staysQuiet(400));
    expectWhole(ask(QStringLiteral("GetRTStatus")), QStringLiteral("GetRTStatus"));
    EXPECT_TRUE(quiet.staysQuiet(50));
    EXPECT_EQ(host.requests().first().function, "GetRTStatus"); // it was read
}

TEST_F(SimServer, RefusedConnectionsFailUntilTheFaultIsCleared) {
    host.injectFault({Fault::Kind::Refuse, {}, 0, 0, -1, {}});
    Client refused(port);
    EXPECT_FALSE(refused.connected());
    EXPECT_EQ(refused.connectError(), ECONNREFUSED);
    host.clearFaults();
    expectWhole(ask(QStringLiteral("GetRTStatus")), QStringLiteral("GetRTStatus"));
    EXPECT_EQ(host.port(), port);

    // Limited to a number of connections: those are reset without an answer.
    host.injectFault({Fault::Kind::Refuse, {}, 0, 0, 2, {}});
    for (int i = 0; i < 2; ++i) {
        const Reply r = ask(QStringLiteral("GetRTStatus"));
        EXPECT_TRUE(r.closed);
        EXPECT_TRUE(r.raw.isEmpty());
    }
    expectWhole(ask(QStringLiteral("GetRTStatus")), QStringLiteral("GetRTStatus"));
}

TEST_F(SimServer, ResetGarbageOversizeAndErrorCodeFaults) {
    host.injectFault({Fault::Kind::Reset, {20}, 0, 0, 1, {}});
    Reply r = ask(QStringLiteral("GetRTStatus"));
    EXPECT_TRUE(r.reset);
    EXPECT_LE(r.raw.size(), 20);

    host.injectFault({Fault::Kind::Garbage, {}, 0, 0, 1, {}});
    r = ask(QStringLiteral("GetRTStatus"));
    EXPECT_TRUE(r.closed);
    EXPECT_FALSE(r.raw.isEmpty());
    EXPECT_FALSE(r.raw.contains("</GetRTStatus"));
    EXPECT_FALSE(r.raw.startsWith("HTTP/"));

    host.injectFault({Fault::Kind::Oversize, {}, 0, 0, 1, {}});
    r = ask(QStringLiteral("GetRTStatus"));
    expectWhole(r, QStringLiteral("GetRTStatus"));
    EXPECT_GT(r.tagged().size(), 32767);
    EXPECT_EQ(r.element(QStringLiteral("WEIGHT")), "12.345");

    host.injectFault({Fault::Kind::ErrorCode, {}, 0, 9, 1, {}});
    r = ask(QStringLiteral("SetD2A"), QStringLiteral("ID=1&D2A=99"));
    expectWhole(r, QStringLiteral("SetD2A"));
    EXPECT_EQ(r.errorCode(), "9");
    EXPECT_EQ(r.element(QStringLiteral("ANALOG_OUT")), "0"); // not applied
}

TEST_F(SimServer, FaultsKeepToTheirFunctionAndCount) {
    host.injectFault({Fault::Kind::ErrorCode, {}, 0, 7, 2, QStringLiteral("SetD2A")});
    EXPECT_EQ(ask(QStringLiteral("GetRTStatus")).errorCode(), "0"); // neither hit nor counted
    EXPECT_EQ(ask(QStringLiteral("SetD2A"), QStringLiteral("ID=1&D2A=1")).errorCode(), "7");
    EXPECT_EQ(ask(QStringLiteral("GetSetpoints"), QStringLiteral("ID=1")).errorCode(), "0");
    EXPECT_EQ(ask(QStringLiteral("SetD2A"), QStringLiteral("ID=1&D2A=1")).errorCode(), "7");
    EXPECT_EQ(ask(QStringLiteral("SetD2A"), QStringLiteral("ID=1&D2A=1")).errorCode(), "0");

    // Until cleared, and only that function.
    host.injectFault({Fault::Kind::Refuse, {}, 0, 0, -1, QStringLiteral("GetRTStatus")});
    for (int i = 0; i < 3; ++i) {
        const Reply r = ask(QStringLiteral("GetRTStatus"));
        EXPECT_TRUE(r.raw.isEmpty());
        EXPECT_TRUE(r.closed);
    }
    EXPECT_EQ(ask(QStringLiteral("SetD2A"), QStringLiteral("ID=1&D2A=2")).errorCode(), "0");
    host.clearFaults();
    EXPECT_EQ(ask(QStringLiteral("GetRTStatus")).errorCode(), "0");
}

TEST_F(SimServer, BadClientsGetAnErrorOrAClosedConnectionAndOthersAreServed) {
    auto sendRaw = [&](const QByteArray& bytes, int timeoutMs = 2000) {
        Client c(port);
        c.send(bytes);
        return c.read(timeoutMs);
    };
    Reply r = sendRaw("GET / HTTP/1.0\r\n\r\n");
    EXPECT_EQ(r.errorCode(), "4");
    r = sendRaw("POST /GetWeight\r\nContent-Length: 0\r\n\r\n");
    expectWhole(r, QStringLiteral("GetWeight"));
    EXPECT_EQ(r.errorCode(), "3");
    r = sendRaw("POST /SetD2A\r\nContent-Length: 12\r\n\r\nID=1"); // never completes
    EXPECT_EQ(r.errorCode(), "6");
    EXPECT_FALSE(r.timedOut);
    r = sendRaw("POST /SetD2A\r\nContent-Length: 100000\r\n\r\n");
    EXPECT_EQ(r.errorCode(), "5");
    r = sendRaw("POST /GetRTStatus\r\n" + QByteArray(70000, 'x'));
    EXPECT_TRUE(r.closed);
    EXPECT_EQ(r.errorCode(), "5");
    r = sendRaw(QByteArray()); // connects and says nothing
    EXPECT_TRUE(r.closed);
    EXPECT_TRUE(r.raw.isEmpty());
    {
        Client gone(port); // connects and leaves at once
    }
    expectWhole(ask(QStringLiteral("GetRTStatus")), QStringLiteral("GetRTStatus"));
}

// The trailing CR LF of a request may come after the answer has gone out: the client still
// reads the whole answer instead of a reset connection.
TEST_F(SimServer, LateBytesFromTheClientDoNotCostItTheAnswer) {
    Client c(port);
    ASSERT_TRUE(c.send("POST /GetRTStatus\r\nContent-Length: 4\r\n\r\nID=4"));
    QThread::msleep(100); // the answer is sent and the server has ended its side
    ASSERT_TRUE(c.send("\r\n"));
    QThread::msleep(100);
    const Reply r = c.read();
    expectWhole(r, QStringLiteral("GetRTStatus"));
    expectWhole(ask(QStringLiteral("SetD2A"), QStringLiteral("ID=1&D2A=5")),
                QStringLiteral("SetD2A"));
    EXPECT_EQ(host.requests().size(), 2); // the late bytes were no request of their own
}

TEST_F(SimServer, ServesManyClientsAtOnce) {
    host.clearRequests();
    Client quiet(port); // an idle connection does not hold anyone up
    constexpr int kThreads = 8;
    constexpr int kEach = 25;
    std::atomic<int> good{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < kEach; ++i) {
                const QString body = QStringLiteral("ID=1&D2A=%1").arg((t * kEach + i) % 256);
                const Reply r = (i % 2) ? request(port, QStringLiteral("GetRTStatus"), "ID=4")
                                        : request(port, QStringLiteral("SetD2A"), body);
                if (r.closed && !r.reset && r.errorCode() == QLatin1String("0") &&
                    r.tagged().endsWith(QLatin1Char('>')))
                    ++good;
            }
        });
    }
    for (auto& th : threads)
        th.join();
    EXPECT_EQ(good.load(), kThreads * kEach);
    EXPECT_EQ(host.requests().size(), kThreads * kEach);
}

TEST(SimHostLife, StartsStopsAndRestarts) {
    ensureCoreApplication();
    SimHost a(testOptions());
    const quint16 port = a.start();
    ASSERT_NE(port, 0);
    EXPECT_EQ(a.start(), port); // already running
    EXPECT_EQ(a.port(), port);

    SimHost b(testOptions());
    EXPECT_EQ(b.start(port), 0); // the port is taken
    EXPECT_EQ(b.port(), 0);

    a.stop();
    EXPECT_EQ(a.port(), 0);
    EXPECT_FALSE(Client(port).connected());
    EXPECT_EQ(b.start(port), port);
    {
        const Reply r = request(port, QStringLiteral("GetRTStatus"), QStringLiteral("ID=4"));
        EXPECT_EQ(r.errorCode(), "0");
    }
    // The card keeps its state across a restart of the server.
    b.withCard([](Card& card) { card.setAnalogOut(42); });
    b.stop();
    const quint16 again = b.start();
    ASSERT_NE(again, 0);
    EXPECT_EQ(request(again, QStringLiteral("SetD2A"), QStringLiteral("ID=1&D2A=x"))
                  .element(QStringLiteral("ANALOG_OUT")),
              "42");
}

} // namespace
