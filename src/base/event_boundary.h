#pragma once

#include "platform.h"
#include "runtime_error.h"

#include <utility>

namespace torv {

// Every entry point (click, key, socket event, timer tick) runs through here once. A
// run-time error ends that handler with its message; the program goes on.
template <typename F> bool runHandler(Platform& platform, F&& handler) {
    try {
        std::forward<F>(handler)();
        return true;
    } catch (const RuntimeError& e) {
        platform.messageBox(e.message());
        return false;
    }
}

} // namespace torv
