// Who gets in, in which version and packet size, and what the server says on the way.
#include "tests/sandbox/server/run_program.h"
#include "tests/sandbox/server/server_fixture.h"

namespace sandbox::test {
namespace {

using tds::LoginFields;
using tds::TdsClient;

TEST(ServerLogin, IsAnsweredAsSqlServerAnswersIt) {
    Server server(serverOptions());
    TdsClient client(server.port());
    LoginFields f;
    f.packetSize = 8000;
    EXPECT_EQ(
        client.login(f),
        (Lines{"env 1 'master' 'master'", "info 5701 0 2 1 Changed database context to 'master'.", "env 7 0604D00000 ",
               "env 2 'us_english' ''", "info 5703 0 1 1 Changed language setting to us_english.",
               "loginack 74000004 Microsoft SQL Server", "env 4 '8000' '4096'", "done"}));
    EXPECT_EQ(server.faults().logins(), 1U);
}

TEST(ServerLogin, WrongPasswordOrUserIsRefusedAndClosed) {
    Server server(serverOptions());
    struct {
        const char* user;
        const char* password;
    } cases[] = {{"sa", "wrong"}, {"sa", ""}, {"nobody", "secret"}, {"pos", "secret"}};
    for (const auto& c : cases) {
        TdsClient client(server.port());
        LoginFields f;
        f.user = c.user;
        f.password = c.password;
        EXPECT_EQ(client.login(f),
                  (Lines{std::string("error 18456 14 1 1 Login failed for user '") + c.user + "'.", "done error"}));
        EXPECT_TRUE(client.closes());
    }
    EXPECT_EQ(server.faults().logins(), 0U);
}

TEST(ServerLogin, FurtherLoginsGetInWhateverTheirCase) {
    Server server(serverOptions());
    TdsClient client(server.port());
    LoginFields f;
    f.user = "POS";
    f.password = "Pos-1";
    EXPECT_EQ(client.login(f).back(), "done");
}

TEST(ServerLogin, UnknownDatabaseIsRefused) {
    Server server(serverOptions());
    TdsClient client(server.port());
    LoginFields f;
    f.database = "Nowhere";
    const Lines reply = client.login(f);
    ASSERT_EQ(reply.size(), 3U);
    EXPECT_EQ(reply.at(0),
              "error 4060 11 1 1 Cannot open database \"Nowhere\" requested by the login. The login failed.");
    EXPECT_EQ(reply.at(1), "error 18456 14 1 1 Login failed for user 'sa'.");
    EXPECT_EQ(reply.at(2), "done error");
    EXPECT_TRUE(client.closes());
}

TEST(ServerLogin, IntegratedSecurityIsRefused) {
    Server server(serverOptions());
    TdsClient client(server.port());
    LoginFields f;
    f.integrated = true;
    EXPECT_TRUE(client.login(f).front().starts_with("error 18452 14 1"));
}

TEST(ServerLogin, LanguageOfTheLoginIsTheSessionsAndUnknownOnesAreNot) {
    Server server(serverOptions());
    struct {
        const char* wanted;
        const char* given;
    } cases[] = {{"Norsk", "Norsk"}, {"", "us_english"}, {"Kling]on", "us_english"}};
    for (const auto& c : cases) {
        TdsClient client(server.port());
        LoginFields f;
        f.language = c.wanted;
        EXPECT_EQ(client.login(f).at(3), std::string("env 2 '") + c.given + "' ''");
        EXPECT_EQ(client.batch("SELECT @@LANGUAGE AS l").at(1), std::string("row '") + c.given + "'");
    }
}

TEST(ServerLogin, EveryVersionIsSpoken) {
    Server server(serverOptions());
    for (const std::uint32_t version : {0x71000001U, 0x72090002U, 0x730B0003U, 0x74000004U}) {
        TdsClient client(server.port());
        LoginFields f;
        f.version = version;
        EXPECT_EQ(client.login(f).back(), "done");
        EXPECT_EQ(client.batch("SELECT 1 AS a, 'x' AS b, CAST('2024-02-29' AS date) AS c"),
                  (Lines{version >= 0x73000000U ? "cols a int not null, b varchar(1) not null, c date"
                                                : "cols a int not null, b varchar(1) not null, c nvarchar(10)",
                         version >= 0x73000000U ? "row 1|'x'|738944" : "row 1|'x'|'2024-02-29'", "done 1"}));
    }
}

TEST(ServerLogin, PacketsAreAsLargeAsSettled) {
    Server server(serverOptions());
    for (const std::uint32_t size : {512U, 4096U, 32767U}) {
        TdsClient client(server.port());
        LoginFields f;
        f.packetSize = size;
        (void)client.login(f);
        const Lines reply = client.batch(
            "SELECT REPLICATE('x', 8000) AS a, REPLICATE(N'y', 4000) AS b, "
            "REPLICATE(CAST('z' AS varchar(max)), 100000) AS c");
        ASSERT_EQ(reply.size(), 3U) << reply.front();
        EXPECT_EQ(reply.at(1).size(), 112000U + 4 + 3 * 2 + 2);
        EXPECT_EQ(client.largestPacketSeen(), size);
    }
}

TEST(ServerLogin, RequestsMayComeInPacketsOfAnySize) {
    Server server(serverOptions());
    TdsClient client = loggedIn(server);
    tds::Writer message;
    tds::appendHeaders(message);
    message.text("SELECT LEN('" + std::string(5000, 'x') + "') AS n");
    for (const std::size_t size : {std::size_t{9}, std::size_t{512}, std::size_t{4096}}) {
        client.send(tds::PacketType::SqlBatch, message.view(), size);
        EXPECT_EQ(client.reply().at(1), "row 5000");
    }
}

TEST(ServerLogin, ServerThatRequiresEncryptionRefusesThoseWithout) {
    ServerOptions o = serverOptions();
    o.tls = TlsMode::Required;
    Server server(o);
    TdsClient client(server.port());
    EXPECT_TRUE(client.login({}).front().starts_with("error 17835 20"));
    EXPECT_TRUE(client.closes());
}

TEST(ServerLogin, WhatIsNotSupportedIsRefusedAndNotPassedOver) {
    Server server(serverOptions());
    LoginFields change;
    change.changesPassword = true;
    EXPECT_TRUE(TdsClient(server.port()).login(change).front().starts_with("error 18463 14"));
    LoginFields federated;
    federated.features = {0x02, 2, 0, 0, 0, 9, 9, 0xFF};
    EXPECT_TRUE(TdsClient(server.port()).login(federated).front().starts_with("error 18456 14"));
}

// Option 4 of the answer is MARS: one byte, 0 for off.
TEST(ServerLogin, MultipleResultSetsAtATimeAreNotOffered) {
    Server server(serverOptions());
    TdsClient client(server.port());
    client.send(tds::PacketType::Prelogin, std::vector<std::uint8_t>{4, 0, 6, 0, 1, 0xFF, 1});
    const auto answer = client.receive();
    ASSERT_TRUE(answer);
    tds::Reader options(*answer);
    while (options.u8() != 4) options.skip(4);
    EXPECT_EQ(answer->at(options.u16be()), 0);
    EXPECT_EQ(options.u16be(), 1);
}

// FreeTDS checks the server's certificate against the one it is given.
TEST(ServerLogin, CertificateGivenIsTheOneThatClientsSee) {
    TemporaryFolder folder;
    const auto make = [&](const std::string& name) {
        const Ran ran = runProgram(
            "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -subj "
            "/CN=sandbox -days 30 -keyout " +
            folder.file(name + ".key") + " -out " + folder.file(name + ".pem"));
        ASSERT_EQ(ran.status, 0) << ran.output;
    };
    make("own");
    make("other");
    ServerOptions o = serverOptions();
    o.certificateFile = folder.file("own.pem");
    o.keyFile = folder.file("own.key");
    Server server(o);
    for (const std::string trusted : {"own", "other"}) {
        folder.write("freetds.conf", "[box]\nhost = 127.0.0.1\nport = " + std::to_string(server.port()) +
                                         "\ntds version = 7.4\nencryption = require\ncheck certificate hostname = no\n"
                                         "ca file = " +
                                         folder.file(trusted + ".pem") + "\n");
        const Ran ran =
            runProgram("env FREETDSCONF=" + folder.file("freetds.conf") + " tsql -S box -U sa -P secret -o q",
                       "SELECT 'inside' AS a\ngo\nexit\n");
        EXPECT_EQ(ran.output.find("inside") != std::string::npos, trusted == "own") << trusted << ran.output;
    }
}

TEST(ServerLogin, OneConnectionTooManyIsTurnedAway) {
    ServerOptions o = serverOptions();
    o.maxConnections = 2;
    Server server(o);
    TdsClient first = loggedIn(server);
    TdsClient second = loggedIn(server);
    TdsClient third(server.port());
    EXPECT_EQ(third.login({}), (Lines{"closed"}));
    first.close();
    ASSERT_TRUE(eventually([&] { return server.connectionCount() == 1; }));
    (void)loggedIn(server);
}

}  // namespace
}  // namespace sandbox::test
