// What the operating system is told of the lines that sessions go over: read back from the sockets themselves, since
// only a machine that vanishes could show it.
#include "engine/db/odbc/line.h"

#include <arpa/inet.h>
#include <dirent.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <cstdlib>
#include <memory>
#include <optional>
#include <vector>

#include "engine/db/bulk_loader.h"
#include "engine/db/query.h"
#include "tests/support/sandbox_server.h"

namespace torvik::db {
namespace {

// This process's ends of connections to a port.
std::vector<int> socketsTo(std::uint16_t port) {
    std::vector<int> found;
    const std::unique_ptr<DIR, int (*)(DIR*)> open(::opendir("/proc/self/fd"), ::closedir);
    while (const dirent* entry = open ? ::readdir(open.get()) : nullptr) {
        const int descriptor = std::atoi(entry->d_name);
        sockaddr_in peer{};
        socklen_t size = sizeof peer;
        if (::getpeername(descriptor, reinterpret_cast<sockaddr*>(&peer), &size) == 0 && peer.sin_family == AF_INET &&
            ntohs(peer.sin_port) == port)
            found.push_back(descriptor);
    }
    return found;
}

int option(int socket, int level, int name) {
    int value = -1;
    socklen_t size = sizeof value;
    return ::getsockopt(socket, level, name, &value, &size) == 0 ? value : -1;
}

class LineOfASession : public testing::Test {
protected:
    void SetUp() override { TORVIK_NEEDS_SANDBOX(server); }
    // Of the one session that the test's server has.
    [[nodiscard]] int socket() {
        const std::vector<int> all = socketsTo(server.server().port());
        EXPECT_EQ(all.size(), 1U);
        return all.empty() ? -1 : all.front();
    }
    test::SandboxServer server;
};

// 30 seconds, and then three probes 10 seconds apart: a minute.
TEST_F(LineOfASession, MachineThatAnswersNoProbeIsGivenUpAfterAMinute) {
    const int line = socket();
    EXPECT_EQ(option(line, SOL_SOCKET, SO_KEEPALIVE), 1);
    EXPECT_EQ(option(line, IPPROTO_TCP, TCP_KEEPIDLE), 30);
    EXPECT_EQ(option(line, IPPROTO_TCP, TCP_KEEPINTVL), 10);
    EXPECT_EQ(option(line, IPPROTO_TCP, TCP_KEEPCNT), 3);
}

TEST_F(LineOfASession, MachineThatAcknowledgesNothingIsGivenUpAfterAMinute) {
    EXPECT_EQ(option(socket(), IPPROTO_TCP, TCP_USER_TIMEOUT), 60'000);
}

// The server takes none of a block's rows while a lock keeps it from them.
TEST_F(LineOfASession, ServerMayLeaveTheRowsOfABlockUnreadForAsLongAsItLikes) {
    server.run(QStringLiteral("CREATE TABLE Target (a int PRIMARY KEY, b varchar(100))"));
    const int line = socket();
    std::optional<int> during;
    server.faults().observe([&](const sandbox::RequestInfo& request) {
        if (request.kind == sandbox::RequestKind::Bulk) during = option(line, IPPROTO_TCP, TCP_USER_TIMEOUT);
    });
    QStringList rows;
    for (int i = 0; i < 900; ++i) rows.append(QStringLiteral("(%1, 'b')").arg(i));
    server.run(QStringLiteral("CREATE TABLE Source (a int PRIMARY KEY, b varchar(100)) INSERT Source VALUES ") +
               rows.join(u','));
    Query source(&server.session());
    source.SQL = {QStringLiteral("SELECT a, b FROM Source")};
    source.Open();
    BulkLoader loader(&server.session());
    loader.TableName = QStringLiteral("Target");
    ASSERT_EQ(loader.LoadFromDataSet(source), 900);
    EXPECT_EQ(during, 0);
    EXPECT_EQ(option(line, IPPROTO_TCP, TCP_USER_TIMEOUT), 60'000) << "behind the block";
}

TEST_F(LineOfASession, EndThatTheServerSentIsKnownWithoutAQuestion) {
    const int line = socket();
    EXPECT_TRUE(odbc::lineStands(line));
    server.server().dropConnections();
    EXPECT_FALSE(odbc::lineStands(line));
    EXPECT_TRUE(odbc::lineStands(odbc::kNoSocket)) << "of a driver that shows none, the driver itself is asked";
}

}  // namespace
}  // namespace torvik::db
