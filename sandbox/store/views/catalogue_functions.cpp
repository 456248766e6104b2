// OBJECT_ID, OBJECTPROPERTY, COL_LENGTH, DB_ID and their kin, answered from the catalogue as a session sees it.
#include "sandbox/store/views/catalogue_functions.h"

#include <algorithm>
#include <array>

#include "sandbox/store/databases/object_name.h"
#include "sandbox/store/values/collation.h"
#include "sandbox/store/views/system_view_rows.h"

namespace sandbox::views {

namespace {

bool isKind(const ObjectRow& row, std::string_view kind) {
    std::string wanted(kind);
    wanted.erase(wanted.find_last_not_of(' ') + 1);
    const std::string_view type = row.type.substr(0, row.type.find(' '));
    return wanted.empty() || sameName(wanted, type);
}

int yes(bool value) {
    return value ? 1 : 0;
}

bool anyIndex(const ObjectDef& table, bool (*is)(const IndexDef&)) {
    return std::any_of(table.indexes.begin(), table.indexes.end(), is);
}

// A property of OBJECTPROPERTY and how an object answers it. onTables: NULL for everything else.
struct ObjectProperty {
    std::string_view name;
    bool onTables;
    int (*get)(const ObjectRow&);
};

constexpr ObjectProperty kObjectProperties[] = {
    {"IsTable", false, [](const ObjectRow& o) { return yes(o.type == "U "); }},
    {"IsUserTable", false, [](const ObjectRow& o) { return yes(o.type == "U "); }},
    {"IsSystemTable", false, [](const ObjectRow&) { return 0; }},
    {"IsMSShipped", false, [](const ObjectRow&) { return 0; }},
    {"IsView", false, [](const ObjectRow& o) { return yes(o.type == "V "); }},
    {"IsProcedure", false, [](const ObjectRow& o) { return yes(o.type == "P "); }},
    {"IsScalarFunction", false, [](const ObjectRow& o) { return yes(o.type == "FN"); }},
    {"IsTrigger", false, [](const ObjectRow&) { return 0; }},
    {"IsConstraint", false, [](const ObjectRow& o) { return yes(o.parent != 0); }},
    {"IsPrimaryKey", false, [](const ObjectRow& o) { return yes(o.type == "PK"); }},
    {"IsUniqueCnst", false, [](const ObjectRow& o) { return yes(o.type == "UQ"); }},
    {"IsForeignKey", false, [](const ObjectRow& o) { return yes(o.type == "F "); }},
    {"IsCheckCnst", false, [](const ObjectRow& o) { return yes(o.type == "C "); }},
    {"IsDefaultCnst", false, [](const ObjectRow& o) { return yes(o.type == "D "); }},
    {"IsQuotedIdentOn", false, [](const ObjectRow&) { return 1; }},
    {"IsAnsiNullsOn", false, [](const ObjectRow&) { return 1; }},
    {"OwnerId", false, [](const ObjectRow&) { return 1; }},
    {"SchemaId", false, [](const ObjectRow& o) { return o.schemaId; }},
    {"TableHasPrimaryKey", true,
     [](const ObjectRow& o) { return yes(anyIndex(*o.object, [](const IndexDef& i) { return i.primaryKey; })); }},
    {"TableHasUniqueCnst", true,
     [](const ObjectRow& o) { return yes(anyIndex(*o.object, [](const IndexDef& i) { return i.uniqueConstraint; })); }},
    {"TableHasIndex", true, [](const ObjectRow& o) { return yes(!o.object->indexes.empty()); }},
    {"TableHasClustIndex", true,
     [](const ObjectRow& o) { return yes(anyIndex(*o.object, [](const IndexDef& i) { return i.clustered; })); }},
    {"TableHasNonclustIndex", true,
     [](const ObjectRow& o) { return yes(anyIndex(*o.object, [](const IndexDef& i) { return !i.clustered; })); }},
    {"TableHasIdentity", true,
     [](const ObjectRow& o) {
         return yes(std::any_of(o.object->columns.begin(), o.object->columns.end(),
                                [](const ColumnDef& c) { return c.identity; }));
     }},
    {"TableHasForeignKey", true, [](const ObjectRow& o) { return yes(!o.object->foreignKeys.empty()); }},
    {"TableHasCheckCnst", true, [](const ObjectRow& o) { return yes(!o.object->checks.empty()); }},
    {"TableHasDefaultCnst", true,
     [](const ObjectRow& o) {
         return yes(std::any_of(o.object->columns.begin(), o.object->columns.end(),
                                [](const ColumnDef& c) { return !c.defaultName.empty(); }));
     }},
};

struct ColumnProperty {
    std::string_view name;
    int (*get)(const ColumnDef&);
};

constexpr ColumnProperty kColumnProperties[] = {
    {"AllowsNull", [](const ColumnDef& c) { return yes(c.nullable); }},
    {"IsIdentity", [](const ColumnDef& c) { return yes(c.identity); }},
    {"IsComputed", [](const ColumnDef& c) { return yes(!c.computedText.empty()); }},
    {"ColumnId", [](const ColumnDef& c) { return c.columnId; }},
    {"Precision",
     [](const ColumnDef& c) {
         return isCharacter(c.type.id) || isBinary(c.type.id) ? c.type.length : typeFacts(c.type).precision;
     }},
    {"Scale", [](const ColumnDef& c) { return typeFacts(c.type).scale; }},
};

void connectObjects(Connection& connection, FunctionContext& functions) {
    functions.objectId = [&connection](std::string_view name, std::string_view kind) -> std::optional<std::int32_t> {
        if (const auto found = connection.findByText(name)) {
            // Temporary tables are tempdb's: another database's name for one means nothing.
            const std::optional<NameParts> written = splitObjectName(name);
            const bool named = written && !written->database.empty();
            const bool inTempdb = sameName(named ? written->database : connection.current()->name(), "tempdb");
            if (found->object->name.starts_with('#') && !inTempdb) return std::nullopt;
            std::string wanted(kind);
            wanted.erase(wanted.find_last_not_of(' ') + 1);
            const bool view = found->object->system || found->object->kind == ObjectKind::View;
            const std::string_view type = view                                           ? "V"
                                          : found->object->kind == ObjectKind::Table     ? "U"
                                          : found->object->kind == ObjectKind::Procedure ? "P"
                                                                                         : "FN";
            if (wanted.empty() || sameName(wanted, type)) return found->object->id;
            return std::nullopt;
        }
        const auto parts = splitObjectName(name);
        const auto database = parts ? connection.attach(parts->database) : nullptr;
        if (!database) return std::nullopt;
        const std::string_view schema = parts->schema.empty() ? "dbo" : std::string_view(parts->schema);
        for (const ObjectRow& row : allObjects(connection, *database)) {
            if (row.parent != 0 && sameName(row.name, parts->name) && sameName(row.object->schema, schema) &&
                isKind(row, kind)) {
                return row.id;
            }
        }
        return std::nullopt;
    };
    functions.objectName = [&connection](std::int32_t id,
                                         std::optional<std::int32_t> in) -> std::optional<std::string> {
        const auto database = in ? connection.databases().findById(*in) : connection.current();
        if (!database) return std::nullopt;
        const auto row = objectById(connection, *database, id);
        return row ? std::optional<std::string>(row->name) : std::nullopt;
    };
    functions.objectSchema = [&connection](std::int32_t id,
                                           std::optional<std::int32_t> in) -> std::optional<std::string> {
        const auto database = in ? connection.databases().findById(*in) : connection.current();
        const auto row = database ? objectById(connection, *database, id) : std::nullopt;
        return row ? std::optional<std::string>(row->object->schema) : std::nullopt;
    };
    functions.schemaIdOf = [&connection](std::string_view name) -> std::optional<std::int32_t> {
        const auto schema = connection.catalog(*connection.current())->findSchema(name);
        return schema ? std::optional(schema->id) : std::nullopt;
    };
    functions.schemaNameOf = [&connection](std::int32_t id) -> std::optional<std::string> {
        for (const auto& schema : connection.catalog(*connection.current())->schemas()) {
            if (schema->id == id) return schema->name;
        }
        return std::nullopt;
    };
    functions.objectDefinition = [&connection](std::int32_t id) -> std::optional<std::string> {
        const auto object = connection.catalog(*connection.current())->findById(id);
        return object && !object->text.empty() ? std::optional(object->text) : std::nullopt;
    };
    functions.objectProperty = [&connection](std::int32_t id,
                                             std::string_view property) -> std::optional<std::int32_t> {
        const auto row = objectById(connection, *connection.current(), id);
        if (!row) return std::nullopt;
        for (const ObjectProperty& p : kObjectProperties) {
            if (!sameName(p.name, property)) continue;
            return p.onTables && row->type != "U " ? std::nullopt : std::optional<std::int32_t>(p.get(*row));
        }
        return std::nullopt;
    };
}

void connectColumns(Connection& connection, FunctionContext& functions) {
    functions.columnLength = [&connection](std::string_view table,
                                           std::string_view column) -> std::optional<std::int32_t> {
        const auto found = connection.findByText(table);
        const ColumnDef* def = found ? found->object->findColumn(column) : nullptr;
        return def == nullptr ? std::nullopt : std::optional<std::int32_t>(typeFacts(def->type).bytes);
    };
    functions.columnName = [&connection](std::int32_t table, std::int32_t column) -> std::optional<std::string> {
        const auto object = connection.catalog(*connection.current())->findById(table);
        if (!object) return std::nullopt;
        for (const ColumnDef& def : object->columns) {
            if (def.columnId == column) return def.name;
        }
        return std::nullopt;
    };
    functions.columnProperty = [&connection](std::int32_t table, std::string_view column,
                                             std::string_view property) -> std::optional<std::int32_t> {
        const auto object = connection.catalog(*connection.current())->findById(table);
        const ColumnDef* def = object ? object->findColumn(column) : nullptr;
        if (def == nullptr) return std::nullopt;
        for (const ColumnProperty& p : kColumnProperties) {
            if (sameName(p.name, property)) return p.get(*def);
        }
        return std::nullopt;
    };
}

void connectDatabases(Connection& connection, FunctionContext& functions) {
    functions.databaseIdOf = [&connection](std::string_view name) -> std::optional<std::int32_t> {
        const auto database = connection.databases().find(name);
        return database ? std::optional<std::int32_t>(database->id()) : std::nullopt;
    };
    functions.databaseNameOf = [&connection](std::int32_t id) -> std::optional<std::string> {
        const auto database = connection.databases().findById(id);
        return database ? std::optional(database->name()) : std::nullopt;
    };
    functions.databaseProperty = [&connection](std::string_view name, std::string_view property) -> Value {
        const auto database = connection.databases().find(name);
        if (!database) return {};
        if (sameName(property, "Collation")) return database->facts().collation;
        if (sameName(property, "Status")) return std::string("ONLINE");
        if (sameName(property, "Updateability")) return std::string("READ_WRITE");
        if (sameName(property, "UserAccess")) return std::string("MULTI_USER");
        if (sameName(property, "Recovery")) return std::string("SIMPLE");
        if (sameName(property, "Version")) return std::int64_t{852};
        return {};
    };
    functions.collation = connection.databases().collation();
}

void connectIdentities(Connection& connection, FunctionContext& functions) {
    const auto identity = [&connection](std::string_view table, auto read) -> std::optional<Decimal> {
        const auto found = connection.findByText(table);
        if (!found) return std::nullopt;
        for (const ColumnDef& column : found->object->columns) {
            if (column.identity) return Decimal{read(*found, column), 0};
        }
        return std::nullopt;
    };
    functions.identCurrent = [identity](std::string_view table) {
        return identity(table, [](const FoundObject& found, const ColumnDef& column) {
            return found.database->lastIdentity(found.object->id).value_or(column.identitySeed);
        });
    };
    functions.identSeed = [identity](std::string_view table) {
        return identity(table, [](const FoundObject&, const ColumnDef& column) { return column.identitySeed; });
    };
    functions.identIncrement = [identity](std::string_view table) {
        return identity(table, [](const FoundObject&, const ColumnDef& column) { return column.identityIncrement; });
    };
}

}  // namespace

void connectCatalogueFunctions(Connection& connection) {
    FunctionContext& functions = connection.functions();
    connectObjects(connection, functions);
    connectColumns(connection, functions);
    connectDatabases(connection, functions);
    connectIdentities(connection, functions);
}

}  // namespace sandbox::views
