#include "server.h"

#include "sim/request_reader.h"

#include <QDateTime>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <optional>

#include <sys/socket.h>

namespace torv::sim {

namespace {

constexpr int kLingerMs = 2000; // how long a closed answer waits for the client to close
constexpr int kOversizePadding = 33000;
constexpr int kGarbageBytes = 300;
constexpr int kMaxSampleWaits = 1000;

// Closes with a reset (RST) instead of the orderly end of the connection.
void resetSocket(QTcpSocket* socket) {
    const qintptr fd = socket->socketDescriptor();
    if (fd >= 0) {
        linger l{};
        l.l_onoff = 1;
        l.l_linger = 0;
        ::setsockopt(static_cast<int>(fd), SOL_SOCKET, SO_LINGER, &l, sizeof l);
    }
    socket->abort();
}

// Bytes that are no answer: no tags that close anything, some binary.
QByteArray garbage(quint32 seed) {
    QByteArray out;
    out.reserve(kGarbageBytes);
    quint32 x = seed * 2654435761u + 12345u;
    while (out.size() < kGarbageBytes) {
        x = x * 1664525u + 1013904223u;
        const char c = static_cast<char>(x >> 24);
        if (c == '/') continue;
        out.append(c);
    }
    return out;
}

// The answer with a filler element right after its opening tag, longer than 32767 characters.
QString padded(const QString& tagged) {
    const int open = static_cast<int>(tagged.indexOf(QLatin1Char('>')));
    const QString filler = QStringLiteral("<FILLER>") +
                           QString(kOversizePadding, QLatin1Char('x')) +
                           QStringLiteral("</FILLER>");
    return tagged.left(open + 1) + filler + tagged.mid(open + 1);
}

QString errorCodeOf(const QString& tagged) {
    const QString open = QStringLiteral("<ERROR_CODE>");
    const auto a = tagged.indexOf(open);
    const auto b = tagged.indexOf(QStringLiteral("</ERROR_CODE>"));
    if (a < 0 || b < a) return QStringLiteral("?");
    return tagged.mid(a + open.size(), b - a - open.size());
}

QString shortBody(const QString& body) {
    if (body.size() <= 80) return body;
    return body.left(77) + QStringLiteral("...");
}

// One client connection: reads one request, answers it (with its fault), closes.
class Connection : public QObject {
public:
    Connection(Server& server, QTcpSocket* socket, QObject* parent)
        : QObject(parent)
        , server_(server)
        , socket_(socket)
        , reader_(server.options().maxRequestBytes) {
        socket_->setParent(this);
        socket_->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        peer_ = socket_->peerAddress().toString() + QLatin1Char(':') +
                QString::number(socket_->peerPort());
        connect(socket_, &QTcpSocket::readyRead, this, [this] { onReadyRead(); });
        connect(socket_, &QTcpSocket::disconnected, this, [this] { finish(); });
        connect(socket_, &QTcpSocket::errorOccurred, this, [this] {
            if (socket_->state() == QAbstractSocket::UnconnectedState) finish();
        });
        connect(socket_, &QTcpSocket::bytesWritten, this, [this] {
            if (socket_->bytesToWrite() == 0 && afterFlush_) {
                auto next = std::move(afterFlush_);
                afterFlush_ = nullptr;
                next();
            }
        });
        timer_.setSingleShot(true);
        connect(&timer_, &QTimer::timeout, this, [this] { onTimer(); });
        timer_.start(std::max(1, server_.options().readTimeoutMs));
        // However slowly its bytes come, the request has this long to arrive whole.
        deadline_.setSingleShot(true);
        connect(&deadline_, &QTimer::timeout, this, [this] {
            if (phase_ != Phase::Reading) return;
            server_.log(peer_ + QStringLiteral(" request not complete in time: closed"));
            socket_->abort();
            finish();
        });
        deadline_.start(std::max(1, server_.options().requestDeadlineMs));
        // Bytes may have arrived before the connections above were made.
        if (socket_->bytesAvailable() > 0) QTimer::singleShot(0, this, [this] { onReadyRead(); });
    }

private:
    enum class Phase { Reading, Waiting, Answering, Holding, Closing, Done };

    void onReadyRead() {
        if (phase_ == Phase::Done) return;
        const QByteArray data = socket_->readAll();
        if (phase_ != Phase::Reading || data.isEmpty()) return; // later bytes are ignored
        timer_.start(std::max(1, server_.options().readTimeoutMs));
        switch (reader_.feed(data)) {
        case RequestReader::State::Complete:
            onRequest();
            break;
        case RequestReader::State::Failed:
            answerError(reader_.errorCode(), reader_.errorDescription());
            break;
        case RequestReader::State::Incomplete:
            break;
        }
    }

    void onTimer() {
        switch (phase_) {
        case Phase::Reading:
            if (reader_.bytesReceived() == 0) {
                server_.log(peer_ + QStringLiteral(" said nothing: closed"));
                closeGracefully();
            } else {
                answerError(ErrIncomplete, QStringLiteral("Request incomplete"));
            }
            break;
        case Phase::Holding:
        case Phase::Closing:
            socket_->abort();
            finish();
            break;
        default:
            break;
        }
    }

    void record() {
        if (!reader_.hasRequestLine()) return;
        server_.state().logRequest(
            RequestRecord{reader_.function(), reader_.body(), reader_.contentLength()});
    }

    QString requestText() const {
        QString s = reader_.hasRequestLine() ? reader_.function() : QStringLiteral("(no request)");
        if (reader_.contentLength() >= 0)
            s += QStringLiteral(" [") + QString::number(reader_.contentLength()) + QLatin1Char(']');
        if (!reader_.body().isEmpty()) s += QLatin1Char(' ') + shortBody(reader_.body());
        return s;
    }

    void logAnswer(const QString& outcome) {
        if (!server_.logging()) return;
        QString line = peer_ + QLatin1Char(' ') + requestText() + QStringLiteral(" -> ") + outcome;
        if (fault_)
            line += QStringLiteral(" (fault ") + faultKindName(fault_->kind) + QLatin1Char(')');
        server_.log(line);
    }

    void answerError(int code, const QString& description) {
        record();
        const QString tag = reader_.hasRequestLine() ? reader_.function() : QString();
        logAnswer(QString::number(code) + QLatin1Char(' ') + description);
        send(httpAnswer(Card::errorAnswer(tag, code, description)));
    }

    void onRequest() {
        timer_.stop();
        record();
        const int answerMs = server_.options().answerMs;
        if (answerMs <= 0) return respond();
        // The card's own answer time, before any fault or answer.
        phase_ = Phase::Waiting;
        QTimer::singleShot(answerMs, Qt::PreciseTimer, this, [this] {
            if (phase_ == Phase::Waiting) respond();
        });
    }

    void respond() {
        fault_ = server_.state().takeFault(reader_.function());
        const Fault::Kind kind = fault_ ? fault_->kind : Fault::Kind::None;
        switch (kind) {
        case Fault::Kind::Silent:
            logAnswer(QStringLiteral("no answer"));
            phase_ = Phase::Holding;
            timer_.start(std::max(1, server_.options().silentHoldMs));
            return;
        case Fault::Kind::Refuse:
            logAnswer(QStringLiteral("reset"));
            resetSocket(socket_);
            finish();
            return;
        case Fault::Kind::Garbage:
            logAnswer(QStringLiteral("garbage"));
            send(garbage(static_cast<quint32>(reinterpret_cast<quintptr>(this))));
            return;
        case Fault::Kind::ErrorCode: {
            const int code = fault_->errorCode;
            const QString tagged = server_.state().withCard([&](Card& card) {
                return card.forcedAnswer(reader_.function(), code,
                                         QStringLiteral("Error ") + QString::number(code));
            });
            logAnswer(errorCodeOf(tagged));
            send(httpAnswer(tagged));
            return;
        }
        default:
            answer();
        }
    }

    // The card's answer; a fast-sampling answer waits until a reading is due.
    void answer() {
        const QString function = reader_.function();
        if (function == QLatin1String("GetFastSampling") && waits_ < kMaxSampleWaits) {
            const qint64 due =
                server_.state().withCard([](Card& card) { return card.msUntilReadingDue(); });
            if (due > 0) {
                ++waits_;
                phase_ = Phase::Waiting;
                QTimer::singleShot(static_cast<int>(std::min<qint64>(due, 1000)), Qt::PreciseTimer,
                                   this, [this] {
                                       if (phase_ == Phase::Waiting) answer();
                                   });
                return;
            }
        }
        QString tagged = server_.state().withCard(
            [&](Card& card) { return card.answer(function, reader_.body()); });
        logAnswer(errorCodeOf(tagged));
        if (fault_ && fault_->kind == Fault::Kind::Oversize) tagged = padded(tagged);
        send(httpAnswer(tagged));
    }

    void send(const QByteArray& bytes) {
        phase_ = Phase::Answering;
        timer_.stop();
        out_ = bytes;
        sent_ = 0;
        piece_ = 0;
        const Fault::Kind kind = fault_ ? fault_->kind : Fault::Kind::None;
        if (kind == Fault::Kind::Chunked || kind == Fault::Kind::Trickle) {
            sendPiece();
        } else if (kind == Fault::Kind::Reset) {
            qsizetype n = fault_->chunkSizes.isEmpty() ? out_.size() / 2 : fault_->chunkSizes[0];
            n = std::clamp<qsizetype>(n, 0, std::max<qsizetype>(0, out_.size() - 1));
            socket_->write(out_.left(n));
            socket_->flush();
            whenFlushed([this] {
                resetSocket(socket_);
                finish();
            });
        } else {
            socket_->write(out_);
            socket_->flush();
            whenFlushed([this] { closeGracefully(); });
        }
    }

    void sendPiece() {
        if (phase_ != Phase::Answering) return;
        const bool trickle = fault_->kind == Fault::Kind::Trickle;
        QList<int> sizes = fault_->chunkSizes;
        if (sizes.isEmpty()) sizes = {trickle ? 1 : 64};
        const int size = std::max(1, sizes[std::min<qsizetype>(piece_, sizes.size() - 1)]);
        const int delay =
            trickle ? (fault_->delayMs > 0 ? fault_->delayMs : 50) : std::max(1, fault_->delayMs);
        socket_->write(out_.mid(sent_, size));
        socket_->flush();
        sent_ += size;
        ++piece_;
        if (sent_ >= out_.size()) {
            whenFlushed([this] { closeGracefully(); });
            return;
        }
        whenFlushed([this, delay] {
            QTimer::singleShot(delay, Qt::PreciseTimer, this, [this] { sendPiece(); });
        });
    }

    void whenFlushed(std::function<void()> next) {
        if (socket_->bytesToWrite() == 0)
            next();
        else
            afterFlush_ = std::move(next);
    }

    // Ends our side (FIN) and waits for the client to close, so that a client still sending
    // never makes the connection reset before it has read the answer.
    void closeGracefully() {
        if (phase_ == Phase::Done) return;
        phase_ = Phase::Closing;
        const qintptr fd = socket_->socketDescriptor();
        if (fd < 0 || socket_->state() != QAbstractSocket::ConnectedState) {
            finish();
            return;
        }
        ::shutdown(static_cast<int>(fd), SHUT_WR);
        timer_.start(kLingerMs);
    }

    void finish() {
        if (phase_ == Phase::Done) return;
        phase_ = Phase::Done;
        timer_.stop();
        deadline_.stop();
        afterFlush_ = nullptr;
        deleteLater();
    }

    Server& server_;
    QTcpSocket* socket_;
    RequestReader reader_;
    QString peer_;
    QTimer timer_;
    QTimer deadline_;
    Phase phase_ = Phase::Reading;
    std::optional<Fault> fault_;
    QByteArray out_;
    qsizetype sent_ = 0;
    int piece_ = 0;
    int waits_ = 0;
    std::function<void()> afterFlush_;
};

} // namespace

QByteArray httpAnswer(const QString& tagged) {
    const QByteArray body = tagged.toUtf8();
    QByteArray out =
        QByteArrayLiteral("HTTP/1.0 200 OK\r\nContent-Type: text/xml\r\nContent-Length: ");
    out += QByteArray::number(body.size());
    out += "\r\n\r\n";
    out += body;
    return out;
}

Server::Server(std::shared_ptr<SimState> state, const SimOptions& options, QObject* parent)
    : QObject(parent)
    , state_(std::move(state))
    , options_(options)
    , listener_(new QTcpServer(this))
    , connections_(new QObject(this)) {
    connect(listener_, &QTcpServer::newConnection, this, [this] { accept(); });
}

Server::~Server() {
    close();
}

bool Server::listen(const QHostAddress& address, quint16 port) {
    close();
    if (!listener_->listen(address, port)) {
        error_ = listener_->errorString();
        return false;
    }
    address_ = address;
    port_ = listener_->serverPort();
    wanted_ = true;
    error_.clear();
    applyFaults();
    return true;
}

void Server::close() {
    wanted_ = false;
    listener_->close();
    delete connections_;
    connections_ = new QObject(this);
}

bool Server::isListening() const {
    return listener_->isListening();
}

quint16 Server::port() const {
    return wanted_ ? port_ : 0;
}

QString Server::errorString() const {
    return error_;
}

int Server::openConnections() const {
    return static_cast<int>(connections_->children().size());
}

void Server::applyFaults() {
    if (!wanted_) return;
    if (state_->refusingAll()) {
        if (listener_->isListening()) {
            listener_->close();
            log(QStringLiteral("refusing connections"));
        }
    } else if (!listener_->isListening()) {
        if (listener_->listen(address_, port_))
            log(QStringLiteral("accepting connections again"));
        else
            log(QStringLiteral("cannot listen again on port ") + QString::number(port_) +
                QStringLiteral(": ") + listener_->errorString());
    }
}

void Server::setLogSink(std::function<void(const QString&)> sink) {
    sink_ = std::move(sink);
}

bool Server::logging() const {
    return options_.log || sink_;
}

void Server::log(const QString& line) {
    if (!logging()) return;
    const QString stamped = QTime::currentTime().toString(QStringLiteral("HH:mm:ss.zzz ")) + line;
    if (sink_) {
        sink_(stamped);
        return;
    }
    std::fprintf(stderr, "%s\n", stamped.toLocal8Bit().constData());
    std::fflush(stderr);
}

void Server::accept() {
    while (QTcpSocket* socket = listener_->nextPendingConnection()) {
        if (state_->refusingAll() || state_->takeAcceptFault()) {
            log(socket->peerAddress().toString() + QLatin1Char(':') +
                QString::number(socket->peerPort()) + QStringLiteral(" refused (fault refuse)"));
            resetSocket(socket);
            socket->deleteLater();
            continue;
        }
        if (openConnections() >= std::max(1, options_.maxConnections)) {
            // Politely: an answer that says why, then the orderly end of the connection.
            log(socket->peerAddress().toString() + QLatin1Char(':') +
                QString::number(socket->peerPort()) + QStringLiteral(" refused: busy"));
            socket->write(httpAnswer(
                Card::errorAnswer(QString(), ErrBusy, QStringLiteral("Too many connections"))));
            socket->disconnectFromHost();
            connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
            if (socket->state() == QAbstractSocket::UnconnectedState) socket->deleteLater();
            continue;
        }
        new Connection(*this, socket, connections_);
    }
}

} // namespace torv::sim
