#include "rows.h"

#include "link/catalogue.h"

#include <charconv>

namespace torv::ctl {

namespace {

using client::StatusRecord;

template <typename T> QString numberOrEmpty(const std::optional<T>& v) {
    if (!v) return {};
    if constexpr (std::is_floating_point_v<T>)
        return shortestNumber(*v);
    else
        return QString::number(*v);
}

QString unitOf(const StatusRecord& s) {
    return s.unit.isEmpty() ? QString() : GetInterUnit(s.unit);
}

QString csvField(const QString& text) {
    if (!text.contains(QLatin1Char(',')) && !text.contains(QLatin1Char('"')) &&
        !text.contains(QLatin1Char('\n')) && !text.contains(QLatin1Char('\r')))
        return text;
    QString quoted = text;
    quoted.replace(QLatin1Char('"'), QStringLiteral("\"\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

QString jsonString(const QString& text) {
    QString out = QStringLiteral("\"");
    for (const QChar c : text) {
        switch (c.unicode()) {
        case '"':
            out += QStringLiteral("\\\"");
            break;
        case '\\':
            out += QStringLiteral("\\\\");
            break;
        case '\n':
            out += QStringLiteral("\\n");
            break;
        case '\r':
            out += QStringLiteral("\\r");
            break;
        case '\t':
            out += QStringLiteral("\\t");
            break;
        default:
            if (c.unicode() < 0x20)
                out += QStringLiteral("\\u%1").arg(c.unicode(), 4, 16, QLatin1Char('0'));
            else
                out += c;
        }
    }
    return out + QLatin1Char('"');
}

template <typename T> QString jsonNumber(const std::optional<T>& v) {
    return v ? numberOrEmpty(v) : QStringLiteral("null");
}

QString jsonText(const QString& text, bool present) {
    return present ? jsonString(text) : QStringLiteral("null");
}

// Influx: tag values escape commas, equals signs and blanks; string fields quotes and
// backslashes.
QString influxTag(QString text) {
    text.replace(QLatin1Char('\\'), QStringLiteral("\\\\"));
    for (const char c : {',', '=', ' '})
        text.replace(QLatin1Char(c), QStringLiteral("\\") + QLatin1Char(c));
    return text;
}

QString influxString(QString text) {
    text.replace(QLatin1Char('\\'), QStringLiteral("\\\\"));
    text.replace(QLatin1Char('"'), QStringLiteral("\\\""));
    text.replace(QLatin1Char('\n'), QLatin1Char(' '));
    return QLatin1Char('"') + text + QLatin1Char('"');
}

QString padded(const QString& text, int width) {
    return text.size() >= width ? text + QLatin1Char(' ') : text.leftJustified(width);
}

QString rightAligned(const QString& text, int width) {
    return text.size() >= width ? text + QLatin1Char(' ') : text.rightJustified(width) + ' ';
}

const int kCardWidth = 22;

} // namespace

std::optional<RowFormat> rowFormatFromName(const QString& name) {
    if (name == QLatin1String("plain")) return RowFormat::Plain;
    if (name == QLatin1String("csv")) return RowFormat::Csv;
    if (name == QLatin1String("jsonl")) return RowFormat::Jsonl;
    if (name == QLatin1String("influx")) return RowFormat::Influx;
    return std::nullopt;
}

QString shortestNumber(double value) {
    char text[64];
    const auto result = std::to_chars(text, text + sizeof text, value);
    return QString::fromLatin1(text, result.ptr - text);
}

QByteArray headerLine(RowFormat format) {
    switch (format) {
    case RowFormat::Csv:
        return "time,card,weight,unit,a2d,outputs,inputs,integration,max_load,setpoint_status,"
               "error_code\n";
    case RowFormat::Plain:
        return (padded(QStringLiteral("time"), 13) + padded(QStringLiteral("card"), kCardWidth) +
                QStringLiteral("    weight unit      a2d outputs inputs integ  max_load    sp "
                               "error\n"))
            .toUtf8();
    default:
        return {};
    }
}

QByteArray rowLine(RowFormat format, const QDateTime& timeUtc, const QString& card,
                   const StatusRecord& s) {
    QString line;
    switch (format) {
    case RowFormat::Csv: {
        const QStringList fields = {timeUtc.toString(Qt::ISODateWithMs),
                                    csvField(card),
                                    numberOrEmpty(s.weight),
                                    csvField(unitOf(s)),
                                    numberOrEmpty(s.a2d),
                                    numberOrEmpty(s.outputs),
                                    numberOrEmpty(s.inputs),
                                    numberOrEmpty(s.integration),
                                    numberOrEmpty(s.maximumLoad),
                                    numberOrEmpty(s.setpointStatus),
                                    csvField(s.errorCode)};
        line = fields.join(QLatin1Char(','));
        break;
    }
    case RowFormat::Jsonl:
        line =
            QStringLiteral("{\"time\":%1,\"card\":%2,\"weight\":%3,\"unit\":%4,\"a2d\":%5,"
                           "\"outputs\":%6,\"inputs\":%7,\"integration\":%8,\"max_load\":%9,")
                .arg(jsonString(timeUtc.toString(Qt::ISODateWithMs)), jsonString(card),
                     jsonNumber(s.weight), jsonText(unitOf(s), !s.unit.isEmpty()),
                     jsonNumber(s.a2d), jsonNumber(s.outputs), jsonNumber(s.inputs),
                     jsonNumber(s.integration), jsonNumber(s.maximumLoad)) +
            QStringLiteral("\"setpoint_status\":%1,\"error_code\":%2}")
                .arg(jsonNumber(s.setpointStatus), jsonText(s.errorCode, !s.errorCode.isEmpty()));
        break;
    case RowFormat::Influx: {
        QStringList fields;
        const auto add = [&fields](const char* key, const QString& value) {
            if (!value.isEmpty()) fields << QLatin1String(key) + QLatin1Char('=') + value;
        };
        const auto integer = [](const auto& v) {
            return v ? QString::number(*v) + QLatin1Char('i') : QString();
        };
        add("weight", numberOrEmpty(s.weight));
        if (!s.unit.isEmpty()) add("unit", influxString(unitOf(s)));
        add("a2d", integer(s.a2d));
        add("outputs", integer(s.outputs));
        add("inputs", integer(s.inputs));
        add("integration", integer(s.integration));
        add("max_load", numberOrEmpty(s.maximumLoad));
        add("setpoint_status", integer(s.setpointStatus));
        if (!s.errorCode.isEmpty()) add("error_code", influxString(s.errorCode));
        if (fields.isEmpty()) return {}; // a line needs a field
        line = QStringLiteral("torv,card=") + influxTag(card) + QLatin1Char(' ') +
               fields.join(QLatin1Char(',')) + QLatin1Char(' ') +
               QString::number(timeUtc.toMSecsSinceEpoch() * 1000000LL);
        break;
    }
    case RowFormat::Plain: {
        const QString weight = s.weight ? QString::number(*s.weight, 'f', 3) : QStringLiteral("-");
        const auto col = [](const auto& v) {
            return v ? QString::number(*v) : QStringLiteral("-");
        };
        line =
            padded(timeUtc.toLocalTime().toString(QStringLiteral("HH:mm:ss.zzz")), 13) +
            padded(card, kCardWidth) + rightAligned(weight, 10) +
            padded(s.unit.isEmpty() ? QStringLiteral("-") : unitOf(s), 4) +
            rightAligned(col(s.a2d), 8) + rightAligned(col(s.outputs), 7) +
            rightAligned(col(s.inputs), 6) + rightAligned(col(s.integration), 5) +
            rightAligned(s.maximumLoad ? shortestNumber(*s.maximumLoad) : QStringLiteral("-"), 9) +
            rightAligned(col(s.setpointStatus), 5) +
            (s.errorCode.isEmpty() ? QStringLiteral("-") : s.errorCode);
        if (s.overload()) line += QStringLiteral("  overload");
        break;
    }
    }
    return (line + QLatin1Char('\n')).toUtf8();
}

} // namespace torv::ctl
