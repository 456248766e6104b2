// The long run: every fault at every single request of the first till's part of a run, each case on a fresh copy and
// followed by the next run. The ordinary run takes the last request of each step and shares copies between cases
// (transfer_faults_test.cpp, posting_faults_test.cpp).
#include <gtest/gtest.h>

#include "tests/faults/fault_case.h"

namespace torvik::test {
namespace {

class EveryRequest : public testing::TestWithParam<Fault> {};

TEST_P(EveryRequest, LeavesWhatThePairsOfCommitsTell) {
    if (!isLongRun()) GTEST_SKIP() << "runs for minutes: part of ./test.sh --long";
    const FaultStage& stage = FaultStage::unfetched();
    std::vector<std::size_t> requests;
    for (std::size_t i = 0; i < stage.run().firstRequestTo(kSecondTill); ++i) requests.push_back(i);
    runCases(stage, casesOf(stage.run(), requests), GetParam(), Follow::Each);
}

INSTANTIATE_TEST_SUITE_P(Long, EveryRequest, testing::ValuesIn(kFaults),
                         [](const auto& test) { return nameOf(test.param); });

}  // namespace
}  // namespace torvik::test
