// An open connection, and a statement's reply being read from it: what Session, Query, Table and StoredProc stand on.
// One reply at a time; whoever starts another must have read the first to its end. Internal to engine/db.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "engine/db/argument.h"
#include "engine/db/connect_string.h"
#include "engine/db/errors.h"
#include "engine/db/row_store.h"

namespace torvik::db {

namespace odbc {
class BulkCalls;
}

class Connection {
public:
    // Raises ConnectionError.
    explicit Connection(const ConnectSettings& settings);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    [[nodiscard]] bool alive() const { return alive_; }
    // Statements run so far: whoever remembers something of the server's state knows by it whether it may have changed.
    [[nodiscard]] quint64 statements() const { return statements_; }

    // Runs a request to its reply's end and gives the rows changed by all its statements, -1 when none counted.
    qint64 run(const Request& request);
    // The first column of the first row of the reply's last row set; null when there is none.
    [[nodiscard]] Value scalar(const QString& text, int timeout);
    // Closes it without another word to the server, which rolls back what was open. No reply may be under way.
    void abandon();

    [[nodiscard]] odbc::BulkCalls bulkCalls() const;
    // Raises what the last bulk copy call left: StatementError, TimeoutError or ConnectionError. To be asked before
    // anything else of the connection; returns when it left nothing.
    void raiseBulkErrors(const QString& statement);
    // After a row that could not be sent, or a copy that was refused at its first row: FreeTDS leaves a connection then
    // that takes no further statement, so that it is given up. Raises ConnectionError.
    [[noreturn]] void loseBulk(const QString& statement);

private:
    friend class Reply;
    struct Handles;

    // Sorts out what a failure is and raises it.
    [[noreturn]] void fail(QList<ServerMessage> errors, bool timedOut, const QString& statement);

    std::unique_ptr<Handles> handles_;
    bool alive_ = false;
    quint64 statements_ = 0;
};

// The reply to one request. Each operation raises the errors that it meets: StatementError or TimeoutError when the
// session is usable, ConnectionError when it is lost; the reply is at its end then.
class Reply {
public:
    // Sends the request and reads as far as its first row set, or to the end when it has none.
    Reply(Connection& connection, const Request& request);
    ~Reply();  // a reply not read to its end is cancelled
    Reply(const Reply&) = delete;
    Reply& operator=(const Reply&) = delete;

    // Whether the reply stands at a row set, and that row set's columns.
    [[nodiscard]] bool hasRows() const;
    [[nodiscard]] const std::vector<FieldInfo>& columns() const;
    // Appends a block of the row set's rows; false at its end.
    bool fetch(RowStore& rows);
    // Passes over the rest of this row set to the next one; false at the end of the reply.
    bool nextRowSet();
    // Reads to the end.
    void finish();
    [[nodiscard]] qint64 rowsAffected() const;

private:
    struct State;

    void advance();
    void note(int rc);
    [[noreturn]] void fail();

    std::unique_ptr<State> state_;
};

// The rows of the reply's last row set; none, and no columns, when it has no row set.
[[nodiscard]] RowStore lastRows(Connection& connection, const Request& request);

}  // namespace torvik::db
