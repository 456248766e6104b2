// One thread for each queue, joined when the sink goes.
#include "logging/queued_sink.h"

#include <chrono>

namespace torvik {

namespace {
constexpr std::chrono::milliseconds kPollInterval{10};
}

TQueuedSinkThread::TQueuedSinkThread(LogQueue& queue, std::shared_ptr<ILogSink> sink)
    : queue_(queue), sink_(std::move(sink)), thread_([this] { execute(); }) {}

TQueuedSinkThread::~TQueuedSinkThread() {
    thread_.join();
}

void TQueuedSinkThread::execute() {
    while (const auto entry = queue_.pop()) {
        try {
            sink_->Write(*entry);
        } catch (...) {
            // one event that cannot be written must not end the thread: callers would wait for ever on a full queue
        }
    }
}

TQueuedSink::TQueuedSink(std::shared_ptr<ILogSink> Sink, std::size_t Depth)
    : FQueue(Depth), FThread(FQueue, std::move(Sink)) {}

TQueuedSink::~TQueuedSink() {
    SyncAndClose();
    FQueue.shutDown();
}

void TQueuedSink::Write(const std::shared_ptr<ILogEntry>& entry) {
    FQueue.push(entry);
}

void TQueuedSink::SyncAndClose() {
    while (FQueue.size() != 0) std::this_thread::sleep_for(kPollInterval);
}

}  // namespace torvik
