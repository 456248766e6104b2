// See several_copies.h.
#include "tests/faults/several_copies.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace torvik::test {

namespace {
constexpr int kLongestRunMs = 10 * 60 * 1000;
}

Machine::Machine(const std::string& dataLink, const QString& program, const QStringList& more)
    : path_(program), arguments_(QStringList{QString::fromStdString(dataLink), notes_.path()} + more) {
    process_.setStandardOutputFile(QProcess::nullDevice());
    process_.setStandardErrorFile(QProcess::nullDevice());
}

void Machine::start() {
    process_.start(path_, arguments_);
}

void Machine::kill() {
    process_.kill();
    process_.waitForFinished();
}

bool Machine::ends() {
    if (process_.state() != QProcess::NotRunning && !process_.waitForFinished(kLongestRunMs)) return false;
    return process_.exitStatus() == QProcess::NormalExit;
}

bool Machine::endsWell() {
    return ends() && process_.exitCode() == 0;
}

TillVisits::TillVisits(sandbox::chain::DemoChain& chain) : chain_(chain), sessions_(chain.model().tills.size()) {
    for (std::size_t till = 0; till < sessions_.size(); ++till)
        observers_.push_back(chain.till(till).faults().observe([this, till](const sandbox::RequestInfo& request) {
            const std::lock_guard lock(mutex_);
            auto& sessions = sessions_[till];
            if (sessions.empty() || sessions.back() != request.connection) sessions.push_back(request.connection);
        }));
}

TillVisits::~TillVisits() {
    for (std::size_t till = 0; till < observers_.size(); ++till) chain_.till(till).faults().forget(observers_[till]);
}

void TillVisits::expectOneAtATime() {
    const std::lock_guard lock(mutex_);
    for (std::size_t till = 0; till < sessions_.size(); ++till) {
        EXPECT_FALSE(sessions_[till].empty()) << "till " << till << " was not served";
        auto once = sessions_[till];
        std::sort(once.begin(), once.end());
        EXPECT_EQ(std::unique(once.begin(), once.end()), once.end()) << "two at once at till " << till;
    }
}

std::vector<std::size_t> TillVisits::counts() {
    const std::lock_guard lock(mutex_);
    std::vector<std::size_t> counts;
    for (const auto& sessions : sessions_) counts.push_back(sessions.size());
    return counts;
}

// Of the tills of a department that settle at the same time, the number of sales is that of whichever came last.
Fetched Fetched::Of(sandbox::chain::DemoChain& chain) {
    Fetched fetched{readState(chain), {}};
    for (const std::string& row : fetched.state.backOffice.at("timesalg"))
        fetched.hours.push_back(row.substr(0, row.rfind(" | ")));
    fetched.state.backOffice.erase("timesalg");
    return fetched;
}

void expectTheSame(const Fetched& expected, const Fetched& actual) {
    EXPECT_EQ(difference(expected.state, actual.state), "");
    EXPECT_EQ(expected.hours, actual.hours);
}

}  // namespace torvik::test
