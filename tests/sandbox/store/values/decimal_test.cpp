// Exact decimals: scaling, the four operations, texts.
#include "sandbox/store/values/decimal.h"

#include <gtest/gtest.h>

#include "sandbox/store/values/storage_codec.h"

namespace sandbox {
namespace {

Decimal number(std::string_view text) {
    return decimalFromText(text).value();
}

std::string shown(const std::optional<Int128>& n, int scale) {
    return n ? toText(*n, scale) : "overflow";
}

TEST(Decimal, TextKeepsItsDecimals) {
    for (const char* text : {"0", "-0.50", "12.340", "0.001", "99999999999999999999999999999999999999", "-1"}) {
        const Decimal d = number(text);
        EXPECT_EQ(toText(d.unscaled, d.scale), text);
    }
}

TEST(Decimal, WhatIsNoNumberIsNone) {
    for (const char* text : {"", "-", ".", "1e5", "1.2.3", "x", "100000000000000000000000000000000000000"}) {
        EXPECT_FALSE(decimalFromText(text)) << text;
    }
}

TEST(Decimal, ShiftingRoundsHalfAwayFromZero) {
    const struct {
        const char* from;
        int scale;
        const char* to;
    } cases[] = {{"2.345", 2, "2.35"}, {"-2.345", 2, "-2.35"}, {"2.344", 2, "2.34"}, {"0.5", 0, "1"},
                 {"-0.5", 0, "-1"},    {"9.99", 1, "10.0"},    {"1", 3, "1.000"},    {"0.49", 0, "0"}};
    for (const auto& c : cases) EXPECT_EQ(shown(rescale(number(c.from), c.scale), c.scale), c.to) << c.from;
    EXPECT_EQ(shown(rescale(number("2.9"), 0, 38, Rounding::Truncate), 0), "2");
    EXPECT_FALSE(rescale(number("99.9"), 0, 2)) << "100 has three digits";
}

TEST(Decimal, ProductsOfThirtyEightDigitsPassThrough256Bits) {
    const Int128 big = number("12345678901234567890123456789012345678").unscaled;
    EXPECT_EQ(shown(multiply(big, number("10000000000000000000").unscaled, 19), 0),
              "12345678901234567890123456789012345678");
    EXPECT_FALSE(multiply(big, 10));
    EXPECT_EQ(shown(multiply(big, -1), 0), "-12345678901234567890123456789012345678");
}

TEST(Decimal, QuotientsAreCutNotRounded) {
    EXPECT_EQ(shown(divide(20, 3, 5), 6), "0.666666");
    EXPECT_EQ(shown(divide(-20, 3, 5), 6), "-0.666666");
    EXPECT_EQ(shown(divide(1, 3, 37), 37), "0.3333333333333333333333333333333333333");
    EXPECT_EQ(shown(divide(1, powerOfTen(37), 74), 37), "1.0000000000000000000000000000000000000");
    EXPECT_FALSE(divide(powerOfTen(37), 1, 5));
}

TEST(Decimal, ComparesAcrossScales) {
    EXPECT_EQ(compareDecimals(number("1.50"), number("1.5")), 0);
    EXPECT_LT(compareDecimals(number("-1"), number("0.1")), 0);
    EXPECT_GT(compareDecimals(number("99999999999999999999999999999999999999"), number("0.99999999999999999999")), 0);
}

TEST(Decimal, WideFormKeepsOrderInItsBytes) {
    const char* rising[] = {"-99999999999999999999999999999999999999", "-256", "-1", "0", "1", "255", "256",
                            "99999999999999999999999999999999999999"};
    for (std::size_t i = 0; i + 1 < std::size(rising); ++i) {
        const auto a = encodeWideDecimal(number(rising[i]).unscaled),
                   b = encodeWideDecimal(number(rising[i + 1]).unscaled);
        EXPECT_LT(a, b) << rising[i];
        EXPECT_TRUE(decodeWideDecimal(a) == number(rising[i]).unscaled);
    }
}

TEST(Decimal, FloatsKeepSeventeenDigits) {
    EXPECT_EQ(shown(fromDouble(0.1, 20), 20), "0.10000000000000000000");
    EXPECT_EQ(shown(fromDouble(1234.5678, 2), 2), "1234.57");
    EXPECT_EQ(shown(fromDouble(2.5, 0), 0), "3");
    EXPECT_FALSE(fromDouble(1e39, 0));
    EXPECT_EQ(toDouble(number("0.1").unscaled, 1), 0.1);
}

}  // namespace
}  // namespace sandbox
