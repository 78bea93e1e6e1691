// Fast sampling on the scripted card: starting a session, taking blocks (whole, in chunks,
// malformed), stopping, the end with code 200 and the data file it leaves.

#include "base/colors.h"
#include "link/catalogue.h"
#include "panel_fixture.h"

#include <QFile>
#include <deque>

using namespace torv;
using namespace torv::test;

// Readable failure output for texts.
[[maybe_unused]] static void PrintTo(const QString& s, std::ostream* os) {
    *os << '"' << s.toStdString() << '"';
}

namespace {

QString readingsXml(const QStringList& readings) {
    QString xml;
    for (int i = 0; i < readings.size(); ++i)
        xml += QStringLiteral("<W%1>%2</W%1>").arg(i).arg(readings[i]);
    return xml;
}

// A sampling answer as the card sends it: error elements first, the readings last.
QString fastAnswer(const QString& readings, const QString& code = QStringLiteral("0")) {
    return QStringLiteral("<GetFastSampling><ERROR_CODE>%1</ERROR_CODE><ERROR_DESCRIPTION>%2"
                          "</ERROR_DESCRIPTION>%3</GetFastSampling>")
        .arg(code,
             code == QLatin1String("200") ? QStringLiteral("Fast sampling stopped")
                                          : QStringLiteral("OK"),
             readings);
}

QByteArray onWire(const QString& answer) {
    return QByteArrayLiteral("HTTP/1.0 200 OK\r\nContent-Type: text/xml\r\n\r\n") +
           answer.toLatin1();
}

// The data file as lines, and its reading lines as index and text.
struct DataFile {
    QStringList lines;
    QList<QPair<int, QString>> readings;
    QStringList blockLines;
};

DataFile readDataFile(const QString& path = QStringLiteral("All_data.txt")) {
    DataFile d;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return d;
    const QString text = QString::fromUtf8(file.readAll());
    d.lines = text.split(QStringLiteral("\r\n"));
    const int end = static_cast<int>(d.lines.indexOf(QStringLiteral("-1, -1")));
    for (int i = 1; i < end; ++i) {
        const QString& line = d.lines[i];
        if (line.startsWith(QStringLiteral("-999999 "))) {
            d.blockLines << line;
            continue;
        }
        const int gap = static_cast<int>(line.indexOf(QStringLiteral("  "), 1));
        d.readings.append({line.mid(1, gap - 1).toInt(), line.mid(gap + 2)});
    }
    return d;
}

class SamplingTest : public PanelTest {
protected:
    SamplingTest() {
        layOut();
        f.lblTareData.caption = QStringLiteral("0");
        card.respond = [this](const CardRequest& r) { return respond(r); };
    }

    // The card: status and set commands as usual; sampling from the script below.
    QString respond(const CardRequest& r) {
        if (silent) return {};
        if (r.function == QLatin1String("StartSample"))
            return QStringLiteral("<StartSample><ERROR_CODE>%1</ERROR_CODE></StartSample>")
                .arg(startCode);
        if (r.function == QLatin1String("StopSample")) {
            stopped = true;
            return QStringLiteral("<StopSample><ERROR_CODE>%1</ERROR_CODE></StopSample>")
                .arg(stopCode);
        }
        if (r.function == QLatin1String("GetFastSampling")) {
            if (manual) {
                ++waiting;
                return {};
            }
            if (stopped && tailBlocks-- <= 0) return fastAnswer({}, QStringLiteral("200"));
            return fastAnswer(readingsXml(nextReadings(perBlock)));
        }
        return standardAnswer(r);
    }

    QStringList nextReadings(int count) {
        QStringList out;
        for (int i = 0; i < count; ++i, ++produced)
            out << QString::number(1 + produced * 0.125, 'f', 3);
        sent += out;
        return out;
    }

    void startSession() {
        click([&] { panel.cmdStart_Sample_Click(); });
    }

    // Manual mode: waits for the panel's next sampling request, then delivers `answer` in
    // pieces of the given sizes (the last piece takes the rest).
    void answerBlock(const QString& answer, const QList<int>& chunks = {}) {
        ASSERT_TRUE(runUntil([&] { return waiting > 0; }, 1000));
        --waiting;
        FakeTcpClient* socket = p.socket();
        const QByteArray bytes = onWire(answer);
        int at = 0;
        for (int size : chunks) {
            socket->deliver(bytes.mid(at, size));
            at += size;
        }
        socket->deliver(bytes.mid(at));
    }
    int requestsOf(const char* function) const {
        return static_cast<int>(card.functions().count(QLatin1String(function)));
    }
    std::vector<QString> readings(int from, int to) const {
        return {panel.data.readings.begin() + from, panel.data.readings.begin() + to + 1};
    }

    bool manual = false;
    bool silent = false;
    int waiting = 0;
    bool stopped = false;
    int tailBlocks = 2; // blocks the card still holds after a stop
    int perBlock = 3;
    int produced = 0;
    QStringList sent; // every reading the card handed out
    QString startCode = QStringLiteral("0");
    QString stopCode = QStringLiteral("0");
};

} // namespace

// ---- Starting --------------------------------------------------------------------------------

TEST_F(SamplingTest, FastSamplePressedWhilePollingStopsThePollingFirst) {
    manual = true;
    click([&] { panel.cmdWeight_Click(); });
    ASSERT_TRUE(runUntil([&] { return requestsOf("GetRTStatus") >= 3; }));
    ASSERT_TRUE(runUntil([&] { return f.cmdWeight.backColor == color::Green; }));
    const int before = static_cast<int>(card.requests.size());

    startSession();
    runUntil([&] { return waiting > 0; }, 500);
    p.advance(300);
    // Polls go on while the start waits its first 100 ms; then the poll on its way is the
    // last one, the start's own status request follows, and the session begins.
    QStringList after = card.functions().mid(before);
    const int polls = static_cast<int>(after.count(QStringLiteral("GetRTStatus")));
    EXPECT_GE(polls, 2);
    EXPECT_EQ(after.mid(polls),
              QStringList({QStringLiteral("StartSample"), QStringLiteral("GetFastSampling")}));
    EXPECT_EQ(card.requests.last().body, QStringLiteral("ID=4"));
    EXPECT_EQ(card.requests[card.requests.size() - 2].contentLength, 0); // StartSample

    EXPECT_FALSE(f.cmdWeight.enabled);
    EXPECT_EQ(f.cmdStart_Sample.backColor, color::Green);
    EXPECT_FALSE(f.cmdStart_Sample.enabled);
    EXPECT_FALSE(f.cmdStopSample.enabled);
    EXPECT_FALSE(f.cmdSetOutOn[1].enabled);
    EXPECT_FALSE(f.cmdSetD2A.enabled);
    EXPECT_EQ(f.FraOut.toolTip, QStringLiteral("Disabled during FastSampling."));
    EXPECT_FALSE(f.lblInpNum[1].visible);
    EXPECT_TRUE(f.lblShowInpStatus.visible);
    EXPECT_FALSE(f.lblA2D_Data.visible);
    EXPECT_TRUE(panel.link.req.blnRepeatRequest);
    EXPECT_EQ(panel.data.startDateTime, p.nowText);
}

TEST_F(SamplingTest, ShortTimeOutIsRaisedTo5000) {
    manual = true;
    f.txtTimeout2.caption = QStringLiteral("300");
    startSession();
    EXPECT_EQ(f.txtTimeout2.caption, QStringLiteral("5000"));
    EXPECT_EQ(panel.link.lngTimeOut, 5000);
    EXPECT_EQ(panel.link.TimerTimeOut().interval(), 5000);
}

TEST_F(SamplingTest, RefusedStartPutsThePanelBack) {
    startCode = QStringLiteral("1");
    startSession();
    runUntil([&] { return !p.dialogs.empty(); }, 500);
    EXPECT_EQ(p.messages(), QStringList{QStringLiteral("Integration should be reduced.")});
    p.advance(200);
    EXPECT_EQ(requestsOf("GetFastSampling"), 0);
    EXPECT_EQ(f.cmdStart_Sample.backColor, color::ButtonFace);
    EXPECT_TRUE(f.cmdStart_Sample.enabled);
    EXPECT_TRUE(f.cmdWeight.enabled);
    EXPECT_TRUE(f.cmdSetOutOn[1].enabled);
    EXPECT_TRUE(f.FraOut.toolTip.isEmpty());
    EXPECT_FALSE(panel.sessionOpen);
    EXPECT_EQ(f.lblErrNumer.caption, QStringLiteral("1"));
}

TEST_F(SamplingTest, SilentCardDuringTheStartEndsItWithoutStartingTheCard) {
    silent = true;
    startSession(); // returns once the watchdog has reported the card
    EXPECT_EQ(p.messages().size(), 1);
    EXPECT_EQ(requestsOf("StartSample"), 0);
    EXPECT_FALSE(panel.sessionOpen);
    EXPECT_TRUE(f.cmdStart_Sample.enabled);
    EXPECT_EQ(f.cmdStart_Sample.backColor, color::ButtonFace);
    EXPECT_TRUE(f.cmdWeight.enabled);
    EXPECT_TRUE(f.cmdSetOutOn[1].enabled);
    EXPECT_LT(p.now, 100000u + 20000u); // it did not sit out the whole status wait
}

// ---- Blocks ----------------------------------------------------------------------------------

TEST_F(SamplingTest, StopButtonIsEnabledByTheSecondBlock) {
    manual = true;
    startSession();
    answerBlock(fastAnswer(readingsXml({"1.5", "2.5"})));
    EXPECT_FALSE(f.cmdStopSample.enabled);
    EXPECT_EQ(f.lblTotalReadingsD.caption, QStringLiteral("2"));
    answerBlock(fastAnswer(readingsXml({"3.5"})));
    EXPECT_TRUE(f.cmdStopSample.enabled);
    answerBlock(fastAnswer(readingsXml({"4.5", "5.5", "6.5"})));
    EXPECT_EQ(f.lblTotalReadingsD.caption, QStringLiteral("6"));
    EXPECT_EQ(f.lblParsedReadingsD.caption, QStringLiteral("6"));
    EXPECT_EQ(readings(0, 5), (std::vector<QString>{"1.5", "2.5", "3.5", "4.5", "5.5", "6.5"}));
    EXPECT_EQ(panel.data.blockCount, 3);
    EXPECT_EQ(panel.data.blocks[0].value[4], 1);
    EXPECT_EQ(panel.data.blocks[1].value[4], 2);
    EXPECT_EQ(panel.data.blocks[2].value[4], 5);
    EXPECT_EQ(panel.data.blocks[2].value[0], 2); // the block number

    // The next request shows the block's last reading.
    ASSERT_TRUE(runUntil([&] { return waiting > 0; }, 100));
    EXPECT_EQ(f.lblCurrentBlockWeight.caption, QStringLiteral("6.5"));
    EXPECT_EQ(f.lblWT_BRUTTO.caption, QStringLiteral("6.500"));

    // Stop while a block is on its way: the block is taken first, then the card is stopped.
    click([&] { panel.cmdStopSample_Click(); });
    EXPECT_FALSE(f.cmdStopSample.enabled);
    p.advance(50);
    EXPECT_EQ(requestsOf("StopSample"), 0);
    answerBlock(fastAnswer(readingsXml({"7.5"})));
    EXPECT_EQ(panel.data.readings[6], QStringLiteral("7.5"));
    ASSERT_TRUE(runUntil([&] { return requestsOf("StopSample") == 1; }, 100));
    EXPECT_EQ(card.requests.last().contentLength, 0);
    answerBlock(fastAnswer(readingsXml({"8.5"})));      // still held by the card
    answerBlock(fastAnswer({}, QStringLiteral("200"))); // the end
    EXPECT_EQ(panel.blocksAnswered, 6);
    EXPECT_EQ(panel.data.blockCount, 5);
    EXPECT_TRUE(f.cmdStart_Sample.enabled);
    EXPECT_FALSE(f.cmdStopSample.enabled);
    EXPECT_TRUE(f.FraOut.toolTip.isEmpty());
}

TEST_F(SamplingTest, BlockSplitInChunksIsTakenWhole) {
    manual = true;
    startSession();
    QStringList values;
    for (int i = 0; i < 50; ++i)
        values << QString::number(100 + i * 0.5, 'f', 2);
    const QString answer = fastAnswer(readingsXml(values));
    answerBlock(answer, {10, 200, 5, 333, 1});
    EXPECT_EQ(readings(0, 49), std::vector<QString>(values.begin(), values.end()));
    EXPECT_EQ(f.lblTotalReadingsD.caption, QStringLiteral("50"));

    // The answer is complete at "</GetFastSampling", before its final ">" has arrived.
    answerBlock(fastAnswer(readingsXml({"8", "9"})).chopped(1), {30});
    EXPECT_EQ(panel.data.blockCount, 2);
    EXPECT_EQ(readings(50, 51), (std::vector<QString>{"8", "9"}));
    EXPECT_EQ(panel.link.iXmlErrors, 0);
}

TEST_F(SamplingTest, BadReadingsRepeatTheOneBeforeAndAreCounted) {
    manual = true;
    startSession();
    answerBlock(fastAnswer(readingsXml({"1.5", "abc", "", "2.5", "1.2.3"})));
    EXPECT_EQ(readings(0, 4), (std::vector<QString>{"1.5", "1.5", "1.5", "2.5", "2.5"}));
    EXPECT_EQ(f.lblErrorReadingsD.caption, QStringLiteral("3"));
    EXPECT_EQ(f.lblTotalReadingsD.caption, QStringLiteral("2"));  // the good ones
    EXPECT_EQ(f.lblParsedReadingsD.caption, QStringLiteral("5")); // all taken

    // A reading without its closing tag repeats the one before; counted as an answer error.
    answerBlock(fastAnswer(QStringLiteral("<W0>7</W0><W1>8<W2>9</W2>")));
    EXPECT_EQ(readings(5, 7), (std::vector<QString>{"7", "7", "9"}));
    EXPECT_EQ(panel.link.iXmlErrors, 1);
    EXPECT_TRUE(p.dialogs.empty());
}

TEST_F(SamplingTest, ElevenDigitReadingAsksTenDigitsDoNot) {
    manual = true;
    startSession();
    p.yesNoAnswers = {true};
    answerBlock(fastAnswer(readingsXml({"1234567890", "12345678901", "5"})));
    ASSERT_EQ(p.dialogs.size(), 1u);
    EXPECT_EQ(p.dialogs[0].kind, DialogRecord::YesNo);
    EXPECT_EQ(p.dialogs[0].text,
              QStringLiteral("Error!!! Abnormal Weight!!! 12345678901\r\nContinue ?"));
    EXPECT_EQ(readings(0, 2), (std::vector<QString>{"1234567890", "12345678901", "5"}));

    // No: the rest of the block is left; the readings before the abnormal one stay.
    p.yesNoAnswers = {false};
    answerBlock(fastAnswer(readingsXml({"6", "7", "-1234567.890", "8"})));
    EXPECT_EQ(p.dialogs.size(), 2u);
    EXPECT_EQ(panel.data.blockCount, 2);
    EXPECT_EQ(panel.data.blocks[1].value[4], 4);
    EXPECT_EQ(panel.samplingPosition, 5);
    answerBlock(fastAnswer(readingsXml({"9"})));
    EXPECT_EQ(readings(3, 5), (std::vector<QString>{"6", "7", "9"}));
}

TEST_F(SamplingTest, LastNumberDisagreeingWithTheElements) {
    panel.InitStart_Sample_Parameters();
    Int32 last = -1;
    bool ok = false;
    auto parse = [&](const QString& readingsText, Int32 first) {
        panel.GetVarSizeArray(fastAnswer(readingsText), first, last, 1, 1, 0, 0, ok);
    };

    // A number missing from the sequence repeats the reading before it.
    parse(QStringLiteral("<W0>1</W0><W1>2</W1><W3>4</W3>"), 0);
    ASSERT_TRUE(ok);
    EXPECT_EQ(last, 3);
    EXPECT_EQ(readings(0, 3), (std::vector<QString>{"1", "2", "2", "4"}));
    EXPECT_EQ(panel.link.iXmlErrors, 1);

    // Fewer elements than the last number says: the block ends with the last one there.
    parse(QStringLiteral("<W0>5</W0><W1>6</W1></W7>"), 10);
    ASSERT_TRUE(ok);
    EXPECT_EQ(last, 11);
    EXPECT_EQ(panel.data.readings[12], QStringLiteral("0"));
    EXPECT_EQ(panel.link.iXmlErrors, 2);

    // Elements numbered above the last number are left out.
    parse(QStringLiteral("<W0>5</W0><W1>6</W1><W2>7</W2><W1>8</W1>"), 20);
    ASSERT_TRUE(ok);
    EXPECT_EQ(last, 21);
    EXPECT_EQ(panel.data.readings[22], QStringLiteral("0"));
    EXPECT_EQ(panel.link.iXmlErrors, 3);

    // Refused: a last number that is not digits, none near the closing tag, no closing tag.
    const int before = panel.link.iXmlErrors;
    for (const QString& bad : {fastAnswer(QStringLiteral("<W0>5</W0><W1>6</W1x>")),
                               fastAnswer(QStringLiteral(
                                   "<W0>5</W0><W1>6</W1><ERROR_DESCRIPTION>x</ERROR_DESCRIPTION>")),
                               fastAnswer(QStringLiteral("<W0>5</W0><W1>6</W1>"))
                                   .replace(QStringLiteral("</GetFastSampling>"), QString())}) {
        panel.GetVarSizeArray(bad, 30, last, 1, 1, 0, 0, ok);
        EXPECT_FALSE(ok) << bad.toStdString();
        EXPECT_EQ(panel.data.readings[30], QStringLiteral("0"));
    }
    EXPECT_EQ(panel.link.iXmlErrors, before + 3);
    panel.GetVarSizeArray(QString(), 30, last, 1, 1, 0, 0, ok); // empty: refused quietly
    EXPECT_FALSE(ok);
    EXPECT_EQ(panel.link.iXmlErrors, before + 3);
}

TEST_F(SamplingTest, RefusedBlockLeavesThePositionAndFetchingGoesOn) {
    manual = true;
    startSession();
    answerBlock(fastAnswer(readingsXml({"1", "2"})));
    answerBlock(fastAnswer(QStringLiteral("<W0>3</W0><W1>4</Wx>")));
    EXPECT_EQ(panel.samplingPosition, 2);
    EXPECT_EQ(panel.data.blockCount, 1);
    answerBlock(fastAnswer(readingsXml({"5"})));
    EXPECT_EQ(readings(0, 2), (std::vector<QString>{"1", "2", "5"}));
    EXPECT_EQ(panel.data.blocks[1].value[1], 3); // the answers counted, refused ones too
}

// ---- Whole sessions --------------------------------------------------------------------------

TEST_F(SamplingTest, SessionEndsWithCode200AndTheFileHoldsEveryReading) {
    startSession();
    ASSERT_TRUE(runUntil([&] { return panel.blocksAnswered >= 6; }, 2000));
    ASSERT_TRUE(f.cmdStopSample.enabled);
    click([&] { panel.cmdStopSample_Click(); });
    ASSERT_TRUE(runUntil([&] { return f.cmdStart_Sample.enabled; }, 2000));

    EXPECT_EQ(f.lblErrNumer.caption, QStringLiteral("200"));
    EXPECT_EQ(f.lblErrNumer.foreColor, color::Red);
    EXPECT_EQ(f.lblErrDescr.caption, QStringLiteral("Fast sampling stopped"));
    EXPECT_EQ(f.cmdStart_Sample.backColor, color::ButtonFace);
    EXPECT_TRUE(f.cmdWeight.enabled);
    EXPECT_TRUE(f.CmdShowGraph.enabled);
    EXPECT_FALSE(f.cmdStopSample.enabled);
    EXPECT_TRUE(f.cmdSetOutOn[1].enabled);
    EXPECT_FALSE(panel.link.req.blnRepeatRequest);
    EXPECT_EQ(requestsOf("StopSample"), 1);
    const int requests = static_cast<int>(card.requests.size());
    p.advance(500);
    EXPECT_EQ(card.requests.size(), requests); // no request after the end

    const DataFile file = readDataFile();
    ASSERT_EQ(file.readings.size(), sent.size());
    for (int i = 0; i < sent.size(); ++i) {
        EXPECT_EQ(file.readings[i].first, i);
        EXPECT_EQ(file.readings[i].second, sent[i]);
    }
    EXPECT_EQ(file.blockLines.size(), panel.data.blockCount);
    EXPECT_EQ(file.lines[0], QStringLiteral("Timer2Interval,  300 "));
    EXPECT_TRUE(file.lines.contains(QStringLiteral("Samples: %1").arg(sent.size() - 1)));
    EXPECT_TRUE(file.lines.contains(QStringLiteral("Sampling Rate: 8 (ms.)")));
    EXPECT_EQ(f.lblTotalReadingsD.caption, QString::number(sent.size()));
    EXPECT_NE(f.LbLFrequencyData.caption, QStringLiteral("0.000"));
    EXPECT_TRUE(p.dialogs.empty());
}

TEST_F(SamplingTest, ReadingListStopsTheSessionAtIndex20000) {
    perBlock = 5000;
    startSession();
    ASSERT_TRUE(runUntil([&] { return f.cmdStart_Sample.enabled; }, 5000));
    EXPECT_EQ(requestsOf("StopSample"), 1);
    EXPECT_EQ(panel.data.blockCount, 5);
    EXPECT_EQ(panel.data.blocks[4].value[4], 20000);
    EXPECT_EQ(f.lblParsedReadingsD.caption, QStringLiteral("20001"));
    EXPECT_EQ(panel.data.readings[20000], sent[20000]);
    const DataFile file = readDataFile();
    ASSERT_EQ(file.readings.size(), 20001);
    EXPECT_EQ(file.readings.last().second, sent[20000]);
    EXPECT_TRUE(file.lines.contains(QStringLiteral("Samples: 20000")));
    EXPECT_TRUE(p.dialogs.empty()); // answers of 100 KB and more are read without overflow
}

TEST_F(SamplingTest, WatchdogEndKeepsTheReadingsAndSavesThem) {
    startSession();
    ASSERT_TRUE(runUntil([&] { return panel.blocksAnswered >= 4; }, 2000));
    silent = true;
    ASSERT_TRUE(runUntil([&] { return !panel.sessionOpen; }, 60000));
    // First the card is asked to stop; it does not answer that either.
    EXPECT_EQ(p.messages().size(), 2);
    EXPECT_TRUE(p.messages()[0].startsWith(QStringLiteral("Server does not answer!")));
    EXPECT_EQ(requestsOf("StopSample"), 1);

    const int taken = panel.samplingPosition;
    ASSERT_GT(taken, 0);
    EXPECT_EQ(readings(0, taken - 1), std::vector<QString>(sent.begin(), sent.begin() + taken));
    const DataFile file = readDataFile();
    ASSERT_EQ(file.readings.size(), taken);
    EXPECT_EQ(file.readings.last().second, sent[taken - 1]);
    EXPECT_TRUE(f.cmdStart_Sample.enabled);
    EXPECT_TRUE(f.cmdWeight.enabled);
    EXPECT_TRUE(f.cmdSetOutOn[1].enabled);
    EXPECT_EQ(f.cmdStart_Sample.backColor, color::ButtonFace);

    // Saving again writes the same readings.
    QFile::remove(QStringLiteral("All_data.txt"));
    click([&] { panel.SaveSampleHistory(); });
    EXPECT_EQ(readDataFile().readings.size(), taken);
}

TEST_F(SamplingTest, NewStartWhileTheStopIsUnansweredSavesTheOldSessionFirst) {
    startSession();
    ASSERT_TRUE(runUntil([&] { return panel.blocksAnswered >= 3; }, 2000));
    silent = true;
    ASSERT_TRUE(runUntil([&] { return !p.dialogs.empty(); }, 30000));
    ASSERT_TRUE(panel.sessionOpen); // the stop is on its way to a silent card
    ASSERT_TRUE(f.cmdStart_Sample.enabled);
    const int taken = panel.samplingPosition;
    ASSERT_FALSE(QFile::exists(QStringLiteral("All_data.txt")));

    silent = false;
    manual = true;
    startSession();
    const DataFile file = readDataFile();
    ASSERT_EQ(file.readings.size(), taken);
    EXPECT_EQ(file.readings.last().second, sent[taken - 1]);
    EXPECT_TRUE(panel.sessionOpen);
    EXPECT_EQ(panel.samplingPosition, 0);
}

TEST_F(SamplingTest, StopAfterRealTimeDisplaySavesItsReadings) {
    click([&] { panel.cmdWeight_Click(); });
    ASSERT_TRUE(runUntil([&] { return requestsOf("GetRTStatus") >= 4; }));
    click([&] { panel.cmdStopSample_Click(); });
    const int requests = static_cast<int>(card.requests.size());
    p.advance(500);
    EXPECT_EQ(card.requests.size(), requests);
    EXPECT_FALSE(panel.link.TimerTimeOut().isEnabled());
    EXPECT_FALSE(f.cmdStopSample.enabled);
    EXPECT_TRUE(f.cmdWeight.enabled);
    EXPECT_EQ(f.cmdWeight.backColor, color::ButtonFace);
    EXPECT_TRUE(f.cmdStart_Sample.enabled);
    EXPECT_FALSE(f.lblInpNum[1].visible);
    EXPECT_TRUE(f.lblShowInpStatus.visible);
    EXPECT_TRUE(f.TxtIP.enabled);
    const DataFile file = readDataFile();
    ASSERT_GE(file.readings.size(), 4);
    EXPECT_EQ(file.readings.last().second, QStringLiteral("12.345"));
}

TEST_F(SamplingTest, RefusedStopEnablesTheButtonAgain) {
    manual = true;
    stopCode = QStringLiteral("1");
    startSession();
    answerBlock(fastAnswer(readingsXml({"1"})));
    answerBlock(fastAnswer(readingsXml({"2"})));
    click([&] { panel.cmdStopSample_Click(); });
    answerBlock(fastAnswer(readingsXml({"3"})));             // the block on its way
    ASSERT_TRUE(runUntil([&] { return waiting > 0; }, 100)); // sampling goes on
    EXPECT_EQ(requestsOf("StopSample"), 1);
    EXPECT_TRUE(f.cmdStopSample.enabled);
    EXPECT_TRUE(f.FraOut.toolTip.isEmpty());
    EXPECT_EQ(panel.link.req.strFunctionName, fn::GetFastSampling);
}

TEST_F(SamplingTest, BrowseAndViewerHandOff) {
    p.fileDialogAnswer = dir_.filePath(QStringLiteral("run7.txt"));
    click([&] { panel.cmdBrowse_Click(); });
    EXPECT_EQ(f.txtHistFileName.caption, QStringLiteral("run7.txt"));
    EXPECT_EQ(panel.dataFilePath(), dir_.filePath(QStringLiteral("run7.txt")));

    p.folder = dir_.path();
    QFile viewer(dir_.filePath(QStringLiteral("trendlog")));
    ASSERT_TRUE(viewer.open(QIODevice::WriteOnly));
    viewer.close();
    setValue(f.OptX_mode[2], 1);
    f.txtIntegration.caption = QStringLiteral("16");
    click([&] { panel.CmdShowGraph_Click(); });
    ASSERT_EQ(p.startedPrograms.size(), 1u);
    EXPECT_EQ(p.startedPrograms[0].second,
              QStringList{QDir(dir_.path()).absolutePath() + QStringLiteral("/run7.txt/2/16")});
}
