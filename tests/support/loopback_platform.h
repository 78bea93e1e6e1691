#pragma once

// The real Qt clock, sockets and timers with scripted dialogs: for tests that run the panel or
// the link against the simulator on loopback. Needs a QCoreApplication.

#include "link/qt_net_platform.h"
#include "support/scripted_dialogs.h"

#include <QElapsedTimer>

namespace torv::test {

class LoopbackPlatform : public Scripted<QtNetPlatform> {
public:
    // Processes events until `done` holds or `ms` of real time have passed.
    template <typename F> bool runUntil(F done, int ms = 10000) {
        QElapsedTimer t;
        t.start();
        while (!done()) {
            if (t.elapsed() > ms) return false;
            processEvents(5);
        }
        return true;
    }
};

} // namespace torv::test
