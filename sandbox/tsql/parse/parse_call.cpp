// EXECUTE, PRINT, RAISERROR and THROW.
#include <utility>

#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/parse/parse_state.h"

namespace sandbox {

// (EXEC | EXECUTE) call
Parser::Node Parser::execute() {
    take();
    if (seesWord("AS")) return unsupportedStatement("EXECUTE AS", SkipTo::StatementEnd);
    return executeCall();
}

// [name arguments] as a batch's first statement
Parser::Node Parser::implicitExecute() {
    ast::Execute node = executeCall();
    node.implicit = true;
    return node;
}

// call := ( text {+ text} ) | [@status =] (name [; number] | @procedure) [argument {, argument}] [WITH RECOMPILE]
ast::Execute Parser::executeCall() {
    ast::Execute node;
    if (acceptSymbol("(")) {
        do {
            const ast::Place from = peek().place;
            if (peek().kind != TokenKind::Variable && peek().kind != TokenKind::String &&
                peek().kind != TokenKind::NString) {
                unexpected();
            }
            node.text.push_back(bareValue());
            node.text.back()->place = from;
        } while (acceptSymbol("+"));
        if (seesSymbol(",")) unsupported("EXECUTE AT");
        expectSymbol(")");
        if (seesWord("AT")) unsupported("EXECUTE AT");
        return node;
    }
    if (peek().kind == TokenKind::Variable && seesSymbol("=", 1)) {
        node.returnVariable = variableName();
        take();
    }
    if (peek().kind == TokenKind::Variable) {
        node.procedureVariable = variableName();
    } else {
        node.procedure = objectName();
        if (seesSymbol(";") && peek(1).kind == TokenKind::Integer) {
            take();
            if (integer() != 1) unsupported("PROCEDURE ;number");
        }
    }
    executeArguments(node);
    if (seesWord("WITH") && seesWord("RESULT", 1)) unsupported("WITH RESULT SETS");
    acceptWords("WITH", "RECOMPILE");
    return node;
}

void Parser::executeArguments(ast::Execute& node) {
    const bool any = seesLiteral() || seesIdentifier() || seesSymbol("-") || seesSymbol("+") || seesWord("DEFAULT") ||
                     peek().kind == TokenKind::Variable || peek().kind == TokenKind::Global;
    if (!any) return;
    do {
        node.arguments.push_back(executeArgument());
        const bool named = !node.arguments.back().name.empty();
        if (!named && node.arguments.size() > 1 && !node.arguments[node.arguments.size() - 2].name.empty()) {
            const std::string number = std::to_string(node.arguments.size());
            fail(errorMessage<119>(number), node.arguments.back().place);
        }
    } while (acceptSymbol(","));
}

// [@name =] (value [OUT | OUTPUT] | DEFAULT)
ast::ExecArgument Parser::executeArgument() {
    ast::ExecArgument node;
    node.place = peek().place;
    if (peek().kind == TokenKind::Variable && seesSymbol("=", 1)) {
        node.name = variableName();
        take();
    }
    const ast::Place from = peek().place;
    if (acceptWord("DEFAULT")) {
        node.value = make(from, ast::DefaultValue{});
        return node;
    }
    node.value = bareValue();
    if (seesAnyWord({"OUTPUT", "OUT"})) {
        if (ast::as<ast::Variable>(*node.value) == nullptr) {
            fail(errorMessage<179>(), from);
        }
        take();
        node.output = true;
    }
    return node;
}

// PRINT value
Parser::Node Parser::print() {
    expectWord("PRINT");
    return ast::Print{value()};
}

// RAISERROR ( message , severity , state {, argument} ) [WITH (LOG | NOWAIT | SETERROR) {, ...}]
// | RAISERROR number text
Parser::Node Parser::raiseError() {
    expectWord("RAISERROR");
    ast::RaiseError node;
    if (!seesSymbol("(")) {
        node.oldForm = true;
        node.message = bareValue();
        acceptSymbol(",");
        node.arguments.push_back(bareValue());
        return node;
    }
    expectSymbol("(");
    node.message = value();
    expectSymbol(",");
    node.severity = value();
    expectSymbol(",");
    node.state = value();
    if (acceptSymbol(",")) node.arguments = valueList();
    expectSymbol(")");
    if (!seesWord("WITH") || !seesAnyWord({"LOG", "NOWAIT", "SETERROR"}, 1)) return node;
    take();
    do {
        const std::string option = expectAnyWord({"LOG", "NOWAIT", "SETERROR"});
        if (option == "LOG")
            node.log = true;
        else if (option == "NOWAIT")
            node.noWait = true;
        else
            node.setError = true;
    } while (acceptSymbol(","));
    return node;
}

// THROW [number , message , state]
Parser::Node Parser::throwError() {
    expectWord("THROW");
    ast::Throw node;
    if (!seesLiteral() && peek().kind != TokenKind::Variable) return node;
    node.number = bareValue();
    expectSymbol(",");
    node.message = bareValue();
    expectSymbol(",");
    node.state = bareValue();
    return node;
}

}  // namespace sandbox
