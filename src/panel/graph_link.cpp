#include "graph_link.h"

#include "frm_client.h"

namespace torv {

QString PanelGraphLink::currentReadingText() {
    return panel_.f.lblWT_BRUTTO.caption;
}

QString PanelGraphLink::cardAddress() {
    return panel_.f.TxtIP.caption;
}

ChannelCalibration PanelGraphLink::calibration(int channel) {
    ChannelCalibration c;
    if (channel != 0) return c;
    c.state = ChannelCalibration::Calibrated;
    c.actualLow = 0;
    c.actualHigh = panel_.maximumLoad();
    c.units = panel_.f.lblUnitNameWGT.caption;
    return c;
}

QString PanelGraphLink::currentFunctionName() {
    return panel_.link().req.strFunctionName;
}

bool PanelGraphLink::pollingOn() {
    return panel_.link().req.blnRepeatRequest;
}

void PanelGraphLink::setPollingButtonEnabled(bool enabled) {
    panel_.event([&] { panel_.f.cmdWeight.enabled = enabled; });
}

} // namespace torv
