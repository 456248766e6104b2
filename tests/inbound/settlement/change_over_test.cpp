// Sales and settlements in the hours that a change-over to or from summer time leaves out or has twice: every table
// gets the time that stands on the till, whatever the machine's own clock thinks of it.
#include <gtest/gtest.h>

#include "tests/inbound/one_till.h"
#include "tests/support/time_zone.h"

namespace torvik::test {
namespace {

struct ChangeOver {
    const char* name;
    const char* zone;
    const char* day;   // "yyyymmdd"
    const char* told;  // "yyyy-mm-dd"
};

class AtAChangeOver : public testing::WithParamInterface<ChangeOver>, public OneTill {
protected:
    AtAChangeOver() : zone_(GetParam().zone), day(GetParam().day), told(GetParam().told) {}

private:
    TimeZone zone_;

protected:
    const std::string day;
    const std::string told;
};

TEST_P(AtAChangeOver, SaleAndSettlementAtHalfPastTwoKeepTheirTimes) {
    onTill(
        "UPDATE OPPGJOR SET OP_OPPDATERTTIDSPUNKT = GETDATE()\nDELETE TIMERPRKODE\nDELETE TIMER\n"
        "INSERT KUNDE (KU_ID, KU_NAVN) VALUES (4001, 'Bygg AS')\n"
        "UPDATE ANSATT SET AN_NAVN = 'Kari' WHERE AN_ID = '100'\n"
        "INSERT TIMER (TI_ID, TI_AN_ID, TI_TIDINN, TI_TIDUT, TI_INNMETODE, TI_STATUS) VALUES (1, '100', '" +
        day + " 02:30', '" + day + " 03:30', 1, 1)\n" + "INSERT GAVEKORT VALUES ('G1', '101', '1', '100', 17, 250, '" +
        day + " 02:30:00.123', NULL, NULL, NULL, NULL, NULL)");
    run.engine.IncludeGiftVoucherOnOppgjor = true;
    inBackOffice(
        "INSERT Kunde (Ku_Id, Ku_Navn, Ku_Pi_Id, Ku_Mvaberegnes) SELECT 4001, 'Bygg AS', MIN(Pi_ID), 1 FROM "
        "Priskategori");
    settlement(10, day + " 02:45");
    order(901, 10, day + " 02:30", 4001);
    line(9001, 901, "100000", "1, 125, 0");

    EXPECT_EQ(execute(), QString());

    EXPECT_EQ(run.errors(), QStringList());
    const std::string halfPast = told + " 02:30:00.000";
    const std::string settled = told + " 02:45:00.000";
    EXPECT_EQ(backOffice("SELECT Pos_Or_Tidspunkt, Pos_Or_TidspunktFerdig FROM PosOrdre WHERE Pos_Or_Id = 901"),
              Rows({halfPast + " | " + halfPast}));
    EXPECT_EQ(backOffice("SELECT Pos_Op_Tidspunkt FROM PosOppgjor WHERE Pos_Op_Id = 10"), Rows({settled}));
    EXPECT_EQ(backOffice("SELECT Ikk_SistHentetOppgjor FROM Internkundekasse"), Rows({settled}));
    EXPECT_EQ(backOffice("SELECT Or_Dato FROM ORDRE"), Rows({halfPast}));
    EXPECT_EQ(backOffice("SELECT Bs_Dato, Bs_Antall FROM Butikksalg"), Rows({told + " 00:00:00.000 | 1"}));
    EXPECT_EQ(backOffice("SELECT Ts_Dato, Ts_Time, Ts_Omsetning FROM timesalg"), Rows({settled + " | 2 | 125"}));
    EXPECT_EQ(backOffice("SELECT Pti_TidInn, Pti_TidUt FROM PosTimer"),
              Rows({halfPast + " | " + told + " 03:30:00.000"}));
    EXPECT_EQ(backOffice("SELECT GA_GYLDIGTIL FROM POSGAVEKORT"), Rows({told + " 02:30:00.123"}));
    EXPECT_EQ(till("SELECT COUNT(*) FROM OPPGJOR WHERE OP_OPPDATERTTIDSPUNKT IS NULL AND OP_TYPE = 'NORMAL'"),
              Rows({"0"}));

    // Known again by the same times, so nothing is made twice.
    onTill("UPDATE OPPGJOR SET OP_OPPDATERTTIDSPUNKT = NULL WHERE OP_ID = 10");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice("SELECT Or_Dato FROM ORDRE"), Rows({halfPast}));
    EXPECT_EQ(backOffice("SELECT Bs_Antall FROM Butikksalg"), Rows({"1"}));
}

INSTANTIATE_TEST_SUITE_P(Of2026, AtAChangeOver,
                         testing::Values(ChangeOver{"SpringInOslo", "Europe/Oslo", "20260329", "2026-03-29"},
                                         ChangeOver{"SpringInUtc", "UTC", "20260329", "2026-03-29"},
                                         ChangeOver{"AutumnInOslo", "Europe/Oslo", "20261025", "2026-10-25"},
                                         ChangeOver{"AutumnInUtc", "UTC", "20261025", "2026-10-25"}),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace torvik::test
