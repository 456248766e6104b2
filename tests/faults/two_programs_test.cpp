// Two copies of the program fetch one chain at the same time: each till is served by one of them at a time, every
// settlement is posted once, and the two take little longer than one alone.
#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <algorithm>
#include <iostream>
#include <mutex>

#include "tests/faults/chain_state.h"
#include "tests/faults/fault_case.h"
#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

constexpr double kMostOfOneAlone = 1.5;  // how much longer two copies may take

// A copy of the program as a process of its own, on a machine of its own: with notes of its own.
class Copy {
public:
    explicit Copy(const std::string& dataLink) {
        program_.setStandardOutputFile(QProcess::nullDevice());
        program_.setStandardErrorFile(QProcess::nullDevice());
        program_.start(QStringLiteral(TORVIK_FETCH_PROGRAM), {QString::fromStdString(dataLink), notes_.path()});
    }
    [[nodiscard]] bool endsWell() {
        return program_.waitForFinished(10 * 60 * 1000) && program_.exitStatus() == QProcess::NormalExit &&
               program_.exitCode() == 0;
    }

private:
    QTemporaryDir notes_;
    QProcess program_;
};

// The sessions to each till, by the order of their requests.
class TillVisits {
public:
    explicit TillVisits(sandbox::chain::DemoChain& chain) : chain_(chain), sessions_(chain.model().tills.size()) {
        for (std::size_t till = 0; till < sessions_.size(); ++till)
            observers_.push_back(chain.till(till).faults().observe([this, till](const sandbox::RequestInfo& request) {
                const std::lock_guard lock(mutex_);
                auto& sessions = sessions_[till];
                if (sessions.empty() || sessions.back() != request.connection) sessions.push_back(request.connection);
            }));
    }
    ~TillVisits() {
        for (std::size_t till = 0; till < observers_.size(); ++till)
            chain_.till(till).faults().forget(observers_[till]);
    }
    TillVisits(const TillVisits&) = delete;
    TillVisits& operator=(const TillVisits&) = delete;

    // Each session's requests are done before the next one's begin: none is among another's.
    void expectOneAtATime() {
        const std::lock_guard lock(mutex_);
        for (std::size_t till = 0; till < sessions_.size(); ++till) {
            EXPECT_FALSE(sessions_[till].empty()) << "till " << till << " was not served";
            auto once = sessions_[till];
            std::sort(once.begin(), once.end());
            EXPECT_EQ(std::unique(once.begin(), once.end()), once.end()) << "two at once at till " << till;
        }
    }

private:
    sandbox::chain::DemoChain& chain_;
    std::mutex mutex_;
    std::vector<std::vector<std::uint64_t>> sessions_;
    std::vector<int> observers_;
};

struct Fetched {
    double seconds = 0;
    ChainState state;
    std::vector<std::string> hours;
};

// A chain of so many tills, two a department, fetched by so many copies that start together.
Fetched fetchedBy(int copies, int tills) {
    sandbox::chain::DemoChain chain(
        {.chain = {.departments = tills / 2, .tills = tills, .days = 2, .items = 20, .ordersADay = 10}});
    TillVisits visits(chain);
    std::vector<std::unique_ptr<Copy>> running;
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < copies; ++i) running.push_back(std::make_unique<Copy>(chain.dataLink()));
    for (const auto& copy : running) EXPECT_TRUE(copy->endsWell());
    Fetched fetched{static_cast<double>(timer.elapsed()) / 1000, readState(chain), {}};
    visits.expectOneAtATime();
    EXPECT_EQ(countStandingPairs(chain), 0U);
    // Of the tills of a department that settle at the same time, the number of sales is that of whichever came last.
    for (const std::string& row : fetched.state.backOffice.at("timesalg"))
        fetched.hours.push_back(row.substr(0, row.rfind(" | ")));
    fetched.state.backOffice.erase("timesalg");
    return fetched;
}

void expectTwoToFetchAsOne(int tills, bool timed) {
    const Fetched one = fetchedBy(1, tills);
    const Fetched two = fetchedBy(2, tills);
    EXPECT_EQ(difference(one.state, two.state), "");
    EXPECT_EQ(one.hours, two.hours);
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
