#include "bits.h"

namespace torv {

QString IntToBits(std::int32_t value, int n) {
    QString out(n > 0 ? n : 0, QLatin1Char('0'));
    for (int i = n - 1; i >= 0; --i) {
        out[i] = (value & 1) ? QLatin1Char('1') : QLatin1Char('0');
        value /= 2;
    }
    return out;
}

QString ByteToBits(std::uint8_t b) {
    return IntToBits(b, 8);
}

} // namespace torv
