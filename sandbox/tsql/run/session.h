// One client's session on a server: its current database, settings, temporary tables and transaction, and the entry
// points that the wire protocol calls. A session is used by one thread at a time; cancel() may come from another.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/store/values/value.h"
#include "sandbox/tsql/run/reply.h"

namespace sandbox {

class Engine;  // the databases and everything sessions share (sandbox/tsql/run/engine.h)
struct SessionState;

struct LoginInfo {
    std::string user;
    std::string database;  // empty: master
    std::string host;
    std::string program;
    std::string language;  // empty: us_english
    bool odbc = true;      // the client is an ODBC driver, or settles its session as one does
};

// A parameter of a call: by name, or by place where name is empty.
struct Argument {
    std::string name;  // with its "@"
    Typed value;
    bool output = false;
    bool useDefault = false;  // fDefaultValue
};

// The columns that an INSERT BULK statement announced, in the order in which the rows will come.
struct BulkTarget {
    struct Column {
        std::string name;
        Type type;
        bool nullable = true;
        bool identity = false;
    };
    std::vector<Column> columns;
};

// Is told of each statement that does something as it begins and as it has ended, those of procedures and texts too,
// and whatever NOCOUNT says. Control flow and declarations do nothing by themselves; a bulk load and a transaction
// request are a statement each.
class StatementWatch {
public:
    virtual ~StatementWatch() = default;
    // Its text, none for a transaction request. Raises SqlError: the statement fails with it and is not run.
    virtual void begins(std::string_view text) = 0;
    virtual void ended() noexcept = 0;  // once for each that begins has let run, whatever became of it
};

class Session {
public:
    // Raises SqlError 4060 when the database does not exist.
    Session(Engine& engine, const LoginInfo& login);
    ~Session();  // rolls an open transaction back and drops the temporary tables
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    void watch(StatementWatch* watch);  // outlives the session, or is none

    // Runs a batch to its end. Errors go to the reply; nothing is thrown but for Effect::Connection.
    void batch(std::string_view text, Reply& reply);

    // Calls a stored procedure, the user's or a system procedure that T-SQL can call (sp_executesql and others).
    void call(const std::string& procedure, std::span<const Argument> arguments, Reply& reply);

    // Runs a text with declared parameters, as sp_executesql and prepared statements do. declarations: "@a int, @b
    // varchar(10) OUTPUT".
    void execute(std::string_view text, std::string_view declarations, std::span<const Argument> arguments,
                 Reply& reply);

    // The result columns that the first row-returning statement of a text would have, without running it; empty when
    // none. Errors are thrown as SqlError.
    [[nodiscard]] std::vector<ResultColumn> describe(std::string_view text, std::string_view declarations);

    // INSERT BULK: beginBulk parses and binds the statement and says which columns are to come (each request's rows
    // follow as one BULK LOAD message); bulkRow stores one row; endBulk makes the load final and gives the count.
    // Each may throw SqlError, and StatementCancelled (sandbox/store/databases/locks.h) after cancel(); the load is
    // then undone.
    [[nodiscard]] BulkTarget beginBulk(std::string_view statement);
    void bulkRow(std::span<const Value> cells);
    [[nodiscard]] std::int64_t endBulk();
    void abortBulk();

    // Transaction manager requests ([MS-TDS] 2.2.6.9). name may be empty.
    void beginTransaction(const std::string& name, Reply& reply);
    void commitTransaction(bool beginAnother, Reply& reply);
    void rollbackTransaction(const std::string& name, bool beginAnother, Reply& reply);
    void saveTransaction(const std::string& name, Reply& reply);

    void cancel();  // attention: the running statement ends as soon as it can, and the batch with it
    [[nodiscard]] bool cancelled() const;  // whether the last batch ended so
    void reset(bool keepTransaction);      // the RESETCONNECTION bit of a request

    [[nodiscard]] int spid() const;
    [[nodiscard]] const std::string& database() const;

private:
    std::unique_ptr<SessionState> state_;
};

}  // namespace sandbox
