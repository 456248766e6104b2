#include "shell/results/table_model.h"

#include <algorithm>

#include "engine/base/abort.h"
#include "engine/db/errors.h"

namespace torvik {

namespace {

constexpr qsizetype kLettersShown = 300;
constexpr qsizetype kBytesShown = 32;

bool isNumber(const db::Value& value) {
    const auto& held = value.variant();
    return std::holds_alternative<qint64>(held) || std::holds_alternative<double>(held) ||
           std::holds_alternative<db::Decimal>(held);
}

// Values of columns of one type always fit.
void requireFitting(const db::MemTable& table, const db::MemTable& first) {
    if (table.FieldCount() > first.FieldCount())
        throw EngineError(QStringLiteral("Resultatene har ikke de samme kolonnene: %1 kolonner mot %2 i det første")
                              .arg(table.FieldCount())
                              .arg(first.FieldCount()));
    for (int column = 0; column < table.FieldCount(); ++column) {
        const db::FieldType type = first.Fields(column).Type();
        if (table.Fields(column).Type() == type || type == db::FieldType::Text) continue;
        for (int row = 0; row < table.RecordCount(); ++row) {
            try {
                static_cast<void>(db::convertTo(table.ValueAt(row, column), type));
            } catch (const db::UsageError& e) {
                throw EngineError(QStringLiteral("Resultatene har ikke de samme kolonnene: %1: %2")
                                      .arg(first.Fields(column).Name(), ErrorText(e)));
            }
        }
    }
}

}  // namespace

TableModel::TableModel(QObject* parent) : QAbstractTableModel(parent) {}

void TableModel::setTables(std::vector<Table> tables) {
    for (const Table& table : tables) requireFitting(*table, *tables.front());
    beginResetModel();
    tables_ = std::move(tables);
    ends_.clear();
    int end = 0;
    for (const Table& table : tables_) ends_.push_back(end += table->RecordCount());
    columns_ = tables_.empty() ? 0 : tables_.front()->FieldCount();
    endResetModel();
}

db::Value TableModel::value(int row, int column) const {
    const auto at = std::upper_bound(ends_.begin(), ends_.end(), row);
    const auto which = static_cast<std::size_t>(at - ends_.begin());
    const db::MemTable& table = *tables_.at(which);
    if (column >= table.FieldCount()) return {};
    return table.ValueAt(row - (which > 0 ? ends_[which - 1] : 0), column);
}

int TableModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() || ends_.empty() ? 0 : ends_.back();
}

int TableModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : columns_;
}

QVariant TableModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    switch (role) {
        case Qt::DisplayRole: return cellText(value(index.row(), index.column()));
        case Qt::TextAlignmentRole:
            return isNumber(value(index.row(), index.column())) ? QVariant(Qt::AlignRight | Qt::AlignVCenter)
                                                                : QVariant();
        case ValueRole: return QVariant::fromValue(value(index.row(), index.column()));
        default: return {};
    }
}

QVariant TableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role != Qt::DisplayRole || orientation != Qt::Horizontal || section >= columns_)
        return QAbstractTableModel::headerData(section, orientation, role);
    return tables_.front()->Fields(section).Name();
}

QString cellText(const db::Value& value) {
    if (const auto* bytes = std::get_if<QByteArray>(&value.variant())) {
        const QString shown = QString::fromLatin1(bytes->left(kBytesShown).toHex().toUpper());
        return QStringLiteral("0x%1%2").arg(shown, bytes->size() > kBytesShown ? QStringLiteral("…") : QString());
    }
    QString text = value.toQString();
    if (text.size() > kLettersShown) text = text.left(kLettersShown) + QStringLiteral("…");
    for (QChar& c : text)
        if (c == u'\n' || c == u'\r' || c == u'\t') c = u' ';
    return text;
}

}  // namespace torvik
