// Two copies of the program fetch one chain at the same time: each till is served by one of them at a time, every
// settlement is posted once, and the two take little longer than one alone.
#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <iostream>

#include "tests/faults/fault_case.h"
#include "tests/faults/several_copies.h"
#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

constexpr double kMostOfOneAlone = 1.5;  // how much longer two copies may take

struct Timed {
    double seconds = 0;
    Fetched left;
};

// A chain of so many tills, two a department, fetched by so many copies that start together.
Timed fetchedBy(int copies, int tills) {
    sandbox::chain::DemoChain chain(
        {.chain = {.departments = tills / 2, .tills = tills, .days = 2, .items = 20, .ordersADay = 10}});
    TillVisits visits(chain);
    std::vector<std::unique_ptr<Machine>> running;
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < copies; ++i) {
        running.push_back(std::make_unique<Machine>(chain.dataLink(), QStringLiteral(TORVIK_FETCH_PROGRAM)));
        running.back()->start();
    }
    for (const auto& copy : running) EXPECT_TRUE(copy->endsWell());
    Timed fetched{static_cast<double>(timer.elapsed()) / 1000, Fetched::Of(chain)};
    visits.expectOneAtATime();
    EXPECT_EQ(countStandingPairs(chain), 0U);
    return fetched;
}

void expectTwoToFetchAsOne(int tills, bool timed) {
    const Timed one = fetchedBy(1, tills);
    const Timed two = fetchedBy(2, tills);
    expectTheSame(one.left, two.left);
    std::cout << tills << " tills: one copy alone " << one.seconds << " s, two copies " << two.seconds << " s\n";
    if (timed) {
        EXPECT_LE(two.seconds, kMostOfOneAlone * one.seconds);
    }
}

TEST(TwoPrograms, StartedTogetherServeEachTillOneAtATimeAndPostEverySettlementOnce) {
    expectTwoToFetchAsOne(6, false);
}

TEST(TwoPrograms, StartedTogetherOnTwentyTillsTakeLittleLongerThanOne) {
    if (!isLongRun()) GTEST_SKIP() << "measures with two processes: part of ./test.sh --long";
    expectTwoToFetchAsOne(20, true);
}

}  // namespace
}  // namespace torvik::test
