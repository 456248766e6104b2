// A stand-in SQL Server on a port of its own: databases, logins, connections and their faults. Tests start one for each
// server that they need; torvik-sandbox starts them for people. docs/sandbox.md tells what it covers.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "sandbox/server/faults.h"
#include "sandbox/tsql/run/engine.h"

namespace sandbox {

enum class TlsMode {
    NotSupported,  // clients that insist on encryption go away
    Offered,       // as a server without forced encryption: the login alone is encrypted unless the client asks for all
    Required,      // clients that cannot encrypt are refused
};

struct ServerOptions {
    std::string host = "127.0.0.1";
    std::uint16_t port = 0;                     // 0: any free one
    std::string saPassword;                     // empty is a password like any other
    std::map<std::string, std::string> logins;  // further logins and their passwords; names are compared without case
    EngineOptions engine;
    TlsMode tls = TlsMode::Offered;
    std::filesystem::path certificateFile;  // PEM; none: one is made and signed by itself at start
    std::filesystem::path keyFile;
    std::size_t maxConnections = 32767;        // further ones are closed at once
    std::size_t maxMessageBytes = 512U << 20;  // a longer request closes its connection
};

// A connection that has logged in.
struct ConnectionInfo {
    std::uint64_t id = 0;  // 1-based, in the order of acceptance
    int spid = 0;
    std::string user, host, program, database;
    std::uint64_t requests = 0;
    std::uint64_t statements = 0;
};

class Server {
public:
    using Options = ServerOptions;

    // Listens when it returns. Raises std::system_error where the port cannot be had, std::runtime_error where the
    // certificate cannot be read.
    explicit Server(Options options);
    // Cuts all connections, waits for their threads, then ends the engine.
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    [[nodiscard]] std::uint16_t port() const;
    [[nodiscard]] const std::string& host() const;
    [[nodiscard]] Engine& engine();
    [[nodiscard]] Faults& faults();

    [[nodiscard]] std::size_t connectionCount() const;  // logged in or not
    [[nodiscard]] std::vector<ConnectionInfo> connections() const;

    // Cuts the connections as a pulled cable would, those of one program or all, and returns when their sessions have
    // ended. Called by an observer, it does not wait.
    void dropConnections(const std::string& program = {});
    // New connections are refused by the operating system until startListening, which takes the same port again.
    // Connections that stand go on.
    void stopListening();
    void startListening();

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace sandbox
