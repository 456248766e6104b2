// Bound queries as SQLite text.
#include "sandbox/store/functions/sql_functions.h"
#include "sandbox/store/values/collation.h"
#include "sandbox/tsql/bind/binder.h"

namespace sandbox::binder {
namespace {

std::string orderText(const std::vector<OrderTerm>& order, bool inWindow) {
    std::string out;
    for (const OrderTerm& term : order) {
        if (!out.empty()) out += ", ";
        out += inWindow ? term.window : term.sql;
        if (term.descending) out += " DESC";
    }
    return out;
}

std::string columnNames(const QueryNode& node) {
    std::string out;
    for (std::size_t i = 1; i <= node.items.size(); ++i) {
        if (i > 1) out += ", ";
        out += "c" + std::to_string(i);
    }
    for (std::size_t i = 1; node.withRows && i <= node.bases.size(); ++i) out += ", r" + std::to_string(i);
    return out;
}

std::string itemList(const QueryNode& node, std::span<const Type> wanted, bool collated) {
    std::string out;
    for (std::size_t i = 0; i < node.items.size(); ++i) {
        const Bound& item = node.items[i];
        const bool typed = item.type.id != TypeId::Null && i < wanted.size() && wanted[i].id != TypeId::Null;
        if (i > 0) out += ", ";
        out += typed ? castSql(item.sql, item.type, wanted[i]) : item.sql;
        const TypeId shown = typed ? wanted[i].id : item.type.id;
        if (collated && isCharacter(shown)) out += " COLLATE " + sqliteCollation(item.collation);
        out += " AS c" + std::to_string(i + 1);
    }
    for (std::size_t i = 0; node.withRows && i < node.bases.size(); ++i) {
        out += ", " + node.bases[i].row + " AS r" + std::to_string(i + 1);
    }
    return out;
}

std::string clauses(const QueryNode& node) {
    std::string out;
    if (!node.from.empty()) out += " FROM " + node.from;
    if (!node.where.empty()) out += " WHERE " + node.where;
    if (!node.groupBy.empty()) out += " GROUP BY " + node.groupBy;
    if (!node.having.empty()) out += " HAVING " + node.having;
    return out;
}

std::string limitText(const Limit& limit) {
    if (limit.count.empty()) return {};
    return " LIMIT " + limit.count + (limit.offset.empty() ? "" : " OFFSET " + limit.offset);
}

// TOP n PERCENT and TOP n WITH TIES: rows are numbered by a window, and the outer query keeps the first ones.
std::string renderNumbered(const QueryNode& node, std::span<const Type> wanted) {
    const std::string order = orderText(node.order, true);
    const std::string window = "OVER (" + (order.empty() ? "" : "ORDER BY " + order) + ")";
    std::string numbers = (node.limit.withTies ? "rank() " : "row_number() ") + window + " AS n";
    numbers += ", row_number() " + window + " AS place, count(*) OVER () AS total";
    std::string inner;
    if (node.distinct) {
        inner = "SELECT *, " + numbers + " FROM (SELECT DISTINCT " + itemList(node, wanted, true) + clauses(node) + ")";
    } else {
        inner = "SELECT " + itemList(node, wanted, false) + ", " + numbers + clauses(node);
    }
    const std::string kept =
        node.limit.percent ? "n < total * " + node.limit.count + " / 100.0 + 1" : "n <= " + node.limit.count;
    return "SELECT " + columnNames(node) + " FROM (" + inner + ") WHERE " + kept + " ORDER BY place";
}

std::string renderSelect(const QueryNode& node, std::span<const Type> wanted, bool collated) {
    if (node.limit.percent || node.limit.withTies) return renderNumbered(node, wanted);
    std::string out = node.distinct ? "SELECT DISTINCT " : "SELECT ";
    out += itemList(node, wanted, collated || node.distinct) + clauses(node);
    if (!node.order.empty()) out += " ORDER BY " + orderText(node.order, false);
    return out + limitText(node.limit);
}

bool standsAlone(const QueryNode& node) {
    return node.order.empty() && node.limit.count.empty();
}

std::string renderNode(const QueryNode& node, std::span<const Type> wanted, bool collated);

std::string operand(const QueryNode& node, std::span<const Type> wanted, bool collated, bool onTheRight) {
    std::string text = renderNode(node, wanted, collated);
    // SQLite loses the tables of a grouped operand when the whole is ordered.
    const bool grouped = !node.groupBy.empty() || !node.having.empty();
    const bool bare = standsAlone(node) && !grouped && !(onTheRight && node.isSet());
    return bare ? text : "SELECT * FROM (" + text + ")";
}

std::string renderNode(const QueryNode& node, std::span<const Type> wanted, bool collated) {
    if (!node.isSet()) return renderSelect(node, wanted, collated);
    std::vector<Type> types;
    for (std::size_t i = 0; i < node.columns.size(); ++i) {
        types.push_back(i < wanted.size() ? wanted[i] : node.columns[i].type);
    }
    collated = collated || node.op != ast::SetOperator::UnionAll;
    std::string_view word = " UNION ";
    if (node.op == ast::SetOperator::UnionAll) word = " UNION ALL ";
    if (node.op == ast::SetOperator::Except) word = " EXCEPT ";
    if (node.op == ast::SetOperator::Intersect) word = " INTERSECT ";
    std::string out = operand(*node.left, types, collated, false);
    out += word;
    out += operand(*node.right, types, collated, true);
    if (!node.order.empty()) out += " ORDER BY " + orderText(node.order, false);
    return out + limitText(node.limit);
}

}  // namespace

std::string render(const QueryNode& node, std::span<const Type> wanted) {
    return renderNode(node, wanted, false);
}

}  // namespace sandbox::binder
