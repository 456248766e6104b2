// memLogEntries: the in-memory table of the tills' log lines, the detail of memOppgjorStatus.
// TTorvikPos::ShowKasseLogs fills it; views read it as a model. See docs/run-status.md.
#pragma once

#include <QAbstractTableModel>
#include <QDateTime>
#include <QHash>
#include <QSet>
#include <QString>
#include <utility>
#include <vector>

namespace torvik {

struct LogEntryRow {
    int RecId = 0;
    int Ik_Ku_Id = 0;
    QString Kassenr;
    int Severity = 0;  // a TKasseLogSeverity value
    int MsgNo = 0;
    QDateTime DateAndTime;
    QString Msg;
};

class LogEntryTable : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column { Ik_Ku_Id, Kassenr, Severity, MsgNo, DateAndTime, Msg, ColumnCount };
    static constexpr int RawValue = Qt::EditRole;

    using QAbstractTableModel::QAbstractTableModel;

    [[nodiscard]] bool Active() const { return active_; }
    void Open();
    // Empties the table.
    void Close();
    // Adds the rows in order, each with a RecId of its own, and tells the views once.
    void Append(std::vector<LogEntryRow> rows);

    [[nodiscard]] int RecordCount() const { return static_cast<int>(rows_.size()); }
    [[nodiscard]] const LogEntryRow& Row(int row) const { return rows_[static_cast<size_t>(row)]; }

    // With the filter on only rows with Severity 3 show.
    [[nodiscard]] bool Filtered() const { return filtered_; }
    void SetFiltered(bool value);
    [[nodiscard]] bool Shows(int row) const;
    // The rows of one till, in order, that the filter lets through.
    [[nodiscard]] std::vector<int> RowsOf(int ikKuId, const QString& kassenr) const;
    // The till has a row with Severity 3.
    [[nodiscard]] bool HasError(int ikKuId, const QString& kassenr) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role = Qt::DisplayRole) const override;
    // Columns that a grid leaves out: Ik_Ku_Id, Kassenr and MsgNo.
    [[nodiscard]] static bool IsHidden(int column);

Q_SIGNALS:
    void FilterChanged();

private:
    using Till = std::pair<int, QString>;

    bool active_ = false;
    bool filtered_ = false;
    int lastRecId_ = 0;
    std::vector<LogEntryRow> rows_;
    QHash<Till, std::vector<int>> rowsOfTill_;
    QSet<Till> tillsWithErrors_;
};

}  // namespace torvik
