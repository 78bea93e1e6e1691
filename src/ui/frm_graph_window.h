#pragma once

// A real-time graph window: renders the frmGraph form model (the plot, its scales and pop-ups
// through picture widgets that paint only what was added) and turns mouse, key and button
// events into calls of the graph's handlers. Model changes schedule one refresh a frame. The
// factory FrmGraphWindows opens the windows for the set-up form.

#include "coalescer.h"
#include "control_binding.h"
#include "graph/frm_graph.h"
#include "graph/graph_view.h"

#include <QPointer>
#include <QWidget>
#include <array>
#include <functional>
#include <memory>
#include <vector>

class QGridLayout;

namespace torv {

class GraphStore;
class PictureWidget;

class FrmGraphWindow : public QWidget {
    Q_OBJECT
public:
    FrmGraphWindow(GraphStore& store, int channel, QWidget* parent = nullptr);
    ~FrmGraphWindow() override;

    FrmGraph& graph() { return graph_; }
    // Pushes the model to the widgets now (the coalescer does it at most once a frame).
    void refresh();
    int refreshCount() const { return refreshes_; }
    QWidget* widgetFor(const QString& controlName) const;
    // The plot area brought up to date with the model (value scale, visible plot with marker
    // and pop-ups, time scale), and that picture saved as PNG. The right-click "Save image..."
    // saves the plot area as it is on the screen at the click.
    QImage plotImage();
    bool saveImage(const QString& path);

protected:
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    void scheduleRefresh() { coalescer_.request(); }
    ControlBinding& bind(Control& c, QWidget* w, WidgetKind kind, const Control* label = nullptr);
    QWidget* label(Control& c);
    QWidget* box(Control& c, int width, const Control* label = nullptr);
    QWidget* button(Control& c, std::function<void()> click, const QString& text = QString());
    PictureWidget* picture(Picture& p, QWidget* parent, bool framed = false);
    QWidget* buildPlotArea();
    QWidget* buildReadings();
    QWidget* buildCommands();
    QWidget* buildStatistics();
    void placePictures();
    void applyWindowState();
    void showContextMenu(const QPoint& globalPos);

    FrmGraph graph_;
    Coalescer coalescer_;
    std::vector<std::unique_ptr<ControlBinding>> bindings_;
    std::vector<std::pair<PictureWidget*, const Picture*>> pictures_;
    QWidget* plotArea_ = nullptr;
    QWidget* frame_ = nullptr;
    QWidget* xFrame_ = nullptr;
    PictureWidget* plot_ = nullptr;
    QWidget* marker_ = nullptr;
    bool topMost_ = false;
    int shownTop_ = -1, shownLeft_ = -1, shownHeight_ = -1;
    int refreshes_ = 0;
    bool closing_ = false;
};

// Opens the graph windows of the set-up form and places them on the screen.
class FrmGraphWindows : public GraphWindows {
public:
    explicit FrmGraphWindows(GraphStore& store);
    ~FrmGraphWindows() override;

    GraphView* open(int channel) override;
    void place(GraphView* const (&windows)[4]) override;
    int screenWidth() override;
    int screenHeight() override;

    // The open window of a channel, or null.
    FrmGraphWindow* window(int channel) const;

private:
    GraphStore& store_;
    std::array<QPointer<FrmGraphWindow>, 4> windows_;
};

} // namespace torv
