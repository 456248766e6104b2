#include <gtest/gtest.h>

#include <QFile>

#include "engine/base/abort.h"
#include "engine/db/query.h"
#include "engine/status/oppgjor_status.h"
#include "tests/engine/small_chain.h"
#include "tests/support/recording_sink.h"

namespace torvik {
namespace {

const QString kWait = QStringLiteral("Venter i 20 sekunder på neste forsøk");

class SettlementRun : public testing::Test {
protected:
    SettlementRun() {
        chain.engine.OnFetchTill = [this](TillVisit& visit) {
            EXPECT_TRUE(chain.source.Connected());
            const TillIdentity& till = visit.Till;
            fetched.append(till.Avdelingsnummer + u'/' + till.Kassenummer);
            if (fetch) fetch(fetched.last());
            visit.Status->SetStatus(till.Ik_Ku_Id, till.Avdelingsnummer, QStringLiteral("Storgata"), till.Kassenummer,
                                    ostHentet, oksTrue, {}, QTime(0, 0, 1), 0);
        };
        chain.engine.OnProgress = [this](QObject*, int percent, const QString& text) {
            progress.append(QStringLiteral("%1 ").arg(percent) + text);
        };
        chain.engine.Tasks = {taHent};
        chain.engine.RetryCount = 1;
    }

    // What DoOnTimer or the window does before a run: the work list becomes all tills.
    void chooseAllTills() {
        chain.target.Open();
        TAvdeling& roster = *chain.engine.Avdeling;
        roster.Open();
        for (db::Query& row = roster.Qry(); !row.Eof(); row.Next()) {
            TKasseItem& till = roster.KasseCollection()->Add();
            till.Ik_Ku_ID = static_cast<int>(row.FieldByName(QStringLiteral("ik_ku_id")).AsInteger());
            till.Kassenr = row.FieldByName(QStringLiteral("ikk_kassenummer")).AsString();
        }
    }
    void run() {
        chain.log.Clear();
        chain.errors.Clear();
        chain.engine.ExecuteOppgjor();
    }
    [[nodiscard]] QString savedLog() const {
        QFile file(chain.around.folder.filePath(QStringLiteral("ZoppgjorLog.txt")));
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }
    [[nodiscard]] QList<int> icons() const {
        QList<int> icons;
        const OppgjorStatusTable& table = chain.engine.ffraOppgjorStatus->memOppgjorStatus;
        for (int row = 0; row < table.RecordCount(); ++row) icons.append(table.Row(row).StatusIcon);
        return icons;
    }
    [[nodiscard]] int waits() const { return static_cast<int>(chain.messages().count(kWait)); }

    test::RecordedLog events;
    test::SmallChain chain;
    QStringList fetched;
    QStringList progress;
    std::function<void(const QString& till)> fetch;
};

TEST_F(SettlementRun, EmptyRosterDoesNoTillWorkAndSavesTheLog) {
    run();
    EXPECT_EQ(chain.messages(),
              (QStringList{QStringLiteral("STARTER oppgjør"),
                           QStringLiteral("Laster inn vare tabellen (kan ta litt tid) ..."),
                           QStringLiteral("Laster inn varealias tabellen (kan ta litt tid) ..."),
                           QStringLiteral("Lastet 0 varer for referanseintegritet"),
                           QStringLiteral("Antall kasser som skal behandles: 0"), QStringLiteral("Fullført oppgjør")}));
    EXPECT_TRUE(savedLog().endsWith(QStringLiteral("  : Fullført oppgjør\n")));
    EXPECT_TRUE(chain.errors.Lines().isEmpty());
    EXPECT_FALSE(chain.engine.AddToLogItems);
}

TEST_F(SettlementRun, WalksTheTillsInOrderAndNamesTheNextAndTheLastTwice) {
    chain.tills(QStringLiteral("1/1 1/2"));
    run();
    EXPECT_EQ(fetched, (QStringList{QStringLiteral("1/1"), QStringLiteral("1/2")}));
    EXPECT_EQ(
        chain.messages().mid(4),
        (QStringList{QStringLiteral("Antall kasser som skal behandles: 2"), QStringLiteral("Database versjon 213"),
                     QStringLiteral("Hentet oppgjør fra avd. 1, kasse 2. "), QStringLiteral("Database versjon 213"),
                     QStringLiteral("Hentet oppgjør fra avd. 1, kasse 2. "), QStringLiteral("Fullført oppgjør")}));
    EXPECT_EQ(
        progress,
        (QStringList{QStringLiteral("50 AvdID 1, KasseNr 1          fullført. Hentet oppgjør fra 1 av 2 kasser"),
                     QStringLiteral("100 AvdID 1, KasseNr 2          fullført. Hentet oppgjør fra 2 av 2 kasser")}));
    EXPECT_EQ(icons(), (QList<int>{1, 1}));
    EXPECT_FALSE(chain.source.Connected());
}

TEST_F(SettlementRun, TillsOfOneDepartmentHaveNoWaitBetweenThem) {
    chain.tills(QStringLiteral("1/1 1/2 1/3"));
    run();
    EXPECT_EQ(waits(), 0);
}

TEST_F(SettlementRun, OneWaitBetweenTwoDepartmentsAndNoneAfterTheLast) {
    chain.tills(QStringLiteral("1/1 1/2 2/1"));
    run();
    EXPECT_EQ(waits(), 1);
    EXPECT_EQ(
        chain.messages().mid(7),
        (QStringList{QStringLiteral("Database versjon 213"), kWait,
                     QStringLiteral("Hentet oppgjør fra avd. 2, kasse 1. "), QStringLiteral("Database versjon 213"),
                     QStringLiteral("Hentet oppgjør fra avd. 2, kasse 1. "), QStringLiteral("Fullført oppgjør")}));
}

TEST_F(SettlementRun, DepartmentThatIsNotFetchedCountsWithoutConnecting) {
    chain.department({.id = 5, .number = QStringLiteral("5"), .properties = 6});
    chain.till({.department = 5, .number = QStringLiteral("1")});
    run();
    EXPECT_EQ(fetched, QStringList());
    EXPECT_EQ(chain.source.Server(), QString());
    EXPECT_TRUE(chain.messages().contains(
        QStringLiteral("Henter ikke oppgjør (avd. 5, kasse 1), fordi den er satt opp slik at den ikke hentes "
                       "(ik_properties)")));
    EXPECT_EQ(progress.size(), 1);
    EXPECT_EQ(chain.requestsWith("select GETDATE()"), 1);
    EXPECT_TRUE(chain.errors.Lines().isEmpty());
}

TEST_F(SettlementRun, DepartmentWhoseNumberIsNotDigitsFailsAloneAndHasNoStatusRow) {
    chain.tills(QStringLiteral("1/1"));
    chain.department({.id = 5, .number = QStringLiteral("5B")});
    chain.till({.department = 5, .number = QStringLiteral("1"), .database = QStringLiteral("Kasse_5B_1")});
    run();
    EXPECT_EQ(fetched, QStringList{QStringLiteral("1/1")});
    EXPECT_TRUE(chain.messages().contains(
        QStringLiteral("Kasse 1 vises ikke i statusen, fordi avdelingsnummer 5B ikke er et tall")));
    EXPECT_EQ(chain.errorMessages(),
              (QStringList{QStringLiteral("Feil i ExecuteOppgjor for avd. 5B, kasse 1. Se feil nedenfor"),
                           QStringLiteral("Avdelingsnummer 5B er ikke et tall")}));
    EXPECT_EQ(icons(), QList<int>{1});
    EXPECT_EQ(chain.messages().last(), QStringLiteral("Fullført oppgjør"));
}

TEST_F(SettlementRun, StatusHoldsTheTillsOfTheRunAlone) {
    chain.tills(QStringLiteral("1/1 1/2"));
    chain.engine.ffraOppgjorStatus->SetStatus(9, QStringLiteral("9"), QStringLiteral("Fra kjøringen før"),
                                              QStringLiteral("1"), ostHentet, oksTrue, {}, QTime(0, 0, 1), 0);
    QList<int> rowsAtTheFirstTill;
    fetch = [&](const QString&) {
        rowsAtTheFirstTill << chain.engine.ffraOppgjorStatus->memOppgjorStatus.RecordCount();
    };
    run();
    EXPECT_EQ(rowsAtTheFirstTill, (QList<int>{2, 2}))
        << "the old row is gone, and each till has its own before its turn";
}

TEST_F(SettlementRun, FailingTillDoesNotStopTheOthers) {
    chain.tills(QStringLiteral("1/1 1/2"));
    chooseAllTills();
    fetch = [](const QString& till) {
        if (till == u"1/1") throw EngineError(QStringLiteral("oppgjøret feilet"));
    };
    run();
    EXPECT_EQ(fetched, (QStringList{QStringLiteral("1/1"), QStringLiteral("1/2")}));
    EXPECT_EQ(chain.errorMessages(),
              (QStringList{QStringLiteral("Feil i ExecuteOppgjor for avd. 1, kasse 1. Se feil nedenfor"),
                           QStringLiteral("oppgjøret feilet")}));
    EXPECT_EQ(icons(), (QList<int>{3, 1}));
    EXPECT_TRUE(progress.first().contains(QStringLiteral("fullført"))) << "also of a till that failed";
    const LogEntryTable& details = chain.engine.ffraOppgjorStatus->memLogEntries;
    EXPECT_EQ(details.RowsOf(1, QStringLiteral("1")).size(), 3) << "version and the two error lines";
}

TEST_F(SettlementRun, FailedTillsSessionStaysOpenUntilTheNext) {
    chain.tills(QStringLiteral("1/1"));
    fetch = [](const QString&) { throw EngineError(QStringLiteral("feil")); };
    run();
    EXPECT_TRUE(chain.source.Connected());
}

TEST_F(SettlementRun, TillThatCannotBeReachedIsATillError) {
    chain.department({});
    chain.till({});
    chooseAllTills();
    run();
    EXPECT_EQ(chain.errorMessages(),
              (QStringList{QStringLiteral("Feil i ExecuteOppgjor for avd. 1, kasse 1. Se feil nedenfor"),
                           QStringLiteral("Klarte ikke å koble til avdelingsnummer 1 kassenummer 1)")}));
    EXPECT_EQ(icons(), QList<int>{3});
    EXPECT_TRUE(savedLog().contains(QStringLiteral("Fullført oppgjør")));
}

TEST_F(SettlementRun, TillInATransactionIsRefused) {
    chain.tills(QStringLiteral("1/1"));
    db::Session other;
    other.SetConnectString(chain.target.ConnectString());
    other.SetDatabase(QStringLiteral("Kasse_1_1"));
    other.Open();
    other.StartTransaction();
    db::Query work(&other);
    work.SQL = QStringList{QStringLiteral("INSERT INTO OPPGJOR VALUES (1, 'NORMAL')")};
    work.ExecSQL();
    run();
    EXPECT_EQ(chain.errorMessages().value(1),
              QStringLiteral("Henter ikke oppgjør (avd. 1, kasse 1), fordi den er i en transaksjon. Kanskje "
                             "kasseoppgjøret ikke er avsluttet"));
    EXPECT_EQ(fetched, QStringList());
}

TEST_F(SettlementRun, TillWithTemporarySettlementsIsRefused) {
    chain.tills(QStringLiteral("1/1"));
    chain.run(QStringLiteral("Kasse_1_1"), QStringLiteral("INSERT INTO OPPGJOR VALUES (1, 'MIDLERTIDIG')"));
    run();
    EXPECT_EQ(chain.errorMessages().value(1),
              QStringLiteral("Henter ikke oppgjør (avd. 1, kasse 1), fordi den har midlertidige oppgjør "
                             "(OP_TYPE=MIDLERTIDIG)"));
    EXPECT_EQ(fetched, QStringList());
}

TEST_F(SettlementRun, CancelEndsItWithoutSavingAndIsCaught) {
    chain.tills(QStringLiteral("1/1 1/2"));
    fetch = [this](const QString&) { chain.engine.SetCancelRequest(true); };
    EXPECT_NO_THROW(run());
    EXPECT_EQ(fetched, QStringList{QStringLiteral("1/1")});
    EXPECT_EQ(chain.messages().mid(chain.messages().size() - 3),
              (QStringList{QStringLiteral("Avbrutt av bruker"),
                           QStringLiteral("Ferdige kasser da kjøringen ble avbrutt: avd. 1 kasse 1"),
                           QStringLiteral("En feil oppstod i rutinen ExecuteOppgjor: %1").arg(ErrorText(EAbort()))}));
    EXPECT_EQ(chain.errorMessages().size(), 1);
    EXPECT_TRUE(chain.engine.AddToLogItems);
    EXPECT_EQ(savedLog(), QString());
    EXPECT_TRUE(chain.engine.Cancelled);
}

TEST_F(SettlementRun, NextRunClearsTheCancel) {
    chain.tills(QStringLiteral("1/1"));
    chain.engine.Cancelled = true;
    chain.engine.SetCancelRequest(true);
    run();
    EXPECT_EQ(fetched.size(), 1);
    EXPECT_FALSE(chain.engine.Cancelled);
    EXPECT_FALSE(chain.engine.CancelRequest());
}

TEST_F(SettlementRun, StructuredEventsOfARun) {
    chain.tills(QStringLiteral("1/1"));
    chain.department({.id = 5, .number = QStringLiteral("5"), .properties = 4});
    chain.till({.department = 5, .number = QStringLiteral("9")});
    fetch = [](const QString&) { throw EngineError(QStringLiteral("feil")); };
    run();
    EXPECT_EQ(
        events.lines(),
        (QStringList{QStringLiteral("INF Starter innhenting av oppgjør "),
                     QStringLiteral("DBG Oppgjør skal hentes for {Kasse_antall} kasser Kasse_antall=2"),
                     QStringLiteral("ERR Feil ved innhenting av oppgjør for avdelingsnummer {Avdeling} kassenummer "
                                    "{Kassenummer}: {Feilmelding} Avdeling=1 Kassenummer=1 Feilmelding=feil"),
                     QStringLiteral("WRN Henter ikke oppgjør for avdeling {Avdeling} kasse {Kassenummer}, fordi den er "
                                    "satt opp slik at den ikke hentes (ik_properties) Avdeling=5 Kassenummer=9"),
                     QStringLiteral("INF Fullført innhenting av oppgjør for {Kasse_antall} kasser Kasse_antall=2")}));
}

TEST_F(SettlementRun, RosterThatCannotBeReadEndsTheRunQuietly) {
    chain.engine.Avdeling->SetExcludePosListSQL(QStringLiteral("AND finnes_ikke=1"));
    EXPECT_NO_THROW(run());
    ASSERT_EQ(chain.errorMessages().size(), 1);
    const QString line = QStringLiteral("En feil oppstod i rutinen ExecuteOppgjor: ");
    EXPECT_TRUE(chain.errorMessages().first().startsWith(line));
    EXPECT_EQ(events.lines().last(),
              QStringLiteral("ERR En feil oppstod ved innhenting av oppgjør: {Feilmelding} Feilmelding=") +
                  chain.errorMessages().first().mid(line.size()));
    EXPECT_EQ(savedLog(), QString());
}

TEST_F(SettlementRun, BrokenBackOfficeSessionIsOpenedAgainAndTheWalkGoesOn) {
    chain.tills(QStringLiteral("1/1 1/2 1/3"));
    fetch = [this](const QString& till) {
        if (till == u"1/2") chain.server.dropConnections();
    };
    run();
    EXPECT_EQ(fetched.join(u' '), QStringLiteral("1/1 1/2 1/3"));
    EXPECT_TRUE(chain.target.Connected());
    EXPECT_EQ(chain.messages().last(), QStringLiteral("Fullført oppgjør"));
    EXPECT_TRUE(chain.errors.Lines().isEmpty());
    EXPECT_TRUE(chain.around.sleeps.empty());
}

TEST_F(SettlementRun, TillGoneFromTheRosterAfterAReconnectEndsTheRun) {
    chain.tills(QStringLiteral("1/1 1/2 1/3"));
    fetch = [this](const QString& till) {
        if (till != u"1/2") return;
        chain.run(chain.kBackOffice, QStringLiteral("DELETE FROM Internkundekasse WHERE Ikk_Kassenummer='2'"));
        chain.server.dropConnections();
    };
    run();
    EXPECT_EQ(fetched.join(u' '), QStringLiteral("1/1 1/2"));
    EXPECT_EQ(chain.errorMessages(),
              QStringList{QStringLiteral("En feil oppstod i rutinen ExecuteOppgjor: Klarte ikke å lokalisere korrekt "
                                         "kasse (1,2) etter ny tilkobling til mÅlserver")});
}

TEST_F(SettlementRun, ThreeFailedReconnectsWithAPauseEachEndTheRun) {
    chain.tills(QStringLiteral("1/1 1/2"));
    fetch = [this](const QString&) { chain.cutServer(); };
    run();
    EXPECT_EQ(chain.around.sleeps, (std::vector<int>{3000, 3000, 3000}));
    EXPECT_EQ(fetched, QStringList{QStringLiteral("1/1")});
    EXPECT_EQ(progress, QStringList());
    EXPECT_TRUE(chain.messages().last().startsWith(QStringLiteral("En feil oppstod i rutinen ExecuteOppgjor: ")));
}

TEST_F(SettlementRun, BackOfficeThatComesBackAfterAPauseIsFound) {
    chain.tills(QStringLiteral("1/1 1/2"));
    fetch = [this](const QString& till) {
        if (till == u"1/1") chain.cutServer();
    };
    const auto pass = chain.engine.Seam.sleep;
    chain.engine.Seam.sleep = [&](int milliseconds) {
        pass(milliseconds);
        chain.server.startListening();
    };
    run();
    EXPECT_EQ(chain.around.sleeps, std::vector<int>{3000});
    EXPECT_EQ(fetched.join(u' '), QStringLiteral("1/1 1/2"));
    EXPECT_EQ(chain.messages().last(), QStringLiteral("Fullført oppgjør"));
}

TEST_F(SettlementRun, ProgramWithoutAFetchFailsEveryTillByName) {
    chain.tills(QStringLiteral("1/1"));
    chain.engine.OnFetchTill = nullptr;
    run();
    EXPECT_TRUE(chain.errorMessages().value(1).contains(QStringLiteral("OnFetchTill")));
}

TEST_F(SettlementRun, LinesOfATillReachItsOwnLogSaveBlankOnes) {
    chain.tills(QStringLiteral("1/1 1/2"));
    chooseAllTills();
    fetch = [this](const QString& till) {
        chain.engine.AddLog(QStringLiteral("  "));
        chain.engine.AddLog(till, false, kls_Warning);
    };
    run();
    QStringList logs;
    for (int i = 0; i < 2; ++i) {
        for (const TKasseLogItem& item : (*chain.engine.Avdeling->KasseCollection())[i].LogItems)
            logs.append(QStringLiteral("%1 %2 %3").arg(i).arg(item.Severity).arg(item.Msg));
    }
    EXPECT_EQ(logs, (QStringList{QStringLiteral("0 1 Database versjon 213"), QStringLiteral("0 2 1/1"),
                                 QStringLiteral("1 1 Hentet oppgjør fra avd. 1, kasse 2. "),
                                 QStringLiteral("1 1 Database versjon 213"), QStringLiteral("1 2 1/2"),
                                 QStringLiteral("1 1 Hentet oppgjør fra avd. 1, kasse 2. ")}));
}

TEST_F(SettlementRun, ErrorOfATillReachesOnAddLogWithTheTillsNumbers) {
    chain.tills(QStringLiteral("1/1"));
    QStringList heard;
    chain.engine.SetRunAsService(true);
    chain.engine.OnAddLog = [&](QObject*, const QString& text, int level, const QDateTime&) {
        heard.append(QStringLiteral("%1 ").arg(level) + text);
    };
    fetch = [this](const QString&) { chain.engine.AddLog(QStringLiteral("uro"), true, klsNone); };
    run();
    EXPECT_EQ(heard, QStringList{QStringLiteral("1 AvdID 1, KasseNr 1         : uro")});
}

}  // namespace
}  // namespace torvik
