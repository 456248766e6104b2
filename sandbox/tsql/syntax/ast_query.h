// The syntax tree of queries and of the statements that change rows.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "sandbox/tsql/syntax/ast_expression.h"

namespace sandbox::ast {

struct TableRef;
using TableRefPtr = std::unique_ptr<TableRef>;

enum class AssignOp { Set, Add, Subtract, Multiply, Divide, Modulo, BitAnd, BitOr, BitXor };

// --- tables

// What stands in FROM under a name of its own. hints are upper case ("NOLOCK", "INDEX"), arguments dropped.
struct NamedTable {
    ObjectName name;
    std::string alias;  // empty: none
    std::vector<std::string> hints;
};

struct VariableTable {
    std::string variable;  // "@t"
    std::string alias;
    std::vector<std::string> hints;
};

struct DerivedTable {
    QueryPtr query;
    std::string alias;
    std::vector<std::string> columns;  // empty: the query's own names
};

// (VALUES (..), (..)) AS alias (columns)
struct ValuesTable {
    std::vector<ExprList> rows;  // never empty
    std::string alias;
    std::vector<std::string> columns;
};

struct FunctionTable {
    ObjectName name;
    ExprList arguments;
    std::string alias;
    std::vector<std::string> columns;
};

enum class JoinKind { Inner, Left, Right, Full, Cross, CrossApply, OuterApply };

struct Join {
    JoinKind kind;
    TableRefPtr left;
    TableRefPtr right;
    ExprPtr on;  // null for cross joins and applies
};

struct TableRef {
    using Node = std::variant<NamedTable, VariableTable, DerivedTable, ValuesTable, FunctionTable, Join>;
    Place place;
    Node node;
};

// --- queries

struct Top {
    ExprPtr count;
    bool percent = false;
    bool withTies = false;
};

struct SelectItem {
    enum class Kind { Expression, Star, Assign };
    Place place;
    Kind kind = Kind::Expression;
    ExprPtr expr;                     // Expression, Assign
    std::string alias;                // Expression; empty: none given
    std::optional<ObjectName> table;  // Star: "x.*"
    std::string variable;             // Assign: "@v"
    AssignOp op = AssignOp::Set;      // Assign
};

struct Select {
    Place place;
    bool distinct = false;
    std::optional<Top> top;
    std::vector<SelectItem> items;
    std::optional<ObjectName> into;
    std::vector<TableRefPtr> from;  // the comma list; empty: no FROM
    ExprPtr where;
    ExprList groupBy;
    ExprPtr having;
};

enum class SetOperator { Union, UnionAll, Except, Intersect };

struct QueryBody;
using QueryBodyPtr = std::unique_ptr<QueryBody>;

struct SetOperation {
    SetOperator op;
    QueryBodyPtr left;
    QueryBodyPtr right;
};

struct QueryBody {
    Place place;
    std::variant<Select, SetOperation> node;
};

struct Cte {
    Place place;
    std::string name;
    std::vector<std::string> columns;
    QueryPtr query;
};

struct Query {
    Place place;
    std::vector<Cte> ctes;  // of a SELECT statement only; INSERT, UPDATE, DELETE and MERGE have their own
    QueryBodyPtr body;
    std::vector<OrderItem> orderBy;
    ExprPtr offset;                    // OFFSET n ROWS
    ExprPtr fetch;                     // FETCH NEXT n ROWS ONLY
    bool forXml = false;               // to be refused
    std::vector<std::string> options;  // OPTION (...), upper case words
};

// --- changes

// The table that a statement changes: a table, view or FROM alias, or a table variable.
struct Target {
    Place place;
    ObjectName name;       // unset when there is a variable
    std::string variable;  // "@t", or empty
    std::vector<std::string> hints;
};

struct Output {
    std::vector<SelectItem> items;  // columns of inserted and deleted
    std::optional<Target> into;
    std::vector<std::string> columns;
};

struct Execute;  // ast.h

struct Insert {
    struct DefaultValues {};
    using Rows = std::vector<ExprList>;  // a cell may be a DefaultValue
    std::vector<Cte> ctes;
    std::optional<Top> top;
    Target target;
    std::vector<std::string> columns;  // empty: none given
    std::vector<Place> columnPlaces;   // beside columns
    std::optional<Output> output;
    std::variant<Rows, DefaultValues, QueryPtr, std::unique_ptr<Execute>> source;

    Insert();
    Insert(Insert&&) noexcept;
    Insert& operator=(Insert&&) noexcept;
    ~Insert();
};

// column = expr, @v = expr, @v = column = expr.
struct Assignment {
    Place place;
    std::optional<ColumnRef> column;
    std::string variable;  // or empty
    AssignOp op = AssignOp::Set;
    ExprPtr expr;  // may be a DefaultValue
};

struct Update {
    std::vector<Cte> ctes;
    std::optional<Top> top;
    Target target;
    std::vector<Assignment> assignments;
    std::optional<Output> output;
    std::vector<TableRefPtr> from;
    ExprPtr where;
    std::vector<std::string> options;
};

struct Delete {
    std::vector<Cte> ctes;
    std::optional<Top> top;
    Target target;
    std::optional<Output> output;
    std::vector<TableRefPtr> from;  // the second FROM; empty: none
    ExprPtr where;
    std::vector<std::string> options;
};

struct Merge {
    enum class When { Matched, NotMatchedByTarget, NotMatchedBySource };
    enum class Action { Update, Delete, Insert };
    struct Branch {
        Place place;
        When when;
        ExprPtr condition;  // AND ..., or null
        Action action;
        std::vector<Assignment> assignments;  // Update
        std::vector<std::string> columns;     // Insert
        ExprList values;                      // Insert; empty: DEFAULT VALUES
    };
    std::vector<Cte> ctes;
    std::optional<Top> top;
    Target target;
    std::string alias;
    TableRefPtr source;
    ExprPtr on;
    std::vector<Branch> branches;
    std::optional<Output> output;
    std::vector<std::string> options;
};

struct Truncate {
    ObjectName table;
};

}  // namespace sandbox::ast
