#include "fleet/health/health_status.h"

#include "engine/db/statement_text.h"

namespace torvik {

namespace {

constexpr char kFailedJobs[] =
    "SELECT name FROM msdb.dbo.sysjobs A, msdb.dbo.sysjobservers B WHERE A.job_id = B.job_id AND B.last_run_outcome = 0";

constexpr char kLastBackups[] =
    R"(SELECT B.name as Database_Name, DATEDIFF(day,COALESCE(MAX(Backup_finish_date),-1),GetDate()) as DaysSinceLastBackup,
COALESCE(MAX(backup_finish_date),0) as LastBackupDate
FROM master.dbo.sysdatabases B
LEFT OUTER JOIN msdb.dbo.backupset A ON A.database_name = B.name AND A.type = 'D')";

constexpr char kOfDatabase[] = "WHERE Database_Name = '%1'";

constexpr char kByDatabase[] = "GROUP BY B.Name ORDER BY B.name";

}  // namespace

void TFailedJobs::Execute(int Ik_Ku_ID, const QString& Kassenr) {
    AQuery.Close();
    AQuery.SetConnection(POSConnection);
    AQuery.SQL = statementLines(kFailedJobs);
    AQuery.Open();
    for (; !AQuery.Eof(); AQuery.Next())
        Items.push_back({Ik_Ku_ID, Kassenr, AvdNr, AvdNavn, AQuery.Fields(0).AsString()});
}

void TLastBackupDates::Execute(int Ik_Ku_ID, const QString& Kassenr, const QString& DatabaseName) {
    AQuery.Close();
    AQuery.SetConnection(POSConnection);
    AQuery.SQL = statementLines(kLastBackups);
    if (!DatabaseName.isEmpty()) AQuery.SQL << QString::fromUtf8(kOfDatabase).arg(quotesDoubled(DatabaseName));
    AQuery.SQL << QString::fromUtf8(kByDatabase);
    AQuery.Open();
    for (; !AQuery.Eof(); AQuery.Next())
        Items.push_back({Ik_Ku_ID, Kassenr, AvdNr, AvdNavn, AQuery.text("Database_Name"),
                         AQuery.integer("DaysSinceLastBackup"), AQuery.dateTime("LastBackupDate")});
}

}  // namespace torvik
