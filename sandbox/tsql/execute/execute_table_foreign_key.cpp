// TableBuilder's foreign keys: which key of the parent is meant, and whether it fits.
#include <algorithm>

#include "sandbox/store/values/collation.h"
#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/execute/execute_errors.h"
#include "sandbox/tsql/execute/execute_table.h"

namespace sandbox {

using definition::constraintError;
using definition::unsupported;

void TableBuilder::addForeignKey(const ast::Constraint& constraint, const ast::ColumnDefinition* column) {
    const auto handled = [](ast::ReferenceAction action) {
        return action == ast::ReferenceAction::NoAction || action == ast::ReferenceAction::Cascade;
    };
    if (!handled(constraint.onDelete) || !handled(constraint.onUpdate)) {
        throw unsupported("ON DELETE or ON UPDATE SET NULL, SET DEFAULT");
    }
    ForeignKeyDef key;
    key.id = database_->newObjectId();
    for (const IndexDef::Key& k : keysOf(constraint.columns, column)) key.columns.push_back(k.column);
    const std::string firstColumn = key.columns.empty() ? std::string() : key.columns.front();
    key.name = constraintName(constraint.name, madeUpName("FK", firstColumn, key.id));
    key.cascadeDelete = constraint.onDelete == ast::ReferenceAction::Cascade;
    key.cascadeUpdate = constraint.onUpdate == ast::ReferenceAction::Cascade;
    key.parentColumns = constraint.parentColumns;
    key.parentTable = constraint.parent.name;
    for (std::string& own : key.columns) {
        const ColumnDef* found = findColumn(own);
        if (found == nullptr) {
            throw constraintError(errorMessage<1769>(key.name, own, table_.name));
        }
        own = found->name;
    }
    if (!constraint.parent.database.empty() && !sameName(constraint.parent.database, database_->name())) {
        throw constraintError(errorMessage<1763>(constraint.parent.written()));
    }
    const std::string schema = constraint.parent.schema.empty() ? "dbo" : constraint.parent.schema;
    const bool own = sameName(constraint.parent.name, table_.name) && sameName(schema, table_.schema);
    const auto parent = own ? nullptr : context_.connection.catalog(*database_)->find(schema, constraint.parent.name);
    if (!own && (!parent || parent->kind != ObjectKind::Table)) {
        throw constraintError(errorMessage<1767>(key.name, constraint.parent.written()));
    }
    matchParent(key, own ? table_ : *parent);
    table_.foreignKeys.push_back(std::move(key));
}

// Which of the parent's keys is meant, and whether the types fit.
void TableBuilder::matchParent(ForeignKeyDef& key, const ObjectDef& parent) {
    key.parentId = parent.id;
    key.parentSchema = parent.schema;
    key.parentTable = parent.name;
    if (key.parentColumns.empty()) {
        const auto primary = std::find_if(parent.indexes.begin(), parent.indexes.end(),
                                          [](const IndexDef& index) { return index.primaryKey; });
        if (primary == parent.indexes.end()) {
            throw constraintError(errorMessage<1773>(key.name, parent.name));
        }
        for (const IndexDef::Key& k : primary->keys) key.parentColumns.push_back(k.column);
    }
    if (key.parentColumns.size() != key.columns.size()) {
        throw constraintError(errorMessage<8139>(table_.name));
    }
    for (std::string& column : key.parentColumns) {
        const ColumnDef* found = parent.findColumn(column);
        if (found == nullptr) {
            throw constraintError(errorMessage<1770>(key.name, column, parent.name));
        }
        column = found->name;
    }
    const bool isKey = std::any_of(parent.indexes.begin(), parent.indexes.end(), [&](const IndexDef& index) {
        return index.unique && index.filter.empty() && index.keys.size() == key.parentColumns.size() &&
               std::all_of(index.keys.begin(), index.keys.end(), [&](const IndexDef::Key& k) {
                   return std::find(key.parentColumns.begin(), key.parentColumns.end(), k.column) !=
                          key.parentColumns.end();
               });
    });
    if (!isKey) {
        throw constraintError(errorMessage<1776>(parent.name, key.name));
    }
    for (std::size_t i = 0; i < key.columns.size(); ++i) {
        Type own = findColumn(key.columns[i])->type;
        Type theirs = parent.findColumn(key.parentColumns[i])->type;
        own.numericName = theirs.numericName = false;
        const std::string pair = "'" + parent.name + "." + key.parentColumns[i] + "'";
        const std::string reference = "'" + table_.name + "." + key.columns[i] + "' in foreign key '" + key.name + "'.";
        if (own.id != theirs.id) {
            throw constraintError(errorMessage<1778>(pair, reference));
        }
        const bool sized =
            own.length == theirs.length && own.precision == theirs.precision && own.scale == theirs.scale;
        if (!sized && !isCharacter(own.id) && !isBinary(own.id)) {
            throw constraintError(errorMessage<1753>(pair, reference));
        }
    }
}

}  // namespace sandbox
