#pragma once

// torv-exporter's HTTP side: /probe?target=HOST[:PORT] (one card's metrics), /metrics (the
// exporter's own), / (how to use it). On Qt's HTTP server, on the event loop of the card client.

#include "exporter/bounded_tcp_server.h"
#include "exporter/metrics.h"
#include "exporter/probe_hub.h"
#include "exporter/target.h"

#include <QAbstractHttpServer>
#include <QHostAddress>
#include <QString>

namespace torv::exporter {

struct ServerOptions {
    QHostAddress address = QHostAddress::LocalHost;
    quint16 port = 9860;
    AllowList allow;       // empty: every address
    int timeoutMs = 3000;  // per status request to a card
    int maxInFlight = 200; // probes waiting at once; beyond: 503
    ConnectionLimits limits;
    bool logFailures = true; // one line on stderr per failed card request
};

class ExporterServer : public QAbstractHttpServer {
public:
    // `fetch` performs the status requests (the card client; a fake in tests).
    ExporterServer(ServerOptions options, ProbeHub::Fetch fetch, QObject* parent = nullptr);
    // Listens on the options' address and port (0: a free one); false and a reason on failure.
    bool start(QString& error);
    quint16 port() const;
    ExporterFigures figures() const; // as /metrics shows them, without the process figures

protected:
    bool handleRequest(const QHttpServerRequest& request, QTcpSocket* socket) override;
    void missingHandler(const QHttpServerRequest& request, QTcpSocket* socket) override;

private:
    void handleProbe(const QHttpServerRequest& request, QTcpSocket* socket);
    void startProbe(const Target& target, int timeoutMs, QHttpServerResponder&& responder,
                    QTcpSocket* socket);
    void refuse(QHttpServerResponder& responder, int status, const QString& reason);
    QByteArray indexPage() const;

    ServerOptions options_;
    BoundedTcpServer* tcp_ = nullptr;
    ProbeHub* hub_ = nullptr;
    ExporterFigures figures_;
    int inFlight_ = 0; // probes accepted and not yet answered (name look-up included)
};

} // namespace torv::exporter
