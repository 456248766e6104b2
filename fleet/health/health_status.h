// What a till's SQL Server says of itself: the jobs of its agent that failed last, and how old its backups are. Each is
// a list that a till adds its rows to. Used by the health check, which asks every till for both.
#pragma once

#include <QString>
#include <vector>

#include "engine/db/date_time.h"
#include "engine/db/query.h"

namespace torvik {

class THealthStatus {
public:
    virtual ~THealthStatus() = default;

    // Asks the session's server and adds an item a row; raises what the query raises, and adds none then.
    virtual void Execute(int Ik_Ku_ID, const QString& Kassenr) = 0;

    db::Session* POSConnection = nullptr;  // not owned
    QString AvdNr;                         // of the till that is asked next, as AvdNavn
    QString AvdNavn;

protected:
    db::Query AQuery;
};

struct TFailedJob {
    int Ik_Ku_ID = 0;
    QString Kassenr;
    QString AvdNr;
    QString AvdNavn;
    QString JobName;
};

class TFailedJobs : public THealthStatus {
public:
    void Execute(int Ik_Ku_ID, const QString& Kassenr) override;

    std::vector<TFailedJob> Items;
};

struct TLastBackupDate {
    int Ik_Ku_ID = 0;
    QString Kassenr;
    QString AvdNr;
    QString AvdNavn;
    QString DatabaseName;
    int DaysSinceLastBackup = 0;
    db::DateTime LastBackupDate;  // a day of the year 1900 for a database that has none
};

class TLastBackupDates : public THealthStatus {
public:
    // Of all databases of the server.
    void Execute(int Ik_Ku_ID, const QString& Kassenr) override { Execute(Ik_Ku_ID, Kassenr, QString()); }
    // Of those that have a backup of the name; of all for an empty name.
    void Execute(int Ik_Ku_ID, const QString& Kassenr, const QString& DatabaseName);

    std::vector<TLastBackupDate> Items;
};

// What a health check has found.
struct THealthSummary {
    TFailedJobs FailedJobs;
    TLastBackupDates LastBackupDates;
};

}  // namespace torvik
