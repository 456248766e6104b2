// A bulk load that a session has under way, with everything that must live as long as it does.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "sandbox/tsql/run/interpreter.h"
#include "sandbox/tsql/run/reply.h"

namespace sandbox {

struct BulkLoad {
    explicit BulkLoad(SessionState& session) : interpreter(session, reply) {}

    SilentReply reply;
    Interpreter interpreter;
    Unit unit;
    BindContext bind;
    std::unique_ptr<ExecuteContext> execute;
    std::vector<Type> types;
    std::unique_ptr<BulkInsert> insert;
    std::optional<WatchedStatement> watched;
};

}  // namespace sandbox
