#pragma once

// The form model of the main window, frmClient: every control the panel's logic reads or
// writes, named as the controls are named. The constructor gives the designed state.

#include "control.h"

#include <functional>

namespace torv {

struct FrmClientForm {
    FrmClientForm();

    QString caption; // window caption

    // Connection and counters
    Control lblTxtIP, TxtIP;
    Control lblTimeOut, txtTimeout2;
    Control lblCommStatus, lblCommStatusData;
    Control lblTotalReadings, lblTotalReadingsD;
    Control LbLFrequency, LbLFrequencyData;
    Control LbLCurFrequency, LbLCurrentFreqD;
    Control lblLastReadingNumber, txtLastReadingNumberD;
    Control txtFrequency; // the frequency text box hidden with the frequency labels
    Control cmdWeight, cmdStart_Sample, cmdStopSample;
    Control cmdSaveConfig;

    // Message status and raw answers
    Control FraErrorStatus, lblLastErrCode, lblErrNumer, lblLastErrDescr, lblErrDescr;
    Control txtRealTimeInfo, lblXML_Data, cmdQuitXML, cmdShowXMLData, ImaOKA_Logo;
    Control LbLAutoSize, LbLAutoSize2; // hidden labels that size the wide messages

    // Real-time status
    Control lblWeight, lblWT_BRUTTO, lblUnitNameWGT;
    Control lblTare, lblTareData, lblUnitNameTare, chkTare;
    Control lblA2D, lblA2D_Data;
    Control LbLMaxWGT, LbLMaxWGTdata;
    Control cmdShowRTGraph;

    // Outputs and inputs
    Control FraOut;
    ControlArray<1, 14> cmdSetOutOn;
    Control FraInp, lblInputs, lblShowInpStatus;
    ControlArray<1, 8> lblInpNum;
    Control ChkStartOutStatus;

    // Set points
    ControlArray<11, 14> ChkSetPointNew, txtSetPointNew, LBL_SP;
    Control ChkSetPoint, txtSetPoint, ShaSetPoint, LbLSetPoint;

    // Analog output, integration, channels
    Control FraSetD2A, txtSetD2A, cmdSetD2A, LbLGotD2A, LbLGotD2Adata;
    Control FraIntegration, cmbSetIntegr, LbLSetIntegration, lblIntegration, txtIntegration;
    Control FraChannels, cmdChanSwitch, lblChanCaption, lblChanNum, LblSwitch;
    ControlArray<1, 2> cmdChan;

    // Fast sampling and the data file
    Control FraFastSample, LbLFastSample, lblErrorReadings, lblErrorReadingsD;
    Control lblParsedReadings, lblParsedReadingsD, lblCurrentBlockWeight;
    Control FraHistory, lblHistFileName, txtHistFileName, cmdBrowse, CmdShowGraph;
    Control FraXMode;
    ControlArray<1, 2> OptX_mode;

    // The control that should get the focus next (its name), set by the logic, taken by the view.
    QString focusRequest;
    void setFocus(const Control& c) { focusRequest = c.name; }

    // Every control, for the window to bind and for look-ups by name.
    void forEach(const std::function<void(Control&)>& f);
    Control* find(const QString& name);
};

} // namespace torv
