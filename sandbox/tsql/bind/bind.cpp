// The binder's entry points: one statement or expression each, with a Binder of its own.
#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/bind/bind_computed.h"

#include <array>

#include "sandbox/tsql/bind/binder.h"
#include "sandbox/tsql/parse/parser.h"

namespace sandbox {

using binder::Binder;
using binder::Bound;
using binder::Clause;
using binder::Scope;

std::span<const GlobalVariable> globalVariables() {
    static constexpr Type kInt{.id = TypeId::Int};
    static constexpr Type kSmallInt{.id = TypeId::SmallInt};
    static constexpr Type kTinyInt{.id = TypeId::TinyInt};
    static constexpr Type kName{.id = TypeId::NVarChar, .length = 128};
    static constexpr Type kText{.id = TypeId::NVarChar, .length = 300};
    static constexpr Type kNumeric{.id = TypeId::Decimal, .precision = 38, .numericName = true};
    static constexpr Type kVersion{.id = TypeId::VarBinary, .length = 8};
    static constexpr std::array<GlobalVariable, 24> kRows = {{
        {"@@CONNECTIONS", kInt},      {"@@CURSOR_ROWS", kInt},     {"@@DATEFIRST", kTinyInt},
        {"@@DBTS", kVersion},         {"@@ERROR", kInt},           {"@@FETCH_STATUS", kInt},
        {"@@IDENTITY", kNumeric},     {"@@LANGID", kSmallInt},     {"@@LANGUAGE", kName},
        {"@@LOCK_TIMEOUT", kInt},     {"@@MAX_CONNECTIONS", kInt}, {"@@MAX_PRECISION", kTinyInt},
        {"@@MICROSOFTVERSION", kInt}, {"@@NESTLEVEL", kInt},       {"@@OPTIONS", kInt},
        {"@@PROCID", kInt},           {"@@REMSERVER", kName},      {"@@ROWCOUNT", kInt},
        {"@@SERVERNAME", kName},      {"@@SERVICENAME", kName},    {"@@SPID", kSmallInt},
        {"@@TEXTSIZE", kInt},         {"@@TRANCOUNT", kInt},       {"@@VERSION", kText},
    }};
    return kRows;
}

namespace {

ResultColumn shown(const binder::OutputColumn& column) {
    return {.name = column.name,
            .type = binder::shownType(column.type),
            .nullable = column.nullable,
            .identity = column.identity,
            .updatable = column.updatable};
}

BoundQuery oneValue(Binder& binder, const Bound& value) {
    const Type type = binder::shownType(value.type);
    BoundQuery out = binder.finish("SELECT " + value.sql);
    out.columns.push_back({.name = {}, .type = type, .nullable = value.nullable});
    return out;
}

}  // namespace

BoundQuery bindSelect(const BindContext& context, const ast::Query& query) {
    Binder binder(context);
    binder::SelectExtras extras;
    const binder::QueryNodePtr node = binder.query(query, nullptr, &extras);
    for (std::size_t i = 0; i < node->columns.size() && !extras.assigns; ++i) {
        const binder::OutputColumn& column = node->columns[i];
        if (column.coercibility != binder::Coercibility::Conflict || column.conflict.empty() || column.failed) continue;
        binder.fail(errorMessage<451>(column.conflict, i + 1), binder.statementLine(context.line));
    }
    binder.throwIfFailed();
    BoundQuery out = binder.finish(binder::render(*node));
    out.assigns = extras.assigns;
    out.into = std::move(extras.into);
    if (!out.assigns) {
        for (const binder::OutputColumn& column : node->columns) out.columns.push_back(shown(column));
    }
    return out;
}

BoundQuery bindScalar(const BindContext& context, const ast::Expr& expression, std::optional<Type> wanted) {
    Binder binder(context);
    Scope scope;
    scope.clause = Clause::Values;
    Bound value = binder.value(expression, scope);
    if (wanted) value = binder.converted(value, *wanted, expression.place.line);
    return oneValue(binder, value);
}

BoundQuery bindCondition(const BindContext& context, const ast::Expr& condition) {
    Binder binder(context);
    Scope scope;
    Bound value;
    value.type.id = TypeId::Int;
    value.nullable = false;
    value.sql = "coalesce(" + binder.condition(condition, scope) + ", 0)";
    return oneValue(binder, value);
}

BoundQuery bindDefault(const BindContext& context, const ColumnDef& column) {
    Binder binder(context);
    return oneValue(binder, binder.converted(binder.defaultOf(column), column.type, context.line));
}

BoundQuery bindComputed(const BindContext& context, const ResolvedObject& table, std::string_view expression) {
    Binder binder(context);
    const ast::ExprPtr parsed = parseExpression(expression);
    ast::ObjectName name;
    name.name = table.object->name;
    binder::Source* source = binder.addTable(table, name, "");
    Scope scope;
    scope.sources.push_back(source);
    const Bound value = binder.value(*parsed, scope);
    BoundQuery out = binder.finish("SELECT " + value.sql + " FROM " + Binder::tableSql(*source));
    out.columns.push_back({.name = {}, .type = binder::shownType(value.type), .nullable = value.nullable});
    return out;
}

BoundQuery bindCheck(const BindContext& context, const ResolvedObject& table, std::string_view condition, bool oneRow) {
    Binder binder(context);
    const ast::ExprPtr parsed = parseCondition(condition);
    ast::ObjectName name;
    name.name = table.object->name;
    binder::Source* source = binder.addTable(table, name, "");
    Scope scope;
    scope.sources.push_back(source);
    const std::string row = binder::quoted(source->alias) + "._rowid_";
    std::string sql =
        "SELECT " + row + " FROM " + Binder::tableSql(*source) + " WHERE NOT " + binder.condition(*parsed, scope);
    if (oneRow) {
        sql += " AND " + row + " = " +
               binder.parameter({.kind = Parameter::Kind::Input,
                                 .slot = 0,
                                 .name = {},
                                 .type = Type{.id = TypeId::BigInt},
                                 .literal = {}});
    }
    BoundQuery out = binder.finish(sql);
    out.columns.push_back({.name = {}, .type = Type{.id = TypeId::BigInt}, .nullable = false});
    return out;
}

}  // namespace sandbox
