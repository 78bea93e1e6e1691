#include "transport.h"

#include "base/event_boundary.h"
#include "base/numeric.h"
#include "base/ticks.h"
#include "catalogue.h"
#include "elements.h"

#include <algorithm>
#include <cmath>

namespace torv {

namespace {
constexpr int kDesignedTimeOut = 5000;
constexpr int kWaitSliceMs = 5;
} // namespace

class Transport::EventScope {
public:
    explicit EventScope(Transport& t)
        : t_(t) {
        // No callback of a retired connection can be running at depth 0.
        if (t_.eventDepth_ == 0) t_.releaseRetired();
        ++t_.eventDepth_;
    }
    ~EventScope() {
        --t_.eventDepth_;
        t_.view_.eventHandled();
    }
    EventScope(const EventScope&) = delete;
    EventScope& operator=(const EventScope&) = delete;

private:
    Transport& t_;
};

Transport::Transport(Platform& platform, LinkView& view, AnswerHandlers& handlers)
    : platform_(platform)
    , view_(view)
    , handlers_(handlers)
    , timer_(platform.createTimer()) {
    timer_->setInterval(kDesignedTimeOut);
    timer_->setEnabled(false);
    // Ticks that come while a modal box is open are held; one held tick stands for all.
    timer_->onTick = [this] {
        if (tickHeld_) return;
        tickHeld_ = true;
        platform_.deliverOrHold([this, life = std::weak_ptr<int>(life_)] {
            if (life.expired()) return;
            tickHeld_ = false;
            if (!timer_->isEnabled()) return; // disabled while it was held
            EventScope scope(*this);
            runHandler(platform_, [this] { TimerTimeOut_Timer(); });
        });
    };
}

Transport::~Transport() {
    timer_->onTick = nullptr;
    timer_->setEnabled(false);
    if (client_) client_->close();
    client_.reset();
    retired_.clear();
}

PeriodicTimer& Transport::TimerTimeOut() {
    return *timer_;
}

void Transport::retireClient() {
    if (!client_) return;
    client_->close();
    ++generation_; // whatever the old connection still reports is ignored
    answerPending_ = false;
    retired_.push_back(std::move(client_));
    if (eventDepth_ == 0) releaseRetired();
}

void Transport::releaseRetired() {
    retired_.clear();
}

void Transport::closeSocket() {
    retireClient();
}

void Transport::IssueRequest(bool bConnect) {
    if (!reconnectAfterClose_) lngRequestStartTick = static_cast<Int32>(now());
    if (!bConnect) {
        closeSocket();
        return;
    }
    closeSocket();
    view_.setCommStatus(QStringLiteral("Disconnected"));

    const QString address = view_.hostText();
    QString host;
    std::uint16_t port = 80;
    // An address that does not parse is tried as typed; the connection error reports it.
    if (!parseHostPort(address, host, port)) {
        host = address.trimmed();
        port = 80;
    }

    client_ = platform_.createTcpClient();
    const std::uint64_t gen = ++generation_;
    // Every socket event goes through the platform, which holds it while a modal box is
    // open; whether it still belongs to the current connection is decided when it runs.
    client_->onConnect = [this, gen] {
        platform_.deliverOrHold([this, life = std::weak_ptr<int>(life_), gen] {
            if (life.expired()) return;
            if (gen != generation_) return;
            EventScope scope(*this);
            runHandler(platform_, [this] { tcpClient_Connect(); });
        });
    };
    client_->onDataArrival = [this, gen](const QByteArray& data) {
        platform_.deliverOrHold([this, life = std::weak_ptr<int>(life_), gen, data] {
            if (life.expired()) return;
            if (gen != generation_) return;
            EventScope scope(*this);
            runHandler(platform_, [this, &data] { tcpClient_DataArrival(data); });
        });
    };
    client_->onClose = [this, gen] {
        platform_.deliverOrHold([this, life = std::weak_ptr<int>(life_), gen] {
            if (life.expired()) return;
            if (gen != generation_) return;
            EventScope scope(*this);
            runHandler(platform_, [this] { tcpClient_Close(); });
        });
    };
    client_->onError = [this, gen](int number, const QString& description) {
        platform_.deliverOrHold([this, life = std::weak_ptr<int>(life_), gen, number, description] {
            if (life.expired()) return;
            if (gen != generation_) return;
            EventScope scope(*this);
            runHandler(platform_, [&] { tcpClient_Error(number, description); });
        });
    };

    // The request is armed before the connection starts, so a platform that reports a
    // failure at once still finds a consistent state. A reconnect after the card closed
    // without a complete answer keeps the watchdog's reference: it measures from the last
    // completed answer (or the start of the request), so a card that keeps closing is
    // reported like a silent one.
    blnActivity = false;
    if (!reconnectAfterClose_) lngRequestStartTick = static_cast<Int32>(now());
    answerPending_ = true;
    timer_->setEnabled(true);
    client_->connectToHost(host, port);
}

void Transport::RequestRTStatus() {
    req.strFunctionName = fn::GetRTStatus;
    req.strParameters.clear();
    IssueRequest(true);
}

void Transport::Send2Server(const QString& strFunctionName, const QString& strParameters) {
    if (!client_)
        throw RuntimeError(40006, QStringLiteral("Wrong protocol or connection state for the "
                                                 "requested transaction or request"));
    // Hold the connection: a send may fail and report at once.
    TcpClient& client = *client_;
    const std::uint64_t gen = generation_;
    const std::array<QByteArray, 3> parts = requestParts(strFunctionName, strParameters);
    client.send(parts[0]);
    if (gen != generation_) return;
    client.send(parts[1]);
    if (gen != generation_) return;
    client.send(parts[2]);
    inc32(lngRequestsSent);
}

void Transport::tcpClient_Connect() {
    view_.setCommStatus(QStringLiteral("Connected"));
    iSearchStart = 1;
    req.strParameters = bodyOnConnect(req.strFunctionName, req.strParameters);
    req.strResponse.clear();
    strRecvBuffer.clear();
    tagSearchedTo_ = 0;
    lastTagAt_ = -1;
    const std::uint64_t gen = generation_;
    Send2Server(req.strFunctionName, req.strParameters);
    if (gen != generation_) return;
    blnActivity = true;
    view_.requestSent(req.strFunctionName);
}

void Transport::tcpClient_DataArrival(const QByteArray& data) {
    if (data.isEmpty()) return; // nothing arrived
    if (strRecvBuffer.size() + data.size() > kLongestAnswer) {
        // Far beyond any answer of the card: a transport fault, reported like a silent server.
        strRecvBuffer.clear();
        timer_->setEnabled(false);
        view_.ServerNoAnswer();
        return;
    }
    strRecvBuffer.append(QLatin1String(data.constData(), data.size()));

    // Only the start of the closing tag is needed; the trailing ">" may still be on its way.
    // Each character is searched once: the new text (with the few characters before it
    // that a split tag may start in) is scanned, and the last tag seen is remembered.
    const QString closingTag = QStringLiteral("</") + req.strFunctionName;
    const qsizetype scanFrom = std::max<qsizetype>(0, tagSearchedTo_ - closingTag.size() + 1);
    for (qsizetype at = strRecvBuffer.indexOf(closingTag, scanFrom); at >= 0;
         at = strRecvBuffer.indexOf(closingTag, at + 1))
        lastTagAt_ = at;
    tagSearchedTo_ = strRecvBuffer.size();
    const qsizetype from = std::max<qsizetype>(iSearchStart, 1) - 1;
    const bool complete = lastTagAt_ >= from;

    blnActivity = true;

    if (complete) {
        // Only a complete answer stops the watchdog: one that never completes is ended by
        // it after the time-out, one that keeps trickling in keeps it from firing.
        timer_->setEnabled(false);
        answerPending_ = false;
        req.strResponse = strRecvBuffer;
        // The handler gets its own copy: a request it starts clears the buffers.
        const QString answer = req.strResponse;
        view_.showRawAnswer(rawAnswerText(answer));
        const std::uint64_t gen = generation_;
        try {
            dispatchAnswer(platform_, req.strFunctionName, answer, handlers_);
        } catch (const RuntimeError&) {
            // The handler ended with a run-time error before it issued the next request:
            // the card's Close does not repeat it, so the same failure is shown once.
            if (gen == generation_) {
                retireClient();
                timer_->setEnabled(false);
                view_.setCommStatus(QStringLiteral("Not Connected"));
            }
            throw;
        }
        return; // the handler may have started the next request
    }
    // The next search starts at the size of this chunk, counted from the start of the whole
    // buffer: a closing tag split so that it starts before that position is missed.
    iSearchStart = CInt(static_cast<double>(data.size()));
}

void Transport::tcpClient_Close() {
    // The card closed without a complete answer: what it sent on this connection is no sign
    // of life for the watchdog.
    peerClosedSinceTick_ = true;
    reconnectAfterClose_ = true;
    struct Reset {
        bool& flag;
        ~Reset() { flag = false; }
    } reset{reconnectAfterClose_};
    IssueRequest(req.blnRepeatRequest);
    view_.setCommStatus(QStringLiteral("Not Connected"));
}

void Transport::tcpClient_Error(int, const QString&) {
    view_.ServerNoAnswer();
}

void Transport::TimerTimeOut_Timer() {
    const bool closed = peerClosedSinceTick_;
    peerClosedSinceTick_ = false;
    if (blnActivity && !closed) {
        blnActivity = false;
        return;
    }
    blnActivity = false;
    if (ticksSince(lngRequestStartTick, now()) > lngTimeOut) {
        timer_->setEnabled(false);
        view_.ServerNoAnswer();
    }
}

void Transport::SetTimeOutValue(Int32& L_TimeOutValue, QString& txtTimeout2) {
    if (IsNumber(txtTimeout2)) {
        if (CSng(txtTimeout2) > 65536.0f) {
            L_TimeOutValue = 65535;
            txtTimeout2 = QStringLiteral("65535");
        }
    } else {
        txtTimeout2 = QStringLiteral("5000");
    }
    L_TimeOutValue = CLng(std::fabs(CDbl(txtTimeout2)));
    lngTimeOutCopy = L_TimeOutValue;
    timer_->setInterval(static_cast<int>(L_TimeOutValue));
}

bool Transport::WaitTrueFlag(const bool& flag, int timeOutMs) {
    const std::uint32_t deadline = now() + static_cast<std::uint32_t>(timeOutMs);
    if (flag) return true;
    for (;;) {
        const Int32 left = ticksBetween(now(), deadline);
        if (left < 0) return false;
        platform_.processEvents(std::clamp(left, 0, kWaitSliceMs));
        if (flag) return true;
    }
}

void Transport::WaitMS(int timeOutMs) {
    const std::uint32_t deadline = now() + static_cast<std::uint32_t>(timeOutMs);
    for (Int32 left = ticksBetween(now(), deadline); left > 0; left = ticksBetween(now(), deadline))
        platform_.processEvents(std::min(left, kWaitSliceMs));
}

void Transport::CreateXMLErrMsg() {
    inc16(iXmlErrors);
}

} // namespace torv
