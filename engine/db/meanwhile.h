// What a thread does while a server lets it wait. A call to a server blocks its thread; where the thread has a
// Meanwhile, the call is made on a thread beside it, and the waiting thread gets a turn every now and then until it has
// ended. The window has one, so that it is painted and can be cancelled however long a server takes; a thread without
// one just waits. See docs/sessions.md.
#pragma once

#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <type_traits>

namespace torvik::db {

class Meanwhile {
public:
    // For the thread that makes it, as long as it lives; one that was there before comes back after it. turn is called
    // on that thread, for the first time when a call has lasted 20 ms and then every 10 ms. It must not raise. A turn
    // that calls a server itself waits for that without a turn.
    explicit Meanwhile(std::function<void()> turn);
    ~Meanwhile();
    Meanwhile(const Meanwhile&) = delete;
    Meanwhile& operator=(const Meanwhile&) = delete;

    // The current thread has one that is free.
    [[nodiscard]] static bool stands();
    // Makes a call as the current thread's Meanwhile does, if it has one. Raises what the call raises. cancel: called
    // on this thread, once, while the call is under way, when the thread's StatementCancel wants it; the call must then
    // end soon, and StatementCancel's error is raised in the place of whatever came of it.
    static void call(const std::function<void()>& work, const std::function<void()>& cancel = {});

private:
    // True: it was cancelled.
    [[nodiscard]] bool callBeside(const std::function<void()>& work, const std::function<void()>& cancel);
    void serve();

    std::function<void()> turn_;
    Meanwhile* before_;
    std::mutex mutex_;
    std::condition_variable given_;
    std::condition_variable done_;
    const std::function<void()>* work_ = nullptr;  // null when there is nothing to do
    std::exception_ptr failure_;
    bool ending_ = false;
    std::thread beside_;
};

// While it lives, statements of this thread that are under way can be ended on the server: those of queries, scripts
// and stored procedures, never a commit, a rollback or a block of rows. Without a Meanwhile it does nothing.
class StatementCancel {
public:
    // wanted is asked after each turn. raise raises the error of a statement that was ended so, also where it had just
    // done its work; what it leaves is for its transaction to take back.
    StatementCancel(std::function<bool()> wanted, std::function<void()> raise);
    ~StatementCancel();
    StatementCancel(const StatementCancel&) = delete;
    StatementCancel& operator=(const StatementCancel&) = delete;

private:
    friend class Meanwhile;

    std::function<bool()> wanted_;
    std::function<void()> raise_;
    StatementCancel* before_;
};

// The same for work that gives something back.
template <typename Work>
auto serverCall(const Work& work, const std::function<void()>& cancel = {}) -> decltype(work()) {
    if constexpr (std::is_void_v<decltype(work())>) {
        Meanwhile::call(work, cancel);
    } else {
        decltype(work()) result{};
        Meanwhile::call([&] { result = work(); }, cancel);
        return result;
    }
}

}  // namespace torvik::db
