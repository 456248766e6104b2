// How arguments meet the parameters of a procedure or of a text, with SQL Server's errors.
#pragma once

#include <string>
#include <vector>

#include "sandbox/tsql/run/interpreter.h"

namespace sandbox {

// For each parameter the place of its argument, which may ask for the default; -1: none was given. Raises 201, 8143,
// 8144, 8145, 8146, 8162, and for a text 8178. procedure: empty for a text.
[[nodiscard]] std::vector<int> matchArguments(const std::vector<ast::Parameter>& parameters,
                                              const std::vector<CallArgument>& arguments, const std::string& procedure,
                                              std::string_view text, std::string_view declarations);

}  // namespace sandbox
