// The real transport on Qt sockets against the card simulator on loopback.

#include "link/catalogue.h"
#include "link/elements.h"
#include "link/transport.h"
#include "link_recorders.h"
#include "sim/sim_host.h"
#include "support/loopback_platform.h"

#include <QCoreApplication>
#include <gtest/gtest.h>

using namespace torv;
using namespace torv::test;
using torv::sim::Fault;

namespace {

void ensureApplication() {
    if (QCoreApplication::instance()) return;
    static int argc = 1;
    static char name[] = "test_link_loopback";
    static char* argv[] = {name, nullptr};
    static QCoreApplication app(argc, argv);
}

// What the card read: function, body and Content-Length of each request.
QStringList wireLog(const sim::SimHost& sim) {
    QStringList out;
    for (const sim::RequestRecord& r : sim.requests())
        out << QStringLiteral("%1 %2 %3").arg(r.function, r.body).arg(r.contentLength);
    return out;
}

class LoopbackTest : public ::testing::Test {
protected:
    void SetUp() override {
        ensureApplication();
        port = sim.start();
        ASSERT_NE(port, 0);
        view.host = "127.0.0.1:" + QString::number(port);
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
            try {
                if (Get_XML_Element_Data(platform, t.req.strResponse, "<ERROR_CODE>", code))
                    codes << code;
            } catch (const RuntimeError&) {
                stopped = true; // the handler ends here, and with it the request
                throw;
            }
            const bool more = answers < wanted;
            t.IssueRequest(more && t.req.blnRepeatRequest);
            if (!more) stopped = true;
        };
    }

    void setTimeOut(const char* text) {
        QString s = QLatin1String(text);
        t.SetTimeOutValue(t.lngTimeOut, s);
    }

    // Issues `name` (repeating it while polling) until `count` answers have been handled or
    // the server is reported.
    bool issue(const QString& name, const QString& body, bool repeat, int count, int waitMs) {
        wanted = answers + count;
        stopped = false;
        t.req.strFunctionName = name;
        t.req.strParameters = body;
        t.req.blnRepeatRequest = repeat;
        t.IssueRequest(true);
        return t.WaitTrueFlag(stopped, waitMs);
    }
    bool poll(int count, int waitMs = 30000) {
        return issue(fn::GetRTStatus, "ID=4", true, count, waitMs);
    }
    bool request(const QString& name, const QString& body) {
        return issue(name, body, false, 1, 10000);
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
    EXPECT_EQ(platform.messages(), QStringList());
    EXPECT_EQ(codes, QStringList(1000, "0"));
    // Every request reached the card as sent, and each one was answered exactly once.
    EXPECT_EQ(wireLog(sim), QStringList(1000, "GetRTStatus ID=4 4"));
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
    ASSERT_TRUE(request(fn::StopSample, "ID=4"));
    ASSERT_TRUE(request(fn::GetSetpoints, QString()));
    EXPECT_EQ(handlers.calls, QStringList({"SetD2A", "SetOutput", "StopSample", "GetSetpoints"}));

    // A channel switch is answered but has no handler of its own.
    stopped = false;
    t.req.strFunctionName = channelSwitchName(2);
    t.req.strParameters = "ID=4";
    t.IssueRequest(true);
    EXPECT_FALSE(t.WaitTrueFlag(stopped, 800)); // nothing stops: no handler, no report
    EXPECT_EQ(platform.messages(), QStringList{"Unknown Function ch2_switch"});
    EXPECT_EQ(view.noAnswerReports, 0);
    // The stop button's "ID=4" never leaves.
    EXPECT_EQ(wireLog(sim),
              QStringList({"SetD2A ID=1&D2A=128 12", "SetOutput ID=4&OUT_STATUS=-1 18",
                           "StopSample  0", "GetSetpoints ID=1 4", "ch2_switch ID=4 4"}));
}

TEST_F(LoopbackTest, SilentOrRefusingServerIsReportedOnce) {
    setTimeOut("300");
    Fault silent;
    silent.kind = Fault::Kind::Silent;
    sim.injectFault(silent);
    const std::uint32_t started = platform.GetTickCount();
    EXPECT_TRUE(poll(1));
    const std::uint32_t after = platform.GetTickCount() - started;
    EXPECT_EQ(view.noAnswerReports, 1);
    EXPECT_GE(after, 300u); // by the watchdog
    EXPECT_LT(after, 1500u);
    t.WaitMS(1000); // more than three time-outs: no second report
    EXPECT_EQ(view.noAnswerReports, 1);

    sim.stop(); // nothing listens on the port any more
    EXPECT_TRUE(poll(1));
    EXPECT_EQ(view.noAnswerReports, 2);
    t.WaitMS(1000);
    EXPECT_EQ(view.noAnswerReports, 2);
    EXPECT_EQ(answers, 0);
    EXPECT_EQ(t.req.strFunctionName, fn::GetRTStatus); // kept for the next start
}

TEST_F(LoopbackTest, HostNamesAreLookedUpAndUnreachableAddressesReportedOnce) {
    view.host = "localhost:" + QString::number(port);
    ASSERT_TRUE(poll(20));
    EXPECT_EQ(answers, 20);
    EXPECT_EQ(view.noAnswerReports, 0);

    setTimeOut("300");
    // No such host; and an IPv6 address nothing listens on (or no IPv6 at all).
    for (const QString& host :
         {QStringLiteral("no-such-card.invalid:8080"), "[::1]:" + QString::number(port)}) {
        SCOPED_TRACE(host.toStdString());
        view.host = host;
        const int before = view.noAnswerReports;
        EXPECT_TRUE(poll(1, 20000));
        t.WaitMS(700);
        EXPECT_EQ(view.noAnswerReports, before + 1);
    }
    EXPECT_EQ(answers, 20);
    EXPECT_EQ(sim.requests().size(), 20);
}

// Each fault hits a few connections; polling comes through them (restarted by the operator
// where the server was reported) and goes on normally afterwards.
TEST_F(LoopbackTest, PollingSurvivesEveryFault) {
    setTimeOut("400");
    using K = Fault::Kind;
    const Fault faults[] = {{K::Chunked, {7, 100, 3}, 1, 0, 3, {}}, {K::Chunked, {1}, 0, 0, 3, {}},
                            {K::Trickle, {16}, 20, 0, 3, {}},       {K::Silent, {}, 0, 0, 3, {}},
                            {K::Refuse, {}, 0, 0, 3, {}},           {K::Reset, {}, 0, 0, 3, {}},
                            {K::Garbage, {}, 0, 0, 3, {}},          {K::Oversize, {}, 0, 0, 3, {}},
                            {K::ErrorCode, {}, 0, 7, 3, {}}};
    for (const Fault& fault : faults) {
        SCOPED_TRACE(sim::faultKindName(fault.kind).toStdString());
        sim.injectFault(fault);
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
    for (const QString& m : platform.messages())
        EXPECT_EQ(m, "Run-time error '6': Overflow");
    EXPECT_TRUE(codes.contains("7"));

    // Afterwards polling runs clean.
    platform.dialogs.clear();
    const int reports = view.noAnswerReports;
    ASSERT_TRUE(poll(50));
    EXPECT_EQ(view.noAnswerReports, reports);
    EXPECT_TRUE(platform.dialogs.empty());
}

// The socket client alone: the TcpClient contract on real sockets.
class SocketClientTest : public LoopbackTest {
protected:
    std::unique_ptr<TcpClient> connectAndAsk() {
        auto client = platform.createTcpClient();
        client->onConnect = [c = client.get()] {
            c->send("POST /GetRTStatus\r\n");
            c->send("Content-Length: 4\r\n\r\n");
            c->send("ID=4\r\n");
        };
        client->onError = [this](int, const QString&) { ++errors; };
        client->connectToHost("127.0.0.1", port);
        return client;
    }
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
    ASSERT_TRUE(platform.runUntil([&] { return closed; }, 10000));
    EXPECT_EQ(errors, 0);
    EXPECT_GT(all.size(), 32767);
    EXPECT_TRUE(all.contains("</GetRTStatus>"));
    EXPECT_GE(sizes.size(), 5);
    for (qsizetype n : sizes)
        EXPECT_LE(n, 8192);
    EXPECT_EQ(wireLog(sim), QStringList{"GetRTStatus ID=4 4"});
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
        ASSERT_TRUE(platform.runUntil([&] { return gotData; }, 5000));
        platform.runUntil([] { return false; }, 300);
        EXPECT_FALSE(closed);
        EXPECT_EQ(errors, 0);
    }
}

} // namespace
