#pragma once

// Minimum and maximum tracking of a graph channel: the debounced decision whether a reading is
// a new extremum worth taking, and the local extremum near a click on the plot.

#include "base/integers.h"

#include <cstdint>
#include <functional>
#include <optional>

namespace torv {

class Platform;
struct Picture;

// The reading of a channel at a reading index, as a whole number.
using ReadingAt = std::function<Int32(Int32 index)>;

// What a channel keeps between readings.
struct MinMaxChannel {
    Int32 absMinimum = 65536; // smallest reading since the reset (2 to the 16th before any)
    Int32 absMaximum = 0;
    Int32 absMinimumIndex = 0;
    Int32 absMaximumIndex = 0;
    Int16 newExtremumCounter = 0; // taken extrema inside the current ignore window
};

struct MinMaxSettings {
    Int32 ignoreTime = 3;     // compared with a difference of millisecond ticks
    Int16 numberToIgnore = 1; // taken extrema before one counts
};

// Decides whether the reading at `curIndex` is a new minimum or maximum beyond the old spread
// times `procent`; writes `newMinIndex` / `newMaxIndex` only when one is taken, and `result`
// true when a taken extremum survives the ignore count within the ignore time. Run-time errors
// inside end it quietly, keeping what was written so far.
void GetNewMinMax(Platform& platform, const ReadingAt& value, MinMaxChannel& channel,
                  Int32& firstExtremumTick, const MinMaxSettings& settings, Int32 curIndex,
                  Int32 oldMinIndex, Int32 oldMaxIndex, float procent, Int32& newMinIndex,
                  Int32& newMaxIndex, bool& result);

struct PickedExtremum {
    Int32 index = 1;
    Int32 value = 0;
    std::uint8_t minOrMax = 1; // 1 minimum (click in the lower half), 2 maximum
};

// The local extremum near a click at (pctX, pctY) on the plot `box` (scrolled by its Left):
// the readings within `bandRadius` of the clicked one, the lowest (first of equals) for a click
// in the lower half, the highest (last of equals) in the upper half. A click outside the
// picture's height shows "Y<0 :GetXYofMinMaxPoint " and finds nothing.
std::optional<PickedExtremum> GetXYofMinMaxPoint(Platform& platform, const Picture& box,
                                                 const ReadingAt& value, Int32 readingCount,
                                                 Int32 bandRadius, double xStep, Int32 pctX,
                                                 Int32 pctY, Int32 leftIndex);

} // namespace torv
