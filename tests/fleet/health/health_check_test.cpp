// What the tills' servers say of their jobs and backups, and whatever befalls one till.
#include "fleet/health/health_check.h"

#include <gmock/gmock.h>

#include "engine/base/abort.h"
#include "engine/run/run_parts.h"
#include "fleet/health/backup_age.h"
#include "sandbox/chain/upkeep.h"
#include "tests/fleet/support/fleet_run.h"
#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

class HealthCheck : public testing::Test {
protected:
    explicit HealthCheck(std::vector<int> versions = {213, 213}) : run(FleetRun::tills(std::move(versions))) {}

    // Jobs and backups are the server's, of which the stand-in has one for each till.
    void SetUp() override { TORVIK_NEEDS_SANDBOX(run.chain); }

    // A job of the till's server, with a row for each server that it last ran at.
    void job(std::size_t till, const std::string& name, const std::vector<int>& outcomes) {
        run.chain.runInTill(till, "INSERT INTO msdb.dbo.sysjobs (name) VALUES ('" + name + "')");
        for (std::size_t i = 0; i < outcomes.size(); ++i)
            run.chain.runInTill(till,
                                "INSERT INTO msdb.dbo.sysjobservers (job_id, server_id, last_run_outcome) SELECT "
                                "job_id, " +
                                    std::to_string(i) + ", " + std::to_string(outcomes[i]) +
                                    " FROM msdb.dbo.sysjobs WHERE name = '" + name + "'");
    }
    void backup(std::size_t till, const std::string& database, int daysAgo, const std::string& type = "D") {
        run.chain.runInTill(till, "INSERT INTO msdb.dbo.backupset (database_name, type, backup_finish_date) VALUES ('" +
                                      database + "', '" + type + "', DATEADD(day, -" + std::to_string(daysAgo) +
                                      ", GETDATE()))");
    }
    [[nodiscard]] std::string databaseOf(std::size_t till) const { return run.chain.model().tills[till].database; }
    [[nodiscard]] std::string department() const {
        return run.backOfficeValue("SELECT rtrim(Ku_Adresse1) FROM Kunde WHERE Ku_Id = 1001");
    }

    FleetRun run;
};

std::vector<std::string> jobs(const THealthSummary& summary) {
    std::vector<std::string> all;
    for (const TFailedJob& job : summary.FailedJobs.Items)
        all.push_back(QStringLiteral("%1 | %2 | %3 | %4 | %5")
                          .arg(QString::number(job.Ik_Ku_ID), job.AvdNr, job.AvdNavn, job.Kassenr, job.JobName)
                          .toStdString());
    return all;
}

const TLastBackupDate* backupOf(const THealthSummary& summary, const QString& kassenr, const std::string& database) {
    for (const TLastBackupDate& each : summary.LastBackupDates.Items)
        if (each.Kassenr == kassenr && each.DatabaseName == QString::fromStdString(database)) return &each;
    return nullptr;
}

TEST_F(HealthCheck, FindsTheJobsThatFailedLast) {
    job(0, "Nattbackup", {0});
    job(0, "Reindeksering", {1});
    job(0, "Aldri kjørt", {5});
    job(1, "To servere", {0, 1, 0});
    const auto summary = CheckPosHealthStatus(run.parts());
    const std::string till = "1001 | 101 | " + department() + " | ";
    EXPECT_THAT(jobs(*summary), ElementsAre(till + "1 | Nattbackup", till + "2 | To servere", till + "2 | To servere"));
    EXPECT_THAT(run.errors(), IsEmpty());
    EXPECT_THAT(run.lines(),
                ElementsAre("STARTER HELSESJEKK", "Antall kasser som skal behandles: 2", "fullføRT HELSESJEKK"));
    EXPECT_EQ(run.log().filter("Venter i").size(), 1);
    EXPECT_TRUE(QFile::exists(run.folder.filePath("ZoppgjorLog.txt")));
}

TEST_F(HealthCheck, NoFailedJobIsAnEmptyListAndNoError) {
    job(0, "Nattbackup", {1});
    EXPECT_THAT(jobs(*CheckPosHealthStatus(run.parts())), IsEmpty());
    EXPECT_THAT(run.errors(), IsEmpty());
}

TEST_F(HealthCheck, FindsTheAgeOfTheLastFullBackupOfEveryDatabase) {
    backup(0, databaseOf(0), 9);
    backup(0, databaseOf(0), 4);
    backup(0, databaseOf(0), 1, "I");
    const auto summary = CheckPosHealthStatus(run.parts());
    const TLastBackupDate* own = backupOf(*summary, "1", databaseOf(0));
    ASSERT_NE(own, nullptr);
    EXPECT_EQ(own->DaysSinceLastBackup, 4);
    EXPECT_EQ(own->LastBackupDate.date().daysTo(QDate::currentDate()), 4);
    EXPECT_EQ(own->AvdNr, "101");
    EXPECT_EQ(own->AvdNavn.toStdString(), department());
    EXPECT_EQ(own->Ik_Ku_ID, 1001);
    QStringList databases;
    for (const TLastBackupDate& each : summary->LastBackupDates.Items)
        if (each.Kassenr == "1") databases << each.DatabaseName;
    for (const char* each : {"master", "msdb", "tempdb"})
        EXPECT_TRUE(databases.contains(QString::fromUtf8(each))) << each;
    QStringList sorted = databases;
    sorted.sort(Qt::CaseInsensitive);
    EXPECT_EQ(databases, sorted);
}

TEST_F(HealthCheck, DatabaseWithoutABackupHasADayOfTheYear1900) {
    const auto summary = CheckPosHealthStatus(run.parts());
    const TLastBackupDate* own = backupOf(*summary, "2", databaseOf(1));
    ASSERT_NE(own, nullptr);
    EXPECT_EQ(own->LastBackupDate, db::DateTime(QDate(1900, 1, 1)));
    EXPECT_EQ(own->DaysSinceLastBackup, QDate(1899, 12, 31).daysTo(QDate::currentDate()));
}

TEST_F(HealthCheck, FetchIsToldTheAgeOfTheFirstDatabasesBackup) {
    run.chain.runInTill(0, "CREATE DATABASE [ABC]");
    run.parts().Roster.Open();
    ASSERT_TRUE(run.engine.ConnectSource());
    EXPECT_EQ(DaysSinceLastBackup(run.parts().Visit()), QDate(1899, 12, 31).daysTo(QDate::currentDate()));
    backup(0, "ABC", 6);
    backup(0, databaseOf(0), 3);
    EXPECT_EQ(DaysSinceLastBackup(run.parts().Visit()), 6);
}

TEST_F(HealthCheck, OneDatabaseCanBeAskedForByItsBackups) {
    backup(0, "Butikk''s", 2);
    backup(0, databaseOf(0), 3);
    run.chain.runInTill(0, "CREATE DATABASE [Butikk's]");
    run.parts().Roster.Open();
    ASSERT_TRUE(run.engine.ConnectSource());
    TLastBackupDates dates;
    dates.POSConnection = &run.source;
    dates.Execute(1001, "1", "Butikk's");
    ASSERT_EQ(dates.Items.size(), 1U);
    EXPECT_EQ(dates.Items[0].DatabaseName, "Butikk's");
    EXPECT_EQ(dates.Items[0].DaysSinceLastBackup, 2);
}

TEST_F(HealthCheck, TillsOfTheDemoChainAreLookedAfterWellAndBadly) {
    FleetRun five(FleetRun::tills({213, 213, 213, 213, 213}));
    TORVIK_NEEDS_SANDBOX(five.chain);
    giveUpkeep(five.chain);
    giveUpkeep(five.chain);
    const auto summary = CheckPosHealthStatus(five.parts());
    QStringList failed;
    for (const TFailedJob& each : summary->FailedJobs.Items) failed << each.Kassenr + u' ' + each.JobName;
    EXPECT_EQ(failed, (QStringList{"3 Reindeksering", "4 Nattlig backup", "5 Nattlig backup"}));
    QStringList ages;
    for (std::size_t till = 0; till < 5; ++till) {
        const TLastBackupDate* own =
            backupOf(*summary, QString::number(till + 1), five.chain.model().tills[till].database);
        ASSERT_NE(own, nullptr);
        ages << (own->DaysSinceLastBackup > 5000 ? QStringLiteral("ingen") : QString::number(own->DaysSinceLastBackup));
    }
    EXPECT_EQ(ages, (QStringList{"0", "1", "3", "12", "ingen"}));
}

class HealthCheckAtSixTills : public HealthCheck {
protected:
    HealthCheckAtSixTills() : HealthCheck({213, 213, 213, 213, 213, 213}) {}
};

TEST_F(HealthCheckAtSixTills, StopsAtNoTillAndKeepsWhatATillHadTold) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    for (std::size_t till = 0; till < 6; ++till) job(till, "Nattbackup", {0});
    run.spoilTills("backupset");
    run.chain.runInTill(4, "USE msdb DROP TABLE sysjobs");
    const auto summary = CheckPosHealthStatus(run.parts());
    QStringList withJobs;
    QStringList withBackups;
    for (const TFailedJob& each : summary->FailedJobs.Items) withJobs << each.Kassenr;
    for (const TLastBackupDate& each : summary->LastBackupDates.Items)
        if (!withBackups.contains(each.Kassenr)) withBackups << each.Kassenr;
    EXPECT_EQ(withJobs, (QStringList{"1", "4", "6"})) << "the fourth lost its connection behind its jobs";
    EXPECT_EQ(withBackups, (QStringList{"1", "6"}));
    const QStringList errors = run.errors();
    ASSERT_EQ(errors.size(), 4);
    EXPECT_EQ(errors[0], "Klarte ikke å koble til (avd. 101, kasse 2)");
    EXPECT_EQ(errors[1], "Klarte ikke å koble til (avd. 101, kasse 3)");
    for (int failed : {2, 3})
        EXPECT_THAT(errors[failed].toStdString(), StartsWith("En feil oppstod i rutinen CheckPosHealthStatus: "));
    EXPECT_THAT(errors[3].toStdString(), HasSubstr("sysjobs"));
    EXPECT_EQ(run.lines().last(), "fullføRT HELSESJEKK");
}

TEST_F(HealthCheckAtSixTills, CancelEndsItBehindTheTill) {
    run.engine.Seam.pumpFor = [this](int) { run.engine.SetCancelRequest(true); };
    run.engine.RetryWaitTime = 1;
    EXPECT_THROW(static_cast<void>(CheckPosHealthStatus(run.parts())), EAbort);
    EXPECT_EQ(run.log().mid(run.log().size() - 2),
              (QStringList{QStringLiteral("Avbrutt av bruker"),
                           QStringLiteral("Ferdige kasser da kjøringen ble avbrutt: avd. 101 kasse 1")}));
}

}  // namespace
}  // namespace torvik::test
