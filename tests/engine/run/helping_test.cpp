// Nights that copies of the program share, over a small chain: one leads, another helps within the first one's visits.
#include "engine/run/helping.h"

#include <gtest/gtest.h>

#include <QSysInfo>
#include <optional>

#include "engine/base/abort.h"
#include "engine/db/query.h"
#include "engine/office/application_lock.h"
#include "engine/office/undecided_pair.h"
#include "engine/status/oppgjor_status.h"
#include "tests/engine/small_chain.h"

namespace torvik {
namespace {

const QString kMachine = QSysInfo::machineHostName();

// Another copy of the program over the same chain, with a clock of its own.
class Copy : public test::FakeEngine {
public:
    explicit Copy(const test::SmallChain& chain) {
        target.SetConnectString(chain.connectString(test::SmallChain::kBackOffice));
        engine.SetTargetConnection(&target);
        engine.SourceConnection = &source;
    }
    db::Session target;
    db::Session source;
};

class SharedNight : public testing::Test {
protected:
    SharedNight() : helper(chain) {
        chain.engine.ReceiveDataOnly = true;
        helper.engine.HelpFetching = true;
        for (TTorvikPos* engine : {&chain.engine, &helper.engine}) {
            engine->StartTime = QTime(5, 6);
            engine->RetryCount = 1;
            const bool leads = engine == &chain.engine;
            engine->OnFetchTill = [this, leads](TillVisit& visit) {
                const QString till = visit.Till.Avdelingsnummer + u'/' + visit.Till.Kassenummer;
                (leads ? led : helped).append(till);
                if (leads ? atLeading : atHelping) (leads ? atLeading : atHelping)(visit);
                visit.Status->SetStatus(visit.Till.Ik_Ku_Id, visit.Till.Avdelingsnummer, visit.Till.Ku_Adresse1,
                                        visit.Till.Kassenummer, ostHentet, oksTrue, {}, QTime(0, 0, 1), 0);
            };
        }
        helper.engine.OnAutoStart = [this](QObject*) { steps.append(QStringLiteral("start")); };
        helper.engine.OnAutoReceiveDataDone = [this](QObject*) { steps.append(QStringLiteral("akkumuler")); };
        helper.engine.OnExecuteDTSToPos = [this](RunParts&) { steps.append(QStringLiteral("send")); };
        helper.engine.OnExecuteVaretelling = [this](RunParts&) { steps.append(QStringLiteral("tell")); };
        helper.engine.OnAutoStartDone = [this](QObject*) { steps.append(QStringLiteral("slutt")); };
    }

    // The helping copy runs while the leading one is at its first till, and to its end.
    void helpDuringTheFirstVisit() {
        atLeading = [this](TillVisit&) {
            atLeading = nullptr;
            helper.engine.DoOnTimer();
        };
    }
    void night() { chain.engine.DoOnTimer(); }
    void office(const QString& sql) { chain.run(test::SmallChain::kBackOffice, sql); }
    [[nodiscard]] QString rowsLike(const QString& text) {
        return chain.value(
            test::SmallChain::kBackOffice,
            QStringLiteral("SELECT COUNT(*) FROM dts_logg WHERE dl_dlt_id = 1 AND dl_info LIKE '%1%'").arg(text));
    }
    void nightOfADeadCopy(const QString& began = QStringLiteral("getdate()")) {
        office(QStringLiteral("INSERT INTO dts_logg VALUES (1, 1, '1', %1, 1, "
                              "'Natt {6f9619ff-8b86-d011-b42d-00c04fc964ff}, maskin GAMMEL')")
                   .arg(began));
    }
    [[nodiscard]] QList<int> icons() {
        QList<int> icons;
        const OppgjorStatusTable& table = chain.engine.ffraOppgjorStatus->memOppgjorStatus;
        for (int row = 0; row < table.RecordCount(); ++row) icons.append(table.Row(row).StatusIcon);
        return icons;
    }
    [[nodiscard]] QString messageOf(int row) {
        return chain.engine.ffraOppgjorStatus->memOppgjorStatus.Row(row).Melding;
    }

    test::SmallChain chain;
    Copy helper;
    QStringList led;
    QStringList helped;
    QStringList steps;  // of the helping copy
    std::function<void(TillVisit&)> atLeading;
    std::function<void(TillVisit&)> atHelping;
};

TEST_F(SharedNight, TillsThatAHelpingCopyHasFetchedAreToldWithItsMachineAndNotServedAgain) {
    chain.tills(QStringLiteral("1/1 1/2 2/1"));
    helpDuringTheFirstVisit();
    night();
    EXPECT_EQ(led, QStringList{QStringLiteral("1/1")});
    EXPECT_EQ(helped, (QStringList{QStringLiteral("1/2"), QStringLiteral("2/1")}));
    EXPECT_EQ(icons(), (QList<int>{1, 1, 1}));
    EXPECT_EQ(messageOf(1), QStringLiteral("Hentet av maskin %1,").arg(kMachine));
    for (const char16_t* till : {u"(avd. 1, kasse 2)", u"(avd. 2, kasse 1)"})
        EXPECT_EQ(chain.messages().count(
                      QStringLiteral("Kassen %1 er hentet av maskin %2").arg(QString::fromUtf16(till), kMachine)),
                  1);
    EXPECT_EQ(chain.errorMessages(), QStringList());
    EXPECT_EQ(chain.messages().filter(QStringLiteral("Venter i")), QStringList()) << "no wait for a till of another's";
}

TEST_F(SharedNight, LinesAboutATillOfAnotherMachineStandUnderItInTheStatus) {
    chain.tills(QStringLiteral("1/1 1/2"));
    helpDuringTheFirstVisit();
    night();
    QStringList lines;
    const LogEntryTable& entries = chain.engine.ffraOppgjorStatus->memLogEntries;
    for (const int row : entries.RowsOf(1, QStringLiteral("2"))) lines << entries.Row(row).Msg;
    EXPECT_TRUE(lines.contains(QStringLiteral("Kassen (avd. 1, kasse 2) er hentet av maskin %1").arg(kMachine)));
}

TEST_F(SharedNight, HelpingCopyOnlyFetches) {
    chain.tills(QStringLiteral("1/1 1/2"));
    helper.engine.SynchonizedRun = true;
    helper.engine.IncludeVaretellingOnOppgjor = true;
    helpDuringTheFirstVisit();
    night();
    EXPECT_EQ(steps, (QStringList{QStringLiteral("start"), QStringLiteral("slutt")}));
    EXPECT_EQ(helper.messages().filter(QStringLiteral("neste steg")), QStringList())
        << "the flag is the leading copy's";
    EXPECT_EQ(helper.engine.Tasks, TTasks{taHent});
}

TEST_F(SharedNight, TillThatAHelpingCopyFailedAtIsServedByTheLeadingOne) {
    chain.tills(QStringLiteral("1/1 1/2"));
    helpDuringTheFirstVisit();
    atHelping = [](TillVisit&) { throw EngineError(QStringLiteral("linjen er dårlig")); };
    night();
    EXPECT_EQ(led, (QStringList{QStringLiteral("1/1"), QStringLiteral("1/2")}));
    EXPECT_EQ(icons(), (QList<int>{1, 1}));
    EXPECT_TRUE(chain.messages().contains(
        QStringLiteral("Maskin %1 klarte ikke å hente kassen (avd. 1, kasse 2). Prøver herfra").arg(kMachine)));
}

TEST_F(SharedNight, ErrorsOfATillThatAHelpingCopyFetchedAreTheLeadingCopysErrorsToo) {
    chain.tills(QStringLiteral("1/1 1/2"));
    helpDuringTheFirstVisit();
    atHelping = [](TillVisit& visit) { visit.Log.AddLog(QStringLiteral("Kortene ble ikke tatt"), true); };
    night();
    EXPECT_EQ(led, QStringList{QStringLiteral("1/1")});
    EXPECT_EQ(icons(), (QList<int>{1, 3}));
    EXPECT_EQ(chain.errorMessages(),
              QStringList{
                  QStringLiteral("Kassen (avd. 1, kasse 2) er hentet av maskin %1, med feil. Se loggen på den maskinen")
                      .arg(kMachine)});
}

TEST_F(SharedNight, TillThatTheLeadingCopyFailedAtIsNoHelpersTill) {
    chain.tills(QStringLiteral("1/1 1/2 1/3"));
    atLeading = [this](TillVisit& visit) {
        if (visit.Till.Kassenummer == u"1") throw EngineError(QStringLiteral("feilet"));
        atLeading = nullptr;
        helper.engine.DoOnTimer();
    };
    night();
    EXPECT_EQ(helped, QStringList{QStringLiteral("1/3")});
    EXPECT_EQ(icons(), (QList<int>{3, 1, 1}));
}

TEST_F(SharedNight, HelpingCopyWithoutALeadingOneWaitsHalfAnHourAndDoesNothing) {
    chain.tills(QStringLiteral("1/1"));
    const QDateTime began = helper.around.now;
    helper.engine.DoOnTimer();
    EXPECT_EQ(helped, QStringList());
    EXPECT_EQ(began.secsTo(helper.around.now), 30 * 60);
    EXPECT_EQ(helper.messages(),
              (QStringList{QStringLiteral("Venter i inntil 30 minutter på en innhenting å hjelpe til med"),
                           QStringLiteral("Ingen innhenting å hjelpe til med")}));
    EXPECT_EQ(steps, (QStringList{QStringLiteral("start"), QStringLiteral("slutt")}));
    EXPECT_EQ(rowsLike({}), QStringLiteral("0"));
}

TEST_F(SharedNight, HelpingCopyIsCancelledWhileItWaits) {
    chain.tills(QStringLiteral("1/1"));
    helper.around.onPump = [this] {
        if (helper.around.pumps == 100) helper.engine.SetCancelRequest(true);
    };
    EXPECT_THROW(helper.engine.DoOnTimer(), EAbort);
    EXPECT_EQ(steps.last(), QStringLiteral("slutt"));
}

TEST_F(SharedNight, HelpingCopyThatIsCancelledAtATillLeavesItToTheOthersAndEnds) {
    chain.tills(QStringLiteral("1/1 1/2"));
    nightOfADeadCopy();
    atHelping = [this](TillVisit& visit) {
        office(
            QStringLiteral("INSERT INTO dts_logg VALUES (1, 1, '1', dateadd(second, 1, getdate()), 1, "
                           "'Natt {00000000-8b86-d011-b42d-00c04fc964ff}, maskin NY')"));
        visit.Control.SetCancelRequest(true);
        visit.Control.TestCancel();
    };
    const QDateTime began = helper.around.now;
    EXPECT_THROW(helper.engine.DoOnTimer(), EAbort);
    EXPECT_EQ(helped, QStringList{QStringLiteral("1/1")});
    EXPECT_EQ(rowsLike(QStringLiteral("Slutt")), QStringLiteral("0"));
    EXPECT_EQ(began.secsTo(helper.around.now), 0) << "nothing is waited for";
}

TEST_F(SharedNight, TillWhoseTransferACancelHasEndedIsNobodysFailure) {
    chain.tills(QStringLiteral("1/1 1/2"));
    nightOfADeadCopy();
    atHelping = [](TillVisit& visit) {
        visit.Control.SetCancelRequest(true);
        throw EngineError(QStringLiteral("Avbrutt av bruker. Avbrutt oppgave: (Overfører Ordre: 1 av 2)"));
    };
    EXPECT_THROW(helper.engine.DoOnTimer(), EAbort);
    EXPECT_EQ(helped, QStringList{QStringLiteral("1/1")});
    EXPECT_EQ(rowsLike(QStringLiteral("Slutt")), QStringLiteral("0"));
}

TEST_F(SharedNight, HelpingCopyBeginsWhenTheNightDoes) {
    chain.tills(QStringLiteral("1/1 1/2"));
    atLeading = [](TillVisit&) {};
    helper.around.onPump = [this] {
        if (helper.around.pumps == 1000) nightOfADeadCopy();
    };
    helper.engine.DoOnTimer();
    EXPECT_EQ(helped, (QStringList{QStringLiteral("1/1"), QStringLiteral("1/2")}));
    EXPECT_TRUE(helper.messages().contains(QStringLiteral("Hjelper maskin GAMMEL med innhentingen")));
    EXPECT_EQ(helper.messages().last(), QStringLiteral("Hjelp til innhentingen fullført"));
}

TEST_F(SharedNight, HelpingCopyGoesToNoTillBehindTheEndOfTheNight) {
    chain.tills(QStringLiteral("1/1 1/2"));
    nightOfADeadCopy();
    atHelping = [this](TillVisit&) { office(QStringLiteral("DELETE FROM dts_logg WHERE dl_info LIKE 'Natt%'")); };
    const QDateTime began = helper.around.now;
    helper.engine.DoOnTimer();
    EXPECT_EQ(helped, QStringList{QStringLiteral("1/1")});
    EXPECT_EQ(began.secsTo(helper.around.now), 0) << "nothing is waited for";
}

TEST_F(SharedNight, LeadingCopyThatHasDiedLeavesEachTillOneVisitByAHelpingCopy) {
    chain.tills(QStringLiteral("1/1 1/2 1/3"));
    nightOfADeadCopy();
    atHelping = [](TillVisit& visit) {
        if (visit.Till.Kassenummer == u"2") throw EngineError(QStringLiteral("feilet"));
    };
    helper.engine.DoOnTimer();
    EXPECT_EQ(helped, (QStringList{QStringLiteral("1/1"), QStringLiteral("1/2"), QStringLiteral("1/3")}));
    // Armed once more the same day: what has been visited stays so.
    helper.engine.DoOnTimer();
    EXPECT_EQ(helped.size(), 3);
}

TEST_F(SharedNight, NightOfTheDayBeforeIsNobodys) {
    chain.tills(QStringLiteral("1/1"));
    nightOfADeadCopy(QStringLiteral("dateadd(hour, -13, getdate())"));
    helper.engine.DoOnTimer();
    EXPECT_EQ(helped, QStringList());
}

TEST_F(SharedNight, NextNightRemovesWhatEarlierOnesHaveLeftAndNothingElse) {
    chain.tills(QStringLiteral("1/1 1/2"));
    nightOfADeadCopy();
    office(
        QStringLiteral("INSERT INTO dts_logg VALUES (1, 1, '2', getdate(), 1, '1'), (7, 1, '2', getdate(), 1, '1'), "
                       "(1, 1, '1', getdate(), 1, 'Par {x}')"));
    helper.engine.DoOnTimer();
    EXPECT_EQ(rowsLike(QStringLiteral("Slutt {6f9619ff")), QStringLiteral("2"));
    EXPECT_EQ(rowsLike(QStringLiteral("Hjelp {6f9619ff")), QStringLiteral("1"));
    night();
    EXPECT_EQ(led, (QStringList{QStringLiteral("1/1"), QStringLiteral("1/2")})) << "another night";
    for (const char16_t* kind : {u"Natt", u"Hjelp", u"Slutt {6f9619ff"})
        EXPECT_EQ(rowsLike(QString::fromUtf16(kind)), QStringLiteral("0")) << QString::fromUtf16(kind).toStdString();
    EXPECT_EQ(rowsLike(QStringLiteral("Slutt")), QStringLiteral("2"));
    EXPECT_EQ(chain.value(test::SmallChain::kBackOffice,
                          QStringLiteral("SELECT COUNT(*) FROM dts_logg WHERE dl_info IN ('1', 'Par {x}')")),
              QStringLiteral("3"));
}

TEST_F(SharedNight, NightThatCannotBeSharedIsRunAlone) {
    chain.tills(QStringLiteral("1/1 1/2"));
    office(QStringLiteral("DROP TABLE dts_logg"));
    night();
    EXPECT_EQ(led, (QStringList{QStringLiteral("1/1"), QStringLiteral("1/2")}));
    EXPECT_EQ(icons(), (QList<int>{1, 1}));
    EXPECT_EQ(chain.errorMessages(), QStringList());
    EXPECT_EQ(chain.messages().filter(QStringLiteral("kan ikke hjelpe til")).size(), 1);
}

// What sharing costs a copy that runs its night alone: a row for each till, and three statements for the night.
TEST_F(SharedNight, NightThatNobodyHelpsCostsOneRoundTripMoreForEachTill) {
    chain.tills(QStringLiteral("1/1 1/2 1/3"));
    const auto requestsOf = [this](const std::function<void()>& run) {
        const int before = chain.requestsWith({});
        run();
        return chain.requestsWith({}) - before;
    };
    chain.target.Open();
    const int alone = requestsOf([this] { chain.engine.ExecuteOppgjor(); });
    int begun = 0;
    int fetched = 0;
    chain.engine.OnAutoStart = [&](QObject*) { begun = chain.requestsWith({}); };
    chain.engine.OnAutoReceiveDataDone = [&](QObject*) { fetched = chain.requestsWith({}); };
    night();
    const int kNight = 3;
    const int kTills = 3;
    EXPECT_EQ(fetched - begun - alone, kNight + kTills);
}

// Another session is at till 1/1 for as long as the test has it.
class TillOfAnother : public SharedNight {
protected:
    TillOfAnother() {
        chain.tills(QStringLiteral("1/1 1/2"));
        copy.SetConnectString(chain.connectString(test::SmallChain::kBackOffice));
        copy.Open();
        taken.emplace(copy, ApplicationLock::OfTill(1, QStringLiteral("1")));
    }
    // A helping copy has joined the night, and is at the till.
    void helperJoins() {
        atLeading = [this](TillVisit&) {
            office(QStringLiteral(
                "INSERT INTO dts_logg SELECT 1, 1, '1', getdate(), 1, 'Hjelp ' + "
                "substring(dl_info, 6, 38) + ', maskin HJELPER' FROM dts_logg WHERE dl_info LIKE 'Natt {%'"));
            atLeading = nullptr;
        };
    }
    db::Session copy;
    std::optional<ApplicationLock> taken;
    const QString stays = QStringLiteral("En annen kjøring betjener kassen (avd. 1, kasse 1)");
};

TEST_F(TillOfAnother, IsAnErrorAtOnceWhereNobodyHelps) {
    const QDateTime began = chain.around.now;
    night();
    EXPECT_EQ(chain.errorMessages().last(), stays);
    EXPECT_EQ(icons(), (QList<int>{3, 1}));
    EXPECT_EQ(began.secsTo(chain.around.now), 2) << "the night's two pauses";
}

TEST_F(TillOfAnother, IsWaitedForWhereSomebodyHelps) {
    helperJoins();
    const int kRounds = 5;
    int rounds = 0;
    chain.around.onPump = [&, last = chain.around.ticks]() mutable {
        if (chain.around.ticks - last < 1000) return;
        last = chain.around.ticks;
        if (++rounds == kRounds) taken.reset();
    };
    night();
    EXPECT_EQ(led, (QStringList{QStringLiteral("1/2"), QStringLiteral("1/1")}));
    EXPECT_EQ(chain.errorMessages(), QStringList());
    EXPECT_EQ(chain.messages().count(QStringLiteral("Venter på kasser som andre maskiner betjener")), 1);
}

TEST_F(TillOfAnother, IsAnErrorAfterAQuarterOfAnHourWhereSomebodyHelps) {
    helperJoins();
    const QDateTime began = chain.around.now;
    night();
    EXPECT_EQ(chain.errorMessages().last(), stays);
    EXPECT_NEAR(began.secsTo(chain.around.now), 15 * 60, 5);
}

TEST_F(TillOfAnother, IsNoErrorOfAHelpingCopy) {
    nightOfADeadCopy();
    helper.engine.DoOnTimer();
    EXPECT_EQ(helped, QStringList{QStringLiteral("1/2")});
    EXPECT_EQ(helper.errorMessages(), QStringList());
    EXPECT_EQ(rowsLike(QStringLiteral("Slutt")), QStringLiteral("1"));
}

// A pair of till 1/1 that another copy has left.
class TillWithAPairOfAnother : public SharedNight {
protected:
    TillWithAPairOfAnother() {
        chain.tills(QStringLiteral("1/1 1/2"));
        office(QStringLiteral("INSERT INTO dts_logg VALUES (1, 1, '1', getdate(), 1, 'Par {x} oppgjør 1')"));
    }
    static void undecided(const TillVisit& visit) {
        if (visit.Till.Kassenummer == u"1") throw UndecidedPair(QStringLiteral("Kassen er halvferdig."));
    }
    void resolve() { office(QStringLiteral("DELETE FROM dts_logg WHERE dl_info LIKE 'Par%'")); }
};

TEST_F(TillWithAPairOfAnother, IsLeftToTheCopyThatBeganItUntilTheEndOfTheWalk) {
    atLeading = [this](TillVisit& visit) {
        office(QStringLiteral(
            "INSERT INTO dts_logg SELECT 1, 1, '1', getdate(), 1, 'Hjelp ' + "
            "substring(dl_info, 6, 38) + ', maskin HJELPER' FROM dts_logg WHERE dl_info LIKE 'Natt {%'"));
        if (visit.Till.Kassenummer == u"2") helper.engine.DoOnTimer();
        undecided(visit);
    };
    atHelping = [this](TillVisit&) { resolve(); };
    night();
    EXPECT_EQ(helped, QStringList{QStringLiteral("1/1")});
    EXPECT_EQ(led, (QStringList{QStringLiteral("1/1"), QStringLiteral("1/2")}));
    EXPECT_EQ(chain.errorMessages(), QStringList());
    EXPECT_EQ(icons(), (QList<int>{1, 1}));
    EXPECT_TRUE(chain.messages().contains(QStringLiteral("Kassen er halvferdig. Prøver igjen til slutt")));
}

TEST_F(TillWithAPairOfAnother, IsAnErrorWhenItStillIsUndecidedAtTheEnd) {
    atLeading = [this](TillVisit& visit) {
        office(QStringLiteral(
            "INSERT INTO dts_logg SELECT 1, 1, '1', getdate(), 1, 'Hjelp ' + "
            "substring(dl_info, 6, 38) + ', maskin HJELPER' FROM dts_logg WHERE dl_info LIKE 'Natt {%'"));
        undecided(visit);
    };
    const QDateTime began = chain.around.now;
    night();
    EXPECT_EQ(led, (QStringList{QStringLiteral("1/1"), QStringLiteral("1/2"), QStringLiteral("1/1")}));
    EXPECT_EQ(chain.errorMessages().last(), QStringLiteral("Kassen er halvferdig."));
    EXPECT_EQ(began.secsTo(chain.around.now), 2) << "nobody is at a till, so nobody is waited for";
}

TEST_F(TillWithAPairOfAnother, IsAnErrorAtOnceWhereNobodyHelps) {
    atLeading = undecided;
    night();
    EXPECT_EQ(led, (QStringList{QStringLiteral("1/1"), QStringLiteral("1/2")}));
    EXPECT_EQ(chain.errorMessages().last(), QStringLiteral("Kassen er halvferdig."));
}

TEST_F(TillWithAPairOfAnother, IsLookedAtOnceByEachHelpingCopyWhoeverHasFailedThere) {
    nightOfADeadCopy();
    office(
        QStringLiteral("INSERT INTO dts_logg VALUES (1, 1, '1', getdate(), 1, "
                       "'Slutt {6f9619ff-8b86-d011-b42d-00c04fc964ff} feilet, maskin GAMMEL')"));
    atHelping = undecided;
    helper.engine.DoOnTimer();
    EXPECT_EQ(helped, (QStringList{QStringLiteral("1/1"), QStringLiteral("1/2")}));
}

}  // namespace
}  // namespace torvik
