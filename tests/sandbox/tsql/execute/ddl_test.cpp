// CREATE, ALTER and DROP: what they make, what stands in their way, and that they roll back.
#include <gtest/gtest.h>

#include "tests/sandbox/support/session_runner.h"

namespace sandbox {
namespace {

class Ddl : public testing::Test, protected test::SessionRunner {};

struct Refusal {
    const char* batch;
    const char* answer;
};

// Each on a database with: p (id int primary key, name), c (id int, p -> p.id, constraint fk), v over p, procedure pr.
constexpr Refusal kRefusals[] = {
    {"CREATE TABLE p (a int)", "error 2714 16 6 - 1 There is already an object named 'p' in the database.\n"},
    {"CREATE TABLE t (a int CONSTRAINT fk CHECK (a > 0))",
     "error 2714 16 5 - 1 There is already an object named 'fk' in the database.\n"
     "error 1750 16 0 - 1 Could not create constraint or index. See previous errors.\n"},
    {"CREATE TABLE t (a int, A int)",
     "error 2705 16 3 - 1 Column names in each table must be unique. Column name 'A' in table 't' is specified more than "
     "once.\n"},
    {"CREATE TABLE t (a foo)", "error 2715 16 6 - 1 Column, parameter, or variable #1: Cannot find data type foo.\n"},
    {"CREATE TABLE t (a int NULL PRIMARY KEY)",
     "error 8111 16 1 - 1 Cannot define PRIMARY KEY constraint on nullable column in table 't'.\n"
     "error 1750 16 0 - 1 Could not create constraint or index. See previous errors.\n"},
    {"CREATE TABLE t (a int PRIMARY KEY, b int PRIMARY KEY)",
     "error 8110 16 0 - 1 Cannot add multiple PRIMARY KEY constraints to table 't'.\n"},
    {"ALTER TABLE p ADD PRIMARY KEY (id)",
     "error 1779 16 0 - 1 Table 'p' already has a primary key defined on it.\n"
     "error 1750 16 0 - 1 Could not create constraint or index. See previous errors.\n"},
    {"CREATE TABLE t (a varchar(5) IDENTITY)",
     "error 2749 16 2 - 1 Identity column 'a' must be of data type int, bigint, smallint, tinyint, or decimal or numeric "
     "with a scale of 0, unencrypted, and constrained to be nonnullable.\n"},
    {"CREATE TABLE t (a int IDENTITY, b int IDENTITY)",
     "error 2744 16 2 - 1 Multiple identity columns specified for table 't'. Only one identity column per table is "
     "allowed.\n"},
    {"CREATE TABLE t (a int CONSTRAINT x REFERENCES nowhere (a))",
     "error 1767 16 0 - 1 Foreign key 'x' references invalid table 'nowhere'.\n"
     "error 1750 16 0 - 1 Could not create constraint or index. See previous errors.\n"},
    {"CREATE TABLE t (a int CONSTRAINT x REFERENCES p (nothing))",
     "error 1770 16 0 - 1 Foreign key 'x' references invalid column 'nothing' in referenced table 'p'.\n"
     "error 1750 16 0 - 1 Could not create constraint or index. See previous errors.\n"},
    {"CREATE TABLE t (a varchar(10) CONSTRAINT x REFERENCES p (name))",
     "error 1776 16 0 - 1 There are no primary or candidate keys in the referenced table 'p' that match the referencing "
     "column list in the foreign key 'x'.\n"
     "error 1750 16 0 - 1 Could not create constraint or index. See previous errors.\n"},
    {"CREATE TABLE t (a bigint CONSTRAINT x REFERENCES p (id))",
     "error 1778 16 0 - 1 Column 'p.id' is not the same data type as referencing column 't.a' in foreign key 'x'.\n"
     "error 1750 16 0 - 1 Could not create constraint or index. See previous errors.\n"},
    {"CREATE TABLE t (a int CONSTRAINT x REFERENCES c)",
     "error 1773 16 0 - 1 Foreign key 'x' has implicit reference to object 'c' which does not have a primary key defined "
     "on it.\n"
     "error 1750 16 0 - 1 Could not create constraint or index. See previous errors.\n"},
    {"CREATE TABLE other.t (a int)",
     "error 2760 16 1 - 1 The specified schema name \"other\" either does not exist or you do not have permission to use "
     "it.\n"},
    {"ALTER TABLE nowhere ADD a int",
     "error 4902 16 1 - 1 Cannot find the object \"nowhere\" because it does not exist or you do not have permissions.\n"},
    {"ALTER TABLE p ADD Name int",
     "error 2705 16 4 - 1 Column names in each table must be unique. Column name 'Name' in table 'p' is specified more "
     "than once.\n"},
    {"ALTER TABLE p ALTER COLUMN nothing int",
     "error 4924 16 1 - 1 ALTER TABLE ALTER COLUMN failed because column 'nothing' does not exist in table 'p'.\n"},
    {"ALTER TABLE p ALTER COLUMN id bigint NOT NULL",
     "error 5074 16 1 - 1 The object 'pk_p' is dependent on column 'id'.\n"
     "error 5074 16 1 - 1 The object 'fk' is dependent on column 'id'.\n"
     "error 4922 16 9 - 1 ALTER TABLE ALTER COLUMN id failed because one or more objects access this column.\n"},
    {"ALTER TABLE p DROP COLUMN nothing",
     "error 4924 16 1 - 1 ALTER TABLE DROP COLUMN failed because column 'nothing' does not exist in table 'p'.\n"},
    {"ALTER TABLE p DROP CONSTRAINT nothing",
     "error 3728 16 1 - 1 'nothing' is not a constraint.\n"
     "error 3727 16 0 - 1 Could not drop constraint. See previous errors.\n"},
    {"ALTER TABLE p DROP CONSTRAINT pk_p",
     "error 3725 16 1 - 1 The constraint 'pk_p' is being referenced by table 'c', foreign key constraint 'fk'.\n"
     "error 3727 16 0 - 1 Could not drop constraint. See previous errors.\n"},
    {"ALTER TABLE p ADD CONSTRAINT df DEFAULT 'a' FOR name ALTER TABLE p ADD DEFAULT 'b' FOR name",
     "error 1781 16 1 - 1 Column already has a DEFAULT bound to it.\n"
     "error 1750 16 0 - 1 Could not create constraint or index. See previous errors.\n"},
    {"CREATE INDEX ix ON nowhere (a)",
     "error 1088 16 12 - 1 Cannot find the object \"nowhere\" because it does not exist or you do not have "
     "permissions.\n"},
    {"CREATE INDEX ix ON p (nothing)",
     "error 1911 16 1 - 1 Column name 'nothing' does not exist in the target table or view.\n"},
    {"CREATE INDEX ix ON p (name) CREATE INDEX IX ON p (id)",
     "error 1913 16 1 - 1 The operation failed because an index or statistics with name 'IX' already exists on table "
     "'p'.\n"},
    {"CREATE CLUSTERED INDEX ix ON p (name)",
     "error 1902 16 3 - 1 Cannot create more than one clustered index on table 'p'. Drop the existing clustered index "
     "'pk_p' before creating another.\n"},
    {"DROP INDEX p.nothing",
     "error 3701 11 7 - 1 Cannot drop the index 'p.nothing', because it does not exist or you do not have permission.\n"},
    {"DROP INDEX pk_p ON p",
     "error 3723 16 4 - 1 An explicit DROP INDEX is not allowed on index 'p.pk_p'. It is being used for PRIMARY KEY "
     "constraint enforcement.\n"},
    {"DROP TABLE v", "error 3705 16 1 - 1 Cannot use DROP TABLE with 'v' because 'v' is a view. Use DROP VIEW.\n"},
    {"DROP PROCEDURE nothing",
     "error 3701 11 5 - 1 Cannot drop the procedure 'nothing', because it does not exist or you do not have "
     "permission.\n"},
    {"DROP VIEW IF EXISTS nothing", ""},
    {"TRUNCATE TABLE nowhere",
     "error 4701 16 1 - 1 Cannot find the object \"nowhere\" because it does not exist or you do not have permissions.\n"},
    {"BEGIN TRAN CREATE DATABASE x",
     "error 226 16 6 - 1 CREATE DATABASE statement not allowed within multi-statement transaction.\n"},
    {"CREATE DATABASE d", "error 1801 16 3 - 1 Database 'd' already exists. Choose a different database name.\n"},
    {"DROP DATABASE nosuch",
     "error 3701 11 1 - 1 Cannot drop the database 'nosuch', because it does not exist or you do not have permission.\n"},
    {"DROP DATABASE d", "error 3702 16 3 - 1 Cannot drop database \"d\" because it is currently in use.\n"},
    {"DROP DATABASE master",
     "error 3708 16 4 - 1 Cannot drop the database 'master' because it is a system database.\n"},
    {"EXEC sp_rename 'nothing', 'x'",
     "error 15225 11 1 sp_rename 1 No item by the name of 'nothing' could be found in the current database 'd', given "
     "that @itemtype was input as '(null)'.\n"},
};

TEST_F(Ddl, RefusesWithSqlServersTexts) {
    run("CREATE TABLE p (id int NOT NULL CONSTRAINT pk_p PRIMARY KEY, name varchar(10) NULL)");
    run("CREATE TABLE c (id int, p int CONSTRAINT fk REFERENCES p (id))");
    run("CREATE VIEW v AS SELECT id FROM p");
    run("CREATE PROCEDURE pr AS RETURN");
    for (const Refusal& refusal : kRefusals) {
        const std::string answer = run(refusal.batch);
        run("IF @@TRANCOUNT > 0 ROLLBACK");
        EXPECT_EQ(answer, refusal.answer) << refusal.batch;
    }
}

TEST_F(Ddl, RollsBack) {
    run("CREATE TABLE t (a int) INSERT t VALUES (1)");
    run("BEGIN TRAN ALTER TABLE t ADD b int NOT NULL DEFAULT 5 CREATE TABLE u (a int) CREATE INDEX ix ON t (a) ROLLBACK");
    EXPECT_EQ(run("SELECT * FROM t"), "cols a int\nrow 1\ncount 1\n");
    EXPECT_EQ(run("SELECT OBJECT_ID('u') AS u, COUNT(*) AS n FROM sys.indexes WHERE name = 'ix'"),
              "cols u int, n int\nrow NULL|0\ncount 1\n");
    run("BEGIN TRAN DROP TABLE t ROLLBACK");
    EXPECT_EQ(run("SELECT a FROM t"), "cols a int\nrow 1\ncount 1\n");
}

TEST_F(Ddl, RolledBackTruncateKeepsTheIdentity) {
    run("CREATE TABLE t (id int IDENTITY, a int) INSERT t (a) VALUES (1), (2)");
    run("BEGIN TRAN TRUNCATE TABLE t ROLLBACK INSERT t (a) VALUES (3)");
    EXPECT_EQ(run("SELECT id FROM t ORDER BY id"), "cols id int\nrow 1\nrow 2\nrow 3\ncount 3\n");
}

TEST_F(Ddl, MadeUpNamesLookLikeSqlServers) {
    run("CREATE TABLE customers (id int PRIMARY KEY, country varchar(5) DEFAULT 'NO' CHECK (country <> ''))");
    EXPECT_EQ(run("SELECT COUNT(*) AS n FROM sysobjects WHERE name LIKE 'PK__customer__[0-9A-F][0-9A-F]%' "
                  "OR name LIKE 'DF__customers__count__[0-9A-F]%' OR name LIKE 'CK__customers__count__[0-9A-F]%'"),
              "cols n int\nrow 3\ncount 1\n");
}

TEST_F(Ddl, AnAddedColumnIsFilledFromItsDefaultWhereItMustBe) {
    run("CREATE TABLE t (a int) INSERT t VALUES (1)");
    run("ALTER TABLE t ADD b int NULL DEFAULT 1, c int NOT NULL DEFAULT 2, d int NULL DEFAULT 3 WITH VALUES, "
        "id int IDENTITY(7, 1)");
    EXPECT_EQ(run("SELECT b, c, d, id FROM t"), "cols b int, c int, d int, id int\nrow NULL|2|3|7\ncount 1\n");
    EXPECT_EQ(run("INSERT t (a) VALUES (2) SELECT id, b FROM t WHERE a = 2"),
              "count 1\ncols id int, b int\nrow 8|1\ncount 1\n");
}

TEST_F(Ddl, AlteredColumnsConvertTheirRows) {
    run("CREATE TABLE t (a varchar(10) NULL, k int NOT NULL PRIMARY KEY) INSERT t VALUES ('12', 1), (NULL, 2)");
    EXPECT_EQ(run("ALTER TABLE t ALTER COLUMN a int NULL"), "");
    EXPECT_EQ(run("SELECT a + 1 AS a FROM t ORDER BY k"), "cols a int\nrow 13\nrow NULL\ncount 2\n");
    EXPECT_EQ(run("ALTER TABLE t ALTER COLUMN a int NOT NULL"),
              "error 515 16 2 - 1 Cannot insert the value NULL into column 'a', table 'd.dbo.t'; column does not allow "
              "nulls. UPDATE fails.\n");
    EXPECT_EQ(run("ALTER TABLE t ALTER COLUMN a char(4) NULL\nSELECT a FROM t ORDER BY k"),
              "cols a char(4)\nrow '12  '\nrow NULL\ncount 2\n");
    EXPECT_EQ(run("INSERT t VALUES ('x', 1)").substr(0, 10), "error 2627") << "the key went over";
}

TEST_F(Ddl, ConstraintsAddedLaterLookAtTheRows) {
    run("CREATE TABLE p (id int NOT NULL PRIMARY KEY) CREATE TABLE c (p int) INSERT c VALUES (5)");
    EXPECT_EQ(run("ALTER TABLE c ADD CONSTRAINT fk FOREIGN KEY (p) REFERENCES p (id)"),
              "error 547 16 0 - 1 The ALTER TABLE statement conflicted with the FOREIGN KEY constraint \"fk\". The "
              "conflict occurred in database \"d\", table \"dbo.p\", column 'id'.\n");
    EXPECT_EQ(run("ALTER TABLE c ADD CONSTRAINT ck CHECK (p < 5)").substr(0, 9), "error 547");
    EXPECT_EQ(run("ALTER TABLE c WITH NOCHECK ADD CONSTRAINT fk FOREIGN KEY (p) REFERENCES p (id)"), "");
    EXPECT_EQ(run("INSERT c VALUES (6)").substr(0, 9), "error 547");
    EXPECT_EQ(run("CREATE TABLE n (a int NULL) INSERT n VALUES (NULL), (NULL) CREATE UNIQUE INDEX ix ON n (a)"),
              "count 2\nerror 1505 16 1 - 1 The CREATE UNIQUE INDEX statement terminated because a duplicate key was "
              "found for the object name 'dbo.n' and the index name 'ix'. The duplicate key value is (<NULL>).\n");
}

TEST_F(Ddl, ColumnsTakeTheirDatabasesCollation) {
    run("CREATE DATABASE cs COLLATE Latin1_General_CS_AS");
    run("CREATE TABLE cs..t (a varchar(5), b varchar(5) COLLATE Danish_Norwegian_CI_AS) INSERT cs..t VALUES ('x', 'x')");
    EXPECT_EQ(run("SELECT COUNT(*) AS n FROM cs..t WHERE a = 'X'"), "cols n int\nrow 0\ncount 1\n");
    EXPECT_EQ(run("SELECT COUNT(*) AS n FROM cs..t WHERE b = 'X'"), "cols n int\nrow 1\ncount 1\n");
    EXPECT_EQ(run("SELECT name, collation_name FROM cs.sys.columns"),
              "cols name nvarchar(128), collation_name nvarchar(128)\nrow 'a'|'Latin1_General_CS_AS'\n"
              "row 'b'|'Danish_Norwegian_CI_AS'\ncount 2\n");
}

TEST_F(Ddl, RenamesTablesColumnsAndIndexes) {
    run("CREATE TABLE t (a int NOT NULL CONSTRAINT pk PRIMARY KEY, b int) CREATE INDEX ix ON t (b) INSERT t VALUES (1, 2)");
    run("CREATE TABLE c (a int CONSTRAINT fk REFERENCES t (a))");
    const std::string caution =
        "Caution: Changing any part of an object name could break scripts and stored procedures.\n";
    EXPECT_NE(run("EXEC sp_rename 't', 'u'").find(caution), std::string::npos);
    run("EXEC sp_rename 'u.a', 'key', 'COLUMN'");
    run("EXEC sp_rename 'dbo.u.ix', 'iy', 'INDEX'");
    EXPECT_EQ(run("SELECT [key], b FROM u"), "cols key int, b int\nrow 1|2\ncount 1\n");
    EXPECT_EQ(run("INSERT c VALUES (1)"), "count 1\n");
    EXPECT_EQ(run("INSERT c VALUES (2)"),
              "error 547 16 0 - 1 The INSERT statement conflicted with the FOREIGN KEY constraint \"fk\". The conflict "
              "occurred in database \"d\", table \"dbo.u\", column 'key'.\n");
    EXPECT_EQ(run("DROP INDEX iy ON u SELECT OBJECT_ID('t') AS t"), "cols t int\nrow NULL\ncount 1\n");
}

TEST_F(Ddl, StoredTextsSayCreate) {
    run("CREATE PROCEDURE p AS SELECT 1");
    const std::string id = run("SELECT OBJECT_ID('p') AS id");
    run("ALTER PROCEDURE p @a int = 1 AS SELECT 2");
    EXPECT_EQ(run("SELECT OBJECT_ID('p') AS id"), id);
    EXPECT_EQ(run("SELECT definition AS d FROM sys.sql_modules WHERE object_id = OBJECT_ID('p')"),
              "cols d nvarchar(max)\nrow 'CREATE PROCEDURE p @a int = 1 AS SELECT 2'\ncount 1\n");
    EXPECT_EQ(run("SELECT name FROM sys.parameters"), "cols name nvarchar(128)\nrow '@a'\ncount 1\n");
}

}  // namespace
}  // namespace sandbox
