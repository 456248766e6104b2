// Databases of a server: kept in files over a restart, as many as one likes, and none of another server's.
#include "tests/sandbox/server/run_program.h"
#include "tests/sandbox/server/server_fixture.h"

namespace sandbox::test {
namespace {

using tds::TdsClient;

constexpr int kDatabases = 15;  // more than one connection has open at a time

std::string databaseName(int number) {
    return "d" + std::to_string(number);
}

void makeDatabases(TdsClient& client) {
    for (int i = 1; i <= kDatabases; ++i) {
        (void)client.batch("CREATE DATABASE " + databaseName(i));
        (void)client.batch("CREATE TABLE " + databaseName(i) +
                           "..t (id int IDENTITY PRIMARY KEY, name varchar(20) COLLATE Danish_Norwegian_CI_AS UNIQUE)");
        (void)client.batch("INSERT " + databaseName(i) + "..t VALUES ('Åse " + std::to_string(i) + "')");
    }
}

TEST(ServerData, DatabasesInFilesAreThereAgainAfterARestart) {
    TemporaryFolder folder;
    ServerOptions options = serverOptions();
    options.engine.dataDir = folder.path() / "data";
    {
        Server server(options);
        TdsClient client = loggedIn(server);
        makeDatabases(client);
        (void)client.batch("USE d3");
        (void)client.batch("CREATE PROCEDURE names AS SELECT name FROM t ORDER BY id");
        (void)client.batch("BEGIN TRANSACTION INSERT t VALUES ('aldri')");
    }
    Server server(options);
    TdsClient client = loggedIn(server);
    EXPECT_EQ(client.batch("SELECT COUNT(*) AS n FROM sys.databases WHERE name LIKE 'd[0-9]%'").at(1), "row 15");
    (void)client.batch("USE d3");
    EXPECT_TRUE(client.batch("INSERT t VALUES ('ÅSE 3')").front().starts_with("error 2627"));
    EXPECT_EQ(client.batch("INSERT t VALUES ('Ole') SELECT SCOPE_IDENTITY() - 1 AS skipped").back(), "done 1");
    EXPECT_EQ(client.batch("EXEC names"), (Lines{"cols name varchar(20)", "row 'Åse 3'", "row 'Ole'",
                                                 "doneinproc 2 more", "return 0", "doneproc"}));
}

TEST(ServerData, SchemasAndTheCounterOfTimestampsGoOnAfterARestart) {
    TemporaryFolder folder;
    ServerOptions options = serverOptions();
    options.engine.dataDir = folder.path() / "data";
    {
        Server server(options);
        TdsClient client = loggedIn(server);
        (void)client.batch("CREATE DATABASE shop");
        (void)client.batch("USE shop");
        (void)client.batch("CREATE SCHEMA lager");
        (void)client.batch("CREATE TABLE lager.vare (id int, ts timestamp) CREATE TABLE vare (id int)");
        (void)client.batch("INSERT lager.vare (id) VALUES (1), (2) INSERT vare VALUES (3)");
    }
    Server server(options);
    TdsClient client = loggedIn(server);
    (void)client.batch("USE shop");
    (void)client.batch("INSERT lager.vare (id) VALUES (4)");
    EXPECT_EQ(client.batch("SELECT id, CAST(ts AS int) AS ts FROM lager.vare ORDER BY ts"),
              (Lines{"cols id int, ts int", "row 1|2001", "row 2|2002", "row 4|2003", "done 3"}));
    EXPECT_EQ(client.batch("SELECT id FROM vare").at(1), "row 3");
    EXPECT_TRUE(client.batch("CREATE SCHEMA lager").front().starts_with("error 2714 16 6"));
    EXPECT_TRUE(client.batch("DROP SCHEMA lager").front().starts_with("error 3729"));
}

TEST(ServerData, OneStatementReadsManyDatabases) {
    Server server(serverOptions());
    TdsClient client = loggedIn(server);
    makeDatabases(client);
    for (int i = 1; i + 2 <= kDatabases; ++i) {
        const Lines reply = client.batch("SELECT a.name AS a, c.name AS c FROM " + databaseName(i) + "..t a, " +
                                         databaseName(i + 1) + "..t b, " + databaseName(i + 2) + ".dbo.t c");
        EXPECT_EQ(reply.at(1), "row 'Åse " + std::to_string(i) + "'|'Åse " + std::to_string(i + 2) + "'");
    }
}

TEST(ServerData, ServersOfOneProcessKnowNothingOfEachOther) {
    ServerOptions options = serverOptions();
    options.engine.serverName = "KASSE1";
    Server first(options);
    options.engine.serverName = "KASSE2";
    options.saPassword = "other";
    Server second(options);
    TdsClient client = loggedIn(first);
    (void)client.batch("CREATE DATABASE shop");
    TdsClient other(second.port());
    EXPECT_TRUE(other.login({}).front().starts_with("error 18456"));
    tds::LoginFields login;
    login.password = "other";
    TdsClient let(second.port());
    EXPECT_EQ(let.login(login).back(), "done");
    EXPECT_EQ(let.batch("SELECT @@SERVERNAME AS s, DB_ID('shop') AS d").at(1), "row 'KASSE2'|NULL");
    EXPECT_EQ(client.batch("SELECT @@SERVERNAME AS s").at(1), "row 'KASSE1'");
    first.dropConnections();
    EXPECT_EQ(let.batch("SELECT 1 AS a").back(), "done 1");
}

}  // namespace
}  // namespace sandbox::test
