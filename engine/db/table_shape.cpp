// See table_shape.h.
#include "engine/db/table_shape.h"

#include "engine/db/connection.h"
#include "engine/db/reply.h"

namespace torvik::db {

namespace {

// The collations that SQL Server names after the languages of code page 1252; a UTF-8 one is none of them.
bool isLatin(const QString& collation) {
    if (collation.contains(u"_UTF8", Qt::CaseInsensitive)) return false;
    for (const char* family : {"Danish_", "Norwegian_", "Finnish_Swedish_", "Latin1_General_",
                               "SQL_Latin1_General_CP1_", "Icelandic_", "French_", "German_", "Modern_Spanish_"})
        if (collation.startsWith(QLatin1String(family), Qt::CaseInsensitive)) return true;
    return false;
}

}  // namespace

int TableShape::place(const QString& name) const {
    for (size_t i = 0; i < Fields.size(); ++i)
        if (Fields[i].Name.compare(name, Qt::CaseInsensitive) == 0) return int(i);
    return -1;
}

QString fieldsQuestion(const QString& table) {
    return QStringLiteral("SELECT * FROM %1 WHERE 1 = 0").arg(table);
}

TableShape tableShape(Connection& connection, const QString& table, int timeout) {
    TableShape shape;
    shape.Name = table;
    Reply reply(connection, {fieldsQuestion(table), {}, timeout});
    shape.Fields = reply.columns();
    reply.finish();
    return shape;
}

QString columnsQuestion(const QString& condition) {
    return QStringLiteral(R"(
SELECT c.system_type_id, c.max_length, c.[precision], c.scale, c.is_nullable, c.is_identity,
       CASE WHEN c.default_object_id <> 0 THEN 1 ELSE 0 END, c.is_computed, c.collation_name,
       (SELECT COUNT(*) FROM sysobjects o WHERE o.xtype = 'TR' AND o.parent_obj = c.object_id), c.object_id
FROM sys.columns c
WHERE %1 AND OBJECTPROPERTY(c.object_id, 'IsUserTable') = 1
ORDER BY c.object_id, c.column_id)")
        .arg(condition);
}

void describe(TableShape& shape, const RowStore& rows, qsizetype first, qsizetype end) {
    shape.Described = true;
    if (end - first != qsizetype(shape.Fields.size())) return;
    for (qsizetype row = first; row < end; ++row) {
        const auto number = [&](int column) { return int(rows.value(row, column).toInt()); };
        TableColumn column;
        column.Type = number(0);
        column.Bytes = number(1);
        column.Precision = number(2);
        column.Scale = number(3);
        column.Nullable = number(4) != 0;
        column.Identity = number(5) != 0;
        column.Default = number(6) != 0;
        column.Derived = number(7) != 0;
        column.Latin = isLatin(rows.value(row, 8).toQString());
        shape.Columns.push_back(column);
        shape.InsertTrigger = number(9) > 0;
    }
}

void describe(TableShape& shape, Connection& connection, int timeout) {
    if (shape.Described) return;
    const QString question = columnsQuestion(QStringLiteral("c.object_id = OBJECT_ID(?)"));
    const RowStore rows = lastRows(connection, {question, {{shape.Name, {}}}, timeout});
    describe(shape, rows, 0, rows.rowCount());
}

}  // namespace torvik::db
