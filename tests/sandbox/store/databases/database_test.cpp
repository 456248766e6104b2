#include "sandbox/store/databases/database.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <future>
#include <thread>

#include "sandbox/store/databases/connection.h"
#include "sandbox/store/databases/table_storage.h"

namespace sandbox {
namespace {

namespace fs = std::filesystem;

const std::string kCollation = "Danish_Norwegian_CI_AS";

class Folder {
public:
    Folder() {
        std::string pattern = (fs::temp_directory_path() / "torvik-test-XXXXXX").string();
        path = mkdtemp(pattern.data());
    }
    ~Folder() { fs::remove_all(path); }
    fs::path path;
};

ObjectDef table(Database& database, const std::string& name) {
    ObjectDef def;
    def.id = database.newObjectId();
    def.name = name;
    def.storageName = "t" + std::to_string(def.id);
    ColumnDef column;
    column.name = "a";
    column.type = Type{.id = TypeId::Int};
    column.columnId = ++def.lastColumnId;
    def.columns.push_back(column);
    return def;
}

void makeTable(Connection& connection, Database& database, const std::string& name) {
    Write write(connection, database);
    const ObjectDef def = table(database, name);
    connection.run(createStorageSql(database.attachedAs(), def));
    connection.put(database, def);
    write.done();
}

void insert(Connection& connection, const std::string& database, const std::string& name, int value) {
    const auto found = connection.find(database, "", name);
    ASSERT_TRUE(found);
    Write write(connection, *found->database);
    connection.run("INSERT INTO " + storageTable(found->database->attachedAs(), *found->object) + " VALUES (" +
                   std::to_string(value) + ")");
    write.done();
}

int count(Connection& connection, const std::string& database, const std::string& name) {
    const auto found = connection.find(database, "", name);
    if (!found) return -1;
    Statement statement =
        connection.prepare("SELECT count(*) FROM " + storageTable(found->database->attachedAs(), *found->object));
    return statement.step() ? sqlite3_column_int(statement.get(), 0) : -1;
}

int errorNumber(const std::function<void()>& action) {
    try {
        action();
    } catch (const SqlError& error) {
        return error.messages.front().number;
    }
    return 0;
}

TEST(Database, AnEmptyServerHasTheSystemDatabases) {
    Databases databases(std::nullopt, kCollation);
    std::vector<std::string> names;
    for (const auto& database : databases.all()) names.push_back(database->name());
    EXPECT_EQ(names, (std::vector<std::string>{"master", "tempdb", "model", "msdb"}));
    EXPECT_NE(databases.find("msdb")->catalog()->find("dbo", "SysJobs"), nullptr);
    EXPECT_EQ(databases.find("MASTER")->id(), 1);
}

TEST(Database, ComesAndGoes) {
    Databases databases(std::nullopt, kCollation);
    const auto shop = databases.create("butikk");
    EXPECT_EQ(shop->id(), 5);
    EXPECT_EQ(databases.find("BUTIKK"), shop);
    EXPECT_EQ(errorNumber([&] { databases.create("Butikk"); }), 1801);
    databases.drop("butikk");
    EXPECT_EQ(databases.find("butikk"), nullptr);
    EXPECT_FALSE(fs::exists(shop->facts().file));
    EXPECT_EQ(errorNumber([&] { databases.drop("butikk"); }), 3701);
    EXPECT_EQ(errorNumber([&] { databases.drop("master"); }), 3708);
}

TEST(Database, InUseIsNotDropped) {
    Databases databases(std::nullopt, kCollation);
    const auto shop = databases.create("butikk");
    const int spid = databases.processes().add(Process{.databaseId = shop->id()});
    EXPECT_EQ(errorNumber([&] { databases.drop("butikk"); }), 3702);
    databases.processes().remove(spid);
    EXPECT_EQ(errorNumber([&] { databases.drop("butikk"); }), 0);
}

TEST(Database, ANewOneOfTheSameNameIsEmptyForAConnectionThatSawTheOld) {
    Databases databases(std::nullopt, kCollation);
    Connection connection(databases, 51);
    makeTable(
        connection,
        *[&] {
            databases.create("butikk");
            return connection.attach("butikk");
        }(),
        "t");
    insert(connection, "butikk", "t", 1);
    databases.drop("butikk");
    databases.create("butikk");
    EXPECT_EQ(count(connection, "butikk", "t"), -1);
    makeTable(connection, *connection.attach("butikk"), "t");
    EXPECT_EQ(count(connection, "butikk", "t"), 0);
}

TEST(Database, SurvivesARestart) {
    const Folder folder;
    std::int32_t id = 0;
    {
        Databases databases(folder.path, kCollation);
        databases.create("Kjøtt & fisk");
        Connection connection(databases, 51);
        const auto database = connection.attach("Kjøtt & fisk");
        makeTable(connection, *database, "t");
        insert(connection, database->name(), "t", 7);
        id = connection.find(database->name(), "", "t")->object->id;
        Write write(connection, *database);
        connection.resetIdentity(*database, id, 41);
        write.done();
    }
    Databases databases(folder.path, kCollation);
    Connection connection(databases, 51);
    EXPECT_EQ(count(connection, "kjøtt & fisk", "t"), 1);
    const auto found = connection.find("kjøtt & fisk", "", "T");
    EXPECT_EQ(found->object->id, id);
    EXPECT_EQ(found->database->lastIdentity(id), 41);
    EXPECT_NE(found->database->newObjectId(), id);
    EXPECT_EQ(databases.all().size(), 5u);
}

TEST(Database, PrivateFolderIsGoneAfterwards) {
    fs::path file;
    {
        Databases databases(std::nullopt, kCollation);
        file = databases.find("master")->facts().file;
        EXPECT_TRUE(fs::exists(file));
    }
    EXPECT_FALSE(fs::exists(file.parent_path()));
}

TEST(Connection, ReadersSeeWhatIsCommittedAndNothingElse) {
    Databases databases(std::nullopt, kCollation);
    databases.create("d");
    Connection writer(databases, 51);
    Connection reader(databases, 52);
    makeTable(writer, *writer.attach("d"), "t");
    reader.begin();
    EXPECT_EQ(count(reader, "d", "t"), 0);
    writer.begin();
    insert(writer, "d", "t", 1);
    EXPECT_EQ(count(writer, "d", "t"), 1);
    EXPECT_EQ(count(reader, "d", "t"), 0);
    writer.commit();
    EXPECT_EQ(count(reader, "d", "t"), 1);
}

TEST(Connection, WriterBlocksWriterOfItsDatabaseOnly) {
    Databases databases(std::nullopt, kCollation);
    databases.create("d");
    databases.create("e");
    Connection a(databases, 51);
    Connection b(databases, 52);
    makeTable(a, *a.attach("d"), "t");
    makeTable(a, *a.attach("e"), "t");
    a.begin();
    insert(a, "d", "t", 1);
    b.setLockTimeout(std::chrono::milliseconds(0));
    EXPECT_EQ(errorNumber([&] { insert(b, "d", "t", 2); }), 1222);
    EXPECT_EQ(errorNumber([&] { insert(b, "e", "t", 2); }), 0);
    a.rollback();
    EXPECT_EQ(errorNumber([&] { insert(b, "d", "t", 2); }), 0);
    EXPECT_EQ(count(a, "d", "t"), 1);
}

TEST(Connection, SavePointsOfATransactionThatHasNotWrittenYet) {
    Databases databases(std::nullopt, kCollation);
    databases.create("d");
    Connection c(databases, 51);
    makeTable(c, *c.attach("d"), "t");
    c.begin();
    c.save(1);
    insert(c, "d", "t", 1);
    c.save(2);
    insert(c, "d", "t", 2);
    c.rollbackTo(2);
    EXPECT_EQ(count(c, "d", "t"), 1);
    c.rollbackTo(1);
    EXPECT_EQ(count(c, "d", "t"), 0);
    insert(c, "d", "t", 3);
    c.commit();
    EXPECT_EQ(count(c, "d", "t"), 1);
}

TEST(Connection, AFailedStatementLeavesNothingAndKeepsTheTransaction) {
    Databases databases(std::nullopt, kCollation);
    databases.create("d");
    Connection c(databases, 51);
    makeTable(c, *c.attach("d"), "t");
    c.begin();
    insert(c, "d", "t", 1);
    {
        Write write(c, *c.attach("d"));
        c.run("INSERT INTO " + storageTable(c.attach("d")->attachedAs(), *c.find("d", "", "t")->object) +
              " VALUES (2)");
    }
    c.commit();
    EXPECT_EQ(count(c, "d", "t"), 1);
}

TEST(Connection, CatalogueChangesAreTheSessionsOwnUntilCommitted) {
    Databases databases(std::nullopt, kCollation);
    databases.create("d");
    Connection a(databases, 51);
    Connection b(databases, 52);
    a.begin();
    makeTable(a, *a.attach("d"), "t");
    EXPECT_TRUE(a.find("d", "dbo", "t"));
    EXPECT_FALSE(b.find("d", "dbo", "t"));
    a.rollback();
    EXPECT_FALSE(a.find("d", "dbo", "t"));
    a.begin();
    makeTable(a, *a.attach("d"), "t");
    a.commit();
    EXPECT_EQ(count(b, "d", "t"), 0);
}

TEST(Connection, TemporaryTablesEndWithTheirScope) {
    Databases databases(std::nullopt, kCollation);
    Connection c(databases, 51);
    Connection other(databases, 52);
    makeTable(c, *c.temporary(), "#t");
    insert(c, "", "#t", 1);
    EXPECT_FALSE(other.find("", "", "#t"));
    c.beginTemporaryScope();
    EXPECT_EQ(count(c, "tempdb", "#t"), 1);
    makeTable(c, *c.temporary(), "#t");  // hides the outer one
    EXPECT_EQ(count(c, "", "#t"), 0);
    c.endTemporaryScope();
    EXPECT_EQ(count(c, "", "#t"), 1);
    c.dropAllTemporaryTables();
    EXPECT_FALSE(c.find("", "", "#t"));
}

TEST(Connection, TemporaryTablesRollBack) {
    Databases databases(std::nullopt, kCollation);
    Connection c(databases, 51);
    makeTable(c, *c.temporary(), "#kept");
    c.begin();
    insert(c, "", "#kept", 1);
    makeTable(c, *c.temporary(), "#gone");
    c.rollback();
    EXPECT_EQ(count(c, "", "#kept"), 0);
    EXPECT_FALSE(c.find("", "", "#gone"));
}

TEST(Connection, UsesMoreDatabasesThanSqliteAttaches) {
    Databases databases(std::nullopt, kCollation);
    Connection c(databases, 51);
    for (int i = 0; i < 25; ++i) {
        const std::string name = "d" + std::to_string(i);
        databases.create(name);
        makeTable(c, *c.attach(name), "t");
        insert(c, name, "t", i);
    }
    for (int i = 0; i < 25; ++i) EXPECT_EQ(count(c, "d" + std::to_string(i), "t"), 1) << i;
}

TEST(Connection, DroppedWithAnOpenTransactionItRollsBack) {
    Databases databases(std::nullopt, kCollation);
    databases.create("d");
    Connection b(databases, 52);
    {
        Connection a(databases, 51);
        makeTable(a, *a.attach("d"), "t");
        a.begin();
        insert(a, "d", "t", 1);
    }
    b.setLockTimeout(std::chrono::milliseconds(0));
    EXPECT_EQ(count(b, "d", "t"), 0);
    EXPECT_EQ(errorNumber([&] { insert(b, "d", "t", 2); }), 0);
}

TEST(Connection, AnInterruptEndsTheRunningStatementAndTheNextBatchRuns) {
    Databases databases(std::nullopt, kCollation);
    Connection c(databases, 51);
    std::atomic<bool> running{false};
    auto endless = std::async(std::launch::async, [&] {
        Statement s = c.prepare("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) SELECT i FROM n");
        while (s.step()) running = true;
    });
    while (!running) std::this_thread::yield();
    c.interrupt();
    EXPECT_THROW(endless.get(), StatementCancelled);
    EXPECT_THROW((void)c.run("SELECT 1"), StatementCancelled);
    c.clearInterrupt();
    EXPECT_NO_THROW(c.run("SELECT 1"));
}

TEST(Connection, RolledBackIdentityResetsComeBack) {
    Databases databases(std::nullopt, kCollation);
    const auto d = databases.create("d");
    Connection c(databases, 51);
    makeTable(c, *c.attach("d"), "t");
    const std::int32_t id = c.find("d", "", "t")->object->id;
    d->setLastIdentity(id, 9);
    c.begin();
    {
        Write write(c, *d);
        c.resetIdentity(*d, id, std::nullopt);
        write.done();
    }
    EXPECT_EQ(d->lastIdentity(id), std::nullopt);
    c.rollback();
    EXPECT_EQ(d->lastIdentity(id), 9);
}

}  // namespace
}  // namespace sandbox
