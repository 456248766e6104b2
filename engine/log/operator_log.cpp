// The operator's log: one line to all outlets, and the settlement log files.
#include <QDir>

#include "engine/db/query.h"
#include "engine/torvik_pos.h"

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

void TTorvikPos::AddLog(const QString& Msg, bool IsError, TKasseLogSeverity AKasseLogSeverity) {
    // Logging never fails a run, so nothing leaves this routine.
    try {
        const TKasseLogSeverity effective = IsError ? kls_Error : AKasseLogSeverity;
        // The severity as given decides: an error passed with kls_OK does not reach the event.
        if (FRunAsService && OnAddLog && AKasseLogSeverity != kls_OK) callOnAddLog(Msg, effective);
        if (AddToLogItems) addTillLogItem(Msg, effective);
        addLogLine(QStringLiteral("%1  : %2").arg(LogTime(Seam.now()), Msg), IsError);
        Seam.pumpMessages();
    } catch (...) {
    }
}

bool TTorvikPos::rosterHasRow() const {
    return Avdeling && Avdeling->Qry().Active() && !Avdeling->Qry().IsEmpty();
}

void TTorvikPos::callOnAddLog(const QString& Msg, TKasseLogSeverity severity) {
    if (Msg.trimmed().isEmpty()) return;
    QString text = Msg;
    if (rosterHasRow()) {
        const db::Query& till = Avdeling->Qry();
        text = QStringLiteral("AvdID %1, KasseNr %2: %3")
                   .arg(QString::number(till.FieldByName(QStringLiteral("ikk_ik_ku_id")).AsInteger()),
                        till.FieldByName(QStringLiteral("ikk_kassenummer")).AsString(), Msg);
    }
    OnAddLog(this, text, eventLevel(severity), Seam.now());
}

void TTorvikPos::addTillLogItem(const QString& Msg, TKasseLogSeverity severity) {
    if (!rosterHasRow() || !Avdeling->KasseCollection() || Msg.trimmed().isEmpty()) return;
    const db::Query& till = Avdeling->Qry();
    Avdeling->KasseCollection()->AddLogItem(
        static_cast<int>(till.FieldByName(QStringLiteral("ikk_ik_ku_id")).AsInteger()),
        till.FieldByName(QStringLiteral("ikk_kassenummer")).AsString(), severity, 0, Msg);
}

void TTorvikPos::addLogLine(const QString& line, bool IsError) {
    if (Log) {
        if (AllowMultiThreading) {
            Logbuffer.append(line);
        } else {
            Log->AddLine(line);
        }
        if (IsError && ErrorLog) ErrorLog->AddLine(line);
    }
    if (NonVisualLog) {
        (AllowMultiThreading ? Logbuffer : *NonVisualLog).append(line);
        if (IsError && NonVisualErrorLog) NonVisualErrorLog->append(line);
    }
}

void TTorvikPos::SaveOppgjorLog() {
    QString folder = Seam.tempFolder();
    if (!folder.endsWith(u'/') && !folder.endsWith(QDir::separator())) folder += QDir::separator();
    const QString logFile = folder + QStringLiteral("ZoppgjorLog.txt");
    if (Log) Log->SaveLines(logFile);
    if (NonVisualLog) SaveTextLines(logFile, *NonVisualLog);
    if (NonVisualErrorLog) SaveTextLines(folder + QStringLiteral("ZoppgjorErrorLog.txt"), *NonVisualErrorLog);
}

}  // namespace torvik
