// The errors of the statements that define tables and other objects, with SQL Server's texts.
#pragma once

#include <string>
#include <string_view>

#include "sandbox/store/values/error.h"

namespace sandbox::definition {

// The message followed by 1750: a constraint or index that could not be made.
[[nodiscard]] SqlError constraintError(Message message);

[[nodiscard]] SqlError nameTaken(std::string_view name);                                     // 2714
[[nodiscard]] SqlError cannotDrop(std::string_view kind, std::string_view name, int state);  // 3701
// 40510: SQL Server knows it, this server does not.
[[nodiscard]] SqlError unsupported(std::string_view what);

}  // namespace sandbox::definition
