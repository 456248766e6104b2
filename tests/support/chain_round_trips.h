// The round trips that the program makes over a demo chain, side by side: each request, and the two of each login (the
// prelogin and the login itself). Tests hold the fetch to them, and bench/ tells them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "sandbox/chain/demo_chain.h"

namespace torvik::test {

class RoundTrips {
public:
    // Counts from now on, while it stands.
    explicit RoundTrips(sandbox::chain::DemoChain& chain);
    ~RoundTrips();
    RoundTrips(const RoundTrips&) = delete;
    RoundTrips& operator=(const RoundTrips&) = delete;

    // The texts of the requests so far, in their order; kLogin for each of a login's two.
    static constexpr const char* kLogin = "(login)";
    [[nodiscard]] std::vector<std::string> toBackOffice() const;
    [[nodiscard]] std::vector<std::string> toTill(std::size_t till) const;
    // Those to the back office, a till's visit after the other, each from its lock on: without what a run asks once.
    [[nodiscard]] std::vector<std::vector<std::string>> toBackOfficeByVisit() const;

private:
    struct Side {
        sandbox::Faults* faults;
        int observer;
        std::uint64_t loginsBefore;
        std::vector<std::string> requests;
    };
    void watch(sandbox::Faults& faults);
    [[nodiscard]] std::vector<std::string> of(const Side& side) const;

    mutable std::mutex mutex_;
    std::vector<std::unique_ptr<Side>> sides_;  // the back office, then the tills
};

}  // namespace torvik::test
