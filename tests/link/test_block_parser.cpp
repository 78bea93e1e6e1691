// The parse of one fast-sampling answer: the readings it yields and the faults it counts.

#include "link/block_parser.h"

#include <QStringList>
#include <gtest/gtest.h>

using namespace torv;

namespace {

QString answer(const QString& readings) {
    return "<GetFastSampling><ERROR_CODE>0</ERROR_CODE>" + readings + "</GetFastSampling>";
}

// "taken last readings... errors=n bad=n", or "refused errors=n".
QString parse(const QString& text, Int32 first = 0, BlockParseRules rules = {}) {
    const FastSamplingBlock b = parseFastSamplingBlock(text, first, "p", rules);
    QString out = b.taken ? QStringLiteral("taken %1 %2")
                                .arg(b.lastIndex)
                                .arg(QStringList(b.readings.begin(), b.readings.end()).join(','))
                          : QStringLiteral("refused");
    out += QStringLiteral(" errors=%1").arg(b.answerErrors);
    if (b.errorReadings) out += QStringLiteral(" bad=%1").arg(b.errorReadings);
    if (b.noRoom) out += " noroom";
    if (b.listFull) out += " full";
    if (b.reachedLimit) out += " limit";
    return out;
}

} // namespace

TEST(BlockParser, ReadingsFaultsAndRefusals) {
    const struct {
        const char* readings;
        Int32 first;
        const char* result;
    } rows[] = {
        {"<W0>1.5</W0><W1>-2</W1>", 10, "taken 11 1.5,-2 errors=0"},
        // Not numbers, or without a closing tag: the reading before (here "p") again.
        {"<W0>abc</W0><W1>2</W1><W2></W2>", 0, "taken 2 p,2,2 errors=0 bad=2"},
        {"<W0>7</W0><W1>8<W2>9</W2>", 0, "taken 2 7,7,9 errors=1"},
        // The block covers first .. first + the last number: what the answer does not hold
        // (looked up in order, from where the one before ended) repeats the last reading.
        {"<W0>2.0</W0><W1>2.1</W5>", 0, "taken 5 2.0,2.0,2.0,2.0,2.0,2.0 errors=2"},
        {"<W1>5</W1><W2>6</W2>", 10, "taken 12 p,p,p errors=1"},
        {"<W0>1</W0><W1>2</W1><W3>4</W3>", 0, "taken 3 1,2,2,2 errors=1"},
        {"<W0>5</W0><W1>6</W1></W7>", 10, "taken 17 5,6,6,6,6,6,6,6 errors=1"},
        // Elements numbered above the last number are left out.
        {"<W0>5</W0><W1>6</W1><W2>7</W2><W1>8</W1>", 20, "taken 21 5,6 errors=0"},
        // Refused: a last number that is not digits, or none near the closing tag.
        {"<W0>5</W0><W1>6</W1x>", 30, "refused errors=1"},
        {"<W0>5</W0><W1>6</W1><ERROR_DESCRIPTION>x</ERROR_DESCRIPTION>", 30, "refused errors=1"},
        // The list holds 22001 readings: a block beyond it is refused (the list is full when
        // the block is of a real size); reading 20000 stops the session, the block is taken.
        {"<W0>5</W0></W99999999999>", 50, "refused errors=1 noroom"},
        {"<W0>5</W0></W2000>", 21000, "refused errors=1 noroom full"},
        {"<W0>5</W0>", 22000, "taken 22000 5 errors=0"},
        {"<W0>5</W0>", 22001, "refused errors=1 noroom full"},
        {"<W0>1</W0></W1>", 0, "taken 1 1,1 errors=1"},
        {"<W0>5</W0><W1>6</W1><W2>7</W2>", 19999, "taken 20001 5,6,7 errors=0 limit"},
    };
    for (const auto& r : rows)
        EXPECT_EQ(parse(answer(r.readings), r.first), r.result) << r.readings;
    EXPECT_EQ(parse(answer("<W0>5</W0><W1>6</W1>").remove("</GetFastSampling>")),
              "refused errors=1");
    EXPECT_EQ(parse(QString()), "refused errors=0");
    // The closing tag without its ">" completes the block.
    EXPECT_EQ(parse(answer("<W0>5</W0>").chopped(1)), "taken 0 5 errors=0");
}

TEST(BlockParser, AbnormalReadingsAreQuestionedAndNoAbandonsTheRest) {
    QStringList asked;
    BlockParseRules rules;
    rules.keepAbnormal = [&](const QString& v) {
        asked << v;
        return v.startsWith('1');
    };
    EXPECT_EQ(parse(answer("<W0>1234567890</W0><W1>12345678901</W1><W2>-1234567.890</W2>"
                           "<W3>8</W3>"),
                    0, rules),
              "taken 1 1234567890,12345678901 errors=0");
    EXPECT_EQ(asked, QStringList({"12345678901", "-1234567.890"}));
}
