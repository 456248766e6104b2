// Queries: SELECT with its clauses. ORDER BY, TOP and assignments are in bind_order.cpp, set operations and VALUES in
// bind_set.cpp.
#include <algorithm>
#include <array>
#include <tuple>

#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/convert.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/bind/binder.h"
#include "sandbox/tsql/syntax/ast.h"

namespace sandbox::binder {
namespace {

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
    constexpr std::string_view kMaxRecursion = "MAXRECURSION ";
    for (const std::string& option : query.options) {
        if (option.starts_with(kMaxRecursion)) maxRecursion_ = std::atoi(option.c_str() + kMaxRecursion.size());
    }
    if (query.forXml) guard(line, [&] { throw SqlError(notSupported("FOR XML", line)); });
    if (extras == nullptr && !query.orderBy.empty() && !limits(query) && !query.forXml) {
        fail(errorMessage<1033>(), line);
    }
    QueryNodePtr node = body(*query.body, parent, &query.orderBy, extras);
    if (query.offset) {
        node->limit.offset = rowCount(*query.offset, RowLimit::Offset);
        node->limit.count = query.fetch ? rowCount(*query.fetch, RowLimit::Fetch) : "-1";
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
    scope.makesTable = select.into.has_value();
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
        node->limit.count = rowCount(*select.top->count, select.top->percent ? RowLimit::Percent : RowLimit::Count);
        node->limit.percent = select.top->percent;
        node->limit.withTies = select.top->withTies;
        if (select.top->withTies && (orderBy == nullptr || orderBy->empty())) {
            fail(errorMessage<1062>(), line);
        }
    }
    if (assigns) {
        assignments(select, scope, *node, orderBy, extras);
    } else {
        scope.clause = Clause::Select;
        selectItems(select, scope, *node);
    }
    if (changing) findBases(select, scope, *node);
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
            fail(errorMessage<156>("INTO"), select.into->place.line);
        } else {
            into(select, scope, *node, *extras);
        }
    }
    return node;
}

void Binder::groupKeys(const ast::Select& select, Scope& scope, QueryNode& node) {
    scope.clause = Clause::GroupBy;
    std::vector<std::string> keys;
    bool known = true;  // else nothing can be said of what is not grouped
    for (const ast::ExprPtr& expr : select.groupBy) {
        const int line = expr->place.line;
        if (hasSubquery(*expr)) {
            fail(errorMessage<144>(), line);
            continue;
        }
        const Bound key = value(*expr, scope);
        known = known && !key.failed;
        if (key.failed) continue;
        if (key.constant) {
            fail(errorMessage<164>(), line);
        }
        if (!isComparable(key.type)) {
            fail(errorMessage<306>(), line);
        }
        keys.push_back(key.sql);
        if (!node.groupBy.empty()) node.groupBy += ", ";
        node.groupBy += withCollation(key);
    }
    scope.grouped = known;
    scope.groupKeys = std::move(keys);
}

void Binder::selectItems(const ast::Select& select, Scope& scope, QueryNode& node) {
    const auto add = [&](const Bound& item, const std::string& name, int line) {
        if (select.distinct && !isComparable(item.type) && !item.failed) {
            fail(errorMessage<421>(typeName(item.type)), line);
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
                if (missing_.empty()) {
                    fail(errorMessage<107>(item.table->written()), line);
                }
                node.failed = true;
                continue;
            }
            sources = {source};
        } else if (sources.empty()) {
            fail(errorMessage<263>(), line);
            node.failed = true;
        }
        for (Source* source : sources) {
            for (const SourceColumn& column : source->columns) {
                add(columnValue(column, *source, scope, line), column.name, line);
            }
        }
    }
}

void Binder::findBases(const ast::Select& select, const Scope& scope, QueryNode& node) {
    if (select.distinct || scope.grouped) {
        node.notUpdatable = NotUpdatable::Groups;
        return;
    }
    for (const Source* source : scope.sources) {
        for (std::size_t i = 0; i < node.items.size(); ++i) {
            const SourceColumn* column = node.items[i].column;
            const auto same = [&](const SourceColumn& own) { return &own == column; };
            if (!column || std::none_of(source->columns.begin(), source->columns.end(), same)) continue;
            node.columns[i].base = {node.bases.size() + column->base.base, column->base.def};
        }
        node.bases.insert(node.bases.end(), source->bases.begin(), source->bases.end());
        if (source->notUpdatable != NotUpdatable::No) node.notUpdatable = source->notUpdatable;
    }
}

void Binder::into(const ast::Select& select, const Scope& scope, const QueryNode& node, SelectExtras& extras) {
    IntoTarget& target = extras.into.emplace();
    target.database = select.into->database;
    target.schema = select.into->schema;
    target.name = select.into->name;
    target.line = select.into->place.line;
    int identities = 0;
    bool newIdentity = false;
    std::string inherited;
    for (std::size_t i = 0; i < node.items.size(); ++i) {
        const Bound& item = node.items[i];
        const OutputColumn& output = node.columns[i];
        if (output.name.empty()) {
            fail(errorMessage<1038, 5>(), select.place.line);
        }
        ColumnDef column;
        column.name = output.name;
        column.type = shownType(output.type);
        column.nullable = output.nullable;
        column.collation = isCharacter(column.type.id) ? output.collation : "";
        column.columnId = static_cast<int>(i) + 1;
        const bool keepsIdentity = output.identity && scope.sources.size() == 1 && !scope.grouped && !select.distinct;
        if (item.newIdentity) {
            column.identity = true;
            std::tie(column.identitySeed, column.identityIncrement) = *item.newIdentity;
            newIdentity = true;
        } else if (keepsIdentity && scope.sources.front()->object) {
            const ColumnDef* def = scope.sources.front()->object->object->findColumn(item.column->name);
            ++identities;
            inherited = column.name;
            column.identity = true;
            column.identitySeed = def->identitySeed;
            column.identityIncrement = def->identityIncrement;
        }
        target.columns.push_back(std::move(column));
    }
    if (newIdentity && identities > 0) {
        fail(errorMessage<8108>(target.name, inherited), select.place.line);
    }
    if (identities <= 1) return;
    for (ColumnDef& column : target.columns) column.identity = false;
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
    out.conflict = item.conflict;
    out.failed = item.failed;
    return out;
}

Type shownType(Type type) {
    if (type.id == TypeId::Null) type = Type{.id = TypeId::Int};
    const bool sized = isCharacter(type.id) || isBinary(type.id);
    if (sized && !isLob(type.id) && type.length == 0) type.length = 1;
    return type;
}

}  // namespace sandbox::binder
