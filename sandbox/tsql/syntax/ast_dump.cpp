// A tree as compact text: lists in parentheses, names as written, clauses that are absent left out. For tests and for
// looking at what the parser made.
#include <charconv>
#include <cstdio>
#include <string_view>

#include "sandbox/tsql/syntax/ast_dump.h"

namespace sandbox::ast {
namespace {

constexpr std::string_view kBinary[] = {"+", "-", "*", "/", "%", "&", "|", "^"};
constexpr std::string_view kCompare[] = {"=", "<>", "<", "<=", ">", ">="};
constexpr std::string_view kUnary[] = {"+", "-", "~"};

std::string quoted(std::string_view text) {
    std::string out = "'";
    for (const char c : text) {
        out += c;
        if (c == '\'') out += c;
    }
    return out + "'";
}

std::string decimal(Decimal number) {
    std::string digits;
    auto left = number.unscaled;
    do {
        digits.insert(digits.begin(), static_cast<char>('0' + static_cast<int>(left % 10)));
        left /= 10;
    } while (left > 0);
    while (digits.size() <= number.scale) digits.insert(digits.begin(), '0');
    if (number.scale > 0) digits.insert(digits.size() - number.scale, ".");
    return digits;
}

std::string hex(const Bytes& bytes) {
    std::string out = "0x";
    for (const std::uint8_t byte : bytes) {
        out += "0123456789abcdef"[byte >> 4];
        out += "0123456789abcdef"[byte & 15];
    }
    return out;
}

std::string literal(const Typed& typed) {
    return std::visit(Overloaded{
                          [](Null) -> std::string { return "null"; },
                          [&](std::int64_t v) -> std::string {
                              if (typed.type.id != TypeId::Money) return std::to_string(v);
                              return "$" + decimal(Decimal{v, 4});
                          },
                          [](double v) -> std::string {
                              char text[32];
                              std::snprintf(text, sizeof text, "%.17ge", v);
                              return text;
                          },
                          [](const Decimal& v) { return decimal(v); },
                          [&](const std::string& v) { return (isUnicode(typed.type.id) ? "N" : "") + quoted(v); },
                          [](const Bytes& v) { return hex(v); },
                          [](const Guid&) -> std::string { return "guid"; },
                      },
                      typed.value);
}

}  // namespace

std::string dumpType(const TypeName& type) {
    if (!type.known) return "?" + type.written;
    const Type& t = type.type;
    std::string out = type.written;
    for (char& c : out) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    if (t.id == TypeId::Decimal) return out + "(" + std::to_string(t.precision) + "," + std::to_string(t.scale) + ")";
    if (t.length == Type::kMax) return out + "(max)";
    if (t.length > 0) return out + "(" + std::to_string(t.length) + ")";
    return out;
}

std::string dumpNames(const std::vector<std::string>& names) {
    std::string out;
    for (const std::string& name : names) out += (out.empty() ? "" : " ") + name;
    return out;
}

std::string dumpList(const ExprList& list) {
    std::string out;
    for (const ExprPtr& expr : list) out += " " + dump(*expr);
    return out;
}

std::string dumpOrder(const std::vector<OrderItem>& items) {
    std::string out;
    for (const OrderItem& item : items) {
        out += " " + (item.descending ? "(desc " + dump(*item.expr) + ")" : dump(*item.expr));
    }
    return out;
}

namespace {

std::string dumpOptional(const ExprPtr& expr) {
    return expr ? " " + dump(*expr) : "";
}

std::string dumpCall(const Call& node) {
    std::string out = "(" + node.name.written();
    if (node.distinct) out += " distinct";
    if (node.star) out += " *";
    out += dumpList(node.arguments);
    if (node.over) {
        out += " (over";
        if (!node.over->partitionBy.empty()) out += " (by" + dumpList(node.over->partitionBy) + ")";
        if (!node.over->orderBy.empty()) out += " (order" + dumpOrder(node.over->orderBy) + ")";
        out += ")";
    }
    return out + ")";
}

std::string dumpCase(const Case& node) {
    std::string out = "(case" + dumpOptional(node.operand);
    for (const Case::Branch& branch : node.branches) {
        out += " (" + dump(*branch.when) + " " + dump(*branch.then) + ")";
    }
    if (node.otherwise) out += " (else " + dump(*node.otherwise) + ")";
    return out + ")";
}

std::string_view no(bool negated) {
    return negated ? "not-" : "";
}

}  // namespace

std::string dump(const Expr& expr) {
    const auto op = [](const auto& names, auto value) { return std::string(names[static_cast<std::size_t>(value)]); };
    return std::visit(
        Overloaded{
            [](const Literal& n) { return literal(n.value); },
            [](const Variable& n) { return n.name; },
            [](const GlobalVariable& n) { return n.name; },
            [](const ColumnRef& n) { return n.written(); },
            [&](const Unary& n) { return "(" + op(kUnary, n.op) + " " + dump(*n.operand) + ")"; },
            [&](const Binary& n) { return "(" + op(kBinary, n.op) + " " + dump(*n.left) + " " + dump(*n.right) + ")"; },
            [](const Case& n) { return dumpCase(n); },
            [](const Cast& n) {
                return std::string(n.isTry ? "(try-" : "(") + (n.isConvert ? "convert " : "cast ") + dump(*n.operand) +
                       " " + dumpType(n.type) + dumpOptional(n.style) + ")";
            },
            [](const Call& n) { return dumpCall(n); },
            [](const DatePart& n) { return ":" + n.name; },
            [](const Collate& n) { return "(collate " + dump(*n.operand) + " " + n.collation + ")"; },
            [](const Subquery& n) { return dump(*n.query); },
            [](const DefaultValue&) -> std::string { return "default"; },
            [&](const Compare& n) {
                return "(" + op(kCompare, n.op) + " " + dump(*n.left) + " " + dump(*n.right) + ")";
            },
            [&](const Quantified& n) {
                return "(" + op(kCompare, n.op) + (n.all ? "all " : "any ") + dump(*n.left) + " " + dump(*n.query) +
                       ")";
            },
            [](const Logical& n) { return (n.isAnd ? "(and" : "(or") + dumpList(n.operands) + ")"; },
            [](const Not& n) { return "(not " + dump(*n.operand) + ")"; },
            [](const IsNull& n) { return "(" + std::string(no(n.negated)) + "null " + dump(*n.operand) + ")"; },
            [](const Between& n) {
                return "(" + std::string(no(n.negated)) + "between " + dump(*n.operand) + " " + dump(*n.low) + " " +
                       dump(*n.high) + ")";
            },
            [](const Like& n) {
                return "(" + std::string(no(n.negated)) + "like " + dump(*n.operand) + " " + dump(*n.pattern) +
                       dumpOptional(n.escape) + ")";
            },
            [](const In& n) {
                return "(" + std::string(no(n.negated)) + "in " + dump(*n.operand) +
                       (n.query ? " " + dump(*n.query) : dumpList(n.list)) + ")";
            },
            [](const Exists& n) { return "(exists " + dump(*n.query) + ")"; },
        },
        expr.node);
}

}  // namespace sandbox::ast
