// The operator's log of one walk: a line goes to the panes, to the lists that stand in for panes, to the log of the
// till that is the roster's current row, and to OnAddLog. Also the settlement log files. Main thread only.
#pragma once

#include <QString>
#include <QStringList>

#include "engine/base/engine_context.h"
#include "engine/log/log_pane.h"
#include "engine/roster/kasse_collection.h"

namespace torvik {

class TAvdeling;

class OperatorLog {
public:
    OperatorLog(const EngineContext& context, const TAvdeling& roster);
    OperatorLog(const OperatorLog&) = delete;
    OperatorLog& operator=(const OperatorLog&) = delete;

    // One line to all outlets; pumps messages and never raises.
    void AddLog(const QString& Msg, bool IsError = false, TKasseLogSeverity AKasseLogSeverity = kls_OK);
    // How many lines have been errors, since the program began.
    [[nodiscard]] int ErrorCount() const { return errors_; }
    // Saves the logs in the temporary folder, over those of the run before.
    void SaveOppgjorLog() const;

    ILogPane* Log = &ownPane_;  // a pane of its own until the window gives its own
    ILogPane* ErrorLog = nullptr;
    QStringList* NonVisualLog = nullptr;
    QStringList* NonVisualErrorLog = nullptr;
    QStringList Logbuffer;      // lines held back while AllowMultiThreading is set
    bool AddToLogItems = true;  // copy lines to the per-till log of the current roster row

private:
    [[nodiscard]] bool rosterHasRow() const;
    void callOnAddLog(const QString& Msg, TKasseLogSeverity severity) const;
    void addTillLogItem(const QString& Msg, TKasseLogSeverity severity) const;
    void addLine(const QString& line, bool IsError);

    EngineContext context_;
    const TAvdeling& roster_;
    StringListPane ownPane_;
    int errors_ = 0;
};

}  // namespace torvik
