// See mem_table.h.
#include "engine/db/mem_table.h"

#include "engine/db/errors.h"
#include "engine/db/row_store.h"

namespace torvik::db {

void MemTable::AddColumn(const QString& name, FieldType type, qint64 size) {
    if (Active()) throw UsageError(QStringLiteral("Cannot add column '%1' to an open table").arg(name));
    for (const FieldInfo& column : columns_)
        if (column.Name.compare(name, Qt::CaseInsensitive) == 0)
            throw UsageError(QStringLiteral("Column '%1' stands twice").arg(name));
    FieldInfo info;
    info.Name = name;
    info.Type = type;
    info.Size = size;
    columns_.push_back(info);
}

void MemTable::CopyColumnsFrom(const DataSet& source) {
    std::vector<FieldInfo> columns;
    for (int i = 0; i < source.FieldCount(); ++i) columns.push_back(source.Fields(i).Info());
    Close();
    columns_ = std::move(columns);
}

void MemTable::Open() {
    if (!Active()) activate(columns_);
}

void MemTable::CopyFrom(const DataSet& source) {
    const int count = source.RecordCount();
    CopyColumnsFrom(source);
    Open();
    std::vector<Value> values(columns_.size());
    for (int row = 0; row < count; ++row) {
        for (int i = 0; i < int(values.size()); ++i) values[size_t(i)] = source.ValueAt(row, i);
        rows().appendRow(values);
    }
    rowsChanged();
    First();
}

void MemTable::Clear() {
    requireActive();
    activate(columns_);
    rowsChanged();
}

void MemTable::Reset() {
    Close();
    columns_.clear();
}

void MemTable::store(Mode, EditBuffer&) {}

}  // namespace torvik::db
