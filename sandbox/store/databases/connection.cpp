// Statements, attached databases, names and temporary tables of one session; its transactions are in
// connection_transaction.cpp.
#include "sandbox/store/databases/connection.h"

#include <sqlite3.h>

#include <algorithm>

#include "sandbox/store/databases/database_file.h"
#include "sandbox/store/databases/object_name.h"
#include "sandbox/store/databases/table_storage.h"
#include "sandbox/store/values/error_table.h"

namespace sandbox {

namespace {

constexpr std::size_t kMaxAttached = 10;  // SQLite's own limit
constexpr std::size_t kMaxIdleStatements = 256;
constexpr int kTempdb = 2;

bool isTemporaryName(std::string_view name) {
    return !name.empty() && (name.front() == '@' || (name.front() == '#' && !name.starts_with("##")));
}

std::shared_ptr<Database> makeTemporaryScope(const std::string& collation) {
    Database::Facts facts;
    facts.id = kTempdb;
    facts.name = "tempdb";
    facts.attachedAs = "temp";
    facts.collation = collation;
    facts.temporary = true;
    return std::make_shared<Database>(std::move(facts), std::make_shared<const Catalog>());
}

}  // namespace

// ---- Statement

Statement::Statement(Connection& connection, std::string sql, sqlite3_stmt* statement)
    : connection_(&connection), sql_(std::move(sql)), statement_(statement) {}

Statement::Statement(Statement&& other) noexcept
    : connection_(other.connection_), sql_(std::move(other.sql_)), statement_(other.statement_) {
    other.statement_ = nullptr;
}

Statement::~Statement() {
    if (statement_ == nullptr) return;
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
    connection_->makeReusable(std::move(sql_), statement_);
}

bool Statement::step() {
    if (connection_->cancelled_) throw StatementCancelled();
    const int code = sqlite3_step(statement_);
    if (code == SQLITE_ROW) return true;
    if (code == SQLITE_DONE) return false;
    connection_->raiseFailure();
}

void Statement::reset() {
    sqlite3_reset(statement_);
}

// ---- opening and closing

Connection::Connection(Databases& databases, int spid) : databases_(databases), spid_(spid) {
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    if (sqlite3_open_v2(":memory:", &sqlite_, flags, nullptr) != SQLITE_OK) {
        sqlite3_close(sqlite_);
        throw SqliteError(SQLITE_CANTOPEN, "no memory for a session");
    }
    sqlite3_extended_result_codes(sqlite_, 1);
    sqlite3_busy_timeout(sqlite_, 10'000);
    // A misspelt "name" is an error, never a text.
    sqlite3_db_config(sqlite_, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
    sqlite3_db_config(sqlite_, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
    // Its Bloom filters take texts of different lengths for different, whatever the collation says (3.40).
    constexpr unsigned kBloomFilter = 0x00080000;
    sqlite3_test_control(SQLITE_TESTCTRL_OPTIMIZATIONS, sqlite_, kBloomFilter);
    exec("PRAGMA temp_store = MEMORY");
    functions_.spid = spid;
    registerFunctions(sqlite_, functions_);
    temporaryScopes_.push_back(makeTemporaryScope(databases_.collation()));
    use(databases_.find("master"));
}

Connection::~Connection() {
    resetBusyStatements();
    rollback();
    releaseSessionLocks();
    for (const auto& [sql, statement] : idle_) sqlite3_finalize(statement);
    sqlite3_close_v2(sqlite_);
}

// ---- statements

Statement Connection::prepare(const std::string& sql) {
    const auto found = idleByText_.find(std::string_view(sql));
    if (found != idleByText_.end()) {
        const auto place = found->second;
        idleByText_.erase(found);
        std::string text = std::move(place->first);
        sqlite3_stmt* statement = place->second;
        idle_.erase(place);
        return {*this, std::move(text), statement};
    }
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v3(sqlite_, sql.data(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT, &statement,
                           nullptr) != SQLITE_OK) {
        raiseFailure();
    }
    return {*this, sql, statement};
}

void Connection::makeReusable(std::string sql, sqlite3_stmt* statement) {
    idle_.emplace_front(std::move(sql), statement);
    idleByText_.emplace(idle_.front().first, idle_.begin());
    if (idle_.size() <= kMaxIdleStatements) return;
    const auto last = std::prev(idle_.end());
    const auto [begin, end] = idleByText_.equal_range(last->first);
    idleByText_.erase(std::find_if(begin, end, [&](const auto& entry) { return entry.second == last; }));
    sqlite3_finalize(last->second);
    idle_.erase(last);
}

void Connection::run(const std::string& sql) {
    if (cancelled_) throw StatementCancelled();
    if (sqlite3_exec(sqlite_, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) raiseFailure();
}

void Connection::exec(const std::string& sql) {
    execute(sqlite_, sql);
}

void Connection::raiseFailure() {
    const int code = sqlite3_extended_errcode(sqlite_);
    const std::string text = sqlite3_errmsg(sqlite_);
    rethrowIfFailed(functions_);
    if (cancelled_ || (code & 0xFF) == SQLITE_INTERRUPT) throw StatementCancelled();
    if ((code & 0xFF) == SQLITE_BUSY) throw SqlError(errorMessage<1205>(spid_), Effect::Batch);
    throw SqliteError(code, text);
}

void Connection::interrupt() {
    cancelled_ = true;
    sqlite3_interrupt(sqlite_);
    databases_.locks().wake();
}

void Connection::clearInterrupt() {
    cancelled_ = false;
}

void Connection::releaseSessionLocks() {
    databases_.locks().releaseAll(spid_, LockOwner::Session);
}

// ---- databases

void Connection::use(std::shared_ptr<Database> database) {
    attachDatabase(database);
    current_ = std::move(database);
    functions_.database = current_->name();
    functions_.databaseId = current_->id();
}

std::shared_ptr<Database> Connection::attach(std::string_view name) {
    std::shared_ptr<Database> database = name.empty() ? current_ : databases_.find(name);
    if (database) attachDatabase(database);
    return database;
}

void Connection::attachDatabase(const std::shared_ptr<Database>& database) {
    const auto found = std::find(attached_.begin(), attached_.end(), database);
    if (found != attached_.end()) {
        attached_.splice(attached_.end(), attached_, found);
        return;
    }
    detachIdle(kMaxAttached - 1);
    std::string file;
    for (const char c : database->facts().file.string()) file += c == '\'' ? std::string("''") : std::string(1, c);
    const std::string& schema = database->attachedAs();
    exec("ATTACH DATABASE '" + file + "' AS " + schema);
    attached_.push_back(database);
    // Inside of a transaction SQLite keeps its safest level: slower, not wrong.
    if (sqlite3_get_autocommit(sqlite_) != 0) {
        exec("PRAGMA " + schema + ".synchronous = " + (databases_.keepsData() ? "NORMAL" : "OFF"));
    }
    exec("PRAGMA " + schema + ".cache_size = -16000");
}

void Connection::detachIdle(std::size_t keep) {
    // Neither in a transaction nor under a running statement: SQLite numbers its schemas anew.
    if (sqlite3_get_autocommit(sqlite_) == 0) return;
    for (sqlite3_stmt* s = sqlite3_next_stmt(sqlite_, nullptr); s != nullptr; s = sqlite3_next_stmt(sqlite_, s)) {
        if (sqlite3_stmt_busy(s) != 0) return;
    }
    std::size_t count = attached_.size();
    for (auto place = attached_.begin(); place != attached_.end();) {
        const std::shared_ptr<Database>& database = *place;
        const bool unwanted = database->dropped || count > keep;
        if (!unwanted || database == current_ ||
            sqlite3_exec(sqlite_, ("DETACH DATABASE " + database->attachedAs()).c_str(), nullptr, nullptr, nullptr) !=
                SQLITE_OK) {
            ++place;
            continue;
        }
        --count;
        place = attached_.erase(place);
    }
}

// ---- names

std::shared_ptr<const Catalog> Connection::catalog(Database& database) const {
    const auto own = changed_.find(&database);
    return own == changed_.end() ? database.catalog() : own->second;
}

std::optional<FoundObject> Connection::find(std::string_view database, std::string_view schema, std::string_view name) {
    if (isTemporaryName(name)) {
        for (auto scope = temporaryScopes_.rbegin(); scope != temporaryScopes_.rend(); ++scope) {
            if (auto object = catalog(**scope)->find("dbo", name)) return FoundObject{std::move(object), *scope};
        }
        return std::nullopt;
    }
    const std::shared_ptr<Database> place = attach(name.starts_with("##") ? "tempdb" : database);
    if (!place) return std::nullopt;
    if (auto object = catalog(*place)->find(schema.empty() ? "dbo" : schema, name)) {
        return FoundObject{std::move(object), place};
    }
    auto view = findView_ ? findView_(place, schema, name) : nullptr;
    if (!view) return std::nullopt;
    return FoundObject{std::move(view), place};
}

std::optional<FoundObject> Connection::findByText(std::string_view text) {
    const std::optional<NameParts> parts = splitObjectName(text);
    if (!parts) return std::nullopt;
    return find(parts->database, parts->schema, parts->name);
}

// ---- temporary tables

bool Connection::showsTemporary(const Database& database) const {
    return database.id() == kTempdb;
}

void Connection::beginTemporaryScope() {
    std::shared_ptr<Database> scope = makeTemporaryScope(databases_.collation());
    scope->lastObjectId_ = temporary()->lastObjectId_;
    temporaryScopes_.push_back(std::move(scope));
}

void Connection::endTemporaryScope() {
    const std::shared_ptr<Database> scope = temporary();
    dropTemporary(*scope, false);
    temporaryScopes_.pop_back();
    temporary()->lastObjectId_ = scope->lastObjectId_;
    changed_.erase(scope.get());
    if (inTransaction_) retiredScopes_.push_back(scope);
}

void Connection::dropTableVariables() {
    dropTemporary(*temporary(), true);
}

void Connection::dropAllTemporaryTables() {
    while (temporaryScopes_.size() > 1) endTemporaryScope();
    dropTemporary(*temporary(), false);
}

void Connection::dropTemporary(Database& scope, bool variablesOnly) {
    const std::shared_ptr<const Catalog> before = catalog(scope);
    std::vector<std::shared_ptr<const ObjectDef>> going;
    for (auto& object : before->all()) {
        if (!variablesOnly || object->name.starts_with('@')) going.push_back(object);
    }
    if (going.empty()) return;
    resetBusyStatements();
    auto after = std::make_shared<Catalog>(*before);
    for (const auto& object : going) {
        if (object->kind == ObjectKind::Table) exec("DROP TABLE IF EXISTS " + storageTable("temp", *object));
        after->erase(*object);
    }
    if (sqliteTransaction_) {
        changed_[&scope] = std::move(after);
    } else {
        scope.publish(std::move(after));
    }
}

}  // namespace sandbox
