#include "trendlog_window.h"

#include "files/sample_reader.h"
#include "trendlog_plot.h"
#include "trendlog_tuning.h"
#include "viewer/export.h"
#include "viewer/time_axis.h"

#include <QActionGroup>
#include <QApplication>
#include <QDockWidget>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QGroupBox>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QScrollArea>
#include <QSettings>
#include <QSplitter>
#include <QStatusBar>
#include <QToolBar>
#include <QVBoxLayout>

namespace torv {

namespace {

constexpr int kRecentFiles = 8;
const char kRecentKey[] = "recentFiles";

using Facts = QList<QPair<QString, QString>>;

QString factsHtml(const Facts& facts) {
    QString html = QStringLiteral("<table cellspacing='0' cellpadding='1' width='100%'>");
    for (const auto& [name, value] : facts)
        html += QStringLiteral("<tr><td style='color:#555'>%1</td><td align='right'>"
                               "<tt>%2</tt></td></tr>")
                    .arg(name.toHtmlEscaped(), value.toHtmlEscaped());
    return html + QStringLiteral("</table>");
}

QString factsText(const Facts& facts) {
    QString text;
    for (const auto& [name, value] : facts)
        text += name + QStringLiteral(": ") + value + QLatin1Char('\n');
    return text;
}

// A number for the panel: up to 6 significant decimals, no exponent for everyday sizes.
QString shortNumber(double v) {
    return QString::number(v, 'g', std::abs(v) >= 1e6 ? 9 : 7);
}

QLabel* factsLabel() {
    auto* label = new QLabel;
    label->setTextFormat(Qt::RichText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    label->setWordWrap(true);
    return label;
}

// A reading's value with the readings' own decimals and their unit.
QString valueText(double v, const viewer::Series& series) {
    const QString units = series.content().trailer.unitsCaption;
    return QString::number(v, 'f', series.decimals()) +
           (units.isEmpty() ? QString() : QLatin1Char(' ') + units);
}

// A spread: the readings' decimals, more when it is smaller than ten of their last digit.
QString spreadText(double v, const viewer::Series& series) {
    int decimals = series.decimals();
    while (v > 0 && v < 10 * std::pow(10.0, -decimals) && decimals < series.decimals() + 2)
        ++decimals;
    const QString units = series.content().trailer.unitsCaption;
    return QString::number(v, 'f', decimals) +
           (units.isEmpty() ? QString() : QLatin1Char(' ') + units);
}

} // namespace

QString titleOf(const QString& fileName, const SampleFileContent& content) {
    const QString start = content.trailer.startDateTime;
    return start.isEmpty() ? fileName : QStringLiteral("%1  -  started %2").arg(fileName, start);
}

TrendlogWindow::TrendlogWindow(QWidget* parent)
    : QMainWindow(parent) {
    setWindowTitle(QStringLiteral("trendlog"));
    setAcceptDrops(true);
    resize(1200, 720);

    plot_ = new TrendlogPlot;
    auto* splitter = new QSplitter;
    splitter->addWidget(plot_);
    splitter->addWidget(buildSidePanel());
    splitter->setStretchFactor(0, 1);
    splitter->setStretchFactor(1, 0);
    splitter->setCollapsible(0, false);
    setCentralWidget(splitter);
    tuning_ = new TuningPanel(plot_);
    tuningDock_ = new QDockWidget(QStringLiteral("Tuning"), this);
    tuningDock_->setObjectName(QStringLiteral("tuningDock"));
    tuningDock_->setWidget(tuning_);
    tuningDock_->setFeatures(QDockWidget::DockWidgetClosable | QDockWidget::DockWidgetMovable);
    addDockWidget(Qt::BottomDockWidgetArea, tuningDock_);
    tuningDock_->hide();
    buildMenus();

    followLabel_ = new QLabel;
    statusBar()->addPermanentWidget(followLabel_);
    statusBar()->showMessage(
        QStringLiteral("Click: cursor A   Right click: B   Wheel: zoom (Ctrl: values)   Drag: pan"
                       "   Shift+drag: zoom box   Home: all"));

    // The panel follows the view at most once per frame.
    panelDelay_.setSingleShot(true);
    panelDelay_.setInterval(16);
    connect(&panelDelay_, &QTimer::timeout, this, &TrendlogWindow::refreshPanel);
    auto later = [this] {
        if (!panelDelay_.isActive()) panelDelay_.start();
    };
    connect(plot_, &TrendlogPlot::viewChanged, this, later);
    connect(plot_, &TrendlogPlot::cursorsMoved, this, later);

    // The tuning table follows the stretch a little later: it reads every reading.
    tuningDelay_.setSingleShot(true);
    tuningDelay_.setInterval(120);
    connect(&tuningDelay_, &QTimer::timeout, this, &TrendlogWindow::refreshTuning);
    // Once the view rests: a pan through a million readings is not held up by the table.
    auto laterTuning = [this] {
        if (tuningDock_->isVisible()) tuningDelay_.start();
    };
    connect(plot_, &TrendlogPlot::viewChanged, this, laterTuning);
    connect(plot_, &TrendlogPlot::cursorsMoved, this, laterTuning);
    connect(tuning_, &TuningPanel::settingsChanged, this, &TrendlogWindow::refreshTuning);
    connect(tuningDock_, &QDockWidget::visibilityChanged, this, [this](bool visible) {
        if (visible)
            refreshTuning();
        else if (!isMinimized())
            tuning_->clearPlot();
    });

    // A saved session arrives as a new file renamed over the old one: wait for it to settle.
    changeDelay_.setSingleShot(true);
    changeDelay_.setInterval(300);
    connect(&changeDelay_, &QTimer::timeout, this, &TrendlogWindow::checkFileOnDisk);
    connect(&watcher_, &QFileSystemWatcher::fileChanged, this, [this] { changeDelay_.start(); });
    connect(&watcher_, &QFileSystemWatcher::directoryChanged, this,
            [this] { changeDelay_.start(); });
    refreshPanel();
}

QWidget* TrendlogWindow::buildSidePanel() {
    auto* panel = new QWidget;
    auto* layout = new QVBoxLayout(panel);
    layout->setContentsMargins(6, 6, 6, 6);
    auto group = [&](const QString& title, QLabel*& label) {
        auto* box = new QGroupBox(title);
        auto* inner = new QVBoxLayout(box);
        label = factsLabel();
        inner->addWidget(label);
        layout->addWidget(box);
    };
    group(QStringLiteral("Visible stretch"), stretchFacts_);
    group(QStringLiteral("Cursors"), cursorFacts_);
    group(QStringLiteral("File"), fileFacts_);
    layout->addStretch(1);
    auto* scroll = new QScrollArea;
    scroll->setWidget(panel);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setMinimumWidth(330);
    scroll->setMaximumWidth(420);
    return scroll;
}

void TrendlogWindow::buildMenus() {
    QMenu* file = menuBar()->addMenu(QStringLiteral("&File"));
    QAction* open = file->addAction(QStringLiteral("&Open..."), this, [this] { chooseFile(); });
    open->setShortcut(QKeySequence::Open);
    recentMenu_ = file->addMenu(QStringLiteral("Open &Recent"));
    connect(recentMenu_, &QMenu::aboutToShow, this, &TrendlogWindow::fillRecentMenu);
    QAction* reload = file->addAction(QStringLiteral("Re&load"), this, [this] {
        if (path_.isEmpty()) return;
        if (const std::optional<QString> error = load(path_, overrides_, true))
            QMessageBox::warning(this, QStringLiteral("trendlog"), *error);
    });
    reload->setShortcut(QKeySequence::Refresh);
    file->addSeparator();
    file->addAction(QStringLiteral("Export &CSV..."), this, [this] { exportFile("csv"); });
    file->addAction(QStringLiteral("Export CSV of the &visible stretch..."), this,
                    [this] { exportFile("csv", true); });
    file->addAction(QStringLiteral("Export &PNG..."), this, [this] { exportFile("png"); });
    file->addAction(QStringLiteral("Export P&DF..."), this, [this] { exportFile("pdf"); });
    file->addSeparator();
    QAction* quit = file->addAction(QStringLiteral("&Quit"), this, &QWidget::close);
    quit->setShortcut(QKeySequence::Quit);

    QMenu* view = menuBar()->addMenu(QStringLiteral("&View"));
    QAction* reset =
        view->addAction(QStringLiteral("&Whole file"), this, [this] { plot_->resetView(); });
    reset->setShortcuts({QKeySequence(Qt::Key_Home), QKeySequence(Qt::Key_R)});
    QAction* zoomBox = view->addAction(QStringLiteral("&Zoom box on drag"));
    zoomBox->setCheckable(true);
    zoomBox->setShortcut(QKeySequence(Qt::Key_Z));
    connect(zoomBox, &QAction::toggled, plot_, &TrendlogPlot::setZoomBoxMode);
    marksAction_ = view->addAction(QStringLiteral("&Block marks"));
    marksAction_->setCheckable(true);
    marksAction_->setChecked(true);
    marksAction_->setShortcut(QKeySequence(Qt::Key_B));
    connect(marksAction_, &QAction::toggled, plot_, &TrendlogPlot::setBlockMarksVisible);
    fitAction_ = view->addAction(QStringLiteral("&Fit value axis to view"));
    fitAction_->setCheckable(true);
    fitAction_->setChecked(true);
    fitAction_->setShortcut(QKeySequence(Qt::Key_F));
    fitAction_->setToolTip(QStringLiteral("Fit the value axis to the readings in view at every "
                                          "zoom and pan (off: keep it fixed)"));
    connect(fitAction_, &QAction::toggled, plot_, &TrendlogPlot::setFitValues);
    QAction* tuningAction = tuningDock_->toggleViewAction();
    tuningAction->setText(QStringLiteral("&Tuning"));
    tuningAction->setShortcut(QKeySequence(Qt::Key_T));
    tuningAction->setToolTip(QStringLiteral("Every integration of the card previewed from this "
                                            "session: noise and settling side by side"));
    view->addAction(tuningAction);
    view->addSeparator();
    auto* modes = new QActionGroup(this);
    const QString modeNames[2] = {QStringLiteral("X axis: &Reading"),
                                  QStringLiteral("X axis: &Time in ms.")};
    for (int i = 0; i < 2; ++i) {
        modeAction_[i] = view->addAction(modeNames[i], this, [this, i] { setXMode(i + 1); });
        modeAction_[i]->setCheckable(true);
        modes->addAction(modeAction_[i]);
    }
    modeAction_[0]->setChecked(true);
    view->addSeparator();
    QAction* clear = view->addAction(QStringLiteral("&Clear cursors"), this, [this] {
        cursors_.clear();
        plot_->updateCursors();
        refreshPanel();
    });
    clear->setShortcut(QKeySequence(Qt::Key_Escape));

    QMenu* help = menuBar()->addMenu(QStringLiteral("&Help"));
    help->addAction(QStringLiteral("&About trendlog"), this, [this] {
        QMessageBox::about(
            this, QStringLiteral("About trendlog"),
            QStringLiteral("<b>trendlog %1</b><p>History viewer for TORV-NET sample data files."
                           "<p>Licensed under the GNU General Public License, version 3 or "
                           "later. The plot is drawn with QCustomPlot (GPL-3.0).")
                .arg(QApplication::applicationVersion()));
    });

    QToolBar* bar = addToolBar(QStringLiteral("Main"));
    bar->setMovable(false);
    bar->setToolButtonStyle(Qt::ToolButtonTextOnly);
    bar->addAction(open);
    bar->addAction(reset);
    bar->addAction(zoomBox);
    bar->addAction(marksAction_);
    bar->addAction(fitAction_);
    bar->addSeparator();
    bar->addAction(modeAction_[0]);
    bar->addAction(modeAction_[1]);
    bar->addSeparator();
    bar->addAction(tuningAction);
}

std::optional<QString> TrendlogWindow::load(const QString& path, const TrendlogOpenOptions& options,
                                            bool keepView) {
    SampleFileContent content;
    SampleFileError error;
    if (!readSampleFile(path, content, error))
        return QFileInfo(path).fileName() + ": " + error.text();

    const QCPRange x = plot_->xAxis->range();
    const QCPRange y = plot_->yAxis->range();
    overrides_ = options;
    const int mode = options.xMode.value_or(content.trailer.xMode);
    const double integration =
        options.integration.value_or(integrationValue(content.trailer.integration));
    const QString units = content.trailer.unitsCaption;
    series_.load(std::move(content));
    series_.setXMode(mode);
    series_.setIntegration(integration);
    if (!keepView) cursors_.clear();

    path_ = QFileInfo(path).absoluteFilePath();
    const QFileInfo info(path_);
    loadedSize_ = info.size();
    loadedTime_ = info.lastModified();
    watch(path_);

    modeAction_[series_.xMode() - 1]->setChecked(true);
    plot_->setUnits(units);
    plot_->setTitle(titleOf(info.fileName(), series_.content()));
    plot_->setSeries(&series_, &cursors_, keepView);
    tuning_->setSeries(&series_);
    if (tuningDock_->isVisible()) tuningDelay_.start();
    if (keepView) {
        plot_->xAxis->setRange(x);
        plot_->yAxis->setRange(y);
    }
    setWindowTitle(QStringLiteral("%1 - trendlog").arg(info.fileName()));
    followLabel_->clear();
    if (!series_.content().remarks.isEmpty())
        statusBar()->showMessage(series_.content().remarks.join(QStringLiteral("; ")));
    refreshPanel();
    return std::nullopt;
}

bool TrendlogWindow::openInteractive(const QString& path, const TrendlogOpenOptions& options) {
    const std::optional<QString> error = load(path, options);
    if (error) {
        statusBar()->showMessage(*error);
        QMessageBox::warning(this, QStringLiteral("trendlog"), *error);
        return false;
    }
    rememberRecent(path_);
    return true;
}

void TrendlogWindow::chooseFile() {
    const QString folder = path_.isEmpty() ? QString() : QFileInfo(path_).absolutePath();
    const QString chosen =
        QFileDialog::getOpenFileName(this, QStringLiteral("Open sample data file"), folder,
                                     QStringLiteral("Sample data files (*.txt);;All files (*)"));
    if (!chosen.isEmpty()) openInteractive(chosen);
}

void TrendlogWindow::rememberRecent(const QString& path) {
    QSettings settings;
    QStringList recent = settings.value(QLatin1String(kRecentKey)).toStringList();
    recent.removeAll(path);
    recent.prepend(path);
    while (recent.size() > kRecentFiles)
        recent.removeLast();
    settings.setValue(QLatin1String(kRecentKey), recent);
}

void TrendlogWindow::fillRecentMenu() {
    recentMenu_->clear();
    const QStringList recent = QSettings().value(QLatin1String(kRecentKey)).toStringList();
    for (const QString& path : recent)
        recentMenu_->addAction(path, this, [this, path] { openInteractive(path); });
    if (recent.isEmpty()) recentMenu_->addAction(QStringLiteral("(none yet)"))->setEnabled(false);
}

void TrendlogWindow::setXMode(int mode) {
    if (mode == series_.xMode()) return;
    // The same stretch of readings stays in view on the new axis.
    const double from = plot_->xAxis->range().lower;
    const double to = plot_->xAxis->range().upper;
    const double scale = series_.integration();
    series_.setXMode(mode);
    overrides_.xMode = mode;
    plot_->setSeries(&series_, &cursors_, true);
    tuning_->setSeries(&series_);
    const double factor = mode == 2 ? scale : 1.0 / scale;
    plot_->xAxis->setRange(from * factor, to * factor);
    if (tuningDock_->isVisible()) refreshTuning();
    plot_->replot(QCustomPlot::rpQueuedReplot);
    refreshPanel();
}

void TrendlogWindow::showRange(double lo, double hi) {
    plot_->xAxis->setRange(lo, hi);
    plot_->fitValueAxis();
    plot_->replot(QCustomPlot::rpQueuedReplot);
    refreshPanel();
}

void TrendlogWindow::showTuning(bool on) {
    tuningDock_->setVisible(on);
}

double TrendlogWindow::sessionIntegration() const {
    return overrides_.integration.value_or(integrationValue(series_.content().trailer.integration));
}

void TrendlogWindow::refreshTuning() {
    tuningDelay_.stop();
    if (!tuningDock_->isVisible()) return;
    std::size_t first = 0, last = 0;
    const bool fromCursors = cursors_.isSet(0) && cursors_.isSet(1);
    if (fromCursors) {
        const auto a = cursors_.reading(0, series_);
        const auto b = cursors_.reading(1, series_);
        first = series_.positionOfIndex(std::min(a->index, b->index));
        last = series_.positionOfIndex(std::max(a->index, b->index)) + 1;
    } else {
        const QCPRange x = plot_->xAxis->range();
        std::tie(first, last) = series_.positionsIn(x.lower, x.upper);
    }
    tuning_->update(first, last, fromCursors, sessionIntegration());
}

void TrendlogWindow::exportFile(const QString& kind, bool visibleOnly) {
    if (series_.empty() && path_.isEmpty()) return;
    const QString base = QFileInfo(path_).completeBaseName();
    const QString suggestion = QFileInfo(path_).absolutePath() + QLatin1Char('/') + base +
                               (visibleOnly ? QStringLiteral("-visible.") : QStringLiteral(".")) +
                               kind;
    const QString target = QFileDialog::getSaveFileName(
        this, QStringLiteral("Export %1").arg(kind.toUpper()), suggestion,
        kind.toUpper() + QStringLiteral(" (*.") + kind + QStringLiteral(")"));
    if (target.isEmpty()) return;
    bool ok = false;
    QString error;
    if (kind == QLatin1String("csv")) {
        const QCPRange x = plot_->xAxis->range();
        const auto [first, last] = visibleOnly
                                       ? series_.positionsIn(x.lower, x.upper)
                                       : std::pair<std::size_t, std::size_t>(0, series_.size());
        ok = viewer::writeCsv(target, series_, first, last, error);
    } else {
        ok = kind == QLatin1String("png") ? plot_->savePng(target) : plot_->savePdf(target);
        if (!ok) error = QStringLiteral("%1 could not be written").arg(target);
    }
    if (ok)
        statusBar()->showMessage(QStringLiteral("Exported %1").arg(target), 5000);
    else
        QMessageBox::warning(this, QStringLiteral("trendlog"), error);
}

void TrendlogWindow::watch(const QString& path) {
    if (!watcher_.files().isEmpty()) watcher_.removePaths(watcher_.files());
    if (!watcher_.directories().isEmpty()) watcher_.removePaths(watcher_.directories());
    watcher_.addPath(path);
    watcher_.addPath(QFileInfo(path).absolutePath());
}

void TrendlogWindow::checkFileOnDisk() {
    if (path_.isEmpty()) return;
    const QFileInfo info(path_);
    const QString now = QTime::currentTime().toString(QStringLiteral("HH:mm:ss"));
    if (!info.exists()) {
        followLabel_->setText(
            QStringLiteral("%1: the file is gone; showing what was read").arg(now));
        return;
    }
    // A file renamed over the old one is a new file to the watcher: watch it again.
    if (!watcher_.files().contains(path_)) watcher_.addPath(path_);
    if (info.size() == loadedSize_ && info.lastModified() == loadedTime_) return;
    const std::optional<QString> error = load(path_, overrides_, true);
    if (error) {
        followLabel_->setText(QStringLiteral("%1: the changed file could not be read (%2); "
                                             "showing what was read before")
                                  .arg(now, *error));
        return;
    }
    statusBar()->clearMessage();
    followLabel_->setText(
        QStringLiteral("Reloaded %1: the file changed on disk (%2 readings; Home shows all)")
            .arg(now)
            .arg(series_.size()));
}

void TrendlogWindow::refreshPanel() {
    const SampleFileContent& c = series_.content();
    const SampleTrailerFacts& t = c.trailer;
    Facts file;
    if (!path_.isEmpty()) {
        file << qMakePair(QStringLiteral("Name"), QFileInfo(path_).fileName())
             << qMakePair(QStringLiteral("Started"), t.startDateTime)
             << qMakePair(QStringLiteral("Card"), t.cardName)
             << qMakePair(QStringLiteral("Integration"),
                          QStringLiteral("%1 ms").arg(shortNumber(series_.integration())))
             << qMakePair(QStringLiteral("Sampling rate (file)"), t.integration + " (ms.)")
             << qMakePair(QStringLiteral("Buffer size"), t.bufferSize)
             << qMakePair(QStringLiteral("Units"), t.unitsCaption)
             << qMakePair(QStringLiteral("X mode (file)"), t.xMode == 2
                                                               ? QStringLiteral("2, time in ms.")
                                                               : QStringLiteral("1, reading"))
             << qMakePair(QStringLiteral("Samples (file)"), t.samples)
             << qMakePair(QStringLiteral("Readings"), QString::number(series_.size()))
             << qMakePair(QStringLiteral("Blocks"), QString::number(c.blocks.size()));
        if (series_.size() > 0)
            file << qMakePair(QStringLiteral("Indices"),
                              QStringLiteral("%1 - %2")
                                  .arg(series_.indexAt(0))
                                  .arg(series_.indexAt(series_.size() - 1)));
        if (c.trailers > 1)
            file << qMakePair(QStringLiteral("Appended parts"), QString::number(c.trailers));
        if (!c.remarks.isEmpty())
            file << qMakePair(QStringLiteral("Remarks"), QString::number(c.remarks.size()));
    }
    fileFacts_->setText(path_.isEmpty() ? QStringLiteral("No file. Open one with File > Open "
                                                         "or drop it here.")
                                        : factsHtml(file));
    fileFacts_->setToolTip(c.remarks.join(QLatin1Char('\n')));

    const int mode = series_.xMode();
    Facts cursor;
    const char* names[2] = {"A", "B"};
    for (int i = 0; i < 2; ++i) {
        const auto r = cursors_.reading(i, series_);
        if (!r) {
            cursor << qMakePair(QStringLiteral("%1").arg(QLatin1String(names[i])),
                                QStringLiteral("not placed"));
            continue;
        }
        cursor << qMakePair(QStringLiteral("%1 reading").arg(QLatin1String(names[i])),
                            QString::number(r->index))
               << qMakePair(QStringLiteral("%1 time").arg(QLatin1String(names[i])),
                            viewer::timeText(r->timeMs))
               << qMakePair(QStringLiteral("%1 value").arg(QLatin1String(names[i])),
                            valueText(r->value, series_));
    }
    if (const auto d = cursors_.difference(series_)) {
        cursor << qMakePair(QStringLiteral("B - A value"), valueText(d->value, series_))
               << qMakePair(QStringLiteral("B - A readings"), QString::number(d->readings))
               << qMakePair(QStringLiteral("B - A time"), viewer::timeText(d->timeMs));
    }
    cursorFacts_->setText(factsHtml(cursor));

    Facts stretch;
    const QCPRange x = plot_->xAxis->range();
    const viewer::Stats s = series_.stats(x.lower, x.upper);
    if (mode == 2) {
        stretch << qMakePair(QStringLiteral("From"), viewer::timeText(x.lower))
                << qMakePair(QStringLiteral("To"), viewer::timeText(x.upper));
    } else {
        // Readings are whole: the first and the last one in view.
        const auto [first, last] = series_.positionsIn(x.lower, x.upper);
        const bool any = first < last;
        stretch << qMakePair(QStringLiteral("From reading"),
                             any ? QString::number(series_.indexAt(first)) : QStringLiteral("-"))
                << qMakePair(QStringLiteral("To reading"),
                             any ? QString::number(series_.indexAt(last - 1))
                                 : QStringLiteral("-"));
    }
    stretch << qMakePair(QStringLiteral("Count"), QString::number(s.count));
    if (s.count > 0)
        stretch << qMakePair(QStringLiteral("Minimum"), valueText(s.min, series_))
                << qMakePair(QStringLiteral("Maximum"), valueText(s.max, series_))
                << qMakePair(QStringLiteral("Mean"), valueText(s.mean, series_))
                << qMakePair(QStringLiteral("Std deviation"), spreadText(s.stdDev(), series_));
    stretchFacts_->setText(factsHtml(stretch));
    panelText_ = factsText(stretch) + factsText(cursor) + factsText(file);
}

void TrendlogWindow::dragEnterEvent(QDragEnterEvent* event) {
    const QList<QUrl> urls = event->mimeData()->urls();
    if (!urls.isEmpty() && urls.first().isLocalFile()) event->acceptProposedAction();
}

void TrendlogWindow::dropEvent(QDropEvent* event) {
    const QList<QUrl> urls = event->mimeData()->urls();
    if (urls.isEmpty() || !urls.first().isLocalFile()) return;
    event->acceptProposedAction();
    openInteractive(urls.first().toLocalFile());
}

} // namespace torv
