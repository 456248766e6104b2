// A worker whose job is a function of the test's, and a gate at which such a job can be held.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>

#include "engine/workers/thread_collection.h"
#include "engine/workers/torvik_pos_thread.h"

namespace torvik::test {

class Gate {
public:
    void open() {
        const std::lock_guard lock(_mutex);
        _open = true;
        _changed.notify_all();
    }
    void pass() {
        std::unique_lock lock(_mutex);
        _changed.wait(lock, [this] { return _open; });
    }

private:
    std::mutex _mutex;
    std::condition_variable _changed;
    bool _open = false;
};

class ScriptedWorker : public TTorvikPosThread {
public:
    using Job = std::function<void(ScriptedWorker&)>;

    ScriptedWorker(bool suspended, TThreadCollection& list, Job job)
        : TTorvikPosThread(suspended, list), _job(std::move(job)) {}
    ~ScriptedWorker() override { EndWork(); }

    // Starts it and waits until it is at its job.
    void ResumeToItsJob() {
        Resume();
        _atTheJob.pass();
    }
    using TTorvikPosThread::Synchronize;

protected:
    void Execute() override {
        _atTheJob.open();
        _job(*this);
    }

private:
    Gate _atTheJob;
    Job _job;
};

// A job that ends when it is asked to.
inline void untilTerminated(ScriptedWorker& self) {
    while (!self.Terminated()) std::this_thread::yield();
}

}  // namespace torvik::test
