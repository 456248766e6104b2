// The catalogue views, and the functions about the catalogue, over a database with one table and one procedure.
#include "sandbox/store/views/system_views.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <set>

#include "sandbox/store/databases/connection.h"
#include "sandbox/store/databases/table_storage.h"
#include "sandbox/store/views/system_view_rows.h"
#include "tests/sandbox/support/order_table.h"

namespace sandbox {
namespace {

using test::orders;

class SystemViews : public testing::Test {
protected:
    SystemViews() {
        connectCatalogue(connection);
        const auto database = databases.create("butikk");
        connection.use(database);
        Write write(connection, *database);
        connection.run(createStorageSql(database->attachedAs(), orders()));
        connection.put(*database, orders());
        ObjectDef procedure;
        procedure.id = 200;
        procedure.name = "p";
        procedure.kind = ObjectKind::Procedure;
        procedure.text = "CREATE PROCEDURE p AS RETURN";
        connection.put(*database, procedure);
        write.done();
    }

    // The rows of "SELECT columns FROM view" and more behind it, cells joined by "|".
    std::vector<std::string> rows(const std::string& schema, const std::string& view, const std::string& columns,
                                  const std::string& more = "", const std::string& database = "") {
        const auto found = connection.find(database, schema, view);
        EXPECT_TRUE(found) << view;
        Statement statement = connection.prepare(
            "SELECT " + columns + " FROM " + storageTable(found->database->attachedAs(), *found->object) + " " + more);
        std::vector<std::string> list;
        while (statement.step()) {
            std::string row;
            for (int i = 0; i < sqlite3_column_count(statement.get()); ++i) {
                const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), i));
                row += (i == 0 ? "" : "|") + std::string(text == nullptr ? "NULL" : text);
            }
            list.push_back(row);
        }
        return list;
    }

    Databases databases{std::nullopt, "Danish_Norwegian_CI_AS"};
    Connection connection{databases, 51};
};

using Rows = std::vector<std::string>;

TEST_F(SystemViews, ObjectsAndTheirConstraints) {
    EXPECT_EQ(rows("", "sysobjects", "name, xtype, id, parent_obj", "WHERE xtype <> 'S' ORDER BY id"),
              (Rows{"Ordre|U |100|0", "DF_kunde|D |101|100", "PK_ordre|PK|102|100", "FK_selv|F |103|100",
                    "CK|C |104|100", "p|P |200|0"}));
    EXPECT_EQ(rows("sys", "objects", "name, type_desc", "WHERE object_id = 200"), (Rows{"p|SQL_STORED_PROCEDURE"}));
    EXPECT_EQ(rows("sys", "sql_modules", "definition"), (Rows{"CREATE PROCEDURE p AS RETURN"}));
}

TEST_F(SystemViews, SystemTablesKnowThemselves) {
    EXPECT_EQ(rows("", "sysobjects", "name, xtype", "WHERE name = 'sysobjects'"), (Rows{"sysobjects|S "}));
}

TEST_F(SystemViews, NamesAreComparedAsTheCollationDoes) {
    EXPECT_EQ(rows("dbo", "sysobjects", "name", "WHERE name = 'ORDRE'"), (Rows{"Ordre"}));
}

TEST_F(SystemViews, ColumnsWithTheirTypes) {
    EXPECT_EQ(rows("", "syscolumns", "name, xtype, length, prec, scale, isnullable, colid", "WHERE id = 100"),
              (Rows{"id|56|4|10|0|0|1", "Kunde|231|60|30|NULL|1|2", "beløp|108|5|9|3|1|4"}));
    EXPECT_EQ(rows("sys", "columns", "name, is_identity, default_object_id, collation_name"),
              (Rows{"id|1|0|NULL", "Kunde|0|101|Latin1_General_CI_AS", "beløp|0|0|NULL"}));
    EXPECT_EQ(rows("INFORMATION_SCHEMA", "COLUMNS",
                   "COLUMN_NAME, DATA_TYPE, CHARACTER_MAXIMUM_LENGTH, NUMERIC_PRECISION, ORDINAL_POSITION"),
              (Rows{"id|int|NULL|10|1", "Kunde|nvarchar|30|NULL|2", "beløp|numeric|NULL|9|3"}));
}

TEST_F(SystemViews, IndexesAndKeys) {
    EXPECT_EQ(rows("sys", "indexes", "name, index_id, type_desc, is_primary_key", "WHERE object_id = 100"),
              (Rows{"PK_ordre|1|CLUSTERED|1", "ix|2|NONCLUSTERED|0"}));
    EXPECT_EQ(rows("sys", "index_columns", "index_id, column_id, key_ordinal, is_included_column, is_descending_key"),
              (Rows{"1|1|1|0|1", "2|2|1|0|0", "2|4|2|0|0", "2|1|0|1|0"}));
    EXPECT_EQ(rows("", "sysindexes", "name, indid, rows", "WHERE id = 100 AND indid < 2"), (Rows{"PK_ordre|1|0"}));
    EXPECT_EQ(rows("information_schema", "key_column_usage", "CONSTRAINT_NAME, COLUMN_NAME", "ORDER BY 1"),
              (Rows{"FK_selv|id", "PK_ordre|id"}));
}

TEST_F(SystemViews, ShowOneDatabaseEach) {
    EXPECT_EQ(rows("", "sysobjects", "count(*)", "WHERE name = 'ordre'", "model"), (Rows{"0"}));
    EXPECT_EQ(rows("sys", "tables", "count(*)", "WHERE name = 'sysjobs'", "msdb"), (Rows{"1"}));
}

TEST_F(SystemViews, ServersDatabasesAndSessions) {
    EXPECT_EQ(rows("", "sysdatabases", "name, dbid", "WHERE dbid IN (1, 5)", "master"), (Rows{"master|1", "butikk|5"}));
    EXPECT_EQ(rows("sys", "databases", "database_id, compatibility_level, state", "WHERE name = 'BUTIKK'"),
              (Rows{"5|130|0"}));
    const int spid = databases.processes().add(Process{.databaseId = 5, .openTransactions = 2, .login = "sa"});
    EXPECT_EQ(rows("", "sysprocesses", "spid, dbid, open_tran, status, loginame", "WHERE open_tran > 0", "master"),
              (Rows{std::to_string(spid) + "|5|2|sleeping" + std::string(22, ' ') + "|sa" + std::string(126, ' ')}));
}

TEST_F(SystemViews, TempdbShowsTheSessionsOwnTemporaryTables) {
    ObjectDef temporary = orders();
    temporary.id = connection.temporary()->newObjectId();
    temporary.name = "#kladd";
    {
        Write write(connection, *connection.temporary());
        connection.run(createStorageSql("temp", temporary));
        connection.put(*connection.temporary(), temporary);
        write.done();
    }
    EXPECT_EQ(rows("", "sysobjects", "name", "WHERE xtype = 'U' AND name LIKE '#%'", "tempdb"), (Rows{"#kladd"}));
    EXPECT_EQ(rows("", "sysindexes", "count(*)", "WHERE id < 0", "tempdb"), (Rows{"2"}));
    EXPECT_EQ(connection.functions().objectId("tempdb..#KLADD", "U"), temporary.id);
    Connection other(databases, 52);
    connectCatalogue(other);
    EXPECT_EQ(other.functions().objectId("tempdb..#kladd", ""), std::nullopt);
    connection.dropAllTemporaryTables();
    EXPECT_EQ(rows("", "sysobjects", "count(*)", "WHERE name LIKE '#%'", "tempdb"), (Rows{"0"}));
}

TEST_F(SystemViews, FollowAChangeOfTheCatalogue) {
    EXPECT_EQ(rows("sys", "tables", "count(*)"), (Rows{"1"}));
    {
        Write write(connection, *connection.current());
        ObjectDef more = orders();
        more.id = 300;
        more.name = "second";
        connection.put(*connection.current(), more);
        EXPECT_EQ(rows("sys", "tables", "count(*)"), (Rows{"2"}));
    }
    EXPECT_EQ(rows("sys", "tables", "count(*)"), (Rows{"1"})) << "undone with its statement";
}

TEST_F(SystemViews, EveryViewCanBeReadAndHasDistinctColumns) {
    std::vector<SystemView> all;
    for (auto list : {views::objectViews(), views::columnViews(), views::indexViews(), views::informationSchemaViews(),
                      views::serverViews()}) {
        all.insert(all.end(), list.begin(), list.end());
    }
    std::set<std::string> names;
    for (const SystemView& view : all) {
        EXPECT_TRUE(names.insert(std::string(view.schema) + "." + std::string(view.name)).second) << view.name;
        std::set<std::string_view> columns;
        for (const auto& column : view.columns) EXPECT_TRUE(columns.insert(column.name).second) << column.name;
        EXPECT_NO_THROW((void)rows(std::string(view.schema), std::string(view.name), "*")) << view.name;
        EXPECT_EQ(connection.find("", "", view.name).has_value(), view.bare) << view.name;
    }
}

TEST_F(SystemViews, ObjectFunctionsAnswerFromTheCatalogue) {
    FunctionContext& f = connection.functions();
    EXPECT_EQ(f.objectId("ordre", ""), 100);
    EXPECT_EQ(f.objectId("[dbo].[Ordre]", "U"), 100);
    EXPECT_EQ(f.objectId("butikk..ordre", "U "), 100);
    EXPECT_EQ(f.objectId("ordre", "P"), std::nullopt);
    EXPECT_EQ(f.objectId("PK_ordre", ""), 102);
    EXPECT_EQ(f.objectId("nowhere", ""), std::nullopt);
    EXPECT_EQ(f.objectId("nosuchdb..ordre", ""), std::nullopt);
    EXPECT_EQ(f.objectProperty(100, "TableHasPrimaryKey"), 1);
    EXPECT_EQ(f.objectProperty(100, "IsProcedure"), 0);
    EXPECT_EQ(f.objectProperty(200, "isprocedure"), 1);
    EXPECT_EQ(f.objectProperty(200, "TableHasIdentity"), std::nullopt);
    EXPECT_EQ(f.objectProperty(999, "IsTable"), std::nullopt);
    EXPECT_EQ(f.columnLength("ordre", "kunde"), 60);
    EXPECT_EQ(f.columnName(100, 4), "beløp");
    EXPECT_EQ(f.columnProperty(100, "id", "IsIdentity"), 1);
    EXPECT_EQ(f.objectName(100, std::nullopt), "Ordre");
    EXPECT_EQ(f.databaseIdOf("BUTIKK"), 5);
    EXPECT_EQ(f.databaseNameOf(1), "master");
    EXPECT_EQ(f.databaseIdOf("none"), std::nullopt);
    EXPECT_TRUE(f.identCurrent("ordre") == std::optional(Decimal{1, 0}));
}

}  // namespace
}  // namespace sandbox
