// Queries: SELECT, set operations, common table expressions and what may follow them.
#include <algorithm>
#include <utility>

#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/parse/parse_state.h"

namespace sandbox {
namespace {

bool assigns(const ast::QueryBody& body) {
    if (const auto* select = std::get_if<ast::Select>(&body.node)) {
        return std::ranges::any_of(select->items,
                                   [](const auto& item) { return item.kind == ast::SelectItem::Kind::Assign; });
    }
    const auto& operation = std::get<ast::SetOperation>(body.node);
    return assigns(*operation.left) || assigns(*operation.right);
}

}  // namespace

// query := body [ORDER BY ...] [OFFSET ...] [FOR ...]
ast::QueryPtr Parser::query() {
    auto query = std::make_unique<ast::Query>();
    query->place = peek().place;
    query->body = queryBody();
    if (seesWord("ORDER")) {
        query->orderBy = orderBy();
        offsetFetch(*query);
    }
    forClause(*query);
    return query;
}

ast::QueryPtr Parser::nestedQuery() {
    const bool outerOwnSelect = std::exchange(ownSelect_, false);
    ast::QueryPtr inner = query();
    ownSelect_ = outerOwnSelect;
    return inner;
}

ast::QueryPtr Parser::subquery() {
    const Nest nest(*this);
    const int outerHeight = std::exchange(height_, 0);
    expectSymbol("(");
    ast::QueryPtr inner = nestedQuery();
    requireBounded(*inner);
    expectSymbol(")");
    queryHeight_ = height_;
    height_ = std::max(height_, outerHeight);
    return inner;
}

void Parser::requireBounded(const ast::Query& query) const {
    if (query.orderBy.empty() || query.offset || query.forXml) return;
    const auto* select = std::get_if<ast::Select>(&query.body->node);
    if (select != nullptr && select->top) return;
    fail(errorMessage<1033>(), query.orderBy.front().expr->place);
}

// body := term {(UNION [ALL] | EXCEPT) term}
ast::QueryBodyPtr Parser::queryBody() {
    const ast::Place place = peek().place;
    ast::QueryBodyPtr left = queryTerm();
    while (seesAnyWord({"UNION", "EXCEPT"})) {
        countLink();
        auto op = take().upper == "UNION" ? ast::SetOperator::Union : ast::SetOperator::Except;
        if (op == ast::SetOperator::Union && acceptWord("ALL")) op = ast::SetOperator::UnionAll;
        ast::QueryBodyPtr right = queryTerm();
        left = std::make_unique<ast::QueryBody>(
            ast::QueryBody{place, ast::SetOperation{op, std::move(left), std::move(right)}});
    }
    if (std::holds_alternative<ast::SetOperation>(left->node) && assigns(*left)) {
        fail(errorMessage<10734>(), place);
    }
    return left;
}

// term := primary {INTERSECT primary}
ast::QueryBodyPtr Parser::queryTerm() {
    const ast::Place place = peek().place;
    ast::QueryBodyPtr left = queryPrimary();
    while (acceptWord("INTERSECT")) {
        countLink();
        ast::QueryBodyPtr right = queryPrimary();
        left = std::make_unique<ast::QueryBody>(
            ast::QueryBody{place, ast::SetOperation{ast::SetOperator::Intersect, std::move(left), std::move(right)}});
    }
    return left;
}

// primary := SELECT ... | ( body )
ast::QueryBodyPtr Parser::queryPrimary() {
    const ast::Place place = peek().place;
    if (seesSymbol("(")) {
        const Nest nest(*this);
        take();
        ast::QueryBodyPtr body = queryBody();
        expectSymbol(")");
        return body;
    }
    return std::make_unique<ast::QueryBody>(ast::QueryBody{place, select()});
}

// Looks through parentheses: a query stands in them when the innermost begins with SELECT and each of the others holds
// nothing but it and set operations.
bool Parser::seesQuery() const {
    if (!seesSymbol("(")) return false;
    int depth = 0;
    while (seesSymbol("(", depth) && depth <= kMaxNesting) ++depth;
    if (!seesWord("SELECT", depth)) return false;
    for (int level = depth - 1; level > 0; --level) {
        const int close = peek(level).match;
        if (close < 0) return false;
        const int behind = close + 1 - static_cast<int>(at_);
        if (!seesSymbol(")", behind) && !seesAnyWord({"UNION", "EXCEPT", "INTERSECT"}, behind)) return false;
    }
    return true;
}

// SELECT [ALL | DISTINCT] [TOP ...] item {, item} [INTO name] [FROM ...] [WHERE condition] [GROUP BY ...]
//     [HAVING condition]
ast::Select Parser::select() {
    ast::Select node;
    node.place = peek().place;
    expectWord("SELECT");
    if (!acceptWord("ALL")) node.distinct = acceptWord("DISTINCT");
    node.top = top();
    do {
        node.items.push_back(selectItem());
    } while (acceptSymbol(","));
    const auto assigned = std::ranges::count(node.items, ast::SelectItem::Kind::Assign, &ast::SelectItem::kind);
    if (assigned > 0 && assigned < std::ssize(node.items)) {
        fail(errorMessage<141>(), node.place);
    }
    if (ownSelect_ && acceptWord("INTO")) node.into = objectName();
    if (acceptWord("FROM")) node.from = fromList();
    if (acceptWord("WHERE")) node.where = condition();
    if (acceptWord("GROUP")) groupBy(node);
    if (acceptWord("HAVING")) node.having = condition();
    return node;
}

// GROUP BY value {, value}
void Parser::groupBy(ast::Select& node) {
    expectWord("BY");
    if (seesWord("ALL")) unsupported("GROUP BY ALL");
    if (seesAnyWord({"ROLLUP", "CUBE"}) && seesSymbol("(", 1)) unsupported(peek().upper);
    if (seesWord("GROUPING") && seesWord("SETS", 1)) unsupported("GROUPING SETS");
    node.groupBy = valueList();
    if (seesWord("WITH") && seesAnyWord({"ROLLUP", "CUBE"}, 1)) unsupported("WITH " + peek(1).upper);
}

// TOP (( value ) | number) [PERCENT] [WITH TIES]
std::optional<ast::Top> Parser::top() {
    if (!acceptWord("TOP")) return std::nullopt;
    ast::Top node;
    const ast::Place from = peek().place;
    if (acceptSymbol("(")) {
        if (seesWord("SELECT")) {
            node.count = make(from, ast::Subquery{nestedQuery()});
        } else {
            node.count = value();
        }
        expectSymbol(")");
    } else {
        if (peek().kind != TokenKind::Integer && peek().kind != TokenKind::Decimal && peek().kind != TokenKind::Float) {
            unexpected();
        }
        const Token& number = take();
        node.count = make(from, literal(number));
    }
    node.percent = acceptWord("PERCENT");
    const auto* number = ast::as<ast::Literal>(*node.count);
    const auto* whole = number ? std::get_if<std::int64_t>(&number->value.value) : nullptr;
    if (node.percent && whole && isInteger(number->value.type.id) && *whole > 100) {
        fail(errorMessage<1031>(), node.count->place);
    }
    node.withTies = acceptWords("WITH", "TIES");
    return node;
}

// item := * | name.* | @variable op value | name = value | value [[AS] name]
ast::SelectItem Parser::selectItem() {
    ast::SelectItem item;
    item.place = peek().place;
    if (acceptSymbol("*")) {
        item.kind = ast::SelectItem::Kind::Star;
        return item;
    }
    int ahead = 0;
    while (seesIdentifier(ahead) && seesSymbol(".", ahead + 1)) ahead += 2;
    if (ahead > 0 && seesSymbol("*", ahead)) {
        std::vector<std::string> parts;
        for (; ahead > 0; ahead -= 2) {
            parts.push_back(identifier());
            take();
        }
        take();
        item.kind = ast::SelectItem::Kind::Star;
        item.table = makeObjectName(parts, item.place);
        return item;
    }
    if (ownSelect_ && peek().kind == TokenKind::Variable) {
        const std::size_t start = at_;
        std::string variable = variableName();
        if (const auto op = assignOperator()) {
            item.kind = ast::SelectItem::Kind::Assign;
            item.variable = std::move(variable);
            item.op = *op;
            item.expr = value();
            return item;
        }
        at_ = start;
    }
    if ((seesIdentifier() || peek().kind == TokenKind::String) && seesSymbol("=", 1)) {
        item.alias = seesIdentifier() ? identifier() : take().text;
        take();
        item.expr = value();
        return item;
    }
    item.expr = value();
    selectAlias(item);
    return item;
}

// [[AS] (name | 'text')]
void Parser::selectAlias(ast::SelectItem& item) {
    const bool as = acceptWord("AS");
    if (peek().kind == TokenKind::String) {
        item.alias = take().text;
    } else if (as || seesIdentifier()) {
        item.alias = identifier();
    }
}

// ORDER BY value [ASC | DESC] {, value [ASC | DESC]}
std::vector<ast::OrderItem> Parser::orderBy() {
    expectWord("ORDER");
    expectWord("BY");
    std::vector<ast::OrderItem> items;
    do {
        ast::OrderItem item;
        item.expr = value();
        item.descending = acceptWord("DESC");
        if (!item.descending) acceptWord("ASC");
        items.push_back(std::move(item));
    } while (acceptSymbol(","));
    return items;
}

// [OFFSET value (ROW | ROWS) [FETCH (FIRST | NEXT) value (ROW | ROWS) ONLY]]
void Parser::offsetFetch(ast::Query& query) {
    const ast::Place place = peek().place;
    if (!acceptWord("OFFSET")) return;
    const auto* select = std::get_if<ast::Select>(&query.body->node);
    if (select && select->top) {
        fail(errorMessage<10741>(), place);
    }
    query.offset = value();
    expectAnyWord({"ROW", "ROWS"});
    if (!seesWord("FETCH") || !seesAnyWord({"FIRST", "NEXT"}, 1)) return;
    if (seesAnyWord({"FROM"}, 2) || (seesIdentifier(2) && !seesSymbol("(", 3))) return;  // FETCH NEXT FROM cursor
    at_ += 2;
    query.fetch = value();
    expectAnyWord({"ROW", "ROWS"});
    expectWord("ONLY");
}

// [FOR BROWSE | FOR XML mode {, option}]
void Parser::forClause(ast::Query& query) {
    if (!seesWord("FOR")) return;
    if (acceptWords("FOR", "BROWSE")) return;
    if (seesWord("JSON", 1)) unsupported("FOR JSON");
    if (!acceptWords("FOR", "XML")) return;  // of a cursor
    query.forXml = true;
    do {
        identifierOrReserved();
        while (seesIdentifier()) identifier();
        if (acceptSymbol("(")) {
            bareValue();
            expectSymbol(")");
        }
    } while (acceptSymbol(","));
}

// WITH name [( names )] AS ( query ) {, ...}
std::vector<ast::Cte> Parser::commonTables() {
    std::vector<ast::Cte> tables;
    expectWord("WITH");
    do {
        ast::Cte table;
        table.place = peek().place;
        table.name = identifier();
        if (seesSymbol("(")) table.columns = identifierList();
        expectWord("AS");
        table.query = subquery();
        tables.push_back(std::move(table));
    } while (acceptSymbol(","));
    return tables;
}

// [OPTION ( hint {, hint} )]
std::vector<std::string> Parser::queryOptions() {
    if (!acceptWord("OPTION")) return {};
    if (!seesSymbol("(")) unexpected();
    const bool known = seesAnyWord({"CONCAT",
                                    "EXPAND",
                                    "FAST",
                                    "FORCE",
                                    "HASH",
                                    "KEEP",
                                    "KEEPFIXED",
                                    "LOOP",
                                    "MAXDOP",
                                    "MAXRECURSION",
                                    "MAX_GRANT_PERCENT",
                                    "MERGE",
                                    "MIN_GRANT_PERCENT",
                                    "OPTIMIZE",
                                    "ORDER",
                                    "PARAMETERIZATION",
                                    "QUERYTRACEON",
                                    "RECOMPILE",
                                    "ROBUST",
                                    "TABLE",
                                    "USE"},
                                   1);
    if (!known) {
        take();
        unexpected();
    }
    return optionTexts();
}

std::vector<std::string> Parser::optionTexts() {
    std::vector<std::string> texts;
    expectSymbol("(");
    std::string text;
    for (int open = 0; open > 0 || !seesSymbol(")");) {
        if (open == 0 && seesSymbol(",")) {
            if (text.empty()) unexpected();
            take();
            texts.push_back(std::exchange(text, {}));
            continue;
        }
        open += seesSymbol("(") ? 1 : seesSymbol(")") ? -1 : 0;
        const Token& token = take();
        if (!text.empty()) text += ' ';
        text += token.kind == TokenKind::Word ? token.upper : token.text;
    }
    if (text.empty()) unexpected();
    texts.push_back(std::move(text));
    expectSymbol(")");
    return texts;
}

}  // namespace sandbox
