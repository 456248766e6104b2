// Cursors as statements.
#include <utility>

#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/parse/parse_state.h"

namespace sandbox {

// name {INSENSITIVE | SCROLL} CURSOR {option} FOR query [FOR (READ ONLY | UPDATE [OF columns])]
ast::DeclareCursor Parser::declareCursor() {
    ast::DeclareCursor node;
    node.name = identifier();
    while (seesAnyWord({"INSENSITIVE", "SCROLL"})) node.options.push_back(take().upper);
    if (!seesWord("CURSOR") && peek().kind == TokenKind::Word) {
        fail(errorMessage<155, 2>(peek().text, "CURSOR"), peek().place);
    }
    expectWord("CURSOR");
    while (seesAnyWord({"LOCAL", "GLOBAL", "FORWARD_ONLY", "SCROLL", "STATIC", "KEYSET", "DYNAMIC", "FAST_FORWARD",
                        "READ_ONLY", "SCROLL_LOCKS", "OPTIMISTIC", "TYPE_WARNING"})) {
        node.options.push_back(take().upper);
    }
    expectWord("FOR");
    std::vector<ast::Cte> tables;
    if (seesWord("WITH")) tables = commonTables();
    node.query = nestedQuery();
    node.query->ctes = std::move(tables);
    node.query->options = queryOptions();
    if (acceptWord("FOR")) {
        if (acceptWord("READ")) {
            expectWord("ONLY");
            node.options.emplace_back("READ_ONLY");
        } else {
            expectWord("UPDATE");
            if (acceptWord("OF")) {
                do {
                    identifier();
                } while (acceptSymbol(","));
            }
        }
    }
    return node;
}

// [GLOBAL] name | @variable
void Parser::cursorName(ast::CursorCommand& command) {
    if (peek().kind == TokenKind::Variable) {
        command.name = variableName();
        return;
    }
    command.global = seesWord("GLOBAL") && seesIdentifier(1) ? acceptWord("GLOBAL") : false;
    command.name = identifier();
}

Parser::Node Parser::openCursor() {
    expectWord("OPEN");
    if (seesAnyWord({"MASTER", "SYMMETRIC"})) return unsupportedStatement("OPEN " + peek().upper, SkipTo::StatementEnd);
    ast::CursorCommand node{.kind = ast::CursorCommand::Kind::Open};
    cursorName(node);
    return node;
}

Parser::Node Parser::closeCursor() {
    expectWord("CLOSE");
    ast::CursorCommand node{.kind = ast::CursorCommand::Kind::Close};
    cursorName(node);
    return node;
}

Parser::Node Parser::deallocateCursor() {
    expectWord("DEALLOCATE");
    ast::CursorCommand node{.kind = ast::CursorCommand::Kind::Deallocate};
    cursorName(node);
    return node;
}

// FETCH [[NEXT | PRIOR | FIRST | LAST | ABSOLUTE n | RELATIVE n] FROM] name [INTO @variable {, @variable}]
Parser::Node Parser::fetchCursor() {
    expectWord("FETCH");
    ast::CursorCommand node{.kind = ast::CursorCommand::Kind::Fetch, .direction = "NEXT"};
    if (seesAnyWord({"NEXT", "PRIOR", "FIRST", "LAST"}) && seesWord("FROM", 1)) {
        node.direction = take().upper;
    } else if (seesAnyWord({"ABSOLUTE", "RELATIVE"})) {
        node.direction = take().upper;
        node.distance = bareValue();
    }
    acceptWord("FROM");
    cursorName(node);
    if (!acceptWord("INTO")) return node;
    do {
        node.into.push_back(variableName());
    } while (acceptSymbol(","));
    return node;
}

}  // namespace sandbox
