#include "block_parser.h"

#include "base/numeric.h"

#include <algorithm>

namespace torv {

namespace {

// The number of a block's last reading stands between the last "</W" and the answer's
// closing tag, which lie at most this many characters apart.
constexpr qsizetype kLastNumberWindow = 30;
// Element numbers are read up to this value; larger ones stay at it.
constexpr qint64 kNumberCap = 1'000'000'000'000;

// The decimal digits at `pos`: their value (capped) and their count.
qsizetype readDigits(QStringView s, qsizetype pos, qint64& value) {
    value = 0;
    qsizetype i = pos;
    while (i < s.size() && s[i] >= u'0' && s[i] <= u'9') {
        value = std::min(value * 10 + (s[i].unicode() - u'0'), kNumberCap);
        ++i;
    }
    return i - pos;
}

} // namespace

FastSamplingBlock parseFastSamplingBlock(QStringView s, Int32 firstIndex, const QString& before,
                                         const BlockParseRules& rules) {
    FastSamplingBlock out;
    if (s.isEmpty()) return out;

    // The closing tag: its ">" may still have been on its way when the answer was complete.
    const qsizetype closing = s.lastIndexOf(QStringView(u"</GetFastSampling"));
    if (closing < 0) {
        out.answerErrors = 1;
        return out;
    }
    const qsizetype windowStart = std::max<qsizetype>(0, closing - kLastNumberWindow);
    const qsizetype lastTag =
        s.sliced(windowStart, closing - windowStart).lastIndexOf(QStringView(u"</W"));
    if (lastTag < 0) {
        out.answerErrors = 1;
        return out;
    }
    const qsizetype numberAt = windowStart + lastTag + 3;
    qint64 announced = 0;
    const qsizetype numberDigits = readDigits(s, numberAt, announced);
    if (numberDigits == 0 || numberAt + numberDigits >= closing ||
        s[numberAt + numberDigits] != u'>') {
        out.answerErrors = 1;
        return out;
    }

    if (firstIndex < 0) return out;
    out.read = true;
    if (firstIndex > rules.lastIndex) {
        out.noRoom = true;
        return out;
    }

    std::vector<QString>& list = out.readings;
    const qint64 room = rules.lastIndex - firstIndex; // readings after the first that fit
    list.reserve(static_cast<std::size_t>(std::min(announced, room) + 1));
    // The reading before the next one.
    const auto previous = [&]() -> const QString& { return list.empty() ? before : list.back(); };

    qsizetype pos = 0; // where the search for the next reading starts
    qint64 n = 0;      // number of the next reading
    bool answerFault = false;
    bool atLimit = false;
    bool abandoned = false;
    while (n <= announced && !atLimit && !abandoned) {
        const qsizetype open = s.indexOf(QStringView(u"<W"), pos);
        if (open < 0 || open >= closing) break;
        qint64 m = 0;
        const qsizetype digits = readDigits(s, open + 2, m);
        if (digits == 0 || s[open + 2 + digits] != u'>') {
            pos = open + 2; // another tag
            continue;
        }
        const qsizetype valueStart = open + 2 + digits + 1;
        const qsizetype valueEnd = s.indexOf(u'<', valueStart); // at the latest the closing tag
        // The reading's closing tag follows its value: "</W" + the same number + ">".
        bool closed = false;
        pos = valueEnd;
        if (s.sliced(valueEnd).startsWith(QStringView(u"</W"))) {
            qint64 closeNumber = 0;
            const qsizetype closeDigits = readDigits(s, valueEnd + 3, closeNumber);
            const qsizetype gt = valueEnd + 3 + closeDigits;
            if (closeDigits > 0 && closeNumber == m && gt < s.size() && s[gt] == u'>') {
                closed = true;
                pos = gt + 1;
            }
        }
        if (m > announced || m < n) {
            answerFault = true;
            continue;
        }
        for (; n < m && !atLimit; ++n) { // missing from the sequence
            list.push_back(previous());
            answerFault = true;
            atLimit = firstIndex + n == rules.lastIndex;
        }
        if (atLimit) break;

        if (!closed) {
            ++out.answerErrors;
            list.push_back(previous());
        } else {
            QString value = s.sliced(valueStart, valueEnd - valueStart).toString();
            if (isReadingNumber(value)) {
                if (value.size() > rules.abnormalLength && rules.keepAbnormal &&
                    !rules.keepAbnormal(value)) {
                    abandoned = true;
                    break;
                }
                list.push_back(std::move(value));
            } else {
                out.errorReadings = add32(out.errorReadings, 1);
                list.push_back(previous());
            }
        }
        atLimit = firstIndex + n == rules.lastIndex;
        ++n;
    }
    if (!atLimit && !abandoned) {
        // Short of the last number, or readings beyond it.
        const qsizetype more = s.indexOf(QStringView(u"<W"), pos);
        if (n != announced + 1 || (more >= 0 && more < closing)) answerFault = true;
    }
    if (answerFault) ++out.answerErrors;
    if (n == 0) return out; // nothing to take

    out.lastIndex = static_cast<Int32>(firstIndex + n - 1);
    out.taken = true;
    out.reachedLimit = atLimit;
    return out;
}

} // namespace torv
