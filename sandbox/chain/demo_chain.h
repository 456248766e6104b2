// A made-up chain on running servers: the back office and each till are a server of their own, so that one till can be
// stopped, slowed or cut while the others go on. Used by torvik-sandbox --chain and by tests of whole runs. It can also
// stand on one SQL Server elsewhere, a database each, which goes when the chain does.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "sandbox/chain/chain_model.h"
#include "sandbox/chain/chain_rows.h"
#include "sandbox/server/server.h"

namespace sandbox::chain {

// A SQL Server elsewhere, and a login that may create databases.
struct OtherServer {
    std::string address;  // as a till's row in the back office names it: "host,port"
    std::string user;
    std::string password;
    std::string prefix;  // of the names of the databases
    // Runs a batch in a database; raises when the server answers an error.
    std::function<void(const std::string& database, std::string_view batch)> run;
    std::function<void(const std::string& database)> drop;
};

struct DemoChainOptions {
    ChainOptions chain;
    std::optional<Chain> model;  // a chain that is made already, in place of `chain`
    std::string host = "127.0.0.1";
    std::string firstTillHost;                     // the tills' addresses count up from it; empty: all on `host`
    std::uint16_t port = 0;                        // of the back office; the tills take any free ones
    std::string saPassword = "Torvik-Sandbox-1";   // of every server
    std::optional<std::filesystem::path> dataDir;  // none: in memory. A chain found there is opened, not made again
    std::optional<OtherServer> elsewhere;          // none: servers of its own
};

class DemoChain {
public:
    static constexpr const char* kBackOfficeDatabase = "TorvikBackOffice";
    static constexpr const char* kTillUser = "pos";
    static constexpr const char* kTillPassword = "Pos-1";

    // Every server listens and every database is filled when it returns. Raises std::runtime_error with the server's
    // text when a script fails.
    explicit DemoChain(DemoChainOptions options);
    ~DemoChain();
    DemoChain(DemoChain&&) noexcept;
    DemoChain& operator=(DemoChain&&) noexcept;

    [[nodiscard]] const Chain& model() const { return chain_; }
    [[nodiscard]] Chain& model() { return chain_; }
    // Whether the servers are its own. Without one, backOffice() and till() raise std::logic_error.
    [[nodiscard]] bool isSandbox() const { return !options_.elsewhere; }
    [[nodiscard]] Server& backOffice();
    [[nodiscard]] Server& till(std::size_t index);
    [[nodiscard]] TillAddress addressOf(std::size_t index) const;

    // "Provider=...;Data Source=host,port;..." of the back office, as a data-link file holds it.
    [[nodiscard]] std::string dataLink() const;

    // Runs a batch in the back office's or a till's database; raises std::runtime_error with the first error's text.
    void runInBackOffice(std::string_view batch);
    void runInTill(std::size_t index, std::string_view batch);

    // One more day of sales at a till, in the model and in its database.
    void sellAnotherDay(std::size_t index);

private:
    class MadeDatabases;
    [[nodiscard]] std::unique_ptr<Server> start(const std::string& name, const std::string& host, std::uint16_t port);
    [[nodiscard]] std::string tillHost(std::size_t index) const;
    void startServers();
    void makeElsewhere();

    DemoChainOptions options_;
    Chain chain_;
    std::string backOfficeDatabase_ = kBackOfficeDatabase;
    std::unique_ptr<MadeDatabases> made_;
    std::unique_ptr<Server> backOffice_;
    std::vector<std::unique_ptr<Server>> tills_;
};

}  // namespace sandbox::chain
