#pragma once

// The form model of the main window, frmClient: every control the panel's logic reads or
// writes, named as the controls are named. The constructor gives the designed state.

#include "form/control.h"

namespace torv {

struct FrmClientForm : FormModel {
    FrmClientForm();

    // Connection and counters
    TORV_CONTROL(lblTxtIP);
    TORV_CONTROL(TxtIP);
    TORV_CONTROL(lblTimeOut);
    TORV_CONTROL(txtTimeout2);
    TORV_CONTROL(lblCommStatus);
    TORV_CONTROL(lblCommStatusData);
    TORV_CONTROL(lblTotalReadings);
    TORV_CONTROL(lblTotalReadingsD);
    TORV_CONTROL(LbLFrequency);
    TORV_CONTROL(LbLFrequencyData);
    TORV_CONTROL(LbLCurFrequency);
    TORV_CONTROL(LbLCurrentFreqD);
    TORV_CONTROL(lblLastReadingNumber);
    TORV_CONTROL(txtLastReadingNumberD);
    TORV_CONTROL(txtFrequency); // the frequency text box hidden with the frequency labels
    TORV_CONTROL(cmdWeight);
    TORV_CONTROL(cmdStart_Sample);
    TORV_CONTROL(cmdStopSample);
    TORV_CONTROL(cmdSaveConfig);

    // Message status and raw answers
    TORV_CONTROL(FraErrorStatus);
    TORV_CONTROL(lblLastErrCode);
    TORV_CONTROL(lblErrNumer);
    TORV_CONTROL(lblLastErrDescr);
    TORV_CONTROL(lblErrDescr);
    TORV_CONTROL(txtRealTimeInfo);
    TORV_CONTROL(lblXML_Data);
    TORV_CONTROL(cmdQuitXML);
    TORV_CONTROL(cmdShowXMLData);
    TORV_CONTROL(ImaOKA_Logo);
    TORV_CONTROL(LbLAutoSize);
    TORV_CONTROL(LbLAutoSize2); // hidden labels that size the wide messages

    // Real-time status
    TORV_CONTROL(lblWeight);
    TORV_CONTROL(lblWT_BRUTTO);
    TORV_CONTROL(lblUnitNameWGT);
    TORV_CONTROL(lblTare);
    TORV_CONTROL(lblTareData);
    TORV_CONTROL(lblUnitNameTare);
    TORV_CONTROL(chkTare);
    TORV_CONTROL(lblA2D);
    TORV_CONTROL(lblA2D_Data);
    TORV_CONTROL(LbLMaxWGT);
    TORV_CONTROL(LbLMaxWGTdata);
    TORV_CONTROL(cmdShowRTGraph);

    // Outputs and inputs
    TORV_CONTROL(FraOut);
    TORV_CONTROL_ARRAY(cmdSetOutOn, 1, 14);
    TORV_CONTROL(FraInp);
    TORV_CONTROL(lblInputs);
    TORV_CONTROL(lblShowInpStatus);
    TORV_CONTROL_ARRAY(lblInpNum, 1, 8);
    TORV_CONTROL(ChkStartOutStatus);

    // Set points
    TORV_CONTROL_ARRAY(ChkSetPointNew, 11, 14);
    TORV_CONTROL_ARRAY(txtSetPointNew, 11, 14);
    TORV_CONTROL_ARRAY(LBL_SP, 11, 14);
    TORV_CONTROL(ChkSetPoint);
    TORV_CONTROL(txtSetPoint);
    TORV_CONTROL(ShaSetPoint);
    TORV_CONTROL(LbLSetPoint);

    // Analog output, integration, channels
    TORV_CONTROL(FraSetD2A);
    TORV_CONTROL(txtSetD2A);
    TORV_CONTROL(cmdSetD2A);
    TORV_CONTROL(LbLGotD2A);
    TORV_CONTROL(LbLGotD2Adata);
    TORV_CONTROL(FraIntegration);
    TORV_CONTROL(cmbSetIntegr);
    TORV_CONTROL(LbLSetIntegration);
    TORV_CONTROL(lblIntegration);
    TORV_CONTROL(txtIntegration);
    TORV_CONTROL(FraChannels);
    TORV_CONTROL(cmdChanSwitch);
    TORV_CONTROL(lblChanCaption);
    TORV_CONTROL(lblChanNum);
    TORV_CONTROL(LblSwitch);
    TORV_CONTROL_ARRAY(cmdChan, 1, 2);

    // Fast sampling and the data file
    TORV_CONTROL(FraFastSample);
    TORV_CONTROL(LbLFastSample);
    TORV_CONTROL(lblErrorReadings);
    TORV_CONTROL(lblErrorReadingsD);
    TORV_CONTROL(lblParsedReadings);
    TORV_CONTROL(lblParsedReadingsD);
    TORV_CONTROL(lblCurrentBlockWeight);
    TORV_CONTROL(FraHistory);
    TORV_CONTROL(lblHistFileName);
    TORV_CONTROL(txtHistFileName);
    TORV_CONTROL(cmdBrowse);
    TORV_CONTROL(CmdShowGraph);
    TORV_CONTROL(FraXMode);
    TORV_CONTROL_ARRAY(OptX_mode, 1, 2);
};

} // namespace torv
