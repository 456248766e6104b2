// Customers and their groups on a till after a send.
#include "tests/outbound/till_send.h"

namespace torvik::test {
namespace {

// One customer of the back office beside those that the chain begins with, numbers from 40000 on.
struct Buyer {
    int id = 40000;
    std::string postcode = "'4000'";
    std::string country = "47";
    int type = 1;
    std::string priceCategory = "NULL";
    int blocked = 0;
    std::string changed = "GETDATE()";
    std::string name = "Kjøper";
};

void add(TillSend& send, const Buyer& buyer) {
    send.inBackOffice(
        "IF NOT EXISTS (SELECT 1 FROM Poststed WHERE Po_Id = '4000')\n"
        "INSERT Poststed VALUES ('4000', 47, 'STAVANGER'), ('4000', 46, 'GÄVLE'), ('S-411', 46, 'GÖTEBORG')\n"
        "INSERT Kunde (Ku_Id, Ku_Navn, Ku_Adresse1, Ku_Adresse2, Ku_Po_Id, Ku_La_Id, Ku_Type, Ku_Pi_Id, Ku_Sperret, "
        "Ku_UpdDato, Ku_FjernGebyr) VALUES (" +
        std::to_string(buyer.id) + ", '" + buyer.name + "', 'Gata 1', 'Bakgården', " + buyer.postcode + ", " +
        buyer.country + ", " + std::to_string(buyer.type) + ", " + buyer.priceCategory + ", " +
        std::to_string(buyer.blocked) + ", " + buyer.changed + ", 1)");
}

Rows buyers(const TillSend& send, const std::string& columns = "KU_ID") {
    return send.till("SELECT " + columns + " FROM KUNDE WHERE KU_ID >= 40000 ORDER BY KU_ID");
}

TEST(Customers, NewOneStandsWithAllThatTheTillKnowsOfIt) {
    TillSend send;
    add(send, {.priceCategory = "2", .blocked = 1});
    send.inBackOffice("INSERT KundeKundegruppe VALUES (40000, 3), (40000, 2)");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(buyers(send, "KU_ID, KU_NAVN, KU_ADRESSE1, KU_ADRESSE2, KU_PO_ID, KU_PO_NAVN, KU_KG_ID, KU_SPERRET"),
              Rows{"40000 | Kjøper | Gata 1 | Bakgården | 4000 | STAVANGER | 2 | 1"});
}

TEST(Customers, WorkTableHoldsWhatWasSentUntilTheNextSend) {
    TillSend send;
    add(send, {.priceCategory = "2", .blocked = 1});
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till("SELECT * FROM KUNDEIMPORT WHERE KUI_ID = 40000"),
              Rows{"40000 | Kjøper | Gata 1 | Bakgården | 4000 | STAVANGER | 2 | NULL | 1 | 1"});
}

TEST(Customers, OnlyThoseWithANumericPostcodeOfTheirCountryAndATypeGo) {
    TillSend send;
    add(send, {.id = 40001, .postcode = "'S-411'", .country = "46"});
    add(send, {.id = 40002, .country = "46"});
    add(send, {.id = 40003, .country = "NULL"});
    add(send, {.id = 40004, .postcode = "NULL"});
    add(send, {.id = 40005, .type = 0});
    add(send, {.id = 40006, .type = 2});
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(buyers(send, "KU_ID, KU_PO_NAVN"), (Rows{"40002 | GÄVLE", "40006 | STAVANGER"}));
}

TEST(Customers, SendOfChangesTakesThoseChangedInTheDaysAskedFor) {
    TillSend send;
    add(send, {.id = 40001, .changed = "DATEADD(hour, 1, DATEADD(day, -30, GETDATE()))"});
    add(send, {.id = 40002, .changed = "DATEADD(hour, -1, DATEADD(day, -30, GETDATE()))"});
    add(send, {.id = 40003, .changed = "DATEADD(day, -31, GETDATE())"});
    send.dm.ItemUpdateSelection = iusChanged;
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(buyers(send), Rows{"40001"});
    send.dm.DagerSidenEndring = 32;
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(buyers(send), (Rows{"40001", "40002", "40003"}));
}

TEST(Customers, SendWithoutItemsTakesAllOfThem) {
    TillSend send;
    add(send, {.changed = "'20200101'"});
    send.dm.ItemUpdateSelection = iusNone;
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(buyers(send), Rows{"40000"});
}

TEST(Customers, KnownOneIsUpdatedButNotBlocked) {
    TillSend send;
    add(send, {});
    ASSERT_EQ(send.send(), QString());
    send.inBackOffice(
        "UPDATE Kunde SET Ku_Navn = 'Nytt navn', Ku_Adresse1 = NULL, Ku_Adresse2 = 'B', Ku_La_Id = 46, Ku_Sperret = 1 "
        "WHERE Ku_Id = 40000\nINSERT KundeKundegruppe VALUES (40000, 1)");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(buyers(send, "KU_NAVN, KU_ADRESSE1, KU_ADRESSE2, KU_PO_ID, KU_PO_NAVN, KU_KG_ID, KU_SPERRET"),
              Rows{"Nytt navn | NULL | B | 4000 | GÄVLE | 1 | 0"});
}

TEST(Customers, GroupThatTheTillLacksMakesTheColumnNullNewOrKnown) {
    TillSend send;
    add(send, {.id = 40001});
    add(send, {.id = 40002});
    send.inBackOffice("INSERT KundeGruppe VALUES (77, 'Ny')\nINSERT KundeKundegruppe VALUES (40001, 77), (40002, 1)");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(buyers(send, "KU_ID, KU_KG_ID"), (Rows{"40001 | NULL", "40002 | 1"}));
    send.inBackOffice("UPDATE KundeKundegruppe SET Kk_Kg_Id = 77 WHERE Kk_Ku_Id = 40002");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(buyers(send, "KU_ID, KU_KG_ID"), (Rows{"40001 | NULL", "40002 | NULL"}));
    send.dm.SendPriceAndCustomer = true;  // which brings the group
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(buyers(send, "KU_ID, KU_KG_ID"), (Rows{"40001 | 77", "40002 | 77"}));
}

TEST(Customers, LongNamesAndAddressesAreCutAtFiftyCharacters) {
    TillSend send;
    add(send, {.name = std::string(60, 'n')});
    send.inBackOffice(
        "UPDATE Kunde SET Ku_Adresse1 = REPLICATE('a', 60), Ku_Adresse2 = REPLICATE('b', 60) "
        "WHERE Ku_Id = 40000");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(buyers(send, "KU_NAVN, KU_ADRESSE1, KU_ADRESSE2"),
              Rows{std::string(50, 'n') + " | " + std::string(50, 'a') + " | " + std::string(50, 'b')});
}

TEST(Customers, OneWithSeveralDiscountCardsGoesOnce) {
    TillSend send;
    add(send, {});
    send.inBackOffice(
        "INSERT POSRABATTKORT (Pos_Ra_ID, Pos_Ra_Rabatt, Pos_Ra_Aktiv, Pos_Ra_KunPaaOrdPris, "
        "Pos_Ra_Ku_ID) VALUES ('A', 1, 1, 0, 40000), ('B', 1, 1, 0, 40000)");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till("SELECT COUNT(*) FROM KUNDEIMPORT WHERE KUI_ID = 40000"), Rows{"1"});
}

TEST(Customers, NobodyIsDeleted) {
    TillSend send;
    add(send, {});
    ASSERT_EQ(send.send(), QString());
    send.inBackOffice("DELETE FROM Kunde WHERE Ku_Id = 40000");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(buyers(send), Rows{"40000"});
}

TEST(Customers, PriceCategoryThatTheTillLacksMakesTheColumnNull) {
    TillSend send;
    add(send, {.id = 40001, .priceCategory = "2"});
    add(send, {.id = 40002});
    send.dm.SendPriceAndCustomer = true;
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(buyers(send, "KU_ID, KU_PI_ID"), (Rows{"40001 | 2", "40002 | NULL"}));
    send.inBackOffice("INSERT Priskategori VALUES (9, 'Ny', 1)\nUPDATE Kunde SET Ku_Pi_Id = 9 WHERE Ku_Id = 40001");
    send.dm.SendPriceAndCustomer = false;  // which leaves the category behind
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(buyers(send, "KU_ID, KU_PI_ID"), (Rows{"40001 | NULL", "40002 | NULL"}));
}

TEST(Customers, CustomerOneKeepsItsPriceCategory) {
    TillSend send;
    add(send, {.id = 1, .priceCategory = "2"});
    send.onTill(
        "INSERT PRISKATEGORI VALUES (1, 'Ordinær', 1), (2, 'Storkunde', 0)\n"
        "UPDATE KUNDE SET KU_PI_ID = 1 WHERE KU_ID = 1");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till("SELECT KU_NAVN, KU_PI_ID FROM KUNDE WHERE KU_ID = 1"), Rows{"Kjøper | 1"});
}

// The till compares its version with 119.0 in its column's type: as texts 119 is the lesser and 71 the greater.
struct VersionCase {
    int version;
    bool number;
    const char* category;
};

class PriceCategoryOfACustomer : public testing::TestWithParam<VersionCase> {};
INSTANTIATE_TEST_SUITE_P(
    Schemas, PriceCategoryOfACustomer,
    testing::Values(VersionCase{71, false, "2"}, VersionCase{110, false, "NULL"}, VersionCase{117, false, "NULL"},
                    VersionCase{119, false, "NULL"}, VersionCase{149, false, "2"}, VersionCase{229, false, "2"},
                    VersionCase{71, true, "NULL"}, VersionCase{117, true, "NULL"}, VersionCase{119, true, "2"}),
    [](const auto& test) { return (test.param.number ? "Number" : "Text") + std::to_string(test.param.version); });

TEST_P(PriceCategoryOfACustomer, IsForTillsFrom119On) {
    TillSend send(GetParam().version);
    if (GetParam().number) send.onTill("ALTER TABLE INNSTILLINGER ALTER COLUMN IN_DBVERSION float NOT NULL");
    add(send, {.priceCategory = "2"});
    send.inBackOffice("UPDATE InternKundeAnsatt SET Ika_Pi_Id = 2 WHERE Ika_Id = '100'");
    send.onTill("INSERT PRISKATEGORI VALUES (2, 'Storkunde', 0)");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(buyers(send, "KU_PI_ID"), Rows{GetParam().category});
    EXPECT_EQ(send.till("SELECT AN_PI_ID FROM ANSATT WHERE AN_ID = '100'"), Rows{GetParam().category});
}

TEST(CustomerGroups, AreAddedAndRenamedAndNoneIsDeleted) {
    TillSend send;
    send.onTill("INSERT KUNDEGRUPPE VALUES (50, 'Bare her')");
    send.inBackOffice("INSERT KundeGruppe VALUES (77, 'Ny')\nUPDATE KundeGruppe SET Kg_Navn = 'Lag' WHERE Kg_Id = 2");
    const Rows before = send.till("SELECT KG_ID, KG_NAVN FROM KUNDEGRUPPE ORDER BY KG_ID");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till("SELECT KG_ID, KG_NAVN FROM KUNDEGRUPPE ORDER BY KG_ID"), before) << "sent without prices";
    send.dm.SendPriceAndCustomer = true;
    send.log.clear();
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till("SELECT KG_ID, KG_NAVN FROM KUNDEGRUPPE ORDER BY KG_ID"),
              (Rows{"1 | Bedrift", "2 | Lag", "3 | Franchise", "50 | Bare her", "77 | Ny"}));
    EXPECT_EQ(send.log.filter(QStringLiteral("KundeGruppe")).value(0).section(QStringLiteral(" Tid"), 0, 0),
              QStringLiteral("Fullført overføring av 4 poster i tabellen KundeGruppe."));
}

}  // namespace
}  // namespace torvik::test
