// The core of the interpreter: requests, frames, and what an error does to statement, procedure, batch and transaction.
#include "sandbox/tsql/run/interpreter.h"

#include "sandbox/store/values/error_table.h"

#include <utility>

namespace sandbox {

namespace {

// Restores what a frame may change of the session when it ends, however it ends.
class FrameGuard {
public:
    FrameGuard(SessionState& session, Frame& frame)
        : session_(session), outer_(session.frame), tries_(session.tries), caught_(session.caught.size()) {
        session_.frame = &frame;
    }
    ~FrameGuard() {
        session_.frame = outer_;
        session_.tries = tries_;
        session_.caught.resize(caught_);
    }
    FrameGuard(const FrameGuard&) = delete;
    FrameGuard& operator=(const FrameGuard&) = delete;

private:
    SessionState& session_;
    Frame* outer_;
    int tries_;
    std::size_t caught_;
};

// Ends what lives no longer than a frame: temporary tables of procedures and texts, table variables of batches.
class TemporaryScope {
public:
    TemporaryScope(SessionState& session, const Frame& frame)
        : session_(session), frame_(frame), opened_(frame.kind != Frame::Kind::Batch) {
        if (opened_) session_.connection->beginTemporaryScope();
    }
    ~TemporaryScope() {
        if (opened_) {
            session_.connection->endTemporaryScope();
            session_.definitionsChanged();
        } else if (!frame_.unit->tables.empty()) {
            session_.connection->dropTableVariables();
        }
    }
    TemporaryScope(const TemporaryScope&) = delete;
    TemporaryScope& operator=(const TemporaryScope&) = delete;

private:
    SessionState& session_;
    const Frame& frame_;
    bool opened_;
};

bool isRowChange(const ast::Statement& s) {
    if (const auto* select = ast::as<ast::SelectStatement>(s)) {
        const auto* body = std::get_if<ast::Select>(&select->query->body->node);
        return body && body->into;
    }
    return ast::as<ast::Insert>(s) || ast::as<ast::Update>(s) || ast::as<ast::Delete>(s);
}

}  // namespace

// ---- requests

void Interpreter::guarded(const std::function<void()>& body) {
    session_.cancelled = false;
    session_.connection->clearInterrupt();
    session_.startRequest("SELECT");
    std::optional<SqlError> connectionError;
    try {
        try {
            body();
        } catch (const ScopeEnded&) {
        } catch (const BatchEnded&) {
        } catch (const ConnectionEnded& e) {
            connectionError = e.error;
        } catch (const StatementCancelled&) {
            session_.cancelled = true;
            if (session_.settings.xactAbort) rollBackAll();
        } catch (const SqlError& e) {
            fail(e, nullptr, true);
        } catch (const SqliteError& e) {
            fail(ofSqlite(e), nullptr, false);
        }
    } catch (const ScopeEnded&) {
    } catch (const BatchEnded&) {
    }
    finishRequest();
    if (connectionError) throw SqlError(*connectionError);
}

void Interpreter::finishRequest() {
    session_.frame = nullptr;
    session_.tries = 0;
    session_.caught.clear();
    if (session_.transaction.doomed()) {
        Message message = errorMessage<3998>().atLine(1);
        reply_->error(message);
        session_.error = message.number;
        rollBackAll();
        reply_->statementDone(std::nullopt, false);
    }
    session_.endRequest();
}

void Interpreter::runBatch(std::string_view text) {
    guarded([&] {
        Frame frame;
        frame.scopeIdentity = session_.batchIdentity;
        struct Keep {
            Interpreter& interpreter;
            Frame& frame;
            ~Keep() { interpreter.session_.batchIdentity = frame.scopeIdentity; }
        } keep{*this, frame};
        line_ = 1;
        runFrame(frame, [&] { return unitOf(text, {}); });
    });
}

void Interpreter::runText(std::string_view text, std::string_view declarations, std::vector<CallArgument> arguments) {
    guarded([&] {
        runNested(text, declarations, arguments, 1);
        int ordinal = 0;
        reply_->returnStatus(0);
        for (const CallArgument& argument : arguments) {
            if (argument.output) reply_->outputParameter(ordinal, argument.name, argument.value);
            ++ordinal;
        }
    });
    reply_->procedureDone();
}

void Interpreter::transactionRequest(const std::vector<ast::Transaction>& steps) {
    guarded([&] {
        line_ = 1;
        try {
            for (const ast::Transaction& step : steps) {
                const WatchedStatement watched(session_.watch, {});
                runTransaction(step);
            }
        } catch (const SqlError& e) {
            fail(e, nullptr, false);
        }
    });
}

std::vector<ResultColumn> Interpreter::describe(std::string_view text, std::string_view declarations) {
    Frame frame;
    frame.unit = unitOf(text, declarations);
    frame.variables.resize(frame.unit->variables.size());
    FrameGuard guard(session_, frame);
    compile(*frame.unit);
    std::vector<ResultColumn> columns;
    ast::forEachStatement(*frame.unit->body, [&](const ast::Statement& s) {
        const auto* select = ast::as<ast::SelectStatement>(s);
        if (!columns.empty() || !select) return;
        const BoundNode& known = node(&s);
        const auto* query = std::get_if<BoundQuery>(&known.bound);
        if (query && !query->assigns && !query->into) columns = query->columns;
    });
    return columns;
}

// ---- frames

void Interpreter::runFrame(Frame& frame, const std::function<std::shared_ptr<Unit>()>& load) {
    static const auto kNothing = std::make_shared<Unit>();
    if (!frame.unit) frame.unit = kNothing;
    FrameGuard guard(session_, frame);
    TemporaryScope scope(session_, frame);
    try {
        frame.unit = load();
        Unit& unit = *frame.unit;
        frame.variables.resize(unit.variables.size());
        if (frame.prepare) frame.prepare(frame);
        for (const ast::Declare::Item* table : unit.tables) {
            const BindContext context = bindContext(unit, unit.variables.size());
            executeDeclareTable(executeContext(context), table->name, *table->table);
            session_.definitionsChanged();
        }
        compile(unit);
    } catch (const SqlError& e) {
        fail(e, nullptr, true);
    }
    runAll(*frame.unit->body);
}

bool Interpreter::inside() const {
    return session_.frame && session_.frame->kind != Frame::Kind::Batch;
}

void Interpreter::checkCancelled() {
    if (session_.connection->interrupted()) throw StatementCancelled();
}

// ---- errors

namespace {

enum class Reach { Statement, Scope, Batch, BatchAndTransaction, Connection };

Reach reachOf(const SqlError& error, bool compiling, bool xactAbort, bool raised) {
    if (error.effect == Effect::Connection) return Reach::Connection;
    if (compiling) return Reach::Scope;
    if (error.effect == Effect::Batch) return Reach::BatchAndTransaction;
    if (xactAbort && !raised) return Reach::BatchAndTransaction;
    return error.effect == Effect::Scope ? Reach::Scope : Reach::Statement;
}

}  // namespace

void Interpreter::fail(const SqlError& error, const ast::Statement* statement, bool compiling) {
    const bool raised = statement && ast::as<ast::RaiseError>(*statement);
    const bool thrown = statement && ast::as<ast::Throw>(*statement);
    Reach reach = reachOf(error, compiling, session_.settings.xactAbort, raised);
    if (thrown && reach == Reach::Statement) reach = Reach::Batch;

    std::vector<Message> messages = error.messages;
    for (Message& message : messages) {
        if (message.line == 0) message.line = statement ? statement->place.line : line_;
        if (message.line == kNoLine) message.line = 0;
        if (message.procedure.empty() && session_.frame) message.procedure = session_.frame->unit->name;
    }
    session_.error = messages.back().number;
    session_.rowCount = 0;

    const Frame* notIn = compiling && session_.frame ? session_.frame : nullptr;
    const int catching = session_.tries - (notIn ? notIn->tries : 0);
    if (catching > 0 && reach != Reach::Connection) {
        if (reach == Reach::BatchAndTransaction) session_.transaction.doom();
        if (!compiling && statement && isRowChange(*statement)) done(0);
        throw Caught{{messages.back(), error.effect}, notIn};
    }

    for (const Message& message : messages) reply_->error(message);
    if (reach == Reach::Statement && statement && isRowChange(*statement)) {
        inform(errorMessage<3621>().in(messages.back().procedure).atLine(statement->place.line));
    }
    if (reach == Reach::BatchAndTransaction || reach == Reach::Connection) rollBackAll();
    if (session_.frame) done(std::nullopt);
    switch (reach) {
        case Reach::Statement: return;
        case Reach::Scope: throw ScopeEnded{};
        case Reach::Batch:
        case Reach::BatchAndTransaction: throw BatchEnded{};
        case Reach::Connection: throw ConnectionEnded{error};
    }
}

void Interpreter::succeed(std::int64_t rows) {
    session_.error = 0;
    session_.rowCount = rows;
}

void Interpreter::done(std::optional<std::int64_t> count) {
    reply_->statementDone(session_.settings.noCount ? std::nullopt : count, inside());
}

void Interpreter::inform(Message message) {
    if (message.line == 0) message.line = line_;
    if (message.procedure.empty() && session_.frame) message.procedure = session_.frame->unit->name;
    reply_->info(message);
}

void Interpreter::sendRows(std::span<const ResultColumn> columns, std::span<const std::vector<Value>> rows) {
    reply_->columns(columns);
    for (const auto& row : rows) reply_->row(row);
    succeed(static_cast<std::int64_t>(rows.size()));
    done(session_.rowCount);
}

}  // namespace sandbox
