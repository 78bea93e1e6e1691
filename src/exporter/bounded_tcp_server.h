#pragma once

// The listening socket of the exporter's HTTP server, with the bounds that the HTTP library
// leaves to its user: how many connections may be open, how many bytes a request may bring
// before its answer, how long a connection may stay idle.

#include <QTcpServer>
#include <cstdint>

namespace torv::exporter {

struct ConnectionLimits {
    int maxConnections = 512;       // further connections are closed at once
    qint64 maxRequestBytes = 16384; // request line, headers and body of one request
    int idleMs = 60000;             // a connection that sends nothing for this long is closed
};

class BoundedTcpServer : public QTcpServer {
public:
    explicit BoundedTcpServer(ConnectionLimits limits, QObject* parent = nullptr);
    int openConnections() const { return open_; }
    std::uint64_t dropped() const { return dropped_; }     // refused: too many connections
    std::uint64_t oversized() const { return oversized_; } // closed: request too large

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    ConnectionLimits limits_;
    int open_ = 0;
    std::uint64_t dropped_ = 0;
    std::uint64_t oversized_ = 0;
};

} // namespace torv::exporter
