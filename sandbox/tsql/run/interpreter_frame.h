// One level of execution (a batch, a procedure, a text), how a statement hands control on, and what unwinds it.
#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "sandbox/store/values/error.h"
#include "sandbox/store/values/value.h"
#include "sandbox/tsql/run/interpreter_unit.h"

namespace sandbox {

struct Cursor;

enum class Flow { Next, Break, Continue, Return, Goto };

// What ERROR_NUMBER() and its companions tell inside a CATCH block.
struct CaughtError {
    Message message;
    Effect effect = Effect::Statement;
};

struct Frame {
    enum class Kind { Batch, Procedure, Text };

    Kind kind = Kind::Batch;
    std::shared_ptr<Unit> unit;
    int level = 0;                                           // @@NESTLEVEL
    std::int32_t procedureId = 0;                            // @@PROCID
    std::vector<Value> variables;                            // beside unit->variables
    std::map<std::string, std::shared_ptr<Cursor>> cursors;  // local ones by folded name
    int tries = 0;                                           // TRY blocks that are open here
    std::string wantedLabel;                                 // while Flow::Goto travels and until its label is reached
    std::optional<std::int32_t> status;                      // RETURN's value
    std::optional<std::int64_t> scopeIdentity;               // SCOPE_IDENTITY()
    std::vector<int> argumentPlaces;                         // for each parameter its argument; -1: its default
    std::function<void(Frame&)> prepare;                     // fills the parameters in, once the unit is there
};

// An error on its way to the TRY block that catches it. notIn: the frame whose own TRY blocks may not (errors found
// while a statement of it was being compiled).
struct Caught {
    CaughtError error;
    const Frame* notIn = nullptr;
};

// Ends the frame that it passes first; the caller goes on. The error has been told.
struct ScopeEnded {};

// Ends the whole batch. The error has been told and the transaction dealt with.
struct BatchEnded {};

// Ends the batch and the connection (severity 20 and above). The error has been told.
struct ConnectionEnded {
    SqlError error;
};

// An error found while a statement was bound: it ends the frame that the statement stands in.
struct CompileError {
    SqlError error;
};

}  // namespace sandbox
