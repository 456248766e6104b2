// The INFORMATION_SCHEMA views of constraints.
#include "sandbox/store/views/system_view_rows.h"

namespace sandbox::views {

namespace {

struct ConstraintRow {
    std::string catalog;
    ObjectRow constraint;
};

std::vector<ConstraintRow> constraints(Connection& connection, Database& database) {
    std::vector<ConstraintRow> rows;
    for (ObjectRow& object : allObjects(connection, database)) {
        if (object.index != nullptr || object.foreignKey != nullptr || object.check != nullptr) {
            rows.push_back({database.name(), std::move(object)});
        }
    }
    return rows;
}

std::string_view constraintType(const ConstraintRow& c) {
    if (c.constraint.foreignKey != nullptr) return "FOREIGN KEY";
    if (c.constraint.check != nullptr) return "CHECK";
    return c.constraint.index->primaryKey ? "PRIMARY KEY" : "UNIQUE";
}

struct KeyColumnRow {
    std::string catalog;
    std::string constraint;
    std::shared_ptr<const ObjectDef> table;
    std::string column;
    int ordinal = 0;
};

std::vector<KeyColumnRow> keyColumns(Connection& connection, Database& database) {
    std::vector<KeyColumnRow> rows;
    for (const ObjectRow& object : allObjects(connection, database)) {
        int ordinal = 0;
        if (object.index != nullptr) {
            for (const IndexDef::Key& key : object.index->keys) {
                rows.push_back({database.name(), std::string(object.name), object.object, key.column, ++ordinal});
            }
        } else if (object.foreignKey != nullptr) {
            for (const std::string& column : object.foreignKey->columns) {
                rows.push_back({database.name(), std::string(object.name), object.object, column, ++ordinal});
            }
        }
    }
    return rows;
}

struct ReferenceRow {
    std::string catalog;
    std::string name;
    const ForeignKeyDef* key = nullptr;
    std::string unique;  // the parent's constraint
    std::shared_ptr<const ObjectDef> keeps;
};

std::vector<ReferenceRow> references(Connection& connection, Database& database) {
    std::vector<ReferenceRow> rows;
    const auto catalog = connection.catalog(database);
    for (const ObjectRow& object : allObjects(connection, database)) {
        if (object.foreignKey == nullptr) continue;
        ReferenceRow row{database.name(), std::string(object.name), object.foreignKey, {}, object.object};
        if (const auto parent = catalog->findById(object.foreignKey->parentId)) {
            for (const IndexDef& index : parent->indexes) {
                if (index.unique && index.filter.empty() && index.keys.size() == object.foreignKey->columns.size() &&
                    row.unique.empty()) {
                    row.unique = index.name;
                }
            }
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

// A constraint's use of a column of the table whose rows it looks at; of a foreign key, its own table's.
struct UsageRow {
    ConstraintRow of;
    std::string column;
};

std::vector<UsageRow> columnUsage(Connection& connection, Database& database) {
    std::vector<UsageRow> rows;
    for (const ConstraintRow& row : constraints(connection, database)) {
        const ObjectRow& constraint = row.constraint;
        if (constraint.index != nullptr) {
            for (const IndexDef::Key& key : constraint.index->keys) rows.push_back({row, key.column});
        } else if (constraint.foreignKey != nullptr) {
            for (const std::string& column : constraint.foreignKey->columns) rows.push_back({row, column});
        } else if (!constraint.check->column.empty()) {
            rows.push_back({row, constraint.check->column});
        }
    }
    return rows;
}

std::vector<ConstraintRow> checksOnly(Connection& connection, Database& database) {
    std::vector<ConstraintRow> rows = constraints(connection, database);
    std::erase_if(rows, [](const ConstraintRow& row) { return row.constraint.check == nullptr; });
    return rows;
}

using N = ConstraintRow;
using K = KeyColumnRow;
using R = ReferenceRow;

}  // namespace

std::vector<SystemView> constraintViews() {
    const std::string_view schema = "INFORMATION_SCHEMA";
    return {
        makeView<UsageRow>(
            schema, "CONSTRAINT_COLUMN_USAGE", columnUsage,
            {
                {"TABLE_CATALOG", kName, [](const UsageRow& u) { return text(u.of.catalog); }},
                {"TABLE_SCHEMA", kName, [](const UsageRow& u) { return text(u.of.constraint.object->schema); }},
                {"TABLE_NAME", kName, [](const UsageRow& u) { return text(u.of.constraint.object->name); }},
                {"COLUMN_NAME", kName, [](const UsageRow& u) { return text(u.column); }},
                {"CONSTRAINT_CATALOG", kName, [](const UsageRow& u) { return text(u.of.catalog); }},
                {"CONSTRAINT_SCHEMA", kName, [](const UsageRow& u) { return text(u.of.constraint.object->schema); }},
                {"CONSTRAINT_NAME", kName, [](const UsageRow& u) { return text(u.of.constraint.name); }},
            }),
        makeView<N>(schema, "CONSTRAINT_TABLE_USAGE", constraints,
                    {
                        {"TABLE_CATALOG", kName, [](const N& n) { return text(n.catalog); }},
                        {"TABLE_SCHEMA", kName, [](const N& n) { return text(n.constraint.object->schema); }},
                        {"TABLE_NAME", kName, [](const N& n) { return text(n.constraint.object->name); }},
                        {"CONSTRAINT_CATALOG", kName, [](const N& n) { return text(n.catalog); }},
                        {"CONSTRAINT_SCHEMA", kName, [](const N& n) { return text(n.constraint.object->schema); }},
                        {"CONSTRAINT_NAME", kName, [](const N& n) { return text(n.constraint.name); }},
                    }),
        makeView<N>(schema, "CHECK_CONSTRAINTS", checksOnly,
                    {
                        {"CONSTRAINT_CATALOG", kName, [](const N& n) { return text(n.catalog); }},
                        {"CONSTRAINT_SCHEMA", kName, [](const N& n) { return text(n.constraint.object->schema); }},
                        {"CONSTRAINT_NAME", kName, [](const N& n) { return text(n.constraint.name); }},
                        {"CHECK_CLAUSE", kText, [](const N& n) { return text(n.constraint.check->text); }},
                    }),
        makeView<N>(schema, "TABLE_CONSTRAINTS", constraints,
                    {
                        {"CONSTRAINT_CATALOG", kName, [](const N& n) { return text(n.catalog); }},
                        {"CONSTRAINT_SCHEMA", kName, [](const N& n) { return text(n.constraint.object->schema); }},
                        {"CONSTRAINT_NAME", kName, [](const N& n) { return text(n.constraint.name); }},
                        {"TABLE_CATALOG", kName, [](const N& n) { return text(n.catalog); }},
                        {"TABLE_SCHEMA", kName, [](const N& n) { return text(n.constraint.object->schema); }},
                        {"TABLE_NAME", kName, [](const N& n) { return text(n.constraint.object->name); }},
                        {"CONSTRAINT_TYPE", varcharType(11), [](const N& n) { return text(constraintType(n)); }},
                        {"IS_DEFERRABLE", varcharType(2), [](const N&) { return text("NO"); }},
                        {"INITIALLY_DEFERRED", varcharType(2), [](const N&) { return text("NO"); }},
                    }),
        makeView<K>(schema, "KEY_COLUMN_USAGE", keyColumns,
                    {
                        {"CONSTRAINT_CATALOG", kName, [](const K& k) { return text(k.catalog); }},
                        {"CONSTRAINT_SCHEMA", kName, [](const K& k) { return text(k.table->schema); }},
                        {"CONSTRAINT_NAME", kName, [](const K& k) { return text(k.constraint); }},
                        {"TABLE_CATALOG", kName, [](const K& k) { return text(k.catalog); }},
                        {"TABLE_SCHEMA", kName, [](const K& k) { return text(k.table->schema); }},
                        {"TABLE_NAME", kName, [](const K& k) { return text(k.table->name); }},
                        {"COLUMN_NAME", kName, [](const K& k) { return text(k.column); }},
                        {"ORDINAL_POSITION", kInt, [](const K& k) { return number(k.ordinal); }},
                    }),
        makeView<R>(schema, "REFERENTIAL_CONSTRAINTS", references,
                    {
                        {"CONSTRAINT_CATALOG", kName, [](const R& r) { return text(r.catalog); }},
                        {"CONSTRAINT_SCHEMA", kName, [](const R& r) { return text(r.keeps->schema); }},
                        {"CONSTRAINT_NAME", kName, [](const R& r) { return text(r.name); }},
                        {"UNIQUE_CONSTRAINT_CATALOG", kName, [](const R& r) { return text(r.catalog); }},
                        {"UNIQUE_CONSTRAINT_SCHEMA", kName, [](const R& r) { return text(r.key->parentSchema); }},
                        {"UNIQUE_CONSTRAINT_NAME", kName, [](const R& r) { return textOrNull(r.unique); }},
                        {"MATCH_OPTION", varcharType(7), [](const R&) { return text("SIMPLE"); }},
                        {"UPDATE_RULE", varcharType(11),
                         [](const R& r) { return text(r.key->cascadeUpdate ? "CASCADE" : "NO ACTION"); }},
                        {"DELETE_RULE", varcharType(11),
                         [](const R& r) { return text(r.key->cascadeDelete ? "CASCADE" : "NO ACTION"); }},
                    }),
    };
}

}  // namespace sandbox::views
