// The entry points, and which function parses which statement.
#include "sandbox/tsql/parse/parser.h"

#include <algorithm>
#include <utility>

#include "sandbox/tsql/parse/parse_state.h"

namespace sandbox {

struct Parser::Command {
    std::string_view word;
    Node (Parser::*parse)();
};

// Every statement begins with one of these words, save a label, a query in parentheses, THROW, and a call without EXEC.
constexpr Parser::Command Parser::kCommands[] = {
    {"ALTER", &Parser::alter},
    {"BACKUP", &Parser::backup},
    {"BEGIN", &Parser::begin},
    {"BREAK", &Parser::breakLoop},
    {"BULK", &Parser::bulkInsert},
    {"CHECKPOINT", &Parser::checkpoint},
    {"CLOSE", &Parser::closeCursor},
    {"COMMIT", &Parser::commit},
    {"CONTINUE", &Parser::continueLoop},
    {"CREATE", &Parser::create},
    {"DBCC", &Parser::dbcc},
    {"DEALLOCATE", &Parser::deallocateCursor},
    {"DECLARE", &Parser::declare},
    {"DELETE", &Parser::remove},
    {"DENY", &Parser::permission},
    {"DROP", &Parser::drop},
    {"EXEC", &Parser::execute},
    {"EXECUTE", &Parser::execute},
    {"FETCH", &Parser::fetchCursor},
    {"GOTO", &Parser::gotoLabel},
    {"GRANT", &Parser::permission},
    {"IF", &Parser::ifElse},
    {"INSERT", &Parser::insert},
    {"KILL", &Parser::kill},
    {"MERGE", &Parser::merge},
    {"OPEN", &Parser::openCursor},
    {"PRINT", &Parser::print},
    {"RAISERROR", &Parser::raiseError},
    {"RESTORE", &Parser::restore},
    {"RETURN", &Parser::returnStatement},
    {"REVERT", &Parser::revert},
    {"REVOKE", &Parser::permission},
    {"ROLLBACK", &Parser::rollback},
    {"SAVE", &Parser::save},
    {"SELECT", &Parser::selectStatement},
    {"SET", &Parser::set},
    {"TRUNCATE", &Parser::truncate},
    {"UPDATE", &Parser::update},
    {"USE", &Parser::use},
    {"WAITFOR", &Parser::waitFor},
    {"WHILE", &Parser::whileLoop},
};

// {statement [;]}, up to END or the end of the text
ast::Statements Parser::statements() {
    ast::Statements list;
    while (true) {
        while (acceptSymbol(";")) {
        }
        if (peek().kind == TokenKind::End || seesWord("END")) return list;
        const bool separated = list.empty() || (previous().kind == TokenKind::Operator && previous().text == ";");
        if (!separated && seesAnyWord({"WITH", "THROW"})) unexpected();
        list.push_back(statement());
    }
}

// statement [;]
ast::StatementPtr Parser::statement() {
    const Nest nest(*this);
    links_ = 0;
    statementStart_ = at_;
    auto node = std::make_unique<ast::Statement>();
    node->place = peek().place;
    node->node = statementNode();
    node->text = {node->place.offset, previous().end};
    acceptSymbol(";");
    return node;
}

Parser::Node Parser::statementNode() {
    if (peek().kind == TokenKind::Label) return ast::Label{take().text};
    if (peek().kind == TokenKind::Word) {
        for (const Command& command : kCommands) {
            if (command.word == peek().upper) return (this->*command.parse)();
        }
    }
    if (seesWord("WITH")) return withStatement();
    if (seesWord("THROW")) return throwError();
    if (seesQuery()) return selectStatement();
    if (seesIdentifier() && at_ == first_) return implicitExecute();
    unexpected();
}

bool Parser::seesStatementStart() const {
    if (peek().kind == TokenKind::Label || seesAnyWord({"END", "ELSE"})) return true;
    return peek().kind == TokenKind::Word &&
           std::ranges::any_of(kCommands, [&](const Command& command) { return command.word == peek().upper; });
}

ast::Batch Parser::batch() {
    while (acceptSymbol(";")) {
    }
    first_ = at_;
    try {
        ast::Batch batch{statements()};
        if (peek().kind != TokenKind::End) unexpected();
        return batch;
    } catch (SqlError& error) {
        for (Message& message : error.messages) message.procedure = module_;
        throw;
    }
}

ast::ExprPtr Parser::wholeExpression() {
    ast::ExprPtr expr = value();
    expectEnd();
    return expr;
}

ast::ExprPtr Parser::wholeCondition() {
    ast::ExprPtr expr = condition();
    expectEnd();
    return expr;
}

std::vector<ast::Parameter> Parser::wholeDeclarations() {
    std::vector<ast::Parameter> list;
    if (peek().kind == TokenKind::End) return list;
    do {
        list.push_back(parameter());
    } while (acceptSymbol(","));
    expectEnd();
    return list;
}

ast::InsertBulk Parser::wholeInsertBulk() {
    ast::InsertBulk node = insertBulk();
    expectEnd();
    return node;
}

ast::Batch parseBatch(std::string_view text, const ParseOptions& options) {
    return Parser(text, options).batch();
}

ast::ExprPtr parseExpression(std::string_view text, const ParseOptions& options) {
    return Parser(text, options).wholeExpression();
}

ast::ExprPtr parseCondition(std::string_view text, const ParseOptions& options) {
    return Parser(text, options).wholeCondition();
}

std::vector<ast::Parameter> parseDeclarations(std::string_view text, const ParseOptions& options) {
    return Parser(text, options).wholeDeclarations();
}

ast::InsertBulk parseInsertBulk(std::string_view text, const ParseOptions& options) {
    return Parser(text, options).wholeInsertBulk();
}

}  // namespace sandbox
