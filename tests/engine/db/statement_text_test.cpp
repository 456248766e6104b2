// Lines and numbers as they stand in SQL text.
#include "engine/db/statement_text.h"

#include <gtest/gtest.h>

namespace torvik {
namespace {

TEST(NumberLiteral, HasAPointAndNoMoreDigitsThanNeeded) {
    EXPECT_EQ(numberLiteral(12.5), QStringLiteral("12.5"));
    EXPECT_EQ(numberLiteral(10), QStringLiteral("10"));
    EXPECT_EQ(numberLiteral(-0.1), QStringLiteral("-0.1"));
    EXPECT_EQ(numberLiteral(117.91), QStringLiteral("117.91"));
}

TEST(NumberLiteral, IsWrittenOutAsLongAsThatIsReadable) {
    EXPECT_EQ(numberLiteral(0), QStringLiteral("0"));
    EXPECT_EQ(numberLiteral(1000000), QStringLiteral("1000000"));
    EXPECT_EQ(numberLiteral(-123456789012345.0), QStringLiteral("-123456789012345"));
    EXPECT_EQ(numberLiteral(0.00002), QStringLiteral("0.00002"));
    EXPECT_EQ(numberLiteral(1e20), QStringLiteral("1e+20"));
    EXPECT_EQ(numberLiteral(1e-7), QStringLiteral("1e-07"));
}

}  // namespace
}  // namespace torvik
