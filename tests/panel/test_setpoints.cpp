// Set points of outputs 11..14 and the single set point of output 10: the value check, what
// goes to the card, the values read back, redefining an output and how a set point is painted.

#include "base/colors.h"
#include "panel_fixture.h"

using namespace torv;
using namespace torv::test;

namespace {

const QString NoSetPoint = "Type Value>0";

class SetPointsTest : public PanelTest {
protected:
    SetPointsTest() { layOut(); }

    // Hands the panel a status answer (the maximum load, the output word).
    void status(const QString& inner) {
        click([&] { panel.DataArrival_GetRTStatus("<GetRTStatus>" + inner + "</GetRTStatus>"); });
    }
    // Output k is a SETPOINT output showing `value`; set without its click, so nothing is sent.
    void makeSetPointOutput(int k, const QString& value) {
        f.ChkSetPointNew[k].value = 1;
        f.txtSetPointNew[k].caption = value;
        f.txtSetPointNew[k].visible = true;
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
    const QString range = "Set Point value must be [0 - 3000]";
    const QString nan = "Set Point must be a number!!!";
    status("<MAXIMUM_LOAD>3000</MAXIMUM_LOAD>");
    makeSetPointOutput(13, QString());
    // Enter sends an accepted value at once; a refused one is reported and not sent.
    auto expectCheck = [&](const QString& text, const QString& message) {
        p.dialogs.clear();
        f.focusRequest.clear();
        f.txtSetPointNew[13].visible = false;
        type(13, text);
        const int from = requestCount();
        click([&] { panel.txtSetPointNew_KeyPress(13, 13); });
        runUntil([] { return false; }, 5);
        EXPECT_EQ(p.messages(), message.isEmpty() ? QStringList() : QStringList{message}) << text;
        EXPECT_EQ(functionsFrom(from).count("SetSetpoints"), message.isEmpty() ? 1 : 0) << text;
        if (message == nan) { // the box is shown and takes the focus
            EXPECT_EQ(f.focusRequest, "txtSetPointNew_13") << text;
            EXPECT_TRUE(f.txtSetPointNew[13].visible) << text;
        }
    };
    for (const char* text : {"0", "3000", "12.5"})
        expectCheck(text, QString());
    for (const char* text : {"-0.001", "3000.001"})
        expectCheck(text, range);
    for (const char* text : {"abc", "", "  ", "12abc", "1e999", "--1", "0x10", "1.2.3", "12,5"})
        expectCheck(text, nan);
    setDecimalSeparator(QLatin1Char(','));
    expectCheck("12,5", QString());
    expectCheck("12.5", nan);
    expectCheck("3000,5", range); // read as 3000.5: above the maximum
    setDecimalSeparator(QLatin1Char('.'));
    status("<MAXIMUM_LOAD>2500.5</MAXIMUM_LOAD>");
    expectCheck("2600", "Set Point value must be [0 - 2500.5]");
}

TEST_F(SetPointsTest, EverySetSetpointsCarriesAllFourValuesAndPollingResumes) {
    startPolling();
    f.txtSetPointNew[11].caption = "100";
    f.txtSetPointNew[12].caption = NoSetPoint;
    makeSetPointOutput(13, "12.5");
    type(13, "250");
    EXPECT_EQ(f.txtSetPointNew[13].backColor, color::White);
    const int from = requestCount();
    click([&] { panel.txtSetPointNew_KeyPress(13, 13); });
    EXPECT_EQ(functionsFrom(from).count("SetSetpoints"), 1);
    EXPECT_EQ(lastBody("SetSetpoints"),
              "ID=1&SETPOINT_1=100&SETPOINT_2=-1&SETPOINT_3=250&SETPOINT_4=-1");
    EXPECT_EQ(sim.setpoint(3), 250);
    EXPECT_EQ(f.txtSetPointNew[13].backColor, color::InactiveCaptionText);
    // Output 13 is off: only the button's tip changes.
    EXPECT_EQ(f.cmdSetOutOn[13].toolTip, "Click to activate Setpoint");
    EXPECT_TRUE(pollingGoesOn());
    EXPECT_TRUE(p.dialogs.empty());
}

TEST_F(SetPointsTest, ValuesReadFromTheCard) {
    // Values that are no numbers, or above the maximum, are cleared on the card.
    status("<MAXIMUM_LOAD>3000</MAXIMUM_LOAD>");
    answerWith("GetSetpoints", "<SETPOINT_1>abc</SETPOINT_1><SETPOINT_2>1e999</SETPOINT_2>"
                               "<SETPOINT_3>-12</SETPOINT_3><SETPOINT_4>5000</SETPOINT_4>");
    click([&] { setValue(f.ChkSetPointNew[11], 1); });
    ASSERT_TRUE(runUntil([&] { return card.functions().contains("SetSetpoints"); }, 100));
    // No numeric prefix: 0; too large to hold: cleared; "-12.000" begins with "-1": cleared.
    EXPECT_EQ(boxes(), "0.000|" + NoSetPoint + "|" + NoSetPoint + "|" + NoSetPoint);
    EXPECT_EQ(lastBody("SetSetpoints"),
              "ID=1&SETPOINT_1=0.000&SETPOINT_2=-1&SETPOINT_3=-1&SETPOINT_4=-1");
    EXPECT_TRUE(p.dialogs.empty());
}

TEST_F(SetPointsTest, RedefiningAsStandardAsksAndClearsTheSetPointWhenConfirmed) {
    sim.setSetpoint(2, 150);
    startPolling();
    makeSetPointOutput(12, "150.000");
    const int from = requestCount();
    // Declined: the set point stays; the values are fetched again and show the box again.
    p.yesNoAnswers = {false, true};
    click([&] { setValue(f.ChkSetPointNew[12], 0); });
    EXPECT_EQ(p.messages(), QStringList{"Are you sure you want to redefine this\r\n"
                                        "SETPOINT output as STANDARD output?"});
    EXPECT_EQ(f.ChkSetPointNew[12].value, 1);
    EXPECT_EQ(f.txtSetPointNew[12].backColor, color::InactiveCaptionText);
    ASSERT_TRUE(runUntil([&] { return f.txtSetPointNew[12].visible; }, 100));
    EXPECT_TRUE(pollingGoesOn());
    EXPECT_FALSE(functionsFrom(from).contains("SetSetpoints"));

    // Confirmed: cleared here and on the card, without reading the values again.
    const int confirmed = requestCount();
    click([&] { setValue(f.ChkSetPointNew[12], 0); });
    EXPECT_EQ(f.txtSetPointNew[12].caption, "-1");
    EXPECT_FALSE(f.txtSetPointNew[12].visible);
    EXPECT_TRUE(f.cmdSetOutOn[12].toolTip.isEmpty());
    ASSERT_TRUE(runUntil([&] { return sim.setpoint(2) == -1; }, 100));
    EXPECT_EQ(lastBody("SetSetpoints"),
              "ID=1&SETPOINT_1=-1&SETPOINT_2=-1&SETPOINT_3=-1&SETPOINT_4=-1");
    EXPECT_TRUE(pollingGoesOn());
    EXPECT_FALSE(functionsFrom(confirmed).contains("GetSetpoints"));
}

TEST_F(SetPointsTest, StartUpReadsTheValuesAndPaintsEachOutput) {
    sim.setSetpoint(1, 100);
    sim.setSetpoint(3, 10); // below the weight: the card drives output 13 on
    status("<OUT_STATUS>12287</OUT_STATUS>");
    click([&] { panel.Form_Load(); });
    runUntil([] { return false; }, 50);

    EXPECT_EQ(f.ChkSetPointNew[11].value + f.ChkSetPointNew[13].value, 2);
    EXPECT_EQ(f.ChkSetPointNew[12].value + f.ChkSetPointNew[14].value, 0);
    EXPECT_EQ(visibleOf({&f.txtSetPointNew[11], &f.txtSetPointNew[12], &f.txtSetPointNew[14]}),
              "100");
    EXPECT_EQ(f.txtSetPointNew[11].caption, "100.000");
    EXPECT_EQ(f.txtSetPointNew[11].backColor, color::InactiveCaptionText);
    EXPECT_EQ(f.cmdSetOutOn[11].toolTip, "Click to activate Setpoint");
    EXPECT_EQ(f.txtSetPointNew[13].foreColor, color::Red);
    EXPECT_TRUE(f.txtSetPointNew[13].bold);
    EXPECT_EQ(f.cmdSetOutOn[13].toolTip, "Click to deactivate Setpoint");
}

TEST_F(SetPointsTest, EditedValueGoesOutBeforeTheOutputIsSwitched) {
    // Not polling: the output command overtaken by the set-point write must still go out.
    status("<MAXIMUM_LOAD>3000</MAXIMUM_LOAD><OUT_STATUS>16383</OUT_STATUS>");
    makeSetPointOutput(12, "150.000");
    type(12, "200");
    click([&] { panel.cmdSetOutOn_Click(12); });
    ASSERT_TRUE(runUntil([&] { return card.functions().contains("SetOutput"); }, 500));
    EXPECT_EQ(card.functions().indexOf("SetSetpoints"), 0);
    EXPECT_EQ(lastBody("SetSetpoints"),
              "ID=1&SETPOINT_1=-1&SETPOINT_2=200&SETPOINT_3=-1&SETPOINT_4=-1");
    EXPECT_EQ(lastBody("SetOutput"), "ID=4&OUT_STATUS=14335");
    EXPECT_EQ(sim.setpoint(2), 200);
    EXPECT_EQ(sim.outputWord(), 14335);
}

TEST_F(SetPointsTest, SingleSetPointBlocksTheChannelSwitchAndDrivesOutput10) {
    status("<OUT_STATUS>0</OUT_STATUS>"); // every output on
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
    // Output 10 is switched off.
    ASSERT_TRUE(runUntil([&] { return !card.requests.empty(); }, 100));
    EXPECT_EQ(card.requests[0].body, "ID=4&OUT_STATUS=512");

    // Editing the value switches output 10 off; Enter acts as a click on button 10.
    status("<OUT_STATUS>15871</OUT_STATUS>"); // output 10 on
    click([&] { panel.txtSetPoint_Change(); });
    ASSERT_TRUE(runUntil([&] { return lastBody("SetOutput") == "ID=4&OUT_STATUS=16383"; }, 100));
    status("<OUT_STATUS>16383</OUT_STATUS>");
    click([&] { panel.txtSetPoint_KeyPress(13); });
    ASSERT_TRUE(runUntil([&] { return lastBody("SetOutput") == "ID=4&OUT_STATUS=15871"; }, 100));
}
