// A made-up chain on running servers: the back office and each till are a server of their own, so that one till can be
// stopped, slowed or cut while the others go on. Used by torvik-sandbox --chain and by tests of whole runs.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "sandbox/chain/chain_model.h"
#include "sandbox/chain/chain_rows.h"
#include "sandbox/server/server.h"

namespace sandbox::chain {

struct DemoChainOptions {
    ChainOptions chain;
    std::optional<Chain> model;  // a chain that is made already, in place of `chain`
    std::string host = "127.0.0.1";
    std::uint16_t port = 0;                        // of the back office; the tills take any free ones
    std::string saPassword = "Torvik-Sandbox-1";   // of every server
    std::optional<std::filesystem::path> dataDir;  // none: in memory. A chain found there is opened, not made again
};

class DemoChain {
public:
    static constexpr const char* kBackOfficeDatabase = "TorvikBackOffice";
    static constexpr const char* kTillUser = "pos";
    static constexpr const char* kTillPassword = "Pos-1";

    // Every server listens and every database is filled when it returns. Raises std::runtime_error with the server's
    // text when a script fails.
    explicit DemoChain(DemoChainOptions options);

    [[nodiscard]] const Chain& model() const { return chain_; }
    [[nodiscard]] Chain& model() { return chain_; }
    [[nodiscard]] Server& backOffice() { return *backOffice_; }
    [[nodiscard]] Server& till(std::size_t index) { return *tills_.at(index); }
    [[nodiscard]] TillAddress addressOf(std::size_t index) const;

    // "Provider=...;Data Source=host,port;..." of the back office, as a data-link file holds it.
    [[nodiscard]] std::string dataLink() const;

    // Runs a batch in the back office's or a till's database; raises std::runtime_error with the first error's text.
    void runInBackOffice(std::string_view batch);
    void runInTill(std::size_t index, std::string_view batch);

    // One more day of sales at a till, in the model and in its database.
    void sellAnotherDay(std::size_t index);

private:
    [[nodiscard]] std::unique_ptr<Server> start(const std::string& name, std::uint16_t port);

    DemoChainOptions options_;
    Chain chain_;
    std::unique_ptr<Server> backOffice_;
    std::vector<std::unique_ptr<Server>> tills_;
};

}  // namespace sandbox::chain
