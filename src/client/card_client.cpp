// One card on QtNetwork: a fresh connection per request, the requests of one card one after
// the other, the answer complete at the start of its closing tag.

#include "card_client.h"

#include "link/catalogue.h"
#include "link/tcp_client.h"
#include "link/transport.h"

#include <QAbstractSocket>
#include <QElapsedTimer>
#include <QTimer>

#include <deque>
#include <memory>

namespace torv::client {

namespace {

struct Job {
    QString function;
    QString body;
    std::function<void(const Reply&)> done;
};

} // namespace

struct CardClient::Impl {
    CardClient* q = nullptr;
    int timeoutMs = 5000;
    std::deque<Job> queue;
    bool running = false;   // the front job is in flight
    bool scheduled = false; // a start waits in the event loop
    bool finishing = false; // a `done` runs: the next request starts right after it
    std::shared_ptr<SocketPool> pool = createSocketPool();
    std::unique_ptr<TcpClient> socket; // the connection of the request in flight
    QTimer timer;
    QElapsedTimer clock;
    QByteArray buffer;
    QByteArray closingTag; // "</" + function
    qsizetype searchedTo = 0;
    bool connected = false;
    // Tells a callback that ran the user's `done` whether the client still exists.
    std::shared_ptr<bool> alive = std::make_shared<bool>(true);

    void schedule();
    void startNext();
    void onConnected();
    void onClosed();
    void onError(int error, const QString& description);
    bool takeData(const QByteArray& data); // true when the answer is complete or has failed
    void fail(FailureKind kind, const QString& what);
    void finish(Reply reply);
    void dropSocket();
    QString where() const { return q->address().text(); }
};

void CardClient::Impl::schedule() {
    if (running || scheduled || finishing || queue.empty()) return;
    scheduled = true;
    QTimer::singleShot(0, q, [this] {
        scheduled = false;
        startNext();
    });
}

void CardClient::Impl::startNext() {
    if (running || queue.empty()) return;
    running = true;
    buffer.clear();
    searchedTo = 0;
    connected = false;
    closingTag = (QStringLiteral("</") + queue.front().function).toLatin1();
    clock.start();
    socket = createSocketTcpClient(pool);
    socket->onConnect = [this] { onConnected(); };
    socket->onDataArrival = [this](const QByteArray& data) { takeData(data); };
    socket->onClose = [this] { onClosed(); };
    socket->onError = [this](int error, const QString& description) {
        onError(error, description);
    };
    timer.start(timeoutMs);
    socket->connectToHost(q->address().host, q->address().port);
}

void CardClient::Impl::onConnected() {
    connected = true;
    const Job& job = queue.front();
    // The three parts leave in one write when this returns.
    for (const QByteArray& part : requestParts(job.function, job.body))
        socket->send(part);
}

bool CardClient::Impl::takeData(const QByteArray& data) {
    if (buffer.size() + data.size() > Transport::kLongestAnswer) {
        fail(FailureKind::Oversize, QStringLiteral("more than %1 bytes without a complete answer")
                                        .arg(Transport::kLongestAnswer));
        return true;
    }
    buffer.append(data);
    // Only the new bytes (and the few before them a split tag may start in) are searched.
    const qsizetype from = std::max<qsizetype>(0, searchedTo - closingTag.size() + 1);
    searchedTo = buffer.size();
    if (buffer.indexOf(closingTag, from) < 0) return false;
    Reply reply;
    reply.answer = QString::fromLatin1(buffer);
    finish(std::move(reply));
    return true;
}

void CardClient::Impl::onClosed() {
    if (!socket) return;
    if (buffer.isEmpty()) {
        fail(FailureKind::CutOff, QStringLiteral("connection closed before any answer"));
        return;
    }
    // Bytes that do not even begin like the card's answer are not the card's.
    const QByteArray opening = '<' + closingTag.mid(2);
    if (!buffer.startsWith("HTTP/") && !buffer.contains(opening)) {
        fail(FailureKind::Malformed,
             QStringLiteral("%1 bytes that are not the card's answer").arg(buffer.size()));
        return;
    }
    fail(FailureKind::CutOff,
         QStringLiteral("connection closed after %1 bytes, before a complete answer")
             .arg(buffer.size()));
}

void CardClient::Impl::onError(int error, const QString& description) {
    if (!socket) return;
    if (connected) {
        onClosed(); // reset or broken after the request went out
        return;
    }
    fail(FailureKind::Refused, error == QAbstractSocket::ConnectionRefusedError
                                   ? QStringLiteral("the card refused the connection")
                                   : QStringLiteral("no connection: ") + description);
}

void CardClient::Impl::fail(FailureKind kind, const QString& what) {
    Reply reply;
    reply.failure =
        Failure{kind,
                where() + QStringLiteral(": ") + QLatin1String(failureName(kind)) + ": " + what,
                {},
                {}};
    finish(std::move(reply));
}

void CardClient::Impl::dropSocket() {
    if (!socket) return;
    // The connection may be dropped from inside its own callback; it allows that.
    std::unique_ptr<TcpClient> s = std::move(socket);
    s->onConnect = nullptr;
    s->onDataArrival = nullptr;
    s->onClose = nullptr;
    s->onError = nullptr;
    s->close();
}

void CardClient::Impl::finish(Reply reply) {
    timer.stop();
    dropSocket();
    Job job = std::move(queue.front());
    queue.pop_front();
    running = false;
    reply.function = job.function;
    reply.elapsedMs = clock.nsecsElapsed() / 1e6;
    const std::weak_ptr<bool> stillHere = alive;
    finishing = true;
    if (job.done) job.done(reply);
    if (stillHere.expired()) return; // `done` destroyed the client
    finishing = false;
    startNext();
}

CardClient::CardClient(CardAddress address, int timeoutMs, QObject* parent)
    : QObject(parent)
    , address_(std::move(address))
    , d_(new Impl) {
    d_->q = this;
    d_->timeoutMs = std::max(1, timeoutMs);
    d_->timer.setSingleShot(true);
    QObject::connect(&d_->timer, &QTimer::timeout, this, [this] {
        if (!d_->socket) return;
        d_->fail(FailureKind::Silent,
                 d_->connected
                     ? QStringLiteral("no complete answer within %1 ms").arg(d_->timeoutMs)
                     : QStringLiteral("no connection within %1 ms").arg(d_->timeoutMs));
    });
}

CardClient::~CardClient() {
    d_->dropSocket();
    delete d_;
}

void CardClient::request(const QString& function, const QString& body,
                         std::function<void(const Reply&)> done) {
    d_->queue.push_back({function, body, std::move(done)});
    d_->schedule();
}

void CardClient::status(std::function<void(const Reply&, const StatusRecord&)> done) {
    request(fn::GetRTStatus, QStringLiteral("ID=4"),
            [this, done = std::move(done)](const Reply& reply) {
                StatusRecord record;
                if (reply.failure) {
                    done(reply, record);
                    return;
                }
                Reply checked = reply;
                checked.failure = parseStatus(reply.answer, record);
                if (checked.failure)
                    checked.failure->detail =
                        address_.text() + QStringLiteral(": ") + checked.failure->detail;
                done(checked, record);
            });
}

int CardClient::pending() const {
    return static_cast<int>(d_->queue.size());
}

} // namespace torv::client
