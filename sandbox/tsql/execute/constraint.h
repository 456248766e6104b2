// What rows must keep to: foreign keys on both sides, checks, unique keys. Each is looked at when its statement has
// written all its rows, so that a statement is judged by what it leaves.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/store/databases/connection.h"
#include "sandbox/tsql/execute/execute_rows.h"

namespace sandbox {

using RowIds = std::vector<std::int64_t>;

// The columns that a statement writes; empty: all of them.
using WrittenColumns = std::vector<std::string>;

// Raises 547 where a written row's foreign key has no parent, or a written row breaks a check.
void checkWrittenRows(const ExecuteContext& context, const FoundObject& table, const WrittenColumns& columns,
                      const RowIds& rows, std::string_view verb);
// The first check that one of the rows breaks; nullptr where none does.
[[nodiscard]] const CheckDef* brokenCheck(const ExecuteContext& context, const FoundObject& table, const RowIds& rows);
// The same for all rows of a table: ALTER TABLE ADD CONSTRAINT.
void checkForeignKey(const ExecuteContext& context, const FoundObject& table, const ForeignKeyDef& key);
void checkCondition(const ExecuteContext& context, const FoundObject& table, const CheckDef& check);

// The other side of foreign keys: the keys that a statement takes away from a parent's rows. Remember them before the
// rows are written; settle() then cascades, or raises 547 where children are left.
class TakenKeys {
public:
    // columns: what an UPDATE writes; empty for DELETE.
    TakenKeys(const ExecuteContext& context, const FoundObject& parent, const WrittenColumns& columns);
    ~TakenKeys();

    [[nodiscard]] bool needed() const { return !references_.empty(); }
    void remember(std::int64_t rowId);
    void settle(std::string_view verb);

private:
    struct Reference;

    void refuse(Reference& reference, std::string_view verb);
    void cascadeDelete(Reference& reference);
    void cascadeUpdate(Reference& reference);

    const ExecuteContext& context_;
    FoundObject parent_;
    bool deletes_;
    std::vector<std::unique_ptr<Reference>> references_;
    RowIds rows_;
};

// The error for a row that SQLite refused because of a unique index: which one, and the key. newRow: by column of the
// table; rowId: the row's own, none for a new one.
[[nodiscard]] SqlError duplicateError(const ExecuteContext& context, const FoundObject& table,
                                      const std::vector<Value>& newRow, std::optional<std::int64_t> rowId);

[[nodiscard]] bool isDuplicate(const SqliteError& error);

}  // namespace sandbox
