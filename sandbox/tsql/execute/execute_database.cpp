// CREATE and DROP DATABASE.
#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/execute/execute_errors.h"
#include "sandbox/tsql/execute/execute_rows.h"

namespace sandbox {

namespace {

void requireNoTransaction(const ExecuteContext& context, std::string_view statement) {
    if (!context.connection.inTransaction()) return;
    throw SqlError(errorMessage<226>(statement));
}

}  // namespace

void executeCreateDatabase(const ExecuteContext& context, const ast::CreateDatabase& statement) {
    requireNoTransaction(context, "CREATE DATABASE");
    if (!statement.collation.empty()) (void)collationCode(statement.collation);
    context.connection.databases().create(statement.name, statement.collation);
}

void executeDropDatabase(const ExecuteContext& context, const ast::DropDatabase& statement) {
    requireNoTransaction(context, "DROP DATABASE");
    Databases& databases = context.connection.databases();
    for (const std::string& name : statement.names) {
        if (statement.ifExists && !databases.find(name)) continue;
        databases.drop(name);
    }
}

}  // namespace sandbox
