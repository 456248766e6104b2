// CREATE, ALTER and DROP: which kind of thing, and views and procedures themselves.
#include <array>
#include <utility>

#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/parse/parse_state.h"

namespace sandbox {
namespace {

// Things that SQL Server can make and this server cannot. A module takes the rest of its batch with it.
struct UnsupportedKind {
    std::string_view word;
    bool isModule;
};
constexpr auto kUnsupportedKinds = std::to_array<UnsupportedKind>({
    {"AGGREGATE", false},     {"APPLICATION", false}, {"ASSEMBLY", false},  {"ASYMMETRIC", false},
    {"AUTHORIZATION", false}, {"CERTIFICATE", false}, {"COLUMN", false},    {"CREDENTIAL", false},
    {"DEFAULT", true},        {"ENDPOINT", false},    {"EVENT", false},     {"EXTERNAL", false},
    {"FULLTEXT", false},      {"FUNCTION", true},     {"LOGIN", false},     {"MASTER", false},
    {"MESSAGE", false},       {"PARTITION", false},   {"QUEUE", false},     {"ROLE", false},
    {"RULE", true},           {"SCHEMA", false},      {"SEQUENCE", false},  {"SERVER", false},
    {"SERVICE", false},       {"STATISTICS", false},  {"SYMMETRIC", false}, {"SYNONYM", false},
    {"TRIGGER", true},        {"TYPE", false},        {"USER", false},      {"XML", false},
});

}  // namespace

// CREATE (TABLE | INDEX | VIEW | PROCEDURE | DATABASE | SCHEMA | ...)
Parser::Node Parser::create() {
    const std::uint32_t begin = peek().place.offset;
    expectWord("CREATE");
    if (acceptWords("OR", "ALTER")) return module(ast::Verb::CreateOrAlter, {begin, previous().end});
    if (seesWord("TABLE")) return createTable();
    if (seesAnyWord({"UNIQUE", "CLUSTERED", "NONCLUSTERED", "INDEX"})) return createIndex();
    if (seesWord("DATABASE")) return createDatabase();
    if (seesWord("SCHEMA")) return createSchema();
    return module(ast::Verb::Create, {begin, previous().end});
}

// ALTER (TABLE | VIEW | PROCEDURE | DATABASE | INDEX | ...)
Parser::Node Parser::alter() {
    const std::uint32_t begin = peek().place.offset;
    expectWord("ALTER");
    if (seesWord("TABLE")) return alterTable();
    if (seesWord("DATABASE")) return alterDatabase();
    if (seesWord("INDEX")) return unsupportedStatement("ALTER INDEX", SkipTo::StatementEnd);
    return module(ast::Verb::Alter, {begin, previous().end});
}

// DROP (TABLE | VIEW | PROCEDURE | FUNCTION | TRIGGER | INDEX | DATABASE | SCHEMA | ...)
Parser::Node Parser::drop() {
    expectWord("DROP");
    if (seesWord("INDEX")) return dropIndex();
    if (seesWord("DATABASE")) return dropDatabase();
    if (seesWord("SCHEMA")) return dropSchema();
    if (acceptWord("TABLE")) return dropObjects(ast::DropObjects::Kind::Table);
    if (acceptWord("VIEW")) return dropObjects(ast::DropObjects::Kind::View);
    if (acceptWord("PROCEDURE") || acceptWord("PROC")) return dropObjects(ast::DropObjects::Kind::Procedure);
    if (acceptWord("FUNCTION")) return dropObjects(ast::DropObjects::Kind::Function);
    if (acceptWord("TRIGGER")) return dropObjects(ast::DropObjects::Kind::Trigger);
    for (const UnsupportedKind& kind : kUnsupportedKinds) {
        if (seesWord(kind.word)) return unsupportedStatement("DROP " + peek().upper, SkipTo::StatementEnd);
    }
    if (seesIdentifier()) fail(errorMessage<343>(peek().text), peek().place);
    unexpected();
}

// [IF EXISTS] name {, name}
Parser::Node Parser::dropObjects(ast::DropObjects::Kind kind) {
    ast::DropObjects node{.kind = kind};
    node.ifExists = acceptWords("IF", "EXISTS");
    do {
        node.names.push_back(objectName());
    } while (acceptSymbol(","));
    return node;
}

// What follows CREATE, ALTER or CREATE OR ALTER when it is a module or something unsupported.
Parser::Node Parser::module(ast::Verb verb, const ast::Extent& verbText) {
    if (seesWord("VIEW")) return view(verb, verbText);
    if (seesAnyWord({"PROCEDURE", "PROC"})) return procedure(verb, verbText);
    const std::string written = verb == ast::Verb::Alter ? "ALTER " : "CREATE ";
    for (const UnsupportedKind& kind : kUnsupportedKinds) {
        if (!seesWord(kind.word)) continue;
        const std::string what = written + peek().upper;
        if (kind.isModule) requireFirst(what);
        return unsupportedStatement(what, kind.isModule ? SkipTo::BatchEnd : SkipTo::StatementEnd);
    }
    if (seesIdentifier()) fail(errorMessage<343>(peek().text), peek().place);
    unexpected();
}

// Error 111 unless the statement begun last is the batch's first.
void Parser::requireFirst(std::string_view what) const {
    if (statementStart_ == first_ && depth_ == 1 && !inProcedure_) return;
    fail(errorMessage<111>(what), peek().place);
}

// VIEW name [( columns )] [WITH option {, option}] AS [WITH ...] query [WITH CHECK OPTION]
Parser::Node Parser::view(ast::Verb verb, const ast::Extent& verbText) {
    requireFirst(verb == ast::Verb::Alter ? "ALTER VIEW" : "CREATE VIEW");
    expectWord("VIEW");
    ast::CreateView node{.verb = verb, .verbText = verbText};
    node.name = objectName();
    module_ = node.name.name;
    if (!node.name.database.empty()) {
        fail(errorMessage<166>("VIEW"), node.name.place);
    }
    if (seesSymbol("(")) node.columns = identifierList();
    if (acceptWord("WITH")) {
        do {
            const std::string option = expectAnyWord({"ENCRYPTION", "SCHEMABINDING", "VIEW_METADATA"});
            if (option == "SCHEMABINDING") node.schemaBinding = true;
        } while (acceptSymbol(","));
    }
    expectWord("AS");
    std::vector<ast::Cte> tables;
    if (seesWord("WITH")) tables = commonTables();
    if (!seesWord("SELECT") && !seesQuery()) unexpected();
    node.query = nestedQuery();
    node.query->ctes = std::move(tables);
    requireBounded(*node.query);
    if (acceptWord("WITH")) {
        expectWord("CHECK");
        expectWord("OPTION");
        node.checkOption = true;
    }
    expectEnd();
    return node;
}

// (PROCEDURE | PROC) name [; number] [parameters | ( parameters )] [WITH option {, option}] [FOR REPLICATION]
//     AS statements
Parser::Node Parser::procedure(ast::Verb verb, const ast::Extent& verbText) {
    requireFirst("CREATE/ALTER PROCEDURE");
    take();
    ast::CreateProcedure node{.verb = verb, .verbText = verbText};
    node.name = objectName();
    module_ = node.name.name;
    if (!node.name.database.empty()) {
        fail(errorMessage<166>("PROCEDURE"), node.name.place);
    }
    if (acceptSymbol(";") && integer() != 1) unsupported("PROCEDURE ;number");
    const bool parentheses = acceptSymbol("(");
    if (peek().kind == TokenKind::Variable) {
        do {
            node.parameters.push_back(parameter());
        } while (acceptSymbol(","));
    }
    if (parentheses) expectSymbol(")");
    if (acceptWord("WITH")) procedureOptions(node);
    if (seesWord("FOR") && seesWord("REPLICATION", 1)) unsupported("FOR REPLICATION");
    expectWord("AS");
    if (seesWord("EXTERNAL")) unsupported("EXTERNAL");
    inProcedure_ = true;
    node.body = statements();
    inProcedure_ = false;
    if (node.body.empty() || peek().kind != TokenKind::End) unexpected();
    return node;
}

// option := RECOMPILE | ENCRYPTION | EXECUTE AS (CALLER | SELF | OWNER | 'user')
void Parser::procedureOptions(ast::CreateProcedure& node) {
    do {
        const std::string option = expectAnyWord({"RECOMPILE", "ENCRYPTION", "EXECUTE", "EXEC"});
        if (option == "RECOMPILE") {
            node.recompile = true;
        } else if (option == "ENCRYPTION") {
            node.encrypted = true;
        } else {
            expectWord("AS");
            if (peek().kind == TokenKind::String)
                take();
            else
                expectAnyWord({"CALLER", "SELF", "OWNER"});
        }
    } while (acceptSymbol(","));
}

// @name [AS] type [VARYING] [NULL | NOT NULL] [= value] [OUT | OUTPUT] [READONLY]
ast::Parameter Parser::parameter() {
    ast::Parameter node;
    node.place = peek().place;
    node.name = variableName();
    acceptWord("AS");
    node.type = typeName(TypeUse::Declared, "parameter '" + node.name + "'");
    acceptWord("NULL");
    if (acceptSymbol("=")) node.defaultValue = bareValue();
    node.output = acceptWord("OUTPUT") || acceptWord("OUT");
    if (seesWord("READONLY")) unsupported("READONLY");
    return node;
}

}  // namespace sandbox
