// memOppgjorStatus as rows and as a model: captions, widths, what is hidden, how values show.
#include "engine/status/oppgjor_status_table.h"

#include <array>

namespace torvik {

namespace {

struct ColumnInfo {
    const char16_t* caption;
    int width;  // of a text column, in characters; 0 for the others
    bool hidden;
};

constexpr std::array<ColumnInfo, OppgjorStatusTable::ColumnCount> kColumns{{
    {u"Avdnr", 20, false},
    {u"AvdNavn", 30, false},
    {u"Kassenr", 10, false},
    {u"Hentet", 0, false},
    {u"Sendt", 0, false},
    {u"Melding", 255, true},
    {u"Tid brukt", 0, false},
    {u"Ant. dgr. siden backup", 0, false},
    {u"Status", 0, false},
    {u"Ik_Ku_Id", 0, true},
    {u"Siste oppgjør", 0, false},
    {u"Ant. ikke oppgjorte salg", 0, false},
    {u"AvdnrSort", 0, true},
    {u"Opp Mbps", 0, false},
}};

template <typename T>
QVariant orNull(const std::optional<T>& value) {
    return value ? QVariant::fromValue(*value) : QVariant();
}

QVariant rawValue(const OppgjorStatusRow& row, int column) {
    switch (column) {
        case OppgjorStatusTable::Avdnr: return row.Avdnr;
        case OppgjorStatusTable::AvdNavn: return row.AvdNavn;
        case OppgjorStatusTable::Kassenr: return row.Kassenr;
        case OppgjorStatusTable::Hentet: return orNull(row.Hentet);
        case OppgjorStatusTable::Sendt: return orNull(row.Sendt);
        case OppgjorStatusTable::Melding: return row.Melding;
        case OppgjorStatusTable::TidBrukt: return orNull(row.TidBrukt);
        case OppgjorStatusTable::DagerSidenBackup: return orNull(row.DagerSidenBackup);
        case OppgjorStatusTable::StatusIcon: return row.StatusIcon;
        case OppgjorStatusTable::Ik_Ku_Id: return orNull(row.Ik_Ku_Id);
        case OppgjorStatusTable::SisteOppgjor: return orNull(row.SisteOppgjor);
        case OppgjorStatusTable::AntSalgIkkeOppgjort: return orNull(row.AntSalgIkkeOppgjort);
        case OppgjorStatusTable::AvdnrSort: return orNull(row.AvdnrSort);
        case OppgjorStatusTable::Opplast_mbps: return orNull(row.Opplast_mbps);
        default: return {};
    }
}

QVariant shownValue(const OppgjorStatusRow& row, int column) {
    switch (column) {
        case OppgjorStatusTable::TidBrukt:
            return row.TidBrukt ? QVariant(row.TidBrukt->toString(u"HH:mm:ss")) : QVariant();
        case OppgjorStatusTable::SisteOppgjor:
            return row.SisteOppgjor ? QVariant(row.SisteOppgjor->toString(QStringLiteral("dd.MM.yyyy HH:mm:ss")))
                                    : QVariant();
        case OppgjorStatusTable::Opplast_mbps:
            return row.Opplast_mbps ? QVariant(QString::number(*row.Opplast_mbps, 'f', 2)) : QVariant();
        // Shown as a check box and as an icon, from the raw value.
        case OppgjorStatusTable::Hentet:
        case OppgjorStatusTable::Sendt:
        case OppgjorStatusTable::StatusIcon: return {};
        default: return rawValue(row, column);
    }
}

QVariant checkState(const std::optional<bool>& value) {
    if (!value) return Qt::PartiallyChecked;
    return *value ? Qt::Checked : Qt::Unchecked;
}

}  // namespace

QString OppgjorStatusSums::TidBruktText() const {
    const qint64 seconds = TidBruktMs / 1000;
    const auto two = [](qint64 number) { return QString::number(number).rightJustified(2, u'0'); };
    return two(seconds / 3600) + u':' + two(seconds / 60 % 60) + u':' + two(seconds % 60);
}

QString OppgjorStatusSums::GroupText() const {
    return TidBruktText() + QStringLiteral(", ") + QString::number(Count);
}

void OppgjorStatusTable::Open() {
    active_ = true;
}

void OppgjorStatusTable::Close() {
    beginResetModel();
    active_ = false;
    rows_.clear();
    rowOfKey_.clear();
    lastRecId_ = 0;
    endResetModel();
}

int OppgjorStatusTable::Locate(const QString& avdnr, const QString& kassenr) const {
    return rowOfKey_.value({avdnr, kassenr}, -1);
}

void OppgjorStatusTable::fit(OppgjorStatusRow& row) {
    row.Avdnr.truncate(kColumns[Avdnr].width);
    row.AvdNavn.truncate(kColumns[AvdNavn].width);
    row.Kassenr.truncate(kColumns[Kassenr].width);
    row.Melding.truncate(kColumns[Melding].width);
}

int OppgjorStatusTable::Append(OppgjorStatusRow row) {
    const int number = RecordCount();
    fit(row);
    row.RecId = ++lastRecId_;
    beginInsertRows({}, number, number);
    if (Locate(row.Avdnr, row.Kassenr) < 0) rowOfKey_.insert({row.Avdnr, row.Kassenr}, number);
    rows_.push_back(std::move(row));
    endInsertRows();
    return number;
}

void OppgjorStatusTable::Post(int row, OppgjorStatusRow value) {
    OppgjorStatusRow& stored = rows_[static_cast<size_t>(row)];
    fit(value);
    value.RecId = stored.RecId;
    if (value.Avdnr != stored.Avdnr || value.Kassenr != stored.Kassenr) {
        rowOfKey_.remove({stored.Avdnr, stored.Kassenr});
        rowOfKey_.insert({value.Avdnr, value.Kassenr}, row);
    }
    stored = std::move(value);
    Q_EMIT dataChanged(index(row, 0), index(row, ColumnCount - 1));
}

// Views hear of the rows between the first and the last that differ: as a rule the one till that has just been served.
void OppgjorStatusTable::PostIcons(const std::vector<int>& icons) {
    int first = -1;
    int last = -1;
    for (size_t i = 0; i < rows_.size() && i < icons.size(); ++i) {
        if (rows_[i].StatusIcon == icons[i]) continue;
        rows_[i].StatusIcon = icons[i];
        last = static_cast<int>(i);
        if (first < 0) first = last;
    }
    if (first >= 0) Q_EMIT dataChanged(index(first, StatusIcon), index(last, StatusIcon));
}

OppgjorStatusSums OppgjorStatusTable::Sums() const {
    std::vector<int> all(rows_.size());
    for (size_t i = 0; i < all.size(); ++i) all[i] = static_cast<int>(i);
    return Sums(all);
}

OppgjorStatusSums OppgjorStatusTable::Sums(const std::vector<int>& rows) const {
    OppgjorStatusSums sums;
    for (int number : rows) {
        const OppgjorStatusRow& row = Row(number);
        sums.TidBruktMs += row.TidBrukt ? row.TidBrukt->msecsSinceStartOfDay() : 0;
        sums.AntSalgIkkeOppgjort += row.AntSalgIkkeOppgjort.value_or(0);
        ++sums.Count;
    }
    return sums;
}

int OppgjorStatusTable::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : RecordCount();
}

int OppgjorStatusTable::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant OppgjorStatusTable::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    const OppgjorStatusRow& row = Row(index.row());
    const int column = index.column();
    if (role == RawValue) return rawValue(row, column);
    if (role == Qt::DisplayRole) return shownValue(row, column);
    if (role == Qt::CheckStateRole && column == Hentet) return checkState(row.Hentet);
    if (role == Qt::CheckStateRole && column == Sendt) return checkState(row.Sendt);
    return {};
}

QVariant OppgjorStatusTable::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 || section >= ColumnCount) return {};
    return QString::fromUtf16(kColumns[static_cast<size_t>(section)].caption);
}

bool OppgjorStatusTable::IsHidden(int column) {
    return kColumns[static_cast<size_t>(column)].hidden;
}

}  // namespace torvik
