#pragma once

// The simulator's TCP server: one request per connection, answered from the shared card,
// with the faults of the shared state injected. It runs on the thread that creates it, in
// that thread's event loop; many connections are served at once.

#include "sim/options.h"
#include "sim/sim_state.h"

#include <QHostAddress>
#include <QObject>
#include <QString>
#include <functional>
#include <memory>

class QTcpServer;

namespace torv::sim {

// The answer as it goes on the wire: status line, headers, blank line, tagged answer.
QByteArray httpAnswer(const QString& tagged);

class Server : public QObject {
public:
    Server(std::shared_ptr<SimState> state, const SimOptions& options, QObject* parent = nullptr);
    ~Server() override;

    bool listen(const QHostAddress& address, quint16 port);
    void close();
    bool isListening() const;
    quint16 port() const; // the port listened on, also while refusing connections
    QString errorString() const;
    int openConnections() const;

    // Follows the faults: closes the port while every connection is to be refused, opens it
    // again when that ends. Call after changing the faults.
    void applyFaults();

    // Receives the log lines (one per request); by default they go to stderr.
    void setLogSink(std::function<void(const QString&)> sink);

    // Used by the connections.
    SimState& state() { return *state_; }
    const SimOptions& options() const { return options_; }
    bool logging() const;
    void log(const QString& line);

private:
    void accept();

    std::shared_ptr<SimState> state_;
    SimOptions options_;
    QTcpServer* listener_;
    QObject* connections_; // parent of the open connections
    QHostAddress address_;
    quint16 port_ = 0;
    bool wanted_ = false; // listen() succeeded and close() was not called
    QString error_;
    std::function<void(const QString&)> sink_;
};

} // namespace torv::sim
