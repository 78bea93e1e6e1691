#pragma once

// Shows a Picture of a form model. It keeps a backing image and, on each refresh, draws only
// the operations added to the picture's display list since the last refresh (all of them again
// after a Cls), so drawing one more reading costs the same however many are already drawn.
// 15 twips make a pixel.

#include "form/picture.h"

#include <QImage>
#include <QWidget>

namespace torv {

inline constexpr double TwipsPerPixel = 15.0;

class PictureWidget : public QWidget {
public:
    explicit PictureWidget(const Picture& picture, QWidget* parent = nullptr);

    // Brings the backing image up to date with the display list and schedules a repaint when
    // anything was drawn. Returns true when it drew.
    bool refresh();
    const QImage& image() const { return image_; }
    const Picture& picture() const { return *picture_; }
    // Operations drawn so far, over the widget's life.
    long long opsPainted() const { return opsPainted_; }

protected:
    void paintEvent(QPaintEvent*) override;

private:
    void startOver(QSize size);
    const Picture* picture_;
    QImage image_;
    std::uint64_t clears_ = ~std::uint64_t{0};
    std::size_t drawn_ = 0;
    color::Color back_ = 0;
    long long opsPainted_ = 0;
};

// Draws display-list operations with a painter whose origin is the picture's top left corner.
void paintOps(QPainter& p, const std::vector<DrawOp>& ops, std::size_t from = 0);

} // namespace torv
