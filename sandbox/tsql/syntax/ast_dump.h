// Pieces that the dumps of expressions, queries and statements share. Used only by ast_dump*.cpp.
#pragma once

#include <string>
#include <vector>

#include "sandbox/tsql/syntax/ast.h"

namespace sandbox::ast {

// Lists of expressions begin with a blank, so that they follow a head.
[[nodiscard]] std::string dumpList(const ExprList& list);
[[nodiscard]] std::string dumpOrder(const std::vector<OrderItem>& items);
[[nodiscard]] std::string dumpNames(const std::vector<std::string>& names);
[[nodiscard]] std::string dumpType(const TypeName& type);

// INSERT, UPDATE, DELETE, MERGE.
[[nodiscard]] std::string dumpInsert(const Insert& node);
[[nodiscard]] std::string dumpUpdate(const Update& node);
[[nodiscard]] std::string dumpDelete(const Delete& node);
[[nodiscard]] std::string dumpMerge(const Merge& node);

// Definitions.
[[nodiscard]] std::string dumpTable(const TableDefinition& definition);
[[nodiscard]] std::string dumpAlterTable(const AlterTable& node);
[[nodiscard]] std::string dumpParameter(const Parameter& node);
[[nodiscard]] std::string dumpExecute(const Execute& node);

}  // namespace sandbox::ast
