#include "counters.h"

#include "base/format.h"

namespace torv {

namespace {
// Milliseconds from `from` to `to` on the wrapping 32-bit counter.
Int32 ticksBetween(std::uint32_t from, std::uint32_t to) {
    return static_cast<Int32>(to - from);
}

QString frequencyText(double perSecondNumerator, Int32 elapsedMs) {
    return Format(divide(perSecondNumerator, elapsedMs), QStringLiteral("0.000"));
}
} // namespace

void ShowCounters(Counters& c, std::uint32_t now, QString& lblTotalReadingsD,
                  QString& LbLFrequencyData, QString& LbLCurrentFreqD) {
    inc32(c.lngReadings);
    lblTotalReadingsD = QString::number(c.lngReadings);

    c.lngElapsed = ticksBetween(static_cast<std::uint32_t>(c.lngPollStartTick), now);
    const Int32 readingsMs = mul32(c.lngReadings, 1000);
    // On a fast link the first answer can arrive within the millisecond of the start.
    if (c.lngElapsed != 0) LbLFrequencyData = frequencyText(readingsMs, c.lngElapsed);

    if (c.iBlockSize > 0) {
        if (c.lngReadings % c.iBlockSize == 0) {
            c.lngBlockPrevTick = c.lngBlockStartTick;
            c.lngBlockStartTick = static_cast<Int32>(now);
        }
        const Int16 blockMs = mul16(c.iBlockSize, 1000); // 16-bit: overflows above 32
        const Int32 span = ticksBetween(static_cast<std::uint32_t>(c.lngBlockPrevTick),
                                        static_cast<std::uint32_t>(c.lngBlockStartTick));
        if (span != 0) LbLCurrentFreqD = frequencyText(blockMs, span);
    }
}

void ShowBlockCounters(Counters& c, int samplesInBlock, std::uint32_t now,
                       QString& lblTotalReadingsD, QString& LbLFrequencyData) {
    c.lngBlockReadings = add32(c.lngBlockReadings, samplesInBlock);
    lblTotalReadingsD = QString::number(c.lngBlockReadings);
    c.lngElapsed = ticksBetween(static_cast<std::uint32_t>(c.lngSamplingStartTick), now);
    const Int32 samplesMs = mul32(c.lngBlockReadings, 1000);
    if (c.lngElapsed != 0) LbLFrequencyData = frequencyText(samplesMs, c.lngElapsed);
}

} // namespace torv
