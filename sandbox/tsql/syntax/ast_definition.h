// The syntax tree of the statements that define tables, indexes, views, procedures and databases.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "sandbox/tsql/syntax/ast_query.h"

namespace sandbox::ast {

struct Statement;
using StatementPtr = std::unique_ptr<Statement>;
using Statements = std::vector<StatementPtr>;

struct IndexColumn {
    Place place;
    std::string name;
    bool descending = false;
};

enum class ReferenceAction { NoAction, Cascade, SetNull, SetDefault };

// A constraint of a column or of a table.
struct Constraint {
    enum class Kind { PrimaryKey, Unique, ForeignKey, Check, Default };
    Place place;
    Kind kind;
    std::string name;                        // empty: the server makes one up
    std::optional<bool> clustered;           // PrimaryKey, Unique
    std::vector<IndexColumn> columns;        // PrimaryKey, Unique, ForeignKey; empty: the column it stands at
    ObjectName parent;                       // ForeignKey
    std::vector<std::string> parentColumns;  // ForeignKey; empty: the parent's primary key
    ReferenceAction onDelete = ReferenceAction::NoAction;
    ReferenceAction onUpdate = ReferenceAction::NoAction;
    ExprPtr expr;           // Check, Default
    std::string exprText;   // its text as written
    std::string forColumn;  // Default added to a table: FOR column
    bool withValues = false;
};

struct Identity {
    std::int64_t seed = 1;
    std::int64_t increment = 1;
};

struct ColumnDefinition {
    Place place;
    std::string name;
    TypeName type;             // not set for computed columns
    ExprPtr computed;          // or null
    std::string computedText;  // its text as written
    bool persisted = false;
    std::optional<bool> nullable;  // none: neither NULL nor NOT NULL was said
    std::optional<Identity> identity;
    bool rowGuid = false;
    std::string collation;
    std::vector<Constraint> constraints;
};

// Also the inside of DECLARE @t TABLE (...).
struct TableDefinition {
    std::vector<ColumnDefinition> columns;
    std::vector<Constraint> constraints;
    struct InlineIndex {
        std::string name;
        bool unique = false;
        std::optional<bool> clustered;
        std::vector<IndexColumn> columns;
    };
    std::vector<InlineIndex> indexes;
};

struct CreateTable {
    ObjectName table;
    TableDefinition definition;
};

struct AddToTable {
    TableDefinition definition;
    bool withNoCheck = false;
};

struct AlterColumn {
    ColumnDefinition column;
};

struct DropFromTable {
    struct Item {
        Place place;
        bool isColumn = false;  // false: a constraint
        bool ifExists = false;
        std::string name;
    };
    std::vector<Item> items;
};

struct CheckConstraints {
    bool enable = true;      // CHECK or NOCHECK
    bool withCheck = false;  // WITH CHECK: existing rows too
    bool all = false;
    std::vector<std::string> names;
};

// ENABLE or DISABLE TRIGGER.
struct SwitchTrigger {
    bool enable = true;
};

struct AlterTable {
    using Add = AddToTable;
    using AlterColumn = ast::AlterColumn;
    using Drop = DropFromTable;
    using DropItem = DropFromTable::Item;
    using CheckConstraint = CheckConstraints;
    using Trigger = SwitchTrigger;
    ObjectName table;
    std::variant<Add, AlterColumn, Drop, CheckConstraint, Trigger> action;
};

struct CreateIndex {
    std::string name;
    Place namePlace;
    bool unique = false;
    bool clustered = false;
    ObjectName table;
    std::vector<IndexColumn> columns;
    std::vector<std::string> included;
    ExprPtr where;  // filtered index, or null
    std::string whereText;
    bool dropExisting = false;
    bool ignoreDuplicates = false;
};

struct DropIndex {
    struct Item {
        Place place;
        std::string name;
        ObjectName table;
    };
    std::vector<Item> items;
    bool ifExists = false;
};

// DROP TABLE, VIEW, PROCEDURE, FUNCTION, TRIGGER, with one name or more.
struct DropObjects {
    enum class Kind { Table, View, Procedure, Function, Trigger };
    Kind kind;
    bool ifExists = false;
    std::vector<ObjectName> names;
};

enum class Verb { Create, Alter, CreateOrAlter };

struct CreateView {
    Verb verb = Verb::Create;
    Extent verbText;  // "CREATE", "ALTER" or "CREATE OR ALTER": the stored text has CREATE here
    ObjectName name;
    std::vector<std::string> columns;
    QueryPtr query;
    bool checkOption = false;
    bool schemaBinding = false;
};

struct Parameter {
    Place place;
    std::string name;  // "@a"
    TypeName type;
    ExprPtr defaultValue;  // a literal (also a signed one, or a bare word as text), or null
    bool output = false;
};

struct CreateProcedure {
    Verb verb = Verb::Create;
    Extent verbText;
    ObjectName name;
    std::vector<Parameter> parameters;
    Statements body;
    bool recompile = false;
    bool encrypted = false;
};

struct CreateDatabase {
    std::string name;
    std::string collation;  // empty: the server's
};

struct AlterDatabase {
    std::string name;     // empty: CURRENT
    std::string newName;  // MODIFY NAME = x, or empty
    std::string collation;
    std::vector<std::string> options;  // SET ...: "RECOVERY SIMPLE", one text an option, words in upper case
};

struct DropDatabase {
    std::vector<std::string> names;
    bool ifExists = false;
};

struct CreateSchema {
    std::string name;
    std::string owner;  // AUTHORIZATION, or empty
};

struct DropSchema {
    std::string name;
    bool ifExists = false;
};

// GRANT, DENY, REVOKE.
struct Permission {
    std::string verb;                      // upper case
    std::vector<std::string> permissions;  // upper case words
    std::optional<ObjectName> object;
    std::vector<std::string> principals;
};

// A statement that SQL Server knows and this server does not: raises 40510 with what when it is reached.
struct Unsupported {
    std::string what;  // "CREATE FUNCTION", "BACKUP"
    std::string name;  // what it would make, where it has a name
};

}  // namespace sandbox::ast
