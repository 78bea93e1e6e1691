#pragma once

// How the graph side reaches what it does not own: the graph windows (drawn by the window
// layer), the set-up form, and the main panel. Each is a small interface implemented above
// this folder, so the graph logic never includes the window layer or the panel.

#include "base/integers.h"

#include <QString>

namespace torv {

// One open graph window, seen from the data store and the set-up form.
class GraphView {
public:
    virtual ~GraphView() = default;
    // Draws the newest reading of the window's channel.
    virtual void DrawGraph_TORV() = 0;
    // Closes the window as its own close command does (the channel's readings are cleared).
    virtual void Form_MyUnload() = 0;
    // Keeps the window above all others, or releases it (no move, no size, no activation).
    virtual void SetTopMost(bool onTop) = 0;
};

// Opens graph windows; implemented by the window layer.
class GraphWindows {
public:
    virtual ~GraphWindows() = default;
    // Creates and shows the graph window of `channel` (0..3). The window stays owned by the
    // window layer and lives until it is closed.
    virtual GraphView* open(int channel) = 0;
    // Places the windows of the active channels on the screen (null entries are skipped).
    virtual void place(GraphView* const (&windows)[4]) = 0;
    // The screen's size in twips (15 twips to a pixel).
    virtual int screenWidth() = 0;
    virtual int screenHeight() = 0;
};

// The set-up form as the graph windows see it.
class SetUpForm {
public:
    virtual ~SetUpForm() = default;
    // Enables or disables the form's buttons and value-type options.
    virtual void enableCommands(bool enabled) = 0;
    // Closes the set-up form's window.
    virtual void unload() = 0;
    // Runs "Show Graph" as if the operator had pressed it.
    virtual void showGraph() = 0;
};

// A channel's calibration as the card reports it.
struct ChannelCalibration {
    static constexpr int Calibrated = 1;
    static constexpr int NotCalibrated = 2;
    int state = NotCalibrated;
    double actualLow = 0, actualHigh = 0; // the channel's lower and upper reading limits
    QString units;                        // unit abbreviation of the readings
};

// The main panel as the graph side sees it; implemented by the panel.
class GraphPanel {
public:
    virtual ~GraphPanel() = default;
    // The caption of the panel label that shows the current reading.
    virtual QString currentReadingText() = 0;
    // The card's address, shown on the set-up form.
    virtual QString cardAddress() = 0;
    // The calibration of `channel` (0..3).
    virtual ChannelCalibration calibration(int channel) = 0;
    // The panel's current request ("GetRTStatus", ...) and whether polling repeats it.
    virtual QString currentFunctionName() = 0;
    virtual bool pollingOn() = 0;
    // Enables or disables the panel's polling button ("cmdWeight").
    virtual void setPollingButtonEnabled(bool enabled) = 0;
};

} // namespace torv
