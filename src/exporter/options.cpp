#include "options.h"

namespace torv::exporter {

namespace {

bool wholeNumber(const QString& text, int lo, int hi, int& out) {
    bool ok = false;
    const int v = text.toInt(&ok);
    if (!ok || v < lo || v > hi) return false;
    out = v;
    return true;
}

} // namespace

QString helpText() {
    return QStringLiteral(
        "Usage: torv-exporter [--listen HOST:PORT] [--allow CIDR]... [--timeout MS]\n"
        "                     [--max-in-flight N]\n"
        "Prometheus exporter for TORV-NET load-cell cards, in the manner of the blackbox\n"
        "exporter: GET /probe?target=HOST[:PORT] asks that card for its status (port 80 when\n"
        "none is given) and answers with its metrics; /metrics has the exporter's own.\n"
        "It only reads: it sends GetRTStatus and nothing else, one request at a time per card.\n\n"
        "Options:\n"
        "  --listen HOST:PORT    address to serve on (default 127.0.0.1:9860; [::1]:9860;\n"
        "                        port 0 picks a free one)\n"
        "  --allow CIDR          probe only addresses in this network (repeatable; an address\n"
        "                        alone is one host); a host name is resolved and checked\n"
        "  --timeout MS          time-out per card request, 100..60000 (default 3000)\n"
        "  --max-in-flight N     probes waiting at once, 1..10000 (default 200); beyond: 503\n"
        "  --quiet               no log line for a failed probe\n"
        "  --help, --version\n\n"
        "Example:\n"
        "  torv-exporter --allow 10.0.0.0/24 &\n"
        "  curl 'http://127.0.0.1:9860/probe?target=10.0.0.21'\n");
}

CommandLine parseCommandLine(const QStringList& args) {
    CommandLine cl;
    ServerOptions& o = cl.options;
    for (int i = 1; i < args.size(); ++i) {
        const QString& a = args[i];
        auto value = [&](QString& out) {
            if (i + 1 >= args.size()) {
                cl.error = a + QStringLiteral(" needs a value");
                return false;
            }
            out = args[++i];
            return true;
        };
        QString v;
        if (a == QLatin1String("--help") || a == QLatin1String("-h")) {
            cl.help = true;
        } else if (a == QLatin1String("--version")) {
            cl.version = true;
        } else if (a == QLatin1String("--quiet")) {
            o.logFailures = false;
        } else if (a == QLatin1String("--listen")) {
            if (!value(v)) return cl;
            // Port 0 picks a free port (the program says which).
            const bool anyPort = v.endsWith(QLatin1String(":0"));
            Target t;
            QString error;
            if (!parseTarget(anyPort ? v.chopped(1) + QLatin1Char('1') : v, t, error) ||
                t.isName() || !v.contains(QLatin1Char(':')) ||
                (v.count(QLatin1Char(':')) > 1 && !v.startsWith(QLatin1Char('[')))) {
                cl.error = QStringLiteral("--listen %1: expected IP:PORT or [IPv6]:PORT").arg(v);
                return cl;
            }
            o.address = t.address;
            o.port = anyPort ? 0 : t.port;
        } else if (a == QLatin1String("--allow")) {
            if (!value(v)) return cl;
            QString error;
            if (!o.allow.add(v, error)) {
                cl.error = error;
                return cl;
            }
        } else if (a == QLatin1String("--timeout")) {
            if (!value(v)) return cl;
            if (!wholeNumber(v, 100, 60000, o.timeoutMs)) {
                cl.error = QStringLiteral("--timeout %1: expected milliseconds 100..60000").arg(v);
                return cl;
            }
        } else if (a == QLatin1String("--max-in-flight")) {
            if (!value(v)) return cl;
            if (!wholeNumber(v, 1, 10000, o.maxInFlight)) {
                cl.error = QStringLiteral("--max-in-flight %1: expected 1..10000").arg(v);
                return cl;
            }
        } else {
            cl.error = QStringLiteral("unknown option %1 (see --help)").arg(a);
            return cl;
        }
    }
    return cl;
}

} // namespace torv::exporter
