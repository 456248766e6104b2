// Rows in hand between reading and writing, and the table that a statement may write to.
#include "sandbox/tsql/execute/execute_rows.h"

#include <algorithm>

#include "sandbox/store/databases/table_storage.h"
#include "sandbox/store/values/error_table.h"

namespace sandbox {

void RowBuffer::add(sqlite3_stmt* row) {
    for (std::size_t i = 0; i < columns_; ++i) {
        const int column = static_cast<int>(i);
        Cell& cell = cells_.emplace_back();
        cell.kind = sqlite3_column_type(row, column);
        switch (cell.kind) {
            case SQLITE_INTEGER: cell.integer = sqlite3_column_int64(row, column); break;
            case SQLITE_FLOAT: cell.real = sqlite3_column_double(row, column); break;
            case SQLITE_TEXT:
            case SQLITE_BLOB: {
                const auto* data = static_cast<const char*>(
                    cell.kind == SQLITE_TEXT ? reinterpret_cast<const void*>(sqlite3_column_text(row, column))
                                             : sqlite3_column_blob(row, column));
                cell.length = sqlite3_column_bytes(row, column);
                cell.offset = bytes_.size();
                if (cell.length > 0) bytes_.append(data, static_cast<std::size_t>(cell.length));
                break;
            }
            default: break;
        }
    }
}

bool RowBuffer::Row::isNull(std::size_t cell) const {
    return buffer_->at(row_, cell).kind == SQLITE_NULL;
}

void RowBuffer::Row::bind(sqlite3_stmt* to, int parameter, std::size_t number) const {
    const Cell& cell = buffer_->at(row_, number);
    switch (cell.kind) {
        case SQLITE_INTEGER: sqlite3_bind_int64(to, parameter, cell.integer); break;
        case SQLITE_FLOAT: sqlite3_bind_double(to, parameter, cell.real); break;
        // The buffer outlives the statement's run.
        case SQLITE_TEXT:
            sqlite3_bind_text(to, parameter, buffer_->bytes_.data() + cell.offset, cell.length, SQLITE_STATIC);
            break;
        case SQLITE_BLOB:
            sqlite3_bind_blob(to, parameter, buffer_->bytes_.data() + cell.offset, cell.length, SQLITE_STATIC);
            break;
        default: sqlite3_bind_null(to, parameter); break;
    }
}

FoundObject writeTarget(const ExecuteContext& context, const ResolvedObject& target) {
    const ObjectDef& object = *target.object;
    if (object.system) {
        throw SqlError(errorMessage<259>());
    }
    std::optional<FoundObject> found = context.connection.find(target.database, object.schema, object.name);
    if (!found) {
        throw SqlError(errorMessage<208, 1>(object.name), Effect::Scope);
    }
    if (found->object->kind != ObjectKind::Table) {
        throw SqlError(errorMessage<4406>(object.name));
    }
    if (found->object != target.object) requireUnchanged(context, {target.object, found->database});
    return *std::move(found);
}

std::optional<FoundObject> findAgain(const ExecuteContext& context, const FoundObject& table) {
    auto object = context.connection.catalog(*table.database)->find(table.object->schema, table.object->name);
    if (!object) return std::nullopt;
    return FoundObject{std::move(object), table.database};
}

void requireUnchanged(const ExecuteContext& context, const FoundObject& table) {
    const auto now = findAgain(context, table);
    if (now && now->object == table.object) return;
    throw SqlError(errorMessage<3961>(table.database->name()), Effect::Batch);
}

ResolvedObject resolved(const FoundObject& found) {
    return {found.object, found.database->name(), found.database->attachedAs()};
}

std::string tableSql(const FoundObject& table) {
    return storageTable(table.database->attachedAs(), *table.object);
}

std::string shortName(const FoundObject& table) {
    return table.object->name.starts_with('@') ? table.object->name : table.object->schema + "." + table.object->name;
}

std::string fullName(const FoundObject& table) {
    return table.object->name.starts_with('@') ? table.object->name : table.database->name() + "." + shortName(table);
}

const ColumnDef* rowVersionColumn(const ObjectDef& table) {
    const auto found = std::find_if(table.columns.begin(), table.columns.end(), [](const ColumnDef& column) {
        return column.type.rowVersion && column.computedText.empty();
    });
    return found == table.columns.end() ? nullptr : &*found;
}

void bindRowVersion(Connection& connection, const FoundObject& table, sqlite3_stmt* to, int parameter) {
    const auto bytes = connection.nextRowVersion(*table.database);
    sqlite3_bind_blob(to, parameter, bytes.data(), static_cast<int>(bytes.size()), SQLITE_TRANSIENT);
}

void bindRowId(const Statement& statement, const BoundQuery& query, std::int64_t rowId) {
    int place = 0;
    for (const Parameter& parameter : query.parameters) {
        ++place;
        if (parameter.kind == Parameter::Kind::Input && parameter.slot == 0) {
            sqlite3_bind_int64(statement.get(), place, rowId);
        }
    }
}

}  // namespace sandbox
