// Control flow: which statement runs next. GOTO travels outwards as Flow::Goto until a statement list holds its label,
// and inwards again through the statements that lead to it.
#include <utility>

#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/run/interpreter.h"

namespace sandbox {

namespace {

// Whether a statement does something by itself, and is worth telling to a watch.
bool acts(const ast::Statement& s) {
    return std::visit(ast::Overloaded{
                          [](const ast::Block&) { return false; },
                          [](const ast::If&) { return false; },
                          [](const ast::While&) { return false; },
                          [](const ast::TryCatch&) { return false; },
                          [](const ast::Break&) { return false; },
                          [](const ast::Continue&) { return false; },
                          [](const ast::Label&) { return false; },
                          [](const ast::Goto&) { return false; },
                          [](const ast::Return&) { return false; },
                          [](const ast::Declare&) { return false; },
                          [](const auto&) { return true; },
                      },
                      s.node);
}

}  // namespace

Flow Interpreter::run(const ast::Statement& s) {
    checkCancelled();
    line_ = s.place.line;
    try {
        if (!session_.watch || !acts(s)) return dispatch(s);
        const std::string_view text = frame().unit->text;
        const WatchedStatement watched(session_.watch, text.substr(s.text.begin, s.text.end - s.text.begin));
        return dispatch(s);
    } catch (const CompileError& e) {
        fail(e.error, &s, true);
    } catch (const SqlError& e) {
        fail(e, &s, false);
    } catch (const SqliteError& e) {
        fail(ofSqlite(e), &s, false);
    }
    return Flow::Next;
}

Flow Interpreter::dispatch(const ast::Statement& s) {
    const auto plain = [](auto&& action) {
        action();
        return Flow::Next;
    };
    return std::visit(ast::Overloaded{
                          [&](const ast::Block& n) { return runAll(n.body); },
                          [&](const ast::If& n) { return runIf(n); },
                          [&](const ast::While& n) { return runWhile(n); },
                          [&](const ast::TryCatch& n) { return runTry(n); },
                          [&](const ast::Break&) { return Flow::Break; },
                          [&](const ast::Continue&) { return Flow::Continue; },
                          [&](const ast::Label&) { return Flow::Next; },
                          [&](const ast::Goto& n) {
                              frame().wantedLabel = n.label;
                              return Flow::Goto;
                          },
                          [&](const ast::Return& n) { return runReturn(n); },
                          [&](const ast::Declare& n) { return plain([&] { runDeclare(n); }); },
                          [&](const ast::SetVariable& n) { return plain([&] { runSetVariable(n); }); },
                          [&](const ast::SetOption& n) { return plain([&] { runSetOption(n); }); },
                          [&](const ast::SetIdentityInsert& n) { return plain([&] { runSetIdentityInsert(n); }); },
                          [&](const ast::SetIsolation& n) { return plain([&] { runSetIsolation(n); }); },
                          [&](const ast::Use& n) { return plain([&] { runUse(n); }); },
                          [&](const ast::WaitFor& n) { return plain([&] { runWaitFor(n); }); },
                          [&](const ast::Print& n) { return plain([&] { runPrint(n); }); },
                          [&](const ast::RaiseError& n) { return plain([&] { runRaiseError(n); }); },
                          [&](const ast::Throw& n) { return plain([&] { runThrow(n); }); },
                          [&](const ast::Execute& n) { return plain([&] { runExecute(n); }); },
                          [&](const ast::Transaction& n) { return plain([&] { runTransaction(n); }); },
                          [&](const ast::DeclareCursor& n) { return plain([&] { runDeclareCursor(s, n); }); },
                          [&](const ast::CursorCommand& n) { return plain([&] { runCursor(n); }); },
                          [&](const ast::SelectStatement&) { return plain([&] { runSelect(s); }); },
                          [&](const ast::Insert& n) { return plain([&] { runInsert(s, n); }); },
                          [&](const ast::Update&) { return plain([&] { runUpdate(s); }); },
                          [&](const ast::Delete&) { return plain([&] { runDelete(s); }); },
                          [&](const auto&) { return plain([&] { runDefinition(s); }); },
                      },
                      s.node);
}

Flow Interpreter::runAll(const ast::Statements& statements, bool fromLabel) {
    for (std::size_t i = 0; i < statements.size(); ++i) {
        Flow flow = std::exchange(fromLabel, false) ? Flow::Goto : run(*statements[i]);
        // A jump ends here only where the label stands in this list or below one of its statements.
        while (flow == Flow::Goto) {
            std::size_t at = 0;
            while (at < statements.size() && !holdsLabel(*statements[at], frame().wantedLabel)) ++at;
            if (at == statements.size()) return flow;
            i = at;
            flow = runFromLabel(*statements[i]);
        }
        if (flow != Flow::Next) return flow;
    }
    return Flow::Next;
}

Flow Interpreter::runFromLabel(const ast::Statement& s) {
    if (ast::as<ast::Label>(s)) {
        frame().wantedLabel.clear();
        return Flow::Next;
    }
    if (const auto* block = ast::as<ast::Block>(s)) return runAll(block->body, true);
    if (const auto* branch = ast::as<ast::If>(s)) {
        const bool then = holdsLabel(*branch->then, frame().wantedLabel);
        return runFromLabel(then ? *branch->then : *branch->otherwise);
    }
    if (const auto* loop = ast::as<ast::While>(s)) {
        const Flow flow = runFromLabel(*loop->body);
        if (flow == Flow::Break) return Flow::Next;
        if (flow == Flow::Return || flow == Flow::Goto) return flow;
        return run(s);
    }
    throw SqlError(errorMessage<1026>());
}

Flow Interpreter::runIf(const ast::If& n) {
    if (isTrue(*n.condition)) return run(*n.then);
    return n.otherwise ? run(*n.otherwise) : Flow::Next;
}

Flow Interpreter::runWhile(const ast::While& n) {
    const int line = line_;
    for (;;) {
        line_ = line;
        checkCancelled();
        if (!isTrue(*n.condition)) return Flow::Next;
        const Flow flow = run(*n.body);
        if (flow == Flow::Break) return Flow::Next;
        if (flow == Flow::Return) return flow;
        if (flow == Flow::Goto) {
            if (!holdsLabel(*n.body, frame().wantedLabel)) return flow;
            const Flow after = runFromLabel(*n.body);
            if (after == Flow::Break) return Flow::Next;
            if (after == Flow::Return || after == Flow::Goto) return after;
        }
    }
}

namespace {

class Counted {
public:
    Counted(int& a, int& b) : a_(a), b_(b) { ++a_, ++b_; }
    ~Counted() { --a_, --b_; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;

private:
    int& a_;
    int& b_;
};

}  // namespace

Flow Interpreter::runTry(const ast::TryCatch& n) {
    CaughtError error;
    try {
        Counted open(session_.tries, frame().tries);
        return runAll(n.tryBody);
    } catch (const Caught& caught) {
        if (caught.notIn == &frame()) throw;
        error = caught.error;
    }
    const std::size_t depth = session_.caught.size();
    session_.caught.push_back(std::move(error));
    struct Pop {
        SessionState& session;
        std::size_t depth;
        ~Pop() { session.caught.resize(depth); }
    } pop{session_, depth};
    return runAll(n.catchBody);
}

Flow Interpreter::runReturn(const ast::Return& n) {
    if (n.value) {
        const Typed value = evaluate(*n.value, Type{.id = TypeId::Int});
        if (isNull(value.value)) {
            inform(errorMessage<282>(frame().unit->name));
        }
        frame().status = isNull(value.value) ? 0 : static_cast<std::int32_t>(std::get<std::int64_t>(value.value));
    }
    return Flow::Return;
}

bool Interpreter::isTrue(const ast::Expr& condition) {
    const BoundNode& known = boundCondition(condition);
    const Typed value = evaluateBound(std::get<BoundQuery>(known.bound));
    succeed(0);
    return !isNull(value.value) && std::get<std::int64_t>(value.value) != 0;
}

}  // namespace sandbox
