// The order of rows: ORDER BY, TOP and FETCH, and assignments that depend on it.
#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/bind/binder.h"
#include "sandbox/tsql/syntax/ast.h"

namespace sandbox::binder {
namespace {

std::optional<std::int64_t> wholeNumber(const ast::Expr& expr) {
    const auto* literal = ast::as<ast::Literal>(expr);
    if (literal == nullptr || !isInteger(literal->value.type.id)) return std::nullopt;
    if (const auto* number = std::get_if<std::int64_t>(&literal->value.value)) return *number;
    return std::nullopt;
}

}  // namespace

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
                fail(errorMessage<108>(*position), line);
                continue;
            }
            item = static_cast<int>(*position) - 1;
        } else if (column != nullptr && !column->table) {
            // An alias of the select list comes before a column of the tables.
            for (std::size_t i = 0; i < node.columns.size(); ++i) {
                if (!sandbox::sameName(node.columns[i].name, column->name)) continue;
                if (item >= 0 && node.items[static_cast<std::size_t>(item)].sql != node.items[i].sql) {
                    fail(errorMessage<209>(column->name), line);
                }
                if (item < 0) item = static_cast<int>(i);
            }
        }
        if (item >= 0) {
            bound = node.items[static_cast<std::size_t>(item)];
        } else {
            bound = value(*order.expr, scope);
            if (bound.constant && !bound.failed && !bound.isVariable && ast::as<ast::Literal>(*order.expr)) {
                fail(errorMessage<408>(place), line);
            }
            for (std::size_t i = 0; node.distinct && i < node.items.size(); ++i) {
                if (node.items[i].sql == bound.sql) item = static_cast<int>(i);
            }
            if (node.distinct && item < 0 && !bound.failed && !items.empty()) {
                fail(errorMessage<145>(), line);
            }
        }
        if (bound.failed) continue;
        if (!isComparable(bound.type)) {
            fail(errorMessage<306>(), line);
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

void Binder::orderSet(const std::vector<ast::OrderItem>& orderBy, QueryNode& node) {
    if (node.failed) return;
    for (const ast::OrderItem& order : orderBy) {
        const int line = order.expr->place.line;
        std::size_t item = node.columns.size();
        const auto* column = ast::as<ast::ColumnRef>(*order.expr);
        if (const std::optional<std::int64_t> position = wholeNumber(*order.expr)) {
            if (*position < 1 || *position > static_cast<std::int64_t>(node.columns.size())) {
                fail(errorMessage<108>(*position), line);
                continue;
            }
            item = static_cast<std::size_t>(*position) - 1;
        } else if (column != nullptr) {
            for (std::size_t i = node.columns.size(); i-- > 0;) {
                if (sandbox::sameName(node.columns[i].name, column->name)) item = i;
            }
            if (item == node.columns.size()) {
                fail(errorMessage<207>(column->name), line);
            }
        }
        if (item == node.columns.size()) {
            fail(errorMessage<104>(), line);
            continue;
        }
        Bound shown;
        shown.type = node.columns[item].type;
        shown.collation = node.columns[item].collation;
        shown.sql = std::to_string(item + 1);
        node.order.push_back({.sql = withCollation(shown), .window = {}, .descending = order.descending});
    }
}

std::string Binder::rowCount(const ast::Expr& expr, RowLimit limit) {
    if (const std::optional<std::int64_t> number = wholeNumber(expr); number && limit == RowLimit::Count) {
        return std::to_string(*number);
    }
    Scope nothing;
    const Bound count = value(expr, nothing);
    const bool percent = limit == RowLimit::Percent;
    const Bound number = converted(count, Type{.id = percent ? TypeId::Float : TypeId::BigInt}, expr.place.line);
    return "t_rows(" + number.sql + ", " + std::to_string(static_cast<int>(limit)) + ")";
}

// SELECT @a = expr. Each row assigns while it is stepped over. Where rows are to come in an order, they are ordered
// within a subquery first: SQLite would work out the values before it sorts.
void Binder::assignments(const ast::Select& select, Scope& scope, QueryNode& node,
                         const std::vector<ast::OrderItem>* orderBy, SelectExtras* extras) {
    const int line = select.place.line;
    if (extras == nullptr) {
        fail(errorMessage<102, 1>("="), line);
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
            fail(errorMessage<141>(), itemLine);
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

}  // namespace sandbox::binder
