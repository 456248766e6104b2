// What a till's fetch tells the run status, call by call, and where it takes a cancel.
#include <gtest/gtest.h>

#include "engine/status/oppgjor_status.h"
#include "tests/inbound/one_till.h"

namespace torvik::test {
namespace {

const char* const kOpenOnTill =
    "SELECT COUNT(*) FROM OPPGJOR WHERE OP_TYPE = 'NORMAL' AND OP_OPPDATERTTIDSPUNKT IS NULL";
const char* const kTransferred = "SELECT COUNT(*) FROM PosOppgjor WHERE Pos_Op_Synkronisert IS NOT NULL";

class StatusCalls : public OneTill {
protected:
    StatusCalls() {
        inBackOffice("UPDATE Kunde SET Ku_Adresse1 = 'Torvik Åmot' WHERE Ku_Id = 1001");
        run.engine.Avdeling->Close();
        run.engine.Avdeling->Open();
        // As the run gives every till its row before the walk.
        for (const char* till : {"1", "2"})
            status().SetStatus(0, QStringLiteral("101"), {}, QString::fromUtf8(till), ostDoNotSet, oksNull, {}, QTime(),
                               -1);
        QObject::connect(&status(), &TfraOppgjorStatus::RowExpanded, &context_,
                         [this](int row) { calls << told(status().memOppgjorStatus.Row(row)); });
    }
    [[nodiscard]] TfraOppgjorStatus& status() const { return *run.engine.ffraOppgjorStatus; }
    [[nodiscard]] const OppgjorStatusRow& row() const { return status().memOppgjorStatus.Row(0); }

    // "fetched, message, days since the backup" of the row that a call has left; the time where it is none at all.
    static QString told(const OppgjorStatusRow& row) {
        const QString fetched = !row.Hentet   ? QStringLiteral("-")
                                : *row.Hentet ? QStringLiteral("ja")
                                              : QStringLiteral("nei");
        const QString days = row.DagerSidenBackup ? QString::number(*row.DagerSidenBackup) : QStringLiteral("-");
        return QStringLiteral("%1, %2, %3%4")
            .arg(fetched, row.Melding, days, row.TidBrukt == QTime(0, 0) ? QStringLiteral(", 0") : QString());
    }
    // Runs with the backups known.
    QString executeWithBackup(std::function<int(TOppgjor&)> days) {
        run.joinPoints.DaysSinceLastBackup = std::move(days);
        TOppgjor oppgjor(visit(), run.joinPoints);
        oppgjor.IncludeLastBackupStatus = true;
        return failureOf([&] { oppgjor.Execute(); });
    }
    // The operator cancels when this line is told.
    void cancelAt(const QString& line) {
        run.engine.Seam.pumpMessages = [this, line] {
            if (run.logPane.Lines().filter(line).size() == 1) run.engine.SetCancelRequest(true);
        };
    }

    QStringList calls;

private:
    QObject context_;
};

TEST_F(StatusCalls, OfATillWithTwoOpenSettlements) {
    EXPECT_EQ(executeWithBackup([](TOppgjor&) { return 4; }), QString());
    EXPECT_EQ(calls, QStringList({"-, , 4", "ja, , 4", "ja, , 4"}));
    EXPECT_EQ(row().Ik_Ku_Id, 1001);
    EXPECT_EQ(row().Avdnr, QStringLiteral("101"));
    EXPECT_EQ(row().AvdNavn, QStringLiteral("Torvik Åmot"));
    EXPECT_EQ(row().Kassenr, QStringLiteral("1"));
    EXPECT_EQ(row().Sendt, std::nullopt);
    EXPECT_EQ(row().SisteOppgjor, db::DateTime(QDate(2026, 3, 3), QTime(21, 0)));
    EXPECT_EQ(row().AntSalgIkkeOppgjort, 1);
    const OppgjorStatusRow& other = status().memOppgjorStatus.Row(1);
    EXPECT_EQ(told(other), QStringLiteral("-, , -"));
    EXPECT_EQ(other.SisteOppgjor, std::nullopt);
    EXPECT_EQ(other.AntSalgIkkeOppgjort, std::nullopt);
}

TEST_F(StatusCalls, OfATillWithNothingToFetch) {
    onTill(
        "UPDATE OPPGJOR SET OP_OPPDATERTTIDSPUNKT = GETDATE()\nUPDATE ORDRE SET OR_STATUS = 1 WHERE OR_OP_ID IS NULL");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(calls, QStringList({"-, , -, 0", "ja, Ikke noe noe oppgjør å hente. Status OK.,, -"}));
    EXPECT_EQ(row().AntSalgIkkeOppgjort, std::nullopt);
}

TEST_F(StatusCalls, OfATillWhoseTransferFails) {
    onTill("ALTER TABLE ORDRELINJE DROP COLUMN OL_KORREKSJON");
    EXPECT_NE(execute(), QString());
    ASSERT_EQ(calls.size(), 1);
    EXPECT_TRUE(calls[0].startsWith(QStringLiteral(
        "nei, DTS feilet: Feil ved overføring til avd 1001 kassenr 1. Ordrelinje feilet (p=15): Invalid column")))
        << calls[0].toStdString();
}

TEST_F(StatusCalls, BackupsThatCannotBeReadAreNotToldAndFailNothing) {
    EXPECT_EQ(executeWithBackup([](TOppgjor&) -> int { throw EngineError(QStringLiteral("ingen msdb")); }), QString());
    EXPECT_EQ(calls, QStringList({"ja, , -", "ja, , -"}));
}

TEST_F(StatusCalls, CancelAtTheEndOfTheTransferLeavesTheSettlementsToTheNextRun) {
    // The last step reports nothing more, so the transfer stands.
    run.engine.OnProgress = [this](QObject*, int, const QString& text) {
        if (text == QStringLiteral("Start Avslutter overføring: ")) run.engine.SetCancelRequest(true);
    };
    EXPECT_NE(execute(), QString());
    EXPECT_EQ(backOffice(kTransferred), Rows({"3"}));  // the stock count with them
    EXPECT_EQ(till(kOpenOnTill), Rows({"2"}));
    EXPECT_EQ(run.log().last(), QStringLiteral("Avbrutt av bruker"));
    EXPECT_EQ(calls, QStringList());
}

TEST_F(StatusCalls, CancelDuringASettlementIsTakenBehindIt) {
    cancelAt(QStringLiteral("oppgjør 1 (02.03.2026)"));
    EXPECT_NE(execute(), QString());
    EXPECT_EQ(till("SELECT OP_ID FROM OPPGJOR WHERE OP_OPPDATERTTIDSPUNKT IS NOT NULL"), Rows({"1"}));
    EXPECT_EQ(backOffice("SELECT COUNT(DISTINCT Ts_Dato) FROM timesalg"), Rows({"1"}));
    EXPECT_EQ(calls, QStringList({"ja, , -"}));
    EXPECT_EQ(run.log().last(), QStringLiteral("Avbrutt av bruker"));
}

TEST_F(StatusCalls, CancelInASingleBackOfficeIsTakenBehindTheStaff) {
    run.engine.IsEnterprise = false;
    inBackOffice("DELETE InternKundeAnsatt");
    cancelAt(QStringLiteral("Oppdaterer Ansatte..."));
    EXPECT_NE(execute(), QString());
    EXPECT_EQ(backOffice("SELECT COUNT(*) FROM InternKundeAnsatt"), Rows({"3"}));
    EXPECT_EQ(backOffice("SELECT COUNT(*) FROM PosOppgjor"), Rows({"0"}));
}

TEST_F(StatusCalls, CancelInASingleBackOfficeIsTakenBehindItsFirstSettlement) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    run.engine.IsEnterprise = false;
    const int observer = run.chain.till(0).faults().observe([this](const sandbox::RequestInfo& request) {
        if (request.text.find("select MIN(in_avdnr)") != std::string::npos) run.engine.SetCancelRequest(true);
    });
    EXPECT_NE(execute(), QString());
    run.chain.till(0).faults().forget(observer);
    EXPECT_EQ(backOffice("SELECT Pos_Op_Id FROM PosOppgjor"), Rows({"0"}));
    EXPECT_EQ(run.log().last(), QStringLiteral("Avbrutt av bruker"));
    EXPECT_FALSE(run.log().contains(QStringLiteral("Transaksjon startet for kildedatabase")));
}

}  // namespace
}  // namespace torvik::test
