#pragma once

#include "base/runtime_error.h"

namespace torv::test {

// The run-time error number `f` raises, 0 when it raises none.
template <typename F> int errorOf(F&& f) {
    try {
        f();
    } catch (const RuntimeError& e) {
        return e.number();
    }
    return 0;
}

} // namespace torv::test
