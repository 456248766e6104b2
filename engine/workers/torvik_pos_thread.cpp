// The thread of a worker, and how it and the main thread meet: under one lock, woken by an event, so that the main
// thread serves workers as it serves its windows.
#include "engine/workers/torvik_pos_thread.h"

#include <QCoreApplication>
#include <QEvent>

#include "engine/base/abort.h"
#include "engine/workers/low_priority.h"
#include "engine/workers/thread_collection.h"

namespace torvik {

namespace {

QEvent::Type startEvent() {
    static const auto type = static_cast<QEvent::Type>(QEvent::registerEventType());
    return type;
}

QEvent::Type serveEvent() {
    static const auto type = static_cast<QEvent::Type>(QEvent::registerEventType());
    return type;
}

}  // namespace

TTorvikPosThread::TTorvikPosThread(bool CreateSuspended, TThreadCollection& ThreadList) : _list(&ThreadList) {
    TThreadItem& item = ThreadList.Add();
    item.AThread = this;
    fID = item.ID;
    if (!CreateSuspended) QCoreApplication::postEvent(this, new QEvent(startEvent()));
}

TTorvikPosThread::~TTorvikPosThread() {
    Q_ASSERT(!_thread.joinable());
    if (!_list) return;
    TThreadItem* item = _list->FindItemID(fID);
    if (!item || item->AThread != this) return;
    item->AThread = nullptr;
    _list->Free(*item);
}

void TTorvikPosThread::Resume() {
    if (!Suspended()) return;
    _thread = std::thread([this] { run(); });
}

// On the worker's thread. Nothing is raised across threads: an error that Execute lets out becomes a line of the list.
void TTorvikPosThread::run() noexcept {
    lowerPriorityOfThisThread();
    try {
        if (!Terminated()) Execute();
    } catch (const EAbort&) {
        // ended on request
    } catch (const std::exception& error) {
        ErrorList.append(ErrorText(error));
    } catch (...) {
        ErrorList.append(QStringLiteral("Ukjent feil i tråden %1").arg(Description));
    }
    // The last use of the object here: once the lock is let go, the main thread may join this thread and free it.
    const std::lock_guard lock(_mutex);
    _ended = true;
    wakeMainThread();
}

void TTorvikPosThread::wakeMainThread() {
    QCoreApplication::postEvent(this, new QEvent(serveEvent()));
    _changed.notify_all();
}

void TTorvikPosThread::Synchronize(std::function<void()> call) {
    std::unique_lock lock(_mutex);
    if (_abandoned) throw EAbort();
    _call = std::move(call);
    _callFailure = nullptr;
    wakeMainThread();
    _changed.wait(lock, [this] { return !_call; });
    if (_callFailure) std::rethrow_exception(_callFailure);
}

bool TTorvikPosThread::event(QEvent* event) {
    if (event->type() == startEvent()) {
        Resume();
        return true;
    }
    if (event->type() == serveEvent()) {
        serve();
        return true;
    }
    return QObject::event(event);
}

// On the main thread: what the worker has asked for since, or its end. The object may be gone afterwards.
void TTorvikPosThread::serve() {
    std::unique_lock lock(_mutex);
    if (_call) {
        serveCall(lock);
    } else if (_ended && !_finished) {
        lock.unlock();
        finish();
    }
}

// The call may pump messages, which may bring this here again: the call that runs is not begun twice.
void TTorvikPosThread::serveCall(std::unique_lock<std::mutex>& lock) {
    if (_calling) return;
    _calling = true;
    lock.unlock();
    std::exception_ptr failure;
    try {
        if (_abandoned) throw EAbort();
        _call();
    } catch (...) {
        failure = std::current_exception();
    }
    lock.lock();
    _calling = false;
    _callFailure = failure;
    _call = nullptr;
    _changed.notify_all();
}

void TTorvikPosThread::waitForThread() {
    std::unique_lock lock(_mutex);
    while (!_ended) {
        if (_call) serveCall(lock);
        _changed.wait(lock, [this] { return _call || _ended; });
    }
}

void TTorvikPosThread::finish() {
    _thread.join();
    _finished = true;
    const QPointer<TTorvikPosThread> self(this);
    if (const TNotifyEvent onTerminate = OnTerminate) onTerminate(this);
    if (self) delete this;
}

void TTorvikPosThread::WaitFor() {
    if (!_thread.joinable()) return;
    waitForThread();
    finish();
}

void TTorvikPosThread::EndWork() noexcept {
    OnTerminate = nullptr;
    Terminate();
    _abandoned = true;
    if (!_thread.joinable()) return;
    waitForThread();
    _thread.join();
    _finished = true;
}

}  // namespace torvik
