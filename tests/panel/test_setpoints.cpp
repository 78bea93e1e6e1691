// Set points of outputs 11..14 and the single set point of output 10: the value check, what
// goes to the card, the values read back, redefining an output and how a set point is painted.

#include "base/colors.h"
#include "link/catalogue.h"
#include "panel_fixture.h"

using namespace torv;
using namespace torv::test;

namespace {

const QString NoSetPoint = QStringLiteral("Type Value>0");

class SetPointsTest : public PanelTest {
protected:
    SetPointsTest() { layOut(); }

    // Starts status polling and lets the first answer arrive.
    void startPolling() {
        click([&] { panel.cmdWeight_Click(); });
        ASSERT_TRUE(runUntil([&] { return !f.LbLMaxWGTdata.caption.isEmpty(); }, 100));
    }
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
    // The functions the card reads from request `from` on.
    QStringList functionsFrom(int from) const { return card.functions().mid(from); }
    // The body of the last request of `function`.
    QString lastBody(const QString& function) const {
        for (int i = static_cast<int>(card.requests.size()) - 1; i >= 0; --i)
            if (card.requests[i].function == function) return card.requests[i].body;
        return QStringLiteral("<none>");
    }
    // True when polling goes on: two more status requests reach the card.
    bool pollingGoesOn() {
        const int from = static_cast<int>(card.requests.size());
        runUntil([&] { return functionsFrom(from).count(QStringLiteral("GetRTStatus")) >= 2; },
                 200);
        const QStringList later = functionsFrom(from);
        return later.count(QStringLiteral("GetRTStatus")) >= 2 &&
               later.last() == QStringLiteral("GetRTStatus") &&
               card.requests.last().body == QStringLiteral("ID=4");
    }
    // The card's answer to GetSetpoints with the given inner text.
    void answerGetSetpointsWith(const QString& inner) {
        card.respond = [this, inner](const CardRequest& r) {
            if (r.function == QStringLiteral("GetSetpoints")) return cardAnswer(r.function, inner);
            return standardAnswer(r);
        };
    }
};

} // namespace

TEST_F(SetPointsTest, BothBoundsAreInclusive) {
    panel.MaximumLoad = 3000;
    makeSetPointOutput(12, QString());
    EXPECT_TRUE(check(12, QStringLiteral("0")));
    EXPECT_TRUE(check(12, QStringLiteral("3000")));
    EXPECT_EQ(panel.LastAcceptedSetPoint, QStringLiteral("3000"));
    EXPECT_TRUE(p.dialogs.empty());

    EXPECT_FALSE(check(12, QStringLiteral("-0.001")));
    EXPECT_EQ(p.lastMessage(), QStringLiteral("Set Point value must be [0 - 3000]"));
    EXPECT_FALSE(check(12, QStringLiteral("3000.001")));
    EXPECT_EQ(panel.LastAcceptedSetPoint, QStringLiteral("3000"));

    panel.MaximumLoad = 2500.5;
    EXPECT_FALSE(check(12, QStringLiteral("2600")));
    EXPECT_EQ(p.lastMessage(), QStringLiteral("Set Point value must be [0 - 2500.5]"));
}

TEST_F(SetPointsTest, TextThatIsNoNumberGetsTheMessageAndTheFocus) {
    panel.MaximumLoad = 3000;
    makeSetPointOutput(13, QString());
    for (const char* text : {"abc", "", "  ", "12abc", "1e999", "--1", "0x10", "1.2.3"}) {
        p.dialogs.clear();
        f.focusRequest.clear();
        f.txtSetPointNew[13].visible = false;
        EXPECT_FALSE(check(13, QLatin1String(text))) << text;
        ASSERT_EQ(p.dialogs.size(), 1u) << text;
        EXPECT_EQ(p.lastMessage(), QStringLiteral("Set Point must be a number!!!"));
        EXPECT_EQ(f.focusRequest, QStringLiteral("txtSetPointNew_13"));
        EXPECT_TRUE(f.txtSetPointNew[13].visible);
    }
    // A disabled box is neither shown nor focused.
    f.txtSetPointNew[13].enabled = false;
    f.txtSetPointNew[13].visible = false;
    f.focusRequest.clear();
    EXPECT_FALSE(check(13, QStringLiteral("x")));
    EXPECT_FALSE(f.txtSetPointNew[13].visible);
    EXPECT_TRUE(f.focusRequest.isEmpty());

    // STANDARD outputs and outputs below 11 are never held back by a set point.
    p.dialogs.clear();
    EXPECT_TRUE(check(14, QStringLiteral("abc")));
    bool ok = false;
    click([&] { panel.DoSetPointTest(10, ok); });
    EXPECT_TRUE(ok);
    EXPECT_TRUE(p.dialogs.empty());
}

TEST_F(SetPointsTest, DecimalCommaIsANumberOnlyWhereTheLocaleUsesIt) {
    panel.MaximumLoad = 3000;
    makeSetPointOutput(11, QString());
    setDecimalSeparator(QLatin1Char(','));
    EXPECT_TRUE(check(11, QStringLiteral("12,5")));
    EXPECT_FALSE(check(11, QStringLiteral("12.5")));
    EXPECT_FALSE(check(11, QStringLiteral("3000,5"))); // read as 3000.5: above the maximum
    EXPECT_EQ(p.lastMessage(), QStringLiteral("Set Point value must be [0 - 3000]"));
    setDecimalSeparator(QLatin1Char('.'));
    EXPECT_FALSE(check(11, QStringLiteral("12,5")));
    EXPECT_EQ(p.lastMessage(), QStringLiteral("Set Point must be a number!!!"));
    EXPECT_TRUE(check(11, QStringLiteral("12.5")));
}

TEST_F(SetPointsTest, EverySetSetpointsCarriesAllFourValues) {
    f.txtSetPointNew[11].caption = QStringLiteral("100");
    f.txtSetPointNew[12].caption = NoSetPoint;
    f.txtSetPointNew[13].caption = QStringLiteral("12.5");
    f.txtSetPointNew[14].caption = QString();
    QString body;
    panel.GetParamForSetSetPoints(body);
    EXPECT_EQ(body,
              QStringLiteral("ID=1&SETPOINT_1=100&SETPOINT_2=-1&SETPOINT_3=12.5&SETPOINT_4=-1"));

    // Enter in box 13 sends all four, then polling resumes with the request it had.
    startPolling();
    makeSetPointOutput(13, QStringLiteral("12.5"));
    type(13, QStringLiteral("250"));
    EXPECT_EQ(f.txtSetPointNew[13].backColor, color::White);
    EXPECT_EQ(f.txtSetPointNew[13].foreColor, color::Black);
    const int from = static_cast<int>(card.requests.size());
    click([&] { panel.txtSetPointNew_KeyPress(13, 13); });
    EXPECT_EQ(functionsFrom(from).count(QStringLiteral("SetSetpoints")), 1);
    EXPECT_EQ(lastBody(QStringLiteral("SetSetpoints")),
              QStringLiteral("ID=1&SETPOINT_1=100&SETPOINT_2=-1&SETPOINT_3=250&SETPOINT_4=-1"));
    EXPECT_EQ(state.setpoints[2], QStringLiteral("250"));
    EXPECT_EQ(f.txtSetPointNew[13].backColor, color::InactiveCaptionText);
    EXPECT_EQ(panel.SpAux[2], 0);
    // Output 13 is off: only the button's tip changes, and the sent mark is settled.
    EXPECT_EQ(f.cmdSetOutOn[13].toolTip, QStringLiteral("Click to activate Setpoint"));
    EXPECT_EQ(panel.SpSendState[2], 0);
    EXPECT_TRUE(pollingGoesOn());
    EXPECT_TRUE(p.dialogs.empty());
}

TEST_F(SetPointsTest, RefusedValueIsNeitherSentNorSaved) {
    startPolling();
    makeSetPointOutput(12, QString());
    type(12, QStringLiteral("4000"));
    const int from = static_cast<int>(card.requests.size());
    click([&] { panel.txtSetPointNew_KeyPress(12, 13); });
    EXPECT_EQ(p.lastMessage(), QStringLiteral("Set Point value must be [0 - 3000]"));
    EXPECT_EQ(f.txtSetPointNew[12].backColor, color::White); // still marked as edited
    runUntil([] { return false; }, 20);
    EXPECT_FALSE(functionsFrom(from).contains(QStringLiteral("SetSetpoints")));
}

TEST_F(SetPointsTest, EscapeRestoresTheTextTheBoxHadOnFocus) {
    f.txtSetPointNew[14].caption = QStringLiteral("120.000");
    click([&] { panel.txtSetPointNew_GotFocus(14); });
    type(14, QStringLiteral("99x"));
    EXPECT_EQ(f.ChkSetPointNew[14].foreColor, color::Black);
    click([&] { panel.txtSetPointNew_KeyPress(14, 27); });
    EXPECT_EQ(f.txtSetPointNew[14].caption, QStringLiteral("120.000"));
    click([&] { panel.txtSetPointNew_KeyPress(14, 65); }); // any other key does nothing
    EXPECT_EQ(f.txtSetPointNew[14].caption, QStringLiteral("120.000"));
    EXPECT_TRUE(card.requests.empty());
}

TEST_F(SetPointsTest, CheckingTheBoxFetchesTheValuesAndResumesPolling) {
    state.setpoints[1] = QStringLiteral("150");
    startPolling();
    const int from = static_cast<int>(card.requests.size());
    click([&] { setValue(f.ChkSetPointNew[12], 1); });
    EXPECT_EQ(panel.LastOutputIndex, 12);
    EXPECT_EQ(f.txtSetPointNew[12].toolTip,
              QStringLiteral("Type new Setpoint and press <Enter> to save."));
    EXPECT_EQ(f.ChkSetPointNew[12].toolTip,
              QStringLiteral("Click to redefine SETPOINT output 2 as STANDARD output 12"));
    ASSERT_TRUE(runUntil([&] { return panel.SetpointsArrived; }, 100));
    EXPECT_EQ(lastBody(QStringLiteral("GetSetpoints")), QStringLiteral("ID=1"));
    EXPECT_EQ(f.txtSetPointNew[12].caption, QStringLiteral("150.000"));
    EXPECT_TRUE(f.txtSetPointNew[12].visible);
    EXPECT_EQ(f.txtSetPointNew[11].caption, NoSetPoint);
    EXPECT_FALSE(f.txtSetPointNew[11].visible); // only the box of the output in hand is shown
    EXPECT_TRUE(pollingGoesOn());
    EXPECT_EQ(functionsFrom(from).count(QStringLiteral("GetSetpoints")), 1);
}

TEST_F(SetPointsTest, ValueAboveTheMaximumLoadIsClearedOnTheCard) {
    state.setpoints[1] = QStringLiteral("5000");
    state.setpoints[2] = QStringLiteral("2500");
    startPolling();
    ASSERT_EQ(f.LbLMaxWGTdata.caption, QStringLiteral("3000"));
    const int from = static_cast<int>(card.requests.size());
    click([&] { setValue(f.ChkSetPointNew[12], 1); });
    ASSERT_TRUE(runUntil(
        [&] { return functionsFrom(from).contains(QStringLiteral("SetSetpoints")); }, 100));
    EXPECT_EQ(f.txtSetPointNew[12].caption, NoSetPoint);
    EXPECT_EQ(f.txtSetPointNew[12].foreColor, color::Black);
    EXPECT_EQ(f.txtSetPointNew[13].caption, QStringLiteral("2500.000"));
    EXPECT_EQ(lastBody(QStringLiteral("SetSetpoints")),
              QStringLiteral("ID=1&SETPOINT_1=-1&SETPOINT_2=-1&SETPOINT_3=2500.000&SETPOINT_4=-1"));
    EXPECT_EQ(state.setpoints[1], QStringLiteral("-1"));
    // The write's reply resumes polling, not the read.
    EXPECT_TRUE(pollingGoesOn());
    const QStringList seq = functionsFrom(from);
    EXPECT_EQ(seq.indexOf(QStringLiteral("SetSetpoints")),
              seq.indexOf(QStringLiteral("GetSetpoints")) + 1);
    EXPECT_EQ(seq.count(QStringLiteral("GetSetpoints")), 1);
}

TEST_F(SetPointsTest, BeforeTheMaximumIsKnownNothingIsCleared) {
    state.setpoints[0] = QStringLiteral("5000");
    f.LbLMaxWGTdata.caption.clear();
    click([&] { setValue(f.ChkSetPointNew[11], 1); });
    ASSERT_TRUE(runUntil([&] { return panel.SetpointsArrived; }, 100));
    runUntil([] { return false; }, 20);
    EXPECT_EQ(f.txtSetPointNew[11].caption, QStringLiteral("5000.000"));
    EXPECT_FALSE(card.functions().contains(QStringLiteral("SetSetpoints")));
    EXPECT_EQ(state.setpoints[0], QStringLiteral("5000"));
}

TEST_F(SetPointsTest, ReplyWithoutAnElementLeavesThatBoxAlone) {
    answerGetSetpointsWith(QStringLiteral("<SETPOINT_1>10</SETPOINT_1><SETPOINT_2>-1</SETPOINT_2>"
                                          "<SETPOINT_4>40.25</SETPOINT_4>"));
    f.LbLMaxWGTdata.caption = QStringLiteral("3000");
    f.txtSetPointNew[13].caption = QStringLiteral("777.000");
    click([&] { setValue(f.ChkSetPointNew[13], 1); });
    ASSERT_TRUE(runUntil([&] { return panel.SetpointsArrived; }, 100));
    EXPECT_EQ(f.txtSetPointNew[11].caption, QStringLiteral("10.000"));
    EXPECT_EQ(f.txtSetPointNew[12].caption, NoSetPoint);
    EXPECT_EQ(f.txtSetPointNew[13].caption, QStringLiteral("777.000"));
    EXPECT_EQ(f.txtSetPointNew[14].caption, QStringLiteral("40.250"));

    // An answer with none of them changes nothing, and says nothing arrived.
    panel.SetpointsArrived = false;
    answerGetSetpointsWith(QString());
    click([&] { setValue(f.ChkSetPointNew[14], 1); });
    runUntil([] { return false; }, 50);
    EXPECT_FALSE(panel.SetpointsArrived);
    EXPECT_EQ(f.txtSetPointNew[14].caption, QStringLiteral("40.250"));
    EXPECT_TRUE(p.dialogs.empty());
}

TEST_F(SetPointsTest, ValuesFromTheCardThatAreNoNumbers) {
    f.LbLMaxWGTdata.caption = QStringLiteral("3000");
    answerGetSetpointsWith(
        QStringLiteral("<SETPOINT_1>abc</SETPOINT_1><SETPOINT_2>1e999</SETPOINT_2>"
                       "<SETPOINT_3>-12</SETPOINT_3><SETPOINT_4>-2</SETPOINT_4>"));
    click([&] { setValue(f.ChkSetPointNew[11], 1); });
    ASSERT_TRUE(
        runUntil([&] { return card.functions().contains(QStringLiteral("SetSetpoints")); }, 100));
    EXPECT_EQ(f.txtSetPointNew[11].caption, QStringLiteral("0.000")); // no numeric prefix: 0
    EXPECT_EQ(f.txtSetPointNew[12].caption, NoSetPoint);              // too large to hold: cleared
    EXPECT_EQ(f.txtSetPointNew[13].caption, NoSetPoint);              // "-12.000" begins with "-1"
    EXPECT_EQ(f.txtSetPointNew[14].caption, QStringLiteral("-2.000"));
    EXPECT_EQ(
        lastBody(QStringLiteral("SetSetpoints")),
        QStringLiteral("ID=1&SETPOINT_1=0.000&SETPOINT_2=-1&SETPOINT_3=-1&SETPOINT_4=-2.000"));
    EXPECT_TRUE(p.dialogs.empty());

    // With a decimal comma a value that is no number asks whether to go on.
    setDecimalSeparator(QLatin1Char(','));
    answerGetSetpointsWith(
        QStringLiteral("<SETPOINT_1>abc</SETPOINT_1><SETPOINT_2>12.5</SETPOINT_2>"));
    p.yesNoAnswers = {true};
    click([&] { setValue(f.ChkSetPointNew[12], 1); });
    runUntil([&] { return !p.dialogs.empty(); }, 100);
    ASSERT_EQ(p.dialogs.size(), 1u);
    EXPECT_EQ(p.dialogs[0].text, QStringLiteral("Not Number. Yes - continue. "));
    runUntil([] { return false; }, 20);
    EXPECT_EQ(f.txtSetPointNew[11].caption, QStringLiteral("0,000"));
    EXPECT_EQ(f.txtSetPointNew[12].caption, QStringLiteral("12,000")); // decimals are dropped
}

TEST_F(SetPointsTest, RedefiningAsStandardConfirmedClearsTheSetPoint) {
    state.setpoints[1] = QStringLiteral("150");
    startPolling();
    makeSetPointOutput(12, QStringLiteral("150.000"));
    f.txtSetPointNew[12].bold = true;
    f.cmdSetOutOn[12].toolTip = QStringLiteral("Click to activate Setpoint");
    p.yesNoAnswers = {true};
    const int from = static_cast<int>(card.requests.size());
    click([&] { setValue(f.ChkSetPointNew[12], 0); });
    ASSERT_EQ(p.dialogs.size(), 1u);
    EXPECT_EQ(p.dialogs[0].kind, DialogRecord::YesNo);
    EXPECT_EQ(p.dialogs[0].text, QStringLiteral("Are you sure you want to redefine this\r\n"
                                                "SETPOINT output as STANDARD output?"));
    EXPECT_EQ(f.txtSetPointNew[12].caption, QStringLiteral("-1"));
    EXPECT_FALSE(f.txtSetPointNew[12].visible);
    EXPECT_FALSE(f.txtSetPointNew[12].bold);
    EXPECT_TRUE(f.cmdSetOutOn[12].toolTip.isEmpty());
    EXPECT_EQ(f.ChkSetPointNew[12].toolTip,
              QStringLiteral("Click to redefine STANDARD output 12 as SETPOINT output 2"));
    ASSERT_TRUE(runUntil([&] { return state.setpoints[1] == QStringLiteral("-1"); }, 100));
    EXPECT_EQ(lastBody(QStringLiteral("SetSetpoints")),
              QStringLiteral("ID=1&SETPOINT_1=-1&SETPOINT_2=-1&SETPOINT_3=-1&SETPOINT_4=-1"));
    EXPECT_TRUE(pollingGoesOn());
    EXPECT_FALSE(functionsFrom(from).contains(QStringLiteral("GetSetpoints")));
}

TEST_F(SetPointsTest, RedefiningAsStandardDeclinedKeepsTheSetPoint) {
    state.setpoints[1] = QStringLiteral("150");
    startPolling();
    makeSetPointOutput(12, QStringLiteral("150.000"));
    p.yesNoAnswers = {false};
    const int from = static_cast<int>(card.requests.size());
    click([&] { setValue(f.ChkSetPointNew[12], 0); });
    EXPECT_EQ(f.ChkSetPointNew[12].value, 1);
    EXPECT_EQ(f.txtSetPointNew[12].backColor, color::InactiveCaptionText);
    EXPECT_EQ(f.cmdSetOutOn[12].toolTip, QStringLiteral("Click to deactivate Setpoint"));
    EXPECT_EQ(f.ChkSetPointNew[12].toolTip,
              QStringLiteral("Click to redefine SETPOINT output 2 as STANDARD output 12"));
    // The values are fetched again; their reply shows the box again.
    EXPECT_FALSE(f.txtSetPointNew[12].visible);
    ASSERT_TRUE(runUntil([&] { return f.txtSetPointNew[12].visible; }, 100));
    EXPECT_EQ(f.txtSetPointNew[12].caption, QStringLiteral("150.000"));
    EXPECT_EQ(state.setpoints[1], QStringLiteral("150"));
    EXPECT_TRUE(pollingGoesOn());
    EXPECT_FALSE(functionsFrom(from).contains(QStringLiteral("SetSetpoints")));
    EXPECT_EQ(p.dialogs.size(), 1u);
}

TEST_F(SetPointsTest, RedefiningAnOutputWithoutValueAsksNothing) {
    makeSetPointOutput(14, NoSetPoint);
    click([&] { setValue(f.ChkSetPointNew[14], 0); });
    EXPECT_TRUE(p.dialogs.empty());
    EXPECT_FALSE(f.txtSetPointNew[14].visible);
    runUntil([] { return false; }, 20);
    EXPECT_TRUE(card.requests.empty());
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
    for (const Row& row : rows) {
        const int k = 13;
        Control& box = f.txtSetPointNew[k];
        box.foreColor = color::Blue; // marks what the painting leaves alone
        box.bold = false;
        f.LBL_SP[k].visible = false;
        f.LBL_SP[k].height = 1;
        f.cmdSetOutOn[k].toolTip.clear();
        panel.OutStatus = static_cast<Int16>(row.outputOff ? 16383 : 16383 & ~(1 << 12));
        panel.SpSendState[k - 11] = row.sendState;
        click([&] { panel.Show_SP_status(k); });

        const QString tip = row.active ? QStringLiteral("Click to deactivate Setpoint")
                                       : QStringLiteral("Click to activate Setpoint");
        EXPECT_EQ(f.cmdSetOutOn[k].toolTip, tip) << row.outputOff << row.sendState;
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
    state.setpoints[0] = QStringLiteral("100");
    state.setpoints[2] = QStringLiteral("250.5");
    panel.OutStatus = static_cast<Int16>(16383 & ~(1 << 12)); // output 13 on
    click([&] { panel.InitSetPoint_11_14(); });
    ASSERT_TRUE(panel.SetpointsArrived);

    EXPECT_EQ(f.ChkSetPointNew[11].value, 1);
    EXPECT_TRUE(f.txtSetPointNew[11].visible);
    EXPECT_EQ(f.txtSetPointNew[11].caption, QStringLiteral("100.000"));
    EXPECT_EQ(f.txtSetPointNew[11].backColor, color::InactiveCaptionText);
    EXPECT_EQ(f.txtSetPointNew[11].foreColor, color::Black);
    EXPECT_EQ(f.cmdSetOutOn[11].toolTip, QStringLiteral("Click to activate Setpoint"));

    EXPECT_EQ(f.ChkSetPointNew[13].value, 1);
    EXPECT_EQ(f.txtSetPointNew[13].foreColor, color::Red);
    EXPECT_TRUE(f.txtSetPointNew[13].bold);
    EXPECT_EQ(f.ChkSetPointNew[13].foreColor, color::Red);
    EXPECT_EQ(f.cmdSetOutOn[13].toolTip, QStringLiteral("Click to deactivate Setpoint"));

    for (int k : {12, 14}) {
        EXPECT_EQ(f.ChkSetPointNew[k].value, 0) << k;
        EXPECT_FALSE(f.txtSetPointNew[k].visible) << k;
    }
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
    state.outStatus = QStringLiteral("16383");
    panel.OutStatus = 16383;
    panel.MaximumLoad = 3000;
    makeSetPointOutput(12, QStringLiteral("150.000"));
    type(12, QStringLiteral("200"));
    click([&] { panel.cmdSetOutOn_Click(12); });
    ASSERT_TRUE(
        runUntil([&] { return card.functions().contains(QStringLiteral("SetOutput")); }, 500));
    const QStringList seq = card.functions();
    EXPECT_EQ(seq.indexOf(QStringLiteral("SetSetpoints")), 0);
    EXPECT_EQ(lastBody(QStringLiteral("SetSetpoints")),
              QStringLiteral("ID=1&SETPOINT_1=-1&SETPOINT_2=200&SETPOINT_3=-1&SETPOINT_4=-1"));
    EXPECT_EQ(lastBody(QStringLiteral("SetOutput")), QStringLiteral("ID=4&OUT_STATUS=14335"));
    EXPECT_EQ(state.setpoints[1], QStringLiteral("200"));
    EXPECT_EQ(state.outStatus, QStringLiteral("14335"));
}

TEST_F(SetPointsTest, SingleSetPointBlocksTheChannelSwitch) {
    panel.OutStatus = 0; // every output on
    click([&] { setValue(f.ChkSetPoint, 1); });
    EXPECT_FALSE(f.cmdChanSwitch.enabled);
    EXPECT_TRUE(f.ShaSetPoint.visible);
    EXPECT_TRUE(f.txtSetPoint.visible);
    EXPECT_TRUE(f.LblSwitch.visible);
    EXPECT_EQ(f.LblSwitch.toolTip,
              QStringLiteral("In order to switch to channel #2, first uncheck \"Set Point\"."));
    EXPECT_TRUE(card.requests.empty());

    click([&] { setValue(f.ChkSetPoint, 0); });
    EXPECT_TRUE(f.cmdChanSwitch.enabled);
    EXPECT_FALSE(f.ShaSetPoint.visible);
    EXPECT_FALSE(f.txtSetPoint.visible);
    EXPECT_FALSE(f.LblSwitch.visible);
    EXPECT_TRUE(f.LblSwitch.toolTip.isEmpty());
    // Output 10 is switched off.
    ASSERT_TRUE(runUntil([&] { return !card.requests.empty(); }, 100));
    EXPECT_EQ(card.requests[0].body, QStringLiteral("ID=4&OUT_STATUS=512"));
}

TEST_F(SetPointsTest, SingleSetPointEditsSwitchOutput10) {
    panel.OutStatus = 16383 & ~(1 << 9); // output 10 on
    click([&] { panel.txtSetPoint_Change(); });
    ASSERT_TRUE(runUntil([&] { return !card.requests.empty(); }, 100));
    EXPECT_EQ(card.requests[0].body, QStringLiteral("ID=4&OUT_STATUS=16383"));
    ASSERT_TRUE(runUntil([&] { return panel.OutStatus == 16383; }, 400));

    // Enter acts as a click on button 10: it switches it on again.
    const int from = static_cast<int>(card.requests.size());
    click([&] { panel.txtSetPoint_KeyPress(13); });
    EXPECT_EQ(panel.LastOutputIndex, 10);
    ASSERT_TRUE(
        runUntil([&] { return functionsFrom(from).contains(QStringLiteral("SetOutput")); }, 100));
    EXPECT_EQ(lastBody(QStringLiteral("SetOutput")), QStringLiteral("ID=4&OUT_STATUS=15871"));
}

TEST_F(SetPointsTest, TwoBoxesCheckedAtOnceStillResumePolling) {
    startPolling();
    click([&] { setValue(f.ChkSetPointNew[11], 1); });
    click([&] { setValue(f.ChkSetPointNew[12], 1); }); // before the first reply
    ASSERT_TRUE(runUntil([&] { return panel.SetpointsArrived; }, 100));
    EXPECT_TRUE(pollingGoesOn());
    EXPECT_EQ(panel.link.req.strPrevFunctionName, QStringLiteral("GetRTStatus"));
}
