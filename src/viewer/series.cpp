#include "series.h"

#include <algorithm>
#include <charconv>
#include <numeric>

namespace torv::viewer {

void Series::load(SampleFileContent content) {
    content_ = std::move(content);
    std::vector<qint64>& index = content_.index;
    std::vector<double>& value = content_.value;
    // Each block after the first that holds readings starts half-way before its first one.
    boundaries_.clear();
    const auto& blocks = content_.blocks;
    for (std::size_t b = 1; b < blocks.size(); ++b) {
        const qsizetype first = blocks[b].firstReading;
        const bool holdsReadings = b + 1 < blocks.size() ? blocks[b + 1].firstReading > first
                                                         : qsizetype(index.size()) > first;
        if (!holdsReadings || first <= 0 || first >= qsizetype(index.size())) continue;
        boundaries_.push_back(double(content_.index[std::size_t(first)]) - 0.5);
    }
    if (!std::is_sorted(index.begin(), index.end())) {
        std::vector<std::size_t> order(index.size());
        std::iota(order.begin(), order.end(), std::size_t(0));
        std::stable_sort(order.begin(), order.end(),
                         [&](std::size_t a, std::size_t b) { return index[a] < index[b]; });
        std::vector<qint64> sortedIndex(index.size());
        std::vector<double> sortedValue(value.size());
        for (std::size_t i = 0; i < order.size(); ++i) {
            sortedIndex[i] = index[order[i]];
            sortedValue[i] = value[order[i]];
        }
        index.swap(sortedIndex);
        value.swap(sortedValue);
    }
    stats_.build(value);
    decimals_ = std::min(content_.decimals, 6);

    std::sort(boundaries_.begin(), boundaries_.end());
}

std::pair<std::size_t, std::size_t> Series::positionsIn(double lo, double hi) const {
    const auto& index = content_.index;
    const auto first = std::lower_bound(index.begin(), index.end(), lo, [&](qint64 i, double k) {
        return keyOfIndex(double(i)) < k;
    });
    const auto last = std::upper_bound(
        first, index.end(), hi, [&](double k, qint64 i) { return k < keyOfIndex(double(i)); });
    return {std::size_t(first - index.begin()), std::size_t(last - index.begin())};
}

std::size_t Series::nearest(double key) const {
    const std::size_t n = size();
    const std::size_t after = positionsIn(key, key).first;
    if (after == 0) return 0;
    if (after >= n) return n - 1;
    return key - keyAt(after - 1) <= keyAt(after) - key ? after - 1 : after;
}

std::size_t Series::positionOfIndex(qint64 index) const {
    return nearest(keyOfIndex(double(index)));
}

Stats Series::stats(double lo, double hi) const {
    const auto [first, last] = positionsIn(lo, hi);
    return stats_.range(content_.value, first, last);
}

void Cursors::place(int which, double key, const Series& series) {
    if (series.empty()) return;
    index_[which] = series.indexAt(series.nearest(key));
}

std::optional<CursorReading> Cursors::reading(int which, const Series& series) const {
    if (!index_[which] || series.empty()) return std::nullopt;
    const std::size_t i = series.positionOfIndex(*index_[which]);
    return CursorReading{series.indexAt(i), series.keyAt(i), series.valueAt(i), series.timeMsOf(i)};
}

std::optional<CursorDifference> Cursors::difference(const Series& series) const {
    const auto a = reading(0, series);
    const auto b = reading(1, series);
    if (!a || !b) return std::nullopt;
    return CursorDifference{b->value - a->value, b->key - a->key, b->index - a->index,
                            b->timeMs - a->timeMs};
}

QString numberText(double v) {
    char buffer[32];
    const auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, v);
    if (ec != std::errc()) return QString::number(v, 'g', 17);
    return QString::fromLatin1(buffer, end - buffer);
}

} // namespace torv::viewer
