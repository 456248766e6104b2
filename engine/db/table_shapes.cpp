// See table_shapes.h.
#include "engine/db/table_shapes.h"

#include <QStringList>

#include "engine/db/connection.h"
#include "engine/db/errors.h"
#include "engine/db/reply.h"
#include "engine/db/session.h"
#include "engine/db/table_shape.h"

namespace torvik::db {

namespace {

QString objectId(QString table) {
    return QStringLiteral("OBJECT_ID(N'%1')").arg(table.replace(QLatin1Char('\''), QStringLiteral("''")));
}

// The batch, then a question for the fields of each table, then one for the numbers of all of them, and one for what
// the catalogue says of their columns.
QString askedBehind(const QString& batch, const QStringList& tables) {
    QStringList lines{batch};
    QStringList ids;
    for (const QString& table : tables) {
        lines << fieldsQuestion(table);
        ids << objectId(table);
    }
    const QString all = ids.join(QStringLiteral(", "));
    lines << QStringLiteral("SELECT ") + all;
    lines << columnsQuestion(QStringLiteral("c.object_id IN (%1)").arg(all));
    return lines.join(QStringLiteral("\r\n"));
}

// The rows of the next question; an error when it has none.
RowStore answer(Reply& reply) {
    if (!reply.hasRows()) throw StatementError(QStringLiteral("The statement did not return rows"));
    return reply.takeRowSet();
}

}  // namespace

TableShapes::TableShapes() = default;
TableShapes::~TableShapes() = default;

std::shared_ptr<TableShape> TableShapes::Of(Connection& connection, const QString& table, int timeout) {
    std::shared_ptr<TableShape>& known = shapes_[table.toLower()];
    if (!known) known = std::make_shared<TableShape>(tableShape(connection, table, timeout));
    return known;
}

// Nothing is believed before the reply has been read to its end: an error of any of its statements is raised there.
void TableShapes::AskBehind(Session& session, const QString& batch, const QStringList& tables, int timeout) {
    Reply reply(session.use(), {askedBehind(batch, tables), {}, timeout, true});
    QHash<QString, std::shared_ptr<TableShape>> found;
    for (const QString& table : tables) {
        auto shape = std::make_shared<TableShape>();
        shape->Name = table;
        if (reply.hasRows()) shape->Fields = reply.columns();
        static_cast<void>(answer(reply));
        found[table.toLower()] = std::move(shape);
    }
    const RowStore ids = answer(reply);
    const RowStore columns = answer(reply);
    reply.finish();
    const int idColumn = int(columns.columnCount()) - 1;
    for (int i = 0; i < tables.size(); ++i) {
        qsizetype first = 0;
        while (first < columns.rowCount() && columns.value(first, idColumn) != ids.value(0, i)) ++first;
        qsizetype end = first;
        while (end < columns.rowCount() && columns.value(end, idColumn) == ids.value(0, i)) ++end;
        describe(*found[tables[i].toLower()], columns, first, end);
    }
    shapes_.insert(found);
}

void TableShapes::Forget() {
    shapes_.clear();
}

}  // namespace torvik::db
