#pragma once

#include <QString>
#include <cstdint>

namespace torv {

// Bit strings, most significant bit first. Both are built the panel's way: prepend the
// digit of (value AND 1), then halve with integer division (truncating toward zero).
QString ByteToBits(std::uint8_t b);
QString IntToBits(std::int32_t value, int n);

} // namespace torv
