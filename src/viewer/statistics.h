#pragma once

// Statistics of a stretch of readings: count, minimum, maximum, mean and standard deviation.
// Partial results merge (Chan's pairwise update), so a stretch of a million readings is
// answered from cached blocks plus at most two partial blocks.

#include <QtGlobal>
#include <cstddef>
#include <vector>

namespace torv::viewer {

struct Stats {
    qint64 count = 0;
    double min = 0;
    double max = 0;
    double mean = 0;
    double m2 = 0; // sum of squared deviations from the mean

    void add(double v);
    void merge(const Stats& other);
    // The sample standard deviation (n - 1); 0 for fewer than two readings.
    double stdDev() const;
};

class StatsIndex {
public:
    static constexpr std::size_t kBlock = 1024;

    void build(const std::vector<double>& values);
    // Readings at positions [first, last) of `values`, the ones given to build().
    Stats range(const std::vector<double>& values, std::size_t first, std::size_t last) const;

private:
    std::vector<Stats> blocks_;
};

} // namespace torv::viewer
