// An error or message as SQL Server tells it, and the exception that carries one through the sandbox.
#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace sandbox {

// Message::line of the errors that SQL Server tells with line 0.
inline constexpr int kNoLine = -1;

// [MS-TDS] 2.2.7.10 (ERROR) and 2.2.7.13 (INFO). Severity 10 and below is information.
struct Message {
    int number = 0;
    int severity = 16;
    int state = 1;
    std::string text{};
    std::string procedure{};   // empty outside a procedure
    int line = 0;              // 1-based line of the batch or procedure; 0: filled in by the statement that fails
    std::uint32_t offset = 0;  // in that text, of a name that is wrong; never told

    // The same message, told with another state, of another place.
    [[nodiscard]] Message withState(int other) &&;
    [[nodiscard]] Message in(std::string_view procedureName) &&;
    [[nodiscard]] Message atLine(int place) &&;
};

inline Message Message::withState(int other) && {
    state = other;
    return std::move(*this);
}
inline Message Message::in(std::string_view procedureName) && {
    procedure = procedureName;
    return std::move(*this);
}
inline Message Message::atLine(int place) && {
    line = place;
    return std::move(*this);
}

// What an error does beyond ending its statement. The interpreter decides on it; the thrower knows it.
enum class Effect {
    Statement,   // the batch goes on with the next statement (constraint errors, overflow, missing procedure)
    Scope,       // ends the batch or procedure it stands in; the caller of a procedure goes on (208, 207 at run time)
    Batch,       // ends the whole batch and rolls the transaction back (conversion errors such as 245)
    Connection,  // severity 20 and above
};

// Several messages where one statement reports several (207 for each missing column).
class SqlError : public std::exception {
public:
    explicit SqlError(Message message, Effect after = Effect::Statement)
        : messages{std::move(message)}, effect(after) {}
    SqlError(std::vector<Message> all, Effect after) : messages(std::move(all)), effect(after) {}
    [[nodiscard]] const char* what() const noexcept override { return messages.front().text.c_str(); }

    std::vector<Message> messages;  // never empty
    Effect effect;
};

}  // namespace sandbox
