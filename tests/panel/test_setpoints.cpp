// Set points of outputs 11..14 and the single set point of output 10: the value check, what
// goes to the card, the values read back, redefining an output and how a set point is painted.

#include "base/colors.h"
#include "link/catalogue.h"
#include "panel_fixture.h"

using namespace torv;
using namespace torv::test;

namespace {

const QString NoSetPoint = "Type Value>0";

class SetPointsTest : public PanelTest {
protected:
    SetPointsTest() { layOut(); }

    // Output k is a SETPOINT output showing `value`; set without its click, so nothing is sent.
    void makeSetPointOutput(int k, const QString& value) {
        f.ChkSetPointNew[k].value = 1;
        f.txtSetPointNew[k].caption = value;
        f.txtSetPointNew[k].visible = true;
    }
    bool check(int k, const QString& text) {
        f.txtSetPointNew[k].caption = text;
        bool ok = false;
        click([&] { panel.DoSetPointTest(k, ok); });
        return ok;
    }
    // The operator types `text` into box k.
    void type(int k, const QString& text) {
        f.txtSetPointNew[k].caption = text;
        click([&] { panel.txtSetPointNew_Change(k); });
    }
    QString boxes() const {
        return captionsOf({&f.txtSetPointNew[11], &f.txtSetPointNew[12], &f.txtSetPointNew[13],
                           &f.txtSetPointNew[14]});
    }
};

} // namespace

TEST_F(SetPointsTest, ValueCheckBoundsNumbersAndTheLocale) {
    const char* range = "Set Point value must be [0 - 3000]";
    const char* nan = "Set Point must be a number!!!";
    makeSetPointOutput(13, QString());
    panel.MaximumLoad = 3000;
    QString accepted;
    auto expectCheck = [&](const char* text, const char* message) { // no message: accepted
        p.dialogs.clear();
        f.focusRequest.clear();
        f.txtSetPointNew[13].visible = false;
        const bool ok = check(13, text);
        EXPECT_EQ(ok, message == nullptr) << text;
        EXPECT_EQ(p.messages(), message ? QStringList{message} : QStringList()) << text;
        if (ok) accepted = text;
        EXPECT_EQ(panel.LastAcceptedSetPoint, accepted) << text;
        if (message == nan) { // the box is shown and takes the focus
            EXPECT_EQ(f.focusRequest, "txtSetPointNew_13") << text;
            EXPECT_TRUE(f.txtSetPointNew[13].visible) << text;
        }
    };
    for (const char* text : {"0", "3000", "12.5"})
        expectCheck(text, nullptr);
    for (const char* text : {"-0.001", "3000.001"})
        expectCheck(text, range);
    for (const char* text : {"abc", "", "  ", "12abc", "1e999", "--1", "0x10", "1.2.3", "12,5"})
        expectCheck(text, nan);
    setDecimalSeparator(QLatin1Char(','));
    expectCheck("12,5", nullptr);
    expectCheck("12.5", nan);
    expectCheck("3000,5", range); // read as 3000.5: above the maximum
    setDecimalSeparator(QLatin1Char('.'));
    panel.MaximumLoad = 2500.5;
    expectCheck("2600", "Set Point value must be [0 - 2500.5]");

    // A disabled box is neither shown nor focused.
    f.txtSetPointNew[13].enabled = false;
    f.txtSetPointNew[13].visible = false;
    f.focusRequest.clear();
    EXPECT_FALSE(check(13, "x"));
    EXPECT_FALSE(f.txtSetPointNew[13].visible);
    EXPECT_TRUE(f.focusRequest.isEmpty());

    // STANDARD outputs and outputs below 11 are never held back by a set point.
    p.dialogs.clear();
    EXPECT_TRUE(check(14, "abc"));
    bool ok = false;
    click([&] { panel.DoSetPointTest(10, ok); });
    EXPECT_TRUE(ok);
    EXPECT_TRUE(p.dialogs.empty());
}

TEST_F(SetPointsTest, EverySetSetpointsCarriesAllFourValues) {
    f.txtSetPointNew[11].caption = "100";
    f.txtSetPointNew[12].caption = NoSetPoint;
    f.txtSetPointNew[13].caption = "12.5";
    f.txtSetPointNew[14].caption = QString();
    QString body;
    panel.GetParamForSetSetPoints(body);
    EXPECT_EQ(body, "ID=1&SETPOINT_1=100&SETPOINT_2=-1&SETPOINT_3=12.5&SETPOINT_4=-1");

    // Enter in box 13 sends all four, then polling resumes with the request it had.
    startPolling();
    makeSetPointOutput(13, "12.5");
    type(13, "250");
    EXPECT_EQ(f.txtSetPointNew[13].backColor, color::White);
    EXPECT_EQ(f.txtSetPointNew[13].foreColor, color::Black);
    const int from = requestCount();
    click([&] { panel.txtSetPointNew_KeyPress(13, 13); });
    EXPECT_EQ(functionsFrom(from).count("SetSetpoints"), 1);
    EXPECT_EQ(lastBody("SetSetpoints"),
              "ID=1&SETPOINT_1=100&SETPOINT_2=-1&SETPOINT_3=250&SETPOINT_4=-1");
    EXPECT_EQ(f.txtSetPointNew[13].backColor, color::InactiveCaptionText);
    // Output 13 is off: only the button's tip changes.
    EXPECT_EQ(f.cmdSetOutOn[13].toolTip, "Click to activate Setpoint");
    EXPECT_TRUE(pollingGoesOn());
    EXPECT_TRUE(p.dialogs.empty());

    // A refused value is neither sent nor saved, and stays marked as edited.
    type(13, "4000");
    click([&] { panel.txtSetPointNew_KeyPress(13, 13); });
    EXPECT_EQ(p.messages(), QStringList{"Set Point value must be [0 - 3000]"});
    EXPECT_EQ(f.txtSetPointNew[13].backColor, color::White);
    runUntil([] { return false; }, 20);
    EXPECT_EQ(functionsFrom(from).count("SetSetpoints"), 1);
}

TEST_F(SetPointsTest, EscapeRestoresTheTextTheBoxHadOnFocus) {
    f.txtSetPointNew[14].caption = "120.000";
    click([&] { panel.txtSetPointNew_GotFocus(14); });
    type(14, "99x");
    EXPECT_EQ(f.ChkSetPointNew[14].foreColor, color::Black);
    click([&] { panel.txtSetPointNew_KeyPress(14, 27); });
    EXPECT_EQ(f.txtSetPointNew[14].caption, "120.000");
    click([&] { panel.txtSetPointNew_KeyPress(14, 65); }); // any other key does nothing
    EXPECT_EQ(f.txtSetPointNew[14].caption, "120.000");
    EXPECT_TRUE(card.requests.empty());
}

TEST_F(SetPointsTest, CheckingTheBoxFetchesTheValuesAndResumesPolling) {
    state.setpoints[1] = "150";
    startPolling();
    const int from = requestCount();
    click([&] { setValue(f.ChkSetPointNew[12], 1); });
    EXPECT_EQ(f.txtSetPointNew[12].toolTip, "Type new Setpoint and press <Enter> to save.");
    EXPECT_EQ(f.ChkSetPointNew[12].toolTip,
              "Click to redefine SETPOINT output 2 as STANDARD output 12");
    ASSERT_TRUE(runUntil([&] { return panel.SetpointsArrived; }, 100));
    EXPECT_EQ(lastBody("GetSetpoints"), "ID=1");
    EXPECT_EQ(boxes(), NoSetPoint + "|150.000|" + NoSetPoint + "|" + NoSetPoint);
    // Only the box of the output in hand is shown.
    EXPECT_EQ(visibleOf({&f.txtSetPointNew[11], &f.txtSetPointNew[12]}), "01");
    EXPECT_TRUE(pollingGoesOn());
    EXPECT_EQ(functionsFrom(from).count("GetSetpoints"), 1);
}

TEST_F(SetPointsTest, BeforeTheMaximumIsKnownNothingIsCleared) {
    state.setpoints[0] = "5000";
    f.LbLMaxWGTdata.caption.clear();
    click([&] { setValue(f.ChkSetPointNew[11], 1); });
    ASSERT_TRUE(runUntil([&] { return panel.SetpointsArrived; }, 100));
    runUntil([] { return false; }, 20);
    EXPECT_EQ(f.txtSetPointNew[11].caption, "5000.000");
    EXPECT_EQ(card.functions(), QStringList{"GetSetpoints"});
}

TEST_F(SetPointsTest, ValuesReadFromTheCard) {
    answerWith("GetSetpoints", "<SETPOINT_1>10</SETPOINT_1><SETPOINT_2>-1</SETPOINT_2>"
                               "<SETPOINT_4>40.25</SETPOINT_4>");
    f.LbLMaxWGTdata.caption = "3000";
    f.txtSetPointNew[13].caption = "777.000";
    click([&] { setValue(f.ChkSetPointNew[13], 1); });
    ASSERT_TRUE(runUntil([&] { return panel.SetpointsArrived; }, 100));
    EXPECT_EQ(boxes(), "10.000|" + NoSetPoint + "|777.000|40.250");

    // An answer with none of them changes nothing, and says nothing arrived.
    panel.SetpointsArrived = false;
    answerWith("GetSetpoints", QString());
    click([&] { setValue(f.ChkSetPointNew[14], 1); });
    runUntil([] { return false; }, 50);
    EXPECT_FALSE(panel.SetpointsArrived);
    EXPECT_EQ(f.txtSetPointNew[14].caption, "40.250");
    EXPECT_TRUE(p.dialogs.empty());

    // Values that are no numbers.
    answerWith("GetSetpoints", "<SETPOINT_1>abc</SETPOINT_1><SETPOINT_2>1e999</SETPOINT_2>"
                               "<SETPOINT_3>-12</SETPOINT_3><SETPOINT_4>-2</SETPOINT_4>");
    f.ChkSetPointNew[11].value = 0;
    click([&] { setValue(f.ChkSetPointNew[11], 1); });
    ASSERT_TRUE(runUntil([&] { return card.functions().contains("SetSetpoints"); }, 100));
    // No numeric prefix: 0; too large to hold: cleared; "-12.000" begins with "-1": cleared.
    EXPECT_EQ(boxes(), "0.000|" + NoSetPoint + "|" + NoSetPoint + "|-2.000");
    EXPECT_EQ(lastBody("SetSetpoints"),
              "ID=1&SETPOINT_1=0.000&SETPOINT_2=-1&SETPOINT_3=-1&SETPOINT_4=-2.000");
    EXPECT_TRUE(p.dialogs.empty());

    // With a decimal comma a value that is no number asks whether to go on.
    setDecimalSeparator(QLatin1Char(','));
    answerWith("GetSetpoints", "<SETPOINT_1>abc</SETPOINT_1><SETPOINT_2>12.5</SETPOINT_2>");
    p.yesNoAnswers = {true};
    f.ChkSetPointNew[12].value = 0;
    click([&] { setValue(f.ChkSetPointNew[12], 1); });
    runUntil([&] { return !p.dialogs.empty(); }, 100);
    EXPECT_EQ(p.messages(), QStringList{"Not Number. Yes - continue. "});
    runUntil([] { return false; }, 20);
    EXPECT_EQ(f.txtSetPointNew[11].caption, "0,000");
    EXPECT_EQ(f.txtSetPointNew[12].caption, "12,000"); // decimals are dropped
}

TEST_F(SetPointsTest, RedefiningAsStandardAsksAndClearsTheSetPointWhenConfirmed) {
    state.setpoints[1] = "150";
    startPolling();
    makeSetPointOutput(12, "150.000");
    const int from = requestCount();
    // Declined: the set point stays; the values are fetched again and show the box again.
    p.yesNoAnswers = {false, true};
    click([&] { setValue(f.ChkSetPointNew[12], 0); });
    EXPECT_EQ(p.dialogs[0].kind, DialogRecord::YesNo);
    EXPECT_EQ(p.messages(), QStringList{"Are you sure you want to redefine this\r\n"
                                        "SETPOINT output as STANDARD output?"});
    EXPECT_EQ(f.ChkSetPointNew[12].value, 1);
    EXPECT_EQ(f.txtSetPointNew[12].backColor, color::InactiveCaptionText);
    EXPECT_FALSE(f.txtSetPointNew[12].visible);
    ASSERT_TRUE(runUntil([&] { return f.txtSetPointNew[12].visible; }, 100));
    EXPECT_EQ(f.txtSetPointNew[12].caption, "150.000");
    EXPECT_TRUE(pollingGoesOn());
    EXPECT_FALSE(functionsFrom(from).contains("SetSetpoints"));

    // Confirmed: cleared here and on the card, without reading the values again.
    f.txtSetPointNew[12].bold = true;
    const int confirmed = requestCount();
    click([&] { setValue(f.ChkSetPointNew[12], 0); });
    EXPECT_EQ(p.dialogs.size(), 2u);
    EXPECT_EQ(f.txtSetPointNew[12].caption, "-1");
    EXPECT_FALSE(f.txtSetPointNew[12].visible);
    EXPECT_FALSE(f.txtSetPointNew[12].bold);
    EXPECT_TRUE(f.cmdSetOutOn[12].toolTip.isEmpty());
    EXPECT_EQ(f.ChkSetPointNew[12].toolTip,
              "Click to redefine STANDARD output 12 as SETPOINT output 2");
    ASSERT_TRUE(runUntil([&] { return state.setpoints[1] == "-1"; }, 100));
    EXPECT_EQ(lastBody("SetSetpoints"),
              "ID=1&SETPOINT_1=-1&SETPOINT_2=-1&SETPOINT_3=-1&SETPOINT_4=-1");
    EXPECT_TRUE(pollingGoesOn());
    EXPECT_FALSE(functionsFrom(confirmed).contains("GetSetpoints"));

    // An output without a value is redefined without asking or sending.
    makeSetPointOutput(14, NoSetPoint);
    const int quiet = requestCount();
    p.dialogs.clear();
    click([&] { setValue(f.ChkSetPointNew[14], 0); });
    EXPECT_TRUE(p.dialogs.empty());
    EXPECT_FALSE(f.txtSetPointNew[14].visible);
    runUntil([] { return false; }, 20);
    EXPECT_TRUE(functionsFrom(quiet).filter("Setpoints").isEmpty());
}

TEST_F(SetPointsTest, ExpectedStateIsPaintedFromTheOutputBitAndTheSentMark) {
    struct Row {
        bool outputOff;
        Int16 sendState;
        bool active;    // red and bold, hint label shown
        bool unpainted; // only the tip changes
    };
    const Row rows[] = {
        {true, 0, true, false},
        {true, -1, false, true},
        {false, -1, true, false},
        {false, 0, false, false},
    };
    const int k = 13;
    Control& box = f.txtSetPointNew[k];
    for (const Row& row : rows) {
        box.foreColor = color::Blue; // marks what the painting leaves alone
        box.bold = false;
        f.LBL_SP[k].visible = false;
        f.LBL_SP[k].height = 1;
        f.cmdSetOutOn[k].toolTip.clear();
        // The table follows the word the card last echoed, whatever the status said since.
        panel.OutStatusEcho = static_cast<Int16>(row.outputOff ? 16383 : 16383 & ~(1 << 12));
        panel.OutStatus = static_cast<Int16>(row.outputOff ? 16383 & ~(1 << 12) : 16383);
        panel.SpSendState[k - 11] = row.sendState;
        click([&] { panel.Show_SP_status(k); });

        EXPECT_EQ(f.cmdSetOutOn[k].toolTip,
                  row.active ? "Click to deactivate Setpoint" : "Click to activate Setpoint")
            << row.outputOff << row.sendState;
        if (row.unpainted) {
            EXPECT_EQ(box.foreColor, color::Blue);
        } else {
            EXPECT_EQ(box.foreColor, row.active ? color::Red : color::Black);
            EXPECT_EQ(box.bold, row.active);
            EXPECT_EQ(f.LBL_SP[k].visible, row.active);
        }
        EXPECT_EQ(f.ChkSetPointNew[k].foreColor, box.foreColor);
        EXPECT_EQ(panel.SpSendState[k - 11], 0);
        EXPECT_EQ(f.LBL_SP[k].height, f.ChkSetPointNew[k].height); // same top: same height
    }
    EXPECT_THROW(panel.Show_SP_status(15), RuntimeError);
}

TEST_F(SetPointsTest, StartUpReadsTheValuesAndPaintsEachOutput) {
    state.setpoints[0] = "100";
    state.setpoints[2] = "250.5";
    panel.OutStatus = static_cast<Int16>(16383 & ~(1 << 12)); // output 13 on
    click([&] { panel.InitSetPoint_11_14(); });
    ASSERT_TRUE(panel.SetpointsArrived);

    EXPECT_EQ(f.ChkSetPointNew[11].value + f.ChkSetPointNew[13].value, 2);
    EXPECT_EQ(f.ChkSetPointNew[12].value + f.ChkSetPointNew[14].value, 0);
    EXPECT_EQ(visibleOf({&f.txtSetPointNew[11], &f.txtSetPointNew[12], &f.txtSetPointNew[14]}),
              "100");
    EXPECT_EQ(f.txtSetPointNew[11].caption, "100.000");
    EXPECT_EQ(f.txtSetPointNew[11].backColor, color::InactiveCaptionText);
    EXPECT_EQ(f.txtSetPointNew[11].foreColor, color::Black);
    EXPECT_EQ(f.cmdSetOutOn[11].toolTip, "Click to activate Setpoint");
    EXPECT_EQ(f.txtSetPointNew[13].foreColor, color::Red);
    EXPECT_TRUE(f.txtSetPointNew[13].bold);
    EXPECT_EQ(f.ChkSetPointNew[13].foreColor, color::Red);
    EXPECT_EQ(f.cmdSetOutOn[13].toolTip, "Click to deactivate Setpoint");

    for (int k = 11; k <= 14; ++k) {
        const Control& label = f.LBL_SP[k];
        EXPECT_FALSE(label.visible) << k;
        EXPECT_EQ(label.foreColor, color::Red);
        EXPECT_EQ(label.top, f.ChkSetPointNew[k].top);
        EXPECT_EQ(label.height, f.ChkSetPointNew[k].height);
        EXPECT_EQ(label.left, f.cmdSetOutOn[k].left);
        EXPECT_GT(label.height, 0);
        // The check box lies below its button, the value box below the check box.
        EXPECT_GT(f.ChkSetPointNew[k].top, f.cmdSetOutOn[k].top);
        EXPECT_GT(f.txtSetPointNew[k].top, f.ChkSetPointNew[k].top);
    }
    // Buttons 11..14 were repainted from the set-point word.
    EXPECT_EQ(f.cmdSetOutOn[13].backColor, color::InactiveBorder);
}

TEST_F(SetPointsTest, StartUpWithASilentCardKeepsTheDesignedControls) {
    card.respond = [](const CardRequest&) { return QString(); };
    const std::uint32_t before = p.now;
    click([&] { panel.InitSetPoint_11_14(); });
    EXPECT_GE(p.now - before, 2000u);
    EXPECT_LT(p.now - before, 2100u);
    EXPECT_FALSE(panel.SetpointsArrived);
    for (int k = 11; k <= 14; ++k) {
        EXPECT_EQ(f.ChkSetPointNew[k].value, 0);
        EXPECT_FALSE(f.txtSetPointNew[k].visible);
    }
}

TEST_F(SetPointsTest, EditedValueGoesOutBeforeTheOutputIsSwitched) {
    // Not polling: the output command overtaken by the set-point write must still go out.
    panel.OutStatus = 16383;
    panel.MaximumLoad = 3000;
    makeSetPointOutput(12, "150.000");
    type(12, "200");
    click([&] { panel.cmdSetOutOn_Click(12); });
    ASSERT_TRUE(runUntil([&] { return card.functions().contains("SetOutput"); }, 500));
    EXPECT_EQ(card.functions().indexOf("SetSetpoints"), 0);
    EXPECT_EQ(lastBody("SetSetpoints"),
              "ID=1&SETPOINT_1=-1&SETPOINT_2=200&SETPOINT_3=-1&SETPOINT_4=-1");
    EXPECT_EQ(lastBody("SetOutput"), "ID=4&OUT_STATUS=14335");
    EXPECT_EQ(state.setpoints[1], "200");
    EXPECT_EQ(state.outStatus, "14335");
}

TEST_F(SetPointsTest, SingleSetPointBlocksTheChannelSwitchAndDrivesOutput10) {
    panel.OutStatus = 0; // every output on
    auto hint = [&] { return visibleOf({&f.ShaSetPoint, &f.txtSetPoint, &f.LblSwitch}); };
    click([&] { setValue(f.ChkSetPoint, 1); });
    EXPECT_FALSE(f.cmdChanSwitch.enabled);
    EXPECT_EQ(hint(), "111");
    EXPECT_EQ(f.LblSwitch.toolTip,
              "In order to switch to channel #2, first uncheck \"Set Point\".");
    EXPECT_TRUE(card.requests.empty());

    click([&] { setValue(f.ChkSetPoint, 0); });
    EXPECT_TRUE(f.cmdChanSwitch.enabled);
    EXPECT_EQ(hint(), "000");
    EXPECT_TRUE(f.LblSwitch.toolTip.isEmpty());
    // Output 10 is switched off.
    ASSERT_TRUE(runUntil([&] { return !card.requests.empty(); }, 100));
    EXPECT_EQ(card.requests[0].body, "ID=4&OUT_STATUS=512");
    ASSERT_TRUE(runUntil([&] { return panel.OutStatus == 512; }, 400));

    // Editing the value switches output 10 off; Enter acts as a click on button 10.
    panel.OutStatus = 16383 & ~(1 << 9); // output 10 on
    click([&] { panel.txtSetPoint_Change(); });
    ASSERT_TRUE(runUntil([&] { return requestCount() == 2; }, 100));
    EXPECT_EQ(lastBody("SetOutput"), "ID=4&OUT_STATUS=16383");
    ASSERT_TRUE(runUntil([&] { return panel.OutStatus == 16383; }, 400));
    click([&] { panel.txtSetPoint_KeyPress(13); });
    EXPECT_EQ(panel.LastOutputIndex, 10);
    ASSERT_TRUE(runUntil([&] { return requestCount() == 3; }, 100));
    EXPECT_EQ(lastBody("SetOutput"), "ID=4&OUT_STATUS=15871");
}

TEST_F(SetPointsTest, TwoBoxesCheckedAtOnceStillResumePolling) {
    startPolling();
    click([&] { setValue(f.ChkSetPointNew[11], 1); });
    click([&] { setValue(f.ChkSetPointNew[12], 1); }); // before the first reply
    ASSERT_TRUE(runUntil([&] { return panel.SetpointsArrived; }, 100));
    EXPECT_TRUE(pollingGoesOn());
    EXPECT_EQ(panel.link.req.strPrevFunctionName, "GetRTStatus");
}
