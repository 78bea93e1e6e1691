// Form models: controls declared once are found by name in declaration order, arrays are named
// by index and checked; pictures keep what was drawn as a display list.

#include "form/picture.h"
#include "support/run_time_errors.h"

#include <gtest/gtest.h>

using namespace torv;

namespace {

struct SampleForm : FormModel {
    TORV_CONTROL(cmdGo, QStringLiteral("Go"));
    TORV_CONTROL_ARRAY(cckChan, 0, 2);
    TORV_PICTURE(pctPlot);
    TORV_CONTROL(lblLast);
};

TEST(FormModel, ControlsRegisterThemselvesInDeclarationOrder) {
    SampleForm f;
    QStringList names;
    f.forEach([&](Control& c) { names << c.name; });
    EXPECT_EQ(names.join(' '), "cmdGo cckChan_0 cckChan_1 cckChan_2 pctPlot lblLast");
    EXPECT_EQ(f.cmdGo.caption, "Go");
    EXPECT_EQ(f.find("cckChan_1"), &f.cckChan[1]);
    EXPECT_EQ(f.find("pctPlot"), &f.pctPlot);
    EXPECT_EQ(f.find("cckChan_3"), nullptr);
    EXPECT_EQ(test::errorOf([&] { f.cckChan[3].value = 1; }), 9) << "cckChan(3) is outside";
}

TEST(Picture, DrawingAppendsToTheDisplayListAndMovesTheCurrentPoint) {
    SampleForm f;
    Picture& p = f.pctPlot;
    p.foreColor = 128;
    p.drawWidth = 2;
    p.Line(0, 10, 200, 10, color::Red);
    p.LineTo(300, 40); // from the end of the last line, in the fore colour
    p.PSet(5, 6);
    p.currentX = 30;
    p.fontSize = 10;
    p.Print("12.5");
    p.Print("next");
    EXPECT_EQ(describe(p.displayList()).toStdString(), "line (0,10)-(200,10) c=255 w=2\n"
                                                       "line (200,10)-(300,40) c=128 w=2\n"
                                                       "point (5,6) c=128 w=2\n"
                                                       "text (30,6) c=128 \"12.5\"\n"
                                                       "text (0,236) c=128 \"next\"");
    EXPECT_EQ(p.currentX, 0);
    EXPECT_EQ(p.currentY, 466);
}

TEST(Picture, ClsClearsTheListAndACopyKeepsWhatTheSourceShowedThen) {
    SampleForm f;
    Picture back;
    back.width = 600;
    back.height = 300;
    back.Line(0, 0, 600, 300, color::Blue);
    Picture& p = f.pctPlot;
    p.Line(1, 1, 2, 2);
    const auto clears = p.clearCount();
    p.Cls();
    EXPECT_TRUE(p.displayList().empty());
    EXPECT_EQ(p.clearCount(), clears + 1);
    EXPECT_EQ(p.currentX + p.currentY, 0);

    p.PaintPicture(back, 15, 30);
    back.Line(0, 300, 600, 0, color::Red); // drawn after the copy: not part of it
    ASSERT_EQ(p.displayList().size(), 1u);
    const DrawOp& copy = p.displayList()[0];
    EXPECT_EQ(describe(copy), "copy (15,30) 600x300 of 1 ops");
    EXPECT_EQ(describe(*copy.source), "line (0,0)-(600,300) c=16711680 w=1");
}

} // namespace
