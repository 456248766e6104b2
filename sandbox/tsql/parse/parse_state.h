// The recursive-descent parser: its place in the tokens, and one function for each rule of the grammar, spread over the
// parse_*.cpp files by statement group. Used only behind parser.h. The grammar stands beside each function: UPPER CASE
// words are keywords, [x] is optional, {x} repeats, a | b chooses.
#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/tsql/parse/parser.h"
#include "sandbox/tsql/syntax/ast.h"
#include "sandbox/tsql/syntax/lexer.h"

namespace sandbox {

// Bounds of nesting, for the stacks of the parser and of everyone who walks the tree.
inline constexpr int kMaxNesting = 200;
inline constexpr int kMaxChain = 1000;

class Parser {
public:
    Parser(std::string_view text, const ParseOptions& options);

    ast::Batch batch();
    ast::ExprPtr wholeExpression();
    ast::ExprPtr wholeCondition();
    std::vector<ast::Parameter> wholeDeclarations();
    ast::InsertBulk wholeInsertBulk();

private:
    using Node = ast::Statement::Node;
    enum class TypeUse { Declared, Cast };  // varchar without length: 1 or 30
    enum class SkipTo { StatementEnd, BatchEnd };
    struct Command;
    static const Command kCommands[];

    // --- tokens (parse_state.cpp)
    [[nodiscard]] const Token& peek(int ahead = 0) const;
    [[nodiscard]] const Token& previous() const;
    const Token& take();
    [[nodiscard]] bool seesWord(std::string_view upper, int ahead = 0) const;  // a plain word, reserved or not
    [[nodiscard]] bool seesAnyWord(std::initializer_list<std::string_view> words, int ahead = 0) const;
    [[nodiscard]] bool seesSymbol(std::string_view symbol, int ahead = 0) const;
    [[nodiscard]] bool seesIdentifier(int ahead = 0) const;  // quoted, or a word that is not reserved
    bool acceptWord(std::string_view upper);
    bool acceptWords(std::string_view first, std::string_view second);  // both or none
    bool acceptSymbol(std::string_view symbol);
    void expectWord(std::string_view upper);
    std::string expectAnyWord(std::initializer_list<std::string_view> words);
    void expectSymbol(std::string_view symbol);
    void expectEnd();
    std::string identifier();
    std::string identifierOrReserved();  // where T-SQL takes any word
    std::string variableName();
    std::int64_t integer();                     // a signed whole number
    std::vector<std::string> identifierList();  // ( name {, name} )
    bool onOff();

    // --- errors (parse_state.cpp)
    [[noreturn]] void unexpected() const;
    [[noreturn]] void fail(Message message, const ast::Place& place) const;
    [[noreturn]] void unsupported(const std::string& what) const;
    [[nodiscard]] const Token& offending() const;  // what "near" names

    // Counts nesting while it lives; error 191 past the bound.
    class Nest {
    public:
        explicit Nest(Parser& parser);
        ~Nest() { --parser_.depth_; }
        Nest(const Nest&) = delete;
        Nest& operator=(const Nest&) = delete;

    private:
        Parser& parser_;
    };
    [[noreturn]] void tooDeep() const;  // error 191
    void countLink();                   // one more join, set operation or the like of this statement
    [[nodiscard]] std::string textOf(const ast::Extent& extent) const;

    // --- names, types, literals (parse_name.cpp, parse_type.cpp, parse_literal.cpp)
    ast::ObjectName objectName();
    ast::ObjectName makeObjectName(const std::vector<std::string>& parts, const ast::Place& place) const;
    std::vector<std::string> nameParts();
    // whose: what a size is given to in errors ("column 'a'"); empty: the type itself
    ast::TypeName typeName(TypeUse use, const std::string& whose = {});
    void typeSize(ast::TypeName& name, TypeUse use, const std::string& whose);
    ast::Literal literal(const Token& token) const;
    ast::Literal integerLiteral(const Token& token) const;
    ast::Literal decimalLiteral(const Token& token) const;
    ast::Literal floatLiteral(const Token& token) const;
    ast::Literal moneyLiteral(const Token& token) const;
    ast::ExprPtr bareValue();  // what options and arguments take: a signed literal, a variable, a word as text
    [[nodiscard]] bool seesLiteral() const;

    // --- expressions (parse_expression.cpp, parse_condition.cpp, parse_function.cpp)
    template <typename T>
    ast::ExprPtr make(const ast::Place& from, T node);  // ends at the previous token
    void limitHeight(ast::Expr& expr);
    ast::ExprPtr value();
    ast::ExprPtr condition();
    ast::ExprPtr either();  // a condition, or a value in the condition's place
    ast::ExprPtr conjunction();
    ast::ExprPtr negation();
    ast::ExprPtr predicate();
    ast::ExprPtr predicateAfter(ast::ExprPtr left);
    ast::ExprPtr comparison(ast::ExprPtr left, ast::CompareOp op);
    std::optional<ast::CompareOp> compareOperator();
    // conditionAllowed: parentheses that come first may hold a condition.
    ast::ExprPtr additive(bool conditionAllowed);
    ast::ExprPtr multiplicative(bool conditionAllowed);
    ast::ExprPtr unary(bool conditionAllowed);
    ast::ExprPtr postfix(bool conditionAllowed);
    ast::ExprPtr primary(bool conditionAllowed);
    ast::ExprPtr parenthesized(bool conditionAllowed);
    ast::ExprPtr wordPrimary();
    ast::ExprPtr nameOrCall();
    ast::ExprPtr call(ast::ObjectName name, const ast::Place& from);
    void callArguments(ast::Call& call);
    ast::ExprPtr caseExpression();
    ast::ExprPtr cast(bool isTry);
    ast::ExprPtr convert(bool isTry);
    ast::ExprPtr odbcEscape();
    ast::Over over();
    std::string windowFrame(const ast::Over& over);
    std::string frameBound(bool isRange);
    ast::ExprList valueList();  // value {, value}
    ast::ExprPtr valueOrDefault();
    void requireCondition(const ast::Expr& expr) const;
    void requireValue(const ast::Expr& expr) const;
    [[nodiscard]] bool seesValueStart() const;

    // --- queries (parse_query.cpp, parse_from.cpp)
    ast::QueryPtr query();
    ast::QueryPtr subquery();     // ( query )
    ast::QueryPtr nestedQuery();  // the query of a subquery, view, cursor or INSERT: without INTO and assignments
    void requireBounded(const ast::Query& query) const;  // error 1033
    ast::QueryBodyPtr queryBody();
    ast::QueryBodyPtr queryTerm();
    ast::QueryBodyPtr queryPrimary();
    ast::Select select();
    ast::SelectItem selectItem();
    void selectAlias(ast::SelectItem& item);
    void groupBy(ast::Select& select);
    std::optional<ast::Top> top();
    std::vector<ast::OrderItem> orderBy();
    void offsetFetch(ast::Query& query);
    void forClause(ast::Query& query);
    std::vector<ast::Cte> commonTables();
    std::vector<std::string> queryOptions();  // [OPTION (...)]
    std::vector<std::string> optionTexts();   // ( words {, words} ), each joined by blanks in upper case
    [[nodiscard]] bool seesQuery() const;     // at "(": whether a query stands within
    std::vector<ast::TableRefPtr> fromList();
    ast::TableRefPtr tableSource();
    ast::TableRefPtr joinAfter(ast::TableRefPtr left);
    ast::TableRefPtr tablePrimary();
    ast::TableRefPtr namedTable();
    ast::TableRefPtr valuesTable(const ast::Place& place);
    [[nodiscard]] bool seesJoin() const;
    std::string tableAlias();
    void derivedAlias(std::string& alias, std::vector<std::string>& columns);
    std::vector<std::string> tableHints();
    std::string tableHint();
    [[nodiscard]] bool seesBareHint() const;

    // --- changes (parse_change.cpp, parse_merge.cpp)
    Node withStatement();
    Node selectStatement();
    Node insert();
    Node update();
    Node remove();
    Node merge();
    Node truncate();
    ast::Target target();
    std::optional<ast::Output> output();
    ast::Assignment assignment();
    std::vector<ast::Assignment> assignments();
    std::optional<ast::AssignOp> assignOperator();
    std::vector<ast::ExprList> valuesRows();
    ast::ExprPtr whereOfChange();
    ast::Merge::Branch mergeBranch();
    ast::InsertBulk insertBulk();

    // --- definitions (parse_table.cpp, parse_constraint.cpp, parse_index.cpp, parse_module.cpp, parse_database.cpp)
    Node create();
    Node alter();
    Node drop();
    Node createTable();
    Node alterTable();
    ast::AlterTable::Drop alterTableDrop();
    ast::AlterTable::CheckConstraint checkConstraint(bool withCheck);
    ast::TableDefinition tableDefinition();  // ( ... )
    void tableElement(ast::TableDefinition& definition);
    ast::ColumnDefinition columnDefinition();
    bool columnOption(ast::ColumnDefinition& column);
    ast::Identity identity();
    ast::ExprPtr newIdentity(const ast::Place& from);
    bool seesConstraint() const;
    void refuseSubquery(const ast::Expr& expr) const;  // in a default or a check
    ast::Constraint constraint();
    void keyConstraint(ast::Constraint& constraint);
    void referenceConstraint(ast::Constraint& constraint);
    void tableStorage();
    std::vector<ast::IndexColumn> indexColumns();
    std::vector<std::string> indexOptions();
    Node createIndex();
    Node dropIndex();
    Node dropObjects(ast::DropObjects::Kind kind);
    Node module(ast::Verb verb, const ast::Extent& verbText);
    Node view(ast::Verb verb, const ast::Extent& verbText);
    Node procedure(ast::Verb verb, const ast::Extent& verbText);
    ast::Parameter parameter();
    void procedureOptions(ast::CreateProcedure& node);
    void requireFirst(std::string_view what) const;
    Node createDatabase();
    Node alterDatabase();
    Node dropDatabase();
    Node createSchema();
    Node dropSchema();
    Node permission();
    Node unsupportedStatement(const std::string& what, SkipTo end);

    // --- statements (parser.cpp, parse_flow.cpp, parse_set.cpp, parse_call.cpp, parse_cursor.cpp, parse_admin.cpp)
    ast::Statements statements();  // up to END or the end of the text
    ast::StatementPtr statement();
    Node statementNode();
    [[nodiscard]] bool seesStatementStart() const;
    Node begin();
    Node block();
    Node tryCatch();
    Node ifElse();
    Node whileLoop();
    Node breakLoop();
    Node continueLoop();
    Node gotoLabel();
    Node returnStatement();
    Node waitFor();
    Node commit();
    Node rollback();
    Node save();
    ast::Transaction transaction(ast::Transaction::Kind kind);
    Node declare();
    ast::Declare::Item declareItem();
    Node set();
    Node setVariable();
    Node setOption();
    Node setIsolation();
    void readQuotes(bool asIdentifier);
    Node use();
    Node print();
    Node raiseError();
    Node throwError();
    Node execute();
    ast::Execute executeCall();  // behind EXEC
    void executeArguments(ast::Execute& execute);
    ast::ExecArgument executeArgument();
    Node implicitExecute();
    ast::DeclareCursor declareCursor();
    Node openCursor();
    Node fetchCursor();
    Node closeCursor();
    Node deallocateCursor();
    void cursorName(ast::CursorCommand& command);
    Node dbcc();
    Node kill();
    Node checkpoint();
    Node backup();
    Node restore();
    Node revert();
    Node bulkInsert();

    std::string_view text_;
    Tokens tokens_;
    std::size_t at_ = 0;
    std::size_t first_ = 0;           // where the batch's first statement begins
    std::size_t statementStart_ = 0;  // where the statement begun last begins
    int loops_ = 0;                   // WHILE bodies around this place
    int depth_ = 0;
    int height_ = 0;          // highest expression made since the enclosing query began
    int queryHeight_ = 0;     // highest expression of the subquery parsed last
    int links_ = 0;           // joins and set operations of this statement, which make trees deep without nesting
    bool ownSelect_ = false;  // within a SELECT statement's own query, where INTO and assignments may stand
    bool inProcedure_ = false;
    std::string module_;  // name of the view or procedure that the batch makes, once it has been read
};

template <typename T>
ast::ExprPtr Parser::make(const ast::Place& from, T node) {
    auto expr = std::make_unique<ast::Expr>();
    expr->place = from;
    expr->node = std::move(node);
    expr->text = {from.offset, previous().end};
    limitHeight(*expr);
    return expr;
}

}  // namespace sandbox
