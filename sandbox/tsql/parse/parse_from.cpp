// FROM: tables, derived tables, joins and hints.
#include <algorithm>
#include <array>
#include <utility>

#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/parse/parse_state.h"

namespace sandbox {
namespace {

constexpr auto kTableHints = std::to_array<std::string_view>({"FORCESCAN",       "FORCESEEK",
                                                              "HOLDLOCK",        "IGNORE_CONSTRAINTS",
                                                              "IGNORE_TRIGGERS", "INDEX",
                                                              "KEEPDEFAULTS",    "KEEPIDENTITY",
                                                              "NOEXPAND",        "NOLOCK",
                                                              "NOWAIT",          "PAGLOCK",
                                                              "READCOMMITTED",   "READCOMMITTEDLOCK",
                                                              "READPAST",        "READUNCOMMITTED",
                                                              "REPEATABLEREAD",  "ROWLOCK",
                                                              "SERIALIZABLE",    "SNAPSHOT",
                                                              "TABLOCK",         "TABLOCKX",
                                                              "UPDLOCK",         "XLOCK"});

bool isHint(const Token& token) {
    return token.kind == TokenKind::Word && std::ranges::find(kTableHints, token.upper) != kTableHints.end();
}

template <typename T>
ast::TableRefPtr makeTable(const ast::Place& place, T node) {
    return std::make_unique<ast::TableRef>(ast::TableRef{place, std::move(node)});
}

}  // namespace

// source {, source}
std::vector<ast::TableRefPtr> Parser::fromList() {
    std::vector<ast::TableRefPtr> list;
    do {
        list.push_back(tableSource());
    } while (acceptSymbol(","));
    return list;
}

// source := primary {join}
ast::TableRefPtr Parser::tableSource() {
    const Nest nest(*this);
    ast::TableRefPtr left = tablePrimary();
    while (seesJoin()) left = joinAfter(std::move(left));
    return left;
}

bool Parser::seesJoin() const {
    return seesAnyWord({"JOIN", "INNER", "LEFT", "RIGHT", "FULL", "CROSS"}) ||
           (seesWord("OUTER") && seesWord("APPLY", 1));
}

// join := CROSS JOIN primary | (CROSS | OUTER) APPLY primary
//       | [INNER | (LEFT | RIGHT | FULL) [OUTER]] [LOOP | HASH | MERGE | REMOTE] JOIN primary {join} ON condition
ast::TableRefPtr Parser::joinAfter(ast::TableRefPtr left) {
    const Nest nest(*this);
    countLink();
    const ast::Place place = peek().place;
    if (acceptWords("CROSS", "JOIN")) {
        return makeTable(place, ast::Join{ast::JoinKind::Cross, std::move(left), tablePrimary(), {}});
    }
    if (acceptWords("CROSS", "APPLY")) {
        return makeTable(place, ast::Join{ast::JoinKind::CrossApply, std::move(left), tablePrimary(), {}});
    }
    if (acceptWords("OUTER", "APPLY")) {
        return makeTable(place, ast::Join{ast::JoinKind::OuterApply, std::move(left), tablePrimary(), {}});
    }
    ast::Join node{.kind = ast::JoinKind::Inner, .left = std::move(left)};
    if (seesAnyWord({"LEFT", "RIGHT", "FULL"})) {
        const std::string& side = take().upper;
        node.kind = side == "LEFT" ? ast::JoinKind::Left : side == "RIGHT" ? ast::JoinKind::Right : ast::JoinKind::Full;
        acceptWord("OUTER");
    } else {
        acceptWord("INNER");
    }
    if (previous().kind == TokenKind::Word && seesAnyWord({"LOOP", "HASH", "MERGE", "REMOTE"})) take();
    expectWord("JOIN");
    node.right = tablePrimary();
    while (!seesWord("ON") && seesJoin()) node.right = joinAfter(std::move(node.right));
    expectWord("ON");
    node.on = condition();
    return makeTable(place, std::move(node));
}

// primary := ( query ) alias | (VALUES ...) alias | ( source ) | { OJ source } | @table ... | name ...
ast::TableRefPtr Parser::tablePrimary() {
    const ast::Place place = peek().place;
    if (seesQuery()) {
        ast::DerivedTable node;
        node.query = subquery();
        derivedAlias(node.alias, node.columns);
        return makeTable(place, std::move(node));
    }
    if (seesSymbol("(") && seesWord("VALUES", 1)) return valuesTable(place);
    if (acceptSymbol("(")) {
        ast::TableRefPtr inner = tableSource();
        expectSymbol(")");
        return inner;
    }
    if (seesSymbol("{") && seesWord("OJ", 1)) {
        at_ += 2;
        ast::TableRefPtr inner = tableSource();
        expectSymbol("}");
        return inner;
    }
    if (seesAnyWord({"OPENROWSET", "OPENQUERY", "OPENXML", "OPENDATASOURCE", "CONTAINSTABLE", "FREETEXTTABLE"})) {
        unsupported(peek().upper);
    }
    ast::TableRefPtr table = namedTable();
    if (seesAnyWord({"TABLESAMPLE", "PIVOT", "UNPIVOT"})) unsupported(peek().upper);
    return table;
}

// (@table | name [( hints )] | name ( values )) [[AS] alias] [WITH ( hints ) | ( hints )]
ast::TableRefPtr Parser::namedTable() {
    const ast::Place place = peek().place;
    ast::NamedTable node;
    std::string variable;
    if (peek().kind == TokenKind::Variable) {
        variable = variableName();
    } else {
        node.name = objectName();
        if (seesBareHint()) {
            node.hints = tableHints();
        } else if (acceptSymbol("(")) {
            ast::FunctionTable function{.name = std::move(node.name)};
            if (!seesSymbol(")")) function.arguments = valueList();
            expectSymbol(")");
            function.alias = tableAlias();
            if (!function.alias.empty() && seesSymbol("(")) function.columns = identifierList();
            return makeTable(place, std::move(function));
        }
    }
    node.alias = tableAlias();
    if ((seesWord("WITH") && seesSymbol("(", 1)) || seesBareHint()) {
        acceptWord("WITH");
        for (std::string& hint : tableHints()) node.hints.push_back(std::move(hint));
    }
    if (variable.empty()) return makeTable(place, std::move(node));
    return makeTable(place, ast::VariableTable{std::move(variable), std::move(node.alias), std::move(node.hints)});
}

// ( VALUES rows ) alias
ast::TableRefPtr Parser::valuesTable(const ast::Place& place) {
    const Nest nest(*this);
    ast::ValuesTable node;
    expectSymbol("(");
    expectWord("VALUES");
    node.rows = valuesRows();
    expectSymbol(")");
    derivedAlias(node.alias, node.columns);
    return makeTable(place, std::move(node));
}

// [[AS] name]
std::string Parser::tableAlias() {
    if (acceptWord("AS")) return identifier();
    return seesIdentifier() && !seesWord("USING") ? identifier() : std::string();
}

// [AS] name [( names )]
void Parser::derivedAlias(std::string& alias, std::vector<std::string>& columns) {
    acceptWord("AS");
    alias = identifier();
    if (seesSymbol("(")) columns = identifierList();
}

bool Parser::seesBareHint() const {
    return seesSymbol("(") && isHint(peek(1)) &&
           (seesSymbol(")", 2) || seesSymbol(",", 2) || seesSymbol("=", 2) || isHint(peek(2)) ||
            (seesWord("INDEX", 1) && seesSymbol("(", 2)));
}

// ( hint {[,] hint} )
std::vector<std::string> Parser::tableHints() {
    std::vector<std::string> hints;
    expectSymbol("(");
    do {
        hints.push_back(tableHint());
    } while (acceptSymbol(",") || !seesSymbol(")"));
    expectSymbol(")");
    return hints;
}

// word | INDEX (= value | = ( values ) | ( values )) | FORCESEEK ( ... )
std::string Parser::tableHint() {
    if (!isHint(peek())) {
        if (peek().kind != TokenKind::Word) unexpected();
        fail(errorMessage<321>(peek().text), peek().place);
    }
    std::string name = take().upper;
    if (name == "INDEX") {
        const bool equals = acceptSymbol("=");
        if (acceptSymbol("(")) {
            do {
                bareValue();
            } while (acceptSymbol(","));
            expectSymbol(")");
        } else {
            if (!equals) unexpected();
            bareValue();
        }
    } else if (name == "FORCESEEK" && seesSymbol("(")) {
        optionTexts();
    }
    return name;
}

}  // namespace sandbox
