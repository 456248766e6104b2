// What becomes of a run when a till or the back office cannot be reached: told with its words, within the session's
// connection time-out, and with no password in any log.
#include <gtest/gtest.h>

#include <QElapsedTimer>

#include "engine/base/abort.h"
#include "engine/db/errors.h"
#include "engine/db/query.h"
#include "engine/status/oppgjor_status.h"
#include "tests/engine/small_chain.h"
#include "tests/support/line_relay.h"
#include "tests/support/recording_sink.h"

namespace torvik {
namespace {

constexpr int kConnectSeconds = 1;
constexpr int kSlackMs = 4000;  // for a machine that is busy with other things

class FailedConnections : public testing::Test {
protected:
    FailedConnections() {
        chain.tills(QStringLiteral("1/1 1/2 1/3"));
        chain.target.Open();
        chain.engine.Avdeling->Open();
        for (db::Query& row = chain.engine.Avdeling->Qry(); !row.Eof(); row.Next()) {
            TKasseItem& till = chain.engine.Avdeling->KasseCollection()->Add();
            till.Ik_Ku_ID = static_cast<int>(row.FieldByName(QStringLiteral("ik_ku_id")).AsInteger());
            till.Kassenr = row.FieldByName(QStringLiteral("ikk_kassenummer")).AsString();
        }
        chain.source.SetConnectionTimeout(kConnectSeconds);
        chain.engine.RetryCount = 1;
        chain.engine.Tasks = {taHent};
        chain.engine.OnFetchTill = [this](TillVisit& visit) { fetched.append(visit.Till.Kassenummer); };
    }

    // Till 2 gets another address or login.
    void setTill(const char* assignments) {
        chain.run(chain.kBackOffice, QStringLiteral("UPDATE Internkundekasse SET %1 WHERE Ikk_Kassenummer = '2'")
                                         .arg(QString::fromUtf8(assignments)));
    }
    void run() {
        chain.log.Clear();
        QElapsedTimer timer;
        timer.start();
        chain.engine.ExecuteOppgjor();
        elapsed = timer.elapsed();
    }
    // Everything that any log holds of the run.
    [[nodiscard]] QString allLogs() const {
        QStringList all = chain.log.Lines() + chain.errors.Lines() + events.lines();
        const TKasseCollection& workList = *chain.engine.Avdeling->KasseCollection();
        for (int i = 0; i < workList.Count(); ++i) {
            for (const TKasseLogItem& item : workList[i].LogItems) all.append(item.Msg);
        }
        const OppgjorStatusTable& table = chain.engine.ffraOppgjorStatus->memOppgjorStatus;
        for (int row = 0; row < table.RecordCount(); ++row) all.append(table.Row(row).Melding);
        return all.join(u'\n');
    }

    test::RecordedLog events;
    test::SmallChain chain;
    QStringList fetched;
    qint64 elapsed = 0;
};

struct Cause {
    const char* name;
    const char* assignments;  // of the till's row
    bool silent;              // the till takes the connection and never answers
    const char* reason;       // as the operator is told it
};

void PrintTo(const Cause& cause, std::ostream* out) {
    *out << cause.name;
}

class FailedConnection : public FailedConnections, public testing::WithParamInterface<Cause> {};

TEST_P(FailedConnection, IsToldAndPassedOver) {
    if (*GetParam().assignments) setTill(GetParam().assignments);
    test::LineRelay line(chain.server.port());
    if (GetParam().silent) {
        line.fallSilent();
        setTill(QStringLiteral("Ikk_Server = '127.0.0.1,%1'").arg(line.port()).toUtf8().constData());
    }

    run();

    EXPECT_EQ(fetched, (QStringList{QStringLiteral("1"), QStringLiteral("3")}));
    EXPECT_EQ(chain.errorMessages(),
              (QStringList{QStringLiteral("Feil i ExecuteOppgjor for avd. 1, kasse 2. Se feil nedenfor"),
                           QStringLiteral("Klarte ikke å koble til avdelingsnummer 1 kassenummer 2)")}));
    const QStringList told = events.lines().filter(QStringLiteral("ERR "));
    ASSERT_EQ(told.size(), 1);
    EXPECT_TRUE(told[0].startsWith(
        QStringLiteral("ERR Feil ved innhenting av oppgjør for avdelingsnummer {Avdeling} kassenummer {Kassenummer}: "
                       "{Feilmelding} Avdeling=1 Kassenummer=2 Feilmelding=Klarte ikke å koble til avdelingsnummer 1 "
                       "kassenummer 2) Aarsak=%1 Serversvar=")
            .arg(QString::fromUtf8(GetParam().reason))))
        << told[0].toStdString();
    const TfraOppgjorStatus& status = *chain.engine.ffraOppgjorStatus;
    const OppgjorStatusTable& table = status.memOppgjorStatus;
    const int row = table.Locate(QStringLiteral("1"), QStringLiteral("2"));
    EXPECT_EQ(table.Row(row).StatusIcon, 3);
    ASSERT_EQ(status.Failures(row).size(), 1U);
    EXPECT_EQ(status.Failures(row)[0].Facts.Reason(), QString::fromUtf8(GetParam().reason));
    EXPECT_FALSE(status.Failures(row)[0].OfficeLost);
    EXPECT_TRUE(status.Failures(table.Locate(QStringLiteral("1"), QStringLiteral("1"))).empty());
    EXPECT_LT(elapsed, kConnectSeconds * 1000 + kSlackMs);
    for (const char16_t* secret : {u"hemmelig", u"sesam-sesam"})
        EXPECT_FALSE(allLogs().contains(QString::fromUtf16(secret))) << allLogs().toStdString();
}

constexpr char kNotKnown[] = "Servernavnet er ikke kjent";
constexpr char kNoAnswer[] = "Serveren svarer ikke";
constexpr char kWrongLogin[] = "Feil brukernavn eller passord";

INSTANTIATE_TEST_SUITE_P(
    Causes, FailedConnection,
    testing::Values(Cause{"UnknownHost", "Ikk_Server = 'kasse-2.finnes-ikke.invalid'", false, kNotKnown},
                    Cause{"NobodyListens", "Ikk_Server = '127.0.0.1,1'", false, kNoAnswer},
                    Cause{"AcceptsAndNeverAnswers", "", true, kNoAnswer},
                    Cause{"WrongPassword", "Ikk_Passord = 'sesam-sesam'", false, kWrongLogin},
                    Cause{"UnknownUser", "Ikk_Brukernavn = 'ukjent'", false, kWrongLogin},
                    Cause{"DatabaseMissing", "Ikk_Database = 'Finnes_ikke'", false,
                          "Databasen finnes ikke på serveren, eller brukeren slipper ikke inn i den"},
                    Cause{"NoServerNamed", "Ikk_Server = ''", false, kNotKnown},
                    Cause{"ProviderWithoutADriver", "Ikk_Provider = 1", false, "Driveren for SQL Server mangler"}),
    [](const auto& test) { return std::string(test.param.name); });

// Reading the version may fail; then SET NOCOUNT decides. Each statement waits as long as a login, and as long again
// for the answer to its own cancelling.
TEST_F(FailedConnections, TillThatAnswersTheLoginAndThenNoMoreIsGivenUp) {
    chain.server.faults().add({.match = {.database = "Kasse_1_2"}, .action = sandbox::FaultAction::Hang, .times = 0});
    run();
    EXPECT_EQ(fetched, (QStringList{QStringLiteral("1"), QStringLiteral("3")}));
    EXPECT_EQ(chain.errorMessages().value(1),
              QStringLiteral("Klarte ikke å koble til avdelingsnummer 1 kassenummer 2)"));
    EXPECT_LT(elapsed, 4 * kConnectSeconds * 1000 + kSlackMs);
}

TEST_F(FailedConnections, TillThatFallsSilentAtATransactionsStartIsATillError) {
    chain.server.faults().add({.match = {.database = "Kasse_1_2", .textContains = "BEGIN TRANSACTION"},
                               .action = sandbox::FaultAction::Hang});
    chain.engine.OnFetchTill = [this](TillVisit& visit) {
        visit.TillSession.StartTransaction();
        visit.TillSession.Rollback();
        fetched.append(visit.Till.Kassenummer);
    };
    run();
    EXPECT_EQ(fetched, (QStringList{QStringLiteral("1"), QStringLiteral("3")}));
    EXPECT_EQ(chain.errorMessages().value(0),
              QStringLiteral("Feil i ExecuteOppgjor for avd. 1, kasse 2. Se feil nedenfor"));
    EXPECT_LT(elapsed, 2 * kConnectSeconds * 1000 + kSlackMs);
}

TEST_F(FailedConnections, ConnectionThatBreaksRightAfterTheLoginIsTriedAgain) {
    chain.engine.RetryCount = 2;
    chain.engine.Avdeling->Qry().First();
    // With the version, and then by itself on the session that is opened for it.
    chain.server.faults().add(
        {.match = {.textContains = "SET NOCOUNT"}, .action = sandbox::FaultAction::DropBefore, .times = 2});
    EXPECT_TRUE(chain.engine.ConnectSource());
    EXPECT_EQ(chain.messages(), (QStringList{QStringLiteral("Venter i 20 sekunder på neste forsøk"),
                                             QStringLiteral("Database versjon 213")}));
}

TEST_F(FailedConnections, TillWithoutSettingsConnectsWithTheVersionOfTheTillBeforeAndIsNotServedByIt) {
    chain.run(QStringLiteral("Kasse_1_2"), QStringLiteral("DROP TABLE innstillinger"));
    chain.run(QStringLiteral("Kasse_1_1"), QStringLiteral("UPDATE innstillinger SET in_dbversion = ' 188 '"));
    run();
    EXPECT_EQ(fetched, (QStringList{QStringLiteral("1"), QStringLiteral("3")}));
    EXPECT_EQ(chain.messages().filter(QStringLiteral("Database versjon")),
              (QStringList{QStringLiteral("Database versjon 188"), QStringLiteral("Database versjon 188"),
                           QStringLiteral("Database versjon 213")}));
    EXPECT_EQ(chain.errorMessages(),
              (QStringList{QStringLiteral("Feil i ExecuteOppgjor for avd. 1, kasse 2. Se feil nedenfor"),
                           QStringLiteral("Invalid object name 'innstillinger'.")}));
}

TEST_F(FailedConnections, BackOfficeThatIsDownAtTheStartEndsTheRunWithItsOwnWords) {
    chain.target.Close();
    chain.cutServer();
    run();
    EXPECT_EQ(fetched, QStringList());
    ASSERT_EQ(chain.errorMessages().size(), 1);
    EXPECT_TRUE(chain.errorMessages().first().startsWith(QStringLiteral("En feil oppstod i rutinen ExecuteOppgjor: ")));
    EXPECT_FALSE(allLogs().contains(QStringLiteral("hemmelig")));
}

TEST_F(FailedConnections, BackOfficeThatRefusesTheLoginNamesNoPassword) {
    chain.target.Close();
    chain.target.SetPassword(QStringLiteral("sesam-sesam"));
    run();
    ASSERT_EQ(chain.errorMessages().size(), 1);
    EXPECT_TRUE(chain.errorMessages().first().contains(QStringLiteral("Login failed for user 'sa'")))
        << chain.errorMessages().first().toStdString();
    EXPECT_FALSE(allLogs().contains(QStringLiteral("sesam-sesam")));
}

TEST_F(FailedConnections, BackOfficeThatStaysAwayEndsTheRunAndTheNextRunStartsAnew) {
    bool breaks = true;
    chain.engine.OnFetchTill = [&](TillVisit& visit) {
        fetched.append(visit.Till.Kassenummer);
        if (fetched.size() == 2 && breaks) chain.cutServer();
    };
    run();
    EXPECT_EQ(fetched, (QStringList{QStringLiteral("1"), QStringLiteral("2")}));
    EXPECT_TRUE(chain.errorMessages().last().startsWith(QStringLiteral("En feil oppstod i rutinen ExecuteOppgjor: ")));
    EXPECT_EQ(chain.errorMessages().filter(QStringLiteral("kasse 3")), QStringList()) << "nothing more was tried";
    EXPECT_FALSE(chain.target.Connected());

    breaks = false;
    chain.server.startListening();
    fetched.clear();
    chain.errors.Clear();
    run();
    EXPECT_EQ(fetched.size(), 3);
    EXPECT_EQ(chain.errorMessages(), QStringList());
}

}  // namespace
}  // namespace torvik
