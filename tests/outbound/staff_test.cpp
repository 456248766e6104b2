// Staff, time profiles and access cards on a till after a send.
#include "tests/outbound/till_send.h"

namespace torvik::test {
namespace {

Rows cards(const TillSend& send) {
    return send.till("SELECT AK_ID, RTRIM(AK_AN_ID), AK_AKTIV FROM ADGANGSKORT ORDER BY AK_ID");
}

TEST(Staff, StandWithAllThatTheBackOfficeTells) {
    TillSend send;
    send.inBackOffice(
        "UPDATE InternKundeAnsatt SET Ika_Navn = 'Kari Nordmann', Ika_Visningsnavn = 'Kari', Ika_Aktiv = 1, "
        "Ika_Rabatt = 12.5, Ika_RabattKunPaaOrdPris = 1, Ika_Nivaa = 3, Ika_AnsattDato = '20250301', Ika_Pos_Tp_Id = "
        "2, Ika_Maks_Rabatt = 33.25 WHERE Ika_Id = '100'\n"
        "INSERT InternKundeAnsatt (Ika_Id, Ika_Ik_Ku_Id, Ika_Navn, Ika_Aktiv) VALUES ('900', 1001, 'Uten det meste', "
        "0)");
    send.onTill("UPDATE ANSATT SET AN_LONNSKONTO = '1234', AN_PERSONNR = '01017012345' WHERE AN_ID = '100'");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till("SELECT RTRIM(AN_ID), AN_TP_ID, AN_PI_ID, AN_NAVN, AN_AKTIV, AN_RABATT, AN_RABKUNPAAORDPRIS, "
                        "AN_NIVAA, AN_ANSATTDATO, RTRIM(AN_AVDNR), AN_LONNSKONTO, AN_PERSONNR, CONVERT(float, "
                        "AN_MAKS_RABATT) FROM ANSATT WHERE AN_ID IN ('100', '900') ORDER BY AN_ID"),
              (Rows{"100 | 2 | NULL | Kari | 1 | 12.5 | 1 | 3 | 2025-03-01 00:00:00.000 | 101 | NULL | NULL | 33.25",
                    "900 | 1 | NULL | Ikke oppgitt | 0 | 0 | 0 | 0 | NULL | 101 | NULL | NULL | NULL"}));
}

TEST(Staff, WorkTableHoldsWhatWasSentUntilTheNextSend) {
    TillSend send;
    send.inBackOffice(
        "DELETE FROM InternKundeAnsatt WHERE Ika_Id <> '100'\n"
        "UPDATE InternKundeAnsatt SET Ika_Navn = 'Kari Nordmann', Ika_Visningsnavn = 'Kari', Ika_Rabatt "
        "= 5, Ika_Pi_Id = 1, Ika_Maks_Rabatt = 7");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till("SELECT RTRIM(IKAI_ID), IKAI_IK_KU_ID, IKAI_NAVN, IKAI_VISNINGSNAVN, IKAI_KORTNUMMER, "
                        "IKAI_AKTIV, IKAI_NIVAA, IKAI_RABATT, IKAI_RABKUNPAAORDPRIS, RTRIM(IKAI_AVDNR), "
                        "Ikai_AnsattDato, Ikai_Tp_Id, Ikai_Pi_Id, CONVERT(float, Ikai_Maks_Rabatt) FROM ANSATTIMPORT"),
              Rows{"100 | 1001 | Kari Nordmann | Kari | K100 | 1 | 0 | 5 | 0 | 101 | NULL | 1 | 1 | 7"});
}

TEST(Staff, NewClerksPriceCategoryFollowsOneSendLater) {
    TillSend send;
    send.dm.SendPriceAndCustomer = true;
    send.inBackOffice(
        "INSERT InternKundeAnsatt (Ika_Id, Ika_Ik_Ku_Id, Ika_Navn, Ika_Pi_Id) VALUES ('900', 1001, "
        "'Ny', 2)");
    const auto category = [&] { return send.till("SELECT AN_PI_ID FROM ANSATT WHERE AN_ID = '900'"); };
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(category(), Rows{"NULL"});
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(category(), Rows{"2"});
    send.inBackOffice("UPDATE InternKundeAnsatt SET Ika_Pi_Id = NULL WHERE Ika_Id = '900'");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(category(), Rows{"2"}) << "none is no category to be found on the till";
}

// Staff come before the categories that the same send brings.
TEST(Staff, CategoryThatIsNewOnTheTillFollowsOneSendLaterForAKnownClerkToo) {
    TillSend send;
    send.dm.SendPriceAndCustomer = true;
    ASSERT_EQ(send.send(), QString());
    const auto category = [&] { return send.till("SELECT AN_PI_ID FROM ANSATT WHERE AN_ID = '100'"); };
    const Rows before = category();
    send.inBackOffice(
        "INSERT Priskategori VALUES (9, 'Ny', 1)\nUPDATE InternKundeAnsatt SET Ika_Pi_Id = 9 WHERE Ika_Id = '100'");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till("SELECT PI_ID FROM PRISKATEGORI WHERE PI_ID = 9"), Rows{"9"});
    EXPECT_EQ(category(), before);
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(category(), Rows{"9"});
}

TEST(Staff, WhatWasMergedBeforeTheTillRefusesANewClerkStands) {
    TillSend send;
    ASSERT_EQ(send.send(), QString());
    send.onTill("ALTER TABLE ANSATT ADD CONSTRAINT CK_SPERRE CHECK (AN_ID <> '900')");
    send.inBackOffice(
        "UPDATE POSTIMEPROFIL SET Pos_Tp_Navn = 'Fast' WHERE Pos_Tp_Id = 1\n"
        "UPDATE InternKundeAnsatt SET Ika_Visningsnavn = 'Nytt navn' WHERE Ika_Id = '100'\n"
        "INSERT InternKundeAnsatt (Ika_Id, Ika_Ik_Ku_Id, Ika_Navn) VALUES ('900', 1001, 'Ny')");
    EXPECT_TRUE(send.send().startsWith(QStringLiteral("TorvikToPOS failed: Rabattmatrise SessionID: ")));
    EXPECT_EQ(send.till("SELECT TP_NAVN FROM TIMEPROFIL WHERE TP_ID = 1"), Rows{"Fast"});
    EXPECT_EQ(send.till("SELECT RTRIM(AN_ID), AN_NAVN FROM ANSATT WHERE AN_ID IN ('100', '900')"),
              Rows{"100 | Nytt navn"});
    send.onTill("ALTER TABLE ANSATT DROP CONSTRAINT CK_SPERRE");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till("SELECT AN_NAVN FROM ANSATT WHERE AN_ID = '900'"), Rows{"Ikke oppgitt"});
}

TEST(Staff, OfAllDepartmentsGoToATillThatIsNoFranchise) {
    TillSend send;
    send.inBackOffice(
        "INSERT InternKundeAnsatt (Ika_Id, Ika_Ik_Ku_Id, Ika_Navn, Ika_Kortnummer) VALUES ('900', 1000, "
        "'Hovedkontor', 'K900')");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till("SELECT RTRIM(AN_ID), RTRIM(AN_AVDNR) FROM ANSATT ORDER BY AN_ID"),
              (Rows{"100 | 101", "101 | 101", "102 | 101", "900 | 100"}));
    EXPECT_EQ(cards(send), (Rows{"K100 | 100 | 1", "K101 | 101 | 1", "K102 | 102 | 1", "K900 | 900 | 1"}));

    send.inBackOffice("INSERT KundeKundegruppe VALUES (1001, 3)");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till("SELECT RTRIM(IKAI_ID) FROM ANSATTIMPORT ORDER BY IKAI_ID"), (Rows{"100", "101", "102"}));
    EXPECT_EQ(send.till("SELECT RTRIM(AN_ID) FROM ANSATT ORDER BY AN_ID"), (Rows{"100", "101", "102", "900"}));
    EXPECT_EQ(cards(send), (Rows{"K100 | 100 | 1", "K101 | 101 | 1", "K102 | 102 | 1"}));
}

TEST(Staff, FormerOneStaysAndLosesTheCard) {
    TillSend send;
    ASSERT_EQ(send.send(), QString());
    send.inBackOffice(
        "DELETE FROM InternKundeAnsatt WHERE Ika_Id = '102'\n"
        "UPDATE InternKundeAnsatt SET Ika_Aktiv = 0 WHERE Ika_Id = '101'");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till("SELECT RTRIM(AN_ID), AN_AKTIV FROM ANSATT ORDER BY AN_ID"),
              (Rows{"100 | 1", "101 | 0", "102 | 1"}));
    EXPECT_EQ(cards(send), (Rows{"K100 | 100 | 1", "K101 | 101 | 0"}));
}

struct CardCase {
    const char* name;
    const char* atTheTill;  // rows of ADGANGSKORT before the send
    const char* backOffice;
    Rows after;
};

class AccessCards : public testing::TestWithParam<CardCase> {};

TEST_P(AccessCards, AreThoseOfTheBackOffice) {
    TillSend send;
    ASSERT_EQ(send.send(), QString());
    send.onTill("DELETE FROM ADGANGSKORT");
    if (*GetParam().atTheTill) send.onTill(std::string("INSERT ADGANGSKORT VALUES ") + GetParam().atTheTill);
    send.inBackOffice("UPDATE InternKundeAnsatt SET Ika_Kortnummer = ''");
    send.inBackOffice(GetParam().backOffice);
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(cards(send), GetParam().after);
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(cards(send), GetParam().after) << "and again";
}

INSTANTIATE_TEST_SUITE_P(
    Each, AccessCards,
    testing::Values(
        CardCase{
            "New", "", "UPDATE InternKundeAnsatt SET Ika_Kortnummer = 'K1' WHERE Ika_Id = '100'", {"K1 | 100 | 1"}},
        CardCase{"SameWithOtherState",
                 "('K1', '100', 1)",
                 "UPDATE InternKundeAnsatt SET Ika_Kortnummer = 'K1', Ika_Aktiv = 0 WHERE Ika_Id = '100'",
                 {"K1 | 100 | 0"}},
        CardCase{"OtherNumber",
                 "('K1', '100', 1)",
                 "UPDATE InternKundeAnsatt SET Ika_Kortnummer = 'K2' WHERE Ika_Id = '100'",
                 {"K2 | 100 | 1"}},
        CardCase{"Moved",
                 "('K1', '100', 1)",
                 "UPDATE InternKundeAnsatt SET Ika_Kortnummer = 'K1' WHERE Ika_Id = '101'",
                 {"K1 | 101 | 1"}},
        CardCase{"Swapped",
                 "('K1', '100', 1), ('K2', '101', 1)",
                 "UPDATE InternKundeAnsatt SET Ika_Kortnummer = CASE Ika_Id WHEN '100' THEN 'K2' ELSE 'K1' END WHERE "
                 "Ika_Id IN ('100', '101')",
                 {"K1 | 101 | 1", "K2 | 100 | 1"}},
        CardCase{"SecondCardOfOneClerk",
                 "('K1', '100', 1), ('K2', '100', 1)",
                 "UPDATE InternKundeAnsatt SET Ika_Kortnummer = 'K2' WHERE Ika_Id = '100'",
                 {"K2 | 100 | 1"}},
        CardCase{
            "Emptied", "('K1', '100', 1)", "UPDATE InternKundeAnsatt SET Ika_Kortnummer = '' WHERE Ika_Id = '100'", {}},
        // The back office no longer holds the number, the clerk no longer works here, and the card still opens the
        // till.
        CardCase{"ClearedToNullStaysWithItsState",
                 "('K1', '100', 1)",
                 "UPDATE InternKundeAnsatt SET Ika_Kortnummer = NULL, Ika_Aktiv = 0 WHERE Ika_Id = '100'",
                 {"K1 | 100 | 1"}},
        CardCase{"NullTakenByAnother",
                 "('K1', '100', 1)",
                 "UPDATE InternKundeAnsatt SET Ika_Kortnummer = CASE Ika_Id WHEN '101' THEN 'K1' END WHERE Ika_Id IN "
                 "('100', '101')",
                 {"K1 | 101 | 1"}}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(TimeProfiles, AreAddedAndChangedAndNoneIsDeleted) {
    TillSend send;
    send.onTill("INSERT TIMEPROFIL VALUES (50, 'Bare her', 9)");
    send.inBackOffice(
        "INSERT POSTIMEPROFIL VALUES (7, 'Helg', 3)\n"
        "UPDATE POSTIMEPROFIL SET Pos_Tp_Navn = 'Fast', Pos_Tp_Stemplingsregel = 4 WHERE Pos_Tp_Id = 1");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till("SELECT * FROM TIMEPROFIL ORDER BY TP_ID"),
              (Rows{"1 | Fast | 4", "2 | Ekstrahjelp | 0", "7 | Helg | 3", "50 | Bare her | 9"}));
    EXPECT_EQ(send.till("SELECT * FROM TIMEPROFILIMPORT ORDER BY Tpi_Id"),
              (Rows{"1 | Fast | 4", "2 | Ekstrahjelp | 0", "7 | Helg | 3"}));
}

}  // namespace
}  // namespace torvik::test
