#include "outbound/driver/row_copy.h"

#include "engine/db/query.h"
#include "engine/db/table.h"

namespace torvik {

namespace {

db::Value valueOf(const CopiedColumn& column, const db::DataSet& source) {
    const db::Field& field = source.FieldByName(QString::fromUtf8(column.source));
    if (column.as == CopiedColumn::As::String) return field.AsString();
    return field.AsValue();
}

void copyColumns(std::span<const CopiedColumn> columns, const db::DataSet& source, db::DataSet& target) {
    for (const CopiedColumn& column : columns) {
        const QString name = QString::fromUtf8(column.target);
        if (column.ifTargetHas && !target.FindField(name)) continue;
        target.FieldByName(name).SetValue(valueOf(column, source));
    }
}

// The till's table as rows that can be edited.
void openForEditing(db::Query& rows, const char* table) {
    rows.CursorType = db::ReadMode::BaseTable;
    rows.ParamCheck = false;
    rows.SQL = QStringList{QStringLiteral("select * from %1").arg(QString::fromUtf8(table))};
    rows.Open();
}

void insertRows(const CopyRows& copy, db::DataSet& source, db::Session& till, db::TableShapes* shapes,
                const RowDone& rowDone) {
    db::Table table(&till);
    table.SetShapes(shapes);
    table.Options.FewRoundTrips = shapes != nullptr;
    table.SetTableName(QString::fromUtf8(copy.table));
    table.Open();
    for (; !source.Eof(); source.Next()) {
        rowDone(source.RecNo());
        table.Append();
        copyColumns(copy.columns, source, table);
        table.Post();
    }
    table.Close();
}

void mergeRows(const CopyRows& copy, db::DataSet& source, db::Session& till, const RowDone& rowDone) {
    db::Query rows(&till);
    openForEditing(rows, copy.table);
    const CopiedColumn& key = copy.columns.front();
    for (; !source.Eof(); source.Next()) {
        rowDone(source.RecNo());
        const bool known = rows.Locate(QString::fromUtf8(key.target), valueOf(key, source));
        if (known)
            rows.Edit();
        else
            rows.Append();
        copyColumns(known ? copy.columns.subspan(1) : copy.columns, source, rows);
        rows.Post();
    }
    rows.Close();
}

}  // namespace

void copyRows(const CopyRows& copy, db::DataSet& source, db::Session& till, db::TableShapes* shapes,
              const RowDone& rowDone) {
    if (copy.keyed)
        mergeRows(copy, source, till, rowDone);
    else
        insertRows(copy, source, till, shapes, rowDone);
}

bool editOneRow(const EditOneRow& edit, db::DataSet& source, db::Session& till) {
    db::Query row(&till);
    openForEditing(row, edit.table);
    if (source.IsEmpty() || row.IsEmpty()) return false;
    row.Edit();
    copyColumns(edit.columns, source, row);
    row.Post();
    return true;
}

}  // namespace torvik
