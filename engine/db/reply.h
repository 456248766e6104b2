// A statement's reply, read from the connection as far as its user wants: row sets, counts and errors in the server's
// order. Used by Query and BatchedReads, which may leave one under way, and by all others through Connection::run and
// lastRows.
// Internal; implemented in odbc/.
#pragma once

#include <memory>
#include <vector>

#include "engine/db/argument.h"
#include "engine/db/row_store.h"

namespace torvik::db {

class Connection;

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
    // The rows of this row set that are left, after which the reply stands at the next one; none, and no columns, where
    // it stands at no row set.
    [[nodiscard]] RowStore takeRowSet();
    // Reads to the end.
    void finish();
    // Raises the errors met so far, which the operations above raise at the reply's end; the rest is cancelled then.
    void raiseErrors();
    [[nodiscard]] qint64 rowsAffected() const;

private:
    struct State;

    template <typename Work>
    auto wait(const Work& work);  // for the server to do it
    void advance();
    void note(int rc);  // what an ODBC call returned
    [[noreturn]] void fail();

    std::unique_ptr<State> state_;
};

// The rows of the reply's last row set; none, and no columns, when it has no row set.
[[nodiscard]] RowStore lastRows(Connection& connection, const Request& request);

}  // namespace torvik::db
