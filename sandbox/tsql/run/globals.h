// The values of the @@ variables.
#pragma once

#include <string_view>

#include "sandbox/store/values/value.h"
#include "sandbox/tsql/run/session_state.h"

namespace sandbox {

// As a value of `type`. Raises 40510 for one that this server does not keep.
[[nodiscard]] Value globalValue(SessionState& session, std::string_view name, const Type& type);

// What @@VERSION tells.
[[nodiscard]] std::string_view versionText();

}  // namespace sandbox
