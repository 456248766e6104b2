// Statements of administration, and how those that are not supported are passed over.
#include <utility>

#include "sandbox/tsql/parse/parse_state.h"

namespace sandbox {

// DBCC name [( argument {, argument} )] [WITH option {, option}]
Parser::Node Parser::dbcc() {
    expectWord("DBCC");
    ast::Dbcc node;
    if (peek().kind != TokenKind::Word) unexpected();
    node.name = take().upper;
    if (acceptSymbol("(")) {
        if (!seesSymbol(")")) {
            do {
                node.arguments.push_back(bareValue());
            } while (acceptSymbol(","));
        }
        expectSymbol(")");
    }
    if (!acceptWord("WITH")) return node;
    do {
        if (peek().kind != TokenKind::Word) unexpected();
        std::string option = take().upper;
        if (acceptSymbol("=")) option += " = " + std::to_string(integer());
        node.options.push_back(std::move(option));
    } while (acceptSymbol(","));
    return node;
}

// KILL number [WITH STATUSONLY]
Parser::Node Parser::kill() {
    expectWord("KILL");
    if (seesAnyWord({"QUERY", "STATS"})) unsupported("KILL " + peek().upper);
    ast::Kill node{bareValue()};
    acceptWords("WITH", "STATUSONLY");
    return node;
}

// CHECKPOINT [seconds]
Parser::Node Parser::checkpoint() {
    expectWord("CHECKPOINT");
    if (peek().kind == TokenKind::Integer) integer();
    return ast::Checkpoint{};
}

Parser::Node Parser::backup() {
    expectWord("BACKUP");
    if (peek().kind != TokenKind::Word) unexpected();
    return unsupportedStatement("BACKUP " + peek().upper, SkipTo::StatementEnd);
}

Parser::Node Parser::restore() {
    expectWord("RESTORE");
    if (peek().kind != TokenKind::Word) unexpected();
    return unsupportedStatement("RESTORE " + peek().upper, SkipTo::StatementEnd);
}

Parser::Node Parser::bulkInsert() {
    expectWord("BULK");
    if (!seesWord("INSERT")) unexpected();
    return unsupportedStatement("BULK INSERT", SkipTo::StatementEnd);
}

Parser::Node Parser::revert() {
    return unsupportedStatement("REVERT", SkipTo::StatementEnd);
}

// Passes over the word the statement is named by, and what follows it up to a semicolon, a word that begins a
// statement, or the end of the text. The statement itself raises its error only when it is reached.
Parser::Node Parser::unsupportedStatement(const std::string& what, SkipTo end) {
    ast::Unsupported node;
    node.what = what;
    take();
    if (seesIdentifier()) node.name = objectName().name;
    int open = 0;
    while (peek().kind != TokenKind::End) {
        const bool ends = seesSymbol(";") || (seesStatementStart() && !seesWord("SET", 0));
        if (end == SkipTo::StatementEnd && open == 0 && ends) break;
        if (seesSymbol("(")) ++open;
        if (seesSymbol(")") && open > 0) --open;
        take();
    }
    return node;
}

}  // namespace sandbox
