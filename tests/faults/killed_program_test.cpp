// The program is killed: at random moments of a run, and between the two commits of each pair. What it leaves is what
// stands between its pairs of transactions, and the next run makes good.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "tests/faults/fault_case.h"
#include "tests/faults/kill_at_request.h"
#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

constexpr int kKills = 100;
constexpr int kGroups = 4;  // of kills, to be run side by side
constexpr unsigned kSeed = 20261121;

// What stands when the program has ended without sending the request.
ChainState leftBefore(const RecordedRun& run, std::size_t request) {
    std::size_t pair = 0;
    while (pair < run.pairs.size() && request > run.pairs[pair].backOfficeCommits) ++pair;
    ChainState left = run.states[pair];
    if (pair == run.pairs.size() || request <= run.pairs[pair].tillCommits) return left;
    const std::size_t till = run.pairs[pair].till - kFirstTill;
    left.tills[till] = run.states[pair + 1].tills[till];
    return left;
}

void killAt(std::size_t request) {
    const FaultStage& stage = FaultStage::unfetched();
    const RecordedRequest& at = stage.run().requests[request];
    SCOPED_TRACE("killed at request " + std::to_string(request) + ", p=" + std::to_string(at.p) + ", to server " +
                 std::to_string(at.server) + ": " + at.text.substr(0, 100));
    const auto copy = stage.copy();
    const ChainState expected = leftBefore(stage.run(), request);

    ASSERT_EQ(runAndKill(*copy, QStringLiteral(TORVIK_FETCH_PROGRAM), at.server, at.place, sameEachRun), at.text);

    EXPECT_EQ(difference(expected, readState(copy->chain)), "");
    // Tables, intents and notes are all that is left, so the same are followed by the next run once.
    struct Left {
        ChainState tables;
        std::size_t intents;
        std::size_t notes;
        bool operator==(const Left&) const = default;
    };
    static std::vector<Left> followed;
    const Left left{expected, copy->standingPairs(), copy->notes()};
    if (!isLongRun() && std::find(followed.begin(), followed.end(), left) != followed.end()) return;
    followed.push_back(left);
    const auto next = copy->program();
    next->fetch();
    EXPECT_EQ(next->errors(), QStringList());
    EXPECT_EQ(difference(stage.run().states.back(), readState(copy->chain)), "") << "after the next run";
    EXPECT_EQ(copy->standingPairs(), 0U);
    EXPECT_EQ(copy->notes(), 0U);
}

class KilledProgram : public testing::TestWithParam<int> {};

TEST_P(KilledProgram, AtRandomMomentsLosesNothingAndTakesNothingTwice) {
    std::mt19937 random(kSeed);
    std::uniform_int_distribution<std::size_t> anyRequest(0, FaultStage::unfetched().run().requests.size() - 1);
    for (int kill = 0; kill < kKills; ++kill) {
        const std::size_t request = anyRequest(random);
        if (kill % kGroups == GetParam()) killAt(request);
    }
}

INSTANTIATE_TEST_SUITE_P(Group, KilledProgram, testing::Range(0, kGroups),
                         [](const auto& test) { return std::to_string(test.param); });

TEST(KilledPrograms, BetweenTheCommitsOfAPairLeavesTheTillAheadUntilTheNextRun) {
    for (const RecordedPair& pair : FaultStage::unfetched().run().pairs) killAt(pair.backOfficeCommits);
}

}  // namespace
}  // namespace torvik::test
