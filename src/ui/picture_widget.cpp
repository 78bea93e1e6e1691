#include "picture_widget.h"

#include "ui/control_binding.h"

#include <QPaintEvent>
#include <QPainter>
#include <cmath>

namespace torv {

namespace {

double px(double twips) {
    return twips / TwipsPerPixel;
}

// Graph colours are drawn exactly as the program holds them.
QColor exact(color::Color c) {
    if (color::isSystem(c)) return screenColor(c);
    return QColor(color::red(c), color::green(c), color::blue(c));
}

QSize pixelSize(const Picture& pic) {
    return QSize(std::max(1, int(std::lround(px(pic.width)))),
                 std::max(1, int(std::lround(px(pic.height)))));
}

} // namespace

void paintOps(QPainter& p, const std::vector<DrawOp>& ops, std::size_t from) {
    for (std::size_t i = from; i < ops.size(); ++i) {
        const DrawOp& op = ops[i];
        const QColor c = exact(op.color);
        switch (op.kind) {
        case DrawOp::Kind::Line:
            p.setPen(QPen(c, std::max(1, op.width), Qt::SolidLine, Qt::SquareCap));
            p.drawLine(QPointF(px(op.x1), px(op.y1)), QPointF(px(op.x2), px(op.y2)));
            break;
        case DrawOp::Kind::Point: {
            const double w = std::max(1, op.width);
            p.fillRect(QRectF(px(op.x1) - (w - 1) / 2, px(op.y1) - (w - 1) / 2, w, w), c);
            break;
        }
        case DrawOp::Kind::Text: {
            QFont f = p.font();
            if (!op.font.isEmpty()) f.setFamily(op.font);
            if (op.size > 0) f.setPointSizeF(op.size);
            f.setBold(op.bold);
            p.setFont(f);
            p.setPen(c);
            p.drawText(QPointF(px(op.x1), px(op.y1) + QFontMetricsF(f).ascent()), op.text);
            break;
        }
        case DrawOp::Kind::Copy: {
            const QRectF area(px(op.x1), px(op.y1), px(op.x2), px(op.y2));
            p.save();
            p.setClipRect(area, Qt::IntersectClip);
            p.fillRect(area, exact(op.sourceBack));
            p.translate(area.topLeft());
            if (op.source) paintOps(p, *op.source);
            p.restore();
            break;
        }
        }
    }
}

PictureWidget::PictureWidget(const Picture& picture, QWidget* parent)
    : QWidget(parent)
    , picture_(&picture) {
    setObjectName(picture.name);
    setAttribute(Qt::WA_OpaquePaintEvent);
    refresh();
}

void PictureWidget::startOver(QSize size) {
    image_ = QImage(size, QImage::Format_RGB32);
    image_.fill(exact(picture_->backColor));
    back_ = picture_->backColor;
    clears_ = picture_->clearCount();
    drawn_ = 0;
}

bool PictureWidget::refresh() {
    const Picture& pic = *picture_;
    const QSize size = pixelSize(pic);
    const auto& ops = pic.displayList();
    bool changed = false;
    if (image_.size() != size || clears_ != pic.clearCount() || back_ != pic.backColor ||
        ops.size() < drawn_) {
        startOver(size);
        changed = true;
    }
    if (drawn_ < ops.size()) {
        QPainter p(&image_);
        p.setRenderHint(QPainter::TextAntialiasing);
        paintOps(p, ops, drawn_);
        opsPainted_ += static_cast<long long>(ops.size() - drawn_);
        drawn_ = ops.size();
        changed = true;
    }
    if (changed) update();
    return changed;
}

void PictureWidget::paintEvent(QPaintEvent* e) {
    QPainter p(this);
    p.fillRect(e->rect(), exact(picture_->backColor));
    p.drawImage(e->rect().topLeft(), image_, e->rect());
}

} // namespace torv
