// Values: arithmetic, literals, variables, columns, subqueries, CASE.
#include <algorithm>
#include <utility>

#include "sandbox/tsql/parse/parse_state.h"

namespace sandbox {

void Parser::limitHeight(ast::Expr& expr) {
    int below = 0;
    ast::forEachChild(expr, [&](const ast::Expr& child) { below = std::max(below, child.height); });
    const auto* in = ast::as<ast::In>(expr);
    if (ast::as<ast::Subquery>(expr) != nullptr || ast::as<ast::Exists>(expr) != nullptr ||
        ast::as<ast::Quantified>(expr) != nullptr || (in != nullptr && in->query)) {
        below = std::max(below, queryHeight_);
    }
    expr.height = below + 1;
    if (expr.height > ast::kMaxHeight) tooDeep();
    height_ = std::max(height_, expr.height);
}

// value := additive
ast::ExprPtr Parser::value() {
    const Nest nest(*this);
    return additive(false);
}

void Parser::requireValue(const ast::Expr& expr) const {
    if (ast::isCondition(expr)) unexpected();
}

// additive := multiplicative {(+ | - | & | ^ | |) multiplicative}
ast::ExprPtr Parser::additive(bool conditionAllowed) {
    const ast::Place from = peek().place;
    ast::ExprPtr left = multiplicative(conditionAllowed);
    while (true) {
        ast::BinaryOp op{};
        if (seesSymbol("+"))
            op = ast::BinaryOp::Add;
        else if (seesSymbol("-"))
            op = ast::BinaryOp::Subtract;
        else if (seesSymbol("&"))
            op = ast::BinaryOp::BitAnd;
        else if (seesSymbol("|"))
            op = ast::BinaryOp::BitOr;
        else if (seesSymbol("^"))
            op = ast::BinaryOp::BitXor;
        else
            return left;
        requireValue(*left);
        take();
        ast::ExprPtr right = multiplicative(false);
        left = make(from, ast::Binary{op, std::move(left), std::move(right)});
    }
}

// multiplicative := unary {(* | / | %) unary}
ast::ExprPtr Parser::multiplicative(bool conditionAllowed) {
    const ast::Place from = peek().place;
    ast::ExprPtr left = unary(conditionAllowed);
    while (true) {
        ast::BinaryOp op{};
        if (seesSymbol("*"))
            op = ast::BinaryOp::Multiply;
        else if (seesSymbol("/"))
            op = ast::BinaryOp::Divide;
        else if (seesSymbol("%"))
            op = ast::BinaryOp::Modulo;
        else
            return left;
        requireValue(*left);
        take();
        ast::ExprPtr right = unary(false);
        left = make(from, ast::Binary{op, std::move(left), std::move(right)});
    }
}

// unary := (+ | -) multiplicative | ~ unary | postfix
// A sign binds weaker than multiplication: 6 / -3 * 2 is 6 / -(3 * 2).
ast::ExprPtr Parser::unary(bool conditionAllowed) {
    if (!seesSymbol("-") && !seesSymbol("+") && !seesSymbol("~")) return postfix(conditionAllowed);
    const Nest nest(*this);
    const ast::Place from = peek().place;
    const std::string sign = take().text;
    if (sign == "~") return make(from, ast::Unary{ast::UnaryOp::BitNot, unary(false)});
    return make(from, ast::Unary{sign == "-" ? ast::UnaryOp::Minus : ast::UnaryOp::Plus, multiplicative(false)});
}

// postfix := primary {COLLATE name}
ast::ExprPtr Parser::postfix(bool conditionAllowed) {
    const ast::Place from = peek().place;
    ast::ExprPtr operand = primary(conditionAllowed);
    while (seesWord("COLLATE")) {
        requireValue(*operand);
        take();
        operand = make(from, ast::Collate{std::move(operand), identifier()});
    }
    return operand;
}

// primary := literal | @variable | @@global | ( ... ) | word ... | name | name ( arguments ) | { escape }
ast::ExprPtr Parser::primary(bool conditionAllowed) {
    const ast::Place from = peek().place;
    if (seesLiteral()) {
        const Token& token = take();
        return make(from, literal(token));
    }
    switch (peek().kind) {
        case TokenKind::Variable: return make(from, ast::Variable{variableName()});
        case TokenKind::Global: return make(from, ast::GlobalVariable{take().text});
        case TokenKind::Quoted: return nameOrCall();
        case TokenKind::Word: return wordPrimary();
        default: break;
    }
    if (seesSymbol("(")) return parenthesized(conditionAllowed);
    if (seesSymbol("{")) return odbcEscape();
    unexpected();
}

// ( query ) | ( value ) | ( condition )
ast::ExprPtr Parser::parenthesized(bool conditionAllowed) {
    const ast::Place from = peek().place;
    if (seesQuery()) {
        ast::QueryPtr inner = subquery();
        return make(from, ast::Subquery{std::move(inner)});
    }
    expectSymbol("(");
    ast::ExprPtr inner = conditionAllowed ? either() : value();
    expectSymbol(")");
    inner->text = {from.offset, previous().end};
    return inner;
}

// CASE [value] WHEN (value | condition) THEN value {WHEN ...} [ELSE value] END
ast::ExprPtr Parser::caseExpression() {
    const ast::Place from = peek().place;
    expectWord("CASE");
    ast::Case node;
    if (!seesWord("WHEN")) node.operand = value();
    do {
        expectWord("WHEN");
        ast::Case::Branch branch;
        branch.when = node.operand ? value() : condition();
        expectWord("THEN");
        branch.then = value();
        node.branches.push_back(std::move(branch));
    } while (seesWord("WHEN"));
    if (acceptWord("ELSE")) node.otherwise = value();
    expectWord("END");
    return make(from, std::move(node));
}

ast::ExprList Parser::valueList() {
    ast::ExprList list;
    do {
        list.push_back(value());
    } while (acceptSymbol(","));
    return list;
}

// value | DEFAULT
ast::ExprPtr Parser::valueOrDefault() {
    const ast::Place from = peek().place;
    if (acceptWord("DEFAULT")) return make(from, ast::DefaultValue{});
    return value();
}

bool Parser::seesValueStart() const {
    if (seesLiteral() || seesIdentifier()) return true;
    if (peek().kind == TokenKind::Variable || peek().kind == TokenKind::Global) return true;
    if (seesSymbol("(") || seesSymbol("-") || seesSymbol("+") || seesSymbol("~") || seesSymbol("{")) return true;
    return seesAnyWord({"CASE", "COALESCE", "CONVERT", "CURRENT_TIMESTAMP", "CURRENT_USER", "LEFT", "NULLIF", "RIGHT",
                        "SESSION_USER", "SYSTEM_USER", "TRY_CONVERT", "USER"});
}

}  // namespace sandbox
