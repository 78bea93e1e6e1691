// Minimum and maximum tracking: which new extrema are taken, the ignore count and time, and the
// local extremum near a click on the plot.

#include "graph/min_max.h"

#include "base/runtime_error.h"
#include "form/picture.h"
#include "support/fake_platform.h"

#include <gtest/gtest.h>
#include <vector>

using namespace torv;

namespace {

ReadingAt readingsOf(const std::vector<Int32>& v) {
    return [&v](Int32 i) {
        if (i < 0 || i >= static_cast<Int32>(v.size())) raiseSubscript();
        return v[static_cast<std::size_t>(i)];
    };
}

struct Tracking {
    test::FakePlatform platform;
    MinMaxChannel channel;
    MinMaxSettings settings;
    Int32 firstTick = 0;
    Int32 minIndex = 0, maxIndex = 1; // the old extremes: readings 0 and 1
    bool result = false;

    // Runs the tracking for the last reading of `v`.
    void take(const std::vector<Int32>& v) {
        GetNewMinMax(platform, readingsOf(v), channel, firstTick, settings,
                     static_cast<Int32>(v.size()) - 1, minIndex, maxIndex, 1.1f, minIndex, maxIndex,
                     result);
    }
};

} // namespace

TEST(GetNewMinMax, ANewExtremumIsTakenOnlyBeyondTheSpreadTimesTheFactor) {
    struct Row {
        Int32 reading;
        Int32 minIndex, maxIndex; // after the call
        Int32 absMin, absMax;
        bool result;
    } rows[] = {
        {209, 0, 1, 65536, 209, false}, // 109 <= 1.1 x 100: the maximum moves, not taken
        {211, 0, 2, 65536, 211, true},  // 111 > 110: taken
        {200, 0, 1, 65536, 0, false},   // equal to the maximum: inside
        {150, 0, 1, 65536, 0, false},   // inside
        {91, 0, 1, 91, 0, false},       // spread 109: not taken
        {89, 2, 1, 89, 0, true},        // spread 111: a new minimum taken
    };
    for (const Row& r : rows) {
        Tracking t;
        t.take({100, 200, r.reading});
        EXPECT_EQ(t.minIndex, r.minIndex) << r.reading;
        EXPECT_EQ(t.maxIndex, r.maxIndex) << r.reading;
        EXPECT_EQ(t.channel.absMinimum, r.absMin) << r.reading;
        EXPECT_EQ(t.channel.absMaximum, r.absMax) << r.reading;
        EXPECT_EQ(t.result, r.result) << r.reading;
    }
}

TEST(GetNewMinMax, IgnoreCountAndIgnoreTimeInMilliseconds) {
    // Ignore count 2: the first taken extremum is ignored, the second inside the time counts.
    Tracking t;
    t.settings.numberToIgnore = 2;
    t.settings.ignoreTime = 3;
    std::vector<Int32> v{100, 200, 300};
    t.take(v);
    EXPECT_FALSE(t.result);
    EXPECT_EQ(t.channel.newExtremumCounter, 1);
    EXPECT_EQ(t.firstTick, static_cast<Int32>(t.platform.now));
    t.platform.now += 2; // inside the 3 ms
    v.push_back(500);
    t.take(v);
    EXPECT_TRUE(t.result);
    EXPECT_EQ(t.channel.newExtremumCounter, 0);

    // Past the ignore time the count starts again: the next taken extremum is a first one.
    t.minIndex = 0, t.maxIndex = 1;
    t.take(v = {100, 200, 300});
    t.platform.now += 4;
    t.minIndex = 0, t.maxIndex = 1;
    t.take(v = {100, 300, 600});
    EXPECT_FALSE(t.result);
    EXPECT_EQ(t.channel.newExtremumCounter, 1);

    // An ignore time of 0 lets nothing through.
    Tracking z;
    z.settings.ignoreTime = 0;
    z.take({100, 200, 300});
    EXPECT_FALSE(z.result);
    EXPECT_EQ(z.channel.newExtremumCounter, 0);
}

TEST(GetNewMinMax, ErrorsInsideAreTrappedQuietly) {
    Tracking t;
    t.maxIndex = 7; // past the stored readings
    t.result = true;
    t.take({100, 200, 300});
    EXPECT_EQ(t.maxIndex, 7);
    EXPECT_TRUE(t.platform.dialogs.empty());

    Tracking o; // the counter at its 16-bit end
    o.channel.newExtremumCounter = 32767;
    o.firstTick = static_cast<Int32>(o.platform.now);
    o.take({100, 200, 300});
    EXPECT_EQ(o.maxIndex, 2) << "written before the overflow";
    EXPECT_FALSE(o.result);
}

TEST(GetXYofMinMaxPoint, SearchesTheBandNearTheClickWithItsTieBreaks) {
    test::FakePlatform platform;
    Picture plot;
    plot.height = 1000;
    //                          0  1  2  3  4  5  6  7  8  9
    const std::vector<Int32> v{5, 1, 1, 9, 3, 7, 7, 2, 2, 6};
    struct Row {
        double left;
        Int32 x, y, leftIndex;
        Int32 index, value;
        int kind;
    } rows[] = {
        {0, 850, 600, 0, 7, 2, 1},    // near the right end: indices 4 to 9, first of equal minima
        {0, 850, 400, 0, 6, 7, 2},    // the same band, last of equal maxima
        {0, 850, 500, 0, 7, 2, 1},    // exactly half way is the lower half
        {0, 100, 900, 0, 1, 1, 1},    // near the left: from 0, first of 1, 1
        {0, 100, 100, 0, 3, 9, 2},    // indices 0 to 4
        {-500, 700, 100, 2, 3, 9, 2}, // scrolled: (-500 + 700) / 100 + 2 = reading 4, band 1..7
    };
    for (const Row& r : rows) {
        plot.left = static_cast<int>(r.left);
        const auto got =
            GetXYofMinMaxPoint(platform, plot, readingsOf(v), 10, 3, 100, r.x, r.y, r.leftIndex);
        ASSERT_TRUE(got) << r.x << "," << r.y;
        EXPECT_EQ(got->index, r.index) << r.x << "," << r.y;
        EXPECT_EQ(got->value, r.value) << r.x << "," << r.y;
        EXPECT_EQ(got->minOrMax, r.kind) << r.x << "," << r.y;
    }
    EXPECT_TRUE(platform.dialogs.empty());

    for (Int32 y : {-1, 1001}) {
        EXPECT_FALSE(GetXYofMinMaxPoint(platform, plot, readingsOf(v), 10, 3, 100, 100, y, 0));
        EXPECT_EQ(platform.lastMessage(), "Y<0 :GetXYofMinMaxPoint ");
    }
    EXPECT_EQ(platform.dialogs.size(), 2u);
}
