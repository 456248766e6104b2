// The aggregates as SQLite computes them: types, NULLs, overflow, and the one value of a subquery.
#include <gtest/gtest.h>

#include <string>

#include "tests/sandbox/store/functions/functions_fixture.h"

namespace sandbox {
namespace {

using Aggregates = Functions;

TEST_F(Aggregates, SumsAndAveragesHaveTheirOwnTypes) {
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

TEST_F(Aggregates, AggregatesTellNullsAndOverflow) {
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

TEST_F(Aggregates, AggregatesRefuseTypes) {
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

TEST_F(Aggregates, ASubqueryGivesOneValue) {
    run("CREATE TABLE t (a INTEGER); INSERT INTO t VALUES (7)");
    EXPECT_EQ(value("SELECT (SELECT t_scalar(c) FROM (SELECT a AS c FROM t))", kInt), "7");
    EXPECT_EQ(value("SELECT (SELECT t_scalar(c) FROM (SELECT a AS c FROM t WHERE a > 9))", kInt), "NULL");
    run("INSERT INTO t VALUES (8)");
    EXPECT_EQ(value("SELECT (SELECT t_scalar(c) FROM (SELECT a AS c FROM t))", kInt).substr(0, 44),
              "512 Subquery returned more than 1 value. Thi");
}

}  // namespace
}  // namespace sandbox
