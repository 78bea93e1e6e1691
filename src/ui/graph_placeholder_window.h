#pragma once

// A stand-in for the real-time graph window: one small window per active channel that shows
// the channel, the readings taken and the newest point. It keeps the store's rules for opening,
// drawing and closing, so the set-up form and the panel work end to end.

#include "coalescer.h"
#include "graph/graph_view.h"

#include <QPointer>
#include <QWidget>
#include <vector>

class QLabel;

namespace torv {

class GraphStore;

class GraphPlaceholderWindow : public QWidget, public GraphView {
    Q_OBJECT
public:
    GraphPlaceholderWindow(GraphStore& store, int channel);
    ~GraphPlaceholderWindow() override;

    void DrawGraph_TORV() override;
    void Form_MyUnload() override;
    void SetTopMost(bool onTop) override;

    int channel() const { return channel_; }
    int draws() const { return draws_; }
    QString text() const;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void refresh();
    GraphStore& store_;
    int channel_;
    int draws_ = 0;
    bool unloading_ = false;
    QLabel* lblChanNumber_ = nullptr;
    QLabel* info_ = nullptr;
    Coalescer refresher_;
};

class GraphPlaceholderWindows : public GraphWindows {
public:
    explicit GraphPlaceholderWindows(GraphStore& store)
        : store_(store) {}
    ~GraphPlaceholderWindows() override;

    GraphView* open(int channel) override;
    void place(GraphView* const (&windows)[4]) override;
    int screenWidth() override;
    int screenHeight() override;

private:
    GraphStore& store_;
    std::vector<QPointer<GraphPlaceholderWindow>> windows_;
};

} // namespace torv
