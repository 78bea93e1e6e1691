#include "base/bits.h"
#include "base/colors.h"
#include "base/format.h"
#include "base/messages.h"
#include "base/numeric.h"
#include "support/fake_platform.h"

#include <gtest/gtest.h>

using namespace torv;

TEST(BitStringTest, MostSignificantBitFirst) {
    EXPECT_EQ(ByteToBits(0) + " " + ByteToBits(254) + " " + ByteToBits(1),
              "00000000 11111110 00000001");
    EXPECT_EQ(IntToBits(16383, 14), "11111111111111");
    EXPECT_EQ(IntToBits(16379, 14), "11111111111011");
    EXPECT_EQ(IntToBits(5, 3), "101");
    EXPECT_EQ(IntToBits(0x7FFF, 14), "11111111111111"); // high bits dropped
    // Integer division truncates toward zero, so a negative word keeps only its lowest 1.
    EXPECT_EQ(IntToBits(-1, 4), "0001");
    EXPECT_EQ(IntToBits(3, 0), QString());
}

TEST(FormatTest, FixedDecimalAndAtPatterns) {
    for (const auto& [value, pattern, text] : {std::tuple{12.3456, "0.000", "12.346"},
                                               {0.0, "0.000", "0.000"},
                                               {-1.5, "0.0000", "-1.5000"},
                                               {2.0, "0.00000", "2.00000"},
                                               {1234.56, "###0.0", "1234.6"},
                                               {0.04, "###0.0", "0.0"},
                                               {-0.0001, "0.000", "0.000"}})
        EXPECT_EQ(Format(value, pattern), text) << value << " " << pattern;
    setDecimalSeparator(QLatin1Char(','));
    EXPECT_EQ(Format(1.5, "0.000"), "1,500");
    setDecimalSeparator(QLatin1Char('.'));
    // "@" right-aligns text.
    EXPECT_EQ(Format(QString("12"), "@@@@@@"), "    12");
    EXPECT_EQ(Format(QString("1234567"), "@@@@@@"), "1234567");
    EXPECT_EQ(Format(QString(), "@@@@@@"), "      ");
}

TEST(MessageWideTest, PadsUntilAsWideAsTheReference) {
    test::FakePlatform p;
    p.charWidth = 10;
    p.referenceWidth = 100; // 10 characters
    ShowMessageWide(p, "abcd");
    EXPECT_EQ(p.messages(), QStringList{"   abcd   "}); // 3 rounds: 4 -> 10
    EXPECT_EQ(padMessageWide(p, "0123456789ab"), "0123456789ab");
    // A text that never grows still ends.
    p.charWidth = 0;
    const QString padded = padMessageWide(p, "x");
    EXPECT_TRUE(padded.startsWith(QLatin1Char(' ')));
    EXPECT_LT(padded.size(), 1000);
}
