// A fault at each of the steps of a send, on either side, and at every request around them: what has been merged when
// it comes stands, nothing else of the till has changed, the second till is served, and the next two sends make good.
// every_send_request_test.cpp does the same at every single request and statement.
#include <gtest/gtest.h>

#include <map>

#include "tests/faults/send/send_case.h"

namespace torvik::test {
namespace {

// Of each step the last request to either side.
std::vector<std::size_t> lastOfEachStep(const RecordedSend& run) {
    std::map<std::pair<int, std::size_t>, std::size_t> last;
    for (std::size_t i = 0; i < run.beginOf(2); ++i)
        if (run.requests[i].part == SendPart::Steps) last[{run.requests[i].step, run.requests[i].server}] = i;
    std::vector<std::size_t> chosen;
    for (const auto& [step, index] : last) chosen.push_back(index);
    return chosen;
}

// The roster, the till's lock, its questions, the gift-card item, the end of the visit.
std::vector<std::size_t> aroundTheSteps(const RecordedSend& run) {
    std::vector<std::size_t> chosen;
    for (std::size_t i = 0; i < run.beginOf(2); ++i)
        if (run.requests[i].part != SendPart::Steps) chosen.push_back(i);
    return chosen;
}

// The cases in so many groups, to be run side by side.
constexpr int kGroups = 2;

class SendFault : public testing::TestWithParam<std::tuple<Fault, int>> {
protected:
    // The ordinary run cuts the connection at every other request, before it and after it in turn, and that to the
    // other side at every fourth.
    static bool isTaken(Fault fault, std::size_t place) {
        if (fault == Fault::Fails || isLongRun()) return true;
        if (fault == Fault::OtherSideDrops) return place % 4 == 0;
        return place % 4 == (fault == Fault::DropsBefore ? 1 : 3);
    }
    static void expectAtEach(const std::vector<std::size_t>& requests) {
        const auto [fault, group] = GetParam();
        for (std::size_t i = 0; i < requests.size(); ++i)
            if (i / 2 % kGroups == static_cast<std::size_t>(group) && isTaken(fault, i))
                expectSendWithFault(SendStage::get(), requests[i], fault);
    }
};

TEST_P(SendFault, AtAnyStepLeavesWhatStoodBeforeItOrBehindIt) {
    expectAtEach(lastOfEachStep(SendStage::get().run()));
}

TEST_P(SendFault, AroundTheStepsLeavesTheTillWholeOrAsItWas) {
    expectAtEach(aroundTheSteps(SendStage::get().run()));
}

INSTANTIATE_TEST_SUITE_P(
    Each, SendFault,
    testing::Combine(testing::Values(Fault::Fails, Fault::DropsBefore, Fault::DropsAfter, Fault::OtherSideDrops),
                     testing::Range(0, kGroups)),
    [](const auto& test) { return nameOf(std::get<0>(test.param)) + std::to_string(std::get<1>(test.param)); });

}  // namespace
}  // namespace torvik::test
