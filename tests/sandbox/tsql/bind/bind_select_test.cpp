// Queries through the binder: what their rows, column names and types are.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/sandbox/tsql/bind/bind_bench.h"

namespace sandbox::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class BindSelect : public ::testing::Test {
protected:
    BindSelect() {
        bench.table("t", "a int, b varchar(10)");
        bench.fill("t", "(1, 'one'), (2, 'two'), (3, NULL)");
        bench.table("s", "a int, c decimal(9,2) NOT NULL");
        bench.fill("s", "(2, 250), (3, 350), (3, 100)");
    }
    BindBench bench;
};

struct Case {
    const char* sql;
    const char* rows;
};

TEST_F(BindSelect, RowsOfQueries) {
    const Case cases[] = {
        {"SELECT a, b FROM t WHERE a > 1", "2|two; 3|NULL"},
        {"SELECT * FROM t", "1|one; 2|two; 3|NULL"},
        {"SELECT s.*, t.b FROM t, s WHERE t.a = s.a ORDER BY c", "3|1.00|NULL; 2|2.50|two; 3|3.50|NULL"},
        {"SELECT t.b, s.c FROM t LEFT JOIN s ON s.a = t.a ORDER BY t.a, c DESC",
         "one|NULL; two|2.50; NULL|3.50; NULL|1.00"},
        {"SELECT t.a, s.a FROM s RIGHT JOIN t ON s.a = t.a AND s.c > 2 ORDER BY 1", "1|NULL; 2|2; 3|3"},
        {"SELECT x.a FROM t x FULL JOIN (SELECT 9 AS a) y ON x.a = y.a WHERE x.a IS NULL", "NULL"},
        {"SELECT COUNT(*), SUM(c), MAX(b) FROM t JOIN s ON s.a = t.a", "3|7.00|two"},
        {"SELECT a, COUNT(*) AS n FROM s GROUP BY a HAVING COUNT(*) > 1", "3|2"},
        {"SELECT a + 1 FROM s GROUP BY a + 1 ORDER BY a + 1", "3; 4"},
        {"SELECT a FROM t WHERE a IN (SELECT a FROM s) ORDER BY a DESC", "3; 2"},
        {"SELECT a FROM t WHERE a IN ('1', 3)", "1; 3"},
        {"SELECT a FROM t WHERE NOT EXISTS (SELECT * FROM s WHERE s.a = t.a)", "1"},
        {"SELECT a, (SELECT SUM(c) FROM s WHERE s.a = t.a) FROM t", "1|NULL; 2|2.50; 3|4.50"},
        {"SELECT a FROM t WHERE a > ALL (SELECT a FROM s WHERE a = 2)", "3"},
        {"SELECT a FROM t WHERE a = ANY (SELECT a FROM s)", "2; 3"},
        {"SELECT TOP 1 a FROM t ORDER BY a DESC", "3"},
        {"SELECT TOP (2) WITH TIES a FROM s ORDER BY a DESC", "3; 3"},
        {"SELECT TOP 34 PERCENT a FROM t ORDER BY a", "1; 2"},
        {"SELECT DISTINCT a FROM s ORDER BY a", "2; 3"},
        {"SELECT a FROM t UNION SELECT a FROM s", "1; 2; 3"},
        {"SELECT a FROM t EXCEPT SELECT a FROM s", "1"},
        {"SELECT a FROM t INTERSECT SELECT a FROM s ORDER BY a DESC", "3; 2"},
        {"SELECT 1 UNION ALL SELECT 2.5", "1.0; 2.5"},
        {"SELECT x.n, total = x.n * 2 FROM (SELECT 1 AS n UNION ALL SELECT 2) AS x ORDER BY 2 DESC", "2|4; 1|2"},
        {"WITH q AS (SELECT a FROM t WHERE a < 3) SELECT q.a, r.a FROM q, q r WHERE q.a < r.a", "1|2"},
        {"WITH n AS (SELECT 1 AS i UNION ALL SELECT i + 1 FROM n WHERE i < 4) SELECT SUM(i) FROM n", "10"},
        {"SELECT a, ROW_NUMBER() OVER (ORDER BY c) AS r FROM s", "3|1; 2|2; 3|3"},
        {"SELECT a, SUM(a) OVER (PARTITION BY a) FROM s", "2|2; 3|6; 3|6"},
        {"SELECT a FROM t ORDER BY a OFFSET 1 ROWS FETCH NEXT 1 ROWS ONLY", "2"},
        {"SELECT t.a, x.d FROM t CROSS APPLY (SELECT t.a * 2 AS d) x", "1|2; 2|4; 3|6"},
        {"SELECT t.a, x.c FROM t CROSS APPLY (SELECT s.c FROM s WHERE s.a = t.a) x ORDER BY 1, 2",
         "2|2.50; 3|1.00; 3|3.50"},
        {"SELECT t.a, x.c FROM t OUTER APPLY (SELECT TOP 1 s.c FROM s WHERE s.a = t.a ORDER BY c DESC) x",
         "1|NULL; 2|2.50; 3|3.50"},
        {"SELECT v.i, v.w FROM (VALUES (1, 'x'), (2, 'longer')) AS v (i, w)", "1|x; 2|longer"},
        {"SELECT CASE b WHEN 'ONE' THEN 1 ELSE 0 END FROM t", "1; 0; 0"},
        {"SELECT CASE WHEN 1 IN (1, NULL) THEN 'yes' ELSE 'no' END", "yes"},
        {"SELECT CASE WHEN 2 NOT IN (1, NULL) THEN 'yes' ELSE 'no' END", "no"},
        {"SELECT a FROM t WHERE b LIKE 't%' OR b BETWEEN 'a' AND 'p'", "1; 2"},
        {"SELECT COALESCE(b, 'none'), ISNULL(b, 'x') FROM t WHERE a = 3", "none|x"},
        {"SELECT NULLIF(a, 2), IIF(a = 1, 'first', 'later') FROM t", "1|first; NULL|later; 3|later"},
        {"SELECT dbo.t.a FROM dbo.t WHERE shop.dbo.t.a = 1", "1"},
        {"SELECT COUNT(DISTINCT b) FROM t", "2"},
        {"SELECT a, b FROM t ORDER BY CASE WHEN b IS NULL THEN 0 ELSE 1 END, a", "3|NULL; 1|one; 2|two"},
        {"SELECT 'x' AS k, COUNT(*) FROM t GROUP BY b ORDER BY 2", "x|1; x|1; x|1"},
    };
    for (const Case& each : cases) EXPECT_EQ(bench.rows(each.sql), each.rows) << each.sql;
}

TEST_F(BindSelect, ColumnsHaveTheirNamesAndTypes) {
    const Case cases[] = {
        {"SELECT a, A AS n, b, a + 1, 'text' kind FROM t", "a int, n int, b varchar(10), - int, kind varchar(4)"},
        {"SELECT c, c * 2, SUM(c), AVG(c) FROM s GROUP BY c",
         "c decimal(9,2), - numeric(11,2), - decimal(38,2), - decimal(38,6)"},
        {"SELECT NULL AS nothing, '' AS empty", "nothing int, empty varchar(1)"},
        {"SELECT N'ab' + 'cde', 1.50, 2e0, 0x1234", "- nvarchar(5), - numeric(3,2), - float, - varbinary(2)"},
        {"SELECT COUNT(*), MAX(b) FROM t", "- int, - varchar(10)"},
        {"SELECT ISNULL(CAST(NULL AS varchar(3)), 'abcdef'), CASE WHEN 1 = 1 THEN 'a' ELSE N'bcd' END",
         "- varchar(3), - nvarchar(3)"},
        {"SELECT 'a' AS x UNION SELECT 'bcd'", "x varchar(3)"},
        {"SELECT @@ROWCOUNT, @@VERSION", "- int, - nvarchar(300)"},
    };
    for (const Case& each : cases) EXPECT_EQ(bench.columns(each.sql), each.rows) << each.sql;
}

TEST_F(BindSelect, TextIsComparedWithoutCaseAndTrailingBlanks) {
    bench.table("w", "a varchar(5), n int");
    bench.fill("w", "('x', 1), ('x  ', 2), ('X', 3), ('y', 4)");
    EXPECT_EQ(bench.rows("SELECT COUNT(*), SUM(n) FROM w GROUP BY a ORDER BY 2"), "1|4; 3|6");
    EXPECT_EQ(bench.rows("SELECT COUNT(DISTINCT a) FROM w"), "2");
    EXPECT_EQ(bench.rows("SELECT n FROM w WHERE a IN ('Y')"), "4");
    EXPECT_EQ(bench.select("SELECT a FROM w UNION SELECT 'Y '").rows.size(), 2u);
    EXPECT_EQ(bench.select("SELECT DISTINCT a FROM w").rows.size(), 2u);
    EXPECT_EQ(bench.rows("SELECT n FROM w WHERE a = 'X' COLLATE Danish_Norwegian_CS_AS"), "3");
}

TEST_F(BindSelect, ViewsAndComputedColumnsAreBoundFromTheirTexts) {
    bench.view("v", "CREATE VIEW v AS SELECT a * 10 AS tens, b FROM t WHERE a < 3");
    bench.view("vv", "CREATE VIEW vv (big) AS SELECT tens FROM v");
    bench.table("k", "a int, twice AS (a * 2)");
    bench.fill("k", "(4), (5)");
    EXPECT_EQ(bench.rows("SELECT v.tens, t.b FROM v JOIN t ON t.a * 10 = v.tens"), "10|one; 20|two");
    EXPECT_EQ(bench.rows("SELECT big FROM dbo.vv"), "10; 20");
    EXPECT_EQ(bench.rows("SELECT twice FROM k WHERE twice > 8"), "10");
}

TEST_F(BindSelect, SubqueryOfSeveralRowsIsAnError) {
    EXPECT_THAT(bench.errors("SELECT (SELECT a FROM s)"), HasSubstr("512:"));
    EXPECT_EQ(bench.rows("SELECT (SELECT a FROM s WHERE a = 2)"), "2");
    EXPECT_EQ(bench.rows("SELECT (SELECT a FROM s WHERE a = 99)"), "NULL");
    EXPECT_EQ(bench.rows("SELECT (SELECT TOP 1 a FROM s ORDER BY c)"), "3");
}

TEST_F(BindSelect, AssignmentsGoRowByRow) {
    bench.variable("@s", "varchar(50)", "''");
    bench.variable("@n", "int", "5");
    bench.variable("@m", "int", "0");
    EXPECT_EQ(bench.select("SELECT @s = @s + ISNULL(b, '-'), @n = @n + a, @m = @n FROM t").rows.size(), 3u);
    EXPECT_EQ(bench.value("@s"), "onetwo-");
    EXPECT_EQ(bench.value("@n"), "11");
    EXPECT_EQ(bench.value("@m"), "11");
    bench.variable("@o", "varchar(50)", "''");
    bench.rows("SELECT @o = @o + CAST(c AS varchar(9)) + ' ' FROM s ORDER BY c");
    EXPECT_EQ(bench.value("@o"), "1.00 2.50 3.50 ");
    bench.variable("@top", "int", "0");
    bench.rows("SELECT TOP 1 @top = a FROM t ORDER BY a DESC");
    EXPECT_EQ(bench.value("@top"), "3");
    bench.rows("SELECT @n = a FROM t WHERE a > 99");
    EXPECT_EQ(bench.value("@n"), "11");
    bench.rows("SELECT @n = MAX(a), @m = COUNT(*) FROM s");
    EXPECT_EQ(bench.value("@n") + "/" + bench.value("@m"), "3/3");
}

TEST_F(BindSelect, ConditionsAndValuesAlone) {
    const auto holds = [&](const std::string& condition) { return bench.change("IF " + condition + " PRINT 'x'"); };
    EXPECT_EQ(holds("EXISTS (SELECT * FROM s WHERE a = 2) AND NOT 1 = 2"), "1");
    EXPECT_EQ(holds("NULL = NULL"), "0");
    EXPECT_EQ(holds("(SELECT COUNT(*) FROM t) = 3"), "1");
    bench.context.options.ansiNulls = false;
    EXPECT_EQ(holds("NULL = NULL"), "1");
    EXPECT_EQ(bench.rows("SELECT a FROM t WHERE b = NULL"), "3");
}

TEST_F(BindSelect, LongListsAreNoLimit) {
    std::string condition = "a = 0";
    std::string values = "(0)";
    for (int i = 1; i < 900; ++i) {
        condition += " OR a = " + std::to_string(i);
        values += ", (" + std::to_string(i) + ")";
    }
    EXPECT_EQ(bench.rows("SELECT COUNT(*) FROM t WHERE " + condition), "3");
    EXPECT_EQ(bench.rows("SELECT COUNT(*) FROM (VALUES " + values + ") AS v (n)"), "900");
}

TEST_F(BindSelect, IntoTellsTheNewColumns) {
    bench.table("i", "id int IDENTITY, a char(3) NULL, d decimal(9,3) NOT NULL");
    const BoundQuery bound = bench.bind("SELECT id, a, d, a + 'yz' AS e, NULL AS n INTO u FROM i");
    ASSERT_TRUE(bound.into);
    EXPECT_EQ(bound.into->name, "u");
    std::string told;
    for (const ColumnDef& column : bound.into->columns) {
        told += column.name + " " + typeDeclaration(column.type) + (column.nullable ? " null" : "") +
                (column.identity ? " identity" : "") + "; ";
    }
    EXPECT_EQ(told, "id int identity; a char(3) null; d decimal(9,3); e varchar(5) null; n int null; ");
    EXPECT_FALSE(bench.bind("SELECT i.id INTO u FROM i, t").into->columns[0].identity);
    EXPECT_THAT(bench.errors("SELECT d + 1 INTO u FROM i"), HasSubstr("1038:"));
}

TEST_F(BindSelect, JoinsOnAlikeColumnsUseIndexes) {
    bench.table("big", "id int, k varchar(20), n bigint");
    bench.sql("CREATE INDEX ix ON big (id)");
    bench.sql("CREATE INDEX ik ON big (k)");
    EXPECT_THAT(bench.plan("SELECT big.n FROM t JOIN big ON big.id = t.a"), HasSubstr("SEARCH a2 USING INDEX ix"));
    EXPECT_THAT(bench.plan("SELECT big.n FROM t JOIN big ON big.k = t.b"), HasSubstr("USING INDEX ik"));
    EXPECT_THAT(bench.plan("SELECT n FROM big WHERE k = N'x'"), HasSubstr("USING INDEX ik"));
    EXPECT_THAT(bench.plan("SELECT n FROM big WHERE id IN (1, 2)"), HasSubstr("USING INDEX ix"));
    EXPECT_THAT(bench.plan("SELECT b1.n FROM big b1 JOIN big b2 ON b1.n = b2.id AND b1.n = b2.n"),
                Not(HasSubstr("SCAN a2")));
    EXPECT_THAT(bench.plan("SELECT 1 FROM t JOIN s ON t.a = s.a"), HasSubstr("AUTOMATIC"));
}

TEST_F(BindSelect, CorrelatedSubqueriesDoNotScanForEachRow) {
    for (const char* sql :
         {"SELECT a FROM t WHERE NOT EXISTS (SELECT * FROM s WHERE s.a = t.a)",
          "SELECT (SELECT MAX(c) FROM s WHERE s.a = t.a) FROM t", "SELECT (SELECT c FROM s WHERE s.a = t.a) FROM t",
          "SELECT a FROM t WHERE a IN (SELECT a FROM s WHERE s.a = t.a)"}) {
        EXPECT_THAT(bench.plan(sql), HasSubstr("AUTOMATIC")) << sql;
    }
}

}  // namespace
}  // namespace sandbox::test
