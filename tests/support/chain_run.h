// The program over a demo chain of its own, with the chain's tables at hand. Tests of whole runs start from it. The
// chain stands on servers of its own, or on the one that TORVIK_TEST_SERVER names; tests that make faults or count
// requests need the former and say so with TORVIK_NEEDS_SANDBOX(run.chain).
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "sandbox/chain/demo_chain.h"
#include "tests/support/chain_program.h"
#include "tests/support/sandbox_server.h"

namespace torvik::test {

// A base, so that the chain stands before the program begins and ends after it.
struct RunningChain {
    sandbox::chain::DemoChain chain;
};

class ChainRun : public RunningChain, public ChainProgram {
public:
    explicit ChainRun(const sandbox::chain::ChainOptions& options = {});
    explicit ChainRun(sandbox::chain::Chain model);

    // What the back office holds of the tills' sales, against what the model says of those fetched: the first table
    // that differs is shown whole, line by line.
    [[nodiscard]] testing::AssertionResult posted(const std::set<std::size_t>& tills) const;
    [[nodiscard]] testing::AssertionResult postedWhole() const;

    // The rows of one table, which may be a join, and its columns, which may be expressions, against what they must be.
    [[nodiscard]] testing::AssertionResult backOfficeHolds(const sandbox::chain::TableData& table) const;
    [[nodiscard]] testing::AssertionResult tillHolds(std::size_t till, const sandbox::chain::TableData& table) const;

    // Everything that the back office and the tills hold, table by table, but for columns that tell a moment of the run
    // itself: to be compared with itself after something that must change nothing.
    [[nodiscard]] std::string everything() const;

    // Every table of a till with its columns and rows, the rows in no order.
    struct Table {
        std::vector<std::string> columns;
        std::vector<std::vector<std::string>> rows;
    };
    [[nodiscard]] std::map<std::string, Table> tillTables(std::size_t till) const;

    // The first column of the first row; NULL for null.
    [[nodiscard]] std::string backOfficeValue(const std::string& sql) const;
    [[nodiscard]] std::string tillValue(std::size_t till, const std::string& sql) const;
    // Each row as "a | b | NULL", in the order of the statement.
    [[nodiscard]] std::vector<std::string> backOfficeRows(const std::string& sql) const;
    [[nodiscard]] std::vector<std::string> tillRows(std::size_t till, const std::string& sql) const;
};

}  // namespace torvik::test
