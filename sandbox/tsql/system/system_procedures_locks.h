// The bodies of the application lock procedures: T-SQL over xp_userlock (application_locks.h), which tells the errors
// under its own name as SQL Server's does.
#pragma once

#include <string_view>

namespace sandbox::texts {

inline constexpr std::string_view kGetAppLockParameters =
    "@Resource nvarchar(255), @LockMode varchar(32), @LockOwner varchar(32) = 'Transaction', @LockTimeout int = NULL, "
    "@DbPrincipal nvarchar(128) = 'public'";
inline constexpr std::string_view kGetAppLock = R"(
DECLARE @result int
EXEC @result = sys.xp_userlock 0, @Resource, @LockMode, @LockOwner, @LockTimeout, @DbPrincipal
RETURN @result)";

inline constexpr std::string_view kReleaseAppLockParameters =
    "@Resource nvarchar(255), @LockOwner varchar(32) = 'Transaction', @DbPrincipal nvarchar(128) = 'public'";
inline constexpr std::string_view kReleaseAppLock = R"(
DECLARE @result int
EXEC @result = sys.xp_userlock 1, @Resource, NULL, @LockOwner, NULL, @DbPrincipal
RETURN @result)";

}  // namespace sandbox::texts
