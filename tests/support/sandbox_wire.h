// For tests that go over the wire: each runs twice, over a plain connection and over an encrypted one.
#pragma once

#include <gtest/gtest.h>

#include "tests/support/sandbox_server.h"

namespace torvik::test {

class OverTheWire : public testing::TestWithParam<Wire> {
protected:
    SandboxServer server{GetParam()};
};

inline std::string wireName(Wire wire) {
    return wire == Wire::Plain ? "Plain" : "Tls";
}

// The test suite of a fixture made from OverTheWire.
#define TORVIK_OVER_THE_WIRE(fixture)                                                                                \
    INSTANTIATE_TEST_SUITE_P(Wire, fixture, testing::Values(::torvik::test::Wire::Plain, ::torvik::test::Wire::Tls), \
                             [](const auto& test) { return ::torvik::test::wireName(test.param); })

}  // namespace torvik::test
