#include "signal.h"

#include <cmath>
#include <cstdint>
#include <numbers>

namespace torv::sim {

namespace {

// A well-mixed 64-bit hash (splitmix64 finaliser): neighbouring milliseconds give unrelated
// values, and the same millisecond always the same one.
std::uint64_t mix(std::uint64_t x) {
    x += 0x9E3779B97F4A7C15ULL;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ULL;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBULL;
    return x ^ (x >> 31);
}

// Position within the current period, 0 <= phase < 1; also right for negative times.
double phaseOf(qint64 ms, int periodMs) {
    const qint64 p = periodMs > 0 ? periodMs : 1;
    qint64 r = ms % p;
    if (r < 0) r += p;
    return static_cast<double>(r) / static_cast<double>(p);
}

double noiseAt(const SignalShape& shape, qint64 ms) {
    const std::uint64_t h = mix(static_cast<std::uint64_t>(ms));
    const double unit = static_cast<double>(h >> 11) / static_cast<double>(1ULL << 53);
    return shape.noise * (2.0 * unit - 1.0);
}

} // namespace

double signalValue(const SignalShape& shape, qint64 ms) {
    const double w = shape.weight;
    switch (shape.kind) {
    case SignalKind::Steady:
        return w;
    case SignalKind::Ramp:
        return w * phaseOf(ms, shape.periodMs);
    case SignalKind::Sine:
        return w / 2.0 * (1.0 - std::cos(2.0 * std::numbers::pi * phaseOf(ms, shape.periodMs)));
    case SignalKind::Steps:
        return w * std::floor(phaseOf(ms, shape.periodMs) * 5.0) / 4.0;
    case SignalKind::Noise:
        return w + noiseAt(shape, ms);
    case SignalKind::NoisySteps:
        return w * std::floor(phaseOf(ms, shape.periodMs) * 5.0) / 4.0 + noiseAt(shape, ms);
    }
    return w;
}

double signalAverage(const SignalShape& shape, qint64 ms, int spanMs) {
    const int span = spanMs > 0 ? spanMs : 1;
    double sum = 0;
    for (qint64 t = ms - span + 1; t <= ms; ++t)
        sum += signalValue(shape, t);
    return sum / span;
}

QString signalKindName(SignalKind kind) {
    switch (kind) {
    case SignalKind::Steady:
        return QStringLiteral("steady");
    case SignalKind::Ramp:
        return QStringLiteral("ramp");
    case SignalKind::Sine:
        return QStringLiteral("sine");
    case SignalKind::Steps:
        return QStringLiteral("steps");
    case SignalKind::Noise:
        return QStringLiteral("noise");
    case SignalKind::NoisySteps:
        return QStringLiteral("noisy-steps");
    }
    return {};
}

QStringList signalKindNames() {
    return {QStringLiteral("steady"), QStringLiteral("ramp"),  QStringLiteral("sine"),
            QStringLiteral("steps"),  QStringLiteral("noise"), QStringLiteral("noisy-steps")};
}

std::optional<SignalKind> signalKindFromName(const QString& name) {
    const QString n = name.trimmed().toLower();
    for (auto k : {SignalKind::Steady, SignalKind::Ramp, SignalKind::Sine, SignalKind::Steps,
                   SignalKind::Noise, SignalKind::NoisySteps})
        if (signalKindName(k) == n) return k;
    return std::nullopt;
}

} // namespace torv::sim
