// An open connection to one server: what Session, Query, Table and StoredProc stand on. One reply (reply.h) at a time;
// whoever starts another must have read the first to its end. Internal; implemented in odbc/, which alone knows ODBC.
#pragma once

#include <memory>

#include "engine/db/argument.h"
#include "engine/db/connect_string.h"
#include "engine/db/errors.h"

namespace torvik::db {

// Begins a transaction unless there is one; its row tells how deep it was before: 0 where this has begun it.
[[nodiscard]] QString beginTransactionText();

class Connection {
public:
    // Raises ConnectionError.
    explicit Connection(const ConnectSettings& settings);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    [[nodiscard]] bool alive() const { return alive_; }
    // Whether it still stands although nobody has used it for a while, as far as this machine has heard: an end that
    // the server sent is known, a server that has vanished is not. No request may be under way.
    [[nodiscard]] bool stillStands() const;
    // Statements run so far: whoever remembers something of the server's state knows by it whether it may have changed.
    [[nodiscard]] quint64 statements() const { return statements_; }

    // Runs a request to its reply's end and gives the rows changed by all its statements, -1 when none counted.
    qint64 run(const Request& request);
    // The first column of the first row of the reply's last row set; null when there is none.
    [[nodiscard]] Value scalar(const QString& text, int timeout);
    // Closes it without another word to the server, which rolls back what was open. No reply may be under way.
    void abandon();
    // Whether rows can go by bulk copy (bulk_copy.h) at all.
    [[nodiscard]] bool hasBulkCopy() const;

private:
    friend class BulkCopy;
    friend class Reply;
    struct Handles;  // ODBC's, in odbc/handles.h

    // Sorts out what a failure is and raises it.
    [[noreturn]] void fail(QList<ServerMessage> errors, bool timedOut, const QString& statement);
    // Raises what the last bulk copy call left: StatementError, TimeoutError or ConnectionError. To be asked before
    // anything else of the connection; returns when it left nothing.
    void raiseBulkErrors(const QString& statement);
    // After a row that could not be sent, or a copy that was refused at its first row: FreeTDS leaves a connection then
    // that takes no further statement, so that it is given up. Raises ConnectionError.
    [[noreturn]] void loseBulk(const QString& statement);

    std::unique_ptr<Handles> handles_;
    bool alive_ = false;
    quint64 statements_ = 0;
};

}  // namespace torvik::db
