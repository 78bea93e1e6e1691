#pragma once

// The panel's 16-bit and 32-bit integer rules: conversions round half to even and
// every result that does not fit raises run-time error 6 (Overflow).

#include "runtime_error.h"

#include <QString>
#include <array>
#include <cstdint>

namespace torv {

using Int16 = std::int16_t;
using Int32 = std::int32_t;

// Round half to even, as the run-time's integer conversions do.
double roundHalfEven(double v);

// Conversions of a number (double) to 16 and 32 bits.
Int16 CInt(double v);
Int32 CLng(double v);

// Conversions of text: not numeric (in the locale) raises 13, too large raises 6.
Int16 CInt(const QString& text);
Int32 CLng(const QString& text);
double CDbl(const QString& text);
float CSng(const QString& text);
// Unsigned 8-bit (the run-time's Byte): 0..255, else 6.
std::uint8_t CByte(double v);
std::uint8_t CByte(const QString& text);

// Checked arithmetic in 16 and 32 bits.
Int16 add16(Int32 a, Int32 b);
Int16 sub16(Int32 a, Int32 b);
Int16 mul16(Int32 a, Int32 b);
Int32 add32(std::int64_t a, std::int64_t b);
Int32 sub32(std::int64_t a, std::int64_t b);
Int32 mul32(std::int64_t a, std::int64_t b);
Int16 inc16(Int16& v); // v += 1, checked; returns the new value
Int32 inc32(Int32& v);

// Floating division "/" of the run-time: x/0 raises 11, 0/0 raises 6.
double divide(double a, double b);

// An indexed array with fixed bounds Lo..Hi that raises error 9 outside them.
template <typename T, int Lo, int Hi> class BoundedArray {
public:
    static_assert(Lo <= Hi);
    static constexpr int lower = Lo;
    static constexpr int upper = Hi;

    T& operator[](int i) {
        check(i);
        return items_[static_cast<std::size_t>(i - Lo)];
    }
    const T& operator[](int i) const {
        check(i);
        return items_[static_cast<std::size_t>(i - Lo)];
    }
    static bool contains(int i) { return i >= Lo && i <= Hi; }
    void fill(const T& v) { items_.fill(v); }

private:
    static void check(int i) {
        if (i < Lo || i > Hi) raiseSubscript();
    }
    std::array<T, Hi - Lo + 1> items_{};
};

} // namespace torv
