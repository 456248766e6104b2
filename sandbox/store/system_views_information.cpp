// The INFORMATION_SCHEMA views.
#include "sandbox/store/system_view_rows.h"

namespace sandbox::views {

namespace {

struct TableRow {
    std::string catalog;
    std::shared_ptr<const ObjectDef> object;
};

std::vector<TableRow> ofKinds(Connection& connection, Database& database, bool (*wanted)(ObjectKind)) {
    std::vector<TableRow> rows;
    for (const auto& object : visibleObjects(connection, database)) {
        if (wanted(object->kind)) rows.push_back({database.name(), object});
    }
    return rows;
}

std::vector<TableRow> tables(Connection& c, Database& d) {
    return ofKinds(c, d, [](ObjectKind k) { return k == ObjectKind::Table || k == ObjectKind::View; });
}
std::vector<TableRow> viewsOnly(Connection& c, Database& d) {
    return ofKinds(c, d, [](ObjectKind k) { return k == ObjectKind::View; });
}
std::vector<TableRow> routines(Connection& c, Database& d) {
    return ofKinds(c, d, [](ObjectKind k) { return k == ObjectKind::Procedure || k == ObjectKind::Function; });
}

struct ColumnRow {
    std::string catalog;
    std::string collation;
    std::shared_ptr<const ObjectDef> object;
    const ColumnDef* column = nullptr;
    int ordinal = 0;
    TypeFacts facts;

    [[nodiscard]] const Type& type() const { return column->type; }
};

std::vector<ColumnRow> columns(Connection& connection, Database& database) {
    std::vector<ColumnRow> rows;
    for (const auto& object : visibleObjects(connection, database)) {
        int ordinal = 0;
        for (const ColumnDef& column : object->columns) {
            rows.push_back({database.name(), column.collation.empty() ? database.facts().collation : column.collation,
                            object, &column, ++ordinal, typeFacts(column.type)});
        }
    }
    return rows;
}

// Characters, or bytes of a binary type; -1 for (max), 2^31-1 or half of it for text and ntext.
Value characters(const ColumnRow& c) {
    const Type& type = c.type();
    if (!isCharacter(type.id) && !isBinary(type.id)) return {};
    if (type.id == TypeId::NText) return number(1073741823);
    return isLob(type.id) ? number(2147483647) : number(type.length);
}

Value octets(const ColumnRow& c) {
    const Type& type = c.type();
    if (!isCharacter(type.id) && !isBinary(type.id)) return {};
    if (type.id == TypeId::NText) return number(2147483646);
    return isLob(type.id) ? number(2147483647) : number(c.facts.bytes);
}

Value characterSet(const ColumnRow& c) {
    if (!isCharacter(c.type().id)) return {};
    return text(isUnicode(c.type().id) ? "UNICODE" : "iso_1");
}

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
                if (index.unique && index.keys.size() == object.foreignKey->columns.size() && row.unique.empty()) {
                    row.unique = index.name;
                }
            }
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

using T = TableRow;
using C = ColumnRow;
using N = ConstraintRow;
using K = KeyColumnRow;
using R = ReferenceRow;

}  // namespace

std::vector<SystemView> informationSchemaViews() {
    const std::string_view schema = "INFORMATION_SCHEMA";
    return {
        makeView<T>(schema, "TABLES", tables,
                    {
                        {"TABLE_CATALOG", kName, [](const T& t) { return text(t.catalog); }},
                        {"TABLE_SCHEMA", kName, [](const T& t) { return text(t.object->schema); }},
                        {"TABLE_NAME", kName, [](const T& t) { return text(t.object->name); }},
                        {"TABLE_TYPE", varcharType(10),
                         [](const T& t) { return text(t.object->kind == ObjectKind::View ? "VIEW" : "BASE TABLE"); }},
                    }),
        makeView<T>(schema, "VIEWS", viewsOnly,
                    {
                        {"TABLE_CATALOG", kName, [](const T& t) { return text(t.catalog); }},
                        {"TABLE_SCHEMA", kName, [](const T& t) { return text(t.object->schema); }},
                        {"TABLE_NAME", kName, [](const T& t) { return text(t.object->name); }},
                        {"VIEW_DEFINITION", kLongText, [](const T& t) { return text(t.object->text); }},
                        {"CHECK_OPTION", varcharType(7), [](const T&) { return text("NONE"); }},
                        {"IS_UPDATABLE", varcharType(2), [](const T&) { return text("NO"); }},
                    }),
        makeView<C>(
            schema, "COLUMNS", columns,
            {
                {"TABLE_CATALOG", kName, [](const C& c) { return text(c.catalog); }},
                {"TABLE_SCHEMA", kName, [](const C& c) { return text(c.object->schema); }},
                {"TABLE_NAME", kName, [](const C& c) { return text(c.object->name); }},
                {"COLUMN_NAME", kName, [](const C& c) { return text(c.column->name); }},
                {"ORDINAL_POSITION", kInt, [](const C& c) { return number(c.ordinal); }},
                {"COLUMN_DEFAULT", kText, [](const C& c) { return textOrNull(c.column->defaultText); }},
                {"IS_NULLABLE", varcharType(3), [](const C& c) { return text(c.column->nullable ? "YES" : "NO"); }},
                {"DATA_TYPE", kName, [](const C& c) { return text(typeName(c.type())); }},
                {"CHARACTER_MAXIMUM_LENGTH", kInt, characters},
                {"CHARACTER_OCTET_LENGTH", kInt, octets},
                {"NUMERIC_PRECISION", kTinyInt,
                 [](const C& c) {
                     return isNumeric(c.type().id) && c.type().id != TypeId::Bit ? number(c.facts.precision) : Value{};
                 }},
                {"NUMERIC_PRECISION_RADIX", kSmallInt,
                 [](const C& c) {
                     if (!isNumeric(c.type().id) || c.type().id == TypeId::Bit) return Value{};
                     return number(isExactNumeric(c.type().id) ? 10 : 2);
                 }},
                {"NUMERIC_SCALE", kInt,
                 [](const C& c) {
                     return isExactNumeric(c.type().id) && c.type().id != TypeId::Bit ? number(c.facts.scale) : Value{};
                 }},
                {"DATETIME_PRECISION", kSmallInt,
                 [](const C& c) { return isTemporal(c.type().id) ? number(c.facts.scale) : Value{}; }},
                {"CHARACTER_SET_CATALOG", kName, [](const C&) { return Value{}; }},
                {"CHARACTER_SET_SCHEMA", kName, [](const C&) { return Value{}; }},
                {"CHARACTER_SET_NAME", kName, characterSet},
                {"COLLATION_CATALOG", kName, [](const C&) { return Value{}; }},
                {"COLLATION_SCHEMA", kName, [](const C&) { return Value{}; }},
                {"COLLATION_NAME", kName,
                 [](const C& c) { return isCharacter(c.type().id) ? text(c.collation) : Value{}; }},
                {"DOMAIN_CATALOG", kName, [](const C&) { return Value{}; }},
                {"DOMAIN_SCHEMA", kName, [](const C&) { return Value{}; }},
                {"DOMAIN_NAME", kName, [](const C&) { return Value{}; }},
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
        makeView<T>(
            schema, "ROUTINES", routines,
            {
                {"SPECIFIC_CATALOG", kName, [](const T& t) { return text(t.catalog); }},
                {"SPECIFIC_SCHEMA", kName, [](const T& t) { return text(t.object->schema); }},
                {"SPECIFIC_NAME", kName, [](const T& t) { return text(t.object->name); }},
                {"ROUTINE_CATALOG", kName, [](const T& t) { return text(t.catalog); }},
                {"ROUTINE_SCHEMA", kName, [](const T& t) { return text(t.object->schema); }},
                {"ROUTINE_NAME", kName, [](const T& t) { return text(t.object->name); }},
                {"ROUTINE_TYPE", kName,
                 [](const T& t) { return text(t.object->kind == ObjectKind::Function ? "FUNCTION" : "PROCEDURE"); }},
                {"ROUTINE_DEFINITION", kText, [](const T& t) { return text(t.object->text); }},
                {"CREATED", kDateTime, [](const T& t) { return number(t.object->created); }},
                {"LAST_ALTERED", kDateTime, [](const T& t) { return number(t.object->modified); }},
            }),
    };
}

}  // namespace sandbox::views
