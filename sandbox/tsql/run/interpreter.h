// Runs units: a compile pass over all statements, then the statements one by one, with SQL Server's rules of errors,
// counts and transactions. One interpreter serves one request of a session; its member functions are spread over
// interpreter_*.cpp by subject.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/tsql/run/interpreter_frame.h"
#include "sandbox/tsql/run/reply.h"
#include "sandbox/tsql/run/session_state.h"
#include "sandbox/tsql/syntax/ast.h"
#include "sandbox/tsql/system/procedure_host.h"

namespace sandbox {

class Interpreter : public ProcedureHost {
public:
    Interpreter(SessionState& session, Reply& reply) : session_(session), reply_(&reply) {}

    // ---- requests. Errors go to the reply; SqlError is thrown for Effect::Connection only.
    void runBatch(std::string_view text);
    void callProcedure(const std::string& name, std::vector<CallArgument> arguments);
    void runText(std::string_view text, std::string_view declarations, std::vector<CallArgument> arguments);
    void transactionRequest(const std::vector<ast::Transaction>& steps);

    // ---- compiling (interpreter_compile.cpp)
    // Binds every statement whose objects exist. Raises all errors together.
    void compile(Unit& unit);
    [[nodiscard]] std::shared_ptr<Unit> unitOf(std::string_view text, std::string_view declarations);
    [[nodiscard]] BindContext bindContext(const Unit& unit, std::size_t visible);

    [[nodiscard]] ExecuteContext executeContext(const BindContext& bind);

    // ---- for the system procedures
    [[nodiscard]] Connection& connection() override { return *session_.connection; }
    std::optional<std::int32_t> runNested(std::string_view text, std::string_view declarations,
                                          std::vector<CallArgument>& arguments, int levels,
                                          const std::string& database = {}, const std::string& procedure = {}) override;
    [[nodiscard]] std::vector<ResultColumn> describe(std::string_view text, std::string_view declarations) override;
    void sendRows(std::span<const ResultColumn> columns, std::span<const std::vector<Value>> rows) override;
    void report(const SqlError& error) override { fail(error, nullptr, false); }
    void renameObject(const std::string& object, const std::string& newName, const std::string& type) override;
    void resetSession() override { session_.reset(false); }

private:
    friend class CompilePass;

    // ---- frames
    // load gives the unit; what it raises is an error of the frame, as one of its text.
    void runFrame(Frame& frame, const std::function<std::shared_ptr<Unit>()>& load);
    void guarded(const std::function<void()>& body);  // the outermost level of a request
    void finishRequest();

    // ---- statements
    Flow run(const ast::Statement& statement);
    Flow dispatch(const ast::Statement& statement);
    Flow runAll(const ast::Statements& statements, bool fromLabel = false);
    Flow runFromLabel(const ast::Statement& statement);  // which is the wanted label or holds it
    Flow runIf(const ast::If& statement);
    Flow runWhile(const ast::While& statement);
    Flow runTry(const ast::TryCatch& statement);
    Flow runReturn(const ast::Return& statement);
    void runDeclare(const ast::Declare& statement);
    void runSetVariable(const ast::SetVariable& statement);
    void runWaitFor(const ast::WaitFor& statement);
    void runPrint(const ast::Print& statement);
    void runRaiseError(const ast::RaiseError& statement);
    void runThrow(const ast::Throw& statement);
    void runTransaction(const ast::Transaction& statement);
    void runSetOption(const ast::SetOption& statement);
    void setOnOff(const std::string& name, bool on);
    void setValue(const std::string& name, const Typed& value);
    void runSetIdentityInsert(const ast::SetIdentityInsert& statement);
    void runSetIsolation(const ast::SetIsolation& statement);
    void runUse(const ast::Use& statement);
    void runDeclareCursor(const ast::Statement& statement, const ast::DeclareCursor& declare);
    void runCursor(const ast::CursorCommand& statement);
    [[nodiscard]] std::shared_ptr<Cursor> findCursor(const std::string& name, bool global);  // 16916
    void openCursor(Cursor& cursor);
    void fetch(Cursor& cursor, const ast::CursorCommand& statement);
    void runSelect(const ast::Statement& statement);
    void runInsert(const ast::Statement& statement, const ast::Insert& insert);
    void runUpdate(const ast::Statement& statement);
    void runDelete(const ast::Statement& statement);
    void runExecute(const ast::Execute& statement);
    void runInsertExecute(const ast::Statement& statement, const ast::Insert& insert);
    void runDefinition(const ast::Statement& statement);
    void runCreateProcedure(const ast::CreateProcedure& create);
    void runCreateView(const ast::CreateView& create);
    void runPermission(const ast::Permission& statement);
    void runAlterDatabase(const ast::AlterDatabase& statement);
    void define(const std::function<void(const ExecuteContext&)>& action);
    [[nodiscard]] std::string moduleText(const ast::Extent& verb) const;
    void runDbcc(const ast::Dbcc& statement);

    // ---- procedures (procedures.cpp)
    [[nodiscard]] std::optional<FoundObject> findProcedure(const ast::ObjectName& name);
    [[nodiscard]] std::shared_ptr<Unit> procedureUnit(const FoundObject& callee);
    // Each gives the return status; none where an error ended the procedure before it had one.
    std::optional<std::int32_t> callUser(const FoundObject& callee, std::vector<CallArgument>& arguments);
    std::optional<std::int32_t> call(const ast::ObjectName& name, std::vector<CallArgument>& arguments);
    std::optional<std::int32_t> runCallee(Frame& callee, const std::function<std::shared_ptr<Unit>()>& load,
                                          std::vector<CallArgument>& arguments);
    [[nodiscard]] std::vector<CallArgument> argumentsOf(const ast::Execute& statement);
    void fillParameters(Frame& callee, const std::vector<CallArgument>& arguments);
    void storeOutputs(const std::vector<CallArgument>& arguments);

    // ---- bound nodes
    [[nodiscard]] BoundNode& node(const void* key);
    template <class Bind>
    BoundNode& bound(const void* key, Bind bind);  // binds now when it is not bound, or stale
    [[nodiscard]] BoundNode& boundExpression(const ast::Expr& expression, std::optional<Type> wanted);
    [[nodiscard]] BoundNode& boundCondition(const ast::Expr& expression);
    [[nodiscard]] bool holds(const BoundNode& known);
    [[nodiscard]] int optionBits() const;  // the settings that change how a statement is bound
    [[nodiscard]] static std::string identityInsertKey(const ResolvedObject& table);
    [[nodiscard]] Typed evaluate(const ast::Expr& expression, std::optional<Type> wanted = std::nullopt);
    [[nodiscard]] Typed evaluateBound(const BoundQuery& query);
    [[nodiscard]] bool isTrue(const ast::Expr& condition);
    void bindParameters(const Statement& statement, const BoundQuery& query, std::span<const Typed> input);
    [[nodiscard]] std::int64_t sendQuery(const BoundQuery& query);
    [[nodiscard]] BoundQuery limited(const BoundQuery& query) const;
    void warnOfNulls();
    void lockForReading(const ast::Query& text, const BoundQuery& query);
    // 3952 where the session reads by snapshots: no database here allows it.
    void requireNoSnapshot(std::span<const ResolvedObject> objects) const;
    void requireIdentityInsert(const BoundInsert& insert);  // 544, 545
    void change(const ast::Statement& statement, const std::function<std::int64_t(const ExecuteContext&)>& action);

    // ---- effects
    void done(std::optional<std::int64_t> count);
    void inform(Message message);
    void fail(const SqlError& error, const ast::Statement* statement, bool compiling);
    [[nodiscard]] SqlError ofSqlite(const SqliteError& error);
    void succeed(std::int64_t rows);
    void beginImplicitly();
    void requireWritable();  // 3930 in a doomed transaction
    void rollBackAll();
    void carryOut(TransactionStep step);
    void setVariable(int slot, Value value);
    [[nodiscard]] Frame& frame() { return *session_.frame; }
    [[nodiscard]] bool inside() const;  // a procedure or a text: DONEINPROC
    void checkCancelled();

    SessionState& session_;
    Reply* reply_;
    int line_ = 0;                 // of the statement that runs
    std::string compileDatabase_;  // that a USE met by the compile pass named
};

}  // namespace sandbox
