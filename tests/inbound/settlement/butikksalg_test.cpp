// Store sales: what one settlement adds to the statistics, the stock and the hours.
#include "inbound/settlement/butikksalg.h"

#include <gtest/gtest.h>

#include <QFile>

#include "tests/inbound/one_till.h"

namespace torvik::test {
namespace {

const char* const kSales =
    "SELECT RTRIM(Bs_Va_Id), Bs_Ol_Status, Bs_Antall, Bs_Omsetning, Bs_Dato FROM Butikksalg ORDER BY Bs_Va_Id, "
    "Bs_Ol_Status";
const char* const kHours = "SELECT Ts_Dato, Ts_Time, Ts_Omsetning, Ts_AntallSalg FROM timesalg ORDER BY Ts_Time";

// Settlement 10 of 2 March is open; the test sells what it needs in it.
class StoreSales : public OneTill {
protected:
    explicit StoreSales(int version = 213) : OneTill(version, 0) { settlement(10, "20260302 21:00"); }

    [[nodiscard]] QStringList listFile(int number) const {
        QFile file(run.folder.filePath(QStringLiteral("Pluliste.%1.txt").arg(number)));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
    }
};

TEST_F(StoreSales, AddUpPerItemAndLineStatusAndGoOffTheStock) {
    order(101, 10, "20260302 10:15");
    line(1001, 101, "100000", "2, 50, 0", "1");
    line(1002, 101, "100001", "1, 19.90, 10", "2");
    order(102, 10, "20260302 10:40");
    line(1003, 102, "100000", "3, 40, 25", "1");
    line(1004, 102, "100000", "-1, 50, 0", "2");

    EXPECT_EQ(execute(), QString());

    EXPECT_EQ(backOffice(kSales),
              Rows({"100000 | 1 | 5 | 190 | 2026-03-02 00:00:00.000", "100000 | 2 | -1 | -50 | 2026-03-02 00:00:00.000",
                    "100001 | 2 | 1 | 17.91 | 2026-03-02 00:00:00.000"}));
    EXPECT_EQ(backOffice("SELECT RTRIM(Vbh_Va_Id), Vbh_Ik_Ku_Id, Vbh_Antall FROM Varebeholdning ORDER BY Vbh_Va_Id"),
              Rows({"100000 | 1001 | -4", "100001 | 1001 | -1"}));
    EXPECT_EQ(backOffice("SELECT Pos_Or_Id FROM PosOrdre WHERE Pos_Or_OppdatertBeholdning IS NOT NULL"),
              Rows({"101", "102"}));
}

TEST_F(StoreSales, LineWithoutStatusIsAPlainSale) {
    order(101, 10, "20260302 10:15");
    line(1001, 101, "100000", "2, 50, 0", "NULL");
    line(1002, 101, "100000", "1, 50, 0", "1");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice(kSales), Rows({"100000 | 1 | 3 | 150 | 2026-03-02 00:00:00.000"}));
}

TEST_F(StoreSales, ItemNumbersDifferingInCaseAreOne) {
    inBackOffice("INSERT Vare (Va_Id, Va_Navn, Va_Kostpris, Va_Pris) VALUES ('abc', 'Bokstavvare', 1, 2)");
    onTill("INSERT VARE (VA_ID, VA_NAVN, VA_PRIS, VA_MVASATS) VALUES ('abc', 'Bokstavvare', 2, 25)");
    run.engine.LoadVareTable();
    order(101, 10, "20260302 10:15");
    line(1001, 101, "abc", "2, 50, 0");
    line(1002, 101, "ABC", "1, 50, 0");

    EXPECT_EQ(execute(), QString());

    EXPECT_EQ(listFile(1).first(), QStringLiteral("execute UpdateButikksalg2 1001,'ABC','20260302',3,150,0,0,1"));
    EXPECT_EQ(backOffice(kSales).size(), 1u);
}

TEST_F(StoreSales, LineGivenAwayCountsWithoutTurnover) {
    order(101, 10, "20260302 10:15");
    line(1001, 101, "100000", "2, 50, 100");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice(kSales), Rows({"100000 | 1 | 2 | 0 | 2026-03-02 00:00:00.000"}));
}

TEST_F(StoreSales, BackOfficeOf1050IsNotToldTheStatus) {
    inBackOffice("UPDATE Innstillinger SET In_DbVersjon = 1050");
    order(101, 10, "20260302 10:15");
    line(1001, 101, "100000", "2, 50, 0", "1");
    line(1002, 101, "100000", "1, 50, 0", "2");

    EXPECT_EQ(execute(), QString());

    EXPECT_EQ(listFile(1).mid(0, 2), QStringList({"execute UpdateButikksalg2 1001,'100000','20260302',2,100,0,0",
                                                  "execute UpdateButikksalg2 1001,'100000','20260302',1,50,0,0"}));
    EXPECT_EQ(backOffice(kSales), Rows({"100000 | 1 | 3 | 150 | 2026-03-02 00:00:00.000"}));
}

TEST_F(StoreSales, BackOfficeAbove1050IsToldTheStatus) {
    inBackOffice("UPDATE Innstillinger SET In_DbVersjon = 1051");
    order(101, 10, "20260302 10:15");
    line(1001, 101, "100000", "2, 50, 0", "2");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(listFile(1).first(), QStringLiteral("execute UpdateButikksalg2 1001,'100000','20260302',2,100,0,0,2"));
}

TEST_F(StoreSales, SettlementWithoutOrdersPostsNothingAndSavesAnEmptyList) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    Requests requests(run.chain.backOffice());
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(requests.count(QStringLiteral("UpdateButikksalg2")), 0);
    EXPECT_EQ(requests.count(QStringLiteral("UPDATE PosOrdre SET Pos_Or_OppdatertBeholdning")), 1);
    EXPECT_EQ(listFile(1), QStringList());
    EXPECT_TRUE(run.structured.lines().contains(
        QStringLiteral("DBG Ingen ordrelinjer å oppdatere for oppgjør {Oppgjorsnummer} avdelingsnummer "
                       "{Avdelingsnummer} kassenummer {Kassenummer} Oppgjorsnummer=10 Avdelingsnummer=101 "
                       "Kassenummer=1")));
    EXPECT_TRUE(run.log().contains(QStringLiteral("Behandler timesalg, totalt 0 poster")));
}

TEST_F(StoreSales, HourlyTurnoverAddsUpAndTheNumberOfSalesIsTheLast) {
    order(101, 10, "20260302 10:15");
    line(1001, 101, "100000", "2, 50, 0");
    order(102, 10, "20260302 10:59");
    line(1002, 102, "100000", "1, 80, 50");
    order(103, 10, "20260302 14:00");
    line(1003, 103, "100000", "1, 19.5, 0");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice(kHours),
              Rows({"2026-03-02 21:00:00.000 | 10 | 140 | 2", "2026-03-02 21:00:00.000 | 14 | 19.5 | 1"}));

    // A second settlement of the same time, and the same hour again.
    settlement(11, "20260302 21:00");
    order(104, 11, "20260302 10:30");
    line(1004, 104, "100000", "1, 60, 0");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice(kHours),
              Rows({"2026-03-02 21:00:00.000 | 10 | 200 | 1", "2026-03-02 21:00:00.000 | 14 | 19.5 | 1"}));
}

TEST_F(StoreSales, OrdersThatTheBackOfficeHasCountedOrDoesNotHaveAddNothing) {
    order(101, 10, "20260302 10:15");
    line(1001, 101, "100000", "2, 50, 0");
    EXPECT_EQ(execute(), QString());
    // The settlement is open again; one order has been counted, one came later and was never fetched.
    onTill("UPDATE OPPGJOR SET OP_OPPDATERTTIDSPUNKT = NULL WHERE OP_ID = 10");
    order(102, 10, "20260302 10:40");
    line(1002, 102, "100000", "7, 50, 0");

    EXPECT_EQ(execute(), QString());

    EXPECT_EQ(backOffice(kSales), Rows({"100000 | 1 | 2 | 100 | 2026-03-02 00:00:00.000"}));
    // Hours are not guarded by the orders' mark.
    EXPECT_EQ(backOffice(kHours), Rows({"2026-03-02 21:00:00.000 | 10 | 550 | 2"}));
}

// Orders of the same numbers that the back office has of another till, another department or another settlement.
TEST_F(StoreSales, OrderIsKnownByItsDepartmentTillAndSettlement) {
    otherDepartment();
    const auto elsewhere = [this](const std::string& key, int order, const std::string& counted) {
        inBackOffice(
            "INSERT PosOppgjor (Pos_Op_Ik_Ku_Id, Pos_Op_Kassenr, Pos_Op_Id, Pos_Op_Tidspunkt, Pos_Op_Type, "
            "Pos_Op_Status) VALUES (" +
            key +
            ", '20260301', 'NORMAL', 0)\n"
            "INSERT PosOrdre (Pos_Or_Ik_Ku_Id, Pos_Or_KasseNr, Pos_Or_Op_Id, Pos_Or_Id, Pos_Or_Ku_Id, "
            "Pos_Or_Ika_Id, Pos_Or_Tidspunkt, Pos_Or_TidspunktFerdig, Pos_Or_Status, "
            "Pos_Or_OppdatertBeholdning) VALUES (" +
            key + ", " + std::to_string(order) + ", 1, '100', '20260301', '20260301', 0, " + counted + ")");
    };
    // Before the till's own in the order of their keys, so that either would be found first.
    elsewhere("900, '1', 10", 101, "'20260301'");
    elsewhere("1001, '0', 10", 102, "'20260301'");
    elsewhere("1001, '1', 9", 103, "NULL");
    elsewhere("900, '2', 10", 104, "NULL");
    // One that differs by its department alone, and one by its till alone, that nobody has counted.
    inBackOffice(
        "INSERT PosOrdre (Pos_Or_Ik_Ku_Id, Pos_Or_KasseNr, Pos_Or_Op_Id, Pos_Or_Id, Pos_Or_Ku_Id, Pos_Or_Ika_Id, "
        "Pos_Or_Tidspunkt, Pos_Or_TidspunktFerdig, Pos_Or_Status) VALUES "
        "(900, '1', 10, 105, 1, '100', '20260301', '20260301', 0), "
        "(1001, '0', 10, 106, 1, '100', '20260301', '20260301', 0)");
    for (const int number : {101, 102, 103, 104}) {
        order(number, 10, "20260302 10:15");
        line(10 * number, number, "100000", std::to_string(number) + ", 1, 0");
    }
    onTill("DELETE ORDRELINJE WHERE OL_OR_ID = 104");

    EXPECT_EQ(execute(), QString());

    // 101 and 102 are new here; 103 is not of this settlement at the back office.
    EXPECT_EQ(backOffice(kSales), Rows({"100000 | 1 | 203 | 203 | 2026-03-02 00:00:00.000"}));
    EXPECT_EQ(backOffice(
                  "SELECT Pos_Or_Ik_Ku_Id, Pos_Or_KasseNr, Pos_Or_Op_Id, Pos_Or_Id, CASE WHEN "
                  "Pos_Or_OppdatertBeholdning > '20260301' THEN 'now' END FROM PosOrdre WHERE Pos_Or_Id > 100 ORDER BY "
                  "Pos_Or_Id, Pos_Or_Ik_Ku_Id, Pos_Or_KasseNr"),
              Rows({"900 | 1 | 10 | 101 | NULL", "1001 | 1 | 10 | 101 | now", "1001 | 0 | 10 | 102 | NULL",
                    "1001 | 1 | 10 | 102 | now", "1001 | 1 | 9 | 103 | NULL", "900 | 2 | 10 | 104 | NULL",
                    "1001 | 1 | 10 | 104 | now", "900 | 1 | 10 | 105 | NULL", "1001 | 0 | 10 | 106 | NULL"}));
}

TEST_F(StoreSales, OrderThatWasBrokenOffIsNeitherASaleNorAnHour) {
    order(101, 10, "20260302 10:15");
    line(1001, 101, "100000", "2, 50, 0");
    order(102, 10, "20260302 11:15");
    line(1002, 102, "100000", "7, 50, 0");
    onTill("UPDATE ORDRE SET OR_STATUS = 1 WHERE OR_ID = 102");

    EXPECT_EQ(execute(), QString());

    EXPECT_EQ(backOffice(kSales), Rows({"100000 | 1 | 2 | 100 | 2026-03-02 00:00:00.000"}));
    EXPECT_EQ(backOffice(kHours), Rows({"2026-03-02 21:00:00.000 | 10 | 100 | 1"}));
}

TEST_F(StoreSales, OrdersOfAnotherSettlementAreNotInTheHours) {
    onTill("INSERT OPPGJOR (OP_ID, OP_AN_ID, OP_TIDSPUNKT, OP_TYPE) VALUES (11, '100', '20260303', 'VARETELLING')");
    order(101, 10, "20260302 10:15");
    line(1001, 101, "100000", "2, 50, 0");
    order(102, 11, "20260303 12:15");
    line(1002, 102, "100000", "7, 50, 0");

    EXPECT_EQ(execute(), QString());

    EXPECT_EQ(backOffice(kSales), Rows({"100000 | 1 | 2 | 100 | 2026-03-02 00:00:00.000"}));
    EXPECT_EQ(backOffice(kHours), Rows({"2026-03-02 21:00:00.000 | 10 | 100 | 1"}));
}

TEST_F(StoreSales, HoursOfAnotherDayAndDepartmentStayAsTheyAre) {
    otherDepartment();
    inBackOffice(
        "INSERT timesalg (Ts_Ik_Ku_ID, Ts_Dato, Ts_Time, Ts_Omsetning, Ts_AntallSalg) VALUES "
        "(1001, '20260301 21:00', 10, 1, 1), (900, '20260302 21:00', 10, 2, 2), (1001, '20260302 21:00', 11, 3, 3)");
    order(101, 10, "20260302 10:15");
    line(1001, 101, "100000", "2, 50, 0");

    EXPECT_EQ(execute(), QString());

    EXPECT_EQ(backOffice("SELECT Ts_Ik_Ku_ID, Ts_Dato, Ts_Time, Ts_Omsetning, Ts_AntallSalg FROM timesalg ORDER BY "
                         "Ts_Omsetning"),
              Rows({"1001 | 2026-03-01 21:00:00.000 | 10 | 1 | 1", "900 | 2026-03-02 21:00:00.000 | 10 | 2 | 2",
                    "1001 | 2026-03-02 21:00:00.000 | 11 | 3 | 3", "1001 | 2026-03-02 21:00:00.000 | 10 | 100 | 1"}));
}

TEST_F(StoreSales, UnknownItemStopsTheSettlementAndTheReplacementSavesIt) {
    onTill("INSERT VARE (VA_ID, VA_NAVN, VA_PRIS, VA_MVASATS) VALUES ('77', 'Ukjent', 2, 25)");
    order(101, 10, "20260302 10:15");
    line(1001, 101, "100000", "1, 50, 0");
    line(1002, 101, "77", "1, 50, 0");
    EXPECT_EQ(execute(), QStringLiteral("Finner ikke varenummer 77 eller erstatningsnummer "));
    EXPECT_EQ(backOffice(kSales), Rows());
    EXPECT_EQ(till("SELECT COUNT(*) FROM OPPGJOR WHERE OP_ID = 10 AND OP_OPPDATERTTIDSPUNKT IS NULL"), Rows({"1"}));

    run.engine.ReplacementVa_Id = QStringLiteral("100001");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice(kSales),
              Rows({"100000 | 1 | 1 | 50 | 2026-03-02 00:00:00.000", "100001 | 1 | 1 | 50 | 2026-03-02 00:00:00.000"}));
}

TEST_F(StoreSales, StatementsTravelInABatchOfOneAndThenOf64) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    order(101, 10, "20260302 10:15");
    std::string items;
    std::string soldLines;
    for (int i = 0; i < 70; ++i) {
        const std::string id = std::to_string(300000 + i);
        items += "INSERT VARE (VA_ID, VA_NAVN, VA_PRIS, VA_MVASATS) VALUES ('" + id + "', 'V', 2, 25)\n";
        soldLines +=
            "INSERT ORDRELINJE (OL_ID, OL_OR_ID, OL_VA_ID, OL_ANTALL, OL_SALGSPRIS, OL_RABATT, OL_MVASATS, "
            "OL_KOSTPRIS, OL_MERSALG) VALUES (" +
            std::to_string(2000 + i) + ", 101, '" + id + "', 1, 2, 0, 25, 0, 0)\n";
        inBackOffice("INSERT Vare (Va_Id, Va_Navn, Va_Kostpris, Va_Pris) VALUES ('" + id + "', 'V', 1, 2)");
    }
    onTill(items);
    onTill(soldLines);
    run.engine.LoadVareTable();
    Requests requests(run.chain.backOffice());

    EXPECT_EQ(execute(), QString());

    std::vector<qsizetype> statements;
    for (const QString& batch : requests.with(QStringLiteral("UpdateButikksalg2")))
        statements.push_back(batch.split(u'\n').size());
    EXPECT_EQ(statements, std::vector<qsizetype>({1, 64, 7}));  // the last with the hour's two
    EXPECT_EQ(backOffice("SELECT COUNT(*), SUM(Bs_Antall) FROM Butikksalg"), Rows({"70 | 70"}));
}

TEST_F(StoreSales, SayWhatIsMissing) {
    const TillVisit here = visit();
    TButikksalg sales(here);
    EXPECT_EQ(failureOf([&] { sales.Execute(); }), QStringLiteral("Du må oppgi en salgsdato først"));
    sales.Dato = db::DateTime(QDate(2026, 3, 2), QTime(21, 0));
    EXPECT_EQ(failureOf([&] { sales.Execute(); }), QStringLiteral("Du må oppgi en avdeling først"));
    EXPECT_EQ(failureOf([&] { sales.SetAvdelingsnummer(QStringLiteral("999")); }),
              QStringLiteral("999 er ikke en gyldig avdeling"));
}

TEST_F(StoreSales, CollectionIsEmptyBeforeASettlementAndAfterIt) {
    order(101, 10, "20260302 10:15");
    line(1001, 101, "100000", "2, 50, 0");
    EXPECT_EQ(execute(), QString());  // the back office has the order now
    inBackOffice("DELETE Butikksalg\nUPDATE PosOrdre SET Pos_Or_OppdatertBeholdning = NULL");
    const TillVisit here = visit();
    TButikksalg sales(here);
    sales.SetOp_Id(10);
    sales.SetAvdelingsnummer(QStringLiteral("101"));
    sales.KasseNr = QStringLiteral("1");
    sales.Dato = db::DateTime(QDate(2026, 3, 2), QTime(21, 0));
    sales.AddSale(QStringLiteral("100001"), 1, 9, 9);
    sales.Execute();
    EXPECT_EQ(backOffice(kSales), Rows({"100000 | 1 | 2 | 100 | 2026-03-02 00:00:00.000"}));
    EXPECT_TRUE(sales.Collection().empty());
}

TEST_F(StoreSales, SettlementNumberSetWhileClosedOnlyChangesTheTexts) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    const TillVisit here = visit();
    TButikksalg sales(here);
    Requests requests(run.chain.till(0));
    const QStringList before = sales.OrdreSql();
    EXPECT_EQ(before[1], QStringLiteral("SET @Op_Id =-1"));

    sales.SetOp_Id(42);

    EXPECT_EQ(sales.OrdreSql()[1], QStringLiteral("SET @Op_Id = 42"));
    EXPECT_EQ(sales.TimesalgSql()[1], QStringLiteral("SET @Op_Id = 42"));
    EXPECT_EQ(sales.OrdreSql().mid(2), before.mid(2));
    EXPECT_EQ(requests.count(QStringLiteral("@Op_Id")), 0);
}

TEST_F(StoreSales, TillsAbove110AreAskedForTheLineStatus) {
    const auto asked = [this](const std::string& version) {
        onTill("UPDATE INNSTILLINGER SET IN_DBVERSION = '" + version + "'");
        run.engine.ReadDbVersion();
        return TButikksalg(visit()).OrdreSql()[2].section(u',', -2);
    };
    EXPECT_EQ(asked("111"), QStringLiteral("Or_Id,Ol_Status"));
    EXPECT_EQ(asked("110"), QStringLiteral("Ol_Rabatt,Or_Id"));
}

}  // namespace
}  // namespace torvik::test
