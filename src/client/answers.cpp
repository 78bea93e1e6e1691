// Reading complete answers into typed records: the status record, the set points and the echo
// of a Set command. Pure functions of the answer text.

#include "card_client.h"

#include "link/catalogue.h"
#include "link/elements.h"

#include <cmath>
#include <limits>

namespace torv::client {

namespace {

std::optional<QStringView> element(const QString& answer, const char* tag) {
    return elementText(answer, QString::fromLatin1(tag));
}

Failure malformed(const QString& what) {
    return {FailureKind::Malformed, what, {}, {}};
}

QString quoted(QStringView text) {
    constexpr qsizetype kShown = 40;
    const QString shown = text.size() > kShown
                              ? text.left(kShown).toString() + QStringLiteral("...")
                              : text.toString();
    return QLatin1Char('"') + shown + QLatin1Char('"');
}

// A decimal number with "." as decimal point, blanks around it allowed; finite only.
std::optional<Failure> readNumber(const QString& answer, const char* tag,
                                  std::optional<double>& out) {
    const std::optional<QStringView> text = element(answer, tag);
    if (!text) return std::nullopt;
    bool ok = false;
    const double value = text->trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(value))
        return malformed(QStringLiteral("%1 is not a number: %2").arg(tag, quoted(*text)));
    out = value;
    return std::nullopt;
}

// A decimal integer within [low, high].
std::optional<Failure> readInteger(const QString& answer, const char* tag, std::int64_t low,
                                   std::int64_t high, std::optional<std::int64_t>& out) {
    const std::optional<QStringView> text = element(answer, tag);
    if (!text) return std::nullopt;
    bool ok = false;
    const qlonglong value = text->trimmed().toLongLong(&ok, 10);
    if (!ok)
        return malformed(QStringLiteral("%1 is not a whole number: %2").arg(tag, quoted(*text)));
    if (value < low || value > high)
        return malformed(QStringLiteral("%1 out of range %2..%3: %4")
                             .arg(QLatin1String(tag), QString::number(low), QString::number(high),
                                  QString::number(value)));
    out = value;
    return std::nullopt;
}

std::optional<Failure> readWord(const QString& answer, const char* tag, std::optional<int>& out) {
    std::optional<std::int64_t> value;
    // A 16-bit word, signed or unsigned as the card prints it.
    if (auto f = readInteger(answer, tag, -32768, 65535, value)) return f;
    if (value) out = static_cast<int>(*value);
    return std::nullopt;
}

// The error elements: a CardError failure for a code other than "0".
std::optional<Failure> readError(const QString& answer, QString& code, QString& description) {
    if (auto c = element(answer, "<ERROR_CODE>")) code = c->trimmed().toString();
    if (auto d = element(answer, "<ERROR_DESCRIPTION>")) description = d->toString();
    if (code.isEmpty() || code == QLatin1String("0")) return std::nullopt;
    QString detail = QStringLiteral("card error ") + code;
    if (!description.isEmpty()) detail += QStringLiteral(": ") + description;
    return Failure{FailureKind::CardError, detail, code, description};
}

} // namespace

const char* failureName(FailureKind kind) {
    switch (kind) {
    case FailureKind::Refused:
        return "refused";
    case FailureKind::Silent:
        return "silent";
    case FailureKind::CutOff:
        return "cut off";
    case FailureKind::Oversize:
        return "oversize";
    case FailureKind::Malformed:
        return "malformed";
    case FailureKind::CardError:
        return "card error";
    }
    return "?";
}

QString CardAddress::text() const {
    const QString h =
        host.contains(QLatin1Char(':')) ? QLatin1Char('[') + host + QLatin1Char(']') : host;
    return h + QLatin1Char(':') + QString::number(port);
}

bool parseCardAddress(const QString& text, CardAddress& out) {
    QString host;
    std::uint16_t port = 80;
    if (!parseHostPort(text, host, port)) return false;
    out.host = host;
    out.port = port;
    return true;
}

std::optional<Failure> parseStatus(const QString& answer, StatusRecord& out) {
    out = {};
    std::optional<std::int64_t> integration;
    std::optional<Failure> failure;
    const auto keep = [&failure](std::optional<Failure> f) {
        if (f && !failure) failure = std::move(f);
    };
    keep(readNumber(answer, "<WEIGHT>", out.weight));
    keep(readInteger(answer, "<A2D>", std::numeric_limits<std::int32_t>::min(),
                     std::numeric_limits<std::int32_t>::max(), out.a2d));
    keep(readWord(answer, "<OUT_STATUS>", out.outputs));
    keep(readWord(answer, "<IN_STATUS>", out.inputs));
    keep(readInteger(answer, "<INTEGRATION>", 0, 65535, integration));
    keep(readNumber(answer, "<MAXIMUM_LOAD>", out.maximumLoad));
    keep(readWord(answer, "<SP_STATUS>", out.setpointStatus));
    if (auto unit = element(answer, "<UNIT>")) out.unit = unit->trimmed().toString();
    if (integration) out.integration = static_cast<int>(*integration);
    const std::optional<Failure> cardError = readError(answer, out.errorCode, out.errorDescription);
    if (failure) return failure;
    if (cardError) return cardError;
    if (!out.weight && !out.a2d && !out.outputs && !out.inputs && out.errorCode.isEmpty())
        return malformed(QStringLiteral("a status answer without any of the status elements"));
    return std::nullopt;
}

std::optional<Failure> parseSetpoints(const QString& answer, SetpointsRecord& out) {
    out = {};
    static const char* const kTags[4] = {"<SETPOINT_1>", "<SETPOINT_2>", "<SETPOINT_3>",
                                         "<SETPOINT_4>"};
    for (int n = 0; n < 4; ++n)
        if (auto f = readNumber(answer, kTags[n], out.values[n])) return f;
    QString code, description;
    return readError(answer, code, description);
}

std::optional<Failure> parseErrorCode(const QString& answer) {
    QString code, description;
    return readError(answer, code, description);
}

std::optional<Failure> parseEcho(const QString& answer, const QString& element,
                                 std::optional<std::int64_t>& out) {
    out.reset();
    const QByteArray tag = (QLatin1Char('<') + element + QLatin1Char('>')).toLatin1();
    if (auto f = readInteger(answer, tag.constData(), std::numeric_limits<std::int32_t>::min(),
                             std::numeric_limits<std::int32_t>::max(), out))
        return f;
    QString code, description;
    return readError(answer, code, description);
}

} // namespace torv::client
