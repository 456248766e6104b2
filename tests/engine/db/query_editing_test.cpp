// Rows of one table edited through a keyset query: UPDATE, INSERT and DELETE by key.
#include <gtest/gtest.h>

#include "engine/db/edit_target.h"
#include "engine/db/errors.h"
#include "engine/db/query.h"
#include "tests/support/qt_print.h"
#include "tests/support/sandbox_wire.h"

namespace torvik::db {
namespace {

TEST(TableOfSelect, OneTableInAllSpellings) {
    const std::pair<const char*, const char*> cases[] = {
        {"select * from ledigid", "ledigid"},
        {"SELECT a, b FROM dbo.[Min tabell] WHERE a = 1", "dbo.[Min tabell]"},
        {"select top 1 * from KundeGruppe kg with (nolock) order by a", "KundeGruppe"},
        {"select 'x from y' as a -- from z\nfrom T", "T"},
        {"select a from base..T where b in (1, 2)", "base..T"},
        {"select a from T x with (nolock, rowlock) order by a, b", "T"},
        {"select a from T as [x, y] where a = 'b, c' order by a, b", "T"},
        {"select a from [T, U] /* , /* V */ , W */ order by a, b", "[T, U]"},
        {"select a from T for xml auto, elements", "T"},
    };
    for (const auto& [text, table] : cases) EXPECT_EQ(tableOfSelect(QLatin1String(text)), QLatin1String(table)) << text;
}

TEST(TableOfSelect, SeveralTablesAreRefused) {
    for (const char* text :
         {"select * from a, b", "select * from a x, b", "select * from a as x, b", "select * from a as [x y], b",
          "select * from a with (nolock, rowlock), b", "select * from a (nolock) , b",
          "select * from a x with (nolock), b", "select * from [a, c] , b where d = 1", "select * from a /* , */ , b",
          "select * from a join b on 1 = 1", "select * from a cross apply f(a.x)", "select * from (select 1 as x) a",
          "select * from a union select * from b", "exec p", "select 1", "select a from T group by a"})
        EXPECT_THROW(static_cast<void>(tableOfSelect(QLatin1String(text))), UsageError) << text;
}

class QueryEditing : public test::OverTheWire {
protected:
    void open(const char* create, const char* select) {
        server.run(QString::fromUtf8(create));
        query.CursorType = ReadMode::KeySet;
        query.SQL = {QString::fromUtf8(select)};
        query.Open();
    }

    Query query{&server.session()};
};

TORVIK_OVER_THE_WIRE(QueryEditing);

TEST_P(QueryEditing, EditUpdatesByKey) {
    open(
        "CREATE TABLE ledigid (LI_ATTRIBUTT char(20) NOT NULL PRIMARY KEY, LI_NESTELEDIGEID int NULL) "
        "INSERT ledigid VALUES ('OR_ID', 5) INSERT ledigid VALUES ('BT_ID', 7)",
        "select * from ledigid");
    ASSERT_TRUE(query.Locate(QStringLiteral("LI_ATTRIBUTT"), "or_id", LocateOption::CaseInsensitive));
    query.Edit();
    query.FieldByName(QStringLiteral("LI_NESTELEDIGEID")) = 50;
    query.Post();
    EXPECT_EQ(query.FieldByName(QStringLiteral("LI_NESTELEDIGEID")).AsInteger(), 50);
    EXPECT_EQ(
        server.rows(QStringLiteral("SELECT RTRIM(LI_ATTRIBUTT) AS a, LI_NESTELEDIGEID AS n FROM ledigid ORDER BY 1")),
        "a | n\nBT_ID | 7\nOR_ID | 50\n");
}

TEST_P(QueryEditing, AppendInsertsAndLocateFindsTheRow) {
    open("CREATE TABLE KundeGruppe (KG_ID int NOT NULL PRIMARY KEY, KG_NAVN varchar(30) NULL)",
         "SELECT * FROM KundeGruppe");
    EXPECT_FALSE(query.Locate(QStringLiteral("KG_ID"), 3));
    query.Append();
    query.FieldByName(QStringLiteral("KG_ID")) = 3;
    query.FieldByName(QStringLiteral("KG_NAVN")) = "Bedrift";
    query.Post();
    EXPECT_TRUE(query.Locate(QStringLiteral("KG_ID"), 3));
    EXPECT_EQ(server.rows(QStringLiteral("SELECT * FROM KundeGruppe")), "KG_ID | KG_NAVN\n3 | Bedrift\n");
}

TEST_P(QueryEditing, AppendLearnsItsIdentity) {
    open("CREATE TABLE T (id int IDENTITY(10, 1) PRIMARY KEY, a varchar(5), b int DEFAULT 7)", "SELECT * FROM T");
    query.Append();
    query.FieldByName(QStringLiteral("a")) = "x";
    query.Post();
    EXPECT_EQ(query.FieldByName(QStringLiteral("id")).AsInteger(), 10);
    EXPECT_EQ(server.rows(QStringLiteral("SELECT * FROM T")), "id | a | b\n10 | x | 7\n");
    query.Edit();
    query.FieldByName(QStringLiteral("a")) = "y";
    query.Post();
    EXPECT_EQ(server.rows(QStringLiteral("SELECT a FROM T")), "a\ny\n");
}

TEST_P(QueryEditing, ATableWithoutAKeyIsFoundByItsValues) {
    open(
        "CREATE TABLE Innstillinger (a int NULL, b varchar(10) NULL, c float NULL, d datetime NULL, e text NULL) "
        "INSERT Innstillinger VALUES (NULL, 'x', 0.1, '20240101 10:11:12.003', 'lang')",
        "SELECT * FROM Innstillinger");
    query.Edit();
    query.FieldByName(QStringLiteral("a")) = 1;
    query.Post();
    EXPECT_EQ(server.rows(QStringLiteral("SELECT a, b FROM Innstillinger")), "a | b\n1 | x\n");
}

TEST_P(QueryEditing, RowsThatAreTheSameAreNotEditedTogether) {
    open("CREATE TABLE T (a int) INSERT T VALUES (1) INSERT T VALUES (1)", "SELECT * FROM T");
    query.Edit();
    query.Fields(0) = 2;
    EXPECT_THROW(query.Post(), StatementError);
    EXPECT_EQ(server.rows(QStringLiteral("SELECT a FROM T")), "a\n1\n1\n");
    EXPECT_FALSE(server.session().InTransaction());
}

TEST_P(QueryEditing, ARowThatIsGoneIsToldSo) {
    open("CREATE TABLE T (a int PRIMARY KEY, b int) INSERT T VALUES (1, 1)", "SELECT * FROM T");
    server.run(QStringLiteral("DELETE FROM T"));
    query.Edit();
    query.Fields(1) = 2;
    EXPECT_THROW(query.Post(), StatementError);
}

TEST_P(QueryEditing, EditingWorksUnderNoCountAndInTheCallersTransaction) {
    open("CREATE TABLE T (a int PRIMARY KEY, b int) INSERT T VALUES (1, 1) SET NOCOUNT ON", "SELECT * FROM T");
    server.session().StartTransaction();
    query.Edit();
    query.Fields(1) = 2;
    query.Post();
    EXPECT_TRUE(server.session().InTransaction());
    server.session().Rollback();
    EXPECT_EQ(server.rows(QStringLiteral("SELECT b FROM T")), "b\n1\n");
}

TEST_P(QueryEditing, DeleteRemovesTheRow) {
    open("CREATE TABLE T (a int PRIMARY KEY) INSERT T VALUES (1) INSERT T VALUES (2)", "SELECT * FROM T ORDER BY a");
    query.Delete();
    EXPECT_EQ(query.Fields(0).AsInteger(), 2);
    EXPECT_EQ(server.rows(QStringLiteral("SELECT a FROM T")), "a\n2\n");
}

TEST_P(QueryEditing, AFailedPostKeepsTheRowInEditAndTheRowsAsTheyWere) {
    open("CREATE TABLE T (a int PRIMARY KEY, b varchar(3) NOT NULL) INSERT T VALUES (1, 'x')", "SELECT * FROM T");
    query.Edit();
    query.Fields(1).Clear();
    EXPECT_THROW(query.Post(), StatementError);
    EXPECT_EQ(query.State(), DataSet::Mode::Edit);
    query.Cancel();
    EXPECT_EQ(query.Fields(1).AsString(), QStringLiteral("x"));
}

TEST_P(QueryEditing, AStaticQueryIsReadOnly) {
    open("CREATE TABLE T (a int PRIMARY KEY) INSERT T VALUES (1)", "SELECT * FROM T");
    query.Close();
    query.CursorType = ReadMode::Static;
    query.Open();
    EXPECT_THROW(query.Edit(), UsageError);
    EXPECT_THROW(query.Append(), UsageError);
    EXPECT_THROW(query.Delete(), UsageError);
}

}  // namespace
}  // namespace torvik::db
