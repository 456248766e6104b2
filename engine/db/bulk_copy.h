// Rows into a table by the server's bulk copy. One copy is one statement to the server: it takes all rows or none.
// Internal; used by RowSender.
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "engine/db/table_shape.h"

namespace torvik::db {

class Connection;

class BulkCopy {
public:
    // Whether bulk copy does with such rows what INSERT does. places: the fields that each row gives.
    [[nodiscard]] static bool serves(Connection& connection, const TableShape& shape, const std::vector<int>& places);

    // Each operation raises StatementError, TimeoutError or ConnectionError, after which the copy is at its end.
    // opening: a statement to run just before it, or none. timeout: seconds that the server may be silent, 0: for ever.
    BulkCopy(Connection& connection, const TableShape& shape, const std::vector<int>& places, const QString& opening,
             int timeout);
    ~BulkCopy();  // a copy not done is ended; what was sent is for the caller's transaction to take back
    BulkCopy(const BulkCopy&) = delete;
    BulkCopy& operator=(const BulkCopy&) = delete;

    // Sends a row, its values in the order of places. False: it is one for INSERT, and was not sent.
    [[nodiscard]] bool send(std::span<const Value> row);
    // The number of rows that the server says it has taken.
    [[nodiscard]] qint64 done();

private:
    struct State;

    void require(bool went);

    std::unique_ptr<State> state_;
};

}  // namespace torvik::db
