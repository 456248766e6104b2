// The SQLite side of a table: the texts that make it, its indexes, and the names they have there. Used wherever a
// table is made or changed.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "sandbox/store/databases/catalog.h"

namespace sandbox {

[[nodiscard]] std::string quoteIdentifier(std::string_view name);  // "a""b" with its quotes
// "db5"."t245575913"
[[nodiscard]] std::string storageTable(std::string_view schema, const ObjectDef& table);

[[nodiscard]] std::string createStorageSql(std::string_view schema, const ObjectDef& table);
[[nodiscard]] std::string addColumnSql(std::string_view schema, const ObjectDef& table, const ColumnDef& column);
// The condition of the rows that an index has; empty: all.
[[nodiscard]] std::string filterSql(const IndexDef& index);
// A unique index over columns that may be null has a second SQLite index, in which nulls are equal.
[[nodiscard]] std::vector<std::string> createIndexSql(std::string_view schema, const ObjectDef& table,
                                                      const IndexDef& index);
[[nodiscard]] std::vector<std::string> dropIndexSql(std::string_view schema, const ObjectDef& table,
                                                    const IndexDef& index);
// The index over a foreign key's own columns, so that its parent's rows can go without a scan; empty where an index of
// the table begins with them.
[[nodiscard]] std::string createForeignKeyIndexSql(std::string_view schema, const ObjectDef& table,
                                                   const ForeignKeyDef& key);
[[nodiscard]] std::string dropForeignKeyIndexSql(std::string_view schema, const ObjectDef& table,
                                                 const ForeignKeyDef& key);

}  // namespace sandbox
