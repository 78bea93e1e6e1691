#pragma once

// The millisecond tick counter: 32 bits that wrap. Ticks are often stored signed (the
// panel's Long values); a difference is taken modulo 2^32, so the counter wrapping around
// does not disturb it.

#include "integers.h"

#include <cstdint>

namespace torv {

// Milliseconds from `from` to `to`; negative when `to` lies before `from`.
inline Int32 ticksBetween(std::uint32_t from, std::uint32_t to) {
    return static_cast<Int32>(to - from);
}
// Milliseconds from a stored tick to `now`.
inline Int32 ticksSince(Int32 from, std::uint32_t now) {
    return ticksBetween(static_cast<std::uint32_t>(from), now);
}

} // namespace torv
