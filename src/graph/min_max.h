#pragma once

// Minimum and maximum tracking of a graph channel: the debounced decision whether a reading is
// a new extremum worth taking, and the local extremum near a click on the plot. Both work on
// the channel's readings and counters in the graph data store.

#include "base/integers.h"

#include <cstdint>
#include <optional>

namespace torv {

class GraphStore;
struct Picture;

// Decides whether the reading at `curIndex` is a new minimum or maximum beyond the old spread
// times `procent`; writes `newMinIndex` / `newMaxIndex` only when one is taken, and `result`
// true when a taken extremum survives the ignore count within the ignore time. Run-time errors
// inside end it quietly, keeping what was written so far.
void GetNewMinMax(GraphStore& store, int channel, Int32 curIndex, Int32 oldMinIndex,
                  Int32 oldMaxIndex, float procent, Int32& newMinIndex, Int32& newMaxIndex,
                  bool& result);

struct PickedExtremum {
    Int32 index = 1;
    Int32 value = 0;
    std::uint8_t minOrMax = 1; // 1 minimum (click in the lower half), 2 maximum
};

// The local extremum near a click at (pctX, pctY) on the plot `box` (scrolled by its Left):
// the readings within the band radius of the clicked one, the lowest (first of equals) for a
// click in the lower half, the highest (last of equals) in the upper half. A click outside the
// picture's height shows "Y<0 :GetXYofMinMaxPoint " and finds nothing.
std::optional<PickedExtremum> GetXYofMinMaxPoint(GraphStore& store, const Picture& box, int channel,
                                                 Int32 pctX, Int32 pctY, Int32 leftIndex);

// The reading of `channel` at `index`; run-time error 9 outside the store.
Int32 readingAt(const GraphStore& store, int channel, Int32 index);
// Its time in milliseconds since the graph started; run-time error 9 outside the store.
Int32 readingTimeAt(const GraphStore& store, int channel, Int32 index);

} // namespace torv
