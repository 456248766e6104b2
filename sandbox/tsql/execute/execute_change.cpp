// Writing new values into rows and deleting rows, once all of them have been found.
#include "sandbox/tsql/execute/execute_change.h"

#include <algorithm>

#include "sandbox/store/databases/table_storage.h"
#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/storage_codec.h"
#include "sandbox/tsql/execute/constraint_errors.h"

namespace sandbox {

namespace {

// The rows of one UPDATE on their way into the table.
class RowChanger {
public:
    RowChanger(const ExecuteContext& context, const FoundObject& table, const std::vector<const ColumnDef*>& columns,
               const RowBuffer& rows)
        : context_(context), table_(table), columns_(columns), rows_(rows) {}

    void write() {
        if (columns_.empty()) return;
        if (rows_.size() < 2 || !writesUniqueKey()) {
            writeAll();
            return;
        }
        // Rows may pass through each other's keys (a = a + 1). Try it straight first: mostly they do not.
        try {
            Write attempt(context_.connection, *table_.database);
            writeAll();
            attempt.done();
        } catch (const SqlError& error) {
            const int number = error.messages.front().number;
            if (number != 2627 && number != 2601) throw;
            clearKeys();
            writeAll();
        }
    }

private:
    [[nodiscard]] bool written(const std::string& column) const {
        return std::any_of(columns_.begin(), columns_.end(),
                           [&](const ColumnDef* c) { return sameName(c->name, column); });
    }

    [[nodiscard]] bool writesUniqueKey() const {
        return std::any_of(table_.object->indexes.begin(), table_.object->indexes.end(), [&](const IndexDef& index) {
            return index.unique && std::any_of(index.keys.begin(), index.keys.end(),
                                               [&](const IndexDef::Key& key) { return written(key.column); });
        });
    }

    void writeAll() {
        std::string assignments;
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            assignments += (i == 0 ? "" : ", ") + quoteIdentifier(columns_[i]->name) + " = ?" + std::to_string(i + 2);
        }
        const int version = static_cast<int>(columns_.size()) + 2;
        const ColumnDef* versioned = rowVersionColumn(*table_.object);
        if (versioned != nullptr)
            assignments += ", " + quoteIdentifier(versioned->name) + " = ?" + std::to_string(version);
        Statement update =
            context_.connection.prepare("UPDATE " + tableSql(table_) + " SET " + assignments + " WHERE _rowid_ = ?1");
        for (std::size_t i = 0; i < rows_.size(); ++i) {
            const RowBuffer::Row row = rows_.row(i);
            for (std::size_t c = 0; c <= columns_.size(); ++c) row.bind(update.get(), static_cast<int>(c) + 1, c);
            if (versioned != nullptr) bindRowVersion(context_.connection, table_, update.get(), version);
            try {
                update.step();
            } catch (const SqliteError& error) {
                if (!isDuplicate(error)) throw;
                update.reset();
                throw duplicate(row, rows_.integer(i, 0));
            }
            update.reset();
        }
    }

    // Gives the written key columns of every row a value that no other row has: the columns have types for us, not for
    // SQLite.
    void clearKeys() {
        std::string assignments;
        for (const ColumnDef* column : columns_) {
            const bool inKey =
                std::any_of(table_.object->indexes.begin(), table_.object->indexes.end(), [&](const IndexDef& index) {
                    return index.unique && std::any_of(index.keys.begin(), index.keys.end(), [&](const auto& key) {
                               return sameName(key.column, column->name);
                           });
                });
            if (inKey) assignments += (assignments.empty() ? "" : ", ") + quoteIdentifier(column->name) + " = ?2";
        }
        Statement update =
            context_.connection.prepare("UPDATE " + tableSql(table_) + " SET " + assignments + " WHERE _rowid_ = ?1");
        for (std::size_t i = 0; i < rows_.size(); ++i) {
            const std::string placeholder = "\xFF row on its way " + std::to_string(rows_.integer(i, 0));
            sqlite3_bind_int64(update.get(), 1, rows_.integer(i, 0));
            sqlite3_bind_blob(update.get(), 2, placeholder.data(), static_cast<int>(placeholder.size()),
                              SQLITE_TRANSIENT);
            update.step();
            update.reset();
        }
    }

    SqlError duplicate(const RowView& row, std::int64_t rowId) {
        const ObjectDef& object = *table_.object;
        std::string columns;
        for (const ColumnDef& column : object.columns) {
            if (!columns.empty()) columns += ", ";
            const auto place = std::find_if(columns_.begin(), columns_.end(),
                                            [&](const ColumnDef* c) { return sameName(c->name, column.name); });
            if (!column.computedText.empty()) {
                columns += "NULL";
            } else {
                columns += place == columns_.end() ? quoteIdentifier(column.name)
                                                   : "?" + std::to_string(place - columns_.begin() + 2);
            }
        }
        Statement read =
            context_.connection.prepare("SELECT " + columns + " FROM " + tableSql(table_) + " WHERE _rowid_ = ?1");
        for (std::size_t c = 0; c <= columns_.size(); ++c) row.bind(read.get(), static_cast<int>(c) + 1, c);
        std::vector<Value> values;
        if (read.step()) {
            for (std::size_t i = 0; i < object.columns.size(); ++i) {
                values.push_back(readColumn(read.get(), static_cast<int>(i), object.columns[i].type));
            }
        }
        return duplicateError(context_, table_, values, rowId);
    }

    const ExecuteContext& context_;
    const FoundObject& table_;
    const std::vector<const ColumnDef*>& columns_;
    const RowBuffer& rows_;
};

}  // namespace

void changeRows(const ExecuteContext& context, const FoundObject& table, const std::vector<const ColumnDef*>& columns,
                const RowBuffer& rows, std::string_view verb) {
    if (rows.size() == 0) return;
    WrittenColumns names;
    for (std::size_t c = 0; c < columns.size(); ++c) {
        names.push_back(columns[c]->name);
        for (std::size_t i = 0; !columns[c]->nullable && i < rows.size(); ++i) {
            if (rows.row(i).isNull(c + 1)) throw nullNotAllowed(table, columns[c]->name, verb);
        }
    }
    if (names.empty()) return;
    RowIds ids;
    for (std::size_t i = 0; i < rows.size(); ++i) ids.push_back(rows.integer(i, 0));
    TakenKeys taken(context, table, names);
    if (taken.needed()) {
        for (const std::int64_t id : ids) taken.remember(id);
    }
    RowChanger(context, table, columns, rows).write();
    checkWrittenRows(context, table, names, ids, verb);
    taken.settle(verb);
}

void removeRows(const ExecuteContext& context, const FoundObject& table, const RowIds& rows, std::string_view verb) {
    if (rows.empty()) return;
    TakenKeys taken(context, table, {});
    if (taken.needed()) {
        for (const std::int64_t id : rows) taken.remember(id);
    }
    Statement remove = context.connection.prepare("DELETE FROM " + tableSql(table) + " WHERE _rowid_ = ?1");
    for (const std::int64_t id : rows) {
        sqlite3_bind_int64(remove.get(), 1, id);
        remove.step();
        remove.reset();
    }
    taken.settle(verb);
}

}  // namespace sandbox
