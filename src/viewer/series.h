#pragma once

// The readings of one sample data file as the viewer plots and measures them: a key for each
// reading (its reading index, or index x integration in milliseconds), its value, the block
// boundaries, and the two measuring cursors.

#include "files/sample_reader.h"
#include "viewer/statistics.h"

#include <QString>
#include <optional>
#include <utility>

namespace torv::viewer {

class Series {
public:
    // Takes the file's content; readings out of index order are sorted by index.
    void load(SampleFileContent content);

    // 1: keys are reading indices; 2: keys are milliseconds, index x integration.
    void setXMode(int mode) { xMode_ = mode == 2 ? 2 : 1; }
    int xMode() const { return xMode_; }
    // Milliseconds per reading; a value that is not positive stands for 1.
    void setIntegration(double ms) { integration_ = ms > 0 ? ms : 1.0; }
    double integration() const { return integration_; }

    const SampleFileContent& content() const { return content_; }
    std::size_t size() const { return content_.index.size(); }
    bool empty() const { return content_.index.empty(); }
    qint64 indexAt(std::size_t i) const { return content_.index[i]; }
    double valueAt(std::size_t i) const { return content_.value[i]; }
    double keyAt(std::size_t i) const { return keyOfIndex(double(content_.index[i])); }
    double keyOfIndex(double index) const { return xMode_ == 2 ? index * integration_ : index; }
    double timeMsOf(std::size_t i) const { return double(content_.index[i]) * integration_; }

    // Positions [first, last) of the readings whose keys lie in [lo, hi].
    std::pair<std::size_t, std::size_t> positionsIn(double lo, double hi) const;
    // The position of the reading whose key is nearest to `key`; the series must not be empty.
    std::size_t nearest(double key) const;
    // The position of the reading with index `index`, or of the nearest one.
    std::size_t positionOfIndex(qint64 index) const;

    // Decimals the readings are written with (up to 6), as the file's first thousand show.
    int decimals() const { return decimals_; }

    Stats stats(double lo, double hi) const;
    Stats allStats() const { return stats_.range(content_.value, 0, size()); }

    // Where block boundaries lie as reading indices (half-way before each block's first
    // reading), for the blocks after the first that hold readings.
    const std::vector<double>& boundaries() const { return boundaries_; }

private:
    SampleFileContent content_;
    StatsIndex stats_;
    std::vector<double> boundaries_;
    int xMode_ = 1;
    double integration_ = 1.0;
    int decimals_ = 3;
};

// Two cursors, A and B, each on a reading. They are kept as reading indices, so they stay on
// their readings when the X axis changes or the file is read again.
struct CursorReading {
    qint64 index = 0;
    double key = 0;
    double value = 0;
    double timeMs = 0;
};

struct CursorDifference {
    double value = 0;    // B - A
    double key = 0;      // in the X axis' unit
    qint64 readings = 0; // B's index - A's index
    double timeMs = 0;
};

class Cursors {
public:
    // Places cursor `which` (0 A, 1 B) on the reading nearest to `key`.
    void place(int which, double key, const Series& series);
    void clear() { index_[0].reset(), index_[1].reset(); }
    bool isSet(int which) const { return index_[which].has_value(); }
    std::optional<CursorReading> reading(int which, const Series& series) const;
    std::optional<CursorDifference> difference(const Series& series) const;

private:
    std::optional<qint64> index_[2];
};

// Number text for the viewer's readouts and exports: the shortest text that reads back as
// the same number.
QString numberText(double v);

} // namespace torv::viewer
