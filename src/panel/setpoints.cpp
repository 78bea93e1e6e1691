// Set points of outputs 11..14 and the single set point of output 10.
//
// Each of the outputs 11..14 is either a STANDARD output, switched by its button, or a SETPOINT
// output that the card switches when the weight reaches the value typed for it (set point n
// belongs to output n + 10). A SETPOINT output whose output bit is 0 is an active set point.

#include "base/format.h"
#include "base/numeric.h"
#include "base/platform.h"
#include "frm_client.h"
#include "link/catalogue.h"
#include "link/elements.h"

#include <limits>

namespace torv {

namespace {

const QString NoSetPointText = QStringLiteral("Type Value>0");
const QString ActivateTip = QStringLiteral("Click to activate Setpoint");
const QString DeactivateTip = QStringLiteral("Click to deactivate Setpoint");
const QChar Quote = QLatin1Char('"');

// SpSendState of a set point whose value was just sent: 65535 in sixteen bits.
constexpr Int16 ValueJustSent = -1;

// Geometry of the set-point controls, in twips, when the output button has none of its own.
constexpr int DefaultButtonLeft = 120, DefaultButtonTop = 240, DefaultButtonPitch = 555,
              DefaultButtonWidth = 495, DefaultButtonHeight = 375;
constexpr int CheckBoxHeight = 255, TextBoxHeight = 285, Gap = 45;

// The answers whose handlers make the saved request current again. Such a request is never
// itself saved: its reply would restore it and send it again and again.
bool restoresSavedRequest(const QString& functionName) {
    return functionName == fn::GetSetpoints || functionName == fn::SetSetpoints ||
           functionName == fn::SetD2A || functionName == fn::SetIntegration;
}

} // namespace

// ---- The saved request -------------------------------------------------------------------

void FrmClient::saveRequestForOneOff() {
    if (restoresSavedRequest(link_.req.strFunctionName)) return;
    link_.req.strPrevFunctionName = link_.req.strFunctionName;
    link_.req.strPrevParameters = link_.req.strParameters;
}

void FrmClient::resumeSavedRequest() {
    link_.req.strFunctionName = link_.req.strPrevFunctionName;
    link_.req.strParameters = link_.req.strPrevParameters;
    if (link_.req.strFunctionName.isEmpty()) {
        // Nothing was running before the command: only the connection is closed.
        link_.IssueRequest(false);
        return;
    }
    // An output command that the one-off command overtook never reached the card (its
    // connection was closed before it was sent), so it goes out whatever the polling flag
    // says; the whole output word is sent, so sending it again is harmless.
    link_.IssueRequest(link_.req.strFunctionName == fn::SetOutput ? true
                                                                  : link_.req.blnRepeatRequest);
}

// ---- Start-up ----------------------------------------------------------------------------

void FrmClient::InitSetPoint_11_14() {
    setpoints_.SetpointsArrived = false;
    saveRequestForOneOff();
    link_.req.strFunctionName = fn::GetSetpoints;
    link_.req.strParameters = QStringLiteral("ID=1");
    link_.IssueRequest(true);
    if (!link_.WaitTrueFlag(setpoints_.SetpointsArrived, 2000))
        return; // the controls keep their state

    for (int k = 11; k <= 14; ++k) {
        Control& box = f.txtSetPointNew[k];
        // A box the card left empty holds no set point either.
        if (box.caption == NoSetPointText || box.caption.isEmpty()) {
            box.visible = false;
            continue;
        }
        setValue(f.ChkSetPointNew[k], 1);
        box.visible = true;
        box.backColor = color::InactiveCaptionText;
        const bool off = (status_.OutStatus & outputs_.OutputMask[k]) != 0;
        box.foreColor = off ? color::Black : color::Red;
        box.bold = !off;
        f.LBL_SP[k].visible = !off;
        f.ChkSetPointNew[k].foreColor = box.foreColor;
        f.cmdSetOutOn[k].toolTip = off ? ActivateTip : DeactivateTip;
    }

    for (int k = 11; k <= 14; ++k) {
        Control& label = f.LBL_SP[k];
        const Control& check = f.ChkSetPointNew[k];
        label.foreColor = color::Red;
        label.top = check.top;
        label.left = f.cmdSetOutOn[k].left;
        label.height = check.height;
        label.visible = false;
    }
    SetOutLampStatus(status_.OutStatus);
}

void FrmClient::InitSetPointLocation_11_14() {
    // Under each of the buttons 11..14: the check box, and below it the value box. LBL_SP
    // lies exactly over the check box.
    for (int k = 11; k <= 14; ++k) {
        const Control& button = f.cmdSetOutOn[k];
        int left = button.left, top = button.top, width = button.width, height = button.height;
        if (width <= 0 || height <= 0) {
            left = DefaultButtonLeft + (k - 1) * DefaultButtonPitch;
            top = DefaultButtonTop;
            width = DefaultButtonWidth;
            height = DefaultButtonHeight;
        }
        Control& check = f.ChkSetPointNew[k];
        check.left = left;
        check.top = top + height + Gap;
        check.width = width;
        check.height = CheckBoxHeight;

        Control& box = f.txtSetPointNew[k];
        box.left = left;
        box.top = check.top + check.height + Gap;
        box.width = width;
        box.height = TextBoxHeight;

        Control& label = f.LBL_SP[k];
        label.left = left;
        label.top = check.top;
        label.width = check.width;
        label.height = check.height;
    }
}

// ---- Redefining an output ----------------------------------------------------------------

void FrmClient::ChkSetPointNew_Click(int Index) {
    outputs_.LastOutputIndex = static_cast<Int16>(Index);
    saveRequestForOneOff();
    Control& check = f.ChkSetPointNew[Index];
    Control& box = f.txtSetPointNew[Index];

    if (check.value == 1) {
        // Now a SETPOINT output: fetch the values the card holds.
        box.toolTip = QStringLiteral("Type new Setpoint and press <Enter> to save.");
        check.toolTip = QString();
        link_.req.strFunctionName = fn::GetSetpoints;
        link_.req.strParameters = QStringLiteral("ID=1");
        link_.IssueRequest(true);
    } else {
        if (isNumeric(box.caption)) {
            const bool yes = p_.askYesNo(QStringLiteral("Are you sure you want to redefine this") +
                                         QStringLiteral("\r\n") +
                                         QStringLiteral("SETPOINT output as STANDARD output?"));
            if (!yes) {
                // Checking the box again runs this handler once more, which fetches the
                // values; their reply shows the box again.
                setValue(check, 1);
                box.backColor = color::InactiveCaptionText;
                f.cmdSetOutOn[Index].toolTip = DeactivateTip;
            } else {
                box.caption = QStringLiteral("-1");
                QString body;
                GetParamForSetSetPoints(body);
                link_.req.strFunctionName = fn::SetSetpoints;
                link_.req.strParameters = body;
                link_.IssueRequest(true);
                check.foreColor = color::Black;
                f.cmdSetOutOn[Index].toolTip = QString();
            }
        }
        box.bold = false;
        box.visible = false;
    }
    DoTips_Off_On_ChkSP_txtSP(Index);
}

// ---- Editing a value ---------------------------------------------------------------------

void FrmClient::txtSetPointNew_Change(int Index) {
    // White and black: edited, not saved yet.
    f.txtSetPointNew[Index].backColor = color::White;
    f.txtSetPointNew[Index].foreColor = color::Black;
    f.ChkSetPointNew[Index].foreColor = color::Black;
}

void FrmClient::txtSetPointNew_GotFocus(int Index) {
    // The window selects the whole text when a box gets the focus.
    setpoints_.SetPointEditText = f.txtSetPointNew[Index].caption;
}

void FrmClient::txtSetPointNew_KeyPress(int Index, int KeyAscii) {
    if (KeyAscii == 27) {
        f.txtSetPointNew[Index].caption = setpoints_.SetPointEditText;
    } else if (KeyAscii == 13) {
        bool ok = false;
        DoSetPointTest(Index, ok);
        if (!ok) return;
        SetSetPoints_11_14(Index);
        link_.WaitMS(200);
        Show_SP_status(Index);
    }
}

void FrmClient::DoSetPointTest(int Index, bool& ok) {
    if (Index <= 10 || f.ChkSetPointNew[Index].value != 1) {
        ok = true;
        return;
    }
    Control& box = f.txtSetPointNew[Index];
    const QString text = box.caption;
    if (!IsNumber(text)) {
        ShowMessageWide(QStringLiteral("Set Point must be a number!!!"));
        if (box.enabled) {
            box.visible = true;
            f.setFocus(box);
        }
        ok = false;
        return;
    }
    // IsNumber has left only the locale's separator in the text.
    const double v = CDbl(text);
    if (v <= setpoints_.MaximumLoad && v >= 0) {
        ok = true;
        return;
    }
    ShowMessageWide(QStringLiteral("Set Point value must be [0 - ") +
                    numberText(setpoints_.MaximumLoad) + QStringLiteral("]"));
    ok = false;
}

// ---- Sending -----------------------------------------------------------------------------

void FrmClient::SetSetPoints_11_14(int Index) {
    outputs_.LastOutputIndex = static_cast<Int16>(Index);
    if (Index <= 10) return;
    bool ok = false;
    DoSetPointTest(Index, ok);
    if (!ok) return;
    if (f.ChkSetPointNew[Index].value != 1) return;

    setpoints_.SpSendState[Index - 11] = ValueJustSent;
    f.txtSetPointNew[Index].backColor = color::InactiveCaptionText;
    QString body;
    GetParamForSetSetPoints(body);
    saveRequestForOneOff();
    link_.req.strFunctionName = fn::SetSetpoints;
    link_.req.strParameters = body;
    link_.IssueRequest(true);
    link_.WaitMS(200);
}

void FrmClient::GetParamForSetSetPoints(QString& body) {
    // All four set points go out every time; a box without a number clears its set point.
    QString v[4];
    for (int k = 11; k <= 14; ++k) {
        const QString& text = f.txtSetPointNew[k].caption;
        v[k - 11] = isNumeric(text) ? text : QStringLiteral("-1");
    }
    body = setSetpointsBody(v[0], v[1], v[2], v[3]);
}

// ---- Replies -----------------------------------------------------------------------------

void FrmClient::DataArrival_GetSetpoints(const QString& answer) {
    changed();
    bool correctionDue = false;

    for (int k = 11; k <= 14; ++k) {
        const QString n = QString::number(k - 10);
        QString value;
        if (!Get_XML_Element_Data(p_, answer, QStringLiteral("<SETPOINT_") + n + QLatin1Char('>'),
                                  value))
            continue;
        Control& box = f.txtSetPointNew[k];
        double v = 0;
        try {
            v = StrToDbl(p_, value);
        } catch (const RuntimeError&) {
            // Too large to hold: certainly above the maximum load.
            v = std::numeric_limits<double>::max();
        }
        box.caption = Format(v, QStringLiteral("0.000"));

        // A value above the maximum load is cleared on the card. Before the first status
        // answer the maximum is not known and nothing is judged.
        const QString maxText = f.LbLMaxWGTdata.caption;
        if (IsNumber(maxText)) {
            const double maximum = StrToDbl(p_, maxText);
            if (StrToDbl(p_, box.caption) > maximum) {
                box.caption = QStringLiteral("-1");
                correctionDue = true;
            }
        }
        if (box.caption.startsWith(QStringLiteral("-1"))) {
            box.caption = NoSetPointText;
            box.foreColor = color::Black;
        }
        setpoints_.SetpointsArrived = true;
        if (outputs_.LastOutputIndex > 10)
            f.txtSetPointNew[outputs_.LastOutputIndex].visible = true;
    }

    f.txtRealTimeInfo.caption = rawAnswerText(answer);

    if (!correctionDue) {
        resumeSavedRequest();
        return;
    }
    // The saved request stays saved: the reply to this write resumes it.
    QString body;
    GetParamForSetSetPoints(body);
    link_.req.strFunctionName = fn::SetSetpoints;
    link_.req.strParameters = body;
    link_.IssueRequest(true);
}

void FrmClient::DataArrival_SetSetpoints(const QString&) {
    changed();
    resumeSavedRequest();
}

// ---- Painting ----------------------------------------------------------------------------

void FrmClient::Show_SP_status(int Index) {
    // Runs right after a request went out and before its reply: it paints the state the
    // request will bring, from the output word the card last echoed.
    const int i = Index - 11;
    const Int16 sendState = setpoints_.SpSendState[i];
    Control& box = f.txtSetPointNew[Index];
    Control& label = f.LBL_SP[Index];
    Control& button = f.cmdSetOutOn[Index];
    const bool off = (outputs_.OutStatusEcho & outputs_.OutputMask[Index]) != 0;

    auto paintActive = [&] {
        box.foreColor = color::Red;
        box.bold = true;
        label.visible = true;
        button.toolTip = DeactivateTip;
    };
    if (off) {
        if (sendState == 0)
            paintActive(); // a click is switching it on
        else
            button.toolTip = ActivateTip; // only a value was sent
    } else if (sendState == ValueJustSent) {
        paintActive();
    } else {
        // A click is switching it off.
        box.foreColor = color::Black;
        box.bold = false;
        label.visible = false;
        button.toolTip = ActivateTip;
    }

    const Control& check = f.ChkSetPointNew[Index];
    if (label.top == check.top) label.height = check.height;
    setpoints_.SpSendState[i] = 0;
    f.ChkSetPointNew[Index].foreColor = box.foreColor;
}

// ---- The single set point of output 10 ---------------------------------------------------

void FrmClient::ChkSetPoint_Click() {
    f.LblSwitch.visible = false;
    f.LblSwitch.toolTip = QString();
    f.LblSwitch.caption = QString();
    if (f.ChkSetPoint.value == 1) {
        // The set point works on channel 1 only: no switching while it is checked.
        f.cmdChanSwitch.enabled = false;
        InitSetPoint(100, true);
        const QString hint = QStringLiteral("In order to switch to channel #2, first uncheck ") +
                             Quote + QStringLiteral("Set Point") + Quote + QStringLiteral(".");
        f.LblSwitch.toolTip = hint;
        f.LblSwitch.caption = hint;
        f.LblSwitch.visible = true;
    } else {
        InitSetPoint(100, false);
        f.cmdChanSwitch.enabled = true;
        SetOutputOff(10);
    }
    // A short busy pause, as the panel has always made here.
    volatile int round = 0;
    while (round < (1 << 10))
        round = round + 1;
}

void FrmClient::InitSetPoint(int /*width*/, bool visible) {
    f.ShaSetPoint.visible = visible;
    f.txtSetPoint.visible = visible;
}

void FrmClient::txtSetPoint_Change() {
    // Any edit of the single set point switches output 10 off first.
    SetOutputOff(10);
}

void FrmClient::txtSetPoint_GotFocus() {
    // The window selects the whole text; nothing else happens.
}

void FrmClient::txtSetPoint_KeyPress(int KeyAscii) {
    if (KeyAscii == 13) cmdSetOutOn_Click(10);
}

} // namespace torv
