// The main window polling the in-process simulator at full rate: how late do the window's own
// events run? A 10 ms timer measures its lateness while the panel polls; the figures are the
// event-loop latency an operator's click would see. Run it under a display (xvfb-run) or with
// QT_QPA_PLATFORM=offscreen.

#include "panel/frm_client.h"
#include "sim/sim_host.h"
#include "support/scripted_dialogs.h"
#include "ui/frm_client_window.h"
#include "ui/qt_platform.h"

#include "latency_probe.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

// Dialogs would stop the measurement: print them instead.
class BenchPlatform : public torv::test::Scripted<torv::QtPlatform> {
public:
    BenchPlatform() { echo = true; }
};

} // namespace

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QTemporaryDir dir;
    QDir::setCurrent(dir.path());
    const int seconds = argc > 1 ? std::max(1, QString::fromLatin1(argv[1]).toInt()) : 5;

    torv::sim::SimOptions options;
    options.answerMs = 0; // full rate: the window must keep up with it
    torv::sim::SimHost host(options);
    host.setLogSink([](const QString&) {});
    const quint16 port = host.start();
    if (port == 0) {
        std::fprintf(stderr, "ui_latency: the simulator did not start\n");
        return 1;
    }

    BenchPlatform platform;
    torv::FrmClient panel(platform);
    torv::FrmClientWindow window(panel);
    window.show();
    panel.f.TxtIP.caption = QStringLiteral("127.0.0.1:%1").arg(port);
    panel.layOutFrames();
    panel.event([&] { panel.cmdWeight_Click(); });

    torv::bench::LatencyProbe probe;
    probe.start();
    const int refreshesBefore = window.refreshCount();
    QTimer::singleShot(seconds * 1000, &app, &QCoreApplication::quit);
    app.exec();
    const double elapsed = probe.elapsed();

    std::printf("ui_latency: window shown, polling the simulator for %.1f s\n", elapsed);
    std::printf("  status answers     %d (%.0f per second)\n", panel.counters().lngReadings,
                panel.counters().lngReadings / elapsed);
    std::printf("  window refreshes   %d (%.0f per second)\n",
                window.refreshCount() - refreshesBefore,
                (window.refreshCount() - refreshesBefore) / elapsed);
    std::printf("  event-loop latency p50 %.1f ms, p99 %.1f ms, max %.1f ms (%zu probes)\n",
                probe.percentile(0.5), probe.percentile(0.99), probe.percentile(1.0),
                probe.ticks());
    panel.closeLink();
    host.stop();
    return 0;
}
