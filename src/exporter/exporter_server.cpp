#include "exporter_server.h"

#include <QHostInfo>
#include <QHttpServerRequest>
#include <QHttpServerResponder>
#include <QPointer>
#include <QTcpSocket>
#include <QUrlQuery>
#include <algorithm>
#include <cstdio>
#include <memory>

namespace torv::exporter {

namespace {

using Status = QHttpServerResponder::StatusCode;

const QByteArray kMetricsType = QByteArrayLiteral("text/plain; version=0.0.4; charset=utf-8");

// Logs one line for every status request that ended without an answer from the card.
ProbeHub::Fetch loggingFetch(ProbeHub::Fetch fetch, bool log) {
    if (!log) return fetch;
    return [fetch](const client::CardAddress& card, int timeoutMs, ProbeHub::StatusDone done) {
        fetch(card, timeoutMs,
              [card, done = std::move(done)](const client::Reply& reply,
                                             const client::StatusRecord& record) {
                  if (reply.failure && reply.failure->kind != client::FailureKind::CardError) {
                      const QString where =
                          card.host.contains(QLatin1Char(':'))
                              ? QStringLiteral("[%1]:%2").arg(card.host).arg(card.port)
                              : QStringLiteral("%1:%2").arg(card.host).arg(card.port);
                      std::fprintf(stderr, "torv-exporter: probe %s failed: %s: %s\n",
                                   qUtf8Printable(where),
                                   qUtf8Printable(reasonLabel(reply.failure->kind)),
                                   qUtf8Printable(reply.failure->detail));
                  }
                  done(reply, record);
              });
    };
}

} // namespace

ExporterServer::ExporterServer(ServerOptions options, ProbeHub::Fetch fetch, QObject* parent)
    : QAbstractHttpServer(parent)
    , options_(std::move(options))
    , hub_(new ProbeHub(
          [this, fetch = loggingFetch(std::move(fetch), options_.logFailures)](
              const client::CardAddress& card, int timeoutMs, ProbeHub::StatusDone done) {
              ++figures_.cardRequests;
              fetch(card, timeoutMs, std::move(done));
          },
          this)) {
    figures_.maxInFlight = options_.maxInFlight;
}

bool ExporterServer::start(QString& error) {
    ConnectionLimits limits = options_.limits;
    limits.idleMs =
        std::max(limits.idleMs, options_.timeoutMs + 10000); // never before a probe ends
    tcp_ = new BoundedTcpServer(limits, this);
    tcp_->setListenBacklogSize(1024);
    if (!tcp_->listen(options_.address, options_.port)) {
        error = QStringLiteral("cannot listen on %1:%2: %3")
                    .arg(options_.address.toString())
                    .arg(options_.port)
                    .arg(tcp_->errorString());
        return false;
    }
    bind(tcp_);
    return true;
}

quint16 ExporterServer::port() const {
    return tcp_ ? tcp_->serverPort() : 0;
}

ExporterFigures ExporterServer::figures() const {
    ExporterFigures f = figures_;
    f.requestsInFlight = inFlight_;
    f.cardsInFlight = hub_->flights();
    f.openConnections = tcp_ ? tcp_->openConnections() : 0;
    return f;
}

bool ExporterServer::handleRequest(const QHttpServerRequest& request, QTcpSocket* socket) {
    const QString path = request.url().path();
    if (path != QLatin1String("/probe") && path != QLatin1String("/metrics") &&
        path != QLatin1String("/"))
        return false;
    if (request.method() != QHttpServerRequest::Method::Get) {
        auto responder = makeResponder(request, socket);
        ++figures_.refused[405];
        responder.write(QByteArrayLiteral("only GET\n"),
                        {{"Content-Type", "text/plain; charset=utf-8"}, {"Allow", "GET"}},
                        Status::MethodNotAllowed);
        return true;
    }
    if (path == QLatin1String("/probe")) {
        handleProbe(request, socket);
    } else if (path == QLatin1String("/metrics")) {
        ExporterFigures f = figures();
        readProcessFigures(f);
        makeResponder(request, socket).write(renderExporter(f), kMetricsType);
    } else {
        makeResponder(request, socket).write(indexPage(), "text/html; charset=utf-8");
    }
    return true;
}

void ExporterServer::missingHandler(const QHttpServerRequest& request, QTcpSocket* socket) {
    ++figures_.refused[404];
    makeResponder(request, socket)
        .write(QByteArrayLiteral("not found: try /probe?target=HOST[:PORT], /metrics or /\n"),
               "text/plain; charset=utf-8", Status::NotFound);
}

void ExporterServer::refuse(QHttpServerResponder& responder, int status, const QString& reason) {
    ++figures_.refused[status];
    const QByteArray body = reason.toUtf8() + '\n';
    if (status == 503)
        responder.write(body, {{"Content-Type", "text/plain; charset=utf-8"}, {"Retry-After", "1"}},
                        static_cast<Status>(status));
    else
        responder.write(body, "text/plain; charset=utf-8", static_cast<Status>(status));
}

void ExporterServer::handleProbe(const QHttpServerRequest& request, QTcpSocket* socket) {
    auto responder = makeResponder(request, socket);
    const QUrlQuery query = request.query();
    const QStringList targets =
        query.allQueryItemValues(QStringLiteral("target"), QUrl::FullyDecoded);
    if (targets.size() > 1) return refuse(responder, 400, QStringLiteral("more than one target"));
    Target target;
    QString error;
    if (!parseTarget(targets.value(0), target, error)) return refuse(responder, 400, error);
    if (!target.isName() && !options_.allow.allows(target.address))
        return refuse(responder, 403, QStringLiteral("target %1 is not allowed").arg(target.key()));
    if (inFlight_ >= options_.maxInFlight)
        return refuse(responder, 503,
                      QStringLiteral("busy: %1 probes in flight").arg(options_.maxInFlight));
    ++inFlight_;
    // Prometheus says how long it waits; the card gets half a second less, so that a dead card
    // is reported before the scrape gives up.
    int timeoutMs = options_.timeoutMs;
    bool ok = false;
    const double scrape = request.value("X-Prometheus-Scrape-Timeout-Seconds").toDouble(&ok);
    if (ok && scrape > 0)
        timeoutMs = int(std::clamp(scrape * 1000 - 500, 100.0, double(options_.timeoutMs)));
    if (!target.isName() || options_.allow.empty())
        return startProbe(target, timeoutMs, std::move(responder), socket);

    // A name with an allow list: the address it resolves to is checked, and connected.
    auto holder = std::make_shared<QHttpServerResponder>(std::move(responder));
    QPointer<QTcpSocket> guard(socket);
    QHostInfo::lookupHost(
        target.host, this, [this, target, timeoutMs, holder, guard](const QHostInfo& info) {
            Target resolved = target;
            bool found = false;
            for (const QHostAddress& a : info.addresses()) {
                if (!options_.allow.allows(a)) continue;
                resolved.address = normalised(a);
                resolved.host = resolved.address.toString();
                found = true;
                break;
            }
            const bool gone = !guard || guard->state() != QAbstractSocket::ConnectedState;
            if (found && !gone)
                return startProbe(resolved, timeoutMs, std::move(*holder), guard.data());
            --inFlight_;
            if (gone) return;
            if (!info.addresses().isEmpty())
                return refuse(
                    *holder, 403,
                    QStringLiteral("target %1 resolves to no allowed address").arg(target.key()));
            ProbeOutcome outcome;
            outcome.failure = client::Failure{client::FailureKind::Refused,
                                              QStringLiteral("%1: name not found").arg(target.host),
                                              {},
                                              {}};
            ++figures_.probesFailed;
            holder->write(renderProbe(outcome), kMetricsType);
        });
}

void ExporterServer::startProbe(const Target& target, int timeoutMs,
                                QHttpServerResponder&& responder, QTcpSocket* socket) {
    auto holder = std::make_shared<QHttpServerResponder>(std::move(responder));
    QPointer<QTcpSocket> guard(socket);
    client::CardAddress card;
    card.host = target.host;
    card.port = target.port;
    hub_->probe(target.key(), card, timeoutMs, [this, holder, guard](const ProbeOutcome& outcome) {
        --inFlight_;
        if (outcome.answered())
            ++figures_.probesSucceeded;
        else
            ++figures_.probesFailed;
        figures_.durations.observe(outcome.seconds);
        // The scraper may have gone meanwhile; its socket is then closed or deleted.
        if (!guard || guard->state() != QAbstractSocket::ConnectedState) return;
        holder->write(renderProbe(outcome), kMetricsType);
    });
}

QByteArray ExporterServer::indexPage() const {
    const QString listen =
        options_.address.protocol() == QAbstractSocket::IPv6Protocol
            ? QStringLiteral("[%1]:%2").arg(options_.address.toString()).arg(port())
            : QStringLiteral("%1:%2").arg(options_.address.toString()).arg(port());
    QString page = QStringLiteral(
        "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>torv-exporter</title></head>\n"
        "<body>\n<h1>torv-exporter</h1>\n"
        "<p>Prometheus exporter for TORV-NET load-cell cards. It only reads: one status request "
        "per probe, one request at a time per card.</p>\n<ul>\n"
        "<li><a href=\"/probe?target=127.0.0.1:8080\">/probe?target=HOST[:PORT]</a>: the "
        "card's metrics (port 80 when none is given)</li>\n"
        "<li><a href=\"/metrics\">/metrics</a>: the exporter's own metrics</li>\n</ul>\n"
        "<p>Time-out per card: %1 ms. Allowed targets: %2.</p>\n"
        "<h2>Scrape configuration</h2>\n<pre>\nscrape_configs:\n"
        "  - job_name: torv\n    metrics_path: /probe\n    static_configs:\n"
        "      - targets: ['10.0.0.21', '10.0.0.22:8080', '10.0.0.23']\n"
        "    relabel_configs:\n"
        "      - source_labels: [__address__]\n        target_label: __param_target\n"
        "      - source_labels: [__param_target]\n        target_label: instance\n"
        "      - target_label: __address__\n        replacement: %3\n</pre>\n"
        "</body></html>\n");
    const QString allowed = options_.allow.empty()
                                ? QStringLiteral("any")
                                : options_.allow.texts().join(QStringLiteral(", ")).toHtmlEscaped();
    return page.arg(options_.timeoutMs).arg(allowed, listen.toHtmlEscaped()).toUtf8();
}

} // namespace torv::exporter
