// A row's text with its arguments in their places.
#include "sandbox/store/values/error_table.h"

namespace sandbox::errors {

Message fill(const ErrorRow& row, std::initializer_list<Argument> arguments) {
    Message message{.number = row.number, .severity = row.severity, .state = row.state};
    std::size_t from = 0;
    for (const Argument& argument : arguments) {
        const std::size_t place = row.text.find("{}", from);
        message.text += row.text.substr(from, place - from);
        message.text += argument.text();
        from = place + 2;
    }
    message.text += row.text.substr(from);
    return message;
}

}  // namespace sandbox::errors
