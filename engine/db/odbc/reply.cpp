// See reply.h.
#include "engine/db/reply.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "engine/db/connection.h"
#include "engine/db/meanwhile.h"
#include "engine/db/odbc/failures.h"
#include "engine/db/odbc/handles.h"
#include "engine/db/odbc/parameter_set.h"
#include "engine/db/odbc/row_reader.h"

namespace torvik::db {

using namespace odbc;

struct Reply::State {
    Connection& connection;
    const Api& calls;
    QString text;
    ParameterSet parameters;  // outlives the statement that is bound to it,
    Handle statement;
    std::unique_ptr<RowReader> reader;  // which outlives the reader
    QList<ServerMessage> errors;
    qint64 affected = -1;
    bool ended = false;
    bool timedOut = false;
    bool cancellable = false;
    std::mutex handing;  // over the statement: it may be cancelled while the thread beside frees it

    void cancel() {
        const std::scoped_lock lock(handing);
        if (statement.get() != SQL_NULL_HANDLE) calls.SQLCancel(statement.get());
    }
    void freeStatement() {
        Handle freed;
        const std::scoped_lock lock(handing);
        freed = std::exchange(statement, Handle());
    }
};

template <typename Work>
auto Reply::wait(const Work& work) {
    if (!state_->cancellable) return serverCall(work);
    return serverCall(work, [this] { state_->cancel(); });
}

Reply::Reply(Connection& connection, const Request& request)
    : state_(new State{connection, connection.handles_->calls, request.Text, {}, {}, nullptr, {}}) {
    State& s = *state_;
    s.cancellable = request.Cancellable;
    s.statement = Handle(s.calls, SQL_HANDLE_STMT, connection.handles_->dbc.get());
    s.calls.SQLSetStmtAttrW(s.statement.get(), SQL_ATTR_NOSCAN, number(SQL_NOSCAN_ON), 0);
    s.calls.SQLSetStmtAttrW(s.statement.get(), SQL_ATTR_QUERY_TIMEOUT, number(SQLULEN(std::max(request.Timeout, 0))),
                            0);
    s.parameters.bind(s.calls, s.statement, request.Arguments);
    ++connection.statements_;
    wait([&] {
        note(s.calls.SQLExecDirectW(s.statement.get(), wide(s.text), SQLINTEGER(s.text.size())));
        advance();
    });
}

// What is left of the reply is cancelled, for which the driver waits.
Reply::~Reply() {
    serverCall([this] { state_.reset(); });
}

bool Reply::hasRows() const {
    return state_->reader != nullptr;
}

const std::vector<FieldInfo>& Reply::columns() const {
    return state_->reader->columns();
}

qint64 Reply::rowsAffected() const {
    return state_->affected;
}

// Keeps what a call reported. After a time-out or a lost connection nothing more can come.
void Reply::note(int rc) {
    State& s = *state_;
    if (rc == SQL_SUCCESS || rc == SQL_NO_DATA) return;
    qsizetype before = s.errors.size();
    for (const ServerMessage& message : diagnostics(s.calls, s.statement)) {
        if (isTimeout(message)) s.timedOut = true;
        const bool echo = s.timedOut && message.SqlState == u"HY008";  // the cancelling that a time-out brings
        if (!isInformation(message) && !echo) s.errors += message;
        if (isFatal(message)) s.connection.alive_ = false;
    }
    if (rc != SQL_ERROR && rc != SQL_INVALID_HANDLE) return;
    if (s.connection.handles_->dead()) s.connection.alive_ = false;
    if (s.errors.isEmpty())
        s.errors += s.connection.alive_
                        ? bareMessage(QStringLiteral("The ODBC driver reported a failure without a message"))
                        : lostMessage();
    // A failure that says nothing new would be told for ever.
    if (!s.connection.alive_ || s.timedOut || rc == SQL_INVALID_HANDLE || s.errors.size() == before) s.ended = true;
}

// From the result that the statement stands at to the next row set, or to the end, where errors are raised.
void Reply::advance() {
    State& s = *state_;
    s.reader.reset();
    while (!s.ended) {
        std::vector<FieldInfo> columns = describeColumns(s.calls, s.statement);
        if (!columns.empty()) {
            s.reader = std::make_unique<RowReader>(s.calls, s.statement, std::move(columns));
            return;
        }
        SQLLEN count = -1;
        if (SQL_SUCCEEDED(s.calls.SQLRowCount(s.statement.get(), &count)) && count >= 0)
            s.affected = std::max<qint64>(s.affected, 0) + count;
        const SQLRETURN rc = s.calls.SQLMoreResults(s.statement.get());
        if (rc == SQL_NO_DATA) s.ended = true;
        note(rc);
    }
    // A driver may take a cut connection for the reply's end.
    if (s.connection.alive_ && s.connection.handles_->dead()) {
        s.connection.alive_ = false;
        if (s.errors.isEmpty()) s.errors += lostMessage();
    }
    if (!s.errors.isEmpty()) fail();
}

bool Reply::fetch(RowStore& rows) {
    State& s = *state_;
    const SQLRETURN rc = wait([&] { return s.reader->fetch(rows); });
    note(rc);
    if (SQL_SUCCEEDED(rc)) return true;
    if (s.ended) fail();
    return false;
}

bool Reply::nextRowSet() {
    wait([this] {
        State& s = *state_;
        if (s.reader) {
            s.reader.reset();
            const SQLRETURN rc = s.calls.SQLMoreResults(s.statement.get());
            if (rc == SQL_NO_DATA) s.ended = true;
            note(rc);
        }
        advance();
    });
    return hasRows();
}

RowStore Reply::takeRowSet() {
    RowStore rows(hasRows() ? columns() : std::vector<FieldInfo>{});
    if (!hasRows()) return rows;
    while (fetch(rows)) {
    }
    nextRowSet();
    return rows;
}

void Reply::finish() {
    while (hasRows()) nextRowSet();
}

void Reply::raiseErrors() {
    State& s = *state_;
    if (s.errors.isEmpty()) return;
    s.reader.reset();
    serverCall([&s] { s.freeStatement(); });  // cancels what is left of the reply, for which the driver waits
    fail();
}

void Reply::fail() {
    State& s = *state_;
    s.ended = true;
    s.reader.reset();
    s.freeStatement();
    s.connection.fail(std::move(s.errors), s.timedOut, s.text);
}

RowStore lastRows(Connection& connection, const Request& request) {
    Reply reply(connection, request);
    RowStore last = reply.takeRowSet();
    while (reply.hasRows()) last = reply.takeRowSet();
    return last;
}

}  // namespace torvik::db
