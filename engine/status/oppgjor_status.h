// The run status that the operator sees, without its window: one row per till in memOppgjorStatus and under it the
// till's log lines in memLogEntries. Runs write it through the operations; the window shows both tables as one tree.
// See docs/run-status.md.
#pragma once

#include <QObject>
#include <QString>
#include <QTime>
#include <map>
#include <vector>

#include "engine/roster/kasse_collection.h"
#include "engine/status/log_entry_table.h"
#include "engine/status/oppgjor_status_table.h"
#include "engine/status/till_failure.h"

namespace torvik {

enum TOKStatus { oksNull, oksFalse, oksTrue };

class TfraOppgjorStatus : public QObject {
    Q_OBJECT

public:
    explicit TfraOppgjorStatus(QObject* owner = nullptr);

    // The text of a grid without rows, and the captions of the user items.
    static QString NoDataText();
    static QString ErrorsOnlyCaption();
    static QString ViewOptionsCaption();
    static QString ExpandAllCaption();
    static QString CollapseAllCaption();

    OppgjorStatusTable memOppgjorStatus;
    LogEntryTable memLogEntries;

    // Empties both tables.
    void Clear();

    // Makes or changes the till's row. OK goes to the column that OppgjorStatusType names; AppendMsg is put behind the
    // messages so far; an invalid TidBrukt is null; a negative NumDaysSinceLastBackup leaves that column as it is.
    // Raises EngineError when AvdNr is not a number.
    void SetStatus(int Ik_Ku_Id, const QString& AvdNr, const QString& AvdNavn, const QString& KasseNr,
                   TOppgjorStatusType OppgjorStatusType, TOKStatus OK, const QString& AppendMsg, QTime TidBrukt,
                   int NumDaysSinceLastBackup);
    // Makes or changes the till's row: Hentet and Sendt become whether they are in the set. Raises as SetStatus does.
    void UpdateStatus(int Ik_Ku_Id, const QString& AvdNr, const QString& AvdNavn, const QString& KasseNr,
                      const TOppgjorStatus& Status);
    // These change the till's row if it has one.
    void UpdateSisteOppgjor(const QString& AvdNr, const QString& KasseNr, const db::DateTime& Value);
    void UpdateOpplastMbps(const QString& AvdNr, const QString& KasseNr, double Value);
    void UpdateNonReconsiledSales(const QString& AvdNr, const QString& KasseNr, int Antall);

    // What befell the till of the row in this run, first failure first; of a till without a row nothing is kept.
    void AddFailure(const QString& AvdNr, const QString& KasseNr, const TillFailure& failure);
    [[nodiscard]] const std::vector<TillFailure>& Failures(int row) const;

    // The check box "Vis kun feil detaljer".
    void SetErrorsOnly(bool value) { memLogEntries.SetFiltered(value); }

    // The current master row as a row number of memOppgjorStatus, -1 for none.
    [[nodiscard]] int CurrentRow() const { return currentRow_; }
    void SetCurrentRow(int row);
    // The row of the till that the run is at, -1 for none. A walk tells when it begins at a till and when it leaves it.
    [[nodiscard]] int RunningRow() const { return runningRow_; }
    void BeginTill(const QString& AvdNr, const QString& KasseNr);
    void EndTill();
    void ExpandAll() { Q_EMIT AllExpanded(); }
    void CollapseAll() { Q_EMIT AllCollapsed(); }
    // The window repaints now.
    void Refresh() { Q_EMIT RefreshWanted(); }

Q_SIGNALS:
    void RowExpanded(int row);
    void AllExpanded();
    void AllCollapsed();
    void CurrentRowChanged(int row);
    void RunningRowChanged(int before, int now);
    void RefreshWanted();

private:
    // Writes the row back, or appends it when found is negative, and makes it the current one.
    int post(int found, OppgjorStatusRow row);
    template <typename Change>
    void change(const QString& AvdNr, const QString& KasseNr, Change set);

    void setRunningRow(int row);

    std::map<int, std::vector<TillFailure>> failures_;  // by row

    int currentRow_ = -1;
    int runningRow_ = -1;
};

}  // namespace torvik
