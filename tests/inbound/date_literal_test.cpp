// Dates and numbers as they stand in SQL text.
#include "inbound/date_literal.h"

#include <gtest/gtest.h>

namespace torvik {
namespace {

TEST(DateLiteral, HasAColonBeforeTheMilliseconds) {
    EXPECT_EQ(dateTimeLiteral(QDateTime(QDate(2026, 3, 2), QTime(21, 5, 9, 7))),
              QStringLiteral("'20260302 21:05:09:007'"));
}

TEST(DateLiteral, OfADateAloneHasNoTime) {
    EXPECT_EQ(dateLiteral(QDate(2026, 12, 31)), QStringLiteral("'20261231'"));
}

TEST(NumberLiteral, HasAPointAndNoMoreDigitsThanNeeded) {
    EXPECT_EQ(numberLiteral(12.5), QStringLiteral("12.5"));
    EXPECT_EQ(numberLiteral(10), QStringLiteral("10"));
    EXPECT_EQ(numberLiteral(-0.1), QStringLiteral("-0.1"));
}

}  // namespace
}  // namespace torvik
