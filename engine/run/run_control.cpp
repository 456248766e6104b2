// Waits and cancelling: a wait gives control to pending commands, and the cancel that one of them may be ends it.
#include "engine/base/abort.h"
#include "engine/db/session.h"
#include "engine/torvik_pos.h"

namespace torvik {

namespace {
// How long a round of a wait lasts when nothing happens.
constexpr int kRoundMs = 20;
}  // namespace

bool TTorvikPos::WaitRetryTime() {
    AddLog(QStringLiteral("Venter i %1 sekunder på neste forsøk").arg(RetryWaitTime));
    waitMs(qint64{RetryWaitTime} * 1000);
    return true;
}

bool TTorvikPos::WaitSeconds(int seconds) {
    AddLog(QStringLiteral("Venter i %1 sekunder på neste forsåk").arg(seconds));
    waitMs(qint64{seconds} * 1000);
    return true;
}

void TTorvikPos::waitMs(qint64 milliseconds) {
    const qint64 end = Seam.tickCount() + milliseconds;
    for (qint64 left = milliseconds; left > 0; left = end - Seam.tickCount()) {
        Seam.pumpFor(static_cast<int>(qMin<qint64>(left, kRoundMs)));
        TestCancel();
    }
}

void TTorvikPos::SetCancelRequest(bool value) {
    fCancelRequest = value;
    if (OnCancelRequestChanged) OnCancelRequestChanged(value);
}

void TTorvikPos::TestCancel() {
    if (!Cancelled && fCancelRequest) Cancel();
    if (Cancelled) throw EAbort();
}

void TTorvikPos::Cancel() {
    AddLog(QStringLiteral("Avbrutt av bruker"), false, kls_OK);
    Cancelled = true;
    throw EAbort();
}

void TTorvikPos::CancelConnectAttempt(db::Session* AConnection) {
    if (AConnection && AConnection->Connected()) AConnection->Close();
}

}  // namespace torvik
