// A table bound by name for insertion row by row: Append, set columns, Post. Rows travel in blocks (row_sender.h), and
// yet order, defaults of columns not set, and the error raised stay those of one INSERT a row. Staging tables are
// filled with it.
//
// When an error surfaces: Post raises what it finds itself (unknown column, a value that does not fit its type). What
// the server objects to is raised by the Post that completes a block, by Flush, by Close, or by whatever next uses the
// session (a query, another table, StartTransaction, Commit): always before anything later runs. The rows before the
// failing one then stand (unless the error ended the transaction), the failing row and those after it do not. Rows that
// wait when their transaction ends, by a rollback or because the server ended it, are gone with it.
#pragma once

#include <QPointer>

#include "engine/db/data_set.h"
#include "engine/db/session.h"

namespace torvik::db {

class RowSender;
class TableShapes;
struct TableShape;

struct TableOptions {
    // Kept for its callers: rows never go through a server cursor.
    bool CursorUpdate = false;
    // Rows a block at most; 1 sends each row at once. A table with an insert trigger is sent row by row.
    int BlockRows = 1000;
    // The caller has no transaction on the session, and wants few round trips: a block that one statement holds goes
    // in one, with a transaction of its own. As BulkLoaderOptions::FewRoundTrips.
    bool FewRoundTrips = false;
};

class Table : public DataSet, private Unfinished {
public:
    explicit Table(Session* session = nullptr, QObject* parent = nullptr);
    // Sends what was posted; an error there cannot be raised and is lost, so call Close.
    ~Table() override;

    int CommandTimeout = 30;
    TableOptions Options;

    // Both may be changed only while closed, else UsageError.
    void SetTableName(const QString& name);
    [[nodiscard]] const QString& TableName() const { return name_; }
    void SetConnection(Session* session);
    [[nodiscard]] Session* Connection() const { return session_; }
    // Where Open looks for the table's columns before it asks the server; null: nowhere. Not owned.
    void SetShapes(TableShapes* shapes) { shapes_ = shapes; }

    // Reads the table's columns from the server; raises StatementError (208) when there is no such table. Holds no
    // rows.
    void Open();
    // Sends what was posted and closes; raises what the server objected to, and is closed then too.
    void Close() override;
    // Sends what was posted.
    void Flush();
    // Forgets what was posted and not sent: a rollback calls it.
    void Discard();
    // Rows posted since Open, and those that the server has confirmed.
    [[nodiscard]] qint64 PostedRows() const { return posted_; }
    [[nodiscard]] qint64 SentRows() const;

    void Edit() override;    // raises UsageError: a table object only inserts
    void Delete() override;  // likewise

protected:
    void store(Mode mode, EditBuffer& buffer) override;
    [[nodiscard]] bool keepsRows() const override { return false; }

private:
    struct Block;  // rows waiting, all with the same columns set
    void startBlock(const std::vector<bool>& set);
    [[nodiscard]] Session& session() const;
    void sendBlock();
    void finishWork() override { Flush(); }
    void releaseConnection() override {}
    void dropUnread() noexcept override {}
    void rolledBack() override { Discard(); }
    void connectionGone() noexcept override;

    QPointer<Session> session_;
    QString name_;
    TableShapes* shapes_ = nullptr;
    std::shared_ptr<TableShape> shape_;
    std::unique_ptr<Block> block_;
    std::vector<bool> set_;              // the columns that the last rows set,
    std::unique_ptr<RowSender> sender_;  // and who sends such rows
    qint64 posted_ = 0;
    qint64 sentBefore_ = 0;  // by senders before this one
};

}  // namespace torvik::db
