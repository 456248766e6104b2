// The whole program without its window over a demo chain: an engine with its two sessions and the fetch joined to it.
// Tests of whole runs and of faults start from it. Waits take no time; the clock is the real one.
#pragma once

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "engine/db/session.h"
#include "engine/log_pane.h"
#include "engine/torvik_pos.h"
#include "inbound/fetch_till.h"
#include "sandbox/chain/demo_chain.h"
#include "tests/support/recording_sink.h"

namespace torvik::test {

class ChainRun {
public:
    explicit ChainRun(const sandbox::chain::ChainOptions& options = {});
    ~ChainRun();
    ChainRun(const ChainRun&) = delete;
    ChainRun& operator=(const ChainRun&) = delete;

    // One settlement run over all tills, from a fresh back-office session, as the command in the window does it.
    void fetch();

    // What the back office holds of the tills' sales, against what the model says of those fetched: the first table
    // that differs is shown whole, line by line.
    [[nodiscard]] testing::AssertionResult posted(const std::set<std::size_t>& tills) const;
    [[nodiscard]] testing::AssertionResult postedWhole() const;

    // Everything that the back office and the tills hold, table by table, but for columns that tell a moment of the run
    // itself: to be compared with itself after something that must change nothing.
    [[nodiscard]] std::string everything() const;

    // The first column of the first row; NULL for null.
    [[nodiscard]] std::string backOfficeValue(const std::string& sql) const;
    [[nodiscard]] std::string tillValue(std::size_t till, const std::string& sql) const;
    // Each row as "a | b | NULL", in the order of the statement.
    [[nodiscard]] std::vector<std::string> backOfficeRows(const std::string& sql) const;
    [[nodiscard]] std::vector<std::string> tillRows(std::size_t till, const std::string& sql) const;

    // The error pane's lines, without their times.
    [[nodiscard]] QStringList errors() const;
    [[nodiscard]] QStringList log() const;

    sandbox::chain::DemoChain chain;
    QTemporaryDir folder;  // the temporary folder, and the working directory while this stands
    RecordedLog structured;
    db::Session target;
    db::Session source;
    TTorvikPos engine;
    StringListPane logPane;
    StringListPane errorPane;

private:
    [[nodiscard]] std::unique_ptr<db::Session> backOfficeSession() const;
    [[nodiscard]] std::unique_ptr<db::Session> tillSession(std::size_t till) const;

    QString workingDirectory_;
};

}  // namespace torvik::test
