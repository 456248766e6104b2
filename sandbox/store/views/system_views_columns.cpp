// syscolumns, sys.columns and the views of parameters, identities and types.
#include <algorithm>
#include <array>

#include "sandbox/store/values/collation.h"
#include "sandbox/store/views/system_view_rows.h"

namespace sandbox::views {

namespace {

// One type as systypes lists it.
struct TypeRow {
    std::string_view name;
    int systemId;
    int userId;
    int bytes;
    int precision;
    int scale;
    TypeId id;
    bool numericName = false;
    bool rowVersion = false;
};

constexpr TypeRow kTypes[] = {
    {"image", 34, 34, 16, 0, 0, TypeId::Image},
    {"text", 35, 35, 16, 0, 0, TypeId::Text},
    {"uniqueidentifier", 36, 36, 16, 0, 0, TypeId::UniqueIdentifier},
    {"date", 40, 40, 3, 10, 0, TypeId::Date},
    {"time", 41, 41, 5, 16, 7, TypeId::Time},
    {"datetime2", 42, 42, 8, 27, 7, TypeId::DateTime2},
    {"tinyint", 48, 48, 1, 3, 0, TypeId::TinyInt},
    {"smallint", 52, 52, 2, 5, 0, TypeId::SmallInt},
    {"int", 56, 56, 4, 10, 0, TypeId::Int},
    {"smalldatetime", 58, 58, 4, 16, 0, TypeId::SmallDateTime},
    {"real", 59, 59, 4, 24, 0, TypeId::Real},
    {"money", 60, 60, 8, 19, 4, TypeId::Money},
    {"datetime", 61, 61, 8, 23, 3, TypeId::DateTime},
    {"float", 62, 62, 8, 53, 0, TypeId::Float},
    {"ntext", 99, 99, 16, 0, 0, TypeId::NText},
    {"bit", 104, 104, 1, 1, 0, TypeId::Bit},
    {"decimal", 106, 106, 17, 38, 38, TypeId::Decimal},
    {"numeric", 108, 108, 17, 38, 38, TypeId::Decimal, true},
    {"smallmoney", 122, 122, 4, 10, 4, TypeId::SmallMoney},
    {"bigint", 127, 127, 8, 19, 0, TypeId::BigInt},
    {"varbinary", 165, 165, 8000, 0, 0, TypeId::VarBinary},
    {"varchar", 167, 167, 8000, 0, 0, TypeId::VarChar},
    {"binary", 173, 173, 8000, 0, 0, TypeId::Binary},
    {"char", 175, 175, 8000, 0, 0, TypeId::Char},
    {"timestamp", 189, 189, 8, 0, 0, TypeId::Binary, false, true},
    {"nvarchar", 231, 231, 8000, 0, 0, TypeId::NVarChar},
    {"nchar", 239, 239, 8000, 0, 0, TypeId::NChar},
    {"sysname", 231, 256, 256, 0, 0, TypeId::NVarChar},
};

int decimalBytes(int precision) {
    return precision <= 9 ? 5 : precision <= 19 ? 9 : precision <= 28 ? 13 : 17;
}
int timeBytes(int scale) {
    return scale <= 2 ? 3 : scale <= 4 ? 4 : 5;
}
int withFraction(int precision, int scale) {
    return precision + (scale > 0 ? scale + 1 : 0);
}

struct ColumnRow {
    std::shared_ptr<const ObjectDef> object;
    const ColumnDef* column = nullptr;
    std::string collation;  // empty where the type has none
    std::optional<std::int64_t> lastIdentity;
    TypeFacts facts;
};

std::vector<ColumnRow> columns(Connection& connection, Database& database) {
    std::vector<ColumnRow> rows;
    for (const auto& object : visibleObjects(connection, database)) {
        for (const ColumnDef& column : object->columns) {
            ColumnRow row;
            row.object = object;
            row.column = &column;
            row.facts = typeFacts(column.type);
            if (isCharacter(column.type.id)) {
                row.collation = column.collation.empty() ? database.facts().collation : column.collation;
            }
            if (column.identity) row.lastIdentity = database.lastIdentity(object->id);
            rows.push_back(std::move(row));
        }
    }
    return rows;
}

std::vector<ColumnRow> identityColumns(Connection& connection, Database& database) {
    std::vector<ColumnRow> rows = columns(connection, database);
    std::erase_if(rows, [](const ColumnRow& row) { return !row.column->identity; });
    return rows;
}

std::vector<ColumnRow> computedColumns(Connection& connection, Database& database) {
    std::vector<ColumnRow> rows = columns(connection, database);
    std::erase_if(rows, [](const ColumnRow& row) { return row.column->computedText.empty(); });
    return rows;
}

struct ParameterRow {
    std::int32_t object = 0;
    int number = 0;
    const ParameterDef* parameter = nullptr;
    TypeFacts facts;
    std::shared_ptr<const ObjectDef> keeps;
};

std::vector<ParameterRow> parameters(Connection& connection, Database& database) {
    std::vector<ParameterRow> rows;
    for (const auto& object : visibleObjects(connection, database)) {
        int number = 0;
        for (const ParameterDef& p : object->parameters) {
            rows.push_back({object->id, ++number, &p, typeFacts(p.type), object});
        }
    }
    return rows;
}

// syscolumns lists parameters too: one row type for both.
struct SysColumnRow {
    std::string name;
    std::int32_t id = 0;
    int number = 0;
    Type type;
    TypeFacts facts;
    std::string collation;
    const ColumnDef* column = nullptr;  // none: a parameter
    bool output = false;
    std::shared_ptr<const ObjectDef> keeps;
};

std::vector<SysColumnRow> sysColumns(Connection& connection, Database& database) {
    std::vector<SysColumnRow> rows;
    for (ColumnRow& c : columns(connection, database)) {
        rows.push_back({c.column->name, c.object->id, c.column->columnId, c.column->type, c.facts,
                        std::move(c.collation), c.column, false, c.object});
    }
    for (ParameterRow& p : parameters(connection, database)) {
        rows.push_back({p.parameter->name, p.object, p.number, p.parameter->type, p.facts,
                        isCharacter(p.parameter->type.id) ? database.facts().collation : std::string(), nullptr,
                        p.parameter->output, p.keeps});
    }
    return rows;
}

// prec counts characters, and digits.
Value shownPrecision(const SysColumnRow& c) {
    if (isCharacter(c.type.id) || isBinary(c.type.id)) {
        return isLob(c.type.id) ? Value{} : number(c.type.length);
    }
    return c.facts.precision == 0 ? Value{} : number(c.facts.precision);
}

std::vector<TypeRow> types(Connection&, Database&) {
    return {std::begin(kTypes), std::end(kTypes)};
}

using C = ColumnRow;
using S = SysColumnRow;
using P = ParameterRow;

std::vector<Field<C>> columnFields(std::vector<Field<C>> more = {}) {
    std::vector<Field<C>> fields{
        {"object_id", kInt, [](const C& c) { return number(c.object->id); }},
        {"name", kName, [](const C& c) { return text(c.column->name); }},
        {"column_id", kInt, [](const C& c) { return number(c.column->columnId); }},
        {"system_type_id", kTinyInt, [](const C& c) { return number(c.facts.systemId); }},
        {"user_type_id", kInt, [](const C& c) { return number(c.facts.userId); }},
        {"max_length", kSmallInt, [](const C& c) { return number(c.facts.bytes); }},
        {"precision", kTinyInt, [](const C& c) { return number(c.facts.precision); }},
        {"scale", kTinyInt, [](const C& c) { return number(c.facts.scale); }},
        {"collation_name", kName, [](const C& c) { return textOrNull(c.collation); }},
        {"is_nullable", kBit, [](const C& c) { return number(c.column->nullable ? 1 : 0); }},
        {"is_ansi_padded", kBit,
         [](const C& c) { return number(isCharacter(c.column->type.id) || isBinary(c.column->type.id) ? 1 : 0); }},
        {"is_rowguidcol", kBit, [](const C&) { return number(0); }},
        {"is_identity", kBit, [](const C& c) { return number(c.column->identity ? 1 : 0); }},
        {"is_computed", kBit, [](const C& c) { return number(c.column->computedText.empty() ? 0 : 1); }},
        {"default_object_id", kInt, [](const C& c) { return number(c.column->defaultId); }},
        {"rule_object_id", kInt, [](const C&) { return number(0); }},
        {"is_filestream", kBit, [](const C&) { return number(0); }},
        {"is_replicated", kBit, [](const C&) { return number(0); }},
        {"is_xml_document", kBit, [](const C&) { return number(0); }},
        {"xml_collection_id", kInt, [](const C&) { return number(0); }},
        {"is_sparse", kBit, [](const C&) { return number(0); }},
        {"is_column_set", kBit, [](const C&) { return number(0); }},
        {"generated_always_type", kTinyInt, [](const C&) { return number(0); }},
        {"generated_always_type_desc", kDescription, [](const C&) { return text("NOT_APPLICABLE"); }},
        {"is_hidden", kBit, [](const C&) { return number(0); }},
        {"is_masked", kBit, [](const C&) { return number(0); }},
    };
    fields.insert(fields.end(), more.begin(), more.end());
    return fields;
}

SystemView bare(SystemView view) {
    view.bare = true;
    return view;
}

SystemView live(SystemView view) {
    view.live = true;
    return view;
}

}  // namespace

TypeFacts typeFacts(const Type& type) {
    const auto* row = std::find_if(std::begin(kTypes), std::end(kTypes), [&](const TypeRow& t) {
        return t.id == type.id && t.numericName == type.numericName && t.rowVersion == type.rowVersion;
    });
    if (row == std::end(kTypes)) return {};
    TypeFacts facts{row->systemId, row->userId, row->bytes, row->precision, row->scale};
    if ((isCharacter(type.id) || isBinary(type.id)) && !isLob(type.id)) {
        facts.bytes = type.length == Type::kMax ? -1 : isUnicode(type.id) ? type.length * 2 : type.length;
    } else if (type.id == TypeId::Decimal) {
        facts.bytes = decimalBytes(type.precision);
        facts.precision = type.precision;
        facts.scale = type.scale;
    } else if (type.id == TypeId::Time) {
        facts.bytes = timeBytes(type.scale);
        facts.precision = withFraction(8, type.scale);
        facts.scale = type.scale;
    } else if (type.id == TypeId::DateTime2) {
        facts.bytes = timeBytes(type.scale) + 3;
        facts.precision = withFraction(19, type.scale);
        facts.scale = type.scale;
    }
    return facts;
}

std::vector<SystemView> columnViews() {
    return {
        bare(makeView<S>(
            "sys", "syscolumns", sysColumns,
            {
                {"name", kName, [](const S& c) { return text(c.name); }},
                {"id", kInt, [](const S& c) { return number(c.id); }},
                {"xtype", kTinyInt, [](const S& c) { return number(c.facts.systemId); }},
                {"typestat", kTinyInt, [](const S& c) { return number(c.column && !c.column->nullable ? 1 : 0); }},
                {"xusertype", kSmallInt, [](const S& c) { return number(c.facts.userId); }},
                {"length", kSmallInt, [](const S& c) { return number(c.facts.bytes); }},
                {"xprec", kTinyInt, [](const S& c) { return number(c.facts.precision); }},
                {"xscale", kTinyInt, [](const S& c) { return number(c.facts.scale); }},
                {"colid", kSmallInt, [](const S& c) { return number(c.number); }},
                {"xoffset", kSmallInt, [](const S&) { return number(0); }},
                {"bitpos", kTinyInt, [](const S&) { return number(0); }},
                {"reserved", kTinyInt, [](const S&) { return number(0); }},
                {"colstat", kSmallInt,
                 [](const S& c) {
                     return number(c.column == nullptr               ? 4 * (c.output ? 1 : 0)
                                   : c.column->identity              ? 1
                                   : !c.column->computedText.empty() ? 4
                                                                     : 0);
                 }},
                {"cdefault", kInt, [](const S& c) { return number(c.column != nullptr ? c.column->defaultId : 0); }},
                {"domain", kInt, [](const S&) { return number(0); }},
                {"number", kSmallInt, [](const S& c) { return number(c.column != nullptr ? 0 : 1); }},
                {"colorder", kSmallInt, [](const S& c) { return number(c.number); }},
                {"offset", kSmallInt, [](const S&) { return number(0); }},
                {"status", kTinyInt,
                 [](const S& c) {
                     if (c.column == nullptr) return number(c.output ? 64 : 0);
                     return number((c.column->nullable ? 8 : 0) + (c.column->identity ? 128 : 0));
                 }},
                {"type", kTinyInt, [](const S& c) { return number(c.facts.systemId); }},
                {"usertype", kSmallInt, [](const S& c) { return number(c.facts.userId); }},
                {"prec", kSmallInt, shownPrecision},
                {"scale", kInt, [](const S& c) { return c.facts.precision == 0 ? Value{} : number(c.facts.scale); }},
                {"iscomputed", kInt,
                 [](const S& c) { return number(c.column && !c.column->computedText.empty() ? 1 : 0); }},
                {"isoutparam", kInt, [](const S& c) { return number(c.output ? 1 : 0); }},
                {"isnullable", kInt, [](const S& c) { return number(!c.column || c.column->nullable ? 1 : 0); }},
                {"collation", kName, [](const S& c) { return textOrNull(c.collation); }},
            })),
        makeView<C>("sys", "columns", columns, columnFields()),
        makeView<C>("sys", "all_columns", columns, columnFields()),
        makeView<C>("sys", "computed_columns", computedColumns,
                    columnFields({
                        {"definition", kLongText, [](const C& c) { return text(c.column->computedText); }},
                        {"is_persisted", kBit, [](const C&) { return number(0); }},
                    })),
        live(makeView<C>(
            "sys", "identity_columns", identityColumns,
            columnFields({
                {"seed_value", kBigInt, [](const C& c) { return number(c.column->identitySeed); }},
                {"increment_value", kBigInt, [](const C& c) { return number(c.column->identityIncrement); }},
                {"last_value", kBigInt, [](const C& c) { return c.lastIdentity ? number(*c.lastIdentity) : Value{}; }},
                {"is_not_for_replication", kBit, [](const C&) { return number(0); }},
            }))),
        makeView<P>("sys", "parameters", parameters,
                    {
                        {"object_id", kInt, [](const P& p) { return number(p.object); }},
                        {"name", kName, [](const P& p) { return text(p.parameter->name); }},
                        {"parameter_id", kInt, [](const P& p) { return number(p.number); }},
                        {"system_type_id", kTinyInt, [](const P& p) { return number(p.facts.systemId); }},
                        {"user_type_id", kInt, [](const P& p) { return number(p.facts.userId); }},
                        {"max_length", kSmallInt, [](const P& p) { return number(p.facts.bytes); }},
                        {"precision", kTinyInt, [](const P& p) { return number(p.facts.precision); }},
                        {"scale", kTinyInt, [](const P& p) { return number(p.facts.scale); }},
                        {"is_output", kBit, [](const P& p) { return number(p.parameter->output ? 1 : 0); }},
                        // Always 0 for T-SQL procedures: SQL Server keeps defaults in the text only.
                        {"has_default_value", kBit, [](const P&) { return number(0); }},
                        {"is_nullable", kBit, [](const P&) { return number(1); }},
                    }),
        makeView<TypeRow>(
            "sys", "types", types,
            {
                {"name", kName, [](const TypeRow& t) { return text(t.name); }},
                {"system_type_id", kTinyInt, [](const TypeRow& t) { return number(t.systemId); }},
                {"user_type_id", kInt, [](const TypeRow& t) { return number(t.userId); }},
                {"schema_id", kInt, [](const TypeRow&) { return number(4); }},
                {"max_length", kSmallInt, [](const TypeRow& t) { return number(t.bytes); }},
                {"precision", kTinyInt, [](const TypeRow& t) { return number(t.precision); }},
                {"scale", kTinyInt, [](const TypeRow& t) { return number(t.scale); }},
                {"is_nullable", kBit, [](const TypeRow& t) { return number(t.userId == 256 || t.rowVersion ? 0 : 1); }},
                {"is_user_defined", kBit, [](const TypeRow&) { return number(0); }},
                {"is_assembly_type", kBit, [](const TypeRow&) { return number(0); }},
                {"is_table_type", kBit, [](const TypeRow&) { return number(0); }},
                {"default_object_id", kInt, [](const TypeRow&) { return number(0); }},
            }),
        bare(makeView<TypeRow>("sys", "systypes", types,
                               {
                                   {"name", kName, [](const TypeRow& t) { return text(t.name); }},
                                   {"xtype", kTinyInt, [](const TypeRow& t) { return number(t.systemId); }},
                                   {"status", kTinyInt, [](const TypeRow&) { return number(0); }},
                                   {"xusertype", kSmallInt, [](const TypeRow& t) { return number(t.userId); }},
                                   {"length", kSmallInt, [](const TypeRow& t) { return number(t.bytes); }},
                                   {"xprec", kTinyInt, [](const TypeRow& t) { return number(t.precision); }},
                                   {"xscale", kTinyInt, [](const TypeRow& t) { return number(t.scale); }},
                                   {"uid", kSmallInt, [](const TypeRow&) { return number(4); }},
                                   {"usertype", kSmallInt, [](const TypeRow& t) { return number(t.userId); }},
                                   {"type", kTinyInt, [](const TypeRow& t) { return number(t.systemId); }},
                                   {"prec", kSmallInt, [](const TypeRow& t) { return number(t.precision); }},
                                   {"scale", kTinyInt, [](const TypeRow& t) { return number(t.scale); }},
                               })),
    };
}

}  // namespace sandbox::views
