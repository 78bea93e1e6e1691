// The graph set-up window offscreen with the stand-in graph window: typing is checked at once,
// the channel box and "Show Graph" reach the form, and closing the graph gives the polling
// button back.

#include "base/numeric.h"
#include "files/temp_folder.h"
#include "graph/frm_start.h"
#include "graph/graph_fakes.h"
#include "graph/graph_store.h"
#include "support/fake_platform.h"
#include "ui/frm_graph_window.h"
#include "ui/frm_start_window.h"

#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

using namespace torv;
using namespace torv::test;

namespace {

class FrmStartWindowTest : public InTempFolder {
protected:
    FrmStartWindowTest() {
        setDecimalSeparator(QLatin1Char('.'));
        store.panel = &panel;
        store.windows = &windows;
    }
    template <typename W> W* widget(const char* name) {
        return qobject_cast<W*>(window.widgetFor(QString::fromLatin1(name)));
    }
    FakePlatform p;
    FakeGraphPanel panel;
    GraphStore store{p};
    FrmGraphWindows windows{store};
    FrmStart form{p, store};
    FrmStartWindow window{form};
};

} // namespace

TEST_F(FrmStartWindowTest, TypingIsCheckedAndShowGraphOpensTheGraph) {
    window.open();
    ASSERT_TRUE(window.isVisible());
    EXPECT_EQ(widget<QLineEdit>("txtNumberOfPoints")->text(), "500");

    auto* sampling = widget<QLineEdit>("txtSampling");
    sampling->clear();
    QTest::keyClicks(sampling, "abc");
    window.refresh();
    EXPECT_EQ(form.f.txtSampling.backColor, FrmStart::InvalidColor);
    EXPECT_EQ(sampling->toolTip(), "Not number!");
    EXPECT_EQ(window.problemText(), "Sampling Rate (ms): Not number!");

    sampling->clear();
    QTest::keyClicks(sampling, "20");
    window.refresh();
    EXPECT_EQ(sampling->toolTip(), "Timer interval in ms");
    EXPECT_TRUE(window.problemText().isEmpty());

    p.dialogs.clear();
    // Assistive technology toggles the box as a click does, and the model follows.
    QAccessibleInterface* box =
        QAccessible::queryAccessibleInterface(widget<QCheckBox>("cckChan_0"));
    ASSERT_TRUE(box && box->actionInterface());
    EXPECT_EQ(box->text(QAccessible::Name), "cckChan_0");
    EXPECT_EQ(box->text(QAccessible::Description), "Channel 0");
    box->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
    EXPECT_EQ(form.f.cckChan[0].value, 1);
    widget<QCheckBox>("cckChan_0")->click();
    EXPECT_EQ(form.f.cckChan[0].value, 0);
    widget<QCheckBox>("cckChan_0")->click();
    EXPECT_EQ(form.f.cckChan[0].value, 1);
    EXPECT_FALSE(widget<QCheckBox>("cckChan_1")->isEnabled());
    widget<QPushButton>("CmdShowGraph")->click();
    EXPECT_TRUE(p.dialogs.empty()) << p.messages().join('|').toStdString();
    FrmGraphWindow* graph = windows.window(0);
    ASSERT_NE(graph, nullptr);
    EXPECT_EQ(store.graphWindows[0], &graph->graph());
    EXPECT_TRUE(graph->isVisible());

    // Readings reach the graph window; closing it stops the graph and closes the set-up form.
    panel.reading = "812.5";
    store.GraphSamplingTick();
    EXPECT_EQ(graph->graph().f.txtCur.caption, "812");
    panel.pollingButton = -1;
    graph->close();
    EXPECT_FALSE(store.channelActive[0] || store.realTimeGraphRuns || window.isVisible());
    EXPECT_EQ(panel.pollingButton, 1);
}
