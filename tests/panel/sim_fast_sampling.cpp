// Fast sampling against the simulator on loopback: a whole session from the start to the
// card's end, and the data file it leaves, compared with every reading the card sent.

#include "sim_fixture.h"

#include <QFile>
#include <QRegularExpression>

using namespace torv;
using namespace torv::test;

namespace {

class SamplingOnSimulator : public PanelOnSimulator {
protected:
    SamplingOnSimulator()
        : PanelOnSimulator(250.5) {
        f.lblTareData.caption = "0";
    }
    // Start, at least `blocks` blocks, Stop, and the card's end of the session.
    void runSession(int blocks) {
        panel.event([&] { panel.cmdStart_Sample_Click(); });
        ASSERT_TRUE(p.runUntil(
            [&] {
                return functions().count("GetFastSampling") >= blocks && f.cmdStopSample.enabled;
            },
            20000))
            << dialogs();
        panel.event([&] { panel.cmdStopSample_Click(); });
        ASSERT_TRUE(p.runUntil([&] { return f.cmdStart_Sample.enabled; }, 20000));
    }
    QByteArray dataFile() {
        QFile file("All_data.txt");
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
};

} // namespace

TEST_F(SamplingOnSimulator, WholeSessionFileMatchesWhatTheCardRecorded) {
    ASSERT_NE(port, 0);
    runSession(20);
    EXPECT_TRUE(p.dialogs.empty()) << dialogs();
    EXPECT_EQ(f.lblErrNumer.caption, "200");
    EXPECT_EQ(enabledOf({&f.cmdStart_Sample, &f.cmdWeight, &f.cmdSetOutOn[1]}), "111");
    EXPECT_EQ(f.cmdStart_Sample.backColor, color::ButtonFace);

    // The file byte for byte: every reading the card recorded, in order, between block lines
    // that number the blocks from 0, then the fixed lines after the data.
    const QStringList recorded = host->recordedSamples();
    ASSERT_GE(recorded.size(), 20);
    QStringList lines = QString::fromLatin1(dataFile()).split("\r\n");
    const QStringList blockLines = lines.filter(QRegularExpression("^-999999 "));
    ASSERT_EQ(blockLines.size(), panel.data().blockCount);
    for (int b = 0; b < blockLines.size(); ++b) {
        const QStringList v = blockLines[b].simplified().split(' ');
        EXPECT_EQ(v.size(), 6) << blockLines[b].toStdString();
        EXPECT_EQ(v.value(1).toInt(), b) << blockLines[b].toStdString();
    }
    lines.removeIf([](const QString& l) { return l.startsWith("-999999 "); });
    QString expected = "Timer2Interval,  300 \r\n";
    for (int i = 0; i < recorded.size(); ++i)
        expected += QStringLiteral(" %1  %2\r\n").arg(i).arg(recorded[i]);
    expected +=
        "-1, -1\r\nStartDateTime:" + panel.data().startDateTime +
        "\r\nTORV-NET  \r\nSampling Rate: 8 (ms.)\r\nScanned:\r\nInegrationBufferSize: 8\r\n"
        "Gain Bias Resol. Units LoLimit HiLimit\r\n  36   49 0.0002 kg     0.234   4.321\r\n"
        "Average Minimum Maximum Delta1 Delta2 Cnt1 Cnt2\r\n 1107  801  1398 -306  291  1  1\r\n"
        "Samples: " +
        QString::number(recorded.size() - 1) + "\r\nValue1_A2D:, 1 \r\nReading1_ms2:,1\r\n";
    EXPECT_EQ(lines.join("\r\n"), expected);

    // What the card was asked: start and stop once with empty bodies, blocks with "ID=4".
    QStringList asked; // consecutive repeats once
    for (const sim::RequestRecord& r : host->requests()) {
        const QString line =
            QStringLiteral("%1 %2 %3").arg(r.function, r.body).arg(r.contentLength);
        if (asked.isEmpty() || asked.last() != line) asked << line;
    }
    EXPECT_EQ(asked, QStringList({"GetRTStatus ID=4 4", "StartSample  0", "GetFastSampling ID=4 4",
                                  "StopSample  0", "GetFastSampling ID=4 4"}));
}

TEST_F(SamplingOnSimulator, AnswersInSmallPiecesLoseNoReading) {
    ASSERT_NE(port, 0);
    sim::Fault chunks;
    chunks.kind = sim::Fault::Kind::Chunked;
    chunks.chunkSizes = {5, 40, 17};
    chunks.function = "GetFastSampling";
    host->injectFault(chunks);
    runSession(20);
    EXPECT_TRUE(p.dialogs.empty()) << dialogs();
    const QStringList recorded = host->recordedSamples();
    ASSERT_EQ(f.lblParsedReadingsD.caption.toInt(), recorded.size());
    for (int i = 0; i < recorded.size(); ++i)
        ASSERT_EQ(panel.data().readings[static_cast<std::size_t>(i)], recorded[i]) << i;
    EXPECT_EQ(panel.link().iXmlErrors, 0);
}
