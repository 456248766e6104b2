// The faults that a server can be told to show, and the counters and observers by which a test aims them. They are
// switches of this library: nothing in T-SQL reaches them. All members may be called from any thread at any time.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/store/values/error.h"
#include "sandbox/tsql/run/engine.h"

namespace sandbox {

enum class RequestKind { Batch, Call, Bulk, Transaction };

// One request as observers and rules see it.
struct RequestInfo {
    std::uint64_t connection = 0;  // 1-based, in the order of acceptance
    std::string user, host, program, database;
    RequestKind kind = RequestKind::Batch;
    // The batch; a call's procedure, with the text that it prepares or executes; the INSERT BULK of a bulk load; a
    // transaction request as T-SQL, such as "COMMIT TRANSACTION".
    std::string text;
    std::uint64_t number = 0;        // 1-based, on its connection
    std::uint64_t serverNumber = 0;  // 1-based, on the server since its start
};

// Which requests, or statements, a rule means. An empty or zero member matches all.
struct RequestMatch {
    std::string user, program, database;  // compared without case
    std::string textContains;             // compared without case
    std::uint64_t number = 0;             // the N-th of its connection
    std::optional<RequestKind> kind;
    std::uint64_t connection = 0;
};

// What a rule counts and meets.
enum class FaultLevel {
    Request,    // what the client sends: a batch, a message of calls, a bulk load's rows, a transaction's step
    Statement,  // what runs: each statement of a batch, procedure or text, as StatementWatch tells them
};

// What happens to a request, or statement, that a rule meets.
enum class FaultAction {
    DropBefore,  // the connection is cut and it is not executed
    DropAfter,   // it is executed to its end, then the connection is cut without a reply
    Fail,        // it is not executed; the message is its answer. A statement fails as by itself: TRY catches it
    Delay,       // it waits before it is executed
    Hang,        // it is neither executed nor answered; the connection stays open until somebody closes it
};

struct FaultRule {
    RequestMatch match;
    FaultAction action = FaultAction::DropBefore;
    FaultLevel level = FaultLevel::Request;
    std::uint64_t skip = 0;              // so many matching ones pass first
    std::uint64_t times = 1;             // then so many are met; 0: all
    Message message;                     // Fail. Severity 20 and above also closes the connection
    bool rollBack = false;               // Fail: the transaction is rolled back and the batch ends, as by a deadlock
    std::chrono::milliseconds delay{0};  // Delay
};

// A request that has been answered, or has lost its connection.
struct LoggedRequest {
    RequestInfo request;
    std::vector<std::string> statements;  // texts of those that began, in order
    bool failed = false;                  // an error was told
    bool cut = false;                     // the connection was gone at its end
};

class Faults {
public:
    explicit Faults(Engine& engine) : engine_(engine) {}

    // The next `count` logins are answered with the error and closed; 18456 follows it where it is another one.
    void refuseLogins(int count, Message error);
    // Each login of the user is refused with 18456 until allowUser.
    void refuseUser(const std::string& user);
    void allowUser(const std::string& user);
    // The next `count` connections are accepted and never answered.
    void hangLogins(int count);

    // A rule counts from now on. Several rules may meet one request: all delays are waited for, then the first other
    // action is taken. Gives the number by which remove() knows the rule.
    int add(FaultRule rule);
    void remove(int rule);

    // The connection that reaches the number of bytes sent since this call is cut at exactly that byte, once.
    void dropAfterBytes(std::uint64_t bytes, const std::string& program = {});
    // The connection is cut when so many more statements have ended, on the server or for one program, before the next
    // one begins. With a message, the batch ends with that error instead. 0: before the next request's first one.
    void dropAfterStatements(std::uint64_t statements, std::optional<Message> message = {},
                             const std::string& program = {});
    // Every request waits so long before it is executed.
    void delayRequests(std::chrono::milliseconds delay);
    // After so many more writing statements each further one fails with 9002, until freeDisk. Temporary tables and
    // reading need no room; a failed statement leaves its transaction as it was.
    void fillDisk(std::int64_t writes = 0);
    void freeDisk();

    // Takes all faults back; counters, observers and the log stay.
    void clear();

    // From keepLog() on every request is logged at its end, in the order in which they end.
    void keepLog();
    [[nodiscard]] std::vector<LoggedRequest> log() const;

    // Called for each request before it is executed, on its connection's thread. Gives a number for forget(). An
    // observer must not call observe or forget.
    int observe(std::function<void(const RequestInfo&)> observer);
    void forget(int observer);

    [[nodiscard]] std::uint64_t requests() const;    // of all connections since the server's start
    [[nodiscard]] std::uint64_t statements() const;  // statement ends told to clients, likewise
    [[nodiscard]] std::uint64_t logins() const;      // successful ones

    // What the connections ask.
    struct Verdict {
        std::chrono::milliseconds delay{0};
        std::optional<FaultAction> action;
        Message message;
        bool rollBack = false;
    };
    struct StatementVerdict {
        bool drop = false;
        std::optional<Message> message;
    };
    [[nodiscard]] bool takeHang();
    [[nodiscard]] std::optional<Message> takeLoginRefusal(const std::string& user);
    void loggedIn();
    [[nodiscard]] Verdict meet(RequestInfo& request);  // counts and numbers it, tells the observers
    [[nodiscard]] bool watchesStatements() const { return watchesStatements_; }
    // A statement that begins: the request that it belongs to, with the statement's own text and number.
    [[nodiscard]] Verdict meetStatement(const RequestInfo& statement);
    void ended(LoggedRequest request);
    [[nodiscard]] StatementVerdict statementEnded(const std::string& program);
    // How many of `bytes` may be sent before the connection is to be cut; none: all of them.
    [[nodiscard]] std::optional<std::uint64_t> sending(std::uint64_t bytes, const std::string& program);

private:
    struct Active {
        int id;
        FaultRule rule;
        std::uint64_t met = 0;
    };
    struct Observer {
        int id;
        std::function<void(const RequestInfo&)> call;
    };

    [[nodiscard]] Verdict metRules(FaultLevel level, const RequestInfo& met);  // with the lock held
    void tellWatches();                                                        // likewise

    Engine& engine_;
    mutable std::mutex mutex_;
    std::mutex observerMutex_;
    std::atomic<bool> watchesStatements_ = false;
    std::optional<std::vector<LoggedRequest>> log_;
    int nextId_ = 1;
    int loginsToRefuse_ = 0;
    Message loginError_;
    int loginsToHang_ = 0;
    std::set<std::string> refusedUsers_;  // in lower case
    std::vector<Active> rules_;
    std::vector<Observer> observers_;
    std::optional<std::uint64_t> bytesLeft_;
    std::string bytesProgram_;
    std::optional<std::uint64_t> statementsLeft_;
    std::optional<Message> statementMessage_;
    std::string statementProgram_;
    std::chrono::milliseconds delay_{0};
    std::uint64_t requests_ = 0;
    std::uint64_t statements_ = 0;
    std::uint64_t logins_ = 0;
};

}  // namespace sandbox
