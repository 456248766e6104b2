// What bulk copy is given of a value, byte by byte where the stand-in server is more forgiving than a real one.
#include "engine/db/odbc/bulk_cell.h"

#include <gtest/gtest.h>

#include <cstring>
#include <utility>

namespace torvik::db::odbc {
namespace {

constexpr int kDateTimeType = 61;

// Days since 1900 and 1/300 s, as a datetime goes to the server.
std::pair<qint32, qint32> dateTimeSent(const DateTime& value) {
    TableColumn column;
    column.Type = kDateTimeType;
    column.Bytes = 8;
    std::optional<BulkCell> cell = BulkCell::of(column, BulkCell::TextForm::Utf8);
    EXPECT_TRUE(cell && cell->put(value));
    std::pair<qint32, qint32> sent;
    std::memcpy(&sent.first, cell->address() + BulkCell::kPrefix, sizeof sent.first);
    std::memcpy(&sent.second, cell->address() + BulkCell::kPrefix + sizeof sent.first, sizeof sent.second);
    return sent;
}

TEST(BulkCell, LastMomentOfADayIsRoundedIntoTheNext) {
    constexpr qint32 kTicksADay = 24 * 3600 * 300;
    EXPECT_EQ(dateTimeSent(DateTime(QDate(1900, 1, 2), QTime(23, 59, 59, 997))), std::pair(1, kTicksADay - 1));
    EXPECT_EQ(dateTimeSent(DateTime(QDate(1900, 1, 2), QTime(23, 59, 59, 998))), std::pair(1, kTicksADay - 1));
    EXPECT_EQ(dateTimeSent(DateTime(QDate(1900, 1, 2), QTime(23, 59, 59, 999))), std::pair(2, 0));
    EXPECT_EQ(dateTimeSent(DateTime(QDate(1899, 12, 31), QTime(0, 0, 0, 3))), std::pair(-1, 1));
}

TEST(BulkCell, YearThatDatetimeDoesNotHoldIsForInsert) {
    TableColumn column;
    column.Type = kDateTimeType;
    column.Bytes = 8;
    std::optional<BulkCell> cell = BulkCell::of(column, BulkCell::TextForm::Utf8);
    ASSERT_TRUE(cell);
    EXPECT_FALSE(cell->put(DateTime(QDate(1752, 12, 31))));
    EXPECT_TRUE(cell->put(DateTime(QDate(1753, 1, 1))));
}

}  // namespace
}  // namespace torvik::db::odbc
