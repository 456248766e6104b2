// Foreign keys, checks and unique keys, looked at with one statement where the written rows follow each other.
#include "sandbox/tsql/execute/constraint.h"

#include <algorithm>

#include "sandbox/store/databases/table_storage.h"
#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/store/values/storage_codec.h"
#include "sandbox/tsql/execute/constraint_errors.h"

namespace sandbox {

namespace {

// "c"."a" IS NOT NULL AND ... AND NOT EXISTS (SELECT 1 FROM parent p WHERE p.k = c.a AND ...)
std::string orphanCondition(const FoundObject& parent, const ForeignKeyDef& key) {
    std::string present;
    std::string matches;
    for (std::size_t i = 0; i < key.columns.size(); ++i) {
        const std::string own = "c." + quoteIdentifier(key.columns[i]);
        present += own + " IS NOT NULL AND ";
        matches += (i == 0 ? "" : " AND ") + ("p." + quoteIdentifier(key.parentColumns[i])) + " = " + own;
    }
    return present + "NOT EXISTS (SELECT 1 FROM " + tableSql(parent) + " p WHERE " + matches + ")";
}

FoundObject parentOf(const ExecuteContext& context, const FoundObject& child, const ForeignKeyDef& key) {
    return {context.connection.catalog(*child.database)->findById(key.parentId), child.database};
}

bool concerns(const WrittenColumns& written, const std::vector<std::string>& columns) {
    return written.empty() || std::any_of(columns.begin(), columns.end(), [&](const std::string& column) {
               return std::any_of(written.begin(), written.end(),
                                  [&](const std::string& w) { return sameName(w, column); });
           });
}

// The rows of INSERT follow each other: one statement looks at all of them.
bool isRange(const RowIds& rows) {
    return rows.back() - rows.front() + 1 == static_cast<std::int64_t>(rows.size()) &&
           std::is_sorted(rows.begin(), rows.end());
}

bool hasOrphan(const ExecuteContext& context, const FoundObject& child, const ForeignKeyDef& key, const RowIds& rows) {
    const std::string condition = orphanCondition(parentOf(context, child, key), key);
    Statement look = context.connection.prepare("SELECT 1 FROM " + tableSql(child) +
                                                " c WHERE c._rowid_ BETWEEN ?1 AND ?2 AND " + condition + " LIMIT 1");
    const auto any = [&](std::int64_t first, std::int64_t last) {
        sqlite3_bind_int64(look.get(), 1, first);
        sqlite3_bind_int64(look.get(), 2, last);
        const bool found = look.step();
        look.reset();
        return found;
    };
    if (isRange(rows)) return any(rows.front(), rows.back());
    return std::any_of(rows.begin(), rows.end(), [&](std::int64_t row) { return any(row, row); });
}

}  // namespace

const CheckDef* brokenCheck(const ExecuteContext& context, const FoundObject& table, const RowIds& rows) {
    for (const CheckDef& check : table.object->checks) {
        if (check.disabled) continue;
        const BoundQuery query = bindCheck(context.bind, resolved(table), check.text, true);
        Statement look = context.connection.prepare(query.sql);
        context.bindParameters(look, query, {});
        for (const std::int64_t row : rows) {
            bindRowId(look, query, row);
            if (look.step()) return &check;
            look.reset();
        }
    }
    return nullptr;
}

void checkWrittenRows(const ExecuteContext& context, const FoundObject& table, const WrittenColumns& columns,
                      const RowIds& rows, std::string_view verb) {
    if (rows.empty()) return;
    if (const CheckDef* broken = brokenCheck(context, table, rows)) throw checkBroken(table, *broken, verb);
    for (const ForeignKeyDef& key : table.object->foreignKeys) {
        if (key.disabled || !concerns(columns, key.columns)) continue;
        if (hasOrphan(context, table, key, rows)) throw parentMissing(table, key, verb);
    }
}

void checkForeignKey(const ExecuteContext& context, const FoundObject& table, const ForeignKeyDef& key) {
    Statement look = context.connection.prepare("SELECT 1 FROM " + tableSql(table) + " c WHERE " +
                                                orphanCondition(parentOf(context, table, key), key) + " LIMIT 1");
    if (look.step()) throw parentMissing(table, key, "ALTER TABLE");
}

void checkCondition(const ExecuteContext& context, const FoundObject& table, const CheckDef& check) {
    const BoundQuery query = bindCheck(context.bind, resolved(table), check.text, false);
    Statement look = context.connection.prepare(query.sql);
    context.bindParameters(look, query, {});
    if (look.step()) throw checkBroken(table, check, "ALTER TABLE");
}

bool isDuplicate(const SqliteError& error) {
    return error.code == SQLITE_CONSTRAINT_UNIQUE || error.code == SQLITE_CONSTRAINT_PRIMARYKEY;
}

SqlError duplicateError(const ExecuteContext& context, const FoundObject& table, const std::vector<Value>& newRow,
                        std::optional<std::int64_t> rowId) {
    const ObjectDef& object = *table.object;
    for (const IndexDef& index : object.indexes) {
        const bool has = std::all_of(index.filter.begin(), index.filter.end(), [&](const IndexDef::Condition& c) {
            const ColumnDef* column = object.findColumn(c.column);
            return isNull(newRow[static_cast<std::size_t>(column - object.columns.data())]) == c.null;
        });
        if (!index.unique || !has) continue;
        std::string condition = index.filter.empty() ? "" : filterSql(index) + " AND ";
        int place = 0;
        for (const IndexDef::Key& key : index.keys) {
            const ColumnDef* column = object.findColumn(key.column);
            condition += comparableSql(quoteIdentifier(column->name), column->type) + " IS " +
                         comparableSql("?" + std::to_string(++place), column->type) + " AND ";
        }
        Statement look = context.connection.prepare("SELECT 1 FROM " + tableSql(table) + " WHERE " + condition +
                                                    "_rowid_ IS NOT ? LIMIT 1");
        place = 0;
        for (const IndexDef::Key& key : index.keys) {
            const ColumnDef* column = object.findColumn(key.column);
            bindValue(look.get(), ++place, column->type,
                      newRow[static_cast<std::size_t>(column - object.columns.data())]);
        }
        if (rowId) {
            sqlite3_bind_int64(look.get(), ++place, *rowId);
        }
        if (look.step()) return duplicateKey(table, index, keyText(object, index, newRow));
    }
    return SqlError(errorMessage<2601>(shortName(table), "", ""));
}

}  // namespace sandbox
