// See connection.h.
#include "engine/db/connection.h"

#include <algorithm>
#include <cstdint>
#include <functional>

#include "engine/db/meanwhile.h"
#include "engine/db/odbc/bulk_calls.h"
#include "engine/db/odbc/failures.h"
#include "engine/db/odbc/handles.h"
#include "engine/db/odbc/line.h"
#include "engine/db/reply.h"

namespace torvik::db {

using namespace odbc;

namespace {

// The largest that servers take on encrypted connections too. Of the 4 KB that drivers ask for by themselves, each
// costs both sides a call of the operating system.
constexpr SQLULEN kPacketBytes = 16'000;

}  // namespace

bool Connection::Handles::dead() const {
    SQLINTEGER answer = SQL_CD_FALSE;
    calls.SQLGetConnectAttrW(dbc.get(), SQL_ATTR_CONNECTION_DEAD, &answer, SQL_IS_INTEGER, nullptr);
    return answer == SQL_CD_TRUE;
}

int Connection::Handles::socket() const {
    if (!calls.driver.FreeTds || dead()) return kNoSocket;
    SQLPOINTER answer = nullptr;  // as wide as any system's number of a socket
    SQLSMALLINT length = 0;
    if (!SQL_SUCCEEDED(calls.SQLGetInfo(dbc.get(), SQL_INFO_FREETDS_SOCKET, &answer, sizeof answer, &length)))
        return kNoSocket;
    return static_cast<int>(reinterpret_cast<std::intptr_t>(answer));
}

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
    calls.SQLSetConnectAttrW(dbc.get(), SQL_ATTR_PACKET_SIZE, number(kPacketBytes), 0);
    SQLSMALLINT length = 0;
    const SQLRETURN rc = serverCall([&] {
        return calls.SQLDriverConnectW(dbc.get(), nullptr, wide(text), SQLSMALLINT(text.size()), nullptr, 0, &length,
                                       SQL_DRIVER_NOPROMPT);
    });
    if (!SQL_SUCCEEDED(rc)) throw connectFailure(diagnostics(calls, dbc), settings);
    handles_ = std::make_unique<Handles>(Handles{calls, std::move(env), std::move(dbc)});
    watchLine(handles_->socket());
    alive_ = true;
}

Connection::~Connection() {
    if (handles_) handles_->calls.SQLDisconnect(handles_->dbc.get());
}

bool Connection::stillStands() const {
    return alive_ && !handles_->dead() && lineStands(handles_->socket());
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

bool Connection::hasBulkCopy() const {
    return BulkCalls(handles_->calls, handles_->dbc).available();
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

}  // namespace torvik::db
