// Connections that come and go, by the hundred; TORVIK_SOAK_CONNECTIONS makes them more (./test.sh --long: 10,000).
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <thread>

#include "sandbox/tds/prelogin.h"
#include "tests/sandbox/server/server_fixture.h"

namespace sandbox::test {
namespace {

using tds::PacketType;
using tds::TdsClient;
using tds::Writer;

int wantedConnections() {
    const char* given = std::getenv("TORVIK_SOAK_CONNECTIONS");
    return given == nullptr ? 400 : std::atoi(given);
}

double residentMegabytes() {
    std::ifstream in("/proc/self/statm");
    double total = 0, resident = 0;
    in >> total >> resident;
    return resident * 4096 / 1e6;
}

std::ptrdiff_t entriesOf(const char* folder) {
    return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
}

// What a connection leaves in a real day: a table of its own, a transaction, a statement prepared, rows read.
void useConnection(const Server& server, int number) {
    TdsClient client = loggedIn(server);
    (void)client.batch("USE shop");
    (void)client.batch("CREATE TABLE #own (a int, b varchar(100))");
    (void)client.batch("INSERT #own VALUES (1, REPLICATE('x', 100)) SELECT * FROM #own");
    (void)client.batch("BEGIN TRANSACTION UPDATE t SET a = a + 1");
    if (number % 2 == 0) (void)client.batch("COMMIT");
}

TEST(ServerSoak, ConnectionsLeaveNothingBehind) {
    Server server(serverOptions());
    {
        TdsClient client = loggedIn(server);
        (void)client.batch("CREATE DATABASE shop");
        (void)client.batch("CREATE TABLE shop.dbo.t (a int) INSERT shop.dbo.t VALUES (0)");
    }
    const auto settle = [&] { return eventually([&] { return server.connectionCount() == 0; }); };
    const int connections = wantedConnections();
    const int warmUp = connections / 4;  // caches fill, the allocator finds its size
    for (int i = 0; i < warmUp; ++i) useConnection(server, i);
    ASSERT_TRUE(settle());
    (void)loggedIn(server);  // the acceptor joins what has ended
    ASSERT_TRUE(settle());
    const std::ptrdiff_t threads = entriesOf("/proc/self/task"), files = entriesOf("/proc/self/fd");
    const double before = residentMegabytes();
    for (int i = warmUp; i < connections; ++i) useConnection(server, i);
    ASSERT_TRUE(settle());
    (void)loggedIn(server);
    ASSERT_TRUE(settle());
    const double grown = residentMegabytes() - before;
    std::cout << connections - warmUp << " connections: " << grown << " MB more in memory\n";
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // which keep what is freed
    EXPECT_LT(grown, 10);
#endif
    EXPECT_LE(entriesOf("/proc/self/task"), threads);
    // SQLite closes a file's descriptor late where another connection has it open too.
    EXPECT_LT(entriesOf("/proc/self/fd"), files + 10);
    EXPECT_EQ(loggedIn(server).batch("SELECT a FROM shop.dbo.t").at(1),
              "row " + std::to_string((warmUp + 1) / 2 + (connections + 1) / 2 - (warmUp + 1) / 2));
}

TEST(ServerSoak, ManyConnectionsWorkAtTheSameTime) {
    constexpr int kClients = 200;
    Server server(serverOptions());
    std::vector<TdsClient> clients;
    for (int i = 0; i < kClients; ++i) clients.push_back(loggedIn(server));
    for (TdsClient& client : clients) client.sendBatch("SELECT @@SPID AS spid");
    std::set<std::string> spids;
    for (TdsClient& client : clients) spids.insert(client.reply().at(1));
    EXPECT_EQ(spids.size(), static_cast<std::size_t>(kClients));
    EXPECT_EQ(server.connections().size(), static_cast<std::size_t>(kClients));
}

void appendPacket(std::vector<std::uint8_t>& stream, PacketType type, const std::vector<std::uint8_t>& body) {
    Writer header;
    header.u8(static_cast<std::uint8_t>(type));
    header.u8(tds::kEndOfMessage);
    header.u16be(static_cast<std::uint16_t>(body.size() + tds::kHeaderSize));
    header.fill(0, 4);
    stream.insert(stream.end(), header.view().begin(), header.view().end());
    stream.insert(stream.end(), body.begin(), body.end());
}

// A whole conversation that waits for no answer, and ends at each of its bytes in turn.
TEST(ServerSoak, ClientMayVanishAtAnyByte) {
    Server server(serverOptions());
    TdsClient bystander = loggedIn(server);
    (void)bystander.batch("CREATE DATABASE shop");
    (void)bystander.batch("CREATE TABLE shop.dbo.t (a int NULL)");
    const auto batch = [](const std::string& text) {
        Writer out;
        tds::appendHeaders(out);
        out.text(text);
        return out.buffer();
    };
    std::vector<std::uint8_t> stream;
    appendPacket(stream, PacketType::Prelogin, tds::writePrelogin(tds::Encryption::NotSupported, false));
    appendPacket(stream, PacketType::Login7, tds::loginMessage({}));
    appendPacket(stream, PacketType::SqlBatch, batch("BEGIN TRANSACTION INSERT shop..t VALUES (1)"));
    appendPacket(stream, PacketType::SqlBatch, batch("INSERT BULK shop..t (a int)"));
    appendPacket(stream, PacketType::BulkLoad,
                 {0x81, 1, 0, 0, 0, 0, 0,    1, 0, 0x26, 4, 1, 'a', 0, 0xD1, 4, 1, 0, 0, 0,
                  0xD1, 4, 2, 0, 0, 0, 0xFD, 0, 0, 0,    0, 0, 0,   0, 0,    0, 0, 0, 0});
    for (std::size_t length = 0; length < stream.size(); ++length) {
        TdsClient client(server.port());
        client.sendBytes(std::span(stream).first(length));
    }
    EXPECT_TRUE(eventually([&] { return server.connectionCount() == 1; }));
    EXPECT_EQ(bystander.batch("SELECT COUNT(*) AS n FROM shop.dbo.t").at(1), "row 0");
}

}  // namespace
}  // namespace sandbox::test
