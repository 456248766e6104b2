// The servers of a chain by number, and who listens to the requests that reach them. What the recorded runs and the
// cases of a fault share.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "sandbox/chain/demo_chain.h"
#include "sandbox/server/faults.h"

namespace torvik::test {

// Servers are numbered: the back office, then the tills.
inline constexpr std::size_t kBackOffice = 0;
inline constexpr std::size_t kFirstTill = 1;
inline constexpr std::size_t kSecondTill = 2;

[[nodiscard]] sandbox::Server& serverOf(sandbox::chain::DemoChain& chain, std::size_t server);
// From now on every server of the chain keeps its log; the number of requests that each has met so far, by place.
[[nodiscard]] std::vector<std::uint64_t> keepLogs(sandbox::chain::DemoChain& chain);

// Nothing is left of a run but the tables: what the servers still hold of its sessions, and of its faults, would be met
// by the next one.
void forgetRun(sandbox::chain::DemoChain& chain);

// Calls back for each request of the chain before it is executed, with its server and its place there, while it stands.
class RequestWatch {
public:
    using Callback = std::function<void(std::size_t server, std::uint64_t place, const sandbox::RequestInfo&)>;
    RequestWatch(sandbox::chain::DemoChain& chain, Callback callback);
    ~RequestWatch();
    RequestWatch(const RequestWatch&) = delete;
    RequestWatch& operator=(const RequestWatch&) = delete;

private:
    sandbox::chain::DemoChain& chain_;
    std::vector<int> observers_;
};

}  // namespace torvik::test
