// Rows of the two tables are only added or changed until a table is emptied, so a till is known by its row there,
// wherever it is shown. An index points to the node above its own.
#include "shell/status/status_tree_model.h"

#include <QBrush>
#include <QFont>
#include <QHash>
#include <algorithm>
#include <array>

#include "engine/status/oppgjor_status.h"
#include "shell/look/colors.h"
#include "shell/look/icons.h"
#include "shell/status/status_tree_node.h"

namespace torvik {

namespace {

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

bool isNumber(int column) {
    return column == StatusTreeModel::IkkeOppgjort || column == StatusTreeModel::Backup;
}

}  // namespace

StatusTreeModel::StatusTreeModel(TfraOppgjorStatus& status, QObject* parent)
    : QAbstractItemModel(parent), status_(status), root_(std::make_unique<Node>()) {
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
    connect(&status, &TfraOppgjorStatus::RunningRowChanged, this, [this](int before, int now) {
        for (const int row : {before, now})
            if (row >= 0 && static_cast<std::size_t>(row) < tills_.size()) tillsChanged(row, row);
    });
    listAnew();
}

StatusTreeModel::~StatusTreeModel() = default;

void StatusTreeModel::setArrangement(const StatusArrangement& arrangement) {
    if (arrangement == arrangement_) return;
    arrangement_ = arrangement;
    listAnew();
}

std::unique_ptr<StatusTreeModel::Node> StatusTreeModel::newTill(int statusRow) const {
    const OppgjorStatusRow& row = status_.memOppgjorStatus.Row(statusRow);
    auto till = std::make_unique<Node>();
    till->kind = Kind::Till;
    till->statusRow = statusRow;
    till->ikKuId = row.Ik_Ku_Id.value_or(-1);
    till->kassenr = row.Kassenr.trimmed();
    till->logRows = status_.memLogEntries.RowsOf(till->ikKuId, till->kassenr);
    return till;
}

void StatusTreeModel::listAnew() {
    beginResetModel();
    root_->children.clear();
    groups_.clear();
    tills_.clear();
    for (int row = 0; row < status_.memOppgjorStatus.RecordCount(); ++row) {
        tills_.push_back(newTill(row));
        Node& till = *tills_.back();
        if (!shows(arrangement_, status_, row)) continue;
        Node& home = homeOf(till, false);
        home.insert(placeIn(home, till), till);
    }
    endResetModel();
}

// The group that the till belongs to, made where it is the first of it.
StatusTreeModel::Node& StatusTreeModel::homeOf(const Node& till, bool tellViews) {
    if (arrangement_.group == StatusGroup::None) return *root_;
    StatusGroupKey key = groupOf(arrangement_, status_, till.statusRow);
    const auto at = std::lower_bound(root_->children.begin(), root_->children.end(), key.place,
                                     [](const Node* group, const auto& place) { return group->key.place < place; });
    if (at != root_->children.end() && (*at)->key.place == key.place) return **at;
    const int place = static_cast<int>(at - root_->children.begin());
    groups_.push_back(std::make_unique<Node>());
    Node& group = *groups_.back();
    group.key = std::move(key);
    if (tellViews) beginInsertRows({}, place, place);
    root_->insert(place, group);
    if (tellViews) endInsertRows();
    return group;
}

// Where the till stands among the others of its home, itself left out of account.
int StatusTreeModel::placeIn(const Node& home, const Node& till) const {
    int place = 0;
    for (const Node* other : home.children) {
        if (other == &till) continue;
        if (comesBefore(arrangement_, status_, till.statusRow, other->statusRow)) break;
        ++place;
    }
    return place;
}

void StatusTreeModel::tillsAdded(int first, int last) {
    for (int row = first; row <= last; ++row) {
        tills_.push_back(newTill(row));
        arrange(*tills_.back());
    }
}

void StatusTreeModel::arrange(Node& till) {
    const bool shown = shows(arrangement_, status_, till.statusRow);
    if (!shown) {
        if (till.parent) removeTill(till);
        return;
    }
    if (!till.parent) {
        insertTill(till);
        return;
    }
    Node& home = homeOf(till, true);
    if (&home != till.parent || placeIn(home, till) != till.row) moveTill(till, home);
    Q_EMIT dataChanged(indexOfNode(till), indexOfNode(till, ColumnCount - 1));
    tellGroup(home);
}

void StatusTreeModel::insertTill(Node& till) {
    Node& home = homeOf(till, true);
    const int place = placeIn(home, till);
    beginInsertRows(indexOfNode(home), place, place);
    home.insert(place, till);
    endInsertRows();
    tellGroup(home);
}

void StatusTreeModel::removeTill(Node& till) {
    Node& home = *till.parent;
    beginRemoveRows(indexOfNode(home), till.row, till.row);
    home.remove(till);
    endRemoveRows();
    dropGroupIfEmpty(home);
}

void StatusTreeModel::moveTill(Node& till, Node& home) {
    Node& before = *till.parent;
    const int place = placeIn(home, till);
    // Qt counts the place among the rows as they are before the move.
    const int destination = &home == &before && place > till.row ? place + 1 : place;
    if (!beginMoveRows(indexOfNode(before), till.row, till.row, indexOfNode(home), destination)) return;
    before.remove(till);
    home.insert(place, till);
    endMoveRows();
    if (&before != &home) dropGroupIfEmpty(before);
}

void StatusTreeModel::dropGroupIfEmpty(Node& group) {
    if (&group == root_.get()) return;
    if (!group.children.empty()) {
        tellGroup(group);
        return;
    }
    beginRemoveRows({}, group.row, group.row);
    root_->remove(group);
    endRemoveRows();
    std::erase_if(groups_, [&group](const auto& each) { return each.get() == &group; });
}

// Its sums have changed.
void StatusTreeModel::tellGroup(Node& home) {
    if (&home != root_.get()) Q_EMIT dataChanged(indexOfNode(home), indexOfNode(home, ColumnCount - 1));
}

void StatusTreeModel::tillsChanged(int first, int last) {
    int top = -1;
    int bottom = -1;
    for (int row = first; row <= last; ++row) {
        Node& till = *tills_[static_cast<std::size_t>(row)];
        const OppgjorStatusRow& now = status_.memOppgjorStatus.Row(row);
        if (now.Ik_Ku_Id.value_or(-1) != till.ikKuId || now.Kassenr.trimmed() != till.kassenr) {
            listAnew();  // its lines are others now
            return;
        }
        if (!arrangement_.isFixed() || arrangement_.group != StatusGroup::None) {
            arrange(till);
            continue;
        }
        top = top < 0 ? till.row : std::min(top, till.row);
        bottom = std::max(bottom, till.row);
    }
    if (bottom >= 0) Q_EMIT dataChanged(index(top, 0), index(bottom, ColumnCount - 1));
}

void StatusTreeModel::linesAdded(int first, int last) {
    QHash<std::pair<int, QString>, std::vector<int>> rowsOf;
    for (int row = first; row <= last; ++row) {
        const LogEntryRow& line = status_.memLogEntries.Row(row);
        if (status_.memLogEntries.Shows(row)) rowsOf[{line.Ik_Ku_Id, line.Kassenr}].push_back(row);
    }
    for (const auto& till : tills_) {
        const auto added = rowsOf.constFind({till->ikKuId, till->kassenr});
        if (added == rowsOf.constEnd()) continue;
        const auto count = static_cast<int>(till->logRows.size());
        if (till->parent) beginInsertRows(indexOfNode(*till), count, count + static_cast<int>(added->size()) - 1);
        till->logRows.insert(till->logRows.end(), added->begin(), added->end());
        if (till->parent) endInsertRows();
    }
}

// The node of a till or a group; null for a line.
StatusTreeModel::Node* StatusTreeModel::nodeOf(const QModelIndex& index) const {
    if (!index.isValid()) return root_.get();
    auto* above = static_cast<Node*>(index.internalPointer());
    return above->kind == Kind::Till ? nullptr : above->children[static_cast<std::size_t>(index.row())];
}

QModelIndex StatusTreeModel::indexOfNode(const Node& node, int column) const {
    return node.parent ? createIndex(node.row, column, node.parent) : QModelIndex();
}

StatusTreeModel::Kind StatusTreeModel::kindOf(const QModelIndex& index) const {
    const Node* node = nodeOf(index);
    return node ? node->kind : Kind::Line;
}

int StatusTreeModel::statusRow(const QModelIndex& index) const {
    const Node* node = nodeOf(index);
    return node ? node->statusRow : static_cast<Node*>(index.internalPointer())->statusRow;
}

QModelIndex StatusTreeModel::indexOf(int statusRow) const {
    if (statusRow < 0 || static_cast<std::size_t>(statusRow) >= tills_.size()) return {};
    return indexOfNode(*tills_[static_cast<std::size_t>(statusRow)]);
}

std::vector<int> StatusTreeModel::statusRows() const {
    return root_->statusRows();
}

OppgjorStatusTable::Column StatusTreeModel::sourceColumn(int column) {
    return kColumns[static_cast<std::size_t>(column)].source;
}

QModelIndex StatusTreeModel::index(int row, int column, const QModelIndex& parent) const {
    if (!hasIndex(row, column, parent)) return {};
    return createIndex(row, column, nodeOf(parent));
}

QModelIndex StatusTreeModel::parent(const QModelIndex& child) const {
    return child.isValid() ? indexOfNode(*static_cast<Node*>(child.internalPointer())) : QModelIndex();
}

int StatusTreeModel::rowCount(const QModelIndex& parent) const {
    const Node* node = parent.column() > 0 ? nullptr : nodeOf(parent);
    if (!node) return 0;
    return static_cast<int>(node->kind == Kind::Till ? node->logRows.size() : node->children.size());
}

int StatusTreeModel::columnCount(const QModelIndex&) const {
    return ColumnCount;
}

QVariant StatusTreeModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const Node* node = nodeOf(index);
    if (!node) {
        const Node& till = *static_cast<Node*>(index.internalPointer());
        return logData(till.logRows[static_cast<std::size_t>(index.row())], index.column(), role);
    }
    return node->kind == Kind::Till ? tillData(node->statusRow, index.column(), role)
                                    : groupData(*node, index.column(), role);
}

QVariant StatusTreeModel::groupData(const Node& group, int column, int role) const {
    if (role == Qt::FontRole) {
        QFont font;
        font.setBold(true);
        return font;
    }
    if (role == Qt::TextAlignmentRole && isNumber(column)) return QVariant(Qt::AlignRight | Qt::AlignVCenter);
    if (role != Qt::DisplayRole) return {};
    if (column == Status) return group.key.caption;
    const OppgjorStatusSums sums = status_.memOppgjorStatus.Sums(group.statusRows());
    if (column == IkkeOppgjort) return sums.AntSalgIkkeOppgjort;
    if (column == TidBrukt) return sums.GroupText();
    return {};
}

QVariant StatusTreeModel::tillData(int statusRow, int column, int role) const {
    const OppgjorStatusTable& table = status_.memOppgjorStatus;
    if (statusRow >= table.RecordCount()) return {};
    const bool running = statusRow == status_.RunningRow();
    if (role == Qt::FontRole) {
        QFont font;
        font.setBold(running);
        return font;
    }
    if (column == Status) {
        if (role == Qt::DecorationRole) return running ? runningIcon() : statusIcon(table.Row(statusRow).StatusIcon);
        if (role == Qt::ToolTipRole)
            return running ? TillStateText(TillState::Running) : SeverityText(table.Row(statusRow).StatusIcon);
        return {};
    }
    if (role == Qt::ToolTipRole) return preview(table.Row(statusRow).Melding);
    if (role == Qt::TextAlignmentRole && isNumber(column)) return QVariant(Qt::AlignRight | Qt::AlignVCenter);
    if (role != Qt::DisplayRole) return {};
    const QModelIndex source = table.index(statusRow, sourceColumn(column));
    if (column == Hentet || column == Sendt) {
        const QVariant value = source.data(OppgjorStatusTable::RawValue);
        return value.isValid() ? (value.toBool() ? QStringLiteral("Ja") : QStringLiteral("Nei")) : QString();
    }
    return source.data(role);
}

QVariant StatusTreeModel::logData(int logRow, int column, int role) const {
    if (column != Status || logRow >= status_.memLogEntries.RecordCount()) return {};
    const LogEntryRow& line = status_.memLogEntries.Row(logRow);
    if (role == Qt::DecorationRole) return statusIcon(line.Severity);
    if (role == Qt::ForegroundRole && line.Severity == kls_Error) return QBrush(textColor(Tone::Red));
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
