// Rows of the two tables are only added or changed until a table is emptied, so a till is known by its row there, also
// when another one is shown above it later.
#include "shell/status_tree_model.h"

#include <QBrush>
#include <QHash>
#include <algorithm>
#include <array>

#include "engine/status/oppgjor_status.h"
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

constexpr int kPreviewLines = 5;
constexpr int kPreviewWidth = 70;

// The messages of a till, broken behind commas into at most so many lines.
QString preview(const QString& melding) {
    QStringList lines;
    QString line;
    for (const QString& message : melding.trimmed().split(u',', Qt::SkipEmptyParts)) {
        if (!line.isEmpty() && line.size() + message.size() >= kPreviewWidth) lines.append(std::exchange(line, {}));
        line += message + u',';
    }
    if (!line.isEmpty()) lines.append(line);
    return QStringList(lines.mid(0, kPreviewLines)).join(u'\n');
}

}  // namespace

StatusTreeModel::StatusTreeModel(TfraOppgjorStatus& status, QObject* parent)
    : QAbstractItemModel(parent), status_(status) {
    for (const QAbstractItemModel* table : {static_cast<QAbstractItemModel*>(&status.memOppgjorStatus),
                                            static_cast<QAbstractItemModel*>(&status.memLogEntries)}) {
        connect(table, &QAbstractItemModel::modelReset, this, &StatusTreeModel::listAnew);
    }
    connect(&status.memLogEntries, &LogEntryTable::FilterChanged, this, &StatusTreeModel::listAnew);
    connect(&status.memOppgjorStatus, &QAbstractItemModel::rowsInserted, this,
            [this](const QModelIndex&, int first, int last) { tillsAdded(first, last); });
    connect(&status.memOppgjorStatus, &QAbstractItemModel::dataChanged, this,
            [this](const QModelIndex& first, const QModelIndex& last) { tillsChanged(first.row(), last.row()); });
    connect(&status.memLogEntries, &QAbstractItemModel::rowsInserted, this,
            [this](const QModelIndex&, int first, int last) { linesAdded(first, last); });
    listAnew();
}

StatusTreeModel::Till StatusTreeModel::tillOf(int statusRow) const {
    const OppgjorStatusRow& row = status_.memOppgjorStatus.Row(statusRow);
    Till till{.statusRow = statusRow, .ikKuId = row.Ik_Ku_Id.value_or(-1), .kassenr = row.Kassenr.trimmed()};
    till.logRows = status_.memLogEntries.RowsOf(till.ikKuId, till.kassenr);
    return till;
}

bool StatusTreeModel::comesBefore(const Till& a, const Till& b) const {
    const OppgjorStatusRow& left = status_.memOppgjorStatus.Row(a.statusRow);
    const OppgjorStatusRow& right = status_.memOppgjorStatus.Row(b.statusRow);
    if (left.AvdnrSort != right.AvdnrSort) return left.AvdnrSort > right.AvdnrSort;
    return left.Avdnr < right.Avdnr;
}

void StatusTreeModel::listAnew() {
    beginResetModel();
    const int count = status_.memOppgjorStatus.RecordCount();
    tills_.clear();
    for (int row = 0; row < count; ++row) tills_.push_back(tillOf(row));
    std::stable_sort(tills_.begin(), tills_.end(), [this](const Till& a, const Till& b) { return comesBefore(a, b); });
    positions_.resize(tills_.size());
    numberPositions(0);
    endResetModel();
}

void StatusTreeModel::numberPositions(std::size_t from) {
    for (std::size_t i = from; i < tills_.size(); ++i)
        positions_[static_cast<std::size_t>(tills_[i].statusRow)] = static_cast<int>(i);
}

void StatusTreeModel::tillsAdded(int first, int last) {
    for (int row = first; row <= last; ++row) {
        Till till = tillOf(row);
        const auto place = std::upper_bound(tills_.begin(), tills_.end(), till,
                                            [this](const Till& a, const Till& b) { return comesBefore(a, b); });
        const auto position = place - tills_.begin();
        beginInsertRows({}, static_cast<int>(position), static_cast<int>(position));
        tills_.insert(place, std::move(till));
        positions_.resize(tills_.size());
        numberPositions(static_cast<std::size_t>(position));
        endInsertRows();
    }
}

void StatusTreeModel::tillsChanged(int first, int last) {
    int top = static_cast<int>(tills_.size());
    int bottom = -1;
    for (int row = first; row <= last; ++row) {
        const int position = positionOf(row);
        const OppgjorStatusRow& now = status_.memOppgjorStatus.Row(row);
        const Till& till = tills_[static_cast<std::size_t>(position)];
        if (now.Ik_Ku_Id.value_or(-1) != till.ikKuId || now.Kassenr.trimmed() != till.kassenr) {
            listAnew();  // its lines are others now
            return;
        }
        top = std::min(top, position);
        bottom = std::max(bottom, position);
    }
    if (bottom >= 0) Q_EMIT dataChanged(index(top, 0), index(bottom, ColumnCount - 1));
}

void StatusTreeModel::linesAdded(int first, int last) {
    QHash<std::pair<int, QString>, std::vector<int>> rowsOf;
    for (int row = first; row <= last; ++row) {
        const LogEntryRow& line = status_.memLogEntries.Row(row);
        if (status_.memLogEntries.Shows(row)) rowsOf[{line.Ik_Ku_Id, line.Kassenr}].push_back(row);
    }
    for (std::size_t i = 0; i < tills_.size(); ++i) {
        Till& till = tills_[i];
        const auto added = rowsOf.constFind({till.ikKuId, till.kassenr});
        if (added == rowsOf.constEnd()) continue;
        const auto count = static_cast<int>(till.logRows.size());
        beginInsertRows(index(static_cast<int>(i), 0), count, count + static_cast<int>(added->size()) - 1);
        till.logRows.insert(till.logRows.end(), added->begin(), added->end());
        endInsertRows();
    }
}

int StatusTreeModel::statusRow(const QModelIndex& index) const {
    const QModelIndex top = index.parent().isValid() ? index.parent() : index;
    return top.isValid() ? tills_[static_cast<std::size_t>(top.row())].statusRow : -1;
}

// A log line's internal id is its till's row in memOppgjorStatus plus one.
QModelIndex StatusTreeModel::index(int row, int column, const QModelIndex& parent) const {
    if (!hasIndex(row, column, parent)) return {};
    return createIndex(row, column, parent.isValid() ? static_cast<quintptr>(statusRow(parent)) + 1 : kTopLevel);
}

QModelIndex StatusTreeModel::parent(const QModelIndex& child) const {
    if (!child.isValid() || child.internalId() == kTopLevel) return {};
    return createIndex(positionOf(static_cast<int>(child.internalId()) - 1), 0, kTopLevel);
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
    const Till& till = tills_[static_cast<std::size_t>(index.parent().row())];
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
    if (role == Qt::ToolTipRole) return preview(table.Row(statusRow).Melding);
    if (role == Qt::TextAlignmentRole && (column == IkkeOppgjort || column == Backup))
        return QVariant(Qt::AlignRight | Qt::AlignVCenter);
    if (role != Qt::DisplayRole) return {};
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
