// INSERT, UPDATE, DELETE and bulk load: what they store, what they refuse, and what they leave when they fail.
#include <gtest/gtest.h>

#include <future>
#include <thread>

#include "tests/sandbox/support/session_runner.h"

namespace sandbox {
namespace {

class Dml : public testing::Test, protected test::SessionRunner {};

TEST_F(Dml, NullsWhereNoneMayBe) {
    run("CREATE TABLE t (a int NOT NULL, b int NULL)");
    EXPECT_EQ(run("INSERT t VALUES (1, NULL), (NULL, 2)"),
              "error 515 16 2 - 1 Cannot insert the value NULL into column 'a', table 'd.dbo.t'; column does not allow "
              "nulls. INSERT fails.\n");
    EXPECT_EQ(run("INSERT t VALUES (1, NULL)\nUPDATE t SET a = b"),
              "count 1\nerror 515 16 2 - 2 Cannot insert the value NULL into column 'a', table 'd.dbo.t'; column does "
              "not allow nulls. UPDATE fails.\n");
    EXPECT_EQ(run("SELECT a, b FROM t"), "cols a int, b int\nrow 1|NULL\ncount 1\n");
}

TEST_F(Dml, DefaultsAreEvaluatedForEachRow) {
    run("CREATE TABLE t (a int, id uniqueidentifier NOT NULL DEFAULT NEWID(), made datetime NOT NULL DEFAULT GETDATE())");
    run("INSERT t (a) SELECT 1 UNION ALL SELECT 2");
    EXPECT_EQ(run("SELECT COUNT(DISTINCT id) AS ids, COUNT(DISTINCT made) AS times FROM t"),
              "cols ids int, times int\nrow 2|1\ncount 1\n");
}

TEST_F(Dml, IdentityValuesAreNotGivenBack) {
    run("CREATE TABLE t (id int IDENTITY(10, 5), a int NOT NULL UNIQUE)");
    run("INSERT t (a) VALUES (1)");
    run("INSERT t (a) VALUES (1)");
    run("BEGIN TRAN INSERT t (a) VALUES (2) ROLLBACK");
    run("INSERT t (a) VALUES (3)");
    EXPECT_EQ(run("SELECT id FROM t ORDER BY id"), "cols id int\nrow 10\nrow 25\ncount 2\n");
}

TEST_F(Dml, IdentityBeyondItsType) {
    run("CREATE TABLE t (id tinyint IDENTITY(255, 1), a int)");
    EXPECT_EQ(run("INSERT t (a) VALUES (1)"), "count 1\n");
    EXPECT_EQ(run("INSERT t (a) VALUES (1)"),
              "error 8115 16 1 - 1 Arithmetic overflow error converting IDENTITY to data type tinyint.\n");
}

TEST_F(Dml, GivenIdentitiesMoveTheNextOneOnButNotBack) {
    run("CREATE TABLE t (id int IDENTITY(1, 1), a int)");
    run("INSERT t (a) VALUES (1) SET IDENTITY_INSERT t ON INSERT t (id, a) VALUES (7, 1) INSERT t (id, a) VALUES (3, 1) "
        "SET IDENTITY_INSERT t OFF INSERT t (a) VALUES (2)");
    EXPECT_EQ(run("SELECT MAX(id) AS a, IDENT_CURRENT('t') AS b FROM t"),
              "cols a int, b numeric(38,0)\nrow 8|8\ncount 1\n");
}

TEST_F(Dml, ReseedBeforeTheFirstRowIsTheFirstValue) {
    run("CREATE TABLE t (id int IDENTITY(1, 1), a int)");
    run("DBCC CHECKIDENT ('t', RESEED, 100) INSERT t (a) VALUES (1) INSERT t (a) VALUES (1)");
    EXPECT_EQ(run("SELECT id FROM t"), "cols id int\nrow 100\nrow 101\ncount 2\n");
    run("TRUNCATE TABLE t INSERT t (a) VALUES (1)");
    EXPECT_EQ(run("SELECT id FROM t"), "cols id int\nrow 1\ncount 1\n");
}

TEST_F(Dml, RowsMayPassThroughEachOthersKeys) {
    run("CREATE TABLE t (a int NOT NULL PRIMARY KEY, b int NULL UNIQUE)");
    run("INSERT t VALUES (1, 10), (2, 20), (3, NULL)");
    EXPECT_EQ(run("UPDATE t SET a = a + 1, b = 30 - b"), "count 3\n");
    EXPECT_EQ(run("SELECT a, b FROM t ORDER BY a"), "cols a int, b int\nrow 2|20\nrow 3|10\nrow 4|NULL\ncount 3\n");
}

TEST_F(Dml, UpdateToOneKeyLeavesNothingOfIt) {
    run("CREATE TABLE t (a int NOT NULL CONSTRAINT pk PRIMARY KEY, b varchar(5) NULL)");
    run("INSERT t VALUES (1, 'x'), (2, 'y')");
    EXPECT_EQ(run("UPDATE t SET a = 9, b = 'z'"),
              "error 2627 14 1 - 1 Violation of PRIMARY KEY constraint 'pk'. Cannot insert duplicate key in object "
              "'dbo.t'. The duplicate key value is (9).\n");
    EXPECT_EQ(run("SELECT a, b FROM t ORDER BY a"), "cols a int, b varchar(5)\nrow 1|'x'\nrow 2|'y'\ncount 2\n");
}

TEST_F(Dml, UniqueKeysOfSeveralColumnsTakeNullAsAValue) {
    run("CREATE TABLE t (a int NULL, b varchar(5) NULL, CONSTRAINT uq UNIQUE (a, b))");
    EXPECT_EQ(run("INSERT t VALUES (1, NULL), (NULL, 'x'), (NULL, NULL), (2, NULL)"), "count 4\n");
    EXPECT_EQ(run("INSERT t VALUES (NULL, 'X ')"),
              "error 2627 14 1 - 1 Violation of UNIQUE KEY constraint 'uq'. Cannot insert duplicate key in object "
              "'dbo.t'. The duplicate key value is (<NULL>, X ).\n");
    EXPECT_EQ(run("UPDATE t SET a = NULL WHERE a = 2"),
              "error 2627 14 1 - 1 Violation of UNIQUE KEY constraint 'uq'. Cannot insert duplicate key in object "
              "'dbo.t'. The duplicate key value is (<NULL>, <NULL>).\n");
}

TEST_F(Dml, StatementsAreJudgedByWhatTheyLeave) {
    run("CREATE TABLE t (id int NOT NULL PRIMARY KEY, boss int NULL CONSTRAINT fk REFERENCES t (id))");
    EXPECT_EQ(run("INSERT t VALUES (2, 1), (1, NULL), (3, 2)"), "count 3\n") << "the child before its parent";
    EXPECT_EQ(run("DELETE t WHERE id = 1"),
              "error 547 16 0 - 1 The DELETE statement conflicted with the SAME TABLE REFERENCE constraint \"fk\". The "
              "conflict occurred in database \"d\", table \"dbo.t\", column 'boss'.\n");
    EXPECT_EQ(
        run("INSERT t VALUES (4, 9)"),
        "error 547 16 0 - 1 The INSERT statement conflicted with the FOREIGN KEY SAME TABLE constraint \"fk\". The "
        "conflict occurred in database \"d\", table \"dbo.t\", column 'id'.\n");
    EXPECT_EQ(run("UPDATE t SET id = id + 10, boss = boss + 10"), "count 3\n");
    EXPECT_EQ(run("DELETE t"), "count 3\n");
}

TEST_F(Dml, ForeignKeysOfSeveralColumnsNameNone) {
    run("CREATE TABLE p (a int NOT NULL, b int NOT NULL, PRIMARY KEY (a, b)) INSERT p VALUES (1, 1)");
    run("CREATE TABLE c (x int NULL, y int NULL, CONSTRAINT fk FOREIGN KEY (x, y) REFERENCES p (a, b))");
    EXPECT_EQ(run("INSERT c VALUES (1, 1), (5, NULL), (NULL, 5)"), "count 3\n") << "a null asks for no parent";
    EXPECT_EQ(run("INSERT c VALUES (1, 2)"),
              "error 547 16 0 - 1 The INSERT statement conflicted with the FOREIGN KEY constraint \"fk\". The conflict "
              "occurred in database \"d\", table \"dbo.p\".\n");
}

TEST_F(Dml, CascadesGoAllTheWayDown) {
    run("CREATE TABLE a (id int NOT NULL PRIMARY KEY)");
    run("CREATE TABLE b (id int NOT NULL PRIMARY KEY, a int REFERENCES a (id) ON DELETE CASCADE ON UPDATE CASCADE)");
    run("CREATE TABLE c (b int REFERENCES b (id) ON DELETE CASCADE)");
    run("INSERT a VALUES (1), (2) INSERT b VALUES (10, 1), (20, 2) INSERT c VALUES (10), (20), (20)");
    EXPECT_EQ(run("UPDATE a SET id = id + 1"), "count 2\n");
    EXPECT_EQ(run("SELECT id, a FROM b ORDER BY id"), "cols id int, a int\nrow 10|2\nrow 20|3\ncount 2\n");
    EXPECT_EQ(run("DELETE a WHERE id = 3"), "count 1\n");
    EXPECT_EQ(run("SELECT b FROM c"), "cols b int\nrow 10\ncount 1\n");
}

TEST_F(Dml, ACascadeThatIsRefusedUndoesItAll) {
    run("CREATE TABLE a (id int NOT NULL PRIMARY KEY)");
    run("CREATE TABLE b (id int NOT NULL PRIMARY KEY, a int REFERENCES a (id) ON DELETE CASCADE)");
    run("CREATE TABLE c (b int CONSTRAINT fk_c REFERENCES b (id))");
    run("INSERT a VALUES (1) INSERT b VALUES (10, 1) INSERT c VALUES (10)");
    EXPECT_EQ(run("DELETE a"),
              "error 547 16 0 - 1 The DELETE statement conflicted with the REFERENCE constraint \"fk_c\". The conflict "
              "occurred in database \"d\", table \"dbo.c\", column 'b'.\n");
    EXPECT_EQ(run("SELECT (SELECT COUNT(*) FROM a) AS a, (SELECT COUNT(*) FROM b) AS b"),
              "cols a int, b int\nrow 1|1\ncount 1\n");
}

TEST_F(Dml, ChecksRefuseWhatIsFalseAndPassWhatIsUnknown) {
    run("CREATE TABLE t (a int NULL CONSTRAINT ck_a CHECK (a > 0), b int NULL, CONSTRAINT ck_ab CHECK (a < b))");
    EXPECT_EQ(run("INSERT t VALUES (1, 2), (NULL, NULL), (5, NULL)"), "count 3\n");
    EXPECT_EQ(run("INSERT t VALUES (-1, 2)"),
              "error 547 16 0 - 1 The INSERT statement conflicted with the CHECK constraint \"ck_a\". The conflict "
              "occurred in database \"d\", table \"dbo.t\", column 'a'.\n");
    EXPECT_EQ(run("UPDATE t SET b = 0 WHERE a = 1"),
              "error 547 16 0 - 1 The UPDATE statement conflicted with the CHECK constraint \"ck_ab\". The conflict "
              "occurred in database \"d\", table \"dbo.t\".\n");
    run("ALTER TABLE t NOCHECK CONSTRAINT ck_a");
    EXPECT_EQ(run("INSERT t VALUES (-1, 2)"), "count 1\n");
}

TEST_F(Dml, InsertFromTheTableItselfSeesItAsItWas) {
    run("CREATE TABLE t (a int) INSERT t VALUES (1), (2)");
    EXPECT_EQ(run("INSERT t SELECT a + 10 FROM t"), "count 2\n");
    EXPECT_EQ(run("INSERT t SELECT a FROM t WHERE NOT EXISTS (SELECT * FROM t u WHERE u.a = t.a + 10)"), "count 2\n");
}

TEST_F(Dml, CatalogueViewsAreReadOnly) {
    EXPECT_EQ(run("DELETE sysobjects"), "error 259 16 1 - 1 Ad hoc updates to system catalogs are not allowed.\n");
}

TEST_F(Dml, TableVariablesAndTemporaryTables) {
    EXPECT_EQ(run("DECLARE @t TABLE (a int NOT NULL PRIMARY KEY, b int DEFAULT 5)\n"
                  "INSERT @t (a) VALUES (1)\nINSERT @t (a) VALUES (1)\nUPDATE @t SET b = b + 1\nSELECT a, b FROM @t")
                  .substr(0, 37),
              "count 1\nerror 2627 14 1 - 3 Violation");
    EXPECT_EQ(run("CREATE TABLE #x (a int NOT NULL) INSERT #x VALUES (1)"), "count 1\n");
    EXPECT_EQ(run("DELETE #x WHERE a = 1 DROP TABLE #x"), "count 1\n");
}

TEST_F(Dml, WriterWaitsForWriterAndReaderDoesNot) {
    run("CREATE TABLE t (a int) INSERT t VALUES (1)");
    Session other(engine, login("d"));
    run("BEGIN TRAN UPDATE t SET a = 2");
    EXPECT_EQ(test::answer(other, "SELECT a FROM t"), "cols a int\nrow 1\ncount 1\n");
    EXPECT_EQ(test::answerOf(other, "SET LOCK_TIMEOUT 0\nUPDATE t SET a = 3"),
              "error 1222 16 51 - 2 Lock request time out period exceeded.\n");
    auto waiting = std::async(std::launch::async,
                              [&] { return test::answer(other, "SET LOCK_TIMEOUT -1 UPDATE t SET a = a + 10"); });
    const std::string blocked =
        "SELECT blocked FROM master..sysprocesses WHERE blocked <> 0 AND spid = " + std::to_string(other.spid());
    while (run(blocked).find("row " + std::to_string(session.spid())) == std::string::npos) std::this_thread::yield();
    run("COMMIT");
    EXPECT_EQ(waiting.get(), "count 1\n");
    EXPECT_EQ(run("SELECT a FROM t"), "cols a int\nrow 12\ncount 1\n");
}

TEST_F(Dml, ADeadlockHasOneVictimWhoseTransactionIsGone) {
    run("CREATE DATABASE e");
    run("CREATE TABLE t (a int) INSERT t VALUES (1) CREATE TABLE e..t (a int) INSERT e..t VALUES (1)");
    Session other(engine, login("d"));
    run("BEGIN TRAN UPDATE t SET a = 2");
    test::answer(other, "BEGIN TRAN UPDATE e..t SET a = 3");
    auto waiting = std::async(std::launch::async, [&] { return test::answer(other, "UPDATE t SET a = 3"); });
    const std::string blocked =
        "SELECT blocked FROM master..sysprocesses WHERE blocked <> 0 AND spid = " + std::to_string(other.spid());
    while (run(blocked).find("row ") == std::string::npos) std::this_thread::yield();
    EXPECT_EQ(run("UPDATE e..t SET a = 2\nSELECT 'never' AS s").substr(0, 16), "error 1205 13 51");
    EXPECT_EQ(waiting.get(), "count 1\n");
    test::answer(other, "COMMIT");
    EXPECT_EQ(run("SELECT @@TRANCOUNT AS n, a FROM t"), "cols n int, a int\nrow 0|3\ncount 1\n");
}

class BulkLoad : public Dml {
protected:
    // Loads rows of (a int, b varchar(5)); the answer is the count or the error's number.
    std::string load(const std::string& with, std::vector<std::vector<Value>> rows) {
        run("");
        try {
            (void)session.beginBulk("INSERT BULK t (a int, b varchar(5))" + with);
            for (const auto& row : rows) session.bulkRow(row);
            return "count " + std::to_string(session.endBulk());
        } catch (const SqlError& error) {
            session.abortBulk();
            return "error " + std::to_string(error.messages.front().number);
        }
    }
    static Value n(std::int64_t v) { return v; }
    static Value s(const char* v) { return std::string(v); }
};

TEST_F(BulkLoad, FillsIdentityAndDefaults) {
    run("CREATE TABLE t (id int IDENTITY(5, 1), a int NULL DEFAULT 9, b varchar(5) NOT NULL, c int NOT NULL DEFAULT 3)");
    EXPECT_EQ(load("", {{n(1), s("x")}, {Null{}, s("y")}}), "count 2");
    EXPECT_EQ(load(" WITH (KEEP_NULLS)", {{Null{}, s("z")}}), "count 1");
    EXPECT_EQ(run("SELECT id, a, b, c FROM t ORDER BY id"),
              "cols id int, a int, b varchar(5), c int\nrow 5|1|'x'|3\nrow 6|9|'y'|3\nrow 7|NULL|'z'|3\ncount 3\n");
}

TEST_F(BulkLoad, ChecksAndForeignKeysOnlyWhenAskedKeysAlways) {
    run("CREATE TABLE p (a int NOT NULL PRIMARY KEY)");
    run("CREATE TABLE t (a int NOT NULL PRIMARY KEY REFERENCES p (a), b varchar(5) CHECK (b <> 'bad'))");
    EXPECT_EQ(load("", {{n(1), s("bad")}}), "count 1");
    EXPECT_EQ(load(" WITH (CHECK_CONSTRAINTS)", {{n(2), s("ok")}}), "error 547");
    run("INSERT p VALUES (3)");
    EXPECT_EQ(load(" WITH (CHECK_CONSTRAINTS)", {{n(3), s("bad")}}), "error 547");
    EXPECT_EQ(load(" WITH (CHECK_CONSTRAINTS)", {{n(3), s("ok")}}), "count 1");
    EXPECT_EQ(load("", {{n(4), s("x")}, {n(1), s("x")}}), "error 2627");
    EXPECT_EQ(load("", {{Null{}, s("x")}}), "error 515");
    EXPECT_EQ(run("SELECT a FROM t ORDER BY a"), "cols a int\nrow 1\nrow 3\ncount 2\n");
}

}  // namespace
}  // namespace sandbox
