// CREATE and ALTER of views, procedures and functions: their texts in the catalogue.
#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/execute/execute_errors.h"
#include "sandbox/tsql/execute/execute_table.h"

namespace sandbox {

void executeCreateModule(const ExecuteContext& context, ObjectKind kind, ast::Verb verb, const ast::ObjectName& name,
                         std::string text, std::vector<ParameterDef> parameters, std::vector<ColumnDef> columns) {
    const auto [database, schema] = placeOf(context, name);
    if (database->temporary() && kind != ObjectKind::Procedure) throw SqlError(errorMessage<4103>(name.name));
    Write write(context.connection, *database);
    const auto catalog = context.connection.catalog(*database);
    const auto before = catalog->find(schema, name.name);
    if (verb == ast::Verb::Create || (verb == ast::Verb::CreateOrAlter && !before)) {
        if (catalog->nameTaken(schema, name.name)) {
            throw SqlError(errorMessage<2714, 3>(name.name));
        }
    } else if (!before) {
        throw SqlError(errorMessage<208, 6>(name.written()));
    } else if (before->kind != kind) {
        throw SqlError(errorMessage<2010>(name.written()));
    }
    ObjectDef object;
    object.id = before ? before->id : database->newObjectId();
    object.name = before ? before->name : name.name;
    object.schema = schema;
    object.kind = kind;
    object.text = std::move(text);
    object.modified = currentTicks();
    object.created = before ? before->created : object.modified;
    object.parameters = std::move(parameters);
    object.columns = std::move(columns);
    for (ColumnDef& column : object.columns) column.columnId = ++object.lastColumnId;
    context.connection.put(*database, std::move(object));
    write.done();
}

}  // namespace sandbox
