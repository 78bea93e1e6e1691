// The graph window offscreen: it shows the pictures as the model draws them, at most one
// refresh a frame, routes a click on the plot to the selection, and saves what it shows.

#include "graph/graph_store.h"
#include "support/fake_platform.h"
#include "ui/frm_graph_window.h"
#include "ui/picture_widget.h"

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <cmath>
#include <gtest/gtest.h>

using namespace torv;

namespace {

class GraphWindowTest : public ::testing::Test {
protected:
    GraphWindowTest() {
        store.sizeStores(1);
        store.channelActive[0] = true;
        store.openWindowCount = 1;
        store.calibration[0] = {ChannelCalibration::Calibrated, 0, 1000, QStringLiteral("kg")};
        window = new FrmGraphWindow(store, 0);
        store.graphWindows[0] = &window->graph();
        window->graph().Form_Load();
        window->refresh();
        window->show();
    }
    ~GraphWindowTest() override { delete window; }

    void feed(Int32 v) {
        const Int32 i = store.readingCount[0];
        store.readings[0][static_cast<std::size_t>(i)] = v;
        store.readingTimes[0][static_cast<std::size_t>(i)] = i * 50;
        store.readingCount[0] = i + 1;
        window->graph().DrawGraph_TORV();
    }
    // Whether any pixel of the row (or a row next to it) has the colour.
    static bool rowHas(const QImage& img, int y, QRgb c) {
        for (int row = std::max(0, y - 1); row <= std::min(img.height() - 1, y + 1); ++row)
            for (int x = 0; x < img.width(); ++x)
                if ((img.pixel(x, row) & 0xFFFFFF) == c) return true;
        return false;
    }

    test::FakePlatform platform;
    GraphStore store{platform};
    FrmGraphWindow* window = nullptr;
};

} // namespace

TEST_F(GraphWindowTest, ShowsTheModelOnceAFrameAndStaysOnTop) {
    EXPECT_TRUE(window->windowFlags() & Qt::WindowStaysOnTopHint);
    const int before = window->refreshCount();
    for (int i = 0; i < 300; ++i)
        feed(500 + static_cast<Int32>(400 * std::sin(i / 20.0)));
    EXPECT_EQ(window->refreshCount(), before) << "nothing is pushed inside the readings";
    QTest::qWait(40);
    EXPECT_LE(window->refreshCount(), before + 2);
    EXPECT_EQ(static_cast<QLineEdit*>(window->widgetFor("txtCur"))->text(),
              window->graph().f.txtCur.caption);

    const QImage img = window->plotImage();
    // The plot's frame starts 80 pixels in, under the value scale; the high limit (1000 on a
    // -200..1200 scale, 360 pixels high) is a red line, the low limit a blue one.
    const int high = static_cast<int>(std::lround(plotY(1000, {-200, 1200}, 5400) / 15.0)) + 1;
    const int low = static_cast<int>(std::lround(plotY(0, {-200, 1200}, 5400) / 15.0)) + 1;
    EXPECT_TRUE(rowHas(img, high, 0xFF0000));
    EXPECT_TRUE(rowHas(img, low, 0x0000FF));
    bool plotted = false;
    for (int y = 0; y < img.height() && !plotted; ++y)
        plotted = rowHas(img, y, 0x008000);
    EXPECT_TRUE(plotted) << "the readings are drawn in dark green";
}
