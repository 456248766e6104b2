// The functions as SQLite calls them: planned calls, operators, LIKE, aggregates, and the errors they leave.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <set>
#include <string>
#include <vector>

#include "sandbox/store/collation.h"
#include "sandbox/store/datetime.h"
#include "sandbox/store/function_table.h"
#include "sandbox/store/sql_functions.h"
#include "sandbox/store/storage_codec.h"

namespace sandbox {
namespace {

constexpr Type kInt{.id = TypeId::Int};
constexpr Type kFloat{.id = TypeId::Float};
constexpr Type kMoney{.id = TypeId::Money};
constexpr Type kDateTime{.id = TypeId::DateTime};

constexpr Type varchar(int n) {
    return {.id = TypeId::VarChar, .length = n};
}
constexpr Type decimal(int p, int s) {
    return {.id = TypeId::Decimal, .precision = static_cast<std::uint8_t>(p), .scale = static_cast<std::uint8_t>(s)};
}

// A literal as the binder would have it: text in quotes, 0x bytes, NULL, or a number.
Typed literal(std::string_view text) {
    if (text == "NULL") return {};
    if (text.starts_with("N'")) return textLiteral(text.substr(2, text.size() - 3), true);
    if (text.starts_with("'")) return textLiteral(text.substr(1, text.size() - 2), false);
    if (text.starts_with("0x")) return binaryLiteral(text);
    if (text.starts_with("-")) {
        Typed number = literal(text.substr(1));
        if (auto* n = std::get_if<std::int64_t>(&number.value)) *n = -*n;
        if (auto* d = std::get_if<Decimal>(&number.value)) d->unscaled = -d->unscaled;
        if (auto* f = std::get_if<double>(&number.value)) *f = -*f;
        return number;
    }
    if (text.starts_with("$")) return moneyLiteral(text);
    return numberLiteral(text);
}

class Functions : public testing::Test {
protected:
    Functions() {
        sqlite3_open(":memory:", &db_);
        context.login = "sa";
        context.database = "hoved";
        context.databaseId = 5;
        registerFunctions(db_, context);
    }
    ~Functions() override { sqlite3_close(db_); }

    void run(const std::string& sql) {
        ASSERT_EQ(sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(db_);
    }

    // The one value of a query as text; an error as "number text".
    std::string value(const std::string& sql, const Type& type) {
        sqlite3_stmt* statement = nullptr;
        if (sqlite3_prepare_v2(db_, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK)
            return std::string("SQLite: ") + sqlite3_errmsg(db_);
        std::string out;
        try {
            const int step = sqlite3_step(statement);
            if (step != SQLITE_ROW) rethrowIfFailed(context);
            if (step != SQLITE_ROW) {
                out = std::string("SQLite: ") + sqlite3_errmsg(db_);
            } else {
                const Value v = readColumn(statement, 0, type);
                out = isNull(v) ? "NULL" : displayText(v, type, context.convert);
            }
        } catch (const SqlError& error) {
            out = std::to_string(error.messages[0].number) + " " + error.messages[0].text;
        }
        sqlite3_finalize(statement);
        return out;
    }

    // A T-SQL function of literals; date parts are given by name.
    std::string call(std::string_view name, const std::vector<std::string>& arguments) {
        try {
            const FunctionRow* row = findFunction(name);
            if (!row) throw unknownFunction(name);
            std::vector<Typed> values;
            std::vector<Type> types;
            for (std::size_t i = 0; i < arguments.size(); ++i) {
                const bool part = row->arguments[std::min(i, row->arguments.size() - 1)] == 'p';
                values.push_back(part ? Typed{kInt, std::int64_t{datePart(arguments[i]).value()}}
                                      : literal(arguments[i]));
                types.push_back(values.back().type);
            }
            const CallPlan plan = planCall(*row, types, collationCode(""));
            std::string sql = "SELECT " + std::string(plan.sqlite) + "(";
            std::string comma;
            for (std::size_t i = 0; i < values.size(); ++i) {
                sql += comma + castSql(literalSql(values[i].value, types[i]), types[i], plan.argumentTypes[i]);
                comma = ", ";
            }
            for (const std::int64_t extra : plan.extra) {
                sql += comma + std::to_string(extra);
                comma = ", ";
            }
            resultType = plan.result;
            return value(sql + ")", plan.result);
        } catch (const SqlError& error) {
            return std::to_string(error.messages[0].number) + " " + error.messages[0].text;
        }
    }

    // a op b of two literals.
    std::string operation(BinaryOp op, std::string_view a, std::string_view b) {
        const Typed x = literal(a), y = literal(b);
        const auto beside = [](const Typed& side, const Typed& other) {
            return other.type.id == TypeId::Decimal ? literalBesideDecimal(side.type, side.value) : side.type;
        };
        const Type result = binaryResultType(op, beside(x, y), beside(y, x));
        return value("SELECT " + arithmeticSql(op, literalSql(x.value, x.type), x.type, literalSql(y.value, y.type),
                                               y.type, result),
                     result);
    }

    bool like(std::string_view text, std::string_view pattern) {
        return matchesLike(text, pattern, std::nullopt, collationCode(""), false);
    }

    FunctionContext context;
    Type resultType;
    sqlite3* db_ = nullptr;
};

TEST_F(Functions, ScalarFunctionsGiveSqlServersValues) {
    const struct {
        const char* name;
        std::vector<std::string> arguments;
        const char* value;
    } cases[] = {
        {"LEN", {"'ab  '"}, "2"},
        {"LEN", {"N'æ😀'"}, "3"},
        {"LEN", {"12"}, "2"},
        {"DATALENGTH", {"'ab  '"}, "4"},
        {"DATALENGTH", {"N'æøå'"}, "6"},
        {"DATALENGTH", {"1"}, "4"},
        {"DATALENGTH", {"0x00FF10"}, "3"},
        {"SUBSTRING", {"'abcdef'", "2", "3"}, "bcd"},
        {"SUBSTRING", {"'abcdef'", "0", "3"}, "ab"},
        {"SUBSTRING", {"'abcdef'", "9", "3"}, ""},
        {"SUBSTRING", {"N'æøå'", "2", "1"}, "ø"},
        {"SUBSTRING", {"0x010203", "2", "1"}, "0x02"},
        {"SUBSTRING", {"'abc'", "1", "-1"}, "537 Invalid length parameter passed to the LEFT or SUBSTRING function."},
        {"LEFT", {"'abc'", "2"}, "ab"},
        {"RIGHT", {"'abc'", "2"}, "bc"},
        {"RIGHT", {"'abc'", "9"}, "abc"},
        {"LEFT", {"12345", "2"}, "12"},
        {"LTRIM", {"'  a '"}, "a "},
        {"RTRIM", {"' a  '"}, " a"},
        {"TRIM", {"' a  '"}, "a"},
        {"UPPER", {"'æb'"}, "ÆB"},
        {"LOWER", {"'ÆB'"}, "æb"},
        {"REVERSE", {"'abc'"}, "cba"},
        {"REPLICATE", {"'ab'", "2"}, "abab"},
        {"REPLICATE", {"'ab'", "-1"}, "NULL"},
        {"SPACE", {"2"}, "  "},
        {"STUFF", {"'abcdef'", "2", "3", "'ZZ'"}, "aZZef"},
        {"STUFF", {"'abc'", "0", "1", "'x'"}, "NULL"},
        {"STUFF", {"'abc'", "1", "1", "NULL"}, "bc"},
        {"REPLACE", {"'aXbx'", "'x'", "'-'"}, "a-b-"},
        {"REPLACE", {"'abc'", "''", "'-'"}, "abc"},
        {"REPLACE", {"'abc'", "NULL", "'-'"}, "NULL"},
        {"CHARINDEX", {"'CD'", "'abcdef'"}, "3"},
        {"CHARINDEX", {"'b'", "'abab'", "3"}, "4"},
        {"CHARINDEX", {"'x'", "'abc'"}, "0"},
        {"CHARINDEX", {"'Ø'", "'bøk'"}, "2"},
        {"PATINDEX", {"'%[0-9]%'", "'ab3'"}, "3"},
        {"PATINDEX", {"'ab%'", "'abc'"}, "1"},
        {"PATINDEX", {"'%x%'", "'abc'"}, "0"},
        {"ASCII", {"'A'"}, "65"},
        {"ASCII", {"'å'"}, "229"},
        {"UNICODE", {"N'Ω'"}, "937"},
        {"CHAR", {"66"}, "B"},
        {"CHAR", {"256"}, "NULL"},
        {"NCHAR", {"937"}, "Ω"},
        {"STR", {"12.3", "8", "2"}, "   12.30"},
        {"STR", {"123.456"}, "       123"},
        {"STR", {"12345", "3"}, "***"},
        {"CONCAT", {"'a'", "NULL", "1", "$2.5"}, "a12.50"},
        {"CONCAT_WS", {"', '", "'a'", "NULL", "'b'"}, "a, b"},
        {"QUOTENAME", {"'a]b'"}, "[a]]b]"},
        {"SOUNDEX", {"'Robert'"}, "R163"},
        {"DIFFERENCE", {"'Robert'", "'Rupert'"}, "4"},
        {"PARSENAME", {"'srv.db.dbo.t'", "1"}, "t"},
        {"PARSENAME", {"'[d.b].dbo.t'", "3"}, "d.b"},
        {"ISNUMERIC", {"'12.5'"}, "1"},
        {"ISNUMERIC", {"'x'"}, "0"},
        {"ISNUMERIC", {"'$1,2'"}, "1"},
        {"ISNUMERIC", {"NULL"}, "0"},
        {"ISDATE", {"'20240230'"}, "0"},
        {"ISDATE", {"'20240228'"}, "1"},
        {"ABS", {"-1.50"}, "1.50"},
        {"ABS", {"-3"}, "3"},
        {"SIGN", {"-1.5"}, "-1.0"},
        {"ROUND", {"2.345", "2"}, "2.350"},
        {"ROUND", {"-2.5", "0"}, "-3.0"},
        {"ROUND", {"1234.567", "-2"}, "1200.000"},
        {"ROUND", {"2.349", "2", "1"}, "2.340"},
        {"ROUND", {"9.9", "0"}, "8115 Arithmetic overflow error converting expression to data type numeric."},
        {"ROUND", {"1250", "-2"}, "1300"},
        {"ROUND", {"2.5e0", "0"}, "3"},
        {"FLOOR", {"-1.5"}, "-2"},
        {"CEILING", {"1.2"}, "2"},
        {"FLOOR", {"$-1.5"}, "-2.00"},
        {"POWER", {"2", "10"}, "1024"},
        {"POWER", {"2", "40"}, "8115 Arithmetic overflow error converting expression to data type int."},
        {"SQRT", {"16"}, "4"},
        {"SQRT", {"-1"}, "3623 An invalid floating point operation occurred."},
        {"LOG10", {"1000"}, "3"},
        {"LOG", {"8", "2"}, "3"},
        {"DATEADD", {"month", "1", "'20240131'"}, "Feb 29 2024 12:00AM"},
        {"DATEDIFF", {"day", "'20240228 23:59'", "'20240301 00:01'"}, "2"},
        {"DATEPART", {"weekday", "'20240228'"}, "4"},
        {"DATENAME", {"month", "'20240228'"}, "February"},
        {"DATENAME", {"dw", "'20240228'"}, "Wednesday"},
        {"YEAR", {"'20240228'"}, "2024"},
        {"EOMONTH", {"'20240210'"}, "2024-02-29"},
        {"EOMONTH", {"'20240210'", "1"}, "2024-03-31"},
        {"DATEFROMPARTS", {"2024", "2", "29"}, "2024-02-29"},
        {"DATEFROMPARTS",
         {"2023", "2", "29"},
         "289 Cannot construct data type date, some of the arguments have values which are not valid."},
        {"ISNULL", {"NULL", "'x'"}, "x"},
        {"COALESCE", {"NULL", "1", "2.5"}, "1.0"},
        {"CHOOSE", {"2", "'a'", "'b'"}, "b"},
        {"CHOOSE", {"3", "'a'", "'b'"}, "NULL"},
        {"CHECKSUM", {"42"}, "42"},
        {"DB_NAME", {}, "hoved"},
        {"DB_ID", {}, "5"},
        {"SUSER_SNAME", {}, "sa"},
        {"USER_NAME", {}, "dbo"},
        {"TYPE_NAME", {"56"}, "int"},
        {"SCHEMA_NAME", {"1"}, "dbo"},
        {"OBJECT_ID", {"'t'"}, "NULL"},
        {"ERROR_NUMBER", {}, "NULL"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(call(c.name, c.arguments), c.value) << c.name << (c.arguments.empty() ? "" : "(" + c.arguments[0]);
    }
}

TEST_F(Functions, ResultTypesFollowTheArguments) {
    const auto type = [&](std::string_view name, const std::vector<std::string>& arguments) {
        (void)call(name, arguments);
        return typeDeclaration(resultType);
    };
    EXPECT_EQ(type("SUBSTRING", {"N'abc'", "1", "2"}), "nvarchar(3)");
    EXPECT_EQ(type("REPLACE", {"'a'", "'b'", "'c'"}), "varchar(8000)");
    EXPECT_EQ(type("FLOOR", {"1.55"}), "numeric(3,0)");
    EXPECT_EQ(type("ISNULL", {"'abc'", "'defgh'"}), "varchar(3)");
    EXPECT_EQ(type("COALESCE", {"'abc'", "'defgh'"}), "varchar(5)");
    EXPECT_EQ(type("SCOPE_IDENTITY", {}), "numeric(38,0)");
    EXPECT_EQ(type("SYSDATETIME", {}), "datetime2(7)");
}

TEST_F(Functions, ChecksSumsOfTextsThatCompareEqual) {
    EXPECT_EQ(call("CHECKSUM", {"'Abc'"}), call("CHECKSUM", {"'aBC  '"}));
    EXPECT_NE(call("CHECKSUM", {"'Abc'"}), call("CHECKSUM", {"'Abd'"}));
    EXPECT_NE(call("BINARY_CHECKSUM", {"'Abc'"}), call("BINARY_CHECKSUM", {"'aBC'"}));
}

TEST_F(Functions, ArithmeticIsSqlServers) {
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

TEST_F(Functions, DatesMoveByDays) {
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

TEST_F(Functions, SmallIntegersOverflowInTheirOwnRange) {
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

TEST_F(Functions, CastsThatFailInABranchNotTakenDoNoHarm) {
    const std::string bad = castSql("'abc'", varchar(3), kInt);
    EXPECT_EQ(value("SELECT CASE WHEN 1 = 2 THEN " + bad + " ELSE 5 END", kInt), "5");
    EXPECT_EQ(value("SELECT " + bad, kInt),
              "245 Conversion failed when converting the varchar value 'abc' to data type int.");
    EXPECT_EQ(value("SELECT " + castSql("'abc'", varchar(3), kInt, 0, true), kInt), "NULL");
    EXPECT_EQ(value("SELECT 1", kInt), "1") << "the failure does not outlive its statement";
}

TEST_F(Functions, WideningNeedsNoCall) {
    EXPECT_EQ(castSql("x", kInt, {.id = TypeId::BigInt}), "x");
    EXPECT_EQ(castSql("x", varchar(3), varchar(5)), "x");
    EXPECT_EQ(castSql("x", kInt, decimal(18, 2)), "(x * 100)");
    EXPECT_EQ(castSql("x", decimal(5, 2), decimal(9, 2)), "x");
    EXPECT_EQ(castSql("x", kInt, kFloat), "CAST(x AS REAL)");
    EXPECT_NE(castSql("x", {.id = TypeId::NVarChar, .length = 3}, varchar(5)), "x") << "the code page may not hold it";
    EXPECT_NE(castSql("x", decimal(9, 2), decimal(5, 2)), "x");
    EXPECT_NE(castSql("x", decimal(9, 2), decimal(38, 2)), "x");
}

TEST_F(Functions, StoringCutsNothingButBlanks) {
    EXPECT_EQ(value("SELECT " + storeSql("'abc   '", varchar(6), varchar(3), "dbo.t", "a"), varchar(3)), "abc");
    EXPECT_EQ(value("SELECT " + storeSql("'abcd'", varchar(4), varchar(3), "dbo.t", "a"), varchar(3)),
              "8152 String or binary data would be truncated.");
    EXPECT_EQ(
        value("SELECT " + storeSql("'ab'", varchar(2), {.id = TypeId::Char, .length = 4}, "dbo.t", "a"), varchar(4)),
        "ab  ");
}

TEST_F(Functions, LikeKnowsSets) {
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

TEST_F(Functions, LikeRunsOverRows) {
    run("CREATE TABLE t (a TEXT); INSERT INTO t VALUES ('Abc'), ('xyz'), (NULL)");
    const std::string like = likeSql("a", varchar(10), "'a%'", varchar(2), "", collationCode(""));
    EXPECT_EQ(value("SELECT count(*) FROM t WHERE " + like, kInt), "1");
    EXPECT_EQ(value("SELECT count(*) FROM t WHERE NOT " + like, kInt), "1");
    EXPECT_EQ(value("SELECT " + likeSql("'a'", varchar(1), "'a'", varchar(1), "'ab'", collationCode("")), kInt),
              "506 The invalid escape character \"ab\" was specified in a LIKE predicate.");
}

TEST_F(Functions, SumsAndAveragesHaveTheirOwnTypes) {
    run("CREATE TABLE t (i INTEGER, d INTEGER, w BLOB, m INTEGER, f REAL)");
    run("INSERT INTO t VALUES (1, 110, " + literalSql(Decimal{110, 2}, decimal(30, 2)) + ", 15000, 0.5), (2, 225, " +
        literalSql(Decimal{225, 2}, decimal(30, 2)) + ", 25000, 1)");
    const struct {
        const char* aggregate;
        const char* column;
        Type type;
        const char* result;
        const char* value;
    } cases[] = {
        {"SUM", "i", kInt, "int", "3"},
        {"AVG", "i", kInt, "int", "1"},
        {"SUM", "i", {.id = TypeId::SmallInt}, "int", "3"},
        {"SUM", "d", decimal(10, 2), "decimal(38,2)", "3.35"},
        {"AVG", "d", decimal(10, 2), "decimal(38,6)", "1.675000"},
        {"SUM", "w", decimal(30, 2), "decimal(38,2)", "3.35"},
        {"AVG", "w", decimal(30, 2), "decimal(38,6)", "1.675000"},
        {"SUM", "m", kMoney, "money", "4.00"},
        {"AVG", "f", kFloat, "float", "0.75"},
        {"MAX", "d", decimal(10, 2), "decimal(10,2)", "2.25"},
        {"COUNT", "i", kInt, "int", "2"},
        {"COUNT_BIG", "i", kInt, "bigint", "2"},
        {"STDEV", "i", kInt, "float", "0.707107"},
        {"VARP", "i", kInt, "float", "0.25"},
    };
    for (const auto& c : cases) {
        const AggregatePlan plan = planAggregate(c.aggregate, c.type);
        EXPECT_EQ(typeDeclaration(plan.result), c.result) << c.aggregate << c.column;
        std::string sql = plan.sqlite;
        const std::string argument = castSql(c.column, c.type, plan.argument);
        for (auto at = sql.find('%'); at != std::string::npos; at = sql.find('%', at)) sql.replace(at, 1, argument);
        EXPECT_EQ(value("SELECT " + sql + " FROM t", plan.result), c.value) << sql;
        const bool counts = std::string_view(c.aggregate).starts_with("COUNT");
        EXPECT_EQ(value("SELECT " + sql + " FROM t WHERE 0", plan.result), counts ? "0" : "NULL") << sql;
    }
    EXPECT_EQ(planAggregate("COUNT", Type{}, true).sqlite, "count(*)");
}

TEST_F(Functions, AggregatesTellNullsAndOverflow) {
    run("CREATE TABLE t (i INTEGER); INSERT INTO t VALUES (2147483647), (NULL)");
    EXPECT_EQ(value("SELECT t_sum_int(i) FROM t", kInt), "2147483647");
    EXPECT_TRUE(context.nullEliminated);
    context.nullEliminated = false;
    EXPECT_EQ(value("SELECT count(t_nn(i)) FROM t WHERE i IS NOT NULL", kInt), "1");
    EXPECT_FALSE(context.nullEliminated);
    EXPECT_EQ(value("SELECT count(t_nn(i)) FROM t", kInt), "1");
    EXPECT_TRUE(context.nullEliminated);
    run("INSERT INTO t VALUES (1)");
    EXPECT_EQ(value("SELECT t_sum_int(i) FROM t", kInt),
              "8115 Arithmetic overflow error converting expression to data type int.");
    EXPECT_EQ(value("SELECT t_sum_bigint(DISTINCT i) FROM t", {.id = TypeId::BigInt}), "2147483648");
    run("CREATE TABLE u (i INTEGER); INSERT INTO u VALUES (1), (2), (3)");
    EXPECT_EQ(value("SELECT s FROM (SELECT i, t_sum_int(i) OVER (ORDER BY i ROWS 1 PRECEDING) AS s FROM u) WHERE i = 3",
                    kInt),
              "5");
}

TEST_F(Functions, AggregatesRefuseTypes) {
    const auto refused = [](std::string_view name, const Type& type) {
        try {
            (void)planAggregate(name, type);
        } catch (const SqlError& error) {
            return std::to_string(error.messages[0].number) + " " + error.messages[0].text;
        }
        return std::string();
    };
    EXPECT_EQ(refused("SUM", varchar(3)), "8117 Operand data type varchar is invalid for sum operator.");
    EXPECT_EQ(refused("AVG", kDateTime), "8117 Operand data type datetime is invalid for avg operator.");
    EXPECT_EQ(refused("MAX", {.id = TypeId::Text}), "8117 Operand data type text is invalid for max operator.");
    EXPECT_EQ(refused("SUM", Type{}), "8117 Operand data type NULL is invalid for sum operator.");
}

TEST_F(Functions, ASubqueryGivesOneValue) {
    run("CREATE TABLE t (a INTEGER); INSERT INTO t VALUES (7)");
    EXPECT_EQ(value("SELECT (SELECT t_scalar(c) FROM (SELECT a AS c FROM t))", kInt), "7");
    EXPECT_EQ(value("SELECT (SELECT t_scalar(c) FROM (SELECT a AS c FROM t WHERE a > 9))", kInt), "NULL");
    run("INSERT INTO t VALUES (8)");
    EXPECT_EQ(value("SELECT (SELECT t_scalar(c) FROM (SELECT a AS c FROM t))", kInt).substr(0, 44),
              "512 Subquery returned more than 1 value. Thi");
}

TEST_F(Functions, CollationsOrderGroupAndJoin) {
    run("CREATE TABLE t (a " + sqliteDeclaration(varchar(9), "") + ", n INTEGER)");
    run("INSERT INTO t VALUES ('x', 1), ('x  ', 2), ('X', 3), ('y', 4), ('Å', 5), ('aa', 6)");
    EXPECT_EQ(value("SELECT count(*) FROM (SELECT a FROM t GROUP BY a)", kInt), "4");
    EXPECT_EQ(value("SELECT n FROM t ORDER BY a DESC LIMIT 1", kInt), "6");
    EXPECT_EQ(value("SELECT count(*) FROM t AS a JOIN t AS b ON a.a = b.a", kInt), "12");
}

TEST_F(Functions, SessionFunctionsAskTheirHooks) {
    context.objectId = [](std::string_view name, std::string_view kind) {
        return name == "dbo.t" && kind == "U" ? std::optional<std::int32_t>(77) : std::nullopt;
    };
    EXPECT_EQ(call("OBJECT_ID", {"'dbo.t'", "'U '"}), "77");
    EXPECT_EQ(call("OBJECT_ID", {"'dbo.x'"}), "NULL");
    Message caught{.number = 547, .severity = 16, .state = 2, .text = "conflict", .procedure = {}, .line = 3};
    context.caughtError = [&] { return &caught; };
    EXPECT_EQ(call("ERROR_NUMBER", {}), "547");
    EXPECT_EQ(call("ERROR_STATE", {}), "2");
    EXPECT_EQ(call("ERROR_LINE", {}), "3");
    EXPECT_EQ(call("ERROR_PROCEDURE", {}), "NULL");
    EXPECT_EQ(call("ERROR_MESSAGE", {}), "conflict");
    context.scopeIdentity = [] { return std::optional(Decimal{12, 0}); };
    EXPECT_EQ(call("SCOPE_IDENTITY", {}), "12");
    context.variable = [](std::int64_t slot) { return Typed{kInt, slot + 1}; };
    EXPECT_EQ(value("SELECT t_var(4)", kInt), "5");
    context.now = dayNumber(2024, 2, 28) * kUnitsPerDay + 8 * 3600 * kUnitsPerSecond;
    EXPECT_EQ(call("GETDATE", {}), "Feb 28 2024  8:00AM");
}

TEST_F(Functions, RandRepeatsWithItsSeed) {
    const std::string first = call("RAND", {"7"});
    context.rand.reset();
    EXPECT_NE(call("RAND", {}), first);
    EXPECT_EQ(call("RAND", {"7"}), first);
    EXPECT_NE(call("NEWID", {}), call("NEWID", {}));
}

TEST_F(Functions, WrongCallsAreTold) {
    EXPECT_EQ(call("NOWHERE", {}), "195 'NOWHERE' is not a recognized built-in function name.");
    EXPECT_EQ(call("LEN", {}), "174 The len function requires 1 argument(s).");
    EXPECT_EQ(call("ROUND", {"1"}), "189 The round function requires 2 to 3 arguments.");
    EXPECT_EQ(call("ABS", {"0x01"}), "8116 Argument data type varbinary is invalid for argument 1 of abs function.");
    EXPECT_STREQ(unknownDatePart("fortnight", "DATEADD").what(), "'fortnight' is not a recognized dateadd option.");
}

// Every row of the table: a name of its own, letters for its arguments, and a SQLite function that takes them.
TEST_F(Functions, EveryRowOfTheTableCanBeCalled) {
    std::set<std::string_view> names;
    for (const FunctionRow& row : functionTable()) {
        EXPECT_TRUE(names.insert(row.name).second) << row.name;
        if (row.form != CallForm::Call) continue;
        const int most = row.maxArguments < 0 ? row.minArguments + 2 : std::min(row.maxArguments, row.minArguments + 2);
        for (int count = row.minArguments; count <= most; ++count) {
            std::vector<std::string> arguments;
            for (int i = 0; i < count; ++i) {
                const char letter = row.arguments[std::min(static_cast<std::size_t>(i), row.arguments.size() - 1)];
                arguments.emplace_back(letter == 'p'                    ? "year"
                                       : letter == 'd'                  ? "'20240101'"
                                       : letter == 't' || letter == 'x' ? "'a'"
                                                                        : "1");
            }
            const std::string result = call(row.name, arguments);
            EXPECT_FALSE(result.starts_with("SQLite")) << row.name << ": " << result;
        }
    }
}

}  // namespace
}  // namespace sandbox
