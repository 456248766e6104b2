// MERGE.
#include <utility>

#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/parse/parse_state.h"

namespace sandbox {

// MERGE [TOP ...] [INTO] target [[AS] alias] USING source ON condition branch {branch} [OUTPUT ...] [OPTION ...] ;
Parser::Node Parser::merge() {
    const ast::Place place = peek().place;
    expectWord("MERGE");
    ast::Merge node;
    node.top = top();
    acceptWord("INTO");
    node.target = target();
    node.alias = tableAlias();
    expectWord("USING");
    node.source = tableSource();
    expectWord("ON");
    node.on = condition();
    do {
        node.branches.push_back(mergeBranch());
    } while (seesWord("WHEN"));
    node.output = output();
    node.options = queryOptions();
    if (!seesSymbol(";")) {
        if (peek().kind == TokenKind::Error) unexpected();
        fail(errorMessage<10713>(), place);
    }
    return node;
}

// branch := WHEN [NOT] MATCHED [BY (TARGET | SOURCE)] [AND condition] THEN
//     (UPDATE SET assignments | DELETE | INSERT [( columns )] (VALUES ( values ) | DEFAULT VALUES))
ast::Merge::Branch Parser::mergeBranch() {
    ast::Merge::Branch node;
    node.place = peek().place;
    node.when = ast::Merge::When::Matched;
    expectWord("WHEN");
    if (acceptWord("NOT")) node.when = ast::Merge::When::NotMatchedByTarget;
    expectWord("MATCHED");
    if (node.when == ast::Merge::When::NotMatchedByTarget && acceptWord("BY") &&
        expectAnyWord({"TARGET", "SOURCE"}) == "SOURCE") {
        node.when = ast::Merge::When::NotMatchedBySource;
    }
    if (acceptWord("AND")) node.condition = condition();
    expectWord("THEN");
    if (node.when == ast::Merge::When::NotMatchedByTarget) {
        expectWord("INSERT");
        node.action = ast::Merge::Action::Insert;
        if (seesSymbol("(")) node.columns = identifierList();
        if (acceptWords("DEFAULT", "VALUES")) return node;
        expectWord("VALUES");
        expectSymbol("(");
        do {
            node.values.push_back(valueOrDefault());
        } while (acceptSymbol(","));
        expectSymbol(")");
        return node;
    }
    if (acceptWord("DELETE")) {
        node.action = ast::Merge::Action::Delete;
        return node;
    }
    expectWord("UPDATE");
    expectWord("SET");
    node.action = ast::Merge::Action::Update;
    node.assignments = assignments();
    return node;
}

}  // namespace sandbox
