// Items, their groups, suppliers, products and parts: what stands on the till after a send.
#include <gmock/gmock.h>

#include "tests/outbound/one_item.h"
#include "tests/outbound/till_send.h"

namespace torvik::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kNewest = 229;

constexpr char kItemRow[] =
    "SELECT RTRIM(VA_ID), RTRIM(VA_NAVN), VA_PRIS, VA_UTGAATT, VA_KATEGORI, VA_VEILPRIS, VA_MVASATS, VA_LE_ID, "
    "VA_KOSTPRIS, VA_MINLAGER, VA_MAKSLAGER, VA_VGR_ID, VA_PRISLAPP, VA_MAKSRABATT, VA_INFOEKSTERN, VA_INFOINTERN, "
    "VA_INFOREGEL FROM VARE WHERE VA_ID = '777001'";
constexpr char kSupplierRow[] =
    "SELECT LE_NAVN, LE_ADRESSE, LE_POSTNR, LE_POSTSTED, LE_LAND, LE_TELEFON, LE_TELEFAX, LE_EPOST FROM LEVERANDOR "
    "WHERE LE_ID = 701";
constexpr char kGroupNames[] = "SELECT VGR_ID, VGR_NAVN FROM VAREGRP WHERE VGR_ID LIKE '_701' ORDER BY VGR_ID";

// Internal text stands in the column for external text, and the other way round.
constexpr char kItemAsSent[] =
    "777001 | Rødt garn | 39.5 | 1 | Tekstil/Garn | 49.5 | 15 | 701 | 11.5 | 2.5 | 20.5 | U701 | 4 | 30 | intern tekst | "
    "ekstern tekst | 3";
constexpr char kItemAsChanged[] =
    "777001 | Blå tråd | 40.5 | 0 | Alt/Tekstil | 0 | 25 | NULL | 12.5 | 3.5 | 30.5 | H701 | 6 | 40 | ny intern | ny ekstern "
    "| 5";

class ItemAtATill : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Schemas, ItemAtATill, testing::Values(71, 178, 192, 211, 225));

TEST_P(ItemAtATill, ArrivesColumnByColumnAndIsChangedColumnByColumn) {
    TillSend send(GetParam());
    send.inBackOffice(kOneItem);
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till(kItemRow), ElementsAre(kItemAsSent));
    EXPECT_THAT(send.till(kSupplierRow),
                ElementsAre("Garn AS | Postboks 1 | 5003 | Bergen | Island | 55000001 | 55000002 | post@garn.no"));
    EXPECT_THAT(send.till(kGroupNames), ElementsAre("H701 | Tekstil", "R701 | Alt", "U701 | Garn"));

    send.inBackOffice(kOneItemChanged);
    send.dm.ItemUpdateSelection = iusChanged;
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till(kItemRow), ElementsAre(kItemAsChanged));
    EXPECT_THAT(send.till(kSupplierRow),
                ElementsAre("Tråd AS | Kaien 2 | 0150 | Oslo | NULL | 22000001 | NULL | post@traad.no"));
    EXPECT_THAT(send.till(kGroupNames), ElementsAre("H701 | Tekstil", "R701 | Alt", "U701 | Tråder"));
}

TEST(ItemAtATill, TellsItsProductColourAndSizeFrom225) {
    TillSend send(225);
    send.inBackOffice(kOneItem);
    ASSERT_EQ(send.send(), QString());
    const std::string names = "SELECT VA_P_NAVN, VA_FARGENAVN, VA_STORRELSENAVN FROM VARE WHERE VA_ID = '777001'";
    EXPECT_THAT(send.till(names), ElementsAre("Ullgarn | Rød | 50 g"));
    send.inBackOffice(kOneItemChanged);
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till(names), ElementsAre("Bomull | Blå | 100 m"));
}

TEST(ItemAtATill, DoesNotTellThemBelow225WhereTheTillHasTheColumns) {
    TillSend send(225);
    send.inBackOffice(kOneItem);
    send.onTill("UPDATE INNSTILLINGER SET IN_DBVERSION = '224'");
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till("SELECT VA_P_NAVN, VA_FARGENAVN, VA_STORRELSENAVN FROM VARE WHERE VA_ID = '777001'"),
                ElementsAre("NULL | NULL | NULL"));
}

TEST(ItemAtATill, IsMarkedDeletedWhereTheTillHasTheColumnWhateverItsVersion) {
    for (const char* version : {"192", "100"}) {
        TillSend send(192);
        send.inBackOffice(kOneItem);
        send.onTill(std::string("UPDATE INNSTILLINGER SET IN_DBVERSION = '") + version + "'");
        ASSERT_EQ(send.send(), QString()) << version;
        EXPECT_THAT(send.till("SELECT VA_SLETTET FROM VARE WHERE VA_ID = '777001'"), ElementsAre("1")) << version;
        send.inBackOffice(kOneItemChanged);
        ASSERT_EQ(send.send(), QString()) << version;
        EXPECT_THAT(send.till("SELECT VA_SLETTET FROM VARE WHERE VA_ID = '777001'"), ElementsAre("0")) << version;
    }
}

// The till changes its known items by one statement and adds the new ones by another.
TEST(ItemAtATill, NewOneIsWholeWhereTheTillRefusesTheChangeOfAnother) {
    TillSend send(kNewest);
    send.inBackOffice(plainItem("777002"));
    ASSERT_EQ(send.send(), QString());
    send.onTill("ALTER TABLE VARE ADD CONSTRAINT CK_SPERRE CHECK (VA_NAVN <> 'Sperret')");
    send.inBackOffice("UPDATE Vare SET Va_Navn = 'Sperret' WHERE Va_Id = '777002'");
    send.inBackOffice(kOneItem);
    EXPECT_THAT(send.send().toStdString(), testing::StartsWith("TorvikToPOS failed: Vare SessionID: "));
    EXPECT_THAT(send.till(kItemRow), ElementsAre(kItemAsSent));
    EXPECT_THAT(send.till("SELECT RTRIM(VA_NAVN) FROM VARE WHERE VA_ID = '777002'"), ElementsAre("Vare 777002"));
}

TEST(ItemAtATill, LongGroupNameIsCutAtFiftyCharacters) {
    TillSend send(kNewest);
    send.inBackOffice(kOneItem);
    const std::string above(29, 'H');
    const std::string below(30, 'U');
    send.inBackOffice("UPDATE Varegruppe SET Vg_Navn = '" + above +
                      "' WHERE Vg_Id = 'H701' UPDATE Varegruppe SET Vg_Navn = '" + below + "' WHERE Vg_Id = 'U701'");
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till("SELECT VA_KATEGORI FROM VARE WHERE VA_ID = '777001'"),
                ElementsAre(above + "/" + std::string(20, 'U')));
}

TEST(ItemGroups, HaveParentAndRootFrom211) {
    TillSend send(211);
    send.inBackOffice(kOneItem);
    ASSERT_EQ(send.send(), QString());
    const std::string tree =
        "SELECT VGR_ID, VGR_HOVED_VGR_ID, VGR_ROOT_VGR_ID FROM VAREGRP WHERE VGR_ID LIKE '_701' ORDER BY VGR_ID";
    EXPECT_THAT(send.till(tree), ElementsAre("H701 | R701 | R701", "R701 | NULL | NULL", "U701 | H701 | R701"));
    send.inBackOffice(kOneItemChanged);
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till(tree), ElementsAre("H701 | R701 | R701", "R701 | NULL | NULL", "U701 | R701 | H701"));
}

TEST(ItemGroups, HaveNoParentBelow211WhereTheTillHasTheColumns) {
    TillSend send(211);
    send.inBackOffice(kOneItem);
    send.onTill("UPDATE INNSTILLINGER SET IN_DBVERSION = '210'");
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till("SELECT VGR_HOVED_VGR_ID, VGR_ROOT_VGR_ID FROM VAREGRP WHERE VGR_ID = 'U701'"),
                ElementsAre("NULL | NULL"));
}

TEST(ItemGroups, KeepAParentWhoseSuccessorTheTillHasNot) {
    TillSend send(211);
    send.inBackOffice(kOneItem);
    ASSERT_EQ(send.send(), QString());
    send.inBackOffice(
        "ALTER TABLE Varegruppe DROP CONSTRAINT FK_Varegruppe_Hoved ALTER TABLE Varegruppe DROP CONSTRAINT FK_Varegruppe_Root");
    send.inBackOffice("UPDATE Varegruppe SET Vg_Hoved_Vg_ID = 'X999', Vg_Root_Vg_ID = 'X998' WHERE Vg_Id = 'U701'");
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till("SELECT VGR_HOVED_VGR_ID, VGR_ROOT_VGR_ID FROM VAREGRP WHERE VGR_ID = 'U701'"),
                ElementsAre("H701 | R701"));
}

TEST(ItemGroupsAndSuppliers, StayOnTheTillWhenTheBackOfficeHasThemNoMore) {
    TillSend send(kNewest);
    send.onTill(
        "INSERT VAREGRP (VGR_ID, VGR_NAVN) VALUES ('Z701', 'Gammel') INSERT LEVERANDOR (LE_ID, LE_NAVN) VALUES (799, 'Borte')");
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till("SELECT VGR_NAVN FROM VAREGRP WHERE VGR_ID = 'Z701'"), ElementsAre("Gammel"));
    EXPECT_THAT(send.till("SELECT LE_NAVN FROM LEVERANDOR WHERE LE_ID = 799"), ElementsAre("Borte"));
}

TEST(ItemChoice, ChangesOnlySendsTheMarkedItemsAlone) {
    TillSend send(kNewest);
    send.inBackOffice(kOneItem);
    send.inBackOffice(plainItem("777002"));
    send.inBackOffice(
        "UPDATE Vare SET Va_SendTilButikkKasser = 0 UPDATE Vare SET Va_SendTilButikkKasser = 1 WHERE Va_Id = '777002'");
    send.dm.ItemUpdateSelection = iusChanged;
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till("SELECT RTRIM(VA_ID) FROM VARE WHERE VA_ID LIKE '777%'"), ElementsAre("777002"));
    EXPECT_THAT(send.log, testing::Contains(
                              QStringLiteral("Fullført overføring av 1 poster i tabellen VARE. Tid brukt: 00:00:00")));
}

TEST(ItemChoice, NoneSendsNoItemAndLeavesThoseOfTheTill) {
    TillSend send(kNewest);
    send.inBackOffice(kOneItem);
    const Rows before = send.till("SELECT VA_ID, VA_PRIS FROM VARE ORDER BY VA_ID");
    ASSERT_FALSE(before.empty());
    send.dm.ItemUpdateSelection = iusNone;
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till("SELECT VA_ID, VA_PRIS FROM VARE ORDER BY VA_ID"), before);
    EXPECT_THAT(send.log, testing::Contains(
                              QStringLiteral("Fullført overføring av 0 poster i tabellen VARE. Tid brukt: 00:00:00")));
}

TEST(ItemChoice, OfAnotherSessionIsNotSent) {
    TillSend send(kNewest);
    send.inBackOffice(kOneItem);
    for (const char* other : {"", "annen"})
        send.inBackOffice(std::string("INSERT VareEksport (Ve_SesjonID, Ve_InsDato, Ve_Va_ID, Ve_Va_Navn, Ve_Pris, "
                                      "Ve_Va_Utgaatt, Ve_Varegruppe) VALUES ('") +
                          other + "', GETDATE(), '777001', 'Rødt garn', 1, 0, '')");
    send.dm.ItemUpdateSelection = iusNone;
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till("SELECT VA_ID FROM VARE WHERE VA_ID = '777001'"), IsEmpty());
}

TEST(ItemChoice, EndsWithoutRowsOfItsOwnAndSweepsThoseOlderThanADay) {
    TillSend send(kNewest);
    const std::string row =
        "INSERT VareEksport (Ve_SesjonID, Ve_InsDato, Ve_Va_ID, Ve_Va_Navn, Ve_Pris, Ve_Va_Utgaatt, "
        "Ve_Varegruppe) VALUES ('";
    send.inBackOffice(row + "9001', DATEADD(minute, -1441, GETDATE()), 'X', 'Gammel', 1, 0, '') " + row +
                      "9002', DATEADD(minute, -1439, GETDATE()), 'X', 'Ung', 1, 0, '')");
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.backOffice("SELECT Ve_Va_Navn FROM VareEksport"), ElementsAre("Ung"));
}

// The session counts for the last OR alone.
TEST(Products, WithATextGoWhateverSessionTheirItemsWereChosenBy) {
    const std::string foreignChoice =
        "INSERT VareEksport (Ve_SesjonID, Ve_InsDato, Ve_Va_ID, Ve_Va_Navn, Ve_Pris, Ve_Va_Utgaatt, Ve_Varegruppe) VALUES "
        "('annen', GETDATE(), '777001', 'Rødt garn', 1, 0, '')";
    const struct {
        const char* change;
        int products;
    } kCases[] = {
        {"UPDATE Produkt SET P_InfoEkstern = NULL", 1},
        {"UPDATE Produkt SET P_InfoIntern = NULL", 1},
        {"UPDATE Produkt SET P_InfoIntern = NULL, P_InfoEkstern = NULL", 0},  // the rule alone: only of this session
    };
    for (const auto& one : kCases) {
        TillSend send(kNewest);
        send.inBackOffice(kOneItem);
        send.inBackOffice(
            "UPDATE Produkt SET P_InfoIntern = NULL, P_InfoEkstern = NULL, P_InfoRegel = NULL WHERE P_Id <> 'P701'");
        send.inBackOffice(std::string(one.change) + " WHERE P_Id = 'P701'");
        send.inBackOffice(foreignChoice);
        send.dm.ItemUpdateSelection = iusNone;
        ASSERT_EQ(send.send(), QString());
        EXPECT_THAT(
            send.log,
            testing::Contains(QStringLiteral("Fullført overføring av %1 poster i tabellen Produkt. Tid brukt: 00:00:00")
                                  .arg(one.products)))
            << one.change;
    }
}

constexpr char kParts[] =
    "SELECT RTRIM(DV_HOVED_VA_ID), RTRIM(DV_DELVARE_VA_ID), DV_ANTALL, DV_PRIS FROM DELVARE ORDER BY 1, 2";

// Three items and two pairs of them.
void makeParts(TillSend& send) {
    for (const char* number : {"777011", "777012", "777013"}) send.inBackOffice(plainItem(number));
    send.inBackOffice(
        "DELETE Delvare INSERT Delvare (Dv_Hoved_Va_ID, Dv_Delvare_Va_ID, Dv_Antall, Dv_Pris, Dv_Utskriftsregel) "
        "VALUES ('777011', '777012', 2.5, 10.5, 3), ('777013', '777011', 4.5, 20.5, 1)");
}

TEST(ItemParts, ArriveAndAreChangedBelow192) {
    TillSend send(178);
    makeParts(send);
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till(kParts), ElementsAre("777011 | 777012 | 2.5 | 10.5", "777013 | 777011 | 4.5 | 20.5"));
    send.inBackOffice("UPDATE Delvare SET Dv_Antall = 3.5, Dv_Pris = 11.5 WHERE Dv_Delvare_Va_ID = '777012'");
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till(kParts), ElementsAre("777011 | 777012 | 3.5 | 11.5", "777013 | 777011 | 4.5 | 20.5"));
}

TEST(ItemParts, HaveAPrintRuleFrom192) {
    const std::string rules =
        "SELECT RTRIM(DV_DELVARE_VA_ID), DV_ANTALL, DV_PRIS, DV_UTSKRIFTSREGEL FROM DELVARE ORDER BY 1";
    TillSend send(192);
    makeParts(send);
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till(rules), ElementsAre("777011 | 4.5 | 20.5 | 1", "777012 | 2.5 | 10.5 | 3"));
    send.inBackOffice(
        "UPDATE Delvare SET Dv_Antall = 5.5, Dv_Pris = 21.5, Dv_Utskriftsregel = 7 WHERE Dv_Delvare_Va_ID = '777011'");
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till(rules), ElementsAre("777011 | 5.5 | 21.5 | 7", "777012 | 2.5 | 10.5 | 3"));
}

TEST(ItemParts, HaveNoneBelow192WhereTheTillHasTheColumn) {
    TillSend send(192);
    makeParts(send);
    send.onTill("UPDATE INNSTILLINGER SET IN_DBVERSION = '191'");
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till("SELECT DV_UTSKRIFTSREGEL FROM DELVARE"), ElementsAre("NULL", "NULL"));
}

// Required: pairs that a send of changes does not touch leave the till.
TEST(ItemParts, ThatASendOfChangesDoesNotTouchGo) {
    TillSend send(kNewest);
    makeParts(send);
    send.inBackOffice(plainItem("777014"));
    send.inBackOffice("INSERT Delvare (Dv_Hoved_Va_ID, Dv_Delvare_Va_ID) VALUES ('777014', '777012')");
    ASSERT_EQ(send.send(), QString());
    // Either side of a pair counts.
    send.inBackOffice(
        "UPDATE Vare SET Va_SendTilButikkKasser = 0 UPDATE Vare SET Va_SendTilButikkKasser = 1 WHERE Va_Id = '777011'");
    send.dm.ItemUpdateSelection = iusChanged;
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till(kParts), ElementsAre("777011 | 777012 | 2.5 | 10.5", "777013 | 777011 | 4.5 | 20.5"));
    send.dm.ItemUpdateSelection = iusNone;
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till(kParts), IsEmpty());
}

TEST(ItemParts, NeedBothTheirItemsOnTheTill) {
    TillSend send(kNewest);
    makeParts(send);
    send.inBackOffice(
        "UPDATE Vare SET Va_SendTilButikkKasser = 0 UPDATE Vare SET Va_SendTilButikkKasser = 1 WHERE Va_Id = '777011'");
    send.dm.ItemUpdateSelection = iusChanged;
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till(kParts), IsEmpty());
}

TEST(ExtraSaleItems, AreTheDepartmentsOfTodayAndReplaceTheTills) {
    TillSend send(kNewest);
    for (const char* number : {"777021", "777022", "777023", "777024", "777025", "777026"})
        send.inBackOffice(plainItem(number));
    send.inBackOffice(R"(
        DECLARE @today datetime, @department int
        SELECT @today = CONVERT(datetime, CONVERT(varchar(8), GETDATE(), 112)), @department = MIN(Ikk_Ik_Ku_Id) FROM Internkundekasse
        DELETE Kundevare
        INSERT Kunde (Ku_Id, Ku_Navn) VALUES (7000, 'Annen avdeling')
        INSERT Internkunde (Ik_Ku_Id, Ik_Avdelingsnummer) VALUES (7000, '970')
        INSERT Kundevare (Kv_Ik_Ku_Id, Kv_Va_Id, Kv_Kvt_Id, Kv_FraDato, Kv_TilDato) VALUES
          (@department, '777021', 'EKS', @today - 1, @today),
          (@department, '777022', 'EKS', @today, @today + 1),
          (@department, '777023', 'EKS', @today - 2, @today - 1),
          (@department, '777024', 'EKS', @today + 1, @today + 2),
          (@department, '777025', 'ANN', @today - 1, @today + 1),
          (7000, '777026', 'EKS', @today - 1, @today + 1))");
    send.onTill("INSERT MERSALGVARE (MSV_VA_ID) VALUES ('GAMMEL')");
    ASSERT_EQ(send.send(), QString());
    EXPECT_THAT(send.till("SELECT RTRIM(MSV_VA_ID) FROM MERSALGVARE ORDER BY 1"), ElementsAre("777021", "777022"));
}

}  // namespace
}  // namespace torvik::test
