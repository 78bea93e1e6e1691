// Output buttons and input lamps: painting from the status words, the click sequence, the
// SetOutput reply and the operating lock.

#include "base/colors.h"
#include "link/catalogue.h"
#include "panel_fixture.h"

using namespace torv;
using namespace torv::test;

namespace {

class OutputsTest : public PanelTest {
protected:
    OutputsTest() { layOut(); }

    void statusAnswer(const QString& inner) {
        click([&] { panel.DataArrival_GetRTStatus("<GetRTStatus>" + inner + "</GetRTStatus>"); });
    }
    void setOutputAnswer(const QString& echo) {
        click([&] {
            panel.DataArrival_SetOutput("<SetOutput><ERROR_CODE>0</ERROR_CODE><OUT_STATUS_ECHO>" +
                                        echo + "</OUT_STATUS_ECHO></SetOutput>");
        });
    }
    // Lets the card read the request just issued; the body of the SetOutput among them.
    QString nextSetOutputBody() {
        const int before = requestCount();
        runUntil([&] { return requestCount() > before; }, 100);
        return functionsFrom(before).contains("SetOutput") ? lastBody("SetOutput") : QString();
    }
    // One letter per control: R red, . the inactive colour, B blue, ? anything else.
    template <int Lo, int Hi> static QString colours(const ControlArray<Lo, Hi>& controls) {
        QString out;
        for (int k = Lo; k <= Hi; ++k) {
            const color::Color c = controls[k].backColor;
            out += c == color::Red              ? 'R'
                   : c == color::InactiveBorder ? '.'
                   : c == color::Blue           ? 'B'
                                                : '?';
        }
        return out;
    }
    QString buttons() const { return colours(f.cmdSetOutOn); }
};

} // namespace

TEST_F(OutputsTest, StatusWordsPaintTheButtonsAndLamps) {
    statusAnswer("<IN_STATUS>0</IN_STATUS>"); // the very first word: every input active
    EXPECT_EQ(colours(f.lblInpNum), "RRRRRRRR");
    statusAnswer("<OUT_STATUS>16383</OUT_STATUS>");
    EXPECT_EQ(buttons(), "..............");
    statusAnswer("<OUT_STATUS>0</OUT_STATUS>"); // 11..14 follow the set-point word, which is 0
    EXPECT_EQ(buttons(), "RRRRRRRRRR....");
    statusAnswer("<OUT_STATUS>16379</OUT_STATUS><SP_STATUS>30</SP_STATUS>");
    EXPECT_EQ(buttons(), "..R.......RRRR");

    // Input lamps bear their input numbers: lamp 8 is input 1.
    statusAnswer("<IN_STATUS>254</IN_STATUS>");
    EXPECT_EQ(colours(f.lblInpNum), ".......R");
    EXPECT_EQ(captionsOf({&f.lblInpNum[1], &f.lblInpNum[8]}), "8|1");
    statusAnswer("<IN_STATUS>127</IN_STATUS>"); // input 8 active
    EXPECT_EQ(colours(f.lblInpNum), "R.......");
}

TEST_F(OutputsTest, ClickingOutput3SendsTheWholeWordAndTheReplyRestartsTheStatus) {
    f.cmdStopSample.enabled = true;
    statusAnswer("<OUT_STATUS>16383</OUT_STATUS>");
    click([&] { panel.cmdSetOutOn_Click(3); });
    EXPECT_EQ(nextSetOutputBody(), "ID=4&OUT_STATUS=16379");
    f.cmdStopSample.enabled = false;
    setOutputAnswer("16379");
    EXPECT_EQ(buttons(), "..R...........");
    // The status request is issued again, and Stop is as it was: neither polling nor
    // sampling ran.
    EXPECT_EQ(panel.link().req.strFunctionName, "GetRTStatus");
    EXPECT_TRUE(p.wire.last().startsWith("connect "));
    EXPECT_TRUE(f.cmdStopSample.enabled);

    click([&] { panel.cmdSetOutOn_Click(3); });
    EXPECT_EQ(nextSetOutputBody(), "ID=4&OUT_STATUS=16383");
}
