// The window follows the model: a change made after a handler has let window events run
// (and with them a refresh) still reaches the screen.

#include "panel_fixture.h"

using namespace torv;
using namespace torv::test;

namespace {

// What the window would show of a few controls the status answer sets late.
QString screenOf(const FrmClientForm& f) {
    return QStringLiteral("%1|%2|%3")
        .arg(f.CmdShowGraph.enabled)
        .arg(f.LbLMaxWGTdata.caption, f.lblUnitNameWGT.caption);
}

class ScreenTest : public PanelTest {
protected:
    ScreenTest() {
        // A window that refreshes at most once a frame: a change of the model asks for a
        // refresh, which runs the next time window events are processed.
        panel.onModelChanged = [this] { pending = true; };
        const std::function<void()> card = p.onTick;
        p.onTick = [this, card] {
            if (card) card();
            if (pending) {
                pending = false;
                shown = screenOf(f);
            }
        };
    }
    bool pending = false;
    QString shown;
};

} // namespace

TEST_F(ScreenTest, ChangesAfterTheStatusAnswersEventPumpReachTheScreen) {
    panel.Form_Load(); // one status request at start-up
    ASSERT_TRUE(runUntil([&] { return f.CmdShowGraph.enabled; }, 200));
    p.advance(100);
    EXPECT_EQ(shown, screenOf(f));
    EXPECT_EQ(shown, "1|3000|kg");
}
