// The history viewer's window offscreen: it builds, shows a file's facts, places cursors on
// clicks, measures the visible stretch, and refuses a damaged file with the line named.

#include "ui/trendlog_plot.h"
#include "ui/trendlog_tuning.h"
#include "ui/trendlog_window.h"

#include <QApplication>
#include <QDropEvent>
#include <QFile>
#include <QMimeData>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

using namespace torv;

namespace {

QByteArray trailer(const char* rate) {
    return QByteArray(
               "-1, -1\r\nStartDateTime:11/22/2026 3:04:05 PM\r\nTORV-NET  \r\nSampling Rate: ") +
           rate +
           " (ms.)\r\nScanned:\r\nInegrationBufferSize: 8\r\nGain Bias Resol. Units LoLimit "
           "HiLimit\r\n  36   49 0.0002 kg     0.234   4.321\r\nAverage Minimum Maximum Delta1 "
           "Delta2 Cnt1 Cnt2\r\n 1107  801  1398 -306  291  1  1\r\nSamples: 99\r\nValue1_A2D:, "
           "1 \r\nReading1_ms2:,2\r\n";
}

QByteArray sampleFile(int readings, const char* rate) {
    QByteArray out = "Timer2Interval,  300 \r\n-999999  1  0  0  0  49 \r\n";
    for (int i = 0; i < readings; ++i) {
        if (i == 50) out += "-999999  1  1  0  0  99 \r\n";
        out += " " + QByteArray::number(i) + "  " + QByteArray::number(i % 10) + ".5\r\n";
    }
    return out + trailer(rate);
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
    EXPECT_EQ(window.plot()->xAxis->label(), "Time (s)");

    // A click places cursor A, a right click cursor B, on the readings under the mouse.
    TrendlogPlot* plot = window.plot();
    window.showRange(0, 792); // readings 0 .. 99 at 8 ms
    plot->replot();
    const int y = plot->axisRect()->center().y();
    QTest::mouseClick(plot, Qt::LeftButton, {}, QPoint(int(plot->xAxis->coordToPixel(80)), y));
    QTest::mouseClick(plot, Qt::RightButton, {}, QPoint(int(plot->xAxis->coordToPixel(240)), y));
    window.refreshPanel();
    for (const char* fact : {"A reading: 10", "B reading: 30", "B - A readings: 20",
                             "B - A time: 0.160 s", "B - A value: 0.0 kg"})
        EXPECT_TRUE(window.panelText().contains(fact)) << fact << "\n"
                                                       << window.panelText().toStdString();

    window.showRange(0, 72); // readings 0 .. 9
    EXPECT_TRUE(window.panelText().contains(
        "Count: 10\nMinimum: 0.5 kg\nMaximum: 9.5 kg\nMean: 5.0 kg\nStd deviation: 3.0 kg\n"))
        << window.panelText().toStdString();

    // The value axis follows the readings in view, unless it is kept fixed.
    const QCPRange fitted = plot->yAxis->range();
    plot->xAxis->setRange(8, 24); // readings 1 .. 3
    EXPECT_LT(plot->yAxis->range().upper, 4.0);
    plot->setFitValues(false);
    plot->xAxis->setRange(0, 72);
    EXPECT_LT(plot->yAxis->range().upper, 4.0);
    plot->setFitValues(true);
    EXPECT_EQ(plot->yAxis->range(), fitted);

    // A new session renamed over the file is read again; the view and the cursors stay.
    put(dir.filePath("next.tmp"), sampleFile(120, "8"));
    ASSERT_TRUE(QFile::remove(path) && QFile::rename(dir.filePath("next.tmp"), path));
    EXPECT_TRUE(QTest::qWaitFor([&] { return window.series().size() == 120; }, 5000));
    EXPECT_EQ(plot->xAxis->range(), QCPRange(0, 72));
    EXPECT_TRUE(window.panelText().contains("A reading: 10"));
    put(path, sampleFile(130, "8")); // and again, now that the watched file was replaced
    EXPECT_TRUE(QTest::qWaitFor([&] { return window.series().size() == 130; }, 5000));

    // A file dropped on the window opens and joins the recent files.
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, dir.path());
    const QString dropped = dir.filePath("dropped.txt");
    put(dropped, sampleFile(60, "4"));
    QMimeData mime;
    mime.setUrls({QUrl::fromLocalFile(dropped)});
    QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &mime, Qt::LeftButton, {});
    QApplication::sendEvent(&window, &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(10, 10), Qt::CopyAction, &mime, Qt::LeftButton, {});
    QApplication::sendEvent(&window, &drop);
    EXPECT_EQ(window.series().size(), 60u);
    EXPECT_EQ(QSettings().value("recentFiles").toStringList(), QStringList{dropped});

    // A damaged file leaves what was shown.
    const QString bad = dir.filePath("bad.txt");
    put(bad, "Timer2Interval,  300 \r\n-999999 1 2\r\n");
    const std::optional<QString> error = window.load(bad);
    ASSERT_TRUE(error);
    EXPECT_TRUE(error->startsWith("bad.txt: line 2: expected a block line"))
        << error->toStdString();
    EXPECT_EQ(window.series().size(), 60u);
}

TEST(TrendlogWindow, TuningPanelDrawsTheChosenIntegrationOverTheReadings) {
    QTemporaryDir dir;
    const QString path = dir.filePath("All_data.txt");
    QByteArray file = "Timer2Interval,  300 \r\n-999999  1  0  0  0  2999 \r\n";
    for (int i = 0; i < 3000; ++i)
        file += " " + QByteArray::number(i) + "  " + (i < 2000 ? "1." : "6.") +
                (i % 2 ? "010" : "000") + "\r\n";
    put(path, file + trailer("2"));
    TrendlogWindow window;
    window.show();
    ASSERT_FALSE(window.load(path));
    window.showTuning(true);
    window.refreshTuning();
    TuningPanel* tuning = window.tuning();
    ASSERT_TRUE(tuning->table().error.isEmpty()) << tuning->table().error.toStdString();
    EXPECT_EQ(tuning->table().rows.size(), 9u);
    ASSERT_TRUE(tuning->table().step);
    EXPECT_EQ(tuning->table().step->position, 2000u);
    EXPECT_TRUE(tuning->text().contains("64 ms | 32 | 0.0000 | 0.0000 | 64 ms"))
        << tuning->text().toStdString();

    QCPGraph* trace = window.plot()->graph(1);
    tuning->chooseIntegration(64);
    EXPECT_TRUE(trace->visible());
    EXPECT_EQ(trace->data()->size(), 3000);
    EXPECT_DOUBLE_EQ((trace->data()->begin() + 2031)->value, 6.005) << "settled after 32";
    tuning->chooseIntegration(2); // the readings themselves: no trace
    EXPECT_FALSE(trace->visible());

    window.cursors().place(0, 200, window.series());
    window.cursors().place(1, 2000, window.series());
    window.refreshTuning();
    EXPECT_TRUE(tuning->text().contains("0.200 s to 2.000 s (between the cursors)"))
        << tuning->text().toStdString();
    window.showTuning(false);
    EXPECT_FALSE(trace->visible());
}
