#include "base/bits.h"
#include "base/colors.h"
#include "base/format.h"
#include "base/messages.h"
#include "base/numeric.h"
#include "support/fake_platform.h"

#include <gtest/gtest.h>

using namespace torv;

TEST(BitStringTest, MostSignificantBitFirst) {
    EXPECT_EQ(ByteToBits(0), QStringLiteral("00000000"));
    EXPECT_EQ(ByteToBits(254), QStringLiteral("11111110"));
    EXPECT_EQ(ByteToBits(1), QStringLiteral("00000001"));
    EXPECT_EQ(IntToBits(16383, 14), QStringLiteral("11111111111111"));
    EXPECT_EQ(IntToBits(16379, 14), QStringLiteral("11111111111011"));
    EXPECT_EQ(IntToBits(5, 3), QStringLiteral("101"));
    EXPECT_EQ(IntToBits(0x7FFF, 14), QStringLiteral("11111111111111")); // high bits dropped
    // Integer division truncates toward zero, so a negative word keeps only its lowest 1.
    EXPECT_EQ(IntToBits(-1, 4), QStringLiteral("0001"));
    EXPECT_EQ(IntToBits(3, 0), QString());
}

TEST(FormatTest, FixedDecimalPatterns) {
    setDecimalSeparator(QLatin1Char('.'));
    EXPECT_EQ(Format(12.3456, QStringLiteral("0.000")), QStringLiteral("12.346"));
    EXPECT_EQ(Format(0, QStringLiteral("0.000")), QStringLiteral("0.000"));
    EXPECT_EQ(Format(-1.5, QStringLiteral("0.0000")), QStringLiteral("-1.5000"));
    EXPECT_EQ(Format(2, QStringLiteral("0.00000")), QStringLiteral("2.00000"));
    EXPECT_EQ(Format(1234.56, QStringLiteral("###0.0")), QStringLiteral("1234.6"));
    EXPECT_EQ(Format(0.04, QStringLiteral("###0.0")), QStringLiteral("0.0"));
    EXPECT_EQ(Format(-0.0001, QStringLiteral("0.000")), QStringLiteral("0.000"));
    setDecimalSeparator(QLatin1Char(','));
    EXPECT_EQ(Format(1.5, QStringLiteral("0.000")), QStringLiteral("1,500"));
    setDecimalSeparator(QLatin1Char('.'));
}

TEST(FormatTest, AtPatternRightAlignsText) {
    EXPECT_EQ(Format(QStringLiteral("12"), QStringLiteral("@@@@@@")), QStringLiteral("    12"));
    EXPECT_EQ(Format(QStringLiteral("1234567"), QStringLiteral("@@@@@@")),
              QStringLiteral("1234567"));
    EXPECT_EQ(Format(QString(), QStringLiteral("@@@@@@")), QStringLiteral("      "));
}

TEST(ColorTest, ProgramColoursAreBgr) {
    EXPECT_EQ(color::Red, 255u);
    EXPECT_EQ(color::rgb(255, 0, 0), color::Red);
    EXPECT_EQ(color::rgb(0, 255, 0), 0x00FF00u);
    EXPECT_EQ(color::rgb(0, 0, 255), 0xFF0000u);
    EXPECT_TRUE(color::isSystem(color::ButtonFace));
    EXPECT_EQ(color::systemIndex(color::InactiveCaptionText), 19);
    EXPECT_EQ(color::systemIndex(color::Highlight3D), 20);
    EXPECT_EQ(color::systemIndex(color::InactiveBorder), 11);
    EXPECT_EQ(color::WindowBackground, 0x80000005u);
}

TEST(MessageWideTest, PadsUntilAsWideAsTheReference) {
    test::FakePlatform p;
    p.charWidth = 10;
    p.referenceWidth = 100; // 10 characters
    ShowMessageWide(p, QStringLiteral("abcd"));
    ASSERT_EQ(p.dialogs.size(), 1u);
    EXPECT_EQ(p.dialogs[0].text, QStringLiteral("   abcd   ")); // 3 rounds: 4 -> 10
    EXPECT_EQ(padMessageWide(p, QStringLiteral("0123456789ab")), QStringLiteral("0123456789ab"));
}

TEST(MessageWideTest, TextThatNeverGrowsStillEnds) {
    test::FakePlatform p;
    p.charWidth = 0;
    p.referenceWidth = 50;
    const QString padded = padMessageWide(p, QStringLiteral("x"));
    EXPECT_TRUE(padded.startsWith(QLatin1Char(' ')));
    EXPECT_LT(padded.size(), 1000);
}
