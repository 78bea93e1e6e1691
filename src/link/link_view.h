#pragma once

#include <QString>

namespace torv {

// What the transport does to the main window. The panel implements it, so the link never
// knows a control.
class LinkView {
public:
    virtual ~LinkView() = default;
    // The text of TxtIP: "host" (port 80) or "host:port".
    virtual QString hostText() = 0;
    // The caption of lblCommStatusData.
    virtual void setCommStatus(const QString& caption) = 0;
    // A request went out on a fresh connection: cmdWeight turns green for "GetRTStatus" (the
    // polling marker) and button face for anything else; "GetFastSampling" also shows the
    // current weight of the sampling session.
    virtual void requestSent(const QString& functionName) = 0;
    // txtRealTimeInfo: the complete answer, already one tag a line.
    virtual void showRawAnswer(const QString& text) = 0;
    // The server did not answer, refused or failed: the whole reporting procedure. It calls
    // Transport::closeSocket() itself.
    virtual void ServerNoAnswer() = 0;
    // A socket event or a watchdog tick has been handled: whatever it changed is to be
    // shown, also when a refresh already ran inside it (a wait or a box pumps events).
    virtual void eventHandled() {}
};

} // namespace torv
