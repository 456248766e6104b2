// CREATE and DROP INDEX, and making a unique key over rows that may break it.
#include "sandbox/tsql/execute/execute_index.h"

#include <algorithm>

#include "sandbox/store/databases/table_storage.h"
#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/store/values/storage_codec.h"
#include "sandbox/tsql/execute/constraint.h"
#include "sandbox/tsql/execute/constraint_errors.h"
#include "sandbox/tsql/execute/execute_errors.h"
#include "sandbox/tsql/execute/execute_table.h"

namespace sandbox {

using definition::cannotDrop;
using definition::unsupported;

namespace {

// The first key that two rows have.
std::string duplicateIn(const ExecuteContext& context, const FoundObject& table, const IndexDef& index) {
    std::string keys;
    for (const IndexDef::Key& key : index.keys) keys += (keys.empty() ? "" : ", ") + quoteIdentifier(key.column);
    const std::string where = index.filter.empty() ? "" : " WHERE " + filterSql(index);
    Statement look = context.connection.prepare("SELECT " + keys + " FROM " + tableSql(table) + where + " GROUP BY " +
                                                keys + " HAVING count(*) > 1 ORDER BY " + keys + " LIMIT 1");
    std::vector<Value> row(table.object->columns.size());
    if (look.step()) {
        for (std::size_t i = 0; i < index.keys.size(); ++i) {
            const ColumnDef* column = table.object->findColumn(index.keys[i].column);
            row[static_cast<std::size_t>(column - table.object->columns.data())] =
                readColumn(look.get(), static_cast<int>(i), column->type);
        }
    }
    return keyText(*table.object, index, row);
}

// WHERE of CREATE INDEX: columns that are null or are not, joined by AND. Any other condition is refused.
void addFilter(const ObjectDef& table, const ast::Expr& condition, IndexDef& index) {
    if (const auto* both = ast::as<ast::Logical>(condition); both && both->isAnd) {
        for (const ast::ExprPtr& one : both->operands) addFilter(table, *one, index);
        return;
    }
    const auto* test = ast::as<ast::IsNull>(condition);
    const auto* named = test ? ast::as<ast::ColumnRef>(*test->operand) : nullptr;
    if (!named) throw unsupported("filtered index with such a condition");
    const ColumnDef* column = table.findColumn(named->name);
    if (!column) {
        throw SqlError(errorMessage<1911>(named->name));
    }
    if (!column->computedText.empty()) throw unsupported("filtered index on a computed column");
    index.filter.push_back({column->name, !test->negated});
}

}  // namespace

void buildIndex(const ExecuteContext& context, const FoundObject& table, const IndexDef& index) {
    try {
        for (const std::string& sql : createIndexSql(table.database->attachedAs(), *table.object, index)) {
            context.connection.run(sql);
        }
    } catch (const SqliteError& error) {
        if (!isDuplicate(error)) throw;
        Message found = errorMessage<1505>(shortName(table), index.name, duplicateIn(context, table, index));
        if (index.primaryKey || index.uniqueConstraint) throw definition::constraintError(std::move(found));
        throw SqlError(std::move(found));
    }
}

void removeIndex(const ExecuteContext& context, const FoundObject& table, const IndexDef& index) {
    for (const std::string& sql : dropIndexSql(table.database->attachedAs(), *table.object, index)) {
        context.connection.run(sql);
    }
}

void executeCreateIndex(const ExecuteContext& context, const ast::CreateIndex& statement) {
    const ast::ObjectName& name = statement.table;
    const auto found = context.connection.find(name.database, name.schema, name.name);
    if (!found || found->object->system) throw SqlError(errorMessage<1088, 12>(name.written()));
    if (found->object->kind != ObjectKind::Table) throw unsupported("index on a view");
    if (statement.ignoreDuplicates) throw unsupported("index with IGNORE_DUP_KEY");
    Write write(context.connection, *found->database);
    const auto table = findAgain(context, *found);
    if (!table) throw SqlError(errorMessage<1088, 12>(name.written()));
    TableBuilder builder(context, table->database, *table->object, false);
    ObjectDef& def = builder.table();
    if (statement.dropExisting) {
        const auto old = std::find_if(def.indexes.begin(), def.indexes.end(),
                                      [&](const IndexDef& index) { return sameName(index.name, statement.name); });
        if (old != def.indexes.end()) {
            removeIndex(context, *table, *old);
            def.indexes.erase(old);
        }
    }
    IndexDef index;
    index.name = statement.name;
    index.unique = statement.unique;
    index.clustered = statement.clustered;
    index.included = statement.included;
    for (const ast::IndexColumn& key : statement.columns) index.keys.push_back({key.name, key.descending});
    if (statement.where) addFilter(*table->object, *statement.where, index);
    builder.addIndex(std::move(index));
    buildIndex(context, *table, def.indexes.back());
    context.connection.put(*table->database, def);
    write.done();
}

void executeDropIndex(const ExecuteContext& context, const ast::DropIndex& statement) {
    for (const ast::DropIndex::Item& item : statement.items) {
        const auto found = context.connection.find(item.table.database, item.table.schema, item.table.name);
        const std::string shown = item.table.written() + "." + item.name;
        std::optional<Write> write;
        if (found && !found->object->system) write.emplace(context.connection, *found->database);
        const auto table = write ? findAgain(context, *found) : std::nullopt;
        ObjectDef def = table ? *table->object : ObjectDef{};
        const auto index = std::find_if(def.indexes.begin(), def.indexes.end(),
                                        [&](const IndexDef& i) { return sameName(i.name, item.name); });
        if (index == def.indexes.end()) {
            if (statement.ifExists) continue;
            throw cannotDrop("index", shown, 7);
        }
        if (index->primaryKey || index->uniqueConstraint) {
            throw SqlError(errorMessage<3723>(shown, index->primaryKey ? "PRIMARY KEY" : "UNIQUE KEY"));
        }
        removeIndex(context, *table, *index);
        def.indexes.erase(index);
        context.connection.put(*table->database, def);
        write->done();
    }
}

}  // namespace sandbox
