// The panel against the simulator on loopback: set points, the analog output, the integration
// and the channel switch reach the card, their replies come back, and polling resumes.

#include "base/colors.h"
#include "base/numeric.h"
#include "panel/frm_client.h"
#include "sim/sim_host.h"
#include "support/loopback_platform.h"

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace torv;
using namespace torv::test;

namespace {

class SetPointsOnSimulator : public ::testing::Test {
protected:
    SetPointsOnSimulator() {
        setDecimalSeparator(QLatin1Char('.'));
        oldDir_ = QDir::currentPath();
        QDir::setCurrent(dir_.path());
        sim::SimOptions options;
        options.signal.weight = 50;
        options.inputsPeriodMs = 0;
        host = std::make_unique<sim::SimHost>(options);
        host->setLogSink([](const QString&) {});
        port = host->start();
        f.TxtIP.caption = QStringLiteral("127.0.0.1:%1").arg(port);
        panel.layOutFrames();
    }
    ~SetPointsOnSimulator() override {
        panel.link.closeSocket();
        host->stop();
        QDir::setCurrent(oldDir_);
    }

    QString dialogs() const { return p.messages().join(QLatin1Char('|')); }
    void startPolling() {
        panel.event([&] { panel.cmdWeight_Click(); });
        ASSERT_TRUE(p.runUntil([&] { return panel.counters.lngReadings >= 3; }, 10000))
            << dialogs().toStdString();
    }
    void setWeight(double weight) {
        host->withCard([weight](sim::Card& c) {
            sim::SignalShape shape;
            shape.weight = weight;
            c.setSignal(shape);
        });
    }
    template <typename F> F card(F (sim::Card::*get)() const) {
        F value{};
        host->withCard([&](sim::Card& c) { value = (c.*get)(); });
        return value;
    }
    double cardSetpoint(int n) {
        double v = 0;
        host->withCard([&](sim::Card& c) { v = c.setpoint(n); });
        return v;
    }
    // True when, after the last request of `function`, the card reads status polls again.
    bool pollingResumesAfter(const QString& function) {
        auto resumed = [&] {
            const QList<sim::RequestRecord> log = host->requests();
            int last = -1;
            for (int i = 0; i < log.size(); ++i)
                if (log[i].function == function) last = i;
            if (last < 0) return false;
            int polls = 0;
            for (int i = last + 1; i < log.size(); ++i) {
                if (log[i].function != QStringLiteral("GetRTStatus") ||
                    log[i].body != QStringLiteral("ID=4"))
                    return false;
                ++polls;
            }
            return polls >= 3;
        };
        return p.runUntil(resumed, 10000);
    }

    QTemporaryDir dir_;
    QString oldDir_;
    std::unique_ptr<sim::SimHost> host;
    quint16 port = 0;
    LoopbackPlatform p;
    FrmClient panel{p};
    FrmClientForm& f = panel.f;
};

} // namespace

TEST_F(SetPointsOnSimulator, SetPointOutputFollowsTheWeight) {
    ASSERT_NE(port, 0);
    startPolling();

    // Output 12 becomes a SETPOINT output; the card has no value for it yet.
    panel.event([&] { setValue(f.ChkSetPointNew[12], 1); });
    ASSERT_TRUE(p.runUntil([&] { return f.txtSetPointNew[12].visible; }, 10000));
    EXPECT_EQ(f.txtSetPointNew[12].caption, QStringLiteral("Type Value>0"));
    ASSERT_TRUE(pollingResumesAfter(QStringLiteral("GetSetpoints")));

    // A value typed and saved with Enter.
    f.txtSetPointNew[12].caption = QStringLiteral("100");
    panel.event([&] { panel.txtSetPointNew_Change(12); });
    panel.event([&] { panel.txtSetPointNew_KeyPress(12, 13); });
    ASSERT_TRUE(p.runUntil([&] { return cardSetpoint(2) == 100.0; }, 10000));
    EXPECT_EQ(cardSetpoint(1), -1.0);
    EXPECT_EQ(f.txtSetPointNew[12].backColor, color::InactiveCaptionText);
    ASSERT_TRUE(pollingResumesAfter(QStringLiteral("SetSetpoints")));

    // Switched on: the set point is active, the card keeps the output for the weight.
    ASSERT_EQ(panel.OutStatus & (1 << 11), 1 << 11);
    panel.event([&] { panel.cmdSetOutOn_Click(12); });
    EXPECT_EQ(f.txtSetPointNew[12].foreColor, color::Red);
    EXPECT_TRUE(f.txtSetPointNew[12].bold);
    EXPECT_TRUE(f.LBL_SP[12].visible);
    EXPECT_EQ(f.cmdSetOutOn[12].toolTip, QStringLiteral("Click to deactivate Setpoint"));
    ASSERT_TRUE(p.runUntil([&] { return (card(&sim::Card::outputWord) & (1 << 11)) == 0; }, 10000));
    ASSERT_TRUE(pollingResumesAfter(QStringLiteral("SetOutput")));
    EXPECT_NE(f.cmdSetOutOn[12].backColor, color::Red); // 50 is below the set point

    // The weight passes the set point: the card reports it, the button shows it.
    setWeight(150);
    ASSERT_TRUE(p.runUntil([&] { return f.cmdSetOutOn[12].backColor == color::Red; }, 10000));
    EXPECT_EQ(panel.SpStatus & 4, 4);
    EXPECT_EQ(f.lblWT_BRUTTO.caption, QStringLiteral("150.000"));
    setWeight(20);
    ASSERT_TRUE(p.runUntil([&] { return f.cmdSetOutOn[12].backColor != color::Red; }, 10000));
    EXPECT_TRUE(p.dialogs.empty()) << dialogs().toStdString();
}

TEST_F(SetPointsOnSimulator, SetPointAboveTheMaximumLoadIsClearedOnTheCard) {
    ASSERT_NE(port, 0);
    host->withCard([](sim::Card& c) { c.setSetpoint(3, 5000); });
    startPolling();
    ASSERT_EQ(f.LbLMaxWGTdata.caption, QStringLiteral("3000"));
    panel.event([&] { setValue(f.ChkSetPointNew[13], 1); });
    ASSERT_TRUE(p.runUntil([&] { return cardSetpoint(3) == -1.0; }, 10000));
    EXPECT_EQ(f.txtSetPointNew[13].caption, QStringLiteral("Type Value>0"));
    ASSERT_TRUE(pollingResumesAfter(QStringLiteral("SetSetpoints")));
    EXPECT_TRUE(p.dialogs.empty()) << dialogs().toStdString();
}

TEST_F(SetPointsOnSimulator, AnalogOutputAndIntegrationComeBackFromTheCard) {
    ASSERT_NE(port, 0);
    startPolling();
    f.txtSetD2A.caption = QStringLiteral("0x80");
    panel.event([&] { panel.cmdSetD2A_Click(); });
    ASSERT_TRUE(p.runUntil([&] { return f.LbLGotD2A.visible; }, 10000));
    EXPECT_EQ(f.LbLGotD2Adata.caption, QStringLiteral("128"));
    EXPECT_EQ(card(&sim::Card::analogOut), 128);
    EXPECT_TRUE(f.cmdSetD2A.enabled);
    EXPECT_TRUE(f.cmdSetOutOn[1].enabled);
    ASSERT_TRUE(pollingResumesAfter(QStringLiteral("SetD2A")));

    f.cmbSetIntegr.listIndex = 8;
    panel.event([&] { panel.cmbSetIntegr_Click(); });
    ASSERT_TRUE(p.runUntil([&] { return panel.CurrentIntegration == 256; }, 10000));
    EXPECT_EQ(card(&sim::Card::integration), 256);
    EXPECT_EQ(f.txtIntegration.caption, QStringLiteral("256"));
    ASSERT_TRUE(pollingResumesAfter(QStringLiteral("SetIntegration")));
    EXPECT_TRUE(p.dialogs.empty()) << dialogs().toStdString();
}

TEST_F(SetPointsOnSimulator, ChannelSwitchReachesTheCardOnce) {
    ASSERT_NE(port, 0);
    startPolling();
    f.lblChanNum.caption = QStringLiteral("1");
    panel.event([&] { panel.cmdChanSwitch_Click(); });
    EXPECT_EQ(card(&sim::Card::channel), 2);
    // Its answer reaches no handler: reported once, and the card closing the connection
    // does not send the switch again.
    p.runUntil([] { return false; }, 300);
    EXPECT_EQ(dialogs().toStdString(), "Unknown Function ch2_switch");
    int switches = 0;
    for (const sim::RequestRecord& r : host->requests())
        switches += r.function == QStringLiteral("ch2_switch");
    EXPECT_EQ(switches, 1);
}

TEST_F(SetPointsOnSimulator, StartUpShowsTheSetPointsTheCardHolds) {
    ASSERT_NE(port, 0);
    host->withCard([](sim::Card& c) {
        c.setSetpoint(1, 40);
        c.setSetpoint(4, 2999.5);
    });
    panel.addressOverride = f.TxtIP.caption;
    panel.Form_Load();
    EXPECT_EQ(f.ChkSetPointNew[11].value, 1);
    EXPECT_EQ(f.txtSetPointNew[11].caption, QStringLiteral("40.000"));
    EXPECT_TRUE(f.txtSetPointNew[11].visible);
    EXPECT_EQ(f.ChkSetPointNew[14].value, 1);
    EXPECT_EQ(f.txtSetPointNew[14].caption, QStringLiteral("2999.500"));
    EXPECT_EQ(f.ChkSetPointNew[12].value, 0);
    EXPECT_FALSE(f.txtSetPointNew[12].visible);
    // The start-up status read follows, and nothing on the card was changed.
    ASSERT_TRUE(
        p.runUntil([&] { return f.LbLMaxWGTdata.caption == QStringLiteral("3000"); }, 10000));
    p.runUntil([] { return false; }, 200);
    EXPECT_EQ(cardSetpoint(1), 40.0);
    EXPECT_EQ(cardSetpoint(4), 2999.5);
    for (const sim::RequestRecord& r : host->requests())
        EXPECT_NE(r.function, QStringLiteral("SetSetpoints"));
    EXPECT_TRUE(p.dialogs.empty()) << dialogs().toStdString();
}
