#include "engine/run/till_walk.h"

#include <utility>

#include "engine/base/abort.h"
#include "engine/base/run_options.h"
#include "engine/base/seams.h"
#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/office/application_lock.h"
#include "engine/office/undecided_pair.h"
#include "engine/run/night_share.h"
#include "engine/run/run_parts.h"
#include "engine/status/oppgjor_status.h"
#include "engine/till/logins_ahead.h"

namespace torvik {

using Connecting = TillWalkPlan::Connecting;
using Waiting = TillWalkPlan::Waiting;
using CancelTest = TillWalkPlan::CancelTest;

namespace {

// The status frame marks the till while this lives.
class RunningTill {
public:
    RunningTill(TfraOppgjorStatus* status, const TillIdentity& till) : status_(status) {
        if (status_) status_->BeginTill(till.Avdelingsnummer, till.Kassenummer);
    }
    ~RunningTill() {
        if (status_) status_->EndTill();
    }
    RunningTill(const RunningTill&) = delete;
    RunningTill& operator=(const RunningTill&) = delete;

private:
    TfraOppgjorStatus* status_;
};

}  // namespace

TillWalk::TillWalk(RunParts& parts, TillWalkPlan plan) : parts_(parts), plan_(std::move(plan)) {
    const RunOptions& options = parts.Context.Options;
    if (!plan_.LogsInAhead || !options.LogInAhead || plan_.Connect == Connecting::ByTheWork ||
        !parts.Till.SourceConnection)
        return;
    const int attempts = plan_.Connect == Connecting::Once ? 1 : options.RetryCount;
    ahead_ = std::make_unique<LoginsAhead>(
        db::LoginAhead::Terms{.Attempts = attempts, .Wait = std::chrono::seconds(options.RetryWaitTime)});
    parts_.Till.Ahead = ahead_.get();
}

TillWalk::~TillWalk() {
    if (ahead_) parts_.Till.Ahead = nullptr;
}

void TillWalk::Run() {
    try {
        walk();
    } catch (const EAbort&) {
        tellDone();
        throw;
    }
}

void TillWalk::walk() {
    db::Query& tills = parts_.Roster.Qry();
    while (!tills.Eof()) {
        const TillIdentity till = TillIdentity::Of(tills);
        logInAhead();
        Turn turn = Turn::Over;
        {
            const RunningTill running(parts_.Status.get(), till);
            turn = serve(till);
            if (isOver()) return;
            if (ahead_ && turn != Turn::Over) ahead_->passedOver();
            if (turn == Turn::Taken || turn == Turn::Later) {
                postpone(till, turn);
                tills.Next();
                continue;
            }
            finish(till);
        }
        if (plan_.Ends && plan_.Ends()) break;
        moveOn(till, turn);
    }
    servePostponed();
}

bool TillWalk::isOver() const {
    return plan_.Share && plan_.Share->IsOver();
}

// Whoever has cancelled a run wants to know where it stands. The line is the run's, and no till's.
void TillWalk::tellDone() {
    QStringList done;
    for (const TillIdentity& till : served_)
        done << QStringLiteral("avd. %1 kasse %2").arg(till.Avdelingsnummer, till.Kassenummer);
    const bool kept = std::exchange(parts_.Log.AddToLogItems, false);
    parts_.Log.AddLog(QStringLiteral("Ferdige kasser da kjøringen ble avbrutt: %1")
                          .arg(done.isEmpty() ? QStringLiteral("ingen") : done.join(QStringLiteral(", "))),
                      false, kls_Warning);
    parts_.Log.AddToLogItems = kept;
}

// To the tills behind the roster's row, which stays where it is.
void TillWalk::logInAhead() {
    if (!ahead_) return;
    ahead_->visitBegins(parts_.Context.Seam.tickCount());
    if (plan_.Share) plan_.Share->LookWhoIsFetched();
    db::Query& tills = parts_.Roster.Qry();
    const QString visited = LoginsAhead::TillOf(tills);
    const db::Bookmark here = tills.GetBookmark();
    std::vector<LoginsAhead::Next> following;
    for (tills.Next(); !tills.Eof() && following.size() < LoginsAhead::kMost; tills.Next()) {
        try {
            if (!isNotAhead(TillIdentity::Of(tills)))
                following.push_back({LoginsAhead::TillOf(tills), parts_.Till.SettingsOfTill()});
        } catch (const std::exception&) {
            // A row that cannot be read is told at its turn.
        }
    }
    tills.GotoBookmark(here);
    ahead_->fill(visited, following);
}

bool TillWalk::isNotAhead(const TillIdentity& till) const {
    return (plan_.NotAhead && plan_.NotAhead(till)) || (plan_.Share && plan_.Share->KnowsAsFetched(till));
}

// The lock is held until the failure has been told. On failure the till's session stays open until the next till.
TillWalk::Turn TillWalk::serve(const TillIdentity& till) {
    std::optional<ApplicationLock> lock;
    try {
        if (plan_.LeavesOut && plan_.LeavesOut(till)) return Turn::Over;
        // Before the login, so that a till that is taken costs one question to the back office, and at most a login
        // ahead that comes to nothing.
        takeLock(lock, till);
        if (plan_.Share) {
            const NightShare::Turn turn = plan_.Share->TurnAt(till, lock->Held(), lock->Answer());
            if (turn == NightShare::Turn::Passed) return Turn::Elsewhere;
            if (turn == NightShare::Turn::Taken) return Turn::Taken;
        }
        if (!lock->Held()) return Turn::Taken;
        makeVisit(till);
    } catch (const UndecidedPair& failure) {
        if (plan_.Share && plan_.Share->PutsOff(till, failure)) return Turn::Later;
        fail(till, failure);
    } catch (const std::exception& failure) {
        fail(till, failure);
    }
    return Turn::Over;
}

void TillWalk::takeLock(std::optional<ApplicationLock>& lock, const TillIdentity& till) {
    db::Session& office = parts_.Office.Session();
    const auto take = [&] {
        lock.emplace(office, ApplicationLock::OfTill(till.Ik_Ku_Id, till.Kassenummer),
                     plan_.Share ? plan_.Share->QuestionOf(till) : QString());
    };
    try {
        take();
    } catch (const EAbort&) {
        throw;
    } catch (const std::exception&) {
        if (!plan_.OfficeForLocksAlone || office.Connected()) throw;
        office.Open();
        take();
    }
}

void TillWalk::makeVisit(const TillIdentity& till) {
    const db::StatementCancel cancel = endsStatements();
    if (!connect(till)) return;
    const int errorsBefore = parts_.Log.ErrorCount();
    TillVisit visit = parts_.Visit();
    if (plan_.ResolvesFirst && plan_.Connect != Connecting::ByTheWork) ResolveTill(visit);
    plan_.Work(visit);
    parts_.Till.Session().Close();
    const bool withErrors = parts_.Log.ErrorCount() != errorsBefore;
    if (!withErrors) served_.push_back(till);
    if (plan_.Share)
        plan_.Share->VisitEnded(till, withErrors ? VisitEnd::Kind::FetchedWithErrors : VisitEnd::Kind::Fetched);
}

void TillWalk::fail(const TillIdentity& till, const std::exception& failure) {
    plan_.Failed(till, failure);
    parts_.KeepFailure(till, failure);  // its row has been made by now
    // A till that a cancel has ended is nobody's failure; one that the transfer hears of raises an error of its own.
    const bool ended = parts_.Control.Cancelled || parts_.Control.CancelRequest();
    if (plan_.Share && !ended) plan_.Share->VisitEnded(till, VisitEnd::Kind::Failed);
}

// What follows a cancel may wait for a server too, such as the word of the failure in its log: another cancel ends
// that.
db::StatementCancel TillWalk::endsStatements() {
    RunControl& control = parts_.Control;
    return {[this, &control] {
                return control.Abandoned() || (plan_.CancelEndsStatements && control.CancelsAsked() > cancelsServed_);
            },
            [this, &control] {
                cancelsServed_ = control.CancelsAsked();
                control.TestCancel();
            }};
}

bool TillWalk::connect(const TillIdentity& till) {
    switch (plan_.Connect) {
        case Connecting::WithRetries:
            if (!parts_.ConnectSource()) {
                tellUnreachable(till);
                return false;
            }
            // No till is served by the version of the one before.
            if (!parts_.Till.VersionIsCurrent()) parts_.Till.ReadDbVersion();
            return true;
        case Connecting::Once: parts_.Till.ConnectOnce(); return true;
        case Connecting::ByTheWork: return true;
    }
    return false;
}

// A till that is passed over has failed all the same, in the status at least.
void TillWalk::tellUnreachable(const TillIdentity& till) {
    const auto tell = [&] {
        if (plan_.Unreachable) plan_.Unreachable(till);
    };
    if (!parts_.Till.LastFailure()) return tell();
    try {
        std::rethrow_exception(parts_.Till.LastFailure());
    } catch (const std::exception& reason) {
        tell();
        parts_.KeepFailure(till, reason);
    }
}

// The end of the program ends every walk here, also one that else asks for no cancel.
void TillWalk::finish(const TillIdentity& till) {
    parts_.Roster.FreeTillObjects();
    if (parts_.Control.Abandoned()) parts_.Control.TestCancel();
    if (plan_.ReopensBackOffice) {
        const std::exception_ptr away = parts_.Reconnect.CheckTargetConnection(till.Ik_Ku_Id, till.Ikk_Kassenummer);
        if (away) std::rethrow_exception(away);
        // What cut the back office off may have cut off the tills, and nobody is to fail by that.
        if (ahead_ && parts_.Reconnect.HasReopened()) ahead_->letGo();
    }
    if (plan_.TestCancel == CancelTest::BeforeCounting) parts_.Control.TestCancel();
    report(till);
    if (plan_.TestCancel == CancelTest::AfterCounting) parts_.Control.TestCancel();
}

void TillWalk::report(const TillIdentity& till) {
    ++done_;
    const int count = parts_.Roster.Qry().RecordCount();
    const TProgressEvent& onProgress = parts_.Context.Events.OnProgress;
    const QString text = plan_.ProgressText && onProgress ? plan_.ProgressText(till, done_, count) : QString();
    if (!text.isEmpty()) onProgress(parts_.Context.Sender, done_ * 100 / count, text);
    if (plan_.ShowsLogs) parts_.ShowKasseLogs();
}

void TillWalk::moveOn(const TillIdentity& till, Turn turn) {
    db::Query& tills = parts_.Roster.Qry();
    if (!plan_.ServesAgain || !plan_.ServesAgain()) tills.Next();
    if (!tills.Eof() && turn != Turn::Elsewhere) {
        const bool sameDepartment = TillIdentity::Of(tills).Ik_Ku_Id == till.Ik_Ku_Id;
        if (plan_.Wait == Waiting::BetweenTills || (plan_.Wait == Waiting::BetweenDepartments && !sameDepartment))
            parts_.Control.WaitRetryTime();
    }
    if (plan_.MovedOn) plan_.MovedOn();
}

void TillWalk::postpone(const TillIdentity& till, Turn turn) {
    if (turn == Turn::Taken)
        parts_.Log.AddLog(QStringLiteral("En annen kjøring betjener kassen (avd. %1, kasse %2). Prøver igjen til slutt")
                              .arg(till.Avdelingsnummer, till.Kassenummer),
                          false, kls_Warning);
    postponed_.push_back(till);
}

// Once, or round after round as long as the night's share waits for other copies.
void TillWalk::servePostponed() {
    for (bool last = !plan_.Share; !postponed_.empty();) {
        const std::vector<TillIdentity> round = std::exchange(postponed_, {});
        for (const TillIdentity& till : round) {
            if (plan_.Wait == Waiting::BetweenTills) parts_.Control.WaitRetryTime();
            if (!servePostponed(till, last)) postponed_.push_back(till);
            if (isOver()) return;
        }
        if (postponed_.empty() || plan_.Share->WaitForOthers(postponed_.size() < round.size())) continue;
        last = true;
        plan_.Share->TakesWhatIsLeft();
    }
}

bool TillWalk::servePostponed(const TillIdentity& till, bool last) {
    const RunningTill running(parts_.Status.get(), till);
    if (!locate(till)) {
        fail(till, EngineError(QStringLiteral("Kassen (avd. %1, kasse %2) finnes ikke lenger i utvalget")
                                   .arg(till.Avdelingsnummer, till.Kassenummer)));
    } else if (const Turn turn = serve(till); turn == Turn::Taken || turn == Turn::Later) {
        if (!last) return false;
        if (plan_.Share && !plan_.Share->FailsWhatIsTaken()) return true;
        fail(till, EngineError(QStringLiteral("En annen kjøring betjener kassen (avd. %1, kasse %2)")
                                   .arg(till.Avdelingsnummer, till.Kassenummer)));
    }
    finish(till);
    if (plan_.MovedOn) plan_.MovedOn();
    return true;
}

bool TillWalk::locate(const TillIdentity& till) {
    return parts_.Roster.Qry().Locate(QStringLiteral("Ikk_Ik_Ku_ID;Ikk_Kassenummer"),
                                      {till.Ik_Ku_Id, till.Kassenummer});
}

}  // namespace torvik
