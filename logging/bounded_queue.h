// A queue of limited room between threads: who finds it full waits for room, who finds it empty waits for an item,
// both without a time limit. The queued sinks stand on it.
//
// Waking a sleeping thread costs the waker some ten microseconds, and its processor when that thread then takes it. So
// a push wakes nobody until the queue is half full; who waits for an item looks every ten milliseconds.
#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

namespace torvik {

template <typename T>
class BoundedQueue {
public:
    explicit BoundedQueue(std::size_t room) : room_(room), wakeFrom_(std::max<std::size_t>(room / 2, 1)) {}

    // Waits for room. After shutDown the item is dropped.
    void push(T item) {
        bool wake = false;
        {
            std::unique_lock lock(mutex_);
            notFull_.wait(lock, [this] { return items_.size() < room_ || down_; });
            if (down_) return;
            items_.push_back(std::move(item));
            wake = items_.size() >= wakeFrom_;
        }
        if (wake) notEmpty_.notify_one();
    }

    // Waits for an item. None: the queue is shut down and empty.
    [[nodiscard]] std::optional<T> pop() {
        std::optional<T> item;
        {
            std::unique_lock lock(mutex_);
            while (!notEmpty_.wait_for(lock, kLookInterval, [this] { return !items_.empty() || down_; })) {
            }
            if (items_.empty()) return item;
            item = std::move(items_.front());
            items_.pop_front();
        }
        notFull_.notify_one();
        return item;
    }

    [[nodiscard]] std::size_t size() const {
        const std::lock_guard lock(mutex_);
        return items_.size();
    }

    // Wakes all who wait, and lets nobody wait again.
    void shutDown() {
        {
            const std::lock_guard lock(mutex_);
            down_ = true;
        }
        notFull_.notify_all();
        notEmpty_.notify_all();
    }

private:
    static constexpr std::chrono::milliseconds kLookInterval{10};

    const std::size_t room_;
    const std::size_t wakeFrom_;
    mutable std::mutex mutex_;
    std::condition_variable notFull_;
    std::condition_variable notEmpty_;
    std::deque<T> items_;
    bool down_ = false;
};

}  // namespace torvik
