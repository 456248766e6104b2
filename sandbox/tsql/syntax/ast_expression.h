// The syntax tree of names, types and expressions. The parser makes it, the binder reads it; conditions and values
// share one node type, and the parser lets a condition stand only where T-SQL does.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "sandbox/store/values/type.h"
#include "sandbox/store/values/value.h"

namespace sandbox::ast {

// For std::visit over a node: visit(Overloaded{[](const Literal&) {...}, [](const auto&) {...}}, expr.node).
template <typename... Functions>
struct Overloaded : Functions... {
    using Functions::operator()...;
};
template <typename... Functions>
Overloaded(Functions...) -> Overloaded<Functions...>;

struct Place {
    int line = 1;              // 1-based line of the parsed text
    std::uint32_t offset = 0;  // bytes from its beginning
};

// Part of the parsed text, in bytes: [begin, end).
struct Extent {
    std::uint32_t begin = 0;
    std::uint32_t end = 0;
};

// A table, view, procedure or function. Parts left out are empty: "db..t" has a database, no schema and a name.
struct ObjectName {
    Place place;
    std::string database;
    std::string schema;
    std::string name;  // temporary tables keep their "#"

    [[nodiscard]] bool isTemporary() const { return !name.empty() && name.front() == '#'; }
    [[nodiscard]] std::string written() const;  // "db..t", as error messages show it (no brackets)
};

// A data type as declared. An unknown or unsupported name keeps known = false (2715 when it is bound).
struct TypeName {
    Place place;
    bool known = true;
    Type type;
    std::string written;  // name without brackets and size; for 2715 and 243
};

struct Expr;
struct Query;
using ExprPtr = std::unique_ptr<Expr>;
using QueryPtr = std::unique_ptr<Query>;
using ExprList = std::vector<ExprPtr>;

struct OrderItem {
    ExprPtr expr;  // a whole number literal is a position, where the clause allows it
    bool descending = false;
};

// --- values

// Text has its own length in UTF-16 units (0 for ''), or kMax past 8000 (4000 for N''). NULL has TypeId::Null.
struct Literal {
    Typed value;
};

struct Variable {
    std::string name;  // with its "@", as written
};

struct GlobalVariable {
    std::string name;  // "@@ROWCOUNT", as written
};

struct ColumnRef {
    std::optional<ObjectName> table;  // "x." before the column: an alias, a table, or owner and table
    std::string name;                 // pseudo columns as "$IDENTITY", "$ROWGUID"

    [[nodiscard]] std::string written() const;  // "x.a"
};

enum class UnaryOp { Plus, Minus, BitNot };

struct Unary {
    UnaryOp op;
    ExprPtr operand;
};

enum class BinaryOp { Add, Subtract, Multiply, Divide, Modulo, BitAnd, BitOr, BitXor };

struct Binary {
    BinaryOp op;
    ExprPtr left;
    ExprPtr right;
};

struct Case {
    struct Branch {
        ExprPtr when;  // a value when there is an operand, a condition when there is none
        ExprPtr then;
    };
    ExprPtr operand;  // null: the searched form
    std::vector<Branch> branches;
    ExprPtr otherwise;  // null: no ELSE
};

// CAST, CONVERT, TRY_CAST, TRY_CONVERT. A char or binary type without length has got its 30 here.
struct Cast {
    ExprPtr operand;
    TypeName type;
    ExprPtr style;           // CONVERT's third argument, or null
    bool isConvert = false;  // false: CAST
    bool isTry = false;
};

// OVER (...).
struct Over {
    ExprList partitionBy;
    std::vector<OrderItem> orderBy;
    std::string frame;  // "ROWS BETWEEN 1 PRECEDING AND CURRENT ROW", or empty
};

// Functions and aggregates; also COALESCE, NULLIF, IIF (whose first argument is a condition), and CURRENT_TIMESTAMP,
// CURRENT_USER, SESSION_USER, SYSTEM_USER and USER, which have no parentheses.
struct Call {
    ObjectName name;
    ExprList arguments;
    bool distinct = false;
    bool star = false;  // COUNT(*)
    std::optional<Over> over;
};

// The first argument of DATEADD, DATEDIFF, DATENAME, DATEPART and their like.
struct DatePart {
    std::string name;  // "day", "dd", as written
};

struct Collate {
    ExprPtr operand;
    std::string collation;
};

// (SELECT ...) as a value.
struct Subquery {
    QueryPtr query;
};

// DEFAULT, in VALUES, UPDATE SET and arguments only.
struct DefaultValue {};

// --- conditions

enum class CompareOp { Equal, NotEqual, Less, LessOrEqual, Greater, GreaterOrEqual };

struct Compare {
    CompareOp op;
    ExprPtr left;
    ExprPtr right;
};

// left op ANY|ALL (query). SOME is ANY.
struct Quantified {
    CompareOp op;
    bool all = false;
    ExprPtr left;
    QueryPtr query;
};

// AND and OR, with two operands or more.
struct Logical {
    bool isAnd = true;
    ExprList operands;
};

struct Not {
    ExprPtr operand;
};

struct IsNull {
    ExprPtr operand;
    bool negated = false;
};

struct Between {
    ExprPtr operand;
    ExprPtr low;
    ExprPtr high;
    bool negated = false;
};

struct Like {
    ExprPtr operand;
    ExprPtr pattern;
    ExprPtr escape;  // or null
    bool negated = false;
};

struct In {
    ExprPtr operand;
    ExprList list;   // empty when there is a query
    QueryPtr query;  // or null
    bool negated = false;
};

struct Exists {
    QueryPtr query;
};

struct Expr {
    using Node =
        std::variant<Literal, Variable, GlobalVariable, ColumnRef, Unary, Binary, Case, Cast, Call, DatePart, Collate,
                     Subquery, DefaultValue, Compare, Quantified, Logical, Not, IsNull, Between, Like, In, Exists>;
    Place place;
    Node node;
    int height = 1;  // nodes on the longest path downwards; the parser keeps it within kMaxHeight
    Extent text;     // the expression as written
};

inline constexpr int kMaxHeight = 1000;

// Whether it is a condition rather than a value.
[[nodiscard]] bool isCondition(const Expr& expr);

template <typename Node>
[[nodiscard]] const Node* as(const Expr& expr) {
    return std::get_if<Node>(&expr.node);
}

}  // namespace sandbox::ast
