// A running server for tests of the server itself, and the wait for something that another thread brings about.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "sandbox/server/server.h"
#include "tests/support/tds_client.h"

namespace sandbox::test {

using Lines = std::vector<std::string>;

inline ServerOptions serverOptions() {
    ServerOptions o;
    o.saPassword = "secret";
    o.logins["pos"] = "Pos-1";
    return o;
}

// A client that has logged in as sa.
inline tds::TdsClient loggedIn(const Server& server, const std::string& program = "tests") {
    tds::TdsClient client(server.port());
    tds::LoginFields fields;
    fields.program = program;
    const Lines reply = client.login(fields);
    EXPECT_EQ(reply.back(), "done");
    return client;
}

// True as soon as the condition holds; false when it does not within ten seconds.
template <typename Condition>
[[nodiscard]] bool eventually(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::yield();
    }
    return true;
}

}  // namespace sandbox::test
