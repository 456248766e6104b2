// The one walk over the tills of the roster: connects to each, has the work done, counts, reports, waits, cancels and
// re-opens the back office. Fetching, repair, sending, stock counts, reset, number series and the fleet walk by it and
// tell what differs as a plan; docs/architecture.md has each one's. It works on the parts it is given and on nothing of
// the process, so that walks over parts of their own can run side by side.
#pragma once

#include <QString>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "engine/db/meanwhile.h"
#include "engine/run/till_visit.h"

namespace torvik {

class ApplicationLock;
class LoginsAhead;
class NightShare;
class RunParts;

struct TillWalkPlan {
    enum class Connecting {
        WithRetries,  // RetryCount attempts, the till's version, NOCOUNT off; Unreachable is called when all failed
        Once,         // the row's settings and one attempt, whose failure is the till's
        ByTheWork     // the work connects, when it has asked the back office
    };
    enum class Waiting { Never, BetweenDepartments, BetweenTills };
    enum class CancelTest { Never, BeforeCounting, AfterCounting };

    Connecting Connect = Connecting::WithRetries;
    Waiting Wait = Waiting::BetweenTills;  // WaitRetryTime; never after the last till
    CancelTest TestCancel = CancelTest::AfterCounting;
    // A broken back-office session is opened again after each till, and the till's row found again; one that cannot be
    // opened ends the walk.
    bool ReopensBackOffice = false;
    // The work asks the back office nothing and holds no lock of its own there: a session that was lost is opened again
    // for the next till's lock, and fails no till.
    bool OfficeForLocksAlone = false;
    // A cancel ends a statement of the till's visit on the server, commits and blocks of rows excepted; else it waits
    // for the next place that tests for it. The end of the program ends statements in every walk.
    bool CancelEndsStatements = false;
    // A till that is connected to is resolved (ResolveTill) before its work; false where the work does so itself, as it
    // always must when it connects itself.
    bool ResolvesFirst = true;
    bool ShowsLogs = false;       // the till's log lines and icon go to the status frame after each till
    NightShare* Share = nullptr;  // the night that other copies of the program help with; outlives the walk

    // The next tills are logged in to in the background while one is served (engine/till/logins_ahead.h); for walks
    // that connect themselves.
    bool LogsInAhead = false;

    // True for a till that is passed over without being connected to; it counts.
    std::function<bool(const TillIdentity& till)> LeavesOut = {};
    // True for a till that LeavesOut will pass over, or refuse, when its turn comes: it is not logged in to ahead.
    // Tells nothing.
    std::function<bool(const TillIdentity& till)> NotAhead = {};
    // The till could not be reached. What it raises is the till's failure; else the till is passed over. Called while
    // the reason is being handled, if there is one, so that std::throw_with_nested keeps it.
    std::function<void(const TillIdentity& till)> Unreachable = {};
    std::function<void(TillVisit& visit)> Work;
    // The till's failure, of whatever type it was raised.
    std::function<void(const TillIdentity& till, const std::exception& failure)> Failed;
    // True: no till behind this one is served. Asked after each.
    std::function<bool()> Ends = {};
    // True: the same till is served once more.
    std::function<bool()> ServesAgain = {};
    // The text that goes with the percentage; without it, or with an empty one, no progress is reported. Failed tills
    // count too.
    std::function<QString(const TillIdentity& till, int done, int count)> ProgressText = {};
    // The roster has moved on, past the last till too, and the wait is over.
    std::function<void()> MovedOn = {};
};

class TillWalk {
public:
    TillWalk(RunParts& parts, TillWalkPlan plan);
    ~TillWalk();  // what was logged in to ahead and not used is closed
    TillWalk(const TillWalk&) = delete;
    TillWalk& operator=(const TillWalk&) = delete;

    // From the roster's current row to its end. A till's failure stops nothing; raises a cancel, when it has told which
    // tills are done, and what befalls the walk itself. A till that another copy of the program serves is tried again
    // at the end, and fails if it still does; in a night that is shared it is waited for.
    void Run();

private:
    enum class Turn {
        Over,       // the visit has been made, or there was none to make
        Elsewhere,  // another copy's visit stands for it
        Taken,      // another copy is at the till
        Later       // another copy is to come first
    };

    void walk();
    void tellDone();
    [[nodiscard]] Turn serve(const TillIdentity& till);
    void takeLock(std::optional<ApplicationLock>& lock, const TillIdentity& till);
    void makeVisit(const TillIdentity& till);
    // What follows each till, whatever became of it.
    void finish(const TillIdentity& till);
    void postpone(const TillIdentity& till, Turn turn);
    void servePostponed();
    // False: the till stays postponed.
    [[nodiscard]] bool servePostponed(const TillIdentity& till, bool last);
    [[nodiscard]] bool isOver() const;
    [[nodiscard]] bool locate(const TillIdentity& till);
    [[nodiscard]] db::StatementCancel endsStatements();
    void logInAhead();
    [[nodiscard]] bool isNotAhead(const TillIdentity& till) const;
    [[nodiscard]] bool connect(const TillIdentity& till);
    void tellUnreachable(const TillIdentity& till);
    void fail(const TillIdentity& till, const std::exception& failure);
    void report(const TillIdentity& till);
    void moveOn(const TillIdentity& till, Turn turn);

    RunParts& parts_;
    TillWalkPlan plan_;
    std::unique_ptr<LoginsAhead> ahead_;  // none: the plan wants none
    std::vector<TillIdentity> postponed_;
    std::vector<TillIdentity> served_;  // to the end, and without an error
    int done_ = 0;
    int cancelsServed_ = 0;  // of those asked for, so many have ended a statement
};

}  // namespace torvik
