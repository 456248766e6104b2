// The template by which the interpreter's files get a node's bound form at the moment when it runs.
#pragma once

#include <variant>

#include "sandbox/tsql/run/interpreter.h"

namespace sandbox {

// Binds now when the compile pass did not, or when a table has changed since. Raises CompileError.
template <class Bind>
BoundNode& Interpreter::bound(const void* key, Bind bind) {
    BoundNode& known = node(key);
    if (!std::holds_alternative<std::monostate>(known.bound) && holds(known)) return known;
    try {
        known.bound = bind(bindContext(*frame().unit, known.visible));
        known.options = optionBits();
    } catch (const SqlError& e) {
        known.bound = std::monostate();
        throw CompileError{e};
    }
    return known;
}

}  // namespace sandbox
