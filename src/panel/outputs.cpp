// Output buttons and input lamps, the operating lock and the set-point hints of outputs 11..14.

#include "base/bits.h"
#include "base/platform.h"
#include "frm_client.h"
#include "link/catalogue.h"
#include "link/elements.h"

namespace torv {

namespace {
const QChar Quote = QLatin1Char('"');
} // namespace

void FrmClient::SetOutLampStatus(Int16 status) {
    const QString bits = IntToBits(status, outputs_.OutputCount);
    // With the single set point checked, position 1 (button 14) is left to the set-point word.
    const int first = f.ChkSetPoint.value == 1 ? 2 : 1;
    for (int pos = first; pos <= outputs_.OutputCount; ++pos) {
        Control& button = f.cmdSetOutOn[outputs_.OutputCount + 1 - pos];
        button.backColor = bits[pos - 1] == QLatin1Char('1') ? color::InactiveBorder : color::Red;
    }
    for (int j = 1; j <= 4; ++j)
        f.cmdSetOutOn[j + 10].backColor =
            (status_.SpStatus & (1 << j)) ? color::Red : color::InactiveBorder;
}

void FrmClient::SetInpLampStatus(Int16 status) {
    const QString bits = ByteToBits(static_cast<std::uint8_t>(status & 0xFF));
    for (int i = 1; i <= 8; ++i)
        f.lblInpNum[i].backColor =
            bits[i - 1] == QLatin1Char('1') ? color::InactiveBorder : color::Red;
}

void FrmClient::cmdSetOutOn_Click(int Index) {
    outputs_.LastOutputIndex = static_cast<Int16>(Index);
    if (outputs_.OutputMask[Index] & status_.OutStatus)
        SetOutputOn(Index);
    else
        SetOutputOff(Index);
    if (outputs_.SetOutputSent && Index >= 11 && f.txtSetPointNew[Index].visible) {
        const Control& box = f.txtSetPointNew[Index];
        if (box.backColor == color::White && box.foreColor == color::Black)
            SetSetPoints_11_14(Index);
        Show_SP_status(Index);
    }
}

void FrmClient::SetOutputOff(int Index) {
    outputs_.SavedStopEnabled = f.cmdStopSample.enabled;
    if (outputs_.OutputMask[Index] & status_.OutStatus) return;
    sendOutputWord(Index, false);
}

void FrmClient::SetOutputOn(int Index) {
    outputs_.SavedStopEnabled = f.cmdStopSample.enabled;
    // Always true for a valid button; kept as the test the panel has always made.
    if (!(Index <= outputs_.OutputCount || (outputs_.OutputMask[Index] & status_.OutStatus)))
        return;
    sendOutputWord(Index, true);
}

// The set-point check, then the whole output word with this output's bit cleared (on) or set
// (off): the card is always told the complete new state, never a single bit.
void FrmClient::sendOutputWord(int Index, bool on) {
    bool ok = false;
    DoSetPointTest(Index, ok);
    if (!ok) {
        outputs_.SetOutputSent = false;
        return;
    }
    outputs_.SetOutputSent = true;
    outputs_.PendingOutBits =
        static_cast<Int16>(outputs_.PendingOutBits | outputs_.OutputMask[Index]);
    const Int16 word = on ? static_cast<Int16>(~outputs_.PendingOutBits & status_.OutStatus)
                          : static_cast<Int16>(status_.OutStatus | outputs_.PendingOutBits);
    link_.req.strParameters = setOutputBody(word);
    link_.req.strFunctionName = fn::SetOutput;
    link_.IssueRequest(true);
    outputs_.PendingOutBits = 0;
}

void FrmClient::DataArrival_SetOutput(const QString& answer) {
    changed();
    link_.req.strFunctionName = fn::GetRTStatus;
    link_.req.strParameters = QString();
    if (outputs_.LastOutputIndex >= 10) link_.WaitMS(300);
    link_.IssueRequest(true);

    showErrorElements(answer);
    QString v;
    if (Get_XML_Element_Data(p_, answer, QStringLiteral("<OUT_STATUS_ECHO>"), v)) {
        status_.OutStatus = outputs_.OutStatusEcho = statusWordValue(v);
        if (outputs_.OutStatusEcho != outputs_.PrevOutStatusEcho) {
            SetOutLampStatus(status_.OutStatus);
            outputs_.PrevOutStatusEcho = outputs_.OutStatusEcho;
        }
    }

    if (f.cmdWeight.backColor == color::Green) {
        link_.req.strFunctionName = fn::GetRTStatus;
        link_.IssueRequest(link_.req.blnRepeatRequest);
    } else if (f.cmdStart_Sample.backColor == color::Green) {
        link_.req.strFunctionName = fn::GetFastSampling;
        link_.IssueRequest(link_.req.blnRepeatRequest);
    } else {
        f.cmdStopSample.enabled = outputs_.SavedStopEnabled;
    }
    EnableSetPointEdit(outputs_.LastOutputIndex);
    DoTips_Off_On_ChkSP_txtSP(outputs_.LastOutputIndex);
}

void FrmClient::InitON_OFF() {
    link_.req.strParameters = setOutputBody(static_cast<Int16>((1 << outputs_.OutputCount) - 1));
    link_.req.strFunctionName = fn::SetOutput;
    link_.IssueRequest(true);
    link_.WaitMS(500);
    link_.req.strFunctionName = fn::GetRTStatus;
    link_.req.strParameters = QString();
    link_.IssueRequest(true);
    link_.WaitMS(300);
}

void FrmClient::EnableSetPointEdit(int Index) {
    if (Index < 11) return;
    const bool off = (outputs_.OutputMask[Index] & outputs_.OutStatusEcho) != 0;
    f.txtSetPointNew[Index].enabled = off;
    f.ChkSetPointNew[Index].enabled = off;
}

void FrmClient::EnableSetPointEditAll() {
    for (int k = 11; k <= 14; ++k) {
        EnableSetPointEdit(k);
        f.LBL_SP[k].visible = !f.ChkSetPointNew[k].enabled;
        DoTips_Off_On_ChkSP_txtSP(k);
    }
}

void FrmClient::DoTips_Off_On_ChkSP_txtSP(int Index) {
    if (Index < 11) return;
    const QString k = QString::number(Index);
    const QString n = QString::number(Index - 10);
    const Control& box = f.ChkSetPointNew[Index];
    QString tip;
    if (box.value != 1) {
        tip = box.enabled
                  ? QStringLiteral("Click to redefine STANDARD output ") + k +
                        QStringLiteral(" as SETPOINT output ") + n
                  : QStringLiteral("To redefine STANDARD output ") + k +
                        QStringLiteral(" as SETPOINT output ") + n +
                        QStringLiteral(", first click the '") + k + QStringLiteral("' button.");
    } else {
        tip = box.enabled
                  ? QStringLiteral("Click to redefine SETPOINT output ") + n +
                        QStringLiteral(" as STANDARD output ") + k
                  : QStringLiteral("To change or redefine SETPOINT ") + n +
                        QStringLiteral(", first click the '") + k + QStringLiteral("' button.");
    }
    f.LBL_SP[Index].toolTip = tip;
    f.ChkSetPointNew[Index].toolTip = tip;
    // The hint label lies over the check box exactly while the box cannot be used.
    f.LBL_SP[Index].visible = !box.enabled;
}

void FrmClient::SetOutPut_Disasable(bool enabled) {
    for (int k = 1; k <= 14; ++k)
        f.cmdSetOutOn[k].enabled = enabled;
    f.ChkSetPoint.enabled = enabled;
    f.cmdChanSwitch.enabled = enabled;
    f.txtSetPoint.enabled = enabled;
    for (int k = 11; k <= 14; ++k) {
        f.ChkSetPointNew[k].enabled = enabled;
        f.txtSetPointNew[k].enabled = enabled;
        f.LBL_SP[k].enabled = enabled;
    }
    f.FraChannels.enabled = enabled;
    f.FraIntegration.enabled = enabled;
    f.cmdSetD2A.enabled = enabled;
    f.txtSetD2A.enabled = enabled;
}

void FrmClient::ShowHideInputsLamp(bool show) {
    for (int i = 1; i <= 8; ++i)
        f.lblInpNum[i].visible = show;
    f.lblShowInpStatus.visible = !show;
    if (show) {
        f.LblSwitch.caption = QString();
        f.LblSwitch.toolTip = QString();
        f.LblSwitch.visible = false;
    } else {
        const QString hint = QStringLiteral("In order to switch to channel #2, first click ") +
                             Quote + QStringLiteral("Stop") + Quote + QStringLiteral("and wait.");
        f.LblSwitch.toolTip = hint;
        f.LblSwitch.caption = hint;
        f.LblSwitch.visible = true;
    }
    f.TxtIP.enabled = !show;
    f.cmdShowRTGraph.enabled = true;
}

} // namespace torv
