#include "sim_client.h"

#include <QElapsedTimer>
#include <cerrno>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace torv::sim::test {

QByteArray Reply::header() const {
    const auto end = raw.indexOf("\r\n\r\n");
    return end < 0 ? raw : raw.left(end);
}

QString Reply::tagged() const {
    const auto end = raw.indexOf("\r\n\r\n");
    return end < 0 ? QString() : QString::fromUtf8(raw.mid(end + 4));
}

QString Reply::element(const QString& name) const {
    const QString t = tagged();
    const QString open = QLatin1Char('<') + name + QLatin1Char('>');
    const auto a = t.indexOf(open);
    const auto b = t.indexOf(QStringLiteral("</") + name + QLatin1Char('>'));
    if (a < 0 || b < a) return {};
    return t.mid(a + open.size(), b - a - open.size());
}

Client::Client(quint16 port) {
    fd_ = ::socket(AF_INET, SOCK_STREAM, 0);
    if (fd_ < 0) {
        error_ = errno;
        return;
    }
    int one = 1;
    ::setsockopt(fd_, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_port = htons(port);
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(fd_, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0) {
        error_ = errno;
        ::close(fd_);
        fd_ = -1;
    }
}

Client::~Client() {
    if (fd_ >= 0) ::close(fd_);
}

bool Client::send(const QByteArray& bytes) {
    if (fd_ < 0) return false;
    qsizetype done = 0;
    while (done < bytes.size()) {
        const auto n = ::send(fd_, bytes.constData() + done,
                              static_cast<size_t>(bytes.size() - done), MSG_NOSIGNAL);
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        done += n;
    }
    return true;
}

bool Client::sendRequest(const QString& function, const QString& body) {
    const QByteArray b = body.toUtf8();
    return send("POST /" + function.toUtf8() + "\r\n") &&
           send("Content-Length: " + QByteArray::number(b.size()) + "\r\n\r\n") && send(b + "\r\n");
}

Reply Client::read(int timeoutMs) {
    Reply r;
    if (fd_ < 0) {
        r.closed = true;
        return r;
    }
    QElapsedTimer clock;
    clock.start();
    char buf[65536];
    for (;;) {
        const qint64 left = timeoutMs - clock.elapsed();
        if (left <= 0) {
            r.timedOut = true;
            return r;
        }
        pollfd p{fd_, POLLIN, 0};
        const int ready = ::poll(&p, 1, static_cast<int>(left));
        if (ready < 0 && errno == EINTR) continue;
        if (ready <= 0) continue;
        const auto n = ::recv(fd_, buf, sizeof buf, 0);
        if (n > 0) {
            r.raw.append(buf, n);
            r.pieces.append(QByteArray(buf, n));
            continue;
        }
        if (n < 0 && errno == EINTR) continue;
        r.closed = true;
        r.reset = n < 0 && errno == ECONNRESET;
        return r;
    }
}

Reply request(quint16 port, const QString& function, const QString& body, int timeoutMs) {
    Client c(port);
    if (!c.connected()) {
        Reply r;
        r.closed = true;
        return r;
    }
    c.sendRequest(function, body);
    return c.read(timeoutMs);
}

} // namespace torv::sim::test
