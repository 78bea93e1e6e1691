#include "graph_scales.h"

#include "base/format.h"
#include "base/numeric.h"

#include <cmath>

namespace torv {

namespace {
constexpr color::Color ScaleTickColor = color::Blue;
constexpr color::Color ScaleLabelColor = 128; // dark red
constexpr color::Color HighLimitColor = color::Red;
constexpr color::Color LowLimitColor = color::Blue;
} // namespace

ValueRange valueScaleRange(int divisions, double low, double high, double percentage) {
    const double margin = percentage * 0.02;
    const double span = high - low;
    const double n = divisions;
    if (span <= n) return {low - n / 2, high + n / 2};
    return {low - span * margin, high + span * margin};
}

ValueRange buttonScaleRange(double low, double high, double currentMinimum) {
    const double d = high - low;
    if (d <= 0) return {currentMinimum, currentMinimum + 1};
    return {low - 0.1 * d, high + 0.1 * d};
}

Int32 plotY(double value, const ValueRange& range, double height) {
    return CLng((1 - divide(value - range.minimum, range.span())) * height);
}

QString valueScaleLabel(double v, int valueType) {
    // Any value type other than 2 shows a constant that is never set from the scale.
    const float unnumbered = 0;
    const QString text = valueType == 2 ? Format(v, QStringLiteral("###0.0"))
                                        : Format(unnumbered, QStringLiteral("0.00000"));
    return Format(text, QStringLiteral("@@@@@@"));
}

void drawValueScale(Picture& plot, Picture& scale, int divisions, const ValueRange& range,
                    double highLimit, double lowLimit, const ValueScaleLook& look) {
    const int savedWidth = plot.drawWidth;
    plot.drawWidth = 1;
    const int n = divisions == 0 ? 1 : divisions;
    const double valuePerDivision = std::floor(divide(range.span(), n));
    const Int16 pixelStep = CInt(plot.height / n);

    scale.Cls();
    const Int16 x0 = CInt(scale.width * 0.2);
    const Int16 labelX = CInt(x0 * 0.4 - 20);
    scale.PSet(x0, 0, color::White);
    scale.Print(look.channelCaption);

    for (int i = 1; i <= n - 1; ++i) {
        const double y = double(pixelStep) * i;
        plot.Line(look.gridLeft, y, plot.width, y, look.gridColor);
        scale.Line(scale.width - x0, y, scale.width, y, ScaleTickColor);
        scale.foreColor = ScaleLabelColor;
        scale.PSet(labelX + 0, y, color::White);
        scale.Print(valueScaleLabel((n - i) * valuePerDivision + range.minimum, look.valueType));
    }

    plot.Line(0, plotY(highLimit, range, plot.height), plot.width,
              plotY(highLimit, range, plot.height), HighLimitColor);
    plot.Line(0, plotY(lowLimit, range, plot.height), plot.width,
              plotY(lowLimit, range, plot.height), LowLimitColor);
    plot.drawWidth = savedWidth;
}

float drawTimeScale(Picture& scale, const TimeScaleInput& in, color::Color scaleColor) {
    const int n = in.divisions == 0 ? 1 : in.divisions;
    const Int16 divisionWidth = CInt(scale.width / n);
    const float secondsPerDivision =
        static_cast<float>(divide(in.samplingMs * in.backWidth, in.xStep * 1000.0 * n));

    scale.Cls();
    scale.foreColor = scaleColor;
    const int last = 3 * (n - 1);
    for (int i = 0; i <= last; ++i) {
        const double x = double(divisionWidth) * i;
        scale.Line(x, 0, x, in.tickHeight);
    }
    // The caption starts under the ticks at the left; it is printed once per tick, and every
    // later print falls a line lower, out of the picture.
    scale.currentX = 0;
    scale.currentY = in.tickHeight;
    for (int i = 0; i <= last; ++i) {
        if (in.xMode == 1) {
            const double rounded = roundHalfEven(double(secondsPerDivision) * 1000.0) / 1000.0;
            scale.Print(QStringLiteral("   1 Division = ") + numberText(rounded) +
                        QStringLiteral(" sec."));
        } else {
            scale.currentX = double(divisionWidth) * i;
            scale.currentY = 0;
            const float t = static_cast<float>(in.firstDivision + i) * secondsPerDivision;
            scale.Print(QString::number(double(t), 'g', 7));
        }
    }
    return secondsPerDivision;
}

double popupLeft(double myLeft, double width, double maxWidth) {
    if (myLeft + width < maxWidth) return myLeft;
    return maxWidth - width - 50;
}

void SetSelectedPoint(Picture& box, Control& lblAutoSz, double textWidth, double myLeft,
                      double myTop, const QString& name, const QString& value, double maxWidth) {
    box.visible = true;
    lblAutoSz.caption = name + value;
    lblAutoSz.width = static_cast<int>(std::lround(textWidth));
    box.width = lblAutoSz.width + 200;
    box.left = static_cast<int>(std::lround(popupLeft(myLeft, box.width, maxWidth)));
    box.top = static_cast<int>(std::lround(myTop));
    box.Cls();
    box.foreColor = color::Black;
    box.PSet(10, 10, color::Black);
    box.Print(lblAutoSz.caption);
}

} // namespace torv
