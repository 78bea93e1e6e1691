#include "base/event_boundary.h"
#include "base/integers.h"
#include "base/numeric.h"
#include "support/fake_platform.h"

#include "support/run_time_errors.h"

#include <gtest/gtest.h>

using namespace torv;

using torv::test::errorOf;

TEST(IntegerRulesTest, ConversionsRoundHalfToEvenWithinTheirLimits) {
    const std::pair<double, int> rows[] = {{2.5, 2},          {3.5, 4},    {-2.5, -2},
                                           {-3.5, -4},        {2.4999, 2}, {32767.0, 32767},
                                           {-32768.0, -32768}};
    for (const auto& [value, rounded] : rows)
        EXPECT_EQ(CInt(value), rounded) << value;
    EXPECT_EQ(CLng(1e9 + 0.5), 1000000000);
    EXPECT_EQ(CLng(-0.5), 0);
    EXPECT_EQ(CLng(2147483647.0), 2147483647);
    // Overflow: 32767.5 rounds to 32768.
    EXPECT_EQ(errorOf([] { CInt(32767.5); }), 6);
    EXPECT_EQ(errorOf([] { CInt(-32768.6); }), 6);
    EXPECT_EQ(errorOf([] { CLng(2147483648.0); }), 6);
    EXPECT_EQ(errorOf([] { CInt(std::nan("")); }), 6);
    EXPECT_EQ(errorOf([] { CByte(256.0); }), 6);
    EXPECT_EQ(errorOf([] { CByte(-1.0); }), 6);
}

TEST(IntegerRulesTest, TextConversionsRaiseTypeMismatchOrOverflow) {
    EXPECT_EQ(CInt(QString("16383")), 16383);
    EXPECT_EQ(CInt(QString(" -1 ")), -1);
    EXPECT_EQ(CInt(QString("12.5")), 12);
    EXPECT_EQ(CLng(QString("130001")), 130001);
    EXPECT_EQ(errorOf([] { CInt(QString("32768")); }), 6);
    EXPECT_EQ(errorOf([] { CInt(QString("abc")); }), 13);
    EXPECT_EQ(errorOf([] { CInt(QString()); }), 13);
    EXPECT_EQ(errorOf([] { CInt(QString("99999999999999999999999")); }), 6);
    EXPECT_EQ(errorOf([] { CLng(QString("1e10")); }), 6);
    EXPECT_EQ(errorOf([] { CSng(QString("1e300")); }), 6);
}

TEST(IntegerRulesTest, CheckedArithmeticAndSubscripts) {
    EXPECT_EQ(mul16(32, 1000), 32000);
    EXPECT_EQ(sub16(-32767, 1), -32768);
    EXPECT_EQ(errorOf([] { mul16(33, 1000); }), 6);
    EXPECT_EQ(errorOf([] { add16(32767, 1); }), 6);
    EXPECT_EQ(errorOf([] { add32(2147483647, 1); }), 6);
    EXPECT_EQ(errorOf([] { mul32(100000, 100000); }), 6);
    Int16 c = 32766;
    EXPECT_EQ(inc16(c), 32767);
    EXPECT_EQ(errorOf([&] { inc16(c); }), 6);
    EXPECT_EQ(c, 32767); // a failed increment leaves the value
    EXPECT_DOUBLE_EQ(divide(10, 4), 2.5);
    EXPECT_EQ(errorOf([] { divide(1, 0); }), 11);
    EXPECT_EQ(errorOf([] { divide(0, 0); }), 6);

    BoundedArray<Int16, 1, 20> mask;
    mask[20] = 5;
    EXPECT_EQ(mask[20], 5);
    EXPECT_EQ(errorOf([&] { mask[0]; }), 9);
    EXPECT_EQ(errorOf([&] { mask[21] = 1; }), 9);
}
