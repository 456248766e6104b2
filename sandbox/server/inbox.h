// The packets of one connection on their way from the thread that reads the socket to the thread that answers. It knows
// whether a request is running, so that an attention, or the client's disappearance, cancels it at once.
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>

#include "sandbox/tds/packet.h"

namespace sandbox::server {

class Inbox {
public:
    // cancel: called on the reading thread, perhaps several times, while a request runs that is to end.
    explicit Inbox(std::function<void()> cancel) : cancel_(std::move(cancel)) {}

    // The reading thread's side. put waits while too much lies unread, unless the inbox is closed.
    void put(tds::Packet packet);
    void close();        // nothing more will come
    void cancelAgain();  // a cancel may have come too early to be seen
    [[nodiscard]] bool wantsCancel() const;
    // After close: cancels until the running request has ended.
    void awaitIdle();

    // The answering thread's side. take: none when closed and empty.
    [[nodiscard]] std::optional<tds::Packet> take();
    void beginRequest();
    // Whether an attention came while the request ran; it is taken out, and is to be answered with the reply's end.
    [[nodiscard]] bool endRequest();
    [[nodiscard]] bool interrupted() const;  // an attention waits, or the inbox is closed
    [[nodiscard]] bool closed() const;
    // Waits for the time to pass, for ever without one; returns at once when interrupted, or, with `closeOnly`, when
    // closed.
    void pause(std::optional<std::chrono::milliseconds> time, bool closeOnly);

private:
    [[nodiscard]] bool attentionWaits() const;  // with the lock held

    std::function<void()> cancel_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<tds::Packet> packets_;
    std::size_t bytes_ = 0;
    bool closed_ = false;
    bool running_ = false;
};

}  // namespace sandbox::server
