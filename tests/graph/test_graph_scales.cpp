// The value and time scales of a graph window as what they draw, and where a pop-up goes.

#include "graph/graph_scales.h"

#include <gtest/gtest.h>

using namespace torv;

namespace {

struct Pics : FormModel {
    TORV_PICTURE(plot);
    TORV_PICTURE(scale);
    TORV_CONTROL(lblAutoSz);
    Pics() {
        plot.width = 8000, plot.height = 4000;
        scale.width = 1000, scale.height = 4000;
    }
};

std::string ops(const Picture& p) {
    return describe(p.displayList()).toStdString();
}

} // namespace

TEST(ValueScale, RangeByTheSpanRuleAndThePercentageMargin) {
    struct Row {
        int n;
        double low, high, percentage, min, max;
    } rows[] = {
        {10, 100, 103, 10, 95, 108},   // span 3 <= 10: half the divisions either side
        {10, 100, 110, 10, 95, 115},   // span equal to the divisions still takes that rule
        {10, 0, 1000, 10, -200, 1200}, // margin 10 x 0.02 = 0.2 of the span
        {4, 0, 1000, 5, -100, 1100},   // margin 0.1
        {0, 0, 100, 10, -20, 120},     // no divisions: the margin rule
        {10, 500, 400, 10, 495, 405},  // limits the wrong way round: as they come
    };
    for (const Row& r : rows) {
        const ValueRange got = valueScaleRange(r.n, r.low, r.high, r.percentage);
        EXPECT_DOUBLE_EQ(got.minimum, r.min) << r.n << " " << r.low << " " << r.high;
        EXPECT_DOUBLE_EQ(got.maximum, r.max) << r.n << " " << r.low << " " << r.high;
    }
    // The button's own rule: a fixed tenth, and a minimum kept when the span is not positive.
    const ValueRange b = buttonScaleRange(0, 1000, 7);
    EXPECT_EQ(b.minimum, -100);
    EXPECT_EQ(b.maximum, 1100);
    const ValueRange flat = buttonScaleRange(50, 50, 7);
    EXPECT_EQ(flat.minimum, 7);
    EXPECT_EQ(flat.maximum, 8);
}

TEST(ValueScale, DrawsGridTicksLabelsAndLimitLines) {
    Pics p;
    p.plot.drawWidth = 3;
    p.scale.Line(1, 1, 2, 2); // an old scale is cleared
    ValueScaleLook look;
    look.channelCaption = QStringLiteral("0");
    look.gridColor = 0xC0C0C0;
    drawValueScale(p.plot, p.scale, 4, valueScaleRange(4, 0, 1000, 10), 1000, 0, look);
    // -200..1200 in 4 divisions: Int(1400 / 4) = 350 a division, 1000 twips apart.
    EXPECT_EQ(ops(p.scale), "point (200,0) c=16777215 w=1\n"
                            "text (200,0) c=0 \"0\"\n"
                            "line (800,1000)-(1000,1000) c=16711680 w=1\n"
                            "point (60,1000) c=16777215 w=1\n"
                            "text (60,1000) c=128 \" 850.0\"\n"
                            "line (800,2000)-(1000,2000) c=16711680 w=1\n"
                            "point (60,2000) c=16777215 w=1\n"
                            "text (60,2000) c=128 \" 500.0\"\n"
                            "line (800,3000)-(1000,3000) c=16711680 w=1\n"
                            "point (60,3000) c=16777215 w=1\n"
                            "text (60,3000) c=128 \" 150.0\"");
    EXPECT_EQ(ops(p.plot), "line (0,1000)-(8000,1000) c=12632256 w=1\n"
                           "line (0,2000)-(8000,2000) c=12632256 w=1\n"
                           "line (0,3000)-(8000,3000) c=12632256 w=1\n"
                           "line (0,571)-(8000,571) c=255 w=1\n"
                           "line (0,3429)-(8000,3429) c=16711680 w=1");
    EXPECT_EQ(p.plot.drawWidth, 3) << "the plot's draw width is restored";
}

TEST(TimeScale, TicksOverThreeWidthsAndTheDivisionCaption) {
    Pics p;
    p.scale.width = 6000;
    p.scale.height = 450;
    p.scale.fontSize = 8;
    TimeScaleInput in;
    in.divisions = 6;
    in.samplingMs = 50;
    in.backWidth = 24000;
    in.xStep = 24;
    in.tickHeight = 90;
    const float spd = drawTimeScale(p.scale, in, 128);
    EXPECT_FLOAT_EQ(spd, 50.0f * 24000 / (24 * 1000 * 6));
    int ticks = 0;
    QStringList texts;
    double lastTickX = -1, firstTextY = -1, lastTextY = -1;
    for (const DrawOp& op : p.scale.displayList()) {
        EXPECT_EQ(op.color, 128u);
        if (op.kind == DrawOp::Kind::Line) ++ticks, lastTickX = op.x1;
        if (op.kind == DrawOp::Kind::Text) {
            if (texts.isEmpty()) firstTextY = op.y1;
            texts << op.text, lastTextY = op.y1;
        }
    }
    EXPECT_EQ(ticks, 16) << "i = 0 to 3 x (6 - 1)";
    EXPECT_EQ(lastTickX, 15000);
    ASSERT_EQ(texts.size(), 16);
    EXPECT_EQ(texts[0], "   1 Division = 8.333 sec.");
    EXPECT_EQ(firstTextY, 90) << "the first caption is under the ticks, at the left";
    EXPECT_GT(lastTextY, p.scale.height) << "the later ones fall out of the picture";

    // No divisions is one: a single tick, the whole back picture in one division.
    in.divisions = 0;
    drawTimeScale(p.scale, in, 128);
    EXPECT_EQ(ops(p.scale), "line (0,0)-(0,90) c=128 w=1\n"
                            "text (0,90) c=128 \"   1 Division = 50 sec.\"");
}

TEST(SelectedPoint, PopupStaysLeftOfTheLimitAndShowsItsText) {
    struct Row {
        double myLeft, width, maxWidth, left;
    } rows[] = {
        {3799, 1200, 5000, 3799},
        {3800, 1200, 5000, 3750}, // would end on the limit: 50 left of limit - width
    };
    for (const Row& r : rows)
        EXPECT_EQ(popupLeft(r.myLeft, r.width, r.maxWidth), r.left) << r.myLeft;

    Pics p;
    p.plot.Line(0, 0, 1, 1);
    SetSelectedPoint(p.plot, p.lblAutoSz, 1000, 4800, 100, "Max Value = ", "1250", 6000);
    EXPECT_TRUE(p.plot.visible);
    EXPECT_EQ(p.lblAutoSz.caption, "Max Value = 1250");
    EXPECT_EQ(p.plot.width, 1200);
    EXPECT_EQ(p.plot.left, 6000 - 1200 - 50);
    EXPECT_EQ(p.plot.top, 100);
    EXPECT_EQ(ops(p.plot), "point (10,10) c=0 w=1\n"
                           "text (10,10) c=0 \"Max Value = 1250\"");
}
