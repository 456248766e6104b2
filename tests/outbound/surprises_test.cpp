// What a send does that a shop may not expect, one test each: the list stands in docs/sending.md.
#include <gmock/gmock.h>

#include "tests/outbound/till_send.h"

namespace torvik::test {
namespace {

// The chain's first items: 100001 consists of 100000, both of product P000000.
constexpr const char* kFirst = "100000";
constexpr const char* kWhole = "100001";

Rows itemTexts(const TillSend& send) {
    return send.till(std::string("SELECT VA_INFOEKSTERN, VA_INFOINTERN, VA_INFOREGEL FROM VARE WHERE VA_ID = '") +
                     kFirst + "'");
}

TEST(Surprises, InternalTextOfAProductLandsInTheColumnForExternalText) {
    TillSend send;
    send.inBackOffice(
        "UPDATE Produkt SET P_InfoIntern = 'for oss', P_InfoEkstern = 'for kunden', P_InfoRegel = 2 "
        "WHERE P_Id = 'P000000'");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(itemTexts(send), Rows{"for oss | for kunden | 2"});
}

TEST(Surprises, TextsTakenOffAProductAltogetherStayOnTheTill) {
    TillSend send;
    send.inBackOffice(
        "UPDATE Produkt SET P_InfoIntern = 'for oss', P_InfoEkstern = 'for kunden', P_InfoRegel = 2 "
        "WHERE P_Id = 'P000000'");
    ASSERT_EQ(send.send(), QString());
    send.inBackOffice("UPDATE Produkt SET P_InfoEkstern = NULL, P_InfoRegel = NULL WHERE P_Id = 'P000000'");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(itemTexts(send), Rows{"for oss | NULL | NULL"});
    send.inBackOffice("UPDATE Produkt SET P_InfoIntern = NULL WHERE P_Id = 'P000000'");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(itemTexts(send), Rows{"for oss | NULL | NULL"}) << "a product without any text is not sent";
}

TEST(Surprises, ProductsWithATextAreTakenFromTheChoicesOfOtherSessionsToo) {
    TillSend send;
    send.dm.ItemUpdateSelection = iusNone;
    send.dm.RandomSessionID = [] { return 17; };
    send.inBackOffice(
        "UPDATE Produkt SET P_InfoIntern = NULL, P_InfoEkstern = NULL, P_InfoRegel = 1\n"
        "UPDATE Produkt SET P_InfoIntern = 'tekst' WHERE P_Id IN ('P000000', 'P000001')\n"
        "EXEC KasseVareAlle 1001, '1', 1, '18', 2");
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.log.filter(QStringLiteral("i tabellen Produkt")).value(0).toStdString(),
                testing::StartsWith("Fullført overføring av 2 poster i tabellen Produkt."));
}

TEST(Surprises, SendOfChangesRemovesPricesThatHaveNotChanged) {
    TillSend send;
    send.dm.SendPriceAndCustomer = true;
    ASSERT_EQ(send.send(), QString());
    EXPECT_NE(send.till("SELECT COUNT(*) FROM PRIS"), Rows{"1"});
    send.inBackOffice(std::string("UPDATE Vare SET Va_SendTilButikkKasser = 1\n"
                                  "UPDATE Pris SET Ps_Prisen = 12, Ps_UpdDato = GETDATE() WHERE Ps_Va_Id = '") +
                      kFirst + "' AND Ps_Pi_Id = 1");
    send.dm.ItemUpdateSelection = iusChanged;
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till("SELECT RTRIM(PS_VA_ID), PS_PI_ID, PS_PRISEN FROM PRIS"),
              Rows{std::string(kFirst) + " | 1 | 12"});
}

TEST(Surprises, SendWithoutItemsRemovesAllPricesAndParts) {
    TillSend send;
    send.dm.SendPriceAndCustomer = true;
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till("SELECT RTRIM(DV_HOVED_VA_ID) FROM DELVARE"), Rows{kWhole});
    send.dm.ItemUpdateSelection = iusNone;
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till("SELECT COUNT(*) FROM PRIS"), Rows{"0"});
    EXPECT_EQ(send.till("SELECT COUNT(*) FROM DELVARE"), Rows{"0"});
}

TEST(Surprises, SendOfChangesRemovesPartsOfItemsThatAreNotSent) {
    TillSend send;
    ASSERT_EQ(send.send(), QString());
    send.dm.ItemUpdateSelection = iusChanged;
    send.inBackOffice(std::string("UPDATE Vare SET Va_SendTilButikkKasser = 0\n"
                                  "UPDATE Vare SET Va_SendTilButikkKasser = 1 WHERE Va_Id = '") +
                      kFirst + "'");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till("SELECT COUNT(*) FROM DELVARE"), Rows{"1"}) << "either side counts";
    send.inBackOffice("UPDATE Vare SET Va_SendTilButikkKasser = 0");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till("SELECT COUNT(*) FROM DELVARE"), Rows{"0"});
}

TEST(Surprises, GroupThatLosesItsParentKeepsItOnTheTill) {
    TillSend send;
    ASSERT_EQ(send.send(), QString());
    send.inBackOffice("UPDATE Varegruppe SET Vg_Hoved_Vg_ID = NULL, Vg_Root_Vg_ID = NULL WHERE Vg_Id = '0101'");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till("SELECT VGR_HOVED_VGR_ID, VGR_ROOT_VGR_ID FROM VAREGRP WHERE VGR_ID = '0101'"),
              Rows{"0100 | 0100"});
}

TEST(Surprises, AliasThatIsTheNumberOfAnItemLeavesTheTill) {
    TillSend send;
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till("SELECT VR_ID FROM VAREALIAS"), Rows{"7030000000017"});
    send.inBackOffice("INSERT Vare (Va_Id, Va_Navn, Va_Kostpris, Va_Pris) VALUES ('7030000000017', 'Ny', 1, 2)");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till("SELECT VR_ID FROM VAREALIAS"), Rows{});
}

}  // namespace
}  // namespace torvik::test
