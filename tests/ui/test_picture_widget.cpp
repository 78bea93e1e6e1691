// The picture widget paints a picture's display list onto its backing image, only what was
// added since the last refresh, and starts over after a Cls. The coalescer runs a burst of
// requests once.

#include "ui/coalescer.h"
#include "ui/picture_widget.h"

#include <QTest>
#include <gtest/gtest.h>

using namespace torv;

namespace {

QRgb at(const PictureWidget& w, int x, int y) {
    return w.image().pixel(x, y) & 0xFFFFFF;
}

TEST(PictureWidget, PaintsOnlyWhatWasAddedAndStartsOverAfterCls) {
    Picture pic;
    pic.width = 100 * 15;
    pic.height = 50 * 15;
    pic.backColor = color::White;
    PictureWidget w(pic);
    ASSERT_EQ(w.image().size(), QSize(100, 50));
    EXPECT_EQ(at(w, 10, 10), 0xFFFFFFu);

    for (int i = 0; i < 100; ++i)
        pic.PSet(i * 15, 0, color::Black);
    pic.Line(0, 20 * 15, 99 * 15, 20 * 15, color::Red); // 15 twips to a pixel: row 20
    EXPECT_TRUE(w.refresh());
    EXPECT_EQ(w.opsPainted(), 101);
    EXPECT_EQ(at(w, 50, 20), 0xFF0000u) << "pure red stays pure red on screen";
    EXPECT_EQ(at(w, 50, 0), 0x000000u);

    pic.Line(0, 40 * 15, 99 * 15, 40 * 15, color::Blue);
    EXPECT_TRUE(w.refresh());
    EXPECT_EQ(w.opsPainted(), 102) << "one more operation costs one more draw";
    EXPECT_FALSE(w.refresh()) << "nothing new, nothing drawn";
    EXPECT_EQ(at(w, 50, 40), 0x0000FFu);

    pic.Cls();
    pic.PSet(0, 0, color::Green);
    EXPECT_TRUE(w.refresh());
    EXPECT_EQ(at(w, 50, 20), 0xFFFFFFu) << "the cleared line is gone";
    EXPECT_EQ(at(w, 0, 0), 0x00FF00u);
}

TEST(PictureWidget, ACopyShowsTheSourceAsItWasAtTheCopy) {
    Picture back, plot;
    back.width = plot.width = 40 * 15;
    back.height = plot.height = 40 * 15;
    back.backColor = color::Black;
    back.Line(0, 10 * 15, 39 * 15, 10 * 15, color::Green);
    plot.PaintPicture(back, 0, 0);
    back.Cls();
    PictureWidget w(plot);
    EXPECT_EQ(at(w, 20, 10), 0x00FF00u);
    EXPECT_EQ(at(w, 20, 30), 0x000000u) << "the copy brings the source's background";
}

TEST(Coalescer, ABurstOfRequestsRunsOnceAndFlushRunsAtOnce) {
    int runs = 0;
    Coalescer c([&] { ++runs; }, 5);
    for (int i = 0; i < 50; ++i)
        c.request();
    EXPECT_TRUE(c.pending());
    EXPECT_EQ(runs, 0);
    QTest::qWait(40);
    EXPECT_EQ(runs, 1);
    c.request();
    c.flush();
    EXPECT_EQ(runs, 2);
    EXPECT_FALSE(c.pending());
    c.flush(); // nothing pending: nothing runs
    EXPECT_EQ(runs, 2);
}

} // namespace
