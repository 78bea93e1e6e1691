// Fast-sampling sessions and the stop button.
//
// A session: the card records readings at its own rate; the panel fetches them with
// "GetFastSampling", one numbered block ("<W0>" .. "<Wn>") per answer, stores every reading in
// the reading list and one record per block in the block table, until the card ends the
// session with error code 200 after a stop. Then both go to the data file.

#include "base/format.h"
#include "base/numeric.h"
#include "base/platform.h"
#include "base/ticks.h"
#include "error_elements.h"
#include "frm_client.h"
#include "link/block_parser.h"
#include "link/catalogue.h"
#include "link/elements.h"

namespace torv {

namespace {

const QString kDisabledTip = QStringLiteral("Disabled during FastSampling.");
// The longest text the element reader takes (its positions are 16-bit).
constexpr qsizetype kLongestElementText = 32767;
constexpr int kStartWaitSliceMs = 50;
constexpr Int32 kShortestTimeOut = 5000;

// The text in which the answer's error elements are looked up. A long block is cut out
// (the error elements stand before the first reading or after the last), so that a block
// of any size can be read.
QString errorElementText(const QString& answer) {
    if (answer.size() <= kLongestElementText) return answer;
    const qsizetype first = answer.indexOf(QLatin1String("<W"));
    const qsizetype last = answer.lastIndexOf(QLatin1String("</W"));
    if (first < 0 || last < first) return answer;
    const qsizetype end = answer.indexOf(QLatin1Char('>'), last);
    if (end < 0) return answer.left(first);
    return answer.left(first) + answer.mid(end + 1);
}

} // namespace

// ---- Starting a session ----------------------------------------------------------------------

void FrmClient::cmdStart_Sample_Click() {
    changed();
    if (sampling_.starting) return; // pressed again while the first press still waits
    // A session the card never ended (it stopped answering) keeps its readings until now:
    // they go to the data file before the new session makes room.
    if (sampling_.sessionOpen) {
        if (data_.blockCount > 0) SaveSampleHistory();
        EndSampleSession();
    }
    sampling_.starting = true;
    sampling_.startAborted = false;
    struct StartEnds {
        bool& flag;
        ~StartEnds() { flag = false; }
    } startEnds{sampling_.starting};

    // The waits end early when the real-time stop runs meanwhile (the server stopped
    // answering, or the operator stopped the polling).
    std::uint32_t waitStart = p_.GetTickCount();
    const auto waitedMs = [this, &waitStart] {
        return ticksSince(static_cast<Int32>(waitStart), p_.GetTickCount());
    };

    ShowHideInputsLamp(false);
    sampling_.frequencyRuns = false;
    f.lblA2D_Data.visible = false;
    f.lblA2D.visible = false;
    InitStart_Sample_Parameters();
    link_.WaitMS(100);
    if (sampling_.startAborted) {
        EndSampleSession();
        return;
    }

    link_.SetTimeOutValue(link_.lngTimeOut, f.txtTimeout2.caption);
    if (link_.lngTimeOut < kShortestTimeOut) {
        f.txtTimeout2.caption = QString::number(kShortestTimeOut);
        link_.SetTimeOutValue(link_.lngTimeOut, f.txtTimeout2.caption);
    }

    f.FraOut.toolTip = kDisabledTip;
    data_.startDateTime = p_.NowString();

    // Status polling runs: the status answer on its way is the last one.
    if (f.cmdWeight.backColor == color::Green) {
        link_.req.blnRepeatRequest = false;
        cmdWeight_Click();
        waitStart = p_.GetTickCount();
        while (f.cmdWeight.backColor == color::Green && !sampling_.startAborted &&
               waitedMs() < FastSampling::StatusAnswerWaitMs)
            p_.processEvents(kStartWaitSliceMs);
        if (sampling_.startAborted) {
            EndSampleSession();
            return;
        }
    }

    f.cmdWeight.enabled = false;
    f.cmdStopSample.enabled = false; // until the second block
    sampling_.firstBlock = true;
    f.cmdStart_Sample.backColor = color::Green;
    f.cmdStart_Sample.enabled = false;
    SetOutPut_Disasable(false);
    data_.blockCount = 0;
    sampling_.samplingPosition = 0;
    sampling_.sessionOpen = true;
    sampling_.stopRequested = false;
    sampling_.stopPending = false;

    // One status answer first: it brings the card's integration and unit for the data file.
    link_.req.blnRepeatRequest = false;
    status_.statusReceived = false;
    link_.req.strFunctionName = fn::GetRTStatus;
    link_.req.strParameters.clear();
    link_.IssueRequest(true);
    waitStart = p_.GetTickCount();
    while (!sampling_.startAborted && waitedMs() < FastSampling::StatusAnswerWaitMs &&
           !link_.WaitTrueFlag(status_.statusReceived, kStartWaitSliceMs)) {
    }
    if (sampling_.startAborted) return; // the stop has put the panel back already

    link_.req.strFunctionName = fn::StartSample;
    link_.req.strParameters.clear();
    counters_.lngSamplingStartTick = static_cast<Int32>(p_.GetTickCount());
    link_.IssueRequest(true);
    link_.WaitMS(100);
    sampling_.frequencyStartTick = static_cast<Int32>(p_.GetTickCount());
    sampling_.frequencyRuns = true;
}

void FrmClient::InitStart_Sample_Parameters() {
    sampling_.blocksAnswered = 0;
    sampling_.blocksAfterStop = 0;
    sampling_.parsedReadings = 0;
    sampling_.errorReadings = 0;
    counters_.lngBlockReadings = 0;
    counters_.lngElapsed = 0;
    f.lblTotalReadingsD.caption = QStringLiteral("0");
    f.lblParsedReadingsD.caption = QStringLiteral("0");
    f.lblErrorReadingsD.caption = QStringLiteral("0");
    sampling_.lastBlockFrequency.clear();
    sampling_.currentBlockWeight.clear();
    sampling_.samplingPosition = 0;
    sampling_.blockNumber = 0;
    data_.blockCount = 0;
    ResetReadingList();
}

void FrmClient::ResetReadingList() {
    data_.readings.assign(static_cast<std::size_t>(FastSampling::ReadingListSize),
                          QStringLiteral("0"));
    data_.readingsAllocated = true;
    data_.rtReadingCount = 0;
}

void FrmClient::DataArrival_StartSample(const QString& answer) {
    changed();
    QString code;
    const bool haveCode = Get_XML_Element_Data(p_, answer, QStringLiteral("<ERROR_CODE>"), code);
    if (haveCode && code == QLatin1String("0")) {
        link_.req.strFunctionName = fn::GetFastSampling;
        link_.req.strParameters.clear();
        link_.req.blnRepeatRequest = true;
        link_.IssueRequest(true);
        return;
    }
    // The card did not start. Its buttons are given back (otherwise Fast Sample, Weight and
    // Stop would all stay disabled); nothing else is shown but the refusal.
    link_.req.blnRepeatRequest = false;
    link_.IssueRequest(false);
    EndSampleSession();
    if (haveCode) p_.messageBox(QStringLiteral("Integration should be reduced."));
}

// ---- Blocks ---------------------------------------------------------------------------------

void FrmClient::DataArrival_FastSampling(const QString& answer) {
    changed();
    const std::uint32_t now = p_.GetTickCount();

    if (!f.cmdStopSample.enabled) inc16(sampling_.blocksAfterStop);
    inc16(sampling_.blocksAnswered);

    const QString errorText = errorElementText(answer);
    QString code;
    const bool haveCode = Get_XML_Element_Data(p_, errorText, QStringLiteral("<ERROR_CODE>"), code);
    showErrorElements(errorText);
    if (haveCode && code == QLatin1String("200")) {
        // The card has ended the session.
        f.cmdStart_Sample.backColor = color::ButtonFace;
        SetOutPut_Disasable(true);
        SaveSampleHistory();
        link_.req.blnRepeatRequest = false;
        f.cmdStart_Sample.enabled = true;
        f.cmdWeight.enabled = true;
        f.CmdShowGraph.enabled = true;
        f.cmdStopSample.enabled = false;
        sampling_.sessionOpen = false;
        sampling_.frequencyRuns = false;
        sampling_.stopPending = false;
        if (counters_.lngElapsed != 0)
            f.LbLFrequencyData.caption =
                Format(divide(mul32(counters_.lngBlockReadings, 1000), counters_.lngElapsed),
                       QStringLiteral("0.000"));
        return;
    }

    link_.req.strFunctionName = fn::GetFastSampling;
    link_.req.strParameters.clear();

    const Int32 value3 = ticksSince(counters_.lngSamplingStartTick, now);
    const Int32 positionBefore = sampling_.samplingPosition;
    const bool firstTaken = sampling_.parsedReadings == 0;
    Int32 firstIndex = 0;
    Int32 lastIndex = 0;
    bool ok = false;
    TakeFastSamplingBlock(answer, value3, firstIndex, lastIndex, ok);
    Int32 good = 0;
    if (ok) {
        const Int32 count = lastIndex - firstIndex + 1;
        good = count;
        sampling_.parsedReadings = add32(sampling_.parsedReadings, count);
        f.lblParsedReadingsD.caption = QString::number(sampling_.parsedReadings);
        sampling_.currentBlockWeight = data_.readings[static_cast<std::size_t>(lastIndex)];
        const Int32 span =
            ticksSince(firstTaken ? sampling_.frequencyStartTick : sampling_.lastBlockTick, now);
        if (sampling_.frequencyRuns && span > 0)
            sampling_.lastBlockFrequency = Format(count * 1000.0 / span, QStringLiteral("0.000"));
        sampling_.lastBlockTick = static_cast<Int32>(now);
    } else {
        sampling_.samplingPosition = positionBefore;
    }

    ShowBlockCounters(counters_, good, now, f.lblTotalReadingsD.caption,
                      f.LbLFrequencyData.caption);
    if (sampling_.blocksAnswered == 2 && !sampling_.stopRequested) f.cmdStopSample.enabled = true;

    if (sampling_.stopPending) SendStopSample();
    link_.IssueRequest(link_.req.blnRepeatRequest);
}

void FrmClient::TakeFastSamplingBlock(const QString& answer, Int32 value3, Int32& firstIndex,
                                      Int32& lastIndex, bool& ok) {
    if (sampling_.firstBlock) {
        sampling_.samplingPosition = 0;
        sampling_.blockNumber = 0;
        sampling_.firstBlock = false;
        ResetReadingList(); // a status answer may have used the list since the start
    }
    firstIndex = sampling_.samplingPosition;
    ok = false;
    const Int32 number = sampling_.blockNumber;
    if (answer.isEmpty() || number < 0 || number > kLastBlockIndex) return;

    if (data_.readings.size() < static_cast<std::size_t>(FastSampling::ReadingListSize))
        data_.readings.resize(static_cast<std::size_t>(FastSampling::ReadingListSize),
                              QStringLiteral("0"));
    BlockParseRules rules;
    rules.lastSampleIndex = FastSampling::LastSampleIndex;
    rules.listSize = FastSampling::ReadingListSize;
    rules.abnormalLength = FastSampling::AbnormalReadingLength;
    rules.keepAbnormal = [this](const QString& value) {
        return p_.askYesNo(QStringLiteral("Error!!! Abnormal Weight!!! ") + value +
                           QStringLiteral("\r\nContinue ?"));
    };
    // The first reading of a session has none before it and repeats its own "0".
    const QString before =
        firstIndex >= 0 && firstIndex < static_cast<Int32>(data_.readings.size())
            ? data_.readings[static_cast<std::size_t>(firstIndex > 0 ? firstIndex - 1 : 0)]
            : QString();
    const FastSamplingBlock block = parseFastSamplingBlock(answer, firstIndex, before, rules);
    ok = applyBlock(block, firstIndex, value3);
    if (!ok) return;
    lastIndex = block.lastIndex;
    sampling_.blockNumber = add32(sampling_.blockNumber, 1);
    data_.blockCount = sampling_.blockNumber;
    sampling_.samplingPosition = add32(lastIndex, 1);
    if (block.reachedLimit && !sampling_.stopRequested) cmdStopSample_Click();
}

bool FrmClient::applyBlock(const FastSamplingBlock& block, Int32 firstIndex, Int32 value3) {
    for (int k = 0; k < block.answerErrors; ++k)
        link_.CreateXMLErrMsg();
    if (block.noRoom) {
        // The block has no place in the reading list; when the list is full the session stops.
        if (block.listFull && !sampling_.stopRequested) cmdStopSample_Click();
        return false;
    }
    if (!block.read) return false;
    data_.readingsAllocated = true;
    for (std::size_t k = 0; k < block.readings.size(); ++k)
        data_.readings[static_cast<std::size_t>(firstIndex) + k] = block.readings[k];
    if (block.errorReadings > 0) {
        sampling_.errorReadings = add32(sampling_.errorReadings, block.errorReadings);
        f.lblErrorReadingsD.caption = QString::number(sampling_.errorReadings);
    }
    if (!block.taken) return false;
    BlockRecord& record = data_.blocks[static_cast<std::size_t>(sampling_.blockNumber)];
    record.value[0] = sampling_.blockNumber;
    record.value[1] = sampling_.blocksAnswered;
    record.value[2] = sampling_.blocksAfterStop;
    record.value[3] = value3;
    record.value[4] = block.lastIndex;
    return true;
}

void FrmClient::ShowFastSamplingCurrentWeight() {
    changed();
    if (sampling_.currentBlockWeight.isEmpty()) return; // no block taken yet
    f.lblCurrentBlockWeight.caption = sampling_.currentBlockWeight;
    double weight = 0;
    if (readingValue(sampling_.currentBlockWeight, weight)) {
        double tare = 0;
        if (!readingValue(f.lblTareData.caption, tare)) tare = 0;
        f.lblWeight.caption = QStringLiteral("Weight:");
        f.lblWT_BRUTTO.foreColor = color::Black;
        f.lblWT_BRUTTO.fontSize = f.lblTareData.fontSize;
        f.lblWT_BRUTTO.caption = Format(weight - tare, QStringLiteral("0.000"));
    }
    if (sampling_.frequencyRuns && !sampling_.lastBlockFrequency.isEmpty())
        f.LbLCurrentFreqD.caption = sampling_.lastBlockFrequency;
}

// ---- Stopping -------------------------------------------------------------------------------

void FrmClient::cmdStopSample_Click() {
    changed();
    if (link_.req.strFunctionName == fn::GetFastSampling && f.cmdWeight.backColor != color::Green &&
        !serverNotAnswering) {
        // The card is asked to stop; the blocks it still holds are fetched until it ends the
        // session.
        sampling_.stopRequested = true;
        f.cmdStopSample.enabled = false;
        if (f.cmdStart_Sample.backColor == color::Green && link_.requestOnWire()) {
            // A block request has reached the card, which hands its readings out once:
            // closing that connection now would lose them. The stop goes out as soon as the
            // block has been taken. (A request still connecting is simply replaced.)
            sampling_.stopPending = true;
            return;
        }
        SendStopSample();
        link_.IssueRequest(true);
        return;
    }

    // The real-time display stops, or a session whose card no longer answers.
    link_.TimerTimeOut().setEnabled(false);
    f.cmdStopSample.enabled = false;
    f.cmdWeight.enabled = true;
    link_.closeSocket();
    f.cmdWeight.backColor = color::ButtonFace;
    if (sampling_.sessionOpen) {
        // The readings taken stay in memory and go to the data file.
        if (data_.blockCount > 0) SaveSampleHistory();
        EndSampleSession();
    } else {
        Save_RT_Weight_to_File(p_, dataFilePath(), data_, trailerInfo(), &keptDataFile);
    }
    f.cmdStart_Sample.enabled = true;
    ShowRTGraph();
    ShowHideInputsLamp(false);
    if (sampling_.starting) sampling_.startAborted = true;
}

void FrmClient::SendStopSample() {
    sampling_.stopPending = false;
    link_.req.strFunctionName = fn::StopSample;
    link_.req.strParameters = QStringLiteral("ID=4");
    link_.req.blnRepeatRequest = true;
}

void FrmClient::DataArrival_StopSample(const QString& answer) {
    changed();
    f.cmdStart_Sample.backColor = color::ButtonFace;
    link_.req.strFunctionName = fn::GetFastSampling;
    link_.req.strParameters.clear();
    link_.IssueRequest(link_.req.blnRepeatRequest);
    DataArrival_CH_Switch(answer);
    f.FraOut.toolTip.clear();
    if (answer.contains(QLatin1String("<ERROR_CODE>1</ERROR_CODE>"))) {
        // The card did not take the stop: it may be asked again.
        f.cmdStopSample.enabled = true;
        sampling_.stopRequested = false;
    }
}

void FrmClient::EndSampleSession() {
    sampling_.sessionOpen = false;
    sampling_.stopPending = false;
    sampling_.frequencyRuns = false;
    sampling_.firstBlock = false;
    f.cmdStart_Sample.backColor = color::ButtonFace;
    SetOutPut_Disasable(true);
    f.cmdStart_Sample.enabled = true;
    f.cmdWeight.enabled = true;
    f.cmdStopSample.enabled = false;
    f.FraOut.toolTip.clear();
}

} // namespace torv
