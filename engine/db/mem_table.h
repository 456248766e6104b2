// A table in memory, without a session: columns of its own or those of an open data set, rows, walking and Locate.
#pragma once

#include "engine/db/data_set.h"

namespace torvik::db {

class MemTable : public DataSet {
public:
    explicit MemTable(QObject* parent = nullptr) : DataSet(parent) {}

    // Adds a column; raises UsageError while open or when the name is taken.
    void AddColumn(const QString& name, FieldType type, qint64 size = 0);
    // Makes the columns those of source, which must be open; closes and empties this table first.
    void CopyColumnsFrom(const DataSet& source);
    // Opens with the columns added so far and no rows; an open table stays as it is.
    void Open();
    // CopyColumnsFrom, Open, and all rows of source, whose current row stays. Then on the first row.
    void CopyFrom(const DataSet& source);
    // Removes all rows, keeps the columns, stays open.
    void Clear();
    // Removes rows and columns.
    void Reset();

protected:
    void store(Mode mode, EditBuffer& buffer) override;

private:
    std::vector<FieldInfo> columns_;
};

}  // namespace torvik::db
