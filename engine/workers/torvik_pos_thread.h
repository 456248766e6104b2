// The base of every worker, a thread that does a job beside the main thread. A worker is made and freed on the main
// thread, where a collection tracks it; only Execute runs on the thread itself. See docs/workers.md.
#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <atomic>
#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>

#include "engine/base/torvik_pos_types.h"

namespace torvik {

class TThreadCollection;

class TTorvikPosThread : public QObject {
    Q_OBJECT

public:
    // Joins the list. Not suspended, it starts at the main thread's next turn, when the descendant is whole.
    TTorvikPosThread(bool CreateSuspended, TThreadCollection& ThreadList);
    // Leaves the list. The thread must have ended: a descendant's destructor calls EndWork first.
    ~TTorvikPosThread() override;

    QString Description;
    // Of its item in the list.
    [[nodiscard]] int ID() const { return fID; }
    // What the user shall be shown. The worker's own until it has ended, the main thread's afterwards.
    QStringList ErrorList;
    // Called on the main thread once the worker has ended; then the worker is freed.
    TNotifyEvent OnTerminate;

    [[nodiscard]] bool Suspended() const { return !_thread.joinable() && !_finished; }
    // Starts a worker that is suspended; nothing for one that runs.
    void Resume();
    // Asks the worker to end; Execute is not begun any more, and ends at its next look.
    void Terminate() { _terminated = true; }
    [[nodiscard]] bool Terminated() const { return _terminated; }
    // Waits for the end of a started worker, serving its Synchronize calls, but never from within one; OnTerminate is
    // called, and the worker freed.
    void WaitFor();
    // Terminates a worker and waits for its thread, for one who frees it: OnTerminate is not called any more, and a
    // Synchronize call ends as a silent abort.
    void EndWork() noexcept;

protected:
    // The job, on the worker's thread. What it throws becomes a line of ErrorList, but for the silent abort.
    virtual void Execute() = 0;
    // Runs the call on the main thread and waits for its end; what it raises is raised here. Only within Execute.
    void Synchronize(std::function<void()> call);

    bool event(QEvent* event) override;

private:
    void run() noexcept;
    void wakeMainThread();
    void serve();
    void serveCall(std::unique_lock<std::mutex>& lock);
    void waitForThread();
    void finish();

    QPointer<TThreadCollection> _list;
    int fID = 0;
    std::thread _thread;
    std::atomic<bool> _terminated = false;
    std::atomic<bool> _abandoned = false;  // nobody is there for its calls any more
    bool _finished = false;                // the main thread has taken note of the end

    std::mutex _mutex;  // of what follows
    std::condition_variable _changed;
    std::function<void()> _call;  // what Synchronize waits for
    bool _calling = false;        // the main thread is at it
    std::exception_ptr _callFailure;
    bool _ended = false;  // Execute has returned
};

}  // namespace torvik
