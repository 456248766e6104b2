// DECLARE and SET.
#include <algorithm>
#include <array>
#include <utility>

#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/parse/parse_state.h"

namespace sandbox {
namespace {

// Options that are ON or OFF and may stand in a list.
constexpr auto kSwitches = std::to_array<std::string_view>({"ANSI_DEFAULTS",
                                                            "ANSI_NULLS",
                                                            "ANSI_NULL_DFLT_OFF",
                                                            "ANSI_NULL_DFLT_ON",
                                                            "ANSI_PADDING",
                                                            "ANSI_WARNINGS",
                                                            "ARITHABORT",
                                                            "ARITHIGNORE",
                                                            "CONCAT_NULL_YIELDS_NULL",
                                                            "CURSOR_CLOSE_ON_COMMIT",
                                                            "DISABLE_DEF_CNST_CHK",
                                                            "FIPS_FLAGGER",
                                                            "FMTONLY",
                                                            "FORCEPLAN",
                                                            "IMPLICIT_TRANSACTIONS",
                                                            "NOCOUNT",
                                                            "NOEXEC",
                                                            "NUMERIC_ROUNDABORT",
                                                            "NO_BROWSETABLE",
                                                            "PARSEONLY",
                                                            "QUOTED_IDENTIFIER",
                                                            "REMOTE_PROC_TRANSACTIONS",
                                                            "RESULT_SET_CACHING",
                                                            "SHOWPLAN_ALL",
                                                            "SHOWPLAN_TEXT",
                                                            "SHOWPLAN_XML",
                                                            "XACT_ABORT"});

// Options that take a value.
constexpr auto kValues =
    std::to_array<std::string_view>({"CONTEXT_INFO", "DATEFIRST", "DATEFORMAT", "DEADLOCK_PRIORITY", "LANGUAGE",
                                     "LOCK_TIMEOUT", "QUERY_GOVERNOR_COST_LIMIT", "ROWCOUNT", "TEXTSIZE"});

template <std::size_t N>
bool contains(const std::array<std::string_view, N>& table, std::string_view word) {
    return std::ranges::find(table, word) != table.end();
}

}  // namespace

// DECLARE item {, item} | DECLARE name [INSENSITIVE] [SCROLL] CURSOR ...
Parser::Node Parser::declare() {
    expectWord("DECLARE");
    if (peek().kind != TokenKind::Variable) return declareCursor();
    ast::Declare node;
    do {
        node.items.push_back(declareItem());
    } while (acceptSymbol(","));
    return node;
}

// @name [AS] (type [= value] | TABLE ( ... ) | CURSOR)
ast::Declare::Item Parser::declareItem() {
    ast::Declare::Item item;
    item.place = peek().place;
    item.name = variableName();
    acceptWord("AS");
    if (acceptWord("TABLE")) {
        item.table = std::make_unique<ast::TableDefinition>(tableDefinition());
        return item;
    }
    if (acceptWord("CURSOR")) {
        item.cursor = true;
        return item;
    }
    item.type = typeName(TypeUse::Declared);
    if (acceptSymbol("=")) item.value = value();
    return item;
}

// SET (@variable ... | TRANSACTION ISOLATION LEVEL ... | IDENTITY_INSERT name (ON | OFF) | option ...)
Parser::Node Parser::set() {
    expectWord("SET");
    if (peek().kind == TokenKind::Variable) return setVariable();
    if (acceptWord("TRANSACTION")) return setIsolation();
    if (acceptWord("IDENTITY_INSERT")) {
        ast::SetIdentityInsert node;
        node.table = objectName();
        node.on = onOff();
        return node;
    }
    return setOption();
}

// @variable op value
Parser::Node Parser::setVariable() {
    ast::SetVariable node;
    node.variable = variableName();
    if (seesSymbol(".")) unsupported("SET of a method");
    const auto op = assignOperator();
    if (!op) unexpected();
    node.op = *op;
    if (seesWord("CURSOR")) unsupported("SET of a cursor");
    node.value = value();
    return node;
}

// ISOLATION LEVEL (READ UNCOMMITTED | READ COMMITTED | REPEATABLE READ | SERIALIZABLE | SNAPSHOT)
Parser::Node Parser::setIsolation() {
    expectWord("ISOLATION");
    expectWord("LEVEL");
    if (acceptWord("SERIALIZABLE")) return ast::SetIsolation{ast::Isolation::Serializable};
    if (acceptWord("SNAPSHOT")) return ast::SetIsolation{ast::Isolation::Snapshot};
    if (acceptWords("REPEATABLE", "READ")) return ast::SetIsolation{ast::Isolation::RepeatableRead};
    expectWord("READ");
    if (expectAnyWord({"COMMITTED", "UNCOMMITTED"}) == "COMMITTED") {
        return ast::SetIsolation{ast::Isolation::ReadCommitted};
    }
    return ast::SetIsolation{ast::Isolation::ReadUncommitted};
}

// switch {, switch} (ON | OFF) | STATISTICS name {, name} (ON | OFF) | option value
// A switch of QUOTED_IDENTIFIER tells how the text behind it is read.
Parser::Node Parser::setOption() {
    ast::SetOption node;
    if (seesAnyWord({"OFFSETS", "ERRLVL"})) unsupported(peek().upper);
    if (peek().kind != TokenKind::Word) unexpected();
    if (contains(kValues, peek().upper)) {
        node.names.push_back(take().upper);
        node.value = bareValue();
        return node;
    }
    const bool statistics = acceptWord("STATISTICS");
    do {
        if (peek().kind != TokenKind::Word) unexpected();
        const std::string name = peek().upper;
        const bool known = statistics ? name == "IO" || name == "TIME" || name == "PROFILE" || name == "XML"
                                      : contains(kSwitches, name);
        if (!known) {
            if (peek().reserved) unexpected();
            fail(errorMessage<195, 1>(peek().text, "SET option"), peek().place);
        }
        take();
        node.names.push_back(statistics ? "STATISTICS " + name : name);
    } while (acceptSymbol(","));
    node.on = onOff();
    if (std::ranges::find(node.names, "QUOTED_IDENTIFIER") != node.names.end() && !inProcedure_) readQuotes(*node.on);
    return node;
}

// From here on "double quotes" are identifiers, or text.
void Parser::readQuotes(bool asIdentifier) {
    for (std::size_t i = at_; i < tokens_.list.size(); ++i) {
        if (tokens_.list[i].doubleQuoted) {
            tokens_.list[i].kind = asIdentifier ? TokenKind::Quoted : TokenKind::String;
        }
    }
}

}  // namespace sandbox
