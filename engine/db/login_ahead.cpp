// See login_ahead.h.
#include "engine/db/login_ahead.h"

#include <QCoreApplication>
#include <algorithm>
#include <condition_variable>
#include <functional>
#include <list>
#include <mutex>
#include <thread>
#include <utility>

#include "engine/db/meanwhile.h"

namespace torvik::db {

using Clock = std::chrono::steady_clock;

struct LoginAhead::State {
    State(ConnectSettings to, const Terms& by) : settings(std::move(to)), terms(by) {}

    const ConnectSettings settings;
    const Terms terms;
    std::mutex mutex;
    std::condition_variable changed;
    bool wanted = true;    // false: taken, or nobody will ask any more
    bool underWay = true;  // an attempt, or the thread has not come to one yet
    bool ended = false;    // the thread has nothing more to do
    std::unique_ptr<Connection> made;
    int failures = 0;
    std::exception_ptr lastFailure;
    Clock::time_point failedAt;
    Clock::duration lastTook{};
    std::thread thread;

    void run();
    void attempt(std::unique_lock<std::mutex>& lock);
};

namespace {

// Threads whose attempt nobody waits for. They are joined when they have ended.
class Unwanted {
public:
    void add(std::thread thread, std::function<bool()> ended) {
        const std::scoped_lock lock(mutex_);
        for (auto one = threads_.begin(); one != threads_.end();) {
            if (!one->ended()) {
                ++one;
                continue;
            }
            one->thread.join();
            one = threads_.erase(one);
        }
        threads_.push_back({std::move(thread), std::move(ended)});
    }
    void join() {
        std::list<Attempt> all;
        {
            const std::scoped_lock lock(mutex_);
            all.swap(threads_);
        }
        for (Attempt& one : all) one.thread.join();
    }
    ~Unwanted() { join(); }

private:
    struct Attempt {
        std::thread thread;
        std::function<bool()> ended;
    };
    std::mutex mutex_;
    std::list<Attempt> threads_;
};

Unwanted& unwanted() {
    static Unwanted threads;
    // What the driver keeps for the process goes behind the application object, and so must the last call to it.
    static const bool atTheEnd = [] {
        qAddPostRoutine(EndOfLogins);
        return true;
    }();
    Q_UNUSED(atTheEnd);
    return threads;
}

}  // namespace

void EndOfLogins() {
    unwanted().join();
}

// The thread beside.
void LoginAhead::State::run() {
    std::unique_lock lock(mutex);
    const auto unwantedNow = [this] { return !wanted; };
    while (wanted && !made && failures < terms.Attempts) {
        if (failures > 0 && changed.wait_for(lock, terms.Wait, unwantedNow)) break;
        attempt(lock);
    }
    if (made) changed.wait_for(lock, terms.Limit, unwantedNow);
    const std::unique_ptr<Connection> left = std::move(made);  // closed without the lock
    underWay = false;
    ended = true;
    lock.unlock();
    changed.notify_all();
}

void LoginAhead::State::attempt(std::unique_lock<std::mutex>& lock) {
    underWay = true;
    lock.unlock();
    const Clock::time_point begun = Clock::now();
    std::unique_ptr<Connection> opened;
    std::exception_ptr failure;
    try {
        opened = std::make_unique<Connection>(settings);
    } catch (...) {
        failure = std::current_exception();
    }
    lock.lock();
    underWay = false;
    made = std::move(opened);
    if (failure) {
        ++failures;
        lastFailure = failure;
        failedAt = Clock::now();
        lastTook = failedAt - begun;
    }
    changed.notify_all();
}

LoginAhead::LoginAhead(const ConnectSettings& settings, const Terms& terms)
    : state_(std::make_shared<State>(settings, terms)) {
    state_->thread = std::thread([state = state_] { state->run(); });
}

LoginAhead::~LoginAhead() {
    end();
}

// A thread that is at an attempt lives as long as its state, which it holds itself.
void LoginAhead::end() {
    if (!state_->thread.joinable()) return;
    std::unique_lock lock(state_->mutex);
    state_->wanted = false;
    const bool underWay = state_->underWay;
    lock.unlock();
    state_->changed.notify_all();
    if (!underWay) return state_->thread.join();
    unwanted().add(std::move(state_->thread), [state = state_] {
        const std::scoped_lock own(state->mutex);
        return state->ended;
    });
}

const ConnectSettings& LoginAhead::Settings() const {
    return state_->settings;
}

bool LoginAhead::underWay() const {
    const std::scoped_lock lock(state_->mutex);
    return state_->underWay;
}

LoginAhead::Outcome LoginAhead::take() {
    State& s = *state_;
    bool givenUp = false;
    const auto attemptOver = [&] {
        std::unique_lock lock(s.mutex);
        s.changed.wait(lock, [&] { return !s.underWay || givenUp; });
    };
    serverCall(attemptOver, [&] {
        {
            const std::scoped_lock lock(s.mutex);
            givenUp = true;
        }
        s.changed.notify_all();
    });
    Outcome outcome;
    {
        const std::scoped_lock lock(s.mutex);
        s.wanted = false;
        outcome.Made = std::move(s.made);
        outcome.LastFailure = s.lastFailure;
        const bool again = s.failures == s.terms.Attempts && s.lastTook < kAtOnce;
        outcome.Failures = again ? s.failures - 1 : s.failures;
        if (s.failures > 0 && !again)
            outcome.WaitLeft = std::chrono::ceil<std::chrono::milliseconds>(
                std::max(Clock::duration::zero(), s.failedAt + s.terms.Wait - Clock::now()));
    }
    end();
    return outcome;
}

}  // namespace torvik::db
