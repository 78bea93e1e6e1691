#include "min_max.h"

#include "base/platform.h"
#include "base/runtime_error.h"
#include "form/picture.h"
#include "graph_store.h"

namespace torv {

namespace {
Int32 tick(Platform& platform) {
    return static_cast<Int32>(platform.GetTickCount());
}
} // namespace

Int32 readingAt(const GraphStore& store, int channel, Int32 index) {
    if (channel < 0 || channel >= kGraphChannels) raiseSubscript();
    const auto& values = store.readings[channel];
    if (index < 0 || static_cast<std::size_t>(index) >= values.size()) raiseSubscript();
    return values[static_cast<std::size_t>(index)];
}

Int32 readingTimeAt(const GraphStore& store, int channel, Int32 index) {
    if (channel < 0 || channel >= kGraphChannels) raiseSubscript();
    const auto& times = store.readingTimes[channel];
    if (index < 0 || static_cast<std::size_t>(index) >= times.size()) raiseSubscript();
    return times[static_cast<std::size_t>(index)];
}

void GetNewMinMax(GraphStore& store, int channel, Int32 curIndex, Int32 oldMinIndex,
                  Int32 oldMaxIndex, float procent, Int32& newMinIndex, Int32& newMaxIndex,
                  bool& result) {
    Platform& platform = store.platform();
    try {
        if (channel < 0 || channel >= kGraphChannels) raiseSubscript();
        Int16& counter = store.newExtremumCounter[static_cast<std::size_t>(channel)];
        const auto firstTick = [&] { return static_cast<Int32>(store.firstExtremumTick); };
        if (sub32(tick(platform), firstTick()) > store.ignoreTime) counter = 0;

        const Int32 cur = readingAt(store, channel, curIndex);
        Int32 max = readingAt(store, channel, oldMaxIndex);
        Int32 min = readingAt(store, channel, oldMinIndex);
        result = false;
        bool taken = false;
        const Int32 range = CLng(double(max) - double(min));
        // A new extremum counts when the new spread is more than the old one times the factor.
        // The product of the single factor and the whole-number spread is taken in double, so
        // it is exact: 1.05 x 1000 stays below 1050.
        auto beyondSpread = [&] {
            return !(double(procent) * double(range) >= double(sub32(max, min)));
        };

        if (cur <= max) {
            if (cur < min) {
                min = cur;
                if (store.absoluteMinimum[channel] > cur) {
                    store.absoluteMinimum[channel] = cur;
                    store.absoluteMinimumIndex[channel] = curIndex;
                }
                if (beyondSpread()) {
                    taken = true;
                    newMinIndex = curIndex;
                }
            }
        } else {
            max = cur;
            if (cur > store.absoluteMaximum[channel]) {
                store.absoluteMaximum[channel] = cur;
                store.absoluteMaximumIndex[channel] = curIndex;
            }
            if (beyondSpread()) {
                taken = true;
                newMaxIndex = curIndex;
            }
        }

        if (taken) {
            result = false;
            const Int32 t = tick(platform);
            inc16(counter);
            if (counter == 1) store.firstExtremumTick = static_cast<std::uint32_t>(t);
            if (sub32(t, firstTick()) >= store.ignoreTime) {
                result = false;
                counter = 0;
            } else if (counter >= store.minMaxMiss) {
                result = true;
                counter = 0;
            }
        }
    } catch (const RuntimeError&) {
        // Trapped here: no message, the outputs keep what was written.
    }
}

std::optional<PickedExtremum> GetXYofMinMaxPoint(GraphStore& store, const Picture& box, int channel,
                                                 Int32 pctX, Int32 pctY, Int32 leftIndex) {
    const Int32 half = CLng(box.height / 2.0);
    if (pctY > 2 * static_cast<std::int64_t>(half) || pctY < 0) {
        store.platform().messageBox(QStringLiteral("Y<0 :GetXYofMinMaxPoint "));
        return std::nullopt;
    }
    if (channel < 0 || channel >= kGraphChannels) raiseSubscript();
    const Int32 band = store.bandRadius;
    const Int32 count = store.readingCount[static_cast<std::size_t>(channel)];
    PickedExtremum out;
    Int32 start = CLng(divide(double(box.left) + pctX, store.xStep) + leftIndex - band);
    Int32 end = add32(start, 2 * band);
    if (end > count) {
        start = sub32(count, 2 * band);
        end = sub32(count, 1);
    }
    if (start < 0) start = 0;

    Int32 best = readingAt(store, channel, start);
    Int32 bestIndex = start;
    if (pctY >= half) {
        out.minOrMax = 1;
        for (Int32 i = start + 1; i <= end; ++i) {
            const double v = readingAt(store, channel, i);
            if (v < best) best = static_cast<Int32>(v), bestIndex = i;
        }
    } else {
        out.minOrMax = 2;
        for (Int32 i = start + 1; i <= end; ++i) {
            const double v = readingAt(store, channel, i);
            if (v >= best) best = static_cast<Int32>(v), bestIndex = i;
        }
    }
    out.value = best;
    out.index = bestIndex;
    if (out.minOrMax != 1 && out.minOrMax != 2) {
        store.platform().messageBox(QStringLiteral(" Error: Bad Extremum in GetXYMinMaxPoint! "));
        out.minOrMax = 1;
    }
    return out;
}

} // namespace torv
