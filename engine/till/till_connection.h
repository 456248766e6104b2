// The session to the till that is being served: re-pointed for each till of the roster, opened with retries, and the
// two questions that keep a busy till from being served. One walk has one.
#pragma once

#include <QString>
#include <exception>
#include <functional>
#include <memory>

#include "engine/base/engine_context.h"
#include "engine/base/torvik_pos_types.h"

namespace torvik {

namespace db {
class Connection;
struct ConnectSettings;
class DataSet;
class PlannedReads;
class Query;
class Session;
}  // namespace db
class LoginsAhead;
class OperatorLog;
class TAvdeling;

class TillConnection {
public:
    TillConnection(const EngineContext& context, const TAvdeling& roster, OperatorLog& log);

    db::Session* SourceConnection = nullptr;  // not owned
    // The same; raises EngineError when there is none.
    [[nodiscard]] db::Session& Session() const;
    TAuthMethod SourceAuthMethod = amSQL;  // how the current till's session logs in

    LoginsAhead* Ahead = nullptr;  // what a walk has logged in to in the background; not owned, mostly none

    // Closes the session and points it at the till of the roster's current row.
    void ApplySourceConnectionSettings();
    // What the session would be pointed at for that till.
    [[nodiscard]] db::ConnectSettings SettingsOfTill() const;
    // Connects to that till, with RetryCount attempts and `wait` between them, which is handed how many milliseconds
    // are left of it: an attempt and a wait in the background count. False when none succeeded; a cancel leaves, from
    // `wait` or from a statement that it has ended.
    [[nodiscard]] bool ConnectSource(const std::function<void(qint64 left)>& wait);
    // Connects to it by one attempt, whose failure is raised; asks it nothing.
    void ConnectOnce();

    // Why the last ConnectSource gave false: the failure of its last attempt. Null when there was no attempt, and after
    // a ConnectSource that gave true.
    [[nodiscard]] const std::exception_ptr& LastFailure() const { return lastFailure_; }

    // in_dbversion of the till whose version was last read; empty before the first.
    [[nodiscard]] const QString& DbVersion() const { return fDbVersion; }
    void ReadDbVersion();
    // Whether the version is that of the till that the session was last pointed at.
    [[nodiscard]] bool VersionIsCurrent() const { return versionIsCurrent_; }
    void SetNoCount(bool on);
    [[nodiscard]] bool SourceHasOpenTransactions();
    [[nodiscard]] bool SourceHasTemporarySettlements();
    // The first of the two that holds.
    enum class Busy { No, OpenTransactions, TemporarySettlements };
    [[nodiscard]] Busy SourceBusy();

private:
    struct Begun;  // in the background
    [[nodiscard]] Begun takeBegun();
    void connectBy(std::unique_ptr<db::Connection> made);
    // Points the session at the till and opens it, by the connection made ahead if that has lasted. True: it has.
    bool open(std::unique_ptr<db::Connection> made);
    [[nodiscard]] bool readVersionAtLogin();
    void readVersionWithNoCount();
    void takeVersion(const db::DataSet& rows);
    // Binds the query to the session, opened if it is closed.
    void openFor(db::Query& query);
    [[nodiscard]] bool countIsPositive(const char* sql);
    [[nodiscard]] bool countIsPositive(db::PlannedReads& reads, const char* sql);

    EngineContext context_;
    const TAvdeling& roster_;
    OperatorLog& log_;
    std::exception_ptr lastFailure_;
    QString fDbVersion;
    bool versionIsCurrent_ = false;
};

}  // namespace torvik
