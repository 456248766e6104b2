// Who may write to a database: one writer lock for each database, with a queue, a time-out and deadlock detection.
// Readers need no lock. Used by Connection; sysprocesses shows who waits for whom.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <exception>
#include <map>
#include <mutex>
#include <optional>

namespace sandbox {

// An attention reached the running statement, in SQLite or in a wait. Ends the batch without an error message.
class StatementCancelled : public std::exception {
public:
    [[nodiscard]] const char* what() const noexcept override { return "the statement was cancelled"; }
};

class LockManager {
public:
    // Waits for the writer lock of a database; at once when the session has it already. timeout: none waits for ever,
    // zero not at all. Raises 1222 when the time is over, 1205 when waiting would close a circle of waits, and
    // StatementCancelled as soon as `cancelled` is set (wake() makes a waiting session look at it).
    void acquire(int session, int database, std::optional<std::chrono::milliseconds> timeout,
                 const std::atomic<bool>& cancelled);
    void releaseAll(int session);
    void wake();  // from any thread

    [[nodiscard]] bool holds(int session, int database) const;
    [[nodiscard]] int blockedBy(int session) const;  // the session that it waits for, 0: none
    [[nodiscard]] bool isHeld(int database) const;

private:
    struct Lock {
        int owner = 0;            // 0: free
        std::deque<int> waiting;  // first come, first served
    };

    [[nodiscard]] int blockerOf(int session) const;
    [[nodiscard]] bool closesCircle(int session) const;
    void leaveQueue(int session, Lock& lock);

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::map<int, Lock> locks_;   // by database id
    std::map<int, int> waitsOn_;  // session to database
};

}  // namespace sandbox
