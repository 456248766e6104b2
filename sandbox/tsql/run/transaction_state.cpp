// The rules of BEGIN, COMMIT, ROLLBACK and SAVE TRANSACTION. Names are compared byte by byte whatever the collation,
// and only the outermost transaction's name counts.
#include "sandbox/tsql/run/transaction_state.h"

#include <algorithm>

#include "sandbox/store/values/error.h"
#include "sandbox/store/values/error_table.h"

namespace sandbox {

namespace {

[[noreturn]] void raiseDoomed() {
    throw SqlError(errorMessage<3930>());
}

}  // namespace

TransactionStep TransactionState::begin(std::string_view name) {
    if (doomed_) raiseDoomed();
    if (++count_ > 1) return TransactionStep::None;
    name_ = name;
    return TransactionStep::Begin;
}

TransactionStep TransactionState::commit() {
    if (count_ == 0) throw SqlError(errorMessage<3902>());
    if (doomed_) raiseDoomed();
    if (count_ > 1) {
        --count_;
        return TransactionStep::None;
    }
    ended();
    return TransactionStep::Commit;
}

TransactionStep TransactionState::rollback(std::string_view name) {
    if (count_ == 0) throw SqlError(errorMessage<3903>());
    if (!name.empty() && name != name_) {
        auto found = std::find(saves_.rbegin(), saves_.rend(), name);
        if (found == saves_.rend()) {
            throw SqlError(errorMessage<6401>(name));
        }
        if (doomed_) {
            throw SqlError(errorMessage<3931>());
        }
        saves_.erase(found.base(), saves_.end());
        savePoint_ = saves_.size();
        return TransactionStep::RollbackToSave;
    }
    ended();
    return TransactionStep::Rollback;
}

bool TransactionState::isSave(std::string_view name) const {
    return !name.empty() && std::find(saves_.begin(), saves_.end(), name) != saves_.end();
}

TransactionStep TransactionState::save(std::string_view name) {
    if (count_ == 0) throw SqlError(errorMessage<628>());
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
