// See bulk_loader.h.
#include "engine/db/bulk_loader.h"

#include "engine/db/errors.h"
#include "engine/db/query.h"
#include "engine/db/table.h"

namespace torvik::db {

namespace {

// The fields of the target in the order of the source's columns.
std::vector<Field*> matched(const Query& source, Table& target) {
    std::vector<Field*> fields;
    QStringList missing;
    for (const QString& name : source.FieldNames()) {
        fields.push_back(target.FindField(name));
        if (!fields.back()) missing += name;
    }
    if (!missing.isEmpty())
        throw UsageError(QStringLiteral("Table %1 lacks the columns %2")
                             .arg(target.TableName(), missing.join(QStringLiteral(", "))));
    return fields;
}

int percentOf(const Query& source) {
    const int count = source.RecordCount();
    return count == 0 ? 100 : int(qint64{source.RecNo()} * 100 / count);
}

}  // namespace

qint64 BulkLoader::LoadFromDataSet(Query& source) {
    if (!session_) throw UsageError(QStringLiteral("The bulk loader has no connection"));
    if (source.Connection() == session_ && source.UniDirectional)
        throw UsageError(QStringLiteral("A unidirectional query cannot be loaded over its own session"));
    Table target(session_);
    target.SetTableName(TableName);
    target.CommandTimeout = CommandTimeout;
    target.Open();
    const std::vector<Field*> fields = matched(source, target);

    // A batch is a transaction of its own unless the caller has one.
    const bool transactions = !session_->InTransaction();
    int percent = -1;
    const auto endBatch = [&] {
        target.Flush();
        if (target.SentRows() != target.PostedRows())
            throw StatementError({ServerMessage{QStringLiteral("Of %1 rows for table %2 the server has %3")
                                                    .arg(target.PostedRows())
                                                    .arg(TableName)
                                                    .arg(target.SentRows()),
                                                0,
                                                0,
                                                0,
                                                0,
                                                {},
                                                {}}},
                                 QString());
        if (transactions && session_->InTransaction()) session_->Commit();
    };
    try {
        for (source.First(); !source.Eof(); source.Next()) {
            if (transactions && target.PostedRows() % Options.RowsPerBatch == 0) session_->StartTransaction();
            target.Append();
            for (size_t i = 0; i < fields.size(); ++i) fields[i]->SetValue(source.Fields(int(i)).AsValue());
            target.Post();
            if (target.PostedRows() % Options.RowsPerBatch == 0) endBatch();
            if (const int now = percentOf(source); OnProgress && now != percent && !source.UniDirectional) {
                percent = now;
                OnProgress(*this, percent);
            }
        }
        endBatch();
    } catch (...) {
        target.Discard();
        if (transactions) session_->Rollback();
        throw;
    }
    if (OnProgress && percent != 100) OnProgress(*this, 100);
    target.Close();
    return target.SentRows();
}

}  // namespace torvik::db
