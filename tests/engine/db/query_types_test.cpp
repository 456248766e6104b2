// Columns of every type, as the server sends them and as callers read them.
#include <gtest/gtest.h>

#include "engine/db/query.h"
#include "tests/support/qt_print.h"
#include "tests/support/sandbox_wire.h"

namespace torvik::db {
namespace {

struct TypeCase {
    const char* expression;
    FieldType type;
    const char* text;
};

class QueryTypes : public testing::TestWithParam<std::tuple<test::Wire, TypeCase>> {};

class QueryValues : public test::OverTheWire {};

TORVIK_OVER_THE_WIRE(QueryValues);

TEST_P(QueryTypes, ColumnAndValue) {
    const auto& [wire, column] = GetParam();
    test::SandboxServer server(wire);
    Query query(&server.session());
    query.ParamCheck = false;
    query.SQL = {QStringLiteral("SELECT ") + QString::fromUtf8(column.expression) + QStringLiteral(" AS v")};
    query.Open();
    EXPECT_EQ(query.Fields(0).Type(), column.type);
    EXPECT_EQ(query.Fields(0).AsString(), QString::fromUtf8(column.text));
    EXPECT_FALSE(query.Fields(0).IsNull());
}

INSTANTIATE_TEST_SUITE_P(
    All, QueryTypes,
    testing::Combine(
        testing::Values(test::Wire::Plain, test::Wire::Tls),
        testing::Values(
            TypeCase{"CAST(1 AS bit)", FieldType::Bool, "True"},
            TypeCase{"CAST(255 AS tinyint)", FieldType::Integer, "255"},
            TypeCase{"CAST(-32768 AS smallint)", FieldType::Integer, "-32768"},
            TypeCase{"CAST(-2147483648 AS int)", FieldType::Integer, "-2147483648"},
            TypeCase{"CAST(9223372036854775807 AS bigint)", FieldType::Integer, "9223372036854775807"},
            TypeCase{"CAST(0.1 AS float)", FieldType::Float, "0.1"},
            TypeCase{"CAST(0.1 AS real)", FieldType::Float, "0.1"},
            TypeCase{"CAST('12345678901234567890123456789012345678' AS decimal(38,0))", FieldType::Decimal,
                     "12345678901234567890123456789012345678"},
            TypeCase{"CAST('-0.0001' AS decimal(38,4))", FieldType::Decimal, "-0.0001"},
            TypeCase{"CAST('-922337203685477.5808' AS money)", FieldType::Decimal, "-922337203685477.5808"},
            TypeCase{"CAST('12.5' AS smallmoney)", FieldType::Decimal, "12.5"},
            TypeCase{"CAST('ab' AS char(5))", FieldType::Text, "ab   "},
            TypeCase{"CAST('ab ' AS varchar(5))", FieldType::Text, "ab "},
            TypeCase{"CAST('' AS varchar(5))", FieldType::Text, ""},
            TypeCase{"N'blåbær ☕'", FieldType::Text, "blåbær ☕"},
            TypeCase{"CAST(N'ø' AS nchar(3))", FieldType::Text, "ø  "},
            TypeCase{"CAST('lang' AS varchar(max))", FieldType::Text, "lang"},
            TypeCase{"CAST('tekst æøå' AS text)", FieldType::Text, "tekst æøå"},
            TypeCase{"CAST(N'tekst ☕' AS ntext)", FieldType::Text, "tekst ☕"},
            TypeCase{"CAST(0x616263 AS varbinary(10))", FieldType::Bytes, "abc"},
            TypeCase{"CAST(0x616263 AS image)", FieldType::Bytes, "abc"},
            TypeCase{"CAST('0A0B0C0D-0102-0304-0506-0708090A0B0C' AS uniqueidentifier)", FieldType::Guid,
                     "{0A0B0C0D-0102-0304-0506-0708090A0B0C}"},
            TypeCase{"CAST('20240229 23:59:59.997' AS datetime)", FieldType::DateTime, "29.02.2024 23:59:59"},
            TypeCase{"CAST('20240229 12:34' AS smalldatetime)", FieldType::DateTime, "29.02.2024 12:34:00"},
            TypeCase{"CAST('2024-02-29 23:59:59.9999999' AS datetime2(7))", FieldType::DateTime, "29.02.2024 23:59:59"},
            TypeCase{"CAST('2024-02-29' AS date)", FieldType::Date, "29.02.2024"})));

TEST_P(QueryValues, DateTimeKeepsItsThreeHundredths) {
    Query query(&server.session());
    query.ParamCheck = false;
    query.SQL = {
        QStringLiteral("SELECT CAST('20240229 23:59:59.997' AS datetime) AS a, "
                       "CAST('20240229 00:00:00.003' AS datetime) AS b, "
                       "CAST('2024-02-29 23:59:59.9999999' AS datetime2(7)) AS c")};
    query.Open();
    EXPECT_EQ(query.Fields(0).AsDateTime().time(), QTime(23, 59, 59, 997));
    EXPECT_EQ(query.Fields(1).AsDateTime().time(), QTime(0, 0, 0, 3));
    EXPECT_EQ(query.Fields(2).AsDateTime().fraction(), 9999999);
    EXPECT_TRUE(query.Fields(0).Info().Legacy);
    EXPECT_FALSE(query.Fields(2).Info().Legacy);
}

TEST_P(QueryValues, NullIsNullInEveryColumn) {
    server.run(
        QStringLiteral("CREATE TABLE T (a int, b char(5), c nvarchar(10), d decimal(18,2), e money, f datetime, "
                       "g uniqueidentifier, h bit, i float, j text, k image, l varchar(max), m varbinary(10)) "
                       "INSERT T (a) VALUES (NULL)"));
    Query query(&server.session());
    query.SQL = {QStringLiteral("SELECT * FROM T")};
    query.Open();
    ASSERT_EQ(query.FieldCount(), 13);
    for (int i = 0; i < query.FieldCount(); ++i) {
        EXPECT_TRUE(query.Fields(i).IsNull()) << i;
        EXPECT_EQ(query.Fields(i).AsString(), QString()) << i;
        EXPECT_EQ(query.Fields(i).AsInteger(), 0) << i;
    }
    EXPECT_FALSE(query.FieldByName(QStringLiteral("f")).AsDateTime().isValid());
}

TEST_P(QueryValues, ColumnsKnowTheirSizes) {
    server.run(QStringLiteral("CREATE TABLE T (a varchar(20), b nchar(7), c decimal(18,3), d varchar(max), e image)"));
    Query query(&server.session());
    query.SQL = {QStringLiteral("SELECT * FROM T")};
    query.Open();
    EXPECT_EQ(query.Fields(0).Size(), 20);
    EXPECT_EQ(query.Fields(1).Size(), 7);
    EXPECT_TRUE(query.Fields(1).Info().Fixed);
    EXPECT_EQ(query.Fields(2).Size(), 18);
    EXPECT_EQ(query.Fields(2).Info().Scale, 3);
    EXPECT_TRUE(query.Fields(3).Info().Long);
    EXPECT_TRUE(query.Fields(4).Info().Long);
}

TEST_P(QueryValues, LongValuesAmongShortOnesComeWhole) {
    server.run(QStringLiteral("CREATE TABLE T (a int, b varchar(max), c int, d image, e datetime, f varchar(10))"));
    Query insert(&server.session());
    insert.SQL = {QStringLiteral("INSERT T VALUES (:a, :b, :c, :d, :e, :f)")};
    const QString text = QString(150'001, u'ø') + QStringLiteral("slutt");
    const QByteArray bytes = QByteArray(1'000'003, '\x7F') + QByteArray("\0slutt", 6);
    for (int i = 0; i < 3; ++i) {
        insert.ParamByName(QStringLiteral("a")) = i;
        insert.ParamByName(QStringLiteral("b")) = i == 1 ? Value(QString()) : Value(text);
        insert.ParamByName(QStringLiteral("c")) = i * 10;
        insert.ParamByName(QStringLiteral("d")).SetType(FieldType::Bytes);
        insert.ParamByName(QStringLiteral("d")) = i == 1 ? Value() : Value(bytes);
        insert.ParamByName(QStringLiteral("e")) = QDate(2024, 1, 1);
        insert.ParamByName(QStringLiteral("f")) = "etter";
        insert.ExecSQL();
    }
    Query query(&server.session());
    query.SQL = {QStringLiteral("SELECT * FROM T ORDER BY a")};
    query.Open();
    ASSERT_EQ(query.RecordCount(), 3);
    EXPECT_TRUE(query.ValueAt(0, 1) == Value(text));
    EXPECT_TRUE(query.ValueAt(1, 1) == Value(QString()));
    EXPECT_TRUE(query.ValueAt(0, 3) == Value(bytes));
    EXPECT_TRUE(query.ValueAt(1, 3).isNull());
    EXPECT_EQ(query.ValueAt(2, 2), Value(20));
    EXPECT_EQ(query.ValueAt(2, 5), Value("etter"));
}

TEST_P(QueryValues, ABlobOf100MegabytesPasses) {
    server.run(QStringLiteral("CREATE TABLE T (a varbinary(max))"));
    const QByteArray blob(100 * 1024 * 1024, 'x');
    Query insert(&server.session());
    insert.CommandTimeout = 300;
    insert.SQL = {QStringLiteral("INSERT T VALUES (:a)")};
    insert.ParamByName(QStringLiteral("a")) = blob;
    insert.ExecSQL();
    Query query(&server.session());
    query.CommandTimeout = 300;
    query.SQL = {QStringLiteral("SELECT a FROM T")};
    query.Open();
    EXPECT_TRUE(query.Fields(0).AsBytes() == blob);
}

}  // namespace
}  // namespace torvik::db
