// torv-panel: the TORV-NET monitor and control panel.

#include "graph/frm_start.h"
#include "graph/graph_store.h"
#include "panel/frm_client.h"
#include "panel/graph_link.h"
#include "sim/sim_host.h"
#include "ui/frm_client_window.h"
#include "ui/frm_graph_window.h"
#include "ui/frm_start_window.h"
#include "ui/qt_platform.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>
#include <QScreen>
#include <QStyleFactory>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>

namespace {

// --help and --version are answered without a display, before the window system is touched.
bool asksOnlyForHelpOrVersion(int argc, char* argv[]) {
    for (int i = 1; i < argc; ++i)
        for (const char* word : {"-h", "--help", "-?", "--help-all", "-v", "--version"})
            if (std::strcmp(argv[i], word) == 0) return true;
    return false;
}

// Clicks the plot of a graph window above its highest reading in the middle half of what it
// shows, as an operator picking a maximum would.
void selectVisibleMaximum(torv::FrmGraph& graph) {
    torv::GraphStore& store = graph.store();
    const int ch = graph.channel();
    const torv::Int32 count = store.readingCount[ch];
    if (count < 4) return;
    const torv::Int32 left = store.leftIndex[ch];
    const torv::Int32 shown = count - left;
    torv::Int32 maxValue = 0, maxIndex = 0, minValue = 0, minIndex = 0;
    torv::ScanRangeMinMax(store, ch, left + shown / 4, left + 3 * shown / 4, maxValue, maxIndex,
                          minValue, minIndex);
    const double x = double(maxIndex - left) * store.xStep - graph.f.pctGraph.left;
    graph.event([&] {
        graph.pctGraph_MouseMove(x, 100);
        graph.pctGraph_MouseDown();
    });
}

} // namespace

int main(int argc, char* argv[]) {
    const bool gui = !asksOnlyForHelpOrVersion(argc, argv);
    std::unique_ptr<QCoreApplication> application =
        gui ? std::make_unique<QApplication>(argc, argv)
            : std::make_unique<QCoreApplication>(argc, argv);
    QCoreApplication& app = *application;
    QCoreApplication::setApplicationName(QStringLiteral("torv-panel"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TORV_VERSION));
    if (gui) {
        QApplication::setApplicationDisplayName(QStringLiteral("TORV-NET Client"));
        QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    }

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Monitor and control panel for the TORV-NET load-cell card."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption simulate(
        QStringLiteral("simulate"),
        QStringLiteral("Run on the built-in card simulator (a free port on 127.0.0.1)."));
    const QCommandLineOption address(QStringList{QStringLiteral("a"), QStringLiteral("address")},
                                     QStringLiteral("Card address, host or host:port."),
                                     QStringLiteral("host[:port]"));
    const QCommandLineOption poll(QStringLiteral("poll"),
                                  QStringLiteral("Start polling the card's status at once."));
    const QCommandLineOption screenshot(
        QStringLiteral("screenshot"),
        QStringLiteral("Save a picture of the window to FILE after --after ms, then quit."),
        QStringLiteral("FILE"));
    const QCommandLineOption after(QStringLiteral("after"),
                                   QStringLiteral("Milliseconds before the screenshot (2000)."),
                                   QStringLiteral("ms"), QStringLiteral("2000"));
    const QCommandLineOption graphSetUp(
        QStringLiteral("graph-setup"),
        QStringLiteral("Open the graph set-up form at start, as \"Real Time Graph\" does. With "
                       "--screenshot the picture is of that form, and FILE-screen.png shows "
                       "the whole screen."));
    parser.addOption(simulate);
    parser.addOption(address);
    parser.addOption(poll);
    parser.addOption(screenshot);
    parser.addOption(after);
    parser.addOption(graphSetUp);
    const QCommandLineOption graphScreenshot(
        QStringLiteral("graph-screenshot"),
        QStringLiteral("Open the graph set-up form a second after start (with --poll the card's "
                       "maximum load is known by then); after --after ms pick the highest "
                       "reading in the middle of channel 0's graph, save a picture of its "
                       "window to FILE (FILE-screen.png the whole screen), then quit."),
        QStringLiteral("FILE"));
    parser.addOption(graphScreenshot);
    const QCommandLineOption answerMs(
        QStringLiteral("answer-ms"),
        QStringLiteral("With --simulate: the time the simulated card takes to answer (default "
                       "%1, a card's pace; 0 answers at once).")
            .arg(torv::sim::kCardAnswerMs),
        QStringLiteral("ms"), QString::number(torv::sim::kCardAnswerMs));
    parser.addOption(answerMs);
    const QCommandLineOption rawAnswers(
        QStringLiteral("raw-answers"),
        QStringLiteral("Show the card's raw answers at start, as \"Show XML Data\" does."));
    parser.addOption(rawAnswers);
    parser.process(app);
    bool answerMsOk = false;
    const int answerTime = parser.value(answerMs).toInt(&answerMsOk);
    if (!answerMsOk || answerTime < 0 || answerTime > 600000) {
        std::fprintf(stderr,
                     "torv-panel: --answer-ms wants a whole number of ms from 0 to 600000\n");
        return 2;
    }

    // The simulator serves from its own thread, so the panel's waits never stall it.
    std::unique_ptr<torv::sim::SimHost> simulator;
    QString overrideAddress = parser.value(address);
    if (parser.isSet(simulate)) {
        // A slow load cycle, so a newcomer sees the weight, the set points and the graphs move.
        torv::sim::SimOptions options;
        options.signal.kind = torv::sim::SignalKind::Sine;
        options.signal.weight = 1250.0;
        options.signal.periodMs = 20000;
        options.answerMs = answerTime;
        simulator = std::make_unique<torv::sim::SimHost>(options);
        simulator->setLogSink([](const QString&) {}); // the panel shows what matters
        const quint16 port = simulator->start(0);
        if (port == 0) {
            std::fprintf(stderr, "torv-panel: the card simulator could not start\n");
            return 1;
        }
        overrideAddress = QStringLiteral("127.0.0.1:%1").arg(port);
    }

    torv::QtPlatform platform;
    torv::FrmClient panel(platform);
    panel.addressOverride = overrideAddress;
    torv::FrmClientWindow window(panel);
    platform.setDialogParent(&window);

    // The real-time graph: one store shared by the set-up form and the graph windows.
    torv::GraphStore graphStore(platform);
    torv::PanelGraphLink graphLink(panel);
    graphStore.panel = &graphLink;
    torv::FrmGraphWindows graphWindows(graphStore);
    graphStore.windows = &graphWindows;
    torv::FrmStart frmStart(platform, graphStore);
    torv::FrmStartWindow startWindow(frmStart, &window);
    panel.graph = &graphStore;
    panel.openGraphSetUp = [&startWindow] { startWindow.open(); };

    window.show();
    // Start-up talks to the card; run it once the window is on the screen.
    QTimer::singleShot(0, &window, [&] {
        panel.Form_Load();
        if (parser.isSet(rawAnswers)) panel.event([&] { panel.cmdShowXMLData_Click(); });
        if (parser.isSet(poll)) panel.event([&] { panel.cmdWeight_Click(); });
        window.refresh();
        if (parser.isSet(graphSetUp)) panel.event([&] { panel.cmdShowRTGraph_Click(); });
    });
    if (parser.isSet(screenshot)) {
        QTimer::singleShot(parser.value(after).toInt(), &window, [&] {
            window.refresh();
            const QString file = parser.value(screenshot);
            if (parser.isSet(graphSetUp)) {
                startWindow.refresh();
                startWindow.grab().save(file);
                const QFileInfo info(file);
                if (QScreen* screen = QGuiApplication::primaryScreen())
                    screen->grabWindow(0).save(info.path() + QLatin1Char('/') +
                                               info.completeBaseName() +
                                               QStringLiteral("-screen.png"));
                // Leaves every loop, including that of a message box still open.
                QApplication::exit(0);
            } else {
                window.grab().save(file);
                window.close();
            }
        });
    }
    if (parser.isSet(graphScreenshot)) {
        if (!parser.isSet(graphSetUp))
            QTimer::singleShot(1000, &window,
                               [&] { panel.event([&] { panel.cmdShowRTGraph_Click(); }); });
        QTimer::singleShot(parser.value(after).toInt(), &window, [&] {
            torv::FrmGraphWindow* graphWindow = graphWindows.window(0);
            if (!graphWindow) {
                std::fprintf(stderr, "torv-panel: no graph window of channel 0 is open\n");
                QApplication::exit(1);
                return;
            }
            selectVisibleMaximum(graphWindow->graph());
            graphWindow->refresh();
            const QString file = parser.value(graphScreenshot);
            graphWindow->grab().save(file);
            const QFileInfo info(file);
            if (QScreen* screen = QGuiApplication::primaryScreen())
                screen->grabWindow(0).save(info.path() + QLatin1Char('/') +
                                           info.completeBaseName() + QStringLiteral("-screen.png"));
            QApplication::exit(0);
        });
    }
    const int rc = app.exec();
    if (simulator) simulator->stop();
    return rc;
}
