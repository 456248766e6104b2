// What a database holds, as the binder and the interpreter look at it: tables with their columns, indexes and
// constraints; views and procedures with their texts.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/store/values/type.h"

namespace sandbox {

struct ColumnDef {
    std::string name;
    Type type;
    bool nullable = true;
    bool identity = false;
    std::int64_t identitySeed = 1;
    std::int64_t identityIncrement = 1;
    std::string collation;       // character columns; empty: the database's
    std::string defaultText;     // T-SQL expression, empty: none
    std::string defaultName;     // its constraint's name
    std::int32_t defaultId = 0;  // its constraint's object_id
    std::string computedText;    // T-SQL expression of a computed column, empty: stored
    int columnId = 0;            // 1-based, never used again in its table
};

struct IndexDef {
    std::string name;
    bool unique = false;
    bool primaryKey = false;
    bool uniqueConstraint = false;
    bool clustered = false;
    struct Key {
        std::string column;
        bool descending = false;
    };
    std::vector<Key> keys;
    std::vector<std::string> included;
    // The rows that the index has: those that meet every condition. Empty: all rows.
    struct Condition {
        std::string column;
        bool null = false;  // IS NULL, else IS NOT NULL
    };
    std::vector<Condition> filter;
    int indexId = 0;                // 1 where clustered, else 2 and up
    std::int32_t constraintId = 0;  // object_id of a primary key or unique constraint
};

struct ForeignKeyDef {
    std::string name;
    std::vector<std::string> columns;
    std::int32_t parentId = 0;  // object_id of the table it refers to
    std::string parentSchema = "dbo";
    std::string parentTable;
    std::vector<std::string> parentColumns;
    bool cascadeDelete = false;
    bool cascadeUpdate = false;
    std::int32_t id = 0;    // its object_id
    bool disabled = false;  // NOCHECK CONSTRAINT: not checked
};

struct CheckDef {
    std::string name;
    std::string text;       // T-SQL condition
    std::string column;     // of a column's own check, else empty
    std::int32_t id = 0;    // its object_id
    bool disabled = false;  // NOCHECK CONSTRAINT: not checked
};

struct ParameterDef {
    std::string name;  // with its "@"
    Type type;
    bool output = false;
    bool hasDefault = false;
};

enum class ObjectKind { Table, View, Procedure, Function, Schema };

struct ObjectDef {
    std::int32_t id = 0;  // object_id
    std::string name;     // as created; names are compared without case
    std::string schema = "dbo";
    ObjectKind kind = ObjectKind::Table;
    std::string text;           // views, procedures, functions: the whole CREATE statement
    std::int64_t created = 0;   // datetime ticks
    std::int64_t modified = 0;  // datetime ticks

    std::vector<ParameterDef> parameters;  // procedures
    std::vector<ColumnDef> columns;        // tables; views: names and types of their result

    // Tables only.
    std::vector<IndexDef> indexes;
    std::vector<ForeignKeyDef> foreignKeys;
    std::vector<CheckDef> checks;
    std::string storageName;  // its table in SQLite, unquoted; its columns have their own names there, rows a _rowid_
    int lastColumnId = 0;     // of the columns that ever were
    bool system = false;      // a catalogue view: read only

    [[nodiscard]] const ColumnDef* findColumn(std::string_view columnName) const;  // nullptr when none
};

// One version of one database's catalogue. Immutable once published: a change makes a new one.
class Catalog {
public:
    Catalog();  // with the schemas that every database has

    [[nodiscard]] std::shared_ptr<const ObjectDef> find(std::string_view schema, std::string_view name) const;
    void put(std::shared_ptr<const ObjectDef> object);  // adds or replaces by schema and name
    void erase(const ObjectDef& object);
    [[nodiscard]] std::vector<std::shared_ptr<const ObjectDef>> all() const;  // but for the schemas
    [[nodiscard]] std::shared_ptr<const ObjectDef> findById(std::int32_t id) const;
    // Schemas have names and ids of their own. nullptr where there is none.
    [[nodiscard]] std::shared_ptr<const ObjectDef> findSchema(std::string_view name) const;
    [[nodiscard]] std::vector<std::shared_ptr<const ObjectDef>> schemas() const;  // by id
    // Whether an object or a constraint of a table has the name already.
    [[nodiscard]] bool nameTaken(std::string_view schema, std::string_view name) const;
    // The tables whose foreign keys name this one, itself among them where it does.
    [[nodiscard]] std::vector<std::shared_ptr<const ObjectDef>> childrenOf(const ObjectDef& parent) const;

    std::uint64_t version = 0;

private:
    std::map<std::string, std::shared_ptr<const ObjectDef>, std::less<>> objects_;  // by folded "schema.name"
    std::map<std::string, std::shared_ptr<const ObjectDef>, std::less<>> schemas_;  // by folded name
};

}  // namespace sandbox
