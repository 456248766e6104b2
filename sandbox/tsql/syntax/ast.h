// The syntax tree of a batch: statements, control flow and settings. Owned by whoever called the parser; the binder and
// the interpreter read it. Extents and places refer to the text that was parsed, which the tree does not keep.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "sandbox/tsql/syntax/ast_definition.h"

namespace sandbox::ast {

struct SelectStatement {
    QueryPtr query;
};

// --- variables and settings

struct Declare {
    struct Item {
        Place place;
        std::string name;                        // "@v"
        TypeName type;                           // unset for a table
        ExprPtr value;                           // or null
        std::unique_ptr<TableDefinition> table;  // DECLARE @t TABLE (...)
        bool cursor = false;                     // DECLARE @c CURSOR
    };
    std::vector<Item> items;
};

struct SetVariable {
    std::string variable;
    AssignOp op = AssignOp::Set;
    ExprPtr value;
};

// SET NOCOUNT ON, SET ANSI_NULLS, ANSI_WARNINGS ON, SET LOCK_TIMEOUT 5000, SET STATISTICS IO ON ("STATISTICS IO").
struct SetOption {
    std::vector<std::string> names;  // upper case
    std::optional<bool> on;          // set for ON and OFF
    ExprPtr value;                   // the value of other options: a literal (a bare word is text) or a variable
};

struct SetIdentityInsert {
    ObjectName table;
    bool on = false;
};

enum class Isolation { ReadUncommitted, ReadCommitted, RepeatableRead, Serializable, Snapshot };

struct SetIsolation {
    Isolation level;
};

struct Use {
    std::string database;
};

// --- control flow

struct Block {  // BEGIN ... END
    Statements body;
};

struct If {
    ExprPtr condition;
    StatementPtr then;
    StatementPtr otherwise;  // or null
};

struct While {
    ExprPtr condition;
    StatementPtr body;
};

struct Break {};
struct Continue {};

struct Label {
    std::string name;  // without its colon
};

struct Goto {
    std::string label;
};

struct Return {
    ExprPtr value;  // or null
};

struct TryCatch {
    Statements tryBody;
    Statements catchBody;
};

struct WaitFor {
    bool isDelay = true;  // false: TIME
    ExprPtr value;        // text literal or variable
};

// --- messages

struct Print {
    ExprPtr value;
};

// RAISERROR (message, severity, state, arguments...) WITH ...; also the old form RAISERROR number text.
struct RaiseError {
    ExprPtr message;  // a number or a text
    ExprPtr severity;
    ExprPtr state;
    ExprList arguments;
    bool noWait = false;
    bool log = false;
    bool setError = false;
    bool oldForm = false;  // severity and state are null
};

struct Throw {
    ExprPtr number;  // null, and the others with it: throw again
    ExprPtr message;
    ExprPtr state;
};

// --- calls

struct ExecArgument {
    Place place;
    std::string name;  // "@a", or empty: by place
    ExprPtr value;     // literal (a bare word is text), variable, global variable or DefaultValue
    bool output = false;
};

struct Execute {
    std::string returnVariable;  // "@r", or empty
    std::optional<ObjectName> procedure;
    std::string procedureVariable;  // EXEC @p ..., or empty
    std::vector<ExecArgument> arguments;
    ExprList text;          // EXEC ('..' + @x): the parts to be joined; else empty
    bool implicit = false;  // called without EXEC at the batch's beginning
};

// --- transactions

struct Transaction {
    enum class Kind { Begin, Commit, Rollback, Save };
    Kind kind;
    std::string name;      // or empty
    std::string variable;  // the name is in a variable, or empty
};

// --- cursors

struct DeclareCursor {
    std::string name;
    std::vector<std::string> options;  // upper case: "LOCAL", "FAST_FORWARD"
    QueryPtr query;
};

struct CursorCommand {
    enum class Kind { Open, Fetch, Close, Deallocate };
    Kind kind;
    std::string name;  // a cursor variable with its "@"
    bool global = false;
    std::string direction;          // Fetch: "NEXT", "PRIOR", "FIRST", "LAST", "ABSOLUTE", "RELATIVE"
    ExprPtr distance;               // ABSOLUTE, RELATIVE
    std::vector<std::string> into;  // Fetch: variables
};

// --- administration

struct Dbcc {
    std::string name;                  // upper case
    ExprList arguments;                // literals; bare words as text
    std::vector<std::string> options;  // WITH ..., upper case
};

struct Kill {
    ExprPtr spid;
};

struct Checkpoint {};

// INSERT BULK t (column type NULL COLLATE x, ...) WITH (...), as bulk load clients send it.
struct InsertBulk {
    struct Column {
        Place place;
        std::string name;
        TypeName type;
        std::optional<bool> nullable;
        std::string collation;
    };
    ObjectName table;
    std::vector<Column> columns;
    std::vector<std::string> options;  // upper case: "TABLOCK", "CHECK_CONSTRAINTS", "KEEP_NULLS"
};

struct Statement {
    using Node = std::variant<SelectStatement, Insert, Update, Delete, Merge, Truncate,                      //
                              Declare, SetVariable, SetOption, SetIdentityInsert, SetIsolation, Use,         //
                              Block, If, While, Break, Continue, Label, Goto, Return, TryCatch, WaitFor,     //
                              Print, RaiseError, Throw, Execute, Transaction, DeclareCursor, CursorCommand,  //
                              CreateTable, AlterTable, CreateIndex, DropIndex, DropObjects, CreateView,      //
                              CreateProcedure, CreateDatabase, AlterDatabase, DropDatabase, CreateSchema,    //
                              DropSchema, Permission, Dbcc, Kill, Checkpoint, InsertBulk, Unsupported>;
    Place place;
    Extent text;
    Node node;
};

template <typename Node>
[[nodiscard]] const Node* as(const Statement& statement) {
    return std::get_if<Node>(&statement.node);
}

struct Batch {
    Statements statements;
};

// Calls visit for each statement, outer before inner, in the order of the text. Does not enter procedure bodies.
void forEachStatement(const Statements& statements, const std::function<void(const Statement&)>& visit);

// Calls visit for each expression directly under this one. Subqueries are not entered.
void forEachChild(const Expr& expr, const std::function<void(const Expr&)>& visit);

// Calls visit for each expression under this one, itself first. Subqueries are not entered.
void forEachExpr(const Expr& expr, const std::function<void(const Expr&)>& visit);

// A compact text of a tree, for tests and for looking at one: "(select (items (+ 1 2)))".
[[nodiscard]] std::string dump(const Expr& expr);
[[nodiscard]] std::string dump(const Query& query);
[[nodiscard]] std::string dump(const Statement& statement);
[[nodiscard]] std::string dump(const Batch& batch);

}  // namespace sandbox::ast
