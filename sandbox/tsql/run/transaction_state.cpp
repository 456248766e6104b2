// The rules of BEGIN, COMMIT, ROLLBACK and SAVE TRANSACTION. Names are compared byte by byte whatever the collation,
// and only the outermost transaction's name counts.
#include "sandbox/tsql/run/transaction_state.h"

#include <algorithm>

#include "sandbox/store/values/error.h"

namespace sandbox {

namespace {

[[noreturn]] void raise(int number, int state, std::string text) {
    throw SqlError(Message{.number = number, .severity = 16, .state = state, .text = std::move(text)});
}

[[noreturn]] void raiseDoomed() {
    raise(3930, 1,
          "The current transaction cannot be committed and cannot support operations that write to the log file. Roll "
          "back the transaction.");
}

}  // namespace

TransactionStep TransactionState::begin(std::string_view name) {
    if (doomed_) raiseDoomed();
    if (++count_ > 1) return TransactionStep::None;
    name_ = name;
    return TransactionStep::Begin;
}

TransactionStep TransactionState::commit() {
    if (count_ == 0) raise(3902, 1, "The COMMIT TRANSACTION request has no corresponding BEGIN TRANSACTION.");
    if (doomed_) raiseDoomed();
    if (count_ > 1) {
        --count_;
        return TransactionStep::None;
    }
    ended();
    return TransactionStep::Commit;
}

TransactionStep TransactionState::rollback(std::string_view name) {
    if (count_ == 0) raise(3903, 1, "The ROLLBACK TRANSACTION request has no corresponding BEGIN TRANSACTION.");
    if (!name.empty() && name != name_) {
        auto found = std::find(saves_.rbegin(), saves_.rend(), name);
        if (found == saves_.rend()) {
            raise(6401, 1,
                  "Cannot roll back " + std::string(name) + ". No transaction or savepoint of that name was found.");
        }
        if (doomed_) {
            raise(3931, 1,
                  "The current transaction cannot be committed and cannot be rolled back to a savepoint. Roll back the "
                  "entire transaction.");
        }
        saves_.erase(found.base(), saves_.end());
        savePoint_ = saves_.size();
        return TransactionStep::RollbackToSave;
    }
    ended();
    return TransactionStep::Rollback;
}

TransactionStep TransactionState::save(std::string_view name) {
    if (count_ == 0) raise(628, 0, "Cannot issue SAVE TRANSACTION when there is no active transaction.");
    if (doomed_) raiseDoomed();
    saves_.emplace_back(name);
    savePoint_ = saves_.size();
    return TransactionStep::Save;
}

void TransactionState::ended() {
    count_ = 0;
    doomed_ = false;
    name_.clear();
    saves_.clear();
    savePoint_ = 0;
}

}  // namespace sandbox
