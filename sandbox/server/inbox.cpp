// The queue between a connection's two threads.
#include "sandbox/server/inbox.h"

#include <algorithm>

namespace sandbox::server {
namespace {

constexpr std::size_t kMostBytes = 1U << 20;
constexpr std::chrono::milliseconds kCancelInterval{20};

bool isAttention(const tds::Packet& packet) {
    return packet.type == tds::PacketType::Attention;
}

}  // namespace

void Inbox::put(tds::Packet packet) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return closed_ || bytes_ < kMostBytes || isAttention(packet); });
    if (closed_) return;
    const bool cancels = running_ && isAttention(packet);
    bytes_ += packet.body.size() + tds::kHeaderSize;
    packets_.push_back(std::move(packet));
    if (cancels) cancel_();
    changed_.notify_all();
}

void Inbox::close() {
    const std::lock_guard lock(mutex_);
    closed_ = true;
    if (running_) cancel_();
    changed_.notify_all();
}

void Inbox::cancelAgain() {
    const std::lock_guard lock(mutex_);
    if (running_ && (closed_ || attentionWaits())) cancel_();
}

bool Inbox::wantsCancel() const {
    const std::lock_guard lock(mutex_);
    return running_ && attentionWaits();
}

void Inbox::awaitIdle() {
    std::unique_lock lock(mutex_);
    while (running_) {
        cancel_();
        changed_.wait_for(lock, kCancelInterval);
    }
}

std::optional<tds::Packet> Inbox::take() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return closed_ || !packets_.empty(); });
    // A client that is gone needs no answers to what it asked last.
    if (closed_ || packets_.empty()) return std::nullopt;
    tds::Packet packet = std::move(packets_.front());
    packets_.pop_front();
    bytes_ -= packet.body.size() + tds::kHeaderSize;
    changed_.notify_all();
    return packet;
}

void Inbox::beginRequest() {
    const std::lock_guard lock(mutex_);
    running_ = true;
}

bool Inbox::endRequest() {
    const std::lock_guard lock(mutex_);
    running_ = false;
    changed_.notify_all();
    const auto at = std::find_if(packets_.begin(), packets_.end(), isAttention);
    if (at == packets_.end()) return false;
    bytes_ -= at->body.size() + tds::kHeaderSize;
    packets_.erase(at);
    return true;
}

bool Inbox::interrupted() const {
    const std::lock_guard lock(mutex_);
    return closed_ || attentionWaits();
}

bool Inbox::closed() const {
    const std::lock_guard lock(mutex_);
    return closed_;
}

void Inbox::pause(std::optional<std::chrono::milliseconds> time, bool closeOnly) {
    std::unique_lock lock(mutex_);
    const auto over = [&] { return closed_ || (!closeOnly && attentionWaits()); };
    if (time) {
        changed_.wait_for(lock, *time, over);
    } else {
        changed_.wait(lock, over);
    }
}

bool Inbox::attentionWaits() const {
    return std::any_of(packets_.begin(), packets_.end(), isAttention);
}

}  // namespace sandbox::server
