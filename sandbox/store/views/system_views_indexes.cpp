// sysindexes, sys.indexes, sys.index_columns and sys.foreign_key_columns.
#include "sandbox/store/databases/table_storage.h"
#include "sandbox/store/values/storage_codec.h"
#include "sandbox/store/views/system_view_rows.h"

namespace sandbox::views {

namespace {

struct IndexRow {
    std::shared_ptr<const ObjectDef> table;
    const IndexDef* index = nullptr;  // none: the heap itself
};

// A table without a clustered index has a row for its heap.
std::vector<IndexRow> indexes(Connection& connection, Database& database) {
    std::vector<IndexRow> rows;
    for (const auto& table : visibleObjects(connection, database)) {
        if (table->kind != ObjectKind::Table) continue;
        bool clustered = false;
        for (const IndexDef& index : table->indexes) clustered = clustered || index.clustered;
        if (!clustered) rows.push_back({table, nullptr});
        for (const IndexDef& index : table->indexes) rows.push_back({table, &index});
    }
    return rows;
}

struct CountedIndexRow {
    IndexRow row;
    std::int64_t rows = 0;
};

std::vector<CountedIndexRow> countedIndexes(Connection& connection, Database& database) {
    std::vector<CountedIndexRow> list;
    std::int64_t count = 0;
    for (IndexRow& row : indexes(connection, database)) {
        // The indexes of a table follow each other.
        if (list.empty() || list.back().row.table != row.table) {
            const std::string& schema =
                row.table->id < 0 ? connection.temporary()->attachedAs() : database.attachedAs();
            Statement counter = connection.prepare("SELECT count(*) FROM " + storageTable(schema, *row.table));
            count = counter.step() ? std::get<std::int64_t>(readColumn(counter.get(), 0, kBigInt)) : 0;
        }
        list.push_back({std::move(row), count});
    }
    return list;
}

struct IndexColumnRow {
    std::shared_ptr<const ObjectDef> table;
    const IndexDef* index = nullptr;
    int number = 0;  // within the index
    int key = 0;     // 0: included
    int columnId = 0;
    bool descending = false;
};

std::vector<IndexColumnRow> indexColumns(Connection& connection, Database& database) {
    std::vector<IndexColumnRow> rows;
    for (const IndexRow& row : indexes(connection, database)) {
        if (row.index == nullptr) continue;
        int number = 0;
        for (const IndexDef::Key& key : row.index->keys) {
            ++number;
            rows.push_back(
                {row.table, row.index, number, number, row.table->findColumn(key.column)->columnId, key.descending});
        }
        for (const std::string& column : row.index->included) {
            rows.push_back({row.table, row.index, ++number, 0, row.table->findColumn(column)->columnId, false});
        }
    }
    return rows;
}

struct ForeignKeyColumnRow {
    std::int32_t constraint = 0;
    int number = 0;
    std::int32_t child = 0;
    int childColumn = 0;
    std::int32_t parent = 0;
    int parentColumn = 0;
};

std::vector<ForeignKeyColumnRow> foreignKeyColumns(Connection& connection, Database& database) {
    std::vector<ForeignKeyColumnRow> rows;
    const auto catalog = connection.catalog(database);
    for (const auto& table : visibleObjects(connection, database)) {
        for (const ForeignKeyDef& key : table->foreignKeys) {
            const auto parent = catalog->findById(key.parentId);
            for (std::size_t i = 0; parent && i < key.columns.size(); ++i) {
                rows.push_back({key.id, static_cast<int>(i) + 1, table->id, table->findColumn(key.columns[i])->columnId,
                                parent->id, parent->findColumn(key.parentColumns[i])->columnId});
            }
        }
    }
    return rows;
}

using I = IndexRow;
using N = CountedIndexRow;
using K = IndexColumnRow;
using R = ForeignKeyColumnRow;

bool isUnique(const I& i) {
    return i.index != nullptr && i.index->unique;
}

// As the server writes it: ([a] IS NOT NULL AND [b] IS NULL).
std::string filterText(const I& i) {
    std::string text;
    if (i.index == nullptr) return text;
    for (const IndexDef::Condition& c : i.index->filter) {
        text += (text.empty() ? "([" : " AND [") + c.column + (c.null ? "] IS NULL" : "] IS NOT NULL");
    }
    return text.empty() ? text : text + ")";
}

SystemView live(SystemView view) {
    view.live = true;
    return view;
}

}  // namespace

std::vector<SystemView> indexViews() {
    SystemView sysindexes = makeView<N>(
        "sys", "sysindexes", countedIndexes,
        {
            {"id", kInt, [](const N& n) { return number(n.row.table->id); }},
            // 2: unique, 16: clustered, 2048: primary key, 4096: unique constraint
            {"status", kInt,
             [](const N& n) {
                 const IndexDef* i = n.row.index;
                 if (i == nullptr) return number(0);
                 return number((i->unique ? 2 : 0) + (i->clustered ? 16 : 0) + (i->primaryKey ? 2048 : 0) +
                               (i->uniqueConstraint ? 4096 : 0));
             }},
            {"indid", kSmallInt, [](const N& n) { return number(n.row.index == nullptr ? 0 : n.row.index->indexId); }},
            {"keycnt", kSmallInt,
             [](const N& n) {
                 return number(n.row.index == nullptr ? 0 : static_cast<int>(n.row.index->keys.size()));
             }},
            {"rowcnt", kBigInt, [](const N& n) { return number(n.rows); }},
            {"rowmodctr", kInt, [](const N&) { return number(0); }},
            {"rows", kInt, [](const N& n) { return number(n.rows); }},
            {"dpages", kInt, [](const N&) { return number(0); }},
            {"reserved", kInt, [](const N&) { return number(0); }},
            {"used", kInt, [](const N&) { return number(0); }},
            {"OrigFillFactor", kTinyInt, [](const N&) { return number(0); }},
            {"name", kName, [](const N& n) { return n.row.index == nullptr ? Value{} : text(n.row.index->name); }},
        });
    sysindexes.bare = true;
    SystemView sysforeignkeys = makeView<R>("sys", "sysforeignkeys", foreignKeyColumns,
                                            {
                                                {"constid", kInt, [](const R& r) { return number(r.constraint); }},
                                                {"fkeyid", kInt, [](const R& r) { return number(r.child); }},
                                                {"rkeyid", kInt, [](const R& r) { return number(r.parent); }},
                                                {"fkey", kSmallInt, [](const R& r) { return number(r.childColumn); }},
                                                {"rkey", kSmallInt, [](const R& r) { return number(r.parentColumn); }},
                                                {"keyno", kSmallInt, [](const R& r) { return number(r.number); }},
                                            });
    sysforeignkeys.bare = true;
    return {
        live(std::move(sysindexes)),
        std::move(sysforeignkeys),
        makeView<I>(
            "sys", "indexes", indexes,
            {
                {"object_id", kInt, [](const I& i) { return number(i.table->id); }},
                {"name", kName, [](const I& i) { return i.index == nullptr ? Value{} : text(i.index->name); }},
                {"index_id", kInt, [](const I& i) { return number(i.index == nullptr ? 0 : i.index->indexId); }},
                {"type", kTinyInt,
                 [](const I& i) { return number(i.index == nullptr   ? 0
                                                : i.index->clustered ? 1
                                                                     : 2); }},
                {"type_desc", kDescription,
                 [](const I& i) {
                     return text(i.index == nullptr ? "HEAP" : i.index->clustered ? "CLUSTERED" : "NONCLUSTERED");
                 }},
                {"is_unique", kBit, [](const I& i) { return number(isUnique(i) ? 1 : 0); }},
                {"data_space_id", kInt, [](const I&) { return number(1); }},
                {"ignore_dup_key", kBit, [](const I&) { return number(0); }},
                {"is_primary_key", kBit,
                 [](const I& i) { return number(i.index != nullptr && i.index->primaryKey ? 1 : 0); }},
                {"is_unique_constraint", kBit,
                 [](const I& i) { return number(i.index != nullptr && i.index->uniqueConstraint ? 1 : 0); }},
                {"fill_factor", kTinyInt, [](const I&) { return number(0); }},
                {"is_padded", kBit, [](const I&) { return number(0); }},
                {"is_disabled", kBit, [](const I&) { return number(0); }},
                {"is_hypothetical", kBit, [](const I&) { return number(0); }},
                {"allow_row_locks", kBit, [](const I&) { return number(1); }},
                {"allow_page_locks", kBit, [](const I&) { return number(1); }},
                {"has_filter", kBit, [](const I& i) { return number(filterText(i).empty() ? 0 : 1); }},
                {"filter_definition", kLongText, [](const I& i) { return textOrNull(filterText(i)); }},
            }),
        live(makeView<N>("sys", "partitions", countedIndexes,
                         {
                             {"partition_id", kBigInt,
                              [](const N& n) {
                                  return number((static_cast<std::int64_t>(n.row.table->id) << 16) +
                                                (n.row.index == nullptr ? 0 : n.row.index->indexId));
                              }},
                             {"object_id", kInt, [](const N& n) { return number(n.row.table->id); }},
                             {"index_id", kInt,
                              [](const N& n) { return number(n.row.index == nullptr ? 0 : n.row.index->indexId); }},
                             {"partition_number", kInt, [](const N&) { return number(1); }},
                             {"rows", kBigInt, [](const N& n) { return number(n.rows); }},
                             {"data_compression", kTinyInt, [](const N&) { return number(0); }},
                             {"data_compression_desc", kDescription, [](const N&) { return text("NONE"); }},
                         })),
        makeView<K>("sys", "index_columns", indexColumns,
                    {
                        {"object_id", kInt, [](const K& k) { return number(k.table->id); }},
                        {"index_id", kInt, [](const K& k) { return number(k.index->indexId); }},
                        {"index_column_id", kInt, [](const K& k) { return number(k.number); }},
                        {"column_id", kInt, [](const K& k) { return number(k.columnId); }},
                        {"key_ordinal", kTinyInt, [](const K& k) { return number(k.key); }},
                        {"partition_ordinal", kTinyInt, [](const K&) { return number(0); }},
                        {"is_descending_key", kBit, [](const K& k) { return number(k.descending ? 1 : 0); }},
                        {"is_included_column", kBit, [](const K& k) { return number(k.key == 0 ? 1 : 0); }},
                    }),
        makeView<R>("sys", "foreign_key_columns", foreignKeyColumns,
                    {
                        {"constraint_object_id", kInt, [](const R& r) { return number(r.constraint); }},
                        {"constraint_column_id", kInt, [](const R& r) { return number(r.number); }},
                        {"parent_object_id", kInt, [](const R& r) { return number(r.child); }},
                        {"parent_column_id", kInt, [](const R& r) { return number(r.childColumn); }},
                        {"referenced_object_id", kInt, [](const R& r) { return number(r.parent); }},
                        {"referenced_column_id", kInt, [](const R& r) { return number(r.parentColumn); }},
                    }),
    };
}

}  // namespace sandbox::views
