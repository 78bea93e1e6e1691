// Minimum and maximum tracking: which new extrema are taken, the ignore count and time, and the
// local extremum near a click on the plot.

#include "graph/min_max.h"

#include "form/picture.h"
#include "graph/graph_store.h"
#include "support/fake_platform.h"

#include <gtest/gtest.h>
#include <vector>

using namespace torv;

namespace {

struct Tracking {
    test::FakePlatform platform;
    GraphStore store{platform};
    Int32 minIndex = 0, maxIndex = 1; // the old extremes: readings 0 and 1
    bool result = false;
    float factor = 1.1f;

    Tracking() {
        store.sizeStores(1);
        store.minMaxMiss = 1;
        store.ignoreTime = 3;
    }
    void hold(const std::vector<Int32>& v) {
        for (std::size_t i = 0; i < v.size(); ++i)
            store.readings[0][i] = v[i];
        store.readingCount[0] = static_cast<Int32>(v.size());
    }
    // Runs the tracking for the last reading of `v`.
    void take(const std::vector<Int32>& v) {
        hold(v);
        GetNewMinMax(store, 0, static_cast<Int32>(v.size()) - 1, minIndex, maxIndex, factor,
                     minIndex, maxIndex, result);
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
        EXPECT_EQ(t.store.absoluteMinimum[0], r.absMin) << r.reading;
        EXPECT_EQ(t.store.absoluteMaximum[0], r.absMax) << r.reading;
        EXPECT_EQ(t.result, r.result) << r.reading;
    }
    Tracking f; // the single factor 1.05 is a little below 1.05: 1050 is beyond 1.05 x 1000
    f.factor = 1.05f;
    f.take({0, 1000, 1050});
    EXPECT_EQ(f.maxIndex, 2);
}

TEST(GetNewMinMax, IgnoreCountAndIgnoreTimeInMilliseconds) {
    // Ignore count 2: the first taken extremum is ignored, the second inside the time counts.
    Tracking t;
    t.store.minMaxMiss = 2;
    t.take({100, 200, 300});
    EXPECT_FALSE(t.result);
    EXPECT_EQ(t.store.newExtremumCounter[0], 1);
    EXPECT_EQ(t.store.firstExtremumTick, t.platform.now);
    t.platform.now += 2; // inside the 3 ms
    t.take({100, 200, 300, 500});
    EXPECT_TRUE(t.result);
    EXPECT_EQ(t.store.newExtremumCounter[0], 0);

    // Past the ignore time the count starts again: the next taken extremum is a first one.
    t.minIndex = 0, t.maxIndex = 1;
    t.take({100, 200, 300});
    t.platform.now += 4;
    t.minIndex = 0, t.maxIndex = 1;
    t.take({100, 300, 600});
    EXPECT_FALSE(t.result);
    EXPECT_EQ(t.store.newExtremumCounter[0], 1);

    // An ignore time of 0 lets nothing through.
    Tracking z;
    z.store.ignoreTime = 0;
    z.take({100, 200, 300});
    EXPECT_FALSE(z.result);
    EXPECT_EQ(z.store.newExtremumCounter[0], 0);
}

TEST(GetNewMinMax, ErrorsInsideAreTrappedQuietly) {
    Tracking t;
    t.maxIndex = 60000; // past the store
    t.take({100, 200, 300});
    EXPECT_EQ(t.maxIndex, 60000);
    EXPECT_TRUE(t.platform.dialogs.empty());

    Tracking o; // the counter at its 16-bit end
    o.store.newExtremumCounter[0] = 32767;
    o.store.firstExtremumTick = o.platform.now;
    o.take({100, 200, 300});
    EXPECT_EQ(o.maxIndex, 2) << "written before the overflow";
    EXPECT_FALSE(o.result);
}

TEST(GetXYofMinMaxPoint, SearchesTheBandNearTheClickWithItsTieBreaks) {
    Tracking t;
    t.store.xStep = 100;
    t.store.bandRadius = 3;
    //       0  1  2  3  4  5  6  7  8  9
    t.hold({5, 1, 1, 9, 3, 7, 7, 2, 2, 6});
    Picture plot;
    plot.height = 1000;
    struct Row {
        int left;
        Int32 x, y, leftIndex;
        Int32 index, value;
        int kind;
    } rows[] = {
        {0, 850, 600, 0, 7, 2, 1},    // near the right end: indices 4 to 9, first equal minimum
        {0, 850, 400, 0, 6, 7, 2},    // the same band, last of equal maxima
        {0, 850, 500, 0, 7, 2, 1},    // exactly half way is the lower half
        {0, 100, 900, 0, 1, 1, 1},    // near the left: from 0
        {0, 100, 100, 0, 3, 9, 2},    // indices 0 to 4
        {-500, 700, 100, 2, 3, 9, 2}, // scrolled: (-500 + 700) / 100 + 2 = reading 4, band 1..7
    };
    for (const Row& r : rows) {
        plot.left = r.left;
        const auto got = GetXYofMinMaxPoint(t.store, plot, 0, r.x, r.y, r.leftIndex);
        ASSERT_TRUE(got) << r.x << "," << r.y;
        EXPECT_EQ(got->index, r.index) << r.x << "," << r.y;
        EXPECT_EQ(got->value, r.value) << r.x << "," << r.y;
        EXPECT_EQ(got->minOrMax, r.kind) << r.x << "," << r.y;
    }
    EXPECT_TRUE(t.platform.dialogs.empty());

    for (Int32 y : {-1, 1001}) {
        EXPECT_FALSE(GetXYofMinMaxPoint(t.store, plot, 0, 100, y, 0));
        EXPECT_EQ(t.platform.lastMessage(), "Y<0 :GetXYofMinMaxPoint ");
    }
    EXPECT_EQ(t.platform.dialogs.size(), 2u);
}
