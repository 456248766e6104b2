// sysobjects, sys.objects and the views of one kind of object each, with the texts of views and procedures.
#include "sandbox/store/databases/principals.h"
#include "sandbox/store/views/system_view_rows.h"

namespace sandbox::views {

namespace {

void addConstraints(std::vector<ObjectRow>& rows, const std::shared_ptr<const ObjectDef>& table) {
    for (const IndexDef& index : table->indexes) {
        if (!index.primaryKey && !index.uniqueConstraint) continue;
        ObjectRow row{.name = index.name, .id = index.constraintId, .parent = table->id, .object = table};
        row.type = index.primaryKey ? "PK" : "UQ";
        row.description = index.primaryKey ? "PRIMARY_KEY_CONSTRAINT" : "UNIQUE_CONSTRAINT";
        row.index = &index;
        rows.push_back(std::move(row));
    }
    for (const ColumnDef& column : table->columns) {
        if (column.defaultName.empty()) continue;
        ObjectRow row{.name = column.defaultName, .id = column.defaultId, .parent = table->id, .object = table};
        row.type = "D ";
        row.description = "DEFAULT_CONSTRAINT";
        row.column = &column;
        rows.push_back(std::move(row));
    }
    for (const ForeignKeyDef& key : table->foreignKeys) {
        ObjectRow row{.name = key.name, .id = key.id, .parent = table->id, .object = table};
        row.type = "F ";
        row.description = "FOREIGN_KEY_CONSTRAINT";
        row.foreignKey = &key;
        rows.push_back(std::move(row));
    }
    for (const CheckDef& check : table->checks) {
        ObjectRow row{.name = check.name, .id = check.id, .parent = table->id, .object = table};
        row.type = "C ";
        row.description = "CHECK_CONSTRAINT";
        row.check = &check;
        rows.push_back(std::move(row));
    }
}

std::string_view typeOf(const ObjectDef& object) {
    switch (object.kind) {
        case ObjectKind::Table: return "U ";
        case ObjectKind::View: return "V ";
        case ObjectKind::Procedure: return "P ";
        case ObjectKind::Function: return "FN";
        case ObjectKind::Schema: break;  // not among the objects
    }
    return "U ";
}

std::string_view descriptionOf(const ObjectDef& object) {
    switch (object.kind) {
        case ObjectKind::Table: return "USER_TABLE";
        case ObjectKind::View: return "VIEW";
        case ObjectKind::Procedure: return "SQL_STORED_PROCEDURE";
        case ObjectKind::Function: return "SQL_SCALAR_FUNCTION";
        case ObjectKind::Schema: break;
    }
    return "USER_TABLE";
}

ObjectRow rowOf(const std::shared_ptr<const ObjectDef>& object) {
    ObjectRow row{.name = object->name, .id = object->id, .object = object};
    row.type = typeOf(*object);
    row.description = descriptionOf(*object);
    return row;
}

std::int32_t schemaIdOf(const Catalog& catalog, const ObjectDef& object) {
    constexpr std::int32_t kDbo = 1;
    return object.schema == "dbo" ? kDbo : catalog.findSchema(object.schema)->id;
}

using List = std::vector<ObjectRow>;

template <typename Keep>
List filtered(Connection& connection, Database& database, Keep keep) {
    List rows = allObjects(connection, database);
    std::erase_if(rows, [&](const ObjectRow& row) { return !keep(row); });
    return rows;
}

List tables(Connection& c, Database& d) {
    return filtered(c, d, [](const ObjectRow& row) { return row.type == "U "; });
}
List viewObjects(Connection& c, Database& d) {
    return filtered(c, d, [](const ObjectRow& row) { return row.type == "V "; });
}
List procedures(Connection& c, Database& d) {
    return filtered(c, d, [](const ObjectRow& row) { return row.type == "P "; });
}
List keys(Connection& c, Database& d) {
    return filtered(c, d, [](const ObjectRow& row) { return row.index != nullptr; });
}
List defaults(Connection& c, Database& d) {
    return filtered(c, d, [](const ObjectRow& row) { return row.column != nullptr; });
}
List foreignKeys(Connection& c, Database& d) {
    return filtered(c, d, [](const ObjectRow& row) { return row.foreignKey != nullptr; });
}
List checks(Connection& c, Database& d) {
    return filtered(c, d, [](const ObjectRow& row) { return row.check != nullptr; });
}
List modules(Connection& c, Database& d) {
    return filtered(c, d, [](const ObjectRow& row) { return row.parent == 0 && !row.object->text.empty(); });
}

using F = Field<ObjectRow>;

// What every sys view of objects begins with.
std::vector<F> objectFields(std::vector<F> more = {}) {
    std::vector<F> fields{
        {"name", kName, [](const ObjectRow& o) { return text(o.name); }},
        {"object_id", kInt, [](const ObjectRow& o) { return number(o.id); }},
        {"principal_id", kInt, [](const ObjectRow&) { return Value{}; }},
        {"schema_id", kInt, [](const ObjectRow& o) { return number(o.schemaId); }},
        {"parent_object_id", kInt, [](const ObjectRow& o) { return number(o.parent); }},
        {"type", kKind, [](const ObjectRow& o) { return text(o.type); }},
        {"type_desc", kDescription, [](const ObjectRow& o) { return text(o.description); }},
        {"create_date", kDateTime, [](const ObjectRow& o) { return number(o.object->created); }},
        {"modify_date", kDateTime, [](const ObjectRow& o) { return number(o.object->modified); }},
        {"is_ms_shipped", kBit, [](const ObjectRow&) { return number(0); }},
        {"is_published", kBit, [](const ObjectRow&) { return number(0); }},
        {"is_schema_published", kBit, [](const ObjectRow&) { return number(0); }},
    };
    fields.insert(fields.end(), more.begin(), more.end());
    return fields;
}

std::vector<Field<SystemViewRow>> systemViewFields() {
    using V = SystemViewRow;
    return {
        {"name", kName, [](const V& v) { return text(v.name); }},
        {"object_id", kInt, [](const V& v) { return number(v.id); }},
        {"principal_id", kInt, [](const V&) { return Value{}; }},
        {"schema_id", kInt, [](const V& v) { return number(v.schema == "sys" ? 4 : 3); }},
        {"parent_object_id", kInt, [](const V&) { return number(0); }},
        {"type", kKind, [](const V&) { return text("V "); }},
        {"type_desc", kDescription, [](const V&) { return text("VIEW"); }},
        {"is_ms_shipped", kBit, [](const V&) { return number(1); }},
    };
}

std::vector<F> sysobjectsFields() {
    return {
        {"name", kName, [](const ObjectRow& o) { return text(o.name); }},
        {"id", kInt, [](const ObjectRow& o) { return number(o.id); }},
        {"xtype", kKind, [](const ObjectRow& o) { return text(o.type); }},
        {"uid", kSmallInt, [](const ObjectRow& o) { return number(o.schemaId); }},
        {"info", kSmallInt,
         [](const ObjectRow& o) { return number(o.type == "U " ? static_cast<int>(o.object->columns.size()) : 0); }},
        {"status", kInt, [](const ObjectRow&) { return number(0); }},
        {"base_schema_ver", kInt, [](const ObjectRow&) { return number(0); }},
        {"replinfo", kInt, [](const ObjectRow&) { return number(0); }},
        {"parent_obj", kInt, [](const ObjectRow& o) { return number(o.parent); }},
        {"crdate", kDateTime, [](const ObjectRow& o) { return number(o.object->created); }},
        {"ftcatid", kSmallInt, [](const ObjectRow&) { return number(0); }},
        {"schema_ver", kInt, [](const ObjectRow&) { return number(0); }},
        {"stats_schema_ver", kInt, [](const ObjectRow&) { return number(0); }},
        // The older letters: keys are K.
        {"type", kKind, [](const ObjectRow& o) { return text(o.index != nullptr ? "K " : o.type); }},
        {"userstat", kSmallInt, [](const ObjectRow& o) { return number(o.type == "U " ? 1 : 0); }},
        {"sysstat", kSmallInt, [](const ObjectRow& o) { return number(o.type == "U " ? 3 : 0); }},
        {"indexdel", kSmallInt, [](const ObjectRow&) { return number(0); }},
        {"refdate", kDateTime, [](const ObjectRow& o) { return number(o.object->created); }},
        {"version", kInt, [](const ObjectRow&) { return number(0); }},
        {"deltrig", kInt, [](const ObjectRow&) { return number(0); }},
        {"instrig", kInt, [](const ObjectRow&) { return number(0); }},
        {"updtrig", kInt, [](const ObjectRow&) { return number(0); }},
        {"seltrig", kInt, [](const ObjectRow&) { return number(0); }},
        {"category", kInt, [](const ObjectRow&) { return number(0); }},
        {"cache", kSmallInt, [](const ObjectRow&) { return number(0); }},
    };
}

// The catalogue views themselves.
std::vector<SystemViewRow> systemViewRows(Connection&, Database&) {
    return systemViewList();
}

using SchemaRow = std::shared_ptr<const ObjectDef>;

std::vector<SchemaRow> schemas(Connection& connection, Database& database) {
    return connection.catalog(database)->schemas();
}

std::vector<DatabasePrincipal> users(Connection&, Database&) {
    const auto all = databasePrincipals();
    std::vector<DatabasePrincipal> list(all.begin(), all.end());
    std::erase_if(list, [](const DatabasePrincipal& p) { return p.role; });
    return list;
}

// sysobjects lists the system tables too.
List withSystemTables(Connection& connection, Database& database) {
    static const auto kSystem = std::make_shared<const ObjectDef>();
    List rows = allObjects(connection, database);
    for (const SystemViewRow& view : systemViewList()) {
        if (!view.bare) continue;
        ObjectRow row{.name = view.name, .id = view.id, .object = kSystem};
        row.type = "S ";
        row.description = "SYSTEM_TABLE";
        rows.push_back(std::move(row));
    }
    return rows;
}

SystemView bare(SystemView view) {
    view.bare = true;
    return view;
}

}  // namespace

std::vector<std::shared_ptr<const ObjectDef>> visibleObjects(Connection& connection, Database& database) {
    auto objects = connection.catalog(database)->all();
    if (!connection.showsTemporary(database)) return objects;
    for (const auto& scope : connection.temporaryScopes()) {
        for (auto& object : connection.catalog(*scope)->all()) {
            if (!object->name.starts_with('@')) objects.push_back(std::move(object));
        }
    }
    return objects;
}

std::vector<ObjectRow> allObjects(Connection& connection, Database& database) {
    const auto catalog = connection.catalog(database);
    std::vector<ObjectRow> rows;
    for (const auto& object : visibleObjects(connection, database)) {
        const std::size_t first = rows.size();
        rows.push_back(rowOf(object));
        if (object->kind == ObjectKind::Table) addConstraints(rows, object);
        const std::int32_t schema = schemaIdOf(*catalog, *object);
        for (std::size_t i = first; i < rows.size(); ++i) rows[i].schemaId = schema;
    }
    return rows;
}

std::optional<ObjectRow> objectById(Connection& connection, Database& database, std::int32_t id) {
    const auto catalog = connection.catalog(database);
    if (const auto object = catalog->findById(id)) {
        ObjectRow row = rowOf(object);
        row.schemaId = schemaIdOf(*catalog, *object);
        return row;
    }
    for (const ObjectRow& row : allObjects(connection, database)) {
        if (row.id == id) return row;
    }
    return std::nullopt;
}

std::vector<SystemView> objectViews() {
    return {
        bare(makeView<ObjectRow>("sys", "sysobjects", withSystemTables, sysobjectsFields())),
        makeView<ObjectRow>("sys", "objects", allObjects, objectFields()),
        makeView<ObjectRow>("sys", "all_objects", allObjects, objectFields()),
        makeView<ObjectRow>(
            "sys", "tables", tables,
            objectFields({
                {"lob_data_space_id", kInt, [](const ObjectRow&) { return number(0); }},
                {"max_column_id_used", kInt, [](const ObjectRow& o) { return number(o.object->lastColumnId); }},
                {"is_memory_optimized", kBit, [](const ObjectRow&) { return number(0); }},
                {"temporal_type", kTinyInt, [](const ObjectRow&) { return number(0); }},
            })),
        makeView<ObjectRow>("sys", "views", viewObjects,
                            objectFields({
                                {"is_replicated", kBit, [](const ObjectRow&) { return number(0); }},
                                {"has_replication_filter", kBit, [](const ObjectRow&) { return number(0); }},
                                {"with_check_option", kBit, [](const ObjectRow&) { return number(0); }},
                            })),
        makeView<ObjectRow>("sys", "all_views", viewObjects, objectFields()),
        makeView<SystemViewRow>("sys", "system_views", systemViewRows, systemViewFields()),
        makeView<SystemViewRow>("sys", "system_objects", systemViewRows, systemViewFields()),
        makeView<ObjectRow>("sys", "procedures", procedures, objectFields()),
        makeView<ObjectRow>(
            "sys", "key_constraints", keys,
            objectFields({
                {"unique_index_id", kInt, [](const ObjectRow& o) { return number(o.index->indexId); }},
                {"is_system_named", kBit, [](const ObjectRow& o) { return number(o.name.find("__") == 2 ? 1 : 0); }},
            })),
        makeView<ObjectRow>(
            "sys", "default_constraints", defaults,
            objectFields({
                {"parent_column_id", kInt, [](const ObjectRow& o) { return number(o.column->columnId); }},
                {"definition", kLongText, [](const ObjectRow& o) { return text(o.column->defaultText); }},
                {"is_system_named", kBit, [](const ObjectRow& o) { return number(o.name.find("__") == 2 ? 1 : 0); }},
            })),
        makeView<ObjectRow>(
            "sys", "check_constraints", checks,
            objectFields({
                {"is_disabled", kBit, [](const ObjectRow& o) { return number(o.check->disabled ? 1 : 0); }},
                {"is_not_trusted", kBit, [](const ObjectRow& o) { return number(o.check->disabled ? 1 : 0); }},
                {"parent_column_id", kInt, [](const ObjectRow&) { return number(0); }},
                {"definition", kLongText, [](const ObjectRow& o) { return text(o.check->text); }},
                {"is_system_named", kBit, [](const ObjectRow& o) { return number(o.name.find("__") == 2 ? 1 : 0); }},
            })),
        makeView<ObjectRow>(
            "sys", "foreign_keys", foreignKeys,
            objectFields({
                {"referenced_object_id", kInt, [](const ObjectRow& o) { return number(o.foreignKey->parentId); }},
                {"key_index_id", kInt, [](const ObjectRow&) { return number(1); }},
                {"is_disabled", kBit, [](const ObjectRow& o) { return number(o.foreignKey->disabled ? 1 : 0); }},
                {"is_not_trusted", kBit, [](const ObjectRow& o) { return number(o.foreignKey->disabled ? 1 : 0); }},
                {"delete_referential_action", kTinyInt,
                 [](const ObjectRow& o) { return number(o.foreignKey->cascadeDelete ? 1 : 0); }},
                {"delete_referential_action_desc", kDescription,
                 [](const ObjectRow& o) { return text(o.foreignKey->cascadeDelete ? "CASCADE" : "NO_ACTION"); }},
                {"update_referential_action", kTinyInt,
                 [](const ObjectRow& o) { return number(o.foreignKey->cascadeUpdate ? 1 : 0); }},
                {"update_referential_action_desc", kDescription,
                 [](const ObjectRow& o) { return text(o.foreignKey->cascadeUpdate ? "CASCADE" : "NO_ACTION"); }},
                {"is_system_named", kBit, [](const ObjectRow& o) { return number(o.name.find("__") == 2 ? 1 : 0); }},
            })),
        makeView<ObjectRow>("sys", "sql_modules", modules,
                            {
                                {"object_id", kInt, [](const ObjectRow& o) { return number(o.id); }},
                                {"definition", kLongText, [](const ObjectRow& o) { return text(o.object->text); }},
                                {"uses_ansi_nulls", kBit, [](const ObjectRow&) { return number(1); }},
                                {"uses_quoted_identifier", kBit, [](const ObjectRow&) { return number(1); }},
                                {"is_schema_bound", kBit, [](const ObjectRow&) { return number(0); }},
                                {"is_recompiled", kBit, [](const ObjectRow&) { return number(0); }},
                                {"null_on_null_input", kBit, [](const ObjectRow&) { return number(0); }},
                                {"execute_as_principal_id", kInt, [](const ObjectRow&) { return Value{}; }},
                            }),
        bare(makeView<ObjectRow>("sys", "syscomments", modules,
                                 {
                                     {"id", kInt, [](const ObjectRow& o) { return number(o.id); }},
                                     {"number", kSmallInt, [](const ObjectRow&) { return number(1); }},
                                     {"colid", kSmallInt, [](const ObjectRow&) { return number(1); }},
                                     {"encrypted", kBit, [](const ObjectRow&) { return number(0); }},
                                     // One row holds the whole text here; nvarchar(4000) would cut it.
                                     {"text", kLongText, [](const ObjectRow& o) { return text(o.object->text); }},
                                 })),
        makeView<SchemaRow>(
            "sys", "schemas", schemas,
            {
                {"name", kName, [](const SchemaRow& s) { return text(s->name); }},
                {"schema_id", kInt, [](const SchemaRow& s) { return number(s->id); }},
                {"principal_id", kInt, [](const SchemaRow& s) { return number(ownerOfSchema(s->name).id); }},
            }),
        bare(makeView<DatabasePrincipal>(
            "sys", "sysusers", users,
            {
                {"uid", kSmallInt, [](const DatabasePrincipal& p) { return number(p.id); }},
                {"status", kSmallInt, [](const DatabasePrincipal&) { return number(0); }},
                {"name", kName, [](const DatabasePrincipal& p) { return text(p.name); }},
                {"hasdbaccess", kInt, [](const DatabasePrincipal& p) { return number(p.id == 1 ? 1 : 0); }},
                {"islogin", kInt, [](const DatabasePrincipal&) { return number(1); }},
                {"issqluser", kInt, [](const DatabasePrincipal&) { return number(1); }},
                {"issqlrole", kInt, [](const DatabasePrincipal&) { return number(0); }},
            })),
    };
}

}  // namespace sandbox::views
