#pragma once

// Small pieces the main window is built of: frames, cards, numbers that keep their width.

#include <QFrame>
#include <QGroupBox>
#include <QLabel>
#include <QString>
#include <algorithm>
#include <utility>

namespace torv::window_parts {

inline QGroupBox* frameBox(QWidget* owner) {
    auto* box = new QGroupBox(owner);
    return box;
}

inline QFrame* card(const QString& name) {
    auto* f = new QFrame;
    f->setObjectName(name);
    f->setProperty("card", true);
    return f;
}

// A label for a number: as wide as its widest expected text in its current font, whatever
// it shows now, and aligned right, so its digits do not move as they change.
class NumberLabel : public QLabel {
public:
    explicit NumberLabel(QString widest)
        : widest_(std::move(widest)) {
        setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    }
    QSize minimumSizeHint() const override { return fitted(QLabel::minimumSizeHint()); }
    QSize sizeHint() const override { return fitted(QLabel::sizeHint()); }

private:
    QSize fitted(QSize s) const {
        const int m = contentsMargins().left() + contentsMargins().right() + 2 * margin();
        s.setWidth(std::max(s.width(), fontMetrics().horizontalAdvance(widest_) + m + 2));
        return s;
    }
    QString widest_;
};

// A text box wide enough for `widest` in its font, never much wider.
inline void fitEdit(QWidget* edit, const QString& widest, int roomFactor = 2) {
    const int w = edit->fontMetrics().horizontalAdvance(widest) + 18;
    edit->setMinimumWidth(w);
    edit->setMaximumWidth(w * roomFactor);
}

} // namespace torv::window_parts
