// The window's list of workers, MainThreadList, and what the window does when one of them has ended. Workers are given
// the engine's OnThreadDone, which leads here. See docs/workers.md.
#pragma once

#include <QString>
#include <functional>

#include "engine/workers/thread_collection.h"

class QWidget;

namespace torvik {

class TTorvikPos;

class MainThreads {
public:
    // Gives the list to the engine; both must outlive it. The window is the sender of the callbacks.
    MainThreads(TTorvikPos& torvikPos, QWidget& window);
    ~MainThreads();  // ends the workers that are left
    MainThreads(const MainThreads&) = delete;
    MainThreads& operator=(const MainThreads&) = delete;

    TThreadCollection MainThreadList;

    // Shows a text and waits for the user; a message box, unless replaced.
    std::function<void(const QString& text)> ShowMessage;

    // A worker's end: its errors to the user, its callback, the lines held back to the log pane, its item freed.
    void SyncThreadDone(QObject* Sender);
    // Ends all workers and waits for them.
    void ClearThreads();
    // What the user is told who closes the window while workers run; empty when none does.
    [[nodiscard]] QString ClosingWarning() const;

private:
    TTorvikPos& torvikPos_;
    QWidget& window_;
};

}  // namespace torvik
