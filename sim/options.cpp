#include "options.h"

#include <QCommandLineParser>
#include <QHostAddress>
#include <cmath>

namespace torv::sim {

namespace {

struct OptionInfo {
    const char* name;
    const char* value; // empty: a switch
    const char* help;
};

constexpr OptionInfo kOptions[] = {
    {"host", "address", "Address to listen on (default 127.0.0.1; 0.0.0.0 for every interface)."},
    {"port", "n", "TCP port (default 8080; 0 picks a free one)."},
    {"signal", "kind",
     "Weight signal: steady, ramp, sine, steps, noise or noisy-steps (default steady)."},
    {"weight", "w",
     "Weight of the signal: the steady value, the top of ramp, sine and steps, the "
     "centre of the noise (default 12.345)."},
    {"weight2", "w", "The same for channel 2 (default 0)."},
    {"period", "ms", "Period of ramp, sine and steps (default 10000)."},
    {"noise", "a", "Noise amplitude of noise and noisy-steps: within +-a (default 1)."},
    {"max-load", "w", "Maximum load reported by the card (default 3000)."},
    {"unit", "word", "Unit word reported by the card: GRAM, KG, TON, LB or any (default KG)."},
    {"overload", "", "Report a converter count above 130000 (overload)."},
    {"integration", "n",
     "Integration at start (default 8; fast sampling takes a reading every "
     "n ms and refuses above 64)."},
    {"inputs-period", "ms", "Every ms one input changes state (default 4000; 0 = never)."},
    {"read-timeout", "ms", "A request must go on arriving within ms (default 5000)."},
    {"fault", "kind",
     "Inject a fault: chunked, trickle, silent, refuse, reset, garbage, "
     "oversize or error-code."},
    {"chunks", "sizes",
     "Fault: piece sizes in bytes, comma separated (chunked, trickle; reset "
     "sends the first size before resetting)."},
    {"delay", "ms", "Fault: pause between pieces (chunked, trickle)."},
    {"error-code", "n", "Fault: the error code an error-code fault answers with (default 1)."},
    {"fault-connections", "n", "Fault: only for the next n connections (default: all)."},
    {"fault-function", "name", "Fault: only for requests of this function."},
    {"quiet", "", "No log line per request."},
    {"help", "", "Show this help."},
    {"version", "", "Show the version."},
};

QString helpText() {
    QString text = QStringLiteral(
        "Usage: torv-sim [options]\n"
        "TORV-NET card simulator: a TCP server that answers the card's eleven functions, one\n"
        "request per connection, with a live weight signal and optional faults. Logs one line\n"
        "per request to stderr.\n\nOptions:\n");
    constexpr int kIndent = 29;
    constexpr int kWidth = 99;
    for (const auto& o : kOptions) {
        QString line = QStringLiteral("  --") + QLatin1String(o.name);
        if (*o.value) line += QStringLiteral(" <") + QLatin1String(o.value) + QLatin1Char('>');
        line = line.leftJustified(kIndent - 1) + QLatin1Char(' ');
        // The description wrapped at word boundaries, continued under itself.
        bool first = true;
        for (const QString& word : QString::fromLatin1(o.help).split(QLatin1Char(' '))) {
            if (!first && line.size() + 1 + word.size() > kWidth) {
                text += line + QLatin1Char('\n');
                line = QString(kIndent, QLatin1Char(' '));
                first = true;
            }
            if (!first) line += QLatin1Char(' ');
            line += word;
            first = false;
        }
        text += line + QLatin1Char('\n');
    }
    text +=
        QStringLiteral("\nExample:\n  torv-sim --port 8081 --signal sine --weight 1500\n"
                       "  printf 'POST /GetRTStatus\\r\\nContent-Length: 4\\r\\n\\r\\nID=4\\r\\n'"
                       " | nc 127.0.0.1 8081\n");
    return text;
}

bool toInt(const QString& text, qint64 lo, qint64 hi, qint64& out) {
    bool ok = false;
    const qint64 v = text.trimmed().toLongLong(&ok);
    if (!ok || v < lo || v > hi) return false;
    out = v;
    return true;
}

bool toDouble(const QString& text, double& out) {
    bool ok = false;
    const double v = text.trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(v)) return false;
    out = v;
    return true;
}

} // namespace

CommandLine parseCommandLine(const QStringList& args) {
    CommandLine result;
    result.helpText = helpText();
    SimOptions& o = result.options;
    o.log = true;

    QCommandLineParser parser;
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    for (const auto& info : kOptions) {
        if (*info.value)
            parser.addOption(QCommandLineOption(QLatin1String(info.name), QLatin1String(info.help),
                                                QLatin1String(info.value)));
        else
            parser.addOption(
                QCommandLineOption(QLatin1String(info.name), QLatin1String(info.help)));
    }
    if (!parser.parse(args.isEmpty() ? QStringList{QStringLiteral("torv-sim")} : args)) {
        result.error = parser.errorText();
        return result;
    }
    if (!parser.positionalArguments().isEmpty()) {
        result.error =
            QStringLiteral("Unexpected argument: ") + parser.positionalArguments().first();
        return result;
    }
    result.help = parser.isSet(QStringLiteral("help"));
    result.version = parser.isSet(QStringLiteral("version"));
    if (result.help || result.version) return result;

    auto bad = [&](const char* name, const QString& value, const QString& expected) {
        result.error = QStringLiteral("Invalid value for --") + QLatin1String(name) +
                       QStringLiteral(": \"") + value + QStringLiteral("\" (") + expected +
                       QLatin1Char(')');
    };
    auto value = [&](const char* name) { return parser.value(QLatin1String(name)); };
    auto isSet = [&](const char* name) { return parser.isSet(QLatin1String(name)); };
    auto intOption = [&](const char* name, qint64 lo, qint64 hi, int& target) {
        if (!isSet(name)) return true;
        qint64 v = 0;
        if (!toInt(value(name), lo, hi, v)) {
            bad(name, value(name), QStringLiteral("a whole number from %1 to %2").arg(lo).arg(hi));
            return false;
        }
        target = static_cast<int>(v);
        return true;
    };
    auto doubleOption = [&](const char* name, double& target, bool positive) {
        if (!isSet(name)) return true;
        double v = 0;
        if (!toDouble(value(name), v) || (positive && v <= 0)) {
            bad(name, value(name),
                positive ? QStringLiteral("a number above 0") : QStringLiteral("a number"));
            return false;
        }
        target = v;
        return true;
    };

    if (isSet("host")) {
        const QString h = value("host").trimmed();
        if (h.compare(QLatin1String("localhost"), Qt::CaseInsensitive) == 0)
            o.host = QStringLiteral("127.0.0.1");
        else if (QHostAddress(h).isNull())
            return bad("host", h, QStringLiteral("an IP address such as 127.0.0.1")), result;
        else
            o.host = h;
    }
    int port = o.port;
    if (!intOption("port", 0, 65535, port)) return result;
    o.port = static_cast<quint16>(port);
    if (isSet("signal")) {
        const auto kind = signalKindFromName(value("signal"));
        if (!kind)
            return bad("signal", value("signal"), signalKindNames().join(QStringLiteral(", "))),
                   result;
        o.signal.kind = *kind;
    }
    if (!doubleOption("weight", o.signal.weight, false)) return result;
    if (!doubleOption("weight2", o.weight2, false)) return result;
    if (!intOption("period", 1, 86400000, o.signal.periodMs)) return result;
    if (!doubleOption("noise", o.signal.noise, false)) return result;
    if (!doubleOption("max-load", o.maxLoad, true)) return result;
    if (isSet("unit")) {
        const QString u = value("unit").trimmed();
        if (u.isEmpty() || u.contains(QLatin1Char('<')) || u.contains(QLatin1Char('>')))
            return bad("unit", u, QStringLiteral("a word without < and >")), result;
        o.unit = u;
    }
    o.overload = isSet("overload");
    if (!intOption("integration", 1, 32767, o.integration)) return result;
    if (!intOption("inputs-period", 0, 86400000, o.inputsPeriodMs)) return result;
    if (!intOption("read-timeout", 1, 3600000, o.readTimeoutMs)) return result;
    o.log = !isSet("quiet");

    const bool faultDetail = isSet("chunks") || isSet("delay") || isSet("error-code") ||
                             isSet("fault-connections") || isSet("fault-function");
    if (!isSet("fault")) {
        if (faultDetail)
            result.error =
                QStringLiteral("--chunks, --delay, --error-code, --fault-connections and "
                               "--fault-function need --fault");
        return result;
    }
    Fault f;
    const auto kind = faultKindFromName(value("fault"));
    if (!kind)
        return bad("fault", value("fault"), faultKindNames().join(QStringLiteral(", "))), result;
    f.kind = *kind;
    if (isSet("chunks")) {
        for (const QString& part : value("chunks").split(QLatin1Char(','))) {
            qint64 v = 0;
            if (!toInt(part, 1, 1 << 20, v))
                return bad("chunks", value("chunks"),
                           QStringLiteral("sizes in bytes above 0, separated by commas")),
                       result;
            f.chunkSizes << static_cast<int>(v);
        }
    }
    if (!intOption("delay", 0, 600000, f.delayMs)) return result;
    f.errorCode = 1;
    if (!intOption("error-code", -32768, 32767, f.errorCode)) return result;
    if (!intOption("fault-connections", 1, 1 << 30, f.connections)) return result;
    f.function = value("fault-function").trimmed();
    o.faults = {f};
    return result;
}

} // namespace torv::sim
