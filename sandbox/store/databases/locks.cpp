// One table of locks under one mutex: they are few, and held for as long as a statement or a run takes.
#include "sandbox/store/databases/locks.h"

#include <algorithm>
#include <string>

#include "sandbox/store/values/error.h"
#include "sandbox/store/values/error_table.h"

namespace sandbox {

LockManager::Outcome LockManager::take(int session, LockOwner owner, const LockResource& resource, LockMode mode,
                                       std::optional<std::chrono::milliseconds> timeout,
                                       const std::atomic<bool>& cancelled) {
    std::unique_lock guard(mutex_);
    Lock& lock = locks_[resource];
    if (blockers(lock, session, mode).empty()) {
        grant(lock, session, owner, mode);
        return Outcome::Granted;
    }
    if (timeout && timeout->count() == 0) return Outcome::TimedOut;

    lock.waiting.push_back({session, mode});
    waitsOn_[session] = resource;
    if (closesCircle(session)) {
        leaveQueue(session, lock);
        return Outcome::DeadlockVictim;
    }
    const auto mine = [&] { return blockers(lock, session, mode).empty(); };
    const auto ready = [&] { return cancelled.load() || mine(); };
    bool inTime = true;
    if (timeout) {
        inTime = changed_.wait_for(guard, *timeout, ready);
    } else {
        changed_.wait(guard, ready);
    }
    const bool got = inTime && !cancelled.load();
    if (got) grant(lock, session, owner, mode);
    leaveQueue(session, lock);
    if (got) return Outcome::GrantedAfterWait;
    if (!inTime) return Outcome::TimedOut;
    throw StatementCancelled();
}

void LockManager::acquire(int session, int database, std::optional<std::chrono::milliseconds> timeout,
                          const std::atomic<bool>& cancelled) {
    switch (take(session, LockOwner::Transaction, {.database = database}, LockMode::Exclusive, timeout, cancelled)) {
        case Outcome::Granted:
        case Outcome::GrantedAfterWait: return;
        case Outcome::TimedOut: throw SqlError(errorMessage<1222>());
        case Outcome::DeadlockVictim: throw SqlError(errorMessage<1205>(session), Effect::Batch);
    }
}

bool LockManager::release(int session, LockOwner owner, const LockResource& resource) {
    const std::lock_guard guard(mutex_);
    const auto lock = locks_.find(resource);
    if (lock == locks_.end()) return false;
    std::vector<Hold>& holds = lock->second.holds;
    const auto hold = std::find_if(holds.begin(), holds.end(),
                                   [&](const Hold& h) { return h.session == session && h.owner == owner; });
    if (hold == holds.end()) return false;
    if (--hold->count > 0) return true;
    holds.erase(hold);
    if (holds.empty() && lock->second.waiting.empty()) locks_.erase(lock);
    changed_.notify_all();
    return true;
}

void LockManager::releaseAll(int session, LockOwner owner) {
    const std::lock_guard guard(mutex_);
    for (auto place = locks_.begin(); place != locks_.end();) {
        Lock& lock = place->second;
        std::erase_if(lock.holds, [&](const Hold& h) { return h.session == session && h.owner == owner; });
        place = lock.holds.empty() && lock.waiting.empty() ? locks_.erase(place) : std::next(place);
    }
    changed_.notify_all();
}

void LockManager::wake() {
    // Under the mutex: a session between looking at its flag and going to sleep would miss it otherwise.
    const std::lock_guard guard(mutex_);
    changed_.notify_all();
}

LockModes LockManager::held(int session, LockOwner owner, const LockResource& resource) const {
    const std::lock_guard guard(mutex_);
    const auto lock = locks_.find(resource);
    if (lock == locks_.end()) return {};
    for (const Hold& hold : lock->second.holds) {
        if (hold.session == session && hold.owner == owner) return hold.modes;
    }
    return {};
}

bool LockManager::grantable(int session, const LockResource& resource, LockMode mode) const {
    const std::lock_guard guard(mutex_);
    const auto lock = locks_.find(resource);
    return lock == locks_.end() || blockers(lock->second, session, mode).empty();
}

bool LockManager::isHeld(int database) const {
    const std::lock_guard guard(mutex_);
    return locks_.contains({.database = database});
}

int LockManager::blockedBy(int session) const {
    const std::lock_guard guard(mutex_);
    const std::vector<int> sessions = blockersOf(session);
    return sessions.empty() ? 0 : sessions.front();
}

void LockManager::grant(Lock& lock, int session, LockOwner owner, LockMode mode) {
    for (Hold& hold : lock.holds) {
        if (hold.session != session || hold.owner != owner) continue;
        hold.modes |= mode;
        ++hold.count;
        return;
    }
    lock.holds.push_back({session, owner, mode, 1});
}

// The other sessions that the mode cannot be granted beside: those who hold the lock, then those who came before. Who
// holds the lock already does not queue for a stronger mode.
std::vector<int> LockManager::blockers(const Lock& lock, int session, LockMode mode) {
    std::vector<int> found;
    bool holds = false;
    for (const Hold& hold : lock.holds) {
        if (hold.session == session) {
            holds = true;
        } else if (!hold.modes.goesWith(mode)) {
            found.push_back(hold.session);
        }
    }
    for (const Wait& wait : lock.waiting) {
        if (holds || wait.session == session) break;
        if (!LockModes(wait.mode).goesWith(mode)) found.push_back(wait.session);
    }
    return found;
}

std::vector<int> LockManager::blockersOf(int session) const {
    const auto resource = waitsOn_.find(session);
    if (resource == waitsOn_.end()) return {};
    const Lock& lock = locks_.at(resource->second);
    const auto wait =
        std::find_if(lock.waiting.begin(), lock.waiting.end(), [&](const Wait& w) { return w.session == session; });
    return blockers(lock, session, wait->mode);
}

bool LockManager::closesCircle(int session) const {
    std::set<int> seen;
    std::vector<int> todo = blockersOf(session);
    while (!todo.empty()) {
        const int next = todo.back();
        todo.pop_back();
        if (next == session) return true;
        if (!seen.insert(next).second) continue;
        const std::vector<int> further = blockersOf(next);
        todo.insert(todo.end(), further.begin(), further.end());
    }
    return false;
}

void LockManager::leaveQueue(int session, Lock& lock) {
    std::erase_if(lock.waiting, [&](const Wait& wait) { return wait.session == session; });
    const auto resource = waitsOn_.find(session);
    if (lock.holds.empty() && lock.waiting.empty()) locks_.erase(resource->second);
    waitsOn_.erase(resource);
    changed_.notify_all();
}

}  // namespace sandbox
