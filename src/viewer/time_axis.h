#pragma once

// Milliseconds read as time on the viewer's X axis and in its readouts: seconds for the first
// minute and a half, m:ss up to an hour, h:mm:ss beyond; tick steps that are round in those
// units (1, 2, 5 ms ... 15 s, 30 s, 1 min, 5 min, 15 min, 1 h ...).

#include <QString>

namespace torv::viewer {

enum class TimeStyle { Seconds, MinutesSeconds, HoursMinutesSeconds };

// The style for times up to `maxAbsMs`.
TimeStyle timeStyleFor(double maxAbsMs);
// The axis title of a style: "Time (s)", "Time (m:ss)", "Time (h:mm:ss)".
QString timeAxisTitle(TimeStyle style);
// A round step of at least 1 ms giving about `ticks` ticks over `spanMs`.
double timeTickStep(double spanMs, int ticks);
// The label of the tick at `ms`, with as many decimals of a second as the step needs.
QString timeLabel(double ms, double stepMs, TimeStyle style);
// A time for the side panel, to the millisecond: "1.234 s", "2:03.456", "1:02:03.456".
QString timeText(double ms);

} // namespace torv::viewer
