// The tree is built anew when a table changes, once a turn of the message loop: some hundred tills with some dozen
// lines each are cheaper to list again than to patch.
#include "shell/status_tree_model.h"

#include <QBrush>
#include <QTimer>
#include <algorithm>
#include <array>

#include "engine/oppgjor_status.h"
#include "shell/icons.h"

namespace torvik {

namespace {

constexpr quintptr kTopLevel = 0;

struct ColumnOf {
    OppgjorStatusTable::Column source;
    const char* caption;
};
constexpr std::array<ColumnOf, StatusTreeModel::ColumnCount> kColumns{{
    {OppgjorStatusTable::StatusIcon, "Status"},
    {OppgjorStatusTable::Avdnr, "Avdnr"},
    {OppgjorStatusTable::AvdNavn, "AvdNavn"},
    {OppgjorStatusTable::Kassenr, "Kassenr"},
    {OppgjorStatusTable::Hentet, "Hentet"},
    {OppgjorStatusTable::Sendt, "Sendt"},
    {OppgjorStatusTable::SisteOppgjor, "Siste oppgjør"},
    {OppgjorStatusTable::AntSalgIkkeOppgjort, "Ant. ikke oppgjorte salg"},
    {OppgjorStatusTable::DagerSidenBackup, "Ant. dgr. siden backup"},
    {OppgjorStatusTable::TidBrukt, "Tid brukt"},
    {OppgjorStatusTable::Opplast_mbps, "Opp Mbps"},
}};

}  // namespace

StatusTreeModel::StatusTreeModel(TfraOppgjorStatus& status, QObject* parent)
    : QAbstractItemModel(parent), status_(status) {
    for (QAbstractItemModel* table : {static_cast<QAbstractItemModel*>(&status.memOppgjorStatus),
                                      static_cast<QAbstractItemModel*>(&status.memLogEntries)}) {
        connect(table, &QAbstractItemModel::modelReset, this, &StatusTreeModel::changed);
        connect(table, &QAbstractItemModel::rowsInserted, this, &StatusTreeModel::changed);
        connect(table, &QAbstractItemModel::dataChanged, this, &StatusTreeModel::changed);
    }
    connect(&status.memLogEntries, &LogEntryTable::FilterChanged, this, &StatusTreeModel::changed);
    rebuild();
}

void StatusTreeModel::changed() {
    if (stale_) return;
    stale_ = true;
    QTimer::singleShot(0, this, &StatusTreeModel::follow);
}

void StatusTreeModel::follow() {
    if (stale_) rebuild();
}

void StatusTreeModel::rebuild() {
    beginResetModel();
    stale_ = false;
    tills_.clear();
    for (int row = 0; row < status_.memOppgjorStatus.RecordCount(); ++row) {
        const OppgjorStatusRow& till = status_.memOppgjorStatus.Row(row);
        tills_.push_back({row, status_.memLogEntries.RowsOf(till.Ik_Ku_Id.value_or(-1), till.Kassenr)});
    }
    std::stable_sort(tills_.begin(), tills_.end(), [this](const Till& a, const Till& b) {
        const OppgjorStatusRow& left = status_.memOppgjorStatus.Row(a.statusRow);
        const OppgjorStatusRow& right = status_.memOppgjorStatus.Row(b.statusRow);
        if (left.AvdnrSort != right.AvdnrSort) return left.AvdnrSort > right.AvdnrSort;
        return left.Avdnr < right.Avdnr;
    });
    endResetModel();
}

int StatusTreeModel::statusRow(const QModelIndex& index) const {
    const QModelIndex top = index.parent().isValid() ? index.parent() : index;
    return top.isValid() ? tills_[static_cast<std::size_t>(top.row())].statusRow : -1;
}

// A log line's internal id is its till's row plus one.
QModelIndex StatusTreeModel::index(int row, int column, const QModelIndex& parent) const {
    if (!hasIndex(row, column, parent)) return {};
    return createIndex(row, column, parent.isValid() ? static_cast<quintptr>(parent.row()) + 1 : kTopLevel);
}

QModelIndex StatusTreeModel::parent(const QModelIndex& child) const {
    if (!child.isValid() || child.internalId() == kTopLevel) return {};
    return createIndex(static_cast<int>(child.internalId()) - 1, 0, kTopLevel);
}

int StatusTreeModel::rowCount(const QModelIndex& parent) const {
    if (!parent.isValid()) return static_cast<int>(tills_.size());
    if (parent.internalId() != kTopLevel || parent.column() != 0) return 0;
    return static_cast<int>(tills_[static_cast<std::size_t>(parent.row())].logRows.size());
}

int StatusTreeModel::columnCount(const QModelIndex&) const {
    return ColumnCount;
}

QVariant StatusTreeModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    if (index.internalId() == kTopLevel) return tillData(statusRow(index), index.column(), role);
    const Till& till = tills_[index.internalId() - 1];
    return logData(till.logRows[static_cast<std::size_t>(index.row())], index.column(), role);
}

QVariant StatusTreeModel::tillData(int statusRow, int column, int role) const {
    const OppgjorStatusTable& table = status_.memOppgjorStatus;
    if (statusRow >= table.RecordCount()) return {};
    if (column == Status) {
        if (role == Qt::DecorationRole) return statusIcon(table.Row(statusRow).StatusIcon);
        if (role == Qt::ToolTipRole) return SeverityText(table.Row(statusRow).StatusIcon);
        return {};
    }
    if (role != Qt::DisplayRole && role != Qt::TextAlignmentRole) return {};
    const QModelIndex source = table.index(statusRow, kColumns[static_cast<std::size_t>(column)].source);
    if ((column == Hentet || column == Sendt) && role == Qt::DisplayRole) {
        const QVariant value = source.data(OppgjorStatusTable::RawValue);
        return value.isValid() ? (value.toBool() ? QStringLiteral("Ja") : QStringLiteral("Nei")) : QString();
    }
    return source.data(role);
}

QVariant StatusTreeModel::logData(int logRow, int column, int role) const {
    if (column != Status || logRow >= status_.memLogEntries.RecordCount()) return {};
    const LogEntryRow& line = status_.memLogEntries.Row(logRow);
    if (role == Qt::DecorationRole) return statusIcon(line.Severity);
    if (role == Qt::ForegroundRole && line.Severity == kls_Error) return QBrush(Qt::darkRed);
    if (role == Qt::ToolTipRole) return line.Msg;
    if (role == Qt::DisplayRole)
        return line.DateAndTime.toString(QStringLiteral("HH:mm:ss")) + QStringLiteral("   ") + line.Msg;
    return {};
}

QVariant StatusTreeModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 || section >= ColumnCount) return {};
    return QString::fromUtf8(kColumns[static_cast<std::size_t>(section)].caption);
}

}  // namespace torvik
