#pragma once

// A picture box as the graph logic sees it: geometry in twips (inherited from Control; `left`
// moves when a plot scrolls), fore colour, draw width, current point, font, and an ordered
// display list of everything drawn since the last Cls. The logic only appends to the list; the
// window paints what was added since its last paint, and starts over when the list was cleared.

#include "form/control.h"

#include <QString>
#include <cstdint>
#include <memory>
#include <vector>

namespace torv {

struct DrawOp {
    enum class Kind { Line, Point, Text, Copy };
    Kind kind = Kind::Line;
    double x1 = 0, y1 = 0, x2 = 0, y2 = 0; // twips; a text or point uses (x1, y1)
    color::Color color = color::Black;
    int width = 1;   // draw width in pixels
    QString text;    // Text
    QString font;    // Text: font name, empty for the window's own
    double size = 0; // Text: point size
    bool bold = false;
    // Copy: what the source picture held at the time, drawn at (x1, y1) on a background of its
    // own colour, clipped to (x2, y2) wide and high.
    std::shared_ptr<const std::vector<DrawOp>> source;
    color::Color sourceBack = color::White;

    bool operator==(const DrawOp& o) const;
};

// "line (0,10)-(200,10) c=255 w=1", "text (30,0) c=16777215 \"12.5\"": for test messages.
QString describe(const DrawOp& op);
QString describe(const std::vector<DrawOp>& ops);

struct Picture : Control {
    Picture() = default;
    Picture(FormModel* form, const char* controlName)
        : Control(form, controlName) {
        backColor = color::White;
    }

    int drawWidth = 1;
    double currentX = 0, currentY = 0;

    const std::vector<DrawOp>& displayList() const { return ops_; }
    // Bumped by every Cls, so a painter knows to start over.
    std::uint64_t clearCount() const { return clears_; }

    // Clears the display list; the current point returns to (0, 0).
    void Cls();
    // Draw in the picture's fore colour.
    static constexpr color::Color UseForeColor = 0xFFFFFFFFu;

    // A line in `c`; the current point moves to its end.
    void Line(double x1, double y1, double x2, double y2, color::Color c = UseForeColor);
    // A line from the current point.
    void LineTo(double x2, double y2, color::Color c = UseForeColor);
    void PSet(double x, double y, color::Color c = UseForeColor);
    // Prints at the current point in the fore colour and the picture's font; the current point
    // goes to the start of the next line.
    void Print(const QString& text);
    // Copies what `src` shows now to (x, y) of this picture.
    void PaintPicture(const Picture& src, double x, double y);

    // The height of one printed line in twips for the picture's font.
    double TextHeight() const;

private:
    color::Color pick(color::Color c) const { return c == UseForeColor ? foreColor : c; }
    std::vector<DrawOp> ops_;
    std::uint64_t clears_ = 0;
};

} // namespace torv
