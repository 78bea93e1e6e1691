// Analog output, integration and the channel switch: what each sends, what its reply shows,
// and that polling resumes afterwards.

#include "base/colors.h"
#include "link/catalogue.h"
#include "panel_fixture.h"

#include <QFile>

using namespace torv;
using namespace torv::test;

namespace {

class AnalogChannelTest : public PanelTest {
protected:
    AnalogChannelTest() { layOut(); }

    void startPolling() {
        click([&] { panel.cmdWeight_Click(); });
        ASSERT_TRUE(runUntil([&] { return !f.LbLMaxWGTdata.caption.isEmpty(); }, 100));
    }
    QStringList functionsFrom(int from) const { return card.functions().mid(from); }
    int requestCount() const { return static_cast<int>(card.requests.size()); }
    QString lastBody(const QString& function) const {
        for (int i = requestCount() - 1; i >= 0; --i)
            if (card.requests[i].function == function) return card.requests[i].body;
        return QStringLiteral("<none>");
    }
    bool pollingGoesOn() {
        const int from = requestCount();
        runUntil([&] { return functionsFrom(from).count(QStringLiteral("GetRTStatus")) >= 2; },
                 200);
        const QStringList later = functionsFrom(from);
        return later.count(QStringLiteral("GetRTStatus")) >= 2 &&
               later.last() == QStringLiteral("GetRTStatus") &&
               card.requests.last().body == QStringLiteral("ID=4");
    }
    // Types `text` into the analog-output box and presses the button.
    void setD2A(const QString& text) {
        f.txtSetD2A.caption = text;
        click([&] { panel.txtSetD2A_Change(); });
        click([&] { panel.cmdSetD2A_Click(); });
    }
};

} // namespace

TEST_F(AnalogChannelTest, AnalogInputsDecimalAndHexadecimal) {
    struct Case {
        const char* typed;
        int sent; // -1: refused
        const char* message;
    };
    const QString notANumber = QStringLiteral("Error... Here must be a number");
    const QString outOfRange = QStringLiteral("Number must be 0 - 255 ");
    const Case cases[] = {
        {"255", 255, nullptr},  {"0xFF", 255, nullptr}, {"FF", 255, nullptr},
        {"ff", 255, nullptr},   {"0xa", 10, nullptr},   {"0A", 10, nullptr},
        {"0xF", 15, nullptr},   {"0F", 15, nullptr},    {" 12 ", 12, nullptr},
        {"0", 0, nullptr},      {"12.5", 12, nullptr},  {"&H20", 32, nullptr},
        {"256", -1, "range"},   {"-1", -1, "range"},    {"1e10", -1, "range"},
        {"99999", -1, "range"}, {"0x100", -1, "nan"},   {"0x0F", -1, "nan"},
        {"0x", -1, "nan"},      {"", -1, "nan"},        {"G", -1, "nan"},
        {"12,5", -1, "nan"},    {"100h", -1, "nan"},
    };
    for (const Case& c : cases) {
        const QString typed = QLatin1String(c.typed);
        p.dialogs.clear();
        f.focusRequest.clear();
        panel.LastD2AText = QStringLiteral("7");
        const int from = requestCount();
        setD2A(typed);
        runUntil([&] { return f.LbLGotD2A.visible && f.cmdSetD2A.enabled; }, 300);
        runUntil([] { return false; }, 5);
        const QStringList later = functionsFrom(from);
        if (c.sent >= 0) {
            EXPECT_TRUE(p.dialogs.empty()) << c.typed;
            ASSERT_EQ(later.count(QStringLiteral("SetD2A")), 1) << c.typed;
            EXPECT_EQ(lastBody(QStringLiteral("SetD2A")), QStringLiteral("ID=1&D2A=%1").arg(c.sent))
                << c.typed;
            EXPECT_EQ(f.LbLGotD2Adata.caption, QString::number(c.sent)) << c.typed;
            EXPECT_EQ(f.txtSetD2A.backColor, color::InactiveCaptionText) << c.typed;
            EXPECT_EQ(panel.LastD2AText, f.txtSetD2A.caption) << c.typed;
        } else {
            EXPECT_FALSE(later.contains(QStringLiteral("SetD2A"))) << c.typed;
            ASSERT_EQ(p.dialogs.size(), 1u) << c.typed;
            const bool range = QLatin1String(c.message) == QLatin1String("range");
            EXPECT_EQ(p.lastMessage(), range ? outOfRange : notANumber) << c.typed;
            EXPECT_EQ(f.txtSetD2A.caption, QStringLiteral("7")) << c.typed;
            EXPECT_EQ(f.txtSetD2A.backColor, range ? color::WindowBackground : color::Yellow)
                << c.typed;
            EXPECT_EQ(f.focusRequest, QStringLiteral("txtSetD2A")) << c.typed;
            EXPECT_TRUE(f.cmdSetD2A.enabled);
        }
    }
}

TEST_F(AnalogChannelTest, HexadecimalTextBecomesDecimalInTheBox) {
    setD2A(QStringLiteral("0x80"));
    EXPECT_EQ(f.txtSetD2A.caption, QStringLiteral("128"));
    EXPECT_EQ(panel.LastD2AText, QStringLiteral("128"));

    QString text = QStringLiteral("  0XfE ");
    bool ok = false;
    FrmClient::IsHex(text, ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ(text, QStringLiteral("254"));
    for (const char* refused : {"0x0F", "0x", "0X123", "100", "000", "0x-1", "FG"}) {
        text = QLatin1String(refused);
        ok = true;
        FrmClient::IsHex(text, ok);
        EXPECT_FALSE(ok) << refused;
        EXPECT_EQ(text, QLatin1String(refused)) << refused; // left as it was
    }
}

TEST_F(AnalogChannelTest, AnalogOutputLocksTheControlsUntilItsReplyThenPollingResumes) {
    startPolling();
    const int from = requestCount();
    f.txtSetD2A.caption = QStringLiteral("0x80");
    click([&] { panel.cmdSetD2A_Click(); });
    // Right after the click the request is out and its reply not handled yet.
    EXPECT_FALSE(f.cmdSetD2A.enabled);
    EXPECT_FALSE(f.txtSetD2A.enabled);
    EXPECT_FALSE(f.LbLGotD2A.visible);
    EXPECT_FALSE(f.LbLGotD2Adata.visible);
    EXPECT_FALSE(f.cmdSetOutOn[1].enabled);
    EXPECT_FALSE(f.FraIntegration.enabled);
    EXPECT_FALSE(f.cmdChanSwitch.enabled);
    EXPECT_EQ(panel.link.req.strFunctionName, QStringLiteral("SetD2A"));
    EXPECT_EQ(panel.link.req.strPrevFunctionName, QStringLiteral("GetRTStatus"));
    // Polling went on during the pause before the command.
    EXPECT_GE(functionsFrom(from).count(QStringLiteral("GetRTStatus")), 10);

    ASSERT_TRUE(runUntil([&] { return f.LbLGotD2A.visible; }, 100));
    EXPECT_EQ(f.LbLGotD2Adata.caption, QStringLiteral("128"));
    EXPECT_TRUE(f.LbLGotD2Adata.visible);
    EXPECT_TRUE(f.cmdSetD2A.enabled);
    EXPECT_TRUE(f.txtSetD2A.enabled);
    EXPECT_TRUE(f.cmdSetOutOn[1].enabled);
    EXPECT_TRUE(f.FraIntegration.enabled);
    EXPECT_TRUE(pollingGoesOn());
    EXPECT_EQ(functionsFrom(from).count(QStringLiteral("SetD2A")), 1);
    // The request of the wire example: Content-Length counts the body only.
    for (const CardRequest& r : card.requests) {
        if (r.function == QStringLiteral("SetD2A")) {
            EXPECT_EQ(r.contentLength, 12);
        }
    }
}

TEST_F(AnalogChannelTest, RefusedAnalogTextResumesPollingAtOnce) {
    startPolling();
    f.txtSetD2A.caption = QStringLiteral("zz");
    panel.LastD2AText = QStringLiteral("40");
    click([&] { panel.cmdSetD2A_Click(); });
    EXPECT_EQ(p.lastMessage(), QStringLiteral("Error... Here must be a number"));
    EXPECT_TRUE(pollingGoesOn());
    EXPECT_FALSE(card.functions().contains(QStringLiteral("SetD2A")));
}

TEST_F(AnalogChannelTest, AnalogReplyWithoutItsElementKeepsTheLabel) {
    f.LbLGotD2Adata.caption = QStringLiteral("99");
    card.respond = [this](const CardRequest& r) {
        if (r.function == QStringLiteral("SetD2A")) return cardAnswer(r.function, QString());
        return standardAnswer(r);
    };
    startPolling();
    setD2A(QStringLiteral("5"));
    ASSERT_TRUE(runUntil([&] { return f.LbLGotD2A.visible; }, 100));
    EXPECT_EQ(f.LbLGotD2Adata.caption, QStringLiteral("99"));
    EXPECT_TRUE(pollingGoesOn());
}

TEST_F(AnalogChannelTest, AnalogEditingKeys) {
    f.txtSetD2A.caption = QStringLiteral("17");
    click([&] { panel.txtSetD2A_GotFocus(); });
    f.txtSetD2A.caption = QStringLiteral("1x");
    click([&] { panel.txtSetD2A_Change(); });
    EXPECT_EQ(f.txtSetD2A.backColor, color::White);
    click([&] { panel.txtSetD2A_KeyPress(27); });
    EXPECT_EQ(f.txtSetD2A.caption, QStringLiteral("17"));

    f.txtSetD2A.caption = QStringLiteral("0x20");
    click([&] { panel.txtSetD2A_KeyPress(13); });
    ASSERT_TRUE(runUntil([&] { return f.LbLGotD2A.visible; }, 400));
    EXPECT_EQ(lastBody(QStringLiteral("SetD2A")), QStringLiteral("ID=1&D2A=32"));
}

TEST_F(AnalogChannelTest, IntegrationChoiceIsSentAndItsEchoShown) {
    startPolling();
    const QString caption = f.caption;
    const int from = requestCount();
    f.cmbSetIntegr.listIndex = 8;
    click([&] { panel.cmbSetIntegr_Click(); });
    ASSERT_TRUE(runUntil([&] { return f.txtIntegration.caption == QStringLiteral("256"); }, 100));
    EXPECT_EQ(lastBody(QStringLiteral("SetIntegration")), QStringLiteral("ID=1&INTEGRATION=256"));
    EXPECT_EQ(panel.CurrentIntegration, 256);
    EXPECT_TRUE(panel.outputReplySeen);
    EXPECT_EQ(f.caption, caption); // the window caption does not grow
    EXPECT_TRUE(pollingGoesOn());
    EXPECT_EQ(functionsFrom(from).count(QStringLiteral("SetIntegration")), 1);

    // No selection: nothing is sent.
    f.cmbSetIntegr.listIndex = -1;
    const int before = requestCount();
    click([&] { panel.cmbSetIntegr_Click(); });
    runUntil([] { return false; }, 10);
    EXPECT_FALSE(functionsFrom(before).contains(QStringLiteral("SetIntegration")));
    EXPECT_TRUE(p.dialogs.empty());
}

TEST_F(AnalogChannelTest, IntegrationEchoThatIsNoNumberIsReportedAndPollingResumes) {
    card.respond = [this](const CardRequest& r) {
        if (r.function == QStringLiteral("SetIntegration"))
            return cardAnswer(r.function,
                              QStringLiteral("<INTEGRATION_ECHO>lots</INTEGRATION_ECHO>"));
        return standardAnswer(r);
    };
    startPolling();
    panel.CurrentIntegration = 8;
    click([&] { panel.SetNewIntegration(16); });
    ASSERT_TRUE(runUntil([&] { return !p.dialogs.empty(); }, 100));
    EXPECT_EQ(p.lastMessage(), QStringLiteral("Run-time error '13': Type mismatch"));
    EXPECT_EQ(f.txtIntegration.caption, QStringLiteral("lots"));
    EXPECT_EQ(panel.CurrentIntegration, 8);
    EXPECT_TRUE(pollingGoesOn());
}

TEST_F(AnalogChannelTest, ChannelSwitchSendsTheOtherChannelOnce) {
    // Like the card, close the connection after a channel answer.
    card.respond = [this](const CardRequest& r) {
        if (r.function.startsWith(QStringLiteral("ch"))) {
            FakeTcpClient* answered = p.socket();
            p.after(1, [this, answered] {
                for (FakeTcpClient* s : p.sockets)
                    if (s == answered && !s->isClosed()) s->peerClose();
            });
        }
        return standardAnswer(r);
    };
    startPolling();
    f.lblChanNum.caption = QStringLiteral("2");
    const int from = requestCount();
    click([&] { panel.cmdChanSwitch_Click(); });
    const QStringList later = functionsFrom(from);
    ASSERT_EQ(later.count(QStringLiteral("ch1_switch")), 1);
    EXPECT_FALSE(later.contains(QStringLiteral("ch2_switch")));
    EXPECT_EQ(lastBody(QStringLiteral("ch1_switch")), QStringLiteral("ID=4"));
    // The answer reaches no handler; it is reported once, and the switch is not repeated.
    EXPECT_EQ(p.messages(), QStringList{QStringLiteral("Unknown Function ch1_switch")});
    EXPECT_TRUE(panel.link.req.blnRepeatRequest);
    runUntil([] { return false; }, 100);
    EXPECT_EQ(functionsFrom(from), QStringList{QStringLiteral("ch1_switch")});

    f.lblChanNum.caption = QStringLiteral("1");
    click([&] { panel.cmdChanSwitch_Click(); });
    EXPECT_EQ(card.functions().last(), QStringLiteral("ch2_switch"));

    const int now = requestCount();
    f.lblChanNum.caption = QStringLiteral("3");
    click([&] { panel.cmdChanSwitch_Click(); });
    runUntil([] { return false; }, 10);
    EXPECT_EQ(requestCount(), now);
}

TEST_F(AnalogChannelTest, ChannelReplyReadsTheNewChannelsStatus) {
    // The reply handler sets the flag while the switch waits; then the status is read.
    card.respond = [this](const CardRequest& r) {
        if (r.function.startsWith(QStringLiteral("ch"))) return QString(); // no answer
        return standardAnswer(r);
    };
    const std::uint32_t start = p.now;
    p.after(30, [&] {
        panel.link.req.strResponse =
            QStringLiteral("<ch2_switch><ERROR_CODE>0</ERROR_CODE></ch2_switch>");
        panel.DataArrival_CH_Switch();
    });
    f.cmdWeight.backColor = color::Green;
    click([&] { panel.cmdChan_Click(2); });
    EXPECT_FALSE(panel.channelReplyReceived);
    EXPECT_GE(p.now - start, 430u);
    EXPECT_LT(p.now - start, 500u);
    EXPECT_EQ(panel.link.req.strFunctionName, QStringLiteral("GetRTStatus"));
    ASSERT_TRUE(
        runUntil([&] { return card.functions().last() == QStringLiteral("GetRTStatus"); }, 50));
    EXPECT_EQ(card.requests.last().body, QStringLiteral("ID=4"));
    EXPECT_EQ(card.functions().first(), QStringLiteral("ch2_switch"));
    EXPECT_TRUE(p.dialogs.empty());
}

TEST_F(AnalogChannelTest, ChannelSwitchThatIsNeverAnsweredEndsAfterTwoSeconds) {
    card.respond = [](const CardRequest&) { return QString(); };
    const std::uint32_t start = p.now;
    click([&] { panel.cmdChan_Click(1); });
    EXPECT_GE(p.now - start, 2000u);
    EXPECT_LT(p.now - start, 2100u);
    EXPECT_EQ(card.functions(), QStringList{QStringLiteral("ch1_switch")});
    EXPECT_EQ(panel.link.req.strFunctionName, QStringLiteral("ch1_switch"));
    EXPECT_THROW(panel.cmdChan_Click(3), RuntimeError);
}

TEST_F(AnalogChannelTest, SwitchRefusedWhileSamplingResetsTheSessionAndSavesIt) {
    panel.SetOutPut_Disasable(false);
    f.cmdStart_Sample.backColor = color::Green;
    f.cmdStart_Sample.enabled = false;
    f.cmdStopSample.enabled = true;
    f.cmdWeight.enabled = false;
    panel.link.lngRequestStartTick = static_cast<Int32>(p.now);
    panel.link.req.strResponse =
        QStringLiteral("<StopSample><ERROR_CODE>200</ERROR_CODE><ERROR_DESCRIPTION>busy"
                       "</ERROR_DESCRIPTION></StopSample>");
    click([&] { panel.DataArrival_CH_Switch(); });
    EXPECT_FALSE(panel.channelReplyReceived);
    EXPECT_EQ(f.cmdStart_Sample.backColor, color::ButtonFace);
    EXPECT_TRUE(f.cmdStart_Sample.enabled);
    EXPECT_FALSE(f.cmdStopSample.enabled);
    EXPECT_TRUE(f.cmdWeight.enabled);
    EXPECT_TRUE(f.cmdChanSwitch.enabled);
    EXPECT_TRUE(f.cmdSetOutOn[5].enabled);
    EXPECT_EQ(f.lblErrNumer.caption, QStringLiteral("200"));
    EXPECT_EQ(f.lblErrNumer.backColor, color::Red);
    EXPECT_TRUE(QFile::exists(f.txtHistFileName.caption));
    EXPECT_TRUE(p.dialogs.empty());
}

TEST_F(AnalogChannelTest, ChannelReplyAfterTheTimeOutStopsSampling) {
    f.cmdWeight.enabled = false;
    f.cmdStart_Sample.enabled = false;
    f.cmdStart_Sample.backColor = color::Green;
    panel.link.lngTimeOut = 5000;
    panel.link.lngRequestStartTick = static_cast<Int32>(p.now - 5001);
    panel.link.req.strResponse = QStringLiteral("<ch1_switch><A>1</A></ch1_switch>");
    click([&] { panel.DataArrival_CH_Switch(); });
    EXPECT_TRUE(panel.channelReplyReceived);
    EXPECT_EQ(p.messages(), QStringList{QStringLiteral(" Invalid XML data!  ")});
    EXPECT_EQ(f.txtRealTimeInfo.caption,
              QStringLiteral("<ch1_switch>\r\n<A>1</A>\r\n</ch1_switch>"));
    EXPECT_TRUE(f.cmdWeight.enabled);
    EXPECT_TRUE(f.cmdStart_Sample.enabled);
    EXPECT_EQ(f.cmdStart_Sample.backColor, color::ButtonFace);

    // Exactly at the time-out it is not late yet.
    p.dialogs.clear();
    panel.link.lngRequestStartTick = static_cast<Int32>(p.now - 5000);
    click([&] { panel.DataArrival_CH_Switch(); });
    EXPECT_TRUE(p.dialogs.empty());
}
