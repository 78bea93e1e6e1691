#include "base/numeric.h"
#include "base/runtime_error.h"
#include "support/fake_platform.h"

#include <gtest/gtest.h>

using namespace torv;
using torv::test::FakePlatform;
using torv::test::ProgramEnded;

TEST(NumericTest, RunTimeTestAcceptsDecimalsSignsExponentsAndHex) {
    const QChar dot('.'), comma(',');
    for (const char* ok : {"0", "12", " 12 ", "-3", "+4.5", ".5", "5.", "1E5", "1e-3", "2D+2",
                           "&HFF", "&h7fff", "\t7\r\n", "-0.001"})
        EXPECT_TRUE(isNumeric(ok, dot)) << ok;
    for (const char* bad : {"", "   ", "abc", "1.2.3", "1,5", "--1", "1e", "&H", "&HFFFFFFFFF",
                            "12a", "1 2", "+", "-.", "?5"})
        EXPECT_FALSE(isNumeric(bad, dot)) << bad;
    // The locale's separator.
    EXPECT_TRUE(isNumeric("12,5", comma));
    EXPECT_FALSE(isNumeric("12.5", comma));
    double v = 0;
    ASSERT_TRUE(numericValue("12,5", comma, v));
    EXPECT_DOUBLE_EQ(v, 12.5);
    ASSERT_TRUE(numericValue("&HFFFF", dot, v));
    EXPECT_DOUBLE_EQ(v, -1.0); // four hex digits are a 16-bit value
    ASSERT_TRUE(numericValue("&H10000", dot, v));
    EXPECT_DOUBLE_EQ(v, 65536.0);
}

TEST(NumericTest, IsNumberRefusesTheOtherSeparator) {
    const QChar dot('.'), comma(',');
    EXPECT_TRUE(IsNumber("12.5", dot) && IsNumber("12,5", comma) && IsNumber(" 12 ", dot));
    EXPECT_FALSE(IsNumber("12,5", dot) || IsNumber("12.5", comma) || IsNumber("1,000", dot) ||
                 IsNumber(QString(), dot));
    // The separator is the second character of the text of 1.5.
    setDecimalSeparatorFromSample("1,5");
    EXPECT_EQ(decimalSeparator(), comma);
    setDecimalSeparatorFromSample("1.5");
    EXPECT_EQ(decimalSeparator(), dot);
}

TEST(NumericTest, ValReadsTheNumericPrefix) {
    const std::pair<const char*, double> rows[] = {
        {"  12.5kg", 12.5}, {"-3e2x", -300.0}, {"12,5", 12.0}, {"abc", 0.0},
        {"", 0.0},          {"&HFF", 255.0},   {"1e", 1.0}};
    for (const auto& [text, value] : rows)
        EXPECT_DOUBLE_EQ(Val(text), value) << text;
    try {
        Val("1e999");
        FAIL() << "no overflow";
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.number(), 6);
    }
}

TEST(NumericTest, StrToDblDropsDecimalsWithACommaAndAsksOnJunk) {
    FakePlatform p;
    const QChar dot('.'), comma(',');
    EXPECT_DOUBLE_EQ(StrToDbl(p, " 12.345", dot), 12.345);
    EXPECT_DOUBLE_EQ(StrToDbl(p, "junk", dot), 0.0); // never asks with a dot
    // "." becomes ",", the text is numeric, and the prefix parser stops at the ",".
    EXPECT_DOUBLE_EQ(StrToDbl(p, "12.345", comma), 12.0);
    EXPECT_DOUBLE_EQ(StrToDbl(p, "  7", comma), 7.0);
    EXPECT_TRUE(p.dialogs.empty());

    p.yesNoAnswers = {true, false};
    EXPECT_DOUBLE_EQ(StrToDbl(p, "junk", comma), 0.0);
    EXPECT_EQ(p.dialogs[0].kind, torv::test::DialogRecord::YesNo);
    EXPECT_EQ(p.messages(), QStringList{"Not Number. Yes - continue. "});
    EXPECT_THROW(StrToDbl(p, "junk", comma), ProgramEnded); // No ends the program
    EXPECT_EQ(p.programEndings, 1);
}
