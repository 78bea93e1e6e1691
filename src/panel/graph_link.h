#pragma once

// What the graph side sees of the main panel: the label with the current reading, the card's
// address and calibration, the current request and the polling button.

#include "graph/graph_view.h"

namespace torv {

class FrmClient;

class PanelGraphLink : public GraphPanel {
public:
    explicit PanelGraphLink(FrmClient& panel)
        : panel_(panel) {}

    // The net weight as the panel shows it.
    QString currentReadingText() override;
    QString cardAddress() override;
    // The card feeds channel 0: it is calibrated from zero to the card's maximum load. The
    // other channels have no calibration.
    ChannelCalibration calibration(int channel) override;
    QString currentFunctionName() override;
    bool pollingOn() override;
    void setPollingButtonEnabled(bool enabled) override;

private:
    FrmClient& panel_;
};

} // namespace torv
