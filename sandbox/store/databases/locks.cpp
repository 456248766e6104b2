#include "sandbox/store/databases/locks.h"

#include <algorithm>
#include <string>

#include "sandbox/store/values/error.h"

namespace sandbox {

namespace {

SqlError deadlockVictim(int session) {
    return SqlError(Message{.number = 1205,
                            .severity = 13,
                            .state = 51,
                            .text = "Transaction (Process ID " + std::to_string(session) +
                                    ") was deadlocked on lock resources with another process and has been chosen as "
                                    "the deadlock victim. Rerun the transaction."},
                    Effect::Batch);
}

SqlError lockTimeout() {
    return SqlError(
        Message{.number = 1222, .severity = 16, .state = 51, .text = "Lock request time out period exceeded."});
}

}  // namespace

void LockManager::acquire(int session, int database, std::optional<std::chrono::milliseconds> timeout,
                          const std::atomic<bool>& cancelled) {
    std::unique_lock guard(mutex_);
    Lock& lock = locks_[database];
    if (lock.owner == session) return;
    if (lock.owner == 0 && lock.waiting.empty()) {
        lock.owner = session;
        return;
    }
    if (timeout && timeout->count() == 0) throw lockTimeout();

    lock.waiting.push_back(session);
    waitsOn_[session] = database;
    if (closesCircle(session)) {
        leaveQueue(session, lock);
        throw deadlockVictim(session);
    }
    const auto mine = [&] { return lock.owner == 0 && lock.waiting.front() == session; };
    const auto ready = [&] { return cancelled.load() || mine(); };
    bool inTime = true;
    if (timeout) {
        inTime = changed_.wait_for(guard, *timeout, ready);
    } else {
        changed_.wait(guard, ready);
    }
    const bool got = inTime && !cancelled.load() && mine();
    leaveQueue(session, lock);
    if (got) {
        lock.owner = session;
        return;
    }
    if (!inTime) throw lockTimeout();
    throw StatementCancelled();
}

void LockManager::releaseAll(int session) {
    const std::lock_guard guard(mutex_);
    for (auto& [database, lock] : locks_) {
        if (lock.owner == session) lock.owner = 0;
    }
    changed_.notify_all();
}

void LockManager::wake() {
    // Under the mutex: a session between looking at its flag and going to sleep would miss it otherwise.
    const std::lock_guard guard(mutex_);
    changed_.notify_all();
}

bool LockManager::holds(int session, int database) const {
    const std::lock_guard guard(mutex_);
    const auto found = locks_.find(database);
    return found != locks_.end() && found->second.owner == session;
}

bool LockManager::isHeld(int database) const {
    const std::lock_guard guard(mutex_);
    const auto found = locks_.find(database);
    return found != locks_.end() && (found->second.owner != 0 || !found->second.waiting.empty());
}

int LockManager::blockedBy(int session) const {
    const std::lock_guard guard(mutex_);
    return blockerOf(session);
}

int LockManager::blockerOf(int session) const {
    const auto waits = waitsOn_.find(session);
    if (waits == waitsOn_.end()) return 0;
    const Lock& lock = locks_.at(waits->second);
    return lock.owner != 0 ? lock.owner : lock.waiting.front() == session ? 0 : lock.waiting.front();
}

bool LockManager::closesCircle(int session) const {
    // Each session waits for one other at most, so the graph is a chain; it cannot be longer than there are waits.
    int next = blockerOf(session);
    for (std::size_t steps = 0; next != 0 && steps <= waitsOn_.size(); ++steps) {
        if (next == session) return true;
        next = blockerOf(next);
    }
    return false;
}

void LockManager::leaveQueue(int session, Lock& lock) {
    std::erase(lock.waiting, session);
    waitsOn_.erase(session);
    changed_.notify_all();
}

}  // namespace sandbox
