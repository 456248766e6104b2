// UPDATE and DELETE: which rows, and the new values.
#include <algorithm>

#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/bind/bind_target.h"
#include "sandbox/tsql/bind/binder.h"
#include "sandbox/tsql/syntax/ast.h"

namespace sandbox {

using binder::Binder;
using binder::Bound;
using binder::Clause;
using binder::fullName;
using binder::isStored;
using binder::quoted;
using binder::Scope;
using binder::Source;

namespace {

constexpr Type kRowId{.id = TypeId::BigInt};

// What UPDATE and DELETE share: the table to change, found by its own name or as a FROM item, and the rows.
struct ChangeSource {
    Source* target = nullptr;
    std::string from;       // SQLite FROM text
    std::string condition;  // of applies
    bool joined = false;
    std::size_t base = 0;  // of the target: which of its tables is changed

    [[nodiscard]] const ResolvedObject& table() const { return target->bases[base].table; }
    [[nodiscard]] const std::string& row() const { return target->bases[base].row; }
};

bool sameObject(const Source& source, const ResolvedObject& object) {
    return source.object && source.object->object == object.object && source.object->attachedAs == object.attachedAs;
}

// The target as a FROM item of its own, before the others.
void addTarget(Binder& binder, const ast::Target& target, const binder::TableText& others, Scope& scope,
               ChangeSource& out) {
    ast::TableRef own{.place = target.place, .node = {}};
    if (target.variable.empty()) {
        own.node = ast::NamedTable{.name = target.name, .alias = {}, .hints = {}};
    } else {
        own.node = ast::VariableTable{.variable = target.variable, .alias = {}};
    }
    const binder::TableText table = binder.table(own, scope);
    out.target = table.sources.front();
    scope.sources.push_back(out.target);
    out.joined = !out.from.empty();
    const std::string beside = others.needsParentheses ? "(" + out.from + ")" : out.from;
    out.from = table.sql + (out.from.empty() ? "" : ", " + beside);
}

ChangeSource changeSource(Binder& binder, const ast::Target& target, const std::vector<ast::TableRefPtr>& from,
                          Scope& scope) {
    ChangeSource out;
    const int line = target.place.line;
    binder.changing = true;
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
        const bool isCte = isName && name.schema.empty() && binder.isCte(name.name);
        const std::optional<ResolvedObject> found = isCte ? std::nullopt : resolveTarget(binder, target);
        if (!found && !isCte) return out;
        for (Source* source : scope.sources) {
            if (isCte || !sameObject(*source, *found)) continue;
            if (out.target != nullptr) {
                binder.fail(errorMessage<8154>(name.written()), line);
                return out;
            }
            out.target = source;
        }
        if (out.target == nullptr) addTarget(binder, target, tables, scope, out);
    }
    binder.changing = false;
    if (out.target->missing || !requireUpdatable(binder, *out.target, line)) out.target = nullptr;
    if (out.target) out.joined = out.joined || out.target->bases.size() > 1;
    return out;
}

std::string rowsOf(Binder& binder, const ChangeSource& source, const std::string& items, const ast::ExprPtr& where,
                   Scope& scope, const std::optional<ast::Top>& top) {
    const std::string& row = source.row();
    std::string condition = source.condition;
    const auto require = [&](const std::string& more) { condition += (condition.empty() ? "" : " AND ") + more; };
    if (where) {
        scope.clause = Clause::Where;
        require(binder.condition(*where, scope));
    }
    if (source.target->nullableSide || source.target->bases.size() > 1) require(row + " IS NOT NULL");
    std::string sql = "SELECT " + items + " FROM " + source.from;
    if (!condition.empty()) sql += " WHERE " + condition;
    if (!top) return sql;
    if (source.joined) sql += " GROUP BY " + row;
    const std::string count = binder.rowCount(*top->count, top->percent ? RowLimit::Percent : RowLimit::Count);
    if (!top->percent) return sql + " LIMIT " + count;
    return sql + " LIMIT (SELECT CAST(count(*) * " + count + " / 100.0 + 0.999999999 AS INTEGER) FROM (" + sql + "))";
}

// The SET list of an UPDATE.
class SetList {
public:
    SetList(Binder& binder, Scope& scope, ChangeSource& source, BoundUpdate& out)
        : binder_(binder), scope_(scope), source_(source), target_(*source.target), out_(out) {}

    void add(const ast::Assignment& assignment) {
        std::optional<VariableRef> variable;
        if (!assignment.variable.empty()) {
            variable = binder_.assignableVariable(assignment.variable, assignment.place.line);
        }
        if (assignment.column) {
            addColumn(assignment, variable);
        } else {
            addVariable(assignment, variable);
        }
    }

    // The row id and the new values. What only sets a variable is evaluated with the row id, so that the variables have
    // their values before the columns take theirs.
    [[nodiscard]] std::string items(const std::string& row) const {
        if (assignments_.empty()) return row + values_;
        std::string all;
        for (const std::string& each : assignments_) {
            if (!all.empty()) all += " + ";
            all += "(" + each + " IS NULL)";
        }
        return "(CASE WHEN " + all + " >= 0 THEN " + row + " END)" + values_;
    }

private:
    void addVariable(const ast::Assignment& assignment, const std::optional<VariableRef>& variable) {
        const int line = assignment.place.line;
        Bound value = binder_.value(*assignment.expr, scope_);
        if (!variable) return;
        if (assignment.op != ast::AssignOp::Set) {
            const ast::Expr self{.place = assignment.place, .node = ast::Variable{assignment.variable}, .text = {}};
            value = binder_.compound(assignment.op, binder_.value(self, scope_), value, line);
        }
        assignments_.push_back(binder_.setVariable(*variable, value, line));
    }

    void addColumn(const ast::Assignment& assignment, const std::optional<VariableRef>& variable) {
        const int line = assignment.place.line;
        const ast::ColumnRef& reference = *assignment.column;
        if (reference.table && !isTarget(*reference.table)) {
            binder_.fail(errorMessage<4104>(reference.written()), line);
            return;
        }
        const binder::SourceColumn* named = target_.find(reference.name);
        const ColumnDef* column = named ? changedColumn(*named, line) : nullptr;
        if (named && !column) return;
        Bound value;
        if (!ast::as<ast::DefaultValue>(*assignment.expr)) {
            value = binder_.value(*assignment.expr, scope_);
        } else if (column != nullptr) {
            value = binder_.defaultOf(*column);
        }
        if (column == nullptr) return reportMissingColumn(binder_, reference.name, line);
        check(*column, line);
        if (assignment.op != ast::AssignOp::Set) {
            const ast::Expr self{.place = assignment.place, .node = ast::ColumnRef{{}, reference.name}, .text = {}};
            Scope own;
            own.sources = {&target_};
            value = binder_.compound(assignment.op, binder_.value(self, own), value, line);
        }
        if (variable) {  // @v = column = expr: the column takes what the variable got
            Bound set;
            set.sql = binder_.setVariable(*variable, value, line);
            set.type = variable->type;
            value = set;
        }
        out_.columns.push_back(column);
        values_ += ", " + binder_.stored(value, *column, fullName(out_.target), line);
    }

    // The table's column behind one of the target's; nullptr, with the error reported, where there is none.
    const ColumnDef* changedColumn(const binder::SourceColumn& named, int line) {
        if (!named.base.def) {
            reportDerivedColumn(binder_, target_, line);
            return nullptr;
        }
        if (out_.columns.empty()) {
            source_.base = named.base.base;
            out_.target = source_.table();
        } else if (named.base.base != source_.base) {
            reportSeveralTables(binder_, target_, line);
            return nullptr;
        }
        return named.base.def;
    }

    void check(const ColumnDef& column, int line) {
        if (column.identity) {
            binder_.fail(errorMessage<8102>(column.name), line);
        }
        if (!isStored(column)) reportNotModifiable(binder_, column.name, line);
        if (column.type.rowVersion && isStored(column)) binder_.fail(errorMessage<272>(), line);
        if (std::find(out_.columns.begin(), out_.columns.end(), &column) != out_.columns.end()) {
            reportNamedTwice(binder_, column.name, line);
        }
    }

    [[nodiscard]] bool isTarget(const ast::ObjectName& name) {
        Scope own;
        own.sources = {&target_};
        return binder::findSource(own, name, binder_.database()) != nullptr ||
               sameName(name.name, out_.target.object->name);
    }

    Binder& binder_;
    Scope& scope_;
    ChangeSource& source_;
    Source& target_;
    BoundUpdate& out_;
    std::vector<std::string> assignments_;
    std::string values_;
};

// What is wrong with a change whatever its table may be, which is not there. Raises that, or that it is missing.
void raiseForMissingTarget(Binder& binder, Scope& scope, const std::vector<ast::Assignment>& assignments,
                           const ast::ExprPtr& where) {
    Source unknown;
    unknown.missing = true;
    scope.sources.push_back(&unknown);
    for (const ast::Assignment& assignment : assignments) {
        if (!assignment.variable.empty()) {
            (void)binder.assignableVariable(assignment.variable, assignment.place.line);
        }
        if (!ast::as<ast::DefaultValue>(*assignment.expr)) (void)binder.value(*assignment.expr, scope);
    }
    scope.clause = Clause::Where;
    if (where) (void)binder.condition(*where, scope);
    binder.throwIfFailed();
}

}  // namespace

BoundUpdate bindUpdate(const BindContext& context, const ast::Update& statement) {
    Binder binder(context);
    BoundUpdate out;
    const Binder::CteGuard ctes = binder.enterCtes(statement.ctes);
    Scope scope;
    ChangeSource source = changeSource(binder, statement.target, statement.from, scope);
    if (source.target == nullptr) {
        raiseForMissingTarget(binder, scope, statement.assignments, statement.where);
        return out;
    }
    out.target = source.table();
    out.mayRepeat = source.joined;
    for (const ast::Assignment& assignment : statement.assignments) {
        if (!assignment.variable.empty()) binder.assignedVariables.insert(foldName(assignment.variable));
    }
    scope.clause = Clause::Set;
    binder.perRowVariables = true;
    SetList set(binder, scope, source, out);
    for (const ast::Assignment& assignment : statement.assignments) set.add(assignment);
    binder.perRowVariables = false;
    if (source.target->bases[source.base].checked) {
        reportNotSupported(binder, "UPDATE of a view WITH CHECK OPTION", statement.target.place.line);
    }
    out.source = binder.finish(rowsOf(binder, source, set.items(source.row()), statement.where, scope, statement.top));
    out.source.columns.push_back({.name = {}, .type = kRowId, .nullable = false});
    for (const ColumnDef* column : out.columns) {
        out.source.columns.push_back({.name = column->name, .type = column->type, .nullable = column->nullable});
    }
    return out;
}

BoundDelete bindDelete(const BindContext& context, const ast::Delete& statement) {
    Binder binder(context);
    BoundDelete out;
    const Binder::CteGuard ctes = binder.enterCtes(statement.ctes);
    Scope scope;
    const ChangeSource source = changeSource(binder, statement.target, statement.from, scope);
    if (source.target == nullptr) {
        raiseForMissingTarget(binder, scope, {}, statement.where);
        return out;
    }
    if (source.target->bases.size() > 1) reportSeveralTables(binder, *source.target, statement.target.place.line);
    out.target = source.table();
    out.mayRepeat = source.joined;
    out.source = binder.finish(rowsOf(binder, source, source.row(), statement.where, scope, statement.top));
    out.source.columns.push_back({.name = {}, .type = kRowId, .nullable = false});
    return out;
}

}  // namespace sandbox
