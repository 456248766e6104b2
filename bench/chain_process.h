// A demo chain in a process of its own, so that what is measured is the program alone. Make it before anything else:
// the process is forked, and threads would not come along.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <iostream>
#include <stdexcept>
#include <string>

#include "sandbox/chain/demo_chain.h"

namespace torvik::bench {

class ChainProcess {
public:
    // `fill` runs there, once the chain stands.
    ChainProcess(const sandbox::chain::ChainOptions& options,
                 const std::function<void(sandbox::chain::DemoChain&)>& fill) {
        int told[2];
        int alive[2];
        if (pipe(told) != 0 || pipe(alive) != 0) throw std::runtime_error("no pipe");
        process_ = fork();
        if (process_ == 0) {
            close(told[0]);
            close(alive[1]);
            _exit(serve(options, fill, told[1], alive[0]));
        }
        close(told[1]);
        close(alive[0]);
        alive_ = alive[1];
        char letter = 0;
        while (read(told[0], &letter, 1) == 1) dataLink_ += letter;
        close(told[0]);
        if (process_ < 0 || dataLink_.empty()) throw std::runtime_error("the chain's process did not start");
    }
    ~ChainProcess() {
        close(alive_);
        waitpid(process_, nullptr, 0);
    }
    ChainProcess(const ChainProcess&) = delete;
    ChainProcess& operator=(const ChainProcess&) = delete;

    [[nodiscard]] const std::string& dataLink() const { return dataLink_; }

private:
    // Ends when the other side of `alive` has gone.
    static int serve(const sandbox::chain::ChainOptions& options,
                     const std::function<void(sandbox::chain::DemoChain&)>& fill, int told, int alive) {
        try {
            sandbox::chain::DemoChain chain({.chain = options});
            fill(chain);
            const std::string link = chain.dataLink();
            if (write(told, link.data(), link.size()) != static_cast<ssize_t>(link.size())) return 1;
            close(told);
            char letter = 0;
            while (read(alive, &letter, 1) > 0) {
            }
            return 0;
        } catch (const std::exception& e) {
            std::cerr << e.what() << std::endl;
            return 1;
        }
    }

    pid_t process_ = -1;
    int alive_ = -1;
    std::string dataLink_;
};

}  // namespace torvik::bench
