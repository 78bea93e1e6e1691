#pragma once

// The real-time graph's data store: the per-channel readings with their times, the points the
// windows draw, the interval extremes, the counters the graph windows and the min/max tracking
// keep, and the set-up values the set-up form fills. One store is shared by the set-up form and
// every graph window; it is sized once, when the graph opens, so a sampling tick never
// allocates.

#include "base/colors.h"
#include "base/integers.h"
#include "files/start_file.h"
#include "graph_view.h"

#include <QString>
#include <array>
#include <cstdint>
#include <vector>

namespace torv {

class Platform;
struct Control;

inline constexpr int kGraphChannels = 4;

template <typename T> using PerChannel = std::array<T, kGraphChannels>;

class GraphStore {
public:
    explicit GraphStore(Platform& platform);

    Platform& platform() { return p_; }

    // ---- Who the store talks to (set by the program's start-up) --------------------------------
    GraphPanel* panel = nullptr;     // the main panel: reading label, polling button
    GraphWindows* windows = nullptr; // opens graph windows
    SetUpForm* setUpForm = nullptr;  // the set-up form, while it exists

    // ---- The graph parameters of "Start.dat"
    // ------------------------------------------------------
    GraphParameters params;
    PerChannel<ChannelCalibration> calibration; // taken from the panel when the set-up form loads

    // ---- Readings
    // ---------------------------------------------------------------------------------
    QString readingText;                         // the last reading taken, as text
    PerChannel<Int32> readingCount{};            // next free index of the channel's reading store
    PerChannel<std::vector<Int32>> readings;     // reading values by reading index
    PerChannel<std::vector<Int32>> readingTimes; // ms since the start tick, by reading index
    std::uint32_t startTick = 0;                 // tick at which the graph was (re)started
    std::uint32_t lastTick = 0;                  // tick of the latest sampling tick

    // The open interval: the readings taken since the last point.
    PerChannel<QString> intervalMinText, intervalMaxText;
    PerChannel<Int32> intervalMinIndex{}, intervalMaxIndex{};
    PerChannel<bool> intervalOpen{};

    // Capacity by number of active channels - 1: readings, and points.
    std::array<Int32, 4> readingCapacity{50000, 33300, 25000, 20000};
    std::array<Int32, 4> pointCapacity{50000, 33300, 25000, 20000};
    // The store-full check always uses this, whatever the number of active channels.
    static constexpr Int32 StoreFullCount = 50000;

    // ---- Points
    // -----------------------------------------------------------------------------------
    PerChannel<Int32> pointCount{};
    PerChannel<std::vector<QString>> points;   // interval minimum text, by point index
    PerChannel<std::vector<Int32>> pointTimes; // time of that reading, by point index
    PerChannel<QString> pointColumnText;       // "0" for a channel given a window, else "-1"

    // ---- Windows and channel states
    // ---------------------------------------------------------------
    PerChannel<GraphView*> graphWindows{}; // the open window of each active channel
    PerChannel<bool> channelActive{};      // a graph window shows the channel
    PerChannel<bool> closeRequest{};       // the next tick closes the channel's window
    Int16 openWindowCount = 0;             // graph windows open
    bool realTimeGraphRuns = false;        // the status handler feeds the graph
    bool drawAgain = false;                // set by a window: draw the same point once more
    Int16 converterType = 1;               // the card's converter; only type 1 exists

    // ---- Per-channel values of the graph windows and the min/max tracking
    // -------------------------
    PerChannel<QString> upperLimit, lowerLimit; // "65536", "32768", ... and "0"
    PerChannel<Int32> leftIndex{}, rightIndex{}, selectedIndex{};
    PerChannel<Int32> currentMinIndex{}, currentMaxIndex{};
    PerChannel<Int32> absoluteMinimum{}, absoluteMaximum{};
    PerChannel<Int32> absoluteMinimumIndex{}, absoluteMaximumIndex{};
    PerChannel<Int16> newExtremumCounter{};
    PerChannel<bool> selectionFlag{};
    PerChannel<Int32> minimumDifferenceBase{};
    PerChannel<Int32> secondCounter{};  // reset with the reading count on a restart
    PerChannel<Int32> referenceValue{}; // -1000 after a restart
    PerChannel<Int32> stateValue{};
    PerChannel<Int32> rememberedTop{}; // window top before "More"
    std::uint32_t firstExtremumTick = 0;

    // ---- Set-up values (taken from the set-up form's boxes by "Show Graph")
    // -----------------------
    Int32 pointsPerScreen = 500; // txtNumberOfPoints
    Int16 samplingMs = 50;       // txtSampling
    float percent = 10;          // txtProcentMinMax
    float sngProcent = 1.1f;     // (percent + 100) / 100
    Int16 minMaxMiss = 1;        // txtMinMaxMiss: number to ignore
    Int32 ignoreTime = 3;        // txtMnMxTime, compared with tick differences (ms)
    Int16 bandRadius = 3;        // txtBandRadius
    Int16 scaleRound = 3;        // txtRound
    Int16 timeDivisions = 6;     // txtTimeDivision
    Int16 valueType = 2;         // 1 or 2
    Int16 valueScaleDivisions = 10;

    // ---- Shared values of the graph windows ---------------------------------------------------
    Int32 xStep = 1;                     // distance between two readings in the plot (twips)
    Int32 secondsPerDivision = 0;        // rounded, from the last time scale drawn
    std::array<Int32, 2> viewCounters{}; // the two shared counters of the view
    bool historyShown = false;
    Int32 testOffset = 0;
    Int32 markerOffset = 60;   // the selection marker is drawn this much up and left
    Int16 normalHeight = 6000; // window height, and its height after "More"
    Int16 enlargedHeight = 9000;
    Int16 bottomMargin = 600;
    Int32 screenWidth = 0, screenHeight = 0; // twips

    // ---- Values set when the set-up form is first created -------------------------------------
    std::array<QString, 4> channelSetLabels{QStringLiteral("0"), QStringLiteral("0-1"),
                                            QStringLiteral("0-2"), QStringLiteral("0-3")};
    Int32 formLimit = 300000;
    std::array<Int16, 2> formSettings{2, 2};

    // ---- Operations
    // ------------------------------------------------------------------------------- Stores the
    // current reading of channel 0; false when it is not numeric.
    bool AddReading();
    // One step of the real-time graph, run after each good status reading.
    void GraphSamplingTick();
    // Resets the per-channel values and records the screen size.
    void InitGraphChannels();
    // Resizes the stores (keeping their contents) for `activeChannels` (1..4).
    void sizeStores(int activeChannels);
    // Forgets the channel's readings (each stored value back to 0), resets its counters, clears
    // its active flag and counts its window as closed.
    void GraphClose(int channel);
    // Sets the start tick: the graph's times count from now.
    void restartClock();
    // What the panel's start of polling does to the open graph windows: with 0 they are
    // released from staying on top, with any other value kept on top.
    void ShowRTGraph(int onTop);
    // The polling button after the graph closes: enabled unless the panel polls the status
    // with polling off.
    void restorePollingButton();

private:
    Platform& p_;
    bool storeFullReported_[4] = {}; // the memory message was shown for this fill of the store
};

// The largest and smallest of `values` from `first` to `last` (both included) and their indices;
// ties move the maximum forward. With `count` readings 0 the outputs are left as they are.
void ScanRangeMinMax(const std::vector<Int32>& values, Int32 count, Int32 first, Int32 last,
                     Int32& maxValue, Int32& maxIndex, Int32& minValue, Int32& minIndex);

// The same over the reading store of `channel`.
void ScanRangeMinMax(const GraphStore& store, int channel, Int32 first, Int32 last, Int32& maxValue,
                     Int32& maxIndex, Int32& minValue, Int32& minIndex);

// True when the trimmed text is numeric and each of its characters is a digit.
bool IsDigitsOnly(const QString& text);

// Colours and tips a numeric text box: `tip` and the normal colour when it holds a whole
// number from low to high, otherwise the bad colour and "Not number!" or the limits.
void CheckTextLimits(Control& textBox, Int32 low, Int32 high, color::Color normalColor,
                     color::Color badColor, const QString& tip);

} // namespace torv
