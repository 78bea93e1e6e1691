#include "time_axis.h"

#include <array>
#include <cmath>

namespace torv::viewer {

namespace {

constexpr double kSecond = 1000;
constexpr double kMinute = 60 * kSecond;
constexpr double kHour = 60 * kMinute;

// Decimals of a second that a step needs: 0 for whole seconds, 3 for 1 ms steps.
int decimalsFor(double stepMs) {
    for (int d = 0; d < 3; ++d) {
        const double unit = kSecond / std::pow(10.0, d);
        if (std::abs(stepMs / unit - std::round(stepMs / unit)) < 1e-9) return d;
    }
    return 3;
}

// Seconds within the minute with `decimals`, two digits before the point: "05", "05.5".
QString secondsField(double seconds, int decimals) {
    return QString::number(seconds, 'f', decimals)
        .rightJustified(decimals > 0 ? 3 + decimals : 2, QLatin1Char('0'));
}

QString format(double ms, int decimals, TimeStyle style) {
    const QString sign = ms < 0 ? QStringLiteral("-") : QString();
    // Rounded once, so 59.9996 s never reads as "0:60.000".
    const double scale = std::pow(10.0, decimals);
    const double totalSeconds = std::round(std::abs(ms) / kSecond * scale) / scale;
    if (style == TimeStyle::Seconds) return sign + QString::number(totalSeconds, 'f', decimals);
    const double wholeMinutes = std::floor(totalSeconds / 60);
    const double seconds = totalSeconds - wholeMinutes * 60;
    if (style == TimeStyle::MinutesSeconds)
        return sign + QString::number(qint64(wholeMinutes)) + QLatin1Char(':') +
               secondsField(seconds, decimals);
    const qint64 hours = qint64(wholeMinutes) / 60;
    const qint64 minutes = qint64(wholeMinutes) % 60;
    return sign + QString::number(hours) + QLatin1Char(':') +
           QString::number(minutes).rightJustified(2, QLatin1Char('0')) + QLatin1Char(':') +
           secondsField(seconds, decimals);
}

} // namespace

TimeStyle timeStyleFor(double maxAbsMs) {
    if (maxAbsMs < 90 * kSecond) return TimeStyle::Seconds;
    if (maxAbsMs < kHour) return TimeStyle::MinutesSeconds;
    return TimeStyle::HoursMinutesSeconds;
}

QString timeAxisTitle(TimeStyle style) {
    switch (style) {
    case TimeStyle::Seconds:
        return QStringLiteral("Time (s)");
    case TimeStyle::MinutesSeconds:
        return QStringLiteral("Time (m:ss)");
    case TimeStyle::HoursMinutesSeconds:
        return QStringLiteral("Time (h:mm:ss)");
    }
    return {};
}

double timeTickStep(double spanMs, int ticks) {
    static constexpr std::array<double, 20> kSteps = {
        1,   2,   5,    10,   20,   50,      100,         200,         500,          1e3,
        2e3, 5e3, 10e3, 15e3, 30e3, kMinute, 2 * kMinute, 5 * kMinute, 15 * kMinute, 30 * kMinute};
    const double wanted = spanMs / std::max(1, ticks);
    // The round step nearest to the wanted one (on a log scale).
    for (std::size_t i = 0; i < kSteps.size(); ++i) {
        if (kSteps[i] < wanted) continue;
        if (i > 0 && wanted / kSteps[i - 1] < kSteps[i] / wanted) return kSteps[i - 1];
        return kSteps[i];
    }
    // Hours: 1, 2, 5, 10, 20, 50 ... of them.
    double hours = 1;
    while (hours * kHour < wanted) {
        const double mantissa = hours / std::pow(10.0, std::floor(std::log10(hours)));
        hours *= mantissa == 2 ? 2.5 : 2;
    }
    return hours * kHour;
}

QString timeLabel(double ms, double stepMs, TimeStyle style) {
    return format(ms, decimalsFor(stepMs), style);
}

QString timeText(double ms) {
    return format(ms, 3, timeStyleFor(std::abs(ms))) +
           (timeStyleFor(std::abs(ms)) == TimeStyle::Seconds ? QStringLiteral(" s") : QString());
}

} // namespace torv::viewer
