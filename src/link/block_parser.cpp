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

// The tag "<Wn>" or "</Wn>" of reading n, built without allocating.
class ReadingTag {
public:
    explicit ReadingTag(bool closing) {
        prefix_ = closing ? 3 : 2;
        text_[0] = u'<';
        if (closing) text_[1] = u'/';
        text_[prefix_ - 1] = u'W';
    }
    void set(qint64 n) {
        char16_t digits[20];
        int count = 0;
        do {
            digits[count++] = static_cast<char16_t>(u'0' + n % 10);
            n /= 10;
        } while (n > 0);
        int at = prefix_;
        while (count > 0)
            text_[at++] = digits[--count];
        text_[at++] = u'>';
        size_ = at;
    }
    QStringView view() const { return QStringView(text_, size_); }

private:
    char16_t text_[32] = {};
    int prefix_ = 2;
    int size_ = 0;
};

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
    const qint64 last = firstIndex + announced;
    if (last >= rules.listSize) {
        out.noRoom = true;
        out.answerErrors = 1;
        // A block of a real size that would reach the end of the list: the list is full.
        out.listFull = announced < rules.listSize && last >= rules.lastSampleIndex;
        return out;
    }

    std::vector<QString>& list = out.readings;
    list.reserve(static_cast<std::size_t>(announced + 1));
    // The reading before the next one.
    const auto previous = [&]() -> const QString& { return list.empty() ? before : list.back(); };
    const auto store = [&](QString text) {
        if (firstIndex + static_cast<qint64>(list.size()) == rules.lastSampleIndex)
            out.reachedLimit = true;
        list.push_back(std::move(text));
    };

    const QStringView body = s.sliced(0, closing);
    qsizetype pos = 0; // where the search for the next reading starts
    qint64 n = 0;      // number of the next reading
    bool abandoned = false;
    ReadingTag openTag(false), closeTag(true);
    for (; n <= announced; ++n) {
        openTag.set(n);
        closeTag.set(n);
        const qsizetype open = body.indexOf(openTag.view(), pos);
        if (open < 0) break; // the answer holds no more readings
        const qsizetype valueStart = open + openTag.view().size();
        const qsizetype close = body.indexOf(closeTag.view(), valueStart);
        if (close < 0) {
            ++out.answerErrors;
            store(previous());
            pos = valueStart;
            continue;
        }
        QString value = body.sliced(valueStart, close - valueStart).toString();
        pos = close + closeTag.view().size();
        if (!isReadingNumber(value)) {
            out.errorReadings = add32(out.errorReadings, 1);
            store(previous());
        } else if (value.size() > rules.abnormalLength && rules.keepAbnormal &&
                   !rules.keepAbnormal(value)) {
            abandoned = true;
            break;
        } else {
            store(std::move(value));
        }
    }
    if (abandoned) {
        if (n == 0) return out; // nothing before the questioned reading
        out.lastIndex = static_cast<Int32>(firstIndex + n - 1);
    } else {
        // Readings the answer does not hold repeat the last one taken.
        if (n <= announced) ++out.answerErrors;
        for (; n <= announced; ++n)
            store(previous());
        out.lastIndex = static_cast<Int32>(last);
    }
    out.taken = true;
    return out;
}

} // namespace torv
