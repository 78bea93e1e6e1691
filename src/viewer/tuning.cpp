#include "tuning.h"

#include <algorithm>
#include <cmath>

namespace torv::viewer {

namespace {

struct Spread {
    double mean = 0;
    double sd = 0;
    double min = 0;
    double max = 0;
};

// Mean, sample standard deviation and extremes of v[first, last), two passes; last > first.
Spread spreadOf(const std::vector<double>& v, std::size_t first, std::size_t last) {
    Spread s;
    s.min = s.max = v[first];
    long double sum = 0;
    for (std::size_t i = first; i < last; ++i) {
        sum += v[i];
        s.min = std::min(s.min, v[i]);
        s.max = std::max(s.max, v[i]);
    }
    const double count = double(last - first);
    s.mean = double(sum / count);
    long double m2 = 0;
    for (std::size_t i = first; i < last; ++i)
        m2 += (v[i] - s.mean) * (v[i] - s.mean);
    s.sd = last - first > 1 ? std::sqrt(double(m2 / (count - 1))) : 0.0;
    return s;
}

// Where the means of the `w` readings before and the `w` readings from a position differ
// most: that position and the difference of the means, or nothing for a flat series.
std::optional<std::pair<std::size_t, double>> largestChange(const std::vector<double>& v,
                                                            std::size_t w) {
    const std::size_t n = v.size();
    std::vector<double> prefix(n + 1, 0.0);
    const double offset = v[0]; // small sums keep their digits
    for (std::size_t i = 0; i < n; ++i)
        prefix[i + 1] = prefix[i] + (v[i] - offset);
    std::optional<std::pair<std::size_t, double>> best;
    double bestSize = 0;
    for (std::size_t i = w; i + w <= n; ++i) {
        const double d = ((prefix[i + w] - prefix[i]) - (prefix[i] - prefix[i - w])) / double(w);
        if (std::abs(d) > bestSize) {
            bestSize = std::abs(d);
            best = std::make_pair(i, d);
        }
    }
    return best;
}

} // namespace

void previewIntegration(const std::vector<double>& values, int k, std::vector<double>& out) {
    const std::size_t n = values.size();
    const std::size_t width = std::size_t(std::max(1, k));
    out.resize(n);
    if (n == 0) return;
    const double offset = values[0];
    const long double inverse = 1.0L / (long double)(width);
    long double sum = 0;
    for (std::size_t i = 0; i < n; ++i) {
        sum += values[i] - offset;
        if (i >= width) sum -= values[i - width] - offset;
        out[i] = offset + double(i + 1 >= width ? sum * inverse : sum / (long double)(i + 1));
    }
}

TuningTable tuningTable(const std::vector<double>& values, const TuningSettings& settings) {
    TuningTable t;
    const std::size_t n = values.size();
    const double N = settings.integrationMs;
    if (!(N > 0)) {
        t.error = QStringLiteral("the session's integration is unknown");
        return t;
    }
    if (N != std::round(N)) {
        t.error =
            QStringLiteral("an integration of %1 ms is not a whole number of milliseconds").arg(N);
        return t;
    }
    if (n < kTuningMinReadings) {
        t.error = QStringLiteral("too short: %1 readings, the tuning table needs at least %2")
                      .arg(n)
                      .arg(kTuningMinReadings);
        return t;
    }
    std::vector<int> ks;
    for (int m : kCardIntegrations)
        if (m % int(N) == 0 && std::size_t(m / int(N)) < n) ks.push_back(m / int(N));
    if (ks.empty()) {
        t.error = QStringLiteral("no integration of the card's list (2 to 256 ms) is a multiple "
                                 "of %1 ms within the session's length")
                      .arg(N);
        return t;
    }
    const std::size_t a = std::min(settings.first, n);
    const std::size_t b = std::min(settings.last, n);
    if (b < a + 2) {
        t.error = QStringLiteral("the steady stretch holds fewer than 2 readings");
        return t;
    }

    // The step: the largest change of the means, when it stands out of the raw noise.
    // Compared over 512 ms on each side (room for the longest integration to settle and stay),
    // a quarter of the file at most.
    const std::size_t span =
        std::max<std::size_t>(2 * std::size_t(ks.back()), std::size_t(std::ceil(512.0 / N)));
    const std::size_t w = std::max<std::size_t>(2, std::min(span, n / 4));
    t.window = w;
    t.stretchFirst = a;
    t.stretchLast = b;
    const auto change = largestChange(values, w);
    if (change) {
        // A stretch across the step is not steady: its longer side is, leaving out the
        // readings that may straddle the step.
        const std::size_t s = change->first;
        std::size_t sa = a, sb = b;
        if (a < s && s < b) {
            const std::size_t beforeLen = s - 1 > a ? s - 1 - a : 0;
            const std::size_t afterLen = b > s + 1 ? b - s - 1 : 0;
            if (beforeLen >= afterLen)
                sb = s - 1;
            else
                sa = s + 1;
        }
        const double rawSd = sb >= sa + 2 ? spreadOf(values, sa, sb).sd : 0.0;
        if (sb >= sa + 2 && std::abs(change->second) > 10 * rawSd) {
            const std::size_t end = std::min(n, s + w);
            t.step = TuningStep{s, spreadOf(values, s - w, s).mean,
                                spreadOf(values, std::min(s + 1, end - 1), end).mean};
            t.stretchFirst = sa;
            t.stretchLast = sb;
        }
    }
    t.rawSd = spreadOf(values, t.stretchFirst, t.stretchLast).sd;
    t.band = settings.tolerance.value_or(2 * t.rawSd);

    std::vector<double> filtered;
    for (int k : ks) {
        TuningRow row;
        row.integrationMs = k * int(N);
        row.readingsAveraged = k;
        previewIntegration(values, k, filtered);
        // Only readings whose whole average lies within the stretch count.
        const std::size_t from = t.stretchFirst + std::size_t(k) - 1;
        if (t.stretchLast >= from + 2) {
            const Spread s = spreadOf(filtered, from, t.stretchLast);
            row.noiseSd = s.sd;
            row.noisePeakToPeak = s.max - s.min;
        }
        if (t.step) {
            const std::size_t s = t.step->position;
            const std::size_t end = std::min(n, s + w);
            const double target = t.step->after;
            const double band =
                t.band + 1e-9 * std::max({1.0, std::abs(target), std::abs(t.step->before)});
            std::size_t settled = s; // the first reading from which all stay within the band
            for (std::size_t i = s; i < end; ++i)
                if (std::abs(filtered[i] - target) > band) settled = i + 1;
            // The step happened after reading s - 1: count from its end.
            if (settled < end) row.settlingMs = double(settled - s + 1) * N;
        }
        t.rows.push_back(row);
    }
    return t;
}

QString tuningNumber(double v) {
    if (v == 0 || !std::isfinite(v)) return QStringLiteral("0");
    const int magnitude = int(std::floor(std::log10(std::abs(v))));
    QString text = QString::number(v, 'f', std::clamp(5 - magnitude, 0, 12));
    if (text.contains(QLatin1Char('.'))) {
        while (text.endsWith(QLatin1Char('0')))
            text.chop(1);
        if (text.endsWith(QLatin1Char('.'))) text.chop(1);
    }
    return text;
}

QByteArray tuningCsv(const TuningTable& table, double division) {
    QByteArray out("integration_ms,readings_averaged,noise_sd,noise_peak_to_peak,settling_ms\n");
    const double scale = division > 0 ? 1.0 / division : 1.0;
    auto cell = [&](const std::optional<double>& v, double factor) {
        return v ? tuningNumber(*v * factor).toLatin1() : QByteArray();
    };
    for (const TuningRow& r : table.rows) {
        out += QByteArray::number(r.integrationMs) + ',' + QByteArray::number(r.readingsAveraged) +
               ',' + cell(r.noiseSd, scale) + ',' + cell(r.noisePeakToPeak, scale) + ',' +
               cell(r.settlingMs, 1.0) + '\n';
    }
    return out;
}

} // namespace torv::viewer
