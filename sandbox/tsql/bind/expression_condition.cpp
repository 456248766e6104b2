// Conditions: comparisons, BETWEEN, LIKE, IN, ANY and ALL, EXISTS, IS NULL. Each is a SQLite expression that is 1, 0 or
// NULL, in parentheses.
#include <array>

#include "sandbox/store/functions/sql_functions.h"
#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/convert.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/store/values/storage_codec.h"
#include "sandbox/tsql/bind/binder.h"
#include "sandbox/tsql/syntax/ast.h"

namespace sandbox::binder {
namespace {

constexpr std::string_view kUnknown = "(NULL)";  // stands where an error was reported

std::string_view sqliteOperator(CompareOp op) {
    switch (op) {
        case CompareOp::Equal: return " = ";
        case CompareOp::NotEqual: return " <> ";
        case CompareOp::Less: return " < ";
        case CompareOp::LessOrEqual: return " <= ";
        case CompareOp::Greater: return " > ";
        case CompareOp::GreaterOrEqual: return " >= ";
    }
    return " = ";
}

// "((a OR b) OR (c OR d))": SQLite limits how deep an expression may be, and would take a flat list for a deep one.
std::string balanced(std::span<const std::string> operands, std::string_view word) {
    constexpr std::size_t kFlat = 8;
    if (operands.size() > kFlat) {
        const std::size_t half = operands.size() / 2;
        return "(" + balanced(operands.first(half), word) + std::string(word) + balanced(operands.subspan(half), word) +
               ")";
    }
    std::string out;
    for (const std::string& operand : operands) {
        if (!out.empty()) out += word;
        out += operand;
    }
    return "(" + out + ")";
}

}  // namespace

std::string Binder::condition(const ast::Expr& expr, Scope& scope) {
    const int line = expr.place.line;
    return std::visit(ast::Overloaded{
                          [&](const ast::Compare& node) { return compareExpr(node, scope, line); },
                          [&](const ast::Between& node) { return between(node, scope, line); },
                          [&](const ast::Like& node) { return like(node, scope, line); },
                          [&](const ast::In& node) { return in(node, scope, line); },
                          [&](const ast::Quantified& node) { return quantified(node, scope, line); },
                          [&](const ast::Exists& node) { return exists(node, scope); },
                          [&](const ast::IsNull& node) { return isNull(node, scope); },
                          [&](const ast::Not& node) { return "(NOT " + condition(*node.operand, scope) + ")"; },
                          [&](const ast::Logical& node) {
                              std::vector<std::string> operands;
                              for (const ast::ExprPtr& operand : node.operands)
                                  operands.push_back(condition(*operand, scope));
                              return balanced(operands, node.isAnd ? " AND " : " OR ");
                          },
                          [&](const auto&) {
                              fail(errorMessage<4145, 1>(), line);
                              return std::string(kUnknown);
                          },
                      },
                      expr.node);
}

std::string Binder::compare(sandbox::CompareOp op, const Bound& left, const Bound& right, int line) {
    if (left.failed || right.failed) return std::string(kUnknown);
    std::string a = left.sql;
    std::string b = right.sql;
    const bool ok = guard(line, [&] {
        const Type met = comparisonType(op, left.type, right.type);
        if (left.type.id == TypeId::Null || right.type.id == TypeId::Null) return;
        if (!sameStorage(left.type, right.type)) {
            a = castSql(a, left.type, met);
            b = castSql(b, right.type, met);
        }
        if (isBinary(met.id)) {
            a = comparableSql(a, met);
            b = comparableSql(b, met);
        }
        if (isCharacter(met.id)) a += " COLLATE " + sqliteCollation(collationOf(left, right, operatorName(op), line));
    });
    if (!ok) return std::string(kUnknown);
    const bool nullIsValue = !context_.options.ansiNulls &&
                             (isNullLiteral(left) || isNullLiteral(right) || left.isVariable || right.isVariable);
    if (nullIsValue && op == CompareOp::Equal) return "(" + a + " IS " + b + ")";
    if (nullIsValue && op == CompareOp::NotEqual) return "(" + a + " IS NOT " + b + ")";
    return "(" + a + std::string(sqliteOperator(op)) + b + ")";
}

std::string Binder::compareExpr(const ast::Compare& node, Scope& scope, int line) {
    const Bound left = value(*node.left, scope);
    const Bound right = value(*node.right, scope);
    return compare(static_cast<sandbox::CompareOp>(node.op), left, right, line);
}

std::string Binder::between(const ast::Between& node, Scope& scope, int line) {
    const Bound operand = value(*node.operand, scope);
    const Bound low = value(*node.low, scope);
    const Bound high = value(*node.high, scope);
    const std::string both = "(" + compare(CompareOp::GreaterOrEqual, operand, low, line) + " AND " +
                             compare(CompareOp::LessOrEqual, operand, high, line) + ")";
    return node.negated ? "(NOT " + both + ")" : both;
}

std::string Binder::like(const ast::Like& node, Scope& scope, int line) {
    const Bound text = value(*node.operand, scope);
    const Bound pattern = value(*node.pattern, scope);
    Bound escape;
    if (node.escape) escape = value(*node.escape, scope);
    if (text.failed || pattern.failed || escape.failed) return std::string(kUnknown);
    std::string out(kUnknown);
    guard(line, [&] {
        const Type asText{.id = TypeId::VarChar, .length = Type::kMax};
        const auto textual = [&](const Bound& bound) {
            return isCharacter(bound.type.id) ? bound : converted(bound, asText, line);
        };
        const Bound subject = textual(text);
        const Bound wanted = textual(pattern);
        const int collation = collationCode(collationOf(subject, wanted, "like", line));
        out = "(" +
              likeSql(subject.sql, subject.type, wanted.sql, wanted.type, node.escape ? escape.sql : "", collation) +
              ")";
    });
    return node.negated ? "(NOT " + out + ")" : out;
}

std::string Binder::in(const ast::In& node, Scope& scope, int line) {
    Bound operand = value(*node.operand, scope);
    std::string list;
    std::string collation;
    if (node.query) {
        const QueryNodePtr query = subquery(*node.query, scope);
        if (query->failed || operand.failed) return std::string(kUnknown);
        if (query->columns.size() != 1) {
            fail(errorMessage<116>(), line);
            return std::string(kUnknown);
        }
        const OutputColumn& column = query->columns.front();
        Bound item;
        item.type = column.type;
        item.coercibility = column.coercibility;
        item.collation = column.collation;
        if (column.failed) return std::string(kUnknown);
        const bool ok = guard(line, [&] {
            const Type met = comparisonType(CompareOp::Equal, operand.type, item.type);
            const bool alike = sameStorage(operand.type, item.type) || item.type.id == TypeId::Null;
            list = alike ? render(*query) : render(*query, std::array{met});
            if (!alike) operand.sql = castSql(operand.sql, operand.type, met);
            if (isCharacter(met.id)) collation = collationOf(operand, item, "equal to", line);
        });
        if (!ok) return std::string(kUnknown);
    } else {
        std::vector<Bound> items;
        for (const ast::ExprPtr& each : node.list) items.push_back(value(*each, scope));
        Type met = operand.type;
        bool alike = true;
        for (const Bound& item : items) {
            if (item.failed || operand.failed) return std::string(kUnknown);
            if (!guard(line, [&] { met = comparisonType(CompareOp::Equal, met, item.type); })) {
                return std::string(kUnknown);
            }
            alike = alike && (item.type.id == TypeId::Null || sameStorage(operand.type, item.type));
        }
        for (const Bound& item : items) {
            if (!list.empty()) list += ", ";
            const std::string sql =
                alike || item.type.id == TypeId::Null ? item.sql : castSql(item.sql, item.type, met);
            list += comparableSql(sql, met);
            if (isCharacter(met.id) && collation.empty()) collation = collationOf(operand, item, "equal to", line);
        }
        if (!alike && operand.type.id != TypeId::Null) operand.sql = castSql(operand.sql, operand.type, met);
        operand.sql = comparableSql(operand.sql, met);
    }
    std::string out = operand.sql;
    if (!collation.empty()) out += " COLLATE " + sqliteCollation(collation);
    return "(" + out + (node.negated ? " NOT IN (" : " IN (") + list + "))";
}

std::string Binder::quantified(const ast::Quantified& node, Scope& scope, int line) {
    const Bound left = value(*node.left, scope);
    const QueryNodePtr query = subquery(*node.query, scope);
    if (query->failed || left.failed) return std::string(kUnknown);
    if (query->columns.size() != 1) {
        fail(errorMessage<116>(), line);
        return std::string(kUnknown);
    }
    const std::string alias = newAlias('s');
    Bound right;
    right.sql = alias + ".c1";
    right.type = query->columns.front().type;
    right.coercibility = query->columns.front().coercibility;
    right.collation = query->columns.front().collation;
    const std::string holds = compare(static_cast<sandbox::CompareOp>(node.op), left, right, line);
    const std::string from = "EXISTS (SELECT 1 FROM (" + render(*query) + ") AS " + alias + " WHERE ";
    const std::string unknown = from + holds + " IS NULL)";
    if (node.all) {
        return "(CASE WHEN " + from + "NOT " + holds + ") THEN 0 WHEN " + unknown + " THEN NULL ELSE 1 END)";
    }
    return "(CASE WHEN " + from + holds + ") THEN 1 WHEN " + unknown + " THEN NULL ELSE 0 END)";
}

std::string Binder::exists(const ast::Exists& node, Scope& scope) {
    const QueryNodePtr query = subquery(*node.query, scope);
    if (query->inlineable) {  // the columns do not matter
        std::string out = "EXISTS (SELECT 1";
        if (!query->from.empty()) out += " FROM " + query->from;
        if (!query->where.empty()) out += " WHERE " + query->where;
        return "(" + out + "))";
    }
    return "(EXISTS (" + render(*query) + "))";
}

std::string Binder::isNull(const ast::IsNull& node, Scope& scope) {
    const Bound operand = value(*node.operand, scope);
    return "(" + operand.sql + (node.negated ? " IS NOT NULL)" : " IS NULL)");
}

bool hasAggregate(const ast::Expr& expr) {
    bool found = false;
    ast::forEachExpr(expr, [&](const ast::Expr& each) {
        const auto* call = ast::as<ast::Call>(each);
        if (call == nullptr) return;
        const bool named = call->name.schema.empty() && isAggregate(call->name.name);
        // In SUM(SUM(x)) OVER () the inner one is the aggregate; forEachExpr comes to it by itself.
        found = found || (named && !call->over);
    });
    return found;
}

bool hasSubquery(const ast::Expr& expr) {
    bool found = false;
    ast::forEachExpr(expr, [&](const ast::Expr& each) {
        found = found || ast::as<ast::Subquery>(each) != nullptr || ast::as<ast::Exists>(each) != nullptr;
    });
    return found;
}

}  // namespace sandbox::binder
