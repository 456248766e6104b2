// The table of database principals.
#include "sandbox/store/databases/principals.h"

#include <algorithm>
#include <array>

#include "sandbox/store/values/collation.h"

namespace sandbox {

namespace {

constexpr auto kPrincipals = std::to_array<DatabasePrincipal>({
    {"public", 0, true, false, {}},
    {"dbo", 1, false, true, "dbo"},
    {"guest", 2, false, false, "guest"},
    {"INFORMATION_SCHEMA", 3, false, false, {}},
    {"sys", 4, false, false, {}},
    {"db_owner", 16384, true, false, {}},
});

}  // namespace

std::span<const DatabasePrincipal> databasePrincipals() {
    return kPrincipals;
}

const DatabasePrincipal* findDatabasePrincipal(std::string_view name) {
    const auto* found = std::find_if(kPrincipals.begin(), kPrincipals.end(),
                                     [&](const DatabasePrincipal& p) { return sameName(p.name, name); });
    return found == kPrincipals.end() ? nullptr : found;
}

const DatabasePrincipal& ownerOfSchema(std::string_view schema) {
    const DatabasePrincipal* own = findDatabasePrincipal(schema);
    return own != nullptr && !own->role ? *own : *findDatabasePrincipal("dbo");
}

}  // namespace sandbox
