// The guard of the runs: `running_` is set for exactly as long as a run's function is on the stack.
#include "shell/commands/command_runner.h"

#include <QScopeGuard>

#include "engine/base/abort.h"
#include "engine/run/run_parts.h"
#include "engine/torvik_pos.h"
#include "shell/commands/command.h"

namespace torvik {

CommandRunner::CommandRunner(TTorvikPos& engine, std::function<void(const std::exception&)> onError)
    : engine_(engine), onError_(std::move(onError)) {}

void CommandRunner::run(const CommandRow& row, CommandContext& context) {
    guarded([&] {
        if (row.kind == CommandKind::Run) {
            runAlone(row, context);
        } else {
            row.execute(context);
        }
    });
}

void CommandRunner::guarded(const std::function<void()>& body) {
    ++commands_;
    const auto done = qScopeGuard([this] { --commands_; });
    try {
        body();
    } catch (const EAbort&) {
        // a silent abort has been logged where it arose
    } catch (const std::exception& e) {
        onError_(e);
    }
}

// A cancel that is left from the run before is not this one's.
void CommandRunner::runAlone(const CommandRow& row, CommandContext& context) {
    if (running_ || engine_.TimerBusy()) throw EngineError(QStringLiteral("Det er allerede en kjøring i gang"));
    running_ = true;
    engine_.SetCancelRequest(false);
    engine_.Cancelled = false;
    Q_EMIT runningChanged(true);
    const auto done = qScopeGuard([this] {
        running_ = false;
        Q_EMIT runningChanged(false);
    });
    const db::StatementCancel endsWithTheProgram = engine_.Parts().Control.EndsWithTheProgram();
    row.execute(context);
}

bool CommandRunner::busy() const {
    return commands_ > 0 || engine_.TimerBusy();
}

}  // namespace torvik
