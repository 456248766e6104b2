// One session's way to the databases: a SQLite connection with the databases attached that it uses, its transaction,
// its temporary tables and its view of the catalogue. Used by one thread at a time, but for interrupt().
//
// Reading is committed reading: until a transaction writes, no SQLite transaction is open, so that each statement sees
// the latest committed state. The first write takes the database's writer lock, held until the transaction ends.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "sandbox/store/catalog.h"
#include "sandbox/store/database.h"

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
    // The database of that name, attached; nullptr when there is none.
    [[nodiscard]] std::shared_ptr<Database> attach(std::string_view database);
    // schema empty: dbo, then sys. "#x" and "@x" are this session's temporary tables whatever the database. Catalogue
    // views are found like tables. Empty when there is none.
    [[nodiscard]] std::optional<FoundObject> find(std::string_view database, std::string_view schema,
                                                  std::string_view name);
    // The catalogue as this session sees it: with its own uncommitted changes.
    [[nodiscard]] std::shared_ptr<const Catalog> catalog(const Database& database) const;

    // ---- temporary tables: each scope's end drops what was made in it (a procedure, a batch for table variables)
    void beginTemporaryScope();
    void endTemporaryScope();
    void dropAllTemporaryTables();
    [[nodiscard]] const std::shared_ptr<Database>& temporary() const { return temporaryScopes_.back(); }

    // ---- transactions
    void begin();
    void commit();                  // SqliteError where SQLite cannot: then it is rolled back
    void rollback();                // also ends every Write in hand
    void save(std::size_t number);  // a save point; numbers rise within a transaction
    void rollbackTo(std::size_t number);
    [[nodiscard]] bool inTransaction() const { return inTransaction_; }
    [[nodiscard]] bool hasWritten() const { return sqliteTransaction_; }

    // Takes the writer lock without writing (lock hints, serializable reading). Outside of a transaction it does
    // nothing.
    void lockForWriting(Database& database);
    void setLockTimeout(std::optional<std::chrono::milliseconds> timeout) { lockTimeout_ = timeout; }

    // ---- catalogue changes; only inside a Write
    void put(Database& database, ObjectDef object);
    void erase(Database& database, const ObjectDef& object);
    void identityUsed(Database& database, std::int32_t objectId);  // its value is stored when the transaction commits

    // ---- cancelling
    void interrupt();       // from any thread: the running SQLite statement or lock wait raises StatementCancelled
    void clearInterrupt();  // before a batch
    [[nodiscard]] bool interrupted() const { return cancelled_; }

    // Where a function called by SQLite leaves its exception; Statement::step throws it on.
    void setPendingError(std::exception_ptr error) { pendingError_ = std::move(error); }
    [[nodiscard]] std::exception_ptr takePendingError();

private:
    friend class Statement;
    friend class Write;

    using Catalogs = std::map<const Database*, std::shared_ptr<const Catalog>>;
    struct SavePoint {
        std::string name;    // in SQLite
        std::size_t number;  // the user's, or kStatement
        Catalogs catalogs;   // as they were
    };

    void startSqliteTransaction();
    void finishSqliteTransaction();
    void pushSavePoint(std::size_t number);
    void storeIdentities();
    void detachIdle();
    void registerSystemView(Database& database, const std::string& view);

    Databases& databases_;
    int spid_;
    sqlite3* sqlite_ = nullptr;
    std::map<int, std::shared_ptr<Database>> attached_;  // by id
    std::list<int> attachedOrder_;                       // least recently used first
    std::vector<std::shared_ptr<Database>> temporaryScopes_;
    std::unordered_map<std::string, std::vector<sqlite3_stmt*>> cache_;
    std::list<std::string> cacheOrder_;

    bool inTransaction_ = false;      // the user's
    bool sqliteTransaction_ = false;  // SQLite's: from the first write on
    std::vector<SavePoint> savePoints_;
    std::size_t pendingSavePoints_ = 0;  // of savePoints_, those that SQLite does not have yet
    Catalogs changed_;
    std::map<std::pair<Database*, std::int32_t>, bool> usedIdentities_;
    std::optional<std::chrono::milliseconds> lockTimeout_;
    std::atomic<bool> cancelled_{false};
    std::exception_ptr pendingError_;
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
    std::size_t depth_ = 0;
};

}  // namespace sandbox
