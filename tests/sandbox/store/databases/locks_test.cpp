#include "sandbox/store/databases/locks.h"

#include <gtest/gtest.h>

#include <future>
#include <thread>

#include "sandbox/store/values/error.h"

namespace sandbox {
namespace {

using namespace std::chrono_literals;

constexpr int kDatabase = 5;
constexpr int kOther = 6;

int errorNumber(const std::function<void()>& action) {
    try {
        action();
    } catch (const SqlError& error) {
        return error.messages.front().number;
    }
    return 0;
}

bool writes(const LockManager& locks, int session, int database) {
    return !locks.held(session, LockOwner::Transaction, {.database = database}).empty();
}

// Blocks until the session stands in a queue.
void untilWaiting(const LockManager& locks, int session) {
    while (locks.blockedBy(session) == 0) std::this_thread::yield();
}

TEST(Locks, OwnerTakesItsLockAgain) {
    LockManager locks;
    const std::atomic<bool> never{false};
    locks.acquire(51, kDatabase, 0ms, never);
    locks.acquire(51, kDatabase, 0ms, never);
    EXPECT_TRUE(writes(locks, 51, kDatabase));
    EXPECT_FALSE(writes(locks, 51, kOther));
}

TEST(Locks, WriterWaitsForWriterAndIsSeenBlocked) {
    LockManager locks;
    const std::atomic<bool> never{false};
    locks.acquire(51, kDatabase, std::nullopt, never);
    auto second = std::async(std::launch::async, [&] { locks.acquire(52, kDatabase, std::nullopt, never); });
    untilWaiting(locks, 52);
    EXPECT_EQ(locks.blockedBy(52), 51);
    locks.releaseAll(51, LockOwner::Transaction);
    second.get();
    EXPECT_TRUE(writes(locks, 52, kDatabase));
    EXPECT_EQ(locks.blockedBy(52), 0);
}

TEST(Locks, QueueIsFirstComeFirstServed) {
    LockManager locks;
    const std::atomic<bool> never{false};
    std::vector<int> order;
    std::mutex mutex;
    const auto wait = [&](int session) {
        locks.acquire(session, kDatabase, std::nullopt, never);
        {
            const std::lock_guard guard(mutex);
            order.push_back(session);
        }
        locks.releaseAll(session, LockOwner::Transaction);
    };
    locks.acquire(51, kDatabase, std::nullopt, never);
    auto a = std::async(std::launch::async, wait, 52);
    untilWaiting(locks, 52);
    auto b = std::async(std::launch::async, wait, 53);
    untilWaiting(locks, 53);
    locks.releaseAll(51, LockOwner::Transaction);
    a.get();
    b.get();
    EXPECT_EQ(order, (std::vector<int>{52, 53}));
}

TEST(Locks, TimeOutIsError1222) {
    LockManager locks;
    const std::atomic<bool> never{false};
    locks.acquire(51, kDatabase, std::nullopt, never);
    EXPECT_EQ(errorNumber([&] { locks.acquire(52, kDatabase, 0ms, never); }), 1222);
    EXPECT_EQ(errorNumber([&] { locks.acquire(52, kDatabase, 5ms, never); }), 1222);
    EXPECT_EQ(locks.blockedBy(52), 0);
    locks.releaseAll(51, LockOwner::Transaction);
    EXPECT_EQ(errorNumber([&] { locks.acquire(52, kDatabase, 0ms, never); }), 0);
}

TEST(Locks, CircleOfWaitsHasAVictimAtOnce) {
    LockManager locks;
    const std::atomic<bool> never{false};
    locks.acquire(51, kDatabase, std::nullopt, never);
    locks.acquire(52, kOther, std::nullopt, never);
    auto first = std::async(std::launch::async, [&] { locks.acquire(51, kOther, std::nullopt, never); });
    untilWaiting(locks, 51);
    try {
        locks.acquire(52, kDatabase, std::nullopt, never);
        FAIL() << "no victim";
    } catch (const SqlError& error) {
        EXPECT_EQ(error.messages.front().number, 1205);
        EXPECT_EQ(error.messages.front().text,
                  "Transaction (Process ID 52) was deadlocked on lock resources with another process and has been "
                  "chosen as the deadlock victim. Rerun the transaction.");
        EXPECT_EQ(error.effect, Effect::Batch);
    }
    locks.releaseAll(52, LockOwner::Transaction);
    first.get();
    EXPECT_TRUE(writes(locks, 51, kOther));
}

TEST(Locks, AttentionEndsAWait) {
    LockManager locks;
    std::atomic<bool> cancelled{false};
    const std::atomic<bool> never{false};
    locks.acquire(51, kDatabase, std::nullopt, never);
    auto second = std::async(std::launch::async, [&] { locks.acquire(52, kDatabase, std::nullopt, cancelled); });
    untilWaiting(locks, 52);
    cancelled = true;
    locks.wake();
    EXPECT_THROW(second.get(), StatementCancelled);
    EXPECT_EQ(locks.blockedBy(52), 0);
}

// ---- application locks

using Outcome = LockManager::Outcome;

const std::atomic<bool> kNever{false};

LockResource named(const std::string& name) {
    return {.database = kDatabase, .application = true, .principal = "public", .name = name};
}

Outcome take(LockManager& locks, int session, LockMode mode, LockOwner owner = LockOwner::Session) {
    return locks.take(session, owner, named("till 1"), mode, 0ms, kNever);
}

TEST(ApplicationLocks, ModesStandBesideOthersAsSqlServersMatrixTells) {
    constexpr LockMode kModes[] = {LockMode::IntentShared, LockMode::Shared, LockMode::Update,
                                   LockMode::IntentExclusive, LockMode::Exclusive};
    // Rows: held by another session; columns: asked for; in the order of kModes.
    const std::string granted[] = {"yyyyn", "yyynn", "yynnn", "ynnyn", "nnnnn"};
    for (std::size_t held = 0; held < 5; ++held) {
        std::string row;
        for (const LockMode wanted : kModes) {
            LockManager locks;
            (void)take(locks, 51, kModes[held]);
            row += take(locks, 52, wanted) == Outcome::Granted ? 'y' : 'n';
        }
        EXPECT_EQ(row, granted[held]) << LockModes(kModes[held]).name();
    }
}

TEST(ApplicationLocks, AreTakenAsOftenAsTheyAreReleased) {
    LockManager locks;
    (void)take(locks, 51, LockMode::Shared);
    (void)take(locks, 51, LockMode::Exclusive);
    EXPECT_EQ(locks.held(51, LockOwner::Session, named("till 1")).name(), "Exclusive");
    EXPECT_TRUE(locks.release(51, LockOwner::Session, named("till 1")));
    EXPECT_EQ(take(locks, 52, LockMode::Shared), Outcome::TimedOut) << "the stronger mode stays to the last release";
    EXPECT_TRUE(locks.release(51, LockOwner::Session, named("till 1")));
    EXPECT_FALSE(locks.release(51, LockOwner::Session, named("till 1")));
    EXPECT_EQ(take(locks, 52, LockMode::Exclusive), Outcome::Granted);
}

TEST(ApplicationLocks, NamesDatabasesAndPrincipalsAreLocksOfTheirOwn) {
    LockManager locks;
    (void)take(locks, 51, LockMode::Exclusive);
    const auto free = [&](LockResource resource) {
        return locks.take(52, LockOwner::Session, resource, LockMode::Exclusive, 0ms, kNever) == Outcome::Granted;
    };
    EXPECT_FALSE(free(named("till 1")));
    EXPECT_TRUE(free(named("Till 1")));
    EXPECT_TRUE(free({.database = kOther, .application = true, .principal = "public", .name = "till 1"}));
    EXPECT_TRUE(free({.database = kDatabase, .application = true, .principal = "dbo", .name = "till 1"}));
    EXPECT_TRUE(free({.database = kDatabase})) << "the writer's lock is another one";
}

TEST(ApplicationLocks, EndOfATransactionLeavesTheSessionsOwn) {
    LockManager locks;
    (void)take(locks, 51, LockMode::Exclusive, LockOwner::Transaction);
    (void)locks.take(51, LockOwner::Session, named("till 2"), LockMode::Exclusive, 0ms, kNever);
    locks.releaseAll(51, LockOwner::Transaction);
    EXPECT_EQ(take(locks, 52, LockMode::Exclusive), Outcome::Granted);
    EXPECT_FALSE(locks.grantable(52, named("till 2"), LockMode::Shared));
    locks.releaseAll(51, LockOwner::Session);
    EXPECT_TRUE(locks.grantable(52, named("till 2"), LockMode::Shared));
}

TEST(ApplicationLocks, WaitEndsWithTheGrantAndSaysSo) {
    LockManager locks;
    (void)take(locks, 51, LockMode::Exclusive);
    auto second = std::async(std::launch::async, [&] {
        return locks.take(52, LockOwner::Session, named("till 1"), LockMode::Exclusive, std::nullopt, kNever);
    });
    untilWaiting(locks, 52);
    EXPECT_EQ(locks.blockedBy(52), 51);
    locks.releaseAll(51, LockOwner::Session);
    EXPECT_EQ(second.get(), Outcome::GrantedAfterWait);
}

TEST(ApplicationLocks, CircleThroughAWritersLockHasAVictim) {
    LockManager locks;
    (void)take(locks, 51, LockMode::Exclusive);
    locks.acquire(52, kDatabase, std::nullopt, kNever);
    auto first = std::async(std::launch::async, [&] { locks.acquire(51, kDatabase, std::nullopt, kNever); });
    untilWaiting(locks, 51);
    EXPECT_EQ(locks.take(52, LockOwner::Session, named("till 1"), LockMode::Exclusive, std::nullopt, kNever),
              Outcome::DeadlockVictim);
    locks.releaseAll(52, LockOwner::Transaction);
    first.get();
}

TEST(ApplicationLocks, TwoReadersWhoBothWantToWriteAreACircle) {
    LockManager locks;
    (void)take(locks, 51, LockMode::Shared);
    (void)take(locks, 52, LockMode::Shared);
    auto first = std::async(std::launch::async, [&] {
        return locks.take(51, LockOwner::Session, named("till 1"), LockMode::Exclusive, std::nullopt, kNever);
    });
    untilWaiting(locks, 51);
    EXPECT_EQ(locks.take(52, LockOwner::Session, named("till 1"), LockMode::Exclusive, std::nullopt, kNever),
              Outcome::DeadlockVictim);
    locks.releaseAll(52, LockOwner::Session);
    EXPECT_EQ(first.get(), Outcome::GrantedAfterWait);
}

}  // namespace
}  // namespace sandbox
