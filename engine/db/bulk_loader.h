// Copies all rows of an open data set into a table of the loader's session, by column name, without holding them: a
// block at a time is read, sent and forgotten, and the next one is read while it is sent. Rows go by bulk copy wherever
// that does the same as INSERT (row_sender.h), so identity and default columns that the source lacks are filled, and
// constraints and triggers hold, as with INSERT.
#pragma once

#include <QObject>
#include <QPointer>
#include <functional>

#include "engine/db/session.h"

namespace torvik::db {

class DataSet;
class TableShapes;

struct BulkLoaderOptions {
    int RowsPerBatch = 10000;  // a batch is a transaction of its own, unless the caller has one
    // The caller has no transaction on the session, and wants few round trips: a batch that one statement holds goes in
    // one, larger ones in blocks of up to a whole batch. Progress comes between blocks as ever, and so more seldom.
    bool FewRoundTrips = false;
};

class BulkLoader : public QObject {
public:
    explicit BulkLoader(Session* session = nullptr, QObject* parent = nullptr) : QObject(parent), session_(session) {}

    QString TableName;
    BulkLoaderOptions Options;
    int CommandTimeout = 600;
    // Where the table's columns are looked for before the server is asked; null: nowhere. Not owned.
    TableShapes* Shapes = nullptr;
    // Percent done, 0 to 99 and 100 when all is in: whenever the number changes, and else every few hundredths of a
    // second, so that a window stays alive; while a block is being sent, when that has gone. Of a query that does not
    // know its number of rows (Query::UniDirectional without CountRows) 0 until the end. What it throws stops the load,
    // takes the batch back and passes through. It may use both sessions.
    std::function<void(BulkLoader& sender, int percent)> OnProgress;

    void SetConnection(Session* session) { session_ = session; }
    [[nodiscard]] Session* Connection() const { return session_; }

    // From the source's first row to its last: a query, or rows that are held. Source columns that the table lacks
    // raise UsageError naming them. Gives the number of rows loaded; raises StatementError when the server confirms
    // another number than was sent.
    qint64 LoadFromDataSet(DataSet& source);

private:
    class Load;

    QPointer<Session> session_;
};

}  // namespace torvik::db
