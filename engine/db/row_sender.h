// Sends blocks of rows to a table so that it cannot be told from one INSERT a row: bulk copy where that does the same,
// else INSERT statements of many rows; and when a block fails, row by row up to the bad one. Internal; used by Table
// and BulkLoader.
#pragma once

#include <span>
#include <vector>

#include "engine/db/argument.h"
#include "engine/db/session.h"
#include "engine/db/table_shape.h"

namespace torvik::db {

class Connection;

// Rows of as many values each as a sender has places.
struct RowBlock {
    std::vector<Value> Values;
    size_t Rows = 0;
};

class RowSender {
public:
    // places: the fields of shape, which must outlive this, that each row gives. Asks the catalogue for what shape
    // lacks.
    RowSender(Session& session, Connection& connection, TableShape& shape, std::vector<int> places, int timeout);

    [[nodiscard]] const std::vector<int>& places() const { return places_; }
    // Rows that are best sent together: 1 for a table with an insert trigger.
    [[nodiscard]] int bestBlock() const;
    // Rows that are best sent together where each round trip counts: a copy of so many is still no burden here.
    [[nodiscard]] int largestBlock() const;
    // Raises what the server objects to. Then the rows before the bad one stand, unless the error ended the
    // transaction; the bad one and those after it do not. StatementError too when the server counts other than was
    // sent.
    void send(Connection& connection, const RowBlock& rows);
    // For a session without a transaction: sends rows that one statement holds in one round trip, together with the
    // transaction that makes them all or none. False: they are not such rows, or the server has refused them; nothing
    // of them stands then, and send tells which row is the bad one. Raises all else, as send does.
    [[nodiscard]] bool sendAlone(Connection& connection, const RowBlock& rows);
    // Rows that the server has confirmed, all blocks together.
    [[nodiscard]] qint64 confirmed() const { return confirmed_; }

private:
    [[nodiscard]] std::span<const Value> row(const RowBlock& rows, size_t index) const;
    [[nodiscard]] size_t rowsPerInsert() const;
    [[nodiscard]] Request insertOf(const RowBlock& rows, size_t first, size_t count) const;
    void sendPiece(Connection& connection, const RowBlock& rows, size_t first, size_t end);
    void insert(Connection& connection, const RowBlock& rows, size_t first, size_t count, const QString& opening = {});
    [[nodiscard]] size_t bulk(Connection& connection, const RowBlock& rows, size_t first, size_t end,
                              const QString& opening);
    void confirm(size_t sent, qint64 taken);
    template <typename Send>
    bool allOrNone(Connection& connection, const Send& sendAll);
    void rollBackTo(Connection& connection, const QString& savePoint);
    void oneByOne(Connection& connection, const RowBlock& rows, size_t first, size_t end);

    Session& session_;
    const TableShape& shape_;
    std::vector<int> places_;
    int timeout_;
    bool bulkServes_ = false;
    qint64 confirmed_ = 0;
};

}  // namespace torvik::db
