// Errors that several definitions share.
#include "sandbox/tsql/execute/execute_errors.h"

#include "sandbox/store/values/error_table.h"

namespace sandbox::definition {

SqlError constraintError(Message message) {
    return {{std::move(message), errorMessage<1750>()}, Effect::Statement};
}

SqlError nameTaken(std::string_view name) {
    return SqlError(errorMessage<2714, 6>(name));
}

SqlError cannotDrop(std::string_view kind, std::string_view name, int state) {
    return SqlError(errorMessage<3701>(kind, name).withState(state));
}

SqlError unsupported(std::string_view what) {
    return SqlError(errorMessage<40510>(what));
}

}  // namespace sandbox::definition
