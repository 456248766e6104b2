// The prepared statements of one session: sp_prepare, sp_prepexec, sp_execute, sp_unprepare. A handle lives until it is
// given back or the session is reset.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "sandbox/server/call_arguments.h"
#include "sandbox/tsql/run/session.h"

namespace sandbox::server {

class PreparedStatements {
public:
    explicit PreparedStatements(Session& session) : session_(session) {}

    // Each ends the call's part of the reply, with status, outputs and DONEPROC. Errors in the call itself are thrown
    // as SqlError.
    void prepare(const CallArguments& arguments, Reply& reply);
    void prepareAndExecute(const CallArguments& arguments, Reply& reply);
    void execute(const CallArguments& arguments, Reply& reply);
    void unprepare(const CallArguments& arguments, Reply& reply);

    void clear() { statements_.clear(); }
    [[nodiscard]] std::size_t size() const { return statements_.size(); }

private:
    struct Statement {
        std::string declarations;
        std::string text;
    };
    std::int32_t add(Statement statement);

    Session& session_;
    std::map<std::int32_t, Statement> statements_;
    std::int32_t next_ = 1;
};

}  // namespace sandbox::server
