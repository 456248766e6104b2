// An expression's text as the catalogue shows it: names in brackets, parentheses around the whole.
#include "sandbox/tsql/execute/stored_expression.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/convert.h"
#include "sandbox/tsql/syntax/ast.h"

namespace sandbox {
namespace {

using Text = std::optional<std::string>;

std::string bracketed(std::string_view name) {
    std::string out = "[";
    for (const char c : name) out += c == ']' ? "]]" : std::string(1, c);
    return out + "]";
}

// How tightly a condition holds together: an operand that does so less tightly gets parentheses.
int tightness(const ast::Expr& expr) {
    if (const auto* logical = ast::as<ast::Logical>(expr)) return logical->isAnd ? 1 : 0;
    if (const auto* in = ast::as<ast::In>(expr)) return in->list.size() > 1 ? 0 : 2;
    if (ast::as<ast::Between>(expr)) return 1;
    return 2;
}

class Writer {
public:
    static Text write(const ast::Expr& expr) {
        return std::visit(ast::Overloaded{
                              [](const ast::Literal& node) { return literal(node.value); },
                              [](const ast::ColumnRef& node) -> Text {
                                  if (node.table) return std::nullopt;
                                  return bracketed(node.name);
                              },
                              [](const ast::Unary& node) { return unary(node); },
                              [](const ast::Binary& node) { return binary(node); },
                              [](const ast::Call& node) { return call(node); },
                              [](const ast::Compare& node) { return compare(node); },
                              [](const ast::Logical& node) { return logical(node); },
                              [](const ast::IsNull& node) {
                                  return joined(*node.operand, node.negated ? " IS NOT NULL" : " IS NULL", nullptr);
                              },
                              [](const ast::Between& node) { return between(node); },
                              [](const ast::Like& node) -> Text {
                                  if (node.escape) return std::nullopt;
                                  return joined(*node.operand, node.negated ? " NOT like " : " like ",
                                                node.pattern.get());
                              },
                              [](const ast::In& node) { return in(node); },
                              [](const auto&) -> Text { return std::nullopt; },
                          },
                          expr.node);
    }

private:
    static Text literal(const Typed& value) {
        if (isNull(value.value)) return "NULL";
        if (const auto* text = std::get_if<std::string>(&value.value)) {
            std::string out = isUnicode(value.type.id) ? "N'" : "'";
            for (const char c : *text) out += c == '\'' ? "''" : std::string(1, c);
            return out + "'";
        }
        const bool exact = isInteger(value.type.id) || value.type.id == TypeId::Decimal;
        if (!exact) return std::nullopt;
        return "(" + displayText(value.value, value.type) + ")";
    }

    static Text unary(const ast::Unary& node) {
        const auto* number = ast::as<ast::Literal>(*node.operand);
        if (node.op != ast::UnaryOp::Minus || !number) return std::nullopt;
        Text text = literal(number->value);
        if (text) text->insert(1, "-");
        return text;
    }

    static Text binary(const ast::Binary& node) {
        constexpr auto kSigns = std::to_array<std::string_view>({"+", "-", "*", "/", "%", "&", "|", "^"});
        if (ast::as<ast::Binary>(*node.right)) return std::nullopt;
        if (ast::as<ast::Binary>(*node.left) && node.op > ast::BinaryOp::Subtract) return std::nullopt;
        return joined(*node.left, kSigns[static_cast<std::size_t>(node.op)], node.right.get());
    }

    static Text call(const ast::Call& node) {
        constexpr auto kRewritten = std::to_array<std::string_view>({"COALESCE", "NULLIF", "IIF", "CHOOSE"});
        if (node.star || node.distinct || node.over || !node.name.schema.empty()) return std::nullopt;
        for (const std::string_view name : kRewritten) {
            if (sameName(name, node.name.name)) return std::nullopt;
        }
        std::string out = plainName(node.name.name) + "(";
        for (std::size_t i = 0; i < node.arguments.size(); ++i) {
            const auto* part = ast::as<ast::DatePart>(*node.arguments[i]);
            const Text argument = part ? Text(part->name) : write(*node.arguments[i]);
            if (!argument) return std::nullopt;
            out += (i > 0 ? "," : "") + *argument;
        }
        return out + ")";
    }

    // What has no parentheses is a function that has.
    static std::string plainName(std::string_view name) {
        constexpr auto kNames =
            std::to_array<std::pair<std::string_view, std::string_view>>({{"CURRENT_TIMESTAMP", "getdate"},
                                                                          {"CURRENT_USER", "user_name"},
                                                                          {"SESSION_USER", "user_name"},
                                                                          {"USER", "user_name"},
                                                                          {"SYSTEM_USER", "suser_sname"}});
        for (const auto& [from, to] : kNames) {
            if (sameName(from, name)) return std::string(to);
        }
        return foldName(name);
    }

    static Text compare(const ast::Compare& node) {
        constexpr auto kSigns = std::to_array<std::string_view>({"=", "<>", "<", "<=", ">", ">="});
        return joined(*node.left, kSigns[static_cast<std::size_t>(node.op)], node.right.get());
    }

    static Text logical(const ast::Logical& node) {
        std::string out;
        for (const ast::ExprPtr& operand : node.operands) {
            const Text text = write(*operand);
            if (!text) return std::nullopt;
            const bool loose = tightness(*operand) < (node.isAnd ? 1 : 0);
            if (!out.empty()) out += node.isAnd ? " AND " : " OR ";
            out += loose ? "(" + *text + ")" : *text;
        }
        return out;
    }

    static Text between(const ast::Between& node) {
        const Text low = joined(*node.operand, ">=", node.low.get());
        const Text high = joined(*node.operand, "<=", node.high.get());
        if (node.negated || !low || !high) return std::nullopt;
        return *low + " AND " + *high;
    }

    // One comparison for each value, the last one first.
    static Text in(const ast::In& node) {
        if (node.query || node.negated) return std::nullopt;
        std::string out;
        for (auto item = node.list.rbegin(); item != node.list.rend(); ++item) {
            const Text one = joined(*node.operand, "=", item->get());
            if (!one) return std::nullopt;
            out += (out.empty() ? "" : " OR ") + *one;
        }
        return out;
    }

    static Text joined(const ast::Expr& left, std::string_view sign, const ast::Expr* right) {
        Text out = write(left);
        const Text other = right ? write(*right) : Text(std::string());
        if (!out || !other) return std::nullopt;
        return *out + std::string(sign) + *other;
    }
};

// Without parentheses around the whole.
std::string_view bare(std::string_view text) {
    const auto trim = [&] {
        while (!text.empty() && static_cast<unsigned char>(text.front()) <= ' ') text.remove_prefix(1);
        while (!text.empty() && static_cast<unsigned char>(text.back()) <= ' ') text.remove_suffix(1);
    };
    for (trim(); text.size() >= 2 && text.front() == '(' && text.back() == ')'; trim()) {
        int depth = 0;
        bool quoted = false;
        bool whole = true;
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (text[i] == '\'') quoted = !quoted;
            if (quoted) continue;
            depth += text[i] == '(' ? 1 : text[i] == ')' ? -1 : 0;
            if (depth == 0 && i + 1 < text.size()) whole = false;
        }
        if (!whole) break;
        text = text.substr(1, text.size() - 2);
    }
    return text;
}

}  // namespace

std::string storedExpression(const ast::Expr& expression, std::string_view written) {
    return "(" + Writer::write(expression).value_or(std::string(bare(written))) + ")";
}

}  // namespace sandbox
