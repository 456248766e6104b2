#include "engine/log/operator_log.h"

#include <QDir>

#include "engine/base/engine_events.h"
#include "engine/base/run_options.h"
#include "engine/base/seams.h"
#include "engine/db/query.h"
#include "engine/roster/avdeling.h"

namespace torvik {

namespace {

int eventLevel(TKasseLogSeverity severity) {
    switch (severity) {
        case kls_OK: return 0;
        case kls_Warning: return 2;
        case kls_Error: return 1;
        default: return 4;
    }
}

}  // namespace

OperatorLog::OperatorLog(const EngineContext& context, const TAvdeling& roster) : context_(context), roster_(roster) {}

void OperatorLog::AddLog(const QString& Msg, bool IsError, TKasseLogSeverity AKasseLogSeverity) {
    if (IsError) ++errors_;
    // Logging never fails a run, so nothing leaves this routine.
    try {
        const TKasseLogSeverity effective = IsError ? kls_Error : AKasseLogSeverity;
        // The severity as given decides: an error passed with kls_OK does not reach the event.
        if (context_.Options.RunAsService() && context_.Events.OnAddLog && AKasseLogSeverity != kls_OK)
            callOnAddLog(Msg, effective);
        if (AddToLogItems) addTillLogItem(Msg, effective);
        addLine(QStringLiteral("%1  : %2").arg(LogTime(context_.Seam.now()), Msg), IsError);
        context_.Seam.pumpMessages();
    } catch (...) {
    }
}

bool OperatorLog::rosterHasRow() const {
    return roster_.Qry().Active() && !roster_.Qry().IsEmpty();
}

void OperatorLog::callOnAddLog(const QString& Msg, TKasseLogSeverity severity) const {
    if (Msg.trimmed().isEmpty()) return;
    QString text = Msg;
    if (rosterHasRow()) {
        const db::Query& till = roster_.Qry();
        text = QStringLiteral("AvdID %1, KasseNr %2: %3")
                   .arg(QString::number(till.FieldByName(QStringLiteral("ikk_ik_ku_id")).AsInteger()),
                        till.FieldByName(QStringLiteral("ikk_kassenummer")).AsString(), Msg);
    }
    context_.Events.OnAddLog(context_.Sender, text, eventLevel(severity), context_.Seam.now());
}

void OperatorLog::addTillLogItem(const QString& Msg, TKasseLogSeverity severity) const {
    if (!rosterHasRow() || !roster_.KasseCollection() || Msg.trimmed().isEmpty()) return;
    const db::Query& till = roster_.Qry();
    roster_.KasseCollection()->AddLogItem(
        static_cast<int>(till.FieldByName(QStringLiteral("ikk_ik_ku_id")).AsInteger()),
        till.FieldByName(QStringLiteral("ikk_kassenummer")).AsString(), severity, 0, Msg);
}

void OperatorLog::addLine(const QString& line, bool IsError) {
    const bool heldBack = context_.Options.AllowMultiThreading;
    if (Log) {
        if (heldBack) {
            Logbuffer.append(line);
        } else {
            Log->AddLine(line);
        }
        if (IsError && ErrorLog) ErrorLog->AddLine(line);
    }
    if (NonVisualLog) {
        (heldBack ? Logbuffer : *NonVisualLog).append(line);
        if (IsError && NonVisualErrorLog) NonVisualErrorLog->append(line);
    }
}

void OperatorLog::SaveOppgjorLog() const {
    QString folder = context_.Seam.tempFolder();
    if (!folder.endsWith(u'/') && !folder.endsWith(QDir::separator())) folder += QDir::separator();
    const QString logFile = folder + QStringLiteral("ZoppgjorLog.txt");
    if (Log) Log->SaveLines(logFile);
    if (NonVisualLog) SaveTextLines(logFile, *NonVisualLog);
    if (NonVisualErrorLog) SaveTextLines(folder + QStringLiteral("ZoppgjorErrorLog.txt"), *NonVisualErrorLog);
}

}  // namespace torvik
