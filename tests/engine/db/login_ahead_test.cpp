#include "engine/db/login_ahead.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>

#include "engine/db/meanwhile.h"
#include "tests/support/pump.h"
#include "tests/support/sandbox_server.h"

namespace torvik::db {
namespace {

using namespace std::chrono_literals;
using test::pumpUntil;

constexpr int kAtOnceMs = 2000;  // on a machine that is busy with other things

class LoginAheadTest : public testing::Test {
protected:
    void SetUp() override {
        TORVIK_NEEDS_SANDBOX(server);
        ASSERT_TRUE(comesTo(0)) << "what made the database has gone";
        loginsAtFirst = server.faults().logins();
    }
    [[nodiscard]] std::size_t connections() { return server.server().connectionCount(); }
    // Besides the test's own session.
    [[nodiscard]] bool comesTo(std::size_t more) {
        return pumpUntil([&] { return connections() == 1 + more; });
    }
    // All attempts have been made. Between two without a wait none is under way for a moment.
    [[nodiscard]] static bool isOver(const LoginAhead& login) {
        QElapsedTimer calm;
        calm.start();
        return pumpUntil([&] {
            if (login.underWay()) calm.restart();
            return calm.elapsed() > 300;
        });
    }
    [[nodiscard]] ConnectSettings settings(int timeout = 15) const {
        ConnectSettings settings = server.settings();
        settings.ConnectionTimeout = timeout;
        return settings;
    }

    test::SandboxServer server;
    std::uint64_t loginsAtFirst = 0;
};

TEST_F(LoginAheadTest, IsMadeBeforeAnybodyAsksAndServesASession) {
    LoginAhead login(settings(), {});
    EXPECT_TRUE(pumpUntil([&] { return server.faults().logins() == loginsAtFirst + 1; }));
    LoginAhead::Outcome outcome = login.take();
    EXPECT_EQ(outcome.Failures, 0);
    Session session;
    session.SetSettings(settings());
    ASSERT_TRUE(session.OpenBy(std::move(outcome.Made)));
    EXPECT_EQ(server.rows(QStringLiteral("SELECT 7 AS a"), session), "a\n7\n");
    EXPECT_FALSE(session.InTransaction());
    session.Close();
    EXPECT_EQ(server.faults().logins(), loginsAtFirst + 1);
    EXPECT_TRUE(comesTo(0));
}

TEST_F(LoginAheadTest, AttemptUnderWayIsWaitedFor) {
    LoginAhead login(settings(), {});
    EXPECT_NE(login.take().Made, nullptr);
}

TEST_F(LoginAheadTest, FailsAfterAllItsAttemptsWithTheFailureOfTheLast) {
    server.faults().hangLogins(2);
    LoginAhead login(settings(1), {.Attempts = 2});
    EXPECT_TRUE(isOver(login));
    const LoginAhead::Outcome outcome = login.take();
    EXPECT_EQ(outcome.Made, nullptr);
    EXPECT_EQ(outcome.Failures, 2);
    EXPECT_EQ(server.faults().logins(), loginsAtFirst);
    try {
        std::rethrow_exception(outcome.LastFailure);
    } catch (const ConnectionError& e) {
        EXPECT_EQ(e.Why, ConnectionError::Reason::Unreachable);
    }
}

TEST_F(LoginAheadTest, LastAttemptIsTheTakersAgainWhereItFailedAtOnce) {
    server.faults().refuseLogins(3, {.number = 17809, .severity = 16, .state = 1, .text = "full"});
    LoginAhead login(settings(), {.Attempts = 3});
    EXPECT_TRUE(isOver(login));
    const LoginAhead::Outcome outcome = login.take();
    EXPECT_EQ(outcome.Made, nullptr);
    EXPECT_EQ(outcome.Failures, 2);
    EXPECT_EQ(outcome.WaitLeft, 0ms) << "the wait before the last one is over";
    EXPECT_NO_THROW((void)server.connect()) << "all three were made";
}

TEST_F(LoginAheadTest, SecondAttemptIsMadeWhereTheFirstFailed) {
    server.faults().refuseLogins(1, {});
    LoginAhead login(settings(), {.Attempts = 2});
    EXPECT_TRUE(pumpUntil([&] { return server.faults().logins() == loginsAtFirst + 1; }));
    const LoginAhead::Outcome outcome = login.take();
    EXPECT_NE(outcome.Made, nullptr);
    EXPECT_EQ(outcome.Failures, 1);
}

TEST_F(LoginAheadTest, TakenBetweenTwoAttemptsTellsWhatIsLeftOfTheWait) {
    server.faults().refuseLogins(1, {});
    LoginAhead login(settings(), {.Attempts = 2, .Wait = 60s});
    QElapsedTimer timer;
    timer.start();
    const LoginAhead::Outcome outcome = login.take();
    EXPECT_EQ(outcome.Made, nullptr);
    EXPECT_EQ(outcome.Failures, 1);
    EXPECT_LE(outcome.WaitLeft, 60s);
    EXPECT_GT(outcome.WaitLeft, 50s);
    EXPECT_LT(timer.elapsed(), kAtOnceMs);
    EXPECT_EQ(server.faults().logins(), loginsAtFirst) << "the second attempt is the taker's";
}

TEST_F(LoginAheadTest, ConnectionThatNobodyTakesIsClosedAtItsLimit) {
    LoginAhead login(settings(), {.Limit = 50ms});
    EXPECT_TRUE(pumpUntil([&] { return server.faults().logins() == loginsAtFirst + 1; }));
    EXPECT_TRUE(comesTo(0));
    const LoginAhead::Outcome outcome = login.take();
    EXPECT_EQ(outcome.Made, nullptr);
    EXPECT_EQ(outcome.Failures, 0);
}

TEST_F(LoginAheadTest, ConnectionThatNobodyWantsIsClosedAtOnce) {
    {
        const LoginAhead login(settings(), {});
        EXPECT_TRUE(pumpUntil([&] { return server.faults().logins() == loginsAtFirst + 1; }));
    }
    EXPECT_TRUE(comesTo(0));
}

TEST_F(LoginAheadTest, NobodyWaitsForAnAttemptThatIsNotWantedAndItLeavesNothing) {
    server.faults().hangLogins(1);
    QElapsedTimer timer;
    {
        const LoginAhead login(settings(3), {.Attempts = 2});
        EXPECT_TRUE(comesTo(1));
        timer.start();
    }
    EXPECT_LT(timer.elapsed(), kAtOnceMs);
    EndOfLogins();
    EXPECT_TRUE(comesTo(0));
    EXPECT_EQ(server.faults().logins(), loginsAtFirst) << "no second attempt";
}

TEST_F(LoginAheadTest, WaitBetweenAttemptsEndsWhenNobodyWantsTheLogin) {
    server.faults().refuseLogins(1, {});
    QElapsedTimer timer;
    {
        const LoginAhead login(settings(), {.Attempts = 2, .Wait = 60s});
        EXPECT_TRUE(pumpUntil([&] { return !login.underWay(); }));
        timer.start();
    }
    EXPECT_LT(timer.elapsed(), kAtOnceMs);
}

TEST_F(LoginAheadTest, ConnectionThatTheServerHasClosedServesNoSession) {
    LoginAhead login(settings(), {});
    EXPECT_TRUE(pumpUntil([&] { return server.faults().logins() == loginsAtFirst + 1; }));
    server.server().dropConnections();
    Session session;
    session.SetSettings(settings());
    EXPECT_FALSE(session.OpenBy(login.take().Made));
    EXPECT_FALSE(session.Connected());
    session.Open();
    EXPECT_EQ(server.rows(QStringLiteral("SELECT 7 AS a"), session), "a\n7\n");
}

class Ended : public std::exception {};

TEST_F(LoginAheadTest, CancelEndsTheWaitForAnAttempt) {
    server.faults().hangLogins(1);
    LoginAhead login(settings(3), {});
    const Meanwhile meanwhile([] {});
    const StatementCancel cancel([] { return true; }, [] { throw Ended(); });
    QElapsedTimer timer;
    timer.start();
    EXPECT_THROW((void)login.take(), Ended);
    EXPECT_LT(timer.elapsed(), kAtOnceMs);
}

}  // namespace
}  // namespace torvik::db
