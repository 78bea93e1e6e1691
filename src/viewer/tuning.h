#pragma once

// Choosing the card's integration from one fast-sampling session. A session at integration N
// holds readings that each average the load over N ms, so a card at integration M = k x N
// would have read the moving average of k consecutive readings (previewIntegration, the one
// place that models the card). For each integration of the card's list that is a multiple of
// N, the table gives the noise of the filtered readings over a steady stretch and the time
// they take to settle after the largest step of the session.

#include <QByteArray>
#include <QString>
#include <array>
#include <cstddef>
#include <optional>
#include <vector>

namespace torv::viewer {

// The integrations the card offers, in milliseconds.
inline constexpr std::array<int, 9> kCardIntegrations = {2, 4, 8, 12, 16, 32, 64, 128, 256};

// Fewer readings than this make no table.
inline constexpr std::size_t kTuningMinReadings = 8;

// The card model: what a card at k times the session's integration would read at each reading
// of the session, the average of readings i-k+1 .. i (of the readings there are at the start).
// `out` gets one value per reading.
void previewIntegration(const std::vector<double>& values, int k, std::vector<double>& out);

struct TuningSettings {
    double integrationMs = 0; // the session's integration N
    std::size_t first = 0;    // the steady stretch: positions [first, last)
    std::size_t last = std::size_t(-1);
    std::optional<double> tolerance; // band half-width in the readings' units (two raw SDs)
};

struct TuningStep {
    std::size_t position = 0; // the first reading after the step
    double before = 0;        // mean of the readings just before
    double after = 0;         // mean of the readings just after
};

struct TuningRow {
    int integrationMs = 0;
    int readingsAveraged = 0;
    std::optional<double> noiseSd;         // sample standard deviation (n - 1)
    std::optional<double> noisePeakToPeak; // largest - smallest
    std::optional<double> settlingMs;      // empty: no step, or not settled in the window
};

struct TuningTable {
    QString error; // why the readings make no table; empty when they do
    std::vector<TuningRow> rows;
    std::optional<TuningStep> step;
    std::size_t stretchFirst = 0; // the steady stretch the noise was taken over
    std::size_t stretchLast = 0;
    double rawSd = 0;       // of the readings themselves over the stretch
    double band = 0;        // the tolerance band's half-width
    std::size_t window = 0; // readings compared on each side of the step, and watched after it
};

// The table for the readings `values` (in position order, one every integrationMs). A stretch
// that holds the step is not steady: the longer side of it is taken.
TuningTable tuningTable(const std::vector<double>& values, const TuningSettings& settings);

// The CSV report: "integration_ms,readings_averaged,noise_sd,noise_peak_to_peak,settling_ms"
// and one row per integration; with a division above 0 the noise is in divisions.
QByteArray tuningCsv(const TuningTable& table, double division = 0);

// A noise figure for the table: six significant digits, no exponent for everyday sizes.
QString tuningNumber(double v);

} // namespace torv::viewer
