#pragma once

// The history viewer's plot: the readings of a Series on a QCustomPlot, with faint block
// marks and the two measuring cursors. The wheel zooms (X; with Ctrl or Shift, Y), a drag
// pans, a Shift- or Ctrl-drag (or any drag in zoom-box mode) zooms to a box. A click places
// cursor A, a right click cursor B; a cursor line can be dragged. While the value axis is
// fitted, every change of the X axis fits it to the readings in view. In milliseconds mode
// the X axis reads as time; reading numbers are whole numbers.
//
// For tuning it also draws a filtered trace over the readings, the step and the steady
// stretch the noise was taken over.

#include "viewer/series.h"

#include <optional>
#include <qcustomplot.h>
#include <vector>

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
    // Fit the value axis to the readings in view at every change of the X axis (the default),
    // or keep it where it is.
    void setFitValues(bool on);
    bool fitValues() const { return fitValues_; }
    void fitValueAxis();

    // A trace over the readings, one value per reading (empty: none), named in the legend.
    void setPreview(const std::vector<double>& values, const QString& name);
    // The step at reading position `position` (none: no mark).
    void setStepMark(std::optional<std::size_t> position);
    // The steady stretch, reading positions [first, last) (none: no mark).
    void setStretchMark(std::optional<std::pair<std::size_t, std::size_t>> positions);

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
    void xRangeChanged();

    const viewer::Series* series_ = nullptr;
    viewer::Cursors* cursors_ = nullptr;
    QCPGraph* graph_ = nullptr;
    BlockMarks* marks_ = nullptr;
    QCPItemStraightLine* cursorLine_[2] = {nullptr, nullptr};
    QCPItemText* cursorLabel_[2] = {nullptr, nullptr};
    QCPItemTracer* cursorDot_[2] = {nullptr, nullptr};
    QCPTextElement* title_ = nullptr;
    QCPGraph* preview_ = nullptr;
    QCPItemStraightLine* stepLine_ = nullptr;
    QCPItemText* stepLabel_ = nullptr;
    QCPItemRect* stretch_ = nullptr;
    QSharedPointer<QCPAxisTicker> readingTicker_;
    QSharedPointer<QCPAxisTicker> timeTicker_;
    QString units_;
    bool fitValues_ = true;
    bool zoomBoxMode_ = false;
    int draggedCursor_ = -1;
    QPointF pressPos_;
};

} // namespace torv
