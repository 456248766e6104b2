// One statement while it is bound: what was found, what went wrong, and the steps from syntax tree to SQLite text. Used
// by the binder's own files only: expression*.cpp bind values and conditions, bind_query.cpp, bind_order.cpp and
// bind_set.cpp queries, bind_from.cpp and bind_derived.cpp their tables, bind_insert.cpp and bind_change.cpp the rows
// of changes.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/store/functions/function_table.h"
#include "sandbox/store/functions/sql_functions.h"
#include "sandbox/store/values/convert_types.h"
#include "sandbox/tsql/bind/bind.h"
#include "sandbox/tsql/bind/scope.h"

namespace sandbox::binder {

struct OutputColumn {
    std::string name;
    Type type;
    bool nullable = true;
    bool identity = false;
    bool updatable = false;
    Coercibility coercibility = Coercibility::None;
    std::string collation;
    std::string conflict;
    bool failed = false;
    BaseColumn base{};
};

struct OrderTerm {
    std::string sql;     // with its COLLATE
    std::string window;  // the same for use in OVER (ORDER BY ...), where a place in the select list means nothing
    bool descending = false;
};

struct Limit {
    std::string count;  // SQLite expression; empty: none
    std::string offset;
    bool percent = false;
    bool withTies = false;
};

// A bound query: one SELECT, or a set operation over two of them. Rendered late, so that whoever uses it may still
// convert its columns.
struct QueryNode {
    // one SELECT
    std::vector<Bound> items;
    bool distinct = false;
    std::string from, where, groupBy, having;  // without their keywords; empty: none
    bool atMostOneRow = false;
    bool alwaysOneRow = false;
    bool inlineable = false;     // nothing but items, from and where
    std::size_t fromTables = 0;  // in from
    std::string driver;          // see Binder::subquery; empty: none

    // a set operation
    std::unique_ptr<QueryNode> left, right;
    ast::SetOperator op{};

    std::vector<OutputColumn> columns;
    std::vector<OrderTerm> order;
    Limit limit;
    bool failed = false;

    // What a change through it changes: the row ids are columns r1, r2 ... behind the others where withRows is set.
    std::vector<Base> bases;
    NotUpdatable notUpdatable = NotUpdatable::No;
    bool withRows = false;

    [[nodiscard]] bool isSet() const { return left != nullptr; }
};

using QueryNodePtr = std::unique_ptr<QueryNode>;

// The text of a query whose columns are named c1, c2 ...; wanted: the types to give, empty for its own.
[[nodiscard]] std::string render(const QueryNode& node, std::span<const Type> wanted = {});

// A FROM item as SQLite text and the sources that it brings in.
struct TableText {
    std::string sql;
    std::vector<Source*> sources;
    bool needsParentheses = false;  // RIGHT and FULL joins beside other tables
    std::string condition;          // what CROSS APPLY adds to WHERE
};

// What the caller of a query binder wants besides its rows.
struct SelectExtras {
    bool assigns = false;
    std::optional<IntoTarget> into;
};

struct CteFrame {
    const CteFrame* parent = nullptr;
    const ast::Cte* cte = nullptr;
    // While its recursive branch is bound:
    std::string recursiveName;
    const std::vector<OutputColumn>* recursiveColumns = nullptr;
    mutable std::string recursiveAlias{};  // of the table by which that branch reads what it has made so far
};

class Binder {
public:
    explicit Binder(const BindContext& context);

    // ---- statement
    [[nodiscard]] BoundQuery finish(std::string sql);  // throws what was reported
    void throwIfFailed();
    [[nodiscard]] const BindContext& context() const { return context_; }
    [[nodiscard]] std::string newAlias(char prefix) { return prefix + std::to_string(++lastAlias_); }
    [[nodiscard]] std::string parameter(Parameter parameter);  // "?3"; variables and globals once each

    // ---- errors
    void report(Message message);
    Bound fail(Message message, int line);
    void reportMissing(const ast::ObjectName& name);
    // Runs what may throw an SqlError of the type rules; reports it at this line. False when it threw.
    bool guard(int line, const std::function<void()>& action);

    // ---- values (expression*.cpp)
    Bound value(const ast::Expr& expr, Scope& scope);
    std::string condition(const ast::Expr& expr, Scope& scope);
    // implicit conversion, as an assignment, a comparison or a common type makes it
    Bound converted(const Bound& bound, const Type& to, int line);
    // conversion for storing into a column
    std::string stored(const Bound& bound, const ColumnDef& column, const std::string& table, int line);
    Bound defaultOf(const ColumnDef& column);
    // Nullability, collation, failure; no SQL. operation: " in the add operator", for collations that are at odds.
    static Bound combine(std::span<const Bound* const> operands, std::string_view operation = {});
    std::string collationOf(const Bound& a, const Bound& b, std::string_view operation, int line);
    std::string withCollation(const Bound& bound) const;  // sql, with COLLATE for texts

    // ---- queries
    QueryNodePtr query(const ast::Query& query, Scope* parent, SelectExtras* extras = nullptr);
    QueryNodePtr subquery(const ast::Query& query, Scope& scope);
    std::string rowCount(const ast::Expr& expr, RowLimit limit);
    QueryNodePtr values(const std::vector<ast::ExprList>& rows, Scope* parent, int line);

    // ---- tables (bind_from.cpp)
    TableText tables(const std::vector<ast::TableRefPtr>& from, Scope& scope);
    TableText table(const ast::TableRef& ref, Scope& scope);
    Source* addTable(const ResolvedObject& found, const ast::ObjectName& name, const std::string& alias);
    std::optional<ResolvedObject> resolve(const ast::ObjectName& name);
    std::optional<ResolvedObject> resolveVariableTable(const std::string& variable, int line);
    static std::string tableSql(const Source& source);  // "db1"."t" AS "a1"
    // Makes CTEs visible until what it returns ends.
    class CteScope;
    class CteGuard {
    public:
        explicit CteGuard(std::unique_ptr<CteScope> scope);
        ~CteGuard();

    private:
        std::unique_ptr<CteScope> scope_;
    };
    [[nodiscard]] bool isCte(std::string_view name) const;
    [[nodiscard]] CteGuard enterCtes(const std::vector<ast::Cte>& ctes);

    [[nodiscard]] const std::string& database() const { return database_; }
    [[nodiscard]] int statementLine(int fallback) const;

    bool changing = false;                    // an UPDATE or DELETE looks for its rows: queries tell their bases
    bool perRowVariables = false;             // assigned variables are read through t_var
    std::set<std::string> assignedVariables;  // folded names
    std::string setVariable(const VariableRef& variable, const Bound& value, int line);
    std::optional<VariableRef> assignableVariable(const std::string& name, int line);
    Bound compound(ast::AssignOp op, const Bound& left, const Bound& right, int line);

private:
    friend class CteScope;

    // expression.cpp
    Bound bindNode(const ast::Expr& expr, Scope& scope);
    Bound literal(const ast::Literal& node);
    Bound variable(const ast::Variable& node, int line);
    Bound globalVariable(const ast::GlobalVariable& node, int line);
    Bound columnValue(const SourceColumn& column, const Source& source, Scope& owner, int line);
    Bound columnRef(const ast::ColumnRef& node, Scope& scope, int line);
    Bound unary(const ast::Unary& node, Scope& scope, int line);
    Bound binary(const ast::Binary& node, Scope& scope, int line);
    Bound arithmetic(sandbox::BinaryOp op, const Bound& left, const Bound& right, int line);
    Bound caseExpr(const ast::Case& node, Scope& scope, int line);
    Bound castExpr(const ast::Cast& node, Scope& scope, int line);
    Bound collate(const ast::Collate& node, Scope& scope, int line);
    Bound scalarSubquery(const ast::Query& query, Scope& scope, int line);
    // Values brought to their common type.
    Bound unify(std::vector<Bound>& values, int line);

    // expression_call.cpp
    Bound call(const ast::Call& node, Scope& scope, int line);
    Bound datePartNumber(const ast::DatePart& part, const std::string& function, int line);
    Bound planned(const FunctionRow& row, const std::string& name, const ast::Call& node,
                  const std::vector<Bound>& arguments, int line);
    Bound aggregate(const ast::Call& node, Scope& scope, int line);
    Bound ranking(const ast::Call& node, Scope& scope, int line);
    Bound newIdentity(const ast::Call& node, const Scope& scope, int line);
    Bound nullIf(const ast::Call& node, Scope& scope, int line);
    Bound iif(const ast::Call& node, Scope& scope, int line);
    std::string over(const ast::Over& over, Scope& scope);

    // expression_condition.cpp
    std::string compare(sandbox::CompareOp op, const Bound& left, const Bound& right, int line);
    std::string compareExpr(const ast::Compare& node, Scope& scope, int line);
    std::string between(const ast::Between& node, Scope& scope, int line);
    std::string like(const ast::Like& node, Scope& scope, int line);
    std::string in(const ast::In& node, Scope& scope, int line);
    std::string quantified(const ast::Quantified& node, Scope& scope, int line);
    std::string exists(const ast::Exists& node, Scope& scope);
    std::string isNull(const ast::IsNull& node, Scope& scope);

    // bind_query.cpp
    // orderBy goes to the SELECT where there is one alone; set operations are ordered by their columns.
    QueryNodePtr body(const ast::QueryBody& body, Scope* parent, const std::vector<ast::OrderItem>* orderBy,
                      SelectExtras* extras);
    QueryNodePtr select(const ast::Select& select, Scope* parent, const std::vector<ast::OrderItem>* orderBy,
                        SelectExtras* extras);
    QueryNodePtr setOperation(const ast::SetOperation& operation, Scope* parent, SelectExtras* extras);
    void selectItems(const ast::Select& select, Scope& scope, QueryNode& node);
    void assignments(const ast::Select& select, Scope& scope, QueryNode& node,
                     const std::vector<ast::OrderItem>* orderBy, SelectExtras* extras);
    void groupKeys(const ast::Select& select, Scope& scope, QueryNode& node);
    void orderTerms(const std::vector<ast::OrderItem>& orderBy, Scope& scope, QueryNode& node,
                    const std::vector<ast::SelectItem>& items);
    void orderSet(const std::vector<ast::OrderItem>& orderBy, QueryNode& node);
    static void findBases(const ast::Select& select, const Scope& scope, QueryNode& node);
    void into(const ast::Select& select, const Scope& scope, const QueryNode& node, SelectExtras& extras);

    // bind_from.cpp
    TableText join(const ast::Join& node, Scope& scope, int line);
    TableText apply(const ast::Join& node, Scope& scope, int line);
    TableText named(const ast::NamedTable& node, int line);
    TableText derived(QueryNodePtr query, const std::string& alias, const std::vector<std::string>& columns, int line);
    TableText cte(const CteFrame& frame, const std::string& alias);
    TableText recursiveCte(const CteFrame& frame, const std::string& alias);
    TableText view(const ResolvedObject& found, const ast::NamedTable& node, int line);
    Source* addDerived(const std::vector<OutputColumn>& columns, const std::vector<std::string>& names,
                       const std::string& exposed, int line);

    const BindContext& context_;
    std::string database_;  // in which names are looked up: a view's own while its text is bound
    std::string schema_;    // in which names without one are looked up before dbo: likewise; empty: none
    std::vector<Parameter> parameters_;
    std::vector<ResolvedObject> reads_;
    std::vector<Message> errors_;
    std::vector<Message> missing_;  // 208 of the first missing table; 4413 for each view that it stands in
    std::deque<Source> sources_;
    std::deque<ast::ExprPtr> parsed_;  // computed columns and defaults
    const CteFrame* ctes_ = nullptr;
    int maxRecursion_ = 100;  // OPTION (MAXRECURSION n)
    int lastAlias_ = 0;
    int viewDepth_ = 0;
    std::string view_;  // name of the view whose text is bound: errors are told under it
};

// A select item as a column of its query.
[[nodiscard]] OutputColumn outputOf(const Bound& item, std::string name);

// Whether an aggregate stands in an expression, outside of its subqueries.
[[nodiscard]] bool hasAggregate(const ast::Expr& expr);
[[nodiscard]] bool hasSubquery(const ast::Expr& expr);

// The type that a column of a result or a new table has: int for NULL, varchar(1) for ''.
[[nodiscard]] Type shownType(Type type);
[[nodiscard]] bool isNullLiteral(const Bound& bound);
[[nodiscard]] bool isComparable(const Type& type);  // not text, ntext, image
// "SELECT a, b FROM ..." or a call: what stands where a whole statement or kind of it is refused.
[[nodiscard]] Message notSupported(std::string_view what, int line);

}  // namespace sandbox::binder
