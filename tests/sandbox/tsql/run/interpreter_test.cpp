// What a reply holds beside its lines: which statements end with a token, and which of them inside a procedure; and the
// system procedures.
#include <gtest/gtest.h>

#include "tests/sandbox/support/case_file.h"

namespace sandbox::test {
namespace {

class InterpreterTest : public testing::Test {
protected:
    Engine engine{{}};
    TestDatabase database{engine, "shop"};
    Session session{engine, database.login()};

    ReplyLines run(std::string_view sql) {
        ReplyLines reply;
        session.batch(sql, reply);
        return reply;
    }
};

TEST_F(InterpreterTest, OnlyStatementsWithAnEffectEndWithAToken) {
    EXPECT_EQ(run("DECLARE @a int SET @a = 1 IF @a = 1 PRINT 'x'").statements, 0);
    EXPECT_EQ(run("SET NOCOUNT OFF CREATE TABLE t (a int) INSERT t VALUES (1) SELECT a FROM t").statements, 4);
}

TEST_F(InterpreterTest, StatementsOfProceduresAndTextsEndInsideThem) {
    run("CREATE PROCEDURE p AS SELECT 1 AS a");
    const ReplyLines called = run("EXEC p EXEC('SELECT 2 AS b') SELECT 3 AS c");
    EXPECT_EQ(called.statements, 3);
    EXPECT_EQ(called.inProcedure, 2);
    EXPECT_EQ(called.procedures, 1);
}

TEST_F(InterpreterTest, AFailedRowChangeSaysThatItWasTerminated) {
    run("CREATE TABLE t (a int NOT NULL)");
    const auto lines = run("INSERT t VALUES (NULL)").lines;
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[1], "info 3621 0 0 - 1 The statement has been terminated.");
    EXPECT_EQ(run("SELECT 1 / 0 AS x").lines.size(), 2u);
}

TEST_F(InterpreterTest, NothingIsBoundAnewWhileNothingHasChanged) {
    run("CREATE TABLE t (a int)");
    for (int i = 0; i < 3; ++i) EXPECT_EQ(run("INSERT t VALUES (1)").text(), "count 1\n");
    Session other(engine, database.login());
    ReplyLines reply;
    other.batch("ALTER TABLE t ADD b int NOT NULL DEFAULT 0", reply);
    EXPECT_EQ(run("INSERT t VALUES (1)").text(),
              "error 213 16 1 - 1 Column name or number of supplied values does not match table definition.\n");
}

TEST_F(InterpreterTest, CatalogueProceduresAnswerAsDocumented) {
    run("CREATE TABLE t (id int NOT NULL CONSTRAINT pk_t PRIMARY KEY, name nvarchar(20) NULL)");
    const auto tables = run("EXEC sp_tables 't'").lines;
    ASSERT_GE(tables.size(), 2u);
    EXPECT_EQ(tables[1], "row 'shop'|'dbo'|'t'|'TABLE'|NULL");
    const auto columns = run("EXEC sp_columns 't'").lines;
    ASSERT_EQ(columns.size(), 5u);
    EXPECT_EQ(columns[1].substr(0, 42), "row 'shop'|'dbo'|'t'|'id'|4|'int'|10|4|0|1");
    EXPECT_EQ(columns[2].substr(0, 47), "row 'shop'|'dbo'|'t'|'name'|-9|'nvarchar'|20|40");
    EXPECT_EQ(run("EXEC sp_pkeys 't'").lines[1], "row 'shop'|'dbo'|'t'|'id'|1|'pk_t'");
    EXPECT_GT(run("EXEC sp_datatype_info").lines.size(), 20u);
    EXPECT_EQ(run("EXEC shop..sp_databases").lines[1], "row 'master'|NULL|NULL");
}

TEST_F(InterpreterTest, WhatIsNotSupportedIsRefusedByName) {
    for (const std::string name : {"sp_addmessage", "xp_cmdshell", "sp_dboption"}) {
        EXPECT_EQ(run("EXEC " + name).lines[0], "error 40510 16 1 " + name + " 0 Statement '" + name +
                                                    "' is not supported in this version of SQL Server.");
    }
    EXPECT_EQ(run("DBCC CHECKDB").lines[0],
              "error 40510 16 1 - 1 Statement 'DBCC CHECKDB' is not supported in this version of SQL Server.");
}

TEST_F(InterpreterTest, RenamingAnObject) {
    run("CREATE TABLE t (a int)");
    run("EXEC sp_rename 't', 'u'");
    run("EXEC sp_rename 'u.a', 'b', 'COLUMN'");
    EXPECT_EQ(run("SELECT b FROM u").text(), "cols b int\ncount 0\n");
}

}  // namespace
}  // namespace sandbox::test
