// Making, finding and dropping databases, and their identity values.
#include "sandbox/store/databases/database.h"

#include <sqlite3.h>

#include <chrono>
#include <ctime>
#include <random>
#include <stdexcept>

#include "sandbox/store/databases/connection.h"
#include "sandbox/store/databases/database_file.h"
#include "sandbox/store/databases/msdb_tables.h"
#include "sandbox/store/databases/table_storage.h"
#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/datetime.h"
#include "sandbox/store/values/error_table.h"

namespace sandbox {

namespace fs = std::filesystem;

namespace {

constexpr const char* kSystemDatabases[] = {"master", "tempdb", "model", "msdb"};  // ids 1 to 4
constexpr int kFirstUserDatabase = 5;
// SQL Server's own way of giving out object ids.
constexpr std::int32_t kFirstObjectId = 245575913;
constexpr std::int32_t kObjectIdStep = 16000057;

// SQLite would keep statistics of its memory that nobody asks for, under one lock for all sessions. Works once a
// process, before its first file is opened.
void keepNoStatistics() {
    [[maybe_unused]] static const int done = sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
}

// A file name is never used twice: SQLite deletes the log of a dropped database by name as late as its last user goes.
std::string newFileName(const std::string& database) {
    std::string name;
    for (const char c : database) name += std::isalnum(static_cast<unsigned char>(c)) != 0 ? c : '_';
    std::random_device random;
    char serial[20];
    std::snprintf(serial, sizeof serial, "-%08x%04x", random(), random() & 0xFFFFu);
    return name + serial + ".sqlite";
}

void removeFiles(const fs::path& file) {
    std::error_code ignored;
    for (const char* suffix : {"", "-wal", "-shm"}) fs::remove(file.string() + suffix, ignored);
}

}  // namespace

std::int64_t currentTicks() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    const std::int64_t day = dayNumber(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday) - kDay1900;
    return day * kTicksPerDay + ((local.tm_hour * 60LL + local.tm_min) * 60 + local.tm_sec) * 300;
}

// ---- Database

Database::Database(Facts facts, std::shared_ptr<const Catalog> catalog)
    : facts_(std::move(facts)), catalog_(std::move(catalog)) {}

std::shared_ptr<const Catalog> Database::catalog() const {
    const std::lock_guard guard(mutex_);
    return catalog_;
}

void Database::publish(std::shared_ptr<const Catalog> catalog) {
    const std::lock_guard guard(mutex_);
    catalog_ = std::move(catalog);
}

std::optional<std::int64_t> Database::lastIdentity(std::int32_t objectId) const {
    const std::lock_guard guard(mutex_);
    const auto found = identities_.find(objectId);
    return found == identities_.end() ? std::nullopt : std::optional(found->second);
}

void Database::setLastIdentity(std::int32_t objectId, std::optional<std::int64_t> value) {
    const std::lock_guard guard(mutex_);
    if (value) {
        identities_[objectId] = *value;
    } else {
        identities_.erase(objectId);
    }
}

std::int32_t Database::newObjectId() {
    const std::lock_guard guard(mutex_);
    const std::int64_t next = lastObjectId_ == 0 ? kFirstObjectId : std::int64_t{lastObjectId_} + kObjectIdStep;
    lastObjectId_ = static_cast<std::int32_t>(next & 0x7FFFFFFF);
    return facts_.temporary ? -lastObjectId_ : lastObjectId_;  // beside tempdb's own
}

std::int32_t Database::lastObjectId() const {
    const std::lock_guard guard(mutex_);
    return lastObjectId_;
}

// ---- Databases

Databases::Databases(std::optional<fs::path> dataDir, std::string collation)
    : collation_(std::move(collation)), keepsData_(dataDir.has_value()) {
    keepNoStatistics();
    if (!keepsData_) private_.emplace("torvik-sandbox-");
    folder_ = keepsData_ ? *dataDir : private_->path();
    fs::create_directories(folder_);
    if (keepsData_) {
        registry_ = openFile(folder_ / "databases.sqlite");
        execute(registry_, "PRAGMA synchronous = NORMAL");
        makeRegistry(registry_);
        for (Database::Facts& facts : readDatabases(registry_)) {
            facts.file = folder_ / facts.file;
            if (facts.name == "tempdb") {
                removeFiles(facts.file);
                eraseDatabase(registry_, facts.id);
                continue;
            }
            open(std::move(facts));
        }
    }
    int id = 0;
    for (const char* name : kSystemDatabases) {
        ++id;
        if (find(name)) continue;
        const std::shared_ptr<Database> database = make(name, id, collation_);
        if (database->name() == "msdb") fillMsdb(*database);
    }
}

Databases::~Databases() {
    for (const auto& [id, keeper] : keepers_) sqlite3_close_v2(keeper);
    sqlite3_close_v2(registry_);
}

std::shared_ptr<Database> Databases::find(std::string_view name) const {
    const std::lock_guard guard(mutex_);
    for (const auto& [id, database] : databases_) {
        if (sameName(database->name(), name)) return database;
    }
    return nullptr;
}

std::shared_ptr<Database> Databases::findById(int id) const {
    const std::lock_guard guard(mutex_);
    const auto found = databases_.find(id);
    return found == databases_.end() ? nullptr : found->second;
}

std::vector<std::shared_ptr<Database>> Databases::all() const {
    const std::lock_guard guard(mutex_);
    std::vector<std::shared_ptr<Database>> list;
    for (const auto& [id, database] : databases_) list.push_back(database);
    return list;
}

std::shared_ptr<Database> Databases::create(const std::string& name, const std::string& collation) {
    const std::lock_guard one(creating_);
    if (find(name)) {
        throw SqlError(errorMessage<1801>(name));
    }
    int id = kFirstUserDatabase;
    while (findById(id)) ++id;
    return make(name, id, collation.empty() ? collation_ : collation);
}

void Databases::drop(std::string_view name) {
    const std::lock_guard one(creating_);
    const std::shared_ptr<Database> database = find(name);
    const std::string quoted = "'" + std::string(name) + "'";
    if (!database) {
        throw SqlError(errorMessage<3701>("database", name));
    }
    if (database->id() < kFirstUserDatabase) {
        throw SqlError(errorMessage<3708>(name));
    }
    if (processes_.uses(database->id(), 0) || locks_.isHeld(database->id())) {
        throw SqlError(errorMessage<3702>(database->name()));
    }
    {
        const std::lock_guard guard(mutex_);
        databases_.erase(database->id());
        sqlite3_close_v2(keepers_[database->id()]);
        keepers_.erase(database->id());
        if (registry_ != nullptr) eraseDatabase(registry_, database->id());
    }
    database->dropped = true;
    removeFiles(database->facts().file);
}

std::shared_ptr<Database> Databases::make(const std::string& name, int id, const std::string& collation) {
    Database::Facts facts;
    facts.id = id;
    facts.name = name;
    facts.file = folder_ / newFileName(name);
    facts.collation = collation;
    facts.created = currentTicks();
    {
        sqlite3* sqlite = openFile(facts.file);
        execute(sqlite, "PRAGMA synchronous = OFF; PRAGMA journal_mode = WAL; BEGIN");
        makeMetaTables(sqlite);
        execute(sqlite, "COMMIT");
        sqlite3_close(sqlite);
    }
    std::shared_ptr<Database> database = open(facts);
    if (registry_ != nullptr) {
        const std::lock_guard guard(mutex_);
        writeDatabase(registry_, facts);
    }
    return database;
}

std::shared_ptr<Database> Databases::open(Database::Facts facts) {
    sqlite3* keeper = openFile(facts.file);
    execute(keeper, keepsData_ ? "PRAGMA synchronous = NORMAL" : "PRAGMA synchronous = OFF");
    const std::lock_guard guard(mutex_);
    facts.attachedAs = "db" + std::to_string(++lastSerial_);
    auto database = std::make_shared<Database>(facts, readCatalog(keeper));
    database->identities_ = readIdentities(keeper);
    database->lastObjectId_ = readLastObjectId(keeper);
    if (const auto last = readRowVersion(keeper)) database->rowVersion_ = *last;
    keepers_[facts.id] = keeper;
    databases_[facts.id] = database;
    return database;
}

void Databases::takeRoom(const Database& database) {
    std::int64_t left = writesLeft_;
    while (left > 0 && !writesLeft_.compare_exchange_weak(left, left - 1)) continue;
    if (left != 0) return;
    throw SqlError(errorMessage<9002>(database.name()));
}

void Databases::fillMsdb(Database& msdb) {
    sqlite3* sqlite = keepers_.at(msdb.id());
    auto catalog = std::make_shared<Catalog>();
    execute(sqlite, "BEGIN");
    for (ObjectDef& table : msdbTables()) {
        table.id = msdb.newObjectId();
        table.storageName = "t" + std::to_string(table.id);
        table.created = table.modified = msdb.facts().created;
        for (ColumnDef& column : table.columns) {
            if (!column.defaultText.empty()) column.defaultId = msdb.newObjectId();
        }
        execute(sqlite, createStorageSql("main", table));
        writeObject(sqlite, "main", table);
        catalog->put(std::make_shared<const ObjectDef>(table));
    }
    writeLastObjectId(sqlite, "main", msdb.lastObjectId());
    execute(sqlite, "COMMIT");
    msdb.publish(catalog);
}

}  // namespace sandbox
