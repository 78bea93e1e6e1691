#pragma once

// One answer of a fast-sampling session: its readings "<W0>" .. "<WN>", N being the number
// in the last "</WN>" right before the closing tag. The parse is a plain function of the
// answer; the panel applies what it found to the reading list and the block table.

#include "base/integers.h"

#include <QString>
#include <QStringView>
#include <functional>
#include <vector>

namespace torv {

struct FastSamplingBlock {
    // The answer had the form of a block (closing tag, last number) and was read.
    bool read = false;
    // The block is taken: readings[0] is the reading at `firstIndex`, `lastIndex` its last.
    bool taken = false;
    Int32 lastIndex = 0;
    std::vector<QString> readings;
    int answerErrors = 0;      // faults of the answer's form, each counted once
    Int32 errorReadings = 0;   // readings that were no number, replaced by the one before
    bool noRoom = false;       // the block does not fit in the reading list: refused
    bool listFull = false;     // ... and it is of a real size: the list is full
    bool reachedLimit = false; // a reading went to the last sample index: the session stops
};

struct BlockParseRules {
    Int32 lastSampleIndex = 20000; // storing a reading here stops the session
    Int32 listSize = 22001;        // the reading list holds indices 0 .. listSize - 1
    int abnormalLength = 10;       // longer numeric readings are questioned
    // Asked for a numeric reading longer than `abnormalLength`: true keeps it, false
    // abandons the rest of the block.
    std::function<bool(const QString& value)> keepAbnormal;
};

// The block covers N + 1 readings, from `firstIndex` to firstIndex + N, and is taken when that
// lies within the reading list. Readings are looked up in order of their numbers, each from
// where the one before ended:
// - empty answer: not read, no fault; no closing tag, no last "</W" near it, or a last
//   number that is not digits: not read, one fault;
// - a block that does not fit in the list: refused, one fault (never cut or invented);
// - a number with more than `abnormalLength` characters is questioned; No keeps the readings
//   before it as a shorter block and abandons the rest;
// - a reading that is not a number (an error reading), or has no closing tag (a fault),
//   repeats the one before it;
// - readings missing from the answer (it holds fewer than announced, or a number is not
//   found after the one before) repeat the last reading taken, one fault for the block;
// - numbers above N are left out.
// `before` is the reading before `firstIndex` (the first of a session repeats its own "0").
// The cost per reading does not depend on the size of the block.
FastSamplingBlock parseFastSamplingBlock(QStringView answer, Int32 firstIndex,
                                         const QString& before, const BlockParseRules& rules);

} // namespace torv
