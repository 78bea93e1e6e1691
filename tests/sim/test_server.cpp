// The simulator over real loopback sockets: answers, state, fast sampling, faults, bad
// clients and many clients at once. Its request log is checked by the loopback and panel
// tests, which compare it with what they sent.

#include "sim/sim_host.h"
#include "sim_client.h"

#include <QElapsedTimer>
#include <QThread>
#include <atomic>
#include <cerrno>
#include <gtest/gtest.h>
#include <memory>
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
        port = host.start();
        ASSERT_NE(port, 0);
    }
    Reply ask(const QString& function, const QString& body = "ID=4") {
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
        EXPECT_TRUE(r.tagged().endsWith("</" + function + QLatin1Char('>')));
    }
    // Another client is served as usual.
    void expectServed() { expectWhole(ask("GetRTStatus"), "GetRTStatus"); }
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

TEST_F(SimServer, ChunkedAndTrickledAnswersArriveInThosePieces) {
    host.injectFault({Fault::Kind::Chunked, {7, 30}, 20, 0, 1, {}});
    Reply r = ask("GetRTStatus");
    expectWhole(r, "GetRTStatus");
    EXPECT_GT(r.pieces.size(), 2);
    expectCutsAt(r, {7, 30});

    r = ask("GetRTStatus"); // both faults are used up
    expectWhole(r, "GetRTStatus");
    EXPECT_TRUE(host.faults().isEmpty());
}

TEST_F(SimServer, ResetGarbageOversizeAndErrorCodeFaults) {
    host.injectFault({Fault::Kind::Reset, {20}, 0, 0, 1, {}});
    Reply r = ask("GetRTStatus");
    EXPECT_TRUE(r.reset);
    EXPECT_LE(r.raw.size(), 20);

    host.injectFault({Fault::Kind::Garbage, {}, 0, 0, 1, {}});
    r = ask("GetRTStatus");
    EXPECT_TRUE(r.closed && !r.raw.isEmpty() && !r.raw.contains("</GetRTStatus"));

    host.injectFault({Fault::Kind::Oversize, {}, 0, 0, 1, {}});
    r = ask("GetRTStatus");
    expectWhole(r, "GetRTStatus");
    EXPECT_GT(r.tagged().size(), 32767);
    EXPECT_EQ(r.element("WEIGHT"), "12.345");

    host.injectFault({Fault::Kind::ErrorCode, {}, 0, 9, 1, {}});
    r = ask("SetD2A", "ID=1&D2A=99");
    expectWhole(r, "SetD2A");
    EXPECT_EQ(r.errorCode(), "9");
    EXPECT_EQ(r.element("ANALOG_OUT"), "0"); // not applied
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
    expectWhole(r, "GetWeight");
    EXPECT_EQ(r.errorCode(), "3");
    r = sendRaw("POST /SetD2A\r\nContent-Length: 12\r\n\r\nID=1"); // never completes
    EXPECT_EQ(r.errorCode(), "6");
    EXPECT_FALSE(r.timedOut);
    r = sendRaw("POST /SetD2A\r\nContent-Length: 100000\r\n\r\n");
    EXPECT_EQ(r.errorCode(), "5");
    r = sendRaw(QByteArray()); // connects and says nothing
    EXPECT_TRUE(r.closed);
    EXPECT_TRUE(r.raw.isEmpty());
    {
        Client gone(port); // connects and leaves at once
    }
    expectServed();
}

} // namespace

// A card takes its time to answer; a client that leaves meanwhile costs nothing.
TEST(SimServerPace, AnswersComeAfterTheCardsAnswerTime) {
    SimOptions o = testOptions();
    o.answerMs = 80;
    SimHost host{o};
    const quint16 port = host.start();
    ASSERT_NE(port, 0);
    {
        Client leaving(port);
        ASSERT_TRUE(leaving.sendRequest("GetRTStatus", "ID=4"));
    }
    QElapsedTimer t;
    t.start();
    const Reply r = request(port, "GetRTStatus", "ID=4");
    EXPECT_GE(t.elapsed(), 80);
    EXPECT_EQ(r.errorCode(), "0");
    EXPECT_TRUE(r.closed);
}
