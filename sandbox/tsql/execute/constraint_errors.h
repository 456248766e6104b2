// The errors of constraints with SQL Server's texts. Used by whatever writes rows or makes constraints.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "sandbox/store/databases/connection.h"
#include "sandbox/store/values/error.h"
#include "sandbox/store/values/value.h"

namespace sandbox {

// verb: "INSERT", "UPDATE", "DELETE", "ALTER TABLE", "MERGE".
[[nodiscard]] SqlError nullNotAllowed(const FoundObject& table, std::string_view column, std::string_view verb);  // 515
// "(1, abc, <NULL>)": the key of a row; values by column of the table.
[[nodiscard]] std::string keyText(const ObjectDef& table, const IndexDef& index, const std::vector<Value>& row);
[[nodiscard]] SqlError duplicateKey(const FoundObject& table, const IndexDef& index, const std::string& key);
// A row whose key its parent does not have; and a parent's row that still has children.
[[nodiscard]] SqlError parentMissing(const FoundObject& child, const ForeignKeyDef& key, std::string_view verb);
[[nodiscard]] SqlError childExists(const FoundObject& child, const ForeignKeyDef& key, std::string_view verb);
[[nodiscard]] SqlError checkBroken(const FoundObject& table, const CheckDef& check, std::string_view verb);
[[nodiscard]] SqlError identityOverflow(const Type& type);  // 8115

}  // namespace sandbox
