#include "sample_file.h"

#include "base/numeric.h"
#include "base/platform.h"
#include "base/runtime_error.h"
#include "fields.h"

#include <algorithm>

namespace torv {

namespace {

const QLatin1String kEnd(kLineEnd);

QString firstLine() {
    return QStringLiteral("Timer2Interval, ") + printNumber(300) + kEnd;
}

QString blockLine(Int32 v1, Int32 v2, Int32 v3, Int32 v4, Int32 v5) {
    return QStringLiteral("-999999 ") + printNumber(v1) + printNumber(v2) + printNumber(v3) +
           printNumber(v4) + printNumber(v5) + kEnd;
}

void appendReadingLine(QString& out, qint64 index, const QString& reading) {
    out += printNumber(index);
    out += QLatin1Char(' ');
    // A reading is one line: line breaks the card sent around a number become blanks.
    const qsizetype at = out.size();
    out += reading;
    for (qsizetype i = at; i < out.size(); ++i)
        if (out[i] == QLatin1Char('\n') || out[i] == QLatin1Char('\r')) out[i] = QLatin1Char(' ');
    out += kEnd;
}

QString& readingAt(SampleData& data, qint64 k) {
    if (k < 0 || k >= static_cast<qint64>(data.readings.size())) raiseSubscript();
    return data.readings[static_cast<std::size_t>(k)];
}

const BlockRecord& blockAt(const SampleData& data, qint64 i) {
    if (i < 0 || i >= static_cast<qint64>(data.blocks.size())) raiseSubscript();
    return data.blocks[static_cast<std::size_t>(i)];
}

// The smaller of the integration and 12; an integration that is not a number stands as is.
QString bufferSizeText(const QString& integration) {
    double v = 0;
    if (!numericValue(integration, QLatin1Char('.'), v)) return integration;
    return v > 12 ? QStringLiteral("12") : integration.trimmed();
}

// The file could not be written and the program ends: the readings go to a recovery file
// first, named in the message, and the program ends with a failure status.
void reportAndEnd(Platform& platform, const QString& path, const QByteArray& text,
                  const RuntimeError& e) {
    const QString saved = writeRecoveryFile(path, text);
    QString message = e.message();
    if (!saved.isEmpty())
        message += QStringLiteral("\nThe readings were saved to ") + saved;
    else
        message += QStringLiteral("\nThe readings could not be saved anywhere.");
    platform.messageBox(message);
    platform.endProgramWithError();
}

} // namespace

QByteArray dataTrailerText(const QString& startDateTime, const TrailerInfo& trailer,
                           qint64 samples) {
    QString out;
    out += QStringLiteral("-1, -1") + kEnd;
    out += QStringLiteral("StartDateTime:") + startDateTime + kEnd;
    out += QStringLiteral("TORV-NET  ") + kEnd;
    out +=
        QStringLiteral("Sampling Rate: ") + trailer.integration + QStringLiteral(" (ms.)") + kEnd;
    out += QStringLiteral("Scanned:") + kEnd;
    out += QStringLiteral("InegrationBufferSize: ") + bufferSizeText(trailer.integration) + kEnd;
    out += QStringLiteral("Gain Bias Resol. Units LoLimit HiLimit") + kEnd;
    // Fixed template values: the viewer expects these columns, they are not measured.
    out += QStringLiteral("  36   49 0.0002 ") + trailer.unitsCaption +
           QStringLiteral("     0.234   4.321") + kEnd;
    out += QStringLiteral("Average Minimum Maximum Delta1 Delta2 Cnt1 Cnt2") + kEnd;
    out += QStringLiteral(" 1107  801  1398 -306  291  1  1") + kEnd;
    out += QStringLiteral("Samples: ") + QString::number(samples) + kEnd;
    out += QStringLiteral("Value1_A2D:, 1 ") + kEnd;
    out += QStringLiteral("Reading1_ms2:,") +
           (trailer.xMode == 1 ? QStringLiteral("1") : QStringLiteral("2")) + kEnd;
    return out.toUtf8();
}

QByteArray memoryFileText(Platform& platform, Int32 firstBlock, Int32 blockCount, SampleData& data,
                          const TrailerInfo& trailer) {
    if (firstBlock < 0) raiseSubscript();
    QString out;
    if (firstBlock == 0) out += firstLine();
    qint64 lastWritten = -1;
    const qint64 lastBlock = std::min<qint64>(qint64(blockCount) - 1, kLastBlockIndex);
    for (qint64 i = firstBlock; i <= lastBlock; ++i) {
        const BlockRecord& block = blockAt(data, i);
        const Int32* v = block.value;
        out += blockLine(v[0], v[1], v[2], v[3], v[4]);
        if (qint64(v[0]) + v[1] + v[2] + v[3] + v[4] == 0)
            platform.messageBox(QStringLiteral("<<<<<>>>>>"));
        const qint64 from = i == 0 ? 0 : qint64(blockAt(data, i - 1).value[4]) + 1;
        const qint64 to = v[4];
        if (!data.readingsAllocated) {
            platform.messageBox(QStringLiteral("Invalid Dimension"));
            continue;
        }
        for (qint64 k = from; k <= to; ++k) {
            lastWritten = k;
            QString& reading = readingAt(data, k);
            if (!isReadingNumber(reading)) {
                if (k == 0) continue; // nothing to repeat yet
                reading = readingAt(data, k - 1);
            }
            appendReadingLine(out, k, reading);
        }
    }
    return out.toUtf8() + dataTrailerText(data.startDateTime, trailer, lastWritten);
}

std::optional<QByteArray> rtWeightFileText(SampleData& data, const TrailerInfo& trailer) {
    const Int32 count = data.rtReadingCount;
    if (count <= 0) return std::nullopt;
    if (!data.readingsAllocated) raiseSubscript();
    readingAt(data, count); // the whole range exists before anything changes
    const BlockRecord& first = blockAt(data, 1);
    QString out = firstLine();
    out += blockLine(first.value[0], first.value[1], first.value[2], first.value[3], count);
    for (qint64 k = 0; k <= count; ++k) {
        QString& reading = readingAt(data, k);
        if (k > 0 && !isReadingNumber(reading)) reading = readingAt(data, k - 1);
        appendReadingLine(out, k, reading);
    }
    return out.toUtf8() + dataTrailerText(data.startDateTime, trailer, count);
}

void SaveMemory2File(Platform& platform, const QString& path, Int32 firstBlock, Int32 blockCount,
                     SampleData& data, const TrailerInfo& trailer, KeptFile* kept) {
    const QByteArray text = memoryFileText(platform, firstBlock, blockCount, data, trailer);
    try {
        if (firstBlock == 0) {
            const KeptFile k = keepPreviousDataFile(path, text);
            if (kept) *kept = k;
            writeTextFile(path, text);
        } else {
            appendTextFile(path, text);
        }
    } catch (const RuntimeError& e) {
        reportAndEnd(platform, path, text, e);
    }
}

void Save_RT_Weight_to_File(Platform& platform, const QString& path, SampleData& data,
                            const TrailerInfo& trailer, KeptFile* kept) {
    const std::optional<QByteArray> text = rtWeightFileText(data, trailer);
    if (!text) return;
    const KeptFile k = keepPreviousDataFile(path, *text);
    if (kept) *kept = k;
    try {
        writeTextFile(path, *text);
    } catch (const RuntimeError& e) {
        reportAndEnd(platform, path, *text, e);
    }
}

} // namespace torv
