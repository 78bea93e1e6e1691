#pragma once

// The Prometheus text exposition of a probe and of the exporter itself. Pure functions of their
// arguments: no clock, no socket.

#include "client/card_client.h"

#include <QByteArray>
#include <QMap>
#include <QString>
#include <array>
#include <cstdint>
#include <optional>

namespace torv::exporter {

// The outcome of one probe: the card's status, or why there is none.
struct ProbeOutcome {
    std::optional<client::Failure> failure; // empty: the card answered with error code "0"
    client::StatusRecord record;            // the status, also when the card sent an error code
    double seconds = 0;                     // how long the probe took
    // The card answered with its status (possibly carrying an error code of its own).
    bool answered() const { return !failure || failure->kind == client::FailureKind::CardError; }
};

// Reason label for a failure: "refused", "silent", "cut_off", "oversize", "malformed",
// "card_error".
QString reasonLabel(client::FailureKind kind);

// Grams per unit for GRAM, KG, TON (metric) and LB, in any letter case; empty otherwise. Mass
// goes out in grams, Prometheus' base unit of mass (promtool refuses "_kilograms").
std::optional<double> gramsPerUnit(const QString& unit);

// Label value escaped for the text format (backslash, double quote, line feed), and cut to
// 128 characters so that a card cannot blow up a series.
QString labelValue(const QString& text);

// The metrics of one probe (/probe).
QByteArray renderProbe(const ProbeOutcome& outcome);

// A cumulative histogram of probe durations in seconds.
class DurationHistogram {
public:
    static constexpr std::array<double, 11> kBounds{0.005, 0.01, 0.025, 0.05, 0.1, 0.25,
                                                    0.5,   1.0,  2.5,   5.0,  10.0};
    void observe(double seconds);
    const std::array<std::uint64_t, kBounds.size()>& buckets() const { return buckets_; }
    std::uint64_t count() const { return count_; }
    double sum() const { return sum_; }

private:
    std::array<std::uint64_t, kBounds.size()> buckets_{}; // cumulative: <= bound
    std::uint64_t count_ = 0;
    double sum_ = 0;
};

// What the exporter knows about itself (/metrics).
struct ExporterFigures {
    std::uint64_t probesSucceeded = 0;
    std::uint64_t probesFailed = 0;
    DurationHistogram durations;
    QMap<int, std::uint64_t> refused; // HTTP requests answered with an error status, by status
    std::uint64_t cardRequests = 0;   // status requests sent to cards
    int requestsInFlight = 0;         // probes waiting for a card
    int cardsInFlight = 0;            // status requests open toward cards
    int maxInFlight = 0;
    int openConnections = 0; // HTTP connections open to the exporter
    // Process figures; a negative value is left out.
    double cpuSeconds = -1;
    double residentBytes = -1;
    double startTimeSeconds = -1;
    double openFds = -1;
    double heapBytes = -1; // heap in use (glibc), to tell a leak from a grown arena
};

QByteArray renderExporter(const ExporterFigures& figures);

// This process's CPU time, resident memory, open descriptors and start time (from /proc;
// negative where it cannot be read).
void readProcessFigures(ExporterFigures& figures);

} // namespace torv::exporter
