// A fault at each step of the transfer, on either side: nothing of the pair stands, the second till is fetched, and the
// next run makes good. EveryRequest (every_request_test.cpp) does the same at every single request.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "inbound/transfer/transfer_steps.h"
#include "tests/faults/fault_case.h"

namespace torvik::test {
namespace {

class TransferFault : public testing::TestWithParam<Fault> {};

// Up to the end of the first pair: of each step the last request to either side.
std::vector<std::size_t> lastOfEachStep(const RecordedRun& run) {
    std::map<std::pair<int, std::size_t>, std::size_t> last;
    for (std::size_t i = 0; i <= run.pairs.front().backOfficeCommits; ++i)
        if (run.requests[i].p > 0) last[{run.requests[i].p, run.requests[i].server}] = i;
    std::vector<std::size_t> chosen;
    for (const auto& [step, index] : last) chosen.push_back(index);
    std::sort(chosen.begin(), chosen.end());
    return chosen;
}

// Of each step the last request.
std::vector<std::size_t> endOfEachStep(const RecordedRun& run) {
    std::map<int, std::size_t> last;
    for (const std::size_t index : lastOfEachStep(run)) last[run.requests[index].p] = index;
    std::vector<std::size_t> chosen;
    for (const auto& [step, index] : last) chosen.push_back(index);
    return chosen;
}

// And all that stands outside of the steps: the roster, connecting, the first look at the till, gift cards and credit
// notes, the transactions' begin and end.
std::vector<std::size_t> outsideOfSteps(const RecordedRun& run) {
    std::vector<std::size_t> chosen;
    for (std::size_t i = 0; i <= run.pairs.front().backOfficeCommits; ++i)
        if (run.requests[i].p == 0) chosen.push_back(i);
    return chosen;
}

TEST_P(TransferFault, AtAnyStepLeavesNothingOfThePair) {
    const FaultStage& stage = FaultStage::unfetched();
    // What the user does is heard between requests, whichever side they go to.
    const bool eitherSide = GetParam() != Fault::Cancelled;
    const auto requests = eitherSide ? lastOfEachStep(stage.run()) : endOfEachStep(stage.run());
    runCases(stage, casesOf(stage.run(), requests), GetParam(), Follow::Once);
}

TEST_P(TransferFault, AroundTheStepsLeavesWholePairsSaveBetweenTheCommits) {
    const FaultStage& stage = FaultStage::unfetched();
    runCases(stage, casesOf(stage.run(), outsideOfSteps(stage.run())), GetParam(), Follow::Once);
}

// The other faults are made at every request of a settlement, and in the long run at every request of all.
INSTANTIATE_TEST_SUITE_P(Each, TransferFault,
                         testing::Values(Fault::Fails, Fault::DropsBefore, Fault::DropsAfter, Fault::Cancelled),
                         [](const auto& test) { return nameOf(test.param); });

// What the back office does with the rows is many statements in one request.
TEST(TransferFaults, AnyStatementOfThePostingProcedureLeavesNothingOfThePair) {
    const FaultStage& stage = FaultStage::unfetched();
    std::vector<std::size_t> requests;
    for (std::size_t i = 0; i <= stage.run().pairs.front().tillCommits; ++i)
        if (stage.run().requests[i].text.find("ExecuteDtsFromPos") != std::string::npos) requests.push_back(i);
    ASSERT_EQ(requests.size(), 1U);
    const auto cases = statementCasesOf(stage.run(), requests);
    EXPECT_GE(cases.size(), 40U);
    runCases(stage, cases, Fault::Fails, Follow::Once);
}

TEST(TransferFaults, TellTheStepAndItsNumber) {
    const FaultStage& stage = FaultStage::unfetched();
    const auto copy = stage.copy();
    std::vector<int> told;
    for (const std::size_t index : lastOfEachStep(stage.run())) {
        const RecordedRequest& request = stage.run().requests[index];
        if (!told.empty() && told.back() == request.p) continue;
        const QString errors = runWithFault(*copy, request, Fault::Fails).errors.join(u'\n');
        EXPECT_TRUE(errors.contains(QStringLiteral("feilet (p=%1): ").arg(request.p))) << errors.toStdString();
        told.push_back(request.p);
    }
    std::vector<int> all;
    for (const TransferStep& step : transferSteps()) all.push_back(step.p);
    EXPECT_EQ(told, all);
}

TEST(TransferFaults, ABlockOfRowsThatIsRefusedOnceIsSentRowByRow) {
    const FaultStage& stage = FaultStage::unfetched();
    const auto copy = stage.copy();
    sandbox::FaultRule once;
    once.match.textContains = "INSERT INTO Temp_Ordrelinje_Import";
    once.action = sandbox::FaultAction::Fail;
    once.message = {.number = 50000, .severity = 16, .state = 1, .text = "Made to fail"};
    copy->chain.backOffice().faults().add(once);

    const auto program = copy->program();
    program->fetch();

    EXPECT_EQ(program->errors(), QStringList());
    EXPECT_EQ(difference(stage.run().states.back(), readState(copy->chain)), "");
}

// Each request that holds reads, but for the mark of time entries, behind which two are asked.
TEST(TransferFaults, ReadsThatAreRefusedTogetherOnceAreMadeOneByOne) {
    const FaultStage& stage = FaultStage::unfetched();
    int refused = 0;
    for (std::size_t i = 0; i < stage.run().pairs.front().tillCommits; ++i) {
        const RecordedRequest& request = stage.run().requests[i];
        if (request.text.find("SELECT @@ERROR Lest_") == std::string::npos || request.text.starts_with("UPDATE"))
            continue;
        const auto copy = stage.copy();
        sandbox::FaultRule once;
        once.skip = request.place - 1;
        once.action = sandbox::FaultAction::Fail;
        once.message = {.number = 50000, .severity = 16, .state = 1, .text = "Made to fail"};
        serverOf(copy->chain, request.server).faults().add(once);

        const auto program = copy->program();
        program->fetch();

        EXPECT_EQ(program->errors(), QStringList()) << request.text;
        EXPECT_EQ(difference(stage.run().states.back(), readState(copy->chain)), "") << request.text;
        ++refused;
    }
    EXPECT_GE(refused, 8);
}

// Rows beyond what one statement takes go by bulk copy: its opening is a request, then its rows are one.
std::vector<std::size_t> bulkCopies(const RecordedRun& run) {
    std::vector<std::size_t> chosen;
    for (std::size_t i = 0; i <= run.pairs.front().tillCommits; ++i)
        if (QString::fromStdString(run.requests[i].text).startsWith(QStringLiteral("INSERT BULK"), Qt::CaseInsensitive))
            chosen.push_back(i);
    return chosen;
}

class BulkCopyFault : public testing::TestWithParam<Fault> {};

TEST_P(BulkCopyFault, AtItsOpeningOrItsRowsLeavesNothingOfThePair) {
    const FaultStage& stage = FaultStage::busy();
    const auto requests = bulkCopies(stage.run());
    ASSERT_GE(requests.size(), 2U);
    runCases(stage, casesOf(stage.run(), requests), GetParam(), Follow::Once);
}

INSTANTIATE_TEST_SUITE_P(Each, BulkCopyFault,
                         testing::Values(Fault::Deadlocks, Fault::DropsBefore, Fault::DropsAfter, Fault::OtherSideDrops,
                                         Fault::Cancelled),
                         [](const auto& test) { return nameOf(test.param); });

// The driver's connection takes no further statement then, so that it is given up.
TEST(BulkCopyFaults, ACopyThatIsRefusedAtItsOpeningLeavesNothingOfThePair) {
    const FaultStage& stage = FaultStage::busy();
    const std::vector<std::size_t> requests = bulkCopies(stage.run());
    for (std::size_t opening = 0; opening < requests.size(); opening += 2) {
        const auto copy = stage.copy();
        const Leaves left = leaves(stage.run(), requests[opening], Fault::Fails);
        const FaultRun ran = runWithFault(*copy, stage.run().requests[requests[opening]], Fault::Fails);
        EXPECT_FALSE(ran.errors.isEmpty());
        EXPECT_EQ(difference(stateAfter(stage.run(), left, left.walkGoesOn), readState(copy->chain)), "");
        expectNextRunMakesGood(stage, *copy, left);
    }
}

TEST(BulkCopyFaults, RowsThatAreRefusedAreSentByStatements) {
    const FaultStage& stage = FaultStage::busy();
    const std::vector<std::size_t> requests = bulkCopies(stage.run());
    for (std::size_t rows = 1; rows < requests.size(); rows += 2) {
        const auto copy = stage.copy();
        const FaultRun ran = runWithFault(*copy, stage.run().requests[requests[rows]], Fault::Fails);
        EXPECT_FALSE(ran.struck.empty());
        EXPECT_EQ(ran.errors, QStringList());
        EXPECT_EQ(difference(stage.run().states.back(), readState(copy->chain)), "");
    }
}

}  // namespace
}  // namespace torvik::test
