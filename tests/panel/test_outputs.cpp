// Output buttons and input lamps: painting from the status words, the click sequence, the
// SetOutput reply and the start-up choice.

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
        panel.link.req.strFunctionName = fn::GetRTStatus;
        panel.link.req.strResponse =
            QStringLiteral("<GetRTStatus>") + inner + QStringLiteral("</GetRTStatus>");
        click([&] { panel.DataArrival_GetRTStatus(); });
    }
    void setOutputAnswer(const QString& echo) {
        panel.link.req.strFunctionName = fn::SetOutput;
        panel.link.req.strResponse =
            QStringLiteral("<SetOutput><ERROR_CODE>0</ERROR_CODE><OUT_STATUS_ECHO>") + echo +
            QStringLiteral("</OUT_STATUS_ECHO></SetOutput>");
        click([&] { panel.DataArrival_SetOutput(); });
    }
    // Lets the card read the SetOutput request just issued; its body.
    QString lastSetOutputBody() {
        const int before = static_cast<int>(card.requests.size());
        runUntil([&] { return card.requests.size() > before; }, 100);
        for (int i = static_cast<int>(card.requests.size()) - 1; i >= before; --i)
            if (card.requests[i].function == QStringLiteral("SetOutput"))
                return card.requests[i].body;
        return {};
    }
    int redButtons() const {
        int n = 0;
        for (int k = 1; k <= 14; ++k)
            n += f.cmdSetOutOn[k].backColor == color::Red;
        return n;
    }
};

} // namespace

TEST_F(OutputsTest, OutputWordPaintsTheButtons) {
    statusAnswer(QStringLiteral("<OUT_STATUS>16383</OUT_STATUS>"));
    EXPECT_EQ(redButtons(), 0);
    for (int k = 1; k <= 14; ++k)
        EXPECT_EQ(f.cmdSetOutOn[k].backColor, color::InactiveBorder) << k;
    statusAnswer(QStringLiteral("<OUT_STATUS>0</OUT_STATUS>"));
    EXPECT_EQ(redButtons(), 10); // 11..14 follow the set-point word, which is 0
    statusAnswer(QStringLiteral("<OUT_STATUS>16379</OUT_STATUS><SP_STATUS>30</SP_STATUS>"));
    EXPECT_EQ(f.cmdSetOutOn[3].backColor, color::Red);
    EXPECT_EQ(f.cmdSetOutOn[2].backColor, color::InactiveBorder);
    for (int k = 11; k <= 14; ++k)
        EXPECT_EQ(f.cmdSetOutOn[k].backColor, color::Red) << k;
}

TEST_F(OutputsTest, UnchangedWordsDoNotRepaint) {
    statusAnswer(QStringLiteral("<OUT_STATUS>16383</OUT_STATUS><IN_STATUS>255</IN_STATUS>"));
    f.cmdSetOutOn[1].backColor = color::Blue; // a mark a repaint would remove
    f.lblInpNum[1].backColor = color::Blue;
    statusAnswer(QStringLiteral("<OUT_STATUS>16383</OUT_STATUS><IN_STATUS>255</IN_STATUS>"));
    EXPECT_EQ(f.cmdSetOutOn[1].backColor, color::Blue);
    EXPECT_EQ(f.lblInpNum[1].backColor, color::Blue);

    setOutputAnswer(QStringLiteral("16379"));
    EXPECT_EQ(f.cmdSetOutOn[1].backColor, color::InactiveBorder);
    f.cmdSetOutOn[1].backColor = color::Blue;
    setOutputAnswer(QStringLiteral("16379")); // the same echo again
    EXPECT_EQ(f.cmdSetOutOn[1].backColor, color::Blue);
}

TEST_F(OutputsTest, SinglesetPointLeavesButton14ToTheSetPointWord) {
    f.ChkSetPoint.value = 1; // without its click: only the painting rule is under test
    statusAnswer(QStringLiteral("<OUT_STATUS>0</OUT_STATUS><SP_STATUS>0</SP_STATUS>"));
    EXPECT_EQ(f.cmdSetOutOn[14].backColor, color::InactiveBorder);
    EXPECT_EQ(f.cmdSetOutOn[13].backColor, color::InactiveBorder);
    statusAnswer(QStringLiteral("<SP_STATUS>16</SP_STATUS>"));
    EXPECT_EQ(f.cmdSetOutOn[14].backColor, color::Red);
    EXPECT_EQ(f.cmdSetOutOn[1].backColor, color::Red);
}

TEST_F(OutputsTest, InputLampsBearTheirInputNumbers) {
    statusAnswer(QStringLiteral("<IN_STATUS>254</IN_STATUS>"));
    for (int i = 1; i <= 8; ++i)
        EXPECT_EQ(f.lblInpNum[i].backColor, i == 8 ? color::Red : color::InactiveBorder) << i;
    EXPECT_EQ(f.lblInpNum[8].caption, QStringLiteral("1"));
    EXPECT_EQ(f.lblInpNum[1].caption, QStringLiteral("8"));
    statusAnswer(QStringLiteral("<IN_STATUS>127</IN_STATUS>")); // input 8 active
    EXPECT_EQ(f.lblInpNum[1].backColor, color::Red);
    EXPECT_EQ(f.lblInpNum[8].backColor, color::InactiveBorder);
}

TEST_F(OutputsTest, ClickingOutput3SendsTheWholeWord) {
    statusAnswer(QStringLiteral("<OUT_STATUS>16383</OUT_STATUS>"));
    click([&] { panel.cmdSetOutOn_Click(3); });
    EXPECT_EQ(lastSetOutputBody(), QStringLiteral("ID=4&OUT_STATUS=16379"));
    EXPECT_EQ(panel.PendingOutBits, 0);
    EXPECT_EQ(panel.LastOutputIndex, 3);
    setOutputAnswer(QStringLiteral("16379"));
    EXPECT_EQ(panel.OutStatus, 16379);
    EXPECT_EQ(f.cmdSetOutOn[3].backColor, color::Red);
    click([&] { panel.cmdSetOutOn_Click(3); });
    EXPECT_EQ(lastSetOutputBody(), QStringLiteral("ID=4&OUT_STATUS=16383"));
}

TEST_F(OutputsTest, ReplyRestartsTheStatusRequestAndRestoresStop) {
    f.cmdStopSample.enabled = true;
    statusAnswer(QStringLiteral("<OUT_STATUS>16383</OUT_STATUS>"));
    click([&] { panel.cmdSetOutOn_Click(2); });
    EXPECT_TRUE(panel.SavedStopEnabled);
    f.cmdStopSample.enabled = false;
    setOutputAnswer(QStringLiteral("16381"));
    EXPECT_EQ(panel.link.req.strFunctionName, QStringLiteral("GetRTStatus"));
    EXPECT_TRUE(f.cmdStopSample.enabled); // neither polling nor sampling ran
    EXPECT_EQ(panel.SpAux[0], -1);
    EXPECT_TRUE(p.wire.last().startsWith(QStringLiteral("connect ")));
}

TEST_F(OutputsTest, SetPointEditFollowsTheEchoAndTipsExplainWhy) {
    setOutputAnswer(QStringLiteral("0")); // every output on
    panel.EnableSetPointEditAll();
    EXPECT_FALSE(f.ChkSetPointNew[12].enabled);
    EXPECT_TRUE(f.LBL_SP[12].visible);
    EXPECT_EQ(
        f.LBL_SP[12].toolTip,
        QStringLiteral(
            "To redefine STANDARD output 12 as SETPOINT output 2, first click the '12' button."));
    f.ChkSetPointNew[13].value = 1;
    panel.DoTips_Off_On_ChkSP_txtSP(13);
    EXPECT_EQ(f.ChkSetPointNew[13].toolTip,
              QStringLiteral("To change or redefine SETPOINT 3, first click the '13' button."));

    setOutputAnswer(QStringLiteral("16383")); // every output off
    panel.EnableSetPointEditAll();
    EXPECT_TRUE(f.ChkSetPointNew[12].enabled);
    EXPECT_FALSE(f.LBL_SP[12].visible);
    EXPECT_EQ(f.ChkSetPointNew[12].toolTip,
              QStringLiteral("Click to redefine STANDARD output 12 as SETPOINT output 2"));
    EXPECT_EQ(f.ChkSetPointNew[13].toolTip,
              QStringLiteral("Click to redefine SETPOINT output 3 as STANDARD output 13"));
}

TEST_F(OutputsTest, OperatingLockAndInputHint) {
    panel.SetOutPut_Disasable(false);
    EXPECT_FALSE(f.cmdSetOutOn[1].enabled);
    EXPECT_FALSE(f.cmdSetOutOn[14].enabled);
    EXPECT_FALSE(f.FraIntegration.enabled);
    EXPECT_FALSE(f.txtSetD2A.enabled);
    EXPECT_FALSE(f.cmdChanSwitch.enabled);
    panel.SetOutPut_Disasable(true);
    EXPECT_TRUE(f.FraChannels.enabled);

    panel.ShowHideInputsLamp(false);
    EXPECT_FALSE(f.lblInpNum[4].visible);
    EXPECT_TRUE(f.lblShowInpStatus.visible);
    EXPECT_EQ(f.lblShowInpStatus.caption,
              QStringLiteral("To show current input status click \"Weight I/O\""));
    EXPECT_EQ(f.LblSwitch.toolTip,
              QStringLiteral("In order to switch to channel #2, first click \"Stop\"and wait."));
    EXPECT_TRUE(f.TxtIP.enabled);
    panel.ShowHideInputsLamp(true);
    EXPECT_FALSE(f.LblSwitch.visible);
    EXPECT_FALSE(f.TxtIP.enabled);
}

TEST_F(OutputsTest, OutputIndexOutsideTheMasksIsARangeError) {
    click([&] { panel.cmdSetOutOn_Click(21); });
    ASSERT_EQ(p.dialogs.size(), 1u);
    EXPECT_EQ(p.dialogs[0].text, QStringLiteral("Run-time error '9': Subscript out of range"));
}
