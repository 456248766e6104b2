// The shapes of tables of one database that are opened again and again, as the staging tables are for one till after
// the other: the server is asked once for each. Whoever holds it says how long what it knows holds.
#pragma once

#include <QHash>
#include <QString>
#include <memory>

namespace torvik::db {

class Connection;
struct TableShape;

class TableShapes {
public:
    TableShapes();
    ~TableShapes();
    TableShapes(const TableShapes&) = delete;
    TableShapes& operator=(const TableShapes&) = delete;

    // Of a table, asked for unless it is known. Raises StatementError (208) where there is no such table.
    [[nodiscard]] std::shared_ptr<TableShape> Of(Connection& connection, const QString& table, int timeout);
    // Every table is asked for anew.
    void Forget();

private:
    QHash<QString, std::shared_ptr<TableShape>> shapes_;  // by name
};

}  // namespace torvik::db
