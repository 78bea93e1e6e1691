// The main panel and the real-time graph: good readings feed the running graph, the graph
// reads the panel's reading label, calibration and polling state.

#include "graph/graph_fakes.h"
#include "graph/graph_store.h"
#include "panel/graph_link.h"
#include "panel_fixture.h"

using namespace torv;
using namespace torv::test;

namespace {

class GraphLinkTest : public PanelTest {
protected:
    GraphLinkTest() {
        layOut();
        store.panel = &link;
        panel.graph = &store;
        panel.openGraphSetUp = [this] { ++setUpOpened; };
        store.sizeStores(1);
        store.channelActive[0] = true;
        store.graphWindows[0] = &view;
        store.openWindowCount = 1;
    }
    GraphStore store{p};
    PanelGraphLink link{panel};
    FakeGraphView view{0};
    int setUpOpened = 0;
};

} // namespace

TEST_F(GraphLinkTest, GoodReadingsFeedTheRunningGraphOnly) {
    store.realTimeGraphRuns = true;
    startPolling();
    ASSERT_TRUE(runUntil([&] { return store.readingCount[0] >= 3; }, 200));
    EXPECT_EQ(store.readings[0][0], 12);
    EXPECT_EQ(store.points[0][0], "12.345"); // the weight as the panel shows it
    EXPECT_EQ(view.draws, store.pointCount[0]);
    EXPECT_EQ(view.topMost, 0); // starting the poll released the graph from the top

    // An overload is no reading for the graph.
    sim.setOverload(true);
    runUntil([&] { return f.lblWT_BRUTTO.caption == "OVERFLOW"; }, 200);
    const Int32 count = store.readingCount[0];
    runUntil([] { return false; }, 20);
    EXPECT_EQ(store.readingCount[0], count);
}

TEST_F(GraphLinkTest, GraphSeesThePanelsCardAndPolling) {
    click([&] { panel.cmdShowRTGraph_Click(); });
    EXPECT_EQ(setUpOpened, 1);

    startPolling();
    EXPECT_EQ(link.cardAddress(), "10.0.0.2");
    const ChannelCalibration zero = link.calibration(0);
    EXPECT_EQ(zero.state, ChannelCalibration::Calibrated);
    EXPECT_EQ(zero.actualHigh, 3000); // the card's maximum load
    EXPECT_EQ(link.calibration(3).state, ChannelCalibration::NotCalibrated);

    // Closing the graph while the panel polls gives the polling button back.
    f.cmdWeight.enabled = false;
    store.restorePollingButton();
    EXPECT_TRUE(f.cmdWeight.enabled);
}
