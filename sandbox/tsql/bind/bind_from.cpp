// The tables of a FROM clause: tables, joins and applies. What has a text of its own (derived tables, views, CTEs) is
// in bind_derived.cpp.
#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/bind/binder.h"
#include "sandbox/tsql/parse/parser.h"
#include "sandbox/tsql/syntax/ast.h"

namespace sandbox::binder {

std::optional<ResolvedObject> Binder::resolve(const ast::ObjectName& name) {
    std::optional<ResolvedObject> found;
    const std::string& database = name.database.empty() ? database_ : name.database;
    const bool bare = name.schema.empty() && !schema_.empty() && !sandbox::sameName(schema_, "dbo");
    if (context_.find && bare) found = context_.find(database, schema_, name.name);
    if (context_.find && !found) {
        found = context_.find(database, name.schema, name.name);
        if (found && bare) found->passed = schema_;
    }
    const bool usable = found && (found->object->kind == ObjectKind::Table || found->object->kind == ObjectKind::View);
    if (!usable) return std::nullopt;
    reads_.push_back(*found);
    return found;
}

std::optional<ResolvedObject> Binder::resolveVariableTable(const std::string& variable, int line) {
    std::optional<ResolvedObject> found = context_.find ? context_.find("", "", variable) : std::nullopt;
    if (!found) {
        fail(errorMessage<1087>(variable), line);
        return std::nullopt;
    }
    reads_.push_back(*found);
    return found;
}

std::string Binder::tableSql(const Source& source) {
    return quoted(source.object->attachedAs) + "." + quoted(source.object->object->storageName) + " AS " +
           quoted(source.alias);
}

Source* Binder::addTable(const ResolvedObject& found, const ast::ObjectName& name, const std::string& alias) {
    Source& source = sources_.emplace_back();
    source.exposed = alias.empty() ? name.name : alias;
    source.hasAlias = !alias.empty();
    source.name = name;
    source.alias = newAlias('a');
    source.object = found;
    source.bases = {{found, quoted(source.alias) + "._rowid_"}};
    for (const ColumnDef& column : found.object->columns) {
        SourceColumn& out = source.columns.emplace_back();
        out.base.def = &column;
        out.name = column.name;
        out.sql = quoted(source.alias) + "." + quoted(column.name);
        out.type = column.type;
        out.nullable = column.nullable;
        out.identity = column.identity;
        if (isCharacter(column.type.id)) {
            out.coercibility = Coercibility::Implicit;
            out.collation = column.collation.empty() ? context_.collation : column.collation;
        }
    }
    for (std::size_t i = 0; i < found.object->columns.size(); ++i) {
        const ColumnDef& column = found.object->columns[i];
        if (column.computedText.empty()) continue;
        parsed_.push_back(parseExpression(column.computedText));
        Scope own;
        own.sources.push_back(&source);
        const Bound computed = value(*parsed_.back(), own);
        source.columns[i].sql = converted(computed, column.type, 0).sql;
        source.columns[i].failed = computed.failed;
    }
    return &source;
}

Source* Binder::addDerived(const std::vector<OutputColumn>& columns, const std::vector<std::string>& names,
                           const std::string& exposed, int line) {
    Source& source = sources_.emplace_back();
    source.exposed = exposed;
    source.hasAlias = true;
    source.alias = newAlias('a');
    if (!names.empty() && names.size() != columns.size()) {
        const bool more = columns.size() > names.size();
        fail(more ? errorMessage<8158>(exposed) : errorMessage<8159>(exposed), line);
        source.missing = true;
        return &source;
    }
    for (std::size_t i = 0; i < columns.size(); ++i) {
        SourceColumn column;
        column.name = names.empty() ? columns[i].name : names[i];
        column.sql = quoted(source.alias) + ".c" + std::to_string(i + 1);
        column.type = columns[i].type;
        column.nullable = columns[i].nullable;
        column.collation = columns[i].collation;
        column.coercibility =
            columns[i].coercibility == Coercibility::Default ? Coercibility::Implicit : columns[i].coercibility;
        column.failed = columns[i].failed;
        column.base = columns[i].base;
        if (column.name.empty()) {
            fail(errorMessage<8155>(i + 1, exposed), line);
        } else if (source.find(column.name) != nullptr) {
            fail(errorMessage<8156>(column.name, exposed), line);
        }
        source.columns.push_back(std::move(column));
    }
    return &source;
}

TableText Binder::tables(const std::vector<ast::TableRefPtr>& from, Scope& scope) {
    TableText out;
    for (const ast::TableRefPtr& ref : from) {
        TableText next = table(*ref, scope);
        const bool alone = from.size() == 1;
        if (!out.sql.empty()) out.sql += ", ";
        out.sql += next.needsParentheses && !alone ? "(" + next.sql + ")" : next.sql;
        if (!next.condition.empty()) {
            out.condition += (out.condition.empty() ? "" : " AND ") + next.condition;
        }
        for (Source* source : next.sources) {
            for (const Source* other : out.sources) {
                const bool clash = sandbox::sameName(other->exposed, source->exposed) &&
                                   other->hasAlias == source->hasAlias && !source->exposed.empty() &&
                                   (source->hasAlias || (other->name.database == source->name.database &&
                                                         other->name.schema == source->name.schema));
                if (clash) {
                    fail(source->hasAlias ? errorMessage<1011>(source->exposed)
                                          : errorMessage<1013>(other->name.written(), source->name.written()),
                         ref->place.line);
                }
            }
            out.sources.push_back(source);
        }
    }
    scope.sources = out.sources;
    return out;
}

TableText Binder::table(const ast::TableRef& ref, Scope& scope) {
    const int line = ref.place.line;
    return std::visit(ast::Overloaded{
                          [&](const ast::NamedTable& node) { return named(node, line); },
                          [&](const ast::VariableTable& node) {
                              TableText out;
                              const std::optional<ResolvedObject> found = resolveVariableTable(node.variable, line);
                              ast::ObjectName name;
                              name.name = node.variable;
                              if (!found) {
                                  Source& source = sources_.emplace_back();
                                  source.exposed = node.alias.empty() ? node.variable : node.alias;
                                  source.missing = true;
                                  out.sources.push_back(&source);
                                  return out;
                              }
                              Source* source = addTable(*found, name, node.alias);
                              out.sources.push_back(source);
                              out.sql = tableSql(*source);
                              return out;
                          },
                          [&](const ast::DerivedTable& node) {
                              return derived(query(*node.query, scope.parent), node.alias, node.columns, line);
                          },
                          [&](const ast::ValuesTable& node) {
                              return derived(values(node.rows, scope.parent, line), node.alias, node.columns, line);
                          },
                          [&](const ast::FunctionTable& node) {
                              report(errorMessage<208, 3>(node.name.written()).atLine(line));
                              Source& source = sources_.emplace_back();
                              source.exposed = node.alias;
                              source.missing = true;
                              TableText out;
                              out.sources.push_back(&source);
                              return out;
                          },
                          [&](const ast::Join& node) {
                              const bool lateral =
                                  node.kind == ast::JoinKind::CrossApply || node.kind == ast::JoinKind::OuterApply;
                              return lateral ? apply(node, scope, line) : join(node, scope, line);
                          },
                      },
                      ref.node);
}

TableText Binder::join(const ast::Join& node, Scope& scope, int line) {
    TableText left = table(*node.left, scope);
    TableText right = table(*node.right, scope);
    TableText out;
    out.sources = left.sources;
    out.sources.insert(out.sources.end(), right.sources.begin(), right.sources.end());
    out.condition = left.condition;
    if (!right.condition.empty()) out.condition += (out.condition.empty() ? "" : " AND ") + right.condition;
    const bool keepsLeft = node.kind == ast::JoinKind::Left || node.kind == ast::JoinKind::Full;
    const bool keepsRight = node.kind == ast::JoinKind::Right || node.kind == ast::JoinKind::Full;
    out.needsParentheses = left.needsParentheses || right.needsParentheses || keepsRight;

    std::string on;
    if (node.on) {
        Scope both;
        both.parent = scope.parent;
        both.clause = Clause::From;
        both.sources = out.sources;
        on = " ON " + condition(*node.on, both);
    }
    const auto markNullable = [](const TableText& side) {
        for (Source* source : side.sources) source->nullableSide = true;
    };
    if (keepsLeft) markNullable(right);
    if (keepsRight) markNullable(left);
    if ((keepsLeft || keepsRight) && !out.condition.empty()) {
        guard(line, [&] { throw SqlError(notSupported("CROSS APPLY in an outer join", line)); });
    }
    std::string_view word = " JOIN ";
    if (node.kind == ast::JoinKind::Left) word = " LEFT JOIN ";
    if (node.kind == ast::JoinKind::Right) word = " RIGHT JOIN ";
    if (node.kind == ast::JoinKind::Full) word = " FULL JOIN ";
    const bool nested = std::holds_alternative<ast::Join>(node.right->node);
    if (left.sql.empty() || right.sql.empty()) {  // an apply without a table of its own
        out.sql = left.sql.empty() ? right.sql : left.sql;
        if (!on.empty()) out.condition += (out.condition.empty() ? "" : " AND ") + on.substr(4);
        return out;
    }
    out.sql = left.sql + std::string(word) + (nested ? "(" + right.sql + ")" : right.sql) + on;
    return out;
}

// SQLite has no join whose right side looks at its left. A plain SELECT is joined by its own tables and condition; one
// that gives at most one row becomes a subquery for each of its columns; what looks at nothing is joined as it is.
TableText Binder::apply(const ast::Join& node, Scope& scope, int line) {
    TableText left = table(*node.left, scope);
    const bool outer = node.kind == ast::JoinKind::OuterApply;
    const auto* derivedNode = std::get_if<ast::DerivedTable>(&node.right->node);
    Scope lateral;
    lateral.parent = scope.parent;
    lateral.sources = left.sources;
    if (derivedNode == nullptr) {
        lateral.sources.clear();
        TableText right = table(*node.right, lateral);
        left.sources.insert(left.sources.end(), right.sources.begin(), right.sources.end());
        left.sql += (outer ? " LEFT JOIN " : " JOIN ") + right.sql + (outer ? " ON 1" : "");
        return left;
    }
    QueryNodePtr query = this->query(*derivedNode->query, &lateral);
    TableText out = left;
    if (!lateral.used || query->failed) {
        const TableText right = derived(std::move(query), derivedNode->alias, derivedNode->columns, line);
        out.sources.insert(out.sources.end(), right.sources.begin(), right.sources.end());
        out.sql += (outer ? " LEFT JOIN " : " JOIN ") + right.sql + (outer ? " ON 1" : "");
        for (Source* source : right.sources) source->nullableSide = outer;
        return out;
    }
    Source* source = addDerived(query->columns, derivedNode->columns, derivedNode->alias, line);
    source->nullableSide = outer;
    out.sources.push_back(source);
    const std::string on = query->where.empty() ? "1" : query->where;
    if (query->inlineable && (!outer || query->from.empty())) {
        for (std::size_t i = 0; i < source->columns.size(); ++i) source->columns[i].sql = query->items[i].sql;
        if (query->from.empty()) {
            if (!query->where.empty() && outer) {
                for (SourceColumn& column : source->columns) {
                    column.sql = "(CASE WHEN " + on + " THEN " + column.sql + " END)";
                }
            } else if (!query->where.empty()) {
                out.condition += (out.condition.empty() ? "" : " AND ") + on;
            }
            return out;
        }
        // SQLite forgets the alias of a single table in parentheses.
        out.sql += query->fromTables == 1 ? " JOIN " + query->from : " JOIN (" + query->from + ")";
        out.condition += (out.condition.empty() ? "" : " AND ") + on;
        return out;
    }
    const bool plainColumns =
        query->inlineable && query->fromTables == 1 &&
        std::all_of(query->items.begin(), query->items.end(), [](const Bound& item) { return item.column != nullptr; });
    if (plainColumns) {  // outer: columns of the table are NULL where nothing is found
        for (std::size_t i = 0; i < source->columns.size(); ++i) source->columns[i].sql = query->items[i].sql;
        out.sql += " LEFT JOIN " + query->from + " ON " + on;
        return out;
    }
    if (query->atMostOneRow) {
        const std::string text = render(*query);
        for (std::size_t i = 0; i < source->columns.size(); ++i) {
            const std::string alias = newAlias('s');
            source->columns[i].sql =
                "(SELECT " + alias + ".c" + std::to_string(i + 1) + " FROM (" + text + ") AS " + alias + ")";
        }
        if (!outer && !query->alwaysOneRow) {
            out.condition += std::string(out.condition.empty() ? "" : " AND ") + "EXISTS (" + text + ")";
        }
        return out;
    }
    guard(line, [&] { throw SqlError(notSupported(outer ? "OUTER APPLY" : "CROSS APPLY", line)); });
    return out;
}

}  // namespace sandbox::binder
