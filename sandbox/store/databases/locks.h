// The locks of one server: the right to write to a database, which one session has at a time, and the locks that
// applications take by name (sp_getapplock). Each resource has a queue; time-outs and deadlock detection cover them
// all. Readers need no lock. Used by Connection and by the application lock procedures; sysprocesses shows who waits
// for whom.
#pragma once

#include <atomic>
#include <chrono>
#include <compare>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "sandbox/store/databases/lock_modes.h"

namespace sandbox {

// An attention reached the running statement, in SQLite or in a wait. Ends the batch without an error message.
class StatementCancelled : public std::exception {
public:
    [[nodiscard]] const char* what() const noexcept override { return "the statement was cancelled"; }
};

// What a lock is on: an application's name within a database, or the database's one writer.
struct LockResource {
    int database = 0;
    bool application = false;
    std::string principal{};  // an application lock's; it is part of the lock's identity
    std::string name{};       // compared byte by byte

    auto operator<=>(const LockResource&) const = default;
};

// What a lock ends with, unless it is released before.
enum class LockOwner : std::uint8_t { Transaction, Session };

class LockManager {
public:
    enum class Outcome { Granted, GrantedAfterWait, TimedOut, DeadlockVictim };

    // Waits for a lock; at once when nobody else's stands in the way. Taking it again adds to the mode and to the
    // number of releases that it needs. timeout: none waits for ever, zero not at all. A victim is named at once when
    // waiting would close a circle of waits. Raises StatementCancelled as soon as `cancelled` is set (wake() makes a
    // waiting session look at it).
    [[nodiscard]] Outcome take(int session, LockOwner owner, const LockResource& resource, LockMode mode,
                               std::optional<std::chrono::milliseconds> timeout, const std::atomic<bool>& cancelled);
    // Takes back one take() of the owner's. False when it does not hold the lock.
    [[nodiscard]] bool release(int session, LockOwner owner, const LockResource& resource);
    void releaseAll(int session, LockOwner owner);

    // Takes the writer lock of a database for the session's transaction. Raises 1222 when the time is over and 1205
    // where take() names a victim.
    void acquire(int session, int database, std::optional<std::chrono::milliseconds> timeout,
                 const std::atomic<bool>& cancelled);
    void wake();  // from any thread

    [[nodiscard]] LockModes held(int session, LockOwner owner, const LockResource& resource) const;
    // Whether take() would be granted without a wait.
    [[nodiscard]] bool grantable(int session, const LockResource& resource, LockMode mode) const;
    [[nodiscard]] bool isHeld(int database) const;   // by a writer
    [[nodiscard]] int blockedBy(int session) const;  // a session that it waits for, 0: none

private:
    struct Hold {
        int session;
        LockOwner owner;
        LockModes modes;  // kept whole until the last release
        int count;        // releases that it needs
    };
    struct Wait {
        int session;
        LockMode mode;
    };
    struct Lock {
        std::vector<Hold> holds;
        std::deque<Wait> waiting;  // first come, first served
    };

    static void grant(Lock& lock, int session, LockOwner owner, LockMode mode);
    [[nodiscard]] static std::vector<int> blockers(const Lock& lock, int session, LockMode mode);
    [[nodiscard]] std::vector<int> blockersOf(int session) const;
    [[nodiscard]] bool closesCircle(int session) const;
    void leaveQueue(int session, Lock& lock);

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::map<LockResource, Lock> locks_;   // those that somebody holds or waits for
    std::map<int, LockResource> waitsOn_;  // by session
};

}  // namespace sandbox
