// INSERT, UPDATE and DELETE: the rows and values that are to be written.
#include <algorithm>
#include <set>

#include "sandbox/store/collation.h"
#include "sandbox/store/sql_functions.h"
#include "sandbox/tsql/ast.h"
#include "sandbox/tsql/binder.h"

namespace sandbox {

using binder::Binder;
using binder::Bound;
using binder::Clause;
using binder::quoted;
using binder::Scope;
using binder::Source;

namespace {

constexpr Type kRowId{.id = TypeId::BigInt};

// "Db.dbo.t", as the error about text that does not fit names a table.
std::string fullName(const ResolvedObject& table) {
    return table.database + "." + table.object->schema + "." + table.object->name;
}

bool isView(const ResolvedObject& found) {
    return found.object->kind == ObjectKind::View;
}

bool isStored(const ColumnDef& column) {
    return column.computedText.empty();
}

std::optional<ResolvedObject> resolveTarget(Binder& binder, const ast::Target& target) {
    if (!target.variable.empty()) return binder.resolveVariableTable(target.variable, target.place.line);
    std::optional<ResolvedObject> found = binder.resolve(target.name);
    if (!found) binder.reportMissing(target.name);
    return found;
}

void refuse(Binder& binder, std::string_view what, int line) {
    binder.report(binder::notSupported(what, line));
}

void missingColumn(Binder& binder, const std::string& name, int line) {
    binder.fail(207, 16, 1, line, "Invalid column name '" + name + "'.");
}

void twice(Binder& binder, const std::string& name, int line) {
    binder.fail(264, 16, 1, line,
                "The column name '" + name +
                    "' is specified more than once in the SET clause or column list of an INSERT. A column cannot be "
                    "assigned more than one value in the same clause. Modify the clause to make sure that a column is "
                    "updated only once. If this statement updates or inserts columns into a view, column aliasing can "
                    "conceal the duplication in your code.");
}

void notModifiable(Binder& binder, const std::string& name, int line) {
    binder.fail(271, 16, 1, line,
                "The column \"" + name +
                    "\" cannot be modified because it is either a computed column or is the result of a UNION "
                    "operator.");
}

// The columns that an INSERT fills, in its order.
std::vector<const ColumnDef*> listedColumns(Binder& binder, const ObjectDef& table,
                                            const std::vector<std::string>& names,
                                            const std::vector<ast::Place>& places, int line) {
    std::vector<const ColumnDef*> out;
    if (names.empty()) {
        for (const ColumnDef& column : table.columns) {
            if (isStored(column) && !column.identity) out.push_back(&column);
        }
        return out;
    }
    for (std::size_t i = 0; i < names.size(); ++i) {
        const int at = i < places.size() ? places[i].line : line;
        const ColumnDef* column = table.findColumn(names[i]);
        if (column == nullptr) {
            missingColumn(binder, names[i], at);
            continue;
        }
        if (!isStored(*column)) notModifiable(binder, column->name, at);
        if (std::find(out.begin(), out.end(), column) != out.end()) twice(binder, names[i], at);
        out.push_back(column);
    }
    return out;
}

// Columns of the table with their places in a source that gives the listed columns first, then the defaults of the
// others; defaults gets those.
std::vector<BoundInsert::Column> layOut(const ObjectDef& table, const std::vector<const ColumnDef*>& listed,
                                        std::vector<const ColumnDef*>& defaults) {
    std::vector<BoundInsert::Column> out;
    for (const ColumnDef& column : table.columns) {
        if (!isStored(column)) continue;
        const auto it = std::find(listed.begin(), listed.end(), &column);
        BoundInsert::Column placed{.column = &column};
        if (it != listed.end()) {
            placed.source = static_cast<int>(it - listed.begin());
        } else if (!column.identity) {
            placed.source = static_cast<int>(listed.size() + defaults.size());
            defaults.push_back(&column);
        }
        out.push_back(placed);
    }
    return out;
}

void checkCount(Binder& binder, const ObjectDef& table, bool hasList, std::size_t wanted, std::size_t given,
                bool isSelect, int line) {
    if (wanted == given) return;
    if (!hasList) {
        const auto stored = std::count_if(table.columns.begin(), table.columns.end(), isStored);
        if (given == static_cast<std::size_t>(stored) && given > wanted) {
            binder.fail(8101, 16, 1, line,
                        "An explicit value for the identity column in table '" + table.name +
                            "' can only be specified when a column list is used and IDENTITY_INSERT is ON.");
            return;
        }
        binder.fail(213, 16, 1, line, "Column name or number of supplied values does not match table definition.");
        return;
    }
    const bool fewerColumns = wanted < given;
    if (isSelect) {
        binder.fail(fewerColumns ? 121 : 120, 15, 1, line,
                    std::string("The select list for the INSERT statement contains ") +
                        (fewerColumns ? "more" : "fewer") +
                        " items than the insert list. The number of SELECT values must match the number of INSERT "
                        "columns.");
        return;
    }
    binder.fail(fewerColumns ? 110 : 109, 15, 1, line,
                std::string("There are ") + (fewerColumns ? "fewer" : "more") +
                    " columns in the INSERT statement than values specified in the VALUES clause. The number of values "
                    "in the VALUES clause must match the number of columns specified in the INSERT statement.");
}

class InsertBinder {
public:
    InsertBinder(Binder& binder, BoundInsert& out, std::vector<const ColumnDef*> listed)
        : binder_(binder), out_(out), listed_(std::move(listed)), table_(fullName(out.target)) {
        out_.columns = layOut(*out_.target.object, listed_, defaults_);
        out_.explicitIdentity =
            std::any_of(listed_.begin(), listed_.end(), [](const ColumnDef* column) { return column->identity; });
    }

    [[nodiscard]] const std::vector<const ColumnDef*>& listed() const { return listed_; }
    [[nodiscard]] bool empty() const { return listed_.empty() && defaults_.empty(); }

    [[nodiscard]] std::string stored(std::size_t column, const Bound& value, int line) {
        return binder_.stored(value, *listed_[column], table_, line);
    }
    // ", default, default": of the columns that are not listed
    [[nodiscard]] std::string defaults(bool first) {
        std::string out;
        for (const ColumnDef* column : defaults_) {
            if (!first) out += ", ";
            first = false;
            out += defaultOf(*column);
        }
        return out;
    }
    [[nodiscard]] std::string defaultOf(const ColumnDef& column) {
        return binder_.stored(binder_.defaultOf(column), column, table_, 0);
    }
    // A list of nothing is no SQL: a table of identities only.
    [[nodiscard]] std::string listOrNull(std::string list) const { return list.empty() ? "NULL" : list; }

    void finish(const std::string& sql) {
        out_.source = binder_.finish(sql);
        for (const ColumnDef* column : listed_) addColumn(*column);
        for (const ColumnDef* column : defaults_) addColumn(*column);
    }

private:
    void addColumn(const ColumnDef& column) {
        out_.source.columns.push_back({.name = column.name, .type = column.type, .nullable = column.nullable});
    }

    Binder& binder_;
    BoundInsert& out_;
    std::vector<const ColumnDef*> listed_;
    std::vector<const ColumnDef*> defaults_;
    std::string table_;
};

std::string rowsText(Binder& binder, InsertBinder& insert, const ObjectDef& table, const ast::Insert& statement,
                     const ast::Insert::Rows& rows) {
    Scope scope;
    scope.clause = Clause::Values;
    const int line = statement.target.place.line;
    const std::vector<const ColumnDef*>& listed = insert.listed();
    std::vector<std::vector<Bound>> cells;  // a default is a cell of Null type with its SQL stored already
    std::vector<Type> types(listed.size());
    std::vector<std::vector<bool>> isDefault;
    for (const ast::ExprList& row : rows) {
        if (row.size() != listed.size() || row.size() != rows.front().size()) {
            if (row.size() != rows.front().size()) {
                binder.fail(10709, 16, 1, line,
                            "The number of columns for each row in a table value constructor must be the same.");
            } else {
                checkCount(binder, table, !statement.columns.empty(), listed.size(), row.size(), false, line);
            }
            return {};
        }
        std::vector<Bound>& bound = cells.emplace_back();
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (ast::as<ast::DefaultValue>(*row[i])) {
                Bound cell;
                cell.sql = insert.defaultOf(*listed[i]);
                bound.push_back(std::move(cell));
                continue;
            }
            bound.push_back(binder.value(*row[i], scope));
            const Type& type = bound.back().type;
            if (type.id == TypeId::Null || bound.back().failed || rows.size() == 1) continue;
            binder.guard(row[i]->place.line,
                         [&] { types[i] = types[i].id == TypeId::Null ? type : commonType(types[i], type); });
        }
    }
    std::string sql;
    for (std::size_t r = 0; r < cells.size(); ++r) {
        std::string list;
        for (std::size_t i = 0; i < listed.size(); ++i) {
            Bound cell = cells[r][i];
            const int at = rows[r][i]->place.line;
            if (types[i].id != TypeId::Null && cell.type.id != TypeId::Null)
                cell = binder.converted(cell, types[i], at);
            if (i > 0) list += ", ";
            list += insert.stored(i, cell, at);
        }
        list += insert.defaults(list.empty());
        sql += (r == 0 ? "VALUES (" : ", (") + insert.listOrNull(list) + ")";
    }
    return sql;
}

std::string selectText(Binder& binder, InsertBinder& insert, const ObjectDef& table, const ast::Insert& statement,
                       const ast::Query& query, const std::string& limit) {
    const int line = statement.target.place.line;
    binder::SelectExtras extras;
    const binder::QueryNodePtr node = binder.query(query, nullptr, &extras);
    if (extras.assigns) {
        binder.fail(199, 15, 1, line,
                    "An INSERT statement cannot contain a SELECT statement that assigns values to a variable.");
    }
    if (extras.into) binder.fail(156, 15, 1, line, "Incorrect syntax near the keyword 'INTO'.");
    if (node->failed) return {};
    const std::size_t wanted = insert.listed().size();
    checkCount(binder, table, !statement.columns.empty(), wanted, node->columns.size(), true, line);
    if (node->columns.size() != wanted) return {};
    std::string list;
    for (std::size_t i = 0; i < wanted; ++i) {
        Bound value;
        value.sql = "q.c" + std::to_string(i + 1);
        value.type = node->columns[i].type;
        value.failed = node->columns[i].failed;
        if (i > 0) list += ", ";
        list += insert.stored(i, value, line);
    }
    list += insert.defaults(list.empty());
    return "SELECT " + insert.listOrNull(list) + " FROM (" + binder::render(*node) + ") AS q" + limit;
}

// What UPDATE and DELETE share: the table to change, found by its own name or as a FROM item, and the rows.
struct ChangeSource {
    Source* target = nullptr;
    std::string from;       // SQLite FROM text
    std::string condition;  // of applies
    bool joined = false;
};

bool sameObject(const Source& source, const ResolvedObject& object) {
    return source.object && source.object->object == object.object && source.object->attachedAs == object.attachedAs;
}

ChangeSource changeSource(Binder& binder, const ast::Target& target, const std::vector<ast::TableRefPtr>& from,
                          Scope& scope, std::string_view verb) {
    ChangeSource out;
    const int line = target.place.line;
    const binder::TableText tables = binder.tables(from, scope);
    out.from = tables.sql;
    out.condition = tables.condition;
    out.joined = tables.sources.size() > 1;
    const bool isName = target.variable.empty();
    ast::ObjectName name = target.name;
    if (!isName) name.name = target.variable;
    out.target = binder::findSource(scope, name, binder.database());  // an alias, or a table without one
    if (out.target == nullptr || (out.target->hasAlias && !name.schema.empty())) {
        out.target = nullptr;
        if (name.schema.empty() && binder.isCte(name.name)) {
            refuse(binder, std::string(verb) + " of a common table expression", line);
            return out;
        }
        const std::optional<ResolvedObject> found = resolveTarget(binder, target);
        if (!found) return out;
        for (Source* source : scope.sources) {
            if (!sameObject(*source, *found)) continue;
            if (out.target != nullptr) {
                binder.fail(8154, 16, 1, line, "The table '" + name.written() + "' is ambiguous.");
                return out;
            }
            out.target = source;
        }
        if (out.target == nullptr && isView(*found)) {
            refuse(binder, std::string(verb) + " of a view", line);
            return out;
        }
        if (out.target == nullptr) {
            out.target = binder.addTable(*found, name, "");
            scope.sources.push_back(out.target);
            out.joined = !out.from.empty();
            const bool parenthesized = tables.needsParentheses;
            const std::string others = parenthesized ? "(" + out.from + ")" : out.from;
            out.from = Binder::tableSql(*out.target) + (out.from.empty() ? "" : ", " + others);
        }
    }
    if (out.target->missing) {
        out.target = nullptr;
        return out;
    }
    if (!out.target->object || isView(*out.target->object)) {
        refuse(binder, std::string(verb) + " of a view or derived table", line);
        out.target = nullptr;
    }
    return out;
}

std::string rowsOf(Binder& binder, const ChangeSource& source, const std::string& items, const ast::ExprPtr& where,
                   Scope& scope, const std::optional<ast::Top>& top) {
    const std::string row = quoted(source.target->alias) + "._rowid_";
    std::string condition = source.condition;
    const auto require = [&](const std::string& more) { condition += (condition.empty() ? "" : " AND ") + more; };
    if (where) {
        scope.clause = Clause::Where;
        require(binder.condition(*where, scope));
    }
    if (source.target->nullableSide) require(row + " IS NOT NULL");
    std::string sql = "SELECT " + items + " FROM " + source.from;
    if (!condition.empty()) sql += " WHERE " + condition;
    if (!top) return sql;
    if (source.joined) sql += " GROUP BY " + row;
    const std::string count = binder.rowCount(*top->count, top->percent);
    if (!top->percent) return sql + " LIMIT " + count;
    return sql + " LIMIT (SELECT CAST(count(*) * " + count + " / 100.0 + 0.999999999 AS INTEGER) FROM (" + sql + "))";
}

// SET @v = expr: evaluated with the row id, so that the variables have their values before the columns take theirs.
std::string rowIdItem(const std::string& row, const std::vector<std::string>& assignments) {
    if (assignments.empty()) return row;
    std::string all;
    for (const std::string& each : assignments) {
        if (!all.empty()) all += " + ";
        all += "(" + each + " IS NULL)";
    }
    return "(CASE WHEN " + all + " >= 0 THEN " + row + " END)";
}

}  // namespace

BoundInsert bindInsert(const BindContext& context, const ast::Insert& statement) {
    Binder binder(context);
    BoundInsert out;
    const int line = statement.target.place.line;
    const Binder::CteGuard ctes = binder.enterCtes(statement.ctes);
    if (statement.output) refuse(binder, "OUTPUT", line);
    const std::optional<ResolvedObject> target = resolveTarget(binder, statement.target);
    if (target && isView(*target)) refuse(binder, "INSERT into a view", line);
    if (!target || isView(*target)) {
        binder.throwIfFailed();
        return out;
    }
    out.target = *target;
    const ObjectDef& table = *target->object;
    const bool defaultsOnly = std::holds_alternative<ast::Insert::DefaultValues>(statement.source);
    std::vector<const ColumnDef*> listed;
    if (!defaultsOnly) listed = listedColumns(binder, table, statement.columns, statement.columnPlaces, line);
    const bool listFailed = !statement.columns.empty() && listed.size() != statement.columns.size();
    InsertBinder insert(binder, out, std::move(listed));
    std::string limit;
    if (statement.top) limit = " LIMIT " + binder.rowCount(*statement.top->count, false);
    std::string sql;
    if (defaultsOnly) {
        sql = "SELECT " + insert.listOrNull(insert.defaults(true));
    } else if (const auto* rows = std::get_if<ast::Insert::Rows>(&statement.source)) {
        if (!listFailed) sql = rowsText(binder, insert, table, statement, *rows);
        if (!limit.empty() && !sql.empty()) sql = "SELECT * FROM (" + sql + ")" + limit;
    } else if (const auto* query = std::get_if<ast::QueryPtr>(&statement.source)) {
        if (!listFailed) {
            sql = selectText(binder, insert, table, statement, **query, limit);
        } else {
            binder::SelectExtras extras;
            binder.query(**query, nullptr, &extras);  // for its own errors
        }
    } else {
        out.fromExecute = true;
    }
    insert.finish(sql);
    return out;
}

BoundInsert bindInsertRows(const BindContext& context, const ResolvedObject& target,
                           const std::vector<std::string>& columns, const std::vector<Type>& types, bool keepIdentity) {
    Binder binder(context);
    BoundInsert out;
    out.target = target;
    std::vector<const ColumnDef*> listed = listedColumns(binder, *target.object, columns, {}, context.line);
    if (columns.empty() && keepIdentity) {
        listed.clear();
        for (const ColumnDef& column : target.object->columns) {
            if (isStored(column)) listed.push_back(&column);
        }
    }
    checkCount(binder, *target.object, !columns.empty(), listed.size(), types.size(), true, context.line);
    binder.throwIfFailed();
    InsertBinder insert(binder, out, listed);
    std::string list;
    for (std::size_t i = 0; i < types.size(); ++i) {
        Bound value;
        value.type = types[i];
        value.sql = binder.parameter(
            {.kind = Parameter::Kind::Input, .slot = static_cast<int>(i) + 1, .name = {}, .type = types[i], .literal = {}});
        if (i > 0) list += ", ";
        list += insert.stored(i, value, context.line);
    }
    list += insert.defaults(list.empty());
    insert.finish("SELECT " + insert.listOrNull(list));
    return out;
}

BoundUpdate bindUpdate(const BindContext& context, const ast::Update& statement) {
    Binder binder(context);
    BoundUpdate out;
    const int line = statement.target.place.line;
    const Binder::CteGuard ctes = binder.enterCtes(statement.ctes);
    if (statement.output) refuse(binder, "OUTPUT", line);
    Scope scope;
    const ChangeSource source = changeSource(binder, statement.target, statement.from, scope, "UPDATE");
    if (source.target == nullptr) {
        binder.throwIfFailed();
        return out;
    }
    out.target = *source.target->object;
    out.mayRepeat = source.joined;
    const ObjectDef& table = *out.target.object;
    const std::string tableName = fullName(out.target);
    for (const ast::Assignment& assignment : statement.assignments) {
        if (!assignment.variable.empty()) binder.assignedVariables.insert(foldName(assignment.variable));
    }
    scope.clause = Clause::Set;
    binder.perRowVariables = true;
    std::vector<std::string> assignments;
    std::string values;
    std::vector<ResultColumn> columns = {{.name = {}, .type = kRowId, .nullable = false}};
    for (const ast::Assignment& assignment : statement.assignments) {
        const int at = assignment.place.line;
        std::optional<VariableRef> variable;
        if (!assignment.variable.empty()) variable = binder.assignableVariable(assignment.variable, at);
        if (!assignment.column) {
            Bound value = binder.value(*assignment.expr, scope);
            if (!variable) continue;
            if (assignment.op != ast::AssignOp::Set) {
                ast::Expr self{.place = assignment.place, .node = ast::Variable{assignment.variable}, .text = {}};
                value = binder.compound(assignment.op, binder.value(self, scope), value, at);
            }
            assignments.push_back(binder.setVariable(*variable, value, at));
            continue;
        }
        const ast::ColumnRef& reference = *assignment.column;
        if (reference.table) {
            Scope own;
            own.sources = {source.target};
            ast::ObjectName tableOfColumn = *reference.table;
            const bool named = binder::findSource(own, tableOfColumn, binder.database()) != nullptr ||
                               sameName(tableOfColumn.name, table.name);
            if (!named) {
                binder.fail(4104, 16, 1, at,
                            "The multi-part identifier \"" + reference.written() + "\" could not be bound.");
                continue;
            }
        }
        const ColumnDef* column = table.findColumn(reference.name);
        Bound value;
        if (ast::as<ast::DefaultValue>(*assignment.expr)) {
            if (column != nullptr) value = binder.defaultOf(*column);
        } else {
            value = binder.value(*assignment.expr, scope);
        }
        if (column == nullptr) {
            missingColumn(binder, reference.name, at);
            continue;
        }
        if (column->identity) {
            binder.fail(8102, 16, 1, at, "Cannot update identity column '" + column->name + "'.");
        }
        if (!isStored(*column)) notModifiable(binder, column->name, at);
        if (std::find(out.columns.begin(), out.columns.end(), column) != out.columns.end()) {
            twice(binder, reference.name, at);
        }
        if (assignment.op != ast::AssignOp::Set) {
            ast::Expr self{.place = assignment.place, .node = ast::ColumnRef{{}, reference.name}, .text = {}};
            Scope own;
            own.sources = {source.target};
            value = binder.compound(assignment.op, binder.value(self, own), value, at);
        }
        if (variable) {  // @v = column = expr: the column takes what the variable got
            const std::string set = binder.setVariable(*variable, value, at);
            value = Bound{};
            value.sql = set;
            value.type = variable->type;
        }
        out.columns.push_back(column);
        values += ", " + binder.stored(value, *column, tableName, at);
        columns.push_back({.name = column->name, .type = column->type, .nullable = column->nullable});
    }
    binder.perRowVariables = false;
    const std::string row = quoted(source.target->alias) + "._rowid_";
    const std::string sql =
        rowsOf(binder, source, rowIdItem(row, assignments) + values, statement.where, scope, statement.top);
    out.source = binder.finish(sql);
    out.source.columns = std::move(columns);
    return out;
}

BoundDelete bindDelete(const BindContext& context, const ast::Delete& statement) {
    Binder binder(context);
    BoundDelete out;
    const Binder::CteGuard ctes = binder.enterCtes(statement.ctes);
    if (statement.output) refuse(binder, "OUTPUT", statement.target.place.line);
    Scope scope;
    const ChangeSource source = changeSource(binder, statement.target, statement.from, scope, "DELETE");
    if (source.target == nullptr) {
        binder.throwIfFailed();
        return out;
    }
    out.target = *source.target->object;
    out.mayRepeat = source.joined;
    const std::string row = quoted(source.target->alias) + "._rowid_";
    out.source = binder.finish(rowsOf(binder, source, row, statement.where, scope, statement.top));
    out.source.columns.push_back({.name = {}, .type = kRowId, .nullable = false});
    return out;
}

}  // namespace sandbox
