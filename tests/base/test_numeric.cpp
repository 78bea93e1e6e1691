#include "base/numeric.h"
#include "base/runtime_error.h"
#include "support/fake_platform.h"

#include <gtest/gtest.h>

using namespace torv;
using torv::test::FakePlatform;
using torv::test::ProgramEnded;

namespace {
struct LocaleGuard {
    explicit LocaleGuard(QChar sep) { setDecimalSeparator(sep); }
    ~LocaleGuard() { setDecimalSeparator(QLatin1Char('.')); }
};
} // namespace

TEST(NumericTest, RunTimeTestAcceptsDecimalsSignsExponentsAndHex) {
    const QChar dot('.');
    for (const char* ok : {"0", "12", " 12 ", "-3", "+4.5", ".5", "5.", "1E5", "1e-3", "2D+2",
                           "&HFF", "&h7fff", "\t7\r\n", "-0.001"})
        EXPECT_TRUE(isNumeric(QString::fromLatin1(ok), dot)) << ok;
    for (const char* bad : {"", "   ", "abc", "1.2.3", "1,5", "--1", "1e", "&H", "&HFFFFFFFFF",
                            "12a", "1 2", "+", "-.", "?5"})
        EXPECT_FALSE(isNumeric(QString::fromLatin1(bad), dot)) << bad;
}

TEST(NumericTest, RunTimeTestUsesTheLocaleSeparator) {
    EXPECT_TRUE(isNumeric(QStringLiteral("12,5"), QLatin1Char(',')));
    EXPECT_FALSE(isNumeric(QStringLiteral("12.5"), QLatin1Char(',')));
    double v = 0;
    ASSERT_TRUE(numericValue(QStringLiteral("12,5"), QLatin1Char(','), v));
    EXPECT_DOUBLE_EQ(v, 12.5);
    ASSERT_TRUE(numericValue(QStringLiteral("&HFFFF"), QLatin1Char('.'), v));
    EXPECT_DOUBLE_EQ(v, -1.0); // four hex digits are a 16-bit value
    ASSERT_TRUE(numericValue(QStringLiteral("&H10000"), QLatin1Char('.'), v));
    EXPECT_DOUBLE_EQ(v, 65536.0);
}

TEST(NumericTest, IsNumberRefusesTheOtherSeparator) {
    EXPECT_TRUE(IsNumber(QStringLiteral("12.5"), QLatin1Char('.')));
    EXPECT_FALSE(IsNumber(QStringLiteral("12,5"), QLatin1Char('.')));
    EXPECT_TRUE(IsNumber(QStringLiteral("12,5"), QLatin1Char(',')));
    EXPECT_FALSE(IsNumber(QStringLiteral("12.5"), QLatin1Char(',')));
    EXPECT_FALSE(IsNumber(QStringLiteral("1,000"), QLatin1Char('.')));
    EXPECT_TRUE(IsNumber(QStringLiteral(" 12 "), QLatin1Char('.')));
    EXPECT_FALSE(IsNumber(QString(), QLatin1Char('.')));
}

TEST(NumericTest, SeparatorComesFromTheTextOfOnePointFive) {
    setDecimalSeparatorFromSample(QStringLiteral("1,5"));
    EXPECT_EQ(decimalSeparator(), QLatin1Char(','));
    setDecimalSeparatorFromSample(QStringLiteral("1.5"));
    EXPECT_EQ(decimalSeparator(), QLatin1Char('.'));
}

TEST(NumericTest, ValReadsTheNumericPrefix) {
    EXPECT_DOUBLE_EQ(Val(QStringLiteral("  12.5kg")), 12.5);
    EXPECT_DOUBLE_EQ(Val(QStringLiteral("-3e2x")), -300.0);
    EXPECT_DOUBLE_EQ(Val(QStringLiteral("12,5")), 12.0);
    EXPECT_DOUBLE_EQ(Val(QStringLiteral("abc")), 0.0);
    EXPECT_DOUBLE_EQ(Val(QString()), 0.0);
    EXPECT_DOUBLE_EQ(Val(QStringLiteral("&HFF")), 255.0);
    EXPECT_DOUBLE_EQ(Val(QStringLiteral("1e")), 1.0);
    try {
        Val(QStringLiteral("1e999"));
        FAIL() << "no overflow";
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.number(), 6);
    }
}

TEST(NumericTest, StrToDblWithDotLocaleNeverAsks) {
    FakePlatform p;
    EXPECT_DOUBLE_EQ(StrToDbl(p, QStringLiteral(" 12.345"), QLatin1Char('.')), 12.345);
    EXPECT_DOUBLE_EQ(StrToDbl(p, QStringLiteral("junk"), QLatin1Char('.')), 0.0);
    EXPECT_TRUE(p.dialogs.empty());
}

TEST(NumericTest, StrToDblWithCommaLocaleDropsDecimalsAndAsksOnJunk) {
    FakePlatform p;
    // "." becomes ",", the text is numeric, and the prefix parser stops at the ",".
    EXPECT_DOUBLE_EQ(StrToDbl(p, QStringLiteral("12.345"), QLatin1Char(',')), 12.0);
    EXPECT_DOUBLE_EQ(StrToDbl(p, QStringLiteral("  7"), QLatin1Char(',')), 7.0);
    EXPECT_TRUE(p.dialogs.empty());

    p.yesNoAnswers = {true};
    EXPECT_DOUBLE_EQ(StrToDbl(p, QStringLiteral("junk"), QLatin1Char(',')), 0.0);
    ASSERT_EQ(p.dialogs.size(), 1u);
    EXPECT_EQ(p.dialogs[0].kind, torv::test::DialogRecord::YesNo);
    EXPECT_EQ(p.dialogs[0].text, QStringLiteral("Not Number. Yes - continue. "));

    p.yesNoAnswers = {false};
    EXPECT_THROW(StrToDbl(p, QStringLiteral("junk"), QLatin1Char(',')), ProgramEnded);
    EXPECT_EQ(p.programEndings, 1);
}

TEST(NumericTest, NumberTextIsThePlainDecimalText) {
    const QChar dot('.');
    EXPECT_EQ(numberText(3000, dot), QStringLiteral("3000"));
    EXPECT_EQ(numberText(1234.5, dot), QStringLiteral("1234.5"));
    EXPECT_EQ(numberText(-0.25, dot), QStringLiteral("-0.25"));
    EXPECT_EQ(numberText(0.0001, dot), QStringLiteral("0.0001"));
    EXPECT_EQ(numberText(0.00001, dot), QStringLiteral("1E-05"));
    EXPECT_EQ(numberText(1e15, dot), QStringLiteral("1E+15"));
    EXPECT_EQ(numberText(0.1 + 0.2, dot), QStringLiteral("0.3"));
    EXPECT_EQ(numberText(2.5, QLatin1Char(',')), QStringLiteral("2,5"));
    EXPECT_EQ(numberText(0, dot), QStringLiteral("0"));
}
