// DBCC CHECKIDENT.
#include <algorithm>

#include "sandbox/store/databases/table_storage.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/store/values/storage_codec.h"
#include "sandbox/tsql/execute/execute_errors.h"
#include "sandbox/tsql/execute/execute_rows.h"

namespace sandbox {

namespace {

std::string shown(const std::optional<std::int64_t>& value) {
    return "'" + (value ? std::to_string(*value) : std::string("NULL")) + "'";
}

std::optional<std::int64_t> highestValue(const ExecuteContext& context, const FoundObject& table,
                                         const ColumnDef& column) {
    const std::string which = column.identityIncrement < 0 ? "min(" : "max(";
    Statement look =
        context.connection.prepare("SELECT " + which + quoteIdentifier(column.name) + ") FROM " + tableSql(table));
    if (!look.step() || sqlite3_column_type(look.get(), 0) == SQLITE_NULL) return std::nullopt;
    return sqlite3_column_int64(look.get(), 0);
}

}  // namespace

void checkIdentity(const ExecuteContext& context, std::string_view name, bool reseed, std::optional<std::int64_t> to) {
    const auto table = context.connection.findByText(name);
    if (!table || table->object->kind != ObjectKind::Table || table->object->system) {
        throw SqlError(errorMessage<2501>(name));
    }
    const std::vector<ColumnDef>& columns = table->object->columns;
    const auto identity =
        std::find_if(columns.begin(), columns.end(), [](const ColumnDef& column) { return column.identity; });
    if (identity == columns.end()) {
        throw SqlError(errorMessage<7997>(table->object->name));
    }
    const std::optional<std::int64_t> current = table->database->lastIdentity(table->object->id);
    std::string columnValue;
    if (!to) {
        const std::optional<std::int64_t> highest = highestValue(context, *table, *identity);
        columnValue = ", current column value " + shown(highest);
        const bool behind =
            highest && (!current || (identity->identityIncrement > 0 ? *current < *highest : *current > *highest));
        if (reseed && behind) to = highest;
    } else if (!current) {
        // Before the first row the value given is the next one, afterwards the last one.
        to = *to - identity->identityIncrement;
    }
    if (reseed && to) {
        Write write(context.connection, *table->database);
        context.connection.resetIdentity(*table->database, table->object->id, to);
        write.done();
    }
    context.info(errorMessage<7998>(shown(current), columnValue));
}

}  // namespace sandbox
