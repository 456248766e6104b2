// What a session is made of, shared by the interpreter's files: its connection, settings, last error and counts, caught
// errors, prepared texts. Internal to sandbox/tsql.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "sandbox/store/databases/connection.h"
#include "sandbox/store/functions/sql_functions.h"
#include "sandbox/tsql/bind/bind.h"
#include "sandbox/tsql/execute/execute.h"
#include "sandbox/tsql/run/engine_shared.h"
#include "sandbox/tsql/run/interpreter_frame.h"
#include "sandbox/tsql/run/session.h"
#include "sandbox/tsql/run/session_settings.h"
#include "sandbox/tsql/run/transaction_state.h"

namespace sandbox {

struct BulkLoad;

// Tells a watch, where there is one, of a statement from its beginning to its end.
class WatchedStatement {
public:
    WatchedStatement(StatementWatch* watch, std::string_view text) : watch_(watch) {
        if (watch_) watch_->begins(text);
    }
    ~WatchedStatement() {
        if (watch_) watch_->ended();
    }
    WatchedStatement(const WatchedStatement&) = delete;
    WatchedStatement& operator=(const WatchedStatement&) = delete;

private:
    StatementWatch* watch_;
};

// The texts that a session has run lately, parsed and bound. Least recently used goes first.
class UnitCache {
public:
    [[nodiscard]] std::shared_ptr<Unit> find(const std::string& key);
    void put(const std::string& key, std::shared_ptr<Unit> unit);
    void clear();

private:
    static constexpr std::size_t kMost = 400;
    using Order = std::list<std::string>;

    std::unordered_map<std::string, std::pair<std::shared_ptr<Unit>, Order::iterator>> units_;
    Order order_;  // latest first
};

struct SessionState {
    SessionState(Engine& engine, const LoginInfo& info);
    ~SessionState();
    SessionState(const SessionState&) = delete;
    SessionState& operator=(const SessionState&) = delete;

    Engine& engine;
    EngineShared& shared;
    LoginInfo login;
    int spid = 0;
    std::unique_ptr<Connection> connection;

    Settings settings;
    std::string identityInsert;  // "database.schema.table" folded, empty: none

    TransactionState transaction;
    std::uint64_t descriptor = 0;  // of the open transaction

    int error = 0;                              // @@ERROR
    std::int64_t rowCount = 0;                  // @@ROWCOUNT
    std::optional<std::int64_t> identity;       // @@IDENTITY
    std::optional<std::int64_t> batchIdentity;  // SCOPE_IDENTITY() of the last batch: the next one begins with it
    int fetchStatus = 0;                        // @@FETCH_STATUS
    std::int64_t cursorRows = 0;                // @@CURSOR_ROWS
    std::vector<CaughtError> caught;            // of the CATCH blocks being run, innermost last
    int tries = 0;                              // open TRY blocks of all frames
    Frame* frame = nullptr;                     // the one that runs
    bool cancelled = false;                     // the last batch was
    std::optional<int> collecting;              // the rows of an INSERT ... EXEC, begun at this @@TRANCOUNT

    UnitCache texts;
    std::map<std::pair<int, std::int32_t>, std::pair<std::shared_ptr<const ObjectDef>, std::shared_ptr<Unit>>>
        procedures;

    std::map<std::string, std::shared_ptr<Cursor>> cursors;  // global ones by folded name

    std::unique_ptr<BulkLoad> bulk;
    StatementWatch* watch = nullptr;

    // A number that changes whenever a name may have come to mean something else.
    [[nodiscard]] std::uint64_t stamp();
    void definitionsChanged() { ++stamp_; }     // temporary tables came or went
    void useDatabase(const std::string& name);  // 911 where there is none
    [[nodiscard]] const std::string& database() const { return connection->current()->name(); }
    void tellProcess();  // its row of the process list, brought up to date
    void describe(Process& process) const;
    void reset(bool keepTransaction);               // as a new login would find it
    void startRequest(const std::string& command);  // its row shows a running batch
    void endRequest();
    void startStatement();  // clock and warnings of the functions
    void applySettings();   // tells connection and functions what SET has changed

private:
    [[nodiscard]] std::int32_t statusOf(bool global, std::string_view cursor) const;
    void connectFunctions();

    std::uint64_t stamp_ = 1;
    std::shared_ptr<const Catalog> seen_;  // the current database's at the last stamp
};

}  // namespace sandbox
