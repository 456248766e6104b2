// Rows that travel in blocks, by bulk copy where it serves, cannot be told from rows sent one by one.
#include <gtest/gtest.h>

#include <functional>

#include "engine/db/errors.h"
#include "engine/db/query.h"
#include "engine/db/table.h"
#include "tests/support/qt_print.h"
#include "tests/support/sandbox_wire.h"

namespace torvik::db {
namespace {

using Cells = std::vector<std::pair<const char*, Value>>;

struct BlockCase {
    const char* name;
    const char* columns;
    bool bulk;  // whether bulk copy takes such rows
    std::function<Cells(int row)> row;
    int oddAt = -1;  // this row, if any,
    Cells odd = {};  // is this one
};

void PrintTo(const BlockCase& given, std::ostream* out) {
    *out << given.name;
}

Cells numbered(int row) {
    return {{"a", row}, {"b", QStringLiteral("rad %1").arg(row)}};
}

constexpr int kRows = 1500;
const DateTime kPoint(QDate(2024, 2, 29), QTime(23, 59, 58, 123), 4567);

const std::vector<BlockCase>& cases() {
    static const std::vector<BlockCase> all = {
        {"integers_and_texts", "a int NOT NULL PRIMARY KEY, b varchar(20)", true, numbered},
        {"an_identity_of_its_own", "id int IDENTITY(5,2), a int, b varchar(20)", true, numbered},
        {"nulls_stay_null_in_columns_with_a_default", "a int, b varchar(20) DEFAULT 'std'", true,
         [](int row) {
             return Cells{{"a", row}, {"b", row % 3 == 0 ? Value() : Value("x")}};
         }},
        {"columns_not_set_get_their_default", "a int, b varchar(20), c int NULL DEFAULT 3, d datetime NULL", true,
         numbered},
        {"a_column_not_set_that_must_not_be_null", "a int, b varchar(20), c int NOT NULL DEFAULT 3", false, numbered},
        {"defaults_both_for_set_and_for_unset_columns", "a int NULL DEFAULT 1, b varchar(20), c int NULL DEFAULT 3",
         false,
         [](int row) {
             return Cells{{"a", row % 2 ? Value(row) : Value()}, {"b", "x"}};
         }},
        {"bytes_that_fill_the_drivers_room", "a int, b varbinary(8000)", true,
         [](int row) {
             return Cells{{"a", row}, {"b", QByteArray(4096, char('a' + row % 26))}};
         }},
        {"bytes_beyond_the_drivers_room", "a int, b varbinary(8000)", false,
         [](int row) {
             return Cells{{"a", row}, {"b", QByteArray(4097, char('a' + row % 26))}};
         }},
        {"bytes_as_wide_as_can_be", "a int, b binary(8000)", false,
         [](int row) {
             return Cells{{"a", row}, {"b", QByteArray(8000, char('a' + row % 26))}};
         }},
        {"texts_that_fill_the_drivers_room", "a int, b varchar(8000)", true,
         [](int row) {
             return Cells{{"a", row}, {"b", QString(4096, QChar(u'a' + row % 26))}};
         }},
        {"texts_as_wide_as_can_be", "a int, b varchar(8000)", false,
         [](int row) {
             return Cells{{"a", row}, {"b", QString(8000, QChar(u'a' + row % 26))}};
         }},
        {"unicode_that_fills_the_drivers_room", "a int, b nvarchar(4000)", true,
         [](int row) {
             return Cells{{"a", row}, {"b", QString(2048, QChar(u'a' + row % 26))}};
         }},
        {"unicode_as_wide_as_can_be", "a int, b nvarchar(4000)", false,
         [](int row) {
             return Cells{{"a", row}, {"b", QString(4000, QChar(u'a' + row % 26))}};
         }},
        {"whole_numbers_of_every_size", "a int, t tinyint, s smallint, g bigint, f bit", true,
         [](int row) {
             return Cells{{"a", row}, {"t", row % 256}, {"s", -row}, {"g", qint64{row} << 40}, {"f", row % 2 == 0}};
         }},
        {"numbers_with_decimals", "a int, p decimal(18,4), q numeric(38,0), m money, k smallmoney, f float, r real",
         true,
         [](int row) {
             return Cells{{"a", row},
                          {"p", Decimal{row * 123'457 - 9, 4}},
                          {"q", *Decimal::fromText(u"-7345678907345678907345678907345678")},
                          {"m", Decimal{-row * 99'999'999LL, 4}},
                          {"k", Decimal{row - 700, 4}},
                          {"f", row / 7.0},
                          {"r", row / 8.0}};
         }},
        {"decimals_are_rounded_as_by_the_server", "a int, p decimal(9,2), m money", true,
         [](int row) {
             return Cells{{"a", row}, {"p", Decimal{row * 5 - 3000, 3}}, {"m", Decimal{row * 5 - 3000, 5}}};
         }},
        {"points_of_time", "a int, d datetime, s smalldatetime", true,
         [](int row) {
             const QTime time = QTime(0, 0).addMSecs(row * 57'601);
             return Cells{{"a", row},
                          {"d", DateTime(QDate(1899, 12, 25).addDays(row), time)},
                          {"s", DateTime(QDate(2024, 1, 1), QTime(0, 0).addSecs(row * 60))}};
         }},
        {"the_last_moment_of_a_day", "a int, d datetime", true,
         [](int row) {
             return Cells{{"a", row}, {"d", DateTime(QDate(2024, 2, 28), QTime(23, 59, 59, 990 + row % 10))}};
         }},
        {"times_of_a_finer_type", "a int, d datetime2, e date", false,
         [](int row) {
             return Cells{{"a", row}, {"d", kPoint}, {"e", kPoint}};
         }},
        {"norwegian_letters", "a int, c char(8), v varchar(20), n nvarchar(20), w nchar(4)", true,
         [](int row) {
             return Cells{{"a", row}, {"c", "æØå"}, {"v", "Blåbærsyltetøy €5"}, {"n", "Łódź æøå"}, {"w", "ÆØ"}};
         }},
        {"empty_texts_and_trailing_blanks", "a int, c char(4), v varchar(20), n nvarchar(20)", true,
         [](int row) {
             return Cells{
                 {"a", row}, {"c", row % 2 ? "" : "x "}, {"v", row % 2 ? "" : " y  "}, {"n", row % 2 ? "" : "z "}};
         }},
        {"bytes_and_guids", "a int, b varbinary(8), c binary(4), g uniqueidentifier", true,
         [](int row) {
             return Cells{{"a", row},
                          {"b", QByteArray(row % 9, '\xFE')},
                          {"c", QByteArray("\0\x01", 2)},
                          {"g", QUuid::fromString(u"{0F8FAD5B-D9CB-469F-A165-70867728950E}")}};
         }},
        {"long_texts", "a int, t text, m varchar(max)", false,
         [](int row) {
             return Cells{{"a", row}, {"t", QString(row, u'å')}, {"m", QString(row, u'ø')}};
         }},
        {"letters_that_the_column_lacks", "a int, b varchar(20)", true, numbered, 700, {{"a", 700}, {"b", "Łódź"}}},
        {"a_first_row_that_is_not_for_bulk_copy",
         "a int, b varchar(20)",
         false,
         numbered,
         0,
         {{"a", 0}, {"b", "Łódź"}}},
        {"a_letter_of_two_halves", "a int, b nvarchar(20)", true, numbered, 3, {{"a", 3}, {"b", u"\U0001F6D2"}}},
        {"a_text_that_is_too_long",
         "a int, b varchar(20)",
         true,
         numbered,
         900,
         {{"a", 900}, {"b", QString(21, u'x')}}},
        {"a_number_that_does_not_fit", "a smallint, b varchar(20)", true, numbered, 1200, {{"a", 99'999}, {"b", "x"}}},
        {"a_null_that_must_not_be",
         "a int NOT NULL, b varchar(20)",
         true,
         numbered,
         1100,
         {{"a", Value()}, {"b", "x"}}},
        {"a_key_that_is_there",
         "a int NOT NULL CONSTRAINT K PRIMARY KEY, b varchar(20)",
         true,
         numbered,
         734,
         {{"a", 17}, {"b", "igjen"}}},
        {"a_check_that_fails",
         "a int CONSTRAINT C CHECK (a >= 0), b varchar(20)",
         true,
         numbered,
         601,
         {{"a", -1}, {"b", "x"}}},
        {"a_foreign_key_that_fails",
         "a int CONSTRAINT F REFERENCES Forelder (id), b varchar(20)",
         true,
         [](int) {
             return Cells{{"a", 1}, {"b", "x"}};
         },
         500,
         {{"a", 2}, {"b", "x"}}},
    };
    return all;
}

class RowBlocks : public testing::TestWithParam<std::tuple<test::Wire, BlockCase>> {
protected:
    struct Outcome {
        std::string rows;
        std::string error;
        qint64 sent;
        bool inTransaction;
    };

    RowBlocks() {
        server.run(QStringLiteral("CREATE TABLE Forelder (id int PRIMARY KEY)"));
        server.run(QStringLiteral("INSERT Forelder VALUES (1)"));
    }

    Outcome post(int blockRows) {
        server.run(QStringLiteral("CREATE TABLE T (%1)").arg(QString::fromUtf8(given.columns)));
        Session& session = server.session();
        Table table(&session);
        table.SetTableName(QStringLiteral("T"));
        table.Options.BlockRows = blockRows;
        table.Open();
        session.StartTransaction();
        Outcome outcome{};
        try {
            for (int row = 0; row < kRows; ++row) {
                table.Append();
                for (const auto& [column, value] : row == given.oddAt ? given.odd : given.row(row))
                    table.FieldByName(QString::fromUtf8(column)) = value;
                table.Post();
            }
            table.Flush();
        } catch (const StatementError& e) {
            outcome.error = std::to_string(e.Number) + " " + e.what();
        }
        outcome.sent = table.SentRows();
        outcome.inTransaction = session.InTransaction();
        session.Commit();
        outcome.rows = server.rows(QStringLiteral("SELECT * FROM T ORDER BY a"));
        server.run(QStringLiteral("DROP TABLE T"));
        return outcome;
    }

    const BlockCase& given = std::get<1>(GetParam());
    test::SandboxServer server{std::get<0>(GetParam())};
};

TEST_P(RowBlocks, CannotBeToldFromRowsSentOneByOne) {
    int bulkRequests = 0;
    int observer = 0;
    if (server.isSandbox())
        observer = server.faults().observe(
            [&](const sandbox::RequestInfo& request) { bulkRequests += request.kind == sandbox::RequestKind::Bulk; });
    const Outcome blocks = post(1000);
    if (server.isSandbox()) {
        server.faults().forget(observer);
        EXPECT_EQ(bulkRequests > 0, given.bulk);
    }
    const Outcome single = post(1);
    EXPECT_EQ(blocks.rows, single.rows);
    EXPECT_EQ(blocks.error, single.error);
    EXPECT_EQ(blocks.sent, single.sent);
    EXPECT_EQ(blocks.inTransaction, single.inTransaction);
}

INSTANTIATE_TEST_SUITE_P(
    All, RowBlocks, testing::Combine(testing::Values(test::Wire::Plain, test::Wire::Tls), testing::ValuesIn(cases())),
    [](const auto& test) { return test::wireName(std::get<0>(test.param)) + "_" + std::get<1>(test.param).name; });

}  // namespace
}  // namespace torvik::db
