// The viewer's model without widgets: statistics of any stretch agree with a direct
// computation, keys follow the X mode, cursors snap to readings and keep them, block
// boundaries and the CSV rows come out as a spreadsheet expects.

#include "viewer/export.h"
#include "viewer/series.h"

#include <QTemporaryDir>
#include <cmath>
#include <gtest/gtest.h>
#include <random>

using namespace torv;
using namespace torv::viewer;

namespace {

SampleFileContent contentOf(std::vector<qint64> index, std::vector<double> value,
                            std::vector<qsizetype> blockStarts = {0}) {
    SampleFileContent c;
    c.index = std::move(index);
    c.value = std::move(value);
    for (qsizetype first : blockStarts) {
        SampleBlockLine b;
        b.firstReading = first;
        c.blocks.push_back(b);
    }
    return c;
}

// Count, min, max, mean and the sample standard deviation, the plain two-pass way.
Stats direct(const std::vector<double>& v, std::size_t first, std::size_t last) {
    Stats s;
    if (first >= last) return s;
    s.count = qint64(last - first);
    s.min = *std::min_element(v.begin() + qptrdiff(first), v.begin() + qptrdiff(last));
    s.max = *std::max_element(v.begin() + qptrdiff(first), v.begin() + qptrdiff(last));
    double sum = 0;
    for (std::size_t i = first; i < last; ++i)
        sum += v[i];
    s.mean = sum / double(s.count);
    for (std::size_t i = first; i < last; ++i)
        s.m2 += (v[i] - s.mean) * (v[i] - s.mean);
    return s;
}

} // namespace

TEST(ViewerStatistics, EveryStretchAgreesWithADirectComputation) {
    std::mt19937 rng(7);
    std::normal_distribution<double> noise(0.0, 0.002);
    std::vector<qint64> index;
    std::vector<double> value;
    // A large offset with a tiny spread: where naive sums of squares lose every digit.
    for (int i = 0; i < 5000; ++i) {
        index.push_back(i);
        value.push_back(100000.0 + noise(rng) + (i % 1500 == 0 ? 3.0 : 0.0));
    }
    Series series;
    series.load(contentOf(index, value));
    const std::pair<std::size_t, std::size_t> stretches[] = {
        {0, 5000},    {0, 0},       {17, 18},     {1, 1023},
        {1000, 1100}, {1023, 4097}, {2048, 3072}, {4999, 5000}};
    for (const auto& [first, last] : stretches) {
        const Stats got = series.stats(double(first), double(last) - 1);
        const Stats want = direct(series.content().value, first, last);
        const std::string at = std::to_string(first) + ".." + std::to_string(last);
        EXPECT_EQ(got.count, want.count) << at;
        if (want.count == 0) continue;
        EXPECT_EQ(got.min, want.min) << at;
        EXPECT_EQ(got.max, want.max) << at;
        EXPECT_NEAR(got.mean, want.mean, 1e-9) << at;
        EXPECT_NEAR(got.stdDev(), std::sqrt(want.count > 1 ? want.m2 / double(want.count - 1) : 0),
                    1e-9)
            << at;
    }
    EXPECT_EQ(series.stats(-5, 1e9).count, 5000);
    EXPECT_EQ(series.stats(6000, 7000).count, 0);
}

TEST(ViewerSeries, KeysFollowTheXModeAndStretchesFollowTheKeys) {
    Series s;
    // Out of order in the file (an appended part that starts over); a reading left out at 3.
    s.load(contentOf({0, 1, 2, 4, 5, 10, 11}, {5, 6, 7, 9, 10, 1, 2}, {0, 3, 5}));
    s.setIntegration(20);
    EXPECT_EQ(s.positionsIn(1, 4), std::make_pair(std::size_t(1), std::size_t(4)));
    EXPECT_EQ(s.nearest(2.6), 2u);
    EXPECT_EQ(s.nearest(3.1), 3u); // index 4 is nearer than index 2
    EXPECT_EQ(s.nearest(3.0), 2u); // half way: the earlier reading
    EXPECT_EQ(s.nearest(-50), 0u);
    EXPECT_EQ(s.nearest(50), 6u);
    EXPECT_EQ(s.boundaries(), (std::vector<double>{3.5, 9.5}));

    s.setXMode(2);
    EXPECT_EQ(s.keyAt(3), 80.0);
    EXPECT_EQ(s.positionsIn(20, 80), std::make_pair(std::size_t(1), std::size_t(4)));
    EXPECT_EQ(s.stats(0, 100).count, 5);
    EXPECT_EQ(s.keyOfIndex(s.boundaries()[1]), 190.0);

    Series unordered;
    unordered.load(contentOf({5, 6, 0, 1}, {50, 60, 0, 10}, {0, 2}));
    EXPECT_EQ(unordered.indexAt(0), 0);
    EXPECT_EQ(unordered.valueAt(3), 60);
    EXPECT_EQ(unordered.boundaries(), std::vector<double>{-0.5});
}

TEST(ViewerCursors, SnapToReadingsAndKeepThemAcrossModesAndReloads) {
    Series s;
    s.load(contentOf({0, 1, 2, 3, 4}, {1.5, 2.5, 4.0, 8.0, 16.0}));
    s.setIntegration(8);
    Cursors c;
    EXPECT_FALSE(c.difference(s));
    c.place(0, 0.8, s);
    c.place(1, 3.4, s);
    EXPECT_EQ(c.reading(0, s)->value, 2.5);
    const CursorDifference d = *c.difference(s);
    EXPECT_EQ(QStringList({numberText(d.value), numberText(d.key), QString::number(d.readings),
                           numberText(d.timeMs)})
                  .join(' '),
              "5.5 2 2 16");

    s.setXMode(2); // the same readings, keys now in milliseconds
    EXPECT_EQ(c.reading(1, s)->key, 24.0);
    EXPECT_EQ(c.difference(s)->key, 16.0);
}

TEST(ViewerExport, CsvRowsAreIndexTimeAndValue) {
    Series s;
    s.load(contentOf({0, 1, 7}, {1.25, -0.5, 1e-7}));
    s.setIntegration(2.5);
    EXPECT_EQ(csvText(s, 0, 3), "index,time_ms,value\n0,0,1.25\n1,2.5,-0.5\n7,17.5,1e-07\n");
    EXPECT_EQ(csvText(s, 1, 2), "index,time_ms,value\n1,2.5,-0.5\n");
    EXPECT_EQ(csvText(s, 2, 99), "index,time_ms,value\n7,17.5,1e-07\n");

    QTemporaryDir dir;
    QString error;
    EXPECT_TRUE(writeCsv(dir.filePath("out.csv"), s, 0, 3, error));
    EXPECT_FALSE(writeCsv(dir.filePath("missing/out.csv"), s, 0, 3, error));
    EXPECT_TRUE(error.startsWith(dir.filePath("missing/out.csv") + " could not be written: "))
        << error.toStdString();
}
