// Blocks, branches, loops, labels, and transactions.
#include <utility>

#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/parse/parse_state.h"

namespace sandbox {

// BEGIN (TRAN ... | TRY ... | statements END)
Parser::Node Parser::begin() {
    expectWord("BEGIN");
    if (seesAnyWord({"TRAN", "TRANSACTION"})) return transaction(ast::Transaction::Kind::Begin);
    if (seesWord("TRY")) return tryCatch();
    if (seesAnyWord({"DISTRIBUTED", "DIALOG", "CONVERSATION"})) unsupported("BEGIN " + peek().upper);
    return block();
}

// statements END, with one statement at least
Parser::Node Parser::block() {
    ast::Block node{statements()};
    if (node.body.empty()) unexpected();
    expectWord("END");
    return node;
}

// TRY statements END TRY [;] BEGIN CATCH statements END CATCH
Parser::Node Parser::tryCatch() {
    ast::TryCatch node;
    expectWord("TRY");
    node.tryBody = statements();
    expectWord("END");
    expectWord("TRY");
    acceptSymbol(";");
    expectWord("BEGIN");
    expectWord("CATCH");
    node.catchBody = statements();
    expectWord("END");
    expectWord("CATCH");
    return node;
}

// IF condition statement [ELSE statement]
Parser::Node Parser::ifElse() {
    expectWord("IF");
    ast::If node;
    node.condition = condition();
    node.then = statement();
    if (acceptWord("ELSE")) node.otherwise = statement();
    return node;
}

// WHILE condition statement
Parser::Node Parser::whileLoop() {
    expectWord("WHILE");
    ast::While node;
    node.condition = condition();
    ++loops_;
    node.body = statement();
    --loops_;
    return node;
}

Parser::Node Parser::breakLoop() {
    const ast::Place place = peek().place;
    expectWord("BREAK");
    if (loops_ == 0) fail(errorMessage<135>(), place);
    return ast::Break{};
}

Parser::Node Parser::continueLoop() {
    const ast::Place place = peek().place;
    expectWord("CONTINUE");
    if (loops_ == 0) fail(errorMessage<136>(), place);
    return ast::Continue{};
}

// GOTO label
Parser::Node Parser::gotoLabel() {
    expectWord("GOTO");
    return ast::Goto{identifier()};
}

// RETURN [value]
Parser::Node Parser::returnStatement() {
    expectWord("RETURN");
    ast::Return node;
    if (seesValueStart()) node.value = value();
    return node;
}

// WAITFOR (DELAY | TIME) ('text' | @variable)
Parser::Node Parser::waitFor() {
    expectWord("WAITFOR");
    if (seesSymbol("(")) unsupported("WAITFOR (statement)");
    ast::WaitFor node;
    node.isDelay = expectAnyWord({"DELAY", "TIME"}) == "DELAY";
    if (peek().kind != TokenKind::String && peek().kind != TokenKind::NString && peek().kind != TokenKind::Variable) {
        unexpected();
    }
    node.value = bareValue();
    return node;
}

// COMMIT [WORK | (TRAN | TRANSACTION) [name | @variable]]
Parser::Node Parser::commit() {
    expectWord("COMMIT");
    ast::Transaction node = transaction(ast::Transaction::Kind::Commit);
    if (seesWord("WITH") && seesSymbol("(", 1)) {  // DELAYED_DURABILITY
        take();
        optionTexts();
    }
    return node;
}

// ROLLBACK [WORK | (TRAN | TRANSACTION) [name | @variable]]
Parser::Node Parser::rollback() {
    expectWord("ROLLBACK");
    return transaction(ast::Transaction::Kind::Rollback);
}

// SAVE (TRAN | TRANSACTION) (name | @variable)
Parser::Node Parser::save() {
    expectWord("SAVE");
    if (!seesAnyWord({"TRAN", "TRANSACTION"})) unexpected();
    ast::Transaction node = transaction(ast::Transaction::Kind::Save);
    if (node.name.empty() && node.variable.empty()) unexpected();
    return node;
}

ast::Transaction Parser::transaction(ast::Transaction::Kind kind) {
    ast::Transaction node{.kind = kind};
    if (acceptWord("WORK")) return node;
    if (!acceptWord("TRAN") && !acceptWord("TRANSACTION")) return node;
    if (peek().kind == TokenKind::Variable) {
        node.variable = variableName();
    } else if (seesIdentifier()) {
        node.name = identifier();
    }
    if (kind == ast::Transaction::Kind::Begin && acceptWords("WITH", "MARK") && seesLiteral()) take();
    return node;
}

}  // namespace sandbox
