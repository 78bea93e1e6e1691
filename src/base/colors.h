#pragma once

#include <cstdint>

// The program's colour values: 24-bit BGR (255 is red, 0xFF0000 blue) or, with the high
// bit set, an index into the system colours (0x80000000 + index).
namespace torv::color {

using Color = std::uint32_t;

inline constexpr Color Black = 0x000000;
inline constexpr Color White = 0xFFFFFF;
inline constexpr Color Red = 0x0000FF; // RGB(255, 0, 0)
inline constexpr Color Green = 0x00FF00;
inline constexpr Color Blue = 0xFF0000;
inline constexpr Color Yellow = 0x00FFFF;

inline constexpr Color SystemBase = 0x80000000;
inline constexpr Color WindowBackground = 0x80000005;    // system colour 5
inline constexpr Color InactiveBorder = 0x8000000B;      // 11: an output or input that is off
inline constexpr Color ButtonFace = 0x8000000F;          // 15
inline constexpr Color ButtonText = 0x80000012;          // 18
inline constexpr Color InactiveCaptionText = 0x80000013; // 19: a saved value, an invalid entry
inline constexpr Color Highlight3D = 0x80000014;         // 20: a valid entry
inline constexpr Color WindowText = 0x80000008;

inline constexpr bool isSystem(Color c) {
    return (c & SystemBase) != 0;
}
inline constexpr int systemIndex(Color c) {
    return static_cast<int>(c & 0xFF);
}
inline constexpr Color systemColor(int index) {
    return SystemBase + static_cast<Color>(index);
}

inline constexpr int red(Color c) {
    return static_cast<int>(c & 0xFF);
}
inline constexpr int green(Color c) {
    return static_cast<int>((c >> 8) & 0xFF);
}
inline constexpr int blue(Color c) {
    return static_cast<int>((c >> 16) & 0xFF);
}
inline constexpr Color rgb(int r, int g, int b) {
    return static_cast<Color>(r & 0xFF) | (static_cast<Color>(g & 0xFF) << 8) |
           (static_cast<Color>(b & 0xFF) << 16);
}

} // namespace torv::color
