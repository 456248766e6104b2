#include "sandbox/tsql/execute/execute_errors.h"

namespace sandbox::definition {

Message message(int number, int state, std::string text, int severity) {
    return Message{.number = number, .severity = severity, .state = state, .text = std::move(text)};
}

SqlError definitionError(int number, int state, std::string text, int severity) {
    return SqlError(message(number, state, std::move(text), severity));
}

SqlError constraintError(int number, int state, std::string text) {
    return {{message(number, state, std::move(text)),
             message(1750, 0, "Could not create constraint or index. See previous errors.")},
            Effect::Statement};
}

SqlError nameTaken(std::string_view name) {
    return definitionError(2714, 6, "There is already an object named '" + std::string(name) + "' in the database.");
}

SqlError cannotFind(int number, int state, std::string_view object) {
    return definitionError(number, state,
                           "Cannot find the object \"" + std::string(object) +
                               "\" because it does not exist or you do not have permissions.");
}

SqlError cannotDrop(std::string_view kind, std::string_view name, int state) {
    return definitionError(3701, state,
                           "Cannot drop the " + std::string(kind) + " '" + std::string(name) +
                               "', because it does not exist or you do not have permission.",
                           11);
}

SqlError unsupported(std::string_view what) {
    return definitionError(40510, 1,
                           "Statement '" + std::string(what) + "' is not supported in this version of SQL Server.");
}

}  // namespace sandbox::definition
