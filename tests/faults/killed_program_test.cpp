// The program is killed: at random moments of a run, and between the two commits of each pair. What it leaves is what
// stands between its pairs of transactions, and the next run makes good. The moment is a request that the server has
// received and does not execute, so each is met exactly, however fast the machine.
#include <gtest/gtest.h>

#include <QProcess>
#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <random>

#include "tests/faults/fault_case.h"
#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

constexpr int kKills = 100;
constexpr int kGroups = 4;  // of kills, to be run side by side
constexpr unsigned kSeed = 20261121;

// Runs the program on the chain as a process of its own and kills it at a request. Gives the request's text; empty if
// the program ended without sending it.
std::string runAndKill(ChainCopy& copy, const RecordedRequest& at) {
    sandbox::FaultRule hang;
    hang.skip = at.place - 1;
    hang.action = sandbox::FaultAction::Hang;
    serverOf(copy.chain, at.server).faults().add(hang);

    std::mutex mutex;
    std::condition_variable changed;
    std::string met;
    QProcess program;
    program.setStandardOutputFile(QProcess::nullDevice());
    program.setStandardErrorFile(QProcess::nullDevice());
    {
        const RequestWatch watch(copy.chain,
                                 [&](std::size_t server, std::uint64_t place, const sandbox::RequestInfo& r) {
                                     if (server != at.server || place != at.place) return;
                                     const std::lock_guard lock(mutex);
                                     met = sameEachRun(r.text);
                                     changed.notify_all();
                                 });
        program.start(QStringLiteral(TORVIK_FETCH_PROGRAM),
                      {QString::fromStdString(copy.chain.dataLink()), copy.noteFolder.path()});
        if (!program.waitForStarted()) return "the program did not start";
        std::unique_lock lock(mutex);
        changed.wait_for(lock, std::chrono::minutes(1), [&] { return !met.empty(); });
    }
    program.kill();
    program.waitForFinished();
    for (std::size_t server = 0; server <= kSecondTill; ++server) {
        serverOf(copy.chain, server).dropConnections();
        serverOf(copy.chain, server).faults().clear();
    }
    return met;
}

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

    ASSERT_EQ(runAndKill(*copy, at), at.text);

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
