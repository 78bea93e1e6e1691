// The panel against the simulator on loopback: set points, the analog output, the integration
// and the channel switch reach the card, their replies come back, and polling resumes.

#include "sim_fixture.h"

using namespace torv;
using namespace torv::test;

namespace {

class SetPointsOnSimulator : public PanelOnSimulator {
protected:
    SetPointsOnSimulator()
        : PanelOnSimulator(50) {}
    void setWeight(double weight) {
        host->withCard([weight](sim::Card& c) { c.setSignal({sim::SignalKind::Steady, weight}); });
    }
    double cardSetpoint(int n) {
        return onCard([n](sim::Card& c) { return c.setpoint(n); });
    }
    // True when, after the last request of `function`, the card reads status polls again.
    bool pollingResumesAfter(const QString& function) {
        auto resumed = [&] {
            QStringList after; // from the last request of `function` on
            for (const sim::RequestRecord& r : host->requests()) {
                if (r.function == function)
                    after = QStringList{function};
                else if (!after.isEmpty())
                    after << r.function + " " + r.body;
            }
            return after.size() >= 4 &&
                   after.mid(1) == QStringList(after.size() - 1, "GetRTStatus ID=4");
        };
        return p.runUntil(resumed, 10000);
    }
};

} // namespace

TEST_F(SetPointsOnSimulator, SetPointOutputFollowsTheWeight) {
    ASSERT_NE(port, 0);
    startPolling();

    // Output 12 becomes a SETPOINT output; the card has no value for it yet.
    panel.event([&] { setValue(f.ChkSetPointNew[12], 1); });
    ASSERT_TRUE(p.runUntil([&] { return f.txtSetPointNew[12].visible; }, 10000));
    EXPECT_EQ(f.txtSetPointNew[12].caption, "Type Value>0");
    ASSERT_TRUE(pollingResumesAfter("GetSetpoints"));

    // A value typed and saved with Enter.
    f.txtSetPointNew[12].caption = "100";
    panel.event([&] { panel.txtSetPointNew_Change(12); });
    panel.event([&] { panel.txtSetPointNew_KeyPress(12, 13); });
    ASSERT_TRUE(p.runUntil([&] { return cardSetpoint(2) == 100.0; }, 10000));
    EXPECT_EQ(cardSetpoint(1), -1.0);
    EXPECT_EQ(f.txtSetPointNew[12].backColor, color::InactiveCaptionText);
    ASSERT_TRUE(pollingResumesAfter("SetSetpoints"));

    // Switched on: the set point is active, the card keeps the output for the weight.
    ASSERT_NE(f.cmdSetOutOn[12].backColor, color::Red);
    panel.event([&] { panel.cmdSetOutOn_Click(12); });
    EXPECT_EQ(f.txtSetPointNew[12].foreColor, color::Red);
    EXPECT_TRUE(f.txtSetPointNew[12].bold);
    EXPECT_TRUE(f.LBL_SP[12].visible);
    EXPECT_EQ(f.cmdSetOutOn[12].toolTip, "Click to deactivate Setpoint");
    auto output12 = [&] { return onCard([](sim::Card& c) { return c.outputWord() & (1 << 11); }); };
    ASSERT_TRUE(p.runUntil([&] { return output12() == 0; }, 10000));
    ASSERT_TRUE(pollingResumesAfter("SetOutput"));
    EXPECT_NE(f.cmdSetOutOn[12].backColor, color::Red); // 50 is below the set point

    // The weight passes the set point: the card reports it, the button shows it.
    setWeight(150);
    ASSERT_TRUE(p.runUntil([&] { return f.cmdSetOutOn[12].backColor == color::Red; }, 10000));
    EXPECT_EQ(f.lblWT_BRUTTO.caption, "150.000");
    setWeight(20);
    ASSERT_TRUE(p.runUntil([&] { return f.cmdSetOutOn[12].backColor != color::Red; }, 10000));
    EXPECT_TRUE(p.dialogs.empty()) << dialogs();
}

TEST_F(SetPointsOnSimulator, SetPointAboveTheMaximumLoadIsClearedOnTheCard) {
    ASSERT_NE(port, 0);
    host->withCard([](sim::Card& c) {
        c.setSetpoint(2, 5000);
        c.setSetpoint(3, 2500);
    });
    startPolling();
    ASSERT_EQ(f.LbLMaxWGTdata.caption, "3000");
    panel.event([&] { setValue(f.ChkSetPointNew[12], 1); });
    ASSERT_TRUE(p.runUntil([&] { return cardSetpoint(2) == -1.0; }, 10000));
    EXPECT_EQ(captionsOf({&f.txtSetPointNew[12], &f.txtSetPointNew[13]}), "Type Value>0|2500.000");
    EXPECT_EQ(f.txtSetPointNew[12].foreColor, color::Black);
    // The write follows the read at once, carries the other values, and its reply resumes
    // polling.
    ASSERT_TRUE(pollingResumesAfter("SetSetpoints"));
    const QStringList asked = functions();
    EXPECT_EQ(asked.count("GetSetpoints"), 1);
    EXPECT_EQ(asked.indexOf("SetSetpoints"), asked.indexOf("GetSetpoints") + 1);
    EXPECT_EQ(host->requests()[asked.indexOf("SetSetpoints")].body,
              "ID=1&SETPOINT_1=-1&SETPOINT_2=-1&SETPOINT_3=2500.000&SETPOINT_4=-1");
    EXPECT_EQ(cardSetpoint(3), 2500.0);
    EXPECT_TRUE(p.dialogs.empty()) << dialogs();
}

TEST_F(SetPointsOnSimulator, AnalogOutputAndIntegrationComeBackFromTheCard) {
    ASSERT_NE(port, 0);
    startPolling();
    f.txtSetD2A.caption = "0x80";
    panel.event([&] { panel.cmdSetD2A_Click(); });
    ASSERT_TRUE(p.runUntil([&] { return f.LbLGotD2A.visible; }, 10000));
    EXPECT_EQ(f.LbLGotD2Adata.caption, "128");
    EXPECT_EQ(onCard([](sim::Card& c) { return c.analogOut(); }), 128);
    EXPECT_TRUE(f.cmdSetD2A.enabled);
    EXPECT_TRUE(f.cmdSetOutOn[1].enabled);
    ASSERT_TRUE(pollingResumesAfter("SetD2A"));

    f.cmbSetIntegr.listIndex = 8;
    panel.event([&] { panel.cmbSetIntegr_Click(); });
    ASSERT_TRUE(p.runUntil([&] { return f.txtIntegration.caption == "256"; }, 10000));
    EXPECT_EQ(onCard([](sim::Card& c) { return c.integration(); }), 256);
    EXPECT_EQ(f.txtIntegration.caption, "256");
    ASSERT_TRUE(pollingResumesAfter("SetIntegration"));
    EXPECT_TRUE(p.dialogs.empty()) << dialogs();
}

TEST_F(SetPointsOnSimulator, ChannelSwitchReachesTheCardOnce) {
    ASSERT_NE(port, 0);
    startPolling();
    f.lblChanNum.caption = "1";
    panel.event([&] { panel.cmdChanSwitch_Click(); });
    EXPECT_EQ(onCard([](sim::Card& c) { return c.channel(); }), 2);
    // Its answer reaches no handler: reported once, and the card closing the connection
    // does not send the switch again.
    p.runUntil([] { return false; }, 300);
    EXPECT_EQ(dialogs(), "Unknown Function ch2_switch");
    EXPECT_EQ(functions().count("ch2_switch"), 1);
}

TEST_F(SetPointsOnSimulator, StartUpShowsTheSetPointsTheCardHolds) {
    ASSERT_NE(port, 0);
    host->withCard([](sim::Card& c) {
        c.setSetpoint(1, 40);
        c.setSetpoint(4, 2999.5);
    });
    panel.addressOverride = f.TxtIP.caption;
    panel.Form_Load();
    EXPECT_EQ(f.ChkSetPointNew[11].value + f.ChkSetPointNew[14].value, 2);
    EXPECT_EQ(f.ChkSetPointNew[12].value, 0);
    EXPECT_EQ(captionsOf({&f.txtSetPointNew[11], &f.txtSetPointNew[14]}), "40.000|2999.500");
    EXPECT_EQ(visibleOf({&f.txtSetPointNew[11], &f.txtSetPointNew[12]}), "10");
    // The start-up status read follows, and nothing on the card was changed.
    ASSERT_TRUE(p.runUntil([&] { return f.LbLMaxWGTdata.caption == "3000"; }, 10000));
    p.runUntil([] { return false; }, 200);
    EXPECT_EQ(cardSetpoint(1), 40.0);
    EXPECT_EQ(cardSetpoint(4), 2999.5);
    EXPECT_FALSE(functions().contains("SetSetpoints"));
    EXPECT_TRUE(p.dialogs.empty()) << dialogs();
}
