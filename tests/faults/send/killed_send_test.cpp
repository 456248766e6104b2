// The program is killed while it sends. Each till has what had been merged by then, and the next two sends make good.
#include <gtest/gtest.h>

#include "tests/faults/kill_at_request.h"
#include "tests/faults/send/send_case.h"

namespace torvik::test {
namespace {

constexpr std::size_t kEvery = 41;  // request of the ordinary run

TEST(KilledSend, LeavesWhatStoodWhenItEnded) {
    const SendStage& stage = SendStage::get();
    const RecordedSend& run = stage.run();
    for (std::size_t i = 0; i < run.requests.size(); i += isLongRun() ? 1 : kEvery) {
        const SentRequest& at = run.requests[i];
        SCOPED_TRACE("killed at request " + std::to_string(i) + ", step " + std::to_string(at.step) + ", to server " +
                     std::to_string(at.server) + ": " + at.text.substr(0, 100));
        const auto copy = stage.copy();

        ASSERT_EQ(runAndKill(*copy, QStringLiteral(TORVIK_SEND_PROGRAM), at.server, at.place, sameEachSend), at.text);

        const ChainState left = run.stateBefore(i);
        EXPECT_EQ(difference(left, readState(copy->chain)), "");
        expectNextSendsMakeGood(stage, *copy, left);
    }
}

}  // namespace
}  // namespace torvik::test
