#include "bounded_tcp_server.h"

#include <QTcpSocket>
#include <QTimer>
#include <memory>
#include <unistd.h>

namespace torv::exporter {

BoundedTcpServer::BoundedTcpServer(ConnectionLimits limits, QObject* parent)
    : QTcpServer(parent)
    , limits_(limits) {}

void BoundedTcpServer::incomingConnection(qintptr descriptor) {
    if (open_ >= limits_.maxConnections) {
        ::close(static_cast<int>(descriptor));
        ++dropped_;
        return;
    }
    auto* socket = new QTcpSocket(this);
    if (!socket->setSocketDescriptor(descriptor)) {
        delete socket;
        ::close(static_cast<int>(descriptor));
        return;
    }
    ++open_;
    connect(socket, &QObject::destroyed, this, [this] { --open_; });
    // A connection gets an answer within idleMs of its start or of its previous answer, or it
    // is closed: a client that trickles its request or sits on a kept-alive connection does
    // not hold a connection for ever (Prometheus simply connects again).
    connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    auto* idle = new QTimer(socket);
    idle->setSingleShot(true);
    idle->setInterval(limits_.idleMs);
    connect(idle, &QTimer::timeout, socket, [socket] { socket->abort(); });
    idle->start();
    // Bytes received since the last answer went out: this bounds one request. Connected
    // before the HTTP server's own handler, so it sees the bytes first.
    auto received = std::make_shared<qint64>(0);
    connect(socket, &QTcpSocket::readyRead, socket, [this, socket, received] {
        *received += socket->bytesAvailable();
        if (*received <= limits_.maxRequestBytes) return;
        ++oversized_;
        // The HTTP server's own handler must not parse what is left of it. The rest is read
        // and dropped, so that the client reads the answer before the connection closes
        // (closing on unread bytes would reset it); the idle timer still ends a client that
        // keeps sending.
        QObject::disconnect(socket, &QTcpSocket::readyRead, nullptr, nullptr);
        QObject::disconnect(socket, &QTcpSocket::bytesWritten, nullptr, nullptr);
        if (socket->isTransactionStarted()) socket->commitTransaction();
        const auto drop = [socket] { socket->skip(socket->bytesAvailable()); };
        drop();
        connect(socket, &QTcpSocket::readyRead, socket, drop);
        socket->write("HTTP/1.1 431 Request Header Fields Too Large\r\nContent-Type: "
                      "text/plain\r\nContent-Length: 18\r\nConnection: close\r\n\r\n"
                      "request too large\n");
        socket->disconnectFromHost();
    });
    connect(socket, &QTcpSocket::bytesWritten, socket, [idle, received] {
        *received = 0;
        idle->start();
    });
    addPendingConnection(socket);
}

} // namespace torv::exporter
