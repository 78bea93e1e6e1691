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

    // Types `text` into the analog-output box and presses the button.
    void setD2A(const QString& text) {
        f.txtSetD2A.caption = text;
        click([&] { panel.txtSetD2A_Change(); });
        click([&] { panel.cmdSetD2A_Click(); });
    }
};

} // namespace

TEST_F(AnalogChannelTest, AnalogInputsDecimalAndHexadecimal) {
    const QString notANumber = "Error... Here must be a number";
    const QString outOfRange = "Number must be 0 - 255 ";
    // Typed text and the value sent; -1: refused as out of range, -2: as no number. Hexadecimal
    // is one or two digits, with "0x" only when there is no leading zero.
    for (const char* row :
         {"255:255", "0xFF:255", "FF:255",      "ff:255",   "0xa:10",  "0A:10",  "0xF:15",
          "0F:15",   " 12 :12",  "0:0",         "12.5:12",  "&H20:32", "256:-1", "-1:-1",
          "1e10:-1", "99999:-1", "0x100:-2",    "0x0F:-2",  "0x:-2",   ":-2",    "G:-2",
          "12,5:-2", "100h:-2",  "  0XfE :254", "0X123:-2", "0x-1:-2", "FG:-2"}) {
        const QString typed = QString(row).section(':', 0, -2);
        const int sent = QString(row).section(':', -1).toInt();
        p.dialogs.clear();
        f.focusRequest.clear();
        f.txtSetD2A.caption = "7";
        panel.txtSetD2A_GotFocus();
        const int from = requestCount();
        setD2A(typed);
        runUntil([&] { return f.LbLGotD2A.visible && f.cmdSetD2A.enabled; }, 300);
        runUntil([] { return false; }, 5);
        const QStringList later = functionsFrom(from);
        if (sent >= 0) {
            EXPECT_TRUE(p.dialogs.empty()) << row;
            ASSERT_EQ(later.count("SetD2A"), 1) << row;
            EXPECT_EQ(lastBody("SetD2A"), QStringLiteral("ID=1&D2A=%1").arg(sent)) << row;
            EXPECT_EQ(f.LbLGotD2Adata.caption, QString::number(sent)) << row;
            EXPECT_EQ(f.txtSetD2A.backColor, color::InactiveCaptionText) << row;
        } else {
            EXPECT_FALSE(later.contains("SetD2A")) << row;
            EXPECT_EQ(p.messages(), QStringList{sent == -1 ? outOfRange : notANumber}) << row;
            EXPECT_EQ(f.txtSetD2A.caption, "7") << row;
            EXPECT_EQ(f.txtSetD2A.backColor, sent == -1 ? color::WindowBackground : color::Yellow)
                << row;
            EXPECT_EQ(f.focusRequest, "txtSetD2A") << row;
            EXPECT_TRUE(f.cmdSetD2A.enabled);
        }
    }
}

TEST_F(AnalogChannelTest, IntegrationChoiceIsSentAndItsEchoShown) {
    startPolling();
    const QString caption = f.caption;
    const int from = requestCount();
    f.cmbSetIntegr.listIndex = 8;
    click([&] { panel.cmbSetIntegr_Click(); });
    ASSERT_TRUE(runUntil([&] { return f.txtIntegration.caption == "256"; }, 100));
    EXPECT_EQ(lastBody("SetIntegration"), "ID=1&INTEGRATION=256");
    EXPECT_EQ(f.caption, caption); // the window caption does not grow
    EXPECT_TRUE(pollingGoesOn());
    EXPECT_EQ(functionsFrom(from).count("SetIntegration"), 1);
}
