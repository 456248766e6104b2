// A demo chain in a process of its own, so that what is measured is the program alone. Make it before anything else:
// the process is forked, and threads would not come along. It is asked through a pipe for how many requests its servers
// have been sent.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <functional>
#include <iostream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "sandbox/chain/demo_chain.h"

namespace torvik::bench {

class ChainProcess {
public:
    // `fill` runs there, once the chain stands.
    ChainProcess(
        const sandbox::chain::ChainOptions& options,
        const std::function<void(sandbox::chain::DemoChain&)>& fill = [](sandbox::chain::DemoChain&) {}) {
        int told[2];
        int asked[2];
        if (pipe(told) != 0 || pipe(asked) != 0) throw std::runtime_error("no pipe");
        process_ = fork();
        if (process_ == 0) {
            close(told[0]);
            close(asked[1]);
            _exit(serve(options, fill, told[1], asked[0]));
        }
        close(told[1]);
        close(asked[0]);
        told_ = told[0];
        asked_ = asked[1];
        dataLink_ = line();
        if (process_ < 0 || dataLink_.empty()) throw std::runtime_error("the chain's process did not start");
    }
    ~ChainProcess() {
        close(asked_);
        close(told_);
        waitpid(process_, nullptr, 0);
    }
    ChainProcess(const ChainProcess&) = delete;
    ChainProcess& operator=(const ChainProcess&) = delete;

    [[nodiscard]] const std::string& dataLink() const { return dataLink_; }

    // Requests since the chain stands: to the back office first, then to each till.
    [[nodiscard]] std::vector<std::uint64_t> requests() const {
        if (write(asked_, "?", 1) != 1) throw std::runtime_error("the chain's process has gone");
        std::istringstream counts(line());
        return {std::istream_iterator<std::uint64_t>(counts), {}};
    }

private:
    [[nodiscard]] std::string line() const {
        std::string text;
        for (char letter = 0; read(told_, &letter, 1) == 1 && letter != '\n';) text += letter;
        return text;
    }

    static std::string countsOf(sandbox::chain::DemoChain& chain) {
        std::string counts = std::to_string(chain.backOffice().faults().requests());
        for (std::size_t till = 0; till < chain.model().tills.size(); ++till)
            counts += " " + std::to_string(chain.till(till).faults().requests());
        return counts;
    }

    static bool tell(int to, const std::string& text) {
        const std::string whole = text + "\n";
        return write(to, whole.data(), whole.size()) == static_cast<ssize_t>(whole.size());
    }

    // Ends when nobody can ask any more.
    static int serve(const sandbox::chain::ChainOptions& options,
                     const std::function<void(sandbox::chain::DemoChain&)>& fill, int told, int asked) {
        try {
            sandbox::chain::DemoChain chain({.chain = options});
            fill(chain);
            if (!tell(told, chain.dataLink())) return 1;
            for (char letter = 0; read(asked, &letter, 1) > 0;)
                if (!tell(told, countsOf(chain))) return 1;
            return 0;
        } catch (const std::exception& e) {
            std::cerr << e.what() << std::endl;
            return 1;
        }
    }

    pid_t process_ = -1;
    int told_ = -1;
    int asked_ = -1;
    std::string dataLink_;
};

}  // namespace torvik::bench
