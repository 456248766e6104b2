// The run status that the operator sees, without its window: one row per till in memOppgjorStatus and under it the
// till's log lines in memLogEntries. Runs write it through the operations; the window shows MasterView with one
// DetailView for each master row. See docs/run-status.md.
#pragma once

#include <QObject>
#include <QSortFilterProxyModel>
#include <QString>
#include <QTime>

#include "engine/roster/kasse_collection.h"
#include "engine/status/log_entry_table.h"
#include "engine/status/oppgjor_status_table.h"

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
    // messages so far; an invalid TidBrukt is null; a
    // negative NumDaysSinceLastBackup leaves that column as it is. Raises EngineError when AvdNr is
    // not a number.
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

    // The check box "Vis kun feil detaljer".
    void SetErrorsOnly(bool value) { memLogEntries.SetFiltered(value); }

    // The current master row as a row number of memOppgjorStatus, -1 for none.
    [[nodiscard]] int CurrentRow() const { return _currentRow; }
    void SetCurrentRow(int row);
    void ExpandAll() { Q_EMIT AllExpanded(); }
    void CollapseAll() { Q_EMIT AllCollapsed(); }
    // The window repaints now.
    void Refresh() { Q_EMIT RefreshWanted(); }

Q_SIGNALS:
    void RowExpanded(int row);
    void AllExpanded();
    void AllCollapsed();
    void CurrentRowChanged(int row);
    void RefreshWanted();

private:
    // Writes the row back, or appends it when found is negative, and makes it the current one.
    int post(int found, OppgjorStatusRow row);
    template <typename Change>
    void change(const QString& AvdNr, const QString& KasseNr, Change set);

    int _currentRow = -1;
};

// The master grid's order: AvdnrSort descending, then Avdnr ascending.
class OppgjorStatusMasterView : public QSortFilterProxyModel {
    Q_OBJECT

public:
    explicit OppgjorStatusMasterView(TfraOppgjorStatus& frame, QObject* parent = nullptr);

protected:
    [[nodiscard]] bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;
};

// The log lines of one till, through the filter.
class LogEntryDetailView : public QSortFilterProxyModel {
    Q_OBJECT

public:
    explicit LogEntryDetailView(TfraOppgjorStatus& frame, QObject* parent = nullptr);
    void SetTill(int Ik_Ku_Id, const QString& Kassenr);

protected:
    [[nodiscard]] bool filterAcceptsRow(int row, const QModelIndex& parent) const override;

private:
    LogEntryTable& _entries;
    int _ikKuId = 0;
    QString _kassenr;
};

}  // namespace torvik
