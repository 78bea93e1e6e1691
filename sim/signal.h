#pragma once

// The live weight signal of the simulated load cell: a pure function of the card's clock,
// so the same moment always reads the same weight.

#include <QString>
#include <QStringList>
#include <QtGlobal>
#include <optional>

namespace torv::sim {

enum class SignalKind { Steady, Ramp, Sine, Steps, Noise, NoisySteps };

struct SignalShape {
    SignalKind kind = SignalKind::Steady;
    double weight = 12.345; // the steady value, the top of ramp, sine and steps, the noise centre
    int periodMs = 10000;   // one ramp, one sine wave, one staircase
    double noise = 1.0;     // the noise reaches weight - noise .. weight + noise
};

// Weight at `ms` milliseconds of card time (not rounded):
//   steady  weight
//   ramp    0 rising to weight over one period, then again from 0
//   sine    0 .. weight and back once per period, starting at 0
//   steps   five levels 0, 1/4, 1/2, 3/4 and the full weight, each a fifth of the period
//   noise   weight plus an even spread within +-noise, the same for the same millisecond
//   noisy-steps  steps plus that noise
double signalValue(const SignalShape& shape, qint64 ms);

// What the card reads at `ms` integrating over `spanMs`: the mean of the weights of the
// milliseconds ms - spanMs + 1 .. ms.
double signalAverage(const SignalShape& shape, qint64 ms, int spanMs);

QString signalKindName(SignalKind kind);
std::optional<SignalKind> signalKindFromName(const QString& name);
QStringList signalKindNames();

} // namespace torv::sim
