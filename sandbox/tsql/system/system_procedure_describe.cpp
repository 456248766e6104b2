// The columns of sp_describe_first_result_set, in the order in which SQL Server gives them.
#include "sandbox/tsql/system/system_procedure_describe.h"

#include <algorithm>
#include <array>

#include "sandbox/store/views/system_view_rows.h"

namespace sandbox {

namespace {

using views::kBit;
using views::kInt;
using views::kName;
using views::kSmallInt;
using views::kTinyInt;
using views::number;
using views::text;
using views::textOrNull;

struct Described {
    const ResultColumn& column;
    int ordinal = 0;
    views::TypeFacts facts;
    std::string collation;

    [[nodiscard]] const Type& type() const { return column.type; }
};

// The type's number on the wire where it may be null, and where it may not.
struct WireNumber {
    TypeId id;
    int nullable;
    int fixed;
};
constexpr auto kWireNumbers = std::to_array<WireNumber>({
    {TypeId::Bit, 104, 50},           {TypeId::TinyInt, 38, 48},
    {TypeId::SmallInt, 38, 52},       {TypeId::Int, 38, 56},
    {TypeId::BigInt, 38, 127},        {TypeId::SmallMoney, 110, 122},
    {TypeId::Money, 110, 60},         {TypeId::Decimal, 106, 106},
    {TypeId::Real, 109, 59},          {TypeId::Float, 109, 62},
    {TypeId::SmallDateTime, 111, 58}, {TypeId::DateTime, 111, 61},
    {TypeId::Date, 40, 40},           {TypeId::Time, 41, 41},
    {TypeId::DateTime2, 42, 42},      {TypeId::Char, 175, 175},
    {TypeId::VarChar, 167, 167},      {TypeId::NChar, 239, 239},
    {TypeId::NVarChar, 231, 231},     {TypeId::Text, 35, 35},
    {TypeId::NText, 99, 99},          {TypeId::Binary, 173, 173},
    {TypeId::VarBinary, 165, 165},    {TypeId::Image, 34, 34},
    {TypeId::Null, 38, 38},           {TypeId::UniqueIdentifier, 36, 36},
});

Value wireNumber(const Described& d) {
    const auto* row = std::find_if(kWireNumbers.begin(), kWireNumbers.end(),
                                   [&](const WireNumber& w) { return w.id == d.type().id; });
    return row == kWireNumbers.end() ? Value{} : number(d.column.nullable ? row->nullable : row->fixed);
}

Value wireLength(const Described& d) {
    constexpr int kLob = 2147483647;
    constexpr int kMax = 65535;
    if (isLob(d.type().id)) return number(d.type().id == TypeId::NText ? kLob - 1 : kLob);
    if (d.facts.bytes == -1) return number(kMax);
    return number(d.type().id == TypeId::Decimal ? 17 : d.facts.bytes);
}

constexpr Type kTypeText{.id = TypeId::NVarChar, .length = 256};

struct Column {
    std::string_view name;
    Type type;
    Value (*get)(const Described&);
};

Value none(const Described&) {
    return {};
}
Value no(const Described&) {
    return number(0);
}

constexpr auto kColumns = std::to_array<Column>({
    {"is_hidden", kBit, no},
    {"column_ordinal", kInt, [](const Described& d) { return number(d.ordinal); }},
    {"name", kName, [](const Described& d) { return textOrNull(d.column.name); }},
    {"is_nullable", kBit, [](const Described& d) { return number(d.column.nullable ? 1 : 0); }},
    {"system_type_id", kInt, [](const Described& d) { return number(d.facts.systemId); }},
    {"system_type_name", kTypeText, [](const Described& d) { return text(typeDeclaration(d.type())); }},
    {"max_length", kSmallInt, [](const Described& d) { return number(d.facts.bytes); }},
    {"precision", kTinyInt, [](const Described& d) { return number(d.facts.precision); }},
    {"scale", kTinyInt, [](const Described& d) { return number(d.facts.scale); }},
    {"collation_name", kName,
     [](const Described& d) { return isCharacter(d.type().id) ? text(d.collation) : Value{}; }},
    {"user_type_id", kInt, none},
    {"user_type_database", kName, none},
    {"user_type_schema", kName, none},
    {"user_type_name", kName, none},
    {"assembly_qualified_type_name", views::kText, none},
    {"xml_collection_id", kInt, none},
    {"xml_collection_database", kName, none},
    {"xml_collection_schema", kName, none},
    {"xml_collection_name", kName, none},
    {"is_xml_document", kBit, no},
    {"is_case_sensitive", kBit, no},
    {"is_fixed_length_clr_type", kBit, no},
    {"source_server", kName, none},
    {"source_database", kName, none},
    {"source_schema", kName, none},
    {"source_table", kName, none},
    {"source_column", kName, none},
    {"is_identity_column", kBit, [](const Described& d) { return number(d.column.identity ? 1 : 0); }},
    {"is_part_of_unique_key", kBit, none},
    {"is_updateable", kBit, [](const Described& d) { return number(d.column.updatable ? 1 : 0); }},
    {"is_computed_column", kBit, no},
    {"is_sparse_column_set", kBit, no},
    {"ordinal_in_order_by_list", kSmallInt, none},
    {"order_by_list_length", kSmallInt, none},
    {"order_by_is_descending", kSmallInt, none},
    {"tds_type_id", kInt, wireNumber},
    {"tds_length", kInt, wireLength},
    {"tds_collation_id", kInt, none},
    {"tds_collation_sort_id", kTinyInt, none},
});

}  // namespace

void describeFirstResultSet(ProcedureHost& host, std::string_view text, std::string_view declarations) {
    const std::vector<ResultColumn> found = host.describe(text, declarations);
    const std::string collation = host.connection().current()->facts().collation;
    std::vector<ResultColumn> columns;
    for (const Column& c : kColumns) columns.push_back({.name = std::string(c.name), .type = c.type});
    std::vector<std::vector<Value>> rows;
    for (const ResultColumn& column : found) {
        const Described described{column, static_cast<int>(rows.size()) + 1, views::typeFacts(column.type), collation};
        std::vector<Value>& row = rows.emplace_back();
        for (const Column& c : kColumns) row.push_back(c.get(described));
    }
    host.sendRows(columns, rows);
}

}  // namespace sandbox
