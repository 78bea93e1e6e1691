#include "statistics.h"

#include <algorithm>
#include <cmath>

namespace torv::viewer {

void Stats::add(double v) {
    if (count == 0) {
        min = max = v;
    } else {
        min = std::min(min, v);
        max = std::max(max, v);
    }
    ++count;
    const double delta = v - mean;
    mean += delta / double(count);
    m2 += delta * (v - mean);
}

void Stats::merge(const Stats& other) {
    if (other.count == 0) return;
    if (count == 0) {
        *this = other;
        return;
    }
    const double n = double(count + other.count);
    const double delta = other.mean - mean;
    mean += delta * double(other.count) / n;
    m2 += other.m2 + delta * delta * double(count) * double(other.count) / n;
    min = std::min(min, other.min);
    max = std::max(max, other.max);
    count += other.count;
}

double Stats::stdDev() const {
    return count < 2 ? 0.0 : std::sqrt(std::max(0.0, m2 / double(count - 1)));
}

void StatsIndex::build(const std::vector<double>& values) {
    blocks_.assign((values.size() + kBlock - 1) / kBlock, Stats());
    for (std::size_t i = 0; i < values.size(); ++i)
        blocks_[i / kBlock].add(values[i]);
}

Stats StatsIndex::range(const std::vector<double>& v, std::size_t first, std::size_t last) const {
    Stats s;
    last = std::min({last, v.size(), blocks_.size() * kBlock});
    std::size_t i = first;
    for (; i < last && i % kBlock != 0; ++i)
        s.add(v[i]);
    for (; i + kBlock <= last; i += kBlock)
        s.merge(blocks_[i / kBlock]);
    for (; i < last; ++i)
        s.add(v[i]);
    return s;
}

} // namespace torv::viewer
