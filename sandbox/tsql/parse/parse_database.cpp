// CREATE, ALTER and DROP DATABASE, USE, and permissions.
#include <utility>

#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/parse/parse_state.h"

namespace sandbox {

// CREATE DATABASE name [ON [PRIMARY] files [LOG ON files]] [COLLATE name] [WITH ...]; files := ( ... ) {, ( ... )}
Parser::Node Parser::createDatabase() {
    expectWord("DATABASE");
    if (seesWord("AUDIT") || seesWord("SCOPED")) {
        return unsupportedStatement("CREATE DATABASE " + peek().upper, SkipTo::StatementEnd);
    }
    ast::CreateDatabase node;
    node.name = identifier();
    if (acceptWord("ON")) {
        acceptWord("PRIMARY");
        do {
            optionTexts();
        } while (acceptSymbol(","));
    }
    if (acceptWord("LOG")) {
        expectWord("ON");
        do {
            optionTexts();
        } while (acceptSymbol(","));
    }
    if (acceptWord("COLLATE")) node.collation = identifier();
    if (seesWord("FOR")) unsupported("FOR ATTACH");
    if (seesWord("AS")) unsupported("AS SNAPSHOT OF");
    return node;
}

// ALTER DATABASE (name | CURRENT) (MODIFY NAME = name | COLLATE name | SET option {, option} [WITH termination])
Parser::Node Parser::alterDatabase() {
    expectWord("DATABASE");
    ast::AlterDatabase node;
    if (!acceptWord("CURRENT")) node.name = identifier();
    if (acceptWords("MODIFY", "NAME")) {
        expectSymbol("=");
        node.newName = identifier();
    } else if (acceptWord("COLLATE")) {
        node.collation = identifier();
    } else if (acceptWord("SET")) {
        do {
            std::string option;
            while (peek().kind == TokenKind::Word && !seesWord("WITH") && (!seesStatementStart() || option.empty())) {
                if (!option.empty()) option += ' ';
                option += take().upper;
            }
            if (option.empty()) unexpected();
            if (acceptSymbol("="))
                option += " = " + identifierOrReserved();
            else if (peek().kind == TokenKind::Integer)
                option += " " + take().text;
            else if (seesSymbol("("))
                optionTexts();
            node.options.push_back(std::move(option));
        } while (acceptSymbol(","));
        if (acceptWords("WITH", "ROLLBACK")) {
            if (!acceptWord("IMMEDIATE")) {
                expectWord("AFTER");
                integer();
                acceptWord("SECONDS");
            }
        } else if (acceptWord("WITH")) {
            expectWord("NO_WAIT");
        }
    } else if (seesAnyWord({"ADD", "REMOVE", "MODIFY", "SCOPED"})) {
        return unsupportedStatement("ALTER DATABASE " + peek().upper, SkipTo::StatementEnd);
    } else {
        unexpected();
    }
    return node;
}

// DROP DATABASE [IF EXISTS] name {, name}
Parser::Node Parser::dropDatabase() {
    expectWord("DATABASE");
    ast::DropDatabase node;
    node.ifExists = acceptWords("IF", "EXISTS");
    do {
        node.names.push_back(identifier());
    } while (acceptSymbol(","));
    return node;
}

// SCHEMA (name | [name] AUTHORIZATION owner), without objects of its own
Parser::Node Parser::createSchema() {
    requireFirst("CREATE SCHEMA");
    expectWord("SCHEMA");
    ast::CreateSchema node;
    if (!seesWord("AUTHORIZATION")) node.name = identifier();
    if (acceptWord("AUTHORIZATION")) node.owner = identifier();
    if (node.name.empty()) node.name = node.owner;
    if (!seesAnyWord({"CREATE", "GRANT", "REVOKE", "DENY"})) return node;
    return unsupportedStatement("CREATE SCHEMA with objects", SkipTo::BatchEnd);
}

// SCHEMA [IF EXISTS] name
Parser::Node Parser::dropSchema() {
    expectWord("SCHEMA");
    ast::DropSchema node;
    node.ifExists = acceptWords("IF", "EXISTS");
    node.name = identifier();
    return node;
}

// USE name
Parser::Node Parser::use() {
    const ast::Place place = peek().place;
    expectWord("USE");
    if (inProcedure_) {
        fail(errorMessage<154>(), place);
    }
    return ast::Use{identifier()};
}

// (GRANT | DENY | REVOKE [GRANT OPTION FOR]) permission {, permission} [ON [class ::] name [( columns )]]
//     (TO | FROM) principal {, principal} [WITH GRANT OPTION] [CASCADE] [AS name]
Parser::Node Parser::permission() {
    ast::Permission node;
    node.verb = take().upper;
    if (seesWord("GRANT") && seesWord("OPTION", 1) && seesWord("FOR", 2)) at_ += 3;
    do {
        std::string words;
        while (peek().kind == TokenKind::Word && !seesAnyWord({"ON", "TO", "FROM"})) {
            if (!words.empty()) words += ' ';
            words += take().upper;
        }
        if (words.empty()) unexpected();
        if (seesSymbol("(")) identifierList();
        node.permissions.push_back(std::move(words));
    } while (acceptSymbol(","));
    if (acceptWord("ON")) {
        if (seesSymbol("::", 1)) {
            identifierOrReserved();
            take();
        }
        node.object = objectName();
        if (seesSymbol("(")) identifierList();
    }
    expectAnyWord({"TO", "FROM"});
    do {
        node.principals.push_back(seesWord("PUBLIC") ? take().text : identifier());
    } while (acceptSymbol(","));
    if (acceptWords("WITH", "GRANT")) expectWord("OPTION");
    acceptWord("CASCADE");
    if (acceptWord("AS")) identifier();
    return node;
}

}  // namespace sandbox
