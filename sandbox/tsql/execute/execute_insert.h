// Writing new rows into one table: identity values, nulls, unique keys, and at the end foreign keys and checks. Used by
// INSERT in all its forms, SELECT INTO and bulk load; the caller holds the Write.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "sandbox/tsql/execute/constraint.h"
#include "sandbox/tsql/execute/execute_rows.h"

namespace sandbox {

class RowInserter {
public:
    struct Options {
        bool checkConstraints = true;   // else foreign keys and checks are not looked at
        bool defaultsForNulls = false;  // bulk load: a null becomes the column's default
    };

    RowInserter(const ExecuteContext& context, const FoundObject& table, const BoundInsert& insert, Options options);
    ~RowInserter();  // identity values that were given out stay so
    RowInserter(const RowInserter&) = delete;
    RowInserter& operator=(const RowInserter&) = delete;

    // source: the cells that insert.columns speak of.
    void add(const RowView& source);
    std::int64_t finish();  // the number of rows

private:
    struct Default;

    // Binds a row's values in the order of columns_; the identity's where it is not the row's own.
    void bindRow(sqlite3_stmt* to, const RowView& source, std::optional<std::int64_t> identity);
    [[nodiscard]] bool bindDefault(sqlite3_stmt* to, std::size_t column);
    void requireChecks(const RowView& source, std::optional<std::int64_t> identity);  // 547
    [[nodiscard]] SqlError duplicate(const RowView& source, std::optional<std::int64_t> identity);
    void bindRowVersion(sqlite3_stmt* to, int parameter) const;
    [[nodiscard]] std::int64_t nextIdentity();
    void noteIdentity(std::int64_t value);

    const ExecuteContext& context_;
    FoundObject table_;
    const std::vector<BoundInsert::Column>& columns_;
    Options options_;
    Statement insert_;
    std::vector<std::unique_ptr<Default>> defaults_;  // by column; none where nulls stay
    const ColumnDef* identity_ = nullptr;
    int identitySource_ = -1;                   // the cell that gives it, -1: the table does
    std::optional<std::int64_t> lastIdentity_;  // of the table
    std::optional<std::int64_t> given_;         // by this statement
    std::array<std::uint8_t, 8> rowVersion_{};  // of the row in hand, where the table has such a column
    bool hasRowVersion_ = false;
    RowIds rows_;
    std::int64_t count_ = 0;
    bool keepsRowIds_ = false;
};

}  // namespace sandbox
