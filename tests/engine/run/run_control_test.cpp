#include <gtest/gtest.h>

#include "engine/base/abort.h"
#include "tests/engine/fake_surroundings.h"

namespace torvik {
namespace {

using test::FakeEngine;

TEST(Waiting, RetryTimePassesWithMessagesPumped) {
    FakeEngine f;
    f.engine.RetryWaitTime = 5;
    EXPECT_TRUE(f.engine.WaitRetryTime());
    EXPECT_EQ(f.messages(), QStringList{QStringLiteral("Venter i 5 sekunder på neste forsøk")});
    EXPECT_EQ(f.around.ticks, 1000 + 5000);
    EXPECT_GT(f.around.pumps, 100) << "a wait must give control many times a second";
    EXPECT_TRUE(f.around.sleeps.empty());
}

TEST(Waiting, WaitSecondsHasItsOwnSpelling) {
    FakeEngine f;
    EXPECT_TRUE(f.engine.WaitSeconds(180));
    EXPECT_EQ(f.messages(), QStringList{QStringLiteral("Venter i 180 sekunder på neste forsåk")});
    EXPECT_EQ(f.around.ticks, 1000 + 180000);
}

TEST(Waiting, RealWaitHandlesAnEventThatComesAndEndsByIt) {
    TTorvikPos engine;
    QTimer::singleShot(0, &engine, [&] { engine.SetCancelRequest(true); });
    const auto start = engine.Seam.tickCount();
    EXPECT_THROW(engine.WaitSeconds(600), EAbort);
    EXPECT_LT(engine.Seam.tickCount() - start, 5000);
}

TEST(Waiting, CancelRaisesOutOfTheWaitWithinOneRound) {
    FakeEngine f;
    int pumpsAtCancel = 0;
    f.around.onPump = [&] {
        if (f.around.ticks >= 3000 && pumpsAtCancel == 0) {
            pumpsAtCancel = f.around.pumps;
            f.engine.SetCancelRequest(true);
        }
    };
    EXPECT_THROW(f.engine.WaitSeconds(60), EAbort);
    // The one pump more is that of the line "Avbrutt av bruker".
    EXPECT_EQ(f.around.pumps, pumpsAtCancel + 1);
    EXPECT_LT(f.around.ticks, 3100);
    EXPECT_EQ(f.messages().last(), QStringLiteral("Avbrutt av bruker"));
    EXPECT_TRUE(f.engine.Cancelled);
}

TEST(Cancelling, EndOfTheProgramCancelsEveryRunThatBegins) {
    FakeEngine f;
    f.engine.Abandon();
    for (int run = 0; run < 2; ++run) {
        f.engine.Parts().Control.Begin();
        EXPECT_THROW(f.engine.TestCancel(), EAbort);
    }
    EXPECT_EQ(f.messages().count(QStringLiteral("Avbrutt av bruker")), 2);
}

TEST(Cancelling, RequestIsLoggedOnceAndRaisesAtEveryTest) {
    FakeEngine f;
    EXPECT_NO_THROW(f.engine.TestCancel());
    f.engine.SetCancelRequest(true);
    EXPECT_THROW(f.engine.TestCancel(), EAbort);
    EXPECT_THROW(f.engine.TestCancel(), EAbort);
    EXPECT_EQ(f.messages(), QStringList{QStringLiteral("Avbrutt av bruker")});
    EXPECT_TRUE(f.errors.Lines().isEmpty());
}

TEST(Cancelling, RequestIsHandedToATransferUnderWay) {
    FakeEngine f;
    QList<bool> heard;
    f.engine.OnCancelRequestChanged = [&](bool value) { heard.append(value); };
    f.engine.SetCancelRequest(true);
    f.engine.SetCancelRequest(false);
    EXPECT_EQ(heard, (QList<bool>{true, false}));
}

TEST(Cancelling, AbortIsNotTheCancelException) {
    FakeEngine f;
    try {
        f.engine.Cancel();
        FAIL() << "nothing was raised";
    } catch (const TCancelException&) {
        FAIL() << "a cancel is a silent abort";
    } catch (const EAbort&) {
    }
}

TEST(Cancelling, CancelConnectAttemptDoesNothingWithoutASession) {
    FakeEngine f;
    EXPECT_NO_THROW(f.engine.CancelConnectAttempt(nullptr));
}

}  // namespace
}  // namespace torvik
