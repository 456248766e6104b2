// A fault at each request and at each statement of a settlement's posting, on either side: the settlement is rolled
// back or stands whole, those before it stand, the second till is fetched, and the next run goes on with it.
#include <gtest/gtest.h>

#include "tests/faults/fault_case.h"

namespace torvik::test {
namespace {

class PostingFault : public testing::TestWithParam<Fault> {};

// From the till's BEGIN TRANSACTION to the back office's commit.
std::vector<std::size_t> requestsOf(const RecordedPair& pair) {
    std::vector<std::size_t> requests;
    for (std::size_t i = pair.begins; i <= pair.backOfficeCommits; ++i) requests.push_back(i);
    return requests;
}

TEST_P(PostingFault, AtAnyRequestOfASettlementLeavesItOpenOrWhole) {
    const FaultStage& stage = FaultStage::transferred();
    runCases(stage, casesOf(stage.run(), requestsOf(stage.run().pairs.at(1))), GetParam(), Follow::Once);
}

TEST_P(PostingFault, AtTheNextSettlementLeavesTheOneBeforeItDone) {
    const FaultStage& stage = FaultStage::transferred();
    const RecordedPair& settlement = stage.run().pairs.at(2);
    const std::size_t requests[] = {settlement.begins, settlement.begins + 1, settlement.tillCommits,
                                    settlement.backOfficeCommits, settlement.backOfficeCommits + 1};
    runCases(stage, casesOf(stage.run(), requests), GetParam(), Follow::Once);
}

INSTANTIATE_TEST_SUITE_P(Each, PostingFault, testing::ValuesIn(kFaults),
                         [](const auto& test) { return nameOf(test.param); });

class PostingStatement : public testing::TestWithParam<Fault> {};

// Batches hold many statements, and so do the procedures that they call.
TEST_P(PostingStatement, AnyOfThemLeavesTheSettlementOpenOrWhole) {
    if (GetParam() != Fault::Fails && !isLongRun()) GTEST_SKIP() << "runs long: part of ./test.sh --long";
    const FaultStage& stage = FaultStage::transferred();
    const auto cases = statementCasesOf(stage.run(), requestsOf(stage.run().pairs.at(1)));
    EXPECT_GE(cases.size(), 30U);
    runCases(stage, cases, GetParam(), Follow::Once);
}

INSTANTIATE_TEST_SUITE_P(Each, PostingStatement, testing::Values(Fault::Fails, Fault::DropsBefore, Fault::DropsAfter),
                         [](const auto& test) { return nameOf(test.param); });

}  // namespace
}  // namespace torvik::test
