// UPDATE and DELETE: find the rows, then write them.
#include <unordered_set>

#include "sandbox/tsql/execute/execute.h"
#include "sandbox/tsql/execute/execute_change.h"
#include "sandbox/tsql/execute/execute_output.h"

namespace sandbox {

std::int64_t executeUpdate(const ExecuteContext& context, const BoundUpdate& update) {
    return executeUpdate(context, update, nullptr);
}

std::int64_t executeUpdate(const ExecuteContext& context, const BoundUpdate& update, RowOutput* output) {
    const FoundObject table = writeTarget(context, update.target);
    Write write(context.connection, *table.database);
    requireUnchanged(context, table);
    RowBuffer rows(update.columns.size() + 1);
    {
        Statement find = context.connection.prepare(update.source.sql);
        context.bindParameters(find, update.source, {});
        std::unordered_set<std::int64_t> seen;
        while (find.step()) {
            if (update.mayRepeat && !seen.insert(sqlite3_column_int64(find.get(), 0)).second) continue;
            rows.add(find.get());
        }
    }
    for (std::size_t i = 0; output && i < rows.size(); ++i) output->removed(rows.integer(i, 0));
    changeRows(context, table, update.columns, rows, "UPDATE");
    for (std::size_t i = 0; output && i < rows.size(); ++i) output->written(rows.integer(i, 0));
    if (output) output->finish();
    write.done();
    return static_cast<std::int64_t>(rows.size());
}

std::int64_t executeDelete(const ExecuteContext& context, const BoundDelete& deletion) {
    return executeDelete(context, deletion, nullptr);
}

std::int64_t executeDelete(const ExecuteContext& context, const BoundDelete& deletion, RowOutput* output) {
    const FoundObject table = writeTarget(context, deletion.target);
    Write write(context.connection, *table.database);
    requireUnchanged(context, table);
    RowIds rows;
    {
        Statement find = context.connection.prepare(deletion.source.sql);
        context.bindParameters(find, deletion.source, {});
        std::unordered_set<std::int64_t> seen;
        while (find.step()) {
            const std::int64_t row = sqlite3_column_int64(find.get(), 0);
            if (!deletion.mayRepeat || seen.insert(row).second) rows.push_back(row);
        }
    }
    for (std::size_t i = 0; output && i < rows.size(); ++i) output->removed(rows[i]);
    removeRows(context, table, rows, "DELETE");
    if (output) output->finish();
    write.done();
    return static_cast<std::int64_t>(rows.size());
}

}  // namespace sandbox
