// The panel against the simulator on loopback: polling, an output click and the start-up
// choice reach the card and come back.

#include "sim_fixture.h"

#include <QFile>

using namespace torv;
using namespace torv::test;

namespace {

class StatusOnSimulator : public PanelOnSimulator {
protected:
    StatusOnSimulator()
        : PanelOnSimulator(742.125) {}
    quint16 cardOutputs() {
        return onCard([](sim::Card& c) { return c.outputWord(); });
    }
};

} // namespace

TEST_F(StatusOnSimulator, HundredStatusAnswersShowTheCardsState) {
    ASSERT_NE(port, 0);
    host->withCard([](sim::Card& c) {
        c.setOutputWord(16383 & ~(1 << 4)); // output 5 on
        c.setInputs(0xFE);                  // input 1 active
        c.setUnit("LB");
    });
    startPolling(100);
    EXPECT_TRUE(p.dialogs.empty()) << dialogs();
    EXPECT_EQ(f.lblWT_BRUTTO.caption, "742.125");
    EXPECT_EQ(f.lblUnitNameWGT.caption, "lb");
    EXPECT_EQ(f.LbLMaxWGTdata.caption, "3000");
    EXPECT_EQ(f.cmdSetOutOn[5].backColor, color::Red);
    EXPECT_EQ(f.cmdSetOutOn[4].backColor, color::InactiveBorder);
    EXPECT_EQ(f.lblInpNum[8].backColor, color::Red); // lamp "1"
    EXPECT_GE(panel.data().rtReadingCount, 100);
    EXPECT_EQ(panel.data().readings[100], "742.125");
    // Every request of the poll went out with the status body.
    for (const sim::RequestRecord& r : host->requests())
        EXPECT_EQ(r.function + " " + r.body, "GetRTStatus ID=4");
}

TEST_F(StatusOnSimulator, ClickingOutput3SwitchesItOnTheCard) {
    ASSERT_NE(port, 0);
    startPolling();
    panel.event([&] { panel.cmdSetOutOn_Click(3); });
    ASSERT_TRUE(p.runUntil([&] { return cardOutputs() == 16379; }, 10000)) << cardOutputs();
    ASSERT_TRUE(p.runUntil([&] { return f.cmdSetOutOn[3].backColor == color::Red; }, 10000));
    // Polling goes on after the one-off command.
    const int before = panel.counters().lngReadings;
    ASSERT_TRUE(p.runUntil([&] { return panel.counters().lngReadings > before + 10; }, 10000));
    EXPECT_TRUE(p.dialogs.empty()) << dialogs();
}

TEST_F(StatusOnSimulator, StartUpWithResetChosenSwitchesEveryOutputOff) {
    ASSERT_NE(port, 0);
    host->withCard([](sim::Card& c) { c.setOutputWord(0); }); // everything on
    QFile cfg("TORV_NET.cfg");
    ASSERT_TRUE(cfg.open(QIODevice::WriteOnly));
    cfg.write("IPaddress," + f.TxtIP.caption.toLatin1() +
              "\r\nStartOutStatus, 1\r\nSetPointCheckBoxStart, 0\r\nStart_Sample_Time, \r\n"
              "Start_Sample_TimeOut, 5000\r\nX-mode:Samplings_or_Milisec:, 1\r\nOKA\r\n");
    cfg.close();
    panel.Form_Load();
    ASSERT_TRUE(p.runUntil([&] { return cardOutputs() == 16383; }, 10000)) << cardOutputs();
    ASSERT_TRUE(p.runUntil([&] { return f.cmdSetOutOn[1].backColor == color::InactiveBorder; }));
    for (int k = 1; k <= 10; ++k)
        EXPECT_EQ(f.cmdSetOutOn[k].backColor, color::InactiveBorder) << k;
    EXPECT_EQ(f.ChkStartOutStatus.value, 1);
}

TEST_F(StatusOnSimulator, RefusedConnectionIsReportedOnce) {
    ASSERT_NE(port, 0);
    host->stop();
    panel.event([&] { panel.cmdWeight_Click(); });
    ASSERT_TRUE(p.runUntil([&] { return !p.dialogs.empty(); }, 10000));
    p.runUntil([] { return false; }, 300);
    ASSERT_EQ(p.dialogs.size(), 1u) << dialogs();
    EXPECT_TRUE(p.dialogs[0].text.startsWith("Server does not answer!"));
    EXPECT_EQ(f.lblCommStatusData.caption, "Not Connected");
}
