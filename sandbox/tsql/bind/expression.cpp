// Values: literals, variables, columns, arithmetic, CASE, CAST, COLLATE and scalar subqueries.
#include <algorithm>
#include <array>

#include "sandbox/store/functions/sql_functions.h"
#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/convert.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/store/values/storage_codec.h"
#include "sandbox/tsql/bind/binder.h"

namespace sandbox::binder {
namespace {

bool canBeGroupKey(const ast::Expr& expr) {
    return !ast::as<ast::Literal>(expr) && !ast::as<ast::Variable>(expr) && !ast::as<ast::Subquery>(expr);
}

Message clauseError(Clause clause, const std::string& column) {
    switch (clause) {
        case Clause::Having: return errorMessage<8121>(column);
        case Clause::OrderBy: return errorMessage<8127>(column);
        default: return errorMessage<8120>(column);
    }
}

std::string collected(ColumnCollector& collector, const std::string& sql) {
    const auto it = std::find(collector.columns.begin(), collector.columns.end(), sql);
    const auto number = static_cast<std::size_t>(it - collector.columns.begin()) + 1;
    if (it == collector.columns.end()) collector.columns.push_back(sql);
    return quoted(collector.alias) + ".c" + std::to_string(number);
}

}  // namespace

Bound Binder::value(const ast::Expr& expr, Scope& scope) {
    if (ast::isCondition(expr)) {
        return fail(errorMessage<102, 1, 1>(), expr.place.line);
    }
    if (scope.grouped && scope.insideAggregate == 0 && !scope.matchingKey && !scope.groupKeys.empty() &&
        canBeGroupKey(expr)) {
        const std::size_t errorsBefore = errors_.size();
        scope.matchingKey = true;
        Bound whole = bindNode(expr, scope);
        scope.matchingKey = false;
        const auto& keys = scope.groupKeys;
        if (!whole.failed && std::find(keys.begin(), keys.end(), whole.sql) != keys.end()) return whole;
        errors_.resize(errorsBefore);
    }
    return bindNode(expr, scope);
}

Bound Binder::bindNode(const ast::Expr& expr, Scope& scope) {
    const int line = expr.place.line;
    return std::visit(ast::Overloaded{
                          [&](const ast::Literal& node) { return literal(node); },
                          [&](const ast::Variable& node) { return variable(node, line); },
                          [&](const ast::GlobalVariable& node) { return globalVariable(node, line); },
                          [&](const ast::ColumnRef& node) {
                              const std::size_t before = errors_.size();
                              Bound out = columnRef(node, scope, line);
                              if (errors_.size() > before) errors_.back().offset = expr.place.offset;
                              return out;
                          },
                          [&](const ast::Unary& node) { return unary(node, scope, line); },
                          [&](const ast::Binary& node) { return binary(node, scope, line); },
                          [&](const ast::Case& node) { return caseExpr(node, scope, line); },
                          [&](const ast::Cast& node) { return castExpr(node, scope, line); },
                          [&](const ast::Call& node) { return call(node, scope, line); },
                          [&](const ast::Collate& node) { return collate(node, scope, line); },
                          [&](const ast::Subquery& node) { return scalarSubquery(*node.query, scope, line); },
                          [&](const ast::DatePart& node) { return fail(errorMessage<207>(node.name), line); },
                          [&](const ast::DefaultValue&) { return fail(errorMessage<156>("DEFAULT"), line); },
                          [&](const auto&) { return fail(errorMessage<102, 1, 1>(), line); },
                      },
                      expr.node);
}

Bound Binder::literal(const ast::Literal& node) {
    Bound out;
    out.type = node.value.type;
    out.literal = node.value.value;
    out.nullable = sandbox::isNull(node.value.value);
    out.constant = true;
    out.sql = literalSql(node.value.value, node.value.type);
    if (isCharacter(out.type.id)) {
        out.coercibility = Coercibility::Default;
        out.collation = context_.collation;
    }
    return out;
}

Bound Binder::variable(const ast::Variable& node, int line) {
    const std::optional<VariableRef> found =
        viewDepth_ == 0 && context_.variable ? context_.variable(node.name) : std::nullopt;
    if (!found) return fail(errorMessage<137, 2>(node.name), line);
    Bound out;
    out.type = found->type;
    out.isVariable = true;
    out.constant = true;
    if (perRowVariables && assignedVariables.contains(foldName(node.name))) {
        out.sql = "t_var(" + std::to_string(found->slot) + ")";
    } else {
        out.sql = parameter({.kind = Parameter::Kind::Variable,
                             .slot = found->slot,
                             .name = node.name,
                             .type = found->type,
                             .literal = {}});
    }
    if (isCharacter(out.type.id)) {
        out.coercibility = Coercibility::Default;
        out.collation = context_.collation;
    }
    return out;
}

Bound Binder::globalVariable(const ast::GlobalVariable& node, int line) {
    for (const GlobalVariable& global : globalVariables()) {
        if (!sandbox::sameName(global.name, node.name)) continue;
        Bound out;
        out.type = global.type;
        out.constant = true;
        out.nullable = global.name == "@@IDENTITY";
        out.sql = parameter({.kind = Parameter::Kind::Global,
                             .slot = 0,
                             .name = std::string(global.name),
                             .type = global.type,
                             .literal = {}});
        if (isCharacter(out.type.id)) {
            out.coercibility = Coercibility::Default;
            out.collation = context_.collation;
        }
        return out;
    }
    return fail(errorMessage<137, 2>(node.name), line);
}

Bound Binder::columnRef(const ast::ColumnRef& node, Scope& scope, int line) {
    Lookup found = findColumn(scope, node, database_);
    Bound failed;
    failed.failed = true;
    switch (found.result) {
        case Lookup::Result::Uncertain: return failed;
        case Lookup::Result::Missing: return fail(errorMessage<207>(node.name), line);
        case Lookup::Result::Ambiguous: return fail(errorMessage<209>(node.name), line);
        case Lookup::Result::Unbound:
            if (!missing_.empty()) return failed;
            return fail(errorMessage<4104>(node.written()), line);
        case Lookup::Result::Found: break;
    }
    return columnValue(*found.column, *found.source, *found.scope, line);
}

Bound Binder::columnValue(const SourceColumn& column, const Source& source, Scope& owner, int line) {
    if (owner.grouped && owner.insideAggregate == 0 && !owner.matchingKey) {
        const auto& keys = owner.groupKeys;
        if (std::find(keys.begin(), keys.end(), column.sql) == keys.end()) {
            return fail(clauseError(owner.clause, source.display(column.name)), line);
        }
    }
    owner.used = true;
    Bound out;
    out.sql = owner.collector == nullptr ? column.sql : collected(*owner.collector, column.sql);
    out.type = column.type;
    out.nullable = column.nullable || source.nullableSide;
    out.coercibility = column.coercibility;
    out.collation = column.collation;
    out.column = &column;
    out.failed = column.failed;
    return out;
}

Bound Binder::unary(const ast::Unary& node, Scope& scope, int line) {
    // -2147483648 and its like are literals of their own.
    const Bound operand = value(*node.operand, scope);
    if (node.op == ast::UnaryOp::Plus || operand.failed) return operand;
    const std::array<const Bound*, 1> one = {&operand};
    Bound out = combine(one);
    guard(line, [&] {
        if (node.op == ast::UnaryOp::Minus) {
            out.type = negatedType(operand.type);
            out.sql = operand.type.id == TypeId::Null ? "NULL" : negateSql(operand.sql, operand.type);
        } else {
            out.type = complementType(operand.type);
            out.sql = operand.type.id == TypeId::Null ? "NULL" : complementSql(operand.sql, operand.type);
        }
    });
    return out;
}

Bound Binder::binary(const ast::Binary& node, Scope& scope, int line) {
    const Bound left = value(*node.left, scope);
    const Bound right = value(*node.right, scope);
    return arithmetic(static_cast<sandbox::BinaryOp>(node.op), left, right, line);
}

Bound Binder::arithmetic(sandbox::BinaryOp op, const Bound& left, const Bound& right, int line) {
    const std::array<const Bound*, 2> both = {&left, &right};
    Bound out = combine(both, " in the add operator");
    if (out.failed) return out;
    const bool ok = guard(line, [&] {
        const bool isBit = op == BinaryOp::BitAnd || op == BinaryOp::BitOr || op == BinaryOp::BitXor;
        const auto beside = [&](const Bound& side, const Bound& other) {
            return side.literal && !isBit && other.type.id == TypeId::Decimal
                       ? literalBesideDecimal(side.type, *side.literal)
                       : side.type;
        };
        out.type = binaryResultType(op, beside(left, right), beside(right, left));
        const bool joins = op == BinaryOp::Add && isCharacter(out.type.id);
        if (joins && !context_.options.concatNullYieldsNull) {
            const auto filled = [](const Bound& side) {
                return side.type.id == TypeId::Null ? "''" : "ifnull(" + side.sql + ", '')";
            };
            const auto typed = [&](const Bound& side) { return side.type.id == TypeId::Null ? out.type : side.type; };
            out.sql = arithmeticSql(op, filled(left), typed(left), filled(right), typed(right), out.type);
        } else if (left.type.id == TypeId::Null || right.type.id == TypeId::Null) {
            out.sql = "NULL";
        } else {
            out.sql = arithmeticSql(op, left.sql, left.type, right.sql, right.type, out.type);
        }
    });
    out.failed = !ok;
    const bool text = isCharacter(out.type.id);
    if (!text && !isBinary(out.type.id)) out.nullable = true;  // an overflow may give NULL
    if (text && out.coercibility == Coercibility::None) {
        out.coercibility = Coercibility::Default;
        out.collation = context_.collation;
    }
    if (!text) out.coercibility = Coercibility::None;
    return out;
}

Bound Binder::compound(ast::AssignOp op, const Bound& left, const Bound& right, int line) {
    if (op == ast::AssignOp::Set) return right;
    return arithmetic(static_cast<sandbox::BinaryOp>(static_cast<int>(op) - 1), left, right, line);
}

Bound Binder::unify(std::vector<Bound>& values, int line) {
    std::vector<const Bound*> operands;
    std::vector<Type> types;
    for (const Bound& each : values) {
        operands.push_back(&each);
        types.push_back(each.type);
    }
    Bound out = combine(operands, " in the CASE operator");
    if (out.failed) return out;
    if (!guard(line, [&] { out.type = commonType(types); })) {
        out.failed = true;
        return out;
    }
    for (Bound& each : values) each = converted(each, out.type, line);
    if (!isCharacter(out.type.id)) out.coercibility = Coercibility::None;
    return out;
}

Bound Binder::caseExpr(const ast::Case& node, Scope& scope, int line) {
    std::vector<std::string> conditions;
    std::vector<Bound> results;
    Bound operand;
    if (node.operand) operand = value(*node.operand, scope);
    for (const ast::Case::Branch& branch : node.branches) {
        if (node.operand) {
            conditions.push_back(
                compare(sandbox::CompareOp::Equal, operand, value(*branch.when, scope), branch.when->place.line));
        } else {
            conditions.push_back(condition(*branch.when, scope));
        }
        results.push_back(value(*branch.then, scope));
    }
    if (node.otherwise) results.push_back(value(*node.otherwise, scope));
    const bool allNull = std::all_of(results.begin(), results.end(), isNullLiteral);
    if (allNull) {
        return fail(errorMessage<8133>(), line);
    }
    Bound out = unify(results, line);
    out.constant = false;
    out.nullable = out.nullable || !node.otherwise;
    out.sql = "CASE";
    for (std::size_t i = 0; i < conditions.size(); ++i) {
        out.sql += " WHEN " + conditions[i] + " THEN " + results[i].sql;
    }
    if (node.otherwise) out.sql += " ELSE " + results.back().sql;
    out.sql = "(" + out.sql + " END)";
    return out;
}

Bound Binder::castExpr(const ast::Cast& node, Scope& scope, int line) {
    const Bound operand = value(*node.operand, scope);
    if (!node.type.known) {
        return fail(errorMessage<243>(node.type.written), line);
    }
    const std::array<const Bound*, 1> one = {&operand};
    Bound out = combine(one);
    out.nullable = out.nullable || operand.type != node.type.type;
    out.type = node.type.type;
    if (operand.failed) return out;
    guard(line, [&] {
        if (operand.type.id == TypeId::Null) {
            out.sql = "NULL";
            return;
        }
        requireExplicitConversion(operand.type, out.type);
        if (!node.style) {
            out.sql = castSql(operand.sql, operand.type, out.type, 0, node.isTry);
            return;
        }
        const Bound style = converted(value(*node.style, scope), Type{.id = TypeId::Int}, line);
        out.sql = std::string(node.isTry ? "t_try_cast(" : "t_cast(") + operand.sql + ", " +
                  std::to_string(encodeType(operand.type)) + ", " + std::to_string(encodeType(out.type)) + ", " +
                  style.sql + ")";
    });
    if (!isCharacter(out.type.id)) {
        out.coercibility = Coercibility::None;
    } else if (out.coercibility == Coercibility::None) {
        out.coercibility = Coercibility::Default;
        out.collation = context_.collation;
    }
    return out;
}

Bound Binder::collate(const ast::Collate& node, Scope& scope, int line) {
    Bound out = value(*node.operand, scope);
    if (out.failed) return out;
    if (!isCharacter(out.type.id)) {
        return fail(errorMessage<447>(typeName(out.type)), line);
    }
    guard(line, [&] { static_cast<void>(collationCode(node.collation)); });
    const bool ofDatabase = sandbox::sameName(node.collation, "database_default");
    out.coercibility = Coercibility::Explicit;
    out.collation = ofDatabase ? context_.collation : node.collation;
    out.column = nullptr;
    out.literal.reset();
    return out;
}

Bound Binder::scalarSubquery(const ast::Query& query, Scope& scope, int line) {
    QueryNodePtr node = subquery(query, scope);
    if (node->columns.size() != 1) {
        if (node->failed) {
            Bound failed;
            failed.failed = true;
            return failed;
        }
        return fail(errorMessage<116>(), line);
    }
    const OutputColumn& column = node->columns.front();
    Bound out;
    out.type = column.type;
    out.coercibility = column.coercibility;
    out.collation = column.collation;
    out.failed = column.failed;
    if (node->atMostOneRow) {
        out.sql = "(" + render(*node) + ")";
    } else {
        if (node->limit.count.empty()) node->limit.count = "2";
        const std::string alias = newAlias('s');
        out.sql = "(SELECT t_scalar(" + alias + ".c1) FROM (" + render(*node) + ") AS " + alias + ")";
    }
    return out;
}

}  // namespace sandbox::binder
