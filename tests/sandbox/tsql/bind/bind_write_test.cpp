// The rows that INSERT, UPDATE and DELETE are to write, as the binder finds them.
#include <gtest/gtest.h>

#include "sandbox/tsql/parse/parser.h"
#include "sandbox/tsql/syntax/ast.h"
#include "tests/sandbox/tsql/bind/bind_bench.h"

namespace sandbox::test {
namespace {

class BindWrite : public ::testing::Test {
protected:
    BindWrite() {
        bench.table("t", "id int, a int NULL, name char(3) NULL DEFAULT ('df')");
        bench.fill("t", "(1, 10, 'x  '), (2, 20, 'y  '), (3, NULL, NULL)");
        bench.table("s", "id int, a int");
        bench.fill("s", "(2, 22), (2, 23), (3, 33), (9, 99)");
    }
    BindBench bench;
};

struct Case {
    const char* sql;
    const char* rows;
};

TEST_F(BindWrite, UpdatesFindRowsAndValues) {
    const Case cases[] = {
        {"UPDATE t SET a = id, id = a WHERE id < 3", "1|1|10; 2|2|20"},
        {"UPDATE t SET a = s.a FROM t, s WHERE t.id = s.id AND s.a <> 23", "2|22; 3|33"},
        {"UPDATE t SET a = s.a + 1 FROM s WHERE t.id = s.id AND s.a > 30", "3|34"},
        {"UPDATE x SET a = s.a FROM t x INNER JOIN s ON s.id = x.id WHERE s.id = 3", "3|33"},
        {"UPDATE x SET x.a = x.a + 1 FROM t AS x WHERE x.id = 1", "1|11"},
        {"UPDATE t SET a = x.a + 100 FROM t x WHERE x.id = 1", "1|110"},
        {"UPDATE t SET t.a = t.a + 1000 WHERE t.id = 1", "1|1010"},
        {"UPDATE t SET a = (SELECT MAX(a) FROM s WHERE s.id = t.id)", "1|NULL; 2|23; 3|33"},
        {"UPDATE t SET a += 5, name = DEFAULT WHERE id = 2", "2|25|df "},
        {"UPDATE TOP (1) t SET a = 1", "1|1"},
        {"UPDATE t SET name = 7 WHERE id = 1", "1|7  "},
    };
    for (const Case& each : cases) EXPECT_EQ(bench.change(each.sql), each.rows) << each.sql;
}

TEST_F(BindWrite, UpdatesAssignVariablesOnTheirWay) {
    bench.variable("@old", "int", "0");
    bench.variable("@new", "bigint", "0");
    bench.variable("@n", "int", "100");
    EXPECT_EQ(bench.change("UPDATE t SET @old = a, @new = a = a + 1 WHERE id = 1"), "1|11");
    EXPECT_EQ(bench.value("@old") + "/" + bench.value("@new"), "10/11");
    EXPECT_EQ(bench.change("UPDATE t SET @n = a = @n + 1"), "1|101; 2|102; 3|103");
    EXPECT_EQ(bench.change("UPDATE t SET @n = @n + 1, a = @n"), "1|104; 2|105; 3|106");
}

TEST_F(BindWrite, DeletesFindRows) {
    const Case cases[] = {
        {"DELETE t", "1; 2; 3"},
        {"DELETE FROM t WHERE id > 1", "2; 3"},
        {"DELETE t FROM t, s WHERE t.id = s.id AND s.a = 33", "3"},
        {"DELETE FROM t FROM t INNER JOIN s ON t.id = s.id AND s.a = 22", "2"},
        {"DELETE x FROM t x WHERE x.id = 3", "3"},
        {"DELETE t FROM t LEFT OUTER JOIN s ON s.id = t.id WHERE s.id IS NULL", "1"},
        {"DELETE t FROM s LEFT JOIN t ON s.id = t.id WHERE s.a > 30", "3"},
        {"DELETE TOP (2) FROM t", "1; 2"},
        {"DELETE FROM t WHERE NOT EXISTS (SELECT * FROM s WHERE s.id = t.id)", "1"},
    };
    for (const Case& each : cases) EXPECT_EQ(bench.change(each.sql), each.rows) << each.sql;
}

TEST_F(BindWrite, JoinsMayRepeatARow) {
    const auto repeats = [&](const char* sql) {
        const ast::Batch batch = parseBatch(sql);
        return bindDelete(bench.context, std::get<ast::Delete>(batch.statements.front()->node)).mayRepeat;
    };
    EXPECT_TRUE(repeats("DELETE t FROM t JOIN s ON t.id = s.id"));
    EXPECT_FALSE(repeats("DELETE x FROM t x WHERE id IN (SELECT id FROM s)"));
}

TEST_F(BindWrite, InsertsGiveWholeRows) {
    const Case cases[] = {
        {"INSERT t VALUES (4, '40', 'abc  ')", "4|40|abc"},
        {"INSERT t (a) VALUES (1), (NULL)", "1|NULL|df ; NULL|NULL|df "},
        {"INSERT t (name, id) VALUES (DEFAULT, 1), ('n', 2.0)", "df |1|NULL; n  |2|NULL"},
        {"INSERT t DEFAULT VALUES", "NULL|NULL|df "},
        {"INSERT INTO t (id, a) SELECT id, SUM(a) FROM s GROUP BY id ORDER BY id DESC", "9|99|df ; 3|33|df ; 2|45|df "},
        {"INSERT TOP (1) INTO t (id) SELECT id FROM s", "2|NULL|df "},
        {"INSERT t (id) SELECT '7' UNION ALL SELECT '8'", "7|NULL|df ; 8|NULL|df "},
    };
    for (const Case& each : cases) EXPECT_EQ(bench.change(each.sql), each.rows) << each.sql;
}

TEST_F(BindWrite, InsertsPlaceColumnsOfTheTable) {
    bench.table("i", "id int IDENTITY, a int, twice AS (a * 2)");
    const auto insert = [&](const char* sql) {
        const ast::Batch batch = parseBatch(sql);
        return bindInsert(bench.context, std::get<ast::Insert>(batch.statements.front()->node));
    };
    const BoundInsert implicit = insert("INSERT i (a) VALUES (1)");
    ASSERT_EQ(implicit.columns.size(), 2u);
    EXPECT_EQ(implicit.columns[0].source, -1);
    EXPECT_EQ(implicit.columns[1].source, 0);
    EXPECT_FALSE(implicit.explicitIdentity);
    const BoundInsert given = insert("INSERT i (a, id) VALUES (1, 5)");
    EXPECT_EQ(given.columns[0].source, 1);
    EXPECT_TRUE(given.explicitIdentity);
    EXPECT_TRUE(insert("INSERT i EXEC p").fromExecute);
}

TEST_F(BindWrite, RowsFromOutsideAreConvertedAndCompleted) {
    const ResolvedObject target = *bench.context.find("", "", "t");
    const std::vector<Type> types = {Type{.id = TypeId::VarChar, .length = 5}, Type{.id = TypeId::BigInt}};
    BoundInsert insert = bindInsertRows(bench.context, target, {"a", "id"}, types, false);
    insert.source.parameters[0].literal = std::string("12");
    insert.source.parameters[1].literal = std::int64_t{7};
    EXPECT_EQ(bench.run(insert.source).rows, (std::vector<std::vector<std::string>>{{"12", "7", "df "}}));
    EXPECT_THROW(static_cast<void>(bindInsertRows(bench.context, target, {"a"}, types, false)), SqlError);
}

TEST_F(BindWrite, ChecksFindTheRowsThatBreakThem) {
    const ResolvedObject table = *bench.context.find("", "", "t");
    EXPECT_EQ(bench.run(bindCheck(bench.context, table, "a > 15 OR id < 0", false)).rows.size(), 1u);
    BoundQuery one = bindCheck(bench.context, table, "a > 15", true);
    one.parameters[0].literal = std::int64_t{2};
    EXPECT_TRUE(bench.run(one).rows.empty());
    one.parameters[0].literal = std::int64_t{3};  // NULL breaks nothing
    EXPECT_TRUE(bench.run(one).rows.empty());
}

TEST_F(BindWrite, DefaultsAreOfTheirColumn) {
    const ResolvedObject table = *bench.context.find("", "", "t");
    EXPECT_EQ(bench.run(bindDefault(bench.context, table.object->columns[2])).rows[0][0], "df ");
    EXPECT_EQ(bench.run(bindDefault(bench.context, table.object->columns[1])).rows[0][0], "NULL");
}

TEST_F(BindWrite, TextThatDoesNotFitIsRefused) {
    EXPECT_EQ(bench.errors("INSERT t (name) VALUES ('abcd')").substr(0, 5), "8152:");
    EXPECT_EQ(bench.errors("UPDATE t SET name = 'abcd'").substr(0, 5), "8152:");
}

}  // namespace
}  // namespace sandbox::test
