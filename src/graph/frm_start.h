#pragma once

// The graph set-up form's logic: fills the form from "Start.dat", marks the channels that
// cannot be used, checks every entry as it is typed, saves the parameters and opens one graph
// window per chosen channel.

#include "base/event_boundary.h"
#include "files/start_file.h"
#include "frm_start_form.h"
#include "graph_view.h"

#include <functional>

namespace torv {

class GraphStore;
class Platform;

class FrmStart : public SetUpForm {
public:
    FrmStart(Platform& platform, GraphStore& store);

    FrmStartForm f;
    // The file the form reads and saves.
    QString startFile = QString::fromLatin1(kStartFileName);

    // Runs an operator event at the event boundary and asks for a repaint.
    template <typename F> void event(F&& handler) {
        changed();
        runHandler(p_, std::forward<F>(handler));
        changed();
    }
    std::function<void()> onModelChanged; // the window schedules one refresh
    std::function<void()> onShow;         // the window shows itself
    std::function<void()> onUnload;       // the window hides itself

    bool loaded() const { return loaded_; }

    void Form_Load();
    void InitStartContols();
    void CheckInit();
    bool IsChannelsSelected();
    bool CheckInputData();
    void CmdShowGraph_Click();
    void ShowAllChannelGraph();
    void cmdSaveCnfg_Click();
    // A text box was edited: every entry is checked again (the band radius depends on the
    // number of points).
    void txt_Change() { CheckInputData(); }

    // What the graph windows ask of the form.
    void enableCommands(bool enabled) override;
    void unload() override;
    // An unloaded form is loaded first, as any use of it does: it reads "Start.dat" again,
    // shows itself and runs "Show Graph" once from its load.
    void showGraph() override;

    static constexpr color::Color ValidColor = color::Highlight3D;           // system colour 20
    static constexpr color::Color InvalidColor = color::InactiveCaptionText; // system colour 19

private:
    void changed() {
        if (onModelChanged) onModelChanged();
    }
    StartEntries entries() const;
    Platform& p_;
    GraphStore& store_;
    bool loaded_ = false;
};

} // namespace torv
