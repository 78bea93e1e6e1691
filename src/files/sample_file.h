#pragma once

// The sample data file ("All_data.txt" by default) that the history viewer reads: a first
// line, one block line per block followed by its readings, "-1, -1" and a fixed trailer.
// Two writers produce it: one from the fast-sampling block table, one from the real-time
// readings.

#include "base/integers.h"
#include "kept_file.h"

#include <QByteArray>
#include <QString>
#include <optional>
#include <vector>

namespace torv {

class Platform;

struct BlockRecord {
    Int32 value[5] = {0, 0, 0, 0, 0}; // value[4]: index of the block's last reading
};

inline constexpr Int32 kLastBlockIndex = 100000;

struct SampleData {
    std::vector<BlockRecord> blocks = std::vector<BlockRecord>(kLastBlockIndex + 1);
    std::vector<QString> readings; // the reading list, indexed from 0
    bool readingsAllocated = false;
    Int32 blockCount = 0;     // blocks filled
    Int32 rtReadingCount = 0; // index of the last real-time reading
    QString startDateTime;    // NowString() of the last start
};

struct TrailerInfo {
    QString integration;  // the card's integration as last reported
    QString unitsCaption; // the caption of the unit label
    int xMode = 1;        // 1 readings, 2 milliseconds
};

// "-1, -1" and the trailer; `samples` is the last reading index written (-1 for none).
QByteArray dataTrailerText(const QString& startDateTime, const TrailerInfo& trailer,
                           qint64 samples);

// What SaveMemory2File writes: blocks firstBlock .. blockCount - 1 (never beyond 100000)
// with their readings, then the trailer; the first line only when firstBlock is 0. Shows
// "<<<<<>>>>>" for a block whose values add up to 0 and "Invalid Dimension" for each block
// when the reading list is not allocated. A non-numeric reading takes the value of the one
// before it, in memory too; one at index 0 is left out. A reading index outside the list
// raises run-time error 9 before anything is written.
QByteArray memoryFileText(Platform& platform, Int32 firstBlock, Int32 blockCount, SampleData& data,
                          const TrailerInfo& trailer);

// What Save_RT_Weight_to_File writes: one block of readings 0 .. rtReadingCount; nothing
// when the count is 0. The block line takes the first four values of block record 1.
std::optional<QByteArray> rtWeightFileText(SampleData& data, const TrailerInfo& trailer);

// The two writers. With firstBlock 0 the file is replaced as a whole; otherwise the blocks
// and the trailer are appended. A file error shows the system's message and ends the
// program; the file on disk is then left as it was before. A file holding readings that is
// replaced is first kept beside it (kept_file.h); `kept` receives what became of it.
void SaveMemory2File(Platform& platform, const QString& path, Int32 firstBlock, Int32 blockCount,
                     SampleData& data, const TrailerInfo& trailer, KeptFile* kept = nullptr);
void Save_RT_Weight_to_File(Platform& platform, const QString& path, SampleData& data,
                            const TrailerInfo& trailer, KeptFile* kept = nullptr);

} // namespace torv
