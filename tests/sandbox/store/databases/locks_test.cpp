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

// Blocks until the session stands in a queue.
void untilWaiting(const LockManager& locks, int session) {
    while (locks.blockedBy(session) == 0) std::this_thread::yield();
}

TEST(Locks, OwnerTakesItsLockAgain) {
    LockManager locks;
    const std::atomic<bool> never{false};
    locks.acquire(51, kDatabase, 0ms, never);
    locks.acquire(51, kDatabase, 0ms, never);
    EXPECT_TRUE(locks.holds(51, kDatabase));
    EXPECT_FALSE(locks.holds(51, kOther));
}

TEST(Locks, WriterWaitsForWriterAndIsSeenBlocked) {
    LockManager locks;
    const std::atomic<bool> never{false};
    locks.acquire(51, kDatabase, std::nullopt, never);
    auto second = std::async(std::launch::async, [&] { locks.acquire(52, kDatabase, std::nullopt, never); });
    untilWaiting(locks, 52);
    EXPECT_EQ(locks.blockedBy(52), 51);
    locks.releaseAll(51);
    second.get();
    EXPECT_TRUE(locks.holds(52, kDatabase));
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
        locks.releaseAll(session);
    };
    locks.acquire(51, kDatabase, std::nullopt, never);
    auto a = std::async(std::launch::async, wait, 52);
    untilWaiting(locks, 52);
    auto b = std::async(std::launch::async, wait, 53);
    untilWaiting(locks, 53);
    locks.releaseAll(51);
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
    locks.releaseAll(51);
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
    locks.releaseAll(52);
    first.get();
    EXPECT_TRUE(locks.holds(51, kOther));
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

}  // namespace
}  // namespace sandbox
