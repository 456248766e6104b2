// Puts a sink behind a queue and a thread of its own, so that who logs waits neither for a disk nor for a network,
// unless the queue is full: then the caller waits for room, and nothing is dropped. docs/log-format.md tells what that
// means in numbers.
#pragma once

#include <memory>
#include <thread>

#include "logging/bounded_queue.h"
#include "logging/log_sink.h"

namespace torvik {

using LogQueue = BoundedQueue<std::shared_ptr<ILogEntry>>;

// Takes events off the queue, one after the other, and writes them to the sink: the only thread that enters its Write.
class TQueuedSinkThread {
public:
    // The queue must outlive the thread.
    TQueuedSinkThread(LogQueue& queue, std::shared_ptr<ILogSink> sink);
    ~TQueuedSinkThread();  // waits for the end, which the queue's shutDown brings about once the queue is empty
    TQueuedSinkThread(const TQueuedSinkThread&) = delete;
    TQueuedSinkThread& operator=(const TQueuedSinkThread&) = delete;

private:
    void execute();

    LogQueue& queue_;
    std::shared_ptr<ILogSink> sink_;
    std::thread thread_;
};

class TQueuedSink final : public ILogSink {
public:
    TQueuedSink(std::shared_ptr<ILogSink> Sink, std::size_t Depth);
    ~TQueuedSink() override;  // SyncAndClose, then the event under way is written to its end
    TQueuedSink(const TQueuedSink&) = delete;
    TQueuedSink& operator=(const TQueuedSink&) = delete;

    // Blocks while the queue is full, however long that takes.
    void Write(const std::shared_ptr<ILogEntry>& entry) override;
    // Returns when the queue is empty; the last event may still be on its way into the sink.
    void SyncAndClose() override;

private:
    LogQueue FQueue;
    TQueuedSinkThread FThread;
};

}  // namespace torvik
