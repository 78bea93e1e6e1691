#include "format.h"

#include "numeric.h"

#include <cmath>
#include <cstdio>

namespace torv {

QString Format(double value, const QString& pattern) {
    if (pattern.startsWith(QLatin1Char('@'))) return Format(numberText(value), pattern);
    const int dot = pattern.indexOf(QLatin1Char('.'));
    const int decimals = dot < 0 ? 0 : static_cast<int>(pattern.size() - dot - 1);
    if (!std::isfinite(value)) value = 0;
    char buf[512];
    std::snprintf(buf, sizeof buf, "%.*f", decimals, value);
    QString out = QString::fromLatin1(buf);
    // A value that rounds to zero is shown without a sign.
    if (out.startsWith(QLatin1Char('-'))) {
        bool allZero = true;
        for (int i = 1; i < out.size(); ++i)
            if (out[i] != QLatin1Char('0') && out[i] != QLatin1Char('.')) allZero = false;
        if (allZero) out.remove(0, 1);
    }
    out.replace(QLatin1Char('.'), decimalSeparator());
    return out;
}

QString Format(const QString& text, const QString& pattern) {
    if (!pattern.startsWith(QLatin1Char('@'))) {
        double v = 0;
        if (numericValue(text, decimalSeparator(), v)) return Format(v, pattern);
        return text;
    }
    const int width = static_cast<int>(pattern.count(QLatin1Char('@')));
    if (text.size() >= width) return text;
    return QString(width - text.size(), QLatin1Char(' ')) + text;
}

} // namespace torv
