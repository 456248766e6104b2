// CREATE TABLE, table variables, SELECT INTO, DROP and TRUNCATE.
#include <algorithm>

#include "sandbox/store/databases/table_storage.h"
#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/execute/execute_errors.h"
#include "sandbox/tsql/execute/execute_insert.h"
#include "sandbox/tsql/execute/execute_table.h"

namespace sandbox {

using definition::cannotDrop;
using definition::nameTaken;

namespace {

ObjectDef newTable(const ObjectPlace& place, std::string_view name) {
    ObjectDef table;
    table.id = place.database->newObjectId();
    table.name = name;
    table.schema = place.schema;
    table.storageName = "t" + std::to_string(table.id);
    table.created = table.modified = currentTicks();
    return table;
}

// Inside of a Write.
void makeTable(Connection& connection, Database& database, const ObjectDef& table) {
    const std::string& schema = database.attachedAs();
    connection.run(createStorageSql(schema, table));
    for (const IndexDef& index : table.indexes) {
        for (const std::string& sql : createIndexSql(schema, table, index)) connection.run(sql);
    }
    for (const ForeignKeyDef& key : table.foreignKeys) {
        const std::string sql = createForeignKeyIndexSql(schema, table, key);
        if (!sql.empty()) connection.run(sql);
    }
    connection.put(database, table);
}

void requireFreeName(const ExecuteContext& context, const ObjectPlace& place, std::string_view name) {
    if (context.connection.catalog(*place.database)->nameTaken(place.schema, name)) throw nameTaken(name);
}

FoundObject madeAt(const ExecuteContext& context, const ObjectPlace& place, std::string_view name) {
    return {context.connection.catalog(*place.database)->find(place.schema, name), place.database};
}

void createTable(const ExecuteContext& context, const ObjectPlace& place, std::string_view name,
                 const ast::TableDefinition& definition) {
    requireFreeName(context, place, name);
    Write write(context.connection, *place.database);
    requireFreeName(context, place, name);  // another session may have been first
    TableBuilder builder(context, place.database, newTable(place, name), true);
    builder.add(definition);
    makeTable(context.connection, *place.database, builder.table());
    // A condition over columns that are not there must not be stored.
    const FoundObject made = madeAt(context, place, name);
    for (const CheckDef& check : made.object->checks) {
        (void)bindCheck(context.bind, resolved(made), check.text, true);
    }
    write.done();
}

std::string_view kindWord(ObjectKind kind) {
    switch (kind) {
        case ObjectKind::Table: return "table";
        case ObjectKind::View: return "view";
        case ObjectKind::Procedure: return "procedure";
        case ObjectKind::Function: return "function";
        case ObjectKind::Schema: return "schema";
    }
    return "object";
}

std::string upper(std::string_view word) {
    std::string text(word);
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::toupper(c); });
    return text;
}

std::optional<ObjectKind> kindOf(ast::DropObjects::Kind kind) {
    switch (kind) {
        case ast::DropObjects::Kind::Table: return ObjectKind::Table;
        case ast::DropObjects::Kind::View: return ObjectKind::View;
        case ast::DropObjects::Kind::Procedure: return ObjectKind::Procedure;
        case ast::DropObjects::Kind::Function: return ObjectKind::Function;
        case ast::DropObjects::Kind::Trigger: return std::nullopt;
    }
    return std::nullopt;
}

bool referencedByOthers(const ExecuteContext& context, const FoundObject& table) {
    const auto children = context.connection.catalog(*table.database)->childrenOf(*table.object);
    return std::any_of(children.begin(), children.end(),
                       [&](const auto& child) { return child->id != table.object->id; });
}

void dropObject(const ExecuteContext& context, const ast::ObjectName& name, std::optional<ObjectKind> kind,
                bool ifExists) {
    const std::string_view word = kind ? kindWord(*kind) : "trigger";
    std::optional<FoundObject> found;
    if (kind) found = context.connection.find(name.database, name.schema, name.name);
    if (!found || found->object->system) {
        if (ifExists) return;
        throw cannotDrop(word, name.written(), 5);
    }
    const ObjectDef& object = *found->object;
    if (object.kind != *kind) {
        throw SqlError(errorMessage<3705>(upper(word), name.written(), name.written(), kindWord(object.kind),
                                          upper(kindWord(object.kind))));
    }
    if (referencedByOthers(context, *found)) {
        throw SqlError(errorMessage<3726>(name.written()));
    }
    Write write(context.connection, *found->database);
    requireUnchanged(context, *found);
    if (object.kind == ObjectKind::Table) context.connection.run("DROP TABLE " + tableSql(*found));
    context.connection.erase(*found->database, object);
    write.done();
}

}  // namespace

void executeCreateTable(const ExecuteContext& context, const ast::CreateTable& statement) {
    createTable(context, placeOf(context, statement.table), statement.table.name, statement.definition);
}

void executeDeclareTable(const ExecuteContext& context, std::string_view name, const ast::TableDefinition& definition) {
    createTable(context, {context.connection.temporary(), "dbo"}, name, definition);
}

std::int64_t executeSelectInto(const ExecuteContext& context, const BoundQuery& query) {
    const IntoTarget& into = *query.into;
    ast::ObjectName name;
    name.database = into.database;
    name.schema = into.schema;
    name.name = into.name;
    const ObjectPlace place = placeOf(context, name);
    requireFreeName(context, place, into.name);
    Write write(context.connection, *place.database);
    requireFreeName(context, place, into.name);
    ObjectDef table = newTable(place, into.name);
    for (const ColumnDef& column : into.columns) {
        if (table.findColumn(column.name) != nullptr) {
            throw SqlError(errorMessage<2705>(column.name, table.name));
        }
        requireOneRowVersion(table, column);
        table.columns.push_back(column);
        table.columns.back().columnId = ++table.lastColumnId;
    }
    makeTable(context.connection, *place.database, table);

    BoundInsert insert;
    const FoundObject made = madeAt(context, place, into.name);
    insert.target = resolved(made);
    int source = 0;
    for (const ColumnDef& column : made.object->columns) insert.columns.push_back({&column, source++});
    insert.explicitIdentity = true;
    RowInserter inserter(context, made, insert, {});
    {
        Statement rows = context.connection.prepare(query.sql);
        context.bindParameters(rows, query, {});
        while (rows.step()) inserter.add(StatementRow(rows.get()));
    }
    const std::int64_t count = inserter.finish();
    write.done();
    return count;
}

void executeDrop(const ExecuteContext& context, const ast::DropObjects& statement) {
    std::vector<Message> errors;  // the others of the list are dropped all the same
    for (const ast::ObjectName& name : statement.names) {
        try {
            dropObject(context, name, kindOf(statement.kind), statement.ifExists);
        } catch (const SqlError& e) {
            errors.insert(errors.end(), e.messages.begin(), e.messages.end());
        }
    }
    if (!errors.empty()) throw SqlError(std::move(errors), Effect::Statement);
}

void executeTruncate(const ExecuteContext& context, const ast::Truncate& statement) {
    const ast::ObjectName& name = statement.table;
    const auto table = context.connection.find(name.database, name.schema, name.name);
    if (!table || table->object->system) throw SqlError(errorMessage<4701, 1>(name.written()));
    if (table->object->kind != ObjectKind::Table) {
        throw SqlError(errorMessage<4708>(name.written()));
    }
    if (referencedByOthers(context, *table)) {
        throw SqlError(errorMessage<4712>(name.written()));
    }
    Write write(context.connection, *table->database);
    context.connection.run("DELETE FROM " + tableSql(*table));
    const bool hasIdentity = std::any_of(table->object->columns.begin(), table->object->columns.end(),
                                         [](const ColumnDef& column) { return column.identity; });
    if (hasIdentity) context.connection.resetIdentity(*table->database, table->object->id, std::nullopt);
    write.done();
}

}  // namespace sandbox
