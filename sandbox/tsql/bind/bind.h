// The binder: resolves the names and types of a statement against the catalogue, inserts every conversion, and turns
// each query into one SQLite statement over typed storage. Used by the interpreter (which prepares and steps what comes
// out) and by the statements that write (which get the rows and values to write).
//
// Errors are thrown as SqlError, all of one statement together (207 for each missing column). A missing table or view
// is a MissingObject: the caller defers it to the moment when the statement runs. Where a table is missing nothing else
// of the statement is reported.
//
// Generated SQL calls functions named t_...: those of the function table (sandbox/store/functions), and
// two that the session registers:
//   t_var(slot)             the variable's value now, in its storage form
//   t_set_var(slot, value)  stores a value of the variable's type, in storage form, and gives it back
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "sandbox/store/databases/catalog.h"
#include "sandbox/store/values/error.h"
#include "sandbox/store/values/type.h"
#include "sandbox/store/values/value.h"
#include "sandbox/tsql/bind/result_column.h"
#include "sandbox/tsql/syntax/ast.h"

namespace sandbox {

// Error 208: the statement may still succeed once the object is there.
class MissingObject : public SqlError {
public:
    using SqlError::SqlError;
};

// An object as a name in a statement finds it.
struct ResolvedObject {
    std::shared_ptr<const ObjectDef> object;  // a table or view; catalogue views and virtual tables are tables
    std::string database;                     // its database's name; what a view's text is bound in
    std::string attachedAs;                   // SQLite schema ("main", "temp", "db3"), unquoted
    std::string passed{};  // the schema that was looked in first: an object made there takes this one's place
};

struct VariableRef {
    int slot = 0;
    Type type;
};

struct BindOptions {
    bool quotedIdentifier = true;
    bool ansiNulls = true;
    bool ansiWarnings = true;
    bool concatNullYieldsNull = true;
};

// What the binder asks the session. The callbacks are called only while a bind function runs.
struct BindContext {
    // database and schema are empty where the statement names none (then the current database; dbo, then sys). Names
    // come without brackets, as written: "#x" is a temporary table, "@x" a table variable. Empty when there is none.
    std::function<std::optional<ResolvedObject>(std::string_view database, std::string_view schema,
                                                std::string_view name)>
        find;
    std::function<std::optional<VariableRef>(std::string_view name)> variable;  // name with its "@"
    std::string database;                                                       // current
    std::string schema;  // of the module that is bound: where names without one are looked up first; empty: dbo
    std::string collation = "Danish_Norwegian_CI_AS";  // of the current database
    BindOptions options;
    int line = 0;  // of the statement that is bound: where a missing object is reported
};

// What the caller binds to ?1, ?2 ... before the first step: the value in storage form for its type.
struct Parameter {
    enum class Kind {
        Variable,  // slot: the variable's value when the statement starts
        Global,    // name: a row of globalVariables(), upper case: "@@ROWCOUNT"
        Literal,   // literal
        Input,  // slot: place in the row that the caller feeds in, from 1 (bindInsertRows); 0: the row id (bindCheck)
    };
    Kind kind = Kind::Literal;
    int slot = 0;
    std::string name;
    Type type;
    Value literal;
};

// The new table of SELECT ... INTO; its columns are BoundQuery::columns in order.
struct IntoTarget {
    std::string database, schema, name;  // empty where not named
    int line = 0;
    std::vector<ColumnDef> columns;  // types, nullability, identity as SQL Server would make them
};

struct BoundQuery {
    std::string sql;
    std::vector<Parameter> parameters;
    std::vector<ResultColumn> columns;  // SQLite column i holds column i in its storage form
    // Each object bound against. The bound query is stale once find() gives another definition for one of them.
    std::vector<ResolvedObject> reads;
    // SELECT @a = expr: every step assigns through t_set_var by itself; rows go nowhere, their count is @@ROWCOUNT.
    bool assigns = false;
    std::optional<IntoTarget> into;
};

// INSERT: source gives one row per row to insert, with values already converted to the columns' types, defaults
// included. source may read the target: its rows are to be held before the first one is written.
struct BoundInsert {
    ResolvedObject target;
    struct Column {
        const ColumnDef* column = nullptr;  // in target.object
        int source = -1;                    // SQLite column of source; -1: the next identity value or row version
    };
    std::vector<Column> columns;  // every stored column of the table, in table order
    // A value is given for the identity column: the caller raises 544 where IDENTITY_INSERT is OFF, and 545 where it is
    // ON and this is false.
    bool explicitIdentity = false;
    // INSERT ... EXEC: no source query; the caller runs the procedure, and feeds each row through bindInsertRows.
    bool fromExecute = false;
    std::vector<std::string> filled;  // of that: the columns of target that the rows fill, in their order
    BoundQuery source;
};

// UPDATE: source gives the row id, then a value for each of columns; the variables of SET @v = ... are assigned by
// stepping. With mayRepeat a row id can come again (joins): only its first row counts, also in the row count.
struct BoundUpdate {
    ResolvedObject target;
    std::vector<const ColumnDef*> columns;  // SQLite column i + 1 of source is the new value of columns[i]
    bool mayRepeat = false;
    BoundQuery source;
};

// DELETE: source gives row ids; with mayRepeat one may come again.
struct BoundDelete {
    ResolvedObject target;
    bool mayRepeat = false;
    BoundQuery source;
};

// Leaves only the errors that SQL Server finds while it parses (severity 15), where there are such: a text that has one
// is not looked at any further. False where there is none.
bool keepParseErrors(std::vector<Message>& errors);

// The @@ variables and their types; the session knows their values.
struct GlobalVariable {
    std::string_view name;
    Type type;
};
[[nodiscard]] std::span<const GlobalVariable> globalVariables();

[[nodiscard]] BoundQuery bindSelect(const BindContext& context, const ast::Query& query);
[[nodiscard]] BoundInsert bindInsert(const BindContext& context, const ast::Insert& statement);
[[nodiscard]] BoundUpdate bindUpdate(const BindContext& context, const ast::Update& statement);
[[nodiscard]] BoundDelete bindDelete(const BindContext& context, const ast::Delete& statement);

// One row with one column. wanted: the type to convert to as an assignment does (SET, arguments, RETURN); none: the
// expression's own type.
[[nodiscard]] BoundQuery bindScalar(const BindContext& context, const ast::Expr& expression,
                                    std::optional<Type> wanted = std::nullopt);
// One row with one int: 1 where the condition is true, else 0 (IF, WHILE).
[[nodiscard]] BoundQuery bindCondition(const BindContext& context, const ast::Expr& condition);

// A source that turns rows of the given types (parameters of kind Input) into rows of the table: one row a run. For
// INSERT ... EXEC and INSERT BULK. columns: the names to fill in order; empty: all that an INSERT without a list fills.
[[nodiscard]] BoundInsert bindInsertRows(const BindContext& context, const ResolvedObject& target,
                                         const std::vector<std::string>& columns, const std::vector<Type>& types,
                                         bool keepIdentity);

// The rows of a table that break a condition such as a CHECK's: their row ids. oneRow: only the row whose id is the
// Input parameter.
[[nodiscard]] BoundQuery bindCheck(const BindContext& context, const ResolvedObject& table, std::string_view condition,
                                   bool oneRow);
// A column's default as one row with one value of the column's type; NULL where it has none.
[[nodiscard]] BoundQuery bindDefault(const BindContext& context, const ColumnDef& column);

}  // namespace sandbox
