// Conditions: AND, OR, NOT and the predicates.
#include <utility>

#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/parse/parse_state.h"

namespace sandbox {

// condition := conjunction {OR conjunction}
ast::ExprPtr Parser::condition() {
    ast::ExprPtr expr = either();
    requireCondition(*expr);
    return expr;
}

void Parser::requireCondition(const ast::Expr& expr) const {
    if (ast::isCondition(expr)) return;
    const Token& here = peek();
    const bool strayOperator =
        here.kind == TokenKind::Operator && here.text != ")" && here.text != ";" && here.text != "(";
    if (here.kind == TokenKind::Error || strayOperator) unexpected();
    fail(errorMessage<4145, 1, 1>(offending().text), offending().place);
}

ast::ExprPtr Parser::either() {
    const Nest nest(*this);
    const ast::Place from = peek().place;
    ast::ExprPtr first = conjunction();
    if (!seesWord("OR")) return first;
    requireCondition(*first);
    ast::Logical node{.isAnd = false};
    node.operands.push_back(std::move(first));
    while (acceptWord("OR")) {
        node.operands.push_back(conjunction());
        requireCondition(*node.operands.back());
    }
    return make(from, std::move(node));
}

// conjunction := negation {AND negation}
ast::ExprPtr Parser::conjunction() {
    const ast::Place from = peek().place;
    ast::ExprPtr first = negation();
    if (!seesWord("AND")) return first;
    requireCondition(*first);
    ast::Logical node{.isAnd = true};
    node.operands.push_back(std::move(first));
    while (acceptWord("AND")) {
        node.operands.push_back(negation());
        requireCondition(*node.operands.back());
    }
    return make(from, std::move(node));
}

// negation := NOT negation | predicate
ast::ExprPtr Parser::negation() {
    if (!seesWord("NOT")) return predicate();
    const Nest nest(*this);
    const ast::Place from = take().place;
    ast::ExprPtr operand = negation();
    requireCondition(*operand);
    return make(from, ast::Not{std::move(operand)});
}

// predicate := EXISTS ( query ) | ( condition ) | value test
ast::ExprPtr Parser::predicate() {
    const ast::Place from = peek().place;
    if (acceptWord("EXISTS")) return make(from, ast::Exists{subquery()});
    if (seesAnyWord({"CONTAINS", "FREETEXT"})) unsupported(peek().upper);
    ast::ExprPtr left = additive(true);
    if (ast::isCondition(*left)) return left;
    return predicateAfter(std::move(left));
}

// test := op value | op (ANY | SOME | ALL) ( query ) | IS [NOT] NULL | [NOT] BETWEEN value AND value
//         | [NOT] LIKE value [ESCAPE value] | [NOT] IN ( values | query )
ast::ExprPtr Parser::predicateAfter(ast::ExprPtr left) {
    const ast::Place from = left->place;
    if (const auto op = compareOperator()) return comparison(std::move(left), *op);
    if (acceptWord("IS")) {
        const bool negated = acceptWord("NOT");
        expectWord("NULL");
        return make(from, ast::IsNull{std::move(left), negated});
    }
    const bool negated = seesWord("NOT") && seesAnyWord({"BETWEEN", "LIKE", "IN"}, 1);
    if (negated) take();
    if (acceptWord("BETWEEN")) {
        ast::ExprPtr low = value();
        expectWord("AND");
        ast::ExprPtr high = value();
        return make(from, ast::Between{std::move(left), std::move(low), std::move(high), negated});
    }
    if (acceptWord("LIKE")) {
        ast::ExprPtr pattern = value();
        ast::ExprPtr escape;
        if (acceptWord("ESCAPE")) {
            escape = value();
        } else if (seesSymbol("{") && seesWord("ESCAPE", 1)) {
            at_ += 2;
            escape = value();
            expectSymbol("}");
        }
        return make(from, ast::Like{std::move(left), std::move(pattern), std::move(escape), negated});
    }
    if (acceptWord("IN")) {
        ast::In node{.operand = std::move(left), .negated = negated};
        if (seesQuery()) {
            node.query = subquery();
        } else {
            expectSymbol("(");
            node.list = valueList();
            expectSymbol(")");
        }
        return make(from, std::move(node));
    }
    return left;
}

ast::ExprPtr Parser::comparison(ast::ExprPtr left, ast::CompareOp op) {
    const ast::Place from = left->place;
    if (seesAnyWord({"ANY", "SOME", "ALL"})) {
        const bool all = take().upper == "ALL";
        ast::QueryPtr inner = subquery();
        return make(from, ast::Quantified{op, all, std::move(left), std::move(inner)});
    }
    ast::ExprPtr right = value();
    return make(from, ast::Compare{op, std::move(left), std::move(right)});
}

// = | <> | != | < | <= | > | >= | !< | !> ; blanks may stand between the two characters
std::optional<ast::CompareOp> Parser::compareOperator() {
    using enum ast::CompareOp;
    if (acceptSymbol("=")) return Equal;
    if (acceptSymbol("<>") || acceptSymbol("!=")) return NotEqual;
    if (acceptSymbol("<=") || acceptSymbol("!>")) return LessOrEqual;
    if (acceptSymbol(">=") || acceptSymbol("!<")) return GreaterOrEqual;
    if (acceptSymbol("<")) return acceptSymbol("=") ? LessOrEqual : acceptSymbol(">") ? NotEqual : Less;
    if (acceptSymbol(">")) return acceptSymbol("=") ? GreaterOrEqual : Greater;
    if (acceptSymbol("!")) {
        if (acceptSymbol("=")) return NotEqual;
        if (acceptSymbol("<")) return GreaterOrEqual;
        expectSymbol(">");
        return LessOrEqual;
    }
    return std::nullopt;
}

}  // namespace sandbox
