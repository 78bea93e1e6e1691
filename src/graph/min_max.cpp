#include "min_max.h"

#include "base/platform.h"
#include "base/runtime_error.h"
#include "form/picture.h"

namespace torv {

namespace {
Int32 tick(Platform& platform) {
    return static_cast<Int32>(platform.GetTickCount());
}
} // namespace

void GetNewMinMax(Platform& platform, const ReadingAt& value, MinMaxChannel& channel,
                  Int32& firstExtremumTick, const MinMaxSettings& settings, Int32 curIndex,
                  Int32 oldMinIndex, Int32 oldMaxIndex, float procent, Int32& newMinIndex,
                  Int32& newMaxIndex, bool& result) {
    try {
        if (sub32(tick(platform), firstExtremumTick) > settings.ignoreTime)
            channel.newExtremumCounter = 0;

        const Int32 cur = value(curIndex);
        Int32 max = value(oldMaxIndex);
        Int32 min = value(oldMinIndex);
        result = false;
        bool taken = false;
        const Int32 range = CLng(double(max) - double(min));
        // A new extremum counts when the new spread is more than the old one times the factor.
        auto beyondSpread = [&] {
            return !(procent * static_cast<float>(range) >= static_cast<float>(sub32(max, min)));
        };

        if (cur <= max) {
            if (cur < min) {
                min = cur;
                if (channel.absMinimum > cur) {
                    channel.absMinimum = cur;
                    channel.absMinimumIndex = curIndex;
                }
                if (beyondSpread()) {
                    taken = true;
                    newMinIndex = curIndex;
                }
            }
        } else {
            max = cur;
            if (cur > channel.absMaximum) {
                channel.absMaximum = cur;
                channel.absMaximumIndex = curIndex;
            }
            if (beyondSpread()) {
                taken = true;
                newMaxIndex = curIndex;
            }
        }

        if (taken) {
            result = false;
            const Int32 t = tick(platform);
            inc16(channel.newExtremumCounter);
            if (channel.newExtremumCounter == 1) firstExtremumTick = t;
            if (sub32(t, firstExtremumTick) >= settings.ignoreTime) {
                result = false;
                channel.newExtremumCounter = 0;
            } else if (channel.newExtremumCounter >= settings.numberToIgnore) {
                result = true;
                channel.newExtremumCounter = 0;
            }
        }
    } catch (const RuntimeError&) {
        // Trapped here: no message, the outputs keep what was written.
    }
}

std::optional<PickedExtremum> GetXYofMinMaxPoint(Platform& platform, const Picture& box,
                                                 const ReadingAt& value, Int32 readingCount,
                                                 Int32 bandRadius, double xStep, Int32 pctX,
                                                 Int32 pctY, Int32 leftIndex) {
    const Int32 half = CLng(box.height / 2.0);
    if (pctY > 2 * static_cast<std::int64_t>(half) || pctY < 0) {
        platform.messageBox(QStringLiteral("Y<0 :GetXYofMinMaxPoint "));
        return std::nullopt;
    }
    PickedExtremum out;
    Int32 start = CLng(divide(double(box.left) + pctX, xStep) + leftIndex - bandRadius);
    Int32 end = add32(start, mul32(2, bandRadius));
    if (end > readingCount) {
        start = sub32(readingCount, mul32(2, bandRadius));
        end = sub32(readingCount, 1);
    }
    if (start < 0) start = 0;

    Int32 best = value(start);
    Int32 bestIndex = start;
    if (pctY >= half) {
        out.minOrMax = 1;
        for (Int32 i = start + 1; i <= end; ++i) {
            const double v = value(i);
            if (v < best) best = static_cast<Int32>(v), bestIndex = i;
        }
    } else {
        out.minOrMax = 2;
        for (Int32 i = start + 1; i <= end; ++i) {
            const double v = value(i);
            if (v >= best) best = static_cast<Int32>(v), bestIndex = i;
        }
    }
    out.value = best;
    out.index = bestIndex;
    if (out.minOrMax != 1 && out.minOrMax != 2) {
        platform.messageBox(QStringLiteral(" Error: Bad Extremum in GetXYMinMaxPoint! "));
        out.minOrMax = 1;
    }
    return out;
}

} // namespace torv
