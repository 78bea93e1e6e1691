// The real-time graph's cost per reading.
//
// (a) Readings per second through the sampling tick and the graph window's drawing, on the form
//     models (no widgets), measured while 1,000 and while 49,000 readings are stored; their
//     per-reading costs should be the same (ratio at most 1.3).
// (b) The whole panel polling the in-process simulator, with one graph window shown and without:
//     answers per second of each and their ratio (at least 0.8), the graph window's repaints per
//     second (at most 60) and the event-loop latency. Run it under a display (xvfb-run) or with
//     QT_QPA_PLATFORM=offscreen.
//
//   graph_rate [seconds per panel run, default 3] [models|panel]

#include "graph/frm_graph.h"
#include "graph/graph_store.h"
#include "panel/frm_client.h"
#include "panel/graph_link.h"
#include "sim/sim_host.h"
#include "support/scripted_dialogs.h"
#include "ui/frm_client_window.h"
#include "ui/frm_graph_window.h"
#include "ui/qt_platform.h"

#include "latency_probe.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTemporaryDir>
#include <QTimer>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <vector>

using namespace torv;

namespace {

// The Qt platform with the window; dialogs are printed and counted (a clean run shows none).
class BenchPlatform : public test::Scripted<QtPlatform> {
public:
    BenchPlatform() { echo = true; }
};

// The panel as the graph store sees it: a sine of readings as the weight label shows them.
class SinePanel : public GraphPanel {
public:
    SinePanel() {
        for (int i = 0; i < 997; ++i)
            texts_.push_back(QString::number(1250.0 * (1 + std::sin(i / 40.0)) / 2, 'f', 3));
    }
    QString currentReadingText() override { return texts_[next_++ % texts_.size()]; }
    QString cardAddress() override { return {}; }
    ChannelCalibration calibration(int) override { return {}; }
    QString currentFunctionName() override { return QStringLiteral("GetRTStatus"); }
    bool pollingOn() override { return true; }
    void setPollingButtonEnabled(bool) override {}

private:
    std::vector<QString> texts_;
    std::size_t next_ = 0;
};

// (a) ------------------------------------------------------------------------------------------
void measureModels(BenchPlatform& platform) {
    constexpr Int32 Block = 2000; // readings timed around each stored count
    constexpr int Rounds = 7;
    double best1k = 1e9, best49k = 1e9;
    for (int round = 0; round < Rounds; ++round) {
        GraphStore store(platform);
        SinePanel panel;
        store.panel = &panel;
        store.calibration[0] = {ChannelCalibration::Calibrated, 0, 1250, QStringLiteral("kg")};
        store.sizeStores(1);
        store.channelActive[0] = true;
        store.openWindowCount = 1;
        store.realTimeGraphRuns = true;
        store.restartClock();
        FrmGraph graph(store, 0);
        store.graphWindows[0] = &graph;
        graph.Form_Load();

        QElapsedTimer t;
        auto runTo = [&](Int32 count) {
            while (store.readingCount[0] < count)
                store.GraphSamplingTick();
        };
        runTo(1000 - Block / 2);
        t.start();
        runTo(1000 + Block / 2);
        best1k = std::min(best1k, double(t.nsecsElapsed()) / Block);
        runTo(49000 - Block);
        t.start();
        runTo(49000);
        best49k = std::min(best49k, double(t.nsecsElapsed()) / Block);
    }
    std::printf("graph_rate (a): sampling tick + DrawGraph_TORV on the form models, best of %d\n",
                Rounds);
    std::printf("  at  1,000 stored: %8.0f readings/s (%.2f us a reading)\n", 1e9 / best1k,
                best1k / 1000);
    std::printf("  at 49,000 stored: %8.0f readings/s (%.2f us a reading)\n", 1e9 / best49k,
                best49k / 1000);
    std::printf("  stored 49,000 : 1,000 per-reading cost ratio %.2f (target <= 1.3)\n",
                best49k / best1k);
}

// (b) ------------------------------------------------------------------------------------------
struct PanelRun {
    double answersPerSecond = 0;
    double repaintsPerSecond = 0;
    double latencyP50 = 0, latencyP99 = 0;
    Int32 graphReadings = 0;
    double answersPerCpuSecond = 0; // this thread's processor time: the machine's other load aside
};

double threadCpuSeconds() {
    timespec ts{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return double(ts.tv_sec) + double(ts.tv_nsec) / 1e9;
}

PanelRun runPanel(QApplication& app, BenchPlatform& platform, quint16 port, bool withGraph,
                  int seconds) {
    FrmClient panel(platform);
    FrmClientWindow window(panel);
    window.show();
    panel.f.TxtIP.caption = QStringLiteral("127.0.0.1:%1").arg(port);
    panel.layOutFrames();

    GraphStore store(platform);
    PanelGraphLink link(panel);
    store.panel = &link;
    panel.graph = &store; // each good status answer feeds the running graph
    FrmGraphWindows windows(store);
    store.windows = &windows;
    FrmGraphWindow* graphWindow = nullptr;
    if (withGraph) {
        store.calibration[0] = {ChannelCalibration::Calibrated, 0, 1250, QStringLiteral("kg")};
        store.sizeStores(1);
        store.channelActive[0] = true;
        store.openWindowCount = 1;
        store.realTimeGraphRuns = true;
        store.restartClock();
        store.graphWindows[0] = windows.open(0);
        graphWindow = windows.window(0);
    }
    // Each status answer feeds the graph as the panel's status handler does.
    app.processEvents();
    panel.event([&] { panel.cmdWeight_Click(); });

    torv::bench::LatencyProbe probe;
    probe.start();
    const double cpuBefore = threadCpuSeconds();
    const int repaintsBefore = graphWindow ? graphWindow->refreshCount() : 0;
    // A loop of its own: quitting the application would close every window.
    QEventLoop loop;
    QTimer::singleShot(seconds * 1000, &loop, &QEventLoop::quit);
    loop.exec();
    const double elapsed = probe.elapsed();
    const double cpu = threadCpuSeconds() - cpuBefore;
    probe.stop();

    PanelRun r;
    r.answersPerSecond = panel.counters().lngReadings / elapsed;
    r.answersPerCpuSecond = cpu > 0 ? panel.counters().lngReadings / cpu : 0;
    r.repaintsPerSecond =
        graphWindow ? (graphWindow->refreshCount() - repaintsBefore) / elapsed : 0;
    r.latencyP50 = probe.percentile(0.5);
    r.latencyP99 = probe.percentile(0.99);
    r.graphReadings = store.readingCount[0];
    panel.closeLink();
    panel.graph = nullptr;
    if (graphWindow) delete graphWindow;
    return r;
}

void measurePanel(QApplication& app, BenchPlatform& platform, int seconds) {
    sim::SimOptions options; // the slow load cycle of the panel's own simulator
    options.signal.kind = sim::SignalKind::Sine;
    options.signal.weight = 1250.0;
    options.signal.periodMs = 20000;
    options.answerMs = 0; // as fast as the card can be asked: the rate is what is measured
    sim::SimHost host(options);
    host.setLogSink([](const QString&) {});
    const quint16 port = host.start();
    if (port == 0) {
        std::fprintf(stderr, "graph_rate: the simulator did not start\n");
        return;
    }
    // Alternating runs, the best of each: the machine's other load disturbs single runs.
    PanelRun without, with;
    double cpuWithout = 0, cpuWith = 0;
    for (int round = 0; round < 4; ++round) {
        const PanelRun a = runPanel(app, platform, port, false, seconds);
        const PanelRun b = runPanel(app, platform, port, true, seconds);
        if (a.answersPerSecond > without.answersPerSecond) without = a;
        if (b.answersPerSecond > with.answersPerSecond) with = b;
        cpuWithout = std::max(cpuWithout, a.answersPerCpuSecond);
        cpuWith = std::max(cpuWith, b.answersPerCpuSecond);
    }
    host.stop();
    std::printf("graph_rate (b): the panel polling the simulator, with and without a graph window "
                "(best of 4 alternating runs of %d s)\n",
                seconds);
    std::printf("  without graph: %7.0f answers/s, event-loop latency p50 %.1f ms, p99 %.1f ms\n",
                without.answersPerSecond, without.latencyP50, without.latencyP99);
    std::printf("  with graph   : %7.0f answers/s, event-loop latency p50 %.1f ms, p99 %.1f ms, "
                "%d readings drawn\n",
                with.answersPerSecond, with.latencyP50, with.latencyP99, with.graphReadings);
    std::printf("  graph window repaints %.1f per second (target <= 60)\n", with.repaintsPerSecond);
    std::printf("  panel answers with graph : without ratio %.2f (target >= 0.8), "
                "event-loop latency p99 %.1f ms\n",
                without.answersPerSecond > 0 ? with.answersPerSecond / without.answersPerSecond
                                             : 0.0,
                with.latencyP99);
    std::printf("  answers per processor-second of the window thread, with : without %.2f\n",
                cpuWithout > 0 ? cpuWith / cpuWithout : 0.0);
}

} // namespace

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QTemporaryDir dir;
    QDir::setCurrent(dir.path());
    const int seconds = argc > 1 ? std::max(1, QString::fromLatin1(argv[1]).toInt()) : 3;
    const QString only = argc > 2 ? QString::fromLatin1(argv[2]) : QString();
    BenchPlatform platform;
    if (only.isEmpty() || only == QStringLiteral("models")) measureModels(platform);
    if (only.isEmpty() || only == QStringLiteral("panel")) measurePanel(app, platform, seconds);
    return 0;
}
