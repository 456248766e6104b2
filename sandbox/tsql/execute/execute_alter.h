// What ALTER TABLE's files share. The caller holds the Write.
#pragma once

#include <vector>

#include "sandbox/tsql/execute/execute_rows.h"
#include "sandbox/tsql/parse/parser.h"

namespace sandbox {

// 5074 for each constraint or index that uses the column.
[[nodiscard]] std::vector<Message> dependents(const ExecuteContext& context, const FoundObject& table,
                                              const ColumnDef& column);
void alterColumn(const ExecuteContext& context, const FoundObject& table, const ast::ColumnDefinition& to);

}  // namespace sandbox
