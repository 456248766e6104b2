// From the syntax of a table's columns and constraints to its catalogue entry, with all the errors that SQL Server
// raises on the way. CREATE TABLE, table variables and ALTER TABLE ADD build with it; nothing is written here.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/tsql/execute/execute_rows.h"

namespace sandbox {

class TableBuilder {
public:
    // table: the entry so far, with its id; the new one has no columns.
    TableBuilder(const ExecuteContext& context, std::shared_ptr<Database> database, ObjectDef table, bool isNew);

    void add(const ast::TableDefinition& definition);
    void addColumn(const ast::ColumnDefinition& column);
    // column: of a column's own constraint, else nullptr.
    void addConstraint(const ast::Constraint& constraint, const ast::ColumnDefinition* column);
    void addIndex(IndexDef index);

    [[nodiscard]] ObjectDef& table() { return table_; }
    [[nodiscard]] const std::shared_ptr<Database>& database() const { return database_; }

private:
    [[nodiscard]] Message invalidKey(const std::string& column) const;  // of 1919
    void addKey(const ast::Constraint& constraint, const ast::ColumnDefinition* column);
    void addForeignKey(const ast::Constraint& constraint, const ast::ColumnDefinition* column);
    void addCheck(const ast::Constraint& constraint, const ast::ColumnDefinition* column);
    void addDefault(const ast::Constraint& constraint, const ast::ColumnDefinition* column);
    void matchParent(ForeignKeyDef& key, const ObjectDef& parent);

    void typeComputed(ColumnDef& column, const ast::Expr& expression);

    [[nodiscard]] ColumnDef* findColumn(std::string_view name);
    [[nodiscard]] std::string constraintName(const std::string& given, const std::string& madeUp);
    [[nodiscard]] std::string madeUpName(std::string_view kind, std::string_view column, std::int32_t id) const;
    [[nodiscard]] std::vector<IndexDef::Key> keysOf(const std::vector<ast::IndexColumn>& columns,
                                                    const ast::ColumnDefinition* column) const;

    const ExecuteContext& context_;
    std::shared_ptr<Database> database_;
    ObjectDef table_;
    bool isNew_;
};

// Where a CREATE or ALTER puts an object: the database of its name, or the session's temporary tables. Raises 2702
// for a database that does not exist and 2760 for a schema that does not, or that is the server's own.
struct ObjectPlace {
    std::shared_ptr<Database> database;
    std::string schema;
};
[[nodiscard]] ObjectPlace placeOf(const ExecuteContext& context, const ast::ObjectName& name);

// A column's collation: the one given, else its database's; empty where that is the default of all.
[[nodiscard]] std::string collationOf(const Database& database, const Type& type, const std::string& given);

// Raises 2738 where the column is a second timestamp of the table.
void requireOneRowVersion(const ObjectDef& table, const ColumnDef& column);

// The smallest index id that is free: 1 for a clustered one.
[[nodiscard]] int freeIndexId(const ObjectDef& table, bool clustered);

}  // namespace sandbox
