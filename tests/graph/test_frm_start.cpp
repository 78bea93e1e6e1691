#include "graph/frm_start.h"

#include "base/numeric.h"
#include "files/temp_folder.h"
#include "graph/graph_store.h"
#include "graph_fakes.h"
#include "support/fake_platform.h"

#include <gtest/gtest.h>

using namespace torv;
using namespace torv::test;

namespace {

const QString kNotFound = "File not found.\rThe file will create with default parameters. Run "
                          "this application again, please.";
const QString kForgot = "Sorry, but You forgot to select a channel number. ";
constexpr color::Color kGood = color::Highlight3D, kBad = color::InactiveCaptionText;

class FrmStartTest : public InTempFolder {
protected:
    FrmStartTest() {
        setDecimalSeparator(QLatin1Char('.'));
        store.panel = &panel;
        store.windows = &windows;
        form.onShow = [this] { ++shows; };
    }
    // Opens the form and forgets the messages of the load.
    void loadQuietly() {
        form.Form_Load();
        p.dialogs.clear();
    }
    void saveFile(std::array<std::uint8_t, 4> status, int valueType = 2) {
        GraphParameters prm;
        prm.channelStatus = status;
        prm.valueType = static_cast<std::uint8_t>(valueType);
        put("Start.dat", startFileText(prm));
    }

    FakePlatform p;
    FakeGraphPanel panel;
    FakeGraphWindows windows;
    GraphStore store{p};
    FrmStart form{p, store};
    FrmStartForm& f = form.f;
    int shows = 0;
};

} // namespace

TEST_F(FrmStartTest, ShowGraphSavesTheFileAndOpensTheChosenChannel) {
    loadQuietly();
    f.txtSampling.caption = "20";
    f.txtProcentMinMax.caption = "25";
    f.txtNumberOfPoints.caption = "1000";
    setValue(f.cckChan[0], 1);
    p.now += 5000;
    form.CmdShowGraph_Click();

    EXPECT_TRUE(p.dialogs.empty()) << p.messages().join('|').toStdString();
    GraphParameters expected;
    expected.channelStatus = {1, 0, 0, 0};
    expected.sampling = 20;
    expected.percent = 25;
    expected.numberOfPoints = 1000;
    EXPECT_EQ(get("Start.dat"), startFileText(expected));

    ASSERT_EQ(windows.opened.size(), 1u);
    EXPECT_EQ(store.graphWindows[0], windows.opened[0].get());
    EXPECT_TRUE(store.channelActive[0] && store.realTimeGraphRuns);
    EXPECT_EQ(store.pointColumnText[0], "0");
    EXPECT_EQ(store.readings[0].size(), 50001u);
    EXPECT_EQ(QList<Int32>({store.samplingMs, store.pointsPerScreen, windows.placements}),
              QList<Int32>({20, 1000, 1}));
    EXPECT_FLOAT_EQ(store.sngProcent, 1.25f);
    EXPECT_EQ(store.startTick, p.now);
    EXPECT_FALSE(f.OptValueType[1].enabled || f.OptValueType[2].enabled);

    // Pressing it again opens no second window for a channel already shown.
    form.CmdShowGraph_Click();
    EXPECT_EQ(windows.opened.size(), 1u);
    EXPECT_EQ(store.pointColumnText[0], "-1");

    // A graph window's reset on the unloaded form loads it again (it shows itself and runs
    // Show Graph from its load), then presses Show Graph. Loaded again it starts as designed:
    // with no channel saved both presses meet the forgot message and its options stay free.
    form.unload();
    put("Start.dat", defaultStartFileText());
    p.dialogs.clear();
    form.showGraph();
    EXPECT_EQ(p.messages(), (QStringList{kForgot, kForgot}));
    EXPECT_TRUE(form.loaded() && shows == 2);
    EXPECT_TRUE(f.OptValueType[1].enabled && f.OptValueType[2].enabled);
}

TEST_F(FrmStartTest, EntriesAreCheckedAsTheyAreTyped) {
    loadQuietly();
    const struct {
        Control* box;
        const char* text;
        const char* tip; // the tip of a rejected entry, or null for a valid one
    } cases[] = {
        {&f.txtSampling, "abc", "Not number!"},
        {&f.txtSampling, "2", nullptr},
        {&f.txtSampling, "1001", "Data out of limits: [2...1000]"},
        {&f.txtNumberOfPoints, "40", "Data out of limits: [50...10000]"},
        {&f.txtNumberOfPoints, "10000", nullptr},
        {&f.txtCardName, "0", "Data out of limits: [1...999999999]"},
        {&f.txtProcentMinMax, "2.5", "Not number!"},
        {&f.txtMinMaxMiss, "11", "Data out of limits: [0...10]"},
        {&f.txtMnMxTime, "20001", "Data out of limits: [0...20000]"},
        {&f.txtRound, "5", "Data out of limits: [0...4]"},
        {&f.txtTimeDivision, "2", "Data out of limits: [3...10]"},
        {&f.txtLeftCardName, "ABC", "Number of chars must be <=2"},
        {&f.txtLeftCardName, "AB", nullptr},
        {&f.txtRightCardName, "ABCDEF", "Number of chars must be <=5"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.box->name.toStdString() + " " + c.text);
        const QString before = c.box->caption;
        c.box->caption = c.text;
        EXPECT_EQ(form.CheckInputData(), c.tip == nullptr);
        EXPECT_EQ(c.box->backColor, c.tip ? kBad : kGood);
        if (c.tip) {
            EXPECT_EQ(c.box->toolTip, c.tip);
        }
        c.box->caption = before;
    }
    EXPECT_EQ(f.txtSampling.toolTip, "Timer interval in ms"); // the tip of a valid entry

    // The band radius is limited by the number of points typed.
    f.txtBandRadius.caption = "600";
    EXPECT_FALSE(form.CheckInputData());
    EXPECT_EQ(f.txtBandRadius.toolTip, "Data out of limits: [1...500]");
    f.txtNumberOfPoints.caption = "1000";
    EXPECT_TRUE(form.CheckInputData());
    f.txtNumberOfPoints.caption = "many";
    form.CheckInputData();
    EXPECT_EQ(f.txtBandRadius.toolTip, "Data out of limits: [1...0]");
}

TEST_F(FrmStartTest, ShowGraphRefusesBadDataOrNoChannelAndSavesNothing) {
    loadQuietly();
    const QByteArray saved = get("Start.dat");
    f.txtSampling.caption = "abc";
    form.CmdShowGraph_Click(); // no channel: only that is said
    EXPECT_EQ(p.messages(), QStringList{kForgot});

    p.dialogs.clear();
    setValue(f.cckChan[0], 1);
    form.CmdShowGraph_Click();
    EXPECT_EQ(p.messages(), QStringList{"Invalid data"});
    EXPECT_EQ(f.txtSampling.toolTip, "Not number!");
    EXPECT_EQ(get("Start.dat"), saved);
    EXPECT_TRUE(windows.opened.empty());
}

TEST_F(FrmStartTest, ChannelsThatCannotBeUsedAreReported) {
    const QString kNoneCalibrated = "Sorry, but all channel are not colibrated ";
    const QString kLimits = "Invalid Actual Limits in channel ";
    const struct {
        const char* name;
        std::array<std::uint8_t, 4> status;
        bool calibrated; // channel 0, with its upper actual limit
        double high;
        QStringList messages;
        std::size_t graphs; // graph windows opened at once
    } cases[] = {
        {"a saved channel opens its graph", {1, 0, 0, 0}, true, 3000, {}, 1},
        {"equal actual limits", {1, 0, 0, 0}, true, 0, {kLimits + "0"}, 1},
        {"uncalibrated", {0, 1, 0, 0}, true, 3000, {kLimits + "1", kForgot}, 0},
        {"no calibrated channel", {0, 0, 0, 0}, false, 3000, {kNoneCalibrated, kForgot}, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        FakePlatform platform;
        GraphStore s(platform);
        FakeGraphWindows w;
        FakeGraphPanel card;
        s.panel = &card;
        s.windows = &w;
        card.calibrations[0].actualHigh = c.high;
        if (!c.calibrated) card.calibrations[0].state = ChannelCalibration::NotCalibrated;
        FrmStart start(platform, s);
        saveFile(c.status);
        start.Form_Load();
        EXPECT_EQ(platform.messages(), c.messages);
        EXPECT_EQ(w.opened.size(), c.graphs);
        EXPECT_EQ(start.f.cckChan[1].value, 0); // a channel without calibration is cleared
    }
}

TEST_F(FrmStartTest, SavingLettersAsNumbersEndsTheProgram) {
    loadQuietly();
    f.txtNumberOfPoints.caption = "abc";
    EXPECT_THROW(form.cmdSaveCnfg_Click(), ProgramEnded);
    EXPECT_EQ(p.messages(), QStringList{"Error !!!13  Type mismatch"});
    EXPECT_EQ(get("Start.dat"), QByteArray());
}

TEST_F(FrmStartTest, ValueTypeOptionsFollowTheFileAndExcludeEachOther) {
    saveFile({0, 0, 0, 0}, 1);
    loadQuietly();
    EXPECT_EQ(f.OptValueType[1].value, 1);
    setValue(f.OptValueType[2], 1);
    EXPECT_EQ(f.OptValueType[1].value, 0);

    saveFile({0, 0, 0, 0}, 7); // any stored type but 1 is the second option
    loadQuietly();
    EXPECT_EQ(f.OptValueType[1].value * 10 + f.OptValueType[2].value, 1);
}
