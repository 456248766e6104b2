// Prepared statements over Session::describe and Session::execute.
#include "sandbox/server/prepared.h"

#include "sandbox/server/collected_reply.h"
#include "sandbox/store/values/error_table.h"

namespace sandbox::server {
namespace {

constexpr std::int32_t kWithMetadata = 1;

[[noreturn]] void unknownHandle(std::int32_t handle) {
    throw SqlError(errorMessage<8179, 4>(handle));
}

// 8180 follows whatever kept a statement from being prepared.
[[noreturn]] void notPrepared(const SqlError& cause) {
    SqlError all = cause;
    all.messages.push_back(errorMessage<8180>().atLine(1));
    throw all;
}

}  // namespace

void PreparedStatements::prepare(const CallArguments& arguments, Reply& reply) {
    Statement statement{arguments.textOrEmpty(1, "@params"), arguments.text(2, "@stmt")};
    std::vector<ResultColumn> columns;
    try {
        columns = session_.describe(statement.text, statement.declarations);
    } catch (const SqlError& e) {
        notPrepared(e);
    }
    if (!columns.empty() && (arguments.integerIfGiven(3, "@options").value_or(0) & kWithMetadata) != 0) {
        reply.columns(columns);
        reply.statementDone(0, true);
    }
    const std::int32_t handle = add(std::move(statement));
    reply.returnStatus(0);
    reply.outputParameter(0, arguments.nameAt(0), intValue(handle));
    reply.procedureDone();
}

void PreparedStatements::prepareAndExecute(const CallArguments& arguments, Reply& reply) {
    constexpr int kOwnParameters = 3;
    const Statement statement{arguments.textOrEmpty(1, "@params"), arguments.text(2, "@stmt")};
    const std::int32_t handle = add(statement);
    CallReply call(reply);
    session_.execute(statement.text, statement.declarations, arguments.rest(kOwnParameters), call);
    call.finish({{0, arguments.nameAt(0), intValue(handle)}}, kOwnParameters);
}

void PreparedStatements::execute(const CallArguments& arguments, Reply& reply) {
    const std::int32_t handle = arguments.integer(0, "@handle");
    const auto found = statements_.find(handle);
    if (found == statements_.end()) unknownHandle(handle);
    const Statement statement = found->second;
    CallReply call(reply);
    session_.execute(statement.text, statement.declarations, arguments.rest(1), call);
    call.finish({}, 1);
}

void PreparedStatements::unprepare(const CallArguments& arguments, Reply& reply) {
    const std::int32_t handle = arguments.integer(0, "@handle");
    if (statements_.erase(handle) == 0) unknownHandle(handle);
    reply.returnStatus(0);
    reply.procedureDone();
}

std::int32_t PreparedStatements::add(Statement statement) {
    statements_.emplace(next_, std::move(statement));
    return next_++;
}

}  // namespace sandbox::server
