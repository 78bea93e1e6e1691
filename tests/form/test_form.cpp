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
