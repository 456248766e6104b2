// Tables that have a query of their own: derived tables, views, CTEs, recursive ones too; and what a table's name
// means.
#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/bind/binder.h"
#include "sandbox/tsql/parse/parser.h"
#include "sandbox/tsql/syntax/ast.h"

namespace sandbox::binder {

class Binder::CteScope {
public:
    CteScope(Binder& binder, const std::vector<ast::Cte>& ctes) : binder_(binder), before_(binder.ctes_) {
        for (const ast::Cte& cte : ctes) {
            frames_.push_back({.parent = binder_.ctes_, .cte = &cte, .recursiveName = {}});
            binder_.ctes_ = &frames_.back();
        }
    }
    ~CteScope() { binder_.ctes_ = before_; }
    CteScope(const CteScope&) = delete;
    CteScope& operator=(const CteScope&) = delete;

private:
    Binder& binder_;
    const CteFrame* before_;
    std::deque<CteFrame> frames_;
};

Binder::CteGuard::CteGuard(std::unique_ptr<CteScope> scope) : scope_(std::move(scope)) {}
Binder::CteGuard::~CteGuard() = default;

Binder::CteGuard Binder::enterCtes(const std::vector<ast::Cte>& ctes) {
    return CteGuard(std::make_unique<CteScope>(*this, ctes));
}

namespace {

bool isCteOf(const CteFrame* frame, std::string_view name) {
    for (; frame != nullptr; frame = frame->parent) {
        if (sandbox::sameName(frame->cte->name, name)) return true;
    }
    return false;
}

}  // namespace

bool Binder::isCte(std::string_view name) const {
    return isCteOf(ctes_, name);
}

namespace {

// Sets a member for as long as this lives.
template <typename T>
class Restore {
public:
    Restore(T& place, T value) : place_(place), before_(std::move(place)) { place_ = std::move(value); }
    ~Restore() { place_ = std::move(before_); }
    Restore(const Restore&) = delete;
    Restore& operator=(const Restore&) = delete;

private:
    T& place_;
    T before_;
};

bool mentions(const ast::Query& query, const std::string& name);

bool mentions(const ast::TableRef& ref, const std::string& name) {
    if (const auto* table = std::get_if<ast::NamedTable>(&ref.node)) {
        return table->name.schema.empty() && table->name.database.empty() && sandbox::sameName(table->name.name, name);
    }
    if (const auto* join = std::get_if<ast::Join>(&ref.node)) {
        return mentions(*join->left, name) || mentions(*join->right, name);
    }
    if (const auto* derived = std::get_if<ast::DerivedTable>(&ref.node)) return mentions(*derived->query, name);
    return false;
}

bool mentions(const ast::QueryBody& body, const std::string& name) {
    if (const auto* operation = std::get_if<ast::SetOperation>(&body.node)) {
        return mentions(*operation->left, name) || mentions(*operation->right, name);
    }
    for (const ast::TableRefPtr& ref : std::get<ast::Select>(body.node).from) {
        if (mentions(*ref, name)) return true;
    }
    return false;
}

bool mentions(const ast::Query& query, const std::string& name) {
    return mentions(*query.body, name);
}

}  // namespace

TableText Binder::derived(QueryNodePtr query, const std::string& alias, const std::vector<std::string>& columns,
                          int line) {
    TableText out;
    Source* source = addDerived(query->columns, columns, alias, line);
    source->missing = source->missing || query->failed;
    source->notUpdatable = query->notUpdatable;
    for (std::size_t i = 0; i < query->bases.size(); ++i) {
        source->bases.push_back(
            {query->bases[i].table, quoted(source->alias) + ".r" + std::to_string(i + 1), query->bases[i].checked});
    }
    query->withRows = true;
    out.sources.push_back(source);
    out.sql = "(" + render(*query) + ") AS " + quoted(source->alias);
    return out;
}

TableText Binder::named(const ast::NamedTable& node, int line) {
    const std::string exposed = node.alias.empty() ? node.name.name : node.alias;
    if (node.name.schema.empty() && node.name.database.empty()) {
        for (const CteFrame* frame = ctes_; frame != nullptr; frame = frame->parent) {
            if (sandbox::sameName(frame->cte->name, node.name.name)) return cte(*frame, exposed);
        }
    }
    TableText out;
    const std::optional<ResolvedObject> found = resolve(node.name);
    if (!found) {
        reportMissing(node.name);
        Source& source = sources_.emplace_back();
        source.exposed = exposed;
        source.hasAlias = !node.alias.empty();
        source.name = node.name;
        source.missing = true;
        out.sources.push_back(&source);
        return out;
    }
    if (found->object->kind == ObjectKind::View) return view(*found, node, line);
    Source* source = addTable(*found, node.name, node.alias);
    out.sources.push_back(source);
    out.sql = tableSql(*source);
    return out;
}

TableText Binder::view(const ResolvedObject& found, const ast::NamedTable& node, int line) {
    constexpr int kDeepest = 32;
    const std::string exposed = node.alias.empty() ? node.name.name : node.alias;
    TableText out;
    if (viewDepth_ >= kDeepest) {
        fail(errorMessage<217>(), line);
        Source& source = sources_.emplace_back();
        source.exposed = exposed;
        source.missing = true;
        out.sources.push_back(&source);
        return out;
    }
    const std::size_t errors = errors_.size();
    const bool complete = missing_.empty();
    {
        const ast::Batch batch = parseBatch(found.object->text);
        const auto& create = std::get<ast::CreateView>(batch.statements.front()->node);
        const Restore<std::string> database(database_, found.database);
        const Restore<std::string> schema(schema_, found.object->schema);
        const Restore<const CteFrame*> ctes(ctes_, nullptr);
        const Restore<int> depth(viewDepth_, viewDepth_ + 1);
        const Restore<std::string> name(view_, found.object->name);
        QueryNodePtr rows = query(*create.query, nullptr);
        // A "*" stands for the columns of the moment when the view was made.
        const std::vector<ColumnDef>& made = found.object->columns;
        std::vector<std::string> names = create.columns;
        if (!made.empty() && !rows->failed && rows->columns.size() < made.size()) {
            fail(errorMessage<4502>(found.object->name), create.query->place.line);
        } else if (!made.empty() && !rows->failed) {
            rows->columns.resize(made.size());
            names.clear();
            for (const ColumnDef& column : made) names.push_back(column.name);
        }
        for (Base& base : rows->bases) base.checked = base.checked || create.checkOption;
        out = derived(std::move(rows), exposed, names, line);
    }
    const Message useless = errorMessage<4413>(node.name.written()).in(view_).atLine(line);
    if (complete && !missing_.empty()) missing_.push_back(useless);
    if (errors_.size() > errors) report(useless);
    Source& source = *out.sources.front();
    source.hasAlias = !node.alias.empty();
    source.name = node.name;
    source.object = found;
    return out;
}

TableText Binder::cte(const CteFrame& frame, const std::string& alias) {
    const int line = frame.cte->place.line;
    if (frame.recursiveColumns != nullptr) {
        TableText out;
        Source* source = addDerived(*frame.recursiveColumns, frame.cte->columns, alias, line);
        out.sources.push_back(source);
        out.sql = quoted(frame.recursiveName) + " AS " + quoted(source->alias);
        frame.recursiveAlias = source->alias;
        return out;
    }
    const auto* operation = std::get_if<ast::SetOperation>(&frame.cte->query->body->node);
    const bool recursive = operation != nullptr && operation->op == ast::SetOperator::UnionAll &&
                           mentions(*operation->right, frame.cte->name);
    if (recursive) return recursiveCte(frame, alias);
    if (mentions(*frame.cte->query, frame.cte->name) && !isCteOf(frame.parent, frame.cte->name)) {
        fail(errorMessage<252>(frame.cte->name), line);
        TableText out;
        Source& source = sources_.emplace_back();
        source.exposed = alias;
        source.missing = true;
        out.sources.push_back(&source);
        return out;
    }
    const Restore<const CteFrame*> ctes(ctes_, frame.parent);
    return derived(query(*frame.cte->query, nullptr), alias, frame.cte->columns, line);
}

TableText Binder::recursiveCte(const CteFrame& frame, const std::string& alias) {
    const int line = frame.cte->place.line;
    const auto& operation = std::get<ast::SetOperation>(frame.cte->query->body->node);
    const Restore<const CteFrame*> outside(ctes_, frame.parent);
    const QueryNodePtr anchor = body(*operation.left, nullptr, nullptr, nullptr);
    CteFrame inside = frame;
    inside.recursiveName = newAlias('w');
    inside.recursiveColumns = &anchor->columns;
    ctes_ = &inside;
    const QueryNodePtr step = body(*operation.right, nullptr, nullptr, nullptr);
    std::vector<Type> types;
    std::string names;
    for (std::size_t i = 0; i < anchor->columns.size(); ++i) {
        types.push_back(anchor->columns[i].type);
        names += (i == 0 ? "c" : ", c") + std::to_string(i + 1);
    }
    if (step->columns.size() != anchor->columns.size() && !step->failed && !anchor->failed) {
        fail(errorMessage<205>(), line);
    }
    for (std::size_t i = 0; i < types.size() && i < step->columns.size(); ++i) {
        if (step->columns[i].type != types[i] && !step->columns[i].failed) {
            fail(errorMessage<240>(anchor->columns[i].name, frame.cte->name), line);
        }
    }
    TableText out;
    Source* source = addDerived(anchor->columns, frame.cte->columns, alias, line);
    source->missing = source->missing || anchor->failed || step->failed;
    out.sources.push_back(source);
    // The depth of each row is a column behind the others.
    if (!step->isSet()) {
        Bound depth;
        depth.sql = "t_depth(" + quoted(inside.recursiveAlias) + ".depth + 1, " + std::to_string(maxRecursion_) + ")";
        depth.type.id = TypeId::Int;
        step->items.push_back(std::move(depth));
    } else {
        fail(errorMessage<252>(frame.cte->name), line);
    }
    const std::string first = newAlias('w');
    out.sql = "(WITH RECURSIVE " + quoted(inside.recursiveName) + " (" + names + ", depth) AS (SELECT " +
              quoted(first) + ".*, 0 FROM (" + render(*anchor) + ") AS " + quoted(first) + " UNION ALL " +
              render(*step) + ") SELECT " + names + " FROM " + quoted(inside.recursiveName) + ") AS " +
              quoted(source->alias);
    return out;
}

}  // namespace sandbox::binder
