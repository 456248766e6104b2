// Reads one row set of a statement into a RowStore: row blocks bound column by column, long values piece by piece.
// Internal.
#pragma once

#include <memory>
#include <vector>

#include "engine/db/odbc/api.h"
#include "engine/db/row_store.h"

namespace torvik::db::odbc {

// The columns of the statement's present row set; empty when there is none.
[[nodiscard]] std::vector<FieldInfo> describeColumns(const Api& calls, const Handle& statement);

// Owns the buffers that the statement's columns are bound to, and unbinds them at its end: a later row set of another
// shape would be written into them otherwise. Ends before its statement does.
class RowReader {
public:
    RowReader(const Api& calls, const Handle& statement, std::vector<FieldInfo> columns);
    ~RowReader();
    RowReader(const RowReader&) = delete;
    RowReader& operator=(const RowReader&) = delete;

    [[nodiscard]] const std::vector<FieldInfo>& columns() const { return columns_; }
    // Appends the next block of rows. Gives ODBC's return code: SQL_NO_DATA at the end, SQL_ERROR when there is an
    // error to ask for (rows read before it are in the store).
    SQLRETURN fetch(RowStore& store);

private:
    struct Buffer;  // a bound column

    void bind();
    void store(RowStore& store, SQLULEN rows);
    SQLRETURN readUnbound(size_t column, RowStore& store);
    SQLRETURN readPieces(size_t column, RowStore& store);

    const Api& calls_;
    const Handle& statement_;
    std::vector<FieldInfo> columns_;
    std::vector<Buffer> bound_;  // the columns before the first long one
    SQLULEN blockRows_ = 1;
    SQLULEN fetched_ = 0;  // the driver keeps its address
    QByteArray piece_;
};

}  // namespace torvik::db::odbc
