#include "numeric.h"

#include "platform.h"
#include "runtime_error.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace torv {

namespace {
QChar g_separator = QLatin1Char('.');

bool isBlank(QChar c) {
    return c == QLatin1Char(' ') || c == QLatin1Char('\t') || c == QLatin1Char('\r') ||
           c == QLatin1Char('\n');
}

bool isDigit(QChar c) {
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

int hexDigit(QChar c) {
    const char16_t u = c.unicode();
    if (u >= u'0' && u <= u'9') return u - u'0';
    if (u >= u'a' && u <= u'f') return u - u'a' + 10;
    if (u >= u'A' && u <= u'F') return u - u'A' + 10;
    return -1;
}

// Parses "&H" + hex digits starting at `pos` (pointing at '&'). Up to 4 digits make a
// 16-bit value, up to 8 a 32-bit value, as the run-time's hexadecimal literals do.
// Returns the number of characters used, 0 when there is no hex form, -1 when too long.
int parseHex(const QString& s, int pos, double& value) {
    if (pos + 1 >= s.size() || s[pos] != QLatin1Char('&') ||
        (s[pos + 1] != QLatin1Char('H') && s[pos + 1] != QLatin1Char('h')))
        return 0;
    int i = pos + 2;
    std::uint64_t v = 0;
    int digits = 0;
    while (i < s.size() && hexDigit(s[i]) >= 0) {
        v = v * 16 + static_cast<std::uint64_t>(hexDigit(s[i]));
        ++digits;
        ++i;
        if (digits > 8) return -1;
    }
    if (digits == 0) return 0;
    if (digits <= 4)
        value = static_cast<std::int16_t>(static_cast<std::uint16_t>(v));
    else
        value = static_cast<std::int32_t>(static_cast<std::uint32_t>(v));
    return i - pos;
}

// Reads a decimal number at `pos` with `sep` as separator. Returns characters used (0: none).
int parseDecimal(const QString& s, int pos, QChar sep, double& value) {
    std::string ascii;
    int i = pos;
    if (i < s.size() && (s[i] == QLatin1Char('+') || s[i] == QLatin1Char('-'))) {
        ascii += static_cast<char>(s[i].unicode());
        ++i;
    }
    int mantissaDigits = 0;
    while (i < s.size() && isDigit(s[i])) {
        ascii += static_cast<char>(s[i].unicode());
        ++i;
        ++mantissaDigits;
    }
    if (i < s.size() && s[i] == sep) {
        ascii += '.';
        ++i;
        while (i < s.size() && isDigit(s[i])) {
            ascii += static_cast<char>(s[i].unicode());
            ++i;
            ++mantissaDigits;
        }
    }
    if (mantissaDigits == 0) return 0;
    if (i < s.size() && (s[i] == QLatin1Char('E') || s[i] == QLatin1Char('e') ||
                         s[i] == QLatin1Char('D') || s[i] == QLatin1Char('d'))) {
        int j = i + 1;
        std::string exp = "e";
        if (j < s.size() && (s[j] == QLatin1Char('+') || s[j] == QLatin1Char('-'))) {
            exp += static_cast<char>(s[j].unicode());
            ++j;
        }
        int expDigits = 0;
        while (j < s.size() && isDigit(s[j])) {
            exp += static_cast<char>(s[j].unicode());
            ++j;
            ++expDigits;
        }
        if (expDigits > 0) {
            ascii += exp;
            i = j;
        }
    }
    value = std::strtod(ascii.c_str(), nullptr);
    return i - pos;
}
} // namespace

QChar decimalSeparator() {
    return g_separator;
}
void setDecimalSeparator(QChar sep) {
    g_separator = sep;
}

void setDecimalSeparatorFromSample(const QString& textOfOnePointFive) {
    if (textOfOnePointFive.size() >= 2) g_separator = textOfOnePointFive[1];
}

bool numericValue(const QString& text, QChar sep, double& value) {
    const QString s = text.trimmed();
    if (s.isEmpty()) return false;
    double v = 0;
    int used = parseHex(s, 0, v);
    if (used < 0) return false;
    if (used == 0) used = parseDecimal(s, 0, sep, v);
    if (used == 0 || used != s.size()) return false;
    if (!std::isfinite(v)) return false;
    value = v;
    return true;
}

bool isNumeric(const QString& text, QChar sep) {
    double v = 0;
    return numericValue(text, sep, v);
}

bool isNumeric(const QString& text) {
    return isNumeric(text, g_separator);
}

bool readingValue(const QString& text, double& value) {
    return numericValue(text, QLatin1Char('.'), value) || numericValue(text, g_separator, value);
}

bool isReadingNumber(const QString& text) {
    double v = 0;
    return readingValue(text, v);
}

bool IsNumber(const QString& text, QChar sep) {
    QString s = text;
    const QChar other = sep == QLatin1Char(',') ? QLatin1Char('.') : QLatin1Char(',');
    s.replace(other, QLatin1Char('?'));
    return isNumeric(s, sep);
}

bool IsNumber(const QString& text) {
    return IsNumber(text, g_separator);
}

double Val(const QString& text) {
    int i = 0;
    while (i < text.size() && isBlank(text[i]))
        ++i;
    double v = 0;
    const int hex = parseHex(text, i, v);
    if (hex < 0) raiseOverflow();
    if (hex == 0 && parseDecimal(text, i, QLatin1Char('.'), v) == 0) return 0.0;
    if (!std::isfinite(v)) raiseOverflow();
    return v;
}

// With "." as the locale separator the value is the numeric prefix of the left-trimmed
// text, 0 without a prefix and no question. With another separator every "." becomes that
// separator first; numeric text then yields its prefix read with "." as the decimal point,
// so the decimals after a "," are dropped. This is how the panel has always read numbers.
double StrToDbl(Platform& platform, const QString& text, QChar sep) {
    if (sep == QLatin1Char('.')) return Val(text);
    QString s = text;
    s.replace(QLatin1Char('.'), sep);
    int i = 0;
    while (i < s.size() && s[i] == QLatin1Char(' '))
        ++i;
    s = s.mid(i);
    if (isNumeric(s, sep)) return Val(s);
    if (!platform.askYesNo(QStringLiteral("Not Number. Yes - continue. "))) platform.endProgram();
    return 0.0;
}

double StrToDbl(Platform& platform, const QString& text) {
    return StrToDbl(platform, text, g_separator);
}

QString numberText(double value, QChar sep) {
    if (value == 0.0 || !std::isfinite(value)) return QStringLiteral("0");
    char buf[64];
    const double mag = std::fabs(value);
    const int exp10 = static_cast<int>(std::floor(std::log10(mag)));
    QString out;
    if (exp10 >= 15 || exp10 < -4) {
        std::snprintf(buf, sizeof buf, "%.14E", value);
        QString s = QString::fromLatin1(buf);
        const int e = s.indexOf(QLatin1Char('E'));
        QString mant = s.left(e);
        QString ex = s.mid(e + 1);
        if (mant.contains(QLatin1Char('.'))) {
            while (mant.endsWith(QLatin1Char('0')))
                mant.chop(1);
            if (mant.endsWith(QLatin1Char('.'))) mant.chop(1);
        }
        // Exponent with sign and at least two digits: E+15, E-06.
        const QChar esign = ex[0];
        QString edigits = ex.mid(1);
        while (edigits.size() > 2 && edigits.startsWith(QLatin1Char('0')))
            edigits.remove(0, 1);
        out = mant + QLatin1Char('E') + esign + edigits;
    } else {
        std::snprintf(buf, sizeof buf, "%.15G", value);
        out = QString::fromLatin1(buf);
        if (out.contains(QLatin1Char('.'))) {
            while (out.endsWith(QLatin1Char('0')))
                out.chop(1);
            if (out.endsWith(QLatin1Char('.'))) out.chop(1);
        }
    }
    out.replace(QLatin1Char('.'), sep);
    return out;
}

QString numberText(double value) {
    return numberText(value, g_separator);
}

} // namespace torv
