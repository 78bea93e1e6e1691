#include "frm_start_form.h"

#include "base/colors.h"

namespace torv {

FrmStartForm::FrmStartForm() {
    caption = QStringLiteral("Start");
    for (int ch = 0; ch <= 3; ++ch)
        cckChan[ch].caption = QStringLiteral("Channel %1").arg(ch);
    OptValueType[1].caption = QStringLiteral("Decimal");
    OptValueType[2].caption = QStringLiteral("Plain");

    txtCardName.toolTip = QStringLiteral("This is a part of the Card name");
    txtNumberOfPoints.toolTip = QStringLiteral("How much points to show on the screen");
    txtSampling.toolTip = QStringLiteral("Timer interval in ms");
    txtProcentMinMax.toolTip = QStringLiteral("What minimum percent change of Min or Max to fix");
    txtMinMaxMiss.toolTip = QStringLiteral("How much number of new Min or new Max to ignore");
    txtMnMxTime.toolTip = QStringLiteral("How much seconds to ignore");
    txtBandRadius.toolTip =
        QStringLiteral("How much points on the left side & on the right point ");
    txtRound.toolTip = QStringLiteral("How much zeros in the numbers on time scale graph");
    txtTimeDivision.toolTip = QStringLiteral("Quolity of numbers on the time scale graph");

    // Text boxes show a valid entry in system colour 20; the card's own boxes are read-only.
    forEach([](Control& c) {
        if (c.name.startsWith(QLatin1String("txt"))) c.backColor = color::Highlight3D;
    });
    txtMaster.enabled = txtModule.enabled = false;
    txtMaster.backColor = txtModule.backColor = color::ButtonFace;
}

} // namespace torv
