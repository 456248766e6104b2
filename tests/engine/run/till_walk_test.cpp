#include "engine/run/till_walk.h"

#include <gtest/gtest.h>

#include <QPointer>
#include <optional>

#include "engine/base/abort.h"
#include "engine/base/failure_kind.h"
#include "engine/db/errors.h"
#include "engine/db/meanwhile.h"
#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/office/application_lock.h"
#include "tests/engine/small_chain.h"

namespace torvik {
namespace {

using Connecting = TillWalkPlan::Connecting;
using Waiting = TillWalkPlan::Waiting;
using CancelTest = TillWalkPlan::CancelTest;

class TillWalkOverAChain : public testing::Test {
protected:
    TillWalkOverAChain() {
        chain.engine.RetryCount = 1;
        chain.engine.OnProgress = [this](QObject*, int percent, const QString& text) {
            progress.append(QStringLiteral("%1 ").arg(percent) + text);
        };
        plan.Work = [this](TillVisit& visit) {
            served.append(visit.Till.Avdelingsnummer + u'/' + visit.Till.Kassenummer);
            if (work) work(visit);
        };
        plan.Failed = [this](const TillIdentity& till, const std::exception& failure) {
            failed.append(till.Kassenummer + QStringLiteral(": ") + ErrorText(failure));
        };
        plan.ProgressText = [](const TillIdentity& till, int done, int count) {
            return QStringLiteral("%1: %2 av %3").arg(till.Kassenummer, QString::number(done), QString::number(count));
        };
    }

    void walk() {
        chain.target.Open();
        parts().Roster.Close();
        parts().Roster.Open();
        TillWalk(parts(), plan).Run();
    }
    [[nodiscard]] RunParts& parts() { return chain.engine.Parts(); }
    [[nodiscard]] qsizetype waits() const {
        return chain.messages().count(QStringLiteral("Venter i 20 sekunder på neste forsøk"));
    }

    test::SmallChain chain;
    TillWalkPlan plan;
    std::function<void(TillVisit&)> work;
    QStringList served;
    QStringList failed;
    QStringList progress;
};

TEST_F(TillWalkOverAChain, HandsTheWorkTheTillItsVersionAndBothSessions) {
    chain.tills(QStringLiteral("7/2"));
    work = [this](TillVisit& visit) {
        EXPECT_EQ(visit.Till.Ik_Ku_Id, 7);
        EXPECT_EQ(visit.Till.Ku_Adresse1, QStringLiteral("Storgata 7"));
        EXPECT_EQ(visit.Till.Ikk_Kassenummer, QStringLiteral("2         "));
        EXPECT_EQ(visit.DbVersion, QStringLiteral("213"));
        EXPECT_EQ(&visit.TillSession, &chain.source);
        EXPECT_EQ(&visit.OfficeSession, &chain.target);
        EXPECT_TRUE(visit.TillSession.Connected());
    };
    walk();
    EXPECT_EQ(served, QStringList{QStringLiteral("7/2")});
    EXPECT_FALSE(chain.source.Connected()) << "closed after a till that succeeded";
}

TEST_F(TillWalkOverAChain, CancelThatEndsTheFirstQuestionLeavesTheTill) {
    chain.tills(QStringLiteral("1/1 1/2"));
    plan.CancelEndsStatements = true;
    for (const bool together : {true, false}) {
        chain.engine.ReadsTogether = together;
        const int before = chain.requestsWith("select in_dbversion");
        chain.server.faults().add({.match = {.textContains = "select in_dbversion"},
                                   .action = sandbox::FaultAction::Delay,
                                   .delay = std::chrono::seconds(2)});
        parts().Control.Begin();
        const db::Meanwhile window([&] {
            if (chain.requestsWith("select in_dbversion") > before && !chain.engine.CancelRequest())
                chain.engine.SetCancelRequest(true);
        });
        EXPECT_THROW(walk(), EAbort);
    }
    EXPECT_EQ(served, QStringList());
    EXPECT_EQ(failed, (QStringList{"1: Operasjonen ble avbrutt", "1: Operasjonen ble avbrutt"}));
}

TEST_F(TillWalkOverAChain, VersionThatCouldNotBeReadIsReadOnceMoreBeforeTheWork) {
    chain.tills(QStringLiteral("1/1"));
    chain.server.faults().add({.match = {.textContains = "select in_dbversion"},
                               .action = sandbox::FaultAction::Fail,
                               .message = {.number = 50000, .severity = 16, .state = 1, .text = "ikke nå"}});
    work = [](TillVisit& visit) { EXPECT_EQ(visit.DbVersion, QStringLiteral("213")); };
    walk();
    EXPECT_EQ(served, QStringList{QStringLiteral("1/1")});
    EXPECT_EQ(failed, QStringList());
}

TEST_F(TillWalkOverAChain, OneAttemptIsBareOfVersionAndRetries) {
    chain.tills(QStringLiteral("1/1"));
    chain.till({.department = 1, .number = QStringLiteral("2")});
    chain.engine.RetryCount = 5;
    plan.Connect = Connecting::Once;
    plan.Wait = Waiting::Never;
    work = [](TillVisit& visit) { EXPECT_EQ(visit.DbVersion, QString()); };
    walk();
    EXPECT_EQ(served, QStringList{QStringLiteral("1/1")});
    EXPECT_EQ(failed.size(), 1);
    EXPECT_EQ(chain.requestsWith("select in_dbversion"), 0);
    EXPECT_EQ(chain.messages(), QStringList());
}

TEST_F(TillWalkOverAChain, WorkThatConnectsByItselfFindsTheSessionAsTheTillBeforeLeftIt) {
    chain.tills(QStringLiteral("1/1 1/2"));
    plan.Connect = Connecting::ByTheWork;
    work = [](TillVisit& visit) { EXPECT_FALSE(visit.TillSession.Connected()); };
    walk();
    EXPECT_EQ(served.size(), 2);
    EXPECT_EQ(chain.source.Server(), QString());
}

TEST_F(TillWalkOverAChain, TillIsResolvedBeforeItsWork) {
    chain.tills(QStringLiteral("1/1 1/2"));
    chain.engine.OnResolveTill = [this](TillVisit& visit) {
        EXPECT_TRUE(visit.TillSession.Connected());
        served.append(QStringLiteral("først ") + visit.Till.Kassenummer);
    };
    for (const Connecting connecting : {Connecting::WithRetries, Connecting::Once}) {
        served.clear();
        plan.Connect = connecting;
        walk();
        EXPECT_EQ(served, (QStringList{QStringLiteral("først 1"), QStringLiteral("1/1"), QStringLiteral("først 2"),
                                       QStringLiteral("1/2")}));
    }
}

TEST_F(TillWalkOverAChain, TillThatCannotBeResolvedIsRefusedAndTheNextIsServed) {
    chain.tills(QStringLiteral("1/1 1/2"));
    chain.engine.OnResolveTill = [](TillVisit& visit) {
        if (visit.Till.Kassenummer == QStringLiteral("1")) throw EngineError(QStringLiteral("uavklart"));
    };
    walk();
    EXPECT_EQ(failed, QStringList{QStringLiteral("1: uavklart")});
    EXPECT_EQ(served, QStringList{QStringLiteral("1/2")});
}

TEST_F(TillWalkOverAChain, WorkThatResolvesOrConnectsItselfIsLeftToDoSo) {
    chain.tills(QStringLiteral("1/1"));
    int resolved = 0;
    chain.engine.OnResolveTill = [&](TillVisit&) { ++resolved; };
    plan.ResolvesFirst = false;
    walk();
    plan.ResolvesFirst = true;
    plan.Connect = Connecting::ByTheWork;
    walk();
    EXPECT_EQ(served.size(), 2);
    EXPECT_EQ(resolved, 0);
}

TEST_F(TillWalkOverAChain, UnreachableTillIsPassedOverAndCounts) {
    chain.tills(QStringLiteral("1/1"));
    chain.till({.department = 1, .number = QStringLiteral("2")});
    chain.tills(QStringLiteral("2/1"));
    QStringList unreachable;
    plan.Unreachable = [&](const TillIdentity& till) { unreachable.append(till.Kassenummer); };
    walk();
    EXPECT_EQ(unreachable, QStringList{QStringLiteral("2")});
    EXPECT_EQ(failed, QStringList());
    EXPECT_EQ(served, (QStringList{QStringLiteral("1/1"), QStringLiteral("2/1")}));
    EXPECT_EQ(progress, (QStringList{QStringLiteral("33 1: 1 av 3"), QStringLiteral("66 2: 2 av 3"),
                                     QStringLiteral("100 1: 3 av 3")}));
}

TEST_F(TillWalkOverAChain, LostBackOfficeFailsNoTillWhereLocksAloneNeedIt) {
    chain.tills(QStringLiteral("1/1 1/2 2/1"));
    plan.OfficeForLocksAlone = true;
    work = [this](TillVisit& visit) {
        if (visit.Till.Kassenummer == u"2") chain.server.dropConnections();
    };
    walk();
    EXPECT_EQ(served, (QStringList{QStringLiteral("1/1"), QStringLiteral("1/2"), QStringLiteral("2/1")}));
    EXPECT_EQ(failed, QStringList());
}

struct WaitCase {
    Waiting wait;
    qsizetype waits;
};

class TillWalkWaits : public TillWalkOverAChain, public testing::WithParamInterface<WaitCase> {};

TEST_P(TillWalkWaits, WhereThePlanSays) {
    chain.tills(QStringLiteral("1/1 1/2 2/1 2/2"));
    plan.Wait = GetParam().wait;
    walk();
    EXPECT_EQ(served.size(), 4);
    EXPECT_EQ(waits(), GetParam().waits);
}

INSTANTIATE_TEST_SUITE_P(OverTwoDepartmentsOfTwoTills, TillWalkWaits,
                         testing::Values(WaitCase{Waiting::Never, 0}, WaitCase{Waiting::BetweenDepartments, 1},
                                         WaitCase{Waiting::BetweenTills, 3}));

struct CancelCase {
    CancelTest test;
    int served;
    int counted;
};

class TillWalkCancel : public TillWalkOverAChain, public testing::WithParamInterface<CancelCase> {};

// Without a wait between them the tills are left to the plan's own test.
TEST_P(TillWalkCancel, TakesEffectWhereThePlanSays) {
    chain.tills(QStringLiteral("1/1 1/2 1/3"));
    plan.Wait = Waiting::Never;
    plan.TestCancel = GetParam().test;
    work = [this](TillVisit& visit) {
        if (served.size() == 2) visit.Control.SetCancelRequest(true);
    };
    if (GetParam().test == CancelTest::Never) {
        EXPECT_NO_THROW(walk());
    } else {
        EXPECT_THROW(walk(), EAbort);
    }
    EXPECT_EQ(served.size(), GetParam().served);
    EXPECT_EQ(progress.size(), GetParam().counted);
}

INSTANTIATE_TEST_SUITE_P(DuringTheSecondTill, TillWalkCancel,
                         testing::Values(CancelCase{CancelTest::Never, 3, 3},
                                         CancelCase{CancelTest::BeforeCounting, 2, 1},
                                         CancelCase{CancelTest::AfterCounting, 2, 2}));

TEST_F(TillWalkOverAChain, TillIsServedOnceMoreAfterAWaitWhenThePlanSaysSo) {
    chain.tills(QStringLiteral("1/1 1/2"));
    plan.ServesAgain = [this] { return served.size() < 3; };
    walk();
    EXPECT_EQ(served, (QStringList{QStringLiteral("1/1"), QStringLiteral("1/1"), QStringLiteral("1/1"),
                                   QStringLiteral("1/2")}));
    EXPECT_EQ(waits(), 3);
}

TEST_F(TillWalkOverAChain, FailureReachesThePlanAsTheTypeItWasRaisedAs) {
    chain.tills(QStringLiteral("1/1"));
    work = [](TillVisit& visit) {
        db::Query query(&visit.TillSession);
        query.SQL = {QStringLiteral("select * from finnes_ikke")};
        query.Open();
    };
    int number = 0;
    plan.Failed = [&](const TillIdentity&, const std::exception& failure) {
        const auto* refused = dynamic_cast<const db::StatementError*>(&failure);
        if (refused) number = refused->Number;
    };
    walk();
    EXPECT_EQ(number, 208);
    EXPECT_TRUE(chain.source.Connected()) << "open until the next till after one that failed";
}

TEST_F(TillWalkOverAChain, WhatATillMadeIsFreedWhenTheWalkMovesOn) {
    chain.tills(QStringLiteral("1/1 1/2"));
    QPointer<QObject> first;
    work = [&](TillVisit& visit) {
        if (served.size() == 1) {
            first = new QObject(&visit.Roster);
        } else {
            EXPECT_TRUE(first.isNull());
        }
    };
    walk();
    EXPECT_EQ(served.size(), 2);
}

TEST_F(TillWalkOverAChain, WalkBesideAnotherHasSessionsAPlaceAndALogOfItsOwn) {
    chain.tills(QStringLiteral("1/1 1/2 1/3"));
    db::Session office;
    db::Session till;
    office.SetConnectString(chain.connectString(chain.kBackOffice));
    office.Open();
    RunParts beside(parts().Context, chain.engine);
    beside.SetTargetConnection(&office);
    beside.Till.SourceConnection = &till;

    work = [&](TillVisit& visit) {
        if (visit.Till.Kassenummer != u"2" || &visit.TillSession == &till) return;
        beside.Roster.Close();
        beside.Roster.Open();
        TillWalk(beside, plan).Run();
        EXPECT_TRUE(chain.source.Connected());
        EXPECT_EQ(parts().Roster.Ikk_Kassenummer(), visit.Till.Kassenummer);
    };
    walk();
    // The first walk is at till 2, so the second finds it taken, twice.
    EXPECT_EQ(served, (QStringList{QStringLiteral("1/1"), QStringLiteral("1/2"), QStringLiteral("1/1"),
                                   QStringLiteral("1/3"), QStringLiteral("1/3")}));
    EXPECT_EQ(failed, QStringList{QStringLiteral("2: En annen kjøring betjener kassen (avd. 1, kasse 2)")});
    EXPECT_EQ(chain.messages().count(QStringLiteral("Database versjon 213")), 3);
    EXPECT_EQ(beside.Log.Log->Lines().filter(QStringLiteral("Database versjon 213")).size(), 2);
}

TEST_F(TillWalkOverAChain, TillWhoseVersionCannotBeReadIsNotServedByTheVersionOfTheOneBefore) {
    chain.tills(QStringLiteral("1/1 1/2 1/3"));
    chain.run(QStringLiteral("Kasse_1_2"), QStringLiteral("DROP TABLE innstillinger"));
    walk();
    EXPECT_EQ(served, (QStringList{QStringLiteral("1/1"), QStringLiteral("1/3")}));
    ASSERT_EQ(failed.size(), 1);
    EXPECT_TRUE(failed.first().startsWith(QStringLiteral("2: "))) << failed.first().toStdString();
    EXPECT_TRUE(failed.first().contains(QStringLiteral("innstillinger"))) << failed.first().toStdString();
}

TEST_F(TillWalkOverAChain, TillWithoutATextIsCountedAndNotReported) {
    chain.tills(QStringLiteral("1/1 1/2 1/3"));
    plan.ProgressText = [](const TillIdentity& till, int done, int count) {
        return till.Kassenummer == u"2" ? QString() : QStringLiteral("%1 av %2").arg(done).arg(count);
    };
    walk();
    EXPECT_EQ(progress, (QStringList{QStringLiteral("33 1 av 3"), QStringLiteral("100 3 av 3")}));
}

// Another copy of the program at till 1/1, until it lets go.
class TillThatIsTaken : public TillWalkOverAChain {
protected:
    TillThatIsTaken() {
        chain.tills(QStringLiteral("1/1 1/2"));
        copy.SetConnectString(chain.connectString(chain.kBackOffice));
        copy.Open();
        taken.emplace(copy, ApplicationLock::OfTill(1, QStringLiteral("1")));
        plan.Wait = Waiting::Never;
    }
    db::Session copy;
    std::optional<ApplicationLock> taken;
};

TEST_F(TillThatIsTaken, IsServedAtTheEndOfTheWalk) {
    work = [this](TillVisit& visit) {
        if (visit.Till.Kassenummer == u"2") taken.reset();
        EXPECT_EQ(parts().Roster.Ikk_Kassenummer(), visit.Till.Kassenummer);
    };
    walk();
    EXPECT_EQ(served, (QStringList{QStringLiteral("1/2"), QStringLiteral("1/1")}));
    EXPECT_EQ(failed, QStringList());
    EXPECT_EQ(progress, (QStringList{QStringLiteral("50 2: 1 av 2"), QStringLiteral("100 1: 2 av 2")}));
    EXPECT_EQ(chain.messages().first(),
              QStringLiteral("En annen kjøring betjener kassen (avd. 1, kasse 1). Prøver igjen til slutt"));
}

TEST_F(TillThatIsTaken, FailsWhenItStillIsTakenAtTheEnd) {
    walk();
    EXPECT_EQ(served, QStringList{QStringLiteral("1/2")});
    EXPECT_EQ(failed, QStringList{QStringLiteral("1: En annen kjøring betjener kassen (avd. 1, kasse 1)")});
    EXPECT_EQ(progress.size(), 2);
}

TEST_F(TillThatIsTaken, IsNotLoggedInTo) {
    plan.Unreachable = [](const TillIdentity&) {};
    chain.run(QStringLiteral("Kasse_1_1"), QStringLiteral("DROP TABLE innstillinger"));
    walk();
    EXPECT_EQ(chain.requestsWith("select in_dbversion"), 1) << "of till 2";
}

TEST_F(TillWalkOverAChain, LockIsHeldForTheVisitAndLetGoOnEveryWayOut) {
    chain.tills(QStringLiteral("1/1 1/2 1/3"));
    db::Session copy;
    copy.SetConnectString(chain.connectString(chain.kBackOffice));
    copy.Open();
    const auto isFree = [&](int till) {
        return ApplicationLock(copy, ApplicationLock::OfTill(1, QString::number(till))).Held();
    };
    work = [&](TillVisit& visit) {
        const int till = visit.Till.Kassenummer.toInt();
        EXPECT_FALSE(isFree(till));
        EXPECT_TRUE(isFree(till == 1 ? 2 : 1)) << "tills do not keep each other out, and those before were let go";
        if (till == 2) throw EngineError(QStringLiteral("feilet"));
        if (till == 3) visit.Control.SetCancelRequest(true);
    };
    EXPECT_THROW(walk(), EAbort);
    EXPECT_EQ(served.size(), 3);
    EXPECT_TRUE(isFree(1) && isFree(2) && isFree(3));
}

TEST_F(TillWalkOverAChain, LockCostsAVisitTwoRoundTrips) {
    chain.tills(QStringLiteral("1/1 1/2 2/1"));
    walk();
    EXPECT_EQ(chain.requestsWith("applock"), 2 * 3);
}

TEST_F(TillWalkOverAChain, BackOfficeThatStaysAwayEndsTheWalkAfterThreeRounds) {
    chain.tills(QStringLiteral("1/1 1/2"));
    plan.ReopensBackOffice = true;
    work = [this](TillVisit&) { chain.cutServer(); };
    try {
        walk();
        FAIL() << "the walk went on";
    } catch (const std::exception& failure) {
        EXPECT_EQ(classify(failure), FailureKind::ConnectionLost) << failure.what();
    }
    EXPECT_EQ(chain.around.sleeps, (std::vector<int>{3000, 3000, 3000}));
    EXPECT_EQ(served.size(), 1);
    EXPECT_EQ(progress, QStringList());
}

}  // namespace
}  // namespace torvik
