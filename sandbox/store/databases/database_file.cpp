// The statements on the meta tables of a database file.
#include "sandbox/store/databases/database_file.h"

#include <sqlite3.h>

#include "sandbox/store/databases/catalog_record.h"
#include "sandbox/store/databases/connection.h"
#include "sandbox/store/values/collation.h"

namespace sandbox {

namespace {

constexpr const char* kMetaTables = R"sql(
    CREATE TABLE meta_objects (id INTEGER PRIMARY KEY, record TEXT NOT NULL);
    CREATE TABLE meta_identities (object_id INTEGER PRIMARY KEY, last_value INTEGER NOT NULL);
    CREATE TABLE meta_values (name TEXT PRIMARY KEY, value INTEGER NOT NULL) WITHOUT ROWID;
)sql";

constexpr const char* kRegistry = R"sql(
    CREATE TABLE IF NOT EXISTS meta_databases (id INTEGER PRIMARY KEY, name TEXT NOT NULL, file TEXT NOT NULL,
                                               collation TEXT NOT NULL, created INTEGER NOT NULL, level INTEGER NOT NULL);
)sql";

// A statement on a file's own handle, where there is no cache and no attention.
class Query {
public:
    Query(sqlite3* sqlite, const std::string& sql) : sqlite_(sqlite) {
        if (sqlite3_prepare_v2(sqlite, sql.c_str(), -1, &statement_, nullptr) != SQLITE_OK) fail();
    }
    ~Query() { sqlite3_finalize(statement_); }
    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;

    Query& bind(std::int64_t value) {
        sqlite3_bind_int64(statement_, ++bound_, value);
        return *this;
    }
    Query& bind(const std::string& text) {
        sqlite3_bind_text(statement_, ++bound_, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
        return *this;
    }
    bool step() {
        const int code = sqlite3_step(statement_);
        if (code != SQLITE_ROW && code != SQLITE_DONE) fail();
        return code == SQLITE_ROW;
    }
    [[nodiscard]] std::int64_t integer(int column) const { return sqlite3_column_int64(statement_, column); }
    [[nodiscard]] std::string text(int column) const {
        const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
        return {bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
    }

private:
    [[noreturn]] void fail() const { throw SqliteError(sqlite3_extended_errcode(sqlite_), sqlite3_errmsg(sqlite_)); }

    sqlite3* sqlite_;
    sqlite3_stmt* statement_ = nullptr;
    int bound_ = 0;
};

std::optional<std::int64_t> readValue(sqlite3* sqlite, const std::string& name) {
    Query query(sqlite, "SELECT value FROM meta_values WHERE name = ?1");
    query.bind(name);
    return query.step() ? std::optional(query.integer(0)) : std::nullopt;
}

void writeValue(sqlite3* sqlite, const std::string& schema, const std::string& name, std::int64_t value) {
    Query(sqlite, "INSERT OR REPLACE INTO " + schema + ".meta_values (name, value) VALUES (?1, ?2)")
        .bind(name)
        .bind(value)
        .step();
}

}  // namespace

sqlite3* openFile(const std::filesystem::path& file) {
    sqlite3* sqlite = nullptr;
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    const int code = sqlite3_open_v2(file.c_str(), &sqlite, flags, nullptr);
    if (code != SQLITE_OK) {
        const std::string text = sqlite != nullptr ? sqlite3_errmsg(sqlite) : sqlite3_errstr(code);
        sqlite3_close(sqlite);
        throw SqliteError(code, text + ": " + file.string());
    }
    sqlite3_extended_result_codes(sqlite, 1);
    sqlite3_busy_timeout(sqlite, 10'000);
    registerCollations(sqlite);  // tables may not be made without
    return sqlite;
}

void execute(sqlite3* sqlite, const std::string& sql) {
    if (sqlite3_exec(sqlite, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        throw SqliteError(sqlite3_extended_errcode(sqlite), sqlite3_errmsg(sqlite));
    }
}

void makeMetaTables(sqlite3* sqlite) {
    execute(sqlite, kMetaTables);
}

void makeRegistry(sqlite3* sqlite) {
    execute(sqlite, kRegistry);
}

std::shared_ptr<Catalog> readCatalog(sqlite3* sqlite) {
    auto catalog = std::make_shared<Catalog>();
    Query query(sqlite, "SELECT record FROM meta_objects");
    while (query.step()) catalog->put(std::make_shared<const ObjectDef>(fromRecord(query.text(0))));
    return catalog;
}

void writeObject(sqlite3* sqlite, const std::string& schema, const ObjectDef& object) {
    Query(sqlite, "INSERT OR REPLACE INTO " + schema + ".meta_objects (id, record) VALUES (?1, ?2)")
        .bind(object.id)
        .bind(toRecord(object))
        .step();
}

void eraseObject(sqlite3* sqlite, const std::string& schema, std::int32_t id) {
    Query(sqlite, "DELETE FROM " + schema + ".meta_objects WHERE id = ?1").bind(id).step();
    Query(sqlite, "DELETE FROM " + schema + ".meta_identities WHERE object_id = ?1").bind(id).step();
}

std::map<std::int32_t, std::int64_t> readIdentities(sqlite3* sqlite) {
    std::map<std::int32_t, std::int64_t> identities;
    Query query(sqlite, "SELECT object_id, last_value FROM meta_identities");
    while (query.step()) identities[static_cast<std::int32_t>(query.integer(0))] = query.integer(1);
    return identities;
}

void writeIdentity(sqlite3* sqlite, const std::string& schema, std::int32_t objectId,
                   std::optional<std::int64_t> value) {
    if (value) {
        Query(sqlite, "INSERT OR REPLACE INTO " + schema + ".meta_identities (object_id, last_value) VALUES (?1, ?2)")
            .bind(objectId)
            .bind(*value)
            .step();
    } else {
        Query(sqlite, "DELETE FROM " + schema + ".meta_identities WHERE object_id = ?1").bind(objectId).step();
    }
}

std::int32_t readLastObjectId(sqlite3* sqlite) {
    return static_cast<std::int32_t>(readValue(sqlite, "last_object_id").value_or(0));
}

void writeLastObjectId(sqlite3* sqlite, const std::string& schema, std::int32_t id) {
    writeValue(sqlite, schema, "last_object_id", id);
}

std::optional<std::int64_t> readRowVersion(sqlite3* sqlite) {
    return readValue(sqlite, "row_version");
}

void writeRowVersion(sqlite3* sqlite, const std::string& schema, std::int64_t value) {
    writeValue(sqlite, schema, "row_version", value);
}

std::vector<Database::Facts> readDatabases(sqlite3* registry) {
    std::vector<Database::Facts> list;
    Query query(registry, "SELECT id, name, file, collation, created, level FROM meta_databases ORDER BY id");
    while (query.step()) {
        Database::Facts facts;
        facts.id = static_cast<int>(query.integer(0));
        facts.name = query.text(1);
        facts.file = query.text(2);
        facts.collation = query.text(3);
        facts.created = query.integer(4);
        facts.compatibilityLevel = static_cast<int>(query.integer(5));
        list.push_back(std::move(facts));
    }
    return list;
}

void writeDatabase(sqlite3* registry, const Database::Facts& facts) {
    Query(registry,
          "INSERT OR REPLACE INTO meta_databases (id, name, file, collation, created, level) "
          "VALUES (?1, ?2, ?3, ?4, ?5, ?6)")
        .bind(facts.id)
        .bind(facts.name)
        .bind(facts.file.filename().string())
        .bind(facts.collation)
        .bind(facts.created)
        .bind(facts.compatibilityLevel)
        .step();
}

void eraseDatabase(sqlite3* registry, int id) {
    Query(registry, "DELETE FROM meta_databases WHERE id = ?1").bind(id).step();
}

}  // namespace sandbox
