#include "frm_client_form.h"

namespace torv {

#define INIT(member, text) member.caption = QStringLiteral(text)

FrmClientForm::FrmClientForm() {
    caption = QStringLiteral("TORV-NET Client");

    INIT(lblTxtIP, "Card IP address:");
    INIT(TxtIP, "");
    TxtIP.backColor = color::White;
    INIT(lblTimeOut, "TimeOut (ms):");
    INIT(txtTimeout2, "5000");
    txtTimeout2.backColor = color::White;
    INIT(lblCommStatus, "Communication Status:");
    INIT(lblCommStatusData, "Not connected");
    INIT(lblTotalReadings, "Total Readings:");
    INIT(lblTotalReadingsD, "0");
    INIT(LbLFrequency, "Total Frequency:");
    INIT(LbLFrequencyData, "0.000");
    INIT(LbLCurFrequency, "Current Frequency:");
    INIT(LbLCurrentFreqD, "0.000");
    INIT(lblLastReadingNumber, "N for current frequency:");
    INIT(txtLastReadingNumberD, "10");
    txtLastReadingNumberD.backColor = color::White;
    INIT(txtFrequency, "");
    INIT(cmdWeight, " Weight  I/O");
    INIT(cmdStart_Sample, "Fast Sample");
    INIT(cmdStopSample, "Stop");
    cmdStopSample.enabled = false;
    INIT(cmdSaveConfig, "Save Config");

    INIT(FraErrorStatus, "  Message Status  ");
    INIT(lblLastErrCode, "Last message Code:");
    INIT(lblErrNumer, "");
    INIT(lblLastErrDescr, " Message descr.:");
    INIT(lblErrDescr, "");
    INIT(txtRealTimeInfo, "");
    txtRealTimeInfo.backColor = color::White;
    INIT(lblXML_Data, "XML Data");
    INIT(cmdQuitXML, "Hide XML Data");
    INIT(cmdShowXMLData, "Show XML Data");
    INIT(ImaOKA_Logo, "TORV-NET");
    INIT(LbLAutoSize, "");
    INIT(LbLAutoSize2, "");
    LbLAutoSize.visible = LbLAutoSize2.visible = false;

    INIT(lblWeight, "Weight:");
    INIT(lblWT_BRUTTO, "1234.567");
    lblWT_BRUTTO.fontSize = 24;
    INIT(lblUnitNameWGT, "");
    INIT(lblTare, "Tare:");
    INIT(lblTareData, "1234.567");
    lblTareData.fontSize = 24;
    INIT(lblUnitNameTare, "");
    INIT(chkTare, "Tare Off");
    INIT(lblA2D, "A2D:");
    INIT(lblA2D_Data, "");
    INIT(LbLMaxWGT, "Max.Weight:");
    INIT(LbLMaxWGTdata, "");
    INIT(cmdShowRTGraph, "Real Time Graph");
    cmdShowRTGraph.enabled = false;

    INIT(FraOut, " Outputs: ");
    for (int k = 1; k <= 14; ++k) {
        cmdSetOutOn[k].caption = QString::number(k);
        cmdSetOutOn[k].backColor = color::InactiveBorder;
    }
    INIT(FraInp, "");
    INIT(lblInputs, "Inputs:");
    INIT(lblShowInpStatus, "To show current input status click \"Weight I/O\"");
    for (int i = 1; i <= 8; ++i) {
        lblInpNum[i].caption = QString::number(9 - i);
        lblInpNum[i].backColor = color::InactiveBorder;
    }
    INIT(ChkStartOutStatus, "Reset all outputs next run?");

    for (int k = 11; k <= 14; ++k) {
        ChkSetPointNew[k].caption = QStringLiteral("SP%1").arg(k - 10);
        txtSetPointNew[k].backColor = color::InactiveCaptionText;
        txtSetPointNew[k].visible = false;
        LBL_SP[k].caption = QStringLiteral("SP%1").arg(k - 10);
        LBL_SP[k].foreColor = color::Red;
        LBL_SP[k].visible = false;
    }
    INIT(ChkSetPoint, "Set Point");
    INIT(txtSetPoint, "");
    txtSetPoint.visible = false;
    txtSetPoint.backColor = color::White;
    INIT(ShaSetPoint, "");
    ShaSetPoint.visible = false;
    INIT(LbLSetPoint, "Set Point is enabled only with channel #1");

    INIT(FraSetD2A, " Analog Output ");
    INIT(txtSetD2A, "0");
    txtSetD2A.backColor = color::White;
    txtSetD2A.toolTip = QStringLiteral("Value must be 0 - 255 (prefix '0x' for hexadecimal)");
    INIT(cmdSetD2A, " Set D2A ");
    INIT(LbLGotD2A, "Got D2A: ");
    INIT(LbLGotD2Adata, "");
    INIT(FraIntegration, "  Integration  ");
    INIT(cmbSetIntegr, "");
    cmbSetIntegr.items = {QStringLiteral("2"),  QStringLiteral("4"),   QStringLiteral("8"),
                          QStringLiteral("12"), QStringLiteral("16"),  QStringLiteral("32"),
                          QStringLiteral("64"), QStringLiteral("128"), QStringLiteral("256")};
    cmbSetIntegr.backColor = color::White;
    INIT(LbLSetIntegration, "Set:");
    INIT(lblIntegration, "Current:");
    INIT(txtIntegration, "");
    INIT(FraChannels, " Channels ");
    cmdChan[1].caption = QStringLiteral("Channel 1");
    cmdChan[2].caption = QStringLiteral("Channel 2");
    INIT(cmdChanSwitch, "Switch");
    INIT(lblChanCaption, "Channel:");
    INIT(lblChanNum, "1");
    INIT(LblSwitch, "");
    LblSwitch.visible = false;

    INIT(FraFastSample, " Fast Sampling ");
    INIT(LbLFastSample, "Fast Sample is enabled only with channel #1.");
    INIT(lblErrorReadings, "Error readings:");
    INIT(lblErrorReadingsD, "0");
    INIT(lblParsedReadings, "Readings taken:");
    INIT(lblParsedReadingsD, "0");
    INIT(lblCurrentBlockWeight, "");
    INIT(FraHistory, " History ");
    INIT(lblHistFileName, "Data file:");
    INIT(txtHistFileName, "All_data.txt");
    txtHistFileName.backColor = color::White;
    INIT(cmdBrowse, "Browse");
    INIT(CmdShowGraph, "Show History Graph");
    CmdShowGraph.enabled = false;
    INIT(FraXMode, " X axis ");
    OptX_mode[1].caption = QStringLiteral("Reading");
    OptX_mode[2].caption = QStringLiteral("Time in ms.");
    OptX_mode[1].value = 1;
}

#undef INIT

} // namespace torv
