// See row_sender.h.
#include "engine/db/row_sender.h"

#include <algorithm>

#include "engine/db/bulk_copy.h"
#include "engine/db/connection.h"
#include "engine/db/errors.h"
#include "engine/db/meanwhile.h"
#include "engine/db/reply.h"
#include "engine/db/sql_text.h"

namespace torvik::db {

namespace {

// The server takes 2100 parameters a call and 1000 rows an INSERT; beyond some hundred parameters a longer statement
// costs more to compile than the round trips that it saves.
constexpr size_t kMaxParameters = 1000;
constexpr size_t kMaxRows = 1000;

// Of a bulk copy that is to save round trips: so many rows, or fewer of many columns.
constexpr size_t kMaxCopiedRows = 10'000;
constexpr size_t kMaxCopiedValues = 100'000;

// "Cannot roll back": there is no such save point.
constexpr int kNoSavePoint = 6401;

// The server has taken another number of rows than it was sent, and refused none.
class Miscounted : public StatementError {
public:
    using StatementError::StatementError;
};

}  // namespace

RowSender::RowSender(Session& session, Connection& connection, TableShape& shape, std::vector<int> places, int timeout)
    : session_(session), shape_(shape), places_(std::move(places)), timeout_(timeout) {
    describe(shape, connection, timeout);
    bulkServes_ = BulkCopy::serves(connection, shape_, places_);
}

// A trigger may make rows of a failed statement stand, and what the catalogue does not know may have one: those go row
// by row, and none is sent twice.
int RowSender::bestBlock() const {
    return shape_.Columns.empty() || shape_.InsertTrigger || places_.empty() ? 1 : int(kMaxRows);
}

int RowSender::largestBlock() const {
    if (bestBlock() == 1 || !bulkServes_) return bestBlock();
    return int(std::clamp(kMaxCopiedValues / places_.size(), kMaxRows, kMaxCopiedRows));
}

std::span<const Value> RowSender::row(const RowBlock& rows, size_t index) const {
    return {rows.Values.data() + index * places_.size(), places_.size()};
}

size_t RowSender::rowsPerInsert() const {
    if (bestBlock() == 1) return 1;
    return std::clamp<size_t>(kMaxParameters / places_.size(), 1, kMaxRows);
}

Request RowSender::insertOf(const RowBlock& rows, size_t first, size_t count) const {
    Request request;
    request.Timeout = timeout_;
    request.Text = QStringLiteral("INSERT INTO ") + shape_.Name;
    if (places_.empty()) {
        request.Text += QStringLiteral(" DEFAULT VALUES");
    } else {
        QStringList names;
        for (const int place : places_) names += bracketed(shape_.Fields[size_t(place)].Name);
        const QString row = u'(' + QStringList(qsizetype(places_.size()), QStringLiteral("?")).join(u',') + u')';
        request.Text += QStringLiteral(" (") + names.join(u',') + QStringLiteral(") VALUES ") +
                        QStringList(qsizetype(count), row).join(u',');
    }
    request.Arguments.reserve(count * places_.size());
    for (size_t i = first; i < first + count; ++i)
        for (size_t p = 0; p < places_.size(); ++p)
            request.Arguments.push_back({row(rows, i)[p], shape_.Fields[size_t(places_[p])]});
    return request;
}

void RowSender::confirm(size_t sent, qint64 taken) {
    if (taken != qint64(sent))
        throw Miscounted(
            QStringLiteral("Of %1 rows for table %2 the server has taken %3").arg(sent).arg(shape_.Name).arg(taken));
    confirmed_ += taken;
}

void RowSender::insert(Connection& connection, const RowBlock& rows, size_t first, size_t count,
                       const QString& opening) {
    Request request = insertOf(rows, first, count);
    request.Text = opening + request.Text + QStringLiteral(" SELECT @@ROWCOUNT");
    // The last row set is the count; an INSERT trigger's may come before it.
    const RowStore answer = lastRows(connection, request);
    confirm(count, answer.rowCount() > 0 ? answer.value(0, 0).toInt() : 0);
    session_.transactionUnchanged();
}

// Sends rows by bulk copy up to one that is not for it, and gives that one's place.
size_t RowSender::bulk(Connection& connection, const RowBlock& rows, size_t first, size_t end, const QString& opening) {
    size_t next = first;
    BulkCopy copy(connection, shape_, places_, opening, timeout_);
    serverCall([&] {
        while (next < end && copy.send(row(rows, next))) ++next;
    });
    confirm(next - first, copy.done());
    session_.transactionUnchanged();
    return next;
}

// Of what sendAll sends either all rows stand or none: behind a save point of the caller's transaction, or in a
// transaction of its own. True: all do. False: the server refused it and nothing is left of it, so that its rows can be
// sent again to find the bad one. Where an error has ended the caller's transaction, the rows before are gone too, and
// it is raised.
template <typename Send>
bool RowSender::allOrNone(Connection& connection, const Send& sendAll) {
    const bool inTransaction = session_.InTransaction();
    // A name of its own: a block that failed before its save point was made must not go back to an earlier one.
    const QString savePoint = QStringLiteral("torvik_%1").arg(connection.statements());
    const qint64 before = confirmed_;
    if (!inTransaction) session_.StartTransaction();
    try {
        sendAll(inTransaction ? QStringLiteral("SAVE TRANSACTION %1 ").arg(savePoint) : QString());
        if (!inTransaction) session_.Commit();
        return true;
    } catch (const CommitInDoubt&) {
        throw;
    } catch (const Error& e) {
        confirmed_ = before;
        if (!inTransaction)
            session_.Rollback();
        else if (!e.connectionUsable() || e.timedOut() || !session_.InTransaction())
            throw;
        else
            rollBackTo(connection, savePoint);
        const bool refused = dynamic_cast<const StatementError*>(&e) && !dynamic_cast<const Miscounted*>(&e);
        if (!refused || e.timedOut()) throw;
    }
    return false;
}

void RowSender::rollBackTo(Connection& connection, const QString& savePoint) {
    try {
        connection.run({QStringLiteral("ROLLBACK TRANSACTION ") + savePoint, {}, timeout_});
    } catch (const StatementError& e) {
        if (e.Number != kNoSavePoint) throw;
    }
    session_.transactionUnchanged();
}

// As its callers would have sent them: the rows before the bad one stand.
void RowSender::oneByOne(Connection& connection, const RowBlock& rows, size_t first, size_t end) {
    for (size_t row = first; row < end; ++row) insert(connection, rows, row, 1);
}

// A piece goes by bulk copy up to a row that is not for it, and on by INSERT.
void RowSender::sendPiece(Connection& connection, const RowBlock& rows, size_t first, size_t end) {
    // Fewer rows than fill one statement go as that: bulk copy takes some round trips.
    if (bulkServes_ && end - first > rowsPerInsert()) {
        size_t next = first;
        if (!allOrNone(connection, [&](const QString& opening) { next = bulk(connection, rows, first, end, opening); }))
            return oneByOne(connection, rows, first, end);
        first = next;
    }
    while (first < end) {
        const size_t count = std::min(rowsPerInsert(), end - first);
        if (count == 1)
            insert(connection, rows, first, 1);
        else if (!allOrNone(connection,
                            [&](const QString& opening) { insert(connection, rows, first, count, opening); }))
            return oneByOne(connection, rows, first, end);
        first += count;
    }
}

// A large block is one copy. Where that is refused, or comes to a row that is not for it, the rest goes in pieces, so
// that few rows go one by one.
void RowSender::send(Connection& connection, const RowBlock& rows) {
    size_t first = 0;
    if (bulkServes_ && rows.Rows > kMaxRows) {
        size_t next = 0;
        if (allOrNone(connection,
                      [&](const QString& opening) { next = bulk(connection, rows, 0, rows.Rows, opening); }))
            first = next;
    }
    while (first < rows.Rows) {
        const size_t end = std::min(first + kMaxRows, rows.Rows);
        sendPiece(connection, rows, first, end);
        first = end;
    }
}

// The commit comes last, and only behind a count that has been told: whatever the server objects to, the rows do not
// stand, once what is left open has been rolled back.
bool RowSender::sendAlone(Connection& connection, const RowBlock& rows) {
    if (bestBlock() == 1 || rows.Rows == 0 || rows.Rows > rowsPerInsert()) return false;
    Request request = insertOf(rows, 0, rows.Rows);
    request.Text = QStringLiteral("DECLARE @torvik_rows int BEGIN TRANSACTION IF @@TRANCOUNT > 0 ") + request.Text +
                   QStringLiteral(
                       " SET @torvik_rows = @@ROWCOUNT SELECT @torvik_rows"
                       " IF @@ERROR = 0 AND @torvik_rows = %1 COMMIT TRANSACTION ELSE ROLLBACK TRANSACTION")
                       .arg(rows.Rows);
    try {
        const RowStore answer = lastRows(connection, request);
        confirm(rows.Rows, answer.rowCount() > 0 ? answer.value(0, 0).toInt() : 0);
        return true;
    } catch (const Error& e) {
        if (dynamic_cast<const Miscounted*>(&e)) throw;
        session_.Rollback();
        if (!dynamic_cast<const StatementError*>(&e) || e.timedOut()) throw;
    }
    return false;
}

}  // namespace torvik::db
