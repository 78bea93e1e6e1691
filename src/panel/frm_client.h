#pragma once

// The main panel's logic. Its procedures are split by feature area over several source files,
// and the state of an area lives in an object declared in the header of that area:
//   lifecycle.cpp       start-up, shut-down, raw-answer view, configuration, link callbacks
//   status.cpp          real-time status polling, tare (state: status.h)
//   outputs.cpp         output buttons, input lamps, operating lock, set-point tips
//                       (state: outputs.h)
//   setpoints.cpp       set points of outputs 11..14 and the single set point of output 10
//                       (state: setpoints.h)
//   analog_channel.cpp  analog output, integration, channel switch (state: analog_channel.h)
//   fast_sampling.cpp   fast-sampling sessions and stop (state: fast_sampling.h)
//   data_file.cpp       the data file and the history viewer
// Event and answer handlers are public under their control names; the rest is private.

#include "analog_channel.h"
#include "base/event_boundary.h"
#include "counters.h"
#include "fast_sampling.h"
#include "files/config_file.h"
#include "files/history_viewer.h"
#include "files/sample_file.h"
#include "frm_client_form.h"
#include "link/dispatch.h"
#include "link/link_view.h"
#include "link/transport.h"
#include "outputs.h"
#include "setpoints.h"
#include "status.h"

#include <functional>

namespace torv {

class GraphStore;
class Platform;
struct FastSamplingBlock;

class FrmClient : public LinkView, public AnswerHandlers {
public:
    explicit FrmClient(Platform& platform);
    ~FrmClient() override;

    FrmClientForm f;

    // Runs an operator event (click, key, edit) at the event boundary and asks for a repaint.
    template <typename F> void event(F&& handler) {
        changed();
        runHandler(p_, std::forward<F>(handler));
        changed();
    }
    // Called whenever the model may have changed; the window schedules one refresh.
    std::function<void()> onModelChanged;

    // What the window and the tests may look at.
    const Transport& link() const { return link_; }
    const Counters& counters() const { return counters_; }
    const SampleData& data() const { return data_; }
    double maximumLoad() const { return setpoints_.MaximumLoad; } // the card's <MAXIMUM_LOAD>
    // Closes the connection and stops the watchdog (the window closing, a test ending).
    void closeLink();

    // ---- Start-up and shut-down, configuration ------------------------------------------
    // The address used when no configuration file names one: a private address of the
    // plant network.
    static const QString DefaultCardAddress;
    static const QString ConfigFileName; // "TORV_NET.cfg"
    void Form_Load();
    // The layout step of start-up: outputs and their masks, tare, set-point controls.
    void layOutFrames();
    void Form_Unload();
    void cmdShowXMLData_Click() { SetXML_Data(true); }
    void cmdQuitXML_Click() { SetXML_Data(false); }
    void txtRealTimeInfo_GotFocus() { f.txtRealTimeInfo.enabled = false; }
    void txtRealTimeInfo_LostFocus() { f.txtRealTimeInfo.enabled = true; }
    void cmdSaveConfig_Click();
    void ChkStartOutStatus_Click();
    void OptX_mode_Click(int index);
    void cmdShowRTGraph_Click();
    // The real-time graph's store (when there is one) and what shows the graph set-up form.
    GraphStore* graph = nullptr;
    std::function<void()> openGraphSetUp;
    // An address given on the command line (the built-in simulator); replaces the stored one.
    QString addressOverride;
    QString screenLayoutFile = QStringLiteral("PRZM.cfg");
    // The copy of the data file kept by the last save that replaced one (the window says so).
    KeptFile keptDataFile;
    // The history viewers this panel started: only they close with it.
    std::vector<std::int64_t> startedViewers;
    // Window geometry kept in the screen layout file (set by the window before saving).
    int layoutLeft = 0, layoutTop = 0, layoutWidth = 0, layoutHeight = 0;

    // ---- Link callbacks --------------------------------------------------------------------
    QString hostText() override { return f.TxtIP.caption; }
    void setCommStatus(const QString& caption) override;
    void requestSent(const QString& functionName) override;
    void showRawAnswer(const QString& text) override;
    void ServerNoAnswer() override;
    void eventHandled() override { changed(); }

    // ---- Handlers ------------------------------------------------------------------------------
    void cmdWeight_Click();
    void DataArrival_GetRTStatus(const QString& answer) override;
    void chkTare_Click();
    void cmdSetOutOn_Click(int Index);
    void DataArrival_SetOutput(const QString& answer) override;
    void ChkSetPointNew_Click(int Index);
    void txtSetPointNew_Change(int Index);
    void txtSetPointNew_GotFocus(int Index);
    void txtSetPointNew_KeyPress(int Index, int KeyAscii);
    void DataArrival_GetSetpoints(const QString& answer) override;
    void DataArrival_SetSetpoints(const QString& answer) override;
    void ChkSetPoint_Click();
    void txtSetPoint_Change();
    void txtSetPoint_GotFocus();
    void txtSetPoint_KeyPress(int KeyAscii);
    void cmdSetD2A_Click();
    void txtSetD2A_Change();
    void txtSetD2A_GotFocus();
    void txtSetD2A_KeyPress(int KeyAscii);
    void DataArrival_SetD2A(const QString& answer) override;
    void cmbSetIntegr_Click();
    void DataArrival_SetIntegration(const QString& answer) override;
    void cmdChan_Click(int Index);
    void cmdChanSwitch_Click();
    void DataArrival_CH_Switch(const QString& answer);
    void cmdStart_Sample_Click();
    void DataArrival_StartSample(const QString& answer) override;
    void DataArrival_FastSampling(const QString& answer) override;
    void DataArrival_StopSample(const QString& answer) override;
    void cmdStopSample_Click();
    void cmdBrowse_Click();
    void CmdShowGraph_Click();

    // Hex text of a byte ("0x1F", "1f", "0F") to its decimal text; ok false when it is none.
    static void IsHex(QString& text, bool& ok);

private:
    void changed() {
        if (onModelChanged) onModelChanged();
    }

    // ---- Start-up, configuration, the raw-answer view ----------------------------------------
    void SetXML_Data(bool bShow);
    // The configuration as the controls show it now (the start-sample time is kept as read).
    void takeConfigFromControls();
    void ShowRTGraph();
    void ShowMessageWide(const QString& text);
    void showErrorElements(const QString& answer);
    bool serverNotAnswering = false; // ServerNoAnswer runs the stop
    ClientConfig config;             // the values of "TORV_NET.cfg"
    int xMode = 1;                   // the X-mode shared with the graphs
    QString StartOffTip;

    // ---- Real-time status ------------------------------------------------------------------
    RealTimeStatus status_;

    // ---- Outputs and inputs -------------------------------------------------------------------
    void SetOutLampStatus(Int16 status);
    void SetInpLampStatus(Int16 status);
    void SetOutputOff(int Index);
    void SetOutputOn(int Index);
    void sendOutputWord(int Index, bool on);
    void InitON_OFF();
    void SetOutPut_Disasable(bool enabled);
    void ShowHideInputsLamp(bool show);
    void EnableSetPointEdit(int Index);
    void EnableSetPointEditAll();
    void DoTips_Off_On_ChkSP_txtSP(int Index);
    Outputs outputs_;

    // ---- Set points -------------------------------------------------------------------------
    void InitSetPoint_11_14();
    void InitSetPointLocation_11_14();
    void DoSetPointTest(int Index, bool& ok);
    void SetSetPoints_11_14(int Index);
    void GetParamForSetSetPoints(QString& body);
    void Show_SP_status(int Index);
    void InitSetPoint(int width, bool visible);
    SetPoints setpoints_;
    // A one-off command (set points, analog output, integration) keeps the request that was
    // running in the saved pair, and its reply makes that request current again.
    void saveRequestForOneOff();
    void resumeSavedRequest();

    // ---- Analog output, integration, channel --------------------------------------------------
    void SetNewIntegration(Int16 value);
    void SetFrequencyUnvisible(bool visible);
    AnalogChannel analog_;

    // ---- Fast sampling ------------------------------------------------------------------------
    void InitStart_Sample_Parameters();
    void ShowFastSamplingCurrentWeight();
    // The block wrapper: takes one answer at the sampling position as the next block.
    void TakeFastSamplingBlock(const QString& answer, Int32 value3, Int32& firstIndex,
                               Int32& lastIndex, bool& ok);
    // Puts what the parse of one block found into the reading list, the block table and the
    // labels; false when the block is not taken.
    bool applyBlock(const FastSamplingBlock& block, Int32 firstIndex, Int32 value3);
    // Makes StopSample the current request, with polling on.
    void SendStopSample();
    // Puts the panel back as it is between sessions (buttons, operating lock, tool tip).
    void EndSampleSession();
    // The reading list of a new session: every entry "0"; it holds no real-time readings.
    void ResetReadingList();
    FastSampling sampling_;

    // ---- The data file ------------------------------------------------------------------------
    QString dataFilePath(); // the remembered path, or txtHistFileName
    TrailerInfo trailerInfo() const;
    // Writes the session's block table and readings to the data file, replacing it.
    void SaveSampleHistory();
    DataFilePaths paths; // remembered data-file path and folder
    SampleData data_;    // the reading list and the block table

    Platform& p_;
    Transport link_;
    Counters counters_;
};

} // namespace torv
