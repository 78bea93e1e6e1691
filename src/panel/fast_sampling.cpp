// Fast-sampling sessions, the stop button, the data file and the history viewer.
//
// A session: the card records readings at its own rate; the panel fetches them with
// "GetFastSampling", one numbered block ("<W0>" .. "<Wn>") per answer, stores every reading in
// the reading list and one record per block in the block table, until the card ends the
// session with error code 200 after a stop. Then both go to the data file.

#include "base/format.h"
#include "base/numeric.h"
#include "base/platform.h"
#include "files/history_viewer.h"
#include "files/sample_file.h"
#include "frm_client.h"
#include "link/catalogue.h"
#include "link/elements.h"

#include <algorithm>

namespace torv {

namespace {

const QString kDisabledTip = QStringLiteral("Disabled during FastSampling.");
// The number of a block's last reading stands between the last "</W" and the answer's
// closing tag, which lie at most this many characters apart.
constexpr qsizetype kLastNumberWindow = 30;
// The longest text the element reader takes (its positions are 16-bit).
constexpr qsizetype kLongestElementText = 32767;
// Element numbers are read up to this value; larger ones stay at it.
constexpr qint64 kNumberCap = 1'000'000'000'000;
constexpr int kStartWaitSliceMs = 50;
constexpr Int32 kShortestTimeOut = 5000;

Int32 ticksSince(Int32 from, std::uint32_t now) {
    return static_cast<Int32>(now - static_cast<std::uint32_t>(from));
}

// A reading's value, written with "." or with the locale's separator.
bool readingValue(const QString& text, double& value) {
    return numericValue(text, QLatin1Char('.'), value) ||
           numericValue(text, decimalSeparator(), value);
}

// The decimal digits at `pos`: their value (capped) and their count.
qsizetype readDigits(QStringView s, qsizetype pos, qint64& value) {
    value = 0;
    qsizetype i = pos;
    while (i < s.size() && s[i] >= u'0' && s[i] <= u'9') {
        value = std::min(value * 10 + (s[i].unicode() - u'0'), kNumberCap);
        ++i;
    }
    return i - pos;
}

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
    if (starting) return; // pressed again while the first press still waits
    // A session the card never ended (it stopped answering) keeps its readings until now:
    // they go to the data file before the new session makes room.
    if (sessionOpen) {
        if (data.blockCount > 0) SaveSampleHistory();
        EndSampleSession();
    }
    starting = true;
    startAborted = false;
    struct StartEnds {
        bool& flag;
        ~StartEnds() { flag = false; }
    } startEnds{starting};

    // The waits end early when the real-time stop runs meanwhile (the server stopped
    // answering, or the operator stopped the polling).
    std::uint32_t waitStart = p_.GetTickCount();
    const auto waitedMs = [this, &waitStart] {
        return ticksSince(static_cast<Int32>(waitStart), p_.GetTickCount());
    };

    ShowHideInputsLamp(false);
    frequencyRuns = false;
    f.lblA2D_Data.visible = false;
    f.lblA2D.visible = false;
    InitStart_Sample_Parameters();
    link.WaitMS(100);
    if (startAborted) {
        EndSampleSession();
        return;
    }

    link.SetTimeOutValue(link.lngTimeOut, f.txtTimeout2.caption);
    if (link.lngTimeOut < kShortestTimeOut) {
        f.txtTimeout2.caption = QString::number(kShortestTimeOut);
        link.SetTimeOutValue(link.lngTimeOut, f.txtTimeout2.caption);
    }

    f.FraOut.toolTip = kDisabledTip;
    recordingStart = p_.NowString();
    data.startDateTime = recordingStart;

    // Status polling runs: the status answer on its way is the last one.
    if (f.cmdWeight.backColor == color::Green) {
        link.req.blnRepeatRequest = false;
        cmdWeight_Click();
        waitStart = p_.GetTickCount();
        while (f.cmdWeight.backColor == color::Green && !startAborted &&
               waitedMs() < StatusAnswerWaitMs)
            p_.processEvents(kStartWaitSliceMs);
        if (startAborted) {
            EndSampleSession();
            return;
        }
    }

    f.cmdWeight.enabled = false;
    f.cmdStopSample.enabled = false; // until the second block
    firstBlock = true;
    f.cmdStart_Sample.backColor = color::Green;
    f.cmdStart_Sample.enabled = false;
    SetOutPut_Disasable(false);
    data.blockCount = 0;
    samplingPosition = 0;
    sessionOpen = true;
    stopRequested = false;
    stopPending = false;

    // One status answer first: it brings the card's integration and unit for the data file.
    link.req.blnRepeatRequest = false;
    statusReceived = false;
    link.req.strFunctionName = fn::GetRTStatus;
    link.req.strParameters.clear();
    link.IssueRequest(true);
    waitStart = p_.GetTickCount();
    while (!startAborted && waitedMs() < StatusAnswerWaitMs &&
           !link.WaitTrueFlag(statusReceived, kStartWaitSliceMs)) {
    }
    if (startAborted) return; // the stop has put the panel back already

    link.req.strFunctionName = fn::StartSample;
    link.req.strParameters.clear();
    counters.lngSamplingStartTick = static_cast<Int32>(p_.GetTickCount());
    startSampleAnswered = false;
    link.IssueRequest(true);
    link.WaitMS(100);
    frequencyStartTick = static_cast<Int32>(p_.GetTickCount());
    frequencyRuns = true;
}

void FrmClient::InitStart_Sample_Parameters() {
    blocksAnswered = 0;
    blocksAfterStop = 0;
    parsedReadings = 0;
    goodReadings = 0;
    errorReadings = 0;
    counters.lngBlockReadings = 0;
    counters.lngElapsed = 0;
    f.lblTotalReadingsD.caption = QStringLiteral("0");
    f.lblParsedReadingsD.caption = QStringLiteral("0");
    f.lblErrorReadingsD.caption = QStringLiteral("0");
    lastBlockReadings = 0;
    lastBlockFrequency.clear();
    currentBlockWeight.clear();
    samplingPosition = 0;
    blockNumber = 0;
    data.blockCount = 0;
    ResetReadingList();
}

void FrmClient::ResetReadingList() {
    data.readings.assign(static_cast<std::size_t>(ReadingListSize), QStringLiteral("0"));
    data.readingsAllocated = true;
    data.rtReadingCount = 0;
}

void FrmClient::DataArrival_StartSample() {
    changed();
    const QString answer = link.req.strResponse;
    startSampleAnswered = true;
    QString code;
    const bool haveCode = Get_XML_Element_Data(p_, answer, QStringLiteral("<ERROR_CODE>"), code);
    if (haveCode && code == QLatin1String("0")) {
        link.req.strFunctionName = fn::GetFastSampling;
        link.req.strParameters.clear();
        link.req.blnRepeatRequest = true;
        link.IssueRequest(true);
        return;
    }
    // The card did not start: the panel goes back to where it was before the start.
    showErrorElements(p_, answer, f.lblErrNumer.caption, f.lblErrNumer.foreColor,
                      f.lblErrDescr.caption, f.lblErrDescr.foreColor);
    link.req.blnRepeatRequest = false;
    link.IssueRequest(false);
    EndSampleSession();
    if (haveCode)
        p_.messageBox(QStringLiteral("Integration should be reduced."));
    else
        p_.messageBox(QStringLiteral("Fast sampling did not start: the card's answer carries no "
                                     "error code."));
}

// ---- Blocks ---------------------------------------------------------------------------------

void FrmClient::DataArrival_FastSampling() {
    changed();
    const QString answer = link.req.strResponse;
    const std::uint32_t now = p_.GetTickCount();

    if (!f.cmdStopSample.enabled) inc16(blocksAfterStop);
    inc16(blocksAnswered);

    const QString errorText = errorElementText(answer);
    QString code;
    const bool haveCode = Get_XML_Element_Data(p_, errorText, QStringLiteral("<ERROR_CODE>"), code);
    showErrorElements(p_, errorText, f.lblErrNumer.caption, f.lblErrNumer.foreColor,
                      f.lblErrDescr.caption, f.lblErrDescr.foreColor);
    if (haveCode && code == QLatin1String("200")) {
        // The card has ended the session.
        f.cmdStart_Sample.backColor = color::ButtonFace;
        SetOutPut_Disasable(true);
        SaveSampleHistory();
        link.req.blnRepeatRequest = false;
        f.cmdStart_Sample.enabled = true;
        f.cmdWeight.enabled = true;
        f.CmdShowGraph.enabled = true;
        f.cmdStopSample.enabled = false;
        f.FraOut.toolTip.clear();
        sessionOpen = false;
        frequencyRuns = false;
        stopPending = false;
        if (counters.lngElapsed != 0)
            f.LbLFrequencyData.caption =
                Format(divide(mul32(counters.lngBlockReadings, 1000), counters.lngElapsed),
                       QStringLiteral("0.000"));
        return;
    }

    link.req.strFunctionName = fn::GetFastSampling;
    link.req.strParameters.clear();

    const Int32 value3 = ticksSince(counters.lngSamplingStartTick, now);
    const Int32 positionBefore = samplingPosition;
    const bool firstTaken = parsedReadings == 0;
    Int32 firstIndex = 0;
    Int32 lastIndex = 0;
    bool ok = false;
    TakeFastSamplingBlock(answer, value3, firstIndex, lastIndex, ok);
    Int32 good = 0;
    if (ok) {
        const Int32 count = lastIndex - firstIndex + 1;
        good = count;
        parsedReadings = add32(parsedReadings, count);
        f.lblParsedReadingsD.caption = QString::number(parsedReadings);
        currentBlockWeight = data.readings[static_cast<std::size_t>(lastIndex)];
        const Int32 span = ticksSince(firstTaken ? frequencyStartTick : lastBlockTick, now);
        if (frequencyRuns && span > 0)
            lastBlockFrequency = Format(count * 1000.0 / span, QStringLiteral("0.000"));
        lastBlockTick = static_cast<Int32>(now);
        lastBlockReadings = count;
    } else {
        samplingPosition = positionBefore;
    }

    ShowBlockCounters(counters, good, now, f.lblTotalReadingsD.caption, f.LbLFrequencyData.caption);
    if (blocksAnswered == 2 && !stopRequested) f.cmdStopSample.enabled = true;

    if (stopPending) SendStopSample();
    link.IssueRequest(link.req.blnRepeatRequest);
}

void FrmClient::TakeFastSamplingBlock(const QString& answer, Int32 value3, Int32& firstIndex,
                                      Int32& lastIndex, bool& ok) {
    if (firstBlock) {
        samplingPosition = 0;
        blockNumber = 0;
        firstBlock = false;
        ResetReadingList(); // a status answer may have used the list since the start
    }
    firstIndex = samplingPosition;
    GetVarSizeArray(answer, firstIndex, lastIndex, blocksAnswered, blocksAfterStop, value3,
                    blockNumber, ok);
    if (!ok) return;
    blockNumber = add32(blockNumber, 1);
    data.blockCount = blockNumber;
    samplingPosition = add32(lastIndex, 1);
}

// One answer. Its readings are "<W0>" .. "<WN>", N being the number in the last "</WN>"
// right before the closing tag; the block covers N + 1 readings, from firstIndex to
// lastIndex = firstIndex + N, and is taken when lastIndex lies within the reading list.
// Readings are looked up in order of their numbers, each from where the one before ended:
// - a number with more than ten characters is questioned; No keeps the readings before it
//   as a shorter block and abandons the rest;
// - a reading that is not a number, or has no closing tag, repeats the one before it;
// - readings missing from the answer (it holds fewer than announced, or a number is not
//   found after the one before) repeat the last reading taken;
// - numbers above N are left out.
// Storing reading 20000 stops the session; the rest of that block is still taken, as are
// the blocks the card sends until it ends the session, as long as they fit in the list.
// A refused block and any reading that is missing or misplaced are counted as answer errors.
// The cost per reading does not depend on the size of the block.
void FrmClient::GetVarSizeArray(const QString& answer, Int32 firstIndex, Int32& lastIndex,
                                Int32 value1, Int32 value2, Int32 value3, Int32 blockNumber,
                                bool& ok) {
    ok = false;
    goodReadings = 0;
    if (answer.isEmpty()) return;
    const QStringView s(answer);

    // The closing tag: its ">" may still have been on its way when the answer was complete.
    const qsizetype closing = s.lastIndexOf(QStringView(u"</GetFastSampling"));
    if (closing < 0) {
        link.CreateXMLErrMsg();
        return;
    }
    const qsizetype windowStart = std::max<qsizetype>(0, closing - kLastNumberWindow);
    const qsizetype lastTag =
        s.sliced(windowStart, closing - windowStart).lastIndexOf(QStringView(u"</W"));
    if (lastTag < 0) {
        link.CreateXMLErrMsg();
        return;
    }
    const qsizetype numberAt = windowStart + lastTag + 3;
    qint64 announced = 0;
    const qsizetype numberDigits = readDigits(s, numberAt, announced);
    if (numberDigits == 0 || numberAt + numberDigits >= closing ||
        s[numberAt + numberDigits] != u'>') {
        link.CreateXMLErrMsg();
        return;
    }
    if (firstIndex < 0 || blockNumber < 0 || blockNumber > kLastBlockIndex) return;
    const qint64 last = firstIndex + announced;
    if (last >= ReadingListSize) {
        // The block has no place in the reading list: refused, never cut or invented.
        link.CreateXMLErrMsg();
        // A block of a real size that would reach the end of the list: the list is full.
        if (announced < ReadingListSize && last >= LastSampleIndex && !stopRequested)
            cmdStopSample_Click();
        return;
    }
    if (data.readings.size() < static_cast<std::size_t>(ReadingListSize))
        data.readings.resize(static_cast<std::size_t>(ReadingListSize), QStringLiteral("0"));
    data.readingsAllocated = true;

    blockReadingsFirst = firstIndex;
    blockReadings.clear();
    blockReadings.reserve(static_cast<std::size_t>(announced + 1));

    const auto store = [this](qint64 index, const QString& text) {
        data.readings[static_cast<std::size_t>(index)] = text;
        blockReadings.push_back(text);
    };
    // The reading before `index`; the first of a session has none and keeps its "0".
    const auto previous = [this](qint64 index) -> QString {
        return data.readings[static_cast<std::size_t>(index > 0 ? index - 1 : index)];
    };
    bool stopRun = false;
    const auto stopAtLimit = [&](qint64 index) {
        if (index == LastSampleIndex && !stopRequested && !stopRun) {
            stopRun = true;
            cmdStopSample_Click();
        }
    };

    qsizetype pos = 0; // where the search for the next reading starts
    qint64 n = 0;      // number of the next reading
    Int32 good = 0;
    bool answerFault = false;
    bool abandoned = false;
    QString openTag, closeTag;
    for (; n <= announced; ++n) {
        const QString number = QString::number(n);
        openTag = QStringLiteral("<W") + number + QLatin1Char('>');
        const qsizetype open = s.indexOf(QStringView(openTag), pos);
        if (open < 0 || open >= closing) break; // the answer holds no more readings
        const qsizetype valueStart = open + openTag.size();
        closeTag = QStringLiteral("</W") + number + QLatin1Char('>');
        const qsizetype close = s.sliced(0, closing).indexOf(QStringView(closeTag), valueStart);
        const qint64 index = firstIndex + n;
        if (close < 0) {
            link.CreateXMLErrMsg();
            store(index, previous(index));
            pos = valueStart;
        } else {
            const QString value = s.sliced(valueStart, close - valueStart).toString();
            pos = close + closeTag.size();
            if (isReadingNumber(value)) {
                if (value.size() > AbnormalReadingLength &&
                    !p_.askYesNo(QStringLiteral("Error!!! Abnormal Weight!!! ") + value +
                                 QStringLiteral("\r\nContinue ?"))) {
                    abandoned = true;
                    break;
                }
                store(index, value);
                ++good;
            } else {
                errorReadings = add32(errorReadings, 1);
                f.lblErrorReadingsD.caption = QString::number(errorReadings);
                store(index, previous(index));
            }
        }
        stopAtLimit(index);
    }
    if (abandoned) {
        if (n == 0) return; // nothing before the questioned reading
        lastIndex = static_cast<Int32>(firstIndex + n - 1);
    } else {
        // Readings the answer does not hold repeat the last one taken.
        if (n <= announced) answerFault = true;
        for (; n <= announced; ++n) {
            const qint64 index = firstIndex + n;
            store(index, previous(index));
            stopAtLimit(index);
        }
        lastIndex = static_cast<Int32>(last);
    }
    if (answerFault) link.CreateXMLErrMsg();

    BlockRecord& record = data.blocks[static_cast<std::size_t>(blockNumber)];
    record.value[0] = blockNumber;
    record.value[1] = value1;
    record.value[2] = value2;
    record.value[3] = value3;
    record.value[4] = lastIndex;
    data.readings[static_cast<std::size_t>(lastIndex)] = blockReadings.back();
    goodReadings = good;
    ok = true;
}

void FrmClient::ShowFastSamplingCurrentWeight() {
    changed();
    if (currentBlockWeight.isEmpty()) return; // no block taken yet
    f.lblCurrentBlockWeight.caption = currentBlockWeight;
    double weight = 0;
    if (readingValue(currentBlockWeight, weight)) {
        double tare = 0;
        if (!readingValue(f.lblTareData.caption, tare)) tare = 0;
        f.lblWeight.caption = QStringLiteral("Weight:");
        f.lblWT_BRUTTO.foreColor = color::Black;
        f.lblWT_BRUTTO.fontSize = f.lblTareData.fontSize;
        f.lblWT_BRUTTO.caption = Format(weight - tare, QStringLiteral("0.000"));
    }
    if (frequencyRuns && !lastBlockFrequency.isEmpty())
        f.LbLCurrentFreqD.caption = lastBlockFrequency;
}

// ---- Stopping -------------------------------------------------------------------------------

void FrmClient::cmdStopSample_Click() {
    changed();
    if (link.req.strFunctionName == fn::GetFastSampling && f.cmdWeight.backColor != color::Green &&
        !serverNotAnswering) {
        // The card is asked to stop; the blocks it still holds are fetched until it ends the
        // session.
        stopRequested = true;
        f.cmdStopSample.enabled = false;
        if (f.cmdStart_Sample.backColor == color::Green && link.awaitingAnswer()) {
            // Blocks are being fetched: one is on its way, and the card has handed out its
            // readings already. The stop goes out as soon as that block has been taken.
            stopPending = true;
            return;
        }
        SendStopSample();
        link.IssueRequest(true);
        return;
    }

    // The real-time display stops, or a session whose card no longer answers.
    link.TimerTimeOut().setEnabled(false);
    f.cmdStopSample.enabled = false;
    f.cmdWeight.enabled = true;
    link.closeSocket();
    f.cmdWeight.backColor = color::ButtonFace;
    if (sessionOpen) {
        // The readings taken stay in memory and go to the data file.
        if (data.blockCount > 0) SaveSampleHistory();
        EndSampleSession();
    } else {
        Save_RT_Weight_to_File(p_, dataFilePath(), data, trailerInfo());
    }
    f.cmdStart_Sample.enabled = true;
    ShowRTGraph();
    ShowHideInputsLamp(false);
    if (starting) startAborted = true;
}

void FrmClient::SendStopSample() {
    stopPending = false;
    link.req.strFunctionName = fn::StopSample;
    link.req.strParameters = QStringLiteral("ID=4");
    link.req.blnRepeatRequest = true;
}

void FrmClient::DataArrival_StopSample() {
    changed();
    const QString answer = link.req.strResponse;
    f.cmdStart_Sample.backColor = color::ButtonFace;
    link.req.strFunctionName = fn::GetFastSampling;
    link.req.strParameters.clear();
    link.IssueRequest(link.req.blnRepeatRequest);
    link.req.strResponse = answer; // the channel-switch handler reads the same answer
    DataArrival_CH_Switch();
    f.FraOut.toolTip.clear();
    if (answer.contains(QLatin1String("<ERROR_CODE>1</ERROR_CODE>"))) {
        // The card did not take the stop: it may be asked again.
        f.cmdStopSample.enabled = true;
        stopRequested = false;
    }
}

void FrmClient::EndSampleSession() {
    sessionOpen = false;
    stopPending = false;
    frequencyRuns = false;
    firstBlock = false;
    f.cmdStart_Sample.backColor = color::ButtonFace;
    SetOutPut_Disasable(true);
    f.cmdStart_Sample.enabled = true;
    f.cmdWeight.enabled = true;
    f.cmdStopSample.enabled = false;
    f.FraOut.toolTip.clear();
}

// ---- The data file and the history viewer ----------------------------------------------------

void FrmClient::SaveSampleHistory() {
    SaveMemory2File(p_, dataFilePath(), 0, data.blockCount, data, trailerInfo());
}

void FrmClient::cmdBrowse_Click() {
    SelectPath(p_, paths, f.txtHistFileName.caption);
}

void FrmClient::CmdShowGraph_Click() {
    torv::CmdShowGraph_Click(p_, paths, f.txtHistFileName.caption, xMode, f.txtIntegration.caption);
}

QString FrmClient::dataFilePath() {
    // The writers keep to the remembered path: the first save remembers the text of the
    // box, and only Browse chooses another.
    if (paths.fullPath.isEmpty()) paths.fullPath = f.txtHistFileName.caption;
    return paths.fullPath;
}

TrailerInfo FrmClient::trailerInfo() const {
    return {f.txtIntegration.caption, f.lblUnitNameTare.caption, xMode};
}

} // namespace torv
