// trendlog: the history viewer for TORV-NET sample data files.

#include "base/runtime_error.h"
#include "files/fields.h"
#include "files/sample_reader.h"
#include "files/viewer_argument.h"
#include "ui/trendlog_plot.h"
#include "ui/trendlog_tuning.h"
#include "ui/trendlog_window.h"
#include "viewer/export.h"
#include "viewer/tuning.h"
#include "viewer/viewer_list.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>
#include <QSocketNotifier>
#include <QStyleFactory>
#include <QTimer>

#include <csignal>
#include <cstdio>
#include <optional>
#include <sys/socket.h>
#include <tuple>
#include <unistd.h>

namespace {

using torv::TrendlogOpenOptions;

int signalPipe[2] = {-1, -1};

void onSignal(int) {
    const char byte = 1;
    [[maybe_unused]] const ssize_t n = ::write(signalPipe[0], &byte, 1);
}

void complain(const QString& text) {
    std::fprintf(stderr, "trendlog: %s\n", qPrintable(text));
}

struct Request {
    QString path;
    TrendlogOpenOptions options;
};

// FILE, or the panel's one argument "folder/file/mode/integration". An explicit --mode or
// --integration wins over what the argument carries.
Request resolve(const QString& argument, const TrendlogOpenOptions& explicitOptions) {
    Request r{argument, explicitOptions};
    if (argument.isEmpty() || QFileInfo(argument).isFile()) return r;
    const auto parsed = torv::parseHistoryViewerArgument(argument);
    if (!parsed) return r;
    r.path = parsed->path;
    for (const QString& candidate : parsed->candidates()) {
        if (QFileInfo(candidate).isFile()) {
            r.path = candidate;
            break;
        }
    }
    if (!r.options.xMode) r.options.xMode = parsed->xMode;
    const double integration = torv::integrationValue(parsed->integration);
    if (!r.options.integration && integration > 0) r.options.integration = integration;
    return r;
}

bool parseRange(const QString& text, double& lo, double& hi) {
    const QStringList parts = text.split(QLatin1Char(':'));
    bool ok1 = false, ok2 = false;
    if (parts.size() != 2) return false;
    lo = parts[0].toDouble(&ok1);
    hi = parts[1].toDouble(&ok2);
    return ok1 && ok2;
}

// The file's readings as a series, or a message on standard error.
bool readSeries(const Request& request, torv::viewer::Series& series) {
    torv::SampleFileContent content;
    torv::SampleFileError error;
    if (!torv::readSampleFile(request.path, content, error)) {
        complain(QStringLiteral("%1: %2").arg(request.path, error.text()));
        return false;
    }
    const int mode = request.options.xMode.value_or(content.trailer.xMode);
    const double integration =
        request.options.integration.value_or(torv::integrationValue(content.trailer.integration));
    for (const QString& remark : content.remarks)
        complain(QStringLiteral("%1: %2").arg(request.path, remark));
    series.load(std::move(content));
    series.setXMode(mode);
    series.setIntegration(integration);
    return true;
}

// A positive number given with `option`, or a message; `given` is left empty when not set.
bool positiveOption(const QCommandLineParser& parser, const QCommandLineOption& option,
                    std::optional<double>& given) {
    if (!parser.isSet(option)) return true;
    bool ok = false;
    const double v = parser.value(option).toDouble(&ok);
    if (!ok || !(v > 0)) {
        complain(QStringLiteral("--%1 takes a number above 0, not \"%2\"")
                     .arg(option.names().first(), parser.value(option)));
        return false;
    }
    given = v;
    return true;
}

// The tuning table of the file (over the stretch `view` of the X axis when given) as CSV.
int writeTuningReport(const Request& request, const QString& target,
                      const std::optional<std::pair<double, double>>& view,
                      std::optional<double> division, std::optional<double> tolerance) {
    torv::viewer::Series series;
    if (!readSeries(request, series)) return 1;
    torv::viewer::TuningSettings settings;
    settings.integrationMs = request.options.integration.value_or(
        torv::integrationValue(series.content().trailer.integration));
    if (view)
        std::tie(settings.first, settings.last) = series.positionsIn(view->first, view->second);
    settings.tolerance = tolerance;
    const torv::viewer::TuningTable table =
        torv::viewer::tuningTable(series.content().value, settings);
    if (!table.error.isEmpty()) {
        const bool noIntegration = !(settings.integrationMs > 0);
        complain(QStringLiteral("%1: no tuning table: %2%3")
                     .arg(request.path, table.error,
                          noIntegration ? QStringLiteral(" (give it with --integration N)")
                                        : QString()));
        return 1;
    }
    try {
        torv::writeTextFile(target, torv::viewer::tuningCsv(table, division.value_or(0)));
    } catch (const torv::RuntimeError& e) {
        complain(QStringLiteral("%1 could not be written: %2").arg(target, e.message()));
        return 1;
    }
    return 0;
}

} // namespace

int main(int argc, char* argv[]) {
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "History viewer for TORV-NET sample data files.\n\n"
        "FILE may also be the panel's argument folder/file/mode/integration.\n\n"
        "Tuning: a session at integration N previews every integration M of the card's list\n"
        "that is a multiple of N as the moving average of M/N consecutive readings, since\n"
        "each reading is the card's average over its own N ms."));
    const QCommandLineOption help(QStringList{QStringLiteral("h"), QStringLiteral("help")},
                                  QStringLiteral("Show this help and exit."));
    const QCommandLineOption version(QStringList{QStringLiteral("v"), QStringLiteral("version")},
                                     QStringLiteral("Show the version and exit."));
    const QCommandLineOption mode(QStringLiteral("mode"),
                                  QStringLiteral("X axis: 1 readings, 2 milliseconds (default: "
                                                 "the file's own)."),
                                  QStringLiteral("1|2"));
    const QCommandLineOption integration(
        QStringLiteral("integration"),
        QStringLiteral("Milliseconds per reading (default: the file's sampling rate)."),
        QStringLiteral("N"));
    const QCommandLineOption exportCsv(QStringLiteral("export-csv"),
                                       QStringLiteral("Write index,time_ms,value rows and exit."),
                                       QStringLiteral("OUT.csv"));
    const QCommandLineOption exportPng(QStringLiteral("export-png"),
                                       QStringLiteral("Write the plot as PNG and exit."),
                                       QStringLiteral("OUT.png"));
    const QCommandLineOption exportPdf(QStringLiteral("export-pdf"),
                                       QStringLiteral("Write the plot as PDF and exit."),
                                       QStringLiteral("OUT.pdf"));
    const QCommandLineOption size(QStringLiteral("size"),
                                  QStringLiteral("Size of exported plots (1200x700)."),
                                  QStringLiteral("WxH"), QStringLiteral("1200x700"));
    const QCommandLineOption view(QStringLiteral("view"),
                                  QStringLiteral("Show the stretch FROM:TO of the X axis."),
                                  QStringLiteral("FROM:TO"));
    const QCommandLineOption cursors(QStringLiteral("cursors"),
                                     QStringLiteral("Place cursors A and B at X positions A:B."),
                                     QStringLiteral("A:B"));
    const QCommandLineOption screenshot(
        QStringLiteral("screenshot"),
        QStringLiteral("Save a picture of the window to FILE after --after ms, then quit."),
        QStringLiteral("FILE"));
    const QCommandLineOption after(QStringLiteral("after"),
                                   QStringLiteral("Milliseconds before the screenshot (1000)."),
                                   QStringLiteral("ms"), QStringLiteral("1000"));
    const QCommandLineOption tuningReport(
        QStringLiteral("tuning-report"),
        QStringLiteral(
            "Write the tuning table as CSV and exit: one row per integration, noise over "
            "the --view stretch (default: the whole file beside its step)."),
        QStringLiteral("OUT.csv"));
    const QCommandLineOption tuning(QStringLiteral("tuning"),
                                    QStringLiteral("Open the window with the Tuning panel."));
    const QCommandLineOption tuningChoice(
        QStringLiteral("tuning-integration"),
        QStringLiteral("Open the Tuning panel with integration M drawn over the readings."),
        QStringLiteral("M"));
    const QCommandLineOption division(
        QStringLiteral("division"),
        QStringLiteral("Scale division: the tuning table gives the noise in divisions."),
        QStringLiteral("D"));
    const QCommandLineOption tolerance(
        QStringLiteral("tolerance"),
        QStringLiteral("Settling band: +-T in the readings' units around the level after the "
                       "step (default: two standard deviations of the raw readings)."),
        QStringLiteral("T"));
    parser.addOptions({help, version, mode, integration, exportCsv, exportPng, exportPdf, size,
                       view, cursors, screenshot, after, tuningReport, tuning, tuningChoice,
                       division, tolerance});
    parser.addPositionalArgument(QStringLiteral("FILE"),
                                 QStringLiteral("Sample data file (All_data.txt)."),
                                 QStringLiteral("[FILE]"));

    // Options are read before any window system is touched, so these work without a display.
    if (!parser.parse(arguments)) {
        complain(parser.errorText() + QStringLiteral(" (see trendlog --help)"));
        return 2;
    }
    if (parser.isSet(help)) {
        // Without an application object the parser does not know the program's name.
        QString text = parser.helpText();
        text.replace(QStringLiteral("<executable_name>"), QStringLiteral("trendlog"));
        std::fputs(qPrintable(text), stdout);
        return 0;
    }
    if (parser.isSet(version)) {
        std::printf("trendlog %s\n", TORV_VERSION);
        return 0;
    }
    TrendlogOpenOptions explicitOptions;
    if (parser.isSet(mode)) {
        const QString m = parser.value(mode);
        if (m != QLatin1String("1") && m != QLatin1String("2")) {
            complain(
                QStringLiteral("--mode takes 1 (readings) or 2 (milliseconds), not \"%1\"").arg(m));
            return 2;
        }
        explicitOptions.xMode = m.toInt();
    }
    if (parser.isSet(integration)) {
        const double v = torv::integrationValue(parser.value(integration));
        if (v <= 0) {
            complain(QStringLiteral("--integration takes a positive number of milliseconds, "
                                    "not \"%1\"")
                         .arg(parser.value(integration)));
            return 2;
        }
        explicitOptions.integration = v;
    }
    const QStringList positional = parser.positionalArguments();
    if (positional.size() > 1) {
        complain(QStringLiteral("one FILE at most (see trendlog --help)"));
        return 2;
    }
    const Request request = resolve(positional.value(0), explicitOptions);
    int width = 1200, height = 700;
    {
        const QStringList wh = parser.value(size).split(QLatin1Char('x'));
        if (wh.size() != 2 || wh[0].toInt() < 100 || wh[1].toInt() < 100) {
            complain(QStringLiteral("--size takes WIDTHxHEIGHT, at least 100x100"));
            return 2;
        }
        width = wh[0].toInt();
        height = wh[1].toInt();
    }

    std::optional<double> divisionValue, toleranceValue;
    if (!positiveOption(parser, division, divisionValue) ||
        !positiveOption(parser, tolerance, toleranceValue))
        return 2;
    std::optional<std::pair<double, double>> viewRange;
    if (parser.isSet(view)) {
        double lo = 0, hi = 0;
        if (!parseRange(parser.value(view), lo, hi) || !(hi > lo)) {
            complain(QStringLiteral("--view takes FROM:TO with FROM below TO, not \"%1\"")
                         .arg(parser.value(view)));
            return 2;
        }
        viewRange = std::make_pair(lo, hi);
    }
    if (parser.isSet(tuningReport)) {
        if (request.path.isEmpty()) {
            complain(QStringLiteral("--tuning-report needs a FILE"));
            return 2;
        }
        return writeTuningReport(request, parser.value(tuningReport), viewRange, divisionValue,
                                 toleranceValue);
    }

    // Headless exports: write and exit.
    const bool plotExport = parser.isSet(exportPng) || parser.isSet(exportPdf);
    if (parser.isSet(exportCsv) || plotExport) {
        if (request.path.isEmpty()) {
            complain(QStringLiteral("an export needs a FILE"));
            return 2;
        }
        torv::viewer::Series series;
        if (!readSeries(request, series)) return 1;
        int rc = 0;
        if (parser.isSet(exportCsv)) {
            QString error;
            if (!torv::viewer::writeCsv(parser.value(exportCsv), series, 0, series.size(), error)) {
                complain(error);
                rc = 1;
            }
        }
        if (plotExport) {
            if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
                qputenv("QT_QPA_PLATFORM", "offscreen");
            QApplication app(argc, argv);
            torv::TrendlogPlot plot;
            torv::viewer::Cursors none;
            plot.setUnits(series.content().trailer.unitsCaption);
            plot.setTitle(torv::titleOf(QFileInfo(request.path).fileName(), series.content()));
            plot.setSeries(&series, &none, false);
            double lo = 0, hi = 0;
            if (parser.isSet(view) && parseRange(parser.value(view), lo, hi))
                plot.xAxis->setRange(lo, hi);
            plot.resize(width, height);
            if (parser.isSet(exportPng) && !plot.savePng(parser.value(exportPng), width, height)) {
                complain(QStringLiteral("%1 could not be written").arg(parser.value(exportPng)));
                rc = 1;
            }
            if (parser.isSet(exportPdf) && !plot.savePdf(parser.value(exportPdf), width, height)) {
                complain(QStringLiteral("%1 could not be written").arg(parser.value(exportPdf)));
                rc = 1;
            }
        }
        return rc;
    }

    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && qEnvironmentVariableIsEmpty("DISPLAY") &&
        qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
        torv::viewer::Series series;
        if (!request.path.isEmpty() && !readSeries(request, series)) return 1;
        complain(QStringLiteral("no display to show the window on; --export-csv, --export-png "
                                "and --export-pdf work without one"));
        return 1;
    }

    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("TORV-NET"));
    QApplication::setApplicationName(QStringLiteral("trendlog"));
    QApplication::setApplicationVersion(QStringLiteral(TORV_VERSION));
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));

    torv::TrendlogWindow window;

    // The panel closes its viewers with SIGTERM: close the window the ordinary way, so the
    // viewer list is cleaned up as at any other exit.
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, signalPipe) == 0) {
        auto* notifier = new QSocketNotifier(signalPipe[1], QSocketNotifier::Read, &window);
        QObject::connect(notifier, &QSocketNotifier::activated, &window, [&] {
            char byte = 0;
            [[maybe_unused]] const ssize_t n = ::read(signalPipe[1], &byte, 1);
            window.close();
        });
        struct sigaction action {};
        action.sa_handler = onSignal;
        sigemptyset(&action.sa_mask);
        action.sa_flags = SA_RESTART;
        sigaction(SIGTERM, &action, nullptr);
        sigaction(SIGINT, &action, nullptr);
        sigaction(SIGHUP, &action, nullptr);
    }
    const QString programFolder = QCoreApplication::applicationDirPath();
    const qint64 pid = QCoreApplication::applicationPid();
    torv::viewer::addToViewerList(programFolder, pid);

    window.show();
    QTimer::singleShot(0, &window, [&] {
        if (request.path.isEmpty()) return;
        if (!window.openInteractive(request.path, request.options)) return;
        double lo = 0, hi = 0;
        if (parser.isSet(view) && parseRange(parser.value(view), lo, hi)) window.showRange(lo, hi);
        if (parser.isSet(cursors) && parseRange(parser.value(cursors), lo, hi)) {
            window.cursors().place(0, lo, window.series());
            window.cursors().place(1, hi, window.series());
            window.plot()->updateCursors();
            window.refreshPanel();
        }
        if (parser.isSet(tuning) || parser.isSet(tuningChoice)) {
            window.tuning()->setDivision(divisionValue);
            window.tuning()->setTolerance(toleranceValue);
            window.showTuning(true);
            window.refreshTuning();
            if (parser.isSet(tuningChoice))
                window.tuning()->chooseIntegration(parser.value(tuningChoice).toInt());
        }
    });
    if (parser.isSet(screenshot)) {
        QTimer::singleShot(parser.value(after).toInt(), &window, [&] {
            window.plot()->replot();
            window.grab().save(parser.value(screenshot));
            window.close();
            QCoreApplication::quit(); // also ends a message box still open
        });
    }
    const int rc = app.exec();
    torv::viewer::removeFromViewerList(programFolder, pid);
    return rc;
}
