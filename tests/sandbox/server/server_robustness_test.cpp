// Clients that do not keep to the protocol lose their connection; the server and the others go on.
#include <random>

#include "sandbox/tds/prelogin.h"
#include "tests/sandbox/server/server_fixture.h"

namespace sandbox::test {
namespace {

using Buffer = std::vector<std::uint8_t>;
using tds::PacketType;
using tds::TdsClient;

TEST(ServerRobustness, NonsenseBeforeTheLoginEndsTheConnection) {
    Server server(serverOptions());
    const std::string http = "GET / HTTP/1.1\r\nHost: x\r\n\r\n";
    const Buffer cases[] = {
        Buffer(http.begin(), http.end()),
        Buffer(100, 0xFF),
        Buffer(100, 0x00),
        {0x12, 1, 0, 7, 0, 0, 0, 0},
        {0x12, 1, 0xFF, 0xFF, 0, 0, 0, 0},
        {0x12, 1, 0, 9, 0, 0, 0, 0, 0},
        {0x10, 1, 0, 12, 0, 0, 0, 0, 1, 2, 3, 4},
        {0x01, 1, 0, 8, 0, 0, 0, 0},
        {0x16, 3, 1, 0, 5, 1, 0, 0, 1, 0},
    };
    for (const Buffer& c : cases) {
        TdsClient client(server.port());
        client.sendBytes(c);
        EXPECT_TRUE(client.closes()) << c.size();
    }
    (void)loggedIn(server);
}

TEST(ServerRobustness, NonsenseInTheTlsHandshakeEndsTheConnection) {
    Server server(serverOptions());
    for (const Buffer& c : {Buffer(50, 0x41), Buffer{0x16, 3, 1, 0, 4, 1, 2, 3, 4}, Buffer{}}) {
        TdsClient client(server.port());
        client.send(PacketType::Prelogin, tds::writePrelogin(tds::Encryption::On, false));
        ASSERT_TRUE(client.receive());
        client.send(c.empty() ? PacketType::Login7 : PacketType::Prelogin, c);
        EXPECT_TRUE(client.closes());
    }
    (void)loggedIn(server);
}

TEST(ServerRobustness, BrokenRequestEndsItsConnectionAlone) {
    Server server(serverOptions());
    TdsClient bystander = loggedIn(server);
    struct {
        PacketType type;
        Buffer message;
    } cases[] = {
        {PacketType::SqlBatch, {1, 2}},
        {PacketType::SqlBatch, {4, 0, 0, 0, 'x'}},
        {PacketType::Rpc, {4, 0, 0, 0, 0xFF, 0xFF, 99, 0, 0, 0}},
        {PacketType::Rpc, {4, 0, 0, 0, 0xFF, 0xFF, 10, 0, 0, 0, 0, 0, 0xA7, 0xFF, 0xFF}},
        {PacketType::TransactionManager, {4, 0, 0, 0, 77, 0}},
        {PacketType::Login7, {1, 2, 3}},
        {PacketType::Prelogin, {0xFF}},
    };
    for (const auto& c : cases) {
        TdsClient client = loggedIn(server);
        client.send(c.type, c.message);
        EXPECT_TRUE(client.closes()) << static_cast<int>(c.type);
    }
    EXPECT_EQ(bystander.batch("SELECT 1 AS a").back(), "done 1");
}

TEST(ServerRobustness, PacketBeyondTheSettledSizeEndsTheConnection) {
    Server server(serverOptions());
    TdsClient client = loggedIn(server);
    client.send(PacketType::SqlBatch, Buffer(6000, 'x'), 8000);
    EXPECT_TRUE(client.closes());
}

TEST(ServerRobustness, MessageBeyondTheLimitEndsTheConnection) {
    ServerOptions o = serverOptions();
    o.maxMessageBytes = 100000;
    Server server(o);
    TdsClient client = loggedIn(server);
    client.send(PacketType::SqlBatch, Buffer(200000, 'x'));
    EXPECT_TRUE(client.closes());
}

// More than the server takes in ahead of answering, so that its reading thread waits for room when the connection ends.
class ClientThatGoesOnSending : public testing::TestWithParam<bool> {};

TEST_P(ClientThatGoesOnSending, LosesItsTransactionAndDoesNotKeepTheServerAlive) {
    const bool malformedCall = GetParam();
    ServerOptions o = serverOptions();
    o.maxMessageBytes = 100000;
    auto server = std::make_unique<Server>(o);
    TdsClient other = loggedIn(*server);
    other.batch("CREATE DATABASE shop");
    other.batch("USE shop CREATE TABLE t (a int)");
    TdsClient client = loggedIn(*server);
    client.batch("USE shop BEGIN TRANSACTION INSERT t VALUES (1)");

    if (malformedCall) client.send(PacketType::Rpc, Buffer{4, 0, 0, 0, 0xFF, 0xFF, 99, 0, 0, 0});
    try {
        client.send(PacketType::SqlBatch, Buffer(2'000'000, 'x'));
    } catch (const std::exception&) {
        // The server has gone already.
    }

    EXPECT_TRUE(eventually([&] { return server->connectionCount() == 1; }));
    EXPECT_EQ(other.batch("INSERT t VALUES (2)").back(), "done 1");
    EXPECT_EQ(other.batch("SELECT a FROM t")[1], "row 2");
    const auto start = std::chrono::steady_clock::now();
    server.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

INSTANTIATE_TEST_SUITE_P(ServerRobustness, ClientThatGoesOnSending, testing::Values(false, true),
                         [](const auto& given) { return given.param ? "AfterAMalformedCall" : "BeyondTheLimit"; });

TEST(ServerRobustness, EndsAtOnceWhileARequestRunsAndItsClientGoesOnSending) {
    auto server = std::make_unique<Server>(serverOptions());
    TdsClient client = loggedIn(*server);
    client.sendBatch("WAITFOR DELAY '00:05:00'");
    ASSERT_TRUE(eventually([&] { return server->faults().requests() == 1; }));
    client.send(PacketType::SqlBatch, Buffer(2'000'000, 'x'));
    const auto start = std::chrono::steady_clock::now();
    server.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST(ServerRobustness, MessageWithinAnotherEndsTheConnection) {
    Server server(serverOptions());
    TdsClient client = loggedIn(server);
    client.send(PacketType::SqlBatch, Buffer(10, 'x'), 4096, 0);
    client.send(PacketType::Rpc, Buffer(10, 'x'));
    EXPECT_TRUE(client.closes());
}

TEST(ServerRobustness, MutatedRequestsNeverEndTheServer) {
    Server server(serverOptions());
    std::mt19937 random(7);
    Type text, number;
    text.id = TypeId::NVarChar;
    text.length = 4000;
    number.id = TypeId::Int;
    const auto wide = [](const std::string& s) {
        tds::Writer out;
        tds::appendHeaders(out);
        out.text(s);
        return out.buffer();
    };
    struct {
        PacketType type;
        Buffer message;
    } seeds[] = {
        {PacketType::SqlBatch, wide("SELECT 1 AS a, 'x' AS b INSERT #t VALUES (1) PRINT 'x'")},
        {PacketType::Rpc, tds::callMessage(13, {{"", number, Null{}, true},
                                                {"", text, std::string("@a int"), false},
                                                {"", text, std::string("SELECT @a"), false},
                                                {"", number, std::int64_t{1}, false}})},
        {PacketType::Rpc, tds::callMessage(7, {{"", number, std::int64_t{1}, false}})},
        {PacketType::TransactionManager,
         {22, 0, 0, 0, 18, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 5, 0, 0, 0}},
    };
    std::unique_ptr<TdsClient> client;
    for (int round = 0; round < 600; ++round) {
        if (!client) client = std::make_unique<TdsClient>(loggedIn(server));
        const auto& seed = seeds[random() % std::size(seeds)];
        Buffer message = seed.message;
        for (unsigned i = 0; i < random() % 4; ++i)
            message[random() % message.size()] = static_cast<std::uint8_t>(random());
        client->send(seed.type, message);
        if (!client->receive()) client.reset();
    }
    EXPECT_EQ(loggedIn(server).batch("SELECT 1 AS a").back(), "done 1");
}

TEST(ServerRobustness, EndsAtOnceWhileRequestsRun) {
    auto server = std::make_unique<Server>(serverOptions());
    TdsClient waiting = loggedIn(*server);
    TdsClient silent(server->port());
    TdsClient idle = loggedIn(*server);
    waiting.sendBatch("WAITFOR DELAY '00:05:00'");
    ASSERT_TRUE(eventually([&] { return server->faults().requests() == 1; }));
    const auto start = std::chrono::steady_clock::now();
    server.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    EXPECT_TRUE(waiting.closes());
    EXPECT_TRUE(idle.closes());
}

}  // namespace
}  // namespace sandbox::test
