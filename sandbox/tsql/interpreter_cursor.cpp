// Cursors of T-SQL. Not there yet: each statement is refused by name.
#include "sandbox/tsql/interpreter.h"

namespace sandbox {

namespace {

[[noreturn]] void raiseUnsupported(const std::string& what) {
    throw SqlError(Message{.number = 40510,
                           .severity = 16,
                           .state = 1,
                           .text = "Statement '" + what + "' is not supported in this version of SQL Server."});
}

}  // namespace

void Interpreter::runDeclareCursor(const ast::DeclareCursor&) {
    raiseUnsupported("DECLARE CURSOR");
}

void Interpreter::runCursor(const ast::CursorCommand& n) {
    static constexpr const char* kNames[] = {"OPEN", "FETCH", "CLOSE", "DEALLOCATE"};
    raiseUnsupported(kNames[static_cast<int>(n.kind)]);
}

}  // namespace sandbox
