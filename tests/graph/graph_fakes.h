#pragma once

// Stand-ins for what the graph side talks to: the panel, the graph windows and their factory.
// They record what was asked of them.

#include "graph/graph_store.h"

#include <functional>
#include <memory>
#include <vector>

namespace torv::test {

class FakeGraphPanel : public GraphPanel {
public:
    QString reading = "0";
    QString address = "10.0.0.9";
    PerChannel<ChannelCalibration> calibrations;
    QString functionName = "GetRTStatus";
    bool polling = true;
    int pollingButton = -1; // -1 never set, else 0 or 1

    FakeGraphPanel() { calibrations[0] = {ChannelCalibration::Calibrated, 0, 3000, "kg"}; }
    QString currentReadingText() override { return reading; }
    QString cardAddress() override { return address; }
    ChannelCalibration calibration(int channel) override { return calibrations[channel]; }
    QString currentFunctionName() override { return functionName; }
    bool pollingOn() override { return polling; }
    void setPollingButtonEnabled(bool enabled) override { pollingButton = enabled ? 1 : 0; }
};

class FakeGraphView : public GraphView {
public:
    explicit FakeGraphView(int ch)
        : channel(ch) {}
    int channel;
    int draws = 0, unloads = 0;
    int topMost = -1;
    std::function<void()> onDraw; // runs inside each draw
    void DrawGraph_TORV() override {
        ++draws;
        if (onDraw) onDraw();
    }
    void Form_MyUnload() override { ++unloads; }
    void SetTopMost(bool onTop) override { topMost = onTop ? 1 : 0; }
};

class FakeGraphWindows : public GraphWindows {
public:
    std::vector<std::unique_ptr<FakeGraphView>> opened;
    int placements = 0;
    GraphView* open(int channel) override {
        opened.push_back(std::make_unique<FakeGraphView>(channel));
        return opened.back().get();
    }
    void place(GraphView* const (&)[4]) override { ++placements; }
    int screenWidth() override { return 19200; }
    int screenHeight() override { return 14400; }
};

} // namespace torv::test
