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
    // The block has readings to take: readings[0] is the reading at `firstIndex`.
    bool taken = false;
    Int32 lastIndex = 0; // index of the block's last reading when taken
    std::vector<QString> readings;
    int answerErrors = 0;      // faults of the answer's form, each counted once
    Int32 errorReadings = 0;   // readings that were no number, replaced by the one before
    bool noRoom = false;       // `firstIndex` lies beyond the last index of the list
    bool reachedLimit = false; // a reading went to the last index: the session must stop
};

struct BlockParseRules {
    Int32 lastIndex = 20000; // storing a reading here stops the session
    int abnormalLength = 10; // longer numeric readings are questioned
    // Asked for a numeric reading longer than `abnormalLength`: true keeps it, false
    // abandons the rest of the block.
    std::function<bool(const QString& value)> keepAbnormal;
};

// Rules for answers that do not keep to the form:
// - empty: not read, no fault;
// - no closing tag, no last "</W" near it, or a last number that is not digits: not read,
//   one fault;
// - a reading that is not a number repeats the one before it (an error reading);
// - a reading without its own closing tag repeats the one before it (one fault each);
// - a number missing in the sequence: its reading repeats the one before it;
// - numbers above N, or already taken: left out;
// - fewer readings than N + 1: the block ends with the last one there.
// Everything but error readings and unclosed readings is counted once per block as a
// fault. `before` is the reading before `firstIndex` (the first of a session repeats its
// own "0"). The cost per reading does not depend on the size of the block.
FastSamplingBlock parseFastSamplingBlock(QStringView answer, Int32 firstIndex,
                                         const QString& before, const BlockParseRules& rules);

} // namespace torv
