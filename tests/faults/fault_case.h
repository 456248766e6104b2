// One fault at one request of the recorded run: how it is made, and what the run must leave, worked out from the place
// of the request between the commits alone. docs/failures.md tells the same as tables.
#pragma once

#include <gtest/gtest.h>

#include <span>
#include <string>
#include <vector>

#include "tests/faults/fault_stage.h"

namespace torvik::test {

enum class Fault {
    Fails,           // the statement is refused
    Deadlocks,       // the statement is refused and the server rolls its transaction back
    DropsBefore,     // the connection is cut, the statement has not run
    DropsAfter,      // the statement has run, the connection is cut without a reply
    OtherSideDrops,  // the connection to the other side is cut while the statement runs
    Cancelled,       // the user cancels while the statement runs
};
inline constexpr Fault kFaults[] = {Fault::Fails,      Fault::Deadlocks,      Fault::DropsBefore,
                                    Fault::DropsAfter, Fault::OtherSideDrops, Fault::Cancelled};
[[nodiscard]] std::string nameOf(Fault fault);

// What stands after a run with a fault in the first till's part.
struct Leaves {
    std::size_t pairs = 0;    // so many of the first till's pairs stand on both sides
    bool tillAhead = false;   // and of the next one the till's side, until the next run
    bool told = true;         // the run tells an error
    bool walkGoesOn = true;   // the second till is fetched
    std::string droppedText;  // the batch of gift cards or credit notes that was given up

    friend bool operator==(const Leaves&, const Leaves&) = default;
};
[[nodiscard]] Leaves leaves(const RecordedRun& run, std::size_t request, Fault fault);
[[nodiscard]] ChainState stateAfter(const RecordedRun& run, const Leaves& left, bool secondTillFetched);

// What the next good run makes of it.
[[nodiscard]] ChainState outcomeAfter(const FaultStage& stage, const Leaves& left);

struct FaultRun {
    std::string struck;  // the text of the request that the fault met; empty: it was never sent. Of requests only
    QStringList errors;
    QStringList log;
};
[[nodiscard]] FaultRun runWithFault(ChainCopy& copy, const RecordedRequest& at, Fault fault);
// The good run on a copy that a case has left, against what it must make of it.
void expectNextRunMakesGood(const FaultStage& stage, ChainCopy& copy, const Leaves& left);

// One fault at one place: at a request, or at one of its statements.
struct FaultCase {
    std::size_t request = 0;  // its place in the recorded run
    RecordedRequest at;
};
[[nodiscard]] std::vector<FaultCase> casesOf(const RecordedRun& run, std::span<const std::size_t> requests);
// Each statement of the requests; of those with the same text, such as a procedure's, the first.
[[nodiscard]] std::vector<FaultCase> statementCasesOf(const RecordedRun& run, std::span<const std::size_t> requests);

// Makes the fault in each case and compares every table with what must be left. Cases that leave the stage as it was
// share a copy; each other state is followed by a good run once, and so is the last. With Follow::Each every case has
// its own copy and is followed by a good run.
enum class Follow { Once, Each };
void runCases(const FaultStage& stage, std::span<const FaultCase> cases, Fault fault, Follow follow);

// The long run of the tests: with TORVIK_LONG in the environment, as ./test.sh --long sets it.
[[nodiscard]] bool isLongRun();

}  // namespace torvik::test
