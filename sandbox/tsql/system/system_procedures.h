// The procedures that every server has: sp_executesql and those that clients call for the catalogue.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "sandbox/tsql/syntax/ast.h"
#include "sandbox/tsql/system/procedure_host.h"

namespace sandbox {

struct SystemProcedure {
    std::string_view name;
    std::optional<std::int32_t> (*run)(ProcedureHost& host, const SystemProcedure& self,
                                       std::vector<CallArgument>& arguments, const std::string& database);
    std::string_view declarations;  // of those that are T-SQL over the catalogue views
    std::string_view text;
};

// nullptr: the name is not one of theirs.
[[nodiscard]] const SystemProcedure* findSystemProcedure(const ast::ObjectName& name);

}  // namespace sandbox
