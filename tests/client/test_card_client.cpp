// The headless card client: answers read into records, and requests on real sockets against
// the card simulator and against servers that misbehave.

#include "client/card_client.h"
#include "sim/sim_host.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QHash>
#include <QTcpServer>
#include <QTcpSocket>
#include <gtest/gtest.h>

using namespace torv;
using namespace torv::client;
using torv::sim::Fault;

namespace {

const QString kStatus = QStringLiteral(
    "HTTP/1.0 200 OK\r\n\r\n<GetRTStatus><WEIGHT> 12.5 </WEIGHT><A2D>130001</A2D>"
    "<OUT_STATUS>40000</OUT_STATUS><IN_STATUS>254</IN_STATUS><INTEGRATION>8</INTEGRATION>"
    "<MAXIMUM_LOAD>3000</MAXIMUM_LOAD><UNIT>KG</UNIT><SP_STATUS>5</SP_STATUS>"
    "<ERROR_CODE>0</ERROR_CODE><ERROR_DESCRIPTION>OK</ERROR_DESCRIPTION></GetRTStatus>");

TEST(StatusAnswer, EveryFieldIsReadAsTheCardSendsIt) {
    StatusRecord r;
    ASSERT_FALSE(parseStatus(kStatus, r));
    EXPECT_EQ(r.weight, 12.5);
    EXPECT_EQ(r.a2d, 130001);
    EXPECT_TRUE(r.overload());
    EXPECT_EQ(r.outputs, 40000); // a word above 32767 is no error here
    EXPECT_EQ(r.inputs, 254);
    EXPECT_EQ(r.integration, 8);
    EXPECT_EQ(r.maximumLoad, 3000);
    EXPECT_EQ(r.unit, "KG");
    EXPECT_EQ(r.setpointStatus, 5);
    EXPECT_EQ(r.errorCode, "0");
    EXPECT_EQ(r.errorDescription, "OK");
}

TEST(StatusAnswer, BadAnswersAreTypedFailures) {
    struct Case {
        QString from, to;
        std::optional<FailureKind> kind;
    } cases[] = {
        {"<WEIGHT> 12.5 </WEIGHT>", "", std::nullopt}, // a missing element is only missing
        {"12.5", "12,5", FailureKind::Malformed},
        {"12.5", "nan", FailureKind::Malformed},
        {"130001", "13e4", FailureKind::Malformed},
        {"40000", "65536", FailureKind::Malformed},
        {"<ERROR_CODE>0<", "<ERROR_CODE>00<", FailureKind::CardError},
        {"<SP_STATUS>5", "<SP_STATUS>x", FailureKind::Malformed},
    };
    for (const Case& c : cases) {
        QString answer = kStatus;
        answer.replace(c.from, c.to);
        StatusRecord r;
        const std::optional<Failure> f = parseStatus(answer, r);
        EXPECT_EQ(f ? std::optional(f->kind) : std::nullopt, c.kind) << c.to.toStdString();
    }
    StatusRecord r;
    const auto none = parseStatus(QStringLiteral("<GetRTStatus>hello</GetRTStatus>"), r);
    ASSERT_TRUE(none);
    EXPECT_EQ(none->kind, FailureKind::Malformed);
    // A long answer is read whole: no limit on positions.
    QString longAnswer = QString(40000, QLatin1Char(' ')) + kStatus;
    ASSERT_FALSE(parseStatus(longAnswer, r));
    EXPECT_EQ(r.setpointStatus, 5);
}

TEST(OtherAnswers, SetpointsEchoesAndCardErrors) {
    SetpointsRecord sp;
    ASSERT_FALSE(parseSetpoints(
        "<SETPOINT_1>100</SETPOINT_1><SETPOINT_2>-1</SETPOINT_2><SETPOINT_4>2.5</SETPOINT_4>", sp));
    EXPECT_EQ(sp.values[0], 100);
    EXPECT_EQ(sp.values[1], -1);
    EXPECT_FALSE(sp.values[2]);
    EXPECT_EQ(sp.values[3], 2.5);
    std::optional<std::int64_t> echo;
    ASSERT_FALSE(
        parseEcho("<ANALOG_OUT>128</ANALOG_OUT><ERROR_CODE>0</ERROR_CODE>", "ANALOG_OUT", echo));
    EXPECT_EQ(echo, 128);
    const auto err = parseEcho("<ERROR_CODE>7</ERROR_CODE><ERROR_DESCRIPTION>busy"
                               "</ERROR_DESCRIPTION>",
                               "ANALOG_OUT", echo);
    ASSERT_TRUE(err);
    EXPECT_EQ(err->kind, FailureKind::CardError);
    EXPECT_EQ(err->errorCode, "7");
    EXPECT_EQ(err->description, "busy");
}

TEST(Address, TextAndDefaults) {
    CardAddress a;
    ASSERT_TRUE(parseCardAddress(" 10.1.2.3 ", a));
    EXPECT_EQ(a.text(), "10.1.2.3:80");
    ASSERT_TRUE(parseCardAddress("[::1]:8081", a));
    EXPECT_EQ(a.text(), "[::1]:8081");
    EXPECT_FALSE(parseCardAddress("host:70000", a));
}

// ---- On sockets ---------------------------------------------------------------------------

void ensureApplication() {
    if (QCoreApplication::instance()) return;
    static int argc = 1;
    static char name[] = "test_client";
    static char* argv[] = {name, nullptr};
    static QCoreApplication app(argc, argv);
}

bool runUntil(const std::function<bool()>& done, int ms) {
    QElapsedTimer t;
    t.start();
    while (!done() && t.elapsed() < ms)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    return done();
}

class ClientLoopback : public ::testing::Test {
protected:
    void SetUp() override {
        ensureApplication();
        port = sim.start();
        ASSERT_NE(port, 0);
    }
    CardAddress at(quint16 p) const { return {QStringLiteral("127.0.0.1"), p}; }
    sim::SimHost sim;
    quint16 port = 0;
};

TEST_F(ClientLoopback, RequestsOfOneCardGoOneAfterTheOtherWithThePanelsBytes) {
    CardClient card(at(port), 2000);
    QStringList order;
    bool inside = true;
    card.status([&](const Reply& r, const StatusRecord& s) {
        EXPECT_FALSE(inside);
        EXPECT_FALSE(r.failure);
        EXPECT_TRUE(s.weight);
        EXPECT_GT(r.elapsedMs, 0);
        order << r.function;
    });
    card.request("SetD2A", "ID=1&D2A=128", [&](const Reply& r) {
        EXPECT_TRUE(r.answer.contains("<ANALOG_OUT>128</ANALOG_OUT>"));
        order << r.function;
    });
    card.request("StopSample", "", [&](const Reply& r) { order << r.function; });
    inside = false;
    EXPECT_EQ(card.pending(), 3);
    ASSERT_TRUE(runUntil([&] { return order.size() == 3; }, 5000));
    EXPECT_EQ(order, QStringList({"GetRTStatus", "SetD2A", "StopSample"}));
    EXPECT_EQ(card.pending(), 0);
    QStringList wire;
    for (const sim::RequestRecord& r : sim.requests())
        wire << QStringLiteral("%1 %2 %3").arg(r.function, r.body).arg(r.contentLength);
    EXPECT_EQ(wire, QStringList({"GetRTStatus ID=4 4", "SetD2A ID=1&D2A=128 12", "StopSample  0"}));
}

// A server that reads each request whole, answers it with the same bytes and closes (or
// holds the connection).
class FixedServer : public QTcpServer {
public:
    explicit FixedServer(QByteArray bytes, bool hold = false)
        : bytes_(std::move(bytes))
        , hold_(hold) {
        connect(this, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket* s = nextPendingConnection()) {
                s->setParent(this);
                connect(s, &QTcpSocket::readyRead, this, [this, s] {
                    QByteArray& in = requests_[s];
                    in += s->readAll();
                    const qsizetype head = in.indexOf("\r\n\r\n");
                    if (head < 0 || in.indexOf("\r\n", head + 4) < 0) return;
                    s->write(bytes_);
                    if (!hold_) s->disconnectFromHost();
                });
            }
        });
        listen(QHostAddress::LocalHost, 0);
    }

private:
    QByteArray bytes_;
    bool hold_;
    QHash<QTcpSocket*, QByteArray> requests_;
};

TEST_F(ClientLoopback, EveryWayACardFailsIsNamed) {
    const quint16 closedPort = [] {
        QTcpServer s;
        s.listen(QHostAddress::LocalHost, 0);
        return s.serverPort();
    }();
    FixedServer huge("HTTP/1.0 200 OK\r\n\r\n<GetRTStatus>" + QByteArray(5 << 20, 'x'));
    FixedServer half("HTTP/1.0 200 OK\r\n\r\n<GetRTStatus><WEIGHT>1", true);
    struct Case {
        const char* name;
        Fault::Kind fault; // on the simulator, or None for the port below
        quint16 otherPort;
        FailureKind kind;
        const char* words;
    } cases[] = {
        {"refused", Fault::Kind::None, closedPort, FailureKind::Refused, "refused"},
        {"silent", Fault::Kind::Silent, 0, FailureKind::Silent, "within 300 ms"},
        {"half, held open", Fault::Kind::None, half.serverPort(), FailureKind::Silent, "300 ms"},
        {"reset halfway", Fault::Kind::Reset, 0, FailureKind::CutOff, "before a complete"},
        {"garbage", Fault::Kind::Garbage, 0, FailureKind::Malformed, "not the card's"},
        {"error code", Fault::Kind::ErrorCode, 0, FailureKind::CardError, "card error 7"},
        {"huge", Fault::Kind::None, huge.serverPort(), FailureKind::Oversize, "4194304 bytes"},
    };
    for (const Case& c : cases) {
        sim.clearFaults();
        if (c.fault != Fault::Kind::None) {
            Fault f;
            f.kind = c.fault;
            f.errorCode = 7;
            sim.injectFault(f);
        }
        const quint16 p = c.otherPort ? c.otherPort : port;
        CardClient card(at(p), 300);
        std::optional<Failure> got;
        bool done = false;
        QElapsedTimer t;
        t.start();
        card.status([&](const Reply& r, const StatusRecord&) {
            got = r.failure;
            done = true;
        });
        ASSERT_TRUE(runUntil([&] { return done; }, 5000)) << c.name;
        EXPECT_LT(t.elapsed(), 2000) << c.name;
        ASSERT_TRUE(got) << c.name;
        EXPECT_EQ(got->kind, c.kind) << c.name << ": " << got->detail.toStdString();
        EXPECT_TRUE(got->detail.contains(QStringLiteral("127.0.0.1:%1").arg(p))) << c.name;
        EXPECT_TRUE(got->detail.contains(c.words)) << c.name << ": " << got->detail.toStdString();
    }
}

TEST_F(ClientLoopback, TheClientMayBeDestroyedFromItsOwnCallback) {
    auto* card = new CardClient(at(port), 2000);
    int answers = 0;
    card->status([&](const Reply&, const StatusRecord&) {
        ++answers;
        delete card;
    });
    card->status([&](const Reply&, const StatusRecord&) { ++answers; }); // never runs
    ASSERT_TRUE(runUntil([&] { return answers > 0; }, 5000));
    runUntil([] { return false; }, 100);
    EXPECT_EQ(answers, 1);
}

} // namespace
