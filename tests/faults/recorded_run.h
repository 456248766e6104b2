// A run without a fault, request by request, and the states that it passes between its pairs of transactions: the list
// from which the faults are aimed, and the measure of what they leave.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "sandbox/server/faults.h"
#include "tests/faults/chain_state.h"
#include "tests/faults/request_watch.h"
#include "tests/support/chain_program.h"

namespace torvik::test {

// A request, or a statement that ran within one.
struct RecordedRequest {
    std::size_t server = 0;
    // 1-based, among the requests of this run to its server; of a statement, among those of this run at its server that
    // hold its text.
    std::uint64_t place = 0;
    std::string text;
    sandbox::FaultLevel level = sandbox::FaultLevel::Request;
    int p = 0;        // the step of the transfer that sends it; 0 outside of the steps
    int heardAt = 0;  // the step at which the program next handles what the user has done; likewise
};

// One pair of transactions of a till: the transfer, then a settlement each. Places in RecordedRun::requests.
struct RecordedPair {
    std::size_t till = 0;         // its server
    std::size_t begins = 0;       // the till's BEGIN TRANSACTION
    std::size_t tillCommits = 0;  //
    std::size_t backOfficeCommits = 0;
    std::uint64_t statementsBefore = 0;  // statements ended at the back office in this run before the pair
    std::uint64_t statementsAfter = 0;   // and when the back office's commit came
};

struct RecordedRun {
    std::vector<RecordedRequest> requests;
    // The statements of each request, those of procedures included, in the order in which they ran.
    std::vector<std::vector<RecordedRequest>> statements;
    std::vector<RecordedPair> pairs;
    std::vector<ChainState> states;  // before each pair, and at the end
    QStringList errors;

    [[nodiscard]] std::size_t firstRequestTo(std::size_t server) const;
    [[nodiscard]] std::size_t pairsOf(std::size_t till) const;
};

// A request's text as it is the same in every run: without the moments and the identities made for one run.
[[nodiscard]] std::string sameEachRun(const std::string& text);

// Runs the program once over the chain.
[[nodiscard]] RecordedRun record(sandbox::chain::DemoChain& chain, ChainProgram& program);

}  // namespace torvik::test
