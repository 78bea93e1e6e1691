#pragma once

// The logic of one real-time graph window (frmGraph): it draws the readings of its channel from
// the graph data store onto the pictures of its form model, with a value scale on the left and
// a time scale below, tracks minima and maxima, and answers the window's commands. It owns no
// widgets; the window layer renders the form model.
//
// Plot geometry: pctGraph is twice as wide as the visible frame Frame1. The reading with index
// i is drawn at x = (i - origin) x X step on the plot, where `origin` is the reading at the
// plot's left edge. While fewer readings than a screen are stored the plot grows from the left;
// then it scrolls (its Left moves left by one X step a reading) so that the newest reading stays
// at the right edge of the visible part, and the left index is the first reading shown. When the
// plot reaches the right edge of its picture, a new picture starts with the visible readings at
// its left; when a reading leaves the value range, the scale is widened and the visible
// readings are drawn again. Both cost one screen of readings at long intervals, so the cost of a
// reading does not grow with what is stored.

#include "base/event_boundary.h"
#include "frm_graph_form.h"
#include "graph_scales.h"
#include "graph_view.h"
#include "min_max.h"

#include <functional>

namespace torv {

class GraphStore;
class Platform;

// The small auxiliary window that shows the plot position reported by the scroll buttons; one
// for all graph windows, created on first use.
struct GraphAuxiliaryForm : FormModel {
    GraphAuxiliaryForm() { caption = QStringLiteral("Form1"); }
    TORV_CONTROL(Text1);
    bool shown = false;
};
GraphAuxiliaryForm& graphAuxiliaryForm();

class FrmGraph : public GraphView {
public:
    FrmGraph(GraphStore& store, int channel);
    ~FrmGraph() override;

    FrmGraphForm f;
    GraphStore& store() { return store_; }

    // Runs an operator event at the event boundary and asks for a repaint.
    template <typename F> void event(F&& handler) {
        runHandler(platform(), std::forward<F>(handler));
        changed();
    }
    // The window schedules one refresh when the model changed.
    std::function<void()> onModelChanged;
    // The window closes itself (later, never inside the call).
    std::function<void()> onUnloadWindow;

    // ---- GraphView ---------------------------------------------------------------------------
    void DrawGraph_TORV() override;
    void Form_MyUnload() override;
    void SetTopMost(bool onTop) override;

    // ---- Opening and closing -----------------------------------------------------------------
    void Form_Load();
    void GraphClose(std::uint8_t byt_ch);
    // The window is closed by the operator.
    void Form_Unload();
    // A double click keeps the window on top again (after the panel's start of polling let the
    // panel come forward).
    void Form_DblClick() { SetTopMost(true); }

    // ---- Scales -------------------------------------------------------------------------------
    void OptValueType_Click(int index);
    void cbDrawYscale_Click();
    void cbDrawXscale_Click();
    // A typed division count of the value scale becomes the channel's with the next drawing.
    void txtYsteps_Change();

    // ---- Minimum and maximum -------------------------------------------------------------------
    void MinMaxUpDate(std::uint8_t byt_ch);
    void pctGraph_MouseMove(double x, double y);
    void pctGraph_MouseDown();
    void UpDnMinDif_Change(int value);

    // ---- Navigation ----------------------------------------------------------------------------
    void cmdNewStart_Click();
    void cmdMore_Click();
    void cmndRt_Click();
    void cmndLt_Click();
    void cmndCpyG2toG_Click();
    void pctGraph_KeyDown(int keyCode);
    // Draws readings hStart to hFinish of `channel` onto `pic`.
    void ShowPartOrvelHistoryGraph(Picture& pic, int channel, Int32 hStart, Int32 hFinish);

    // ---- What the window shows ------------------------------------------------------------------
    std::uint8_t channel() const; // from lblChanNumber
    int valueType() const { return valueType_; }
    const ValueRange& scaleRange() const { return range_; }
    Int32 origin() const { return origin_; }
    Int32 takenExtrema() const { return takenExtrema_; }
    bool redrawPending() const { return redraw_; }
    Int32 lastMouseX() const { return mouseX_; }
    Int32 lastMouseY() const { return mouseY_; }

    // Colours of the plot, set at design time.
    color::Color plotColor = 0x008000; // dark green
    color::Color gridColor = 0xD8D8D8;
    color::Color scaleColor = 128;

    // Window geometry in twips.
    static constexpr int WindowWidth = 13800;
    static constexpr int NormalHeight = 8100;
    static constexpr int EnlargedHeight = 9000;

private:
    Platform& platform();
    void changed() {
        if (onModelChanged) onModelChanged();
    }
    double lowLimit() const;
    double highLimit() const;
    Int16 valueDivisions() const;
    // Draws the value scale for `range` (and keeps it).
    void drawValueScale(const ValueRange& range);
    void drawTimeScale();
    // Clears the plot and its back copy, draws the value scale, and the readings from `from`.
    void newPicture(Int32 from);
    void plotReading(Int32 index);
    void scrollToLeftIndex();
    void showReadingBoxes(std::uint8_t ch, Int32 index, double value);
    void showSelection();
    void hideSelection();
    double visibleX(Int32 index) const;

    // The set-up values the window was drawn with.
    struct SetUp {
        Int32 pointsPerScreen;
        Int16 samplingMs, timeDivisions, valueType, divisions;
        float percent;
        int calibrationState;
        double actualLow, actualHigh;
        bool operator==(const SetUp&) const = default;
    };
    SetUp currentSetUp() const;
    // Takes the set-up values: X step, scale divisions, value type, limits; draws both scales.
    void applySetUp();

    GraphStore& store_;
    SetUp setUp_{};
    int valueType_ = 2;
    int timeDivisions_ = 6;
    ValueRange range_;
    float secondsPerDivision_ = 0;
    Int32 firstDivision_ = 0;
    Int16 xMode_ = 1;
    Int32 xStep_ = 1;
    Int32 origin_ = 0; // the reading at the plot's left edge
    Int32 mouseX_ = 0, mouseY_ = 0;
    Int32 takenExtrema_ = 0;
    std::uint8_t selectedKind_ = 1;
    bool redraw_ = false;
    bool formUnloaded_ = false;
    bool drawFaultReported_ = false;
};

} // namespace torv
