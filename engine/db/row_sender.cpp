// See row_sender.h.
#include "engine/db/row_sender.h"

#include <algorithm>

#include "engine/db/bulk_copy.h"
#include "engine/db/connection.h"
#include "engine/db/errors.h"
#include "engine/db/sql_text.h"

namespace torvik::db {

namespace {

// The server takes 2100 parameters a call and 1000 rows an INSERT; beyond some hundred parameters a longer statement
// costs more to compile than the round trips that it saves.
constexpr size_t kMaxParameters = 1000;
constexpr size_t kMaxRows = 1000;

}  // namespace

RowSender::RowSender(Session& session, Connection& connection, TableShape& shape, std::vector<int> places, int timeout)
    : session_(session), shape_(shape), places_(std::move(places)), timeout_(timeout) {
    describe(shape, connection, timeout);
    bulkServes_ = BulkCopy::serves(connection, shape_, places_);
}

int RowSender::bestBlock() const {
    return shape_.InsertTrigger || places_.empty() ? 1 : int(kMaxRows);
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
    request.Text += QStringLiteral(" SELECT @@ROWCOUNT");
    request.Arguments.reserve(count * places_.size());
    for (size_t i = first; i < first + count; ++i)
        for (size_t p = 0; p < places_.size(); ++p)
            request.Arguments.push_back({row(rows, i)[p], shape_.Fields[size_t(places_[p])]});
    return request;
}

void RowSender::insert(Connection& connection, const RowBlock& rows, size_t first, size_t count) {
    // The last row set is the count; an INSERT trigger's may come before it.
    const RowStore answer = lastRows(connection, insertOf(rows, first, count));
    confirmed_ += answer.rowCount() > 0 ? answer.value(0, 0).toInt() : 0;
    session_.transactionUnchanged();
}

// A statement of many rows leaves none of them when it fails. Where the transaction is gone, so are the rows before the
// bad one; else they are sent again one by one, up to it. Gives whether that was done, and none was bad.
template <typename Send>
bool RowSender::sendOrFind(Connection& connection, const RowBlock& rows, size_t first, size_t count,
                           const Send& sendAll) {
    const bool inTransaction = session_.InTransaction();
    try {
        sendAll();
        session_.transactionUnchanged();
        return false;
    } catch (const TimeoutError&) {
        throw;
    } catch (const StatementError&) {
        if (count == 1 || session_.InTransaction() != inTransaction) throw;
    }
    for (size_t row = first; row < first + count; ++row) insert(connection, rows, row, 1);
    return true;
}

// Sends rows from the first one on, up to one that is not for bulk copy; gives how many.
size_t RowSender::bulk(Connection& connection, const RowBlock& rows) {
    size_t sent = 0;
    qint64 taken = 0;
    const bool oneByOne = sendOrFind(connection, rows, 0, rows.Rows, [&] {
        BulkCopy copy(connection, shape_, places_, timeout_);
        while (sent < rows.Rows && copy.send(row(rows, sent))) ++sent;
        taken = copy.done();
    });
    if (oneByOne) return rows.Rows;
    confirmed_ += taken;
    if (taken == qint64(sent)) return sent;
    ServerMessage message;
    message.Text =
        QStringLiteral("Of %1 rows for table %2 the server has taken %3").arg(sent).arg(shape_.Name).arg(taken);
    throw StatementError({message}, QString());
}

void RowSender::send(Connection& connection, const RowBlock& rows) {
    size_t first = 0;
    // Fewer rows than fill one statement go as that: bulk copy takes some round trips.
    if (bulkServes_ && rows.Rows > rowsPerInsert()) first = bulk(connection, rows);
    while (first < rows.Rows) {
        const size_t count = std::min(rowsPerInsert(), rows.Rows - first);
        sendOrFind(connection, rows, first, count, [&] { insert(connection, rows, first, count); });
        first += count;
    }
}

}  // namespace torvik::db
