// What a send costs in round trips, by side: over a shop's line they are most of the cost of a till that has little
// new.
#include <gtest/gtest.h>

#include <numeric>

#include "tests/chain/chain_send.h"
#include "tests/support/chain_round_trips.h"
#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

using sandbox::chain::ItemsSent;
using sandbox::chain::SendOptions;

constexpr std::size_t kTills = 3;
constexpr std::size_t kMostToATill = 50;  // login included
constexpr std::size_t kMostToTheBackOffice = 30;

const SendOptions kChanges{.items = ItemsSent::Changed};

std::string listed(const std::vector<std::string>& trips) {
    return std::accumulate(trips.begin(), trips.end(), std::string(),
                           [](const std::string& all, const std::string& trip) { return all + trip + "\n--\n"; });
}

// A chain that has been sent to whole, and then the changes.
struct SentTo {
    explicit SentTo(int tills) : chain({.departments = 1, .tills = tills, .days = 1, .versions = {229, 213, 178}}) {
        EXPECT_EQ(chain.send({}), QStringList());
        EXPECT_EQ(chain.send(kChanges), QStringList());
    }
    ChainSend chain;
};

TEST(SendRoundTrips, OfATillWithNothingNewAreFewOnEitherSide) {
    SentTo sent(kTills);
    TORVIK_NEEDS_SANDBOX(sent.chain.run.chain);

    const RoundTrips trips(sent.chain.run.chain);
    EXPECT_EQ(sent.chain.send(kChanges), QStringList());

    const auto visits = trips.toBackOfficeByVisit();
    ASSERT_EQ(visits.size(), kTills);
    RecordProperty("till", static_cast<int>(trips.toTill(0).size()));
    RecordProperty("back_office", static_cast<int>(visits[0].size()));
    for (std::size_t till = 0; till < kTills; ++till) {
        EXPECT_LE(trips.toTill(till).size(), kMostToATill) << listed(trips.toTill(till));
        EXPECT_LE(visits[till].size(), kMostToTheBackOffice) << listed(visits[till]);
    }
}

TEST(SendRoundTrips, OfATillWithADaysChangesAreAsFew) {
    SentTo sent(kTills);
    TORVIK_NEEDS_SANDBOX(sent.chain.run.chain);
    sent.chain.workDay(1);

    const RoundTrips trips(sent.chain.run.chain);
    EXPECT_EQ(sent.chain.send(kChanges), QStringList());

    for (std::size_t till = 0; till < kTills; ++till)
        EXPECT_LE(trips.toTill(till).size(), kMostToATill + 15) << listed(trips.toTill(till));
}

// So that the figures above are the means' and not the till's.
TEST(SendRoundTrips, AreManyWhereEachStatementGoesByItself) {
    SentTo sent(1);
    TORVIK_NEEDS_SANDBOX(sent.chain.run.chain);
    sent.chain.run.engine.ReadsTogether = false;

    const RoundTrips trips(sent.chain.run.chain);
    EXPECT_EQ(sent.chain.send(kChanges), QStringList());

    RecordProperty("till", static_cast<int>(trips.toTill(0).size()));
    EXPECT_GT(trips.toTill(0).size(), 2 * kMostToATill);
}

}  // namespace
}  // namespace torvik::test
