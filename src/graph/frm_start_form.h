#pragma once

// The form model of the graph set-up form, FrmStart: the channel choice, the card's name and
// the graph parameters, with the two commands. The constructor gives the designed state.

#include "form/control.h"

namespace torv {

struct FrmStartForm : FormModel {
    FrmStartForm();

    // The card
    TORV_CONTROL(lblMaster, QStringLiteral("Master"));
    TORV_CONTROL(txtMaster);
    TORV_CONTROL(lblModule, QStringLiteral("Module"));
    TORV_CONTROL(txtModule);
    TORV_CONTROL(lblModuleName, QStringLiteral("ModuleName"));
    TORV_CONTROL(lblCardName, QStringLiteral("Card#:"));
    TORV_CONTROL(txtLeftCardName, QStringLiteral("LeftCardName"));
    TORV_CONTROL(txtCardName);
    TORV_CONTROL(txtRightCardName, QStringLiteral("RightCardName"));

    // Channels
    TORV_CONTROL(FraChannels, QStringLiteral("Channels"));
    TORV_CONTROL_ARRAY(cckChan, 0, 3);

    // Graph parameters, each box with its label
    TORV_CONTROL(lblNumberOfPoints, QStringLiteral("Number of Points (Screen)"));
    TORV_CONTROL(txtNumberOfPoints);
    TORV_CONTROL(lblSampling, QStringLiteral("Sampling Rate (ms)"));
    TORV_CONTROL(txtSampling);
    TORV_CONTROL(lblProcentMinMax, QStringLiteral("Percent MinMax %"));
    TORV_CONTROL(txtProcentMinMax);
    TORV_CONTROL(lblMinMaxMiss, QStringLiteral("MinMax Ignore (N)"));
    TORV_CONTROL(txtMinMaxMiss);
    TORV_CONTROL(lblMnMxTime, QStringLiteral("Ignore Time (ms.)"));
    TORV_CONTROL(txtMnMxTime);
    TORV_CONTROL(lblBandRadius, QStringLiteral("Band Radius"));
    TORV_CONTROL(txtBandRadius);
    TORV_CONTROL(lblRound, QStringLiteral("Scale Round"));
    TORV_CONTROL(txtRound);
    TORV_CONTROL(lblTimeDivision, QStringLiteral("Time Division"));
    TORV_CONTROL(txtTimeDivision);

    // Number type: option 1 shows readings with decimals, option 2 as plain numbers
    TORV_CONTROL(FraNumberType, QStringLiteral("Number Type"));
    TORV_CONTROL_ARRAY(OptValueType, 1, 2);

    // Commands
    TORV_CONTROL(cmdSaveCnfg, QStringLiteral("SaveCnfg"));
    TORV_CONTROL(CmdShowGraph, QStringLiteral("Show Graph"));
};

} // namespace torv
