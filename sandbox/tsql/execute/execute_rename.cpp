// sp_rename: tables, columns, indexes, constraints, views and procedures.
#include <algorithm>

#include "sandbox/store/databases/object_name.h"
#include "sandbox/store/databases/table_storage.h"
#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/execute/execute_errors.h"
#include "sandbox/tsql/execute/execute_rows.h"

namespace sandbox {

namespace {

SqlError noSuchItem(const ExecuteContext& context, std::string_view object, std::string_view type) {
    if (!type.empty() && !sandbox::sameName(type, "OBJECT")) {
        return SqlError({errorMessage<15248>(type)}, Effect::Scope);
    }
    return SqlError({errorMessage<15225>(object, context.connection.current()->name(),
                                         (type.empty() ? "(null)" : std::string(type)))},
                    Effect::Scope);
}

SqlError alreadyUsed(std::string_view name, std::string_view kind) {
    return SqlError({errorMessage<15335>(name, kind)}, Effect::Scope);
}

// "dbo.t.a" without its last part, and that part.
std::pair<std::string_view, std::string> splitLast(std::string_view text) {
    const std::size_t dot = text.rfind('.');
    if (dot == std::string_view::npos) return {text, ""};
    std::string_view last = text.substr(dot + 1);
    if (last.size() >= 2 && (last.front() == '[' || last.front() == '"')) last = last.substr(1, last.size() - 2);
    return {text.substr(0, dot), std::string(last)};
}

void renameIn(std::vector<std::string>& columns, std::string_view from, std::string_view to) {
    for (std::string& column : columns) {
        if (sameName(column, from)) column = to;
    }
}

void renameColumn(const ExecuteContext& context, const FoundObject& table, const ColumnDef& column,
                  const std::string& name) {
    const ColumnDef* taken = table.object->findColumn(name);
    if (taken != nullptr && taken != &column) throw alreadyUsed(name, "COLUMN");
    context.connection.run("ALTER TABLE " + tableSql(table) + " RENAME COLUMN " + quoteIdentifier(column.name) +
                           " TO " + quoteIdentifier(name));
    const std::string old = column.name;
    for (const auto& child : context.connection.catalog(*table.database)->childrenOf(*table.object)) {
        if (child->id == table.object->id) continue;
        ObjectDef changed = *child;
        for (ForeignKeyDef& key : changed.foreignKeys) {
            if (key.parentId == table.object->id) renameIn(key.parentColumns, old, name);
        }
        context.connection.put(*table.database, std::move(changed));
    }
    ObjectDef def = *table.object;
    for (ColumnDef& c : def.columns) {
        if (c.columnId == column.columnId) c.name = name;
    }
    for (IndexDef& index : def.indexes) {
        renameIn(index.included, old, name);
        for (IndexDef::Key& key : index.keys) {
            if (sameName(key.column, old)) key.column = name;
        }
        for (IndexDef::Condition& condition : index.filter) {
            if (sameName(condition.column, old)) condition.column = name;
        }
    }
    for (ForeignKeyDef& key : def.foreignKeys) {
        renameIn(key.columns, old, name);
        if (key.parentId == def.id) renameIn(key.parentColumns, old, name);
    }
    context.connection.put(*table.database, std::move(def));
}

void renameObject(const ExecuteContext& context, const FoundObject& found, const std::string& name) {
    const ObjectDef& object = *found.object;
    if (!sameName(object.name, name) && context.connection.catalog(*found.database)->nameTaken(object.schema, name)) {
        throw alreadyUsed(name, "OBJECT");
    }
    for (const auto& child : context.connection.catalog(*found.database)->childrenOf(object)) {
        if (child->id == object.id) continue;
        ObjectDef changed = *child;
        for (ForeignKeyDef& key : changed.foreignKeys) {
            if (key.parentId == object.id) key.parentTable = name;
        }
        context.connection.put(*found.database, std::move(changed));
    }
    ObjectDef def = object;
    def.name = name;
    for (ForeignKeyDef& key : def.foreignKeys) {
        if (key.parentId == def.id) key.parentTable = name;
    }
    context.connection.replace(*found.database, object, std::move(def));
}

// A constraint by its own name, or an index as table.index.
bool renameInTable(const ExecuteContext& context, const FoundObject& table, std::string_view from,
                   const std::string& name, bool indexes) {
    ObjectDef def = *table.object;
    bool found = false;
    const auto rename = [&](std::string& item) {
        if (item.empty() || !sameName(item, from)) return;
        item = name;
        found = true;
    };
    for (IndexDef& index : def.indexes) {
        if (indexes || index.primaryKey || index.uniqueConstraint) rename(index.name);
    }
    if (!indexes) {
        for (ColumnDef& column : def.columns) rename(column.defaultName);
        for (ForeignKeyDef& key : def.foreignKeys) rename(key.name);
        for (CheckDef& check : def.checks) rename(check.name);
    }
    if (found) context.connection.put(*table.database, std::move(def));
    return found;
}

bool renameConstraint(const ExecuteContext& context, std::string_view text, const std::string& name) {
    const std::string last = splitLast(text).second;
    std::string from = last.empty() ? std::string(text) : last;
    if (from.size() >= 2 && from.front() == '[') from = from.substr(1, from.size() - 2);
    const auto parts = splitObjectName(text);
    const std::string schema = !parts || parts->schema.empty() ? "dbo" : parts->schema;
    const std::shared_ptr<Database> database = context.connection.current();
    for (const auto& table : context.connection.catalog(*database)->all()) {
        if (table->kind != ObjectKind::Table || !sameName(table->schema, schema)) continue;
        if (renameInTable(context, {table, database}, from, name, false)) return true;
    }
    return false;
}

bool rename(const ExecuteContext& context, std::string_view object, const std::string& name, std::string_view type) {
    const auto [tableName, part] = splitLast(object);
    if (sameName(type, "COLUMN") || sameName(type, "INDEX")) {
        const auto table = context.connection.findByText(tableName);
        if (!table || part.empty() || table->object->kind != ObjectKind::Table || table->object->system) return false;
        if (sameName(type, "INDEX")) return renameInTable(context, *table, part, name, true);
        const ColumnDef* column = table->object->findColumn(part);
        if (column == nullptr) return false;
        renameColumn(context, *table, *column, name);
        return true;
    }
    const auto found = context.connection.findByText(object);
    if (found && !found->object->system) {
        renameObject(context, *found, name);
        return true;
    }
    return renameConstraint(context, object, name);
}

}  // namespace

void executeRename(const ExecuteContext& context, std::string_view object, std::string_view newName,
                   std::string_view type) {
    const auto found = context.connection.findByText(object);
    Write write(context.connection, found ? *found->database : *context.connection.current());
    if (!rename(context, object, std::string(newName), type)) throw noSuchItem(context, object, type);
    write.done();
}

}  // namespace sandbox
