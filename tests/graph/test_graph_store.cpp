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
    EXPECT_EQ(store.readingCount[0], 2);
    EXPECT_EQ(store.readings[0][0], 12); // whole numbers, rounded half to even
    EXPECT_EQ(store.readings[0][1], 1251);
    EXPECT_EQ(store.readingTimes[0][0], 40);
    EXPECT_EQ(store.readingTimes[0][1], 65);
    EXPECT_EQ(store.pointCount[0], 2);
    EXPECT_EQ(store.points[0][1], "1250.75");
    EXPECT_EQ(store.pointTimes[0][1], 65);
    EXPECT_EQ(view.draws, 2);
    EXPECT_FALSE(store.intervalOpen[0]);
    EXPECT_EQ(store.readingText, "0");
    EXPECT_EQ(store.lastTick, p.now);

    // A reading that is not a number adds nothing and draws nothing.
    for (const char* bad : {"abc", "", "OVERFLOW", "1.2.3"})
        tick(bad);
    EXPECT_EQ(store.readingCount[0], 2);
    EXPECT_EQ(store.pointCount[0], 2);
    EXPECT_EQ(view.draws, 2);
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
    EXPECT_EQ(p.dialogs.size(), 1u);

    // The point store keeps going the same way instead of running past its end.
    store.pointCount[0] = 50000;
    tick("10");
    tick("11");
    EXPECT_LE(store.pointCount[0], 50000);
    EXPECT_EQ(view.draws, 5);
}

TEST_F(GraphStoreTest, ReadingStoreOfSeveralChannelsIsSmallerThanTheFullCheck) {
    store.sizeStores(2);
    store.readingCount[0] = 33301;
    EXPECT_EQ(errorOf([&] { tick("5"); }), RuntimeError::SubscriptOutOfRange);
}

TEST_F(GraphStoreTest, DrawAgainDrawsTheSamePointOnceMore) {
    view.onDraw = [&] {
        if (view.draws == 1) store.drawAgain = true;
    };
    tick("3");
    EXPECT_EQ(view.draws, 2);
    EXPECT_FALSE(store.drawAgain);
    EXPECT_EQ(store.pointCount[0], 1);

    // A second draw that moves the point count on ends the program.
    view.onDraw = [&] {
        if (view.draws == 3) store.drawAgain = true;
        if (view.draws == 4) ++store.pointCount[0];
    };
    EXPECT_THROW(tick("4"), ProgramEnded);
}

TEST_F(GraphStoreTest, OnlyChannelZeroIsVisitedAndCloseRequestsAreServed) {
    FakeGraphView other(1);
    store.channelActive[1] = true;
    store.graphWindows[1] = &other;
    store.closeRequest[0] = store.closeRequest[1] = true;
    tick("1");
    EXPECT_EQ(view.draws, 1);
    EXPECT_EQ(other.draws, 0);
    EXPECT_EQ(view.unloads, 1);
    EXPECT_FALSE(store.closeRequest[0]);
    EXPECT_EQ(other.unloads, 0);
    EXPECT_TRUE(store.closeRequest[1]);

    // An inactive channel 0 takes nothing, yet its close request is still served.
    store.channelActive[0] = false;
    store.closeRequest[0] = true;
    tick("2");
    EXPECT_EQ(store.readingCount[0], 1);
    EXPECT_EQ(view.unloads, 2);
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
        {{-5, -1, -9}, 0, 2, -1, 1, -9, 2},
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

TEST(GraphTextChecks, DigitsOnlyAcceptsUnsignedWholeNumbers) {
    for (const char* yes : {"0", "42", " 42 ", "007", "99999999999999999999"})
        EXPECT_TRUE(IsDigitsOnly(yes)) << yes;
    for (const char* no : {"-5", "1.5", "1e3", "+3", "", "  ", "&H1F", "abc", "4 2", "1,5"})
        EXPECT_FALSE(IsDigitsOnly(no)) << no;
}

TEST(GraphTextChecks, TextLimitsColourAndTipTheBox) {
    constexpr color::Color good = color::Highlight3D, bad = color::InactiveCaptionText;
    const struct {
        const char* text;
        color::Color colour;
        const char* tip;
    } cases[] = {
        {"1", good, "the tip"},
        {"1000", good, "the tip"},
        {" 500 ", good, "the tip"},
        {"0", bad, "Data out of limits: [1...1000]"},
        {"1001", bad, "Data out of limits: [1...1000]"},
        {"99999999999999999999", bad, "Data out of limits: [1...1000]"},
        {"abc", bad, "Not number!"},
        {"-3", bad, "Not number!"},
        {"", bad, "Not number!"},
    };
    for (const auto& c : cases) {
        Control box;
        box.backColor = color::Red;
        box.caption = c.text;
        CheckTextLimits(box, 1, 1000, good, bad, "the tip");
        EXPECT_EQ(box.backColor, c.colour) << c.text;
        EXPECT_EQ(box.toolTip, c.tip) << c.text;
    }
}

TEST_F(GraphStoreTest, InitGraphChannelsResetsEveryChannel) {
    for (int ch = 0; ch < 4; ++ch) {
        store.readingCount[ch] = store.pointCount[ch] = store.leftIndex[ch] = 9;
        store.newExtremumCounter[ch] = 2;
        store.absoluteMinimum[ch] = store.selectedIndex[ch] = 3;
        store.upperLimit[ch] = store.lowerLimit[ch] = "x";
    }
    store.viewCounters = {4, 5};
    store.InitGraphChannels();
    const QStringList upper = {"65536", "32768", "16384", "8192"};
    for (int ch = 0; ch < 4; ++ch) {
        EXPECT_EQ(store.upperLimit[ch], upper[ch]);
        EXPECT_EQ(store.lowerLimit[ch], "0");
        EXPECT_EQ(store.readingCount[ch] + store.pointCount[ch] + store.leftIndex[ch] +
                      store.newExtremumCounter[ch],
                  0);
        EXPECT_EQ(store.absoluteMinimum[ch], 65536);
        EXPECT_EQ(store.selectedIndex[ch], 65536);
    }
    EXPECT_EQ(store.viewCounters, (std::array<Int32, 2>{0, 0}));
    EXPECT_EQ(store.screenWidth, 19200);
    EXPECT_EQ(store.screenHeight, 14400);
}

TEST_F(GraphStoreTest, StoresAreSizedByActiveChannelsKeepingTheirContents) {
    store.readings[0][7] = 77;
    const std::size_t sizes[] = {50001, 33301, 25001, 20001};
    for (int n = 1; n <= 4; ++n) {
        store.sizeStores(n);
        for (int ch = 0; ch < 4; ++ch) {
            EXPECT_EQ(store.readings[ch].size(), sizes[n - 1]);
            EXPECT_EQ(store.points[ch].size(), sizes[n - 1]);
            EXPECT_EQ(store.pointTimes[ch].size(), sizes[n - 1]);
        }
    }
    EXPECT_EQ(store.readings[0][7], 77);
    EXPECT_EQ(errorOf([&] { store.sizeStores(0); }), RuntimeError::SubscriptOutOfRange);
    EXPECT_EQ(errorOf([&] { store.sizeStores(5); }), RuntimeError::SubscriptOutOfRange);
}

TEST_F(GraphStoreTest, ClosingAGraphGivesThePollingButtonBackByTheRequest) {
    const struct {
        const char* function;
        bool polling;
        int enabled;
    } cases[] = {
        {"GetRTStatus", true, 1},
        {"GetRTStatus", false, 0},
        {"FastSampling", false, 1},
        {"", false, 1},
    };
    for (const auto& c : cases) {
        panel.functionName = c.function;
        panel.polling = c.polling;
        store.restorePollingButton();
        EXPECT_EQ(panel.pollingButton, c.enabled) << c.function << " " << c.polling;
    }
}

TEST_F(GraphStoreTest, GraphCloseForgetsTheChannel) {
    tick("5");
    tick("6");
    store.openWindowCount = 1;
    store.realTimeGraphRuns = true;
    store.GraphClose(0);
    EXPECT_EQ(store.readings[0][0] + store.readings[0][1], 0);
    EXPECT_EQ(store.readingCount[0] + store.pointCount[0], 0);
    EXPECT_FALSE(store.channelActive[0]);
    EXPECT_EQ(store.graphWindows[0], nullptr);
    EXPECT_EQ(store.openWindowCount, 0);
    EXPECT_FALSE(store.realTimeGraphRuns);
    store.GraphClose(0); // never below zero
    EXPECT_EQ(store.openWindowCount, 0);
}

TEST_F(GraphStoreTest, ShowRTGraphReleasesOrKeepsTheWindowsOnTop) {
    store.ShowRTGraph(0);
    EXPECT_EQ(view.topMost, 0);
    store.ShowRTGraph(1);
    EXPECT_EQ(view.topMost, 1);
}
