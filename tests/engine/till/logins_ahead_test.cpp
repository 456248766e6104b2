#include "engine/till/logins_ahead.h"

#include <gtest/gtest.h>

#include "engine/db/session.h"
#include "tests/support/pump.h"
#include "tests/support/sandbox_server.h"

namespace torvik {
namespace {

using test::pumpUntil;

class LoginsAheadTest : public testing::Test {
protected:
    void SetUp() override { TORVIK_NEEDS_SANDBOX(server); }
    // Tills of this server, all with the same database.
    [[nodiscard]] std::vector<LoginsAhead::Next> tills(int first, int last) const {
        std::vector<LoginsAhead::Next> all;
        for (int till = first; till <= last; ++till) all.push_back({name(till), server.settings()});
        return all;
    }
    [[nodiscard]] static QString name(int till) { return QStringLiteral("1/%1").arg(till); }
    void visitsOf(qint64 milliseconds, int count = 9) {
        for (int i = 0; i <= count; ++i) ahead.visitBegins(tick += milliseconds);
    }
    // So many sessions stand besides the test's own.
    [[nodiscard]] bool stand(std::size_t sessions) {
        return pumpUntil([&] { return server.server().connectionCount() == sessions + 1; });
    }

    test::SandboxServer server;
    LoginsAhead ahead{{}};
    qint64 tick = 0;
};

TEST_F(LoginsAheadTest, ReachesAsManyTillsAsTheWalkComesToInFortySeconds) {
    EXPECT_EQ(ahead.reach(), 20) << "before anything was visited";
    const std::pair<qint64, int> cases[] = {{2000, 20}, {1500, 27},  {500, 80},   {1, 80},
                                            {0, 80},    {10'000, 4}, {40'000, 1}, {90'000, 1}};
    for (const auto& [visit, tills] : cases) {
        visitsOf(visit);
        EXPECT_EQ(ahead.reach(), tills) << visit;
    }
}

TEST_F(LoginsAheadTest, OneTillThatTookLongChangesNothing) {
    visitsOf(1000);
    visitsOf(30'000, 1);
    EXPECT_EQ(ahead.reach(), 40);
}

TEST_F(LoginsAheadTest, TillThatAnotherCopyHasServedTellsNothingOfHowLongAVisitTakes) {
    for (int till = 0; till < 30; ++till) {
        ahead.visitBegins(tick);
        tick += till % 3 == 0 ? 2000 : 1;  // of three copies this one serves each third till
        if (till % 3 != 0) ahead.passedOver();
    }
    EXPECT_EQ(ahead.reach(), 20);
}

TEST_F(LoginsAheadTest, NeverMoreThanEightySessions) {
    visitsOf(1);
    ahead.fill(name(0), tills(1, 100));
    EXPECT_EQ(ahead.size(), 80);
    EXPECT_TRUE(stand(80));
    for (int till = 1; till <= 3; ++till) ahead.fill(name(till), tills(till + 1, 100));
    EXPECT_EQ(ahead.size(), 80) << "as long as none is taken, for want of a turn, none is added";
}

TEST_F(LoginsAheadTest, TillThatIsVisitedIsLoggedInToNoMore) {
    ahead.fill(name(1), tills(2, 3));
    EXPECT_FALSE(ahead.take(name(1), server.settings()));
    std::optional<db::LoginAhead::Outcome> second = ahead.take(name(2), server.settings());
    ASSERT_TRUE(second);
    EXPECT_NE(second->Made, nullptr);
    EXPECT_FALSE(ahead.take(name(2), server.settings()));
    EXPECT_EQ(ahead.size(), 1);
}

TEST_F(LoginsAheadTest, TillThatIsAskedForWithOtherSettingsGetsNothing) {
    ahead.fill(name(1), tills(2, 2));
    db::ConnectSettings moved = server.settings();
    moved.Database = QStringLiteral("master");
    EXPECT_FALSE(ahead.take(name(2), moved));
    EXPECT_EQ(ahead.size(), 0);
    EXPECT_TRUE(stand(0));
}

// As when another copy of the program has served them, or the roster was opened anew in another order.
TEST_F(LoginsAheadTest, TillsThatDoNotFollowAnyMoreAreLetGo) {
    ahead.fill(name(1), tills(2, 6));
    EXPECT_TRUE(stand(5));
    ahead.fill(name(3), tills(5, 6));
    EXPECT_EQ(ahead.size(), 3);
    EXPECT_TRUE(stand(3));
    EXPECT_TRUE(ahead.take(name(3), server.settings())) << "whose turn it is";
}

TEST_F(LoginsAheadTest, NoSessionRemainsBehindIt) {
    {
        LoginsAhead own{{}};
        own.fill(name(1), tills(2, 9));
        EXPECT_TRUE(stand(8));
    }
    EXPECT_TRUE(stand(0));
}

}  // namespace
}  // namespace torvik
