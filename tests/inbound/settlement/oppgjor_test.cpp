// One till's settlements: posting in transaction pairs, what rolls back, what the till's status line says.
#include "inbound/settlement/oppgjor.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <mutex>

#include "engine/status/oppgjor_status.h"
#include "tests/inbound/one_till.h"

namespace torvik::test {
namespace {

const char* const kOpenOnTill =
    "SELECT COUNT(*) FROM OPPGJOR WHERE OP_TYPE = 'NORMAL' AND OP_OPPDATERTTIDSPUNKT IS NULL";

class OppgjorTest : public OneTill {
protected:
    [[nodiscard]] const OppgjorStatusRow& status() const {
        return run.engine.ffraOppgjorStatus->memOppgjorStatus.Row(0);
    }
};

TEST_F(OppgjorTest, PostsEachOpenSettlementAndMarksItDone) {
    EXPECT_EQ(execute(), QString());
    EXPECT_TRUE(run.postedWhole());
    EXPECT_EQ(run.tillValue(0, kOpenOnTill), "0");
    EXPECT_EQ(status().Hentet, true);
    EXPECT_EQ(run.logPane.Lines().filter(QStringLiteral("oppgjør 1 (02.03.2026) for avd 101")).size(), 1);
    EXPECT_EQ(run.log().filter(QStringLiteral("Transaksjon commit for")).size(), 6);
}

TEST_F(OppgjorTest, CommitsTheTillBeforeTheBackOffice) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    std::mutex mutex;
    QStringList commits;  // as the servers get them
    const auto note = [&](sandbox::Server& server, const char* side) {
        return server.faults().observe([&, side](const sandbox::RequestInfo& request) {
            if (request.text != "COMMIT TRANSACTION") return;
            const std::lock_guard lock(mutex);
            commits << QLatin1String(side);
        });
    };
    const int till = note(run.chain.till(0), "till");
    const int backOffice = note(run.chain.backOffice(), "back office");
    execute();
    run.chain.till(0).faults().forget(till);
    run.chain.backOffice().faults().forget(backOffice);
    EXPECT_EQ(commits.join(u','), QStringLiteral("till,back office,till,back office,till,back office"));
}

TEST_F(OppgjorTest, WaitsForTheListOfSettlementsBeyondTheUsualTimeout) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    const char* const list = "SELECT Op_Id,OP_TIDSPUNKT,In_AvdNr FROM Oppgjor";
    Requests requests(run.chain.till(0));
    delayBeyondTheUsualTimeout(run.chain.till(0), list);
    EXPECT_EQ(execute(), QString());
    EXPECT_TRUE(run.postedWhole());
    EXPECT_GE(requests.count(QString::fromUtf8(list)), 1);
}

TEST_F(OppgjorTest, WithoutAnOpenSettlementSaysSoAndCountsAsFetched) {
    run.chain.runInTill(0, "UPDATE OPPGJOR SET OP_OPPDATERTTIDSPUNKT = GETDATE()");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(status().Hentet, true);
    EXPECT_EQ(status().Melding, QStringLiteral("Ikke noe noe oppgjør å hente. Status OK.,"));
}

TEST_F(OppgjorTest, TheDtsOptionChoosesOnlyTheWords) {
    run.engine.IncludeDTS_TorvikPOS = true;
    run.chain.runInTill(0, "UPDATE OPPGJOR SET OP_OPPDATERTTIDSPUNKT = GETDATE()");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(status().Melding, QStringLiteral("Ikke noe noe oppgjør å hente. DTS er kjørt OK.,"));
}

TEST_F(OppgjorTest, SalesWithoutASettlementAreCountedButForThoseThatWereBrokenOff) {
    onTill(
        "INSERT ORDRE (OR_ID, OR_KU_ID, OR_AN_ID, OR_TIDSPUNKT, OR_TIDSPUNKTFERDIG, OR_STATUS) VALUES "
        "(801, 1, '100', '20260305', '20260305', 0), (802, 1, '100', '20260305', '20260305', 1)");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice("SELECT Ikk_AntIkkeOppgjorteSalg, Ikk_SistHentetOppgjor FROM Internkundekasse"),
              Rows({"2 | 2026-03-03 21:00:00.000"}));  // the made-up chain has one itself

    onTill("UPDATE ORDRE SET OR_STATUS = 1 WHERE OR_OP_ID IS NULL");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice("SELECT Ikk_AntIkkeOppgjorteSalg FROM Internkundekasse"), Rows({"0"}));
}

TEST_F(OppgjorTest, NumberOfUnsettledSalesIsTheTillsOwn) {
    otherDepartment();
    inBackOffice(
        "INSERT Internkundekasse (Ikk_Ik_Ku_Id, Ikk_Kassenummer, Ikk_Kt_Id, Ikk_Server, Ikk_Database, "
        "Ikk_AntIkkeOppgjorteSalg) SELECT Ku, Kasse, Ikk_Kt_Id, '', '', Antall FROM Internkundekasse, "
        "(SELECT 1001 Ku, '2' Kasse, 7 Antall UNION SELECT 900, '1', 8) AS andre");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice("SELECT Ikk_Ik_Ku_Id, RTRIM(Ikk_Kassenummer), Ikk_AntIkkeOppgjorteSalg, Ikk_SistHentetOppgjor "
                         "FROM Internkundekasse ORDER BY Ikk_Ik_Ku_Id, Ikk_Kassenummer"),
              Rows({"900 | 1 | 8 | NULL", "1001 | 1 | 1 | 2026-03-03 21:00:00.000", "1001 | 2 | 7 | NULL"}));
}

TEST_F(OppgjorTest, TillThatHasSettledNothingYetIsTold) {
    onTill("UPDATE OPPGJOR SET OP_TYPE = 'VARETELLING'");
    inBackOffice("UPDATE Internkundekasse SET Ikk_SistHentetOppgjor = GETDATE()");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice("SELECT Ikk_SistHentetOppgjor FROM Internkundekasse"), Rows({"NULL"}));
}

TEST_F(OppgjorTest, SettlementMarkedByAnotherRunRollsBackAndStopsTheTill) {
    bool marked = false;
    run.engine.Seam.pumpMessages = [&] {
        if (marked || !run.logPane.Lines().contains(QStringLiteral("oppgjør 2 (03.03.2026) for avd 101"))) return;
        marked = true;
        onTill("UPDATE OPPGJOR SET OP_OPPDATERTTIDSPUNKT = GETDATE() WHERE OP_ID = 2");
    };

    const QString failure = execute();

    EXPECT_EQ(failure, QStringLiteral("Det ble oppdatert 0 rader. Forventet 1"));
    EXPECT_EQ(run.tillValue(0, kOpenOnTill), "0");
    EXPECT_EQ(run.backOfficeValue("SELECT COUNT(DISTINCT Ts_Dato) FROM timesalg"), "1");  // of the first one alone
    EXPECT_EQ(run.errors(),
              QStringList({"<<<  Det ble oppdatert 0 rader. Forventet 1 >>>",
                           "Transaksjon rollback for måldatabase. Det ble oppdatert 0 rader. Forventet 1",
                           "Transaksjon rollback for kildedatabase. Det ble oppdatert 0 rader. Forventet 1"}));
}

TEST_F(OppgjorTest, PairThatCannotBeStartedIsToldByItsErrorAloneAndLeavesNoneOpen) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    sandbox::FaultRule refuse;
    refuse.match.textContains = "BEGIN TRANSACTION";
    refuse.action = sandbox::FaultAction::Fail;
    refuse.message = {.number = 50000, .severity = 16, .state = 1, .text = "Ingen transaksjon"};
    for (const int skip : {0, 1}) {  // the transfer's pair, and the first settlement's
        refuse.skip = static_cast<std::uint64_t>(skip);
        run.chain.backOffice().faults().add(refuse);
        run.logPane.Clear();

        EXPECT_EQ(execute(), QStringLiteral("Ingen transaksjon"));

        run.chain.backOffice().faults().clear();
        EXPECT_EQ(run.log().last(), QStringLiteral("Transaksjon startet for kildedatabase"));
        EXPECT_EQ(run.errors(), QStringList());
        EXPECT_FALSE(run.source.InTransaction());
        EXPECT_EQ(run.tillValue(0, kOpenOnTill), "2");
    }
    EXPECT_EQ(execute(), QString());
    EXPECT_TRUE(run.postedWhole());
}

TEST_F(OppgjorTest, SideThatCannotBeRolledBackIsToldAndTheOtherIsRolledBack) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    run.chain.runInBackOffice("UPDATE Internkunde SET Ik_Fakturaregel = 2");  // the first settlement fails
    sandbox::FaultRule refuse;
    refuse.match.textContains = "ROLLBACK";
    refuse.action = sandbox::FaultAction::Fail;
    refuse.message = {.number = 50000, .severity = 16, .state = 1, .text = "Ingen rollback"};
    run.chain.backOffice().faults().add(refuse);

    const QString failure = execute();

    EXPECT_TRUE(failure.contains(QStringLiteral("Or_Op_Id")));
    const QString marked = QStringLiteral("<<<  %1 >>>").arg(failure);
    const QString rolledBack = QStringLiteral("Transaksjon rollback for kildedatabase. ") + failure;
    EXPECT_EQ(run.log().mid(run.log().size() - 3), QStringList({marked, marked, rolledBack}));
    EXPECT_EQ(run.errors(), QStringList({marked, rolledBack}));
}

TEST_F(OppgjorTest, CancelDuringTheTransferRollsBothSidesBack) {
    run.engine.OnProgress = [this](QObject*, int, const QString& text) {
        if (text == QStringLiteral("Start Ordre: ")) run.engine.SetCancelRequest(true);
    };

    const QString failure = execute();

    EXPECT_TRUE(failure.startsWith(QStringLiteral(
        "Feil ved Execute prosedyren ved henting \"kjører dmPosToTorvik.Excecute\" (Avd 101, kasse 1): ")))
        << failure.toStdString();
    EXPECT_TRUE(failure.contains(QStringLiteral("Avbrutt av bruker. Avbrutt oppgave: (Overfører Ordre: 1 av")));
    EXPECT_EQ(run.backOfficeValue("SELECT COUNT(*) FROM PosOppgjor"), "0");
    EXPECT_EQ(run.backOfficeValue("SELECT COUNT(*) FROM dts_logg"), "0");
    EXPECT_EQ(run.tillValue(0, kOpenOnTill), "2");
    EXPECT_EQ(status().Hentet, false);
    EXPECT_TRUE(status().Melding.startsWith(
        QStringLiteral("DTS feilet: Feil ved overføring til avd 1001 kassenr 1. Ordre feilet (p=14)")));
}

TEST_F(OppgjorTest, DepartmentThatInvoicesItselfStopsAtItsFirstSettlementInAChain) {
    run.chain.runInBackOffice("UPDATE Internkunde SET Ik_Fakturaregel = 2");
    EXPECT_TRUE(execute().contains(QStringLiteral("Or_Op_Id")));
    EXPECT_EQ(run.tillValue(0, kOpenOnTill), "2");
    EXPECT_NE(run.backOfficeValue("SELECT COUNT(*) FROM PosOppgjor"), "0");  // phase one stands
    run.chain.runInBackOffice("UPDATE Internkunde SET Ik_Fakturaregel = 1");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(run.tillValue(0, kOpenOnTill), "0");
    EXPECT_TRUE(run.postedWhole());
}

TEST_F(OppgjorTest, ClearsTheStockMovementsWhereTheBackOfficeHasThem) {
    run.chain.runInBackOffice(
        "INSERT Posbeholdningstransaksjoner (Pbt_Ik_Ku_Id, Pbt_Va_Id, Pbt_Antall) VALUES (1001, '100000', 1)");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(run.backOfficeValue("SELECT COUNT(*) FROM Posbeholdningstransaksjoner"), "0");
}

TEST_F(OppgjorTest, StockMovementsAreClearedBehindWhatTheQueryHoldsAndTheLinesPileUp) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    run.engine.IsEnterprise = false;  // without credit orders, which use the same query
    Requests requests(run.chain.backOffice());
    EXPECT_EQ(execute(), QString());
    const QStringList texts = requests.with(QStringLiteral("delete from posbeholdningstransaksjoner"));
    ASSERT_EQ(texts.size(), 2);
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(texts[i].startsWith(QStringLiteral("update InternKundeKasse SET Ikk_AntIkkeOppgjorteSalg"))) << i;
        EXPECT_EQ(texts[i].count(QStringLiteral("delete from posbeholdningstransaksjoner")), i + 1);
    }
}

TEST_F(OppgjorTest, BackOfficeWithoutStockMovementsIsNoFailure) {
    run.chain.runInBackOffice("DROP TABLE Posbeholdningstransaksjoner");
    EXPECT_EQ(execute(), QString());
}

TEST_F(OppgjorTest, ListsTheOpenSettlementsAndLeavesTheQueryAsItWas) {
    TOppgjor oppgjor(visit(), run.joinPoints);
    QStringList list{QStringLiteral("old")};
    oppgjor.GetList(list);
    EXPECT_EQ(list, QStringList({"1", "2"}));
    settlement(9, "20260304 21:00");
    oppgjor.GetList(list);  // an open query would hold the rows of before
    EXPECT_EQ(list, QStringList({"1", "2", "9"}));
}

TEST_F(OppgjorTest, SavesTheTextThatMarksASettlement) {
    EXPECT_EQ(execute(), QString());
    QFile file(run.folder.filePath(QStringLiteral("Oppgjor.1.txt")));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_TRUE(file.readAll().startsWith(
        "update Oppgjor set OP_OPPDATERTTIDSPUNKT=GETDATE() where OP_OPPDATERTTIDSPUNKT is null and Op_Id=1"));
}

// The events of both phases, in their order; those of the copies and of the store sales have tests of their own.
QStringList eventsOfTheWalk(const RecordedLog& log) {
    QStringList events;
    for (const QString& line : log.lines())
        if (!line.startsWith(QStringLiteral("DBG "))) events << line;
    return events;
}

TEST_F(OppgjorTest, LogsItsEventsWithTheirValues) {
    EXPECT_EQ(execute(), QString());
    const QString who = QStringLiteral(" Avdeling=101 Kassenummer=1");
    const auto settlement = [&](const QString& text, int number) {
        return text + QStringLiteral(" Oppgjorsnummer=%1").arg(number) + who;
    };
    const QString begins =
        QStringLiteral("INF Henter oppgjør {Oppgjorsnummer} for avdeling {Avdeling} kassenummer {Kassenummer}");
    const QString ends =
        QStringLiteral("INF Hentet oppgjør {Oppgjorsnummer} for avdeling {Avdeling} kassenummer {Kassenummer}");
    EXPECT_EQ(
        eventsOfTheWalk(run.structured),
        QStringList(
            {QStringLiteral("INF Starter innhenting av {Antall_oppgjor} oppgjør for avdeling {Avdeling} kassenummer "
                            "{Kassenummer} Antall_oppgjor=2") +
                 who,
             QStringLiteral("INF Starter innhenting av transaksjoner  for avdeling {Avdeling} kassenummer "
                            "{Kassenummer}") +
                 who,
             QStringLiteral("INF Fullført innhenting av transaksjoner for avdeling {Avdeling} kassenummer "
                            "{Kassenummer}") +
                 who,
             settlement(begins, 1), settlement(ends, 1), settlement(begins, 2), settlement(ends, 2),
             QStringLiteral("INF Fullført innhenting av {Antall_oppgjor} oppgjør for avdeling {Avdeling} kasse "
                            "{Kassenummer} Antall_oppgjor=2") +
                 who}));
    EXPECT_TRUE(run.structured.lines().contains(QStringLiteral(
        "DBG Henter {Antall_oppgjor} oppgjør fra avdelingsnummer {Avdelingsnummer} kassenummer {Kassenummer} "
        "Antall_oppgjor=3 Avdelingsnummer=101 Kassenummer=1")));
    EXPECT_EQ(run.structured.lines()
                  .filter(QStringLiteral("DBG Henter {Antall_ordre} ordrer fra avdelingsnummer {Avdelingsnummer} "
                                         "kassenummer {Kassenummer} Antall_ordre="))
                  .size(),
              1);
}

TEST_F(OppgjorTest, FailureOfEitherPhaseHasItsEvent) {
    inBackOffice("UPDATE Internkunde SET Ik_Fakturaregel = 2");
    const QString ofTheSettlement = execute();
    EXPECT_EQ(eventsOfTheWalk(run.structured).last(),
              QStringLiteral("ERR En feil oppstod ved innhenting av oppgjør {Oppgjorsnummer} for avdeling {Avdeling} "
                             "kassenummer {Kassenummer}: {Feilmelding} Oppgjorsnummer=1 Avdeling=101 Kassenummer=1 "
                             "Feilmelding=") +
                  ofTheSettlement);

    onTill("ALTER TABLE ORDRELINJE DROP COLUMN OL_KORREKSJON");
    const QString ofTheTransfer = execute();
    EXPECT_EQ(eventsOfTheWalk(run.structured).last(),
              QStringLiteral("ERR En feil oppstod ved innhenting av transaksjoner for avdeling {Avdeling} kassenummer "
                             "{Kassenummer}: {Feilmelding} Avdeling=101 Kassenummer=1 Feilmelding=") +
                  ofTheTransfer);
}

TEST_F(OppgjorTest, LogOfAWholeTillInItsOrder) {
    run.logPane.Clear();
    EXPECT_EQ(execute(), QString());
    const QStringList begin{QStringLiteral("Transaksjon startet for kildedatabase"),
                            QStringLiteral("Transaksjon startet for måldatabase")};
    const QStringList end{QStringLiteral("Transaksjon commit for kildedatabase"),
                          QStringLiteral("Transaksjon commit for måldatabase")};
    QStringList log;
    for (const QString& line : run.log())  // the pane's line of a settlement stands without its time
        if (!line.isEmpty() && !line.startsWith(QStringLiteral("Behandler timesalg"))) log << line;
    EXPECT_EQ(log, QStringList(QStringLiteral("START OPPGJØR FOR AVDELING 101, KASSENUMMER 1")) + begin + end + begin +
                       end + begin + end + QStringList(QStringLiteral("SLUTT oppgjør FOR AVDELING 101")));
}

}  // namespace
}  // namespace torvik::test
