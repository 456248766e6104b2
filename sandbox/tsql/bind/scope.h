// What an expression may name: the tables of a FROM clause with their columns, within those of the queries around it.
// Also the typed SQL fragment (Bound) that every expression becomes. Used by the binder's own files only.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "sandbox/store/databases/catalog.h"
#include "sandbox/store/values/type.h"
#include "sandbox/store/values/value.h"
#include "sandbox/tsql/bind/bind.h"
#include "sandbox/tsql/syntax/ast_expression.h"

namespace sandbox::binder {

// Where a text's collation comes from; of two operands the higher one decides (documented collation precedence).
enum class Coercibility { None, Default, Implicit, Conflict, Explicit };

struct SourceColumn;

// A SQLite expression over typed storage. SQL of a value is safe as an operand: a name, a call, or in parentheses.
struct Bound {
    std::string sql = "NULL";
    Type type;
    bool nullable = true;
    Coercibility coercibility = Coercibility::None;
    std::string collation;
    std::string conflict;                                              // of a Conflict: "a" and "b" in the add operator
    const SourceColumn* column = nullptr;                              // set for a column and nothing else
    std::optional<Value> literal;                                      // set for a literal and nothing else
    std::optional<std::pair<std::int64_t, std::int64_t>> newIdentity;  // seed and increment of IDENTITY(type, ...)
    bool isVariable = false;                                           // set for a variable and nothing else
    bool constant = false;                                             // the same for all rows
    bool failed = false;  // an error was reported: report none that follows from it
};

// A column of a table, as a change finds it behind a view, a derived table or a CTE.
struct BaseColumn {
    std::size_t base = 0;            // place in the source's bases
    const ColumnDef* def = nullptr;  // in that table; none: derived from others, or a constant
};

struct SourceColumn {
    std::string name;
    std::string sql;  // "a1"."c2"
    Type type;
    bool nullable = true;
    bool identity = false;
    std::string collation;
    Coercibility coercibility = Coercibility::None;
    bool failed = false;
    BaseColumn base{};
};

// A table whose rows a change through a source would change, and its row id.
struct Base {
    ResolvedObject table;
    std::string row;       // SQL
    bool checked = false;  // through a view WITH CHECK OPTION
};

// Why a query cannot be changed through.
enum class NotUpdatable { No, Union, Groups };

// One table of a FROM clause.
struct Source {
    std::string exposed;  // alias, or the table's name
    bool hasAlias = false;
    ast::ObjectName name;                  // of a table or view as written
    std::string alias;                     // in SQLite, unquoted: "a1"
    std::optional<ResolvedObject> object;  // tables only
    std::vector<SourceColumn> columns;
    bool missing = false;  // a table that is not there, or one in error: columns cannot be told
    bool nullableSide = false;
    std::vector<Base> bases;  // of a table: itself; of others: only where a change is bound
    NotUpdatable notUpdatable = NotUpdatable::No;

    [[nodiscard]] const SourceColumn* find(std::string_view columnName) const;
    // "t.b", as error 8120 and its like name a column: by the table's name, not by its alias.
    [[nodiscard]] std::string display(std::string_view columnName) const;
};

// The part of a query that is being bound: some errors name it.
enum class Clause { None, Select, From, Where, GroupBy, Having, OrderBy, Values, Set };

struct ColumnCollector {
    std::string alias;
    std::vector<std::string> columns;  // SQL of the columns, in the order of their numbers
};

struct Scope {
    Scope* parent = nullptr;
    std::vector<Source*> sources;
    Clause clause = Clause::None;
    bool makesTable = false;  // of a SELECT ... INTO

    // Grouped queries: what stands outside of aggregates must be made of these.
    bool grouped = false;
    std::vector<std::string> groupKeys;  // SQL texts
    bool matchingKey = false;            // comparing with a key: columns pass
    int insideAggregate = 0;

    bool used = false;  // a column of this scope was asked for

    // Set where the columns of this scope are read through a subquery of their own (ordered assignments): each column
    // asked for is collected, and stands as column "cN" of that subquery.
    ColumnCollector* collector = nullptr;
};

struct Lookup {
    enum class Result { Found, Missing, Ambiguous, Unbound, Uncertain } result = Result::Missing;
    const SourceColumn* column = nullptr;
    const Source* source = nullptr;
    Scope* scope = nullptr;
};

// The nearest scope that knows the name wins. Uncertain: a table of the statement is missing and might have had it.
[[nodiscard]] Lookup findColumn(Scope& scope, const ast::ColumnRef& reference, std::string_view currentDatabase);
// The source that "x.*" or a target's name means; nullptr when none.
[[nodiscard]] Source* findSource(Scope& scope, const ast::ObjectName& name, std::string_view currentDatabase);

[[nodiscard]] std::string quoted(std::string_view name);  // "name" for SQLite

}  // namespace sandbox::binder
