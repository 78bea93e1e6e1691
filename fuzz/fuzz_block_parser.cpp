// The fast-sampling block parser on any answer, with the question about an abnormally long
// reading answered as the input says, at any place in the reading list.
//
// Input: flags (keep abnormal readings, small list), the first index, the answer (Latin-1).
// Checks: a taken block covers exactly firstIndex .. lastIndex inside the list, every reading
// it holds is a number or repeats the reading before it, and a refused block holds nothing.

#include "base/numeric.h"
#include "fuzz_support.h"
#include "link/block_parser.h"

using namespace torv;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input in(data, size);
    const std::uint8_t flags = in.byte();
    BlockParseRules rules;
    if (flags & 2) { // a small list, so blocks reach its end and its last sample index
        rules.listSize = 64;
        rules.lastSampleIndex = 60;
    }
    int questions = 0;
    const bool keep = flags & 1;
    rules.keepAbnormal = [&](const QString&) {
        ++questions;
        return keep;
    };
    const Int32 firstIndex = in.u16() % (rules.listSize + 8) - 4; // a few outside the list too
    const QString before = QStringLiteral("1.5");
    const QString answer = QString::fromLatin1(in.rest());

    const FastSamplingBlock b = parseFastSamplingBlock(answer, firstIndex, before, rules);

    // A No abandons the rest of the block: nothing more is asked.
    fuzz::check(keep || questions <= 1, "a question after the block was abandoned");
    if (!b.taken) {
        fuzz::check(b.readings.empty() || b.read, "readings of a block that was not read");
        return 0;
    }
    fuzz::check(b.read, "a block taken without being read");
    fuzz::check(!b.noRoom, "a block taken without room");
    fuzz::check(firstIndex >= 0 && b.lastIndex < rules.listSize, "a block outside the list",
                QString::number(b.lastIndex));
    fuzz::check(qint64(b.readings.size()) == qint64(b.lastIndex) - firstIndex + 1,
                "the readings do not cover firstIndex .. lastIndex",
                QStringLiteral("%1 readings, %2 .. %3")
                    .arg(b.readings.size())
                    .arg(firstIndex)
                    .arg(b.lastIndex));
    for (std::size_t i = 0; i < b.readings.size(); ++i) {
        const QString& previous = i == 0 ? before : b.readings[i - 1];
        fuzz::check(isReadingNumber(b.readings[i]) || b.readings[i] == previous,
                    "a reading that is no number and no repeat", b.readings[i]);
    }
    return 0;
}
