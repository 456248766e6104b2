// The operators as SQLite computes them: arithmetic, dates and days, conversions, LIKE and collations.
#include <gtest/gtest.h>

#include <string>

#include "tests/sandbox/store/functions/functions_fixture.h"

namespace sandbox {
namespace {

using Operators = Functions;

TEST_F(Operators, ArithmeticIsSqlServers) {
    const struct {
        BinaryOp op;
        const char* a;
        const char* b;
        const char* value;
    } cases[] = {
        {BinaryOp::Divide, "7", "2", "3"},
        {BinaryOp::Divide, "-7", "2", "-3"},
        {BinaryOp::Modulo, "-7", "3", "-1"},
        {BinaryOp::Divide, "7", "2.0", "3.500000"},
        {BinaryOp::Divide, "7", "2e0", "3.5"},
        {BinaryOp::Divide, "2.0", "3", "0.666666"},
        {BinaryOp::Multiply, "12.34", "2.500", "30.85000"},
        {BinaryOp::Add, "12.34", "2.500", "14.840"},
        {BinaryOp::Modulo, "7.5", "2", "1.5"},
        {BinaryOp::Multiply, "$2.5", "3", "7.50"},
        {BinaryOp::Divide, "$100", "$339", "0.29"},
        {BinaryOp::Add, "'1'", "1", "2"},
        {BinaryOp::Add, "'x'", "'y'", "xy"},
        {BinaryOp::Add, "0x01", "0x02", "0x0102"},
        {BinaryOp::Add, "NULL", "1", "NULL"},
        {BinaryOp::Add, "'x'", "NULL", "NULL"},
        {BinaryOp::BitAnd, "6", "3", "2"},
        {BinaryOp::BitXor, "6", "3", "5"},
        {BinaryOp::Divide, "1", "0", "8134 Divide by zero error encountered."},
        {BinaryOp::Modulo, "1", "0", "8134 Divide by zero error encountered."},
        {BinaryOp::Divide, "1.0", "0", "8134 Divide by zero error encountered."},
        {BinaryOp::Divide, "1e0", "0", "8134 Divide by zero error encountered."},
        {BinaryOp::Divide, "$1", "0", "8134 Divide by zero error encountered."},
        {BinaryOp::Add, "2147483647", "1", "8115 Arithmetic overflow error converting expression to data type int."},
        {BinaryOp::Multiply, "-2147483647", "2",
         "8115 Arithmetic overflow error converting expression to data type int."},
        {BinaryOp::Add, "99999999999999999999999999999999999999", "1",
         "8115 Arithmetic overflow error converting expression to data type numeric."},
        {BinaryOp::Multiply, "1e300", "1e300",
         "8115 Arithmetic overflow error converting expression to data type float."},
        {BinaryOp::Add, "'a'", "1", "245 Conversion failed when converting the varchar value 'a' to data type int."},
    };
    for (const auto& c : cases)
        EXPECT_EQ(operation(c.op, c.a, c.b), c.value) << c.a << ' ' << static_cast<int>(c.op) << ' ' << c.b;
}

TEST_F(Operators, DatesMoveByDays) {
    const std::int64_t d = std::get<std::int64_t>(convert(std::string("20240228 18:00"), varchar(20), kDateTime));
    const auto moved = [&](BinaryOp op, std::string_view days) {
        const Typed n = literal(days);
        return value(
            "SELECT " + arithmeticSql(op, std::to_string(d), kDateTime, literalSql(n.value, n.type), n.type, kDateTime),
            kDateTime);
    };
    EXPECT_EQ(moved(BinaryOp::Add, "2"), "Mar  1 2024  6:00PM");
    EXPECT_EQ(moved(BinaryOp::Subtract, "0.5"), "Feb 28 2024  6:00AM");
    EXPECT_EQ(moved(BinaryOp::Add, "9999999"),
              "8115 Arithmetic overflow error converting expression to data type datetime.");
}

TEST_F(Operators, SmallIntegersOverflowInTheirOwnRange) {
    EXPECT_EQ(value("SELECT t_iadd(200, 100, " + std::to_string(encodeType({.id = TypeId::TinyInt})) + ")", kInt),
              "8115 Arithmetic overflow error converting expression to data type tinyint.");
    EXPECT_EQ(
        value("SELECT t_idiv(-9223372036854775808, -1, " + std::to_string(encodeType({.id = TypeId::BigInt})) + ")",
              kInt),
        "8115 Arithmetic overflow error converting expression to data type bigint.");
    EXPECT_EQ(value("SELECT " + negateSql("-2147483648", kInt), kInt),
              "8115 Arithmetic overflow error converting expression to data type int.");
    EXPECT_EQ(value("SELECT " + complementSql("1", {.id = TypeId::TinyInt}), kInt), "254");
}

TEST_F(Operators, CastsThatFailInABranchNotTakenDoNoHarm) {
    const std::string bad = castSql("'abc'", varchar(3), kInt);
    EXPECT_EQ(value("SELECT CASE WHEN 1 = 2 THEN " + bad + " ELSE 5 END", kInt), "5");
    EXPECT_EQ(value("SELECT " + bad, kInt),
              "245 Conversion failed when converting the varchar value 'abc' to data type int.");
    EXPECT_EQ(value("SELECT " + castSql("'abc'", varchar(3), kInt, 0, true), kInt), "NULL");
    EXPECT_EQ(value("SELECT 1", kInt), "1") << "the failure does not outlive its statement";
}

TEST_F(Operators, WideningNeedsNoCall) {
    EXPECT_EQ(castSql("x", kInt, {.id = TypeId::BigInt}), "x");
    EXPECT_EQ(castSql("x", varchar(3), varchar(5)), "x");
    EXPECT_EQ(castSql("x", kInt, decimal(18, 2)), "(x * 100)");
    EXPECT_EQ(castSql("x", decimal(5, 2), decimal(9, 2)), "x");
    EXPECT_EQ(castSql("x", kInt, kFloat), "CAST(x AS REAL)");
    EXPECT_NE(castSql("x", {.id = TypeId::NVarChar, .length = 3}, varchar(5)), "x") << "the code page may not hold it";
    EXPECT_NE(castSql("x", decimal(9, 2), decimal(5, 2)), "x");
    EXPECT_NE(castSql("x", decimal(9, 2), decimal(38, 2)), "x");
}

TEST_F(Operators, StoringCutsNothingButBlanks) {
    EXPECT_EQ(value("SELECT " + storeSql("'abc   '", varchar(6), varchar(3), "dbo.t", "a"), varchar(3)), "abc");
    EXPECT_EQ(value("SELECT " + storeSql("'abcd'", varchar(4), varchar(3), "dbo.t", "a"), varchar(3)),
              "8152 String or binary data would be truncated.");
    EXPECT_EQ(
        value("SELECT " + storeSql("'ab'", varchar(2), {.id = TypeId::Char, .length = 4}, "dbo.t", "a"), varchar(4)),
        "ab  ");
}

TEST_F(Operators, LikeKnowsSets) {
    EXPECT_TRUE(like("Abc", "a%"));
    EXPECT_TRUE(like("a_c", "a[_]c"));
    EXPECT_FALSE(like("abc", "a[_]c"));
    EXPECT_TRUE(like("xyz", "[w-y]%"));
    EXPECT_TRUE(like("xyz", "[^a]%"));
    EXPECT_FALSE(like("xyz", "[^x]%"));
    EXPECT_TRUE(like("a]b", "a[]]b"));
    EXPECT_TRUE(like("a-b", "a[-x]b"));
    EXPECT_TRUE(like("aØb", "a_b"));
    EXPECT_TRUE(like("ØL", "ø%"));
    EXPECT_TRUE(like("aXbXc", "%x%x%"));
    EXPECT_FALSE(like("aXbc", "%x%x%"));
    EXPECT_TRUE(like("", "%"));
    EXPECT_TRUE(like("", ""));
    EXPECT_FALSE(like("abc", "abc[")) << "a set that does not end matches nothing";
    EXPECT_TRUE(like("Abc       ", "%bc")) << "a char's blanks are left out of account";
    EXPECT_FALSE(like("abc", "abc "));
    EXPECT_FALSE(matchesLike("abc ", "abc", std::nullopt, collationCode(""), true)) << "in Unicode they count";
    EXPECT_TRUE(matchesLike("a_c", "a!_c", u'!', collationCode(""), false));
    EXPECT_FALSE(matchesLike("abc", "a!_c", u'!', collationCode(""), false));
    EXPECT_FALSE(matchesLike("ABC", "a%", std::nullopt, collationCode("Latin1_General_CS_AS"), false));
}

TEST_F(Operators, LikeRunsOverRows) {
    run("CREATE TABLE t (a TEXT); INSERT INTO t VALUES ('Abc'), ('xyz'), (NULL)");
    const std::string like = likeSql("a", varchar(10), "'a%'", varchar(2), "", collationCode(""));
    EXPECT_EQ(value("SELECT count(*) FROM t WHERE " + like, kInt), "1");
    EXPECT_EQ(value("SELECT count(*) FROM t WHERE NOT " + like, kInt), "1");
    EXPECT_EQ(value("SELECT " + likeSql("'a'", varchar(1), "'a'", varchar(1), "'ab'", collationCode("")), kInt),
              "506 The invalid escape character \"ab\" was specified in a LIKE predicate.");
}

TEST_F(Operators, CollationsOrderGroupAndJoin) {
    run("CREATE TABLE t (a " + sqliteDeclaration(varchar(9), "") + ", n INTEGER)");
    run("INSERT INTO t VALUES ('x', 1), ('x  ', 2), ('X', 3), ('y', 4), ('Å', 5), ('aa', 6)");
    EXPECT_EQ(value("SELECT count(*) FROM (SELECT a FROM t GROUP BY a)", kInt), "4");
    EXPECT_EQ(value("SELECT n FROM t ORDER BY a DESC LIMIT 1", kInt), "6");
    EXPECT_EQ(value("SELECT count(*) FROM t AS a JOIN t AS b ON a.a = b.a", kInt), "12");
}

}  // namespace
}  // namespace sandbox
