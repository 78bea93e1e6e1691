// The reading counters and frequencies of the status display.

#include "link/counters.h"

#include "base/runtime_error.h"

#include <gtest/gtest.h>

using namespace torv;

namespace {

struct Labels {
    QString total = QStringLiteral("-"), frequency = QStringLiteral("-"),
            current = QStringLiteral("-");
};

void show(Counters& c, std::uint32_t now, Labels& l) {
    ShowCounters(c, now, l.total, l.frequency, l.current);
}

TEST(Counters, TotalAndCurrentFrequency) {
    Counters c;
    c.iBlockSize = 4;
    c.lngPollStartTick = c.lngBlockStartTick = 10000;
    Labels l;
    show(c, 10500, l);
    EXPECT_EQ(c.lngReadings, 1);
    EXPECT_EQ(l.total, "1");
    EXPECT_EQ(c.lngElapsed, 500);
    EXPECT_EQ(l.frequency, "2.000");
    // Before the first full block the span runs from tick 0 to the poll start.
    EXPECT_EQ(l.current, "0.400");

    show(c, 10700, l);
    show(c, 10900, l);
    show(c, 11000, l); // fourth reading closes the first block
    EXPECT_EQ(l.total, "4");
    EXPECT_EQ(l.frequency, "4.000");
    EXPECT_EQ(c.lngBlockPrevTick, 10000);
    EXPECT_EQ(c.lngBlockStartTick, 11000);
    EXPECT_EQ(l.current, "4.000");

    show(c, 11100, l); // inside the next block: still the last block's figure
    EXPECT_EQ(l.current, "4.000");
    EXPECT_EQ(l.frequency, "4.545");
}

TEST(Counters, BlockSizeAbove32OverflowsIn16Bits) {
    Counters c;
    c.iBlockSize = 33;
    c.lngPollStartTick = c.lngBlockStartTick = 1000;
    Labels l;
    try {
        show(c, 2000, l);
        FAIL() << "no overflow";
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.number(), RuntimeError::Overflow);
    }
    // The reading and the total frequency were already shown.
    EXPECT_EQ(l.total, "1");
    EXPECT_EQ(l.frequency, "1.000");
    EXPECT_EQ(l.current, "-");

    c.iBlockSize = 32;
    show(c, 3000, l);
    EXPECT_EQ(l.current, "32.000"); // 32000 over the 1000 ms from tick 0 to the start
}

TEST(Counters, ZeroSpansLeaveTheirLabels) {
    Counters c;
    c.iBlockSize = 1;
    c.lngPollStartTick = c.lngBlockStartTick = c.lngBlockPrevTick = 5000;
    Labels l;
    show(c, 5000, l); // first answer within the start millisecond
    EXPECT_EQ(l.total, "1");
    EXPECT_EQ(l.frequency, "-");
    EXPECT_EQ(l.current, "-");
    show(c, 5004, l);
    EXPECT_EQ(l.frequency, "500.000");
    EXPECT_EQ(l.current, "250.000");
    show(c, 5004, l); // two answers in one millisecond: the block span is 0
    EXPECT_EQ(l.current, "250.000");
    EXPECT_EQ(l.frequency, "750.000");
}

TEST(Counters, TickDifferencesSurviveTheCounterWrapping) {
    Counters c;
    c.lngPollStartTick = static_cast<Int32>(0xFFFFFF00u);
    Labels l;
    show(c, 0x100u, l);
    EXPECT_EQ(c.lngElapsed, 512);
    EXPECT_EQ(l.frequency, "1.953");
}

TEST(Counters, ReadingsTimesThousandIs32Bit) {
    Counters c;
    c.lngReadings = 2147482; // the next reading still fits: 2147483000
    Labels l;
    show(c, 1000, l);
    EXPECT_THROW(show(c, 2000, l), RuntimeError);
}

TEST(Counters, BlockCountersAddSamplesSinceTheSamplingStart) {
    Counters c;
    c.lngSamplingStartTick = 20000;
    QString total = QStringLiteral("-"), frequency = QStringLiteral("-");
    ShowBlockCounters(c, 250, 20000, total, frequency);
    EXPECT_EQ(total, "250");
    EXPECT_EQ(frequency, "-"); // no time has passed yet
    ShowBlockCounters(c, 150, 20200, total, frequency);
    EXPECT_EQ(c.lngBlockReadings, 400);
    EXPECT_EQ(total, "400");
    EXPECT_EQ(c.lngElapsed, 200);
    EXPECT_EQ(frequency, "2000.000");
}

} // namespace
