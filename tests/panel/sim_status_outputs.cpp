// The panel against the simulator on loopback: polling, an output click and the start-up
// choice reach the card and come back.

#include "base/numeric.h"
#include "panel/frm_client.h"
#include "sim/sim_host.h"
#include "support/loopback_platform.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace torv;
using namespace torv::test;

namespace {

class PanelOnSimulator : public ::testing::Test {
protected:
    PanelOnSimulator() {
        setDecimalSeparator(QLatin1Char('.'));
        oldDir_ = QDir::currentPath();
        QDir::setCurrent(dir_.path());
        sim::SimOptions options;
        options.signal.weight = 742.125;
        options.inputsPeriodMs = 0;
        host = std::make_unique<sim::SimHost>(options);
        host->setLogSink([](const QString&) {});
        port = host->start();
        address = QStringLiteral("127.0.0.1:%1").arg(port);
    }
    ~PanelOnSimulator() override {
        panel.link.closeSocket();
        host->stop();
        QDir::setCurrent(oldDir_);
    }
    quint16 cardOutputs() {
        quint16 word = 0;
        host->withCard([&](sim::Card& c) { word = c.outputWord(); });
        return word;
    }

    QTemporaryDir dir_;
    QString oldDir_;
    std::unique_ptr<sim::SimHost> host;
    quint16 port = 0;
    QString address;
    LoopbackPlatform p;
    FrmClient panel{p};
    FrmClientForm& f = panel.f;
};

} // namespace

TEST_F(PanelOnSimulator, HundredStatusAnswersShowTheCardsState) {
    ASSERT_NE(port, 0);
    host->withCard([](sim::Card& c) {
        c.setOutputWord(16383 & ~(1 << 4)); // output 5 on
        c.setInputs(0xFE);                  // input 1 active
        c.setUnit(QStringLiteral("LB"));
    });
    f.TxtIP.caption = address;
    panel.layOutFrames();
    panel.event([&] { panel.cmdWeight_Click(); });
    ASSERT_TRUE(p.runUntil([&] { return panel.counters.lngReadings >= 100; }, 20000))
        << panel.counters.lngReadings << " " << p.messages().join(QLatin1Char('|')).toStdString();
    EXPECT_TRUE(p.dialogs.empty()) << p.messages().join(QLatin1Char('|')).toStdString();
    EXPECT_EQ(f.lblWT_BRUTTO.caption, QStringLiteral("742.125"));
    EXPECT_EQ(f.lblUnitNameWGT.caption, QStringLiteral("lb"));
    EXPECT_EQ(panel.OutStatus, 16383 & ~(1 << 4));
    EXPECT_EQ(f.cmdSetOutOn[5].backColor, color::Red);
    EXPECT_EQ(f.cmdSetOutOn[4].backColor, color::InactiveBorder);
    EXPECT_EQ(f.lblInpNum[8].backColor, color::Red); // lamp "1"
    EXPECT_EQ(f.LbLMaxWGTdata.caption, QStringLiteral("3000"));
    EXPECT_GE(panel.data.rtReadingCount, 100);
    EXPECT_EQ(panel.data.readings[100], QStringLiteral("742.125"));
    // Every request of the poll went out with the status body.
    for (const sim::RequestRecord& r : host->requests()) {
        EXPECT_EQ(r.function, QStringLiteral("GetRTStatus"));
        EXPECT_EQ(r.body, QStringLiteral("ID=4"));
    }
}

TEST_F(PanelOnSimulator, ClickingOutput3SwitchesItOnTheCard) {
    ASSERT_NE(port, 0);
    f.TxtIP.caption = address;
    panel.layOutFrames();
    panel.event([&] { panel.cmdWeight_Click(); });
    ASSERT_TRUE(p.runUntil([&] { return panel.counters.lngReadings >= 3; }, 10000));
    ASSERT_EQ(panel.OutStatus, 16383);
    panel.event([&] { panel.cmdSetOutOn_Click(3); });
    ASSERT_TRUE(p.runUntil([&] { return cardOutputs() == 16379; }, 10000)) << cardOutputs();
    ASSERT_TRUE(p.runUntil([&] { return f.cmdSetOutOn[3].backColor == color::Red; }, 10000));
    // Polling goes on after the one-off command.
    const int before = panel.counters.lngReadings;
    ASSERT_TRUE(p.runUntil([&] { return panel.counters.lngReadings > before + 10; }, 10000));
    EXPECT_TRUE(p.dialogs.empty()) << p.messages().join(QLatin1Char('|')).toStdString();
}

TEST_F(PanelOnSimulator, StartUpWithResetChosenSwitchesEveryOutputOff) {
    ASSERT_NE(port, 0);
    host->withCard([](sim::Card& c) { c.setOutputWord(0); }); // everything on
    QFile cfg(QStringLiteral("TORV_NET.cfg"));
    ASSERT_TRUE(cfg.open(QIODevice::WriteOnly));
    cfg.write(QStringLiteral("IPaddress,%1\r\nStartOutStatus, 1\r\nSetPointCheckBoxStart, 0\r\n"
                             "Start_Sample_Time, \r\nStart_Sample_TimeOut, 5000\r\n"
                             "X-mode:Samplings_or_Milisec:, 1\r\nOKA\r\n")
                  .arg(address)
                  .toLatin1());
    cfg.close();
    panel.Form_Load();
    ASSERT_TRUE(p.runUntil([&] { return cardOutputs() == 16383; }, 10000)) << cardOutputs();
    ASSERT_TRUE(p.runUntil([&] { return panel.OutStatus == 16383; }, 10000));
    for (int k = 1; k <= 10; ++k)
        EXPECT_EQ(f.cmdSetOutOn[k].backColor, color::InactiveBorder) << k;
    EXPECT_EQ(f.ChkStartOutStatus.value, 1);
}

TEST_F(PanelOnSimulator, RefusedConnectionIsReportedOnce) {
    ASSERT_NE(port, 0);
    host->stop();
    f.TxtIP.caption = address;
    panel.layOutFrames();
    panel.event([&] { panel.cmdWeight_Click(); });
    ASSERT_TRUE(p.runUntil([&] { return !p.dialogs.empty(); }, 10000));
    p.runUntil([] { return false; }, 300);
    ASSERT_EQ(p.dialogs.size(), 1u) << p.messages().join(QLatin1Char('|')).toStdString();
    EXPECT_TRUE(p.dialogs[0].text.startsWith(QStringLiteral("Server does not answer!")));
    EXPECT_EQ(f.lblCommStatusData.caption, QStringLiteral("Not Connected"));
}
