#include "engine/run/run_control.h"

#include <algorithm>

#include "engine/base/abort.h"
#include "engine/base/run_options.h"
#include "engine/base/seams.h"
#include "engine/log/operator_log.h"

namespace torvik {

namespace {
// How long a round of a wait lasts when nothing happens.
constexpr int kRoundMs = 20;
}  // namespace

void RunControl::Begin() {
    SetCancelRequest(false);
    Cancelled = false;
}

void RunControl::SetCancelRequest(bool value) {
    fCancelRequest = value;
    cancelsAsked_ = value ? cancelsAsked_ + 1 : 0;
    for (CancelListener* listener : listeners_) listener->heard_(value);
}

db::StatementCancel RunControl::EndsWithTheProgram() {
    return {[this] { return abandoned_; }, [this] { TestCancel(); }};
}

void RunControl::TestCancel() {
    if (!Cancelled && (fCancelRequest || abandoned_)) Cancel();
    if (Cancelled) throw EAbort();
}

void RunControl::Cancel() {
    log_.AddLog(QStringLiteral("Avbrutt av bruker"), false, kls_OK);
    Cancelled = true;
    throw EAbort();
}

bool RunControl::WaitRetryTime() {
    return WaitRetryTime(qint64{context_.Options.RetryWaitTime} * 1000);
}

bool RunControl::WaitRetryTime(qint64 left) {
    log_.AddLog(QStringLiteral("Venter i %1 sekunder på neste forsøk").arg(context_.Options.RetryWaitTime));
    Pause(left);
    return true;
}

bool RunControl::WaitSeconds(int seconds) {
    // The odd spelling is the system's own.
    log_.AddLog(QStringLiteral("Venter i %1 sekunder på neste forsåk").arg(seconds));
    Pause(qint64{seconds} * 1000);
    return true;
}

void RunControl::Pause(qint64 milliseconds) {
    const qint64 end = context_.Seam.tickCount() + milliseconds;
    for (qint64 left = milliseconds; left > 0; left = end - context_.Seam.tickCount()) {
        context_.Seam.pumpFor(static_cast<int>(qMin<qint64>(left, kRoundMs)));
        TestCancel();
    }
}

CancelListener::CancelListener(RunControl& control, std::function<void(bool)> heard)
    : control_(control), heard_(std::move(heard)) {
    control_.listeners_.push_back(this);
}

CancelListener::~CancelListener() {
    std::erase(control_.listeners_, this);
}

}  // namespace torvik
