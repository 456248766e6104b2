// CREATE and DROP SCHEMA. A schema is a record of the catalogue beside those of the objects; every one is dbo's.
#include <algorithm>

#include "sandbox/store/databases/principals.h"
#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/execute/execute.h"
#include "sandbox/tsql/execute/execute_errors.h"

namespace sandbox {

namespace {

constexpr std::int32_t kLastOwnSchema = 4;  // dbo, guest, INFORMATION_SCHEMA, sys

SqlError notCreated(Message message) {
    return SqlError({std::move(message), errorMessage<2759>()}, Effect::Statement);
}

}  // namespace

void executeCreateSchema(const ExecuteContext& context, const ast::CreateSchema& statement) {
    if (!statement.owner.empty() && !sameName(statement.owner, "dbo")) {
        if (findDatabasePrincipal(statement.owner)) throw definition::unsupported("CREATE SCHEMA of another than dbo");
        throw notCreated(errorMessage<15151>("find", "user", statement.owner));
    }
    Database& database = *context.connection.current();
    Write write(context.connection, database);
    const auto catalog = context.connection.catalog(database);
    if (catalog->findSchema(statement.name)) throw notCreated(errorMessage<2714, 6>(statement.name));
    ObjectDef schema;
    schema.id = catalog->schemas().back()->id + 1;
    schema.name = statement.name;
    schema.kind = ObjectKind::Schema;
    schema.created = schema.modified = currentTicks();
    context.connection.put(database, std::move(schema));
    write.done();
}

void executeDropSchema(const ExecuteContext& context, const ast::DropSchema& statement) {
    Database& database = *context.connection.current();
    Write write(context.connection, database);
    const auto catalog = context.connection.catalog(database);
    const auto schema = catalog->findSchema(statement.name);
    if (!schema && statement.ifExists) return;
    if (!schema) throw SqlError(errorMessage<15151>("drop", "schema", statement.name));
    if (schema->id <= kLastOwnSchema) throw SqlError(errorMessage<15150>("drop", "schema", statement.name));
    const auto objects = catalog->all();
    const auto held = std::find_if(objects.begin(), objects.end(),
                                   [&](const auto& object) { return sameName(object->schema, schema->name); });
    if (held != objects.end()) throw SqlError(errorMessage<3729>("drop schema", schema->name, (*held)->name));
    context.connection.erase(database, *schema);
    write.done();
}

}  // namespace sandbox
