// xp_userlock, which takes and releases the locks that applications name: sp_getapplock and sp_releaseapplock call it.
// The locks themselves are the lock manager's (sandbox/store/databases/locks.h).
#pragma once

#include <cstdint>
#include <vector>

#include "sandbox/tsql/run/interpreter.h"

namespace sandbox {

// By place: 0 to take or 1 to release, resource, mode, owner, time-out in milliseconds, principal. Gives
// sp_getapplock's return code; what is wrong with the call is told as an error besides, where SQL Server tells it.
[[nodiscard]] std::int32_t userLock(Interpreter& interpreter, const std::vector<CallArgument>& arguments);

}  // namespace sandbox
