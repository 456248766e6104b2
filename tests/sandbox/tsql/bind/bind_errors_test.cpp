// What the binder refuses, with SQL Server's numbers, texts and lines.
#include <gtest/gtest.h>

#include "tests/sandbox/tsql/bind/bind_bench.h"

namespace sandbox::test {
namespace {

class BindErrors : public ::testing::Test {
protected:
    BindErrors() {
        bench.table("t", "a int NOT NULL, b varchar(10)");
        bench.table("s", "a int, c int, x text");
        bench.table("i", "id int IDENTITY, a int, twice AS (a * 2)");
        bench.variable("@v", "int", "1");
    }
    BindBench bench;
};

struct Case {
    const char* sql;
    const char* errors;
};

TEST_F(BindErrors, NamesAndPlaces) {
    const Case cases[] = {
        {"SELECT x, a,\n y FROM t", "207:1 Invalid column name 'x'.; 207:2 Invalid column name 'y'."},
        {"SELECT a FROM t, s", "209:1 Ambiguous column name 'a'."},
        {"SELECT x.a FROM t", "4104:1 The multi-part identifier \"x.a\" could not be bound."},
        {"SELECT t.a FROM t AS x", "4104:1 The multi-part identifier \"t.a\" could not be bound."},
        {"SELECT x.* FROM t",
         "107:1 The column prefix 'x' does not match with a table name or alias name used in the query."},
        {"SELECT b FROM missing", "208:1 Invalid object name 'missing'."},
        {"SELECT t.missing FROM t, nowhere..x", "208:1 Invalid object name 'nowhere..x'."},
        {"SELECT a FROM #gone", "208:1 Invalid object name '#gone'."},
        {"SELECT @w", "137:1 Must declare the scalar variable \"@w\"."},
        {"SELECT @@nothing", "137:1 Must declare the scalar variable \"@@nothing\"."},
        {"SELECT a FROM @w", "1087:1 Must declare the table variable \"@w\"."},
        {"SELECT dbo.f(1)",
         "4121:1 Cannot find either column \"dbo\" or the user-defined function or aggregate \"dbo.f\", or the name is "
         "ambiguous."},
        {"SELECT t.a FROM t JOIN s ON s.a = x.a JOIN t x ON x.a = 1",
         "4104:1 The multi-part identifier \"x.a\" could not be bound."},
        {"SELECT 1 FROM t x, s x", "1011:1 The correlation name 'x' is specified multiple times in a FROM clause."},
    };
    for (const Case& each : cases) EXPECT_EQ(bench.errors(each.sql), each.errors) << each.sql;
}

TEST_F(BindErrors, OnlyMissingTablesAreDeferred) {
    EXPECT_TRUE(bench.missingObject("SELECT t.missing FROM t, nowhere"));
    EXPECT_TRUE(bench.missingObject("DELETE nowhere"));
    EXPECT_TRUE(bench.missingObject("INSERT nowhere VALUES (1)"));
    EXPECT_TRUE(bench.missingObject("UPDATE t SET a = 1 FROM t, nowhere"));
    EXPECT_FALSE(bench.missingObject("SELECT missing FROM t"));
}

TEST_F(BindErrors, Grouping) {
    const std::string aggregated =
        " because it is not contained in either an aggregate function or the GROUP BY clause.";
    EXPECT_EQ(bench.errors("SELECT a, b FROM t GROUP BY a"),
              "8120:1 Column 't.b' is invalid in the select list" + aggregated);
    EXPECT_EQ(bench.errors("SELECT COUNT(*), y.b FROM t AS y"),
              "8120:1 Column 't.b' is invalid in the select list" + aggregated);
    EXPECT_EQ(bench.errors("SELECT a FROM t GROUP BY a HAVING b = 'x'"),
              "8121:1 Column 't.b' is invalid in the HAVING clause" + aggregated);
    EXPECT_EQ(bench.errors("SELECT a FROM t GROUP BY a ORDER BY b"),
              "8127:1 Column \"t.b\" is invalid in the ORDER BY clause" + aggregated);
    EXPECT_EQ(bench.errors("SELECT 1 FROM t WHERE COUNT(*) > 1").substr(0, 6), "147:1 ");
    EXPECT_EQ(bench.errors("SELECT SUM(COUNT(*)) FROM t").substr(0, 6), "130:1 ");
    EXPECT_EQ(bench.errors("SELECT a FROM t GROUP BY 1").substr(0, 6), "164:1 ");
    EXPECT_EQ(bench.errors("SELECT DISTINCT a FROM t ORDER BY b"),
              "145:1 ORDER BY items must appear in the select list if SELECT DISTINCT is specified.");
    EXPECT_EQ(bench.errors("SELECT a FROM t ORDER BY 2"),
              "108:1 The ORDER BY position number 2 is out of range of the number of items in the select list.");
}

TEST_F(BindErrors, Shapes) {
    const Case cases[] = {
        {"SELECT 1 UNION SELECT 1, 2", "205"},
        {"SELECT a FROM t WHERE a IN (SELECT a, c FROM s)", "116"},
        {"SELECT (SELECT a, c FROM s)", "116"},
        {"SELECT a FROM t UNION SELECT a FROM s ORDER BY a + 1", "104"},
        {"SELECT @v = 1, a FROM t", "141"},
        {"SELECT x.n FROM (SELECT a + 1 FROM t) x", "8155"},
        {"SELECT x.a FROM (SELECT a, a FROM t) x", "8156"},
        {"SELECT x.a FROM (SELECT a FROM t ORDER BY a) x", "1033"},
        {"SELECT NOSUCH(1)", "195"},
        {"SELECT COALESCE(NULL, NULL)", "4127"},
        {"SELECT CASE WHEN 1 = 1 THEN NULL END", "8133"},
        {"SELECT COUNT(x) FROM s", "8117"},
        {"SELECT SUM(b) FROM t", "8117"},
        {"SELECT a FROM t WHERE b = 'x' COLLATE Latin1_General_BIN AND b COLLATE Latin1_General_CI_AS = 'y' COLLATE "
         "Latin1_General_BIN",
         "468"},
        {"SELECT ROW_NUMBER() OVER (PARTITION BY a) FROM t", "4112"},
        {"SELECT a FROM t WHERE ROW_NUMBER() OVER (ORDER BY a) = 1", "4108"},
        {"SELECT DATEPART(nothing, GETDATE())", "155"},
        {"SELECT LEN('a', 'b')", "174"},
        {"SELECT *", "263"},
        {"SELECT DISTINCT x FROM s", "421"},
        {"SELECT x FROM s ORDER BY x", "306"},
        {"SELECT 1 FROM s WHERE x = 'y'", "402"},
        {"SELECT x + 1 FROM s", "402"},
        {"SELECT CAST(1 AS datetime) + CAST('x' AS uniqueidentifier)", "206"},
    };
    for (const Case& each : cases) {
        const std::string told = bench.errors(each.sql);
        EXPECT_EQ(told.substr(0, told.find(':')), each.errors) << each.sql << "\n" << told;
    }
}

TEST_F(BindErrors, Changes) {
    const Case cases[] = {
        {"INSERT t VALUES (1, 'x', 2)", "213"},
        {"INSERT t (a, b) VALUES (1)", "109"},
        {"INSERT t (a) VALUES (1, 2)", "110"},
        {"INSERT t (a) SELECT 1, 2", "121"},
        {"INSERT t (a, b) SELECT 1", "120"},
        {"INSERT t (a, missing, a) VALUES (1, 2, 3)", "207"},
        {"INSERT t (a, a) VALUES (1, 2)", "264"},
        {"INSERT i VALUES (1, 2)", "8101"},
        {"INSERT i (twice) VALUES (1)", "271"},
        {"UPDATE t SET missing = 1", "207"},
        {"UPDATE t SET a = 1, a = 2", "264"},
        {"UPDATE i SET id = 1", "8102"},
        {"UPDATE i SET twice = 1", "271"},
        {"UPDATE t SET a = MAX(a)", "157"},
        {"UPDATE t SET a = 1 FROM t x, t y", "8154"},
        {"UPDATE t SET x.a = 1", "4104"},
        {"DELETE t WHERE missing = 1", "207"},
        {"INSERT s (a) VALUES (CAST('x' AS uniqueidentifier))", "206"},
    };
    for (const Case& each : cases) {
        const std::string told = bench.errors(each.sql);
        EXPECT_EQ(told.substr(0, told.find(':')), each.errors) << each.sql << "\n" << told;
    }
}

}  // namespace
}  // namespace sandbox::test
