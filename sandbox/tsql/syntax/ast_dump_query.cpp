// The dump of queries and of statements that change rows.
#include <string_view>

#include "sandbox/tsql/syntax/ast_dump.h"

namespace sandbox::ast {
namespace {

constexpr std::string_view kJoins[] = {"join",       "left-join",   "right-join", "full-join",
                                       "cross-join", "cross-apply", "outer-apply"};
constexpr std::string_view kSetOperators[] = {"union", "union-all", "except", "intersect"};
constexpr std::string_view kAssign[] = {"=", "+=", "-=", "*=", "/=", "%=", "&=", "|=", "^="};

std::string assignOp(AssignOp op) {
    return std::string(kAssign[static_cast<std::size_t>(op)]);
}

std::string hints(const std::vector<std::string>& list) {
    return list.empty() ? "" : " [" + dumpNames(list) + "]";
}

std::string named(const std::string& what, const std::string& alias, const std::vector<std::string>& columns = {}) {
    std::string out = what;
    if (!alias.empty()) out += " " + alias;
    if (!columns.empty()) out += "(" + dumpNames(columns) + ")";
    return out;
}

std::string rows(const std::vector<ExprList>& list) {
    std::string out = "(values";
    for (const ExprList& row : list) out += " (" + dumpList(row).substr(1) + ")";
    return out + ")";
}

std::string table(const TableRef& ref) {
    return std::visit(Overloaded{
                          [](const NamedTable& n) { return named(n.name.written(), n.alias) + hints(n.hints); },
                          [](const VariableTable& n) { return named(n.variable, n.alias) + hints(n.hints); },
                          [](const DerivedTable& n) { return named(dump(*n.query), n.alias, n.columns); },
                          [](const ValuesTable& n) { return named(rows(n.rows), n.alias, n.columns); },
                          [](const FunctionTable& n) {
                              return named("(" + n.name.written() + dumpList(n.arguments) + ")", n.alias, n.columns);
                          },
                          [](const Join& n) {
                              return "(" + std::string(kJoins[static_cast<std::size_t>(n.kind)]) + " (" +
                                     table(*n.left) + ") (" + table(*n.right) + ")" + (n.on ? " " + dump(*n.on) : "") +
                                     ")";
                          },
                      },
                      ref.node);
}

std::string from(const std::vector<TableRefPtr>& list) {
    if (list.empty()) return "";
    std::string out = " (from";
    for (const TableRefPtr& ref : list) out += " (" + table(*ref) + ")";
    return out + ")";
}

std::string clause(const char* head, const ExprPtr& expr) {
    return expr ? " (" + std::string(head) + " " + dump(*expr) + ")" : "";
}

std::string top(const std::optional<Top>& node) {
    if (!node) return "";
    return " (top " + dump(*node->count) + (node->percent ? " percent" : "") + (node->withTies ? " ties" : "") + ")";
}

std::string selectItem(const SelectItem& item) {
    switch (item.kind) {
        case SelectItem::Kind::Star: return item.table ? item.table->written() + ".*" : "*";
        case SelectItem::Kind::Assign:
            return "(" + assignOp(item.op) + " " + item.variable + " " + dump(*item.expr) + ")";
        case SelectItem::Kind::Expression: break;
    }
    return item.alias.empty() ? dump(*item.expr) : "(as " + item.alias + " " + dump(*item.expr) + ")";
}

std::string select(const Select& node) {
    std::string out = node.distinct ? "(select distinct" : "(select";
    out += top(node.top);
    for (const SelectItem& item : node.items) out += " " + selectItem(item);
    if (node.into) out += " (into " + node.into->written() + ")";
    out += from(node.from) + clause("where", node.where);
    if (!node.groupBy.empty()) out += " (group" + dumpList(node.groupBy) + ")";
    return out + clause("having", node.having) + ")";
}

std::string body(const QueryBody& node) {
    if (const auto* plain = std::get_if<Select>(&node.node)) return select(*plain);
    const auto& operation = std::get<SetOperation>(node.node);
    return "(" + std::string(kSetOperators[static_cast<std::size_t>(operation.op)]) + " " + body(*operation.left) +
           " " + body(*operation.right) + ")";
}

std::string ctes(const std::vector<Cte>& list) {
    std::string out;
    for (const Cte& cte : list) out += " (with " + named(cte.name, "", cte.columns) + " " + dump(*cte.query) + ")";
    return out;
}

std::string target(const Target& node) {
    return (node.variable.empty() ? node.name.written() : node.variable) + hints(node.hints);
}

std::string output(const std::optional<Output>& node) {
    if (!node) return "";
    std::string out = " (output";
    for (const SelectItem& item : node->items) out += " " + selectItem(item);
    if (node->into) out += " (into " + named(target(*node->into), "", node->columns) + ")";
    return out + ")";
}

std::string assignments(const std::vector<Assignment>& list) {
    std::string out = " (set";
    for (const Assignment& node : list) {
        out += " (" + assignOp(node.op);
        if (!node.variable.empty()) out += " " + node.variable;
        if (node.column) out += " " + node.column->written();
        out += " " + dump(*node.expr) + ")";
    }
    return out + ")";
}

std::string options(const std::vector<std::string>& list) {
    return list.empty() ? "" : " (option " + dumpNames(list) + ")";
}

}  // namespace

std::string dump(const Query& query) {
    std::string tail = ctes(query.ctes);
    if (!query.orderBy.empty()) tail += " (order" + dumpOrder(query.orderBy) + ")";
    tail += clause("offset", query.offset) + clause("fetch", query.fetch);
    if (query.forXml) tail += " for-xml";
    tail += options(query.options);
    return tail.empty() ? body(*query.body) : "(query " + body(*query.body) + tail + ")";
}

std::string dumpInsert(const Insert& node) {
    std::string out = "(insert" + ctes(node.ctes) + top(node.top) + " " + target(node.target);
    if (!node.columns.empty()) out += " (" + dumpNames(node.columns) + ")";
    out += output(node.output) + " ";
    out += std::visit(Overloaded{
                          [](const Insert::Rows& list) { return rows(list); },
                          [](const Insert::DefaultValues&) -> std::string { return "default-values"; },
                          [](const QueryPtr& query) { return dump(*query); },
                          [](const std::unique_ptr<Execute>& call) { return dumpExecute(*call); },
                      },
                      node.source);
    return out + ")";
}

std::string dumpUpdate(const Update& node) {
    return "(update" + ctes(node.ctes) + top(node.top) + " " + target(node.target) + assignments(node.assignments) +
           output(node.output) + from(node.from) + clause("where", node.where) + options(node.options) + ")";
}

std::string dumpDelete(const Delete& node) {
    return "(delete" + ctes(node.ctes) + top(node.top) + " " + target(node.target) + output(node.output) +
           from(node.from) + clause("where", node.where) + options(node.options) + ")";
}

std::string dumpMerge(const Merge& node) {
    std::string out = "(merge" + ctes(node.ctes) + top(node.top) + " " + named(target(node.target), node.alias) + " (" +
                      table(*node.source) + ") " + dump(*node.on);
    for (const Merge::Branch& branch : node.branches) {
        out += branch.when == Merge::When::Matched              ? " (matched"
               : branch.when == Merge::When::NotMatchedByTarget ? " (not-matched"
                                                                : " (not-matched-by-source";
        out += clause("and", branch.condition);
        if (branch.action == Merge::Action::Delete) out += " delete";
        if (branch.action == Merge::Action::Update) out += assignments(branch.assignments);
        if (branch.action == Merge::Action::Insert) {
            out += " (insert (" + dumpNames(branch.columns) + ")" + dumpList(branch.values) + ")";
        }
        out += ")";
    }
    return out + output(node.output) + options(node.options) + ")";
}

}  // namespace sandbox::ast
