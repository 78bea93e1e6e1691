// The request transport on the fake platform: framing, accumulation and completion, the
// watchdog, reconnects and the waits.

#include "link/catalogue.h"
#include "link/transport.h"
#include "link_recorders.h"
#include "support/fake_platform.h"

#include <gtest/gtest.h>
#include <memory>

using namespace torv;
using namespace torv::test;

namespace {

QByteArray answerFor(const QString& name,
                     const QByteArray& elements = "<ERROR_CODE>0</ERROR_CODE>") {
    const QByteArray n = name.toLatin1();
    return "HTTP/1.0 200 OK\r\nContent-Type: text/xml\r\n\r\n<" + n + ">" + elements + "</" + n +
           ">";
}

// A transport on the fake platform, wired as the panel wires it.
struct Rig {
    Rig() {
        // As the panel's procedure does: close the connection and stop the watchdog.
        view.onServerNoAnswer = [this] {
            t.closeSocket();
            t.TimerTimeOut().setEnabled(false);
        };
        // Every handler ends by issuing the current request again (or only closing).
        handlers.onAnswer = [this](const QString&) { t.IssueRequest(t.req.blnRepeatRequest); };
    }
    FakePlatform platform;
    RecordingView view;
    RecordingHandlers handlers;
    Transport t{platform, view, handlers};
};

class TransportTest : public ::testing::Test, protected Rig {
protected:
    void start(const QString& name, const QString& body, bool repeat = false) {
        t.req.strFunctionName = name;
        t.req.strParameters = body;
        t.req.blnRepeatRequest = repeat;
        t.IssueRequest(true);
    }
    FakeTcpClient& sock() { return *platform.socket(); }
    QStringList sends() const {
        QStringList out;
        for (const QByteArray& s : platform.socket()->sends())
            out << QString::fromLatin1(s);
        return out;
    }
};

// --- Framing ---------------------------------------------------------------------------

TEST_F(TransportTest, SendsThreePiecesWithTheBodyFixedAtConnect) {
    EXPECT_THROW(t.Send2Server(fn::GetRTStatus, "ID=4"), RuntimeError); // not connected
    struct Row {
        QString name, stored;
        QStringList sent;
    };
    const Row rows[] = {
        {fn::StopSample, "ID=4", {"POST /StopSample\r\n", "Content-Length: 0\r\n\r\n", "\r\n"}},
        {fn::SetD2A,
         "ID=1&D2A=128",
         {"POST /SetD2A\r\n", "Content-Length: 12\r\n\r\n", "ID=1&D2A=128\r\n"}},
        {fn::GetRTStatus, "", {"POST /GetRTStatus\r\n", "Content-Length: 4\r\n\r\n", "ID=4\r\n"}}};
    for (const Row& r : rows) {
        start(r.name, r.stored);
        EXPECT_TRUE(sock().sends().empty()); // nothing before the connection is up
        sock().fireConnect();
        EXPECT_EQ(sends(), r.sent) << r.name.toStdString();
        EXPECT_EQ(t.req.strParameters + "\r\n", r.sent.back());
        EXPECT_EQ(view.requests.back(), r.name);
    }
    EXPECT_EQ(t.lngRequestsSent, 3);

    // The typed address: port 80 unless given; an address that is no host and port goes out as
    // typed, so the error reports it.
    for (const auto& [typed, wire] : {std::pair{"10.1.2.3", "connect 10.1.2.3:80"},
                                      {"[::1]:9000", "connect ::1:9000"},
                                      {" card:8o ", "connect card:8o:80"}}) {
        view.host = QLatin1String(typed);
        platform.wire.clear();
        t.RequestRTStatus();
        EXPECT_EQ(platform.wire.filter("connect"), QStringList{QLatin1String(wire)}) << typed;
    }
}

// --- Accumulation and completion -------------------------------------------------------

TEST_F(TransportTest, CompleteAnswerIsShownOneTagALineAndDispatchedOnce) {
    start(fn::GetRTStatus, "ID=4");
    sock().fireConnect();
    const QByteArray answer = answerFor(fn::GetRTStatus, "<A2D>17</A2D><ERROR_CODE>0</ERROR_CODE>");
    sock().deliver(answer);
    EXPECT_EQ(t.req.strResponse, QString::fromLatin1(answer));
    ASSERT_EQ(view.rawAnswers.size(), 1);
    EXPECT_TRUE(view.rawAnswers[0].endsWith(
        "<GetRTStatus>\r\n<A2D>17</A2D>\r\n<ERROR_CODE>0</ERROR_CODE>\r\n</GetRTStatus>"));
    EXPECT_EQ(handlers.calls.size(), 1);

    // The closing tag without its bracket completes; the name is compared case-sensitively.
    start(fn::SetD2A, setD2ABody(5));
    sock().fireConnect();
    sock().deliver("<setd2a></setd2a><SetD2");
    EXPECT_EQ(handlers.calls.size(), 1);
    t.blnActivity = false;
    sock().deliver(QByteArray()); // an empty arrival is no activity for the watchdog
    EXPECT_FALSE(t.blnActivity);
    sock().deliver("A><ANALOG_OUT>5</ANALOG_OUT></SetD2A");
    EXPECT_EQ(handlers.calls, QStringList({"GetRTStatus", "SetD2A"}));

    // The channel switches have no handler: their answer is only named as unknown.
    start(fn::ch1_switch, "");
    sock().fireConnect();
    sock().deliver("<ch1_switch></ch1_switch>");
    EXPECT_EQ(platform.messages(), QStringList{"Unknown Function ch1_switch"});
    // The card's close after it: the connection shows as closed, nothing is opened.
    const int sockets = platform.socketsCreated;
    sock().peerClose();
    EXPECT_EQ(view.statuses.back(), "Not Connected");
    EXPECT_EQ(platform.socketsCreated, sockets);
}

TEST_F(TransportTest, ClosingTagSplitOverArrivals) {
    const QByteArray answer = answerFor(fn::GetRTStatus);
    const int tag = static_cast<int>(answer.lastIndexOf("</GetRTStatus"));
    // A search starts a chunk's size before the end of what has arrived, so a tag split is
    // seen or missed by where the cuts fall: right after its "<" (seen); inside it (missed);
    // a large chunk, then one ending with "</Ge" (seen); a tiny chunk, then a large one ending
    // deep inside the tag (missed). Nothing is lost either way.
    const std::pair<QList<int>, bool> rows[] = {
        {{tag + 1}, true}, {{tag + 5}, false}, {{tag - 20, tag + 4}, true}, {{2, tag + 9}, false}};
    for (const auto& [cuts, seen] : rows) {
        const qsizetype before = handlers.calls.size();
        start(fn::GetRTStatus, "ID=4");
        sock().fireConnect();
        int at = 0;
        for (int cut : cuts) {
            sock().deliver(answer.mid(at, cut - at));
            at = cut;
        }
        sock().deliver(answer.mid(at));
        EXPECT_EQ(handlers.calls.size() - before, seen ? 1 : 0) << cuts.last() - tag;
        EXPECT_EQ(seen ? t.req.strResponse : t.strRecvBuffer, QString::fromLatin1(answer));
    }
}

TEST_F(TransportTest, ChunkOver32767BytesOverflowsOnce) {
    start(fn::GetRTStatus, "ID=4");
    sock().fireConnect();
    sock().deliver(QByteArray(32767, 'x'));
    EXPECT_TRUE(platform.dialogs.empty());
    sock().deliver(QByteArray(32768, 'y'));
    EXPECT_EQ(platform.messages(), QStringList{"Run-time error '6': Overflow"});
    EXPECT_EQ(t.strRecvBuffer.size(), 65535); // the data was kept
    EXPECT_TRUE(handlers.calls.isEmpty());
    // A big chunk that completes the answer is dispatched; its size never matters then.
    sock().deliver(QByteArray(40000, 'z') + "</GetRTStatus>");
    EXPECT_EQ(handlers.calls.size(), 1);
    EXPECT_EQ(platform.dialogs.size(), 1u);
}

// --- Reconnects and re-entry -----------------------------------------------------------

TEST_F(TransportTest, ServerClosingWhilePollingSendsTheSameRequestAgain) {
    start(fn::GetRTStatus, "ID=4", true);
    sock().fireConnect();
    sock().deliver("HTTP/1.0 200 OK\r\n\r\n<GetRT");
    sock().peerClose();
    EXPECT_EQ(platform.socketsCreated, 2);
    EXPECT_EQ(view.statuses.back(), "Not Connected");
    sock().fireConnect();
    EXPECT_EQ(sends(),
              QStringList({"POST /GetRTStatus\r\n", "Content-Length: 4\r\n\r\n", "ID=4\r\n"}));
    EXPECT_TRUE(t.strRecvBuffer.isEmpty()); // the new connection starts a new answer
    sock().deliver(answerFor(fn::GetRTStatus));
    EXPECT_EQ(handlers.calls.size(), 1);

    // Without polling the Close only closes.
    t.req.blnRepeatRequest = false;
    sock().fireConnect();
    sock().peerClose();
    EXPECT_EQ(platform.socketsCreated, 3);
    EXPECT_EQ(view.statuses.back(), "Not Connected");
}

// --- Watchdog --------------------------------------------------------------------------

// The card answers a poll, closes that connection before the next request goes out, then
// stays silent: its close is no failure, each request has one connection, and the silent
// request is reported at the second tick after it even when the ticks come late.
TEST_F(TransportTest, CloseAfterAnAnswerOpensNothingAndTheSilenceIsReportedAtTheSecondTick) {
    for (int late : {0, 3}) {
        Rig rig;
        FakePlatform& p = rig.platform;
        Transport& tr = rig.t;
        std::uint32_t issued = 0;
        rig.handlers.onAnswer = [&](const QString&) {
            p.socket()->peerClose(); // delivered while the answered connection is current
            issued = p.now;
            tr.IssueRequest(tr.req.blnRepeatRequest);
        };
        tr.req.strFunctionName = fn::GetRTStatus;
        tr.req.blnRepeatRequest = true;
        tr.IssueRequest(true);
        p.socket()->fireConnect();
        p.advance(40);
        p.socket()->deliver(answerFor(fn::GetRTStatus));
        p.socket()->fireConnect();
        // Each tick of the watchdog comes `late` ms after it is due.
        for (int tick = 1; tick <= 2; ++tick) {
            p.advance(5000 - 1);
            p.now += static_cast<std::uint32_t>(late);
            EXPECT_EQ(rig.view.noAnswerReports, 0) << late << " " << tick;
            p.advance(1);
        }
        EXPECT_EQ(rig.view.noAnswerReports, 1) << late;
        EXPECT_GE(p.now - issued, 10000u);
        EXPECT_EQ(p.socketsCreated, 2) << late;
    }
}

TEST_F(TransportTest, TimeOutTextIsCorrectedAndSetsTheWatchdog) {
    struct Row {
        const char* text;
        const char* shown;
        int ms;
    };
    for (const Row& r :
         {Row{"abc", "5000", 5000}, Row{"", "5000", 5000}, Row{"70000", "65535", 65535},
          Row{"65536", "65536", 65536}, Row{"65536.5", "65535", 65535}, Row{"-300", "-300", 300},
          Row{"1000", "1000", 1000}, Row{"1e3", "1e3", 1000}}) {
        QString text = QLatin1String(r.text);
        t.lngTimeOut = -1;
        t.SetTimeOutValue(t.lngTimeOut, text);
        EXPECT_EQ(text, QLatin1String(r.shown)) << r.text;
        EXPECT_EQ(t.lngTimeOut, r.ms) << r.text;
        EXPECT_EQ(t.lngTimeOutCopy, r.ms) << r.text;
        EXPECT_EQ(t.TimerTimeOut().interval(), r.ms) << r.text;
    }
    // A short time-out reports sooner.
    QString text = QStringLiteral("300");
    t.SetTimeOutValue(t.lngTimeOut, text);
    start(fn::GetRTStatus, "ID=4");
    platform.advance(599);
    EXPECT_EQ(view.noAnswerReports, 0);
    platform.advance(1);
    EXPECT_EQ(view.noAnswerReports, 1);
}

TEST_F(TransportTest, WatchdogComparesTicksAcrossTheCounterWrap) {
    start(fn::GetRTStatus, "ID=4");
    t.lngRequestStartTick = static_cast<Int32>(0xFFFFF000u);
    t.blnActivity = false;
    platform.now = 0xFFFFF000u + 5000u; // wrapped past zero, exactly the time-out
    t.TimerTimeOut_Timer();
    EXPECT_EQ(view.noAnswerReports, 0);
    platform.now += 1;
    t.TimerTimeOut_Timer();
    EXPECT_EQ(view.noAnswerReports, 1);
}

// --- Waits and counters ----------------------------------------------------------------

} // namespace

// --- Cards that never complete an answer -------------------------------------------------

TEST_F(TransportTest, AnswerThatStopsHalfWayIsEndedByTheWatchdog) {
    start(fn::GetRTStatus, "ID=4", true);
    sock().fireConnect();
    sock().deliver(answerFor(fn::GetRTStatus).left(60)); // then silence, connection held
    platform.advance(3 * 5000);
    EXPECT_EQ(view.noAnswerReports, 1);
    EXPECT_TRUE(handlers.calls.isEmpty());
}

TEST_F(TransportTest, CardThatKeepsClosingWithoutAnAnswerIsReportedAfterTheTimeOut) {
    struct Row {
        const char* what;
        QByteArray sent; // on each connection, before the card closes it
    };
    const Row rows[] = {{"accept and close", ""},
                        {"garbage", "\x01\x02 no tags here \xff"},
                        {"answer without its closing tag",
                         answerFor(fn::GetRTStatus).left(answerFor(fn::GetRTStatus).size() - 16)}};
    for (const Row& r : rows) {
        Rig rig;
        FakePlatform& p = rig.platform;
        rig.t.req.strFunctionName = fn::GetRTStatus;
        rig.t.req.blnRepeatRequest = true;
        rig.t.IssueRequest(true);
        // Every millisecond the card accepts the connection, sends its bytes and closes.
        p.onTick = [&p, &r] {
            FakeTcpClient* s = p.socket();
            if (!s || s->isClosed()) return;
            s->fireConnect();
            if (!r.sent.isEmpty()) s->deliver(r.sent);
            if (p.socket() == s && !s->isClosed()) s->peerClose();
        };
        p.advance(3 * 5000);
        p.onTick = nullptr;
        EXPECT_EQ(rig.view.noAnswerReports, 1) << r.what;
        EXPECT_LE(p.socketsCreated, 10000) << r.what; // about one a millisecond until then
        EXPECT_TRUE(rig.handlers.calls.isEmpty()) << r.what;
    }
}

TEST_F(TransportTest, AnswerFarBeyondAnyCardsIsATransportFault) {
    start(fn::GetRTStatus, "ID=4", true);
    sock().fireConnect();
    const QByteArray piece(8192, 'x');
    for (int i = 0; i < 1024 && view.noAnswerReports == 0; ++i)
        sock().deliver(piece); // 8 MiB at most
    EXPECT_EQ(view.noAnswerReports, 1);
    EXPECT_LE(t.strRecvBuffer.size(), Transport::kLongestAnswer);
    // An answer of a few hundred KiB is still taken.
    start(fn::GetRTStatus, "ID=4", true);
    sock().fireConnect();
    for (int i = 0; i < 40; ++i)
        sock().deliver(piece);
    sock().deliver("</GetRTStatus>");
    EXPECT_EQ(handlers.calls.size(), 1);
}

TEST(TransportLifeTest, EventsHeldByABoxAreDroppedWhenTheTransportIsGone) {
    FakePlatform platform;
    RecordingView view;
    RecordingHandlers handlers;
    auto t = std::make_unique<Transport>(platform, view, handlers);
    t->req.strFunctionName = fn::GetRTStatus;
    t->IssueRequest(true);
    // The connection comes up while a box is open: the event waits for the box.
    platform.onDialog = [&](const DialogRecord&) { platform.socket()->fireConnect(); };
    platform.messageBox("a box");
    EXPECT_TRUE(view.requests.isEmpty());
    t.reset();
    platform.advance(10); // would deliver it to the transport that is gone
    EXPECT_TRUE(view.requests.isEmpty());
}
