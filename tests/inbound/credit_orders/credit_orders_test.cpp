// Credit orders of a settlement: which sales become orders of the back office, and what stands in them.
#include <gtest/gtest.h>

#include "tests/inbound/one_till.h"

namespace torvik::test {
namespace {

constexpr int kInvoice = 6;
const char* const kOrders = "SELECT Or_ID, Or_Ku_ID, Or_VaarRef, Or_DeresRef, Or_Dato FROM ORDRE ORDER BY Or_ID";
const char* const kLines =
    "SELECT OL_Or_ID, RTRIM(OL_Va_ID), OL_Navn, OL_Bestilt, OL_Levert, ROUND(OL_Pris, 4), OL_Rabatt, OL_Mvasats FROM "
    "ORDRELINJE ORDER BY OL_ID";
const char* const kLinks =
    "SELECT Pos_Or_Id, Pos_Or_Kreditt_Or_Id FROM PosOrdre WHERE Pos_Or_Kreditt_Or_Id IS NOT NULL ORDER BY Pos_Or_Id";

// Settlement 10 of 2 March is open; customers 4001 and 4002 stand at both ends, and there is a form for invoices.
class CreditOrders : public OneTill {
protected:
    explicit CreditOrders(int version = 213) : OneTill(version, 0) {
        settlement(10, "20260302 21:00");
        onTill(
            "IF NOT EXISTS (SELECT 1 FROM BETALINGFORM WHERE BF_ID = 6) INSERT BETALINGFORM (BF_ID, BF_NAVN, BF_AKTIV, "
            "BF_SKUFF, BF_SYNLIG, BF_PAAVIRKERSALG, BF_VU_ID) VALUES (6, 'Faktura', 1, 0, 1, 1, 'NOK')\n"
            "INSERT KUNDE (KU_ID, KU_NAVN) VALUES (4001, 'Bygg AS'), (4002, 'Rør AS'), (500, 'Anonym'), (501, 'Klikk'), "
            "(4999, 'Bare på kassen')\n"
            "UPDATE ANSATT SET AN_NAVN = 'Kari Ødegård' WHERE AN_ID = '100'");
        inBackOffice(
            "INSERT Priskategori (Pi_ID, Pi_Navn, Pi_InklMva) VALUES (11, 'Bygg', 1)\n"
            "INSERT Kunde (Ku_Id, Ku_Navn, Ku_Pi_Id, Ku_Lb_Id, Ku_Bb_Id, Ku_Kav_Id, Ku_Mvaberegnes, Ku_FjernGebyr) "
            "VALUES (4001, 'Bygg AS', 11, 12, 13, 14, 1, 0), (4002, 'Rør AS', NULL, NULL, NULL, NULL, 0, 0)\n"
            "UPDATE Vare SET Va_Kostpris = 7.5 WHERE Va_Id = '100000'");
    }
    // A sale on credit with one line.
    void creditSale(int order, int customer, const std::string& time = "20260302 10:15") {
        this->order(order, 10, time, customer);
        line(10 * order, order, "100000", "2, 50, 10");
        payment(order, kInvoice, 90);
    }
    [[nodiscard]] std::string first() const { return run.backOfficeValue("SELECT MIN(Or_ID) FROM ORDRE"); }
};

TEST_F(CreditOrders, SaleOnCreditBecomesAnOrderWithItsLines) {
    creditSale(101, 4001);
    line(1011, 101, "100001", "1, 19.90, 0");
    onTill("INSERT ORDRELINJETEKST VALUES (1011, 'Ole''s spesialvare')");
    const std::string number = run.backOfficeValue("SELECT Ln_Neste FROM Ledignummer WHERE Ln_Navn = 'OR_ID'");

    EXPECT_EQ(execute(), QString());

    EXPECT_EQ(
        backOffice("SELECT Or_ID, Or_Fra_Ik_Ku_ID, Or_Pi_ID, Or_Ku_ID, RTRIM(Or_An_ID), Or_Lb_ID, Or_Bb_ID, "
                   "Or_Eier_Ik_Ku_ID, Or_Til_Ik_Ku_ID, Or_Ordretype, Or_Ka_ID, Or_Vu_Id, Or_Dato, Or_Status, "
                   "Or_MvaBeregnes, Or_MvaSats, Or_Porto, Or_VaarRef, Or_DeresRef, Or_Prislapp, Or_Rabatt, Or_Info, "
                   "Or_Vu_Kurs, Or_LevDato, Or_AntKolli, Or_Avrunding, Or_AntPaller, Or_Le_Id, Or_InternInfo, "
                   "Or_Kav_Id FROM ORDRE"),
        Rows({number + " | 900 | 11 | 4001 | NR | 12 | 13 | 1000 | NULL | 3 | NULL | NOK | 2026-03-02 10:15:00.000 "
                       "| 2 | 1 | 25 | 0 | Bong 101 ved Kari Ødegård | Rekv. 101 | 0 | 0 | NULL | 1 | NULL | 0 | 0 "
                       "| 0 | 1 | NULL | 14"}));
    EXPECT_EQ(backOffice(kLines), Rows({number + " | 100000 | Vare nr. 1 | 2 | 2 | 40 | 10 | 25",
                                        number + " | 100001 | Ole's spesialvare | 1 | 1 | 15.92 | 0 | 25"}));
    EXPECT_EQ(backOffice("SELECT OL_Kostpris, OL_Status, OL_MvaBeregnes, OL_Utskrift, OL_Hoved_OL_ID FROM ORDRELINJE "
                         "WHERE OL_Va_ID = '100000'"),
              Rows({"7.5 | 0 | 1 | 1 | NULL"}));
    EXPECT_EQ(backOffice(kLinks), Rows({"101 | " + number}));
    const QString text = QString::fromStdString(number);
    EXPECT_TRUE(run.log().contains(QStringLiteral("Oppretter ordrenr. %1 fra kredittsalg bong nr 101").arg(text)));
    EXPECT_TRUE(run.structured.lines().contains(
        QStringLiteral("DBG Opprettet kredittordre {Ordrenummer} fra oppgjørsnummer {Oppgjorsnummer} for avdeling "
                       "{Avdeling} kassenummer {Kassenummer} Ordrenummer=%1 Oppgjorsnummer=10 Avdeling=101 "
                       "Kassenummer=1")
            .arg(text)));
}

TEST_F(CreditOrders, CustomerWithoutVatHasNoneOnTheOrder) {
    creditSale(101, 4002);
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice("SELECT Or_MvaBeregnes, Or_MvaSats, OL_MvaBeregnes, OL_Mvasats FROM ORDRE JOIN ORDRELINJE ON "
                         "OL_Or_ID = Or_ID"),
              Rows({"0 | 0 | 0 | 0"}));
}

TEST_F(CreditOrders, PriceIsLessEachLinesOwnVat) {
    order(101, 10, "20260302 10:15", 4001);
    line(1011, 101, "100000", "1, 125, 0", "NULL", "25");
    line(1012, 101, "100001", "2, 115, 20", "NULL", "15");
    line(1013, 101, "100002", "-3, 112, 0", "NULL", "12");
    line(1014, 101, "100003", "1, 100, 0", "NULL", "0");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice("SELECT RTRIM(OL_Va_ID), OL_Bestilt, OL_Levert, ROUND(OL_Pris, 4), OL_Rabatt, OL_Mvasats FROM "
                         "ORDRELINJE ORDER BY OL_ID"),
              Rows({"100000 | 1 | 1 | 100 | 0 | 25", "100001 | 2 | 2 | 100 | 20 | 15",
                    "100002 | -3 | -3 | 100 | 0 | 12", "100003 | 1 | 1 | 100 | 0 | 0"}));
}

TEST_F(CreditOrders, SaleOfAnotherSettlementIsLeftToIt) {
    onTill("INSERT OPPGJOR (OP_ID, OP_AN_ID, OP_TIDSPUNKT, OP_TYPE) VALUES (11, '100', '20260303', 'VARETELLING')");
    order(101, 11, "20260302 10:15", 4001);
    line(1011, 101, "100000", "1, 125, 0");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice(kOrders), Rows());
}

// The same receipt number stands in another department and at another till of the department.
TEST_F(CreditOrders, OrderIsLinkedToTheReceiptOfItsDepartmentAndTill) {
    otherDepartment();
    for (const char* key : {"900, '1'", "1001, '2'"})
        inBackOffice(std::string("INSERT PosOppgjor (Pos_Op_Ik_Ku_Id, Pos_Op_Kassenr, Pos_Op_Id, Pos_Op_Tidspunkt, "
                                 "Pos_Op_Type, Pos_Op_Status) VALUES (") +
                     key +
                     ", 5, '20260301', 'NORMAL', 0)\n"
                     "INSERT PosOrdre (Pos_Or_Ik_Ku_Id, Pos_Or_KasseNr, Pos_Or_Op_Id, Pos_Or_Id, Pos_Or_Ku_Id, "
                     "Pos_Or_Ika_Id, Pos_Or_Tidspunkt, Pos_Or_TidspunktFerdig, Pos_Or_Status) VALUES (" +
                     key + ", 5, 101, 1, '100', '20260301', '20260301', 0)");
    creditSale(101, 4001);
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice("SELECT Pos_Or_Ik_Ku_Id, Pos_Or_KasseNr, CASE WHEN Pos_Or_Kreditt_Or_Id IS NULL THEN 0 ELSE 1 "
                         "END FROM PosOrdre WHERE Pos_Or_Id = 101 ORDER BY Pos_Or_Ik_Ku_Id, Pos_Or_KasseNr"),
              Rows({"900 | 1 | 0", "1001 | 1 | 1", "1001 | 2 | 0"}));

    // And is found by that receipt alone.
    inBackOffice(
        "UPDATE PosOrdre SET Pos_Or_Kreditt_Or_Id = CASE WHEN Pos_Or_Kreditt_Or_Id IS NULL THEN 500001 END\n"
        "UPDATE ORDRE SET Or_DeresRef = 'rettet'");
    onTill("UPDATE OPPGJOR SET OP_OPPDATERTTIDSPUNKT = NULL WHERE OP_ID = 10");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice(kOrders).size(), 2u);
}

TEST_F(CreditOrders, DepartmentThatOwnsItsOrdersIsTheirOwner) {
    inBackOffice("UPDATE Internkunde SET Ik_Properties = 1, Ik_Fakturaregel = 1 WHERE Ik_Ku_Id = 1001");
    creditSale(101, 4001);
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice("SELECT Or_Eier_Ik_Ku_ID FROM ORDRE"), Rows({"1001"}));
}

TEST_F(CreditOrders, NamedCustomerWithoutAPaymentBoughtOnCredit) {
    order(101, 10, "20260302 10:15", 4001);
    line(1001, 101, "100000", "1, 50, 0");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice(kOrders).size(), 1u);
}

struct NoCreditCase {
    const char* name;
    int customer;
    int form;  // 0: no payment
};

TEST_F(CreditOrders, OtherSalesAreNone) {
    const NoCreditCase cases[] = {{"anonymous customer, not paid", 500, 0},
                                  {"click and collect, not paid", 501, 0},
                                  {"customer 1, on invoice", 1, kInvoice},
                                  {"customer 1, not paid", 1, 0},
                                  {"named customer, cash", 4001, 1}};
    int number = 100;
    for (const NoCreditCase& c : cases) {
        order(++number, 10, "20260302 10:15", c.customer);
        line(10 * number, number, "100000", "1, 50, 0");
        if (c.form) payment(number, c.form, 50);
    }
    // Not settled sales, and the payment of an account.
    order(120, 10, "20260302 10:15", 4001);
    onTill("UPDATE ORDRE SET OR_STATUS = 1 WHERE OR_ID = 120");
    line(1200, 120, "100000", "1, 50, 0");
    payment(120, kInvoice, 50);
    creditSale(121, 4001);
    line(1219, 121, "100002", "1, 50, 0");
    onTill("UPDATE INNSTILLINGER SET IN_BETALING_VA_ID = '100002'");

    EXPECT_EQ(execute(), QString());

    EXPECT_EQ(backOffice(kOrders), Rows());
    EXPECT_EQ(backOffice(kLinks), Rows());
}

TEST_F(CreditOrders, AnonymousCustomerOnInvoiceIsACreditSale) {
    creditSale(101, 500);
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice("SELECT Or_Ku_ID FROM ORDRE"), Rows({"500"}));
}

TEST_F(CreditOrders, CustomerThatTheBackOfficeDoesNotHaveIsCollected) {
    creditSale(101, 4999);
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice("SELECT Or_Ku_ID FROM ORDRE"), Rows({"12000"}));
}

TEST_F(CreditOrders, QuotesInTheRequisitionAreKept) {
    creditSale(101, 4001);
    onTill("UPDATE ORDRE SET OR_REKVISISJONSNUMMER = 'Per''s tak' WHERE OR_ID = 101");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice("SELECT Or_DeresRef FROM ORDRE"), Rows({"Per's tak"}));
}

TEST_F(CreditOrders, FeeIsTakenOffForCustomersWithout) {
    inBackOffice(
        "UPDATE Innstillinger SET In_Fakturagebyr_Va_ID = '100003'\nUPDATE Kunde SET Ku_FjernGebyr = 1 WHERE Ku_Id = 4001");
    creditSale(101, 4001);
    line(1011, 101, "100003", "1, 62.5, 0");
    creditSale(102, 4002);
    line(1021, 102, "100003", "1, 62.5, 0");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice("SELECT Or_Ku_ID, OL_Pris FROM ORDRE JOIN ORDRELINJE ON OL_Or_ID = Or_ID WHERE OL_Va_ID = "
                         "'100003' ORDER BY Or_Ku_ID"),
              Rows({"4001 | 0", "4002 | 50"}));
}

TEST_F(CreditOrders, SameSaleAgainIsFoundAndNotMadeTwice) {
    creditSale(101, 4001);
    EXPECT_EQ(execute(), QString());
    const Rows orders = backOffice(kOrders);
    const Rows lines = backOffice(kLines);
    onTill("UPDATE OPPGJOR SET OP_OPPDATERTTIDSPUNKT = NULL WHERE OP_ID = 10");

    EXPECT_EQ(execute(), QString());

    EXPECT_EQ(backOffice(kOrders), orders);
    EXPECT_EQ(backOffice(kLines), lines);
    const QString number = QString::fromStdString(first());
    EXPECT_TRUE(run.log().contains(
        QStringLiteral("Ordrenr. %1 fra kredittsalg bong nr 101 er opprettet tidligere").arg(number)));
    EXPECT_TRUE(run.structured.lines().contains(
        QStringLiteral(
            "WRN Kredittordre nummer {Ordrenummer} i oppgjør {Oppgjorsnummer} for avdeling {Avdeling} kassenummer "
            "{Kassenummer} blir ikke opprettet fordi den er opprettet tidligere. Ordrenummer=%1 "
            "Oppgjorsnummer=10 Avdeling=101 Kassenummer=1")
            .arg(number)))
        << run.structured.lines().join(u'\n').toStdString();
}

TEST_F(CreditOrders, OrderWhoseReferencesWereChangedIsFoundByItsLink) {
    creditSale(101, 4001);
    EXPECT_EQ(execute(), QString());
    inBackOffice("UPDATE ORDRE SET Or_DeresRef = 'rettet'");
    onTill("UPDATE OPPGJOR SET OP_OPPDATERTTIDSPUNKT = NULL WHERE OP_ID = 10");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice(kOrders).size(), 1u);
}

TEST_F(CreditOrders, LinesOfAFoundSaleGoToTheOrderMadeLast) {
    creditSale(102, 4001);
    EXPECT_EQ(execute(), QString());
    const std::string old = first();
    onTill("UPDATE OPPGJOR SET OP_OPPDATERTTIDSPUNKT = NULL WHERE OP_ID = 10");
    creditSale(101, 4002, "20260302 09:00");  // made now, before the walk comes to 102
    line(1029, 102, "100001", "3, 25, 0");

    EXPECT_EQ(execute(), QString());

    const std::string made = run.backOfficeValue("SELECT MAX(Or_ID) FROM ORDRE");
    EXPECT_EQ(backOffice(kLines), Rows({old + " | 100000 | Vare nr. 1 | 2 | 2 | 40 | 10 | 25",
                                        made + " | 100000 | Vare nr. 1 | 2 | 2 | 40 | 10 | 0",
                                        made + " | 100000 | Vare nr. 1 | 2 | 2 | 40 | 10 | 0",
                                        made + " | 100001 | Vare nr. 2 | 3 | 3 | 20 | 0 | 0"}));
}

TEST_F(CreditOrders, NumberComesFromGetspIDWhereGetIDHasNone) {
    inBackOffice("ALTER PROCEDURE GetID @Navn varchar(30) AS SELECT 0 AS Id");
    creditSale(101, 4001);
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(first(), "500001");
}

TEST_F(CreditOrders, WithoutANumberTheSettlementRollsBack) {
    inBackOffice("DELETE Ledignummer WHERE Ln_Navn = 'OR_ID'");
    creditSale(101, 4001);
    const QString text =
        QStringLiteral("En feil oppstod når kredittordre 101 skulle opprettes for avdelingsnummer 101, kassenummer 1");
    EXPECT_EQ(execute(), text);
    EXPECT_TRUE(run.errors().contains(QStringLiteral("Transaksjon rollback for måldatabase. ") + text));
    EXPECT_EQ(backOffice(kOrders), Rows());
    EXPECT_EQ(till("SELECT COUNT(*) FROM OPPGJOR WHERE OP_ID = 10 AND OP_OPPDATERTTIDSPUNKT IS NULL"), Rows({"1"}));
}

TEST_F(CreditOrders, UnknownItemStopsTheSettlement) {
    onTill("INSERT VARE (VA_ID, VA_NAVN, VA_PRIS, VA_MVASATS) VALUES ('77', 'Ukjent', 2, 25)");
    order(101, 10, "20260302 10:15", 4001);
    line(1001, 101, "77", "1, 50, 0");
    EXPECT_EQ(execute(), QStringLiteral("Finner ikke varenummer 77 eller erstatningsnummer "));
    EXPECT_EQ(backOffice(kOrders), Rows());
}

TEST_F(CreditOrders, AliasIsResolved) {
    onTill("INSERT VARE (VA_ID, VA_NAVN, VA_PRIS, VA_MVASATS) VALUES ('7030000000017', 'Strekkode', 2, 25)");
    order(101, 10, "20260302 10:15", 4001);
    line(1001, 101, "7030000000017", "1, 50, 0");
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice("SELECT RTRIM(OL_Va_ID), OL_Navn FROM ORDRELINJE"), Rows({"100000 | Strekkode"}));
}

TEST_F(CreditOrders, DepartmentWithoutAWarehouseGetsNoOrderAndNoFailure) {
    inBackOffice("DELETE KundeRelasjon");
    creditSale(101, 4001);
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice(kOrders), Rows());
    EXPECT_EQ(backOffice(kLines), Rows());
}

TEST_F(CreditOrders, BackOfficeWithoutTheStatusSettingMakesThemWithStatus0) {
    inBackOffice(
        "ALTER TABLE Innstillinger DROP CONSTRAINT DF_Innstillinger_Rpos_Or_Status\n"
        "ALTER TABLE Innstillinger DROP COLUMN In_Rpos_Or_Status_Import");
    creditSale(101, 4001);
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice("SELECT Or_Status FROM ORDRE"), Rows({"0"}));
}

TEST_F(CreditOrders, SingleBackOfficeMakesThemWhereItInvoices) {
    run.engine.IsEnterprise = false;
    inBackOffice("UPDATE Internkunde SET Ik_Fakturaregel = 2");
    creditSale(101, 4001);
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice(kOrders).size(), 1u);
}

TEST_F(CreditOrders, SingleBackOfficeThatDoesNotInvoiceWarnsForEachSettlement) {
    run.engine.IsEnterprise = false;
    creditSale(101, 4001);
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(backOffice(kOrders), Rows());
    EXPECT_EQ(run.log()
                  .filter(QStringLiteral("Kredittordre for avdeling 101 blir ikke opprettet. Må faktureres i "
                                         "Enterprise ved HK."))
                  .size(),
              1);
    EXPECT_TRUE(run.structured.lines().contains(QStringLiteral(
        "WRN Kredittordre i oppgjør {Oppgjorsnummer} for avdeling {Avdeling} kassenummer {Kassenummer} blir "
        "ikke opprettet. Må faktureres i Torvik Enterprise. Oppgjorsnummer=10 Avdeling=101 "
        "Kassenummer=1")));
}

TEST_F(CreditOrders, TillBelow229IsNotAskedForTheOrderItWasMadeFrom) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    onTill("UPDATE INNSTILLINGER SET IN_DBVERSION = '228'");
    run.engine.ReadDbVersion();
    Requests requests(run.chain.till(0));
    creditSale(101, 4001);
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(requests.count(QStringLiteral("OR_TORVIK_OR_ID")), 0);
}

class CreditOrdersOfNewTill : public CreditOrders {
protected:
    CreditOrdersOfNewTill() : CreditOrders(229) {}
};

TEST_F(CreditOrdersOfNewTill, TillFrom229IsAskedForTheOrderItWasMadeFrom) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    Requests requests(run.chain.till(0));
    creditSale(101, 4001);
    EXPECT_EQ(execute(), QString());
    EXPECT_EQ(requests.count(QStringLiteral("OL_RABATT,OL_SALGSPRIS, OL_MVASATS,OR_TORVIK_OR_ID")), 1);
    EXPECT_EQ(backOffice(kOrders).size(), 1u);
}

}  // namespace
}  // namespace torvik::test
