#include "tests/support/line_relay.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <algorithm>
#include <optional>
#include <random>
#include <thread>
#include <vector>

namespace torvik::test {
namespace {

using namespace std::chrono_literals;
using sandbox::server::Socket;
using Clock = std::chrono::steady_clock;
using Bytes = std::vector<std::uint8_t>;
using Way = LineRelay::Way;

Bytes randomBytes(std::size_t count) {
    std::mt19937 random(7);
    Bytes bytes(count);
    std::ranges::generate(bytes, [&] { return static_cast<std::uint8_t>(random()); });
    return bytes;
}

// To the end of the connection.
Bytes rest(const Socket& socket) {
    Bytes all;
    Bytes piece(64U << 10);
    while (const std::size_t count = socket.receive(piece))
        all.insert(all.end(), piece.begin(), piece.begin() + static_cast<std::ptrdiff_t>(count));
    return all;
}

std::size_t receiveOne(const Socket& socket) {
    std::uint8_t byte = 0;
    return socket.receive({&byte, 1});
}

// A server that this test is itself, and its side of each connection.
class Line : public testing::Test {
protected:
    [[nodiscard]] Socket accepted() const {
        const Socket never;
        return sandbox::server::acceptOn(listening, never);
    }

    Socket listening = sandbox::server::listenOn("127.0.0.1", 0);
    LineRelay relay{sandbox::server::portOf(listening)};
};

TEST_F(Line, BytesArriveWholeAndInOrderBothWaysAtTheSameTime) {
    const Bytes up = randomBytes(3'000'000);
    const Bytes down = randomBytes(5'000'000);
    relay.setTerms({.delay = 5ms});
    const Socket client = connectTo(relay.port());
    Bytes atServer;
    std::thread server([&] {
        const Socket own = accepted();
        std::thread writes([&] {
            EXPECT_TRUE(own.send(down));
            own.shutdownSending();
        });
        atServer = rest(own);
        writes.join();
    });
    std::thread clientWrites([&] {
        EXPECT_TRUE(client.send(up));
        client.shutdownSending();
    });
    const Bytes atClient = rest(client);
    clientWrites.join();
    server.join();
    EXPECT_TRUE(atServer == up);
    EXPECT_TRUE(atClient == down);
    EXPECT_EQ(relay.carried(Way::ToServer), up.size());
    EXPECT_EQ(relay.carried(Way::ToClient), down.size());
}

// The first byte waits for the greeting besides.
TEST_F(Line, RoundTripTakesTheDelayOfBothWaysAndTheFirstOneMoreForTheGreeting) {
    relay.setTerms({.delay = 15ms});
    const Socket client = connectTo(relay.port());
    std::optional<Socket> server;
    std::vector<double> took;
    for (int trip = 0; trip < 12; ++trip) {
        const auto begun = Clock::now();
        ASSERT_TRUE(client.send(Bytes{1}));
        if (!server) server = accepted();
        ASSERT_EQ(receiveOne(*server), 1U);
        ASSERT_TRUE(server->send(Bytes{2}));
        ASSERT_EQ(receiveOne(client), 1U);
        took.push_back(std::chrono::duration<double, std::milli>(Clock::now() - begun).count());
    }
    EXPECT_GE(took.front(), 60);
    took.erase(took.begin());
    EXPECT_GE(*std::ranges::min_element(took), 30);
    std::ranges::sort(took);
    EXPECT_LT(took[took.size() / 2], 36) << "the middle one, on a machine that may be busy";
}

// All are sent a byte at once.
TEST_F(Line, DelayIsTheSameForAHundredConnectionsAtATime) {
    constexpr int kConnections = 100;
    relay.setTerms({.delay = 15ms});
    std::vector<Socket> clients;
    std::vector<Socket> servers;
    for (int i = 0; i < kConnections; ++i) {
        clients.push_back(connectTo(relay.port()));
        ASSERT_TRUE(clients.back().send(Bytes{1}));
    }
    for (int i = 0; i < kConnections; ++i) {
        servers.push_back(accepted());
        ASSERT_EQ(receiveOne(servers.back()), 1U);
    }
    double shortest = 1e9;
    double middle = 1e9;
    for (int round = 0; round < 7; ++round) {
        std::vector<Clock::time_point> begun;
        for (const Socket& server : servers) {
            begun.push_back(Clock::now());
            ASSERT_TRUE(server.send(Bytes{2}));
        }
        std::vector<double> took;
        for (int i = 0; i < kConnections; ++i) {
            ASSERT_EQ(receiveOne(clients[i]), 1U);
            took.push_back(std::chrono::duration<double, std::milli>(Clock::now() - begun[i]).count());
        }
        std::ranges::sort(took);
        shortest = std::min(shortest, took.front());
        middle = std::min(middle, took[kConnections / 2]);
    }
    EXPECT_GE(shortest, 15);
    EXPECT_LT(middle, 20) << "in the best round, on a machine that may be busy";
}

TEST_F(Line, CarriesOnlySoMuchASecond) {
    relay.setTerms({.bytesPerSecond = 1'000'000});
    const Socket client = connectTo(relay.port());
    const Bytes sent = randomBytes(200'000);
    const auto begun = Clock::now();
    ASSERT_TRUE(client.send(sent));
    client.shutdownSending();
    EXPECT_TRUE(rest(accepted()) == sent);
    EXPECT_GE(Clock::now() - begun, 200ms);
}

TEST_F(Line, CutIsALossAtBothEnds) {
    const Socket client = connectTo(relay.port());
    ASSERT_TRUE(client.send(Bytes{1}));
    const Socket server = accepted();
    ASSERT_EQ(receiveOne(server), 1U);
    relay.cut();
    EXPECT_EQ(receiveOne(client), 0U);
    EXPECT_EQ(receiveOne(server), 0U);
    EXPECT_EQ(relay.connections(), 0U);
}

TEST_F(Line, CutBehindAByteLetsThatByteThroughAndNoOther) {
    const Bytes sent = randomBytes(100'000);
    relay.cutAfter(Way::ToServer, 12'345);
    const Socket client = connectTo(relay.port());
    ASSERT_TRUE(client.send(sent));
    EXPECT_TRUE(rest(accepted()) == Bytes(sent.begin(), sent.begin() + 12'345));
    EXPECT_EQ(receiveOne(client), 0U);
    const Socket next = connectTo(relay.port());
    ASSERT_TRUE(next.send(sent));
    next.shutdownSending();
    EXPECT_TRUE(rest(accepted()) == sent) << "once";
}

TEST_F(Line, SilentLineTakesBytesAndPassesNothingOnUntilItSpeaks) {
    const Socket client = connectTo(relay.port());
    ASSERT_TRUE(client.send(Bytes{1}));
    const Socket server = accepted();
    ASSERT_EQ(receiveOne(server), 1U);
    relay.fallSilent();
    const Bytes sent = randomBytes(10'000'000);  // more than any socket holds
    ASSERT_TRUE(client.send(sent));
    ASSERT_TRUE(server.send(Bytes{7}));
    const Socket stranger = connectTo(relay.port());
    EXPECT_GE(stranger.get(), 0) << "a connection is taken too";
    EXPECT_FALSE(server.readable(100ms));
    EXPECT_FALSE(client.readable(100ms));
    relay.speak();
    client.shutdownSending();
    EXPECT_TRUE(rest(server) == sent);
    EXPECT_EQ(receiveOne(client), 1U);
}

TEST_F(Line, RefusedConnectionsLeaveTheStandingOnesAlone) {
    const Socket client = connectTo(relay.port());
    ASSERT_TRUE(client.send(Bytes{1}));
    const Socket server = accepted();
    relay.refuse();
    EXPECT_LT(connectTo(relay.port()).get(), 0);
    ASSERT_TRUE(client.send(Bytes{2}));
    EXPECT_EQ(receiveOne(server), 1U);
    EXPECT_EQ(receiveOne(server), 1U);
    relay.accept();
    EXPECT_GE(connectTo(relay.port()).get(), 0);
}

TEST_F(Line, ServerThatIsGoneEndsTheConnection) {
    listening.close();
    const Socket client = connectTo(relay.port());
    ASSERT_TRUE(client.send(Bytes{1}));
    EXPECT_EQ(receiveOne(client), 0U);
}

}  // namespace
}  // namespace torvik::test
