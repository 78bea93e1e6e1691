// The real transport on Qt sockets against the card simulator on loopback.

#include "link/catalogue.h"
#include "link/elements.h"
#include "link/qt_net_platform.h"
#include "link/transport.h"
#include "link_recorders.h"
#include "sim/sim_host.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <gtest/gtest.h>

using namespace torv;
using namespace torv::test;
using torv::sim::Fault;

namespace {

struct ProgramEnded {};

// Qt sockets and timers with the dialogs answered by script.
class LoopbackPlatform : public QtNetPlatform {
public:
    QStringList messages;
    void messageBox(const QString& text) override { messages << text; }
    bool askYesNo(const QString& text) override {
        messages << text;
        return true;
    }
    int textWidth(const QString& text) override { return static_cast<int>(text.size()) * 6; }
    int messageReferenceWidth() override { return 0; }
    std::optional<QString> openFileDialog(const FileDialogRequest&) override { return {}; }
    bool startProgram(const QString&, const QStringList&) override { return false; }
    void postCloseMessage(std::int64_t) override {}
    [[noreturn]] void endProgram() override { throw ProgramEnded{}; }
};

void ensureApplication() {
    if (QCoreApplication::instance()) return;
    static int argc = 1;
    static char name[] = "test_link_loopback";
    static char* argv[] = {name, nullptr};
    static QCoreApplication app(argc, argv);
}

class LoopbackTest : public ::testing::Test {
protected:
    void SetUp() override {
        ensureApplication();
        port = sim.start();
        ASSERT_NE(port, 0);
        view.host = QStringLiteral("127.0.0.1:") + QString::number(port);
        // The panel's procedure: close the connection and stop polling.
        view.onServerNoAnswer = [this] {
            t.closeSocket();
            t.TimerTimeOut().setEnabled(false);
            stopped = true;
        };
        // Like the panel's handlers: read the error code, then issue the next request.
        handlers.onAnswer = [this](const QString&) {
            ++answers;
            QString code;
            if (Get_XML_Element_Data(platform, t.req.strResponse, QStringLiteral("<ERROR_CODE>"),
                                     code))
                codes << code;
            const bool more = answers < wanted;
            t.IssueRequest(more && t.req.blnRepeatRequest);
            if (!more) stopped = true;
        };
    }

    void setTimeOut(const char* text) {
        QString s = QLatin1String(text);
        t.SetTimeOutValue(t.lngTimeOut, s);
    }

    // Polls GetRTStatus until `count` answers have been handled or the server is reported.
    bool poll(int count, int waitMs = 30000) {
        wanted = answers + count;
        stopped = false;
        t.req.strFunctionName = fn::GetRTStatus;
        t.req.strParameters = QStringLiteral("ID=4");
        t.req.blnRepeatRequest = true;
        t.IssueRequest(true);
        return t.WaitTrueFlag(stopped, waitMs);
    }

    // One request, waited for.
    bool request(const QString& name, const QString& body) {
        wanted = answers + 1;
        stopped = false;
        t.req.strFunctionName = name;
        t.req.strParameters = body;
        t.req.blnRepeatRequest = false;
        t.IssueRequest(true);
        return t.WaitTrueFlag(stopped, 10000);
    }

    sim::SimHost sim;
    quint16 port = 0;
    LoopbackPlatform platform;
    RecordingView view;
    RecordingHandlers handlers;
    Transport t{platform, view, handlers};
    int answers = 0, wanted = 0;
    bool stopped = false;
    QStringList codes;
};

TEST_F(LoopbackTest, ThousandPollsEachDispatchedOnce) {
    ASSERT_TRUE(poll(1000, 60000));
    EXPECT_EQ(answers, 1000);
    EXPECT_EQ(handlers.calls.size(), 1000);
    EXPECT_EQ(view.noAnswerReports, 0);
    EXPECT_TRUE(platform.messages.isEmpty()) << platform.messages.join('|').toStdString();
    EXPECT_EQ(codes, QStringList(1000, QStringLiteral("0")));
    // Every request reached the card as sent, and each one was answered exactly once.
    const auto requests = sim.requests();
    ASSERT_EQ(requests.size(), 1000);
    for (const auto& r : requests) {
        EXPECT_EQ(r.function, fn::GetRTStatus);
        EXPECT_EQ(r.body, "ID=4");
        EXPECT_EQ(r.contentLength, 4);
    }
    EXPECT_EQ(t.lngRequestsSent, 1000);
    QString weight;
    EXPECT_TRUE(Get_XML_Element_Data(platform, t.req.strResponse, "<WEIGHT>", weight));
}

TEST_F(LoopbackTest, CommandsTravelWithTheirBodies) {
    ASSERT_TRUE(request(fn::SetD2A, setD2ABody(128)));
    QString value;
    EXPECT_TRUE(Get_XML_Element_Data(platform, t.req.strResponse, "<ANALOG_OUT>", value));
    EXPECT_EQ(value, "128");
    ASSERT_TRUE(request(fn::SetOutput, setOutputBody(-1)));
    EXPECT_TRUE(Get_XML_Element_Data(platform, t.req.strResponse, "<OUT_STATUS_ECHO>", value));
    EXPECT_EQ(statusWordValue(value), -1);
    ASSERT_TRUE(request(fn::StopSample, QStringLiteral("ID=4")));
    ASSERT_TRUE(request(fn::GetSetpoints, QString()));
    EXPECT_EQ(handlers.calls, QStringList({"SetD2A", "SetOutput", "StopSample", "GetSetpoints"}));

    // A channel switch is answered but has no handler of its own.
    stopped = false;
    t.req.strFunctionName = channelSwitchName(2);
    t.req.strParameters = QStringLiteral("ID=4");
    t.IssueRequest(true);
    EXPECT_FALSE(t.WaitTrueFlag(stopped, 800)); // nothing stops: no handler, no report
    EXPECT_EQ(platform.messages, QStringList{"Unknown Function ch2_switch"});
    EXPECT_EQ(view.noAnswerReports, 0);

    const auto requests = sim.requests();
    ASSERT_EQ(requests.size(), 5);
    EXPECT_EQ(requests[0].body, "ID=1&D2A=128");
    EXPECT_EQ(requests[0].contentLength, 12);
    EXPECT_EQ(requests[1].body, "ID=4&OUT_STATUS=-1");
    EXPECT_EQ(requests[2].contentLength, 0); // the stop button's "ID=4" never leaves
    EXPECT_EQ(requests[3].body, "ID=1");
    EXPECT_EQ(requests[4].function, "ch2_switch");
}

TEST_F(LoopbackTest, RefusedConnectionIsReportedOnce) {
    setTimeOut("300");
    sim.stop(); // nothing listens on the port any more
    EXPECT_TRUE(poll(1));
    EXPECT_EQ(view.noAnswerReports, 1);
    t.WaitMS(1000); // more than three time-outs: no second report
    EXPECT_EQ(view.noAnswerReports, 1);
    EXPECT_EQ(answers, 0);
    EXPECT_EQ(t.req.strFunctionName, fn::GetRTStatus); // kept for the next start
}

TEST_F(LoopbackTest, HostNamesAreLookedUp) {
    view.host = QStringLiteral("localhost:") + QString::number(port);
    ASSERT_TRUE(poll(20));
    EXPECT_EQ(answers, 20);
    EXPECT_EQ(view.noAnswerReports, 0);
}

TEST_F(LoopbackTest, UnreachableAddressesAreReportedOnce) {
    setTimeOut("300");
    // No such host; and an IPv6 address nothing listens on (or no IPv6 at all).
    for (const QString& host : {QStringLiteral("no-such-card.invalid:8080"),
                                QStringLiteral("[::1]:") + QString::number(port)}) {
        SCOPED_TRACE(host.toStdString());
        view.host = host;
        const int before = view.noAnswerReports;
        EXPECT_TRUE(poll(1, 20000));
        t.WaitMS(700);
        EXPECT_EQ(view.noAnswerReports, before + 1);
    }
    EXPECT_EQ(answers, 0);
    EXPECT_TRUE(sim.requests().isEmpty());
}

TEST_F(LoopbackTest, SilentServerIsReportedOnceByTheWatchdog) {
    setTimeOut("300");
    Fault silent;
    silent.kind = Fault::Kind::Silent;
    sim.injectFault(silent);
    const std::uint32_t started = platform.GetTickCount();
    EXPECT_TRUE(poll(1));
    const std::uint32_t after = platform.GetTickCount() - started;
    EXPECT_EQ(view.noAnswerReports, 1);
    EXPECT_GE(after, 300u);
    EXPECT_LT(after, 1500u);
    t.WaitMS(1000);
    EXPECT_EQ(view.noAnswerReports, 1);
    EXPECT_EQ(answers, 0);
}

// Each fault hits a few connections; polling comes through them (restarted by the operator
// where the server was reported) and goes on normally afterwards.
TEST_F(LoopbackTest, PollingSurvivesEveryFault) {
    setTimeOut("400");
    struct Case {
        Fault::Kind kind;
        QList<int> chunks;
        int delayMs;
    };
    const Case cases[] = {
        {Fault::Kind::Chunked, {7, 100, 3}, 1}, {Fault::Kind::Chunked, {1}, 0},
        {Fault::Kind::Trickle, {16}, 20},       {Fault::Kind::Silent, {}, 0},
        {Fault::Kind::Refuse, {}, 0},           {Fault::Kind::Reset, {}, 0},
        {Fault::Kind::Garbage, {}, 0},          {Fault::Kind::Oversize, {}, 0},
        {Fault::Kind::ErrorCode, {}, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(sim::faultKindName(c.kind).toStdString());
        Fault f;
        f.kind = c.kind;
        f.chunkSizes = c.chunks;
        f.delayMs = c.delayMs;
        f.errorCode = 7;
        f.connections = 3;
        sim.injectFault(f);
        const int reportsBefore = view.noAnswerReports;
        const int answersBefore = answers;
        int starts = 0;
        while (answers - answersBefore < 10 && starts < 6) {
            ++starts;
            poll(10 - (answers - answersBefore));
        }
        EXPECT_EQ(answers - answersBefore, 10);
        EXPECT_LE(view.noAnswerReports - reportsBefore, 3);
        EXPECT_TRUE(sim.faults().isEmpty());
        sim.clearFaults();
    }
    // Only the oversize answers raised anything: their element search overflows.
    for (const QString& m : platform.messages)
        EXPECT_EQ(m, "Run-time error '6': Overflow");
    EXPECT_TRUE(codes.contains("7"));

    // Afterwards polling runs clean.
    platform.messages.clear();
    const int reports = view.noAnswerReports;
    ASSERT_TRUE(poll(50));
    EXPECT_EQ(view.noAnswerReports, reports);
    EXPECT_TRUE(platform.messages.isEmpty());
}

// The socket client alone: the TcpClient contract on real sockets.
class SocketClientTest : public ::testing::Test {
protected:
    void SetUp() override {
        ensureApplication();
        port = sim.start();
        ASSERT_NE(port, 0);
    }
    std::unique_ptr<TcpClient> connectAndAsk() {
        auto client = platform.createTcpClient();
        client->onConnect = [c = client.get()] {
            c->send("POST /GetRTStatus\r\n");
            c->send("Content-Length: 4\r\n\r\n");
            c->send("ID=4\r\n");
        };
        client->onError = [this](int, const QString&) { ++errors; };
        client->connectToHost(QStringLiteral("127.0.0.1"), port);
        return client;
    }
    void waitFor(const bool& flag, int ms) {
        QElapsedTimer clock;
        clock.start();
        while (!flag && clock.elapsed() < ms)
            platform.processEvents(5);
    }

    sim::SimHost sim;
    quint16 port = 0;
    LoopbackPlatform platform;
    int errors = 0;
};

TEST_F(SocketClientTest, LargeAnswerArrivesInPiecesThenTheClose) {
    Fault oversize;
    oversize.kind = Fault::Kind::Oversize;
    sim.injectFault(oversize);
    auto client = connectAndAsk();
    QByteArray all;
    QList<qsizetype> sizes;
    bool closed = false;
    client->onDataArrival = [&](const QByteArray& data) {
        EXPECT_FALSE(closed);
        all += data;
        sizes << data.size();
    };
    client->onClose = [&] { closed = true; };
    waitFor(closed, 10000);
    ASSERT_TRUE(closed);
    EXPECT_EQ(errors, 0);
    EXPECT_GT(all.size(), 32767);
    EXPECT_TRUE(all.contains("</GetRTStatus>"));
    EXPECT_GE(sizes.size(), 5);
    for (qsizetype n : sizes)
        EXPECT_LE(n, 8192);
    ASSERT_EQ(sim.requests().size(), 1);
    EXPECT_EQ(sim.requests()[0].body, "ID=4");
}

TEST_F(SocketClientTest, ClosedOrDestroyedInsideItsCallbackReportsNothingMore) {
    for (bool destroy : {false, true}) {
        std::unique_ptr<TcpClient> client = connectAndAsk();
        bool gotData = false, closed = false;
        client->onDataArrival = [&](const QByteArray&) {
            EXPECT_FALSE(gotData); // nothing after our own close
            gotData = true;
            if (destroy)
                client.reset();
            else
                client->close();
        };
        client->onClose = [&] { closed = true; };
        waitFor(gotData, 5000);
        ASSERT_TRUE(gotData);
        bool never = false;
        waitFor(never, 300);
        EXPECT_FALSE(closed);
        EXPECT_EQ(errors, 0);
    }
}

} // namespace
