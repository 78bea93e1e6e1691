#pragma once

#include "base/integers.h"

#include <QString>
#include <cstdint>

namespace torv {

// The reading counters of the status display. Tick values are the 32-bit millisecond
// counter stored signed; differences are taken modulo 2^32, so the counter wrapping
// around does not disturb them.
struct Counters {
    Int32 lngReadings = 0, lngBlockReadings = 0, lngPollStartTick = 0, lngBlockStartTick = 0,
          lngBlockPrevTick = 0, lngElapsed = 0, lngSamplingStartTick = 0;
    Int16 iBlockSize = 0;
};

// After each status answer: one more reading; the total frequency since polling started
// and, with a block size, the frequency over the last `iBlockSize` readings ("0.000").
// The block size times 1000 is 16-bit arithmetic: a block size above 32 overflows. A zero
// time span leaves its label as it was.
void ShowCounters(Counters& c, std::uint32_t now, QString& lblTotalReadingsD,
                  QString& LbLFrequencyData, QString& LbLCurrentFreqD);

// After each fast-sampling block: the samples so far and their frequency since the
// sampling start tick; `lngElapsed` keeps the time for the sampling handler.
void ShowBlockCounters(Counters& c, int samplesInBlock, std::uint32_t now,
                       QString& lblTotalReadingsD, QString& LbLFrequencyData);

} // namespace torv
