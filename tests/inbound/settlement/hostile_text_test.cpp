// A till whose texts hold what would end a literal, name a parameter or be a place in a format: it is fetched whole,
// and the back office holds each text as it stands on the till.
#include <gtest/gtest.h>

#include "tests/inbound/one_till.h"

namespace torvik::test {
namespace {

// Every text column of the till but for keys, kinds and its own settings, cut to the column's length.
constexpr const char* kHostileTexts = R"sql(
DECLARE @Sql varchar(1000), @Kolonner int, @Nr int
SELECT IDENTITY(int, 1, 1) Nr,
  'UPDATE ' + TABLE_NAME + ' SET ' + COLUMN_NAME + ' = LEFT(''x''''%s:a %1'', ' +
  CONVERT(varchar(10), CHARACTER_MAXIMUM_LENGTH) + ')' Setning
INTO #Setninger FROM INFORMATION_SCHEMA.COLUMNS C
WHERE NOT EXISTS (SELECT 1 FROM INFORMATION_SCHEMA.KEY_COLUMN_USAGE K
    WHERE K.TABLE_NAME = C.TABLE_NAME AND K.COLUMN_NAME = C.COLUMN_NAME)
  AND DATA_TYPE IN ('char', 'varchar', 'nchar', 'nvarchar') AND CHARACTER_MAXIMUM_LENGTH > 2
  AND COLUMN_NAME NOT LIKE '%ID' AND TABLE_NAME NOT IN ('INNSTILLINGER', 'GAVEKORT', 'TILGODELAPP')
  AND COLUMN_NAME NOT IN ('OP_TYPE', 'AN_AVDNR')
SELECT @Kolonner = COUNT(*) FROM #Setninger
SET @Nr = 1
WHILE @Nr <= @Kolonner
BEGIN
  SELECT @Sql = Setning FROM #Setninger WHERE Nr = @Nr
  EXEC(@Sql)
  SET @Nr = @Nr + 1
END
)sql";

class HostileText : public OneTill {
protected:
    HostileText() : OneTill(213, 2) {
        run.engine.IncludeGiftVoucherOnOppgjor = true;
        run.engine.IncludeCreditCouponOnOppgjor = true;
        onTill(
            "IF NOT EXISTS (SELECT 1 FROM BETALINGFORM WHERE BF_ID = 6) INSERT BETALINGFORM (BF_ID, BF_NAVN, BF_AKTIV, "
            "BF_SKUFF, BF_SYNLIG, BF_PAAVIRKERSALG, BF_VU_ID) VALUES (6, 'Faktura', 1, 0, 1, 1, 'NOK')\n"
            "INSERT KUNDE (KU_ID, KU_NAVN) VALUES (4001, 'Kunde')\n"
            "INSERT ANSATT (AN_ID, AN_NAVN, AN_AKTIV, AN_RABATT, AN_RABKUNPAAORDPRIS, AN_NIVAA) VALUES "
            "('9''9:%d', 'Ny', 1, 0, 0, 1)\n"
            "INSERT VARE (VA_ID, VA_NAVN, VA_PRIS, VA_MVASATS) VALUES ('A''1:%d', 'Vare', 2, 25)\n"
            "INSERT GAVEKORT VALUES ('G''%s:a', '1''1', '2', '9''9:%d', 17, 5, NULL, '1''2', '3', '2:%s', 88, NULL)\n"
            "INSERT TILGODELAPP VALUES ('T''%s:a', '1''1', '2', '9''9:%d', 17, 5, NULL, '1''2', '3', '2:%s', 88, NULL)");
        inBackOffice("INSERT Vare (Va_Id, Va_Navn, Va_Kostpris, Va_Pris) VALUES ('A''1:%d', 'Vare', 1, 2)");
        run.engine.LoadVareTable();
        settlement(900, "20260304 21:00");
        order(9001, 900, "20260304 10:00", 4001);
        line(90011, 9001, "A''1:%d", "2, 50, 0");
        payment(9001, 6, 100);
        onTill(kHostileTexts);
    }
};

TEST_F(HostileText, IsFetchedWholeAsItStands) {
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(run.errors(), QStringList());

    EXPECT_EQ(backOffice("SELECT DISTINCT Pos_Or_Rekvisisjonsnummer FROM PosOrdre"), Rows({"x'%s:a %1"}));
    EXPECT_EQ(backOffice("SELECT RTRIM(Ika_Id), Ika_Navn FROM InternKundeAnsatt WHERE Ika_Id LIKE '9''%'"),
              Rows({"9'9:%d | x'%s:a %1"}));
    EXPECT_EQ(backOffice("SELECT RTRIM(Bs_Va_Id), Bs_Antall FROM Butikksalg WHERE Bs_Va_Id LIKE 'A%'"),
              Rows({"A'1:%D | 2"}));
    EXPECT_EQ(
        backOffice("SELECT RTRIM(OL_Va_ID), OL_Navn, Or_VaarRef, Or_DeresRef FROM ORDRE, ORDRELINJE WHERE OL_Or_ID = "
                   "Or_ID AND OL_Va_ID LIKE 'A%'"),
        Rows({"A'1:%d | x'%s:a %1 | Bong 9001 ved x'%s:a %1 | x'%s:a %1"}));
    EXPECT_EQ(backOffice("SELECT GA_ID, RTRIM(GA_AVDNR), RTRIM(GA_AN_ID), RTRIM(GA_BET_AN_ID) FROM POSGAVEKORT"),
              Rows({"G'%s:a | 1'1 | 9'9:%d | 2:%s"}));
    EXPECT_EQ(backOffice("SELECT TG_ID, RTRIM(TG_AVDNR), RTRIM(TG_AN_ID), RTRIM(TG_BET_AN_ID) FROM POSTilgodelapp"),
              Rows({"T'%s:a | 1'1 | 9'9:%d | 2:%s"}));
    EXPECT_EQ(
        run.tillValue(0, "SELECT COUNT(*) FROM OPPGJOR WHERE OP_TYPE = 'NORMAL' AND OP_OPPDATERTTIDSPUNKT IS NULL"),
        "0");
}

TEST_F(HostileText, OfASingleBackOfficesStaffStandsAsItIs) {
    run.engine.IsEnterprise = false;
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(
        backOffice("SELECT RTRIM(Ika_Id), Ika_Navn, Ika_Visningsnavn FROM InternKundeAnsatt WHERE Ika_Id LIKE '9''%'"),
        Rows({"9'9:%d | x'%s:a %1 | x'%s:a %1"}));
}

}  // namespace
}  // namespace torvik::test
