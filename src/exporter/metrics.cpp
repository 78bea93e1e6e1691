#include "metrics.h"

#include <QDir>
#include <QFile>
#include <charconv>
#include <cmath>
#include <malloc.h>
#include <unistd.h>

namespace torv::exporter {

namespace {

// Writes one metric family: HELP, TYPE and its samples.
class Writer {
public:
    void family(const char* name, const char* type, const char* help) {
        out_ += "# HELP ";
        out_ += name;
        out_ += ' ';
        out_ += help;
        out_ += "\n# TYPE ";
        out_ += name;
        out_ += ' ';
        out_ += type;
        out_ += '\n';
    }
    void sample(const char* name, double value, const QString& labels = {}) {
        out_ += name;
        if (!labels.isEmpty()) {
            out_ += '{';
            out_ += labels.toUtf8();
            out_ += '}';
        }
        out_ += ' ';
        out_ += number(value);
        out_ += '\n';
    }
    void gauge(const char* name, const char* help, double value, const QString& labels = {}) {
        family(name, "gauge", help);
        sample(name, value, labels);
    }
    QByteArray take() { return std::move(out_); }

    static QByteArray number(double v) {
        if (std::isnan(v)) return QByteArrayLiteral("NaN");
        if (std::isinf(v)) return v > 0 ? QByteArrayLiteral("+Inf") : QByteArrayLiteral("-Inf");
        char buffer[64];
        const auto end = std::to_chars(buffer, buffer + sizeof buffer, v).ptr;
        return QByteArray(buffer, int(end - buffer)); // the shortest text that reads back as v
    }

private:
    QByteArray out_;
};

QString label(const char* name, const QString& value) {
    return QLatin1String(name) + QStringLiteral("=\"") + labelValue(value) + QLatin1Char('"');
}

double bit(int word, int index) {
    return (word >> index) & 1;
}

} // namespace

QString reasonLabel(client::FailureKind kind) {
    switch (kind) {
    case client::FailureKind::Refused:
        return QStringLiteral("refused");
    case client::FailureKind::Silent:
        return QStringLiteral("silent");
    case client::FailureKind::CutOff:
        return QStringLiteral("cut_off");
    case client::FailureKind::Oversize:
        return QStringLiteral("oversize");
    case client::FailureKind::Malformed:
        return QStringLiteral("malformed");
    case client::FailureKind::CardError:
        return QStringLiteral("card_error");
    }
    return QStringLiteral("unknown");
}

std::optional<double> gramsPerUnit(const QString& unit) {
    const QString u = unit.toUpper();
    if (u == QLatin1String("GRAM")) return 1.0;
    if (u == QLatin1String("KG")) return 1000.0;
    if (u == QLatin1String("TON")) return 1e6; // the metric ton
    if (u == QLatin1String("LB")) return 453.59237;
    return std::nullopt;
}

QString labelValue(const QString& text) {
    QString out;
    const QString cut = text.left(128);
    out.reserve(cut.size());
    for (const QChar c : cut) {
        if (c == QLatin1Char('\\'))
            out += QStringLiteral("\\\\");
        else if (c == QLatin1Char('"'))
            out += QStringLiteral("\\\"");
        else if (c == QLatin1Char('\n'))
            out += QStringLiteral("\\n");
        else if (c.unicode() < 32 || c.unicode() == 127)
            out += QLatin1Char(' ');
        else
            out += c;
    }
    return out;
}

QByteArray renderProbe(const ProbeOutcome& o) {
    Writer w;
    w.gauge("torv_probe_success", "1 when the card answered with its status, 0 otherwise.",
            o.answered() ? 1 : 0);
    w.gauge("torv_probe_duration_seconds", "How long the probe took.", o.seconds);
    if (!o.answered()) {
        w.gauge("torv_probe_failure", "Why the probe failed (reason label), always 1.", 1,
                label("reason", reasonLabel(o.failure->kind)));
        return w.take();
    }
    const client::StatusRecord& r = o.record;
    if (r.weight) {
        w.gauge("torv_weight", "Gross weight in the card's unit (unit label).", *r.weight,
                label("unit", r.unit));
        if (const auto g = gramsPerUnit(r.unit))
            w.gauge("torv_weight_grams", "Gross weight in grams.", *r.weight * *g);
    }
    if (r.a2d) {
        w.gauge("torv_converter_reading", "The card's analog-to-digital converter count.",
                static_cast<double>(*r.a2d));
        w.gauge("torv_overload", "1 when the converter count is 130001 or more (overload).",
                r.overload() ? 1 : 0);
    }
    if (r.maximumLoad) {
        w.gauge("torv_maximum_load", "Capacity of the card in its unit (unit label).",
                *r.maximumLoad, label("unit", r.unit));
        if (const auto g = gramsPerUnit(r.unit))
            w.gauge("torv_maximum_load_grams", "Capacity of the card in grams.",
                    *r.maximumLoad * *g);
    }
    if (r.integration)
        w.gauge("torv_integration_seconds", "The card's integration time.",
                *r.integration / 1000.0);
    if (r.outputs) {
        w.family("torv_output_on", "gauge", "1 when the output is on (its bit is 0), else 0.");
        for (int k = 1; k <= 14; ++k)
            w.sample("torv_output_on", 1 - bit(*r.outputs, k - 1),
                     label("output", QString::number(k)));
    }
    if (r.inputs) {
        w.family("torv_input_active", "gauge", "1 when the input is active (its bit is 0).");
        for (int i = 1; i <= 8; ++i)
            w.sample("torv_input_active", 1 - bit(*r.inputs, i - 1),
                     label("input", QString::number(i)));
    }
    if (r.setpointStatus) {
        w.family("torv_setpoint_active", "gauge",
                 "1 when the card reports the set point (driving output 10 + setpoint) active.");
        for (int j = 1; j <= 4; ++j)
            w.sample("torv_setpoint_active", bit(*r.setpointStatus, j),
                     label("setpoint", QString::number(j)));
    }
    if (!r.errorCode.isEmpty()) {
        bool numeric = false;
        const qlonglong code = r.errorCode.trimmed().toLongLong(&numeric);
        w.gauge("torv_card_error", "1 when the card's error code is anything but \"0\".",
                r.errorCode == QLatin1String("0") ? 0 : 1);
        if (numeric)
            w.gauge("torv_card_error_code", "The card's error code (0: no error).",
                    static_cast<double>(code));
    }
    return w.take();
}

void DurationHistogram::observe(double seconds) {
    for (std::size_t i = 0; i < kBounds.size(); ++i)
        if (seconds <= kBounds[i]) ++buckets_[i];
    ++count_;
    sum_ += seconds;
}

QByteArray renderExporter(const ExporterFigures& f) {
    Writer w;
    w.family("torv_exporter_probes_total", "counter", "Probes answered, by result.");
    w.sample("torv_exporter_probes_total", static_cast<double>(f.probesSucceeded),
             QStringLiteral("result=\"success\""));
    w.sample("torv_exporter_probes_total", static_cast<double>(f.probesFailed),
             QStringLiteral("result=\"failure\""));

    w.family("torv_exporter_probe_duration_seconds", "histogram", "Probe durations.");
    const auto& b = f.durations.buckets();
    for (std::size_t i = 0; i < b.size(); ++i)
        w.sample("torv_exporter_probe_duration_seconds_bucket", static_cast<double>(b[i]),
                 QStringLiteral("le=\"") +
                     QString::fromLatin1(Writer::number(DurationHistogram::kBounds[i])) +
                     QLatin1Char('"'));
    w.sample("torv_exporter_probe_duration_seconds_bucket",
             static_cast<double>(f.durations.count()), QStringLiteral("le=\"+Inf\""));
    w.sample("torv_exporter_probe_duration_seconds_sum", f.durations.sum());
    w.sample("torv_exporter_probe_duration_seconds_count",
             static_cast<double>(f.durations.count()));

    w.family("torv_exporter_http_errors_total", "counter",
             "HTTP requests answered with an error status, by status code.");
    for (const int code : {400, 403, 404, 405, 431, 503})
        w.sample("torv_exporter_http_errors_total", static_cast<double>(f.refused.value(code)),
                 QStringLiteral("code=\"%1\"").arg(code));

    w.family("torv_exporter_card_requests_total", "counter",
             "Status requests sent to cards (probes of one card share the request in flight).");
    w.sample("torv_exporter_card_requests_total", static_cast<double>(f.cardRequests));
    w.gauge("torv_exporter_requests_in_flight", "Probes waiting for a card.", f.requestsInFlight);
    w.gauge("torv_exporter_card_requests_in_flight", "Status requests open toward cards.",
            f.cardsInFlight);
    w.gauge("torv_exporter_open_connections", "HTTP connections open to the exporter.",
            f.openConnections);
    w.gauge("torv_exporter_requests_in_flight_limit", "Probes allowed to wait at once.",
            f.maxInFlight);

    if (f.cpuSeconds >= 0) {
        w.family("process_cpu_seconds_total", "counter", "User and system CPU time spent.");
        w.sample("process_cpu_seconds_total", f.cpuSeconds);
    }
    if (f.residentBytes >= 0)
        w.gauge("process_resident_memory_bytes", "Resident memory size.", f.residentBytes);
    if (f.heapBytes >= 0)
        w.gauge("torv_exporter_heap_in_use_bytes", "Heap memory in use (allocated, not freed).",
                f.heapBytes);
    if (f.openFds >= 0) w.gauge("process_open_fds", "Open file descriptors.", f.openFds);
    if (f.startTimeSeconds >= 0)
        w.gauge("process_start_time_seconds", "Start time since the Unix epoch.",
                f.startTimeSeconds);
    return w.take();
}

void readProcessFigures(ExporterFigures& f) {
    QFile stat(QStringLiteral("/proc/self/stat"));
    if (stat.open(QIODevice::ReadOnly)) {
        const QByteArray line = stat.readAll();
        // Fields after the command name, which is in parentheses and may hold spaces.
        const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
        const double tick = static_cast<double>(sysconf(_SC_CLK_TCK));
        const double page = static_cast<double>(sysconf(_SC_PAGESIZE));
        if (fields.size() > 21 && tick > 0) {
            f.cpuSeconds = (fields[11].toDouble() + fields[12].toDouble()) / tick;
            f.residentBytes = fields[21].toDouble() * page;
            QFile boot(QStringLiteral("/proc/stat"));
            if (boot.open(QIODevice::ReadOnly)) {
                for (const QByteArray& l : boot.readAll().split('\n'))
                    if (l.startsWith("btime "))
                        f.startTimeSeconds =
                            l.mid(6).trimmed().toDouble() + fields[19].toDouble() / tick;
            }
        }
    }
#ifdef __GLIBC__
    f.heapBytes = static_cast<double>(mallinfo2().uordblks);
#endif
    const QDir fds(QStringLiteral("/proc/self/fd"));
    if (fds.exists()) f.openFds = fds.entryList(QDir::NoDotAndDotDot | QDir::AllEntries).size();
}

} // namespace torv::exporter
