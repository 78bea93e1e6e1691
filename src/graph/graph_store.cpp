#include "graph_store.h"

#include "base/numeric.h"
#include "base/platform.h"
#include "base/runtime_error.h"
#include "form/control.h"

#include <algorithm>

namespace torv {

namespace {

// The element `i` of a store; outside it, run-time error 9 as for any array.
template <typename T> T& at(std::vector<T>& store, Int32 i) {
    if (i < 0 || static_cast<std::size_t>(i) >= store.size()) raiseSubscript();
    return store[static_cast<std::size_t>(i)];
}

const QString kGetRTStatus = QStringLiteral("GetRTStatus");

} // namespace

GraphStore::GraphStore(Platform& platform)
    : p_(platform) {
    pointColumnText.fill(QStringLiteral("-1"));
    for (int ch = 0; ch < kGraphChannels; ++ch) {
        upperLimit[ch] = QString::number(1 << (16 - ch));
        lowerLimit[ch] = QStringLiteral("0");
    }
    absoluteMinimum.fill(65536);
}

bool GraphStore::AddReading() {
    constexpr int ch = 0; // the card feeds channel 0
    readingText = panel ? panel->currentReadingText() : QString();
    if (!isNumeric(readingText)) return false;
    if (converterType != 1) {
        p_.messageBox(QStringLiteral("Invalid TORV_A2D"));
        return false;
    }
    const Int32 index = readingCount[ch];
    at(readings[ch], index) = CLng(readingText);
    if (!intervalOpen[ch]) {
        intervalMinText[ch] = intervalMaxText[ch] = readingText;
        intervalMinIndex[ch] = intervalMaxIndex[ch] = index;
        intervalOpen[ch] = true;
    }
    at(readingTimes[ch], index) = static_cast<Int32>(p_.GetTickCount() - startTick);

    // The extremes of the interval are found by comparing texts: "9" is above "10".
    if (!(intervalMinText[ch] > readingText)) {
        if (intervalMaxText[ch] < readingText) {
            intervalMaxText[ch] = readingText;
            intervalMaxIndex[ch] = index;
        }
    } else {
        intervalMinText[ch] = readingText;
        intervalMinIndex[ch] = index;
    }

    readingCount[ch] = add32(readingCount[ch], 1);
    readingText = QStringLiteral("0");
    if (readingCount[ch] < StoreFullCount - 2) storeFullReported_[ch] = false; // emptied again
    if (readingCount[ch] > StoreFullCount) {
        readingCount[ch] -= 2;
        // Once full, every second reading overflows the store again and overwrites the last two
        // places. At the polling rate a box each time would leave the operator no moment to
        // reach Stop, so the message comes once per fill.
        if (!storeFullReported_[ch]) {
            storeFullReported_[ch] = true;
            p_.messageBox(QStringLiteral("All memory is already used.") + QLatin1Char('\r') +
                          QStringLiteral("There is a possibility to save the all data in file."));
        }
    }
    return true;
}

void GraphStore::GraphSamplingTick() {
    lastTick = p_.GetTickCount();
    for (int ch = 0; ch <= 0; ++ch) {
        if (channelActive[ch]) {
            if (!AddReading()) return;
            const Int32 point = pointCount[ch];
            at(points[ch], point) = intervalMinText[ch];
            at(pointTimes[ch], point) = at(readingTimes[ch], intervalMinIndex[ch]);
            GraphView* view = graphWindows[ch];
            if (view) view->DrawGraph_TORV();
            if (drawAgain) {
                const Int32 before = pointCount[ch];
                if (view) view->DrawGraph_TORV();
                drawAgain = false;
                // Drawing the same point again must not move on: if it did, the store no
                // longer matches the windows.
                if (pointCount[ch] != before) p_.endProgram();
            }
            pointCount[ch] = add32(pointCount[ch], 1);
            // A full point store keeps going as the reading store does: the newest points
            // overwrite its last two places.
            if (static_cast<std::size_t>(pointCount[ch]) >= points[ch].size())
                pointCount[ch] = std::max<Int32>(0, pointCount[ch] - 2);
            intervalOpen[ch] = false;
        }
        if (closeRequest[ch]) {
            if (graphWindows[ch]) graphWindows[ch]->Form_MyUnload();
            closeRequest[ch] = false;
        }
    }
}

void GraphStore::InitGraphChannels() {
    for (int ch = 0; ch < kGraphChannels; ++ch) {
        readingCount[ch] = 0;
        pointCount[ch] = 0;
        leftIndex[ch] = 0;
        newExtremumCounter[ch] = 0;
        absoluteMinimum[ch] = 65536; // the full scale of the 16-bit converter
        selectedIndex[ch] = 65536;   // no point selected
        referenceValue[ch] = 65536;
        upperLimit[ch] = QString::number(1 << (16 - ch));
        lowerLimit[ch] = QStringLiteral("0");
    }
    viewCounters.fill(0);
    if (windows) {
        screenWidth = windows->screenWidth();
        screenHeight = windows->screenHeight();
    }
}

void GraphStore::sizeStores(int activeChannels) {
    if (activeChannels < 1 || activeChannels > kGraphChannels) raiseSubscript();
    // Entries 0 .. capacity, as the stores were always dimensioned.
    const auto readingSize = static_cast<std::size_t>(readingCapacity[activeChannels - 1]) + 1;
    const auto pointSize = static_cast<std::size_t>(pointCapacity[activeChannels - 1]) + 1;
    for (int ch = 0; ch < kGraphChannels; ++ch) {
        readings[ch].resize(readingSize);
        readingTimes[ch].resize(readingSize);
        points[ch].resize(pointSize);
        pointTimes[ch].resize(pointSize);
    }
}

void GraphStore::GraphClose(int channel) {
    if (channel < 0 || channel >= kGraphChannels) raiseSubscript();
    auto& values = readings[channel];
    const auto last = std::min<std::size_t>(
        values.size(), static_cast<std::size_t>(std::max(0, readingCount[channel])) + 1);
    std::fill(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(last), 0);
    readingCount[channel] = 0;
    pointCount[channel] = 0;
    leftIndex[channel] = 0;
    rightIndex[channel] = 0;
    newExtremumCounter[channel] = 0;
    intervalOpen[channel] = false;
    channelActive[channel] = false;
    graphWindows[channel] = nullptr;
    if (openWindowCount > 0) --openWindowCount;
    if (openWindowCount == 0) realTimeGraphRuns = false;
}

void GraphStore::restartClock() {
    startTick = p_.GetTickCount();
}

void GraphStore::ShowRTGraph(int onTop) {
    for (GraphView* view : graphWindows)
        if (view) view->SetTopMost(onTop != 0);
}

void GraphStore::restorePollingButton() {
    if (!panel) return;
    panel->setPollingButtonEnabled(panel->currentFunctionName() != kGetRTStatus ||
                                   panel->pollingOn());
}

void ScanRangeMinMax(const std::vector<Int32>& values, Int32 count, Int32 first, Int32 last,
                     Int32& maxValue, Int32& maxIndex, Int32& minValue, Int32& minIndex) {
    if (count <= 0) return;
    auto value = [&values](Int32 i) {
        if (i < 0 || static_cast<std::size_t>(i) >= values.size()) raiseSubscript();
        return values[static_cast<std::size_t>(i)];
    };
    maxValue = minValue = value(first);
    maxIndex = minIndex = first;
    for (Int32 i = first; i <= last; ++i) {
        const Int32 v = value(i);
        if (v >= maxValue) {
            maxValue = v;
            maxIndex = i;
        } else if (v <= minValue) {
            minValue = v;
            minIndex = i;
        }
    }
}

void ScanRangeMinMax(const GraphStore& store, int channel, Int32 first, Int32 last, Int32& maxValue,
                     Int32& maxIndex, Int32& minValue, Int32& minIndex) {
    if (channel < 0 || channel >= kGraphChannels) raiseSubscript();
    ScanRangeMinMax(store.readings[channel], store.readingCount[channel], first, last, maxValue,
                    maxIndex, minValue, minIndex);
}

bool IsDigitsOnly(const QString& text) {
    const QString t = text.trimmed();
    if (!isNumeric(t)) return false;
    for (QChar c : t)
        if (!isNumeric(QString(c))) return false;
    return true;
}

void CheckTextLimits(Control& textBox, Int32 low, Int32 high, color::Color normalColor,
                     color::Color badColor, const QString& tip) {
    textBox.backColor = normalColor;
    if (IsDigitsOnly(textBox.caption)) {
        const double v = Val(textBox.caption);
        if (v >= low && v <= high) {
            textBox.toolTip = tip;
        } else {
            textBox.toolTip = QStringLiteral("Data out of limits: [%1...%2]").arg(low).arg(high);
            textBox.backColor = badColor;
        }
    } else {
        textBox.toolTip = QStringLiteral("Not number!");
        textBox.backColor = badColor;
    }
}

} // namespace torv
