#include "engine/run/till_walk.h"

#include "engine/base/abort.h"
#include "engine/db/query.h"
#include "engine/db/session.h"
#include "engine/run/run_parts.h"

namespace torvik {

using Connecting = TillWalkPlan::Connecting;
using Waiting = TillWalkPlan::Waiting;
using CancelTest = TillWalkPlan::CancelTest;

TillWalk::TillWalk(RunParts& parts, TillWalkPlan plan) : parts_(parts), plan_(std::move(plan)) {}

void TillWalk::Run() {
    const db::Query& tills = parts_.Roster.Qry();
    while (!tills.Eof()) {
        const TillIdentity till = TillIdentity::Of(tills);
        serve(till);
        if (plan_.ReopensBackOffice) parts_.Reconnect.CheckTargetConnection(till.Ik_Ku_Id, till.Ikk_Kassenummer);
        if (plan_.TestCancel == CancelTest::BeforeCounting) parts_.Control.TestCancel();
        report(till);
        if (plan_.TestCancel == CancelTest::AfterCounting) parts_.Control.TestCancel();
        moveOn(till);
    }
}

// On failure the till's session stays open until the next till.
void TillWalk::serve(const TillIdentity& till) {
    try {
        if (plan_.LeavesOut && plan_.LeavesOut(till)) return;
        if (!connect(till)) return;
        TillVisit visit = parts_.Visit();
        plan_.Work(visit);
        parts_.Till.Session().Close();
    } catch (const std::exception& failure) {
        plan_.Failed(till, failure);
    }
}

bool TillWalk::connect(const TillIdentity& till) {
    switch (plan_.Connect) {
        case Connecting::WithRetries:
            if (!parts_.ConnectSource()) {
                if (plan_.Unreachable) plan_.Unreachable(till);
                return false;
            }
            return true;
        case Connecting::Once:
            parts_.Till.ApplySourceConnectionSettings();
            parts_.Till.Session().Open();
            return true;
        case Connecting::ByTheWork: return true;
    }
    return false;
}

void TillWalk::report(const TillIdentity& till) {
    ++done_;
    const int count = parts_.Roster.Qry().RecordCount();
    const TProgressEvent& onProgress = parts_.Context.Events.OnProgress;
    if (plan_.ProgressText && onProgress)
        onProgress(parts_.Context.Sender, done_ * 100 / count, plan_.ProgressText(till, done_, count));
    if (plan_.ShowsLogs) parts_.ShowKasseLogs();
}

void TillWalk::moveOn(const TillIdentity& till) {
    parts_.Roster.FreeTillObjects();
    db::Query& tills = parts_.Roster.Qry();
    if (!plan_.ServesAgain || !plan_.ServesAgain()) tills.Next();
    if (!tills.Eof()) {
        const bool sameDepartment = TillIdentity::Of(tills).Ik_Ku_Id == till.Ik_Ku_Id;
        if (plan_.Wait == Waiting::BetweenTills || (plan_.Wait == Waiting::BetweenDepartments && !sameDepartment))
            parts_.Control.WaitRetryTime();
    }
    if (plan_.MovedOn) plan_.MovedOn();
}

}  // namespace torvik
