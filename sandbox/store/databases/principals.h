// The principals that every database has: no others can be made here. Used by the views of principals and by what is
// done in a principal's name.
#pragma once

#include <span>
#include <string_view>

namespace sandbox {

struct DatabasePrincipal {
    std::string_view name;
    int id = 0;
    bool role = false;
    bool login = false;       // a login of the server stands behind it
    std::string_view schema;  // the default one; empty: none
};

[[nodiscard]] std::span<const DatabasePrincipal> databasePrincipals();
// Without case; nullptr when there is none.
[[nodiscard]] const DatabasePrincipal* findDatabasePrincipal(std::string_view name);
// Of a schema that every database has the principal of its name, of one made here dbo.
[[nodiscard]] const DatabasePrincipal& ownerOfSchema(std::string_view schema);

}  // namespace sandbox
