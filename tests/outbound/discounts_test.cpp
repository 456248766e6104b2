// Discount cards with their holders, and the discount matrix, on a till after a send.
#include "tests/outbound/till_send.h"

namespace torvik::test {
namespace {

struct Card {
    std::string id = "C";
    std::string name = "'Kort'";
    int active = 1;
    std::string customer = "NULL";
    std::string percent = "NULL";
    std::string changed = "GETDATE()";
    std::string discount = "7.5";
};

// A back office whose cards are these alone.
void setCards(TillSend& send, const std::vector<Card>& cards) {
    send.inBackOffice("DELETE FROM POSRABATTKORT");
    for (const Card& card : cards)
        send.inBackOffice(
            "INSERT POSRABATTKORT (Pos_Ra_ID, Pos_Ra_Navn, Pos_Ra_GyldigTil, Pos_Ra_Rabatt, Pos_Ra_Aktiv, "
            "Pos_Ra_KunPaaOrdPris, Pos_Ra_Ku_ID, Pos_Ra_Ku_Kreditt_Prosent, Pos_Ra_UpdDato) VALUES ('" +
            card.id + "', " + card.name + ", '20300101', " + card.discount + ", " + std::to_string(card.active) +
            ", 1, " + card.customer + ", " + card.percent + ", " + card.changed + ")");
}

Rows cards(const TillSend& send) {
    return send.till(
        "SELECT RTRIM(RA_ID), RA_NAVN, RA_GYLDIGTIL, RA_RABATT, RA_AKTIV, RA_KUNPAAORDPRIS FROM RABATTKORT "
        "ORDER BY RA_ID");
}

Rows holders(const TillSend& send) {
    return send.till(
        "SELECT RTRIM(RAKU_RA_ID), RAKU_KU_ID, RAKU_KREDITT_PROSENT FROM RABATTKORTKUNDE "
        "ORDER BY RAKU_RA_ID, RAKU_KU_ID");
}

TEST(DiscountCards, StandWithTheirHolders) {
    TillSend send;
    setCards(send, {{.customer = "30001", .percent = "2.5"},
                    {.customer = "30002"},
                    {.id = "D", .name = "REPLICATE('x', 50)"},
                    {.id = "E", .name = "NULL", .customer = "30001"}});
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(cards(send), (Rows{"C | Kort | 2030-01-01 00:00:00.000 | 7.5 | 1 | 1",
                                 "D | " + std::string(30, 'x') + " | 2030-01-01 00:00:00.000 | 7.5 | 1 | 1"}));
    EXPECT_EQ(holders(send), (Rows{"C | 30001 | 2.5", "C | 30002 | NULL"}));
    EXPECT_EQ(send.till("SELECT RTRIM(RAI_ID), RAI_NAVN, RAI_GYLDIGTIL, RAI_RABATT, RAI_AKTIV, RAI_KUNPAAORDPRIS, "
                        "RAI_KU_ID, RAI_KU_KREDITT_PROSENT FROM RabattkortImport WHERE RAI_KU_ID = 30001"),
              Rows{"C | Kort | 2030-01-01 00:00:00.000 | 7.5 | 1 | 1 | 30001 | 2.5"});
}

TEST(DiscountCards, KnownOneIsUpdatedWithItsPercent) {
    TillSend send;
    setCards(send, {{.customer = "30001", .percent = "2.5"}});
    ASSERT_EQ(send.send(), QString());
    send.inBackOffice(
        "UPDATE POSRABATTKORT SET Pos_Ra_Navn = 'Nytt', Pos_Ra_GyldigTil = NULL, Pos_Ra_Rabatt = 9, "
        "Pos_Ra_KunPaaOrdPris = 0, Pos_Ra_Ku_Kreditt_Prosent = 4");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(cards(send), Rows{"C | Nytt | NULL | 9 | 1 | 0"});
    EXPECT_EQ(holders(send), Rows{"C | 30001 | 4"});
}

TEST(DiscountCards, CustomerThatTheTillLacksHoldsNone) {
    TillSend send;
    send.inBackOffice("INSERT Kunde (Ku_Id, Ku_Navn, Ku_Type) VALUES (40000, 'Uten poststed', 1)");
    setCards(send, {{.customer = "40000"}});
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(cards(send).size(), 1u);
    EXPECT_EQ(holders(send), Rows{});
}

TEST(DiscountCards, InactiveOneStaysAndLosesAllItsHolders) {
    TillSend send;
    setCards(send, {{.customer = "30001"}, {.customer = "30002"}, {.id = "D", .customer = "30001"}});
    ASSERT_EQ(send.send(), QString());
    send.inBackOffice("UPDATE POSRABATTKORT SET Pos_Ra_Aktiv = 0 WHERE Pos_Ra_ID = 'C'");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(cards(send), (Rows{"C | Kort | 2030-01-01 00:00:00.000 | 7.5 | 0 | 1",
                                 "D | Kort | 2030-01-01 00:00:00.000 | 7.5 | 1 | 1"}));
    EXPECT_EQ(holders(send), Rows{"D | 30001 | NULL"});
}

TEST(DiscountCards, NoneIsDeletedNorTakenFromItsHolder) {
    TillSend send;
    setCards(send, {{.customer = "30001"}});
    ASSERT_EQ(send.send(), QString());
    setCards(send, {});
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(cards(send).size(), 1u);
    EXPECT_EQ(holders(send), Rows{"C | 30001 | NULL"});
}

TEST(DiscountCards, SendOfChangesTakesThoseChangedInTheDaysAskedFor) {
    TillSend send;
    send.dm.DagerSidenEndring = 10;
    setCards(send, {{.id = "C", .changed = "DATEADD(hour, 1, DATEADD(day, -10, GETDATE()))"},
                    {.id = "D", .changed = "DATEADD(hour, -1, DATEADD(day, -10, GETDATE()))"}});
    ASSERT_EQ(send.send(), QString());
    send.inBackOffice("UPDATE POSRABATTKORT SET Pos_Ra_Rabatt = 1");
    send.dm.ItemUpdateSelection = iusChanged;
    ASSERT_EQ(send.send(), QString());
    const auto discounts = [&] { return send.till("SELECT RTRIM(RA_ID), RA_RABATT FROM RABATTKORT ORDER BY RA_ID"); };
    EXPECT_EQ(discounts(), (Rows{"C | 1", "D | 7.5"})) << "what was changed long ago stays as it was";
    send.dm.ItemUpdateSelection = iusNone;
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(discounts(), (Rows{"C | 1", "D | 1"}));
}

TEST(DiscountCards, WorkTableIsPreparedWithAReport) {
    TillSend send;
    ASSERT_EQ(send.send(), QString());
    EXPECT_TRUE(send.progress.contains(QStringLiteral("0 Forbereder overføring av Rabattkortimport... ")));
    EXPECT_TRUE(send.progress.contains(QStringLiteral("1 Forbereder overføring av rabattkort: 1 av 100")));
}

Rows matrix(const TillSend& send) {
    return send.till("SELECT * FROM RABATTMATRISE ORDER BY RM_KG_ID, RM_VGR_ID, RM_FRA, RM_TIL");
}

void setMatrix(TillSend& send, const std::string& rows) {
    send.inBackOffice("DELETE FROM RabattMatrise\nINSERT RabattMatrise VALUES " + rows);
}

TEST(DiscountMatrix, StandsAsTheBackOfficeHasIt) {
    TillSend send;
    send.dm.SendPriceAndCustomer = true;
    setMatrix(send, "(1, '0100', 0, 100, 5), (1, '0100', 100, 200, 10), (2, '0200', 0, 100, 7.5)");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(matrix(send),
              (Rows{"1 | 0100 | 0 | 100 | 5 | 1", "1 | 0100 | 100 | 200 | 10 | 1", "2 | 0200 | 0 | 100 | 7.5 | 1"}));
    EXPECT_EQ(
        send.till("SELECT * FROM RabattMatriseImport ORDER BY RMI_KG_ID, RMI_Fra"),
        (Rows{"1 | 0100 | 0 | 100 | 5 | NULL", "1 | 0100 | 100 | 200 | 10 | NULL", "2 | 0200 | 0 | 100 | 7.5 | NULL"}));
    send.onTill("UPDATE RABATTMATRISE SET RM_KUNPAAORDPRIS = 0");
    setMatrix(send, "(1, '0100', 0, 100, 6), (1, '0100', 100, 200, 10), (2, '0200', 0, 100, 7.5)");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(matrix(send),
              (Rows{"1 | 0100 | 0 | 100 | 6 | 1", "1 | 0100 | 100 | 200 | 10 | 1", "2 | 0200 | 0 | 100 | 7.5 | 1"}));
}

TEST(DiscountMatrix, RowGoesOnlyWithTheLastOfItsGroupsAndLowerBound) {
    TillSend send;
    send.dm.SendPriceAndCustomer = true;
    setMatrix(send, "(1, '0100', 0, 100, 5), (1, '0200', 0, 100, 5), (2, '0100', 0, 100, 5), (1, '0100', 50, 100, 5)");
    ASSERT_EQ(send.send(), QString());
    setMatrix(send, "(1, '0100', 0, 300, 8)");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(matrix(send), (Rows{"1 | 0100 | 0 | 100 | 5 | 1", "1 | 0100 | 0 | 300 | 8 | 1"}))
        << "the upper bound is no part of what is compared";
}

TEST(DiscountMatrix, WithoutPricesTheWorkTableIsEmptyAndTheMatrixStays) {
    TillSend send;
    send.onTill("INSERT RABATTMATRISE VALUES (1, '0100', 0, 100, 5, 1)");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(matrix(send), Rows{"1 | 0100 | 0 | 100 | 5 | 1"});
    EXPECT_EQ(send.till("SELECT COUNT(*) FROM RabattMatriseImport"), Rows{"0"});
    EXPECT_EQ(send.till("SELECT COUNT(*) FROM sysobjects WHERE name = 'InsertRabattMatrise'"), Rows{"0"});
}

}  // namespace
}  // namespace torvik::test
