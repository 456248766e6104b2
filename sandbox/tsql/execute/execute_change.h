// Writing rows that are known by their row ids, with all that follows from it (keys, checks, cascades). UPDATE, DELETE
// and cascading foreign keys use it; the caller holds the Write.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "sandbox/tsql/execute/constraint.h"
#include "sandbox/tsql/execute/execute_rows.h"

namespace sandbox {

// Each row: its id, then a value for each column.
void changeRows(const ExecuteContext& context, const FoundObject& table, const std::vector<const ColumnDef*>& columns,
                const RowBuffer& rows, std::string_view verb);
void removeRows(const ExecuteContext& context, const FoundObject& table, const RowIds& rows, std::string_view verb);

}  // namespace sandbox
