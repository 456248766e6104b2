// Application locks belong to the current database and to a principal of it. Being chosen as a deadlock's victim is a
// return code here, and leaves the transaction and its other locks as they are.
#include "sandbox/tsql/system/application_locks.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <string>

#include "sandbox/store/databases/principals.h"
#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/convert.h"
#include "sandbox/store/values/error_table.h"

namespace sandbox {

namespace {

constexpr std::int32_t kTimedOut = -1;
constexpr std::int32_t kDeadlockVictim = -3;
constexpr std::int32_t kRefused = -999;

constexpr std::string_view kProcedure = "xp_userlock";

std::optional<std::string> textAt(const std::vector<CallArgument>& arguments, std::size_t place) {
    if (place >= arguments.size() || isNull(arguments[place].value.value)) return std::nullopt;
    return displayText(arguments[place].value.value, arguments[place].value.type);
}

std::optional<std::int64_t> numberAt(const std::vector<CallArgument>& arguments, std::size_t place) {
    if (place >= arguments.size()) return std::nullopt;
    const auto* number = std::get_if<std::int64_t>(&arguments[place].value.value);
    return number ? std::optional(*number) : std::nullopt;
}

std::int32_t refuse(ProcedureHost& host, Message message) {
    host.report(SqlError(std::move(message).in(kProcedure).atLine(1)));
    return kRefused;
}

std::optional<LockOwner> ownerOf(std::string_view name) {
    if (sameName(name, "Transaction")) return LockOwner::Transaction;
    if (sameName(name, "Session")) return LockOwner::Session;
    return std::nullopt;
}

std::int32_t codeOf(LockManager::Outcome outcome) {
    switch (outcome) {
        case LockManager::Outcome::Granted: return 0;
        case LockManager::Outcome::GrantedAfterWait: return 1;
        case LockManager::Outcome::TimedOut: return kTimedOut;
        case LockManager::Outcome::DeadlockVictim: return kDeadlockVictim;
    }
    return kRefused;
}

LockResource resourceOf(const Connection& connection, const DatabasePrincipal& principal, std::string_view name) {
    return {.database = connection.current()->id(),
            .application = true,
            .principal = std::string(principal.name),
            .name = std::string(name)};
}

const DatabasePrincipal& requirePrincipal(std::string_view name) {
    const DatabasePrincipal* known = findDatabasePrincipal(name);
    if (known == nullptr) throw SqlError(errorMessage<1202>(name));
    return *known;
}

LockOwner requireOwner(const Connection& connection, std::string_view name, std::string_view function) {
    const auto owner = ownerOf(name);
    if (!owner) throw SqlError(errorMessage<1226>(function));
    if (*owner == LockOwner::Transaction && !connection.inTransaction()) throw SqlError(errorMessage<3918>());
    return *owner;
}

}  // namespace

void connectApplicationLockFunctions(Connection& connection) {
    FunctionContext& functions = connection.functions();
    functions.applicationLockMode = [&connection](std::string_view principal, std::string_view name,
                                                  std::string_view ownerName) {
        const DatabasePrincipal& of = requirePrincipal(principal);
        const LockOwner owner = requireOwner(connection, ownerName, "applock_mode");
        const LockManager& locks = connection.databases().locks();
        return std::string(locks.held(connection.spid(), owner, resourceOf(connection, of, name)).name());
    };
    functions.applicationLockFree = [&connection](std::string_view principal, std::string_view name,
                                                  std::string_view modeName, std::string_view ownerName) {
        const DatabasePrincipal& of = requirePrincipal(principal);
        const auto mode = lockModeOf(modeName);
        if (!mode) throw SqlError(errorMessage<1225>("applock_test"));
        (void)requireOwner(connection, ownerName, "applock_test");
        const LockManager& locks = connection.databases().locks();
        return locks.grantable(connection.spid(), resourceOf(connection, of, name), *mode);
    };
}

std::int32_t userLock(ProcedureHost& host, const std::vector<CallArgument>& arguments) {
    const bool taking = numberAt(arguments, 0) == 0;
    const auto name = textAt(arguments, 1);
    if (!name) return refuse(host, errorMessage<1224>());
    const auto mode = lockModeOf(textAt(arguments, 2).value_or(""));
    const auto owner = ownerOf(textAt(arguments, 3).value_or(""));
    if ((taking && !mode) || !owner) return kRefused;
    const auto milliseconds = numberAt(arguments, 4);
    if (milliseconds && *milliseconds < -1) {
        return refuse(host, errorMessage<1227>());
    }
    const std::string principal = textAt(arguments, 5).value_or("public");
    const DatabasePrincipal* known = findDatabasePrincipal(principal);
    if (known == nullptr) {
        return refuse(host, errorMessage<1202>(principal));
    }
    Connection& connection = host.connection();
    if (*owner == LockOwner::Transaction && !connection.inTransaction()) {
        return refuse(host, errorMessage<3918>());
    }

    LockManager& locks = connection.databases().locks();
    const LockResource resource = resourceOf(connection, *known, *name);
    if (taking) {
        auto timeout = connection.lockTimeout();
        if (milliseconds) timeout = std::chrono::milliseconds(*milliseconds);
        if (milliseconds == -1) timeout.reset();
        return codeOf(locks.take(connection.spid(), *owner, resource, *mode, timeout, connection.interrupted()));
    }
    if (locks.release(connection.spid(), *owner, resource)) return 0;
    return refuse(host, errorMessage<1223>(known->name, *name));
}

}  // namespace sandbox
