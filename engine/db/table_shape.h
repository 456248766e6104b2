// A table that rows are put into, as the server describes it: its columns as fields, and what the catalogue says of
// their types, defaults and triggers. By it RowSender chooses how rows travel; the catalogue is asked only when there
// are rows. Internal.
#pragma once

#include <QString>
#include <vector>

#include "engine/db/field.h"

namespace torvik::db {

class Connection;

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

// The fields alone; raises StatementError (208) when there is no such table.
[[nodiscard]] TableShape tableShape(Connection& connection, const QString& table, int timeout);
// Adds what the catalogue says, once.
void describe(TableShape& shape, Connection& connection, int timeout);

}  // namespace torvik::db
