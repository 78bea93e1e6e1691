// Analog output, integration and the channel switch.

#include "base/event_boundary.h"
#include "base/numeric.h"
#include "base/platform.h"
#include "base/ticks.h"
#include "files/sample_file.h"
#include "frm_client.h"
#include "link/catalogue.h"
#include "link/elements.h"

namespace torv {

// ---- Analog output -----------------------------------------------------------------------

void FrmClient::cmdSetD2A_Click() {
    Control& box = f.txtSetD2A;
    // A decimal number, or else a hexadecimal byte, which becomes its decimal text.
    while (!IsNumber(box.caption)) {
        QString text = box.caption;
        bool ok = false;
        IsHex(text, ok);
        if (!ok) {
            ShowMessageWide(QStringLiteral("Error... Here must be a number"));
            box.caption = analog_.LastD2AText;
            box.backColor = color::WindowBackground;
            box.backColor = color::Yellow;
            link_.IssueRequest(link_.req.blnRepeatRequest);
            f.setFocus(box);
            return;
        }
        box.caption = text;
    }

    // The value must be a byte; anything beyond 16 bits is out of range as well.
    const double rounded = roundHalfEven(CDbl(box.caption));
    if (rounded < 0 || rounded > 255) {
        ShowMessageWide(QStringLiteral("Number must be 0 - 255 "));
        box.caption = analog_.LastD2AText;
        box.backColor = color::WindowBackground;
        f.setFocus(box);
        return;
    }
    const Int16 v = CInt(rounded);

    box.backColor = color::InactiveCaptionText;
    analog_.LastD2AText = box.caption;
    SetOutPut_Disasable(false);
    box.enabled = true;
    f.cmdSetD2A.enabled = true;
    link_.WaitMS(200);

    // The command takes the line only now, so a status answer arriving during the pause
    // above sends the poll again, not this command, and the reply cannot come before the
    // controls below are locked.
    saveRequestForOneOff();
    link_.req.strFunctionName = fn::SetD2A;
    link_.req.strParameters = setD2ABody(v);
    link_.IssueRequest(true);

    f.LbLGotD2A.visible = false;
    f.LbLGotD2Adata.visible = false;
    f.cmdSetD2A.enabled = false;
    box.enabled = false;
}

void FrmClient::txtSetD2A_Change() {
    f.txtSetD2A.backColor = color::White;
}

void FrmClient::txtSetD2A_GotFocus() {
    analog_.LastD2AText = f.txtSetD2A.caption;
}

void FrmClient::txtSetD2A_KeyPress(int KeyAscii) {
    if (KeyAscii == 13)
        cmdSetD2A_Click();
    else if (KeyAscii == 27)
        f.txtSetD2A.caption = analog_.LastD2AText;
}

void FrmClient::DataArrival_SetD2A(const QString& answer) {
    changed();
    f.LbLGotD2A.visible = true;
    f.LbLGotD2Adata.visible = true;
    f.cmdSetD2A.enabled = true;
    f.txtSetD2A.enabled = true;
    SetOutPut_Disasable(true);
    QString v;
    if (Get_XML_Element_Data(p_, answer, QStringLiteral("<ANALOG_OUT>"), v))
        f.LbLGotD2Adata.caption = v;
    resumeSavedRequest();
}

void FrmClient::IsHex(QString& text, bool& ok) {
    ok = false;
    QString s = text.trimmed();
    if (s.left(2).toUpper() == QStringLiteral("0X")) {
        // Prefixed: one or two digits, written without leading zeros (0x0F is refused).
        if (s.size() != 3 && s.size() != 4) return;
        s = s.mid(2);
    } else {
        int zeros = 0;
        while (zeros < s.size() && s[zeros] == QLatin1Char('0'))
            ++zeros;
        s = s.mid(zeros);
    }
    const QString digits = s.toUpper();
    for (int i = 0; i <= 255; ++i) {
        if (QString::number(i, 16).toUpper() == digits) {
            text = QString::number(i);
            ok = true;
            return;
        }
    }
}

// ---- Integration -------------------------------------------------------------------------

void FrmClient::cmbSetIntegr_Click() {
    // The window caption stays as it is: it names the product, and the choice shows in the
    // combo box itself.
    const Control& combo = f.cmbSetIntegr;
    if (combo.listIndex < 0 || combo.listIndex >= combo.items.size()) return;
    SetNewIntegration(CInt(combo.items[combo.listIndex]));
}

void FrmClient::SetNewIntegration(Int16 value) {
    saveRequestForOneOff();
    link_.req.strFunctionName = fn::SetIntegration;
    link_.req.strParameters = setIntegrationBody(value);
    link_.IssueRequest(true);
}

void FrmClient::DataArrival_SetIntegration(const QString& answer) {
    changed();
    QString v;
    const bool echoed = Get_XML_Element_Data(p_, answer, QStringLiteral("<INTEGRATION_ECHO>"), v);
    if (echoed) {
        f.txtIntegration.caption = v;
        // An echo that is no 16-bit number is reported, and polling still resumes.
        runHandler(p_, [&] { status_.CurrentIntegration = statusWordValue(v); });
    }
    resumeSavedRequest();
}

// ---- Channels ----------------------------------------------------------------------------

void FrmClient::cmdChan_Click(int Index) {
    if (!ControlArray<1, 2>::contains(Index)) raiseSubscript();
    link_.req.strFunctionName = channelSwitchName(Index);
    // The card closes the connection after its answer; with the polling flag on, that would
    // send the switch again and again. The flag is held off while the switch is out.
    const bool repeat = link_.req.blnRepeatRequest;
    link_.req.blnRepeatRequest = false;
    link_.IssueRequest(true);
    analog_.channelReplyReceived = false;
    const bool answered = link_.WaitTrueFlag(analog_.channelReplyReceived, 2000);
    link_.req.blnRepeatRequest = repeat;
    if (!answered) {
        // The exchange is over either way; a late answer must not restart it.
        link_.closeSocket();
        return;
    }
    link_.WaitMS(400);
    analog_.channelReplyReceived = false;
    f.cmdWeight.backColor = color::ButtonFace; // the polling marker
    link_.req.strFunctionName = fn::GetRTStatus;
    link_.req.strParameters = QString();
    link_.IssueRequest(true);
}

void FrmClient::cmdChanSwitch_Click() {
    const QString channel = f.lblChanNum.caption;
    if (channel == QStringLiteral("1"))
        cmdChan_Click(2);
    else if (channel == QStringLiteral("2"))
        cmdChan_Click(1);
}

void FrmClient::DataArrival_CH_Switch(const QString& answer) {
    changed();
    if (answer.contains(QStringLiteral("</ch"))) {
        analog_.channelReplyReceived = true;
    } else if (answer.contains(QStringLiteral("<ERROR_CODE>200</ERROR_CODE>"))) {
        // Refused: fast sampling runs. The session is saved and closed, its controls reset.
        SaveSampleHistory();
        EndSampleSession();
        f.lblErrNumer.caption = QStringLiteral("200");
        f.lblErrNumer.backColor = color::Red;
    }

    const Int32 late = ticksSince(link_.lngRequestStartTick, p_.GetTickCount());
    if (late > link_.lngTimeOut) {
        f.txtRealTimeInfo.caption = rawAnswerText(answer);
        p_.messageBox(QStringLiteral(" Invalid XML data!  "));
        link_.closeSocket();
        cmdStopSample_Click();
        f.cmdStart_Sample.enabled = true;
        f.cmdStart_Sample.backColor = color::ButtonFace;
        f.cmdWeight.enabled = true;
    }
}

void FrmClient::SetFrequencyUnvisible(bool visible) {
    f.txtFrequency.visible = visible;
    f.LbLFrequency.visible = visible;
    f.LbLFrequencyData.visible = visible;
    f.LbLCurFrequency.visible = visible;
    f.LbLCurrentFreqD.visible = visible;
}

} // namespace torv
