#pragma once

// The state of fast sampling: the session, the sampling position in the reading list, the
// counters of its blocks and what the current-frequency display shows. Only
// fast_sampling.cpp uses it.

#include "base/integers.h"

#include <QString>

namespace torv {

struct FastSampling {
    static constexpr Int32 LastSampleIndex = 20000;  // storing a reading here stops the session
    static constexpr Int32 ReadingListSize = 22001;  // entries 0 .. 22000
    static constexpr int StatusAnswerWaitMs = 20000; // the start waits this long for a status
    static constexpr int AbnormalReadingLength = 10; // longer numeric readings are questioned

    Int32 samplingPosition = 0;   // index in the reading list of the next reading
    Int32 blockNumber = 0;        // number of the next block to take
    Int16 blocksAnswered = 0;     // sampling answers of this session (block value 1)
    Int16 blocksAfterStop = 0;    // those that came while Stop was disabled (block value 2)
    Int32 parsedReadings = 0;     // readings taken this session (lblParsedReadingsD)
    Int32 errorReadings = 0;      // non-numeric readings replaced (lblErrorReadingsD)
    bool firstBlock = false;      // the next block is the session's first
    bool frequencyRuns = false;   // the current-frequency display follows the blocks
    Int32 frequencyStartTick = 0; // tick from which it counts
    Int32 lastBlockTick = 0;      // arrival of the last block taken
    QString lastBlockFrequency;   // readings per second of the last block, "0.000"
    QString currentBlockWeight;   // the last reading of the last block taken
    bool sessionOpen = false;     // a session started and not yet ended
    bool stopRequested = false;   // Stop was pressed (or run) in this session
    bool stopPending = false;     // StopSample goes out after the block on its way
    bool starting = false;        // cmdStart_Sample_Click is waiting
    bool startAborted = false;    // the real-time stop ran while it waited
};

} // namespace torv
