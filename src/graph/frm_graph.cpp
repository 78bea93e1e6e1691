#include "frm_graph.h"

#include "base/format.h"
#include "base/numeric.h"
#include "base/platform.h"
#include "graph_scales.h"
#include "graph_store.h"

#include <algorithm>
#include <random>

namespace torv {

namespace {
constexpr double PopupTop = 100;
constexpr double TimePopupShift = 300; // the time pop-up lies this much left of the value one
constexpr double PopupGap = 45;
constexpr double TwipsPerPixel = 15;
const QString GainBiasCaption = QStringLiteral("Gain Bias Resol. Units LoLimit HiLimit ");

// The run-time's Rnd: the next number from 0 up to 1.
float Rnd() {
    static std::minstd_rand generator(327680);
    return std::uniform_real_distribution<float>(0.0f, 1.0f)(generator);
}
} // namespace

GraphAuxiliaryForm& graphAuxiliaryForm() {
    static GraphAuxiliaryForm form;
    return form;
}

FrmGraph::FrmGraph(GraphStore& store, int channel)
    : store_(store) {
    f.lblChanNumber.caption = QString::number(channel);
    f.windowWidth = WindowWidth;
    f.windowHeight = NormalHeight;
}

FrmGraph::~FrmGraph() {
    const int ch = f.lblChanNumber.caption.toInt();
    if (ch >= 0 && ch < kGraphChannels && store_.graphWindows[ch] == this)
        store_.graphWindows[ch] = nullptr;
}

Platform& FrmGraph::platform() {
    return store_.platform();
}

std::uint8_t FrmGraph::channel() const {
    return CByte(f.lblChanNumber.caption);
}

double FrmGraph::lowLimit() const {
    return Val(store_.lowerLimit[channel()]);
}

double FrmGraph::highLimit() const {
    return Val(store_.upperLimit[channel()]);
}

Int16 FrmGraph::valueDivisions() const {
    return store_.valueScaleDivisions;
}

double FrmGraph::visibleX(Int32 index) const {
    return double(index - store_.leftIndex[channel()]) * xStep_;
}

// ---- Opening and closing ----------------------------------------------------------------------

void FrmGraph::Form_Load() {
    f.topMost = true;
    xMode_ = 1;
    firstDivision_ = 0;
    f.pctGraph.drawWidth = 2;
    f.pctGraph2.drawWidth = 2;
    for (Picture* p : {&f.pctA2D, &f.pctTime}) {
        p->fontSize = 9;
        p->height = static_cast<int>(p->TextHeight()) + 60;
    }
    store_.markerOffset = f.ShpPoint.width / 2; // the marker is centred on the point
    store_.normalHeight = NormalHeight;
    store_.enlargedHeight = EnlargedHeight;
    f.windowHeight = store_.normalHeight;
    applySetUp();
}

FrmGraph::SetUp FrmGraph::currentSetUp() const {
    const ChannelCalibration& cal = store_.calibration[channel()];
    return {store_.pointsPerScreen,
            store_.samplingMs,
            store_.timeDivisions,
            store_.valueType,
            store_.valueScaleDivisions,
            store_.percent,
            cal.state,
            cal.actualLow,
            cal.actualHigh};
}

void FrmGraph::applySetUp() {
    const std::uint8_t ch = channel();
    setUp_ = currentSetUp();
    valueType_ = store_.valueType == 1 ? 1 : 2;
    f.OptValueType[valueType_].value = 1;
    f.OptValueType[valueType_ == 1 ? 2 : 1].value = 0;
    timeDivisions_ = store_.timeDivisions;
    f.TxtXsteps.caption = QString::number(store_.timeDivisions);
    f.txtYsteps.caption = QString::number(store_.valueScaleDivisions);
    f.txtTimerIntrvl.caption = QString::number(store_.samplingMs);

    // The limits of a calibrated channel are its actual reading limits.
    const ChannelCalibration& cal = store_.calibration[ch];
    if (cal.state == ChannelCalibration::Calibrated && cal.actualHigh > cal.actualLow) {
        store_.lowerLimit[ch] = numberText(cal.actualLow);
        store_.upperLimit[ch] = numberText(cal.actualHigh);
    }

    // A screen of readings fills the visible part of the plot.
    store_.xStep =
        std::max<Int32>(1, CInt(f.Frame1.width / std::max<Int32>(1, store_.pointsPerScreen)));
    xStep_ = store_.xStep;
    range_ = {};
    MinMaxUpDate(ch);
    newPicture(store_.leftIndex[ch]);
    drawTimeScale();
    changed();
}

void FrmGraph::SetTopMost(bool onTop) {
    f.topMost = onTop;
    changed();
}

void FrmGraph::Form_MyUnload() {
    const std::uint8_t ch = channel();
    if (store_.channelActive[ch]) GraphClose(ch);
    if (store_.setUpForm) store_.setUpForm->enableCommands(store_.openWindowCount == 0);
    if (store_.graphWindows[ch] == this) store_.graphWindows[ch] = nullptr;
    store_.channelActive[ch] = false;
    if (onUnloadWindow) onUnloadWindow();
}

void FrmGraph::GraphClose(std::uint8_t byt_ch) {
    if (byt_ch >= kGraphChannels) raiseSubscript();
    auto& values = store_.readings[byt_ch];
    const auto last = std::min<std::size_t>(
        values.size(),
        static_cast<std::size_t>(std::max<Int32>(0, store_.readingCount[byt_ch])) + 1);
    std::fill(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(last), 0);
    store_.readingCount[byt_ch] = 0;
    store_.leftIndex[byt_ch] = 0;
    store_.rightIndex[byt_ch] = 0;
    store_.pointCount[byt_ch] = 0;
    store_.secondCounter[byt_ch] = 0;
    store_.channelActive[byt_ch] = false;
    if (store_.openWindowCount > 0) --store_.openWindowCount;
}

void FrmGraph::Form_Unload() {
    if (formUnloaded_) return;
    formUnloaded_ = true;
    const std::uint8_t ch = channel();
    // The window is gone: its channel stops and the store no longer calls it.
    if (store_.channelActive[ch] && store_.graphWindows[ch] == this) store_.GraphClose(ch);
    if (store_.graphWindows[ch] == this) store_.graphWindows[ch] = nullptr;
    if (store_.setUpForm) store_.setUpForm->unload();
    store_.channelActive[0] = false;
    store_.restorePollingButton();
}

// ---- Drawing one reading ----------------------------------------------------------------------

void FrmGraph::DrawGraph_TORV() {
    // A fault while drawing ends this reading's drawing only: the polling that feeds the graph
    // goes on. It is reported once, not for every reading that follows.
    try {
        const std::uint8_t ch = channel();
        const Int32 count = store_.readingCount[ch];
        if (count <= 0) return;
        // "Show Graph" fills the set-up values after it has opened the windows, and again on a
        // restart: the window takes them with the next reading.
        if (!(currentSetUp() == setUp_)) applySetUp();
        if (range_.span() == 0) {
            drawValueScale(
                valueScaleRange(valueDivisions(), lowLimit(), highLimit(), store_.percent));
            drawTimeScale();
        }
        if (store_.leftIndex[ch] > store_.selectedIndex[ch]) hideSelection();
        xStep_ = store_.xStep;

        const Int32 index = count - 1;
        const double value = static_cast<float>(readingAt(store_, ch, index));
        if (count > 1) {
            bool taken = false;
            GetNewMinMax(store_, ch, index, store_.currentMinIndex[ch], store_.currentMaxIndex[ch],
                         store_.sngProcent, store_.currentMinIndex[ch], store_.currentMaxIndex[ch],
                         taken);
            if (taken) {
                ++takenExtrema_;
                f.txtMinMaxCouner.caption = QString::number(takenExtrema_);
            }
        }
        showReadingBoxes(ch, index, value);
        MinMaxUpDate(ch);

        const Int32 left = store_.leftIndex[ch];
        if (redraw_ || index < origin_) {
            newPicture(left);
        } else if (value > range_.maximum || value < range_.minimum) {
            // The reading left the scale: widen it to the visible readings and the limits.
            Int32 maxValue = 0, maxIndex = 0, minValue = 0, minIndex = 0;
            ScanRangeMinMax(store_, ch, left, index, maxValue, maxIndex, minValue, minIndex);
            range_ = valueScaleRange(valueDivisions(), std::min(lowLimit(), double(minValue)),
                                     std::max(highLimit(), double(maxValue)), store_.percent);
            newPicture(left);
        } else if (double(index - origin_) * xStep_ > f.pctGraph.width) {
            newPicture(left); // the plot reached the end of its picture
        } else {
            plotReading(index);
        }
        scrollToLeftIndex();
    } catch (const RuntimeError& e) {
        if (!drawFaultReported_) {
            drawFaultReported_ = true;
            platform().messageBox(e.message());
        }
    }
    changed();
}

void FrmGraph::showReadingBoxes(std::uint8_t ch, Int32 index, double value) {
    f.txtCur.caption =
        valueType_ != 2 ? Format(value, QStringLiteral("0.0000")) : numberText(value);
    f.txtCurIndex.caption = QString::number(index + 1);
    f.txtTime.caption = QString::number(readingTimeAt(store_, ch, index));
    if (index == 0) return;
    const auto timeAt = [&](Int32 i) { return QString::number(readingTimeAt(store_, ch, i)); };
    // Until a reading goes below the running minimum the absolute minimum is still its reset
    // value, 65536, shown as it is.
    f.TxtMaxReading.caption = QString::number(store_.absoluteMaximum[ch]);
    f.TxtMinReading.caption = QString::number(store_.absoluteMinimum[ch]);
    f.TxtMaxTime.caption = timeAt(store_.absoluteMaximumIndex[ch]);
    f.TxtMinTime.caption = timeAt(store_.absoluteMinimumIndex[ch]);
    f.txtMaxIndex.caption = QString::number(store_.currentMaxIndex[ch]);
    f.txtMinIndex.caption = QString::number(store_.currentMinIndex[ch]);
    f.txtMax.caption = QString::number(readingAt(store_, ch, store_.currentMaxIndex[ch]));
    f.TxtMin.caption = QString::number(readingAt(store_, ch, store_.currentMinIndex[ch]));
}

void FrmGraph::drawValueScale(const ValueRange& range) {
    range_ = range;
    ValueScaleLook look;
    look.valueType = valueType_;
    look.channelCaption = f.lblChanNumber.caption;
    look.gridColor = gridColor;
    const double low = lowLimit(), high = highLimit();
    // The back copy gets the same grid and limit lines as the plot. The channel caption at the
    // top of the scale is printed in the scale's fore colour as the last drawing left it: the
    // dark red of the value labels.
    for (Picture* plot : {&f.pctGraph2, &f.pctGraph})
        torv::drawValueScale(*plot, f.pctYscale, valueDivisions(), range, high, low, look);
    f.txtMinRange.caption = Format(range.minimum, QStringLiteral("0.0"));
    f.txtMaxRange.caption = Format(range.maximum, QStringLiteral("0.0"));
}

void FrmGraph::drawTimeScale() {
    TimeScaleInput in;
    in.divisions = timeDivisions_;
    in.samplingMs = store_.samplingMs;
    in.backWidth = f.pctGraph2.width;
    in.xStep = xStep_;
    in.xMode = xMode_;
    in.firstDivision = firstDivision_;
    secondsPerDivision_ = torv::drawTimeScale(f.pctXscale, in, scaleColor);
    scaleColor = 128;
    store_.secondsPerDivision = CLng(secondsPerDivision_);
}

void FrmGraph::newPicture(Int32 from) {
    redraw_ = false;
    const std::uint8_t ch = channel();
    origin_ = std::max<Int32>(0, from);
    f.pctGraph.Cls();
    f.pctGraph2.Cls();
    if (range_.span() == 0)
        range_ = valueScaleRange(valueDivisions(), lowLimit(), highLimit(), store_.percent);
    drawValueScale(range_);
    for (Int32 i = origin_; i < store_.readingCount[ch]; ++i)
        plotReading(i);
    scrollToLeftIndex();
    if (store_.selectionFlag[ch] && f.ShpPoint.visible) showSelection();
}

void FrmGraph::plotReading(Int32 index) {
    const std::uint8_t ch = channel();
    const double x = double(index - origin_) * xStep_;
    const double y = plotY(readingAt(store_, ch, index), range_, f.pctGraph.height);
    if (index == origin_) {
        f.pctGraph.PSet(x, y, plotColor);
        f.pctGraph2.PSet(x, y, plotColor);
        return;
    }
    const double x0 = x - xStep_;
    const double y0 = plotY(readingAt(store_, ch, index - 1), range_, f.pctGraph.height);
    f.pctGraph.Line(x0, y0, x, y, plotColor);
    f.pctGraph2.Line(x0, y0, x, y, plotColor);
}

void FrmGraph::scrollToLeftIndex() {
    const int left = -static_cast<int>((store_.leftIndex[channel()] - origin_) * xStep_);
    if (left == f.pctGraph.left && !f.txtLeftpct.caption.isEmpty()) return;
    f.pctGraph.left = left;
    f.txtLeftpct.caption = QString::number(left);
}

// ---- Scales -----------------------------------------------------------------------------------

void FrmGraph::OptValueType_Click(int index) {
    valueType_ = index;
    f.OptValueType[index].value = 1;
    f.OptValueType[index == 1 ? 2 : 1].value = 0;
    const std::uint8_t ch = channel();
    range_ = valueScaleRange(valueDivisions(), lowLimit(), highLimit(), store_.percent);
    newPicture(origin_);
    if (index == 1)
        f.TxtMaxReading.caption =
            Format(double(store_.absoluteMaximum[ch]), QStringLiteral("0.00000"));
    if (store_.selectionFlag[ch]) {
        f.pctA2D.Cls();
        f.pctA2D.Print(QStringLiteral("Kalmor"));
        showSelection();
    }
    if (store_.setUpForm) store_.setUpForm->unload();
}

void FrmGraph::cbDrawYscale_Click() {
    range_ = buttonScaleRange(lowLimit(), highLimit(), range_.minimum);
    newPicture(origin_);
}

void FrmGraph::cbDrawXscale_Click() {
    const double n = Val(f.TxtXsteps.caption);
    timeDivisions_ = n >= 0 && n <= 255 ? CInt(n) : 1;
    drawTimeScale();
}

void FrmGraph::txtYsteps_Change() {
    const QString text = f.txtYsteps.caption;
    if (!IsDigitsOnly(text)) return;
    const double n = Val(text);
    if (n >= 0 && n <= 100) store_.valueScaleDivisions = CInt(n);
}

// ---- Minimum and maximum ----------------------------------------------------------------------

void FrmGraph::MinMaxUpDate(std::uint8_t byt_ch) {
    if (byt_ch >= kGraphChannels) raiseSubscript();
    const Int32 count = store_.readingCount[byt_ch];
    f.txtRightIndex.caption = QString::number(count);
    const Int32 left = std::max<Int32>(0, count - store_.pointsPerScreen);
    f.txtLeftIndex.caption = QString::number(left);
    store_.leftIndex[byt_ch] = left;
    store_.rightIndex[byt_ch] = count;
}

void FrmGraph::pctGraph_MouseMove(double x, double y) {
    mouseX_ = CLng(x);
    mouseY_ = CLng(y);
}

void FrmGraph::pctGraph_MouseDown() {
    const std::uint8_t ch = channel();
    if (store_.readingCount[ch] < store_.bandRadius) return;
    const auto picked =
        GetXYofMinMaxPoint(store_, f.pctGraph, ch, mouseX_, mouseY_, store_.leftIndex[ch]);
    if (!picked) return;
    store_.selectionFlag[ch] = true;
    store_.selectedIndex[ch] = picked->index;
    selectedKind_ = picked->minOrMax;
    showSelection();
}

void FrmGraph::showSelection() {
    const std::uint8_t ch = channel();
    const Int32 sel = store_.selectedIndex[ch];
    const Int32 value = readingAt(store_, ch, sel);
    const Int32 offset = store_.markerOffset;
    f.ShpPoint.left = static_cast<int>(visibleX(sel) - f.pctGraph.left - offset);
    f.ShpPoint.top = plotY(value, range_, f.pctGraph.height) - offset;
    f.ShpPoint.visible = true;

    const QString name = selectedKind_ == 2 ? PopupMaxValue : PopupMinValue;
    const QString text = QString::number(value);
    const double maxWidth = f.Frame1.width;
    // The value pop-up goes above the selected point, but never so near the left edge that the
    // time pop-up, 300 further left, would start outside the plot.
    SetSelectedPoint(f.pctA2D, f.lblAutoSz, platform().textWidth(name + text) * TwipsPerPixel,
                     std::max(TimePopupShift, visibleX(sel)), PopupTop, name, text, maxWidth);
    const QString time = QString::number(readingTimeAt(store_, ch, sel));
    SetSelectedPoint(f.pctTime, f.lblAutoSz, platform().textWidth(PopupTime + time) * TwipsPerPixel,
                     f.pctA2D.left - TimePopupShift, PopupTop + f.pctA2D.height + PopupGap,
                     PopupTime, time, maxWidth);
}

void FrmGraph::hideSelection() {
    f.pctA2D.visible = false;
    f.pctTime.visible = false;
    f.ShpPoint.visible = false;
}

void FrmGraph::UpDnMinDif_Change(int value) {
    f.UpDnMinDif.value = value;
    f.txtMinDif.caption = QString::number(value + store_.minimumDifferenceBase[channel()]);
    redraw_ = true;
}

// ---- Navigation -------------------------------------------------------------------------------

void FrmGraph::cmdNewStart_Click() {
    for (int ch = 0; ch < kGraphChannels; ++ch) {
        if (!store_.channelActive[ch]) continue;
        store_.readingCount[ch] = 0;
        store_.secondCounter[ch] = 0;
        store_.leftIndex[ch] = 0;
        store_.referenceValue[ch] = -1000;
        store_.stateValue[ch] = 0;
        store_.absoluteMaximum[ch] = 0;
        store_.absoluteMinimum[ch] = 65536;
        store_.selectionFlag[ch] = false;
    }
    store_.restartClock();
    store_.viewCounters.fill(0);
    redraw_ = true;
    hideSelection();
    takenExtrema_ = 0;
    f.txtMinMaxCouner.caption = QStringLiteral("0");
    if (SetUpForm* setUp = store_.setUpForm) {
        setUp->unload();
        setUp->showGraph();
    }
}

void FrmGraph::cmdMore_Click() {
    const std::uint8_t ch = channel();
    if (!store_.channelActive[ch]) return;
    const bool enlarge = f.cmdMore.caption == QStringLiteral("More");
    if (enlarge) {
        f.cmdMore.caption = QStringLiteral("Less");
        f.windowHeight = store_.enlargedHeight;
        store_.rememberedTop[ch] = f.windowTop;
        const int limit = store_.screenHeight - store_.bottomMargin;
        if (store_.screenHeight > 0 && f.windowTop + f.windowHeight > limit)
            f.windowTop = limit - f.windowHeight;
        f.txtGainBiasResolCaptionGraph.caption = GainBiasCaption;
        const ChannelCalibration& cal = store_.calibration[ch];
        f.txtGainBiasResolDataGraph.caption = QStringLiteral("%1 %2 %3 %4 %5 %6")
                                                  .arg(QStringLiteral("1"), 4)
                                                  .arg(QStringLiteral("0"), 4)
                                                  .arg(QStringLiteral("1"), 6)
                                                  .arg(cal.units, 6)
                                                  .arg(store_.lowerLimit[ch], 7)
                                                  .arg(store_.upperLimit[ch], 7);
    } else {
        f.cmdMore.caption = QStringLiteral("More");
        f.windowHeight = store_.normalHeight;
        f.windowTop = store_.rememberedTop[ch];
    }
    for (Control* c :
         {&f.TxtMinReading, &f.TxtMinTime, &f.TxtMaxReading, &f.TxtMaxTime, &f.txtMinIndex,
          &f.txtMaxIndex, &f.txtGainBiasResolCaptionGraph, &f.txtGainBiasResolDataGraph, &f.lblMin,
          &f.lblMax, &f.lblMinIndex, &f.lblMaxIndex})
        c->visible = enlarge;
}

void FrmGraph::cmndRt_Click() {
    f.pctGraph.left += 50;
    GraphAuxiliaryForm& aux = graphAuxiliaryForm();
    aux.Text1.caption = QString::number(f.pctGraph.left);
    aux.shown = true;
}

void FrmGraph::cmndLt_Click() {
    GraphAuxiliaryForm& aux = graphAuxiliaryForm();
    aux.Text1.caption = QString::number(f.pctGraph.left);
    aux.shown = true;
}

void FrmGraph::cmndCpyG2toG_Click() {
    f.pctGraph.Cls();
    f.pctGraph.PaintPicture(f.pctGraph2, 0, 0);
}

void FrmGraph::pctGraph_KeyDown(int keyCode) {
    if (keyCode == 38) store_.testOffset = CLng(Rnd() * 32768.0);
    if (keyCode == 40) store_.testOffset = CLng(Rnd() * -32768.0);
}

void FrmGraph::ShowPartOrvelHistoryGraph(Picture& pic, int ch, Int32 hStart, Int32 hFinish) {
    store_.historyShown = true;
    pic.Cls();
    store_.xStep = std::max<Int32>(1, CInt(pic.width / std::max<Int32>(1, store_.pointsPerScreen)));
    xStep_ = store_.xStep;
    if (store_.leftIndex[ch] < 1) hStart = 0;
    if (hFinish - hStart == 0) {
        platform().messageBox(QStringLiteral("Division by zero... (Hfinish - Hstart)=0"));
        return;
    }
    Int32 maxValue = 0, maxIndex = 0, minValue = 0, minIndex = 0;
    ScanRangeMinMax(store_, ch, hStart, hFinish, maxValue, maxIndex, minValue, minIndex);
    // A flat stretch still needs a height to be drawn in.
    const ValueRange range =
        maxValue > minValue ? ValueRange{double(minValue), double(maxValue)}
                            : valueScaleRange(valueDivisions(), minValue, maxValue, store_.percent);
    for (Int32 i = hStart; i <= hFinish; ++i) {
        const double x = double(i - hStart) * xStep_;
        const double y = plotY(readingAt(store_, ch, i), range, pic.height);
        if (i == hStart)
            pic.PSet(x, y, plotColor);
        else
            pic.LineTo(x, y, plotColor);
    }
    if (store_.selectionFlag[ch]) showSelection();
}

} // namespace torv
