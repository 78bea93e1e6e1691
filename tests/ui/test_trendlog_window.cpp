// The history viewer's window offscreen: it builds, shows a file's facts, places cursors on
// clicks, measures the visible stretch, and refuses a damaged file with the line named.

#include "ui/trendlog_plot.h"
#include "ui/trendlog_window.h"

#include <QApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

using namespace torv;

namespace {

QByteArray sampleFile(int readings, const char* rate) {
    QByteArray out = "Timer2Interval,  300 \r\n-999999  1  0  0  0  49 \r\n";
    for (int i = 0; i < readings; ++i) {
        if (i == 50) out += "-999999  1  1  0  0  99 \r\n";
        out += " " + QByteArray::number(i) + "  " + QByteArray::number(i % 10) + ".5\r\n";
    }
    return out +
           "-1, -1\r\nStartDateTime:11/22/2026 3:04:05 PM\r\nTORV-NET  \r\nSampling Rate: " + rate +
           " (ms.)\r\nScanned:\r\nInegrationBufferSize: 8\r\nGain Bias Resol. Units LoLimit "
           "HiLimit\r\n  36   49 0.0002 kg     0.234   4.321\r\nAverage Minimum Maximum Delta1 "
           "Delta2 Cnt1 Cnt2\r\n 1107  801  1398 -306  291  1  1\r\nSamples: 99\r\nValue1_A2D:, "
           "1 \r\nReading1_ms2:,2\r\n";
}

void put(const QString& path, const QByteArray& bytes) {
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(bytes);
}

} // namespace

TEST(TrendlogWindow, ShowsAFileMeasuresItAndRefusesADamagedOne) {
    QTemporaryDir dir;
    const QString path = dir.filePath("All_data.txt");
    put(path, sampleFile(100, "8"));
    TrendlogWindow window;
    window.show();
    ASSERT_FALSE(window.load(path));
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
    const QString facts = window.panelText();
    for (const char* fact : {"Readings: 100", "Blocks: 2", "Units: kg", "Integration: 8 ms",
                             "X mode (file): 2, time in ms.", "Count: 100", "A: not placed"})
        EXPECT_TRUE(facts.contains(fact)) << fact << "\n" << facts.toStdString();
    EXPECT_EQ(window.plot()->xAxis->label(), "Time (ms)");

    // A click places cursor A, a right click cursor B, on the readings under the mouse.
    TrendlogPlot* plot = window.plot();
    window.showRange(0, 792); // readings 0 .. 99 at 8 ms
    plot->replot();
    const int y = plot->axisRect()->center().y();
    QTest::mouseClick(plot, Qt::LeftButton, {}, QPoint(int(plot->xAxis->coordToPixel(80)), y));
    QTest::mouseClick(plot, Qt::RightButton, {}, QPoint(int(plot->xAxis->coordToPixel(240)), y));
    window.refreshPanel();
    for (const char* fact : {"A reading: 10", "B reading: 30", "B - A readings: 20",
                             "B - A time: 160 ms", "B - A value: 0"})
        EXPECT_TRUE(window.panelText().contains(fact)) << fact << "\n"
                                                       << window.panelText().toStdString();

    window.showRange(0, 72); // readings 0 .. 9
    EXPECT_TRUE(window.panelText().contains("Count: 10\nMinimum: 0.5\nMaximum: 9.5\nMean: 5\n"))
        << window.panelText().toStdString();

    // A new session renamed over the file is read again; the view and the cursors stay.
    put(dir.filePath("next.tmp"), sampleFile(120, "8"));
    ASSERT_TRUE(QFile::remove(path) && QFile::rename(dir.filePath("next.tmp"), path));
    EXPECT_TRUE(QTest::qWaitFor([&] { return window.series().size() == 120; }, 5000));
    EXPECT_EQ(plot->xAxis->range(), QCPRange(0, 72));
    EXPECT_TRUE(window.panelText().contains("A reading: 10"));

    // A damaged file leaves what was shown.
    const QString bad = dir.filePath("bad.txt");
    put(bad, "Timer2Interval,  300 \r\n-999999 1 2\r\n");
    const std::optional<QString> error = window.load(bad);
    ASSERT_TRUE(error);
    EXPECT_TRUE(error->startsWith("bad.txt: line 2: expected a block line"))
        << error->toStdString();
    EXPECT_EQ(window.series().size(), 120u);
}
