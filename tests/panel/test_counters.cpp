// The reading counters and frequencies of the status display, and the message-status labels.

#include "panel/counters.h"
#include "panel/error_elements.h"
#include "support/fake_platform.h"

#include "base/runtime_error.h"

#include <gtest/gtest.h>

using namespace torv;

namespace {

// One status answer at tick `now`; the total, frequency and current-frequency labels after it.
struct Display {
    Counters c;
    QString total = "-", frequency = "-", current = "-";
    QString at(std::uint32_t now) {
        ShowCounters(c, now, total, frequency, current);
        return total + "|" + frequency + "|" + current;
    }
};

TEST(Counters, TotalAndCurrentFrequency) {
    Display d;
    d.c.iBlockSize = 4;
    d.c.lngPollStartTick = d.c.lngBlockStartTick = 10000;
    // Before the first full block the span runs from tick 0 to the poll start.
    EXPECT_EQ(d.at(10500), "1|2.000|0.400");
    EXPECT_EQ(d.c.lngElapsed, 500);
    d.at(10700);
    d.at(10900);
    EXPECT_EQ(d.at(11000), "4|4.000|4.000"); // the fourth reading closes the first block
    EXPECT_EQ(d.c.lngBlockPrevTick, 10000);
    EXPECT_EQ(d.c.lngBlockStartTick, 11000);
    EXPECT_EQ(d.at(11100), "5|4.545|4.000"); // inside the next block: the last block's figure
}

TEST(Counters, SixteenAndThirtyTwoBitLimits) {
    Display d;
    d.c.iBlockSize = 33; // 33 * 1000 overflows in 16 bits
    d.c.lngPollStartTick = d.c.lngBlockStartTick = 1000;
    try {
        d.at(2000);
        FAIL() << "no overflow";
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.number(), RuntimeError::Overflow);
    }
    // The reading and the total frequency were already shown.
    EXPECT_EQ(d.total + "|" + d.frequency + "|" + d.current, "1|1.000|-");
    d.c.iBlockSize = 32;
    EXPECT_EQ(d.at(3000), "2|1.000|32.000"); // 32000 over the 1000 ms from tick 0 to the start

    Display many; // readings times 1000 is 32-bit: the next reading still fits, then not
    many.c.lngReadings = 2147482;
    many.at(1000);
    EXPECT_THROW(many.at(2000), RuntimeError);
}

} // namespace

TEST(ErrorElements, AnythingButExactlyZeroIsRedAndAMissingElementKeepsItsLabel) {
    test::FakePlatform p;
    for (const auto& [code, fore] : {std::pair{"0", color::Black},
                                     {"00", color::Red},
                                     {"200", color::Red},
                                     {" 0", color::Red},
                                     {"", color::Red}}) {
        QString codeText = "x", descr = "y";
        color::Color codeFore = color::Blue, descrFore = color::Blue;
        const QString answer = QStringLiteral("<R><ERROR_CODE>%1</ERROR_CODE><ERROR_DESCRIPTION>d"
                                              "</ERROR_DESCRIPTION></R>")
                                   .arg(code);
        EXPECT_TRUE(showErrorElements(p, answer, codeText, codeFore, descr, descrFore));
        EXPECT_EQ(codeText + "|" + descr, QString(code) + "|d");
        EXPECT_EQ(codeFore, fore) << "lblErrNumer.foreColor for " << code;
        EXPECT_EQ(descrFore, fore) << "lblErrDescr.foreColor for " << code;
    }
    QString codeText = "7", descr = "old";
    color::Color codeFore = color::Blue, descrFore = color::Blue;
    EXPECT_FALSE(showErrorElements(p, "<R><ERROR_DESCRIPTION>new</ERROR_DESCRIPTION></R>", codeText,
                                   codeFore, descr, descrFore));
    EXPECT_EQ(codeText + "|" + descr, "7|new");
    EXPECT_EQ(codeFore, color::Blue) << "lblErrNumer.foreColor";
}
