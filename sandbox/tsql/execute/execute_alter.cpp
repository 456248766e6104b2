// ALTER TABLE: adding columns and constraints, dropping them, switching constraints off and on. ALTER COLUMN is in
// execute_alter_column.cpp.
#include <algorithm>

#include "sandbox/store/databases/table_storage.h"
#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/store/values/storage_codec.h"
#include "sandbox/tsql/execute/constraint.h"
#include "sandbox/tsql/execute/execute_alter.h"
#include "sandbox/tsql/execute/execute_errors.h"
#include "sandbox/tsql/execute/execute_index.h"
#include "sandbox/tsql/execute/execute_table.h"

namespace sandbox {

using definition::unsupported;

namespace {

bool isEmpty(const ExecuteContext& context, const FoundObject& table) {
    return !context.connection.prepare("SELECT 1 FROM " + tableSql(table) + " LIMIT 1").step();
}

FoundObject published(const ExecuteContext& context, const FoundObject& table, const ObjectDef& def) {
    context.connection.put(*table.database, def);
    return {context.connection.catalog(*table.database)->find(def.schema, def.name), table.database};
}

// ---- ADD

RowIds allRows(const ExecuteContext& context, const FoundObject& table) {
    RowIds rows;
    Statement all = context.connection.prepare("SELECT _rowid_ FROM " + tableSql(table));
    while (all.step()) rows.push_back(sqlite3_column_int64(all.get(), 0));
    return rows;
}

Statement fillColumn(const ExecuteContext& context, const FoundObject& table, const ColumnDef& column) {
    return context.connection.prepare("UPDATE " + tableSql(table) + " SET " + quoteIdentifier(column.name) +
                                      " = ?2 WHERE _rowid_ = ?1");
}

void fillWithRowVersions(const ExecuteContext& context, const FoundObject& table, const ColumnDef& column) {
    Statement update = fillColumn(context, table, column);
    for (const std::int64_t row : allRows(context, table)) {
        sqlite3_bind_int64(update.get(), 1, row);
        bindRowVersion(context.connection, table, update.get(), 2);
        update.step();
        update.reset();
    }
}

void fillWithDefault(const ExecuteContext& context, const FoundObject& table, const ColumnDef& column) {
    const BoundQuery query = bindDefault(context.bind, column);
    Statement value = context.connection.prepare(query.sql);
    context.bindParameters(value, query, {});
    Statement update = fillColumn(context, table, column);
    for (const std::int64_t row : allRows(context, table)) {
        sqlite3_bind_int64(update.get(), 1, row);
        if (value.step()) StatementRow(value.get()).bind(update.get(), 2, 0);
        update.step();
        update.reset();
        value.reset();
    }
}

void fillWithIdentity(const ExecuteContext& context, const FoundObject& table, const ColumnDef& column) {
    const std::string seed = std::to_string(column.identitySeed);
    const std::string step = std::to_string(column.identityIncrement);
    context.connection.run("UPDATE " + tableSql(table) + " SET " + quoteIdentifier(column.name) +
                           " = n.value FROM (SELECT _rowid_ AS id, " + seed + " + " + step +
                           " * (row_number() OVER (ORDER BY _rowid_) - 1) AS value FROM " + tableSql(table) +
                           ") n WHERE n.id = " + quoteIdentifier(table.object->storageName) + "._rowid_");
    Statement count = context.connection.prepare("SELECT count(*) FROM " + tableSql(table));
    if (!count.step()) return;
    const std::int64_t rows = sqlite3_column_int64(count.get(), 0);
    if (rows == 0) return;
    context.connection.resetIdentity(*table.database, table.object->id,
                                     column.identitySeed + column.identityIncrement * (rows - 1));
}

void addColumns(const ExecuteContext& context, const FoundObject& table, const ast::AddToTable& add,
                std::span<const ColumnDef> columns) {
    const bool empty = isEmpty(context, table);
    for (const ColumnDef& column : columns) {
        if (!column.computedText.empty()) continue;
        const bool filled = !column.defaultText.empty() || column.identity || column.type.rowVersion;
        if (!empty && !column.nullable && !filled) {
            throw SqlError(errorMessage<4901>(column.name, table.object->name));
        }
        context.connection.run(addColumnSql(table.database->attachedAs(), *table.object, column));
    }
    if (empty) return;
    for (const ColumnDef& column : columns) {
        if (!column.computedText.empty()) continue;
        const auto definition =
            std::find_if(add.definition.columns.begin(), add.definition.columns.end(),
                         [&](const ast::ColumnDefinition& c) { return sameName(c.name, column.name); });
        const bool withValues = std::any_of(definition->constraints.begin(), definition->constraints.end(),
                                            [](const ast::Constraint& c) { return c.withValues; });
        if (column.identity) {
            fillWithIdentity(context, table, column);
        } else if (column.type.rowVersion) {
            fillWithRowVersions(context, table, column);
        } else if (!column.defaultText.empty() && (!column.nullable || withValues)) {
            fillWithDefault(context, table, column);
        }
    }
}

void addToTable(const ExecuteContext& context, const FoundObject& before, const ast::AddToTable& add) {
    const ObjectDef& old = *before.object;
    TableBuilder builder(context, before.database, old, false);
    builder.add(add.definition);
    builder.table().modified = currentTicks();
    const ObjectDef def = builder.table();
    const std::span<const ColumnDef> columns(def.columns.begin() + static_cast<std::ptrdiff_t>(old.columns.size()),
                                             def.columns.end());
    const FoundObject table = published(context, before, def);
    addColumns(context, table, add, columns);
    for (std::size_t i = old.indexes.size(); i < def.indexes.size(); ++i) buildIndex(context, table, def.indexes[i]);
    for (std::size_t i = old.foreignKeys.size(); i < def.foreignKeys.size(); ++i) {
        const std::string sql = createForeignKeyIndexSql(table.database->attachedAs(), def, def.foreignKeys[i]);
        if (!sql.empty()) context.connection.run(sql);
        if (!add.withNoCheck) checkForeignKey(context, table, def.foreignKeys[i]);
    }
    for (std::size_t i = old.checks.size(); i < def.checks.size(); ++i) {
        if (!add.withNoCheck) checkCondition(context, table, def.checks[i]);
    }
}

// ---- DROP

// What stands on a column: 5074 for each, then 4922.
void requireFree(const ExecuteContext& context, const FoundObject& table, const ColumnDef& column) {
    std::vector<Message> messages = dependents(context, table, column);
    if (messages.empty()) return;
    messages.push_back(errorMessage<4922>("ALTER TABLE DROP COLUMN", column.name));
    throw SqlError(std::move(messages), Effect::Statement);
}

void dropColumn(const ExecuteContext& context, const FoundObject& table, ObjectDef& def,
                const ast::DropFromTable::Item& item) {
    const ColumnDef* column = def.findColumn(item.name);
    if (column == nullptr) {
        if (item.ifExists) return;
        throw SqlError(errorMessage<4924>("ALTER TABLE DROP COLUMN", item.name, def.name));
    }
    requireFree(context, {std::make_shared<const ObjectDef>(def), table.database}, *column);
    if (def.columns.size() == 1) {
        throw SqlError(errorMessage<4923>(column->name, def.name));
    }
    if (column->computedText.empty()) {
        context.connection.run("ALTER TABLE " + tableSql(table) + " DROP COLUMN " + quoteIdentifier(column->name));
    }
    def.columns.erase(def.columns.begin() + (column - def.columns.data()));
}

template <typename List>
auto named(List& list, const std::string& name) {
    return std::find_if(list.begin(), list.end(), [&](const auto& item) { return sameName(item.name, name); });
}

SqlError cannotDropConstraint(Message reason) {
    return {{std::move(reason), errorMessage<3727>()}, Effect::Statement};
}

void requireUnreferenced(const ExecuteContext& context, const FoundObject& table, const IndexDef& index) {
    for (const auto& child : context.connection.catalog(*table.database)->childrenOf(*table.object)) {
        for (const ForeignKeyDef& key : child->foreignKeys) {
            if (key.parentId != table.object->id || key.parentColumns.size() != index.keys.size()) continue;
            const bool uses = std::all_of(index.keys.begin(), index.keys.end(), [&](const IndexDef::Key& k) {
                return std::any_of(key.parentColumns.begin(), key.parentColumns.end(),
                                   [&](const std::string& column) { return sameName(column, k.column); });
            });
            if (uses) {
                throw cannotDropConstraint(errorMessage<3725>(index.name, child->name, key.name));
            }
        }
    }
}

void dropConstraint(const ExecuteContext& context, const FoundObject& table, ObjectDef& def,
                    const ast::DropFromTable::Item& item) {
    for (ColumnDef& column : def.columns) {
        if (column.defaultName.empty() || !sameName(column.defaultName, item.name)) continue;
        column.defaultName.clear();
        column.defaultText.clear();
        column.defaultId = 0;
        return;
    }
    if (const auto index = named(def.indexes, item.name);
        index != def.indexes.end() && (index->primaryKey || index->uniqueConstraint)) {
        requireUnreferenced(context, table, *index);
        removeIndex(context, table, *index);
        def.indexes.erase(index);
        return;
    }
    if (const auto key = named(def.foreignKeys, item.name); key != def.foreignKeys.end()) {
        context.connection.run(dropForeignKeyIndexSql(table.database->attachedAs(), def, *key));
        def.foreignKeys.erase(key);
        return;
    }
    if (const auto check = named(def.checks, item.name); check != def.checks.end()) {
        def.checks.erase(check);
        return;
    }
    if (!item.ifExists) throw cannotDropConstraint(errorMessage<3728>(item.name));
}

void dropFromTable(const ExecuteContext& context, const FoundObject& table, const ast::DropFromTable& drop) {
    ObjectDef def = *table.object;
    def.modified = currentTicks();
    for (const ast::DropFromTable::Item& item : drop.items) {
        if (item.isColumn) {
            dropColumn(context, table, def, item);
        } else {
            dropConstraint(context, table, def, item);
        }
    }
    context.connection.put(*table.database, def);
}

// ---- CHECK and NOCHECK CONSTRAINT

void switchConstraints(const ExecuteContext& context, const FoundObject& table, const ast::CheckConstraints& change) {
    ObjectDef def = *table.object;
    const auto wanted = [&](const std::string& name) {
        return change.all || std::any_of(change.names.begin(), change.names.end(),
                                         [&](const std::string& n) { return sameName(n, name); });
    };
    std::size_t found = 0;
    for (ForeignKeyDef& key : def.foreignKeys) {
        if (!wanted(key.name)) continue;
        ++found;
        key.disabled = !change.enable;
        if (change.enable && change.withCheck) checkForeignKey(context, table, key);
    }
    for (CheckDef& check : def.checks) {
        if (!wanted(check.name)) continue;
        ++found;
        check.disabled = !change.enable;
        if (change.enable && change.withCheck) checkCondition(context, table, check);
    }
    if (!change.all && found < change.names.size()) {
        throw SqlError(errorMessage<4917>(change.names.front()));
    }
    context.connection.put(*table.database, def);
}

}  // namespace

std::vector<Message> dependents(const ExecuteContext& context, const FoundObject& table, const ColumnDef& column) {
    std::vector<Message> messages;
    const auto add = [&](std::string_view kind, const std::string& name) {
        messages.push_back(errorMessage<5074>(kind, name, column.name));
    };
    const auto has = [&](const std::vector<std::string>& columns) {
        return std::any_of(columns.begin(), columns.end(),
                           [&](const std::string& name) { return sameName(name, column.name); });
    };
    const ObjectDef& def = *table.object;
    if (!column.defaultName.empty()) add("object", column.defaultName);
    const auto names = [&](const ast::Expr& expression) {
        bool uses = false;
        ast::forEachExpr(expression, [&](const ast::Expr& expr) {
            const auto* reference = std::get_if<ast::ColumnRef>(&expr.node);
            uses = uses || (reference != nullptr && sameName(reference->name, column.name));
        });
        return uses;
    };
    for (const ColumnDef& other : def.columns) {
        if (!other.computedText.empty() && names(*parseExpression(other.computedText))) add("column", other.name);
    }
    for (const CheckDef& check : def.checks) {
        if (names(*parseCondition(check.text))) add("object", check.name);
    }
    for (const IndexDef& index : def.indexes) {
        std::vector<std::string> columns = index.included;
        for (const IndexDef::Key& key : index.keys) columns.push_back(key.column);
        for (const IndexDef::Condition& condition : index.filter) columns.push_back(condition.column);
        if (has(columns)) add(index.primaryKey || index.uniqueConstraint ? "object" : "index", index.name);
    }
    for (const ForeignKeyDef& key : def.foreignKeys) {
        if (has(key.columns)) add("object", key.name);
    }
    for (const auto& child : context.connection.catalog(*table.database)->childrenOf(def)) {
        for (const ForeignKeyDef& key : child->foreignKeys) {
            const bool told = child->id == def.id && has(key.columns);
            if (key.parentId == def.id && has(key.parentColumns) && !told) add("object", key.name);
        }
    }
    return messages;
}

void executeAlterTable(const ExecuteContext& context, const ast::AlterTable& statement) {
    const ast::ObjectName& name = statement.table;
    const auto found = context.connection.find(name.database, name.schema, name.name);
    if (!found || found->object->system || found->object->kind != ObjectKind::Table) {
        throw SqlError(errorMessage<4902, 1>(name.written()));
    }
    Write write(context.connection, *found->database);
    const auto table = findAgain(context, *found);
    if (!table) throw SqlError(errorMessage<4902, 1>(name.written()));
    std::visit(ast::Overloaded{
                   [&](const ast::AddToTable& add) { addToTable(context, *table, add); },
                   [&](const ast::AlterColumn& alter) { alterColumn(context, *table, alter.column); },
                   [&](const ast::DropFromTable& drop) { dropFromTable(context, *table, drop); },
                   [&](const ast::CheckConstraints& change) { switchConstraints(context, *table, change); },
                   [](const ast::SwitchTrigger&) { throw unsupported("ALTER TABLE ENABLE or DISABLE TRIGGER"); },
               },
               statement.action);
    write.done();
}

}  // namespace sandbox
