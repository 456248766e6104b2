// The registers in memory that sends are held against: what the databases begin with, and what a day's work makes of
// them.
#include "tests/chain/chain_send.h"

namespace torvik::test {
namespace {

void expectOffice(ChainSend& chain, const std::string& when) {
    for (const sandbox::chain::KeptTable& table : chain.office.all())
        EXPECT_TRUE(chain.run.backOfficeHolds(table.data())) << when;
}

TEST(Registers, TellWhatTheDatabasesBeginWith) {
    ChainSend chain({.departments = 2, .tills = 3, .days = 1, .versions = {71, 178, 229}, .everyKind = true});
    expectOffice(chain, "before the first day");
    chain.expectTillsAsTold("before the first send");
}

TEST(Registers, DatabaseFollowsADaysWork) {
    ChainSend chain({.departments = 3, .tills = 3, .days = 0});
    for (int day = 1; day <= 3; ++day) {
        const auto before = chain.office;
        chain.workDay(day);
        EXPECT_FALSE(chain.office.changesTo(before).empty());
        EXPECT_TRUE(chain.office.changesTo(chain.office).empty());
        expectOffice(chain, "day " + std::to_string(day));
    }
}

}  // namespace
}  // namespace torvik::test
