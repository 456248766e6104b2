// The columns of an OUTPUT clause, over the rows as they were and as they are.
#include "sandbox/tsql/bind/bind_output.h"

#include <utility>

#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/bind/bind_target.h"
#include "sandbox/tsql/bind/binder.h"

namespace sandbox {

using binder::Binder;
using binder::Bound;
using binder::Scope;
using binder::Source;

namespace {

// "inserted" or "deleted": the table's stored columns as inputs behind the first `before` ones.
Source rowOf(Binder& binder, const ResolvedObject& target, const std::string& name, int before) {
    Source source;
    source.exposed = name;
    source.hasAlias = true;
    for (const ColumnDef& column : target.object->columns) {
        if (!binder::isStored(column)) continue;
        binder::SourceColumn cell;
        cell.name = column.name;
        cell.sql = binder.parameter(
            {.kind = Parameter::Kind::Input, .slot = ++before, .name = {}, .type = column.type, .literal = {}});
        cell.type = column.type;
        cell.nullable = column.nullable;
        if (isCharacter(column.type.id)) {
            cell.coercibility = binder::Coercibility::Implicit;
            cell.collation = column.collation.empty() ? binder.context().collation : column.collation;
        }
        source.columns.push_back(std::move(cell));
    }
    return source;
}

class OutputList {
public:
    OutputList(Binder& binder, std::vector<Source*> sources) : binder_(binder) {
        scope_.sources = std::move(sources);
        scope_.clause = binder::Clause::Select;
    }

    void add(const ast::SelectItem& item) {
        const int line = item.place.line;
        if (item.kind == ast::SelectItem::Kind::Expression) {
            const auto* column = ast::as<ast::ColumnRef>(*item.expr);
            add(binder_.value(*item.expr, scope_), item.alias.empty() && column ? column->name : item.alias);
            return;
        }
        Source* source = item.table ? binder::findSource(scope_, *item.table, binder_.database()) : nullptr;
        if (item.kind != ast::SelectItem::Kind::Star || source == nullptr) {
            binder_.fail(errorMessage<107>(item.table ? item.table->written() : "*"), line);
            return;
        }
        for (const binder::SourceColumn& column : source->columns) {
            const ast::Expr reference{
                .place = item.place, .node = ast::ColumnRef{*item.table, column.name}, .text = {}};
            add(binder_.value(reference, scope_), column.name);
        }
    }

    [[nodiscard]] BoundQuery finish() {
        BoundQuery query = binder_.finish("SELECT " + sql_);
        query.columns = std::move(columns_);
        return query;
    }

private:
    void add(const Bound& value, const std::string& name) {
        sql_ += (sql_.empty() ? "" : ", ") + value.sql;
        columns_.push_back({.name = name, .type = binder::shownType(value.type), .nullable = value.nullable});
    }

    Binder& binder_;
    Scope scope_;
    std::string sql_;
    std::vector<ResultColumn> columns_;
};

}  // namespace

std::shared_ptr<const BoundOutput> bindOutput(const BindContext& context, const ast::Output& output,
                                              const ResolvedObject& target, OutputTables tables) {
    Binder binder(context);
    auto out = std::make_shared<BoundOutput>();
    Source inserted = rowOf(binder, target, "inserted", 0);
    Source deleted = rowOf(binder, target, "deleted", static_cast<int>(inserted.columns.size()));
    std::vector<Source*> sources;
    if (tables.inserted) sources.push_back(&inserted);
    if (tables.deleted) sources.push_back(&deleted);
    OutputList list(binder, std::move(sources));
    for (const ast::SelectItem& item : output.items) list.add(item);
    const std::optional<ResolvedObject> into = output.into ? binder::resolveTarget(binder, *output.into) : std::nullopt;
    out->query = list.finish();
    if (!into) return out;
    std::vector<Type> types;
    for (const ResultColumn& column : out->query.columns) types.push_back(column.type);
    out->into = bindInsertRows(context, *into, output.columns, types, false);
    return out;
}

}  // namespace sandbox
