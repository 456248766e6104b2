// Other numbers of items: what stands on the till after a send.
#include <gmock/gmock.h>

#include "tests/outbound/one_item.h"
#include "tests/outbound/till_send.h"

namespace torvik::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kNewest = 229;

TEST(Aliases, ArriveWithTheirItemsAndFollowTheBackOffice) {
    for (const TItemUpdateSelection selection : {iusChanged, iusAll}) {
        TillSend send(kNewest);
        send.dm.ItemUpdateSelection = selection;
        send.inBackOffice(kOneItem);
        send.inBackOffice(
            "INSERT VareAlias (Vr_Id, Vr_Va_Id, Vr_Navn) VALUES ('7041', '777001', 'Strekkode'), ('7042', '777001', NULL)");
        ASSERT_EQ(send.send(), QString());
        const std::string aliases =
            "SELECT VR_ID, RTRIM(VR_VA_ID), VR_NAVN FROM VAREALIAS WHERE VR_ID LIKE '704%' ORDER BY VR_ID";
        EXPECT_THAT(send.till(aliases), ElementsAre("7041 | 777001 | Strekkode", "7042 | 777001 | NULL"));

        send.inBackOffice(
            "UPDATE VareAlias SET Vr_Navn = 'Nytt navn' WHERE Vr_Id = '7041' DELETE VareAlias WHERE Vr_Id = '7042'");
        ASSERT_EQ(send.send(), QString());
        EXPECT_THAT(send.till(aliases), ElementsAre("7041 | 777001 | Nytt navn"));
    }
}

TEST(Aliases, ThatEqualAnItemNumberNeverReachTheTillAndLeaveIt) {
    TillSend send(kNewest);
    send.inBackOffice(kOneItem);
    send.inBackOffice("INSERT VareAlias (Vr_Id, Vr_Va_Id) VALUES ('7043', '777001')");
    ASSERT_EQ(send.send(), QString());
    const std::string alias = "SELECT VR_ID FROM VAREALIAS WHERE VR_ID = '7043'";
    ASSERT_THAT(send.till(alias), ElementsAre("7043"));
    send.inBackOffice(plainItem("7043"));
    send.dm.ItemUpdateSelection = iusNone;
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till(alias), IsEmpty());
}

TEST(Aliases, OfAnItemThatTheTillLacksComeWithTheItem) {
    TillSend send(kNewest);
    send.inBackOffice(kOneItem);
    send.inBackOffice("INSERT VareAlias (Vr_Id, Vr_Va_Id) VALUES ('7044', '777001')");
    send.dm.ItemUpdateSelection = iusNone;
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till("SELECT VR_ID FROM VAREALIAS WHERE VR_ID = '7044'"), IsEmpty());
    send.dm.ItemUpdateSelection = iusChanged;
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till("SELECT VR_ID FROM VAREALIAS WHERE VR_ID = '7044'"), ElementsAre("7044"));
}

// Two items that share an alias number, '7045', each under a name of its own.
constexpr char kShared[] = "SELECT RTRIM(VR_VA_ID), VR_NAVN FROM VAREALIAS WHERE VR_ID = '7045' ORDER BY 1";

class SharedAliasNumber : public testing::Test {
protected:
    SharedAliasNumber() {
        for (const char* number : {"777051", "777052", "777053"}) send.inBackOffice(plainItem(number));
        send.inBackOffice(
            "INSERT VareAlias (Vr_Id, Vr_Va_Id, Vr_Navn) VALUES ('7045', '777051', 'Rød'), ('7045', '777052', 'Blå')");
        EXPECT_EQ(send.send(), QString());
        EXPECT_THAT(send.till(kShared), ElementsAre("777051 | Rød", "777052 | Blå"));
    }
    TillSend send{kNewest};
};

struct AliasChange {
    const char* name;
    const char* change;
    Rows left;
};

// One of the two changes; the other stays what it is.
const AliasChange kAliasChanges[] = {
    {"Renamed", "UPDATE VareAlias SET Vr_Navn = 'Grønn' WHERE Vr_Va_Id = '777052'", {"777051 | Rød", "777052 | Grønn"}},
    {"Gone", "DELETE VareAlias WHERE Vr_Va_Id = '777051' AND Vr_Id = '7045'", {"777052 | Blå"}},
    {"Moved",
     "UPDATE VareAlias SET Vr_Va_Id = '777053' WHERE Vr_Va_Id = '777051' AND Vr_Id = '7045'",
     {"777052 | Blå", "777053 | Rød"}},
    {"Added",
     "INSERT VareAlias (Vr_Id, Vr_Va_Id, Vr_Navn) VALUES ('7045', '777053', 'Gul')",
     {"777051 | Rød", "777052 | Blå", "777053 | Gul"}},
};

class SharedAliasNumberThat : public SharedAliasNumber, public testing::WithParamInterface<AliasChange> {};
INSTANTIATE_TEST_SUITE_P(Is, SharedAliasNumberThat, testing::ValuesIn(kAliasChanges),
                         [](const auto& test) { return test.param.name; });

TEST_P(SharedAliasNumberThat, StandsWithEachItemAsTheBackOfficeHasIt) {
    send.inBackOffice(GetParam().change);
    for (const TItemUpdateSelection selection : {iusChanged, iusAll}) {
        send.dm.ItemUpdateSelection = selection;
        ASSERT_EQ(send.send(), QString());
        EXPECT_EQ(send.till(kShared), GetParam().left) << selection;
    }
}

// Aliases of items that the till knows are merged before the register: a send that fails in between has brought them.
TEST_P(SharedAliasNumberThat, StandsSoBehindASendThatFailsAtTheItems) {
    send.inBackOffice(GetParam().change);
    send.onTill("ALTER TABLE VARE ADD CONSTRAINT CK_SPERRE CHECK (VA_NAVN <> 'Sperret')");
    send.inBackOffice("UPDATE Vare SET Va_Navn = 'Sperret' WHERE Va_Id = '777051'");
    EXPECT_THAT(send.send().toStdString(), testing::StartsWith("TorvikToPOS failed: Vare SessionID: "));
    EXPECT_EQ(send.till(kShared), GetParam().left);
}

}  // namespace
}  // namespace torvik::test
