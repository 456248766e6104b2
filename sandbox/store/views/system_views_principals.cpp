// The views about who may do what: every login is the owner of every database.
#include "sandbox/store/databases/principals.h"
#include "sandbox/store/views/system_view_rows.h"

namespace sandbox::views {

namespace {

// A server's principals are shown under the same columns.
using Principal = DatabasePrincipal;

std::vector<Principal> ofDatabase(Connection&, Database&) {
    const auto all = databasePrincipals();
    return {all.begin(), all.end()};
}

std::vector<Principal> ofServer(Connection&, Database&) {
    return {{"sa", 1, false, true, {}}, {"public", 2, true, false, {}}, {"sysadmin", 3, true, false, {}}};
}

struct Membership {
    int role = 0;
    int member = 0;
};

std::vector<Membership> databaseMembers(Connection&, Database&) {
    return {{16384, 1}};
}

std::vector<Membership> serverMembers(Connection&, Database&) {
    return {{3, 1}};
}

using P = Principal;
using M = Membership;

std::vector<Field<P>> principalFields(std::vector<Field<P>> more) {
    std::vector<Field<P>> fields{
        {"name", kName, [](const P& p) { return text(p.name); }},
        {"principal_id", kInt, [](const P& p) { return number(p.id); }},
        {"type", charType(1), [](const P& p) { return text(p.role ? "R" : "S"); }},
    };
    fields.insert(fields.end(), more.begin(), more.end());
    return fields;
}

}  // namespace

std::vector<SystemView> principalViews() {
    return {
        makeView<P>(
            "sys", "database_principals", ofDatabase,
            principalFields({
                {"type_desc", kDescription, [](const P& p) { return text(p.role ? "DATABASE_ROLE" : "SQL_USER"); }},
                {"default_schema_name", kName, [](const P& p) { return textOrNull(p.schema); }},
                {"is_fixed_role", kBit, [](const P& p) { return number(p.id == 16384 ? 1 : 0); }},
                {"authentication_type", kInt, [](const P& p) { return number(p.login ? 1 : 0); }},
            })),
        makeView<P>(
            "sys", "server_principals", ofServer,
            principalFields({
                {"type_desc", kDescription, [](const P& p) { return text(p.role ? "SERVER_ROLE" : "SQL_LOGIN"); }},
                {"is_disabled", kBit, [](const P&) { return number(0); }},
                {"default_database_name", kName, [](const P& p) { return p.login ? text("master") : Value{}; }},
            })),
        makeView<M>("sys", "database_role_members", databaseMembers,
                    {
                        {"role_principal_id", kInt, [](const M& m) { return number(m.role); }},
                        {"member_principal_id", kInt, [](const M& m) { return number(m.member); }},
                    }),
        makeView<M>("sys", "server_role_members", serverMembers,
                    {
                        {"role_principal_id", kInt, [](const M& m) { return number(m.role); }},
                        {"member_principal_id", kInt, [](const M& m) { return number(m.member); }},
                    }),
    };
}

}  // namespace sandbox::views
