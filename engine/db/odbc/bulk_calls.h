// The bulk copy calls of the driver in use. FreeTDS' are attributes of the connection, Microsoft's are functions of its
// library, found at run time. Internal; used by BulkCopy.
#pragma once

#include "engine/db/odbc/api.h"
#include "engine/db/odbc/bulk_cell.h"

namespace torvik::db::odbc {

// Asks for bulk copy; before the connection is opened.
void enableBulk(const Api& calls, const Handle& dbc);

class BulkCalls {
public:
    BulkCalls(const Api& calls, const Handle& dbc) : calls_(calls), dbc_(dbc) {}

    // Whether the driver has bulk copy.
    [[nodiscard]] bool available() const;
    [[nodiscard]] BulkCell::TextForm textForm() const;

    // Each says whether it went well; the messages are the connection's.
    [[nodiscard]] bool begin(const QString& table) const;
    [[nodiscard]] bool setHints(QByteArray& hints) const;
    // place: of the column in the table, from 1. No cell: the column stays null.
    [[nodiscard]] bool bind(const BulkCell* cell, int place) const;
    [[nodiscard]] bool sendRow() const;
    // Ends the copy; the rows that the server says it has taken, -1 when it did not say.
    [[nodiscard]] int done() const;

private:
    const Api& calls_;
    const Handle& dbc_;
};

}  // namespace torvik::db::odbc
