#pragma once

// The geometry of a graph window: the value scale on the left of the plot (its range, grid,
// ticks, labels and limit lines), the time scale under it, the vertical position of a value
// and the pop-up of a selected point. Everything here works on the pictures it is given and on
// plain numbers, so it can be checked operation by operation.

#include "base/integers.h"
#include "form/picture.h"

#include <QString>

namespace torv {

// The value range the plot maps onto its height.
struct ValueRange {
    double minimum = 0;
    double maximum = 0;
    double span() const { return maximum - minimum; }
};

// The range of the value scale for `divisions` divisions between `low` and `high`: a span of
// at most `divisions` is widened by half the divisions on either side, any other is padded by
// percentage x 0.02 of itself on either side.
ValueRange valueScaleRange(int divisions, double low, double high, double percentage);

// The range of the DrawYscale button: a fixed tenth of the span on either side; with no
// positive span the current minimum stays and the maximum is one above it.
ValueRange buttonScaleRange(double low, double high, double currentMinimum);

// The vertical position of `value` on a plot `height` twips high.
Int32 plotY(double value, const ValueRange& range, double height);

struct ValueScaleLook {
    int valueType = 2;      // 2: numbered labels "###0.0"; anything else: "0.00000" labels
    QString channelCaption; // printed at the top of the scale
    color::Color gridColor = 0xC0C0C0;
    double gridLeft = 0; // where the grid lines start on the plot
};

// Draws the value scale for `range`: clears `scale`, prints the channel caption, then for every
// inner division a grid line across `plot`, a blue tick and a dark red label on `scale`, and
// finally the high-limit line in red and the low-limit line in blue across `plot`. A division
// count of 0 is taken as 1. The plot's draw width is 1 while drawing and is restored after.
void drawValueScale(Picture& plot, Picture& scale, int divisions, const ValueRange& range,
                    double highLimit, double lowLimit, const ValueScaleLook& look);

// The label of the value scale at value `v`, right-aligned in six places.
QString valueScaleLabel(double v, int valueType);

struct TimeScaleInput {
    int divisions = 6;      // 0 is taken as 1
    double samplingMs = 50; // the set-up sampling period
    double backWidth = 0;   // width of the plot's back picture, twips
    double xStep = 1;       // twips between two readings
    int xMode = 1;          // 1: only the "1 Division" caption; otherwise numbered ticks
    Int32 firstDivision = 0;
    double tickHeight = 90;
};

// Draws the time scale: clears `scale`, ticks every scale width / divisions over three scale
// widths, and the caption "   1 Division = ... sec." (X mode 1) or the time of every tick.
// Returns the seconds per division.
float drawTimeScale(Picture& scale, const TimeScaleInput& in, color::Color scaleColor);

// Where a pop-up `width` wide asked at `myLeft` goes: there when it ends before `maxWidth`,
// otherwise 50 left of maxWidth - width.
double popupLeft(double myLeft, double width, double maxWidth);

// Shows a pop-up picture with `name` followed by `value`: `textWidth` is the width of that text
// in twips (what the hidden auto-size label measures). The label carries the text.
void SetSelectedPoint(Picture& box, Control& lblAutoSz, double textWidth, double myLeft,
                      double myTop, const QString& name, const QString& value, double maxWidth);

} // namespace torv
