// Connection's transactions, and the writing statements inside of them.
#include <sqlite3.h>

#include <algorithm>

#include "sandbox/store/databases/connection.h"
#include "sandbox/store/databases/database_file.h"
#include "sandbox/store/values/storage_codec.h"

namespace sandbox {

// ---- what the session asks for

void Connection::begin() {
    inTransaction_ = true;
}

void Connection::commit() {
    if (sqliteTransaction_) commitSqlite();
    forgetTransaction();
}

void Connection::rollback() {
    rollbackSqlite();
    forgetTransaction();
}

void Connection::save(std::size_t number) {
    pushSavePoint(number);
}

void Connection::rollbackTo(std::size_t number) {
    const auto latest = std::find_if(savePoints_.rbegin(), savePoints_.rend(),
                                     [&](const SavePoint& point) { return point.number == number; });
    if (latest == savePoints_.rend()) return;
    if (sqliteTransaction_) {
        resetBusyStatements();
        exec("ROLLBACK TO " + latest->name);
    }
    changed_ = latest->catalogs;
    undoIdentityResets(latest->resets);
    savePoints_.erase(latest.base(), savePoints_.end());
}

void Connection::lockForWriting(Database& database) {
    if (inTransaction_) startWriting(database);
}

// ---- catalogue changes

void Connection::put(Database& database, ObjectDef object) {
    if (!database.temporary()) {
        writeObject(sqlite_, database.attachedAs(), object);
        writeLastObjectId(sqlite_, database.attachedAs(), database.lastObjectId());
    }
    auto next = std::make_shared<Catalog>(*catalog(database));
    next->put(std::make_shared<const ObjectDef>(std::move(object)));
    ++next->version;
    changed_[&database] = std::move(next);
}

void Connection::erase(Database& database, const ObjectDef& object) {
    if (!database.temporary()) eraseObject(sqlite_, database.attachedAs(), object.id);
    auto next = std::make_shared<Catalog>(*catalog(database));
    next->erase(object);
    ++next->version;
    changed_[&database] = std::move(next);
    if (database.lastIdentity(object.id)) resetIdentity(database, object.id, std::nullopt);
    usedIdentities_.erase({&database, object.id});
}

void Connection::replace(Database& database, const ObjectDef& before, ObjectDef after) {
    auto next = std::make_shared<Catalog>(*catalog(database));
    next->erase(before);
    changed_[&database] = std::move(next);
    put(database, std::move(after));
}

void Connection::identityUsed(Database& database, std::int32_t objectId) {
    if (!database.temporary()) usedIdentities_.insert({&database, objectId});
}

std::array<std::uint8_t, 8> Connection::nextRowVersion(Database& database) {
    Database& counter = database.temporary() ? *databases_.find("tempdb") : database;
    if (!database.temporary()) usedRowVersions_.insert(&database);
    return encodeRowVersion(counter.nextRowVersion());
}

void Connection::resetIdentity(Database& database, std::int32_t objectId, std::optional<std::int64_t> value) {
    identityResets_.push_back({database.shared_from_this(), objectId, database.lastIdentity(objectId)});
    database.setLastIdentity(objectId, value);
    identityUsed(database, objectId);
}

void Connection::undoIdentityResets(std::size_t keep) {
    while (identityResets_.size() > keep) {
        const IdentityReset& reset = identityResets_.back();
        reset.database->setLastIdentity(reset.objectId, reset.before);
        identityResets_.pop_back();
    }
}

// ---- SQLite's transaction

void Connection::startWriting(Database& database) {
    try {
        LockManager& locks = databases_.locks();
        if (!database.temporary()) {
            locks.acquire(spid_, database.id(), lockTimeout_, cancelled_);
        } else if (inTransaction_ && !sqliteTransaction_) {
            // SQLite's transaction keeps what is read from here on as it is now. Were the database to change until
            // this transaction writes to it, it could not.
            locks.acquire(spid_, current_->id(), lockTimeout_, cancelled_);
        }
        if (sqliteTransaction_) return;
        exec("BEGIN");
        sqliteTransaction_ = true;
        for (const SavePoint& point : savePoints_) exec("SAVEPOINT " + point.name);
    } catch (...) {
        if (!inTransaction_ && writeDepth_ == 0) rollback();
        throw;
    }
}

void Connection::pushSavePoint(std::size_t number) {
    SavePoint point{"s" + std::to_string(++lastSavePoint_), number, changed_, identityResets_.size()};
    if (sqliteTransaction_) exec("SAVEPOINT " + point.name);
    savePoints_.push_back(std::move(point));
}

void Connection::finishWrite(bool keep) {
    if (writeDepth_ == 0) return;  // the whole transaction is rolled back already
    if (writeDepth_ == 1 && !inTransaction_) {
        writeDepth_ = 0;
        if (keep) {
            commitSqlite();
        } else {
            rollbackSqlite();
        }
        forgetTransaction();
        return;
    }
    --writeDepth_;
    const SavePoint point = std::move(savePoints_.back());
    savePoints_.pop_back();
    if (!keep) {
        resetBusyStatements();
        exec("ROLLBACK TO " + point.name);
        changed_ = point.catalogs;
        undoIdentityResets(point.resets);
    }
    exec("RELEASE " + point.name);
}

void Connection::commitSqlite() {
    try {
        for (const auto& [database, objectId] : usedIdentities_) {
            writeIdentity(sqlite_, database->attachedAs(), objectId, database->lastIdentity(objectId));
        }
        for (const Database* database : usedRowVersions_) {
            writeRowVersion(sqlite_, database->attachedAs(), database->rowVersion());
        }
        exec("COMMIT");
    } catch (...) {
        rollback();
        throw;
    }
    sqliteTransaction_ = false;
    for (const auto& [database, catalog] : changed_) database->publish(catalog);
}

void Connection::rollbackSqlite() {
    undoIdentityResets(0);
    if (!sqliteTransaction_) return;
    resetBusyStatements();
    // SQLite has rolled back by itself after some errors.
    if (sqlite3_get_autocommit(sqlite_) == 0) sqlite3_exec(sqlite_, "ROLLBACK", nullptr, nullptr, nullptr);
    sqliteTransaction_ = false;
}

void Connection::forgetTransaction() {
    inTransaction_ = false;
    writeDepth_ = 0;
    savePoints_.clear();
    changed_.clear();
    usedIdentities_.clear();
    usedRowVersions_.clear();
    identityResets_.clear();
    retiredScopes_.clear();
    databases_.locks().releaseAll(spid_, LockOwner::Transaction);
}

// A statement in mid-run would take an attention's interrupt over to the next one, be it a roll-back.
void Connection::resetBusyStatements() {
    for (sqlite3_stmt* s = sqlite3_next_stmt(sqlite_, nullptr); s != nullptr; s = sqlite3_next_stmt(sqlite_, s)) {
        if (sqlite3_stmt_busy(s) != 0) sqlite3_reset(s);
    }
}

// ---- Write

Write::Write(Connection& connection, Database& database) : connection_(connection) {
    if (!database.temporary() && connection_.writeDepth_ == 0) connection_.databases_.takeRoom(database);
    connection_.startWriting(database);
    if (connection_.inTransaction_ || connection_.writeDepth_ > 0) connection_.pushSavePoint(0);
    ++connection_.writeDepth_;
}

Write::~Write() {
    if (finished_) return;
    try {
        connection_.finishWrite(false);
    } catch (const std::exception&) {
        // Where the statement alone cannot be undone, nothing of its transaction can stay.
        connection_.rollback();
    }
}

void Write::done() {
    finished_ = true;
    connection_.finishWrite(true);
}

}  // namespace sandbox
