// One session's way to the databases: a SQLite connection with the databases attached that it uses, its transaction,
// its temporary tables and its view of the catalogue. Used by one thread at a time, but for interrupt().
//
// Reading is committed reading: until a transaction writes, no SQLite transaction is open, so that each statement sees
// the latest committed state. The first write takes the database's writer lock, held until the transaction ends.
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "sandbox/store/databases/catalog.h"
#include "sandbox/store/databases/database.h"
#include "sandbox/store/functions/sql_functions.h"

struct sqlite3;
struct sqlite3_stmt;

namespace sandbox {

class Connection;

// A prepared statement out of the connection's cache; it goes back there, reset, when this ends.
class Statement {
public:
    Statement(Statement&& other) noexcept;
    Statement& operator=(Statement&&) = delete;
    ~Statement();

    [[nodiscard]] sqlite3_stmt* get() const { return statement_; }
    // True while there is a row. Raises what a function inside the statement has raised, StatementCancelled, or
    // SqliteError.
    bool step();
    void reset();

private:
    friend class Connection;
    Statement(Connection& connection, std::string sql, sqlite3_stmt* statement);

    Connection* connection_;
    std::string sql_;
    sqlite3_stmt* statement_;
};

// What SQLite refused. code is the extended result code: SQLITE_CONSTRAINT_UNIQUE and so on.
class SqliteError : public std::exception {
public:
    SqliteError(int resultCode, std::string message) : code(resultCode), text(std::move(message)) {}
    [[nodiscard]] const char* what() const noexcept override { return text.c_str(); }

    int code;
    std::string text;
};

// An object as a name finds it.
struct FoundObject {
    std::shared_ptr<const ObjectDef> object;
    std::shared_ptr<Database> database;  // attached; its attachedAs is the object's SQLite schema
};

// How a connection finds the catalogue views of a database; nullptr where there is none of that name. schema empty:
// where the bare name stands for the view.
using ViewFinder = std::function<std::shared_ptr<const ObjectDef>(const std::shared_ptr<Database>& database,
                                                                  std::string_view schema, std::string_view name)>;

class Connection {
public:
    Connection(Databases& databases, int spid);
    ~Connection();  // rolls back
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    [[nodiscard]] sqlite3* handle() const { return sqlite_; }
    [[nodiscard]] Databases& databases() const { return databases_; }
    [[nodiscard]] int spid() const { return spid_; }

    [[nodiscard]] Statement prepare(const std::string& sql);
    void run(const std::string& sql);  // no rows, no parameters

    // ---- names
    void use(std::shared_ptr<Database> database);  // the current database; master at first
    [[nodiscard]] const std::shared_ptr<Database>& current() const { return current_; }
    // The database of that name, attached; empty: the current one; nullptr when there is none.
    [[nodiscard]] std::shared_ptr<Database> attach(std::string_view database);
    // schema empty: dbo, then sys. "#x" and "@x" are this session's temporary tables whatever the database. Catalogue
    // views are found like tables. Empty when there is none.
    [[nodiscard]] std::optional<FoundObject> find(std::string_view database, std::string_view schema,
                                                  std::string_view name);
    // The same from one text (object_name.h).
    [[nodiscard]] std::optional<FoundObject> findByText(std::string_view text);
    // The catalogue as this session sees it: with its own uncommitted changes.
    [[nodiscard]] std::shared_ptr<const Catalog> catalog(Database& database) const;

    // ---- temporary tables: each scope's end drops what was made in it (a procedure, a batch for table variables)
    void beginTemporaryScope();
    void endTemporaryScope();
    void dropTableVariables();  // of the innermost scope
    void dropAllTemporaryTables();
    [[nodiscard]] const std::shared_ptr<Database>& temporary() const { return temporaryScopes_.back(); }
    [[nodiscard]] const std::vector<std::shared_ptr<Database>>& temporaryScopes() const { return temporaryScopes_; }
    // Whether a database's catalogue views list them: tempdb's do.
    [[nodiscard]] bool showsTemporary(const Database& database) const;

    // ---- transactions
    void begin();
    void commit();                  // SqliteError where SQLite cannot: then it is rolled back
    void rollback();                // also ends every Write in hand
    void save(std::size_t number);  // a save point; numbers rise within a transaction
    void rollbackTo(std::size_t number);
    [[nodiscard]] bool inTransaction() const { return inTransaction_; }

    // Takes the writer lock without writing (lock hints, serializable reading). Outside of a transaction it does
    // nothing.
    void lockForWriting(Database& database);
    void setLockTimeout(std::optional<std::chrono::milliseconds> timeout) { lockTimeout_ = timeout; }
    [[nodiscard]] std::optional<std::chrono::milliseconds> lockTimeout() const { return lockTimeout_; }
    void releaseSessionLocks();  // the application locks that no transaction owns

    // ---- catalogue changes; only inside a Write
    void put(Database& database, ObjectDef object);
    void erase(Database& database, const ObjectDef& object);
    // Replaces an object by one with the same id, under another name perhaps.
    void replace(Database& database, const ObjectDef& before, ObjectDef after);
    void identityUsed(Database& database, std::int32_t objectId);  // its value is stored when the transaction commits
    // The next value of a database's timestamp columns (tempdb's for temporary tables), in storage form.
    [[nodiscard]] std::array<std::uint8_t, 8> nextRowVersion(Database& database);
    // Sets an identity value such that a roll-back brings the old one back: truncating, reseeding.
    void resetIdentity(Database& database, std::int32_t objectId, std::optional<std::int64_t> value);

    // ---- cancelling
    void interrupt();       // from any thread: the running SQLite statement or lock wait raises StatementCancelled
    void clearInterrupt();  // before a batch
    [[nodiscard]] const std::atomic<bool>& interrupted() const { return cancelled_; }
    // Raises what the last SQLite call's failure means: a function's own error, StatementCancelled, 1205 where another
    // session has changed what this transaction has read, SqliteError.
    [[noreturn]] void raiseFailure();

    // Without one there are no catalogue views (sandbox/store/views/system_views.h sets it).
    void setViewFinder(ViewFinder finder) { findView_ = std::move(finder); }

    // What the T-SQL functions see of the session, which fills it in.
    [[nodiscard]] FunctionContext& functions() { return functions_; }

private:
    friend class Statement;
    friend class Write;

    using Catalogs = std::map<Database*, std::shared_ptr<const Catalog>>;
    struct SavePoint {
        std::string name;    // in SQLite
        std::size_t number;  // the user's, or kStatement
        Catalogs catalogs;   // as they were
        std::size_t resets;  // how many identities had been reset
    };

    void exec(const std::string& sql);  // past the cache, and whether or not there was an attention
    void attachDatabase(const std::shared_ptr<Database>& database);
    void detachIdle(std::size_t keep);
    void dropTemporary(Database& scope, bool variablesOnly);
    void makeReusable(std::string sql, sqlite3_stmt* statement);

    struct IdentityReset {
        std::shared_ptr<Database> database;
        std::int32_t objectId;
        std::optional<std::int64_t> before;
    };

    void startWriting(Database& database);
    void undoIdentityResets(std::size_t keep);
    void pushSavePoint(std::size_t number);
    void finishWrite(bool keep);
    void resetBusyStatements();
    void commitSqlite();
    void rollbackSqlite();
    void forgetTransaction();

    Databases& databases_;
    int spid_;
    sqlite3* sqlite_ = nullptr;
    std::list<std::shared_ptr<Database>> attached_;  // least recently used first
    std::vector<std::shared_ptr<Database>> temporaryScopes_;
    std::shared_ptr<Database> current_;
    ViewFinder findView_;
    std::list<std::pair<std::string, sqlite3_stmt*>> idle_;  // prepared statements, most recently used first
    std::unordered_multimap<std::string_view, std::list<std::pair<std::string, sqlite3_stmt*>>::iterator> idleByText_;

    bool inTransaction_ = false;      // the user's
    bool sqliteTransaction_ = false;  // SQLite's: from the first write on
    int writeDepth_ = 0;              // Writes in hand
    std::vector<SavePoint> savePoints_;
    std::size_t lastSavePoint_ = 0;
    Catalogs changed_;
    std::set<std::pair<Database*, std::int32_t>> usedIdentities_;
    std::set<Database*> usedRowVersions_;
    std::vector<IdentityReset> identityResets_;
    std::vector<std::shared_ptr<Database>> retiredScopes_;  // their tables may come back by a roll-back
    std::optional<std::chrono::milliseconds> lockTimeout_;
    std::atomic<bool> cancelled_{false};
    FunctionContext functions_;
};

// One writing statement: locks the database, opens the SQLite transaction when none is open, and sets a save point. The
// statement stays only if done() was called; outside of a user's transaction done() commits.
class Write {
public:
    Write(Connection& connection, Database& database);
    ~Write();
    Write(const Write&) = delete;
    Write& operator=(const Write&) = delete;

    void done();

private:
    Connection& connection_;
    bool finished_ = false;
};

}  // namespace sandbox
