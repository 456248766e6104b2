// The queue before a sink: order, the wait of a caller when it is full, the drain, and the end of its thread.
#include "logging/queued_sink.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <semaphore>

#include "logging/logger.h"
#include "tests/support/recording_sink.h"

namespace torvik {
namespace {

std::shared_ptr<ILogEntry> event(int number) {
    return std::make_shared<TLogEntry>(TLogLevel::llInformation, QString::number(number));
}

// Takes an event when it is let: one for each release.
class GatedSink final : public ILogSink {
public:
    void Write(const std::shared_ptr<ILogEntry>& entry) override {
        gate.acquire();
        recorded.Write(entry);
        if (throws) throw std::runtime_error("disk");
    }
    void SyncAndClose() override {}

    std::counting_semaphore<> gate{0};
    test::RecordingSink recorded;
    bool throws = false;
};

QStringList numbered(int from, int count) {
    QStringList lines;
    for (int i = from; i < from + count; ++i) lines << QStringLiteral("INF %1").arg(i);
    return lines;
}

TEST(QueuedSink, WritesOnAThreadOfItsOwnInTheOrderOfThePushes) {
    std::thread::id writer;
    struct Sink final : ILogSink {
        explicit Sink(std::thread::id& id) : id_(id) {}
        void Write(const std::shared_ptr<ILogEntry>& entry) override {
            id_ = std::this_thread::get_id();
            recorded.Write(entry);
        }
        void SyncAndClose() override {}
        std::thread::id& id_;
        test::RecordingSink recorded;
    };
    const auto sink = std::make_shared<Sink>(writer);
    {
        TQueuedSink queued(sink, 100);
        for (int i = 0; i < 500; ++i) queued.Write(event(i));
    }
    EXPECT_NE(writer, std::this_thread::get_id());
    EXPECT_EQ(sink->recorded.lines(), numbered(0, 500));
}

// 100 in the queue and one under way: the hundred and second caller waits, and for as long as the sink takes.
TEST(QueuedSink, FullQueueBlocksTheCallerAndDropsNothing) {
    const auto sink = std::make_shared<GatedSink>();
    TQueuedSink queued(sink, 100);
    std::atomic<int> written = 0;
    std::binary_semaphore reached101{0};
    auto caller = std::async(std::launch::async, [&] {
        for (int i = 0; i < 102; ++i) {
            queued.Write(event(i));
            if (++written == 101) reached101.release();
        }
    });
    reached101.acquire();
    EXPECT_EQ(caller.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    EXPECT_EQ(written, 101);

    sink->gate.release();
    EXPECT_EQ(caller.wait_for(std::chrono::seconds(10)), std::future_status::ready);
    sink->gate.release(101);
    queued.SyncAndClose();
}

TEST(QueuedSink, SyncAndCloseReturnsWhenTheQueueIsEmpty) {
    const auto sink = std::make_shared<GatedSink>();
    TQueuedSink queued(sink, 100);
    for (int i = 0; i < 3; ++i) queued.Write(event(i));
    auto drain = std::async(std::launch::async, [&] { queued.SyncAndClose(); });
    EXPECT_EQ(drain.wait_for(std::chrono::milliseconds(30)), std::future_status::timeout);
    sink->gate.release(2);  // the third event is off the queue and still on its way into the sink
    EXPECT_EQ(drain.wait_for(std::chrono::seconds(10)), std::future_status::ready);
    sink->gate.release();
}

TEST(QueuedSink, EndsWithEveryEventWritten) {
    const auto sink = std::make_shared<GatedSink>();
    sink->gate.release(60);
    {
        TQueuedSink queued(sink, 100);
        for (int i = 0; i < 60; ++i) queued.Write(event(i));
    }
    EXPECT_EQ(sink->recorded.lines(), numbered(0, 60));
}

TEST(QueuedSink, SinkThatRaisesGetsTheNextEventToo) {
    const auto sink = std::make_shared<GatedSink>();
    sink->throws = true;
    sink->gate.release(5);
    {
        TQueuedSink queued(sink, 2);
        for (int i = 0; i < 5; ++i) queued.Write(event(i));
    }
    EXPECT_EQ(sink->recorded.lines(), numbered(0, 5));
}

TEST(QueuedSink, TakesEventsOfSeveralThreadsAtOnce) {
    const auto sink = std::make_shared<test::RecordingSink>();
    {
        TLogger logger;
        logger.AddSink(std::make_shared<TQueuedSink>(sink, 10));
        std::vector<std::future<void>> callers;
        for (int thread = 0; thread < 4; ++thread)
            callers.push_back(std::async(std::launch::async, [&logger, thread] {
                for (int i = 0; i < 200; ++i) logger.LogDebug(QStringLiteral("{Thread} {N}"), {thread, i});
            }));
    }
    std::vector<int> next(4, 0);
    for (const QString& line : sink->lines()) {
        const auto thread =
            static_cast<std::size_t>(line.section(QStringLiteral("Thread="), 1).section(u' ', 0, 0).toInt());
        EXPECT_EQ(line.section(QStringLiteral("N="), 1).toInt(), next[thread]++);
    }
    EXPECT_EQ(next, std::vector<int>(4, 200));
}

TEST(BoundedQueue, GivesASingleItemToOneWhoWaits) {
    BoundedQueue<int> queue(100);
    auto reader = std::async(std::launch::async, [&] { return queue.pop(); });
    queue.push(7);
    EXPECT_EQ(reader.get(), 7);
}

TEST(BoundedQueue, ShutDownWakesThoseWhoWait) {
    BoundedQueue<int> queue(1);
    auto reader = std::async(std::launch::async, [&] { return queue.pop(); });
    queue.shutDown();
    EXPECT_EQ(reader.get(), std::nullopt);
}

}  // namespace
}  // namespace torvik
