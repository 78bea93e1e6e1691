#pragma once

// The request transport: one request per TCP connection, the answer accumulated until its
// closing tag, then dispatched; a watchdog timer reports a silent server.

#include "base/integers.h"
#include "base/platform.h"
#include "dispatch.h"
#include "link_view.h"
#include "request_state.h"

#include <QByteArray>
#include <QString>
#include <memory>
#include <vector>

namespace torv {

class Transport {
public:
    // An answer longer than this is a transport fault: no answer of the card comes near it.
    static constexpr qsizetype kLongestAnswer = 4 * 1024 * 1024;

    Transport(Platform& platform, LinkView& view, AnswerHandlers& handlers);
    ~Transport();
    Transport(const Transport&) = delete;
    Transport& operator=(const Transport&) = delete;

    RequestState req; // the request state

    // Connection state; the answer handlers and the tests read it.
    QString strRecvBuffer;    // everything received on the current connection
    Int16 iSearchStart = 1;   // 1-based start of the completion search in strRecvBuffer
    bool blnActivity = false; // something happened since the last watchdog tick
    Int32 lngRequestStartTick = 0, lngTimeOut = 5000, lngTimeOutCopy = 5000, lngRequestsSent = 0;
    Int16 iXmlErrors = 0;

    // Starts the current request on a fresh connection (true) or only closes the
    // connection (false). Safe to call from inside an answer handler or any socket event.
    void IssueRequest(bool bConnect);
    // One status request: "GetRTStatus" (the connect step supplies its body).
    void RequestRTStatus();
    // Writes one request on the open connection as three sends: the request line, the
    // Content-Length line with the blank line, and the body with CR LF.
    void Send2Server(const QString& strFunctionName, const QString& strParameters);
    // Closes the connection; no Close event follows.
    void closeSocket();
    // Reads the time-out from the text of txtTimeout2 (correcting the text where needed)
    // into L_TimeOutValue and the watchdog interval.
    void SetTimeOutValue(Int32& L_TimeOutValue, QString& txtTimeout2);
    // Processes events until `flag` is true (true) or `timeOutMs` have passed (false).
    bool WaitTrueFlag(const bool& flag, int timeOutMs);
    // Processes events for `timeOutMs` milliseconds.
    void WaitMS(int timeOutMs);
    // Counts an answer that carried an error; nothing shows the count.
    void CreateXMLErrMsg();
    PeriodicTimer& TimerTimeOut();
    const PeriodicTimer& TimerTimeOut() const { return *timer_; }

    // The socket and timer events. The platform's callbacks reach them through the event
    // boundary; tests may call them directly.
    void tcpClient_Connect();
    void tcpClient_DataArrival(const QByteArray& data);
    void tcpClient_Close();
    void tcpClient_Error(int number, const QString& description);
    void TimerTimeOut_Timer();

    // A request is on its way: its connection is open and its answer not yet complete.
    bool awaitingAnswer() const { return client_ != nullptr && answerPending_; }
    // ... and the request has been written on it: the card may have handed out its answer.
    bool requestOnWire() const { return awaitingAnswer() && requestOnWire_; }

private:
    // Counts the transport's own event frames on the stack, so a retired connection is
    // destroyed only when none of its callbacks can still be running.
    class EventScope;

    std::uint32_t now() const { return platform_.GetTickCount(); }
    void retireClient();
    void releaseRetired();

    Platform& platform_;
    LinkView& view_;
    AnswerHandlers& handlers_;
    std::unique_ptr<TcpClient> client_;
    std::vector<std::unique_ptr<TcpClient>> retired_;
    std::unique_ptr<PeriodicTimer> timer_;
    std::uint64_t generation_ = 0; // of the current connection; stale events are ignored
    int eventDepth_ = 0;
    bool answerPending_ = false;
    // Held events may outlive the transport in the platform's queue; they check this first.
    std::shared_ptr<int> life_ = std::make_shared<int>(0);
    bool tickHeld_ = false;            // a watchdog tick waits for a modal box to close
    bool reconnectAfterClose_ = false; // IssueRequest runs for the Close event
    bool peerClosedSinceTick_ =
        false;                    // the card closed this request's connection since the last tick
    bool requestOnWire_ = false;  // the current request has been sent
    qsizetype tagSearchedTo_ = 0; // the completion search has seen the buffer up to here
    qsizetype lastTagAt_ = -1;    // where the closing tag last started in the buffer
};

} // namespace torv
