// A Reply that keeps the rows of every row set for INSERT ... EXEC and hands messages and context changes on.
#pragma once

#include <vector>

#include "sandbox/store/values/error_table.h"
#include "sandbox/tsql/run/reply.h"

namespace sandbox {

class RowCollector : public Reply {
public:
    struct Set {
        std::vector<Type> types;
        std::vector<std::vector<Typed>> rows;
    };

    // wanted: how many columns every row set must have (213).
    RowCollector(Reply& to, std::size_t wanted) : to_(to), wanted_(wanted) {}
    [[nodiscard]] const std::vector<Set>& sets() const { return sets_; }

    void columns(std::span<const ResultColumn> columns) override {
        if (columns.size() != wanted_) {
            throw SqlError(errorMessage<213, 7>(), Effect::Batch);
        }
        Set& set = sets_.emplace_back();
        for (const auto& column : columns) set.types.push_back(column.type);
    }
    void row(std::span<const Value> cells) override {
        Set& set = sets_.back();
        auto& row = set.rows.emplace_back();
        for (std::size_t i = 0; i < cells.size(); ++i) row.push_back({set.types.at(i), cells[i]});
    }
    void statementDone(std::optional<std::int64_t>, bool) override {}
    void error(const Message& message) override { to_.error(message); }
    void info(const Message& message) override { to_.info(message); }
    void databaseChanged(const std::string& from, const std::string& to) override { to_.databaseChanged(from, to); }
    void transactionBegan(std::uint64_t descriptor) override { to_.transactionBegan(descriptor); }
    void transactionCommitted(std::uint64_t descriptor) override { to_.transactionCommitted(descriptor); }
    void transactionRolledBack(std::uint64_t descriptor) override { to_.transactionRolledBack(descriptor); }
    void returnStatus(std::int32_t) override {}
    void outputParameter(int, const std::string&, const Typed&) override {}
    void procedureDone() override {}

private:
    Reply& to_;
    std::size_t wanted_;
    std::vector<Set> sets_;
};

}  // namespace sandbox
