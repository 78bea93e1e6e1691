// The history viewer on a sample data file of a million readings: readings per second of the
// reader (target at least 1,000,000, the file read in under a second) against a plain scan
// of the same bytes for its lines, the full tuning table (target under 0.5 s) and one
// integration's preview, and the time from start to the first paint of the plot
// and the cost of one replot while panning and zooming (run under xvfb-run; skipped without a
// display).
//
// viewer_load [--keep FILE]: also keeps the generated file.

#include "files/sample_file.h"
#include "files/sample_reader.h"
#include "link/qt_net_platform.h"
#include "ui/trendlog_plot.h"
#include "ui/trendlog_tuning.h"
#include "ui/trendlog_window.h"
#include "viewer/tuning.h"

#include "support/scripted_dialogs.h"

#include <QApplication>
#include <QEventLoop>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace {

using Clock = std::chrono::steady_clock;

double msSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// The panel's writer needs dialogs only for odd blocks; none occur here.
class BenchPlatform : public torv::test::Scripted<torv::QtNetPlatform> {
public:
    BenchPlatform() { echo = true; }
};

constexpr int kReadings = 1'000'000;
constexpr int kPerBlock = 500;

// A fast-sampling session as the panel saves it: blocks of 500 readings of a slow load cycle
// with noise, written with three decimals.
QByteArray sessionFile() {
    BenchPlatform platform;
    torv::SampleData data;
    data.readingsAllocated = true;
    data.startDateTime = QStringLiteral("11/22/2026 3:00:00 PM");
    data.readings.reserve(kReadings);
    std::uint32_t noise = 12345;
    for (int i = 0; i < kReadings; ++i) {
        noise = noise * 1664525u + 1013904223u;
        const double v = 1250.0 + 750.0 * std::sin(i * 2e-4) + double(noise >> 22) * 0.01;
        data.readings.push_back(QString::number(v, 'f', 3));
    }
    const int blocks = kReadings / kPerBlock;
    for (int b = 0; b < blocks; ++b)
        data.blocks[std::size_t(b)] =
            torv::BlockRecord{{1, b, 0, kPerBlock, (b + 1) * kPerBlock - 1}};
    return torv::memoryFileText(platform, 0, blocks, data, {QStringLiteral("8"), "kg", 1});
}

// Lines in the bytes, found with memchr: the floor any reader of this file stands on.
std::size_t lineCount(const QByteArray& bytes) {
    std::size_t lines = 0;
    const char* p = bytes.constData();
    const char* end = p + bytes.size();
    while ((p = static_cast<const char*>(std::memchr(p, '\n', std::size_t(end - p))))) {
        ++lines;
        ++p;
    }
    return lines;
}

} // namespace

int main(int argc, char* argv[]) {
    const Clock::time_point processStart = Clock::now();
    QTemporaryDir dir;
    QString path = dir.filePath(QStringLiteral("All_data.txt"));
    if (argc == 3 && std::strcmp(argv[1], "--keep") == 0) path = QString::fromLocal8Bit(argv[2]);

    const QByteArray bytes = sessionFile();
    {
        QFile out(path);
        if (!out.open(QIODevice::WriteOnly) || out.write(bytes) != bytes.size()) {
            std::fprintf(stderr, "viewer_load: %s could not be written\n", qPrintable(path));
            return 1;
        }
    }
    std::printf("sample data file: %d readings in %d blocks, %.1f MB\n", kReadings,
                kReadings / kPerBlock, double(bytes.size()) / 1e6);

    double bestRead = 1e300, bestScan = 1e300;
    std::size_t lines = 0;
    for (int round = 0; round < 5; ++round) {
        const Clock::time_point start = Clock::now();
        torv::SampleFileContent content;
        torv::SampleFileError error;
        if (!torv::readSampleFile(path, content, error) || content.index.size() != kReadings) {
            std::fprintf(stderr, "viewer_load: %s\n", qPrintable(error.text()));
            return 1;
        }
        bestRead = std::min(bestRead, msSince(start));
        const Clock::time_point scanStart = Clock::now();
        QFile in(path);
        if (!in.open(QIODevice::ReadOnly)) return 1;
        lines = lineCount(in.readAll());
        bestScan = std::min(bestScan, msSince(scanStart));
    }
    std::printf("reading the file: %.0f ms, %.2f M readings/s (target >= 1.00)\n", bestRead,
                kReadings / bestRead / 1e3);
    std::printf("plain read and line scan of the same bytes (%zu lines): %.0f ms; reader / "
                "scan = %.1f\n",
                lines, bestScan, bestRead / bestScan);
    std::printf("(making the file with the panel's writer took %.0f ms before this)\n",
                msSince(processStart) - 5 * (bestRead + bestScan));

    // The tuning table as if the session ran at integration 2: all nine integrations.
    {
        torv::SampleFileContent content;
        torv::SampleFileError error;
        if (!torv::readSampleFile(path, content, error)) return 1;
        double bestTable = 1e300, bestPreview = 1e300;
        std::size_t rows = 0;
        std::vector<double> preview;
        for (int round = 0; round < 3; ++round) {
            const Clock::time_point start = Clock::now();
            const torv::viewer::TuningTable table =
                torv::viewer::tuningTable(content.value, {2, 0, content.value.size(), {}});
            bestTable = std::min(bestTable, msSince(start));
            rows = table.rows.size();
            const Clock::time_point previewStart = Clock::now();
            torv::viewer::previewIntegration(content.value, 128, preview);
            bestPreview = std::min(bestPreview, msSince(previewStart));
        }
        std::printf("tuning table of %d readings, %zu integrations: %.0f ms (target < 500); one "
                    "integration's preview: %.1f ms\n",
                    kReadings, rows, bestTable, bestPreview);
    }

    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        std::printf("first paint: skipped, no display (run under xvfb-run)\n");
        return 0;
    }
    // From here on as the viewer starts: application, window, file, first paint of the plot.
    const Clock::time_point start = Clock::now();
    QApplication app(argc, argv);
    const double appMs = msSince(start);
    torv::TrendlogWindow window;
    QEventLoop painted;
    QObject::connect(window.plot(), &torv::TrendlogPlot::painted, &painted, &QEventLoop::quit);
    QTimer::singleShot(20000, &painted, &QEventLoop::quit);
    window.show();
    const Clock::time_point loadStart = Clock::now();
    if (window.load(path)) return 1;
    const double loadMs = msSince(loadStart);
    painted.exec();
    std::printf("start to first paint of the plot (%s): %.0f ms (application %.0f ms, "
                "reading and handing the readings to the plot %.0f ms)\n",
                qPrintable(QGuiApplication::platformName()), msSince(start), appMs, loadMs);

    // Panning and zooming: each step replots and repaints the window at once.
    torv::TrendlogPlot* plot = window.plot();
    const int steps = 40;
    const Clock::time_point panStart = Clock::now();
    for (int i = 0; i < steps; ++i) {
        const double width = i < steps / 2 ? 1e6 : 2e4; // the whole file, then a zoomed stretch
        const double from = (i % (steps / 2)) * 1e4;
        plot->xAxis->setRange(from, from + width);
        plot->replot(QCustomPlot::rpImmediateRefresh);
    }
    std::printf("pan and zoom over %d readings: %.1f ms per replot and repaint (%d steps)\n",
                kReadings, msSince(panStart) / steps, steps);

    // The Tuning panel: its table over the whole file, then choosing rows in turn, each
    // drawn over the million readings at once.
    plot->resetView();
    const Clock::time_point tableStart = Clock::now();
    window.showTuning(true);
    window.refreshTuning();
    const double tableMs = msSince(tableStart);
    const int choices[] = {16, 64, 256, 32};
    const Clock::time_point chooseStart = Clock::now();
    for (int ms : choices) {
        window.tuning()->chooseIntegration(ms);
        plot->replot(QCustomPlot::rpImmediateRefresh);
    }
    std::printf("tuning panel: table shown in %.0f ms; choosing a row and redrawing: %.0f ms\n",
                tableMs, msSince(chooseStart) / std::size(choices));
    return 0;
}
