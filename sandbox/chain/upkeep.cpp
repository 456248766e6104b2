#include "sandbox/chain/upkeep.h"

#include <iterator>
#include <string>

#include "sandbox/chain/demo_chain.h"

namespace sandbox::chain {

namespace {

// Outcomes of a job as msdb counts them.
enum Outcome { kFailed = 0, kSucceeded = 1, kNeverRan = 5 };

struct Upkeep {
    int daysSinceBackup;  // negative: there is none
    Outcome backup;
    Outcome reindexing;
};

// Dealt out to the tills in turn.
constexpr Upkeep kUpkeep[] = {
    {0, kSucceeded, kSucceeded}, {1, kSucceeded, kNeverRan}, {3, kSucceeded, kFailed},
    {12, kFailed, kSucceeded},   {-1, kFailed, kNeverRan},
};

std::string job(const char* name, Outcome outcome) {
    return std::string("INSERT INTO msdb.dbo.sysjobs (name) VALUES (N'") + name +
           "')\nINSERT INTO msdb.dbo.sysjobservers (job_id, last_run_outcome)\nSELECT job_id, " +
           std::to_string(outcome) + " FROM msdb.dbo.sysjobs WHERE name = N'" + name + "'\n";
}

// Of every database of the till's server, as a night's job makes them.
std::string backups(int daysAgo) {
    const std::string time = "DATEADD(day, -" + std::to_string(daysAgo) + ", GETDATE())";
    return "INSERT INTO msdb.dbo.backupset (database_name, type, backup_start_date, backup_finish_date)\n"
           "SELECT name, 'D', " +
           time + ", " + time + " FROM master.dbo.sysdatabases WHERE name <> 'tempdb'\n";
}

}  // namespace

void giveUpkeep(DemoChain& chain) {
    for (std::size_t i = 0; i < chain.model().tills.size(); ++i) {
        const Upkeep& upkeep = kUpkeep[i % std::size(kUpkeep)];
        std::string batch = "IF EXISTS (SELECT * FROM msdb.dbo.sysjobs) RETURN\n";
        batch += job("Nattlig backup", upkeep.backup) + job("Reindeksering", upkeep.reindexing);
        if (upkeep.daysSinceBackup >= 0) batch += backups(upkeep.daysSinceBackup);
        chain.runInTill(i, batch);
    }
}

}  // namespace sandbox::chain
