#include "trendlog_plot.h"

#include <algorithm>

namespace torv {

namespace {

const QColor kCursorColor[2] = {QColor(200, 30, 30), QColor(30, 60, 210)};
const char* const kCursorName[2] = {"A", "B"};
constexpr double kGrabPixels = 5;
constexpr double kClickPixels = 4;

} // namespace

// Faint vertical lines where blocks begin, drawn only for the visible stretch and only when
// they lie far enough apart to be told apart; their cost never grows with the file.
class BlockMarks : public QCPLayerable {
public:
    BlockMarks(QCustomPlot* plot, QCPAxisRect* rect)
        : QCPLayerable(plot, QStringLiteral("grid"))
        , rect_(rect) {}
    const viewer::Series* series = nullptr;

protected:
    void applyDefaultAntialiasingHint(QCPPainter* painter) const override {
        painter->setAntialiasing(false);
    }
    QRect clipRect() const override { return rect_->rect(); }
    void draw(QCPPainter* painter) override {
        if (!series || series->boundaries().empty()) return;
        QCPAxis* x = rect_->axis(QCPAxis::atBottom);
        const QCPRange range = x->range();
        const std::vector<double>& b = series->boundaries();
        const auto from =
            std::lower_bound(b.begin(), b.end(), range.lower,
                             [&](double i, double k) { return series->keyOfIndex(i) < k; });
        const auto to = std::upper_bound(from, b.end(), range.upper, [&](double k, double i) {
            return k < series->keyOfIndex(i);
        });
        // Marks closer than 8 pixels on average would only grey the plot.
        if ((to - from) * 8 > rect_->width()) return;
        painter->setPen(QPen(QColor(70, 70, 140, 55), 0, Qt::SolidLine));
        const QRect r = rect_->rect();
        for (auto it = from; it != to; ++it) {
            const double px = x->coordToPixel(series->keyOfIndex(*it));
            painter->drawLine(QLineF(px, r.top(), px, r.bottom()));
        }
    }

private:
    QCPAxisRect* rect_;
};

TrendlogPlot::TrendlogPlot(QWidget* parent)
    : QCustomPlot(parent) {
    setInteractions(QCP::iRangeDrag | QCP::iRangeZoom);
    axisRect()->setRangeDrag(Qt::Horizontal | Qt::Vertical);
    axisRect()->setRangeZoom(Qt::Horizontal);
    selectionRect()->setPen(QPen(QColor(40, 90, 200), 1, Qt::DashLine));
    selectionRect()->setBrush(QColor(40, 90, 200, 30));
    setNoAntialiasingOnDrag(true);
    setPlottingHint(QCP::phCacheLabels, true);

    xAxis2->setVisible(true);
    yAxis2->setVisible(true);
    xAxis2->setTickLabels(false);
    yAxis2->setTickLabels(false);
    connect(xAxis, qOverload<const QCPRange&>(&QCPAxis::rangeChanged), xAxis2,
            qOverload<const QCPRange&>(&QCPAxis::setRange));
    connect(yAxis, qOverload<const QCPRange&>(&QCPAxis::rangeChanged), yAxis2,
            qOverload<const QCPRange&>(&QCPAxis::setRange));
    connect(xAxis, qOverload<const QCPRange&>(&QCPAxis::rangeChanged), this,
            &TrendlogPlot::viewChanged);
    connect(yAxis, qOverload<const QCPRange&>(&QCPAxis::rangeChanged), this,
            &TrendlogPlot::viewChanged);
    for (QCPAxis* axis : {xAxis, yAxis}) {
        axis->grid()->setPen(QPen(QColor(0, 0, 0, 35), 0, Qt::DotLine));
        axis->setNumberPrecision(8);
    }

    graph_ = addGraph();
    graph_->setPen(QPen(QColor(20, 110, 60), 1));
    graph_->setAdaptiveSampling(true);
    marks_ = new BlockMarks(this, axisRect());

    for (int i = 0; i < 2; ++i) {
        cursorLine_[i] = new QCPItemStraightLine(this);
        cursorLine_[i]->setPen(QPen(kCursorColor[i], 1));
        cursorLine_[i]->point1->setCoords(0, 0);
        cursorLine_[i]->point2->setCoords(0, 1);
        cursorLabel_[i] = new QCPItemText(this);
        cursorLabel_[i]->setText(QLatin1String(kCursorName[i]));
        cursorLabel_[i]->setColor(Qt::white);
        cursorLabel_[i]->setBrush(kCursorColor[i]);
        cursorLabel_[i]->setPadding(QMargins(4, 1, 4, 1));
        cursorLabel_[i]->setPositionAlignment(Qt::AlignHCenter | Qt::AlignTop);
        cursorLabel_[i]->position->setTypeX(QCPItemPosition::ptPlotCoords);
        cursorLabel_[i]->position->setTypeY(QCPItemPosition::ptAxisRectRatio);
        cursorLabel_[i]->position->setCoords(0, 0);
        cursorLabel_[i]->setClipToAxisRect(true);
        cursorDot_[i] = new QCPItemTracer(this);
        cursorDot_[i]->setStyle(QCPItemTracer::tsCircle);
        cursorDot_[i]->setSize(8);
        cursorDot_[i]->setPen(QPen(kCursorColor[i], 1.5));
        cursorDot_[i]->setBrush(Qt::white);
        cursorDot_[i]->position->setType(QCPItemPosition::ptPlotCoords);
    }
    labelAxes();
    updateCursors();
}

void TrendlogPlot::setUnits(const QString& units) {
    units_ = units;
    labelAxes();
}

void TrendlogPlot::setTitle(const QString& title) {
    if (!title_) {
        plotLayout()->insertRow(0);
        QFont font = this->font();
        font.setBold(true);
        title_ = new QCPTextElement(this, title, font);
        title_->setMargins(QMargins(0, 6, 0, 0));
        plotLayout()->addElement(0, 0, title_);
    }
    title_->setText(title);
    replot(rpQueuedReplot);
}

void TrendlogPlot::labelAxes() {
    const bool ms = series_ && series_->xMode() == 2;
    xAxis->setLabel(ms ? QStringLiteral("Time (ms)") : QStringLiteral("Reading"));
    yAxis->setLabel(units_.isEmpty() ? QStringLiteral("Value")
                                     : QStringLiteral("Value (%1)").arg(units_));
}

void TrendlogPlot::setSeries(const viewer::Series* series, viewer::Cursors* cursors,
                             bool keepView) {
    series_ = series;
    cursors_ = cursors;
    marks_->series = series;
    QVector<QCPGraphData> data;
    if (series) {
        data.resize(qsizetype(series->size()));
        for (std::size_t i = 0; i < series->size(); ++i)
            data[qsizetype(i)] = QCPGraphData(series->keyAt(i), series->valueAt(i));
    }
    graph_->data()->set(data, true);
    labelAxes();
    updateCursors();
    if (!keepView)
        resetView();
    else
        replot(rpQueuedReplot);
}

void TrendlogPlot::resetView() {
    if (!series_ || series_->empty()) {
        xAxis->setRange(0, 1);
        yAxis->setRange(0, 1);
    } else {
        double lo = series_->keyAt(0);
        double hi = series_->keyAt(series_->size() - 1);
        if (hi <= lo) lo -= 1, hi += 1;
        xAxis->setRange(lo, hi);
        const viewer::Stats all = series_->allStats();
        const double pad = all.max > all.min ? (all.max - all.min) * 0.05 : 1.0;
        yAxis->setRange(all.min - pad, all.max + pad);
    }
    replot(rpQueuedReplot);
}

void TrendlogPlot::setBlockMarksVisible(bool on) {
    marks_->setVisible(on);
    replot(rpQueuedReplot);
}

bool TrendlogPlot::blockMarksVisible() const {
    return marks_->visible();
}

void TrendlogPlot::updateCursors() {
    for (int i = 0; i < 2; ++i) {
        const auto reading = series_ && cursors_ ? cursors_->reading(i, *series_) : std::nullopt;
        cursorLine_[i]->setVisible(reading.has_value());
        cursorLabel_[i]->setVisible(reading.has_value());
        cursorDot_[i]->setVisible(reading.has_value());
        if (!reading) continue;
        cursorLine_[i]->point1->setCoords(reading->key, 0);
        cursorLine_[i]->point2->setCoords(reading->key, 1);
        cursorLabel_[i]->position->setCoords(reading->key, 0);
        cursorDot_[i]->position->setCoords(reading->key, reading->value);
    }
    replot(rpQueuedReplot);
}

int TrendlogPlot::cursorNear(const QPointF& pos) const {
    for (int i = 0; i < 2; ++i) {
        if (!cursorLine_[i]->visible()) continue;
        const double px = xAxis->coordToPixel(cursorLine_[i]->point1->coords().x());
        if (std::abs(px - pos.x()) <= kGrabPixels) return i;
    }
    return -1;
}

void TrendlogPlot::placeCursor(int which, double pixelX) {
    if (!series_ || !cursors_ || series_->empty()) return;
    cursors_->place(which, xAxis->pixelToCoord(pixelX), *series_);
    updateCursors();
    emit cursorsMoved();
}

void TrendlogPlot::mousePressEvent(QMouseEvent* event) {
    pressPos_ = event->position();
    draggedCursor_ = event->button() == Qt::LeftButton ? cursorNear(pressPos_) : -1;
    if (draggedCursor_ >= 0) return; // the cursor moves, the view stays
    const bool box =
        zoomBoxMode_ || (event->modifiers() & (Qt::ShiftModifier | Qt::ControlModifier));
    setSelectionRectMode(box ? QCP::srmZoom : QCP::srmNone);
    QCustomPlot::mousePressEvent(event);
}

void TrendlogPlot::mouseMoveEvent(QMouseEvent* event) {
    if (draggedCursor_ >= 0) {
        placeCursor(draggedCursor_, event->position().x());
        return;
    }
    setCursor(cursorNear(event->position()) >= 0 ? Qt::SizeHorCursor : Qt::ArrowCursor);
    QCustomPlot::mouseMoveEvent(event);
}

void TrendlogPlot::mouseReleaseEvent(QMouseEvent* event) {
    const QPointF d = event->position() - pressPos_;
    const bool click = std::abs(d.x()) + std::abs(d.y()) <= kClickPixels;
    if (draggedCursor_ >= 0) {
        draggedCursor_ = -1;
        return;
    }
    QCustomPlot::mouseReleaseEvent(event);
    if (click && axisRect()->rect().contains(event->position().toPoint())) {
        if (event->button() == Qt::LeftButton) placeCursor(0, event->position().x());
        if (event->button() == Qt::RightButton) placeCursor(1, event->position().x());
    }
}

void TrendlogPlot::wheelEvent(QWheelEvent* event) {
    const bool vertical = event->modifiers() & (Qt::ShiftModifier | Qt::ControlModifier);
    axisRect()->setRangeZoom(vertical ? Qt::Vertical : Qt::Horizontal);
    QCustomPlot::wheelEvent(event);
}

void TrendlogPlot::paintEvent(QPaintEvent* event) {
    QCustomPlot::paintEvent(event);
    emit painted();
}

} // namespace torv
