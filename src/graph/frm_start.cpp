#include "frm_start.h"

#include "base/numeric.h"
#include "base/platform.h"
#include "graph_store.h"

#include <algorithm>

namespace torv {

namespace {

// The whole-number value of a text box for a limit, 0 when it holds none.
Int32 limitValue(const QString& text) {
    double v = 0;
    try {
        v = Val(text);
    } catch (const RuntimeError&) {
        return 0;
    }
    return static_cast<Int32>(std::clamp(v, -2147483648.0, 2147483647.0));
}

} // namespace

// The values set when the form is first created.
FrmStart::FrmStart(Platform& platform, GraphStore& store)
    : p_(platform)
    , store_(store) {
    store_.readingCapacity = {50000, 33300, 25000, 20000};
    store_.pointCapacity = {50000, 33300, 25000, 20000};
    store_.channelSetLabels = {QStringLiteral("0"), QStringLiteral("0-1"), QStringLiteral("0-2"),
                               QStringLiteral("0-3")};
    store_.intervalOpen.fill(false);
    store_.formLimit = 300000;
    store_.formSettings = {2, 2};
    store_.setUpForm = this;
    // The two value-type options exclude each other.
    for (int i = 1; i <= 2; ++i) {
        f.OptValueType[i].onClick = [this, i] {
            if (f.OptValueType[i].value == 1) setValue(f.OptValueType[3 - i], 0);
        };
    }
}

void FrmStart::Form_Load() {
    // A form is loaded fresh: what an earlier load or "Show Graph" changed goes back to the
    // designed state.
    for (int ch = 0; ch <= 3; ++ch) {
        f.cckChan[ch].caption = QStringLiteral("Channel %1").arg(ch);
        f.cckChan[ch].enabled = true;
        f.cckChan[ch].width = 0;
    }
    f.OptValueType[1].enabled = f.OptValueType[2].enabled = true;
    loaded_ = true;
    f.cmdSaveCnfg.enabled = f.CmdShowGraph.enabled = true;
    GraphPanel* panel = store_.panel;
    f.txtMaster.caption = panel ? panel->cardAddress() : QString();
    f.txtModule.caption = QStringLiteral("Load-cell card");
    LoadStartFile(p_, startFile, store_.params);
    for (int ch = 0; ch <= 3; ++ch)
        store_.calibration[ch] = panel ? panel->calibration(ch) : ChannelCalibration{};
    InitStartContols();
    store_.InitGraphChannels();
    CheckInit();
    // Stored entries out of their ranges show at once, not only on "Show Graph".
    CheckInputData();
    if (onShow) onShow();
    changed();
    CmdShowGraph_Click();
    p_.processEvents();
}

void FrmStart::InitStartContols() {
    const GraphParameters& prm = store_.params;
    for (int ch = 0; ch <= 3; ++ch) {
        setValue(f.cckChan[ch], prm.channelStatus[ch] != 0 ? 1 : 0);
        const ChannelCalibration& cal = store_.calibration[ch];
        if (prm.channelStatus[ch] != 0 && cal.actualLow == cal.actualHigh)
            p_.messageBox(QStringLiteral("Invalid Actual Limits in channel ") +
                          QString::number(ch));
    }
    // A stored type other than 1 selects the second option, as saving reads it back.
    const int type = prm.valueType == 1 ? 1 : 2;
    setValue(f.OptValueType[type], 1);
    setValue(f.OptValueType[3 - type], 0);
    f.lblMaster.caption = QStringLiteral("Card #");
    f.lblModuleName.caption = QStringLiteral("TORV_NET");

    f.txtLeftCardName.caption = prm.leftCardName;
    f.txtCardName.caption = QString::number(prm.cardNumber);
    f.txtRightCardName.caption = prm.rightCardName;
    f.txtNumberOfPoints.caption = QString::number(prm.numberOfPoints);
    f.txtSampling.caption = QString::number(prm.sampling);
    f.txtProcentMinMax.caption = singleText(prm.percent, decimalSeparator());
    f.txtMinMaxMiss.caption = QString::number(prm.minMaxMiss);
    f.txtMnMxTime.caption = QString::number(prm.minMaxTime);
    f.txtBandRadius.caption = QString::number(prm.bandRadius);
    f.txtRound.caption = QString::number(prm.round);
    f.txtTimeDivision.caption = QString::number(prm.timeDivision);
}

void FrmStart::CheckInit() {
    bool usable = false;
    for (int ch = 0; ch <= 3; ++ch) {
        Control& box = f.cckChan[ch];
        if (store_.calibration[ch].state == ChannelCalibration::NotCalibrated) {
            box.enabled = false;
            box.width *= 2;
            box.caption = QStringLiteral("not calibrated");
            setValue(box, 0);
        } else {
            usable = true;
        }
    }
    if (!usable) p_.messageBox(QStringLiteral("Sorry, but all channel are not colibrated "));
}

bool FrmStart::IsChannelsSelected() {
    for (int ch = 0; ch <= 3; ++ch)
        if (f.cckChan[ch].value == 1) return true;
    return false;
}

bool FrmStart::CheckInputData() {
    auto checkLength = [](Control& box, int most) {
        if (box.caption.size() > most) {
            box.backColor = InvalidColor;
            box.toolTip = QStringLiteral("Number of chars must be <=%1").arg(most);
        } else {
            box.backColor = ValidColor;
            box.toolTip.clear();
        }
    };
    checkLength(f.txtLeftCardName, 2);
    checkLength(f.txtRightCardName, 5);

    auto check = [](Control& box, Int32 low, Int32 high, const char* tip) {
        CheckTextLimits(box, low, high, ValidColor, InvalidColor, QString::fromLatin1(tip));
    };
    check(f.txtCardName, 1, 999999999, "This is a part of the Card name");
    check(f.txtNumberOfPoints, 50, 10000, "How much points to show on the screen");
    check(f.txtSampling, 2, 1000, "Timer interval in ms");
    check(f.txtProcentMinMax, 0, 30, "What minimum percent change of Min or Max to fix");
    check(f.txtMinMaxMiss, 0, 10, "How much number of new Min or new Max to ignore");
    check(f.txtMnMxTime, 0, 20000, "How much seconds to ignore");
    check(f.txtBandRadius, 1, limitValue(f.txtNumberOfPoints.caption),
          "How much points on the left side & on the right point ");
    check(f.txtRound, 0, 4, "How much zeros in the numbers on time scale graph");
    check(f.txtTimeDivision, 3, 10, "Quolity of numbers on the time scale graph");

    bool valid = true;
    f.forEach([&valid](Control& c) {
        if (c.name.startsWith(QLatin1String("txt")) && c.backColor == InvalidColor) valid = false;
    });
    return valid;
}

void FrmStart::CmdShowGraph_Click() {
    if (!IsChannelsSelected()) {
        p_.messageBox(QStringLiteral("Sorry, but You forgot to select a channel number. "));
        return;
    }
    if (!CheckInputData()) {
        p_.messageBox(QStringLiteral("Invalid data"));
        return;
    }
    cmdSaveCnfg_Click();
    ShowAllChannelGraph();

    store_.pointsPerScreen = CLng(f.txtNumberOfPoints.caption);
    store_.samplingMs = CInt(f.txtSampling.caption);
    store_.percent = CSng(f.txtProcentMinMax.caption);
    store_.sngProcent = (store_.percent + 100) / 100;
    store_.minMaxMiss = CInt(f.txtMinMaxMiss.caption);
    store_.ignoreTime = CLng(f.txtMnMxTime.caption);
    store_.bandRadius = CInt(f.txtBandRadius.caption);
    store_.scaleRound = CInt(f.txtRound.caption);
    store_.timeDivisions = CInt(f.txtTimeDivision.caption);
    store_.valueType = f.OptValueType[1].value == 1 ? 1 : 2;
    store_.restartClock();
    f.OptValueType[1].enabled = f.OptValueType[2].enabled = false;
}

void FrmStart::ShowAllChannelGraph() {
    int selected = 0;
    for (int ch = 0; ch <= 3; ++ch)
        if (f.cckChan[ch].value == 1) ++selected;
    if (selected < 1 || selected > 4) return;
    store_.sizeStores(selected);
    for (int ch = 0; ch <= 3; ++ch) {
        store_.pointColumnText[ch] = QStringLiteral("-1");
        if (f.cckChan[ch].value == 1 && !store_.channelActive[ch]) {
            GraphView* view = store_.windows ? store_.windows->open(ch) : nullptr;
            store_.graphWindows[ch] = view;
            store_.pointColumnText[ch] = QStringLiteral("0");
            store_.channelActive[ch] = true;
            store_.openWindowCount = add16(store_.openWindowCount, 1);
        }
    }
    store_.realTimeGraphRuns = store_.openWindowCount > 0;
    if (store_.windows) {
        GraphView* open[4] = {};
        for (int ch = 0; ch <= 3; ++ch)
            if (store_.channelActive[ch]) open[ch] = store_.graphWindows[ch];
        store_.windows->place(open);
    }
}

StartEntries FrmStart::entries() const {
    StartEntries e;
    e.leftCardName = f.txtLeftCardName.caption;
    e.cardNumber = f.txtCardName.caption;
    e.rightCardName = f.txtRightCardName.caption;
    e.numberOfPoints = f.txtNumberOfPoints.caption;
    e.sampling = f.txtSampling.caption;
    e.percent = f.txtProcentMinMax.caption;
    e.minMaxMiss = f.txtMinMaxMiss.caption;
    e.minMaxTime = f.txtMnMxTime.caption;
    e.bandRadius = f.txtBandRadius.caption;
    e.round = f.txtRound.caption;
    e.timeDivision = f.txtTimeDivision.caption;
    e.firstValueTypeSelected = f.OptValueType[1].value == 1;
    for (int ch = 0; ch <= 3; ++ch)
        e.channelChecks[ch] = f.cckChan[ch].value;
    return e;
}

void FrmStart::showGraph() {
    if (!loaded_) Form_Load();
    CmdShowGraph_Click();
}

void FrmStart::cmdSaveCnfg_Click() {
    SaveConfig(p_, startFile, entries(), store_.params);
}

void FrmStart::enableCommands(bool enabled) {
    changed();
    f.cmdSaveCnfg.enabled = f.CmdShowGraph.enabled = enabled;
    f.OptValueType[1].enabled = f.OptValueType[2].enabled = enabled;
}

void FrmStart::unload() {
    changed();
    loaded_ = false;
    if (onUnload) onUnload();
}

} // namespace torv
