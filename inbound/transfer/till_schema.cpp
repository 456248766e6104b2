#include "inbound/transfer/till_schema.h"

#include "engine/db/batched_reads.h"
#include "engine/db/errors.h"
#include "engine/db/planned_reads.h"
#include "engine/db/query.h"
#include "engine/db/session.h"
#include "inbound/transfer/maps/table_map.h"

namespace torvik {

namespace {

constexpr char kTillVersion[] = "SELECT IN_DBVERSION FROM INNSTILLINGER";

constexpr char kTillTable[] = "select count(*) AS Antall from sysobjects where name='%1'";

const QStringList& requiredTables() {
    static const QStringList tables = [] {
        QStringList found;
        for (const TableMap* map : allTableMaps())
            if (map->requiredTable) found << QString::fromUtf8(map->requiredTable);
        return found;
    }();
    return tables;
}

}  // namespace

QString TillSchema::VersionSql() {
    return QString::fromUtf8(kTillVersion);
}

QString TillSchema::TableSql(const QString& table) {
    return QString::fromUtf8(kTillTable).arg(table);
}

// rowsOf gives the rows of a question; the questions come in the order in which both below send them.
template <typename RowsOf>
TillSchema TillSchema::of(const RowsOf& rowsOf) {
    TillSchema schema;
    const db::DataSet& version = rowsOf(VersionSql());
    schema.version_ = version.integer("IN_DBVERSION");
    for (const QString& table : requiredTables()) {
        const db::DataSet& found = rowsOf(TableSql(table));
        schema.tables_[table] = found.integer("Antall") > 0;
    }
    return schema;
}

TillSchema TillSchema::Ask(db::Session& till) {
    db::PlannedReads reads(till, db::PlannedReads::Within::Transaction);
    reads.Plan({VersionSql()});
    for (const QString& table : requiredTables()) reads.Plan({TableSql(table)});
    db::Query query(&till);
    query.ParamCheck = false;
    return of([&](const QString& sql) -> const db::DataSet& {
        query.SQL = QStringList{sql};
        return reads.Open(query);
    });
}

std::optional<TillSchema> TillSchema::BeginAndAsk(db::Session& till) {
    db::BatchedReads reads(till);
    reads.AddBegin();
    reads.AddRead(VersionSql());
    for (const QString& table : requiredTables()) reads.AddRead(TableSql(table));
    bool begun = false;
    try {
        reads.Send();
        begun = true;
        return of([&](const QString& sql) -> const db::DataSet& {
            reads.OpenNext(sql);
            return reads;
        });
    } catch (const db::Error& e) {
        const bool noNumber = begun && dynamic_cast<const db::UsageError*>(&e);
        if (!noNumber && !db::isRefusal(e)) throw;
    }
    reads.Close();
    till.Rollback();  // where it had begun
    till.StartTransaction();
    return {};
}

}  // namespace torvik
