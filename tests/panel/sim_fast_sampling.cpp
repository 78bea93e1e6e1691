// Fast sampling against the simulator on loopback: a whole session from the start to the
// card's end, and the data file it leaves, compared with every reading the card sent.

#include "base/colors.h"
#include "base/numeric.h"
#include "panel/frm_client.h"
#include "sim/sim_host.h"
#include "support/loopback_platform.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace torv;
using namespace torv::test;

namespace {

class SamplingOnSimulator : public ::testing::Test {
protected:
    SamplingOnSimulator() {
        setDecimalSeparator(QLatin1Char('.'));
        oldDir_ = QDir::currentPath();
        QDir::setCurrent(dir_.path());
        sim::SimOptions options;
        options.signal.weight = 250.5;
        options.inputsPeriodMs = 0;
        host = std::make_unique<sim::SimHost>(options);
        host->setLogSink([](const QString&) {});
        port = host->start();
        panel.layOutFrames();
        f.lblTareData.caption = QStringLiteral("0");
        f.TxtIP.caption = QStringLiteral("127.0.0.1:%1").arg(port);
    }
    ~SamplingOnSimulator() override {
        panel.link.closeSocket();
        host->stop();
        QDir::setCurrent(oldDir_);
    }

    // Start, at least `blocks` blocks, Stop, and the card's end of the session.
    void runSession(int blocks) {
        panel.event([&] { panel.cmdStart_Sample_Click(); });
        ASSERT_TRUE(p.runUntil(
            [&] { return panel.blocksAnswered >= blocks && f.cmdStopSample.enabled; }, 20000))
            << panel.blocksAnswered << " " << p.messages().join(QLatin1Char('|')).toStdString();
        panel.event([&] { panel.cmdStopSample_Click(); });
        ASSERT_TRUE(p.runUntil([&] { return !panel.sessionOpen; }, 20000));
    }

    QByteArray dataFile() {
        QFile file(QStringLiteral("All_data.txt"));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir dir_;
    QString oldDir_;
    std::unique_ptr<sim::SimHost> host;
    quint16 port = 0;
    LoopbackPlatform p;
    FrmClient panel{p};
    FrmClientForm& f = panel.f;
};

} // namespace

TEST_F(SamplingOnSimulator, WholeSessionFileMatchesWhatTheCardRecorded) {
    ASSERT_NE(port, 0);
    runSession(20);
    EXPECT_TRUE(p.dialogs.empty()) << p.messages().join(QLatin1Char('|')).toStdString();
    EXPECT_EQ(f.lblErrNumer.caption, QStringLiteral("200"));
    EXPECT_TRUE(f.cmdStart_Sample.enabled);
    EXPECT_EQ(f.cmdStart_Sample.backColor, color::ButtonFace);
    EXPECT_TRUE(f.cmdWeight.enabled);
    EXPECT_TRUE(f.cmdSetOutOn[1].enabled);

    const QStringList recorded = host->recordedSamples();
    ASSERT_GE(recorded.size(), 20);
    const QList<QByteArray> lines = dataFile().split('\n');
    ASSERT_GT(lines.size(), 16);
    EXPECT_EQ(lines[0], QByteArray("Timer2Interval,  300 \r"));

    // Block lines and reading lines, in order, up to the end of the data.
    int reading = 0;
    int blocks = 0;
    qsizetype at = 1;
    for (; at < lines.size() && lines[at] != "-1, -1\r"; ++at) {
        const QByteArray& line = lines[at];
        ASSERT_TRUE(line.endsWith('\r')) << at;
        if (line.startsWith("-999999 ")) {
            const QList<QByteArray> v = line.simplified().split(' ');
            ASSERT_EQ(v.size(), 6) << line.constData();
            EXPECT_EQ(v[1].toInt(), blocks) << line.constData();
            ++blocks;
            continue;
        }
        const QByteArray expected =
            ' ' + QByteArray::number(reading) + "  " + recorded.value(reading).toLatin1() + '\r';
        ASSERT_EQ(line, expected) << "reading " << reading;
        ++reading;
    }
    EXPECT_EQ(reading, recorded.size());
    EXPECT_EQ(blocks, panel.data.blockCount);
    EXPECT_GE(blocks, 20);

    // The fixed lines after the data, byte for byte.
    const QByteArray trailer = "-1, -1\r\n"
                               "StartDateTime:" +
                               panel.data.startDateTime.toLatin1() +
                               "\r\n"
                               "TORV-NET  \r\n"
                               "Sampling Rate: 8 (ms.)\r\n"
                               "Scanned:\r\n"
                               "InegrationBufferSize: 8\r\n"
                               "Gain Bias Resol. Units LoLimit HiLimit\r\n"
                               "  36   49 0.0002 kg     0.234   4.321\r\n"
                               "Average Minimum Maximum Delta1 Delta2 Cnt1 Cnt2\r\n"
                               " 1107  801  1398 -306  291  1  1\r\n"
                               "Samples: " +
                               QByteArray::number(recorded.size() - 1) +
                               "\r\n"
                               "Value1_A2D:, 1 \r\n"
                               "Reading1_ms2:,1\r\n";
    EXPECT_TRUE(dataFile().endsWith(trailer)) << dataFile().right(400).constData();

    // What the card was asked: start and stop with empty bodies, blocks with "ID=4".
    int starts = 0, stops = 0;
    for (const sim::RequestRecord& r : host->requests()) {
        if (r.function == QLatin1String("StartSample")) ++starts;
        if (r.function == QLatin1String("StopSample")) ++stops;
        if (r.function == QLatin1String("StartSample") ||
            r.function == QLatin1String("StopSample")) {
            EXPECT_EQ(r.contentLength, 0);
        }
        if (r.function == QLatin1String("GetFastSampling")) {
            EXPECT_EQ(r.body, QStringLiteral("ID=4"));
        }
    }
    EXPECT_EQ(starts, 1);
    EXPECT_EQ(stops, 1);
}

TEST_F(SamplingOnSimulator, AnswersInSmallPiecesLoseNoReading) {
    ASSERT_NE(port, 0);
    sim::Fault chunks;
    chunks.kind = sim::Fault::Kind::Chunked;
    chunks.chunkSizes = {5, 40, 17};
    chunks.function = QStringLiteral("GetFastSampling");
    host->injectFault(chunks);
    runSession(20);
    EXPECT_TRUE(p.dialogs.empty()) << p.messages().join(QLatin1Char('|')).toStdString();
    const QStringList recorded = host->recordedSamples();
    ASSERT_EQ(panel.samplingPosition, recorded.size());
    for (int i = 0; i < recorded.size(); ++i)
        ASSERT_EQ(panel.data.readings[static_cast<std::size_t>(i)], recorded[i]) << i;
    EXPECT_EQ(panel.link.iXmlErrors, 0);
}

TEST_F(SamplingOnSimulator, TooLargeIntegrationIsRefused) {
    ASSERT_NE(port, 0);
    host->withCard([](sim::Card& c) { c.setIntegration(128); });
    panel.event([&] { panel.cmdStart_Sample_Click(); });
    ASSERT_TRUE(p.runUntil([&] { return !p.dialogs.empty(); }, 10000));
    EXPECT_EQ(p.messages(), QStringList{QStringLiteral("Integration should be reduced.")});
    EXPECT_TRUE(f.cmdStart_Sample.enabled);
    EXPECT_TRUE(f.cmdWeight.enabled);
    EXPECT_EQ(f.txtIntegration.caption, QStringLiteral("128"));
}
