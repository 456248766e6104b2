// Column names, function calls, conversions and the ODBC escapes that stand for them.
#include <algorithm>
#include <array>
#include <utility>

#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/parse/parse_state.h"

namespace sandbox {
namespace {

// Functions whose first argument is the name of a date part.
constexpr auto kDatePartFunctions = std::to_array<std::string_view>(
    {"DATEADD", "DATEDIFF", "DATEDIFF_BIG", "DATENAME", "DATEPART", "DATETRUNC", "DATE_BUCKET"});

// Scalar functions of ODBC under the names that T-SQL has for them.
struct OdbcFunction {
    std::string_view odbc;
    std::string_view own;
};
constexpr auto kOdbcFunctions = std::to_array<OdbcFunction>({
    {"DATABASE", "DB_NAME"},
    {"IFNULL", "ISNULL"},
    {"LCASE", "LOWER"},
    {"LENGTH", "LEN"},
    {"LOCATE", "CHARINDEX"},
    {"NOW", "GETDATE"},
    {"REPEAT", "REPLICATE"},
    {"UCASE", "UPPER"},
});

std::string upperCase(std::string_view text) {
    std::string out(text);
    for (char& c : out) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    return out;
}

}  // namespace

ast::ExprPtr Parser::wordPrimary() {
    const ast::Place from = peek().place;
    if (seesWord("CASE")) return caseExpression();
    if (seesSymbol("(", 1)) {
        if (seesAnyWord({"CAST", "TRY_CAST"})) return cast(take().upper == "TRY_CAST");
        if (seesAnyWord({"CONVERT", "TRY_CONVERT"})) return convert(take().upper == "TRY_CONVERT");
        if (acceptWord("IDENTITY")) return newIdentity(from);
        if (seesAnyWord({"COALESCE", "NULLIF", "LEFT", "RIGHT"})) {
            ast::ObjectName name;
            name.place = from;
            name.name = take().text;
            return call(std::move(name), from);
        }
    }
    if (seesAnyWord({"CURRENT_TIMESTAMP", "CURRENT_USER", "SESSION_USER", "SYSTEM_USER", "USER"})) {
        ast::Call node;
        node.name.place = from;
        node.name.name = take().text;
        return make(from, std::move(node));
    }
    if (seesAnyWord({"IDENTITYCOL", "ROWGUIDCOL"})) return make(from, ast::ColumnRef{{}, take().text});
    return nameOrCall();
}

// ( type [, seed, increment] ): a call of IDENTITY with its seed as the type, and the increment.
ast::ExprPtr Parser::newIdentity(const ast::Place& from) {
    constexpr Type kWhole{.id = TypeId::BigInt};
    ast::Cast seed;
    std::int64_t first = 1, step = 1;
    expectSymbol("(");
    seed.type = typeName(TypeUse::Cast);
    if (acceptSymbol(",")) {
        first = integer();
        expectSymbol(",");
        step = integer();
    }
    expectSymbol(")");
    seed.operand = make(from, ast::Literal{{kWhole, first}});
    ast::Call node;
    node.name.place = from;
    node.name.name = "IDENTITY";
    node.arguments.push_back(make(from, std::move(seed)));
    node.arguments.push_back(make(from, ast::Literal{{kWhole, step}}));
    return make(from, std::move(node));
}

// [[[database.][schema.]table.]column | [schema.]function ( arguments )
ast::ExprPtr Parser::nameOrCall() {
    const ast::Place from = peek().place;
    std::vector<std::string> parts = nameParts();
    if (seesSymbol("(")) return call(makeObjectName(parts, from), from);
    ast::ColumnRef column;
    column.name = std::move(parts.back());
    parts.pop_back();
    if (!parts.empty()) column.table = makeObjectName(parts, from);
    return make(from, std::move(column));
}

// name ( [* | [DISTINCT | ALL] value {, value}] ) [OVER ( ... )]
ast::ExprPtr Parser::call(ast::ObjectName name, const ast::Place& from) {
    ast::Call node;
    node.name = std::move(name);
    expectSymbol("(");
    if (seesSymbol("*")) {
        take();
        node.star = true;
    } else if (!seesSymbol(")")) {
        callArguments(node);
    }
    expectSymbol(")");
    if (seesWord("WITHIN")) unsupported("WITHIN GROUP");
    if (acceptWord("OVER")) node.over = over();
    return make(from, std::move(node));
}

void Parser::callArguments(ast::Call& node) {
    const std::string name = node.name.schema.empty() ? upperCase(node.name.name) : std::string();
    if (std::ranges::find(kDatePartFunctions, name) != kDatePartFunctions.end()) {
        const ast::Place place = peek().place;
        if (!seesIdentifier() || !seesSymbol(",", 1)) {
            if (peek().kind == TokenKind::Error || peek().kind == TokenKind::End) unexpected();
            std::string lower = name;
            for (char& c : lower) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
            fail(errorMessage<1023>(lower), place);
        }
        node.arguments.push_back(make(place, ast::DatePart{identifier()}));
        if (!acceptSymbol(",")) return;
    } else if (name == "IIF") {
        node.arguments.push_back(condition());
        if (!acceptSymbol(",")) return;
    } else if (!acceptWord("ALL")) {
        node.distinct = acceptWord("DISTINCT");
    }
    for (ast::ExprPtr& argument : valueList()) node.arguments.push_back(std::move(argument));
}

// bound := UNBOUNDED (PRECEDING | FOLLOWING) | CURRENT ROW | number (PRECEDING | FOLLOWING)
std::string Parser::frameBound(bool isRange) {
    if (acceptWord("CURRENT")) {
        expectWord("ROW");
        return "CURRENT ROW";
    }
    std::string distance = "UNBOUNDED";
    if (!acceptWord("UNBOUNDED")) {
        if (peek().kind != TokenKind::Integer) unexpected();
        if (isRange) {
            fail(errorMessage<4194>(), peek().place);
        }
        distance = take().text;
    }
    return distance + " " + expectAnyWord({"PRECEDING", "FOLLOWING"});
}

// (ROWS | RANGE) (bound | BETWEEN bound AND bound)
std::string Parser::windowFrame(const ast::Over& over) {
    if (over.orderBy.empty()) {
        fail(errorMessage<10756>(), peek().place);
    }
    const std::string unit = expectAnyWord({"ROWS", "RANGE"});
    const bool isRange = unit == "RANGE";
    if (!acceptWord("BETWEEN")) return unit + " " + frameBound(isRange);
    const std::string from = frameBound(isRange);
    expectWord("AND");
    return unit + " BETWEEN " + from + " AND " + frameBound(isRange);
}

// OVER ( [PARTITION BY value {, value}] [ORDER BY ...] [frame] )
ast::Over Parser::over() {
    ast::Over node;
    expectSymbol("(");
    if (acceptWord("PARTITION")) {
        expectWord("BY");
        node.partitionBy = valueList();
    }
    if (seesWord("ORDER")) node.orderBy = orderBy();
    if (seesAnyWord({"ROWS", "RANGE"})) node.frame = windowFrame(node);
    expectSymbol(")");
    return node;
}

// CAST ( value AS type )
ast::ExprPtr Parser::cast(bool isTry) {
    const ast::Place from = previous().place;
    expectSymbol("(");
    ast::Cast node{.isTry = isTry};
    node.operand = value();
    expectWord("AS");
    node.type = typeName(TypeUse::Cast);
    expectSymbol(")");
    return make(from, std::move(node));
}

// CONVERT ( type , value [, style] )
ast::ExprPtr Parser::convert(bool isTry) {
    const ast::Place from = previous().place;
    expectSymbol("(");
    ast::Cast node{.isConvert = true, .isTry = isTry};
    node.type = typeName(TypeUse::Cast);
    expectSymbol(",");
    node.operand = value();
    if (acceptSymbol(",")) node.style = value();
    expectSymbol(")");
    return make(from, std::move(node));
}

// { TS 'text' } | { D 'text' } | { T 'text' } | { GUID 'text' } | { FN call }
ast::ExprPtr Parser::odbcEscape() {
    const ast::Place from = peek().place;
    expectSymbol("{");
    const std::string kind = expectAnyWord({"TS", "D", "T", "GUID", "FN"});
    if (kind == "FN") {
        const ast::Place inner = peek().place;
        std::string name = identifierOrReserved();
        if (upperCase(name) == "CONVERT") unsupported("{fn CONVERT}");
        const auto* row = std::ranges::find(kOdbcFunctions, upperCase(name), &OdbcFunction::odbc);
        if (row != kOdbcFunctions.end()) name = row->own;
        ast::ObjectName function;
        function.place = inner;
        function.name = std::move(name);
        ast::ExprPtr node = call(std::move(function), inner);
        expectSymbol("}");
        return node;
    }
    if (peek().kind != TokenKind::String && peek().kind != TokenKind::NString) unexpected();
    const Token& text = take();
    ast::Cast node;
    node.operand = make(text.place, literal(text));
    node.type.place = from;
    node.type.type.id = kind == "GUID" ? TypeId::UniqueIdentifier : TypeId::DateTime;
    node.type.written = kind == "GUID" ? "uniqueidentifier" : "datetime";
    expectSymbol("}");
    return make(from, std::move(node));
}

}  // namespace sandbox
