// What a fetch costs in round trips, by side: over a shop's line they are the whole cost of a till with nothing new.
#include <gtest/gtest.h>

#include <numeric>

#include "tests/support/chain_round_trips.h"
#include "tests/support/chain_run.h"

namespace torvik::test {
namespace {

constexpr std::size_t kTills = 3;
constexpr std::size_t kMostToATill = 15;          // login included
constexpr std::size_t kMostToTheBackOffice = 30;  // a till; the first one's visit also asks what the staging tables are

std::string listed(const std::vector<std::string>& trips) {
    return std::accumulate(trips.begin(), trips.end(), std::string(),
                           [](const std::string& all, const std::string& trip) { return all + trip + "\n--\n"; });
}

TEST(RoundTrips, OfATillWithNothingToFetchAreFewOnEitherSide) {
    ChainRun run({.departments = 1, .tills = kTills, .days = 1});
    TORVIK_NEEDS_SANDBOX(run.chain);
    run.fetch();

    const RoundTrips trips(run.chain);
    run.fetch();

    EXPECT_EQ(run.errors(), QStringList());
    const auto visits = trips.toBackOfficeByVisit();
    ASSERT_EQ(visits.size(), kTills);
    RecordProperty("till", static_cast<int>(trips.toTill(1).size()));
    RecordProperty("back_office", static_cast<int>(visits[1].size()));
    for (std::size_t till = 0; till < kTills; ++till)
        EXPECT_LE(trips.toTill(till).size(), kMostToATill) << listed(trips.toTill(till));
    for (std::size_t till = 1; till < kTills; ++till)
        EXPECT_LE(visits[till].size(), kMostToTheBackOffice) << listed(visits[till]);
}

// So that the figures above are the means' and not the till's: each read, table and question by itself.
TEST(RoundTrips, AreManyWhereEachStatementGoesByItself) {
    ChainRun run({.departments = 1, .tills = 1, .days = 1});
    TORVIK_NEEDS_SANDBOX(run.chain);
    run.engine.ReadsTogether = false;
    run.fetch();

    const RoundTrips trips(run.chain);
    run.fetch();

    RecordProperty("till", static_cast<int>(trips.toTill(0).size()));
    RecordProperty("back_office", static_cast<int>(trips.toBackOfficeByVisit().front().size()));
    EXPECT_GT(trips.toTill(0).size(), 3 * kMostToATill);
    EXPECT_GT(trips.toBackOfficeByVisit().front().size(), 2 * kMostToTheBackOffice);
}

}  // namespace
}  // namespace torvik::test
