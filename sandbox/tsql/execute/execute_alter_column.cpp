// ALTER TABLE ALTER COLUMN: another type or nullability for a column that may have rows.
#include <algorithm>

#include "sandbox/store/databases/table_storage.h"
#include "sandbox/store/functions/sql_functions.h"
#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/store/values/storage_codec.h"
#include "sandbox/tsql/execute/constraint_errors.h"
#include "sandbox/tsql/execute/execute_alter.h"
#include "sandbox/tsql/execute/execute_errors.h"
#include "sandbox/tsql/execute/execute_table.h"

namespace sandbox {

namespace {

// A text or binary column may grow whatever stands on it.
bool onlyGrows(const ColumnDef& from, const ColumnDef& to) {
    const bool varying =
        from.type.id == TypeId::VarChar || from.type.id == TypeId::NVarChar || from.type.id == TypeId::VarBinary;
    const bool longer =
        to.type.length == Type::kMax || (from.type.length != Type::kMax && to.type.length >= from.type.length);
    return varying && from.type.id == to.type.id && longer && sameName(from.collation, to.collation);
}

void requireChangeable(const ExecuteContext& context, const FoundObject& table, const ColumnDef& from,
                       const ColumnDef& to) {
    const bool inKey = std::any_of(table.object->indexes.begin(), table.object->indexes.end(), [&](const IndexDef& i) {
        return i.primaryKey && std::any_of(i.keys.begin(), i.keys.end(),
                                           [&](const IndexDef::Key& k) { return sameName(k.column, from.name); });
    });
    if (!inKey && onlyGrows(from, to)) return;
    if (from.type == to.type && sameName(from.collation, to.collation) && !(inKey && to.nullable)) return;
    std::vector<Message> messages = dependents(context, table, from);
    // A default stays as long as the type is the same but for its size.
    if (from.type.id == to.type.id && !from.defaultName.empty()) {
        std::erase_if(messages,
                      [&](const Message& m) { return m.text.find("'" + from.defaultName + "'") != std::string::npos; });
    }
    if (messages.empty()) return;
    messages.push_back(errorMessage<4922>("ALTER TABLE ALTER COLUMN", from.name));
    throw SqlError(std::move(messages), Effect::Statement);
}

// SQLite cannot change a column's declaration: a new table takes the rows over, with their row ids.
void rebuild(const ExecuteContext& context, const FoundObject& before, ObjectDef& def, const ColumnDef& from,
             const ColumnDef& to) {
    const std::string& schema = before.database->attachedAs();
    def.storageName = "t" + std::to_string(def.id) + "_" + std::to_string(before.database->newObjectId());
    context.connection.run(createStorageSql(schema, def));
    std::string names = "_rowid_";
    std::string values = "_rowid_";
    for (const ColumnDef& column : def.columns) {
        if (!column.computedText.empty()) continue;
        const std::string name = quoteIdentifier(column.name);
        names += ", " + name;
        values += ", " + (sameName(column.name, to.name) ? storeSql(name, from.type, to.type, fullName(before), to.name)
                                                         : name);
    }
    context.connection.run("INSERT INTO " + storageTable(schema, def) + " (" + names + ") SELECT " + values + " FROM " +
                           tableSql(before));
    context.connection.run("DROP TABLE " + tableSql(before));
    for (const IndexDef& index : def.indexes) {
        for (const std::string& sql : createIndexSql(schema, def, index)) context.connection.run(sql);
    }
    for (const ForeignKeyDef& key : def.foreignKeys) {
        const std::string sql = createForeignKeyIndexSql(schema, def, key);
        if (!sql.empty()) context.connection.run(sql);
    }
}

void requireNoNulls(const ExecuteContext& context, const FoundObject& table, const ColumnDef& column) {
    Statement look = context.connection.prepare("SELECT 1 FROM " + tableSql(table) + " WHERE " +
                                                quoteIdentifier(column.name) + " IS NULL LIMIT 1");
    if (look.step()) throw nullNotAllowed(table, column.name, "UPDATE");
}

}  // namespace

void alterColumn(const ExecuteContext& context, const FoundObject& table, const ast::ColumnDefinition& definition) {
    const ColumnDef* from = table.object->findColumn(definition.name);
    if (from == nullptr) {
        throw SqlError(errorMessage<4924>("ALTER TABLE ALTER COLUMN", definition.name, table.object->name));
    }
    if (!from->computedText.empty()) {
        throw SqlError(errorMessage<4928>(from->name, "COMPUTED"));
    }
    if (from->type.rowVersion) throw SqlError(errorMessage<4928>(from->name, "timestamp"));
    if (!definition.type.known) {
        throw SqlError(errorMessage<2715, 6>(1, definition.type.written));
    }
    if (definition.type.type.rowVersion) throw SqlError(errorMessage<4927>(from->name, "timestamp"));
    ColumnDef to = *from;
    to.type = definition.type.type;
    // Not said: the column may be null from now on.
    to.nullable = definition.nullable.value_or(!from->identity);
    to.collation = collationOf(*table.database, to.type, definition.collation);
    requireChangeable(context, table, *from, to);
    if (from->type != to.type) requireImplicitConversion(from->type, to.type);
    if (!to.nullable) requireNoNulls(context, table, *from);

    ObjectDef def = *table.object;
    def.modified = currentTicks();
    def.columns[static_cast<std::size_t>(from - table.object->columns.data())] = to;
    const bool sameText = sqliteDeclaration(from->type, from->collation) == sqliteDeclaration(to.type, to.collation);
    const bool sameIndexes = from->nullable == to.nullable;
    if (!(sameText && sameIndexes && (from->type == to.type || onlyGrows(*from, to)))) {
        rebuild(context, table, def, *from, to);
    }
    context.connection.put(*table.database, def);
}

}  // namespace sandbox
