// Milliseconds read as time: the style follows the largest time, ticks are round in its units,
// labels carry the decimals their step needs and never read "0:60".

#include "viewer/time_axis.h"

#include <gtest/gtest.h>

using namespace torv::viewer;

TEST(TimeAxis, LabelsReadAsSecondsMinutesOrHours) {
    struct Case {
        double ms, stepMs;
        const char* label;
    } cases[] = {{1500, 500, "1.5"},           {12000, 2000, "12"},        {10002, 1, "10.002"},
                 {95000, 5000, "1:35"},        {119999.7, 1, "2:00.000"},  {-2500, 500, "-2.5"},
                 {6000000, 600000, "1:40:00"}, {3723500, 500, "1:02:03.5"}};
    for (const Case& c : cases) {
        const TimeStyle style = timeStyleFor(c.ms < 0 ? -c.ms : c.ms);
        EXPECT_EQ(timeLabel(c.ms, c.stepMs, style).toStdString(), c.label) << c.ms;
    }
    EXPECT_EQ(timeAxisTitle(timeStyleFor(6000000)), "Time (h:mm:ss)");
    EXPECT_EQ(timeText(1234).toStdString(), "1.234 s");
    EXPECT_EQ(timeText(123456).toStdString(), "2:03.456");
}

TEST(TimeAxis, TickStepsAreRoundInTimeUnits) {
    struct Case {
        double spanMs;
        double step;
    } cases[] = {{7, 1}, {10000, 2000}, {100000, 15000}, {6000000, 900000}, {3.6e8, 72e6}, {0, 1}};
    for (const Case& c : cases)
        EXPECT_EQ(timeTickStep(c.spanMs, 5), c.step) << c.spanMs;
}
