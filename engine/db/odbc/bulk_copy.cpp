// See bulk_copy.h.
#include "engine/db/bulk_copy.h"

#include <algorithm>
#include <utility>

#include "engine/db/connection.h"
#include "engine/db/errors.h"
#include "engine/db/meanwhile.h"
#include "engine/db/odbc/bulk_calls.h"
#include "engine/db/odbc/handles.h"
#include "engine/db/odbc/line.h"
#include "engine/db/reply.h"

namespace torvik::db {

using namespace odbc;

struct BulkCopy::State {
    // The driver is asked for its socket each time: one that was lost meanwhile has none.
    struct UnreadAllowed {
        const Connection::Handles& handles;
        explicit UnreadAllowed(const Connection::Handles& of) : handles(of) { allowUnread(handles.socket()); }
        ~UnreadAllowed() { watchLine(handles.socket()); }
        UnreadAllowed(const UnreadAllowed&) = delete;
        UnreadAllowed& operator=(const UnreadAllowed&) = delete;
    };

    Connection& connection;
    UnreadAllowed unreadAllowed;
    BulkCalls calls;
    int timeout;
    QString statement;
    std::vector<BulkCell> cells;
    QByteArray hints;
    bool sent = false;  // a row, so that there is something to end
};

namespace {

bool isGiven(const std::vector<int>& places, size_t column) {
    return std::ranges::find(places, int(column)) != places.end();
}

// A default that is wanted for a column that no row gives: bulk copy gives it only to nulls.
bool wantsDefaults(const TableShape& shape, const std::vector<int>& places) {
    for (size_t i = 0; i < shape.Columns.size(); ++i)
        if (shape.Columns[i].Default && !isGiven(places, i)) return true;
    return false;
}

}  // namespace

// Not served: columns whose types bulk copy cannot carry here, identity values that INSERT would refuse, columns not
// given and not null (nothing could be sent for them), and tables in which a null must stay null in one column and
// become the default in another.
bool BulkCopy::serves(Connection& connection, const TableShape& shape, const std::vector<int>& places) {
    const BulkCalls calls(connection.handles_->calls, connection.handles_->dbc);
    if (shape.Columns.empty() || places.empty() || shape.InsertTrigger || !connection.hasBulkCopy()) return false;
    const bool defaults = wantsDefaults(shape, places);
    for (size_t i = 0; i < shape.Columns.size(); ++i) {
        const TableColumn& column = shape.Columns[i];
        const bool given = isGiven(places, i);
        if (column.Identity && !given) continue;
        if (column.Identity || !BulkCell::of(column, calls.textForm())) return false;
        if (!given && !column.Nullable) return false;
        if (given && column.Default && defaults) return false;
    }
    return true;
}

BulkCopy::BulkCopy(Connection& connection, const TableShape& shape, const std::vector<int>& places,
                   const QString& opening, int timeout)
    : state_(new State{connection,
                       State::UnreadAllowed(*connection.handles_),
                       BulkCalls(connection.handles_->calls, connection.handles_->dbc),
                       timeout,
                       QStringLiteral("INSERT BULK ") + shape.Name,
                       {},
                       {}}) {
    State& s = *state_;
    // FreeTDS waits in bulk copy as long as in the statement before it.
    connection.run({opening.isEmpty() ? QStringLiteral("SELECT 1") : opening, {}, timeout});
    require(serverCall([&] { return s.calls.begin(shape.Name); }));
    s.hints = QByteArrayLiteral("CHECK_CONSTRAINTS");
    if (!wantsDefaults(shape, places)) s.hints += ", KEEP_NULLS";
    require(s.calls.setHints(s.hints));
    s.cells.reserve(places.size());
    for (const int place : places) s.cells.push_back(*BulkCell::of(shape.Columns[size_t(place)], s.calls.textForm()));
    for (size_t i = 0; i < shape.Columns.size(); ++i) {
        if (!isGiven(places, i) && !shape.Columns[i].Identity) require(s.calls.bind(nullptr, int(i) + 1));
    }
    for (size_t i = 0; i < places.size(); ++i) require(s.calls.bind(&s.cells[i], places[i] + 1));
}

BulkCopy::~BulkCopy() {
    if (state_->sent && state_->connection.alive()) serverCall([this] { static_cast<void>(state_->calls.done()); });
}

void BulkCopy::require(bool went) {
    if (went) return;
    state_->connection.raiseBulkErrors(state_->statement);
    throw StatementError(QStringLiteral("The driver refused bulk copy without a message"), state_->statement);
}

bool BulkCopy::send(std::span<const Value> row) {
    State& s = *state_;
    for (size_t i = 0; i < row.size(); ++i)
        if (!s.cells[i].put(row[i])) return false;
    if (!s.calls.sendRow()) s.connection.loseBulk(s.statement);
    s.sent = true;
    return true;
}

// A session that counts no rows (SET NOCOUNT ON) is asked for the number.
qint64 BulkCopy::done() {
    State& s = *state_;
    if (!std::exchange(s.sent, false)) return 0;
    const int rows = serverCall([&] { return s.calls.done(); });
    if (rows >= 0) return rows;
    s.connection.raiseBulkErrors(s.statement);
    return s.connection.scalar(QStringLiteral("SELECT @@ROWCOUNT"), s.timeout).toInt();
}

}  // namespace torvik::db
