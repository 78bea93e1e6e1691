// A graph window's logic on the data store: what each reading draws, where the plot scrolls and
// starts over, the selected point, and the window's commands.

#include "graph/frm_graph.h"

#include "graph/graph_store.h"
#include "support/fake_platform.h"

#include <gtest/gtest.h>
#include <memory>

using namespace torv;

namespace {

struct FakeSetUp : SetUpForm {
    QStringList calls;
    void enableCommands(bool enabled) override { calls << (enabled ? "enable" : "disable"); }
    void unload() override { calls << "unload"; }
    void showGraph() override { calls << "show"; }
};

struct FakePanel : GraphPanel {
    QString function = QStringLiteral("GetRTStatus");
    bool polling = false;
    int pollingButton = -1;
    QString currentReadingText() override { return {}; }
    QString cardAddress() override { return {}; }
    ChannelCalibration calibration(int) override { return {}; }
    QString currentFunctionName() override { return function; }
    bool pollingOn() override { return polling; }
    void setPollingButtonEnabled(bool enabled) override { pollingButton = enabled ? 1 : 0; }
};

class GraphWindow : public ::testing::Test {
protected:
    test::FakePlatform platform;
    GraphStore store{platform};
    FakeSetUp setUp;
    FakePanel panel;
    std::unique_ptr<FrmGraph> g;
    int unloads = 0;

    GraphWindow() {
        store.sizeStores(1);
        store.setUpForm = &setUp;
        store.panel = &panel;
        store.channelActive[0] = true;
        store.openWindowCount = 1;
        store.calibration[0] = {ChannelCalibration::Calibrated, 0, 1000, QStringLiteral("kg")};
        g = std::make_unique<FrmGraph>(store, 0);
        store.graphWindows[0] = g.get();
        g->onUnloadWindow = [this] { ++unloads; };
        g->Form_Load();
    }
    // One reading of channel 0, 50 ms after the last, drawn.
    void feed(Int32 v) {
        const Int32 i = store.readingCount[0];
        store.readings[0][static_cast<std::size_t>(i)] = v;
        store.readingTimes[0][static_cast<std::size_t>(i)] = i * 50;
        store.readingCount[0] = i + 1;
        g->DrawGraph_TORV();
    }
    // The operations of the plot drawn after its grid and limit lines (11 with 10 divisions).
    QString plotted() const {
        const auto& ops = g->f.pctGraph.displayList();
        return describe(std::vector<DrawOp>(ops.begin() + 11, ops.end()));
    }
    void click(double x, double y) {
        g->pctGraph_MouseMove(x, y);
        g->pctGraph_MouseDown();
    }
};

} // namespace

TEST_F(GraphWindow, EachReadingIsJoinedToTheLastAndShownInTheBoxes) {
    // Limits 0 and 1000 with 10 divisions and 10 percent: -200 to 1200 over 5400 twips.
    EXPECT_EQ(g->scaleRange().minimum, -200);
    EXPECT_EQ(g->scaleRange().maximum, 1200);
    feed(100);
    feed(200);
    feed(400);
    EXPECT_EQ(plotted().toStdString(), "point (0,4243) c=32768 w=2\n"
                                       "line (0,4243)-(24,3857) c=32768 w=2\n"
                                       "line (24,3857)-(48,3086) c=32768 w=2");
    EXPECT_EQ(describe(g->f.pctGraph2.displayList()), describe(g->f.pctGraph.displayList()))
        << "the back copy gets the same drawing";
    EXPECT_EQ(g->f.txtCur.caption, "400");
    EXPECT_EQ(g->f.txtCurIndex.caption, "3");
    EXPECT_EQ(g->f.txtTime.caption, "100");
    EXPECT_EQ(g->f.TxtMaxReading.caption, "400");
    EXPECT_EQ(g->f.TxtMaxTime.caption, "100");
    EXPECT_EQ(g->f.TxtMinReading.caption + "@" + g->f.TxtMinTime.caption, "65536@0")
        << "no reading below the running minimum yet: the reset value";
    EXPECT_EQ(g->f.txtMax.caption + "/" + g->f.TxtMin.caption, "400/100");
    EXPECT_EQ(g->f.txtMinMaxCouner.caption, "2") << "200 and 400 were taken as new maxima";
    EXPECT_EQ(g->f.txtRightIndex.caption + "/" + g->f.txtLeftIndex.caption, "3/0");
    feed(80); // below the minimum, but 320 is no more than 1.1 x 300: not taken
    feed(80); // the same again: the first of the two equal minima stays
    EXPECT_EQ(g->f.TxtMinReading.caption + "@" + g->f.TxtMinTime.caption, "80@150");
    EXPECT_EQ(g->f.txtMinIndex.caption + "/" + g->f.txtMaxIndex.caption, "0/2");
    EXPECT_TRUE(g->f.topMost);
    g->SetTopMost(false); // the panel's start of polling
    g->Form_DblClick();
    EXPECT_TRUE(g->f.topMost) << "a double click keeps the window on top again";

    store.valueType = 1; // a new set-up is taken with the next reading
    feed(300);
    EXPECT_EQ(g->f.txtCur.caption, "300.0000");
}

TEST_F(GraphWindow, ThePlotScrollsWithTheNewestReadingAndStartsOverAtItsEnd) {
    store.pointsPerScreen = 50; // 240 twips a reading; the plot holds 100 readings
    struct Row {
        int readings;
        Int32 leftIndex, origin;
        int left;
    } rows[] = {
        {50, 0, 0, 0},          {60, 10, 0, -2400}, {101, 51, 0, -12240},
        {102, 52, 52, 0}, // the next reading would pass the plot's end: a new picture
        {150, 100, 52, -11520},
    };
    std::uint64_t clears = 0;
    for (const Row& r : rows) {
        while (store.readingCount[0] < r.readings)
            feed(store.readingCount[0] % 7 * 100);
        if (r.readings == 101) clears = g->f.pctGraph.clearCount();
        EXPECT_EQ(store.leftIndex[0], r.leftIndex) << r.readings;
        EXPECT_EQ(g->origin(), r.origin) << r.readings;
        EXPECT_EQ(g->f.pctGraph.left, r.left) << r.readings;
        EXPECT_EQ(g->f.txtLeftpct.caption.toInt(), r.left) << r.readings;
    }
    EXPECT_EQ(g->f.pctGraph.clearCount(), clears + 1);
    // The new picture holds the readings from the left index on: one point and the lines.
    EXPECT_EQ(g->f.pctGraph.displayList().size(), 11u + 98u);
}

TEST_F(GraphWindow, AReadingOutsideTheScaleWidensIt) {
    feed(100);
    const auto clears = g->f.pctGraph.clearCount();
    feed(5000);
    EXPECT_EQ(g->scaleRange().minimum, -1000); // 0 .. 5000 padded by a fifth of the span
    EXPECT_EQ(g->scaleRange().maximum, 6000);
    EXPECT_EQ(g->f.txtMaxRange.caption, "6000.0");
    EXPECT_EQ(g->f.pctGraph.clearCount(), clears + 1);
    EXPECT_EQ(plotted().toStdString(), "point (0,4551) c=32768 w=2\n"
                                       "line (0,4551)-(24,771) c=32768 w=2");
    feed(-3000);
    EXPECT_EQ(g->scaleRange().minimum, -4600);
    EXPECT_EQ(g->f.pctGraph.clearCount(), clears + 2);
}

TEST_F(GraphWindow, AClickSelectsTheLocalExtremumWithMarkerAndBothPopups) {
    feed(100);
    feed(300);
    click(24, 100); // fewer readings than the band radius: ignored
    EXPECT_FALSE(store.selectionFlag[0] || g->f.ShpPoint.visible);
    for (Int32 v : {500, 700, 900, 700, 500, 300, 100, 300})
        feed(v);
    click(9 * 24, 100); // near the right end, upper half: readings 4 to 9
    EXPECT_EQ(store.selectedIndex[0], 4);
    EXPECT_TRUE(store.selectionFlag[0]);
    EXPECT_TRUE(g->f.ShpPoint.visible);
    EXPECT_EQ(g->f.ShpPoint.left, 4 * 24 - 90);
    EXPECT_EQ(g->f.ShpPoint.top, 1157 - 90);
    EXPECT_EQ(describe(g->f.pctA2D.displayList().back()), "text (10,10) c=0 \"Max Value = 900\"");
    EXPECT_EQ(describe(g->f.pctTime.displayList().back()), "text (10,10) c=0 \"Time(ms)= 200\"");
    // 15 characters of 6 pixels: 1350 twips and 200 more.
    EXPECT_EQ(g->f.pctA2D.width, 1550);
    EXPECT_EQ(g->f.pctA2D.left, 300) << "at the point (96), but room for the time pop-up";
    EXPECT_EQ(g->f.pctA2D.top, 100);
    EXPECT_EQ(g->f.pctTime.left, 0) << "300 further left";
    EXPECT_EQ(g->f.pctTime.top, 100 + g->f.pctA2D.height + 45);
    EXPECT_TRUE(g->f.pctA2D.visible && g->f.pctTime.visible);

    click(9 * 24, 5000); // lower half: the first of the lowest
    EXPECT_EQ(store.selectedIndex[0], 8);
    EXPECT_EQ(describe(g->f.pctA2D.displayList().back()), "text (10,10) c=0 \"Min Value = 100\"");

    while (store.readingCount[0] < 500)
        feed(store.readingCount[0]);
    click(499 * 24, 100);
    EXPECT_EQ(store.selectedIndex[0], 499);
    EXPECT_EQ(g->f.pctA2D.left, 12000 - 1550 - 50) << "placed 50 left of the plot's edge";
    EXPECT_EQ(g->f.pctTime.left, g->f.pctA2D.left - 300);

    // Once the selected reading has scrolled out of view the marker and pop-ups go.
    feed(1);
    feed(1);
    EXPECT_TRUE(g->f.ShpPoint.visible);
    while (store.readingCount[0] < 1001)
        feed(7);
    EXPECT_FALSE(g->f.ShpPoint.visible || g->f.pctA2D.visible || g->f.pctTime.visible);
    EXPECT_TRUE(platform.dialogs.empty());
}

TEST_F(GraphWindow, ClosingClearsTheChannelAndRestoresThePollingButton) {
    feed(100);
    feed(200);
    g->Form_MyUnload();
    EXPECT_EQ(store.readingCount[0], 0);
    EXPECT_EQ(store.readings[0][1], 0);
    EXPECT_FALSE(store.channelActive[0]);
    EXPECT_EQ(store.graphWindows[0], nullptr);
    EXPECT_EQ(store.openWindowCount, 0);
    EXPECT_EQ(setUp.calls.join(' '), "enable");
    EXPECT_EQ(unloads, 1);

    // Closed by the operator: the set-up form goes, the polling button follows its rule.
    FrmGraph other(store, 0);
    store.graphWindows[0] = &other;
    store.channelActive[0] = true;
    store.openWindowCount = 1;
    other.Form_Unload();
    EXPECT_EQ(setUp.calls.join(' '), "enable unload");
    EXPECT_FALSE(store.channelActive[0]);
    EXPECT_EQ(store.graphWindows[0], nullptr);
    EXPECT_EQ(panel.pollingButton, 0) << "GetRTStatus with polling off";
    panel.polling = true;
    FrmGraph third(store, 0);
    third.Form_Unload();
    EXPECT_EQ(panel.pollingButton, 1);
}

TEST_F(GraphWindow, ResetStartsTheChannelAndTheGraphAnew) {
    for (Int32 v : {100, 300, 500})
        feed(v);
    click(24, 100);
    g->cmdNewStart_Click();
    EXPECT_EQ(store.readingCount[0], 0);
    EXPECT_EQ(store.referenceValue[0], -1000);
    EXPECT_EQ(store.absoluteMinimum[0], 65536);
    EXPECT_EQ(store.absoluteMaximum[0], 0);
    EXPECT_EQ(store.startTick, platform.now);
    EXPECT_FALSE(store.selectionFlag[0] || g->f.ShpPoint.visible);
    EXPECT_EQ(setUp.calls.join(' '), "unload show");
    const auto clears = g->f.pctGraph.clearCount();
    feed(700);
    EXPECT_EQ(g->f.pctGraph.clearCount(), clears + 1);
    EXPECT_EQ(plotted().toStdString(), "point (0,1929) c=32768 w=2");
}

TEST_F(GraphWindow, AFullStoreIsReportedWithoutABoxInsideTheBox) {
    struct Reading : FakePanel {
        QString currentReadingText() override { return QStringLiteral("700"); }
    } reading;
    store.panel = &reading;
    store.readingCount[0] = GraphStore::StoreFullCount - 1;
    int nested = 0;
    platform.onDialog = [&](const test::DialogRecord&) {
        // The box's loop runs the next status answers (four of them, however deep).
        for (int i = 0; i < 4 && nested < 4; ++i, ++nested)
            store.GraphSamplingTick();
    };
    store.GraphSamplingTick(); // the 50000th reading
    store.GraphSamplingTick(); // the 50001st
    EXPECT_EQ(nested, 4);
    EXPECT_EQ(platform.dialogs.size(), 1u);
    EXPECT_EQ(store.readingCount[0], GraphStore::StoreFullCount - 1);
    EXPECT_EQ(g->f.txtCurIndex.caption, "49999") << "the graph goes on";
}
