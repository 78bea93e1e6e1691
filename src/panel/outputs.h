#pragma once

// The state of the output buttons: which outputs the panel shows, the word the card last
// echoed, and the output command on its way.

#include "base/integers.h"

namespace torv {

struct Outputs {
    Int16 OutputCount = 14;
    BoundedArray<Int16, 1, 20> OutputMask; // output k's bit
    Int16 OutStatusEcho = 16383, PrevOutStatusEcho = 0;
    Int16 PendingOutBits = 0;  // bits of the output command on its way
    Int16 LastOutputIndex = 0; // the output (or set-point output) last clicked
    bool SetOutputSent = false;
    bool SavedStopEnabled = false; // the stop button's state while an output command runs
};

} // namespace torv
