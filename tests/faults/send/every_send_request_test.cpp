// The long run: every fault at every single request and statement of the first till's part of a send, each case on a
// fresh copy and followed by the next two sends. The ordinary run takes the last request of each step
// (send_faults_test.cpp), and here the statements that hold gift cards and credit notes.
#include <gtest/gtest.h>

#include "tests/faults/send/send_case.h"

namespace torvik::test {
namespace {

constexpr int kMergeGiftCards = 41;
constexpr int kMergeCreditNotes = 42;

class EverySendRequest : public testing::TestWithParam<Fault> {};
class StatementOfEverySendRequest : public testing::TestWithParam<Fault> {};

TEST_P(EverySendRequest, LeavesWhatStoodBeforeItOrBehindIt) {
    if (!isLongRun()) GTEST_SKIP() << "runs for minutes: part of ./test.sh --long";
    const SendStage& stage = SendStage::get();
    for (std::size_t i = 0; i < stage.run().beginOf(2); ++i) expectSendWithFault(stage, i, GetParam());
}

TEST_P(StatementOfEverySendRequest, ChangesNoOtherTable) {
    if (!isLongRun()) GTEST_SKIP() << "runs for minutes: part of ./test.sh --long";
    const SendStage& stage = SendStage::get();
    for (std::size_t i = 0; i < stage.run().beginOf(2); ++i)
        for (std::size_t s = 0; s < stage.run().requests[i].statements.size(); ++s)
            expectSendWithFaultAtStatement(stage, i, s, GetParam());
}

INSTANTIATE_TEST_SUITE_P(Long, EverySendRequest, testing::ValuesIn(kSendFaults),
                         [](const auto& test) { return nameOf(test.param); });

INSTANTIATE_TEST_SUITE_P(Long, StatementOfEverySendRequest,
                         testing::Values(Fault::Fails, Fault::Deadlocks, Fault::DropsBefore, Fault::DropsAfter),
                         [](const auto& test) { return nameOf(test.param); });

// What the till has not handed in stands, whichever statement fails.
TEST(VoucherMerge, AtAnyOfItsStatementsLosesNoRedemption) {
    const SendStage& stage = SendStage::get();
    std::size_t statements = 0;
    for (std::size_t i = 0; i < stage.run().beginOf(2); ++i) {
        const SentRequest& request = stage.run().requests[i];
        if (request.step != kMergeGiftCards && request.step != kMergeCreditNotes) continue;
        if (request.text.find("begin transaction") == std::string::npos) continue;
        for (std::size_t s = 0; s < request.statements.size(); ++s, ++statements)
            expectSendWithFaultAtStatement(stage, i, s, Fault::Fails);
    }
    EXPECT_GE(statements, 12U) << "of both: the transaction, the delete, the call, its insert and update, the commit";
}

}  // namespace
}  // namespace torvik::test
