// What a system procedure asks of whoever runs it. The interpreter is it (sandbox/tsql/run/interpreter.h); this keeps
// the procedures below it.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/store/databases/connection.h"
#include "sandbox/store/values/error.h"
#include "sandbox/store/values/value.h"
#include "sandbox/tsql/bind/result_column.h"

namespace sandbox {

// An argument as the caller of a procedure or text gives it.
struct CallArgument {
    std::string name;  // with its "@"; empty: by place
    Typed value;
    bool output = false;
    bool useDefault = false;
    std::optional<int> target;  // slot of the caller's variable that an OUTPUT argument comes back to
};

class ProcedureHost {
public:
    virtual ~ProcedureHost() = default;

    [[nodiscard]] virtual Connection& connection() = 0;
    // Runs a text with declared parameters, `levels` deeper than its caller; database: where, empty for the current
    // one. procedure: the name that it runs under, empty for a bare text. Gives its status; none where an error ended
    // it.
    virtual std::optional<std::int32_t> runNested(std::string_view text, std::string_view declarations,
                                                  std::vector<CallArgument>& arguments, int levels,
                                                  const std::string& database, const std::string& procedure) = 0;
    // The columns of a text's first SELECT; empty when it has none.
    [[nodiscard]] virtual std::vector<ResultColumn> describe(std::string_view text, std::string_view declarations) = 0;
    virtual void sendRows(std::span<const ResultColumn> columns, std::span<const std::vector<Value>> rows) = 0;
    virtual void report(const SqlError& error) = 0;  // and goes on, where the error lets it
    virtual void renameObject(const std::string& object, const std::string& newName, const std::string& type) = 0;
    virtual void resetSession() = 0;
};

}  // namespace sandbox
