// See request_watch.h.
#include "tests/faults/request_watch.h"

namespace torvik::test {

sandbox::Server& serverOf(sandbox::chain::DemoChain& chain, std::size_t server) {
    return server == kBackOffice ? chain.backOffice() : chain.till(server - kFirstTill);
}

std::vector<std::uint64_t> keepLogs(sandbox::chain::DemoChain& chain) {
    std::vector<std::uint64_t> before;
    for (std::size_t server = 0; server <= chain.model().tills.size(); ++server) {
        sandbox::Faults& faults = serverOf(chain, server).faults();
        faults.keepLog();
        before.push_back(faults.requests());
    }
    return before;
}

void forgetRun(sandbox::chain::DemoChain& chain) {
    for (std::size_t server = 0; server <= chain.model().tills.size(); ++server) {
        serverOf(chain, server).faults().clear();
        serverOf(chain, server).dropConnections();
    }
}

RequestWatch::RequestWatch(sandbox::chain::DemoChain& chain, Callback callback) : chain_(chain) {
    for (std::size_t server = 0; server <= chain.model().tills.size(); ++server) {
        sandbox::Faults& faults = serverOf(chain, server).faults();
        observers_.push_back(
            faults.observe([callback, server, before = faults.requests()](const sandbox::RequestInfo& request) {
                callback(server, request.serverNumber - before, request);
            }));
    }
}

RequestWatch::~RequestWatch() {
    for (std::size_t server = 0; server < observers_.size(); ++server)
        serverOf(chain_, server).faults().forget(observers_[server]);
}

}  // namespace torvik::test
