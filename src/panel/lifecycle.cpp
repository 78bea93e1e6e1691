// Start-up and shut-down of the main panel, the raw-answer view, the configuration file and
// what the link does to the window.

#include "base/messages.h"
#include "base/numeric.h"
#include "base/platform.h"
#include "error_elements.h"
#include "files/fields.h"
#include "files/history_viewer.h"
#include "files/sample_file.h"
#include "frm_client.h"
#include "graph/graph_store.h"
#include "link/catalogue.h"

#include <QFile>

namespace torv {

const QString FrmClient::DefaultCardAddress = QStringLiteral("192.168.1.100");
const QString FrmClient::ConfigFileName = QStringLiteral("TORV_NET.cfg");

FrmClient::FrmClient(Platform& platform)
    : p_(platform)
    , link_(platform, *this, *this) {
    // Check boxes and options fire their Click handlers when their value changes.
    f.chkTare.onClick = [this] { chkTare_Click(); };
    f.ChkStartOutStatus.onClick = [this] { ChkStartOutStatus_Click(); };
    f.ChkSetPoint.onClick = [this] { ChkSetPoint_Click(); };
    for (int k = 11; k <= 14; ++k)
        f.ChkSetPointNew[k].onClick = [this, k] { ChkSetPointNew_Click(k); };
    for (int i = 1; i <= 2; ++i)
        f.OptX_mode[i].onClick = [this, i] { OptX_mode_Click(i); };
    setpoints_.SpSendState.fill(0);
}

FrmClient::~FrmClient() = default;

void FrmClient::Form_Load() {
    changed();
    setDecimalSeparatorFromSample(p_.localeTextOfOnePointFive());
    f.TxtIP.caption = DefaultCardAddress;

    config.address = DefaultCardAddress;
    config.timeout = f.txtTimeout2.caption;
    config.xMode = QString::number(xMode);
    runHandler(p_, [&] { Load_Config_File(p_, ConfigFileName, config, DefaultCardAddress); });
    f.TxtIP.caption = addressOverride.isEmpty() ? config.address : addressOverride;
    f.txtTimeout2.caption = config.timeout;
    const int mode = config.xMode == QStringLiteral("2") ? 2 : 1;
    setValue(f.OptX_mode[mode], 1);
    xMode = mode;

    runHandler(p_, [&] { link_.SetTimeOutValue(link_.lngTimeOut, f.txtTimeout2.caption); });

    layOutFrames();
    SetXML_Data(false);

    runHandler(p_, [&] { InitSetPoint_11_14(); });
    setValue(f.ChkSetPoint, config.setPointCheckBoxStart == QStringLiteral("1") ? 1 : 0);

    // The start-up output choice.
    runHandler(p_, [&] {
        if (config.startOutStatus != QStringLiteral("1")) {
            StartOffTip = QStringLiteral("Check to turn off all outputs at power-up.");
            f.ChkStartOutStatus.toolTip = StartOffTip;
            link_.req.strFunctionName = fn::GetRTStatus;
            link_.req.strParameters = QString();
            link_.IssueRequest(true);
            setValue(f.ChkStartOutStatus, 0);
        } else {
            setValue(f.ChkStartOutStatus, 1);
            InitON_OFF();
        }
    });
    changed();
}

void FrmClient::layOutFrames() {
    outputs_.OutputCount = 14;
    for (int k = 1; k <= outputs_.OutputCount; ++k)
        outputs_.OutputMask[k] = static_cast<Int16>(1 << (k - 1));
    f.lblTareData.caption = QStringLiteral("0");
    f.lblWT_BRUTTO.caption = QStringLiteral("0.000");
    InitSetPointLocation_11_14();
    SetFrequencyUnvisible(true);
}

void FrmClient::Form_Unload() {
    link_.TimerTimeOut().setEnabled(false);
    link_.closeSocket();
    closeHistoryViewers(p_, viewerListFolder(p_.programFolder()), startedViewers);
}

void FrmClient::closeLink() {
    link_.TimerTimeOut().setEnabled(false);
    link_.closeSocket();
}

void FrmClient::showErrorElements(const QString& answer) {
    torv::showErrorElements(p_, answer, f.lblErrNumer.caption, f.lblErrNumer.foreColor,
                            f.lblErrDescr.caption, f.lblErrDescr.foreColor);
}

void FrmClient::SetXML_Data(bool bShow) {
    f.txtRealTimeInfo.visible = bShow;
    f.lblXML_Data.visible = bShow;
    f.cmdQuitXML.visible = bShow;
    f.FraErrorStatus.visible = bShow;
    f.ImaOKA_Logo.visible = !bShow;
    f.cmdShowXMLData.visible = !bShow;
}

void FrmClient::cmdSaveConfig_Click() {
    takeConfigFromControls();
    config.address = f.TxtIP.caption; // the operator saves what the panel shows
    Save_Config_File(p_, ConfigFileName, config);
    // The screen layout: the window's place and size, in our own small format.
    const QByteArray layout = QStringLiteral("Window, %1, %2, %3, %4\r\n")
                                  .arg(layoutLeft)
                                  .arg(layoutTop)
                                  .arg(layoutWidth)
                                  .arg(layoutHeight)
                                  .toLatin1();
    writeTextFile(screenLayoutFile, layout);
}

void FrmClient::takeConfigFromControls() {
    // An address given on the command line (the built-in simulator's port) is not the card's:
    // a save the operator did not ask for (the start-up choice) keeps the stored address
    // unless another was typed; "Save Config" saves the address shown.
    if (addressOverride.isEmpty() || f.TxtIP.caption != addressOverride)
        config.address = f.TxtIP.caption;
    config.startOutStatus = QString::number(f.ChkStartOutStatus.value);
    config.setPointCheckBoxStart = QString::number(f.ChkSetPoint.value);
    config.timeout = f.txtTimeout2.caption;
    config.xMode = QString::number(xMode);
}

void FrmClient::ChkStartOutStatus_Click() {
    f.ChkStartOutStatus.toolTip = f.ChkStartOutStatus.value == 0 ? StartOffTip : QString();
    takeConfigFromControls();
    Save_Config_File(p_, ConfigFileName, config);
}

void FrmClient::OptX_mode_Click(int index) {
    xMode = index;
    f.OptX_mode[index].value = 1;
    f.OptX_mode[index == 1 ? 2 : 1].value = 0;
}

void FrmClient::cmdShowRTGraph_Click() {
    if (openGraphSetUp) openGraphSetUp();
}

void FrmClient::ShowRTGraph() {
    // Open graph windows no longer keep above the panel once readings start or stop.
    if (graph && graph->openWindowCount > 0) graph->ShowRTGraph(0);
    data_.startDateTime = p_.NowString();
}

void FrmClient::ShowMessageWide(const QString& text) {
    torv::ShowMessageWide(p_, text);
}

// ---- What the link does to the window ----------------------------------------------------

void FrmClient::setCommStatus(const QString& caption) {
    changed();
    f.lblCommStatusData.caption = caption;
}

void FrmClient::requestSent(const QString& functionName) {
    changed();
    f.cmdWeight.backColor = functionName == fn::GetRTStatus ? color::Green : color::ButtonFace;
    if (functionName == fn::GetFastSampling) ShowFastSamplingCurrentWeight();
}

void FrmClient::showRawAnswer(const QString& text) {
    changed();
    f.txtRealTimeInfo.caption = text;
}

void FrmClient::ServerNoAnswer() {
    changed();
    f.cmdWeight.backColor = color::ButtonFace;
    f.cmdStart_Sample.backColor = color::ButtonFace;
    f.lblCommStatusData.caption = QStringLiteral("Not Connected");
    p_.messageBox(QStringLiteral("Server does not answer! Possibly IP-address is incorrect.") +
                  QLatin1Char('\n') +
                  QStringLiteral("Be sure the Server is running and try again, please! "));
    link_.closeSocket();
    f.cmdStart_Sample.enabled = true;
    if (f.TxtIP.visible && f.TxtIP.enabled) f.setFocus(f.TxtIP);
    SetOutPut_Disasable(true);
    // The stop ends polling and any session here: a card that does not answer is not asked
    // to stop, or the same report would follow.
    serverNotAnswering = true;
    struct Reset {
        bool& flag;
        ~Reset() { flag = false; }
    } reset{serverNotAnswering};
    cmdStopSample_Click();
    if (f.lblChanNum.caption == QStringLiteral("1")) f.cmdStart_Sample.enabled = true;
}

} // namespace torv
