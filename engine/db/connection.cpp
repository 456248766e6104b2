// See connection.h.
#include "engine/db/connection.h"

#include <algorithm>
#include <functional>

#include "engine/db/odbc_bulk.h"
#include "engine/db/odbc_parameters.h"
#include "engine/db/odbc_rows.h"

namespace torvik::db {

using namespace odbc;

namespace {

// Numbers below are the server's; from kFirstClientNumber to kLastClientNumber they are FreeTDS' own.
constexpr int kFirstClientNumber = 20001;
constexpr int kLastClientNumber = 20299;
constexpr int kConnectionFailed = 20002;  // FreeTDS' closing remark on any failed login

// The server closes the connection behind a message of this severity.
constexpr int kFatal = 20;

bool fromServer(const ServerMessage& m) {
    return m.Number != 0 && (m.Number < kFirstClientNumber || m.Number > kLastClientNumber);
}

ServerMessage bareMessage(const QString& text) {
    ServerMessage message;
    message.Text = text;
    return message;
}

ServerMessage lostMessage() {
    return bareMessage(QStringLiteral("The connection to the server is lost"));
}

bool isTimeout(const ServerMessage& m) {
    return m.SqlState == u"HYT00";
}

bool isFatal(const ServerMessage& m) {
    return m.Severity >= kFatal;
}

bool isUnknownDatabase(const ServerMessage& m) {
    return m.Number == 4060 || m.Number == 911;
}

bool isLoginFailure(const ServerMessage& m) {
    return (m.Number >= 18450 && m.Number <= 18488) || m.SqlState == u"28000";
}

// 18456 follows 4060 too, so that the database is asked for first.
ConnectionError::Reason reasonOf(const QList<ServerMessage>& messages) {
    if (std::ranges::any_of(messages, isUnknownDatabase)) return ConnectionError::Reason::UnknownDatabase;
    if (std::ranges::any_of(messages, isLoginFailure)) return ConnectionError::Reason::LoginFailed;
    if (std::ranges::any_of(messages, fromServer)) return ConnectionError::Reason::Refused;
    return ConnectionError::Reason::Unreachable;
}

// FreeTDS' closing remarks on any failed connection say nothing where another message does.
bool isRemark(const ServerMessage& m) {
    return m.Number == kConnectionFailed || (m.Number == 0 && m.SqlState == u"08001");
}

ConnectionError connectFailure(QList<ServerMessage> messages, const ConnectSettings& settings) {
    messages.removeIf(isInformation);
    const ConnectionError::Reason reason = reasonOf(messages);
    messages.removeIf(isRemark);
    // The driver puts 18456 before 4060, which the server sent first and which says what is wrong.
    std::ranges::stable_partition(messages, isUnknownDatabase);
    if (messages.isEmpty()) {
        messages += bareMessage(QStringLiteral("the host is not known or cannot be reached"));
    }
    if (reason == ConnectionError::Reason::Unreachable)
        messages.first().Text =
            QStringLiteral("Cannot connect to server \"%1\": %2").arg(settings.Server, messages.first().Text);
    return {reason, messages};
}

}  // namespace

struct Connection::Handles {
    const Api& calls;
    Handle env;
    Handle dbc;

    [[nodiscard]] bool dead() const {
        SQLINTEGER answer = SQL_CD_FALSE;
        calls.SQLGetConnectAttrW(dbc.get(), SQL_ATTR_CONNECTION_DEAD, &answer, SQL_IS_INTEGER, nullptr);
        return answer == SQL_CD_TRUE;
    }
};

Connection::Connection(const ConnectSettings& settings) {
    if (settings.Provider == ProviderKind::Compact)
        throw ConnectionError(ConnectionError::Reason::NoDriver,
                              QStringLiteral("There is no driver for SQL Server Compact on this platform"));
    const Api& calls = api();
    const QString text = odbcConnectString(settings, calls.driver);
    Handle env(calls, SQL_HANDLE_ENV, SQL_NULL_HANDLE);
    calls.SQLSetEnvAttr(env.get(), SQL_ATTR_ODBC_VERSION, number(SQL_OV_ODBC3), 0);
    Handle dbc(calls, SQL_HANDLE_DBC, env.get());
    enableBulk(calls, dbc);
    calls.SQLSetConnectAttrW(dbc.get(), SQL_ATTR_LOGIN_TIMEOUT, number(SQLULEN(settings.ConnectionTimeout)), 0);
    SQLSMALLINT length = 0;
    const SQLRETURN rc = calls.SQLDriverConnectW(dbc.get(), nullptr, wide(text), SQLSMALLINT(text.size()), nullptr, 0,
                                                 &length, SQL_DRIVER_NOPROMPT);
    if (!SQL_SUCCEEDED(rc)) throw connectFailure(diagnostics(calls, dbc), settings);
    handles_ = std::make_unique<Handles>(Handles{calls, std::move(env), std::move(dbc)});
    alive_ = true;
}

Connection::~Connection() {
    if (handles_) handles_->calls.SQLDisconnect(handles_->dbc.get());
}

qint64 Connection::run(const Request& request) {
    Reply reply(*this, request);
    reply.finish();
    return reply.rowsAffected();
}

Value Connection::scalar(const QString& text, int timeout) {
    const RowStore rows = lastRows(*this, {text, {}, timeout});
    return rows.rowCount() > 0 ? rows.value(0, 0) : Value();
}

void Connection::abandon() {
    alive_ = false;
    handles_->calls.SQLDisconnect(handles_->dbc.get());
}

BulkCalls Connection::bulkCalls() const {
    return {handles_->calls, handles_->dbc};
}

// The messages are read first: any other call to the connection forgets them.
void Connection::raiseBulkErrors(const QString& statement) {
    QList<ServerMessage> errors = diagnostics(handles_->calls, handles_->dbc);
    errors.removeIf(isInformation);
    const bool timedOut = std::ranges::any_of(errors, isTimeout);
    if (handles_->dead() || std::ranges::any_of(errors, isFatal)) alive_ = false;
    // What the driver says besides of its own tells nothing.
    if (std::ranges::any_of(errors, fromServer)) errors.removeIf(std::not_fn(fromServer));
    if (!alive_ || !errors.isEmpty()) fail(std::move(errors), timedOut, statement);
}

void Connection::loseBulk(const QString& statement) {
    QList<ServerMessage> errors = diagnostics(handles_->calls, handles_->dbc);
    alive_ = false;
    fail(std::move(errors), false, statement);
}

void Connection::fail(QList<ServerMessage> errors, bool timedOut, const QString& statement) {
    if (!alive_) {
        if (errors.isEmpty() || (std::ranges::none_of(errors, fromServer) && errors.last().Text != lostMessage().Text))
            errors += lostMessage();
        throw ConnectionError(ConnectionError::Reason::Lost, errors, statement);
    }
    if (timedOut) throw TimeoutError(errors, statement);
    throw StatementError(errors, statement);
}

RowStore lastRows(Connection& connection, const Request& request) {
    Reply reply(connection, request);
    RowStore last(std::vector<FieldInfo>{});
    while (reply.hasRows()) {
        last = RowStore(reply.columns());
        while (reply.fetch(last)) {
        }
        reply.nextRowSet();
    }
    return last;
}

struct Reply::State {
    Connection& connection;
    const Api& calls;
    QString text;
    Handle statement;
    ParameterSet parameters;
    std::unique_ptr<RowReader> reader;
    QList<ServerMessage> errors;
    qint64 affected = -1;
    bool ended = false;
    bool timedOut = false;
};

Reply::Reply(Connection& connection, const Request& request)
    : state_(new State{connection, connection.handles_->calls, request.Text, {}, {}, nullptr, {}}) {
    State& s = *state_;
    s.statement = Handle(s.calls, SQL_HANDLE_STMT, connection.handles_->dbc.get());
    s.calls.SQLSetStmtAttrW(s.statement.get(), SQL_ATTR_NOSCAN, number(SQL_NOSCAN_ON), 0);
    s.calls.SQLSetStmtAttrW(s.statement.get(), SQL_ATTR_QUERY_TIMEOUT, number(SQLULEN(std::max(request.Timeout, 0))),
                            0);
    s.parameters.bind(s.calls, s.statement, request.Arguments);
    ++connection.statements_;
    const SQLRETURN rc = s.calls.SQLExecDirectW(s.statement.get(), wide(s.text), SQLINTEGER(s.text.size()));
    note(rc);
    advance();
}

Reply::~Reply() = default;

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
    const SQLRETURN rc = s.reader->fetch(rows);
    note(rc);
    if (SQL_SUCCEEDED(rc)) return true;
    if (s.ended) fail();
    return false;
}

bool Reply::nextRowSet() {
    State& s = *state_;
    if (s.reader) {
        s.reader.reset();
        const SQLRETURN rc = s.calls.SQLMoreResults(s.statement.get());
        if (rc == SQL_NO_DATA) s.ended = true;
        note(rc);
    }
    advance();
    return hasRows();
}

void Reply::finish() {
    while (hasRows()) nextRowSet();
}

void Reply::fail() {
    State& s = *state_;
    s.ended = true;
    s.reader.reset();
    s.statement = Handle();
    s.connection.fail(std::move(s.errors), s.timedOut, s.text);
}

}  // namespace torvik::db
