// A walk that logs in to its next tills in the background does and tells what one without does. The tills stand behind
// lines of their own, so that a test sees who is logged in to, and can break one of them.
#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <algorithm>
#include <map>

#include "engine/base/abort.h"
#include "engine/db/login_ahead.h"
#include "engine/db/query.h"
#include "engine/office/application_lock.h"
#include "engine/run/night_share.h"
#include "engine/run/till_walk.h"
#include "tests/engine/small_chain.h"
#include "tests/support/line_relay.h"
#include "tests/support/pump.h"

namespace torvik {
namespace {

using Connecting = TillWalkPlan::Connecting;
using test::LineRelay;
using test::pumpUntil;

constexpr int kAtOnceMs = 2000;  // on a machine that is busy with other things

class WalkAhead : public testing::Test {
protected:
    WalkAhead() {
        chain.source.SetConnectionTimeout(3);
        chain.engine.RetryCount = 2;
        plan.Wait = TillWalkPlan::Waiting::Never;
        plan.LogsInAhead = true;
        plan.Work = [this](TillVisit& visit) {
            served.append(visit.Till.Kassenummer + u' ' + visit.TillSession.Server().section(u',', 1));
            if (work) work(visit);
        };
        plan.Unreachable = [this](const TillIdentity& till) { failed.append(till.Kassenummer); };
        plan.Failed = [this](const TillIdentity& till, const std::exception& failure) {
            failed.append(till.Kassenummer + QStringLiteral(": ") + ErrorText(failure));
        };
    }

    // Tills 1 to `count` of department 1, each behind a line.
    void tills(int count) {
        QStringList numbers;
        for (int till = 1; till <= count; ++till) numbers.append(QStringLiteral("1/%1").arg(till));
        chain.tills(numbers.join(u' '));
        for (int till = 1; till <= count; ++till) {
            lines.try_emplace(till, chain.server.port());
            setTill(till, QStringLiteral("Ikk_Server = '127.0.0.1,%1'").arg(lines.at(till).port()));
        }
    }
    void setTill(int till, const QString& assignments) {
        chain.run(chain.kBackOffice, QStringLiteral("UPDATE Internkundekasse SET %1 WHERE Ikk_Kassenummer = '%2'")
                                         .arg(assignments, QString::number(till)));
    }
    void walk() {
        served.clear();
        failed.clear();
        chain.log.Clear();
        chain.target.Open();
        parts().Roster.Close();
        parts().Roster.Open();
        TillWalk(parts(), plan).Run();
    }
    [[nodiscard]] RunParts& parts() { return chain.engine.Parts(); }
    [[nodiscard]] LineRelay& line(int till) { return lines.at(till); }
    // A connection stands there, and its login has been answered: TDS answers the login with more than 300 bytes.
    [[nodiscard]] bool isLoggedInTo(int till) {
        return pumpUntil([&] { return line(till).carried(LineRelay::Way::ToClient) > 300; });
    }
    // A line that is silent learns of no end.
    [[nodiscard]] bool noneRemains() {
        for (auto& [till, line] : lines) line.speak();
        return pumpUntil(
            [&] { return std::ranges::all_of(lines, [](const auto& one) { return one.second.connections() == 0; }); });
    }
    [[nodiscard]] QStringList servedTills() const {
        QStringList tills;
        for (const QString& one : served) tills.append(one.section(u' ', 0, 0));
        return tills;
    }

    test::SmallChain chain;
    std::map<int, LineRelay> lines;
    TillWalkPlan plan;
    std::function<void(TillVisit&)> work;
    QStringList served;
    QStringList failed;
};

TEST_F(WalkAhead, NextTillsAreLoggedInToWhileOneIsServed) {
    tills(4);
    work = [this](TillVisit& visit) {
        if (visit.Till.Kassenummer != u"1") return;
        for (const int till : {2, 3, 4}) EXPECT_TRUE(isLoggedInTo(till)) << till;
        EXPECT_EQ(chain.requestsWith("select in_dbversion"), 1) << "of till 1: only the login is made ahead";
    };
    walk();
    EXPECT_EQ(servedTills(),
              (QStringList{QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3"), QStringLiteral("4")}));
    for (auto& [till, line] : lines) EXPECT_EQ(line.accepted(), 1U) << till;
    EXPECT_TRUE(noneRemains());
}

TEST_F(WalkAhead, IsSwitchedOffByItsOptionAndByThePlan) {
    tills(2);
    work = [this](TillVisit& visit) {
        if (visit.Till.Kassenummer == u"1") {
            EXPECT_EQ(line(2).accepted(), 0U);
        }
    };
    chain.engine.LogInAhead = false;
    walk();
    EXPECT_EQ(served.size(), 2);
    chain.engine.LogInAhead = true;
    plan.LogsInAhead = false;
    work = [this](TillVisit& visit) {
        if (visit.Till.Kassenummer == u"1") {
            EXPECT_EQ(line(2).accepted(), 1U) << "of the walk before";
        }
    };
    walk();
    EXPECT_EQ(served.size(), 2);
}

// Refused, unknown, without a password, left out; twice, and the second attempt of one succeeds.
TEST_F(WalkAhead, LogAndFailuresAreThoseOfAWalkWithoutIt) {
    tills(7);
    line(2).refuse();
    setTill(3, QStringLiteral("Ikk_Server = 'kasse-3.finnes-ikke.invalid'"));
    setTill(4, QStringLiteral("Ikk_Passord = 'feil'"));
    setTill(6, QStringLiteral("Ikk_Provider = 1"));
    plan.NotAhead = plan.LeavesOut = [](const TillIdentity& till) { return till.Kassenummer == u"5"; };
    plan.Unreachable = [this](const TillIdentity& till) {
        std::throw_with_nested(EngineError(QStringLiteral("Klarte ikke %1").arg(till.Kassenummer)));
    };
    struct Told {
        QStringList log, served, failed;
        bool operator==(const Told&) const = default;
    };
    const auto told = [&](Connecting connecting, bool ahead) {
        plan.Connect = connecting;
        chain.engine.LogInAhead = ahead;
        work = [&](TillVisit& visit) {
            // The next ones have all been tried by then.
            if (ahead && visit.Till.Kassenummer == u"1") {
                EXPECT_TRUE(isLoggedInTo(7));
            }
        };
        walk();
        return Told{chain.messages(), served, failed};
    };
    for (const Connecting connecting : {Connecting::WithRetries, Connecting::Once}) {
        const Told without = told(connecting, false);
        const Told with = told(connecting, true);
        EXPECT_EQ(with.log, without.log);
        EXPECT_EQ(with.served, without.served);
        EXPECT_EQ(with.failed, without.failed);
        EXPECT_EQ(without.failed.size(), 4);
        EXPECT_EQ(without.served.size(), 2);
    }
    EXPECT_EQ(line(5).accepted(), 0U) << "a till that is left out";
    EXPECT_TRUE(noneRemains());
}

TEST_F(WalkAhead, TillThatAnotherCopyHasFetchedTonightIsNotLoggedInTo) {
    tills(4);
    chain.target.Open();
    SharedNights rows(parts().Office);
    const SharedNight night = rows.Begin(1, QStringLiteral("1"));
    rows.EndVisit(night, 1, QStringLiteral("2"), VisitEnd::Kind::Fetched);
    NightShare share(parts(), night, NightShare::Role::Helps);
    plan.Share = &share;
    work = [&](TillVisit& visit) {
        if (visit.Till.Kassenummer == u"1") {
            for (const int till : {3, 4}) EXPECT_TRUE(isLoggedInTo(till)) << till;
            rows.EndVisit(night, 1, QStringLiteral("4"), VisitEnd::Kind::FetchedWithErrors);
            chain.around.ticks += 5000;
        } else {
            EXPECT_TRUE(pumpUntil([&] { return line(4).connections() == 0; })) << "let go of when it is known";
        }
    };
    walk();
    EXPECT_EQ(servedTills(), (QStringList{QStringLiteral("1"), QStringLiteral("3")}));
    EXPECT_EQ(line(2).accepted(), 0U);
    EXPECT_EQ(line(4).accepted(), 1U);
}

// Its attempts and the wait between them have passed by then, so that its turn costs no time.
TEST_F(WalkAhead, TillThatFailedAheadCostsItsTurnNothing) {
    tills(2);
    chain.engine.RetryWaitTime = 1;
    line(2).fallSilent();
    chain.source.SetConnectionTimeout(1);
    const qint64 before = chain.around.ticks;
    QElapsedTimer timer;
    work = [&](TillVisit&) {
        EXPECT_TRUE(pumpUntil([&] { return line(2).accepted() == 2; })) << "two attempts";
        timer.start();
    };
    walk();
    EXPECT_EQ(failed, QStringList{QStringLiteral("2")});
    EXPECT_EQ(chain.messages(), (QStringList{QStringLiteral("Database versjon 213"),
                                             QStringLiteral("Venter i 1 sekunder på neste forsøk")}));
    EXPECT_LT(timer.elapsed(), 1000 + kAtOnceMs) << "what may be left of the second attempt";
    EXPECT_EQ(line(2).accepted(), 2U) << "none at its turn";
    EXPECT_EQ(chain.around.ticks, before) << "nothing was waited for by the run's own clock";
}

TEST_F(WalkAhead, WhatIsLeftOfAWaitIsWaitedForAtTheTurn) {
    tills(2);
    line(2).refuse();
    chain.engine.RetryWaitTime = 60;
    const qint64 before = chain.around.ticks;
    walk();
    EXPECT_EQ(failed, QStringList{QStringLiteral("2")});
    EXPECT_GT(chain.around.ticks - before, 50'000) << "by the run's own clock";
    EXPECT_LE(chain.around.ticks - before, 60'000);
}

// Whoever was refused ahead may have come up since; whatever cut the back office off may have cut off the tills.
TEST_F(WalkAhead, TillThatWasRefusedAheadIsTriedAgainAtItsTurn) {
    tills(2);
    line(2).refuse();
    chain.engine.RetryCount = 1;
    work = [this](TillVisit& visit) {
        if (visit.Till.Kassenummer == u"1") line(2).accept();
    };
    walk();
    EXPECT_EQ(servedTills(), (QStringList{QStringLiteral("1"), QStringLiteral("2")}));
    EXPECT_EQ(failed, QStringList());
}

TEST_F(WalkAhead, BackOfficeThatWasLostMakesAllLoginsBeginAnew) {
    tills(2);
    line(2).fallSilent();
    chain.source.SetConnectionTimeout(1);
    chain.engine.RetryCount = 1;
    plan.ReopensBackOffice = true;
    work = [this](TillVisit& visit) {
        if (visit.Till.Kassenummer != u"1") return;
        QElapsedTimer timer;
        timer.start();
        EXPECT_TRUE(pumpUntil([&] { return timer.elapsed() > 1500; })) << "the attempt has failed by then";
        line(2).speak();
        chain.server.dropConnections();
    };
    walk();
    EXPECT_EQ(servedTills(), (QStringList{QStringLiteral("1"), QStringLiteral("2")}));
    EXPECT_EQ(failed, QStringList());
}

class WalkAheadDeath : public WalkAhead, public testing::WithParamInterface<Connecting> {};

TEST_P(WalkAheadDeath, SessionThatDiedWhileItWaitedIsOpenedAgainAtItsTurn) {
    tills(3);
    plan.Connect = GetParam();
    chain.engine.RetryCount = 1;
    work = [this](TillVisit& visit) {
        if (visit.Till.Kassenummer != u"1") return;
        ASSERT_TRUE(isLoggedInTo(2) && isLoggedInTo(3));
        line(2).cut();
    };
    walk();
    EXPECT_EQ(servedTills(), (QStringList{QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3")}));
    EXPECT_EQ(failed, QStringList());
    EXPECT_EQ(chain.messages().size(), GetParam() == Connecting::Once ? 0 : 3) << "a version a till";
    EXPECT_EQ(line(2).accepted(), 2U);
    EXPECT_EQ(line(3).accepted(), 1U);
}

// It vanished without a word: the first question finds it out.
TEST_P(WalkAheadDeath, SessionThatIsLostAtTheFirstQuestionIsOpenedAgainAtItsTurn) {
    tills(2);
    chain.run(QStringLiteral("Kasse_1_2"), QStringLiteral("UPDATE innstillinger SET in_dbversion = '188'"));
    plan.Connect = GetParam();
    chain.engine.RetryCount = 1;
    work = [this](TillVisit& visit) {
        if (visit.Till.Kassenummer != u"1") return;
        ASSERT_TRUE(isLoggedInTo(2));
        line(2).cutAfter(LineRelay::Way::ToServer, 1);
    };
    walk();
    EXPECT_EQ(servedTills(), (QStringList{QStringLiteral("1"), QStringLiteral("2")}));
    EXPECT_EQ(failed, QStringList());
    const QStringList versions{QStringLiteral("Database versjon 213"), QStringLiteral("Database versjon 188")};
    EXPECT_EQ(chain.messages(), GetParam() == Connecting::Once ? QStringList() : versions);
    EXPECT_EQ(line(2).accepted(), 2U);
}

INSTANTIATE_TEST_SUITE_P(Ahead, WalkAheadDeath, testing::Values(Connecting::WithRetries, Connecting::Once));

TEST_F(WalkAhead, CancelInTheMiddleOfLoginsEndsAtOnceAndLeavesNoSession) {
    tills(5);
    for (const int till : {2, 3}) line(till).fallSilent();
    QElapsedTimer timer;
    work = [&](TillVisit& visit) {
        ASSERT_TRUE(isLoggedInTo(4) && isLoggedInTo(5));
        visit.Control.SetCancelRequest(true);
        timer.start();
    };
    EXPECT_THROW(walk(), EAbort);
    EXPECT_LT(timer.elapsed(), kAtOnceMs);
    EXPECT_TRUE(pumpUntil([&] { return line(4).connections() + line(5).connections() == 0; }));
    db::EndOfLogins();
    EXPECT_TRUE(noneRemains()) << "the attempts that were under way have ended with their time-out";
    EXPECT_EQ(parts().Till.Ahead, nullptr);
}

TEST_F(WalkAhead, EndOfTheProgramEndsTheWaitForATillThatDoesNotAnswer) {
    tills(2);
    line(2).fallSilent();
    const db::Meanwhile window([this] {
        if (!served.isEmpty()) chain.engine.Abandon();
    });
    QElapsedTimer timer;
    work = [&](TillVisit&) { timer.start(); };
    EXPECT_THROW(walk(), EAbort);
    EXPECT_LT(timer.elapsed(), kAtOnceMs);
    db::EndOfLogins();
    EXPECT_TRUE(noneRemains());
}

TEST_F(WalkAhead, TillOfAnotherCopyOfTheProgramKeepsNoSession) {
    tills(3);
    db::Session copy;
    copy.SetConnectString(chain.connectString(chain.kBackOffice));
    copy.Open();
    const ApplicationLock taken(copy, ApplicationLock::OfTill(1, QStringLiteral("2")));
    work = [this](TillVisit& visit) {
        if (visit.Till.Kassenummer == u"1") {
            EXPECT_TRUE(isLoggedInTo(2));
        }
        if (visit.Till.Kassenummer == u"3") {
            EXPECT_TRUE(pumpUntil([&] { return line(2).connections() == 0; }));
        }
    };
    walk();
    EXPECT_EQ(servedTills(), (QStringList{QStringLiteral("1"), QStringLiteral("3")}));
    EXPECT_EQ(failed.size(), 1);
    EXPECT_EQ(chain.requestsWith("select in_dbversion"), 2) << "nothing was asked of it";
}

TEST_F(WalkAhead, RowThatCannotBeReadIsToldAtItsTurn) {
    tills(3);
    chain.run(chain.kBackOffice, QStringLiteral("ALTER TABLE Internkundekasse ALTER COLUMN Ikk_AutentiseringType "
                                                "varchar(10)"));
    setTill(2, QStringLiteral("Ikk_AutentiseringType = 'x'"));
    chain.engine.RetryCount = 1;
    walk();
    EXPECT_EQ(servedTills(), (QStringList{QStringLiteral("1"), QStringLiteral("3")}));
    EXPECT_EQ(failed, QStringList{QStringLiteral("2")});
}

}  // namespace
}  // namespace torvik
