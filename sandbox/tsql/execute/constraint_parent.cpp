// TakenKeys: what becomes of children when their parent's keys go.
#include <algorithm>
#include <unordered_set>

#include "sandbox/store/databases/table_storage.h"
#include "sandbox/store/values/collation.h"
#include "sandbox/tsql/execute/constraint.h"
#include "sandbox/tsql/execute/constraint_errors.h"
#include "sandbox/tsql/execute/execute_change.h"

namespace sandbox {

namespace {

std::string columnList(const std::vector<std::string>& columns) {
    std::string list;
    for (const std::string& column : columns) list += (list.empty() ? "" : ", ") + quoteIdentifier(column);
    return list;
}

// "a" = ?1 AND "b" = ?2
std::string equals(const std::vector<std::string>& columns) {
    std::string condition;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        condition += (i == 0 ? "" : " AND ") + quoteIdentifier(columns[i]) + " = ?" + std::to_string(i + 1);
    }
    return condition;
}

void bindKey(const Statement& statement, const RowView& key, std::size_t columns) {
    for (std::size_t i = 0; i < columns; ++i) key.bind(statement.get(), static_cast<int>(i) + 1, i);
}

}  // namespace

struct TakenKeys::Reference {
    FoundObject child;
    ForeignKeyDef key;
    RowBuffer old;  // the parent's columns, by row
    Statement readKey;
};

TakenKeys::TakenKeys(const ExecuteContext& context, const FoundObject& parent, const WrittenColumns& columns)
    : context_(context), parent_(parent), deletes_(columns.empty()) {
    const auto written = [&](const std::string& column) {
        return std::any_of(columns.begin(), columns.end(), [&](const std::string& c) { return sameName(c, column); });
    };
    for (const auto& child : context.connection.catalog(*parent.database)->childrenOf(*parent.object)) {
        for (const ForeignKeyDef& key : child->foreignKeys) {
            if (key.parentId != parent.object->id || key.disabled) continue;
            if (!deletes_ && std::none_of(key.parentColumns.begin(), key.parentColumns.end(), written)) continue;
            references_.push_back(std::make_unique<Reference>(
                Reference{{child, parent.database},
                          key,
                          RowBuffer(key.parentColumns.size()),
                          context.connection.prepare("SELECT " + columnList(key.parentColumns) + " FROM " +
                                                     tableSql(parent) + " WHERE _rowid_ = ?1")}));
        }
    }
}

TakenKeys::~TakenKeys() = default;

void TakenKeys::remember(std::int64_t rowId) {
    rows_.push_back(rowId);
    for (const auto& reference : references_) {
        sqlite3_bind_int64(reference->readKey.get(), 1, rowId);
        if (reference->readKey.step()) reference->old.add(reference->readKey.get());
        reference->readKey.reset();
    }
}

void TakenKeys::settle(std::string_view verb) {
    for (const auto& reference : references_) {
        if (deletes_ && reference->key.cascadeDelete) {
            cascadeDelete(*reference);
        } else if (!deletes_ && reference->key.cascadeUpdate) {
            cascadeUpdate(*reference);
        } else {
            refuse(*reference, verb);
        }
    }
}

void TakenKeys::refuse(Reference& reference, std::string_view verb) {
    const ForeignKeyDef& key = reference.key;
    Statement look = context_.connection.prepare(
        "SELECT 1 FROM " + tableSql(reference.child) + " WHERE " + equals(key.columns) +
        " AND NOT EXISTS (SELECT 1 FROM " + tableSql(parent_) + " WHERE " + equals(key.parentColumns) + ") LIMIT 1");
    for (std::size_t i = 0; i < reference.old.size(); ++i) {
        bindKey(look, reference.old.row(i), key.columns.size());
        if (look.step()) throw childExists(reference.child, key, verb);
        look.reset();
    }
}

void TakenKeys::cascadeDelete(Reference& reference) {
    const std::vector<std::string>& columns = reference.key.columns;
    RowIds children;
    {
        Statement find = context_.connection.prepare("SELECT _rowid_ FROM " + tableSql(reference.child) + " WHERE " +
                                                     equals(columns));
        std::unordered_set<std::int64_t> seen;
        for (std::size_t i = 0; i < reference.old.size(); ++i) {
            bindKey(find, reference.old.row(i), columns.size());
            while (find.step()) {
                const std::int64_t row = sqlite3_column_int64(find.get(), 0);
                if (seen.insert(row).second) children.push_back(row);
            }
            find.reset();
        }
    }
    removeRows(context_, reference.child, children, "DELETE");
}

void TakenKeys::cascadeUpdate(Reference& reference) {
    const std::vector<std::string>& columns = reference.key.columns;
    // All children are found before one is written: a child that has got its new key must not be found under it.
    RowBuffer changes(columns.size() + 1);
    {
        const std::string children = tableSql(reference.child) + " c JOIN " + tableSql(parent_) +
                                     " p ON p._rowid_ = ?" + std::to_string(columns.size() + 1);
        std::string newKey;
        std::string changed;
        for (std::size_t i = 0; i < columns.size(); ++i) {
            const std::string column = "p." + quoteIdentifier(reference.key.parentColumns[i]);
            newKey += ", " + column;
            changed += (i == 0 ? "" : " OR ") + column + " IS NOT ?" + std::to_string(i + 1);
        }
        std::string oldKey;
        for (std::size_t i = 0; i < columns.size(); ++i) {
            oldKey += " AND c." + quoteIdentifier(columns[i]) + " = ?" + std::to_string(i + 1);
        }
        Statement find = context_.connection.prepare("SELECT c._rowid_" + newKey + " FROM " + children + " WHERE (" +
                                                     changed + ")" + oldKey);
        for (std::size_t i = 0; i < reference.old.size(); ++i) {
            bindKey(find, reference.old.row(i), columns.size());
            sqlite3_bind_int64(find.get(), static_cast<int>(columns.size()) + 1, rows_[i]);
            while (find.step()) changes.add(find.get());
            find.reset();
        }
    }
    std::vector<const ColumnDef*> written;
    std::transform(columns.begin(), columns.end(), std::back_inserter(written),
                   [&](const std::string& column) { return reference.child.object->findColumn(column); });
    changeRows(context_, reference.child, written, changes, "UPDATE");
}

}  // namespace sandbox
