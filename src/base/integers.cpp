#include "integers.h"

#include "numeric.h"

#include <cmath>
#include <limits>

namespace torv {

double roundHalfEven(double v) {
    if (!std::isfinite(v)) return v;
    const double fl = std::floor(v);
    const double diff = v - fl;
    if (diff > 0.5) return fl + 1.0;
    if (diff < 0.5) return fl;
    return std::fmod(fl, 2.0) == 0.0 ? fl : fl + 1.0;
}

namespace {
template <typename T> T convertChecked(double v) {
    if (!std::isfinite(v)) raiseOverflow();
    const double r = roundHalfEven(v);
    if (r < static_cast<double>(std::numeric_limits<T>::min()) ||
        r > static_cast<double>(std::numeric_limits<T>::max()))
        raiseOverflow();
    return static_cast<T>(r);
}

template <typename T> T narrow(std::int64_t v) {
    if (v < std::numeric_limits<T>::min() || v > std::numeric_limits<T>::max()) raiseOverflow();
    return static_cast<T>(v);
}
} // namespace

Int16 CInt(double v) {
    return convertChecked<Int16>(v);
}
Int32 CLng(double v) {
    return convertChecked<Int32>(v);
}
std::uint8_t CByte(double v) {
    return convertChecked<std::uint8_t>(v);
}

double CDbl(const QString& text) {
    double v = 0;
    if (!numericValue(text, decimalSeparator(), v)) raiseTypeMismatch();
    return v;
}

Int16 CInt(const QString& text) {
    return CInt(CDbl(text));
}
Int32 CLng(const QString& text) {
    return CLng(CDbl(text));
}
std::uint8_t CByte(const QString& text) {
    return CByte(CDbl(text));
}

float CSng(const QString& text) {
    const double v = CDbl(text);
    if (std::fabs(v) > static_cast<double>(std::numeric_limits<float>::max())) raiseOverflow();
    return static_cast<float>(v);
}

Int16 add16(Int32 a, Int32 b) {
    return narrow<Int16>(std::int64_t{a} + b);
}
Int16 sub16(Int32 a, Int32 b) {
    return narrow<Int16>(std::int64_t{a} - b);
}
Int16 mul16(Int32 a, Int32 b) {
    return narrow<Int16>(std::int64_t{a} * b);
}

Int32 add32(std::int64_t a, std::int64_t b) {
    std::int64_t r = 0;
    if (__builtin_add_overflow(a, b, &r)) raiseOverflow();
    return narrow<Int32>(r);
}
Int32 sub32(std::int64_t a, std::int64_t b) {
    std::int64_t r = 0;
    if (__builtin_sub_overflow(a, b, &r)) raiseOverflow();
    return narrow<Int32>(r);
}
Int32 mul32(std::int64_t a, std::int64_t b) {
    std::int64_t r = 0;
    if (__builtin_mul_overflow(a, b, &r)) raiseOverflow();
    return narrow<Int32>(r);
}

Int16 inc16(Int16& v) {
    return v = add16(v, 1);
}
Int32 inc32(Int32& v) {
    return v = add32(v, 1);
}

double divide(double a, double b) {
    if (b == 0.0) {
        if (a == 0.0 || std::isnan(a)) raiseOverflow();
        raiseDivisionByZero();
    }
    const double r = a / b;
    if (!std::isfinite(r)) raiseOverflow();
    return r;
}

} // namespace torv
