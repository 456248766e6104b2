// A table that rows are put into, as the server describes it: its columns as fields, and what the catalogue says of
// their types, defaults and triggers. By it RowSender chooses how rows travel; the catalogue is asked only when there
// are rows. Internal.
#pragma once

#include <QString>
#include <vector>

#include "engine/db/field.h"

namespace torvik::db {

class Connection;
class RowStore;

// What the catalogue says of a column.
struct TableColumn {
    int Type = 0;   // the server's type number (sys.types.system_type_id)
    int Bytes = 0;  // -1: (max)
    int Precision = 0;
    int Scale = 0;
    bool Nullable = true;
    bool Identity = false;
    bool Default = false;  // has one
    bool Derived = false;  // computed: the server fills it
    bool Latin = false;    // texts are in code page 1252
};

struct TableShape {
    QString Name;
    std::vector<FieldInfo> Fields;
    bool Described = false;            // the catalogue has been asked
    std::vector<TableColumn> Columns;  // one a field; none when the name is a view's, or no table of this database
    bool InsertTrigger = false;

    [[nodiscard]] int place(const QString& name) const;  // of the field, -1 when there is none
};

// The fields alone: by this question, or asked for here; raises StatementError (208) when there is no such table.
[[nodiscard]] QString fieldsQuestion(const QString& table);
[[nodiscard]] TableShape tableShape(Connection& connection, const QString& table, int timeout);
// The catalogue's question for the columns of the tables that the condition chooses: what it says of each, and the
// table's object_id.
[[nodiscard]] QString columnsQuestion(const QString& condition);
// Adds what the catalogue says: its rows from `first` to before `end` are the table's. Where they are not as many as
// its fields, nothing is known but that it was asked.
void describe(TableShape& shape, const RowStore& rows, qsizetype first, qsizetype end);
// The same, asked for, once.
void describe(TableShape& shape, Connection& connection, int timeout);

}  // namespace torvik::db
