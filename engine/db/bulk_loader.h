// Copies all rows of an open query into a table of the loader's session, by column name. Rows go by the table object's
// block INSERT, so identity and default columns that the source lacks are filled as by any INSERT, and triggers and
// constraints hold. (Bulk copy proper is not used.)
#pragma once

#include <QObject>
#include <QPointer>
#include <functional>

#include "engine/db/session.h"

namespace torvik::db {

class Query;
struct BulkLoaderOptions {
    int RowsPerBatch = 10000;  // rows between two checks that the server has them, and a transaction's length at most
};

class BulkLoader : public QObject {
public:
    explicit BulkLoader(Session* session = nullptr, QObject* parent = nullptr) : QObject(parent), session_(session) {}

    QString TableName;
    BulkLoaderOptions Options;
    int CommandTimeout = 600;
    // Percent done, 0 to 100, whenever the number changes; what it throws stops the load and passes through.
    std::function<void(BulkLoader& sender, int percent)> OnProgress;

    void SetConnection(Session* session) { session_ = session; }
    [[nodiscard]] Session* Connection() const { return session_; }

    // From the query's first row to its last. Source columns that the table lacks raise UsageError naming them. Gives
    // the number of rows loaded; raises StatementError when the server confirms another number than was sent.
    qint64 LoadFromDataSet(Query& source);

private:
    QPointer<Session> session_;
};

}  // namespace torvik::db
