// The databases of one server: a SQLite file each, what it holds (Catalog), and its identity values. Shared by all
// sessions; Connection is how one session reads and writes them.
#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/store/databases/catalog.h"
#include "sandbox/store/databases/locks.h"
#include "sandbox/store/databases/private_folder.h"
#include "sandbox/store/databases/processes.h"

struct sqlite3;

namespace sandbox {

// One database. Its name, id and file never change; its catalogue is the latest committed one.
class Database : public std::enable_shared_from_this<Database> {
public:
    struct Facts {
        int id = 0;  // database_id
        std::string name;
        std::string attachedAs;  // SQLite schema name in every connection: "db5", or "temp"
        std::filesystem::path file;
        std::string collation;
        std::int64_t created = 0;  // datetime ticks
        int compatibilityLevel = 130;
        bool temporary = false;  // a session's temporary tables: no file, no lock
    };

    explicit Database(Facts facts, std::shared_ptr<const Catalog> catalog);

    [[nodiscard]] const Facts& facts() const { return facts_; }
    [[nodiscard]] const std::string& name() const { return facts_.name; }
    [[nodiscard]] int id() const { return facts_.id; }
    [[nodiscard]] const std::string& attachedAs() const { return facts_.attachedAs; }
    [[nodiscard]] bool temporary() const { return facts_.temporary; }

    [[nodiscard]] std::shared_ptr<const Catalog> catalog() const;
    void publish(std::shared_ptr<const Catalog> catalog);  // after the change is committed

    // Identity values live outside of transactions: a roll-back does not give them back. Empty: none given out yet.
    [[nodiscard]] std::optional<std::int64_t> lastIdentity(std::int32_t objectId) const;
    void setLastIdentity(std::int32_t objectId, std::optional<std::int64_t> value);

    // The counter of timestamp columns, which no roll-back takes back: the last value given out, and the next.
    [[nodiscard]] std::int64_t rowVersion() const { return rowVersion_; }
    std::int64_t nextRowVersion() { return ++rowVersion_; }

    [[nodiscard]] std::int32_t newObjectId();  // never given out before in this database
    [[nodiscard]] std::int32_t lastObjectId() const;

    // Set by DROP DATABASE: connections let go of it when they are idle.
    std::atomic<bool> dropped{false};

private:
    friend class Databases;
    friend class Connection;

    Facts facts_;
    mutable std::mutex mutex_;
    std::shared_ptr<const Catalog> catalog_;
    std::map<std::int32_t, std::int64_t> identities_;
    std::int32_t lastObjectId_ = 0;
    std::atomic<std::int64_t> rowVersion_{2000};  // where SQL Server's begins
};

[[nodiscard]] std::int64_t currentTicks();  // local time as a datetime

class Databases {
public:
    // dataDir: where the databases live and are found again; none: in a private folder that ends with this object.
    Databases(std::optional<std::filesystem::path> dataDir, std::string collation);
    ~Databases();
    Databases(const Databases&) = delete;
    Databases& operator=(const Databases&) = delete;

    [[nodiscard]] std::shared_ptr<Database> find(std::string_view name) const;  // without case; nullptr when none
    [[nodiscard]] std::shared_ptr<Database> findById(int id) const;
    [[nodiscard]] std::vector<std::shared_ptr<Database>> all() const;  // by id

    // Raises 1801 when the name is taken. collation empty: the server's.
    std::shared_ptr<Database> create(const std::string& name, const std::string& collation = {});
    // Raises 3701 when there is none, 3708 for a system database, 3702 while a session is in it.
    void drop(std::string_view name);

    [[nodiscard]] const std::string& collation() const { return collation_; }
    [[nodiscard]] bool keepsData() const { return keepsData_; }
    [[nodiscard]] LockManager& locks() { return locks_; }
    [[nodiscard]] ProcessList& processes() { return processes_; }

    // A disk that is full after so many more writing statements; none: it has room. From any thread.
    void limitWrites(std::optional<std::int64_t> left) { writesLeft_ = left.value_or(-1); }
    void takeRoom(const Database& database);  // for one writing statement; raises 9002

private:
    std::shared_ptr<Database> open(Database::Facts facts);
    std::shared_ptr<Database> make(const std::string& name, int id, const std::string& collation);
    void fillMsdb(Database& msdb);

    std::optional<PrivateFolder> private_;  // where no data is kept
    std::filesystem::path folder_;
    std::string collation_;
    bool keepsData_ = false;
    int lastSerial_ = 0;
    std::atomic<std::int64_t> writesLeft_{-1};  // below 0: no limit
    std::mutex creating_;                       // one CREATE or DROP at a time
    mutable std::mutex mutex_;
    std::map<int, std::shared_ptr<Database>> databases_;  // by id
    sqlite3* registry_ = nullptr;                         // the list of databases, where data is kept
    // One open handle a database, so that SQLite never takes a session for the last one that leaves a file.
    std::map<int, sqlite3*> keepers_;
    LockManager locks_;
    ProcessList processes_;
};

}  // namespace sandbox
