#pragma once

// The history viewer's main window: the plot, a side panel with the file's facts, the two
// cursors and the statistics of the visible stretch; File > Open, recent files, drag and
// drop, exports, following the file when it changes on disk, and the Tuning panel below.

#include "viewer/series.h"

#include <QDateTime>
#include <QFileSystemWatcher>
#include <QMainWindow>
#include <QTimer>
#include <optional>

class QAction;
class QActionGroup;
class QDockWidget;
class QLabel;
class QMenu;

namespace torv {

class TrendlogPlot;
class TuningPanel;

// The line above the plot: the file's name and when its recording started.
QString titleOf(const QString& fileName, const SampleFileContent& content);

struct TrendlogOpenOptions {
    std::optional<int> xMode;          // over the file's own X mode
    std::optional<double> integration; // over the file's own integration, in ms
};

class TrendlogWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit TrendlogWindow(QWidget* parent = nullptr);

    // Reads `path` and shows it; on failure the window keeps what it showed and the error
    // text is returned. With keepView the axes and cursors stay where they are.
    std::optional<QString> load(const QString& path, const TrendlogOpenOptions& options = {},
                                bool keepView = false);
    // load(), then the error in a message box; a file that opens joins the recent files.
    bool openInteractive(const QString& path, const TrendlogOpenOptions& options = {});

    TrendlogPlot* plot() const { return plot_; }
    TuningPanel* tuning() const { return tuning_; }
    void showTuning(bool on);
    // Computes the tuning table again over the cursors' stretch, or the view's.
    void refreshTuning();
    const viewer::Series& series() const { return series_; }
    viewer::Cursors& cursors() { return cursors_; }
    QString path() const { return path_; }
    // The side panel's texts, one "name: value" line each, for tests and scripts.
    QString panelText() const { return panelText_; }
    // Shows [lo, hi] on the X axis, and the value range of that stretch.
    void showRange(double lo, double hi);
    void refreshPanel();

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void buildMenus();
    QWidget* buildSidePanel();
    void chooseFile();
    void exportFile(const QString& kind, bool visibleOnly = false);
    void rememberRecent(const QString& path);
    void fillRecentMenu();
    void setXMode(int mode);
    void watch(const QString& path);
    void checkFileOnDisk();
    double sessionIntegration() const;

    viewer::Series series_;
    viewer::Cursors cursors_;
    TrendlogOpenOptions overrides_;
    QString path_;
    qint64 loadedSize_ = -1;
    QDateTime loadedTime_;

    TrendlogPlot* plot_ = nullptr;
    QFileSystemWatcher watcher_;
    QTimer changeDelay_;
    QTimer panelDelay_;
    QTimer tuningDelay_;
    TuningPanel* tuning_ = nullptr;
    QDockWidget* tuningDock_ = nullptr;
    QMenu* recentMenu_ = nullptr;
    QAction* marksAction_ = nullptr;
    QAction* fitAction_ = nullptr;
    QAction* modeAction_[2] = {nullptr, nullptr};
    QLabel* followLabel_ = nullptr;
    QLabel* fileFacts_ = nullptr;
    QLabel* cursorFacts_ = nullptr;
    QLabel* stretchFacts_ = nullptr;
    QString panelText_;
};

} // namespace torv
