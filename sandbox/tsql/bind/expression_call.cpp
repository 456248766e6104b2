// Function calls: those of the function table, aggregates, and window functions.
#include <algorithm>
#include <array>

#include "sandbox/store/functions/function_table.h"
#include "sandbox/store/functions/sql_functions.h"
#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/bind/binder.h"
#include "sandbox/tsql/syntax/ast.h"

namespace sandbox::binder {
namespace {

std::string upper(std::string_view text) {
    std::string out(text);
    for (char& c : out) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    return out;
}

// The plan with its holes filled; window: an OVER clause for each aggregate call in it, or empty.
std::string filled(std::string_view plan, std::string_view argument, std::string_view separator,
                   std::string_view window) {
    std::string out;
    bool holes = false;
    for (std::size_t i = 0; i < plan.size(); ++i) {
        if (plan[i] != '%') {
            out += plan[i];
            continue;
        }
        holes = true;
        if (plan.substr(i, 2) == "%2") {
            out += separator;
            ++i;
            continue;
        }
        out += argument;
        if (plan.substr(i + 1, 1) == ")") {
            ++i;
            out += ")";
            out += window;
        }
    }
    return holes ? out : out + std::string(window);
}

// Functions that never give NULL.
bool neverNull(std::string_view name) {
    constexpr std::array<std::string_view, 8> kNames = {"GETDATE",        "GETUTCDATE",        "SYSDATETIME", "NEWID",
                                                        "SYSUTCDATETIME", "CURRENT_TIMESTAMP", "PI",          "RAND"};
    return std::find(kNames.begin(), kNames.end(), name) != kNames.end();
}

enum class Shape { Position, Buckets, Neighbour, Edge };

struct WindowFunction {
    std::string_view name;
    std::string_view sqlite;
    Shape shape;
    TypeId result;  // Position and Buckets
};

constexpr std::array<WindowFunction, 10> kWindowFunctions = {{
    {"ROW_NUMBER", "row_number", Shape::Position, TypeId::BigInt},
    {"RANK", "rank", Shape::Position, TypeId::BigInt},
    {"DENSE_RANK", "dense_rank", Shape::Position, TypeId::BigInt},
    {"PERCENT_RANK", "percent_rank", Shape::Position, TypeId::Float},
    {"CUME_DIST", "cume_dist", Shape::Position, TypeId::Float},
    {"NTILE", "ntile", Shape::Buckets, TypeId::BigInt},
    {"LAG", "lag", Shape::Neighbour, TypeId::Null},
    {"LEAD", "lead", Shape::Neighbour, TypeId::Null},
    {"FIRST_VALUE", "first_value", Shape::Edge, TypeId::Null},
    {"LAST_VALUE", "last_value", Shape::Edge, TypeId::Null},
}};

const WindowFunction* findWindowFunction(std::string_view name) {
    for (const WindowFunction& row : kWindowFunctions) {
        if (row.name == name) return &row;
    }
    return nullptr;
}

}  // namespace

Bound Binder::call(const ast::Call& node, Scope& scope, int line) {
    const std::string name = upper(node.name.name);
    if (!node.name.schema.empty() || !node.name.database.empty()) {
        return fail(errorMessage<4121>(node.name.schema, node.name.written()), line);
    }
    if (name == "IDENTITY") return newIdentity(node, scope, line);
    if (findWindowFunction(name) != nullptr) return ranking(node, scope, line);
    if (isAggregate(name)) return aggregate(node, scope, line);
    const FunctionRow* row = findFunction(name);
    if (row == nullptr) {
        guard(line, [&] { throw unknownFunction(node.name.name); });
        for (const ast::ExprPtr& argument : node.arguments) {
            if (!ast::as<ast::DatePart>(*argument) && !ast::isCondition(*argument)) value(*argument, scope);
        }
        Bound failed;
        failed.failed = true;
        return failed;
    }
    const auto count = static_cast<int>(node.arguments.size());
    if (count < row->minArguments || (row->maxArguments >= 0 && count > row->maxArguments)) {
        guard(line, [&] { throw wrongArgumentCount(*row); });
        Bound failed;
        failed.failed = true;
        return failed;
    }
    if (row->form == CallForm::NullIf) return nullIf(node, scope, line);
    if (row->form == CallForm::Iif) return iif(node, scope, line);

    std::vector<Bound> arguments;
    for (const ast::ExprPtr& argument : node.arguments) {
        const auto* part = ast::as<ast::DatePart>(*argument);
        arguments.push_back(part == nullptr ? value(*argument, scope) : datePartNumber(*part, name, line));
    }
    return planned(*row, name, node, arguments, line);
}

// A date part is a number from here on.
Bound Binder::datePartNumber(const ast::DatePart& part, const std::string& function, int line) {
    Bound bound;
    bound.type.id = TypeId::Int;
    bound.constant = true;
    bound.nullable = false;
    if (const std::optional<int> number = datePart(part.name)) {
        bound.sql = std::to_string(*number);
    } else {
        bound.failed = true;
        guard(line, [&] { throw unknownDatePart(part.name, function); });
    }
    return bound;
}

// The call of a function of the table, whose arguments are bound.
Bound Binder::planned(const FunctionRow& row, const std::string& name, const ast::Call& node,
                      const std::vector<Bound>& arguments, int line) {
    std::vector<const Bound*> operands;
    std::vector<Type> types;
    for (const Bound& argument : arguments) {
        operands.push_back(&argument);
        types.push_back(argument.type);
    }
    Bound out = combine(operands);
    if (out.failed) return out;
    if (name == "COALESCE" && std::all_of(arguments.begin(), arguments.end(), isNullLiteral)) {
        return fail(errorMessage<4127>(), line);
    }
    const bool ok = guard(line, [&] {
        const std::string collation = out.collation.empty() ? context_.collation : out.collation;
        const CallPlan plan = planCall(row, types, collationCode(collation));
        std::string sql(plan.sqlite);
        sql += "(";
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            if (i > 0) sql += ", ";
            const bool isPart = ast::as<ast::DatePart>(*node.arguments[i]) != nullptr;
            sql += isPart ? arguments[i].sql : converted(arguments[i], plan.argumentTypes[i], line).sql;
        }
        bool first = arguments.empty();
        for (const std::int64_t literal : plan.extra) {
            if (!first) sql += ", ";
            first = false;
            sql += std::to_string(literal);
        }
        out.sql = sql + ")";
        out.type = plan.result;
        out.constant = out.constant && plan.deterministic;
    });
    out.failed = !ok;
    if (name == "ISNULL") {
        out.nullable = arguments[0].nullable && arguments[1].nullable;
    } else if (name == "COALESCE") {
        out.nullable = std::all_of(arguments.begin(), arguments.end(), [](const Bound& each) { return each.nullable; });
    } else {
        out.nullable = !neverNull(name);
    }
    if (!isCharacter(out.type.id)) {
        out.coercibility = Coercibility::None;
    } else if (out.coercibility == Coercibility::None) {
        out.coercibility = Coercibility::Default;
        out.collation = context_.collation;
    }
    return out;
}

// Numbers for the rows of SELECT ... INTO, in the order in which they are found.
Bound Binder::newIdentity(const ast::Call& node, const Scope& scope, int line) {
    const auto& seed = std::get<ast::Cast>(node.arguments[0]->node);
    const auto whole = [](const ast::Expr& expr) {
        return std::get<std::int64_t>(std::get<ast::Literal>(expr.node).value.value);
    };
    if (!scope.makesTable || scope.clause != Clause::Select) {
        return fail(errorMessage<177>(), line);
    }
    if (!seed.type.known) {
        return fail(errorMessage<243>(seed.type.written), line);
    }
    if (!isInteger(seed.type.type.id) || seed.type.type.id == TypeId::Bit) {
        return fail(errorMessage<2749>(""), line);
    }
    Bound out;
    out.newIdentity = {whole(*seed.operand), whole(*node.arguments[1])};
    out.type = seed.type.type;
    out.nullable = false;
    const std::string number = "((row_number() OVER () - 1) * " + std::to_string(out.newIdentity->second) + " + " +
                               std::to_string(out.newIdentity->first) + ")";
    out.sql = castSql(number, Type{.id = TypeId::BigInt}, out.type);
    return out;
}

Bound Binder::nullIf(const ast::Call& node, Scope& scope, int line) {
    const Bound first = value(*node.arguments[0], scope);
    const Bound second = value(*node.arguments[1], scope);
    if (isNullLiteral(first)) {
        return fail(errorMessage<4151>(), line);
    }
    Bound out = first;
    out.nullable = true;
    out.column = nullptr;
    out.literal.reset();
    out.isVariable = false;
    out.sql = "(CASE WHEN " + compare(CompareOp::Equal, first, second, line) + " THEN NULL ELSE " + first.sql + " END)";
    return out;
}

Bound Binder::iif(const ast::Call& node, Scope& scope, int line) {
    const std::string test = condition(*node.arguments[0], scope);
    std::vector<Bound> values;
    values.push_back(value(*node.arguments[1], scope));
    values.push_back(value(*node.arguments[2], scope));
    Bound out = unify(values, line);
    out.constant = false;
    out.sql = "(CASE WHEN " + test + " THEN " + values[0].sql + " ELSE " + values[1].sql + " END)";
    return out;
}

Bound Binder::aggregate(const ast::Call& node, Scope& scope, int line) {
    const std::string name = upper(node.name.name);
    if (!node.over) {
        if (scope.insideAggregate > 0) {
            return fail(errorMessage<130>(), line);
        }
        switch (scope.clause) {
            case Clause::Where: return fail(errorMessage<147>(), line);
            case Clause::From: return fail(errorMessage<1015>(), line);
            case Clause::GroupBy: return fail(errorMessage<144>(), line);
            case Clause::Set: return fail(errorMessage<157>(), line);
            default: break;
        }
    }
    const bool starred = node.star;
    const std::size_t wanted = name == "STRING_AGG" ? 2 : 1;
    if (!starred && node.arguments.size() != wanted) {
        return fail(errorMessage<174>(node.name.name, wanted), line);
    }
    Bound argument;
    argument.nullable = false;
    Bound separator;
    const bool matching = scope.matchingKey;
    if (!node.over) {
        ++scope.insideAggregate;
        scope.matchingKey = false;
    }
    if (!starred) {
        if (!node.over && hasSubquery(*node.arguments[0])) {
            fail(errorMessage<130>(), line);
        }
        argument = value(*node.arguments[0], scope);
        if (node.arguments.size() > 1) separator = value(*node.arguments[1], scope);
    }
    if (!node.over) {
        --scope.insideAggregate;
        scope.matchingKey = matching;
    }
    if (!starred && !isComparable(argument.type) && name.starts_with("COUNT")) {
        return fail(errorMessage<8117>(typeName(argument.type), "count"), line);
    }
    Bound out;
    out.failed = argument.failed || separator.failed;
    if (out.failed) return out;
    const bool ok = guard(line, [&] {
        const AggregatePlan plan = planAggregate(name, argument.type, starred);
        out.type = plan.result;
        std::string text = "*";
        if (!starred) {
            Bound fitting = converted(argument, plan.argument, line);
            const bool plain = name == "MIN" || name == "MAX" || name == "COUNT" || name == "COUNT_BIG";
            if (plain && argument.nullable) fitting.sql = "t_nn(" + fitting.sql + ")";
            text = withCollation(fitting);
            if (node.distinct) text = "DISTINCT " + text;
            if (isCharacter(out.type.id)) {
                out.coercibility = argument.coercibility;
                out.collation = argument.collation;
            }
        }
        const std::string window = node.over ? " OVER (" + over(*node.over, scope) + ")" : "";
        out.sql = "(" + filled(plan.sqlite, text, separator.sql, window) + ")";
    });
    out.failed = !ok;
    return out;
}

Bound Binder::ranking(const ast::Call& node, Scope& scope, int line) {
    const std::string name = upper(node.name.name);
    const WindowFunction& function = *findWindowFunction(name);
    if (!node.over) return fail(errorMessage<10753>(node.name.name), line);
    if (scope.clause != Clause::Select && scope.clause != Clause::OrderBy) {
        return fail(errorMessage<4108>(), line);
    }
    if (node.over->orderBy.empty()) {
        return fail(errorMessage<4112>(node.name.name), line);
    }
    if (!node.over->frame.empty() && function.shape != Shape::Edge) {
        return fail(errorMessage<10752>(node.name.name), line);
    }
    const std::size_t most = function.shape == Shape::Position ? 0 : function.shape == Shape::Neighbour ? 3 : 1;
    if (node.arguments.size() > most || (most > 0 && node.arguments.empty())) {
        return fail(errorMessage<174>(node.name.name, most), line);
    }
    std::vector<Bound> arguments;
    for (const ast::ExprPtr& argument : node.arguments) arguments.push_back(value(*argument, scope));
    Bound out;
    std::string list;
    if (function.shape == Shape::Neighbour || function.shape == Shape::Edge) {
        out = arguments[0];
        out.column = nullptr;
        out.literal.reset();
        out.isVariable = false;
        out.constant = false;
        out.nullable = true;
        if (arguments.size() > 1) arguments[1] = converted(arguments[1], Type{.id = TypeId::BigInt}, line);
        if (arguments.size() > 2) arguments[2] = converted(arguments[2], arguments[0].type, line);
    } else {
        out.type.id = function.result;
        out.nullable = function.shape == Shape::Buckets;
        if (function.shape == Shape::Buckets) {
            arguments[0] = converted(arguments[0], Type{.id = TypeId::BigInt}, line);
        }
    }
    for (const Bound& argument : arguments) {
        out.failed = out.failed || argument.failed;
        if (!list.empty()) list += ", ";
        list += argument.sql;
    }
    out.sql = "(" + std::string(function.sqlite) + "(" + list + ") OVER (" + over(*node.over, scope) + "))";
    return out;
}

std::string Binder::over(const ast::Over& over, Scope& scope) {
    std::string out;
    for (const ast::ExprPtr& each : over.partitionBy) {
        out += out.empty() ? "PARTITION BY " : ", ";
        out += withCollation(value(*each, scope));
    }
    bool first = true;
    for (const ast::OrderItem& item : over.orderBy) {
        if (first) out += out.empty() ? "ORDER BY " : " ORDER BY ";
        if (!first) out += ", ";
        first = false;
        out += withCollation(value(*item.expr, scope));
        if (item.descending) out += " DESC";
    }
    return over.frame.empty() ? out : out + " " + over.frame;
}

}  // namespace sandbox::binder
