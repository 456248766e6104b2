// What T-SQL says about a session's transaction: the nesting count, names, save points and whether it may still be
// committed. It decides what a statement asks of the storage and raises the transaction errors; the session carries
// the steps out.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace sandbox {

// What the storage has to do after a transaction statement.
enum class TransactionStep { None, Begin, Commit, Rollback, Save, RollbackToSave };

class TransactionState {
public:
    [[nodiscard]] int count() const { return count_; }  // @@TRANCOUNT
    [[nodiscard]] bool open() const { return count_ > 0; }
    [[nodiscard]] int xactState() const { return count_ == 0 ? 0 : doomed_ ? -1 : 1; }
    [[nodiscard]] bool doomed() const { return doomed_; }
    [[nodiscard]] bool isSave(std::string_view name) const;  // rather than the transaction itself

    TransactionStep begin(std::string_view name);
    TransactionStep commit();                         // 3902 without a transaction, 3930 in a doomed one
    TransactionStep rollback(std::string_view name);  // 3903, 6401, 3931; save points keep the count
    TransactionStep save(std::string_view name);      // 628 without a transaction, 3930 in a doomed one

    void doom() { doomed_ = count_ > 0; }  // only a roll-back of the whole transaction is left
    void ended();                          // rolled back by an error or by the connection's end

    // The number that names the save point in the storage: the latest of that name.
    [[nodiscard]] std::size_t savePoint() const { return savePoint_; }

private:
    int count_ = 0;
    bool doomed_ = false;
    std::string name_;  // the outermost transaction's
    std::vector<std::string> saves_;
    std::size_t savePoint_ = 0;
};

}  // namespace sandbox
