// xp_userlock, which takes and releases the locks that applications name: sp_getapplock and sp_releaseapplock call it.
// And the functions that look at such locks. The locks themselves are the lock manager's
// (sandbox/store/databases/locks.h).
#pragma once

#include <cstdint>
#include <vector>

#include "sandbox/tsql/system/procedure_host.h"

namespace sandbox {

// By place: 0 to take or 1 to release, resource, mode, owner, time-out in milliseconds, principal. Gives
// sp_getapplock's return code; what is wrong with the call is told as an error besides, where SQL Server tells it.
[[nodiscard]] std::int32_t userLock(ProcedureHost& host, const std::vector<CallArgument>& arguments);

// APPLOCK_MODE and APPLOCK_TEST for a connection. Called once.
void connectApplicationLockFunctions(Connection& connection);

}  // namespace sandbox
