// SELECT as a statement, INSERT, UPDATE, DELETE, TRUNCATE and INSERT BULK.
#include <utility>

#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/parse/parse_state.h"

namespace sandbox {
namespace {

constexpr std::size_t kMaxRows = 1000;

}  // namespace

// WITH tables (SELECT ... | INSERT ... | UPDATE ... | DELETE ... | MERGE ...)
Parser::Node Parser::withStatement() {
    std::vector<ast::Cte> tables = commonTables();
    if (!seesAnyWord({"SELECT", "INSERT", "UPDATE", "DELETE", "MERGE"}) && !seesQuery()) unexpected();
    Node node = seesWord("INSERT")   ? insert()
                : seesWord("UPDATE") ? update()
                : seesWord("DELETE") ? remove()
                : seesWord("MERGE")  ? merge()
                                     : selectStatement();
    std::visit(ast::Overloaded{
                   [&](ast::SelectStatement& statement) { statement.query->ctes = std::move(tables); },
                   [&](auto& statement) {
                       if constexpr (requires { statement.ctes; }) statement.ctes = std::move(tables);
                   },
               },
               node);
    return node;
}

// query [OPTION ...]
Parser::Node Parser::selectStatement() {
    ownSelect_ = true;
    ast::QueryPtr own = query();
    ownSelect_ = false;
    own->options = queryOptions();
    return ast::SelectStatement{std::move(own)};
}

// @table | name, [WITH ( hints )]
ast::Target Parser::target() {
    ast::Target node;
    node.place = peek().place;
    if (seesAnyWord({"OPENROWSET", "OPENQUERY"})) unsupported(peek().upper);
    if (peek().kind == TokenKind::Variable) {
        node.variable = variableName();
    } else {
        node.name = objectName();
    }
    if (seesWord("WITH") && seesSymbol("(", 1)) {
        take();
        node.hints = tableHints();
    }
    return node;
}

// INSERT [TOP ...] [INTO] target [( columns )] [OUTPUT ...]
//     (VALUES rows | DEFAULT VALUES | EXEC ... | query [OPTION ...])
Parser::Node Parser::insert() {
    if (seesWord("BULK", 1)) return insertBulk();
    expectWord("INSERT");
    ast::Insert node;
    node.top = top();
    acceptWord("INTO");
    node.target = target();
    if (seesSymbol("(") && !seesQuery()) {
        take();
        do {
            node.columnPlaces.push_back(peek().place);
            node.columns.push_back(objectName().name);
        } while (acceptSymbol(","));
        expectSymbol(")");
    }
    node.output = output();
    if (acceptWord("VALUES")) {
        std::vector<ast::ExprList> rows = valuesRows();
        if (rows.size() > kMaxRows) {
            fail(errorMessage<10738>(), node.target.place);
        }
        node.source = std::move(rows);
    } else if (acceptWords("DEFAULT", "VALUES")) {
        node.source = ast::Insert::DefaultValues{};
    } else if (seesAnyWord({"EXEC", "EXECUTE"})) {
        take();
        node.source = std::make_unique<ast::Execute>(executeCall());
    } else if (seesWord("SELECT") || seesSymbol("(")) {
        ast::QueryPtr source = nestedQuery();
        source->options = queryOptions();
        node.source = std::move(source);
    } else {
        unexpected();
    }
    return node;
}

// ( value | DEFAULT {, ...} ) {, ( ... )}
std::vector<ast::ExprList> Parser::valuesRows() {
    std::vector<ast::ExprList> rows;
    do {
        const ast::Place place = peek().place;
        expectSymbol("(");
        ast::ExprList row;
        do {
            row.push_back(valueOrDefault());
        } while (acceptSymbol(","));
        expectSymbol(")");
        if (!rows.empty() && row.size() != rows.front().size()) {
            fail(errorMessage<10709>(), place);
        }
        rows.push_back(std::move(row));
    } while (acceptSymbol(","));
    return rows;
}

// [OUTPUT item {, item} [INTO target [( columns )]]]
std::optional<ast::Output> Parser::output() {
    if (!acceptWord("OUTPUT")) return std::nullopt;
    ast::Output node;
    do {
        node.items.push_back(selectItem());
    } while (acceptSymbol(","));
    if (acceptWord("INTO")) {
        node.into = target();
        if (seesSymbol("(") && !seesQuery()) node.columns = identifierList();
    }
    return node;
}

// = | += | -= | *= | /= | %= | &= | |= | ^=
std::optional<ast::AssignOp> Parser::assignOperator() {
    using enum ast::AssignOp;
    if (acceptSymbol("=")) return Set;
    if (acceptSymbol("+=")) return Add;
    if (acceptSymbol("-=")) return Subtract;
    if (acceptSymbol("*=")) return Multiply;
    if (acceptSymbol("/=")) return Divide;
    if (acceptSymbol("%=")) return Modulo;
    if (acceptSymbol("&=")) return BitAnd;
    if (acceptSymbol("|=")) return BitOr;
    if (acceptSymbol("^=")) return BitXor;
    return std::nullopt;
}

// column op value | @variable op value | @variable = column op value
ast::Assignment Parser::assignment() {
    ast::Assignment node;
    node.place = peek().place;
    if (peek().kind == TokenKind::Variable) {
        node.variable = variableName();
        const auto op = assignOperator();
        if (!op) unexpected();
        node.op = *op;
        int ahead = 0;
        while (seesIdentifier(ahead) && seesSymbol(".", ahead + 1)) ahead += 2;
        const bool column = *op == ast::AssignOp::Set && seesIdentifier(ahead) && peek(ahead + 1).text.ends_with('=') &&
                            peek(ahead + 1).kind == TokenKind::Operator;
        if (!column) {
            node.expr = value();
            return node;
        }
    }
    const ast::Place place = peek().place;
    std::vector<std::string> parts = nameParts();
    if (seesSymbol("(")) unsupported("WRITE");
    ast::ColumnRef column;
    column.name = std::move(parts.back());
    parts.pop_back();
    if (!parts.empty()) column.table = makeObjectName(parts, place);
    node.column = std::move(column);
    const auto op = assignOperator();
    if (!op) unexpected();
    node.op = *op;
    node.expr = valueOrDefault();
    return node;
}

std::vector<ast::Assignment> Parser::assignments() {
    std::vector<ast::Assignment> list;
    do {
        list.push_back(assignment());
    } while (acceptSymbol(","));
    return list;
}

// [WHERE condition]
ast::ExprPtr Parser::whereOfChange() {
    if (!acceptWord("WHERE")) return {};
    if (seesWord("CURRENT")) unsupported("WHERE CURRENT OF");
    return condition();
}

// UPDATE [TOP ...] target SET assignment {, assignment} [OUTPUT ...] [FROM ...] [WHERE condition] [OPTION ...]
Parser::Node Parser::update() {
    expectWord("UPDATE");
    if (seesWord("STATISTICS")) return unsupportedStatement("UPDATE STATISTICS", SkipTo::StatementEnd);
    ast::Update node;
    node.top = top();
    node.target = target();
    if (seesBareHint()) node.target.hints = tableHints();
    expectWord("SET");
    node.assignments = assignments();
    node.output = output();
    if (acceptWord("FROM")) node.from = fromList();
    node.where = whereOfChange();
    node.options = queryOptions();
    return node;
}

// DELETE [TOP ...] [FROM] target [OUTPUT ...] [FROM ...] [WHERE condition] [OPTION ...]
Parser::Node Parser::remove() {
    expectWord("DELETE");
    ast::Delete node;
    node.top = top();
    acceptWord("FROM");
    node.target = target();
    if (seesBareHint()) node.target.hints = tableHints();
    node.output = output();
    if (acceptWord("FROM")) node.from = fromList();
    node.where = whereOfChange();
    node.options = queryOptions();
    return node;
}

// TRUNCATE TABLE name
Parser::Node Parser::truncate() {
    expectWord("TRUNCATE");
    expectWord("TABLE");
    ast::Truncate node{objectName()};
    if (seesWord("WITH") && seesSymbol("(", 1)) unsupported("PARTITIONS");
    return node;
}

// INSERT BULK name ( column type [NULL | NOT NULL] [COLLATE name] {, ...} ) [WITH ( option {, option} )]
ast::InsertBulk Parser::insertBulk() {
    expectWord("INSERT");
    expectWord("BULK");
    ast::InsertBulk node;
    node.table = objectName();
    expectSymbol("(");
    do {
        ast::InsertBulk::Column column;
        column.place = peek().place;
        column.name = identifier();
        column.type = typeName(TypeUse::Declared);
        while (seesAnyWord({"NULL", "NOT", "COLLATE"})) {
            const std::string word = take().upper;
            if (word == "COLLATE") {
                column.collation = identifier();
            } else {
                column.nullable = word == "NULL";
                if (word == "NOT") expectWord("NULL");
            }
        }
        node.columns.push_back(std::move(column));
    } while (acceptSymbol(","));
    expectSymbol(")");
    if (acceptWord("WITH")) node.options = optionTexts();
    return node;
}

}  // namespace sandbox
