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

void Meanwhile::call(const std::function<void()>& work) {
    if (!current) return work();
    // A turn that calls a server finds none: the thread beside is taken.
    Meanwhile* const own = std::exchange(current, nullptr);
    try {
        own->callBeside(work);
    } catch (...) {
        current = own;
        throw;
    }
    current = own;
}

void Meanwhile::callBeside(const std::function<void()>& work) {
    std::unique_lock lock(mutex_);
    work_ = &work;
    given_.notify_one();
    const auto ended = [this] { return work_ == nullptr; };
    bool over = done_.wait_for(lock, kBeforeFirstTurn, ended);
    while (!over) {
        lock.unlock();
        turn_();
        lock.lock();
        over = done_.wait_for(lock, kBetweenTurns, ended);
    }
    if (std::exception_ptr failure = std::exchange(failure_, nullptr)) std::rethrow_exception(std::move(failure));
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

}  // namespace torvik::db
