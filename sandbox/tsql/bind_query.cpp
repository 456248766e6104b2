// Queries: SELECT with its clauses, set operations, ORDER BY and TOP.
#include <algorithm>
#include <array>

#include "sandbox/store/collation.h"
#include "sandbox/store/convert.h"
#include "sandbox/tsql/ast.h"
#include "sandbox/tsql/binder.h"

namespace sandbox::binder {
namespace {

constexpr std::string_view kTooComplexOrder =
    "The ORDER BY clause is invalid in views, inline functions, derived tables, subqueries, and common table "
    "expressions, unless TOP, OFFSET or FOR XML is also specified.";

std::optional<std::int64_t> wholeNumber(const ast::Expr& expr) {
    const auto* literal = ast::as<ast::Literal>(expr);
    if (literal == nullptr || !isInteger(literal->value.type.id)) return std::nullopt;
    if (const auto* number = std::get_if<std::int64_t>(&literal->value.value)) return *number;
    return std::nullopt;
}

OutputColumn outputOf(const Bound& item, std::string name) {
    OutputColumn out;
    out.name = std::move(name);
    out.type = item.type;
    out.nullable = item.nullable;
    out.identity = item.column != nullptr && item.column->identity;
    out.updatable = item.column != nullptr;
    out.coercibility = item.coercibility;
    out.collation = item.collation;
    out.failed = item.failed;
    return out;
}

bool groups(const ast::Select& select, const std::vector<ast::OrderItem>* orderBy) {
    if (!select.groupBy.empty() || select.having) return true;
    const auto aggregated = [](const ast::ExprPtr& expr) { return expr && hasAggregate(*expr); };
    for (const ast::SelectItem& item : select.items) {
        if (aggregated(item.expr)) return true;
    }
    if (orderBy != nullptr) {
        for (const ast::OrderItem& item : *orderBy) {
            if (aggregated(item.expr)) return true;
        }
    }
    return false;
}

// A query with ORDER BY may stand inside of another only with one of these.
bool limits(const ast::Query& query) {
    if (query.offset || query.fetch) return true;
    const auto* select = std::get_if<ast::Select>(&query.body->node);
    return select != nullptr && select->top.has_value();
}

}  // namespace

// SQLite weighs a correlated subquery as if it ran once, and so never makes an automatic index for it: each outer row
// would scan the whole table. A first table of one row, which SQLite takes for a long one, makes the index worth its
// while; it is made once for all outer rows.
QueryNodePtr Binder::subquery(const ast::Query& query, Scope& scope) {
    std::vector<std::pair<Scope*, bool>> before;
    for (Scope* at = &scope; at != nullptr; at = at->parent) {
        before.emplace_back(at, at->used);
        at->used = false;
    }
    QueryNodePtr node = this->query(query, &scope);
    bool correlated = false;
    for (auto& [at, used] : before) {
        correlated = correlated || at->used;
        at->used = at->used || used;
    }
    if (correlated && !node->driver.empty()) node->from = node->driver + node->from;
    return node;
}

QueryNodePtr Binder::query(const ast::Query& query, Scope* parent, SelectExtras* extras) {
    const CteGuard ctes = enterCtes(query.ctes);
    const int line = query.place.line;
    if (query.forXml) guard(line, [&] { throw SqlError(notSupported("FOR XML", line)); });
    if (extras == nullptr && !query.orderBy.empty() && !limits(query)) {
        fail(1033, 15, 1, line, std::string(kTooComplexOrder));
    }
    QueryNodePtr node = body(*query.body, parent, &query.orderBy, extras);
    if (query.offset) {
        node->limit.offset = rowCount(*query.offset, false);
        node->limit.count = query.fetch ? rowCount(*query.fetch, false) : "-1";
    }
    node->inlineable = node->inlineable && query.orderBy.empty() && node->limit.count.empty();
    return node;
}

QueryNodePtr Binder::body(const ast::QueryBody& body, Scope* parent, const std::vector<ast::OrderItem>* orderBy,
                          SelectExtras* extras) {
    if (const auto* one = std::get_if<ast::Select>(&body.node)) return select(*one, parent, orderBy, extras);
    QueryNodePtr node = setOperation(std::get<ast::SetOperation>(body.node), parent, extras);
    if (orderBy != nullptr) orderSet(*orderBy, *node);
    return node;
}

QueryNodePtr Binder::select(const ast::Select& select, Scope* parent, const std::vector<ast::OrderItem>* orderBy,
                            SelectExtras* extras) {
    auto node = std::make_unique<QueryNode>();
    const int line = select.place.line;
    Scope scope;
    scope.parent = parent;
    TableText from = tables(select.from, scope);
    node->from = from.sql;
    node->fromTables = from.sources.size();
    const bool tableFirst = !from.sources.empty() && from.sources.front()->object &&
                            from.sources.front()->object->object->kind == ObjectKind::Table;
    if (tableFirst && !from.needsParentheses) {
        const ResolvedObject& first = *from.sources.front()->object;
        node->driver = "(SELECT 1 FROM " + quoted(first.attachedAs) + "." + quoted(first.object->storageName) +
                       " LIMIT ifnull(1, 1)) AS " + newAlias('d') + " CROSS JOIN ";
    }
    node->where = from.condition;
    if (select.where) {
        scope.clause = Clause::Where;
        const std::string where = condition(*select.where, scope);
        node->where = node->where.empty() ? where : "(" + node->where + " AND " + where + ")";
    }
    const bool grouped = groups(select, orderBy);
    if (grouped) groupKeys(select, scope, *node);

    const bool assigns = std::any_of(select.items.begin(), select.items.end(), [](const ast::SelectItem& item) {
        return item.kind == ast::SelectItem::Kind::Assign;
    });
    node->distinct = select.distinct;
    if (select.top) {
        node->limit.count = rowCount(*select.top->count, select.top->percent);
        node->limit.percent = select.top->percent;
        node->limit.withTies = select.top->withTies;
        if (select.top->withTies && (orderBy == nullptr || orderBy->empty())) {
            fail(1062, 15, 1, line,
                 "The TOP N WITH TIES clause is not allowed without a corresponding ORDER BY clause.");
        }
    }
    if (assigns) {
        assignments(select, scope, *node, orderBy, extras);
    } else {
        scope.clause = Clause::Select;
        selectItems(select, scope, *node);
    }
    if (select.having) {
        scope.clause = Clause::Having;
        node->having = condition(*select.having, scope);
    }
    if (orderBy != nullptr && !assigns) {
        scope.clause = Clause::OrderBy;
        orderTerms(*orderBy, scope, *node, select.items);
    }
    const bool oneGroup = grouped && select.groupBy.empty();
    const bool noTable = select.from.empty();
    node->alwaysOneRow = (oneGroup && !select.having) || (noTable && !select.where && !grouped);
    const bool top1 = select.top && !select.top->percent && !select.top->withTies && node->limit.count == "1";
    node->atMostOneRow = oneGroup || (noTable && !grouped) || top1;
    node->inlineable = !grouped && !select.distinct && !select.top;
    for (const Source* source : scope.sources) node->failed = node->failed || source->missing;
    if (select.into) {
        if (extras == nullptr) {
            fail(156, 15, 1, select.into->place.line, "Incorrect syntax near the keyword 'INTO'.");
        } else {
            into(select, scope, *node, *extras);
        }
    }
    return node;
}

void Binder::groupKeys(const ast::Select& select, Scope& scope, QueryNode& node) {
    scope.clause = Clause::GroupBy;
    std::vector<std::string> keys;
    for (const ast::ExprPtr& expr : select.groupBy) {
        const int line = expr->place.line;
        if (hasSubquery(*expr)) {
            fail(144, 15, 1, line,
                 "Cannot use an aggregate or a subquery in an expression used for the group by list of a GROUP BY "
                 "clause.");
            continue;
        }
        const Bound key = value(*expr, scope);
        if (key.failed) continue;
        if (key.constant) {
            fail(164, 15, 1, line,
                 "Each GROUP BY expression must contain at least one column that is not an outer reference.");
        }
        if (!isComparable(key.type)) {
            fail(
                306, 16, 2, line,
                "The text, ntext, and image data types cannot be compared or sorted, except when using IS NULL or LIKE "
                "operator.");
        }
        keys.push_back(key.sql);
        if (!node.groupBy.empty()) node.groupBy += ", ";
        node.groupBy += withCollation(key);
    }
    scope.grouped = true;
    scope.groupKeys = std::move(keys);
}

void Binder::selectItems(const ast::Select& select, Scope& scope, QueryNode& node) {
    const auto add = [&](const Bound& item, const std::string& name, int line) {
        if (select.distinct && !isComparable(item.type) && !item.failed) {
            fail(421, 16, 1, line,
                 "The " + typeName(item.type) +
                     " data type cannot be selected as DISTINCT because it is not comparable.");
        }
        node.columns.push_back(outputOf(item, name));
        node.items.push_back(item);
    };
    for (const ast::SelectItem& item : select.items) {
        const int line = item.place.line;
        if (item.kind == ast::SelectItem::Kind::Expression) {
            const Bound bound = value(*item.expr, scope);
            const auto* column = ast::as<ast::ColumnRef>(*item.expr);
            add(bound, item.alias.empty() && column != nullptr ? column->name : item.alias, item.expr->place.line);
            continue;
        }
        std::vector<Source*> sources = scope.sources;
        if (item.table) {
            Scope own;
            own.sources = scope.sources;
            Source* source = findSource(own, *item.table, database_);
            if (source == nullptr) {
                if (!missing_) {
                    fail(107, 15, 1, line,
                         "The column prefix '" + item.table->written() +
                             "' does not match with a table name or alias name used in the query.");
                }
                node.failed = true;
                continue;
            }
            sources = {source};
        } else if (sources.empty()) {
            fail(263, 16, 1, line, "Must specify table to select from.");
            node.failed = true;
        }
        for (Source* source : sources) {
            for (const SourceColumn& column : source->columns) {
                add(columnValue(column, *source, scope, line), column.name, line);
            }
        }
    }
}

// SELECT @a = expr. Each row assigns while it is stepped over. Where rows are to come in an order, they are ordered
// within a subquery first: SQLite would work out the values before it sorts.
void Binder::assignments(const ast::Select& select, Scope& scope, QueryNode& node,
                         const std::vector<ast::OrderItem>* orderBy, SelectExtras* extras) {
    const int line = select.place.line;
    if (extras == nullptr) {
        fail(102, 15, 1, line, "Incorrect syntax near '='.");
        return;
    }
    extras->assigns = true;
    ColumnCollector collector;
    const bool ordered = orderBy != nullptr && !orderBy->empty() && !scope.grouped;
    if (ordered) {
        scope.clause = Clause::OrderBy;
        orderTerms(*orderBy, scope, node, {});
        collector.alias = newAlias('o');
        scope.collector = &collector;
    }
    scope.clause = Clause::Select;
    for (const ast::SelectItem& item : select.items) {
        if (item.kind == ast::SelectItem::Kind::Assign) assignedVariables.insert(foldName(item.variable));
    }
    perRowVariables = true;
    for (const ast::SelectItem& item : select.items) {
        const int itemLine = item.place.line;
        if (item.kind != ast::SelectItem::Kind::Assign) {
            fail(141, 15, 1, itemLine,
                 "A SELECT statement that assigns a value to a variable must not be combined with data-retrieval "
                 "operations.");
            break;
        }
        const std::optional<VariableRef> target = assignableVariable(item.variable, itemLine);
        Bound bound = value(*item.expr, scope);
        if (!target) continue;
        if (item.op != ast::AssignOp::Set) {
            ast::Variable self{.name = item.variable};
            bound = compound(item.op, variable(self, itemLine), bound, itemLine);
        }
        Bound set = converted(bound, target->type, itemLine);
        set.sql = "t_set_var(" + std::to_string(target->slot) + ", " + set.sql + ")";
        node.columns.push_back(outputOf(set, ""));
        node.items.push_back(set);
    }
    perRowVariables = false;
    scope.collector = nullptr;
    if (!ordered) return;
    QueryNode inner;
    inner.from = node.from;
    inner.where = node.where;
    inner.order = node.order;
    inner.limit = node.limit;
    for (const std::string& column : collector.columns) {
        Bound item;
        item.sql = column;
        inner.items.push_back(std::move(item));
    }
    if (inner.items.empty()) inner.items.emplace_back();
    if (inner.limit.count.empty()) inner.limit.count = "-1";
    if (inner.limit.offset.empty()) inner.limit.offset = "0";  // keeps SQLite from merging the two
    node.from = "(" + render(inner) + ") AS " + quoted(collector.alias);
    node.where.clear();
    node.order.clear();
    node.limit = {};
}

void Binder::orderTerms(const std::vector<ast::OrderItem>& orderBy, Scope& scope, QueryNode& node,
                        const std::vector<ast::SelectItem>& items) {
    int place = 0;
    for (const ast::OrderItem& order : orderBy) {
        ++place;
        const int line = order.expr->place.line;
        int item = -1;
        Bound bound;
        const auto* column = ast::as<ast::ColumnRef>(*order.expr);
        if (const std::optional<std::int64_t> position = wholeNumber(*order.expr)) {
            if (*position < 1 || *position > static_cast<std::int64_t>(node.items.size())) {
                if (node.failed) continue;
                fail(108, 16, 1, line,
                     "The ORDER BY position number " + std::to_string(*position) +
                         " is out of range of the number of items in the select list.");
                continue;
            }
            item = static_cast<int>(*position) - 1;
        } else if (column != nullptr && !column->table) {
            // An alias of the select list comes before a column of the tables.
            for (std::size_t i = 0; i < node.columns.size(); ++i) {
                if (!sandbox::sameName(node.columns[i].name, column->name)) continue;
                if (item >= 0 && node.items[static_cast<std::size_t>(item)].sql != node.items[i].sql) {
                    fail(209, 16, 1, line, "Ambiguous column name '" + column->name + "'.");
                }
                if (item < 0) item = static_cast<int>(i);
            }
        }
        if (item >= 0) {
            bound = node.items[static_cast<std::size_t>(item)];
        } else {
            bound = value(*order.expr, scope);
            if (bound.constant && !bound.failed && !bound.isVariable && ast::as<ast::Literal>(*order.expr)) {
                fail(408, 16, 1, line,
                     "A constant expression was encountered in the ORDER BY list, position " + std::to_string(place) +
                         ".");
            }
            for (std::size_t i = 0; node.distinct && i < node.items.size(); ++i) {
                if (node.items[i].sql == bound.sql) item = static_cast<int>(i);
            }
            if (node.distinct && item < 0 && !bound.failed && !items.empty()) {
                fail(145, 15, 1, line,
                     "ORDER BY items must appear in the select list if SELECT DISTINCT is specified.");
            }
        }
        if (bound.failed) continue;
        if (!isComparable(bound.type)) {
            fail(
                306, 16, 2, line,
                "The text, ntext, and image data types cannot be compared or sorted, except when using IS NULL or LIKE "
                "operator.");
            continue;
        }
        OrderTerm term;
        term.descending = order.descending;
        term.window = withCollation(bound);
        Bound shown = bound;
        if (item >= 0) shown.sql = std::to_string(item + 1);
        term.sql = withCollation(shown);
        if (item >= 0 && node.distinct) {
            shown.sql = "c" + shown.sql;
            term.window = withCollation(shown);
        }
        // A literal or a variable orders nothing, and a bare number would be taken for a place.
        if (bound.constant) {
            term.sql = term.window = "NULL";
        }
        node.order.push_back(std::move(term));
    }
}

QueryNodePtr Binder::setOperation(const ast::SetOperation& operation, Scope* parent, SelectExtras* extras) {
    auto node = std::make_unique<QueryNode>();
    node->op = operation.op;
    node->left = body(*operation.left, parent, nullptr, extras);
    node->right = body(*operation.right, parent, nullptr, nullptr);
    node->failed = node->left->failed || node->right->failed;
    const int line = operation.left->place.line;
    const std::vector<OutputColumn>& left = node->left->columns;
    const std::vector<OutputColumn>& right = node->right->columns;
    if (node->failed) {
        node->columns = left;
        return node;
    }
    if (left.size() != right.size()) {
        fail(
            205, 16, 1, line,
            "All queries combined using a UNION, INTERSECT or EXCEPT operator must have an equal number of expressions "
            "in their target lists.");
        node->failed = true;
        node->columns = left;
        return node;
    }
    for (std::size_t i = 0; i < left.size(); ++i) {
        OutputColumn column = left[i];
        column.identity = false;
        column.updatable = false;
        column.nullable = left[i].nullable || right[i].nullable;
        column.failed = left[i].failed || right[i].failed;
        if (!column.failed) {
            const bool bothNull = left[i].type.id == TypeId::Null && right[i].type.id == TypeId::Null;
            const bool met = guard(line, [&] {
                if (!bothNull) column.type = commonType(left[i].type, right[i].type);
            });
            if (met && node->op != ast::SetOperator::UnionAll && !isComparable(column.type)) {
                fail(5335, 16, 1, line,
                     "The data type " + typeName(column.type) +
                         " cannot be used as an operand to the UNION, INTERSECT or EXCEPT operators because it is not "
                         "comparable.");
            }
        }
        if (right[i].coercibility > column.coercibility) {
            column.coercibility = right[i].coercibility;
            column.collation = right[i].collation;
        }
        node->columns.push_back(std::move(column));
    }
    if (extras != nullptr && extras->into) {
        for (std::size_t i = 0; i < node->columns.size() && i < extras->into->columns.size(); ++i) {
            ColumnDef& column = extras->into->columns[i];
            column.type = node->columns[i].type;
            column.nullable = node->columns[i].nullable;
            column.identity = false;
        }
    }
    return node;
}

void Binder::orderSet(const std::vector<ast::OrderItem>& orderBy, QueryNode& node) {
    if (node.failed) return;
    for (const ast::OrderItem& order : orderBy) {
        const int line = order.expr->place.line;
        std::size_t item = node.columns.size();
        const auto* column = ast::as<ast::ColumnRef>(*order.expr);
        if (const std::optional<std::int64_t> position = wholeNumber(*order.expr)) {
            if (*position < 1 || *position > static_cast<std::int64_t>(node.columns.size())) {
                fail(108, 16, 1, line,
                     "The ORDER BY position number " + std::to_string(*position) +
                         " is out of range of the number of items in the select list.");
                continue;
            }
            item = static_cast<std::size_t>(*position) - 1;
        } else if (column != nullptr) {
            for (std::size_t i = node.columns.size(); i-- > 0;) {
                if (sandbox::sameName(node.columns[i].name, column->name)) item = i;
            }
            if (item == node.columns.size()) {
                fail(207, 16, 1, line, "Invalid column name '" + column->name + "'.");
            }
        }
        if (item == node.columns.size()) {
            fail(104, 16, 1, line,
                 "ORDER BY items must appear in the select list if the statement contains a UNION, INTERSECT or EXCEPT "
                 "operator.");
            continue;
        }
        Bound shown;
        shown.type = node.columns[item].type;
        shown.collation = node.columns[item].collation;
        shown.sql = std::to_string(item + 1);
        node.order.push_back({.sql = withCollation(shown), .window = {}, .descending = order.descending});
    }
}

std::string Binder::rowCount(const ast::Expr& expr, bool percent) {
    if (const std::optional<std::int64_t> number = wholeNumber(expr)) return std::to_string(*number);
    Scope nothing;
    const Bound count = value(expr, nothing);
    const Bound number = converted(count, Type{.id = percent ? TypeId::Float : TypeId::BigInt}, expr.place.line);
    return "max(ifnull(" + number.sql + ", 0), 0)";
}

void Binder::into(const ast::Select& select, const Scope& scope, const QueryNode& node, SelectExtras& extras) {
    IntoTarget& target = extras.into.emplace();
    target.database = select.into->database;
    target.schema = select.into->schema;
    target.name = select.into->name;
    target.line = select.into->place.line;
    int identities = 0;
    for (std::size_t i = 0; i < node.items.size(); ++i) {
        const Bound& item = node.items[i];
        const OutputColumn& output = node.columns[i];
        if (output.name.empty()) {
            fail(1038, 15, 5, select.place.line,
                 "An object or column name is missing or empty. For SELECT INTO statements, verify each column has a "
                 "name. For other statements, look for empty alias names. Aliases defined as \"\" or [] are not "
                 "allowed. Change the alias to a valid name.");
        }
        ColumnDef column;
        column.name = output.name;
        column.type = shownType(output.type);
        column.nullable = output.nullable;
        column.collation = isCharacter(column.type.id) ? output.collation : "";
        column.columnId = static_cast<int>(i) + 1;
        const bool keepsIdentity = output.identity && scope.sources.size() == 1 && !scope.grouped && !select.distinct;
        if (keepsIdentity && scope.sources.front()->object) {
            const ColumnDef* def = scope.sources.front()->object->object->findColumn(item.column->name);
            ++identities;
            column.identity = true;
            column.identitySeed = def->identitySeed;
            column.identityIncrement = def->identityIncrement;
        }
        target.columns.push_back(std::move(column));
    }
    if (identities <= 1) return;
    for (ColumnDef& column : target.columns) column.identity = false;
}

QueryNodePtr Binder::values(const std::vector<ast::ExprList>& rows, Scope* parent, int line) {
    Scope scope;
    scope.parent = parent;
    scope.clause = Clause::Values;
    auto node = std::make_unique<QueryNode>();
    const std::size_t width = rows.front().size();
    std::vector<std::vector<Bound>> cells(width);  // by column
    for (const ast::ExprList& row : rows) {
        if (row.size() != width) {
            fail(10709, 16, 1, line,
                 "The number of columns for each row in a table value constructor must be the same.");
            node->failed = true;
            return node;
        }
        for (std::size_t i = 0; i < width; ++i) cells[i].push_back(value(*row[i], scope));
    }
    const std::string alias = newAlias('v');
    for (std::size_t i = 0; i < width; ++i) {
        Bound column = unify(cells[i], line);
        column.sql = alias + ".column" + std::to_string(i + 1);
        column.constant = false;
        node->columns.push_back(outputOf(column, ""));
        node->items.push_back(std::move(column));
    }
    for (std::size_t r = 0; r < rows.size(); ++r) {
        node->from += r == 0 ? "(VALUES (" : ", (";
        for (std::size_t i = 0; i < width; ++i) node->from += (i == 0 ? "" : ", ") + cells[i][r].sql;
        node->from += ")";
    }
    node->from += ") AS " + alias;
    node->fromTables = 1;
    node->inlineable = true;
    return node;
}

Type shownType(Type type) {
    if (type.id == TypeId::Null) type = Type{.id = TypeId::Int};
    const bool sized = isCharacter(type.id) || isBinary(type.id);
    if (sized && !isLob(type.id) && type.length == 0) type.length = 1;
    return type;
}

}  // namespace sandbox::binder
