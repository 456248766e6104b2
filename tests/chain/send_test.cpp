// Sends to whole chains: with all items, with the changed ones and with none, with and without prices and customers,
// while the back office goes on. Every table of every till is held against the model after each run over the tills.
#include <ostream>

#include "tests/chain/chain_send.h"
#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

using sandbox::chain::integer;
using sandbox::chain::ItemsSent;
using sandbox::chain::KeptTables;
using sandbox::chain::SendOptions;

// A till on either side of every version at which a step of a send differs.
const std::vector<int> kEveryVersion{71, 72, 110, 117, 119, 149, 178, 192, 198, 211, 213, 225, 229};

struct SendCase {
    const char* name;
    SendOptions options;
    std::vector<int> versions;
};

void PrintTo(const SendCase& one, std::ostream* out) {
    *out << one.name;
}

class WholeSend : public testing::TestWithParam<SendCase> {};

TEST_P(WholeSend, LeavesOnEveryTillWhatTheBackOfficeTells) {
    ChainSend chain({.departments = 3,
                     .tills = static_cast<int>(GetParam().versions.size()),
                     .days = 1,
                     .tillItems = 20,
                     .versions = GetParam().versions,
                     .everyKind = true});
    ASSERT_EQ(chain.send({}), QStringList());
    chain.expectTillsAsTold("the first send, of everything");
    for (int day = 1; day <= 2; ++day) {
        chain.workDay(day);
        ASSERT_EQ(chain.send(GetParam().options), QStringList());
        const std::string when = "the send of day " + std::to_string(day);
        chain.expectTillsAsTold(when);
        chain.expectNotesAsTold(when);
    }
    // A new clerk's price category follows one send later; after that nothing changes.
    ASSERT_EQ(chain.send(GetParam().options), QStringList());
    chain.expectTillsAsTold("the send after a quiet day");
    const auto quiet = chain.told();
    ASSERT_EQ(chain.send(GetParam().options), QStringList());
    EXPECT_EQ(chain.told(), quiet);
    chain.expectTillsAsTold("the second send after a quiet day");
}

INSTANTIATE_TEST_SUITE_P(
    Each, WholeSend,
    testing::Values(
        SendCase{"All", {}, kEveryVersion},
        SendCase{"AllWithoutPrices", {.pricesAndCustomers = false}, {110, 178, 229}},
        SendCase{"Changes", {.items = ItemsSent::Changed}, {71, 192, 229}},
        SendCase{"ChangesWithoutPrices", {.items = ItemsSent::Changed, .pricesAndCustomers = false}, {119, 211, 225}},
        SendCase{"NoItems", {.items = ItemsSent::None}, {149, 213}},
        SendCase{"NoItemsWithoutPrices", {.items = ItemsSent::None, .pricesAndCustomers = false}, {149, 229}}),
    [](const auto& test) { return test.param.name; });

class SendWithDeletion : public testing::Test {
protected:
    SendWithDeletion()
        : chain({.departments = 2, .tills = 4, .days = 1, .versions = {71, 178, 211, 229}, .everyKind = true}) {}

    void replaceBy(const sandbox::chain::Cell& item) {
        chain.change([&](KeptTables& office) { office["Innstillinger"].find("1")->at("In_Slett_Va_ID") = item; });
    }

    ChainSend chain;
    const SendOptions deleting{.deleteItems = true};
};

TEST_F(SendWithDeletion, LinesOfItemsThatAreGoneMoveToTheReplacement) {
    replaceBy(std::string(sandbox::chain::kReplacementItem));
    ASSERT_EQ(chain.send(deleting), QStringList());
    chain.expectTillsAsTold("the first send");
    for (int day = 1; day <= 2; ++day) {
        chain.workDay(day);
        ASSERT_EQ(chain.send(deleting), QStringList());
        chain.expectTillsAsTold("the send of day " + std::to_string(day));
    }
    EXPECT_NE(chain.run.tillValue(0, "SELECT COUNT(*) FROM VareDeleteLogg WHERE Vdl_Vdlt_Id = 2"), "0")
        << "lines of sales have moved";
}

TEST_F(SendWithDeletion, OnADayThatIsNotTheDayNothingIsDeleted) {
    replaceBy(std::string(sandbox::chain::kReplacementItem));
    chain.workDay(1);
    ASSERT_EQ(chain.send({.deleteItems = false}), QStringList());
    chain.expectTillsAsTold("the send");
}

TEST_F(SendWithDeletion, WithoutAReplacementNothingIsDeleted) {
    chain.workDay(1);
    ASSERT_EQ(chain.send(deleting), QStringList());
    chain.expectTillsAsTold("the send");
}

// The till's foreign keys do not let a line name an item that is not there: the deletion is taken back whole, and all
// that stood before it stays.
TEST_F(SendWithDeletion, ReplacementThatTheTillLacksLeavesEveryItem) {
    chain.workDay(1);
    ASSERT_EQ(chain.send({}), QStringList());
    replaceBy(std::string("NOWHERE"));
    const QStringList failures = chain.sendWithoutModel(deleting);
    ASSERT_EQ(failures.size(), 4);
    for (const QString& failure : failures)
        EXPECT_TRUE(failure.contains(QStringLiteral("(DeleteVare): TorvikToPOS failed: DeleteVare SessionID: ")))
            << failure.toStdString();
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(chain.run.tillValue(i, "SELECT COUNT(*) FROM VareDeleteLogg"), "0");
        EXPECT_TRUE(chain.run.tillHolds(i, chain.tills[i]["VARE"].data()));
        EXPECT_TRUE(chain.run.tillHolds(i, chain.tills[i]["ORDRELINJE"].data()));
    }
}

TEST(SendWithCurrencies, StayOnTheTillsWhereTheBackOfficeDoesNotSendThem) {
    ChainSend chain({.departments = 1, .tills = 2, .days = 0});
    chain.change(
        [](KeptTables& office) { office["Innstillinger"].find("1")->at("In_SendValutaTilkasse") = integer(0); });
    ASSERT_EQ(chain.send({}), QStringList());
    chain.workDay(1);
    ASSERT_EQ(chain.send({}), QStringList());
    chain.expectTillsAsTold("the send");
}

}  // namespace
}  // namespace torvik::test
