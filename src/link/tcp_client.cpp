#include "tcp_client.h"

#include <QAbstractSocket>
#include <QHostAddress>
#include <QHostInfo>
#include <QList>
#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

#include <functional>
#include <memory>
#include <vector>

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace torv {

namespace {

// The error numbers reported to onError are those of QAbstractSocket::SocketError.
int socketErrorOf(int error) {
    switch (error) {
    case ECONNREFUSED:
        return QAbstractSocket::ConnectionRefusedError;
    case ECONNRESET:
    case EPIPE:
        return QAbstractSocket::RemoteHostClosedError;
    case ETIMEDOUT:
        return QAbstractSocket::SocketTimeoutError;
    case EACCES:
    case EPERM:
        return QAbstractSocket::SocketAccessError;
    case EMFILE:
    case ENFILE:
    case ENOBUFS:
    case ENOMEM:
        return QAbstractSocket::SocketResourceError;
    case ENETUNREACH:
    case EHOSTUNREACH:
    case ENETDOWN:
    case EADDRNOTAVAIL:
        return QAbstractSocket::NetworkError;
    default:
        return QAbstractSocket::UnknownSocketError;
    }
}

QString errorText(int error) {
    return QString::fromLocal8Bit(std::strerror(error));
}

// A socket notifier with a replaceable handler, lent by the pool to one client at a time.
struct Watcher {
    QSocketNotifier* notifier = nullptr;
    std::function<void()> onActivated;
    std::weak_ptr<SocketPool> pool;
};

} // namespace

class SocketPool : public std::enable_shared_from_this<SocketPool> {
public:
    SocketPool() = default;
    SocketPool(const SocketPool&) = delete;
    SocketPool& operator=(const SocketPool&) = delete;

    ~SocketPool() {
        // Never inside an activation: each holds the pool while it runs.
        for (auto& w : watchers_) {
            w->notifier->disconnect();
            delete w->notifier;
        }
    }

    Watcher* acquire(QSocketNotifier::Type type) {
        auto& spare = type == QSocketNotifier::Read ? spareReaders_ : spareWriters_;
        if (!spare.empty()) {
            Watcher* w = spare.back();
            spare.pop_back();
            return w;
        }
        auto owned = std::make_unique<Watcher>();
        Watcher* w = owned.get();
        w->notifier = new QSocketNotifier(type);
        w->pool = weak_from_this();
        QObject::connect(w->notifier, &QSocketNotifier::activated, w->notifier, [w] {
            const std::shared_ptr<SocketPool> keep = w->pool.lock();
            if (!keep) return;
            const std::function<void()> handler = w->onActivated; // may be replaced inside
            if (handler) handler();
        });
        watchers_.push_back(std::move(owned));
        return w;
    }

    void release(Watcher* w) {
        if (w->notifier->isEnabled()) w->notifier->setEnabled(false);
        w->onActivated = nullptr;
        (w->notifier->type() == QSocketNotifier::Read ? spareReaders_ : spareWriters_).push_back(w);
    }

    // IP address text, parsed once for a run of connections to the same card.
    bool literalAddress(const QString& host, QHostAddress& address) {
        if (host != lastHost_) {
            lastHost_ = host;
            lastIsLiteral_ = lastAddress_.setAddress(host);
        }
        address = lastAddress_;
        return lastIsLiteral_;
    }

private:
    std::vector<std::unique_ptr<Watcher>> watchers_;
    std::vector<Watcher*> spareReaders_, spareWriters_;
    QString lastHost_;
    QHostAddress lastAddress_;
    bool lastIsLiteral_ = false;
};

namespace {

class SocketTcpClient final : public TcpClient {
public:
    explicit SocketTcpClient(std::shared_ptr<SocketPool> pool)
        : pool_(std::move(pool))
        , alive_(std::make_shared<bool>(true)) {}

    ~SocketTcpClient() override {
        *alive_ = false;
        closing_ = true;
        if (lookupId_ >= 0) QHostInfo::abortHostLookup(lookupId_);
        releaseSocket();
        for (Watcher* w : {reader_, writer_})
            if (w) pool_->release(w);
        if (lookupContext_) {
            // Inside its own lookup result the context must outlive the call.
            if (depth_ > 0)
                lookupContext_->deleteLater();
            else
                delete lookupContext_;
        }
    }

    void connectToHost(const QString& host, std::uint16_t port) override {
        port_ = port;
        QHostAddress literal;
        if (pool_->literalAddress(host, literal)) {
            addresses_ = {literal};
            connectNext();
            return;
        }
        lookupContext_ = new QObject;
        lookupId_ = QHostInfo::lookupHost(host, lookupContext_, [this](const QHostInfo& info) {
            lookupId_ = -1;
            if (closing_) return;
            Scope scope(*this);
            if (info.error() != QHostInfo::NoError || info.addresses().isEmpty()) {
                const QString text = info.errorString();
                fail(QAbstractSocket::HostNotFoundError, text);
                return;
            }
            addresses_ = info.addresses();
            connectNext();
        });
    }

    void send(const QByteArray& data) override {
        if (closing_) return;
        out_ += data;
        // Inside a callback the writes collect and leave together when it returns.
        if (connected_ && depth_ == 0) flush();
    }

    void close() override {
        closing_ = true;
        releaseSocket();
    }

private:
    // Counts this client's own activations on the stack.
    class Scope {
    public:
        explicit Scope(SocketTcpClient& c)
            : c_(c)
            , alive_(c.alive_) {
            ++c_.depth_;
        }
        ~Scope() {
            if (*alive_) --c_.depth_;
        }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        SocketTcpClient& c_;
        std::shared_ptr<bool> alive_;
    };

    // Tries the remaining addresses; a failure to even start is reported from the event
    // loop, never from inside connectToHost.
    void connectNext() {
        int lastError = ECONNREFUSED;
        while (next_ < addresses_.size()) {
            const QHostAddress address = addresses_[next_++];
            sockaddr_storage storage{};
            socklen_t length = 0;
            if (!toSockaddr(address, storage, length)) {
                lastError = EAFNOSUPPORT;
                continue;
            }
            fd_ = ::socket(storage.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
            if (fd_ < 0) {
                lastError = errno;
                continue;
            }
            const int r = ::connect(fd_, reinterpret_cast<const sockaddr*>(&storage), length);
            if (r == 0 || errno == EINPROGRESS || errno == EINTR) {
                // Connected or under way: writable means done either way.
                watch(writer_, QSocketNotifier::Write, [this] { onWritable(); });
                return;
            }
            lastError = errno;
            ::close(fd_);
            fd_ = -1;
        }
        const std::shared_ptr<bool> alive = alive_;
        QTimer::singleShot(0, [this, alive, lastError] {
            if (!*alive || closing_) return;
            Scope scope(*this);
            fail(socketErrorOf(lastError), errorText(lastError));
        });
    }

    bool toSockaddr(const QHostAddress& address, sockaddr_storage& storage, socklen_t& length) {
        if (address.protocol() == QAbstractSocket::IPv4Protocol) {
            auto* in = reinterpret_cast<sockaddr_in*>(&storage);
            in->sin_family = AF_INET;
            in->sin_port = htons(port_);
            in->sin_addr.s_addr = htonl(address.toIPv4Address());
            length = sizeof(sockaddr_in);
            return true;
        }
        if (address.protocol() == QAbstractSocket::IPv6Protocol) {
            auto* in6 = reinterpret_cast<sockaddr_in6*>(&storage);
            in6->sin6_family = AF_INET6;
            in6->sin6_port = htons(port_);
            const Q_IPV6ADDR a = address.toIPv6Address();
            std::memcpy(&in6->sin6_addr, &a, sizeof a);
            in6->sin6_scope_id = address.scopeId().toUInt();
            length = sizeof(sockaddr_in6);
            return true;
        }
        return false;
    }

    template <typename Handler>
    void watch(Watcher*& watcher, QSocketNotifier::Type type, Handler handler) {
        if (!watcher) {
            watcher = pool_->acquire(type);
            watcher->onActivated = [this, handler] {
                if (closing_) return;
                const std::shared_ptr<bool> alive = alive_;
                Scope scope(*this);
                handler();
                // What the handlers sent leaves in one write once the outermost returns.
                if (*alive && !closing_ && connected_ && depth_ == 1 && !out_.isEmpty()) flush();
            };
        }
        watcher->notifier->setSocket(fd_);
        watcher->notifier->setEnabled(true);
    }

    static void unwatch(Watcher* watcher) {
        if (watcher && watcher->notifier->isEnabled()) watcher->notifier->setEnabled(false);
    }

    void onWritable() {
        if (!connected_) {
            int error = 0;
            socklen_t length = sizeof error;
            if (::getsockopt(fd_, SOL_SOCKET, SO_ERROR, &error, &length) != 0) error = errno;
            if (error == EINPROGRESS || error == EALREADY) return;
            unwatch(writer_);
            if (error != 0) {
                ::close(fd_);
                fd_ = -1;
                if (next_ < addresses_.size()) {
                    connectNext();
                } else {
                    fail(socketErrorOf(error), errorText(error));
                }
                return;
            }
            connected_ = true;
            watch(reader_, QSocketNotifier::Read, [this] { onReadable(); });
            if (auto cb = onConnect) cb();
            return;
        }
        flush();
    }

    // Writes what is waiting; the rest when the socket can take it.
    void flush() {
        while (!out_.isEmpty() && fd_ >= 0) {
            const ssize_t n =
                ::send(fd_, out_.constData(), static_cast<size_t>(out_.size()), MSG_NOSIGNAL);
            if (n > 0) {
                out_.remove(0, n);
                continue;
            }
            if (n < 0 && errno == EINTR) continue;
            if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
                watch(writer_, QSocketNotifier::Write, [this] { onWritable(); });
                return;
            }
            const int error = n < 0 ? errno : EPIPE;
            fail(socketErrorOf(error), errorText(error));
            return;
        }
        unwatch(writer_);
    }

    void onReadable() {
        char buffer[65536];
        ssize_t n;
        do {
            n = ::read(fd_, buffer, sizeof buffer);
        } while (n < 0 && errno == EINTR);
        if (n < 0) {
            if (errno == EAGAIN || errno == EWOULDBLOCK) return;
            const int error = errno;
            fail(socketErrorOf(error), errorText(error));
            return;
        }
        if (n == 0) {
            peerClosed();
            return;
        }
        const std::shared_ptr<bool> alive = alive_;
        for (ssize_t at = 0; at < n; at += kMaxArrivalBytes) {
            const auto size = static_cast<qsizetype>(std::min<ssize_t>(kMaxArrivalBytes, n - at));
            auto cb = onDataArrival; // a copy: the handler may destroy this client
            if (!cb) return;
            cb(QByteArray(buffer + at, size));
            if (!*alive || closing_) return;
        }
    }

    void peerClosed() {
        closing_ = true;
        releaseSocket();
        if (auto cb = onClose) cb();
    }

    void fail(int number, const QString& description) {
        closing_ = true;
        releaseSocket();
        if (auto cb = onError) cb(number, description);
    }

    void releaseSocket() {
        unwatch(reader_);
        unwatch(writer_);
        if (fd_ >= 0) ::close(fd_);
        fd_ = -1;
        connected_ = false;
        out_.clear();
    }

    std::shared_ptr<SocketPool> pool_;
    std::shared_ptr<bool> alive_;
    QList<QHostAddress> addresses_;
    qsizetype next_ = 0;
    std::uint16_t port_ = 0;
    int fd_ = -1;
    Watcher* reader_ = nullptr;
    Watcher* writer_ = nullptr;
    QObject* lookupContext_ = nullptr;
    int lookupId_ = -1;
    QByteArray out_;
    int depth_ = 0;
    bool connected_ = false;
    bool closing_ = false;
};

} // namespace

std::shared_ptr<SocketPool> createSocketPool() {
    return std::make_shared<SocketPool>();
}

std::unique_ptr<TcpClient> createSocketTcpClient(const std::shared_ptr<SocketPool>& pool) {
    return std::make_unique<SocketTcpClient>(pool);
}

} // namespace torv
