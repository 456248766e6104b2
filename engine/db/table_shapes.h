// The shapes of tables of one database that are opened again and again, as the staging tables are for one till after
// the other: the server is asked once for each. A send asks for those of its work tables in the round trip that makes
// them. Whoever holds it says how long what it knows holds.
#pragma once

#include <QHash>
#include <QString>
#include <memory>

namespace torvik::db {

class Connection;
class Session;
struct TableShape;

class TableShapes {
public:
    TableShapes();
    ~TableShapes();
    TableShapes(const TableShapes&) = delete;
    TableShapes& operator=(const TableShapes&) = delete;

    // Of a table, in whatever spelling of its name; asked for unless it is known. Raises StatementError (208) where
    // there is no such table.
    [[nodiscard]] std::shared_ptr<TableShape> Of(Connection& connection, const QString& table, int timeout);
    // Runs a batch that gives no rows, and asks behind it, in the same round trip, for the shapes of these tables and
    // for what the catalogue says of them. Raises what the server objects to, in the batch or behind it: then nothing
    // new is known, and whatever of the batch did not fail may have been done.
    void AskBehind(Session& session, const QString& batch, const QStringList& tables, int timeout);
    // Every table is asked for anew.
    void Forget();

private:
    QHash<QString, std::shared_ptr<TableShape>> shapes_;  // by name, in small letters
};

}  // namespace torvik::db
