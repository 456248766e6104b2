// What the session layer reads out of statement texts.
#include "engine/db/sql_text.h"

#include <gtest/gtest.h>

#include "tests/support/qt_print.h"

namespace torvik::db {
namespace {

struct CountCase {
    const char* select;
    const char* counted;  // what stands in the brackets
};

class CountingText : public testing::TestWithParam<CountCase> {};

TEST_P(CountingText, CountsTheSelectWithoutItsOwnOrder) {
    EXPECT_EQ(countingText(QString::fromUtf8(GetParam().select)), QStringLiteral("SELECT COUNT(*) FROM (") +
                                                                      QString::fromUtf8(GetParam().counted) +
                                                                      QStringLiteral("\r\n) AS torvik_rows"));
}

INSTANTIATE_TEST_SUITE_P(
    All, CountingText,
    testing::Values(CountCase{"SELECT a FROM T", "SELECT a FROM T"},
                    CountCase{"SELECT a FROM T ORDER BY a DESC", "SELECT a FROM T "},
                    CountCase{"select a from T order\r\nby a", "select a from T "},
                    CountCase{"SELECT a FROM T WHERE b = 'ORDER BY'", "SELECT a FROM T WHERE b = 'ORDER BY'"},
                    CountCase{"SELECT a FROM (SELECT TOP 3 a FROM U ORDER BY a) u",
                              "SELECT a FROM (SELECT TOP 3 a FROM U ORDER BY a) u"},
                    CountCase{"SELECT a FROM T -- ORDER BY a", "SELECT a FROM T -- ORDER BY a"},
                    CountCase{"SELECT [ORDER BY] FROM Reorder", "SELECT [ORDER BY] FROM Reorder"}));

TEST(SqlText, CommentsNest) {
    EXPECT_EQ(withoutLiterals(QStringLiteral("a /* b /* c */ d */ e")), QStringLiteral("a   e"));
    EXPECT_EQ(withoutLiterals(QStringLiteral("a /* b /* c */ d")), QStringLiteral("a  "));
    EXPECT_EQ(withoutLiterals(QStringLiteral("a /*/ b */ c")), QStringLiteral("a   c"));
}

TEST(SqlText, NamesAndLiteralsAreWords) {
    EXPECT_EQ(withoutNames(QStringLiteral("[a, b] = 'c, d' AND \"e, f\" -- , g")), QStringLiteral("x = x AND x  "));
}

}  // namespace
}  // namespace torvik::db
