// Price categories, prices and price offers: what stands on the till after a send.
#include <gmock/gmock.h>

#include "tests/outbound/one_item.h"
#include "tests/outbound/till_send.h"

namespace torvik::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kNewest = 229;

constexpr char kCategories[] = "SELECT PI_ID, PI_NAVN, PI_INKLMVA FROM PRISKATEGORI WHERE PI_ID > 70 ORDER BY PI_ID";
constexpr char kPrices[] = "SELECT RTRIM(PS_VA_ID), PS_PI_ID, PS_PRISEN FROM PRIS WHERE PS_PI_ID > 70 ORDER BY 1, 2";

// Two items and categories 71 to 75, each used by somebody else or by nobody: 71 by a customer, 72 by staff, 73 by a
// blocked customer, 74 by a customer of type 0, 75 by staff that has left.
constexpr char kPriceList[] = R"sql(
INSERT Priskategori (Pi_ID, Pi_Navn, Pi_InklMva) VALUES (71, 'Bedrift', 0), (72, 'Ansatt', 1), (73, 'Sperret', 1),
  (74, 'Intern', 1), (75, 'Sluttet', 1)
INSERT Kunde (Ku_Id, Ku_Navn, Ku_Type, Ku_Sperret, Ku_Pi_Id) VALUES (7101, 'Bedrift', 1, 0, 71),
  (7103, 'Sperret', 1, 1, 73), (7104, 'Intern', 0, 0, 74)
INSERT InternKundeAnsatt (Ika_Id, Ika_Ik_Ku_Id, Ika_Navn, Ika_Aktiv, Ika_Pi_Id)
SELECT '7172', MIN(Ikk_Ik_Ku_Id), 'Aktiv', 1, 72 FROM Internkundekasse
INSERT InternKundeAnsatt (Ika_Id, Ika_Ik_Ku_Id, Ika_Navn, Ika_Aktiv, Ika_Pi_Id)
SELECT '7175', MIN(Ikk_Ik_Ku_Id), 'Sluttet', 0, 75 FROM Internkundekasse
INSERT Pris (Ps_Va_Id, Ps_Pi_Id, Ps_Prisen) VALUES ('777031', 71, 10.5), ('777031', 72, 11.5), ('777031', 73, 12.5),
  ('777031', 74, 13.5), ('777031', 75, 14.5), ('777032', 71, 20.5)
)sql";

class Prices : public testing::Test {
protected:
    Prices() {
        send.dm.SendPriceAndCustomer = true;
        send.inBackOffice(plainItem("777031"));
        send.inBackOffice(plainItem("777032"));
        send.inBackOffice(kPriceList);
    }
    TillSend send{kNewest};
};

TEST_F(Prices, GoInTheCategoriesThatSomebodyUses) {
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till(kPrices), ElementsAre("777031 | 71 | 10.5", "777031 | 72 | 11.5", "777032 | 71 | 20.5"));
    EXPECT_THAT(send.till(kCategories), ElementsAre("71 | Bedrift | 0", "72 | Ansatt | 1", "73 | Sperret | 1",
                                                    "74 | Intern | 1", "75 | Sluttet | 1"));
}

TEST_F(Prices, FollowTheBackOffice) {
    ASSERT_EQ(send.send(), QString());
    send.inBackOffice(R"(
        UPDATE Pris SET Ps_Prisen = 99.5 WHERE Ps_Va_Id = '777031' AND Ps_Pi_Id = 71
        DELETE Pris WHERE Ps_Va_Id = '777032'
        UPDATE Priskategori SET Pi_Navn = 'Ny bedrift', Pi_InklMva = 1 WHERE Pi_ID = 71)");
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till(kPrices), ElementsAre("777031 | 71 | 99.5", "777031 | 72 | 11.5"));
    EXPECT_EQ(send.till(kCategories).front(), "71 | Ny bedrift | 1");
}

// An item's price in one category says nothing of its price in another.
TEST_F(Prices, TakenOffAnItemInOneCategoryGoFromTheTillInThatOneAlone) {
    ASSERT_EQ(send.send(), QString());
    send.inBackOffice(R"(
        DELETE Pris WHERE Ps_Va_Id = '777031' AND Ps_Pi_Id = 71
        UPDATE Vare SET Va_SendTilButikkKasser = 0
        UPDATE Vare SET Va_SendTilButikkKasser = 1 WHERE Va_Id = '777031')");
    send.dm.ItemUpdateSelection = iusChanged;
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till("SELECT RTRIM(PS_VA_ID), PS_PI_ID, PS_PRISEN FROM PRIS"), ElementsAre("777031 | 72 | 11.5"));
}

TEST_F(Prices, OfACategoryThatIsGoneGoWithIt) {
    ASSERT_EQ(send.send(), QString());
    send.onTill("UPDATE KUNDE SET KU_PI_ID = 71 WHERE KU_ID = (SELECT MIN(KU_ID) FROM KUNDE)");
    send.inBackOffice(
        "DELETE Pris WHERE Ps_Pi_Id = 71 UPDATE Kunde SET Ku_Pi_Id = NULL WHERE Ku_Pi_Id = 71 DELETE Priskategori WHERE Pi_ID = 71");
    send.dm.ItemUpdateSelection = iusChanged;
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till("SELECT PI_ID FROM PRISKATEGORI WHERE PI_ID = 71"), IsEmpty());
    EXPECT_THAT(send.till("SELECT KU_ID FROM KUNDE WHERE KU_PI_ID = 71"), IsEmpty());
}

// Required: the till keeps only the prices that were sent.
TEST_F(Prices, OlderThanTheDaysOfASendOfChangesGo) {
    send.dm.DagerSidenEndring = 3;
    ASSERT_EQ(send.send(), QString());
    send.inBackOffice(R"(
        UPDATE Pris SET Ps_UpdDato = DATEADD(minute, -3 * 1440 - 1, GETDATE())
        UPDATE Pris SET Ps_UpdDato = DATEADD(minute, -3 * 1440 + 1, GETDATE()) WHERE Ps_Va_Id = '777032')");
    send.dm.ItemUpdateSelection = iusChanged;
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till("SELECT RTRIM(PS_VA_ID), PS_PI_ID, PS_PRISEN FROM PRIS"), ElementsAre("777032 | 71 | 20.5"));
}

TEST_F(Prices, AllGoWithASendOfNoItems) {
    ASSERT_EQ(send.send(), QString());
    send.dm.ItemUpdateSelection = iusNone;
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till("SELECT PS_VA_ID FROM PRIS"), IsEmpty());
}

TEST_F(Prices, StayAsTheyAreWithoutPricesAndCustomers) {
    ASSERT_EQ(send.send(), QString());
    const Rows before = send.till(kPrices);
    send.inBackOffice("UPDATE Pris SET Ps_Prisen = 1 UPDATE Priskategori SET Pi_Navn = 'x' WHERE Pi_ID > 70");
    send.dm.SendPriceAndCustomer = false;
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till(kPrices), before);
    EXPECT_EQ(send.till(kCategories).front(), "71 | Bedrift | 0");
}

TEST_F(Prices, CategoriesAreToldRowByRow) {
    ASSERT_EQ(send.send(), QString());
    const qsizetype begins = send.progress.indexOf(QStringLiteral("0 Forbereder overføring av Priskategori... "));
    ASSERT_GE(begins, 0);
    const std::string count = send.backOffice("SELECT COUNT(*) FROM Priskategori").front();
    EXPECT_EQ(send.progress.at(begins + 1),
              QStringLiteral("100 Overfører Priskategori: %1 av %1").arg(QString::fromStdString(count)));
    EXPECT_TRUE(send.log.contains(
        QStringLiteral("Fullført overføring av %1 poster i tabellen Priskategori. Tid brukt: 00:00:00")
            .arg(QString::fromStdString(count))));
}

// Which offers hold: 81 and up, each but for one thing like the first.
constexpr char kOffers[] = R"sql(
DECLARE @now datetime, @department int
SELECT @now = GETDATE(), @department = MIN(Ikk_Ik_Ku_Id) FROM Internkundekasse
DELETE Pristilbudlinje
DELETE PristilbudInternKunde
DELETE Pristilbudlogg
DELETE Pristilbud
INSERT Kunde (Ku_Id, Ku_Navn) VALUES (7000, 'Annen avdeling')
INSERT Internkunde (Ik_Ku_Id, Ik_Avdelingsnummer) VALUES (7000, '970')
INSERT Pristilbud (Pr_Id, Pr_Navn, Pr_FraDato, Pr_TilDato, Pr_Type, Pr_Beregningsmetode, Pr_Fast_Rabatt,
  Pr_GjelderAlleAvd, Pr_Pst_Id)
SELECT id, 'Tilbud', @now + f, @now + t, kind, method, 7.5, everywhere, approved
FROM (SELECT 81 id, -1 f, 1 t, 0 kind, 0 method, 1 everywhere, 2 approved
  UNION SELECT 82, -1, 1, 3, 4, 1, 2
  UNION SELECT 83, -1, 1, 4, 9, 1, 2
  UNION SELECT 84, -1, 1, 5, 1, 1, 2
  UNION SELECT 85, -1, 1, 1, 1, 1, 2
  UNION SELECT 86, -1, 1, 6, 0, 1, 2
  UNION SELECT 87, -2, -1, 0, 0, 1, 2
  UNION SELECT 88, 1, 2, 0, 0, 1, 2
  UNION SELECT 89, -1, 1, 0, 0, 1, 1
  UNION SELECT 90, -1, 1, 2, 0, 0, 2
  UNION SELECT 91, -1, 1, 0, 0, 0, 2
  UNION SELECT 92, -1, 1, 0, 0, 0, 2) offers
INSERT PristilbudInternKunde (Pb_Pr_Id, Pb_Ik_Ku_Id) VALUES (90, @department), (91, 7000)
INSERT Pristilbudlinje (Pl_Pr_Id, Pl_Va_Id, Pl_Pris) SELECT Pr_Id, '777041', Pr_Id + 0.5 FROM Pristilbud
INSERT Pristilbudlinje (Pl_Pr_Id, Pl_Va_Id, Pl_Pris) VALUES (81, '777042', 15.5)
)sql";

constexpr char kOfferIds[] = "SELECT PR_ID FROM PRISTILBUD ORDER BY PR_ID";
constexpr char kOfferLines[] = "SELECT PL_PR_ID, RTRIM(PL_VA_ID), PL_PRIS FROM PRISTILBUDLINJE ORDER BY 1, 2";

class Offers : public testing::Test {
protected:
    explicit Offers(int version = kNewest) : send(version) {
        send.inBackOffice(plainItem("777041"));
        send.inBackOffice(plainItem("777042"));
        send.inBackOffice(
            "IF NOT EXISTS (SELECT 1 FROM PristilbudStatus WHERE Pst_Id = 1) INSERT PristilbudStatus VALUES (1, 'Foreslått') "
            "IF NOT EXISTS (SELECT 1 FROM PristilbudStatus WHERE Pst_Id = 2) INSERT PristilbudStatus VALUES (2, 'Godkjent')");
        send.inBackOffice(kOffers);
    }
    TillSend send;
};

TEST_F(Offers, ThatHoldNowForTheDepartmentStandOnTheTill) {
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till(kOfferIds), ElementsAre("81", "82", "83", "84", "90"));
    EXPECT_THAT(send.till(kOfferLines), ElementsAre("81 | 777041 | 81.5", "81 | 777042 | 15.5", "82 | 777041 | 82.5",
                                                    "83 | 777041 | 83.5", "84 | 777041 | 84.5", "90 | 777041 | 90.5"));
    const std::string columns =
        "SELECT CONVERT(varchar(30), Pr_FraDato, 121), CONVERT(varchar(30), Pr_TilDato, 121), Pr_Type, "
        "Pr_Beregningsmetode, Pr_Fast_Rabatt FROM Pristilbud WHERE Pr_Id = 82";
    EXPECT_EQ(send.till(columns), send.backOffice(columns));
}

TEST_F(Offers, FollowTheBackOfficeWhateverIsSent) {
    ASSERT_EQ(send.send(), QString());
    send.inBackOffice(R"(
        UPDATE Pristilbud SET Pr_FraDato = Pr_FraDato - 5, Pr_TilDato = Pr_TilDato + 5, Pr_Type = 5, Pr_Beregningsmetode = 1,
          Pr_Fast_Rabatt = 8.5 WHERE Pr_Id = 81
        UPDATE Pristilbudlinje SET Pl_Pris = 16.5 WHERE Pl_Pr_Id = 81 AND Pl_Va_Id = '777042'
        DELETE Pristilbudlinje WHERE Pl_Pr_Id = 81 AND Pl_Va_Id = '777041'
        UPDATE Pristilbud SET Pr_Pst_Id = 1 WHERE Pr_Id IN (82, 83, 84, 90))");
    send.dm.ItemUpdateSelection = iusNone;
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till(kOfferIds), ElementsAre("81"));
    EXPECT_THAT(send.till(kOfferLines), ElementsAre("81 | 777042 | 16.5"));
    const std::string columns =
        "SELECT CONVERT(varchar(30), Pr_FraDato, 121), CONVERT(varchar(30), Pr_TilDato, 121), Pr_Type, "
        "Pr_Beregningsmetode, Pr_Fast_Rabatt FROM Pristilbud WHERE Pr_Id = 81";
    EXPECT_EQ(send.till(columns), send.backOffice(columns));
}

TEST_F(Offers, ThatACouponPointsToStay) {
    send.onTill("INSERT PRISTILBUD (PR_ID) VALUES (95), (96) INSERT KUPONG (KUP_ID, KUP_PR_ID) VALUES (9501, 95)");
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till(kOfferIds), ElementsAre("81", "82", "83", "84", "90", "95"));
}

TEST_F(Offers, GoWithoutTheQuestionForCouponsWhereTheTillHasNone) {
    send.onTill("DROP TABLE KUPONGORDRELINJE DROP TABLE KUPONG INSERT PRISTILBUD (PR_ID) VALUES (96)");
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till(kOfferIds), ElementsAre("81", "82", "83", "84", "90"));
}

TEST_F(Offers, LinesNeedTheirItemOnTheTill) {
    send.dm.ItemUpdateSelection = iusNone;
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till(kOfferLines), IsEmpty());
    EXPECT_THAT(send.till(kOfferIds), ElementsAre("81", "82", "83", "84", "90"));
}

class OffersAt178 : public Offers {
protected:
    OffersAt178() : Offers(178) {}
};

TEST_F(OffersAt178, GoFromThatVersionOn) {
    send.onTill("UPDATE INNSTILLINGER SET IN_DBVERSION = '177'");
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till(kOfferIds), IsEmpty());
    EXPECT_THAT(send.till("SELECT name FROM sysobjects WHERE name = 'PRISTILBUD_IMPORT'"), IsEmpty());
    send.onTill("UPDATE INNSTILLINGER SET IN_DBVERSION = '178'");
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till(kOfferIds), ElementsAre("81", "82", "83", "84", "90"));
}

}  // namespace
}  // namespace torvik::test
