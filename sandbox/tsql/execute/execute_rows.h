// Rows of SQLite values between the query that finds them and the statement that writes them, and the table that they
// go to. Used by the execute_*.cpp files and the constraints.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "sandbox/store/databases/connection.h"
#include "sandbox/tsql/execute/execute.h"

namespace sandbox {

// One row, read by place.
class RowView {
public:
    virtual ~RowView() = default;
    [[nodiscard]] virtual bool isNull(std::size_t cell) const = 0;
    [[nodiscard]] virtual std::int64_t integer(std::size_t cell) const = 0;
    // Bytes stay the row's: `to` is run and reset before the row goes on to the next.
    virtual void bind(sqlite3_stmt* to, int parameter, std::size_t cell) const = 0;
};

// The current row of a statement.
class StatementRow : public RowView {
public:
    explicit StatementRow(sqlite3_stmt* statement) : statement_(statement) {}
    [[nodiscard]] bool isNull(std::size_t cell) const override {
        return sqlite3_column_type(statement_, static_cast<int>(cell)) == SQLITE_NULL;
    }
    [[nodiscard]] std::int64_t integer(std::size_t cell) const override {
        return sqlite3_column_int64(statement_, static_cast<int>(cell));
    }
    void bind(sqlite3_stmt* to, int parameter, std::size_t cell) const override {
        const int column = static_cast<int>(cell);
        if (sqlite3_column_type(statement_, column) == SQLITE_BLOB) {
            const void* bytes = sqlite3_column_blob(statement_, column);
            const auto length = static_cast<sqlite3_uint64>(sqlite3_column_bytes(statement_, column));
            sqlite3_bind_blob64(to, parameter, length == 0 ? "" : bytes, length, SQLITE_STATIC);
        } else {
            sqlite3_bind_value(to, parameter, sqlite3_column_value(statement_, column));
        }
    }

private:
    sqlite3_stmt* statement_;
};

// Rows held in memory.
class RowBuffer {
public:
    explicit RowBuffer(std::size_t columns) : columns_(columns) {}

    void add(sqlite3_stmt* row);
    [[nodiscard]] std::size_t size() const { return columns_ == 0 ? 0 : cells_.size() / columns_; }
    [[nodiscard]] std::int64_t integer(std::size_t row, std::size_t column) const { return at(row, column).integer; }

    class Row : public RowView {
    public:
        Row(const RowBuffer& buffer, std::size_t row) : buffer_(&buffer), row_(row) {}
        [[nodiscard]] bool isNull(std::size_t cell) const override;
        [[nodiscard]] std::int64_t integer(std::size_t cell) const override { return buffer_->integer(row_, cell); }
        void bind(sqlite3_stmt* to, int parameter, std::size_t cell) const override;

    private:
        const RowBuffer* buffer_;
        std::size_t row_;
    };
    [[nodiscard]] Row row(std::size_t number) const { return {*this, number}; }

private:
    struct Cell {
        int kind = SQLITE_NULL;
        int length = 0;
        union {
            std::int64_t integer = 0;
            double real;
            std::size_t offset;  // of text and bytes
        };
    };
    [[nodiscard]] const Cell& at(std::size_t row, std::size_t column) const { return cells_[row * columns_ + column]; }

    std::size_t columns_;
    std::vector<Cell> cells_;
    std::string bytes_;
};

// The table that a statement writes to, as this session finds it now. Raises 208 when it is gone, 259 for a catalogue
// view, 4406 for a view.
[[nodiscard]] FoundObject writeTarget(const ExecuteContext& context, const ResolvedObject& target);

// Once its database is locked: the table as it is now. Raises 3961 where another session has changed it since the
// statement was bound (it waited for the lock).
void requireUnchanged(const ExecuteContext& context, const FoundObject& table);
// The same for statements that look at the table's definition themselves: finds it anew, if it is still there.
[[nodiscard]] std::optional<FoundObject> findAgain(const ExecuteContext& context, const FoundObject& table);

[[nodiscard]] ResolvedObject resolved(const FoundObject& found);
[[nodiscard]] std::string tableSql(const FoundObject& table);  // "db5"."t1", quoted
// 'db.dbo.t' and 'dbo.t' as messages show them.
[[nodiscard]] std::string fullName(const FoundObject& table);
[[nodiscard]] std::string shortName(const FoundObject& table);

// The stored timestamp column of a table; nullptr where it has none.
[[nodiscard]] const ColumnDef* rowVersionColumn(const ObjectDef& table);
// Binds the next row version of the table's database.
void bindRowVersion(Connection& connection, const FoundObject& table, sqlite3_stmt* to, int parameter);

// Binds row id parameters (Input, slot 0) of a bound check.
void bindRowId(const Statement& statement, const BoundQuery& query, std::int64_t rowId);

}  // namespace sandbox
