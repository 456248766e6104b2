// Waits and cancelling of one run: a wait gives control to pending commands, and the cancel that one of them may be
// ends it. Every run begins by Begin and asks TestCancel at the points that its page names. Main thread only.
#pragma once

#include <QtGlobal>
#include <functional>
#include <vector>

#include "engine/base/engine_context.h"
#include "engine/db/meanwhile.h"

namespace torvik {

class CancelListener;
class OperatorLog;

class RunControl {
public:
    RunControl(const EngineContext& context, OperatorLog& log) : context_(context), log_(log) {}
    RunControl(const RunControl&) = delete;
    RunControl& operator=(const RunControl&) = delete;

    // Clears what a cancel of the run before has left.
    void Begin();

    bool Cancelled = false;
    [[nodiscard]] bool CancelRequest() const { return fCancelRequest; }
    void SetCancelRequest(bool value);
    // How often a cancel was asked for since the last one was cleared: who has waited for one already, waits for more.
    [[nodiscard]] int CancelsAsked() const { return cancelsAsked_; }
    // The program ends: this run and all that begin after it are cancelled, and no statement is waited for any more.
    void Abandon() { abandoned_ = true; }
    [[nodiscard]] bool Abandoned() const { return abandoned_; }
    // While it lives, the end of the program ends this thread's statements with the silent abort, wherever they run.
    [[nodiscard]] db::StatementCancel EndsWithTheProgram();
    // Raises the silent abort if the run has been or shall be cancelled.
    void TestCancel();
    // Cancels the run now: logs it and raises the silent abort.
    [[noreturn]] void Cancel();

    // Both log the wait, pump messages, raise on cancel, and return true.
    bool WaitRetryTime();
    // The same where part of it is over: so many milliseconds are left.
    bool WaitRetryTime(qint64 left);
    bool WaitSeconds(int seconds);
    // The same without a line in the log.
    void Pause(qint64 milliseconds);

private:
    friend class CancelListener;

    EngineContext context_;
    OperatorLog& log_;
    bool fCancelRequest = false;
    int cancelsAsked_ = 0;
    bool abandoned_ = false;
    std::vector<CancelListener*> listeners_;
};

// While it lives, hears of every value that CancelRequest is given: how a cancel reaches work that asks no TestCancel.
class CancelListener {
public:
    CancelListener(RunControl& control, std::function<void(bool requested)> heard);
    ~CancelListener();
    CancelListener(const CancelListener&) = delete;
    CancelListener& operator=(const CancelListener&) = delete;

private:
    friend class RunControl;

    RunControl& control_;
    std::function<void(bool)> heard_;
};

}  // namespace torvik
