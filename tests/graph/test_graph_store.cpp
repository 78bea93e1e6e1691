#include "graph/graph_store.h"

#include "form/control.h"
#include "graph_fakes.h"
#include "support/fake_platform.h"
#include "support/run_time_errors.h"

#include <gtest/gtest.h>

using namespace torv;
using namespace torv::test;

namespace {

const QString kMemoryFull =
    "All memory is already used.\rThere is a possibility to save the all data in file.";

class GraphStoreTest : public ::testing::Test {
protected:
    GraphStoreTest() {
        store.panel = &panel;
        store.windows = &windows;
        store.sizeStores(1);
        store.restartClock();
        store.channelActive[0] = true;
        store.graphWindows[0] = &view;
    }
    // One status reading arrives `ms` after the previous one.
    void tick(const QString& reading, int ms = 10) {
        p.now += static_cast<std::uint32_t>(ms);
        panel.reading = reading;
        store.GraphSamplingTick();
    }
    FakePlatform p;
    FakeGraphPanel panel;
    FakeGraphWindows windows;
    FakeGraphView view{0};
    GraphStore store{p};
};

} // namespace

TEST_F(GraphStoreTest, EachTickStoresTheReadingMakesOnePointAndDrawsIt) {
    tick("12.5", 40);
    tick("1250.75", 25);
    // Whole numbers rounded half to even; times from the start tick.
    EXPECT_EQ(QList<Int32>({store.readings[0][0], store.readings[0][1], store.readingTimes[0][0],
                            store.readingTimes[0][1], store.pointTimes[0][1]}),
              QList<Int32>({12, 1251, 40, 65, 65}));
    EXPECT_EQ(store.points[0][1], "1250.75");
    EXPECT_FALSE(store.intervalOpen[0]);

    // A reading that is not a number adds nothing and draws nothing.
    for (const char* bad : {"abc", "", "1.2.3"})
        tick(bad);
    EXPECT_EQ(QList<Int32>({store.readingCount[0], store.pointCount[0], view.draws}),
              QList<Int32>({2, 2, 2}));
    EXPECT_TRUE(p.dialogs.empty());
}

TEST_F(GraphStoreTest, IntervalExtremesFollowTextOrder) {
    const struct {
        QStringList readings;
        QString min, max;
        Int32 minIndex, maxIndex;
    } cases[] = {
        {{"9", "10"}, "10", "9", 1, 0}, // "9" is above "10" as text
        {{"5", "7", "6"}, "5", "7", 0, 1},  {{"100", "20", "3"}, "100", "3", 0, 2},
        {{"4", "4"}, "4", "4", 0, 0}, // an equal reading changes nothing
        {{"-2", "-10"}, "-10", "-2", 1, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.readings.join(' ').toStdString());
        store.intervalOpen[0] = false;
        store.readingCount[0] = 0;
        for (const QString& r : c.readings) {
            panel.reading = r;
            ASSERT_TRUE(store.AddReading());
        }
        EXPECT_EQ(store.intervalMinText[0], c.min);
        EXPECT_EQ(store.intervalMaxText[0], c.max);
        EXPECT_EQ(store.intervalMinIndex[0], c.minIndex);
        EXPECT_EQ(store.intervalMaxIndex[0], c.maxIndex);
    }
}

TEST_F(GraphStoreTest, TheReadingAfterTheFiftyThousandthReportsFullMemoryAndGoesOn) {
    store.readingCount[0] = 49999;
    tick("7");
    EXPECT_EQ(store.readingCount[0], 50000);
    EXPECT_TRUE(p.dialogs.empty());
    tick("8"); // the 50001st
    EXPECT_EQ(p.messages(), QStringList{kMemoryFull});
    EXPECT_EQ(store.readingCount[0], 49999);
    EXPECT_EQ(store.readings[0][50000], 8);
    tick("9"); // overwrites the last two places
    EXPECT_EQ(store.readings[0][49999], 9);
    tick("10"); // overflows again: no second box for the same fill
    EXPECT_EQ(store.readingCount[0], 49999);
    EXPECT_EQ(p.dialogs.size(), 1u);

    // The point store keeps going the same way instead of running past its end.
    store.pointCount[0] = 50000;
    tick("11");
    tick("12");
    EXPECT_LE(store.pointCount[0], 50000);
    EXPECT_EQ(view.draws, 6);

    // A store emptied and filled again says so again.
    store.readingCount[0] = 0;
    tick("1");
    store.readingCount[0] = 50000;
    tick("2");
    EXPECT_EQ(p.dialogs.size(), 2u);
}

TEST_F(GraphStoreTest, OnlyChannelZeroIsVisitedAndCloseRequestsAreServed) {
    FakeGraphView other(1);
    store.channelActive[1] = true;
    store.graphWindows[1] = &other;
    store.closeRequest[0] = store.closeRequest[1] = true;
    tick("1");
    EXPECT_EQ(QList<int>({view.draws, view.unloads, other.draws, other.unloads}),
              QList<int>({1, 1, 0, 0}));
    EXPECT_FALSE(store.closeRequest[0]);
    EXPECT_TRUE(store.closeRequest[1]);
}

TEST(GraphRangeScan, FindsExtremesWithTheirTieRules) {
    const struct {
        std::vector<Int32> values;
        Int32 first, last;
        Int32 max, maxIndex, min, minIndex;
    } cases[] = {
        {{5, 5, 5, 5}, 0, 3, 5, 3, 5, 0},    // ties move the maximum forward only
        {{3, 9, 1, 9, 1}, 0, 4, 9, 3, 1, 4}, // equal minima: the last one tested
        {{7, 2, 8, 0, 6}, 1, 3, 8, 2, 0, 3}, // only between the two indices
        {{4, 3, 2, 1}, 0, 3, 4, 0, 1, 3},    // falling: each is a new minimum
        {{1, 2, 3, 2, 1}, 0, 4, 3, 2, 1, 4}, // an equal minimum moves it forward too
    };
    for (const auto& c : cases) {
        Int32 max = -1, maxIndex = -1, min = -1, minIndex = -1;
        ScanRangeMinMax(c.values, static_cast<Int32>(c.values.size()), c.first, c.last, max,
                        maxIndex, min, minIndex);
        EXPECT_EQ(QList<Int32>({max, maxIndex, min, minIndex}),
                  QList<Int32>({c.max, c.maxIndex, c.min, c.minIndex}))
            << "first " << c.first << " last " << c.last;
    }

    // No readings: the range keeps what it was given; a range past the store is error 9.
    Int32 max = 11, maxIndex = 12, min = 13, minIndex = 14;
    ScanRangeMinMax({1, 2}, 0, 0, 1, max, maxIndex, min, minIndex);
    EXPECT_EQ(QList<Int32>({max, maxIndex, min, minIndex}), QList<Int32>({11, 12, 13, 14}));
    EXPECT_EQ(errorOf([&] {
                  ScanRangeMinMax({1, 2}, 2, 0, 2, max, maxIndex, min, minIndex);
              }),
              RuntimeError::SubscriptOutOfRange);
}
