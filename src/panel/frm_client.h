#pragma once

// The main panel's logic. One class holds the form's state as the window module did; its
// procedures are split by feature area over several source files:
//   lifecycle.cpp       start-up, shut-down, raw-answer view, configuration, link callbacks
//   status.cpp          real-time status polling, tare
//   outputs.cpp         output buttons, input lamps, operating lock, set-point tips
//   setpoints.cpp       set points of outputs 11..14 and the single set point of output 10
//   analog_channel.cpp  analog output, integration, channel switch
//   fast_sampling.cpp   fast-sampling sessions, stop, the data file and the history viewer

#include "base/event_boundary.h"
#include "files/config_file.h"
#include "files/sample_file.h"
#include "frm_client_form.h"
#include "link/counters.h"
#include "link/dispatch.h"
#include "link/link_view.h"
#include "link/transport.h"

#include <functional>
#include <vector>

namespace torv {

class Platform;

class FrmClient : public LinkView, public AnswerHandlers {
public:
    explicit FrmClient(Platform& platform);
    ~FrmClient() override;

    Platform& platform() { return p_; }
    FrmClientForm f;
    Transport link;
    Counters counters;

    // Runs an operator event (click, key, edit) at the event boundary and asks for a repaint.
    template <typename F> void event(F&& handler) {
        changed();
        runHandler(p_, std::forward<F>(handler));
        changed();
    }
    // Called whenever the model may have changed; the window schedules one refresh.
    std::function<void()> onModelChanged;

    // ---- Start-up and shut-down, configuration ------------------------------------------
    // The address used when no configuration file names one: a private address of the
    // plant network.
    static const QString DefaultCardAddress;
    static const QString ConfigFileName; // "TORV_NET.cfg"
    void Form_Load();
    // The layout step of start-up: outputs and their masks, tare, set-point controls.
    void layOutFrames();
    void Form_Unload();
    void SetXML_Data(bool bShow);
    void cmdShowXMLData_Click() { SetXML_Data(true); }
    void cmdQuitXML_Click() { SetXML_Data(false); }
    void txtRealTimeInfo_GotFocus() { f.txtRealTimeInfo.enabled = false; }
    void txtRealTimeInfo_LostFocus() { f.txtRealTimeInfo.enabled = true; }
    void cmdSaveConfig_Click();
    // The configuration as the controls show it now (the start-sample time is kept as read).
    void takeConfigFromControls();
    void ChkStartOutStatus_Click();
    void OptX_mode_Click(int index);
    void cmdShowRTGraph_Click();
    void ShowRTGraph();
    ClientConfig config; // the values of "TORV_NET.cfg"
    // An address given on the command line (the built-in simulator); replaces the stored one.
    QString addressOverride;
    int xMode = 1;                  // the X-mode shared with the graphs
    bool graphsOpen = false;        // graph windows are open
    bool realTimeGraphRuns = false; // the real-time graph takes readings
    QString screenLayoutFile = QStringLiteral("PRZM.cfg");
    // Window geometry kept in the screen layout file (set by the window before saving).
    int layoutLeft = 0, layoutTop = 0, layoutWidth = 0, layoutHeight = 0;

    // ---- Link callbacks --------------------------------------------------------------------
    QString hostText() override { return f.TxtIP.caption; }
    void setCommStatus(const QString& caption) override;
    void requestSent(const QString& functionName) override;
    void showRawAnswer(const QString& text) override;
    void ServerNoAnswer() override;
    void eventHandled() override { changed(); }

    // ---- Real-time status ------------------------------------------------------------------
    void cmdWeight_Click();
    void DataArrival_GetRTStatus() override;
    void chkTare_Click();
    // Until the card reports otherwise every output is off (all fourteen bits set) and every
    // input inactive, as the buttons and lamps are drawn.
    Int16 OutStatus = 16383, InStatus = 255, SpStatus = 0;
    Int32 lastA2DCount = 0; // the converter count of the last answer
    Int16 CurrentIntegration = 0;
    bool statusReceived = false; // the form flag set by each status answer
    bool setPointSeen[4] = {true, true, true, true};
    bool statusSeen = true;
    SampleData data;                     // the reading list and the block table
    QString recordingStart;              // NowString() of the last start
    std::uint32_t lastEventPumpTick = 0; // when a status answer last let window events run

    // ---- Outputs and inputs -------------------------------------------------------------------
    void SetOutLampStatus(Int16 status);
    void SetInpLampStatus(Int16 status);
    void cmdSetOutOn_Click(int Index);
    void SetOutputOff(int Index);
    void SetOutputOn(int Index);
    void sendOutputWord(int Index, bool on);
    void DataArrival_SetOutput() override;
    void InitON_OFF();
    void SetOutPut_Disasable(bool enabled);
    void ShowHideInputsLamp(bool show);
    void EnableSetPointEdit(int Index);
    void EnableSetPointEditAll();
    void DoTips_Off_On_ChkSP_txtSP(int Index);
    void ShowMessageWide(const QString& text);
    Int16 OutputCount = 14;
    BoundedArray<Int16, 1, 20> OutputMask;
    Int16 OutStatusEcho = 16383, PrevOutStatusEcho = 0;
    Int16 PendingOutBits = 0;
    Int16 LastOutputIndex = 0;
    bool SetOutputSent = false;
    bool SavedStopEnabled = false;
    bool outputReplySeen = false; // shared by the SetOutput and SetIntegration replies
    QString StartOffTip;

    // ---- Set points -------------------------------------------------------------------------
    void InitSetPoint_11_14();
    void InitSetPointLocation_11_14();
    void ChkSetPointNew_Click(int Index);
    void txtSetPointNew_Change(int Index);
    void txtSetPointNew_GotFocus(int Index);
    void txtSetPointNew_KeyPress(int Index, int KeyAscii);
    void DoSetPointTest(int Index, bool& ok);
    void SetSetPoints_11_14(int Index);
    void GetParamForSetSetPoints(QString& body);
    void DataArrival_GetSetpoints() override;
    void DataArrival_SetSetpoints() override;
    void Show_SP_status(int Index);
    void ChkSetPoint_Click();
    void InitSetPoint(int width, bool visible);
    void txtSetPoint_Change();
    void txtSetPoint_GotFocus();
    void txtSetPoint_KeyPress(int KeyAscii);
    double MaximumLoad = 0;
    BoundedArray<Int16, 0, 3> SpSendState;
    BoundedArray<Int16, 0, 3> SpAux;
    bool SetpointsArrived = false;
    QString SetPointEditText;
    QString LastAcceptedSetPoint;
    // A one-off command (set points, analog output, integration) keeps the request that was
    // running in the saved pair, and its reply makes that request current again.
    void saveRequestForOneOff();
    void resumeSavedRequest();

    // ---- Analog output, integration, channel --------------------------------------------------
    void cmdSetD2A_Click();
    void txtSetD2A_Change();
    void txtSetD2A_GotFocus();
    void txtSetD2A_KeyPress(int KeyAscii);
    void DataArrival_SetD2A() override;
    static void IsHex(QString& text, bool& ok);
    void cmbSetIntegr_Click();
    void SetNewIntegration(Int16 value);
    void DataArrival_SetIntegration() override;
    void cmdChan_Click(int Index);
    void cmdChanSwitch_Click();
    void DataArrival_CH_Switch();
    void SetFrequencyUnvisible(bool visible);
    QString LastD2AText;
    bool channelReplyReceived = false;

    // ---- Fast sampling ------------------------------------------------------------------------
    void cmdStart_Sample_Click();
    void InitStart_Sample_Parameters();
    void DataArrival_StartSample() override;
    void DataArrival_FastSampling() override;
    void DataArrival_StopSample() override;
    void GetVarSizeArray(const QString& answer, Int32 firstIndex, Int32& lastIndex, Int32 value1,
                         Int32 value2, Int32 value3, Int32 blockNumber, bool& ok);
    void ShowFastSamplingCurrentWeight();
    void cmdStopSample_Click();
    void cmdBrowse_Click();
    void CmdShowGraph_Click();
    QString dataFilePath(); // the remembered path, or txtHistFileName
    TrailerInfo trailerInfo() const;
    DataFilePaths paths; // remembered data-file path and folder
    // Writes the session's block table and readings to the data file, replacing it.
    void SaveSampleHistory();

    static constexpr Int32 LastSampleIndex = 20000;  // storing a reading here stops the session
    static constexpr Int32 ReadingListSize = 22001;  // entries 0 .. 22000
    static constexpr int StatusAnswerWaitMs = 20000; // the start waits this long for a status
    static constexpr int AbnormalReadingLength = 10; // longer numeric readings are questioned

    Int32 samplingPosition = 0; // index in the reading list of the next reading
    Int32 blockNumber = 0;      // number of the next block to take
    Int16 blocksAnswered = 0;   // sampling answers of this session (block value 1)
    Int16 blocksAfterStop = 0;  // those that came while Stop was disabled (block value 2)
    Int32 parsedReadings = 0;   // readings taken this session (lblParsedReadingsD)
    Int32 goodReadings = 0;     // readings of the last block taken that were numbers
    Int32 errorReadings = 0;    // non-numeric readings replaced (lblErrorReadingsD)
    bool firstBlock = false;    // the next block is the session's first
    bool startSampleAnswered = false;
    bool frequencyRuns = false;         // the current-frequency display follows the blocks
    Int32 frequencyStartTick = 0;       // tick from which it counts
    Int32 lastBlockTick = 0;            // arrival of the last block taken
    Int32 lastBlockReadings = 0;        // its number of readings
    QString lastBlockFrequency;         // readings per second of the last block, "0.000"
    QString currentBlockWeight;         // the last reading of the last block taken
    bool sessionOpen = false;           // a session started and not yet ended
    bool stopRequested = false;         // Stop was pressed (or run) in this session
    bool stopPending = false;           // StopSample goes out after the block on its way
    bool starting = false;              // cmdStart_Sample_Click is waiting
    bool startAborted = false;          // the real-time stop ran while it waited
    bool serverNotAnswering = false;    // ServerNoAnswer runs the stop
    std::vector<QString> blockReadings; // the per-block list: readings of the block parsed
    Int32 blockReadingsFirst = 0;       // reading-list index of its first entry
    // The block wrapper: takes one answer at the sampling position as the next block.
    void TakeFastSamplingBlock(const QString& answer, Int32 value3, Int32& firstIndex,
                               Int32& lastIndex, bool& ok);
    // Makes StopSample the current request, with polling on.
    void SendStopSample();
    // Puts the panel back as it is between sessions (buttons, operating lock, tool tip).
    void EndSampleSession();
    // The reading list of a new session: every entry "0"; it holds no real-time readings.
    void ResetReadingList();

private:
    void changed() {
        if (onModelChanged) onModelChanged();
    }
    Platform& p_;
};

} // namespace torv
