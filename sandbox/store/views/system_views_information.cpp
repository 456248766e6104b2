// The INFORMATION_SCHEMA views of tables, columns and routines.
#include "sandbox/store/databases/principals.h"
#include "sandbox/store/views/system_view_rows.h"

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
template <typename Row>
Value characters(const Row& c) {
    const Type& type = c.type();
    if ((!isCharacter(type.id) && !isBinary(type.id)) || type.rowVersion) return {};
    if (type.id == TypeId::NText) return number(1073741823);
    return isLob(type.id) ? number(2147483647) : number(type.length);
}

template <typename Row>
Value octets(const Row& c) {
    const Type& type = c.type();
    if ((!isCharacter(type.id) && !isBinary(type.id)) || type.rowVersion) return {};
    if (type.id == TypeId::NText) return number(2147483646);
    return isLob(type.id) ? number(2147483647) : number(c.facts.bytes);
}

template <typename Row>
Value characterSet(const Row& c) {
    if (!isCharacter(c.type().id)) return {};
    return text(isUnicode(c.type().id) ? "UNICODE" : "iso_1");
}

template <typename Row>
Value collationOf(const Row& c) {
    return isCharacter(c.type().id) ? text(c.collation) : Value{};
}

template <typename Row>
bool hasDigits(const Row& c) {
    return isNumeric(c.type().id) && c.type().id != TypeId::Bit;
}

template <typename Row>
Value digits(const Row& c) {
    return hasDigits(c) ? number(c.facts.precision) : Value{};
}

template <typename Row>
Value radix(const Row& c) {
    return hasDigits(c) ? number(isExactNumeric(c.type().id) ? 10 : 2) : Value{};
}

template <typename Row>
Value decimals(const Row& c) {
    return hasDigits(c) && isExactNumeric(c.type().id) ? number(c.facts.scale) : Value{};
}

template <typename Row>
Value fractions(const Row& c) {
    return isTemporal(c.type().id) ? number(c.facts.scale) : Value{};
}

// The columns that tell the type of a column, of a parameter.
template <typename Row>
std::vector<Field<Row>> typeFields() {
    const auto none = [](const Row&) { return Value{}; };
    return {
        {"DATA_TYPE", kName, [](const Row& c) { return text(typeName(c.type())); }},
        {"CHARACTER_MAXIMUM_LENGTH", kInt, characters<Row>},
        {"CHARACTER_OCTET_LENGTH", kInt, octets<Row>},
        {"NUMERIC_PRECISION", kTinyInt, digits<Row>},
        {"NUMERIC_PRECISION_RADIX", kSmallInt, radix<Row>},
        {"NUMERIC_SCALE", kInt, decimals<Row>},
        {"DATETIME_PRECISION", kSmallInt, fractions<Row>},
        {"CHARACTER_SET_CATALOG", kName, none},
        {"CHARACTER_SET_SCHEMA", kName, none},
        {"CHARACTER_SET_NAME", kName, characterSet<Row>},
        {"COLLATION_CATALOG", kName, none},
        {"COLLATION_SCHEMA", kName, none},
        {"COLLATION_NAME", kName, collationOf<Row>},
    };
}

template <typename Row>
std::vector<Field<Row>> joined(std::vector<Field<Row>> first, std::vector<Field<Row>> second,
                               std::vector<Field<Row>> third = {}) {
    first.insert(first.end(), second.begin(), second.end());
    first.insert(first.end(), third.begin(), third.end());
    return first;
}

struct SchemaRow {
    std::string catalog;
    std::string name;
};

std::vector<SchemaRow> schemata(Connection& connection, Database& database) {
    std::vector<SchemaRow> rows;
    for (const auto& schema : connection.catalog(database)->schemas()) rows.push_back({database.name(), schema->name});
    return rows;
}

struct ParameterRow {
    std::string catalog;
    std::string collation;
    std::shared_ptr<const ObjectDef> routine;
    const ParameterDef* parameter = nullptr;
    int ordinal = 0;
    TypeFacts facts;

    [[nodiscard]] const Type& type() const { return parameter->type; }
};

std::vector<ParameterRow> parameters(Connection& connection, Database& database) {
    std::vector<ParameterRow> rows;
    for (TableRow& routine : routines(connection, database)) {
        int ordinal = 0;
        for (const ParameterDef& p : routine.object->parameters) {
            rows.push_back(
                {routine.catalog, database.facts().collation, routine.object, &p, ++ordinal, typeFacts(p.type)});
        }
    }
    return rows;
}

using M = ParameterRow;
using T = TableRow;
using C = ColumnRow;

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
            joined<C>(
                {
                    {"TABLE_CATALOG", kName, [](const C& c) { return text(c.catalog); }},
                    {"TABLE_SCHEMA", kName, [](const C& c) { return text(c.object->schema); }},
                    {"TABLE_NAME", kName, [](const C& c) { return text(c.object->name); }},
                    {"COLUMN_NAME", kName, [](const C& c) { return text(c.column->name); }},
                    {"ORDINAL_POSITION", kInt, [](const C& c) { return number(c.ordinal); }},
                    {"COLUMN_DEFAULT", kText, [](const C& c) { return textOrNull(c.column->defaultText); }},
                    {"IS_NULLABLE", varcharType(3), [](const C& c) { return text(c.column->nullable ? "YES" : "NO"); }},
                },
                typeFields<C>(),
                {
                    {"DOMAIN_CATALOG", kName, [](const C&) { return Value{}; }},
                    {"DOMAIN_SCHEMA", kName, [](const C&) { return Value{}; }},
                    {"DOMAIN_NAME", kName, [](const C&) { return Value{}; }},
                })),
        makeView<M>(schema, "PARAMETERS", parameters,
                    joined<M>(
                        {
                            {"SPECIFIC_CATALOG", kName, [](const M& m) { return text(m.catalog); }},
                            {"SPECIFIC_SCHEMA", kName, [](const M& m) { return text(m.routine->schema); }},
                            {"SPECIFIC_NAME", kName, [](const M& m) { return text(m.routine->name); }},
                            {"ORDINAL_POSITION", kInt, [](const M& m) { return number(m.ordinal); }},
                            {"PARAMETER_MODE", varcharType(10),
                             [](const M& m) { return text(m.parameter->output ? "INOUT" : "IN"); }},
                            {"IS_RESULT", varcharType(10), [](const M&) { return text("NO"); }},
                            {"AS_LOCATOR", varcharType(10), [](const M&) { return text("NO"); }},
                            {"PARAMETER_NAME", kName, [](const M& m) { return text(m.parameter->name); }},
                        },
                        typeFields<M>(),
                        {
                            {"INTERVAL_TYPE", varcharType(30), [](const M&) { return Value{}; }},
                            {"INTERVAL_PRECISION", kSmallInt, [](const M&) { return Value{}; }},
                            {"USER_DEFINED_TYPE_CATALOG", kName, [](const M&) { return Value{}; }},
                            {"USER_DEFINED_TYPE_SCHEMA", kName, [](const M&) { return Value{}; }},
                            {"USER_DEFINED_TYPE_NAME", kName, [](const M&) { return Value{}; }},
                        })),
        makeView<SchemaRow>(
            schema, "SCHEMATA", schemata,
            {
                {"CATALOG_NAME", kName, [](const SchemaRow& s) { return text(s.catalog); }},
                {"SCHEMA_NAME", kName, [](const SchemaRow& s) { return text(s.name); }},
                {"SCHEMA_OWNER", kName, [](const SchemaRow& s) { return text(ownerOfSchema(s.name).name); }},
                {"DEFAULT_CHARACTER_SET_CATALOG", varcharType(6), [](const SchemaRow&) { return Value{}; }},
                {"DEFAULT_CHARACTER_SET_SCHEMA", varcharType(3), [](const SchemaRow&) { return Value{}; }},
                {"DEFAULT_CHARACTER_SET_NAME", kName, [](const SchemaRow&) { return text("iso_1"); }},
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
