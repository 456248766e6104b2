// One client from its acceptance to its end. Its own thread logs it in and answers its requests; a second one reads the
// socket meanwhile.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "sandbox/server/bulk_load.h"
#include "sandbox/server/channel.h"
#include "sandbox/server/inbox.h"
#include "sandbox/server/logins.h"
#include "sandbox/server/reply_writer.h"
#include "sandbox/server/rpc.h"
#include "sandbox/server/server.h"
#include "sandbox/tds/login.h"

namespace sandbox::server {

// What the connections of one server share.
struct ServerContext {
    const ServerOptions& options;
    Engine& engine;
    Faults& faults;
    const Logins& logins;
    const TlsContext* tls;  // none where TLS is not supported
};

class Connection : private StatementWatch {
public:
    // hangs: it is never answered.
    Connection(const ServerContext& server, Socket socket, std::uint64_t id, bool hangs);

    // The connection's thread. Returns when it is closed and its session has ended; raises nothing.
    void run();
    void cut();  // from any thread: both of its threads end

    [[nodiscard]] std::optional<ConnectionInfo> info() const;  // none before the login
    [[nodiscard]] std::uint64_t id() const { return id_; }

private:
    void letIn(const tds::Login& login);
    void serve();
    void read();
    bool handle(tds::Packet packet);
    [[nodiscard]] std::optional<std::vector<std::uint8_t>> collect(tds::Packet first);
    // passOver: reads what has still to come of a request that is not executed.
    bool answer(RequestInfo request, const std::function<void()>& execute, const std::function<void()>& passOver = {});
    bool showFault(const Faults::Verdict& verdict, const std::function<void()>& execute,
                   const std::function<void()>& passOver);
    void begins(std::string_view text) override;
    void ended() noexcept override;
    void unwatched(const std::function<void()>& action);  // what the client did not ask for
    void cutByFault();
    void tellLog(bool cut);
    void batch(const std::string& text);
    void calls(const std::vector<tds::Call>& calls);
    void transaction(const tds::TransactionRequest& request);
    void reset(std::uint8_t status);
    bool statementEnded();
    void failInside(const std::exception& e);
    [[nodiscard]] RequestInfo request(RequestKind kind, std::string text);

    ServerContext server_;
    const std::uint64_t id_;
    const bool hangs_;
    Channel channel_;
    ReplyWriter reply_;
    std::unique_ptr<Session> session_;
    Inbox inbox_{[this] { session_->cancel(); }};
    std::unique_ptr<CallHandler> calls_;
    std::unique_ptr<BulkLoad> bulk_;
    std::string language_;         // that the login asked for
    bool attentionTaken_ = false;  // the running request has read its attention itself
    bool cutShort_ = false;        // the running request did not come to its end
    std::size_t largestPacket_ = tds::kDefaultPacket;
    LoggedRequest running_;
    bool logged_ = false;
    std::uint64_t errorsBefore_ = 0;  // the running request
    std::uint64_t statements_ = 0;    // begun, since the login
    int depth_ = 0;                   // statements in hand, each within the one before
    int cutBelow_ = 0;                // a fault cuts the connection when the statement at this depth ends; 0: none

    mutable std::mutex infoMutex_;
    std::optional<ConnectionInfo> info_;
};

}  // namespace sandbox::server
