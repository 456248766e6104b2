// memLogEntries as rows and as a model, with the till's rows and errors found by key.
#include "engine/status/log_entry_table.h"

#include <array>

#include "engine/roster/kasse_collection.h"

namespace torvik {

namespace {

struct ColumnInfo {
    const char16_t* caption;
    bool hidden;
};

constexpr std::array<ColumnInfo, LogEntryTable::ColumnCount> kColumns{{
    {u"Ik_Ku_Id", true},
    {u"Kassenr", true},
    {u"Type", false},
    {u"MsgNo", true},
    {u"Tidspunkt", false},
    {u"Melding", false},
}};
constexpr int kKassenrWidth = 10;

QVariant rawValue(const LogEntryRow& row, int column) {
    switch (column) {
        case LogEntryTable::Ik_Ku_Id: return row.Ik_Ku_Id;
        case LogEntryTable::Kassenr: return row.Kassenr;
        case LogEntryTable::Severity: return row.Severity;
        case LogEntryTable::MsgNo: return row.MsgNo;
        case LogEntryTable::DateAndTime: return row.DateAndTime;
        case LogEntryTable::Msg: return row.Msg;
        default: return {};
    }
}

}  // namespace

void LogEntryTable::Open() {
    active_ = true;
}

void LogEntryTable::Close() {
    beginResetModel();
    active_ = false;
    rows_.clear();
    rowsOfTill_.clear();
    tillsWithErrors_.clear();
    lastRecId_ = 0;
    endResetModel();
}

void LogEntryTable::Append(std::vector<LogEntryRow> rows) {
    if (rows.empty()) return;
    const int first = RecordCount();
    beginInsertRows({}, first, first + static_cast<int>(rows.size()) - 1);
    for (LogEntryRow& row : rows) {
        row.RecId = ++lastRecId_;
        row.Kassenr.truncate(kKassenrWidth);
        const Till till{row.Ik_Ku_Id, row.Kassenr};
        rowsOfTill_[till].push_back(RecordCount());
        if (row.Severity == kls_Error) tillsWithErrors_.insert(till);
        rows_.push_back(std::move(row));
    }
    endInsertRows();
}

void LogEntryTable::SetFiltered(bool value) {
    if (value == filtered_) return;
    filtered_ = value;
    Q_EMIT FilterChanged();
}

bool LogEntryTable::Shows(int row) const {
    return !filtered_ || Row(row).Severity == kls_Error;
}

std::vector<int> LogEntryTable::RowsOf(int ikKuId, const QString& kassenr) const {
    std::vector<int> shown;
    const auto found = rowsOfTill_.constFind({ikKuId, kassenr});
    if (found == rowsOfTill_.constEnd()) return shown;
    for (int row : *found) {
        if (Shows(row)) shown.push_back(row);
    }
    return shown;
}

bool LogEntryTable::HasError(int ikKuId, const QString& kassenr) const {
    return tillsWithErrors_.contains({ikKuId, kassenr});
}

int LogEntryTable::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : RecordCount();
}

int LogEntryTable::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant LogEntryTable::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    const LogEntryRow& row = Row(index.row());
    if (role == RawValue) return rawValue(row, index.column());
    if (role == Qt::ToolTipRole && index.column() == Severity) return SeverityText(row.Severity);
    if (role != Qt::DisplayRole) return {};
    if (index.column() == Severity) return SeverityText(row.Severity);
    if (index.column() == DateAndTime) return row.DateAndTime.toString(u"HH:mm:ss");
    return rawValue(row, index.column());
}

QVariant LogEntryTable::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 || section >= ColumnCount) return {};
    return QString::fromUtf16(kColumns[static_cast<size_t>(section)].caption);
}

bool LogEntryTable::IsHidden(int column) {
    return kColumns[static_cast<size_t>(column)].hidden;
}

}  // namespace torvik
