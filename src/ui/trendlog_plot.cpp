#include "trendlog_plot.h"

#include "viewer/time_axis.h"

#include <algorithm>

namespace torv {

namespace {

const QColor kCursorColor[2] = {QColor(200, 30, 30), QColor(30, 60, 210)};
const char* const kCursorName[2] = {"A", "B"};
constexpr double kGrabPixels = 5;
constexpr double kClickPixels = 4;
const QColor kReadingColor(20, 110, 60);
const QColor kPreviewColor(225, 110, 0);

// Reading numbers: whole steps, whole labels.
class ReadingTicker : public QCPAxisTicker {
protected:
    double getTickStep(const QCPRange& range) override {
        const double step = QCPAxisTicker::getTickStep(range);
        return step < 10 ? std::max(1.0, std::round(step)) : step;
    }
    int getSubTickCount(double step) override {
        return step <= 5 ? int(step) - 1 : QCPAxisTicker::getSubTickCount(step);
    }
    QString getTickLabel(double tick, const QLocale&, QChar, int) override {
        return QString::number(tick, 'f', 0);
    }
};

// Milliseconds as time: round steps in seconds, minutes or hours, labelled as such.
class TimeTicker : public QCPAxisTicker {
protected:
    double getTickStep(const QCPRange& range) override {
        style_ = viewer::timeStyleFor(std::max(std::abs(range.lower), std::abs(range.upper)));
        step_ = viewer::timeTickStep(range.size(), tickCount());
        return step_;
    }
    QString getTickLabel(double tick, const QLocale&, QChar, int) override {
        return viewer::timeLabel(tick, step_, style_);
    }

private:
    viewer::TimeStyle style_ = viewer::TimeStyle::Seconds;
    double step_ = 1000;
};

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
            &TrendlogPlot::xRangeChanged);
    connect(xAxis, qOverload<const QCPRange&>(&QCPAxis::rangeChanged), this,
            &TrendlogPlot::viewChanged);
    connect(yAxis, qOverload<const QCPRange&>(&QCPAxis::rangeChanged), this,
            &TrendlogPlot::viewChanged);
    for (QCPAxis* axis : {xAxis, yAxis}) {
        axis->grid()->setPen(QPen(QColor(0, 0, 0, 35), 0, Qt::DotLine));
        axis->setNumberPrecision(8);
    }

    readingTicker_.reset(new ReadingTicker);
    timeTicker_.reset(new TimeTicker);
    axisRect()->setRangeDrag(Qt::Horizontal);

    graph_ = addGraph();
    graph_->setPen(QPen(kReadingColor, 1));
    graph_->setAdaptiveSampling(true);
    graph_->setName(QStringLiteral("Readings"));
    preview_ = addGraph();
    preview_->setPen(QPen(kPreviewColor, 2));
    preview_->setAdaptiveSampling(true);
    preview_->setVisible(false);
    // The legend gets a line of its own above the plot when a trace is drawn, so it never
    // hides readings.
    axisRect()->insetLayout()->take(legend);
    legend->setVisible(false);
    legend->setFillOrder(QCPLayoutGrid::foColumnsFirst);
    legend->setBorderPen(Qt::NoPen);
    legend->setBrush(Qt::NoBrush);
    legend->setMargins(QMargins(0, 0, 0, 0));
    legend->setColumnSpacing(24);
    // Empty stretching cells on both sides keep the entries together in the middle.
    legend->insertColumn(0);
    legend->addElement(0, 0, new QCPLayoutElement(this));
    legend->addElement(0, legend->columnCount(), new QCPLayoutElement(this));
    legend->setColumnStretchFactors({1.0, 0.001, 0.001, 1.0});
    marks_ = new BlockMarks(this, axisRect());

    stretch_ = new QCPItemRect(this);
    stretch_->setLayer(QStringLiteral("grid"));
    stretch_->setPen(Qt::NoPen);
    stretch_->setBrush(QColor(40, 120, 220, 28));
    for (QCPItemPosition* p : {stretch_->topLeft, stretch_->bottomRight}) {
        p->setTypeX(QCPItemPosition::ptPlotCoords);
        p->setTypeY(QCPItemPosition::ptAxisRectRatio);
    }
    stretch_->setVisible(false);
    stepLine_ = new QCPItemStraightLine(this);
    stepLine_->setPen(QPen(QColor(120, 40, 160), 1.5, Qt::DashLine));
    stepLine_->setVisible(false);
    stepLabel_ = new QCPItemText(this);
    stepLabel_->setText(QStringLiteral("step"));
    stepLabel_->setColor(Qt::white);
    stepLabel_->setBrush(QColor(120, 40, 160));
    stepLabel_->setPadding(QMargins(4, 1, 4, 1));
    stepLabel_->setPositionAlignment(Qt::AlignHCenter | Qt::AlignBottom);
    stepLabel_->position->setTypeX(QCPItemPosition::ptPlotCoords);
    stepLabel_->position->setTypeY(QCPItemPosition::ptAxisRectRatio);
    stepLabel_->setClipToAxisRect(true);
    stepLabel_->setVisible(false);

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
    const QCPRange x = xAxis->range();
    const viewer::TimeStyle style =
        viewer::timeStyleFor(std::max(std::abs(x.lower), std::abs(x.upper)));
    xAxis->setTicker(ms ? timeTicker_ : readingTicker_);
    xAxis->setLabel(ms ? viewer::timeAxisTitle(style) : QStringLiteral("Reading"));
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
    setPreview({}, {});
    setStepMark(std::nullopt);
    setStretchMark(std::nullopt);
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

void TrendlogPlot::xRangeChanged() {
    if (fitValues_) fitValueAxis();
    if (series_ && series_->xMode() == 2) labelAxes();
}

void TrendlogPlot::setFitValues(bool on) {
    fitValues_ = on;
    // While fitted, the value axis follows the X axis: a drag pans along time only.
    axisRect()->setRangeDrag(on ? Qt::Horizontal : Qt::Horizontal | Qt::Vertical);
    if (on) fitValueAxis();
    replot(rpQueuedReplot);
}

void TrendlogPlot::fitValueAxis() {
    if (!series_ || series_->empty()) return;
    const QCPRange x = xAxis->range();
    const viewer::Stats s = series_->stats(x.lower, x.upper);
    if (s.count == 0) return;
    const double pad =
        s.max > s.min ? (s.max - s.min) * 0.06 : std::max(1e-3, std::abs(s.max) * 0.01);
    yAxis->setRange(s.min - pad, s.max + pad);
}

void TrendlogPlot::setPreview(const std::vector<double>& values, const QString& name) {
    const bool shown = series_ && !values.empty() && values.size() == series_->size();
    if (shown && preview_->data()->size() == int(values.size())) {
        // Another trace of the same readings: only the values change, in place.
        auto it = preview_->data()->begin();
        for (std::size_t i = 0; i < values.size(); ++i, ++it)
            it->value = values[i];
    } else {
        QVector<QCPGraphData> data;
        if (shown) {
            data.resize(qsizetype(values.size()));
            for (std::size_t i = 0; i < values.size(); ++i)
                data[qsizetype(i)] = QCPGraphData(series_->keyAt(i), values[i]);
        }
        preview_->data()->set(data, true);
    }
    preview_->setName(name);
    preview_->setVisible(shown);
    if (shown != legend->visible()) {
        legend->setVisible(shown);
        if (shown) {
            int row = 0;
            while (row < plotLayout()->rowCount() && plotLayout()->element(row, 0) != axisRect())
                ++row;
            plotLayout()->insertRow(row);
            plotLayout()->addElement(row, 0, legend);
            plotLayout()->setRowStretchFactor(row, 0.001);
        } else {
            plotLayout()->take(legend);
            plotLayout()->simplify();
        }
    }
    // The readings step back behind the trace drawn over them.
    graph_->setPen(QPen(shown ? QColor(20, 110, 60, 150) : kReadingColor, 1));
    replot(rpQueuedReplot);
}

void TrendlogPlot::setStepMark(std::optional<std::size_t> position) {
    const bool shown = series_ && position && *position > 0 && *position < series_->size();
    stepLine_->setVisible(shown);
    stepLabel_->setVisible(shown);
    if (shown) {
        // The step happened between the reading before and the first one after.
        const double key = (series_->keyAt(*position - 1) + series_->keyAt(*position)) / 2;
        stepLine_->point1->setCoords(key, 0);
        stepLine_->point2->setCoords(key, 1);
        stepLabel_->position->setCoords(key, 1);
    }
    replot(rpQueuedReplot);
}

void TrendlogPlot::setStretchMark(std::optional<std::pair<std::size_t, std::size_t>> positions) {
    const bool shown = series_ && positions && positions->first < positions->second &&
                       positions->second <= series_->size();
    stretch_->setVisible(shown);
    if (shown) {
        stretch_->topLeft->setCoords(series_->keyAt(positions->first), 0);
        stretch_->bottomRight->setCoords(series_->keyAt(positions->second - 1), 1);
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
