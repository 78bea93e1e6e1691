// The reading counters and frequencies of the status display.

#include "panel/counters.h"

#include "base/runtime_error.h"

#include <gtest/gtest.h>

using namespace torv;

namespace {

// One status answer at tick `now`; the total, frequency and current-frequency labels after it.
struct Display {
    Counters c;
    QString total = "-", frequency = "-", current = "-";
    QString at(std::uint32_t now) {
        ShowCounters(c, now, total, frequency, current);
        return total + "|" + frequency + "|" + current;
    }
};

TEST(Counters, TotalAndCurrentFrequency) {
    Display d;
    d.c.iBlockSize = 4;
    d.c.lngPollStartTick = d.c.lngBlockStartTick = 10000;
    // Before the first full block the span runs from tick 0 to the poll start.
    EXPECT_EQ(d.at(10500), "1|2.000|0.400");
    EXPECT_EQ(d.c.lngElapsed, 500);
    d.at(10700);
    d.at(10900);
    EXPECT_EQ(d.at(11000), "4|4.000|4.000"); // the fourth reading closes the first block
    EXPECT_EQ(d.c.lngBlockPrevTick, 10000);
    EXPECT_EQ(d.c.lngBlockStartTick, 11000);
    EXPECT_EQ(d.at(11100), "5|4.545|4.000"); // inside the next block: the last block's figure
}

TEST(Counters, SixteenAndThirtyTwoBitLimits) {
    Display d;
    d.c.iBlockSize = 33; // 33 * 1000 overflows in 16 bits
    d.c.lngPollStartTick = d.c.lngBlockStartTick = 1000;
    try {
        d.at(2000);
        FAIL() << "no overflow";
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.number(), RuntimeError::Overflow);
    }
    // The reading and the total frequency were already shown.
    EXPECT_EQ(d.total + "|" + d.frequency + "|" + d.current, "1|1.000|-");
    d.c.iBlockSize = 32;
    EXPECT_EQ(d.at(3000), "2|1.000|32.000"); // 32000 over the 1000 ms from tick 0 to the start
}

} // namespace
