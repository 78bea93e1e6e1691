#pragma once

// The form model of a real-time graph window, frmGraph: the plot and its back copy, the value
// and time scales, the pop-ups and marker of a selected point, the reading boxes and the
// commands. The constructor gives the designed state; geometry is in twips.

#include "form/picture.h"

namespace torv {

struct FrmGraphForm : FormModel {
    FrmGraphForm();

    // Plot, scales and the selected point
    TORV_CONTROL(lblChanNumber);
    TORV_CONTROL(Frame1); // the visible part of the plot
    TORV_PICTURE(pctYscale);
    TORV_PICTURE(pctGraph);  // wider than Frame1, scrolled by its left
    TORV_PICTURE(pctGraph2); // back copy of the plot, never shown
    TORV_PICTURE(pctXscale);
    TORV_PICTURE(pctA2D);  // value pop-up
    TORV_PICTURE(pctTime); // time pop-up
    TORV_PICTURE(pctPoint);
    TORV_CONTROL(ShpPoint); // marker of the selected point, on the plot
    TORV_CONTROL(lblAutoSz);

    // Scales
    TORV_CONTROL(cbDrawYscale, QStringLiteral("DrawYscale"));
    TORV_CONTROL(cbDrawXscale, QStringLiteral("DrawXscale"));
    TORV_CONTROL(txtYsteps);
    TORV_CONTROL(TxtXsteps);
    TORV_CONTROL(txtTimerIntrvl);
    TORV_CONTROL_ARRAY(OptValueType, 1, 2);

    // Readings
    TORV_CONTROL(lblCur, QStringLiteral("Current reading"));
    TORV_CONTROL(txtCur);
    TORV_CONTROL(lblCurIndex, QStringLiteral("CurrentIndex"));
    TORV_CONTROL(txtCurIndex);
    TORV_CONTROL(lblTime, QStringLiteral("Time(ms)"));
    TORV_CONTROL(txtTime);
    TORV_CONTROL(TxtMin);
    TORV_CONTROL(txtMax);
    TORV_CONTROL(txtMinRange);
    TORV_CONTROL(txtMaxRange);
    TORV_CONTROL(LblLeftIndex, QStringLiteral("LeftIndex"));
    TORV_CONTROL(txtLeftIndex);
    TORV_CONTROL(lblRightIndex, QStringLiteral("RightIndex"));
    TORV_CONTROL(txtRightIndex);
    TORV_CONTROL(lblLeftpct, QStringLiteral("Leftpct"));
    TORV_CONTROL(txtLeftpct);
    TORV_CONTROL(lblMinmaxCouner, QStringLiteral("MinMaxCounter"));
    TORV_CONTROL(txtMinMaxCouner);
    TORV_CONTROL(lblBandRadius, QStringLiteral("Band Radius"));
    TORV_CONTROL(txtMinDif);
    TORV_CONTROL(UpDnMinDif);

    // Statistics shown by "More"
    TORV_CONTROL(lblMin, QStringLiteral("Min reading"));
    TORV_CONTROL(TxtMinReading);
    TORV_CONTROL(lblMinIndex, QStringLiteral("Time(ms)"));
    TORV_CONTROL(TxtMinTime);
    TORV_CONTROL(txtMinIndex);
    TORV_CONTROL(lblMax, QStringLiteral("Max reading"));
    TORV_CONTROL(TxtMaxReading);
    TORV_CONTROL(lblMaxIndex, QStringLiteral("Time(ms)"));
    TORV_CONTROL(TxtMaxTime);
    TORV_CONTROL(txtMaxIndex);
    TORV_CONTROL(txtGainBiasResolCaptionGraph);
    TORV_CONTROL(txtGainBiasResolDataGraph);

    // Commands
    TORV_CONTROL(cmdMore, QStringLiteral("More"));
    TORV_CONTROL(cmdNewStart, QStringLiteral("Reset"));
    TORV_CONTROL(cmdReset, QStringLiteral("Reset"));
    TORV_CONTROL(cmdStop, QStringLiteral("Stop"));
    TORV_CONTROL(cmdLoad, QStringLiteral("Load"));
    TORV_CONTROL(cmdSave, QStringLiteral("Save"));
    TORV_CONTROL(cmndLt);
    TORV_CONTROL(cmndRt);
    TORV_CONTROL(cmndCpyG2toG, QStringLiteral("CpyG2toG"));
    TORV_CONTROL(cmndDoGraph, QStringLiteral("DoGraph"));
    TORV_CONTROL(SldrValue);
    TORV_CONTROL(CommonDialog1);

    // The window kept above all others (applied by the window without moving, sizing or
    // activating it).
    bool topMost = false;
    // Window geometry in twips: the window follows these when they change.
    int windowLeft = 0, windowTop = 0, windowWidth = 0, windowHeight = 0;
};

// The text the pop-ups and the plot's tool tip use.
inline const QString PopupMinValue = QStringLiteral("Min Value = ");
inline const QString PopupMaxValue = QStringLiteral("Max Value = ");
inline const QString PopupTime = QStringLiteral("Time(ms)= ");

} // namespace torv
