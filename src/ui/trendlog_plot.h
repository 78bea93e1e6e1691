#pragma once

// The history viewer's plot: the readings of a Series on a QCustomPlot, with faint block
// marks and the two measuring cursors. The wheel zooms (X; with Ctrl or Shift, Y), a drag
// pans, a Shift- or Ctrl-drag (or any drag in zoom-box mode) zooms to a box. A click places
// cursor A, a right click cursor B; a cursor line can be dragged.

#include "viewer/series.h"

#include <qcustomplot.h>

namespace torv {

class BlockMarks;

class TrendlogPlot : public QCustomPlot {
    Q_OBJECT
public:
    explicit TrendlogPlot(QWidget* parent = nullptr);

    // Shows `series` (which must outlive the plot or the next call) with `cursors`. With
    // keepView the axes keep their ranges; otherwise the whole series is shown.
    void setSeries(const viewer::Series* series, viewer::Cursors* cursors, bool keepView);
    void resetView();
    void setBlockMarksVisible(bool on);
    bool blockMarksVisible() const;
    void setZoomBoxMode(bool on) { zoomBoxMode_ = on; }
    // Moves the cursor lines to where the cursors are.
    void updateCursors();
    // The value axis label's units, e.g. "kg".
    void setUnits(const QString& units);
    // The line above the plot, e.g. the file's name and start.
    void setTitle(const QString& title);

signals:
    void cursorsMoved();
    void viewChanged();
    void painted();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    int cursorNear(const QPointF& pos) const;
    void placeCursor(int which, double pixelX);
    void labelAxes();

    const viewer::Series* series_ = nullptr;
    viewer::Cursors* cursors_ = nullptr;
    QCPGraph* graph_ = nullptr;
    BlockMarks* marks_ = nullptr;
    QCPItemStraightLine* cursorLine_[2] = {nullptr, nullptr};
    QCPItemText* cursorLabel_[2] = {nullptr, nullptr};
    QCPItemTracer* cursorDot_[2] = {nullptr, nullptr};
    QCPTextElement* title_ = nullptr;
    QString units_;
    bool zoomBoxMode_ = false;
    int draggedCursor_ = -1;
    QPointF pressPos_;
};

} // namespace torv
