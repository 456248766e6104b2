// What a failure means for what is done next, asked where that is decided: at the walk, at a pair of transactions, at a
// worker's end. A layer that adds its own words to a failure raises them with the failure nested in them
// (std::throw_with_nested), so that the kind survives the way up and the text told is still the outermost.
#pragma once

#include <exception>

namespace torvik {

enum class FailureKind {
    Cancelled,       // the operator's silent abort: nobody tries again
    ConnectionLost,  // the session is gone, and with it what was open on it
    CommitInDoubt,   // a commit without an answer: look before anything is done again
    TimedOut,        // the statement was cancelled, the session is usable
    Refused,         // the server refused a statement, the session is usable
    Other            // found by the program itself
};

// Of the failure itself or of the failures nested in it, the first that tells more than Other.
[[nodiscard]] FailureKind classify(const std::exception& failure);
[[nodiscard]] FailureKind classify(const std::exception_ptr& failure);

}  // namespace torvik
