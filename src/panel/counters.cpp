#include "counters.h"

#include "base/format.h"
#include "base/ticks.h"

namespace torv {

namespace {
QString frequencyText(double perSecondNumerator, Int32 elapsedMs) {
    return Format(divide(perSecondNumerator, elapsedMs), QStringLiteral("0.000"));
}
} // namespace

void ShowCounters(Counters& c, std::uint32_t now, QString& lblTotalReadingsD,
                  QString& LbLFrequencyData, QString& LbLCurrentFreqD) {
    inc32(c.lngReadings);
    lblTotalReadingsD = QString::number(c.lngReadings);

    c.lngElapsed = ticksSince(c.lngPollStartTick, now);
    const Int32 readingsMs = mul32(c.lngReadings, 1000);
    // On a fast link the first answer can arrive within the millisecond of the start.
    if (c.lngElapsed != 0) LbLFrequencyData = frequencyText(readingsMs, c.lngElapsed);

    if (c.iBlockSize > 0) {
        if (c.lngReadings % c.iBlockSize == 0) {
            c.lngBlockPrevTick = c.lngBlockStartTick;
            c.lngBlockStartTick = static_cast<Int32>(now);
        }
        const Int16 blockMs = mul16(c.iBlockSize, 1000); // 16-bit: overflows above 32
        const Int32 span =
            ticksSince(c.lngBlockPrevTick, static_cast<std::uint32_t>(c.lngBlockStartTick));
        if (span != 0) LbLCurrentFreqD = frequencyText(blockMs, span);
    }
}

void ShowBlockCounters(Counters& c, int samplesInBlock, std::uint32_t now,
                       QString& lblTotalReadingsD, QString& LbLFrequencyData) {
    c.lngBlockReadings = add32(c.lngBlockReadings, samplesInBlock);
    lblTotalReadingsD = QString::number(c.lngBlockReadings);
    c.lngElapsed = ticksSince(c.lngSamplingStartTick, now);
    const Int32 samplesMs = mul32(c.lngBlockReadings, 1000);
    if (c.lngElapsed != 0) LbLFrequencyData = frequencyText(samplesMs, c.lngElapsed);
}

} // namespace torv
