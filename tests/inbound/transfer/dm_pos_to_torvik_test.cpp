// The transfer of one till: its steps, its marks in dts_logg, its failures.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include "tests/inbound/one_till.h"
#include "tests/inbound/till_transfer.h"

namespace torvik::test {
namespace {

// The log types that the run has written, in order, as its own list tells them.
QString marks(const TillTransfer& transfer) {
    transfer.dm.SaveLog();
    QFile file(QStringLiteral("PosToTorvikLog.txt"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    QStringList types;
    for (const QString& line : QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts))
        types << line.section(u',', 0, 0).section(u' ', 1);
    return types.join(u' ');
}

TEST(TillTransfer, StartsAtTheFirstSettlementWhereNoneIsSynchronised) {
    TillTransfer transfer;
    TORVIK_NEEDS_SANDBOX(transfer.run.chain);
    Requests requests(transfer.run.chain.till(0));
    EXPECT_EQ(transfer.execute(), QString());
    EXPECT_EQ(requests.count(QStringLiteral("SELECT * FROM Oppgjor WHERE OP_ID >= 1")), 1);
}

TEST(TillTransfer, StartsBehindTheLastSynchronisedSettlement) {
    TillTransfer transfer;
    TORVIK_NEEDS_SANDBOX(transfer.run.chain);
    transfer.otherDepartment();
    transfer.run.chain.runInBackOffice(
        "INSERT PosOppgjor (Pos_Op_Ik_Ku_Id, Pos_Op_Kassenr, Pos_Op_Id, Pos_Op_Tidspunkt, Pos_Op_Type, Pos_Op_Status, "
        "Pos_Op_Synkronisert) VALUES (1001, '1', 1, GETDATE(), 'NORMAL', 0, GETDATE()), "
        "(1001, '1', 2, GETDATE(), 'NORMAL', 0, NULL), (1001, '2', 8, GETDATE(), 'NORMAL', 0, GETDATE()), "
        "(900, '1', 9, GETDATE(), 'NORMAL', 0, GETDATE())");
    Requests requests(transfer.run.chain.till(0));
    EXPECT_EQ(transfer.execute(), QString());
    EXPECT_EQ(requests.count(QStringLiteral("SELECT * FROM Oppgjor WHERE OP_ID >= 2")), 1);
}

TEST(TillTransfer, WaitsForAStagingTableBeyondTheUsualTimeout) {
    TillTransfer transfer;
    TORVIK_NEEDS_SANDBOX(transfer.run.chain);
    Requests requests(transfer.run.chain.backOffice());
    delayBeyondTheUsualTimeout(transfer.run.chain.backOffice(), "FROM Temp_Ordre_Import");
    EXPECT_EQ(transfer.execute(), QString());
    EXPECT_GE(requests.count(QStringLiteral("FROM Temp_Ordre_Import")), 1);
}

TEST(TillTransfer, TillWithoutVouchersPassesTheirStepsInSilence) {
    TillTransfer transfer(158);
    EXPECT_EQ(transfer.execute(), QString());
    EXPECT_FALSE(transfer.progress.contains(QStringLiteral("Start Kupong: ")));
    EXPECT_FALSE(transfer.progress.contains(QStringLiteral("Start KupongOrdrelinje: ")));
    EXPECT_TRUE(transfer.progress.contains(QStringLiteral("Start Betaling: ")));
}

TEST(TillTransfer, OldTillHasNoStepsOfLaterVersions) {
    TillTransfer transfer(137);
    EXPECT_EQ(transfer.execute(), QString());
    for (const char* step :
         {"Vedlegg", "Signatur", "BetalingSignatur", "OrdreSignatur", "OppgjorSignatur", "Ordreretur", "VippsBetaling"})
        EXPECT_FALSE(transfer.progress.contains(QStringLiteral("Start %1: ").arg(QString::fromUtf8(step)))) << step;
    EXPECT_TRUE(transfer.progress.contains(QStringLiteral("Start TimerPrKode: ")));
}

TEST(TillTransfer, CancelDuringTheFirstRowEndsTheTableAndLeavesNothing) {
    TillTransfer transfer;
    transfer.onProgress = [&](const QString& text) {
        if (text == QStringLiteral("Start Ordre: ")) transfer.dm.CheckForCancel = true;
    };

    const QString failure = transfer.execute();

    EXPECT_TRUE(failure.startsWith(QStringLiteral(
        "Feil ved overføring til avd 1001 kassenr 1. Ordre feilet (p=14): Avbrutt av bruker. Avbrutt oppgave: (Overfører Ordre: 1 av ")))
        << failure.toStdString();
    EXPECT_EQ(marks(transfer), QStringLiteral("0 1 4"));  // written, and gone with the rollback
    EXPECT_EQ(transfer.staged("SELECT COUNT(*) FROM dts_logg"), "0");
    EXPECT_EQ(transfer.staged("SELECT COUNT(*) FROM Temp_Ordre_Import"), "0");
}

TEST(TillTransfer, GoesOnWhereAStartMarkIsYoungAndAddsItsOwn) {
    TillTransfer transfer;
    transfer.run.chain.runInBackOffice(
        "INSERT dts_logg (dl_dlt_id, dl_ik_ku_id, dl_kassenr, dl_tidspunkt, dl_dp_id) VALUES (0, 1001, '1', GETDATE(), 1)");
    std::string marks;
    transfer.onProgress = [&](const QString& text) {
        if (!text.startsWith(QStringLiteral("Start Startup")) || !marks.empty()) return;
        db::Query query(&transfer.run.target);
        query.SQL = QStringList{QStringLiteral("SELECT COUNT(*) FROM dts_logg WHERE dl_dlt_id = 0")};
        query.Open();
        marks = query.Fields(0).AsString().toStdString();
    };
    EXPECT_EQ(transfer.execute(), QString());
    EXPECT_FALSE(transfer.dm.NoRecentStart());
    EXPECT_EQ(marks, "2");
}

TEST(TillTransfer, RecentStartIsTheTillsOwnOfTheLastTenMinutes) {
    TillTransfer transfer;
    transfer.otherDepartment();
    const auto startedRecently = [&](const std::string& department, const std::string& till, int minutesAgo) {
        transfer.run.chain.runInBackOffice(
            "DELETE dts_logg\nINSERT dts_logg (dl_dlt_id, dl_ik_ku_id, dl_kassenr, dl_tidspunkt, dl_dp_id) VALUES (0, " +
            department + ", '" + till + "', DATEADD(minute, -" + std::to_string(minutesAgo) + ", GETDATE()), 1)");
        EXPECT_EQ(transfer.execute(), QString());
        transfer.run.source.Close();
        transfer.run.target.Close();
        return !transfer.dm.NoRecentStart();
    };
    EXPECT_TRUE(startedRecently("1001", "1", 9));
    EXPECT_FALSE(startedRecently("1001", "1", 11));
    EXPECT_FALSE(startedRecently("1001", "2", 1));
    EXPECT_FALSE(startedRecently("900", "1", 1));
}

TEST(TillTransfer, OnlyItsOwnStartMarksAreDeleted) {
    TillTransfer transfer;
    transfer.otherDepartment();
    transfer.run.chain.runInBackOffice(
        "INSERT dts_logg (dl_dlt_id, dl_ik_ku_id, dl_kassenr, dl_tidspunkt, dl_dp_id) VALUES "
        "(0, 1001, '1', '20260301', 1), (0, 1001, '2', '20260301', 1), (0, 900, '1', '20260301', 1), "
        "(4, 1001, '1', '20260301', 1)");
    EXPECT_EQ(transfer.execute(), QString());
    EXPECT_EQ(transfer.run.backOfficeRows("SELECT dl_dlt_id, dl_ik_ku_id, dl_kassenr FROM dts_logg WHERE dl_dlt_id IN "
                                          "(0, 4) ORDER BY dl_dlt_id, dl_ik_ku_id"),
              Rows({"0 | 900 | 1", "0 | 1001 | 2", "4 | 1001 | 1"}));
}

TEST(TillTransfer, EmptyTableReportsItsStepAndNoRows) {
    TillTransfer transfer;
    EXPECT_EQ(transfer.execute(), QString());
    EXPECT_TRUE(transfer.progress.contains(QStringLiteral("Start Varemottak: ")));
    EXPECT_EQ(transfer.progress.filter(QStringLiteral("Overfører varemottak")), QStringList());
}

TEST(TillTransfer, MarksItsWayInDtsLogg) {
    TillTransfer transfer;
    EXPECT_EQ(transfer.execute(), QString());
    std::string types;
    for (const char* type : {"0", "1", "2", "3", "4", "5", "6", "7"})
        types += transfer.staged(std::string("SELECT COUNT(*) FROM dts_logg WHERE dl_dlt_id = ") + type);
    EXPECT_EQ(types, "01110101");

    transfer.dm.SaveLog();
    QFile file(QStringLiteral("PosToTorvikLog.txt"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_TRUE(
        QString::fromUtf8(file.readAll()).startsWith(QStringLiteral("Logtype: 0, Ik_ku_ID: 1001, Kassenr: 1, Info: ")));
}

TEST(TillTransfer, FailingPostingSaysSoWithItsNumber) {
    TillTransfer transfer;
    transfer.run.chain.runInBackOffice(
        "ALTER PROCEDURE ExecuteDtsFromPos @Ik_Ku_Id int, @KasseNr int, @UnId uniqueidentifier AS RAISERROR('Kan ikke', 16, 1)");
    EXPECT_EQ(transfer.execute(),
              QStringLiteral("Feil ved overføring til avd 1001 kassenr 1. Insert Data feilet (p=42): Kan ikke"));
    EXPECT_EQ(marks(transfer), QStringLiteral("0 1 2 6"));
    EXPECT_EQ(transfer.staged("SELECT COUNT(*) FROM Temp_Ordre_Import"), "0");
}

TEST(TillTransfer, FailureBehindThePostingSaysSoAndWritesNoMark) {
    TillTransfer transfer;
    transfer.onTill("ALTER TABLE INNSTILLINGER DROP COLUMN IN_KLAR_HENT_TIMER");
    const QString failure = transfer.execute();
    EXPECT_TRUE(failure.startsWith(QStringLiteral(
        "Feil ved overføring til avd 1001 kassenr 1. Oppdater Timer feilet (p=43): Invalid column name")))
        << failure.toStdString();
    EXPECT_EQ(marks(transfer), QStringLiteral("0 1 2 3"));
}

TEST(TillTransfer, FailureOfTheFailuresMarkTakesItsPlace) {
    TillTransfer transfer;
    transfer.run.chain.runInBackOffice("DELETE dts_loggtype WHERE dlt_id = 4");
    transfer.onTill("ALTER TABLE ORDRELINJE DROP COLUMN OL_KORREKSJON");
    const QString failure = transfer.execute();
    EXPECT_TRUE(failure.contains(QStringLiteral("FK_dts_logg_dts_loggtype"))) << failure.toStdString();
    EXPECT_FALSE(failure.contains(QStringLiteral("Feil ved overføring")));
}

TEST(TillTransfer, FailureOfTheMarkBeforeTheCopiesNamesTheStepBefore) {
    TillTransfer transfer;
    transfer.run.chain.runInBackOffice("DELETE dts_loggtype WHERE dlt_id = 1");
    EXPECT_TRUE(transfer.execute().startsWith(
        QStringLiteral("Feil ved overføring til avd 1001 kassenr 1. Startup feilet (p=4): ")));
}

TEST(TillTransfer, MissingColumnFailsAtItsStepWithTheServersText) {
    TillTransfer transfer;
    transfer.onTill("ALTER TABLE ORDRELINJE DROP COLUMN OL_KORREKSJON");
    const QString failure = transfer.execute();
    EXPECT_TRUE(failure.startsWith(QStringLiteral(
        "Feil ved overføring til avd 1001 kassenr 1. Ordrelinje feilet (p=15): Invalid column name 'OL_KORREKSJON'.")))
        << failure.toStdString();
}

TEST(TillTransfer, StockCountFlagFollowsTheSettlementWhereTheOrderSaysNothing) {
    TillTransfer transfer;
    transfer.onTill("UPDATE ORDRE SET OR_VARETELLING = NULL");
    EXPECT_EQ(transfer.execute(), QString());
    EXPECT_EQ(transfer.staged("SELECT COUNT(*) FROM Temp_Ordre_Import WHERE toi_varetelling = 1"),
              transfer.run.tillValue(
                  0, "SELECT COUNT(*) FROM ORDRE JOIN OPPGJOR ON OR_OP_ID = OP_ID WHERE OP_TYPE = 'VARETELLING'"));
    EXPECT_EQ(transfer.staged("SELECT COUNT(*) FROM Temp_Ordre_Import WHERE toi_varetelling IS NULL"), "0");
}

TEST(TillTransfer, UnknownDisplayItemIsNone) {
    TillTransfer transfer;
    transfer.onTill("UPDATE ORDRELINJE SET OL_VISNINGSVARE = NULL");
    EXPECT_EQ(transfer.execute(), QString());
    EXPECT_EQ(transfer.staged("SELECT COUNT(*) FROM Temp_Ordrelinje_Import WHERE toli_visningsvare = 0"),
              transfer.staged("SELECT COUNT(*) FROM Temp_Ordrelinje_Import"));
}

TEST(TillTransfer, AbsurdPriceIsClamped) {
    TillTransfer transfer;
    transfer.onTill("UPDATE ORDRELINJE SET OL_SALGSPRIS = 2E+18 WHERE OL_ID = 1");
    EXPECT_EQ(transfer.execute(), QString());
    EXPECT_EQ(transfer.staged("SELECT COUNT(*) FROM Temp_Ordrelinje_Import "
                              "WHERE toli_ol_id = 1 AND toli_salgspris = 99999999999999.99E0"),
              "1");
}

TEST(TillTransfer, SettlementWithoutOrdersIsStagedAlone) {
    TillTransfer transfer;
    transfer.onTill(
        "INSERT OPPGJOR (OP_ID, OP_AN_ID, OP_TIDSPUNKT, OP_TYPE) SELECT 77, MIN(AN_ID), GETDATE(), 'NORMAL' FROM ANSATT");
    EXPECT_EQ(transfer.execute(), QString());
    EXPECT_EQ(transfer.staged("SELECT COUNT(*) FROM Temp_Oppgjor_Import WHERE toi_op_id = 77"), "1");
    EXPECT_EQ(transfer.staged("SELECT COUNT(*) FROM Temp_Ordre_Import WHERE toi_op_id = 77"), "0");
}

TEST(TillTransfer, VoucherUsedInTwoSettlementsIsStagedOnce) {
    TillTransfer transfer;
    transfer.run.chain.sellAnotherDay(0);
    transfer.onTill(R"(DELETE KUPONGORDRELINJE
DELETE KUPONG
INSERT KUPONG VALUES (9, 1, '20260301', 5, 2, 0)
INSERT KUPONGORDRELINJE SELECT 9, MIN(OL_ID) FROM ORDRELINJE JOIN ORDRE ON OR_ID = OL_OR_ID WHERE OR_OP_ID = 1
INSERT KUPONGORDRELINJE SELECT 9, MIN(OL_ID) FROM ORDRELINJE JOIN ORDRE ON OR_ID = OL_OR_ID WHERE OR_OP_ID = 3)");
    EXPECT_EQ(transfer.execute(), QString());
    EXPECT_EQ(transfer.staged("SELECT COUNT(*) FROM Temp_Kupong_Import"), "1");
    EXPECT_EQ(transfer.staged("SELECT COUNT(*) FROM Temp_KupongOrdrelinje_Import"), "2");
}

constexpr char kEndedTimeEntry[] = R"(INSERT TIMER (TI_ID, TI_AN_ID, TI_TIDINN, TI_TIDUT, TI_INNMETODE, TI_STATUS)
SELECT 1, MIN(AN_ID), '20260302 08:00', '20260302 16:00', 1, 2 FROM ANSATT
INSERT TIMERPRKODE VALUES (1, 5, NULL))";

TEST(TillTransfer, TimeEntryIsFetchedOnce) {
    TillTransfer transfer;
    transfer.onTill(kEndedTimeEntry);
    EXPECT_EQ(transfer.execute(), QString());
    EXPECT_EQ(transfer.staged("SELECT COUNT(*) FROM Temp_Timer_Import"), "1");
    EXPECT_EQ(transfer.staged("SELECT COUNT(*) FROM Temp_Timerprkode_Import"), "1");
    EXPECT_EQ(transfer.run.tillValue(0, "SELECT TI_STATUS FROM TIMER"), "18");
    EXPECT_EQ(transfer.execute(), QString());
    EXPECT_EQ(transfer.staged("SELECT COUNT(*) FROM Temp_Timer_Import"), "1");
}

TEST(TillTransfer, DepartmentOfReleasedTimeGetsNoneUntilTheTillReleasesIt) {
    TillTransfer transfer;
    transfer.run.chain.runInBackOffice("UPDATE Internkunde SET Ik_TimeImportType = 0 WHERE Ik_Ku_Id = 1001");
    transfer.onTill(kEndedTimeEntry);
    EXPECT_EQ(transfer.execute(), QString());
    EXPECT_EQ(transfer.staged("SELECT COUNT(*) FROM Temp_Timer_Import"), "0");
    EXPECT_EQ(transfer.run.tillValue(0, "SELECT TI_STATUS FROM TIMER"), "2");

    transfer.onTill("UPDATE INNSTILLINGER SET IN_KLAR_HENT_TIMER = '20260302 08:00'");
    EXPECT_EQ(transfer.execute(), QString());
    EXPECT_EQ(transfer.staged("SELECT COUNT(*) FROM Temp_Timer_Import"), "1");
    EXPECT_EQ(transfer.staged("SELECT COUNT(*) FROM Temp_Timerprkode_Import"), "1");
    EXPECT_EQ(transfer.run.tillValue(0, "SELECT TI_STATUS FROM TIMER"), "18");
    EXPECT_EQ(transfer.run.tillValue(0, "SELECT IN_KLAR_HENT_TIMER FROM INNSTILLINGER"), "NULL");
}

// An ended entry of each status, one that is not ended, and one whose end stands in its correction alone.
constexpr char kTimeEntryOfEachStatus[] =
    R"(INSERT TIMER (TI_ID, TI_AN_ID, TI_TIDINN, TI_TIDUT, TI_INNMETODE, TI_STATUS)
SELECT TI_STATUS, '100', '20260302 08:00', '20260302 16:00', 1, TI_STATUS
FROM (SELECT 0 AS TI_STATUS UNION SELECT 1 UNION SELECT 2 UNION SELECT 4 UNION SELECT 8 UNION SELECT 17) AS t
INSERT TIMER (TI_ID, TI_AN_ID, TI_TIDINN, TI_INNMETODE, TI_STATUS) VALUES (101, '100', '20260302 09:00', 1, 2)
INSERT TIMER (TI_ID, TI_AN_ID, TI_TIDINN, TI_INNMETODE, TI_STATUS, TI_KORRIGERTTIDINN, TI_KORRIGERTTIDUT)
VALUES (102, '100', '20260302 07:00', 1, 4, '20260302 10:00', '20260302 15:00')
INSERT TIMERPRKODE SELECT TI_ID, 5, NULL FROM TIMER)";

const char* const kStagedTimes = "SELECT tti_id FROM Temp_Timer_Import ORDER BY tti_id";
const char* const kStagedCodes = "SELECT ttpi_ti_id FROM Temp_Timerprkode_Import ORDER BY ttpi_ti_id";
const char* const kReleaseTime = "SELECT IN_KLAR_HENT_TIMER FROM INNSTILLINGER";
const char* const kTimesOnTill = "SELECT TI_ID, TI_STATUS FROM TIMER ORDER BY TI_ID";

TEST(TillTransfer, EndedTimeEntriesOfFourStatusesAreFetchedAndMarked) {
    TillTransfer transfer;
    transfer.onTill(kTimeEntryOfEachStatus);
    transfer.onTill("UPDATE INNSTILLINGER SET IN_KLAR_HENT_TIMER = '20260304'");
    transfer.otherDepartment();
    transfer.run.chain.runInBackOffice("UPDATE Internkunde SET Ik_TimeImportType = 0 WHERE Ik_Ku_Id = 900");
    EXPECT_EQ(transfer.execute(), QString());
    // Cleared; that nothing else was marked shows in it as well: what is given its status back keeps it.
    EXPECT_EQ(transfer.run.tillValue(0, kReleaseTime), "NULL");
    EXPECT_EQ(transfer.run.backOfficeRows(kStagedTimes), Rows({"1", "2", "4", "8", "102"}));
    EXPECT_EQ(transfer.run.backOfficeRows(kStagedCodes), Rows({"1", "2", "4", "8", "102"}));
    EXPECT_EQ(transfer.run.tillRows(0, kTimesOnTill),
              Rows({"0 | 0", "1 | 17", "2 | 18", "4 | 20", "8 | 24", "17 | 17", "101 | 2", "102 | 20"}));
}

TEST(TillTransfer, ReleasedTimeEntriesOfThreeStatusesAreFetchedAndMarkedEndedOrNot) {
    TillTransfer transfer;
    transfer.run.chain.runInBackOffice("UPDATE Internkunde SET Ik_TimeImportType = 0 WHERE Ik_Ku_Id = 1001");
    transfer.onTill(kTimeEntryOfEachStatus);
    transfer.onTill("UPDATE INNSTILLINGER SET IN_KLAR_HENT_TIMER = '20260302 09:00'");  // before the corrected begin
    EXPECT_EQ(transfer.execute(), QString());
    EXPECT_EQ(transfer.run.tillValue(0, kReleaseTime), "NULL");
    EXPECT_EQ(transfer.run.backOfficeRows(kStagedTimes), Rows({"2", "4", "8", "101"}));
    EXPECT_EQ(transfer.run.backOfficeRows(kStagedCodes), Rows({"2", "4", "8", "101"}));
    EXPECT_EQ(transfer.run.tillRows(0, kTimesOnTill),
              Rows({"0 | 0", "1 | 1", "2 | 18", "4 | 20", "8 | 24", "17 | 17", "101 | 18", "102 | 4"}));
}

TEST(TillTransfer, StaffThatTheBackOfficeHasAreNotSent) {
    TillTransfer transfer;
    EXPECT_EQ(transfer.execute(), QString());
    EXPECT_TRUE(transfer.progress.contains(QStringLiteral("Start Ansatt: ")));
    EXPECT_EQ(transfer.staged("SELECT COUNT(*) FROM Temp_InternkundeAnsatt_Import"), "0");
}

TEST(TillTransfer, StaffThatAnotherDepartmentHasAreSent) {
    TillTransfer transfer;
    transfer.otherDepartment();
    transfer.run.chain.runInBackOffice("UPDATE InternKundeAnsatt SET Ika_Ik_Ku_Id = 900 WHERE Ika_Id = '101'");
    EXPECT_EQ(transfer.execute(), QString());
    EXPECT_EQ(transfer.run.backOfficeRows("SELECT RTRIM(tikai_id) FROM Temp_InternkundeAnsatt_Import"), Rows({"101"}));
}

TEST(TillTransfer, DepartmentWithoutStaffIsSentAllOfItsOwn) {
    TillTransfer transfer;
    TORVIK_NEEDS_SANDBOX(transfer.run.chain);
    transfer.run.chain.runInBackOffice("DELETE InternKundeAnsatt");
    transfer.onTill(
        "INSERT ANSATT (AN_ID, AN_NAVN, AN_AKTIV, AN_RABATT, AN_RABKUNPAAORDPRIS, AN_NIVAA, AN_AVDNR) VALUES "
        "('900', 'Uten avdeling', 1, 0, 0, 1, NULL), ('901', 'En annens', 1, 0, 0, 1, '999')");
    Requests requests(transfer.run.chain.till(0));
    EXPECT_EQ(transfer.execute(), QString());
    EXPECT_EQ(requests.count(QStringLiteral("An_Id NOT IN ('-1')")), 1);
    EXPECT_EQ(transfer.staged("SELECT COUNT(*) FROM Temp_InternkundeAnsatt_Import"), "4");
    EXPECT_EQ(transfer.staged("SELECT COUNT(*) FROM Temp_InternkundeAnsatt_Import WHERE tikai_id = '901'"), "0");
}

TEST(TillTransfer, TillWithoutPayOutsPassesThem) {
    TillTransfer transfer(138);
    EXPECT_EQ(transfer.run.tillValue(0, "SELECT COUNT(*) FROM sysobjects WHERE name = 'UTBETALING'"), "0");
    EXPECT_EQ(transfer.execute(), QString());
    EXPECT_TRUE(transfer.progress.contains(QStringLiteral("Start UtbetalingImport: ")));
    EXPECT_EQ(transfer.staged("SELECT COUNT(*) FROM Temp_Utbetaling_Import"), "0");
}

TEST(TillTransfer, PayOutsOfTheFetchedSettlementsAreStagedAndListedOnTheTill) {
    TillTransfer transfer;
    transfer.onTill(
        "INSERT UTBETALING (UB_BT_ID, UB_NAVN, UB_KONTO) SELECT MIN(BT_ID), 'Berit', '15031234567' FROM BETALING");
    EXPECT_EQ(transfer.execute(), QString());
    EXPECT_EQ(transfer.staged("SELECT tui_kundenavn FROM Temp_Utbetaling_Import WHERE tui_status = 0"), "Berit");
    EXPECT_EQ(transfer.run.tillValue(0, "SELECT iUB_NAVN FROM UTBETALINGIMPORT"), "Berit");
    EXPECT_TRUE(transfer.progress.contains(QStringLiteral("Overfører Utbetalinger: 1 av 1")))
        << transfer.progress.filter(QStringLiteral("Utbetalinger")).join(u'\n').toStdString();
}

}  // namespace
}  // namespace torvik::test
