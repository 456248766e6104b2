// Reasons, payment forms and currencies on a till after a send.
#include "tests/outbound/till_send.h"

namespace torvik::test {
namespace {

TEST(Reasons, AreAddedAndChangedAndNoneIsDeleted) {
    TillSend send(71);
    send.onTill("INSERT GRUNN VALUES (50, 1, 'Bare her', 1, 1)");
    send.inBackOffice(
        "DELETE FROM PosGrunn\n"
        "INSERT PosGrunntype VALUES (2, 'Annet')\n"
        "INSERT PosGrunn VALUES (1, 1, 'Ny tekst', 0, NULL), (2, NULL, 'Angret', 1, 0), "
        "(9, 1, 'Ny', 1, 1)");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till("SELECT * FROM GRUNN ORDER BY GR_ID"),
              (Rows{"1 | 1 | Ny tekst | 0 | 0", "2 | NULL | Angret | 1 | 0", "3 | 1 | Skadet vare | 0 | NULL",
                    "9 | 1 | Ny | 1 | 1", "50 | 1 | Bare her | 1 | 1"}));
    EXPECT_EQ(send.till("SELECT * FROM GRUNNIMPORT ORDER BY iGR_ID"),
              (Rows{"1 | 1 | Ny tekst | 0 | 0", "2 | NULL | Angret | 1 | 0", "9 | 1 | Ny | 1 | 1"}));
}

TEST(PaymentForms, GetTheirLimitsAndNoneIsAdded) {
    TillSend send;
    send.inBackOffice(
        "UPDATE PosBetalingform SET Pos_Bf_Min_Belop = 10, Pos_Bf_Maks_Belop = 12.3456, "
        "Pos_Bf_Er_Kontant = 1, Pos_Bf_Navn = 'Annet navn' WHERE Pos_Bf_Id = 2\n"
        "INSERT PosBetalingform VALUES (50, NULL, 'Bare i bakkontoret', 1, 1, 1, 1, 'NOK', 1, 2, 0)");
    send.onTill("UPDATE BETALINGFORM SET BF_MAKS_BELOP = 1, BF_ER_KONTANT = 1 WHERE BF_ID = 3");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till("SELECT BF_ID, RTRIM(BF_NAVN), CONVERT(float, BF_MIN_BELOP), CONVERT(float, BF_MAKS_BELOP), "
                        "BF_ER_KONTANT FROM BETALINGFORM WHERE BF_ID IN (1, 2, 3, 50) ORDER BY BF_ID"),
              (Rows{"1 | Kontant | NULL | 40000 | 1", "2 | Kort | 10 | 12.3456 | 1", "3 | Telefon | NULL | NULL | 0"}));
    EXPECT_EQ(send.till("SELECT TBF_ID, CONVERT(float, TBF_MIN_BELOP), CONVERT(float, TBF_MAKS_BELOP), TBF_ER_KONTANT "
                        "FROM BETALINGFORMIMPORT WHERE TBF_ID IN (2, 50) ORDER BY TBF_ID"),
              (Rows{"2 | 10 | 12.3456 | 1", "50 | 1 | 2 | 0"}));
}

TEST(PaymentForms, TillBelow213HasTheWorkTableAloneAndEmpty) {
    TillSend send(211);
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till("SELECT COUNT(*) FROM BETALINGFORMIMPORT"), Rows{"0"});
    EXPECT_TRUE(send.log.filter(QStringLiteral("BETALINGFORM")).isEmpty());
}

TEST(PaymentForms, GetNoLimitsBelow213WhereTheTillHasTheColumns) {
    TillSend send(213);
    send.onTill(
        "UPDATE INNSTILLINGER SET IN_DBVERSION = '212' "
        "UPDATE BETALINGFORM SET BF_MIN_BELOP = 1, BF_MAKS_BELOP = 2, BF_ER_KONTANT = 0");
    const char* limits = "SELECT BF_ID, BF_MIN_BELOP, BF_MAKS_BELOP, BF_ER_KONTANT FROM BETALINGFORM ORDER BY BF_ID";
    const Rows before = send.till(limits);
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till(limits), before);
    EXPECT_EQ(send.till("SELECT COUNT(*) FROM BETALINGFORMIMPORT"), Rows{"0"});
    EXPECT_TRUE(send.progress.filter(QStringLiteral("etalingform"), Qt::CaseInsensitive).isEmpty());
    send.onTill("UPDATE INNSTILLINGER SET IN_DBVERSION = '213'");
    ASSERT_EQ(send.send(), QString());
    EXPECT_NE(send.till(limits), before);
}

TEST(Currencies, AreAddedAndChangedAndNoneIsDeleted) {
    TillSend send;
    send.onTill("INSERT VALUTA VALUES ('XXX', 'Bare her', 1, 1)");
    send.inBackOffice("UPDATE Valuta SET Vu_Navn = 'Kroner', Vu_Kurs = 99.5, Vu_Forhold = 10 WHERE Vu_ID = 'NOK'");
    ASSERT_EQ(send.send(), QString());
    EXPECT_EQ(send.till("SELECT VU_ID, RTRIM(VU_NAVN), VU_KURS, VU_ENHET FROM VALUTA ORDER BY VU_ID"),
              (Rows{"EUR | Euro | 11.42 | 1", "NOK | Kroner | 99.5 | 10", "SEK | Svenske kroner | 101.5 | 100",
                    "XXX | Bare her | 1 | 1"}));
    EXPECT_EQ(send.till("SELECT VUI_ID, RTRIM(VUI_NAVN), VUI_KURS, VUI_FORHOLD FROM VALUTAIMPORT ORDER BY VUI_ID"),
              (Rows{"EUR | Euro | 11.42 | 1", "NOK | Kroner | 99.5 | 10", "SEK | Svenske kroner | 101.5 | 100"}));
    EXPECT_EQ(send.log.filter(QStringLiteral("i tabellen Valuta")).value(0).section(QStringLiteral(" Tid"), 0, 0),
              QStringLiteral("Fullført overføring av 3 poster i tabellen Valuta."));
    EXPECT_TRUE(send.progress.contains(QStringLiteral("100 Overfører Valuta: 3 av 3")));
}

TEST(Currencies, StayWhereTheBackOfficeDoesNotSendThem) {
    for (const char* off : {"0", "NULL"}) {
        TillSend send;
        send.inBackOffice(std::string("UPDATE Innstillinger SET In_SendValutaTilkasse = ") + off);
        ASSERT_EQ(send.send(), QString());
        EXPECT_EQ(send.till("SELECT VU_ID FROM VALUTA"), Rows{"NOK"}) << off;
        EXPECT_EQ(send.till("SELECT COUNT(*) FROM sysobjects WHERE name = 'VALUTAIMPORT'"), Rows{"0"}) << off;
    }
}

}  // namespace
}  // namespace torvik::test
