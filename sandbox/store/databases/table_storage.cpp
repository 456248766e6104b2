// A table's text in SQLite. A unique index treats NULLs as equal, as SQL Server does: it takes a second index for the
// rows that have one.
#include "sandbox/store/databases/table_storage.h"

#include <algorithm>

#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/storage_codec.h"

namespace sandbox {

namespace {

std::string columnDeclaration(const ColumnDef& column) {
    return quoteIdentifier(column.name) + " " + sqliteDeclaration(column.type, column.collation);
}

std::string indexName(std::string_view schema, const ObjectDef& table, const std::string& suffix) {
    return quoteIdentifier(schema) + "." + quoteIdentifier(table.storageName + suffix);
}

std::string indexSuffix(const IndexDef& index) {
    return "_i" + std::to_string(index.indexId);
}

bool mayBeNull(const ObjectDef& table, const IndexDef::Key& key) {
    const ColumnDef* column = table.findColumn(key.column);
    return column != nullptr && column->nullable;
}

std::string joined(const std::vector<std::string>& parts, std::string_view between) {
    std::string text;
    for (const std::string& part : parts) text += (text.empty() ? "" : std::string(between)) + part;
    return text;
}

}  // namespace

std::string quoteIdentifier(std::string_view name) {
    std::string quoted = "\"";
    for (const char c : name) {
        quoted += c;
        if (c == '"') quoted += c;
    }
    return quoted + '"';
}

std::string storageTable(std::string_view schema, const ObjectDef& table) {
    return quoteIdentifier(schema) + "." + quoteIdentifier(table.storageName);
}

std::string createStorageSql(std::string_view schema, const ObjectDef& table) {
    std::vector<std::string> columns;
    for (const ColumnDef& column : table.columns) {
        if (column.computedText.empty()) columns.push_back(columnDeclaration(column));
    }
    return "CREATE TABLE " + storageTable(schema, table) + " (" + joined(columns, ", ") + ")";
}

std::string addColumnSql(std::string_view schema, const ObjectDef& table, const ColumnDef& column) {
    return "ALTER TABLE " + storageTable(schema, table) + " ADD COLUMN " + columnDeclaration(column);
}

std::string filterSql(const IndexDef& index) {
    std::vector<std::string> conditions;
    for (const IndexDef::Condition& c : index.filter) {
        conditions.push_back(quoteIdentifier(c.column) + (c.null ? " IS NULL" : " IS NOT NULL"));
    }
    return joined(conditions, " AND ");
}

std::vector<std::string> createIndexSql(std::string_view schema, const ObjectDef& table, const IndexDef& index) {
    std::vector<std::string> keys;
    std::vector<std::string> keysWithNulls;
    std::vector<std::string> someNull;
    for (const IndexDef::Key& key : index.keys) {
        const ColumnDef* column = table.findColumn(key.column);
        const std::string name = quoteIdentifier(column->name);
        const std::string compared = comparableSql(name, column->type);
        keys.push_back(compared + (key.descending ? " DESC" : ""));
        if (mayBeNull(table, key)) {
            std::string value = "ifnull(" + compared + ", 0)";
            if (isCharacter(column->type.id)) value += " COLLATE " + sqliteCollation(column->collation);
            keysWithNulls.push_back(name + " IS NULL");
            keysWithNulls.push_back(std::move(value));
            someNull.push_back(name + " IS NULL");
        } else {
            keysWithNulls.push_back(compared);
        }
    }
    const std::string on = " ON " + quoteIdentifier(table.storageName) + " (";
    const std::string create = index.unique ? "CREATE UNIQUE INDEX " : "CREATE INDEX ";
    const std::string filter = filterSql(index);
    std::vector<std::string> texts{create + indexName(schema, table, indexSuffix(index)) + on + joined(keys, ", ") +
                                   ")" + (filter.empty() ? "" : " WHERE " + filter)};
    if (index.unique && !someNull.empty()) {
        texts.push_back(create + indexName(schema, table, indexSuffix(index) + "n") + on + joined(keysWithNulls, ", ") +
                        ") WHERE (" + joined(someNull, " OR ") + ")" + (filter.empty() ? "" : " AND " + filter));
    }
    return texts;
}

std::vector<std::string> dropIndexSql(std::string_view schema, const ObjectDef& table, const IndexDef& index) {
    return {"DROP INDEX IF EXISTS " + indexName(schema, table, indexSuffix(index)),
            "DROP INDEX IF EXISTS " + indexName(schema, table, indexSuffix(index) + "n")};
}

std::string createForeignKeyIndexSql(std::string_view schema, const ObjectDef& table, const ForeignKeyDef& key) {
    const bool covered = std::any_of(table.indexes.begin(), table.indexes.end(), [&](const IndexDef& index) {
        return index.filter.empty() && index.keys.size() >= key.columns.size() &&
               std::equal(key.columns.begin(), key.columns.end(), index.keys.begin(),
                          [](const std::string& column, const IndexDef::Key& k) { return sameName(column, k.column); });
    });
    if (covered) return {};
    std::vector<std::string> columns;
    for (const std::string& column : key.columns) columns.push_back(quoteIdentifier(table.findColumn(column)->name));
    return "CREATE INDEX " + indexName(schema, table, "_f" + std::to_string(key.id)) + " ON " +
           quoteIdentifier(table.storageName) + " (" + joined(columns, ", ") + ")";
}

std::string dropForeignKeyIndexSql(std::string_view schema, const ObjectDef& table, const ForeignKeyDef& key) {
    return "DROP INDEX IF EXISTS " + indexName(schema, table, "_f" + std::to_string(key.id));
}

}  // namespace sandbox
