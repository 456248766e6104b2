// The entry points of a session that no batch reaches: calls with parameters, descriptions, bulk loads, transaction
// requests, cancelling, resetting, and a session's end.
#include "sandbox/tsql/run/session.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "sandbox/store/values/error.h"
#include "tests/sandbox/support/case_file.h"
#include "tests/sandbox/support/reply_lines.h"

namespace sandbox::test {
namespace {

Type type(TypeId id, int length = 0) {
    return Type{.id = id, .length = length};
}
Argument integer(std::string name, std::int64_t n) {
    return {.name = std::move(name), .value = {type(TypeId::Int), n}, .output = false, .useDefault = false};
}

class SessionTest : public testing::Test {
protected:
    Engine engine{{}};
    TestDatabase database{engine, "shop"};
    Session session{engine, database.login()};

    std::string answer(Session& to, std::string_view sql) {
        ReplyLines reply;
        to.batch(sql, reply);
        return reply.text();
    }
    std::string answer(std::string_view sql) { return answer(session, sql); }
};

TEST_F(SessionTest, AnUnknownDatabaseRefusesTheLogin) {
    LoginInfo login = database.login();
    login.database = "nowhere";
    try {
        Session refused(engine, login);
        FAIL() << "no error";
    } catch (const SqlError& e) {
        EXPECT_EQ(e.messages[0].number, 4060);
        EXPECT_EQ(e.messages[0].text, "Cannot open database \"nowhere\" requested by the login. The login failed.");
    }
}

TEST_F(SessionTest, ACallGivesStatusAndOutputParameters) {
    ASSERT_EQ(answer("CREATE PROCEDURE p @a int, @b varchar(10) = 'b' OUTPUT AS SET @b = @b + '!' RETURN @a * 2"), "");
    const Argument arguments[] = {
        integer("@a", 21),
        {.name = "@b", .value = {type(TypeId::VarChar, 10), Null{}}, .output = true, .useDefault = true}};
    ReplyLines reply;
    session.call("dbo.p", arguments, reply);
    EXPECT_EQ(reply.text(), "return 42\noutput @b varchar(10) 'b!'\n");
    EXPECT_EQ(reply.procedures, 1);
}

TEST_F(SessionTest, ACallOfWhatIsNotThereIsAnError) {
    ReplyLines reply;
    session.call("nowhere", {}, reply);
    EXPECT_EQ(reply.text(), "error 2812 16 62 - 1 Could not find stored procedure 'nowhere'.\n");
    EXPECT_EQ(reply.procedures, 1);
}

TEST_F(SessionTest, ATextWithParametersGivesTheirOutputs) {
    Argument n = integer("@n", 0);
    n.output = true;
    const Argument arguments[] = {integer("@a", 5), n};
    ReplyLines reply;
    session.execute("SELECT @a AS a SET @n = @a + 1", "@a int, @n int OUTPUT", arguments, reply);
    EXPECT_EQ(reply.text(), "cols a int\nrow 5\ncount 1\nreturn 0\noutput @n int 6\n");
    EXPECT_EQ(reply.inProcedure, 1);
}

TEST_F(SessionTest, ATextIsRunAgainWithOtherValuesAndOtherTables) {
    const std::string_view text = "SELECT a FROM t WHERE a = @a";
    answer("CREATE TABLE t (a int) INSERT t VALUES (1)");
    for (const std::int64_t wanted : {1, 2}) {
        const Argument arguments[] = {integer("@a", wanted)};
        ReplyLines reply;
        session.execute(text, "@a int", arguments, reply);
        EXPECT_EQ(reply.lines[0], "cols a int");
        EXPECT_EQ(reply.lines.size(), wanted == 1 ? 4u : 3u);
    }
    answer("DROP TABLE t CREATE TABLE t (a varchar(5)) INSERT t VALUES ('1')");
    const Argument arguments[] = {integer("@a", 1)};
    ReplyLines reply;
    session.execute(text, "@a int", arguments, reply);
    EXPECT_EQ(reply.text(), "cols a varchar(5)\nrow '1'\ncount 1\nreturn 0\n");
}

TEST_F(SessionTest, DescribesTheFirstRowSetWithoutRunningIt) {
    answer("CREATE TABLE t (a int NOT NULL, b varchar(5))");
    const auto columns = session.describe("INSERT t VALUES (1, 'x') SELECT a, b + @c AS c FROM t", "@c varchar(3)");
    ASSERT_EQ(columns.size(), 2u);
    EXPECT_EQ(columns[1].name, "c");
    EXPECT_EQ(typeDeclaration(columns[1].type), "varchar(8)");
    EXPECT_EQ(answer("SELECT COUNT(*) AS n FROM t"), "cols n int\nrow 0\ncount 1\n");
    EXPECT_TRUE(session.describe("SET NOCOUNT ON", "").empty());
    EXPECT_THROW((void)session.describe("SELECT nothing FROM t", ""), SqlError);
}

TEST_F(SessionTest, ABulkLoadStoresAllRowsOrNone) {
    answer("CREATE TABLE t (id int IDENTITY(1, 1), a int NOT NULL PRIMARY KEY, b varchar(5) DEFAULT 'd')");
    const BulkTarget target = session.beginBulk("INSERT BULK t (a int, b varchar(5))");
    ASSERT_EQ(target.columns.size(), 2u);
    EXPECT_EQ(target.columns[0].name, "a");
    session.bulkRow(std::vector<Value>{std::int64_t{1}, std::string("x")});
    session.bulkRow(std::vector<Value>{std::int64_t{2}, Null{}});
    EXPECT_EQ(session.endBulk(), 2);

    (void)session.beginBulk("INSERT BULK t (a int)");
    session.bulkRow(std::vector<Value>{std::int64_t{3}});
    EXPECT_THROW(
        {
            session.bulkRow(std::vector<Value>{std::int64_t{1}});
            (void)session.endBulk();
        },
        SqlError);
    session.abortBulk();
    EXPECT_EQ(answer("SELECT id, a, b FROM t ORDER BY a"),
              "cols id int, a int, b varchar(5)\nrow 1|1|'x'\nrow 2|2|'d'\ncount 2\n");
    EXPECT_THROW((void)session.beginBulk("INSERT BULK nowhere (a int)"), SqlError);
}

TEST_F(SessionTest, ABulkLoadPadsWhatItsTypesPad) {
    answer("CREATE TABLE t (a char(4), b nchar(3), c binary(3), d varchar(6))");
    (void)session.beginBulk("INSERT BULK t (a char(4), b nchar(3), c binary(3), d char(3))");
    session.bulkRow(std::vector<Value>{std::string("x"), std::string("ø"), Bytes{1}, std::string("y")});
    session.bulkRow(std::vector<Value>{std::string("abcd"), Null{}, Bytes{1, 2, 3}, std::string("abc")});
    EXPECT_EQ(session.endBulk(), 2);
    EXPECT_EQ(answer("SELECT a + '|' AS a, b + '|' AS b, c, d + '|' AS d FROM t ORDER BY a DESC"),
              "cols a varchar(5), b nvarchar(4), c binary(3), d varchar(7)\n"
              "row 'x   |'|'ø  |'|0x010000|'y  |'\nrow 'abcd|'|NULL|0x010203|'abc|'\ncount 2\n");
}

TEST_F(SessionTest, TransactionRequestsAreTransactionsOfTheSession) {
    answer("CREATE TABLE t (a int)");
    ReplyLines reply;
    session.beginTransaction("outer", reply);
    EXPECT_EQ(answer("INSERT t VALUES (1) SELECT @@TRANCOUNT AS n"), "count 1\ncols n int\nrow 1\ncount 1\n");
    session.saveTransaction("here", reply);
    answer("INSERT t VALUES (2)");
    session.rollbackTransaction("here", false, reply);
    session.commitTransaction(true, reply);
    session.rollbackTransaction("", false, reply);
    EXPECT_EQ(reply.transactions, (std::vector<std::string>{"began", "committed", "began", "rolled back"}));
    EXPECT_EQ(answer("SELECT a, @@TRANCOUNT AS n FROM t"), "cols a int, n int\nrow 1|0\ncount 1\n");
    session.commitTransaction(false, reply);
    EXPECT_EQ(reply.text(),
              "error 3902 16 1 - 1 The COMMIT TRANSACTION request has no corresponding BEGIN TRANSACTION.\n");
}

TEST_F(SessionTest, CancellingEndsTheBatchAndLeavesTheTransaction) {
    answer("CREATE TABLE t (a int)");
    ReplyLines reply;
    std::atomic<bool> over = false;
    std::thread client([&] {
        while (!over) {
            session.cancel();
            std::this_thread::yield();
        }
    });
    session.batch("BEGIN TRAN INSERT t VALUES (1) WAITFOR DELAY '01:00' PRINT 'never'", reply);
    over = true;
    client.join();
    EXPECT_TRUE(session.cancelled());
    EXPECT_EQ(reply.text().find("never"), std::string::npos);
    EXPECT_EQ(answer("PRINT 'usable'"), "info 0 0 1 - 1 usable\n");
    EXPECT_FALSE(session.cancelled());
}

TEST_F(SessionTest, ALongQueryCanBeCancelled) {
    std::atomic<bool> over = false;
    std::thread client([&] {
        while (!over) {
            session.cancel();
            std::this_thread::yield();
        }
    });
    ReplyLines reply;
    session.batch("DECLARE @i int SET @i = 0 WHILE 1 = 1 SET @i = @i + 1", reply);
    over = true;
    client.join();
    EXPECT_TRUE(session.cancelled());
}

TEST_F(SessionTest, ASessionThatEndsRollsBackAndLeavesTheProcessList) {
    answer("CREATE TABLE t (a int)");
    {
        Session other(engine, database.login());
        answer(other, "BEGIN TRAN INSERT t VALUES (1)");
        EXPECT_EQ(answer("SELECT COUNT(*) AS n FROM master..sysprocesses WHERE spid <> @@SPID AND open_tran = 1"),
                  "cols n int\nrow 1\ncount 1\n");
    }
    EXPECT_EQ(answer("SELECT COUNT(*) AS n FROM master..sysprocesses WHERE spid <> @@SPID"),
              "cols n int\nrow 0\ncount 1\n");
    EXPECT_EQ(answer("INSERT t VALUES (2) SELECT a FROM t"), "count 1\ncols a int\nrow 2\ncount 1\n");
}

TEST_F(SessionTest, ResettingForgetsSettingsTablesAndTheTransaction) {
    answer("CREATE TABLE t (a int)");
    answer("SET NOCOUNT ON CREATE TABLE #x (a int) USE master");
    answer("BEGIN TRAN INSERT shop..t VALUES (1)");
    session.reset(false);
    EXPECT_EQ(session.database(), "shop");
    EXPECT_EQ(answer("SELECT COUNT(*) AS n, @@TRANCOUNT AS c FROM t"), "cols n int, c int\nrow 0|0\ncount 1\n");
    EXPECT_EQ(answer("SELECT a FROM #x"), "error 208 16 0 - 1 Invalid object name '#x'.\n");
}

TEST_F(SessionTest, AnErrorOfSeverityTwentyEndsTheConnection) {
    ReplyLines reply;
    EXPECT_THROW(session.batch("RAISERROR ('over', 20, 1) WITH LOG", reply), SqlError);
    EXPECT_EQ(reply.text(), "error 50000 20 1 - 1 over\n");
    EXPECT_EQ(answer("RAISERROR ('over', 20, 1)").substr(0, 17), "error 2754 16 1 -");
}

TEST_F(SessionTest, ChangedContextsAreTold) {
    ReplyLines reply;
    session.batch("USE master", reply);
    EXPECT_EQ(reply.databases, std::vector<std::string>{"shop>master"});
    EXPECT_EQ(session.database(), "master");
}

TEST_F(SessionTest, AChangeThatWaitedForADefinitionIsBoundAnew) {
    answer("CREATE TABLE t (a int)");
    answer("BEGIN TRAN ALTER TABLE t ADD b int NULL CONSTRAINT df_b DEFAULT 7");
    Session other(engine, database.login());
    std::string inserted;
    std::thread waiting([&] { inserted = answer(other, "INSERT t (a) VALUES (1)"); });
    const std::string one = "cols n int\nrow 1\ncount 1\n";
    while (answer("SELECT COUNT(*) AS n FROM master..sysprocesses WHERE blocked <> 0") != one)
        std::this_thread::yield();
    answer("COMMIT");
    waiting.join();
    EXPECT_EQ(inserted, "count 1\n");
    EXPECT_EQ(answer("SELECT a, b FROM t"), "cols a int, b int\nrow 1|7\ncount 1\n");
}

TEST_F(SessionTest, ALockHintKeepsOthersFromWriting) {
    answer("CREATE TABLE t (a int) INSERT t VALUES (1)");
    answer("BEGIN TRAN SELECT a FROM t WITH (UPDLOCK, HOLDLOCK)");
    Session other(engine, database.login());
    EXPECT_EQ(answer(other, "SET LOCK_TIMEOUT 0 UPDATE t SET a = 2").substr(0, 10), "error 1222");
    EXPECT_EQ(answer(other, "SELECT a FROM t"), "cols a int\nrow 1\ncount 1\n");
    answer("COMMIT");
    EXPECT_EQ(answer(other, "UPDATE t SET a = 2"), "count 1\n");
}

TEST_F(SessionTest, ATransactionWithoutNewsHasItsOwnNumberEachTime) {
    ReplyLines reply;
    session.batch("BEGIN TRAN COMMIT BEGIN TRAN ROLLBACK", reply);
    EXPECT_EQ(reply.transactions, (std::vector<std::string>{"began", "committed", "began", "rolled back"}));
}

}  // namespace
}  // namespace sandbox::test
