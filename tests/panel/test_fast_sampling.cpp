// Fast sampling on the scripted card: starting a session, taking blocks (whole, in chunks,
// malformed), stopping, the end with code 200 and the data file it leaves.

#include "base/colors.h"
#include "panel_fixture.h"

#include <QFile>
#include <QRegularExpression>
#include <algorithm>

using namespace torv;
using namespace torv::test;
using Texts = std::vector<QString>;

namespace {

QString readingsXml(const QStringList& readings) {
    QString xml;
    for (int i = 0; i < readings.size(); ++i)
        xml += QStringLiteral("<W%1>%2</W%1>").arg(i).arg(readings[i]);
    return xml;
}

// A sampling answer as the card sends it: error elements first, the readings last.
QString fastAnswer(const QString& readings, const QString& code = "0") {
    return QStringLiteral("<GetFastSampling><ERROR_CODE>%1</ERROR_CODE><ERROR_DESCRIPTION>%2"
                          "</ERROR_DESCRIPTION>%3</GetFastSampling>")
        .arg(code, code == "200" ? "Fast sampling stopped" : "OK", readings);
}
QString block(const QStringList& readings) {
    return fastAnswer(readingsXml(readings));
}

// The lines of the data file, and its reading lines (" index  text") alone.
QStringList fileLines() {
    QFile file("All_data.txt");
    return file.open(QIODevice::ReadOnly) ? QString::fromLatin1(file.readAll()).split("\r\n")
                                          : QStringList();
}
QStringList readingLines() {
    const QStringList lines = fileLines();
    return lines.mid(0, lines.indexOf("-1, -1")).filter(QRegularExpression("^ \\d+  "));
}

class SamplingTest : public PanelTest {
protected:
    SamplingTest() {
        layOut();
        f.lblTareData.caption = "0";
        card.respond = [this](const CardRequest& r) { return respond(r); };
    }

    // The card: status and set commands as usual; sampling from the script below.
    QString respond(const CardRequest& r) {
        if (silent) return {};
        if (r.function == "StartSample" || r.function == "StopSample") {
            stopped = stopped || r.function == "StopSample";
            return cardAnswer(r.function,
                              QStringLiteral("<ERROR_CODE>%1</ERROR_CODE>")
                                  .arg(r.function == "StopSample" ? stopCode : startCode));
        }
        if (r.function != "GetFastSampling") return standardAnswer(r);
        if (manual) {
            ++waiting;
            return {};
        }
        if (stopped && tailBlocks-- <= 0) return fastAnswer({}, "200");
        QStringList out;
        for (int i = 0; i < perBlock; ++i)
            out << QString::number(1 + (sent.size() + i) * 0.125, 'f', 3);
        sent += out;
        return block(out);
    }

    void startSession() {
        click([&] { panel.cmdStart_Sample_Click(); });
    }
    // Manual mode: waits for the panel's next sampling request, then delivers `answer` in
    // pieces of the given sizes (the last piece takes the rest).
    void answerBlock(const QString& answer, const QList<int>& chunks = {}) {
        ASSERT_TRUE(runUntil([&] { return waiting > 0; }, 1000));
        --waiting;
        const QByteArray bytes =
            "HTTP/1.0 200 OK\r\nContent-Type: text/xml\r\n\r\n" + answer.toLatin1();
        int at = 0;
        for (int size : chunks) {
            p.socket()->deliver(bytes.mid(at, size));
            at += size;
        }
        p.socket()->deliver(bytes.mid(at));
    }
    Texts readings(int from, int to) const {
        return {panel.data().readings.begin() + from, panel.data().readings.begin() + to + 1};
    }
    // Column `col` of the block table, for every block taken.
    std::vector<int> blockColumn(int col) const {
        std::vector<int> out;
        for (int i = 0; i < panel.data().blockCount; ++i)
            out.push_back(panel.data().blocks[i].value[col]);
        return out;
    }
    void expectFileHoldsTheFirst(int count) {
        QStringList expected;
        for (int i = 0; i < count; ++i)
            expected << QStringLiteral(" %1  %2").arg(i).arg(sent[i]);
        EXPECT_EQ(readingLines(), expected);
    }

    bool manual = false, silent = false, stopped = false;
    int waiting = 0;
    int tailBlocks = 2; // blocks the card still holds after a stop
    int perBlock = 3;
    QStringList sent; // every reading the card handed out
    QString startCode = "0", stopCode = "0";
};

} // namespace

// ---- Starting --------------------------------------------------------------------------------

TEST_F(SamplingTest, FastSamplePressedWhilePollingStopsThePollingFirst) {
    manual = true;
    f.txtTimeout2.caption = "300"; // too short for sampling: raised
    click([&] { panel.cmdWeight_Click(); });
    ASSERT_TRUE(runUntil([&] { return requestsOf("GetRTStatus") >= 3; }));
    ASSERT_TRUE(runUntil([&] { return f.cmdWeight.backColor == color::Green; }));
    const int before = requestCount();

    startSession();
    runUntil([&] { return waiting > 0; }, 500);
    p.advance(300);
    // Polls go on while the start waits its first 100 ms; then the poll on its way is the
    // last one, the start's own status request follows, and the session begins.
    const QStringList after = functionsFrom(before);
    const int polls = static_cast<int>(after.count("GetRTStatus"));
    EXPECT_GE(polls, 2);
    EXPECT_EQ(after.mid(polls), QStringList({"StartSample", "GetFastSampling"}));
    EXPECT_EQ(f.txtTimeout2.caption, "5000");
    EXPECT_EQ(panel.link().TimerTimeOut().interval(), 5000);

    EXPECT_EQ(enabledOf({&f.cmdWeight, &f.cmdStart_Sample, &f.cmdStopSample, &f.cmdSetOutOn[1],
                         &f.cmdSetD2A}),
              "00000");
    EXPECT_EQ(f.FraOut.toolTip, "Disabled during FastSampling.");
}

TEST_F(SamplingTest, RefusedOrUnansweredStartPutsThePanelBack) {
    startCode = "1";
    startSession();
    runUntil([&] { return !p.dialogs.empty(); }, 500);
    EXPECT_EQ(p.messages(), QStringList{"Integration should be reduced."});
    p.advance(200);
    EXPECT_EQ(requestsOf("GetFastSampling"), 0);
    expectIdle();

    // A silent card: the watchdog reports it, and the card is never started.
    silent = true;
    const std::uint32_t start = p.now;
    startSession(); // returns once the watchdog has reported the card
    EXPECT_EQ(p.messages().size(), 2);
    EXPECT_EQ(requestsOf("StartSample"), 1);
    EXPECT_LT(p.now - start, 20000u); // it did not sit out the whole status wait
    expectIdle();
}

// ---- Blocks ----------------------------------------------------------------------------------

TEST_F(SamplingTest, BlocksStopAndTheEndWithCode200) {
    manual = true;
    startSession();
    answerBlock(block({"1.5", "2.5"}));
    EXPECT_FALSE(f.cmdStopSample.enabled); // enabled by the second block
    EXPECT_EQ(f.lblTotalReadingsD.caption, "2");
    answerBlock(block({"3.5"}));
    EXPECT_TRUE(f.cmdStopSample.enabled);
    answerBlock(block({"4.5", "5.5", "6.5"}));
    EXPECT_EQ(captionsOf({&f.lblTotalReadingsD, &f.lblParsedReadingsD}), "6|6");
    EXPECT_EQ(readings(0, 5), (Texts{"1.5", "2.5", "3.5", "4.5", "5.5", "6.5"}));
    EXPECT_EQ(blockColumn(4), (std::vector<int>{1, 2, 5})); // last reading of each

    // The next request shows the block's last reading.
    ASSERT_TRUE(runUntil([&] { return waiting > 0; }, 100));
    EXPECT_EQ(captionsOf({&f.lblCurrentBlockWeight, &f.lblWT_BRUTTO}), "6.5|6.500");

    // Stop while a block is on its way: the block is taken first, then the card is stopped.
    click([&] { panel.cmdStopSample_Click(); });
    EXPECT_FALSE(f.cmdStopSample.enabled);
    p.advance(50);
    EXPECT_EQ(requestsOf("StopSample"), 0);
    answerBlock(block({"7.5"}));
    EXPECT_EQ(panel.data().readings[6], "7.5");
    ASSERT_TRUE(runUntil([&] { return requestsOf("StopSample") == 1; }, 100));
    answerBlock(block({"8.5"}));        // still held by the card
    answerBlock(fastAnswer({}, "200")); // the end
    expectIdle();
    EXPECT_EQ(captionsOf({&f.lblErrNumer, &f.lblErrDescr}), "200|Fast sampling stopped");
    EXPECT_EQ(f.lblErrNumer.foreColor, color::Red);
    EXPECT_TRUE(f.CmdShowGraph.enabled);
    EXPECT_NE(f.LbLFrequencyData.caption, "0.000");
    const int requests = requestCount();
    p.advance(500);
    EXPECT_EQ(requestCount(), requests); // no request after the end
    sent = {"1.5", "2.5", "3.5", "4.5", "5.5", "6.5", "7.5", "8.5"};
    expectFileHoldsTheFirst(8);
    EXPECT_EQ(fileLines().filter("-999999 ").size(), 5);
    EXPECT_TRUE(p.dialogs.empty());
}

TEST_F(SamplingTest, WhatABlockHolds) {
    manual = true;
    startSession();
    // Bad readings repeat the one before and are counted.
    answerBlock(block({"1.5", "abc", "", "2.5", "1.2.3"}));
    EXPECT_EQ(readings(0, 4), (Texts{"1.5", "1.5", "1.5", "2.5", "2.5"}));
    // Errors, the samples of the block, all taken.
    EXPECT_EQ(captionsOf({&f.lblErrorReadingsD, &f.lblTotalReadingsD, &f.lblParsedReadingsD}),
              "3|5|5");

    // A refused block leaves the position; fetching goes on, and the refused answer counts.
    answerBlock(fastAnswer("<W0>3</W0><W1>4</Wx>"));
    EXPECT_EQ(f.lblParsedReadingsD.caption, "5");
    answerBlock(block({"5"}));
    EXPECT_EQ(readings(5, 5), Texts{"5"});
    EXPECT_EQ(blockColumn(1), (std::vector<int>{1, 3}));
    EXPECT_EQ(panel.link().iXmlErrors, 1);
    EXPECT_TRUE(p.dialogs.empty());

    // An eleven-digit reading asks; ten digits do not.
    p.yesNoAnswers = {true, false};
    answerBlock(block({"1234567890", "12345678901", "5"}));
    ASSERT_EQ(p.dialogs.size(), 1u);
    EXPECT_EQ(p.dialogs[0].kind, DialogRecord::YesNo);
    EXPECT_EQ(p.dialogs[0].text, "Error!!! Abnormal Weight!!! 12345678901\r\nContinue ?");
    EXPECT_EQ(readings(6, 8), (Texts{"1234567890", "12345678901", "5"}));
    // No: the rest of the block is left; the readings before the abnormal one stay.
    answerBlock(block({"6", "7", "-1234567.890", "8"}));
    EXPECT_EQ(p.dialogs.size(), 2u);
    EXPECT_EQ(blockColumn(4).back(), 10);
    EXPECT_EQ(f.lblParsedReadingsD.caption, "11");
    answerBlock(block({"9"}));
    EXPECT_EQ(readings(9, 11), (Texts{"6", "7", "9"}));
}

// ---- Whole sessions --------------------------------------------------------------------------

TEST_F(SamplingTest, ReadingListStopsTheSessionAtIndex20000) {
    // Blocks of 900: the 23rd holds reading 20000, so the card is asked to stop; the block
    // it still sends after that fits in the list and is kept like every other.
    perBlock = 900;
    tailBlocks = 1;
    startSession();
    ASSERT_TRUE(runUntil([&] { return f.cmdStart_Sample.enabled; }, 5000));
    EXPECT_EQ(requestsOf("StopSample"), 1);
    ASSERT_EQ(sent.size(), 24 * 900);
    EXPECT_EQ(blockColumn(4).back(), 24 * 900 - 1);
    EXPECT_EQ(f.lblParsedReadingsD.caption, QString::number(24 * 900));
    expectFileHoldsTheFirst(24 * 900);
    EXPECT_TRUE(fileLines().contains(QStringLiteral("Samples: %1").arg(24 * 900 - 1)));
    EXPECT_TRUE(p.dialogs.empty()); // answers of 100 KB and more are read without overflow
}

TEST_F(SamplingTest, WatchdogEndKeepsTheReadingsAndSavesThem) {
    startSession();
    ASSERT_TRUE(runUntil([&] { return requestsOf("GetFastSampling") >= 4; }, 2000));
    silent = true;
    ASSERT_TRUE(runUntil([&] { return !p.dialogs.empty(); }, 60000));
    p.advance(30000);
    // Reported once: a card that does not answer is not asked to stop.
    EXPECT_EQ(p.messages().size(), 1);
    EXPECT_TRUE(p.messages()[0].startsWith("Server does not answer!"));
    EXPECT_EQ(requestsOf("StopSample"), 0);

    const int taken = f.lblParsedReadingsD.caption.toInt();
    ASSERT_GT(taken, 0);
    expectFileHoldsTheFirst(taken);
    expectIdle();
}

TEST_F(SamplingTest, BrowseAndViewerHandOff) {
    p.fileDialogAnswer = dir_.filePath("run7.txt");
    click([&] { panel.cmdBrowse_Click(); });
    EXPECT_EQ(f.txtHistFileName.caption, "run7.txt");

    p.folder = dir_.path();
    QFile viewer(dir_.filePath("trendlog"));
    ASSERT_TRUE(viewer.open(QIODevice::WriteOnly));
    viewer.close();
    setValue(f.OptX_mode[2], 1);
    f.txtIntegration.caption = "16";
    click([&] { panel.CmdShowGraph_Click(); });
    ASSERT_EQ(p.startedPrograms.size(), 1u);
    EXPECT_EQ(p.startedPrograms[0].second,
              QStringList{QDir(dir_.path()).absolutePath() + "/run7.txt/2/16"});

    // At shut-down the panel closes the viewer it started, not one listed by another panel.
    QFile list(dir_.filePath("hWndListTrendlog"));
    ASSERT_TRUE(list.open(QIODevice::WriteOnly));
    list.write("777\r\n" + QByteArray::number(panel.startedViewers.at(0)) + "\r\n");
    list.close();
    panel.Form_Unload();
    EXPECT_EQ(p.closedWindows, panel.startedViewers);
}

// ---- Questions and the card ------------------------------------------------------------------

namespace {

class QuestionTest : public SamplingTest {
protected:
    // One session in which the third block holds an abnormal reading. While the question
    // is open the card closes the connection and answers whatever request reaches it.
    // Returns the reading texts of the data file.
    QStringList sessionWithQuestion(bool yes) {
        manual = true;
        startSession();
        answerBlock(block({"1", "2"}));
        answerBlock(block({"3"}));
        p.yesNoAnswers = {yes};
        p.onDialog = [this](const DialogRecord& d) {
            if (d.kind != DialogRecord::YesNo) return;
            p.socket()->peerClose();
            for (int i = 0; i < 200 && waiting == 0; ++i)
                p.advance(1);
            if (waiting == 0) return;
            ++answeredUnderTheBox;
            --waiting;
            p.socket()->deliver("HTTP/1.0 200 OK\r\n\r\n" + block({"99"}).toLatin1());
        };
        answerBlock(block({"4", "12345678901", "5"}));
        p.onDialog = nullptr;
        click([&] { panel.cmdStopSample_Click(); });
        answerBlock(block({"6"}));
        answerBlock(fastAnswer({}, "200"));
        expectIdle();
        QStringList texts;
        for (const QString& line : readingLines())
            texts << line.section(' ', 3);
        return texts;
    }
    int answeredUnderTheBox = 0;
};

} // namespace

TEST_F(QuestionTest, YesKeepsTheQuestionedBlockNoOnlyTheReadingsBeforeItNothingUnderTheBox) {
    EXPECT_EQ(sessionWithQuestion(true),
              QStringList({"1", "2", "3", "4", "12345678901", "5", "6"}));
    EXPECT_EQ(p.dialogs.size(), 1u);
    EXPECT_EQ(sessionWithQuestion(false), QStringList({"1", "2", "3", "4", "6"}));
    EXPECT_EQ(answeredUnderTheBox, 0);
}

// ---- The data file is remembered ---------------------------------------------------------------
