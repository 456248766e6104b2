// INSERT: the rows that are to be stored, whole, with defaults.
#include <algorithm>

#include "sandbox/store/values/convert_types.h"
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
using binder::isView;
using binder::Scope;

namespace {

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
            reportMissingColumn(binder, names[i], at);
            continue;
        }
        if (!isStored(*column)) reportNotModifiable(binder, column->name, at);
        if (std::find(out.begin(), out.end(), column) != out.end()) reportNamedTwice(binder, names[i], at);
        out.push_back(column);
    }
    return out;
}

// The table behind a view and its columns that an INSERT into the view fills; empty, with the error reported, where the
// view cannot be inserted into.
struct ViewTarget {
    ResolvedObject table;
    std::vector<const ColumnDef*> listed;
};

std::optional<ViewTarget> behindView(Binder& binder, const ast::Insert& statement) {
    const int line = statement.target.place.line;
    const ast::TableRef ref{.place = statement.target.place,
                            .node = ast::NamedTable{.name = statement.target.name, .alias = {}, .hints = {}}};
    Scope scope;
    binder.changing = true;
    const binder::TableText text = binder.table(ref, scope);
    binder.changing = false;
    const binder::Source& view = *text.sources.front();
    if (view.missing || !requireUpdatable(binder, view, line)) return std::nullopt;
    std::vector<const binder::SourceColumn*> columns;
    for (std::size_t i = 0; i < statement.columns.size(); ++i) {
        const int at = i < statement.columnPlaces.size() ? statement.columnPlaces[i].line : line;
        const binder::SourceColumn* column = view.find(statement.columns[i]);
        if (!column) reportMissingColumn(binder, statement.columns[i], at);
        if (column && std::find(columns.begin(), columns.end(), column) != columns.end()) {
            reportNamedTwice(binder, column->name, at);
        }
        if (column) columns.push_back(column);
    }
    for (const binder::SourceColumn& column : view.columns) {
        const bool identity = column.base.def && column.base.def->identity;
        if (statement.columns.empty() && !identity) columns.push_back(&column);
    }
    ViewTarget out;
    for (const binder::SourceColumn* column : columns) {
        if (!column->base.def || !isStored(*column->base.def)) {
            reportDerivedColumn(binder, view, line);
            return std::nullopt;
        }
        if (column->base.base != columns.front()->base.base) {
            reportSeveralTables(binder, view, line);
            return std::nullopt;
        }
        out.listed.push_back(column->base.def);
    }
    const binder::Base& base = view.bases[columns.empty() ? 0 : columns.front()->base.base];
    if (base.checked) reportNotSupported(binder, "INSERT into a view WITH CHECK OPTION", line);
    out.table = base.table;
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
        if (it != listed.end() && !column.type.rowVersion) {
            placed.source = static_cast<int>(it - listed.begin());
        } else if (!column.identity && !column.type.rowVersion) {
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
            binder.fail(errorMessage<8101>(table.name), line);
            return;
        }
        binder.fail(errorMessage<213, 1>(), line);
        return;
    }
    const bool fewerColumns = wanted < given;
    if (isSelect) {
        binder.fail(fewerColumns ? errorMessage<121>() : errorMessage<120>(), line);
        return;
    }
    binder.fail(fewerColumns ? errorMessage<110>() : errorMessage<109>(), line);
}

// A timestamp column takes DEFAULT alone.
void checkRowVersion(Binder& binder, const std::vector<const ColumnDef*>& listed, const ast::Insert& statement) {
    const auto given =
        std::find_if(listed.begin(), listed.end(), [](const ColumnDef* column) { return column->type.rowVersion; });
    if (given == listed.end()) return;
    const auto place = static_cast<std::size_t>(given - listed.begin());
    const auto* rows = std::get_if<ast::Insert::Rows>(&statement.source);
    const bool onlyDefaults = rows != nullptr && std::all_of(rows->begin(), rows->end(), [&](const ast::ExprList& row) {
                                  return place >= row.size() || ast::as<ast::DefaultValue>(*row[place]);
                              });
    if (!onlyDefaults) binder.fail(errorMessage<273>(), statement.target.place.line);
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
    void addDefaults(std::vector<Bound>& items) {
        for (const ColumnDef* column : defaults_) items.emplace_back().sql = defaultOf(*column);
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
                binder.fail(errorMessage<10709>(), line);
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
        binder.fail(errorMessage<199>(), line);
    }
    if (extras.into) binder.fail(errorMessage<156>("INTO"), line);
    if (node->failed) return {};
    const std::size_t wanted = insert.listed().size();
    checkCount(binder, table, !statement.columns.empty(), wanted, node->columns.size(), true, line);
    if (node->columns.size() != wanted) return {};
    // A row of its own: SQLite would copy each value of a SELECT without a FROM once more into the one around it.
    if (node->inlineable && node->from.empty() && limit.empty()) {
        for (std::size_t i = 0; i < wanted; ++i) node->items[i].sql = insert.stored(i, node->items[i], line);
        insert.addDefaults(node->items);
        return binder::render(*node);
    }
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

// What is wrong with the rows whatever the table may be, which is not there.
void parseErrorsOfSource(Binder& binder, const ast::Insert& statement) {
    static const ObjectDef kUnknown;
    const int line = statement.target.place.line;
    const bool hasList = !statement.columns.empty();
    Scope scope;
    scope.clause = Clause::Values;
    if (const auto* rows = std::get_if<ast::Insert::Rows>(&statement.source)) {
        for (const ast::ExprList& row : *rows) {
            for (const ast::ExprPtr& cell : row) {
                if (!ast::as<ast::DefaultValue>(*cell)) (void)binder.value(*cell, scope);
            }
            if (hasList) checkCount(binder, kUnknown, true, statement.columns.size(), row.size(), false, line);
        }
    } else if (const auto* query = std::get_if<ast::QueryPtr>(&statement.source)) {
        binder::SelectExtras extras;
        const binder::QueryNodePtr node = binder.query(**query, nullptr, &extras);
        if (hasList && !node->failed) {
            checkCount(binder, kUnknown, true, statement.columns.size(), node->columns.size(), true, line);
        }
    }
}

}  // namespace

BoundInsert bindInsert(const BindContext& context, const ast::Insert& statement) {
    Binder binder(context);
    BoundInsert out;
    const int line = statement.target.place.line;
    const Binder::CteGuard ctes = binder.enterCtes(statement.ctes);
    if (statement.output && std::holds_alternative<std::unique_ptr<ast::Execute>>(statement.source)) {
        reportNotSupported(binder, "OUTPUT of INSERT EXEC", line);
    }
    const std::optional<ResolvedObject> target = resolveTarget(binder, statement.target);
    std::optional<ViewTarget> view;
    if (target && isView(*target)) view = behindView(binder, statement);
    if (!target || (isView(*target) && !view)) {
        if (!target) parseErrorsOfSource(binder, statement);
        binder.throwIfFailed();
        return out;
    }
    out.target = view ? view->table : *target;
    const ObjectDef& table = *out.target.object;
    const bool defaultsOnly = std::holds_alternative<ast::Insert::DefaultValues>(statement.source);
    std::vector<const ColumnDef*> listed;
    if (view && !defaultsOnly) {
        listed = std::move(view->listed);
    } else if (!defaultsOnly) {
        listed = listedColumns(binder, table, statement.columns, statement.columnPlaces, line);
    }
    const bool listFailed = !statement.columns.empty() && listed.size() != statement.columns.size();
    checkRowVersion(binder, listed, statement);
    InsertBinder insert(binder, out, std::move(listed));
    std::string limit;
    if (statement.top) limit = " LIMIT " + binder.rowCount(*statement.top->count, RowLimit::Count);
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
        for (const ColumnDef* column : insert.listed()) out.filled.push_back(column->name);
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
        value.sql = binder.parameter({.kind = Parameter::Kind::Input,
                                      .slot = static_cast<int>(i) + 1,
                                      .name = {},
                                      .type = types[i],
                                      .literal = {}});
        if (i > 0) list += ", ";
        list += insert.stored(i, value, context.line);
    }
    list += insert.defaults(list.empty());
    insert.finish("SELECT " + insert.listOrNull(list));
    return out;
}

}  // namespace sandbox
