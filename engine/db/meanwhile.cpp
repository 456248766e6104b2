// See meanwhile.h.
#include "engine/db/meanwhile.h"

#include <chrono>
#include <utility>

namespace torvik::db {

namespace {

// Most calls end sooner than this, and cost no turn then.
constexpr std::chrono::milliseconds kBeforeFirstTurn{20};
constexpr std::chrono::milliseconds kBetweenTurns{10};

thread_local Meanwhile* current = nullptr;
thread_local StatementCancel* cancelOfThread = nullptr;

}  // namespace

Meanwhile::Meanwhile(std::function<void()> turn)
    : turn_(std::move(turn)), before_(std::exchange(current, this)), beside_([this] { serve(); }) {}

Meanwhile::~Meanwhile() {
    current = before_;
    {
        const std::scoped_lock lock(mutex_);
        ending_ = true;
    }
    given_.notify_one();
    beside_.join();
}

bool Meanwhile::stands() {
    return current != nullptr;
}

void Meanwhile::call(const std::function<void()>& work, const std::function<void()>& cancel) {
    if (!current) return work();
    // A turn that calls a server finds none: the thread beside is taken.
    Meanwhile* const own = std::exchange(current, nullptr);
    const bool cancelled = own->callBeside(work, cancel);
    current = own;
    const std::exception_ptr failure = std::exchange(own->failure_, nullptr);
    if (cancelled) cancelOfThread->raise_();
    if (failure) std::rethrow_exception(failure);
}

bool Meanwhile::callBeside(const std::function<void()>& work, const std::function<void()>& cancel) {
    std::unique_lock lock(mutex_);
    work_ = &work;
    given_.notify_one();
    const auto ended = [this] { return work_ == nullptr; };
    bool cancelled = false;
    bool over = done_.wait_for(lock, kBeforeFirstTurn, ended);
    while (!over) {
        lock.unlock();
        turn_();
        if (cancel && !cancelled && cancelOfThread && cancelOfThread->wanted_()) {
            cancelled = true;
            cancel();
        }
        lock.lock();
        over = done_.wait_for(lock, kBetweenTurns, ended);
    }
    return cancelled;
}

// The thread beside.
void Meanwhile::serve() {
    std::unique_lock lock(mutex_);
    for (;;) {
        given_.wait(lock, [this] { return work_ || ending_; });
        if (!work_) return;
        const std::function<void()>& work = *work_;
        lock.unlock();
        std::exception_ptr failure;
        try {
            work();
        } catch (...) {
            failure = std::current_exception();
        }
        lock.lock();
        failure_ = std::move(failure);
        work_ = nullptr;
        done_.notify_one();
    }
}

StatementCancel::StatementCancel(std::function<bool()> wanted, std::function<void()> raise)
    : wanted_(std::move(wanted)), raise_(std::move(raise)), before_(std::exchange(cancelOfThread, this)) {}

StatementCancel::~StatementCancel() {
    cancelOfThread = before_;
}

}  // namespace torvik::db
