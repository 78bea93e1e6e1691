#pragma once

// The state of real-time status polling: the last status words the card reported and what the
// last status answer left behind. The outputs and set-point areas read the words too.

#include "base/integers.h"

namespace torv {

struct RealTimeStatus {
    // Until the card reports otherwise every output is off (all fourteen bits set) and every
    // input inactive, as the buttons and lamps are drawn.
    Int16 OutStatus = 16383, InStatus = 255, SpStatus = 0;
    Int32 lastA2DCount = 0; // the converter count of the last answer
    Int16 CurrentIntegration = 0;
    bool statusReceived = false; // the form flag set by each status answer
};

} // namespace torv
