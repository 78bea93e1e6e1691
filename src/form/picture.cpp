#include "picture.h"

#include <cmath>

namespace torv {

bool DrawOp::operator==(const DrawOp& o) const {
    if (kind != o.kind || x1 != o.x1 || y1 != o.y1 || color != o.color) return false;
    switch (kind) {
    case Kind::Line:
        return x2 == o.x2 && y2 == o.y2 && width == o.width;
    case Kind::Point:
        return width == o.width;
    case Kind::Text:
        return text == o.text && font == o.font && size == o.size && bold == o.bold;
    case Kind::Copy:
        return x2 == o.x2 && y2 == o.y2 && sourceBack == o.sourceBack &&
               (source == o.source || (source && o.source && *source == *o.source));
    }
    return false;
}

QString describe(const DrawOp& op) {
    auto n = [](double v) { return QString::number(v, 'g', 10); };
    switch (op.kind) {
    case DrawOp::Kind::Line:
        return QStringLiteral("line (%1,%2)-(%3,%4) c=%5 w=%6")
            .arg(n(op.x1), n(op.y1), n(op.x2), n(op.y2))
            .arg(op.color)
            .arg(op.width);
    case DrawOp::Kind::Point:
        return QStringLiteral("point (%1,%2) c=%3 w=%4")
            .arg(n(op.x1), n(op.y1))
            .arg(op.color)
            .arg(op.width);
    case DrawOp::Kind::Text:
        return QStringLiteral("text (%1,%2) c=%3 \"%4\"")
            .arg(n(op.x1), n(op.y1))
            .arg(op.color)
            .arg(op.text);
    case DrawOp::Kind::Copy:
        return QStringLiteral("copy (%1,%2) %3x%4 of %5 ops")
            .arg(n(op.x1), n(op.y1), n(op.x2), n(op.y2))
            .arg(op.source ? op.source->size() : 0);
    }
    return {};
}

QString describe(const std::vector<DrawOp>& ops) {
    QStringList lines;
    for (const DrawOp& op : ops)
        lines << describe(op);
    return lines.join(QLatin1Char('\n'));
}

void Picture::Cls() {
    ops_.clear();
    ++clears_;
    currentX = currentY = 0;
}

void Picture::Line(double x1, double y1, double x2, double y2, color::Color c) {
    DrawOp op;
    op.kind = DrawOp::Kind::Line;
    op.x1 = x1, op.y1 = y1, op.x2 = x2, op.y2 = y2;
    op.color = pick(c);
    op.width = drawWidth;
    ops_.push_back(std::move(op));
    currentX = x2, currentY = y2;
}

void Picture::LineTo(double x2, double y2, color::Color c) {
    Line(currentX, currentY, x2, y2, c);
}

void Picture::PSet(double x, double y, color::Color c) {
    DrawOp op;
    op.kind = DrawOp::Kind::Point;
    op.x1 = x, op.y1 = y;
    op.color = pick(c);
    op.width = drawWidth;
    ops_.push_back(std::move(op));
    currentX = x, currentY = y;
}

void Picture::Print(const QString& text) {
    DrawOp op;
    op.kind = DrawOp::Kind::Text;
    op.x1 = currentX, op.y1 = currentY;
    op.color = foreColor;
    op.text = text;
    op.font = fontName;
    op.size = fontSize;
    op.bold = bold;
    ops_.push_back(std::move(op));
    currentX = 0;
    currentY += TextHeight();
}

void Picture::PaintPicture(const Picture& src, double x, double y) {
    DrawOp op;
    op.kind = DrawOp::Kind::Copy;
    op.x1 = x, op.y1 = y;
    op.x2 = src.width, op.y2 = src.height;
    op.source = std::make_shared<const std::vector<DrawOp>>(src.ops_);
    op.sourceBack = src.backColor;
    ops_.push_back(std::move(op));
}

double Picture::TextHeight() const {
    // A point is 20 twips; a line is the point size with the usual leading of about 15 %.
    return std::round(fontSize * 20.0 * 1.15);
}

} // namespace torv
