// How a walk over tills ends before its end: what it tells of the tills then, and that the end of the program ends it.
#include <gtest/gtest.h>

#include "engine/base/abort.h"
#include "engine/run/till_walk.h"
#include "tests/engine/small_chain.h"

namespace torvik {
namespace {

class CancelledWalk : public testing::Test {
protected:
    CancelledWalk() {
        chain.tills(QStringLiteral("1/1 1/2 2/1 2/2"));
        chain.engine.RetryCount = 1;
        plan.Wait = TillWalkPlan::Waiting::Never;
        plan.Work = [this](TillVisit& visit) {
            served.append(visit.Till.Avdelingsnummer + u'/' + visit.Till.Kassenummer);
            work(served.last());
        };
        plan.Failed = [this](const TillIdentity&, const std::exception& failure) {
            parts().Log.AddLog(ErrorText(failure), true);
        };
    }
    void walk() {
        chain.target.Open();
        parts().Roster.Close();
        parts().Roster.Open();
        TillWalk(parts(), plan).Run();
    }
    [[nodiscard]] RunParts& parts() { return chain.engine.Parts(); }

    test::SmallChain chain;
    TillWalkPlan plan;
    std::function<void(const QString& till)> work;
    QStringList served;
};

// One had an error line, one failed, and the cancel came at the last.
TEST_F(CancelledWalk, TellsTheTillsThatAreDoneAndNoOthers) {
    work = [this](const QString& till) {
        if (till == u"1/2") parts().Log.AddLog(QStringLiteral("en feil"), true);
        if (till == u"2/1") throw EngineError(QStringLiteral("gikk ikke"));
        if (till == u"2/2") parts().Control.Cancel();
    };
    EXPECT_THROW(walk(), EAbort);
    ASSERT_EQ(served.size(), 4);
    EXPECT_EQ(chain.messages().last(), QStringLiteral("Ferdige kasser da kjøringen ble avbrutt: avd. 1 kasse 1"));
}

TEST_F(CancelledWalk, TellsThatNoneIsDone) {
    work = [this](const QString&) { parts().Control.Cancel(); };
    EXPECT_THROW(walk(), EAbort);
    EXPECT_EQ(chain.messages().last(), QStringLiteral("Ferdige kasser da kjøringen ble avbrutt: ingen"));
}

TEST_F(CancelledWalk, WalkThatComesToItsEndTellsNothingOfIt) {
    work = [](const QString&) {};
    walk();
    EXPECT_EQ(chain.messages().filter(QStringLiteral("avbrutt")), QStringList());
}

TEST_F(CancelledWalk, EndOfTheProgramEndsAWalkThatAsksForNoCancel) {
    plan.TestCancel = TillWalkPlan::CancelTest::Never;
    work = [this](const QString&) { chain.engine.Abandon(); };
    EXPECT_THROW(walk(), EAbort);
    EXPECT_EQ(served, QStringList{QStringLiteral("1/1")});
}

}  // namespace
}  // namespace torvik
