#include "frm_graph_form.h"

namespace torv {

namespace {
constexpr color::Color PopupBack = 0xE1FFFF; // pale yellow, RGB(255, 255, 225)

void place(Control& c, int left, int top, int width, int height) {
    c.left = left, c.top = top, c.width = width, c.height = height;
}
} // namespace

FrmGraphForm::FrmGraphForm() {
    caption = QStringLiteral("Real-Time Graph ");

    lblChanNumber.caption = QStringLiteral("0");
    lblChanNumber.visible = false;

    // The scale on the left, the visible part of the plot, the time scale under it.
    place(pctYscale, 0, 0, 1200, 5400);
    pctYscale.fontName = QStringLiteral("Courier New");
    place(Frame1, 1200, 0, 12000, 5400);
    place(pctGraph, 0, 0, 24000, 5400);
    pctGraph.toolTip = QStringLiteral("Click to get local minimum or maximum");
    place(pctGraph2, 0, 0, 24000, 5400);
    pctGraph2.visible = false;
    place(pctXscale, 0, 0, 24000, 285); // under Frame1, scrolled with nothing
    pctXscale.fontName = QStringLiteral("Arial");
    for (Picture* p : {&pctA2D, &pctTime}) {
        place(*p, 0, 100, 1200, 330);
        p->backColor = PopupBack;
        p->visible = false;
    }
    place(pctPoint, 0, 0, 120, 120);
    pctPoint.visible = false;
    place(ShpPoint, 0, 0, 180, 180);
    ShpPoint.backColor = color::Red;
    ShpPoint.visible = false;
    lblAutoSz.visible = false;

    txtYsteps.caption = QStringLiteral("10");
    TxtXsteps.caption = QStringLiteral("6");
    txtTimerIntrvl.caption = QStringLiteral("50");
    txtTimerIntrvl.toolTip = QStringLiteral("Timer interval in ms");
    OptValueType[1].caption = QStringLiteral("Decimal");
    OptValueType[2].caption = QStringLiteral("Plain");
    OptValueType[2].value = 1;

    for (Control* t : {&txtCur,          &txtCurIndex, &txtTime,       &TxtMin,        &txtMax,
                       &txtMinRange,     &txtMaxRange, &txtLeftIndex,  &txtRightIndex, &txtLeftpct,
                       &txtMinMaxCouner, &txtMinDif,   &TxtMinReading, &TxtMinTime,    &txtMinIndex,
                       &TxtMaxReading,   &TxtMaxTime,  &txtMaxIndex,   &txtYsteps,     &TxtXsteps,
                       &txtTimerIntrvl}) {
        t->backColor = color::White;
    }
    txtCur.fontSize = 12;
    txtCur.bold = true;
    txtMinMaxCouner.caption = QStringLiteral("0");
    txtMinDif.caption = QStringLiteral("0");

    // The statistics appear with "More".
    for (Control* c : {&lblMin, &TxtMinReading, &lblMinIndex, &TxtMinTime, &txtMinIndex, &lblMax,
                       &TxtMaxReading, &lblMaxIndex, &TxtMaxTime, &txtMaxIndex,
                       &txtGainBiasResolCaptionGraph, &txtGainBiasResolDataGraph})
        c->visible = false;
    for (Control* c : {&txtGainBiasResolCaptionGraph, &txtGainBiasResolDataGraph})
        c->fontName = QStringLiteral("Fixed Miriam Transparent");
    CommonDialog1.visible = false;
}

} // namespace torv
