// The repair of missing credit orders: what counts as missing, what is made, and how the walk treats tills that fail.
#include "inbound/credit_orders/credit_order_repair.h"

#include <gtest/gtest.h>

#include <QFile>

#include "tests/inbound/one_till.h"

namespace torvik::test {
namespace {

constexpr int kInvoice = 6;
const QDateTime kFromDate(QDate(2026, 3, 1), QTime(0, 0));
const char* const kOrders = "SELECT Or_Ku_ID, Or_VaarRef, Or_DeresRef FROM ORDRE ORDER BY Or_ID";

// Settlement 10 holds sale 101 on credit to customer 4001, with two lines.
class CreditOrderRepair : public OneTill {
protected:
    CreditOrderRepair() : OneTill(213, 0) {
        settlement(10, "20260302 21:00");
        onTill(
            "IF NOT EXISTS (SELECT 1 FROM BETALINGFORM WHERE BF_ID = 6) INSERT BETALINGFORM (BF_ID, BF_NAVN, BF_AKTIV, "
            "BF_SKUFF, BF_SYNLIG, BF_PAAVIRKERSALG, BF_VU_ID) VALUES (6, 'Faktura', 1, 0, 1, 1, 'NOK')\n"
            "INSERT KUNDE (KU_ID, KU_NAVN) VALUES (4001, 'Bygg AS'), (4999, 'Bare på kassen')\n"
            "UPDATE ANSATT SET AN_NAVN = 'Kari Ødegård' WHERE AN_ID = '100'");
        inBackOffice(
            "INSERT Kunde (Ku_Id, Ku_Navn, Ku_Mvaberegnes) VALUES (4001, 'Bygg AS', 0)\n"
            "INSERT PosOppgjor (Pos_Op_Ik_Ku_Id, Pos_Op_Kassenr, Pos_Op_Id, Pos_Op_Tidspunkt, Pos_Op_Type, Pos_Op_Status, "
            "Pos_Op_Synkronisert) VALUES (1001, '1', 10, '20260302 21:00', 'NORMAL', 0, GETDATE())");
        creditSale(101, 4001);
        line(1012, 101, "100001", "1, 19.90, 0");
    }
    void creditSale(int order, int customer) {
        this->order(order, 10, "20260302 10:15", customer);
        line(10 * order, order, "100000", "2, 50, 10");
        payment(order, kInvoice, 90);
        const std::string id = std::to_string(order);
        inBackOffice(
            "INSERT PosOrdre (Pos_Or_Ik_Ku_Id, Pos_Or_KasseNr, Pos_Or_Id, Pos_Or_Op_Id, Pos_Or_Ku_Id, Pos_Or_Ika_Id, "
            "Pos_Or_Tidspunkt, Pos_Or_TidspunktFerdig, Pos_Or_Status) VALUES (1001, '1', " +
            id + ", 10, " + std::to_string(customer) + ", '100', '20260302', '20260302', 0)");
    }
    [[nodiscard]] QStringList missing() {
        QStringList list;
        CreateCreditOrdersEx(visit(), kFromDate, list);
        return list;
    }
    // An order of the back office that has line 100000 of sale 101.
    void similarOrder() {
        inBackOffice(
            "INSERT ORDRE (Or_ID, Or_Fra_Ik_Ku_ID, Or_Ku_ID, Or_An_ID, Or_Ordretype, Or_Vu_Id, Or_Vu_Kurs, Or_Dato, "
            "Or_Status, Or_MvaBeregnes, Or_MvaSats, Or_Porto, Or_Rabatt, Or_Avrunding, Or_Prislapp, Or_AntKolli, "
            "Or_AntPaller) VALUES (77, 900, 4001, 'NR', 3, 'NOK', 1, '20260302 10:15', 0, 1, 25, 0, 0, 0, 0, 0, 0)\n"
            "INSERT ORDRELINJE (OL_Or_ID, OL_Va_ID, OL_Navn, OL_Bestilt, OL_Levert, OL_Pris, OL_Rabatt, OL_Status, "
            "OL_MvaBeregnes, OL_Mvasats, OL_Utskrift) VALUES (77, '100000', 'Vare', 2, 2, 40, 0, 0, 1, 25, 1)");
    }
};

TEST_F(CreditOrderRepair, MakesTheOrderWithVatAlwaysOn) {
    CreateCreditOrder(visit(), 101);

    EXPECT_EQ(
        backOffice("SELECT Or_Ku_ID, RTRIM(Or_An_ID), Or_Eier_Ik_Ku_ID, Or_Ordretype, Or_Dato, Or_Status, "
                   "Or_MvaBeregnes, Or_MvaSats, Or_VaarRef, Or_DeresRef + '|', Or_Le_Id, Or_InternInfo, Or_Kav_Id "
                   "FROM ORDRE"),
        Rows({"4001 | NR | 1000 | 3 | 2026-03-02 10:15:00.000 | 2 | 1 | 25 | Bong 101 ved Kari Ødegård | Rekv.nr.: "
              "Rekv. 101 | | 1 | NULL | NULL"}));
    EXPECT_EQ(backOffice("SELECT RTRIM(OL_Va_ID), OL_Bestilt, OL_Levert, ROUND(OL_Pris, 4), OL_Rabatt, OL_MvaBeregnes, "
                         "OL_Mvasats FROM ORDRELINJE ORDER BY OL_ID"),
              Rows({"100000 | 2 | 2 | 40 | 10 | 1 | 25", "100001 | 1 | 1 | 15.92 | 0 | 1 | 25"}));
    EXPECT_EQ(backOffice("SELECT Pos_Or_Kreditt_Or_Id - Or_ID FROM PosOrdre, ORDRE"), Rows({"0"}));
    EXPECT_TRUE(run.log().contains(QStringLiteral("Oppretter ordrenr. 500001 fra kredittsalg bong nr 101")));
}

TEST_F(CreditOrderRepair, NumberMayComeFromGetspIDInTheOrdersOwnBatch) {
    inBackOffice("ALTER PROCEDURE GetID @Navn varchar(30) AS SELECT 0 AS Id");
    CreateCreditOrder(visit(), 101);
    EXPECT_TRUE(run.log().contains(QStringLiteral("Oppretter ordre for kredittsalg bong nr 101")));
    EXPECT_EQ(backOffice("SELECT Or_ID, COUNT(*) FROM ORDRE JOIN ORDRELINJE ON OL_Or_ID = Or_ID GROUP BY Or_ID"),
              Rows({"500001 | 2"}));
    EXPECT_EQ(backOffice("SELECT Pos_Or_Kreditt_Or_Id FROM PosOrdre"), Rows({"500001"}));
}

TEST_F(CreditOrderRepair, CustomerThatTheBackOfficeDoesNotHaveIsCollected) {
    creditSale(102, 4999);
    CreateCreditOrder(visit(), 102);
    EXPECT_EQ(backOffice(kOrders), Rows({"12000 | Bong 102 ved Kari Ødegård | Rekv.nr.: Rekv. 102 "}));
}

TEST_F(CreditOrderRepair, SaleThatIsNotOnInvoiceIsNone) {
    order(103, 10, "20260302 10:15", 4001);
    line(1030, 103, "100000", "2, 50, 10");
    CreateCreditOrder(visit(), 103);
    EXPECT_EQ(backOffice(kOrders), Rows());
}

TEST_F(CreditOrderRepair, OneMissingLineListsTheSaleOnce) {
    similarOrder();  // has one of the two lines
    run.engine.SetRunAsService(true);
    EXPECT_EQ(missing(), QStringList({"101"}));
    run.engine.SetRunAsService(false);
}

TEST_F(CreditOrderRepair, SalesBeforeTheDateBrokenOffOrNotSettledAreNotLookedAt) {
    QStringList list;
    CreateCreditOrdersEx(visit(), QDateTime(QDate(2026, 3, 2), QTime(10, 16)), list);
    EXPECT_EQ(list, QStringList());
    onTill("UPDATE ORDRE SET OR_STATUS = 1 WHERE OR_ID = 101");
    EXPECT_EQ(missing(), QStringList());
    onTill("UPDATE ORDRE SET OR_STATUS = 0 WHERE OR_ID = 101");
    EXPECT_EQ(missing(), QStringList({"101"}));
    onTill("UPDATE ORDRE SET OR_OP_ID = NULL WHERE OR_ID = 101");
    EXPECT_EQ(missing(), QStringList());
}

TEST_F(CreditOrderRepair, BackOfficeLineOfNearlyTheQuantityIsTheSame) {
    onTill("DELETE ORDRELINJE WHERE OL_ID = 1012\nUPDATE ORDRELINJE SET OL_ANTALL = 2.7 WHERE OL_OR_ID = 101");
    similarOrder();
    EXPECT_EQ(missing(), QStringList());  // 2 lies between 2 and 3
    inBackOffice("UPDATE ORDRELINJE SET OL_Levert = 3.1");
    EXPECT_EQ(missing(), QStringList({"101"}));
}

TEST_F(CreditOrderRepair, OperatorDecidesWhereAnOrderLooksTheSame) {
    onTill("DELETE ORDRELINJE WHERE OL_ID = 1012");
    similarOrder();
    QStringList questions;
    bool answer = false;
    run.engine.OnAskOperator = [&](const QString& text) {
        questions << text;
        return answer;
    };
    EXPECT_EQ(missing(), QStringList());
    EXPECT_EQ(questions,
              QStringList({"Bong 101 (kunde 4001, bl.a. vare 100000) vil ikke opprettes, fordi den finnes på "
                           "Torvik ordre 77. Vil du likevel opprette den?"}));
    answer = true;
    EXPECT_EQ(missing(), QStringList({"101"}));
}

TEST_F(CreditOrderRepair, ServiceIsToldAndNotAsked) {
    onTill("DELETE ORDRELINJE WHERE OL_ID = 1012");
    similarOrder();
    run.engine.OnAskOperator = [](const QString&) -> bool { throw EngineError(QStringLiteral("asked")); };
    QStringList told;
    run.engine.OnAddLog = [&](QObject*, const QString& text, int level, const QDateTime&) {
        told << QStringLiteral("%1 %2").arg(QString::number(level), text);
    };
    run.engine.SetRunAsService(true);
    EXPECT_EQ(missing(), QStringList());
    EXPECT_EQ(told, QStringList({"2 Bong 101 (kunde 4001, bl.a. vare 100000) vil ikke opprettes, fordi den finnes på "
                                 "Torvik ordre 77."}));
    run.engine.SetRunAsService(false);
}

TEST_F(CreditOrderRepair, WalkMakesWhatIsMissingAndASecondWalkNothing) {
    run.logPane.Clear();
    QStringList progress;
    run.engine.OnProgress = [&](QObject*, int percent, const QString& text) {
        progress << QStringLiteral("%1 %2").arg(QString::number(percent), text);
    };
    ImportMissingCreditOrders(run.engine, kFromDate);

    EXPECT_EQ(run.errors(), QStringList());
    EXPECT_EQ(backOffice(kOrders).size(), 1u);
    EXPECT_EQ(progress, QStringList({"100 Hentet kredittordre fra 1 av 1 kasser"}));
    EXPECT_EQ(run.log().first(), QStringLiteral("HENTER KREDITTORDRE SOM MANGLER"));
    EXPECT_TRUE(run.log().contains(QStringLiteral("Lastet 44 varer for referanseintegritet")));
    EXPECT_EQ(run.log().last(), QStringLiteral("fullføRT OPPRETTING AV MANGLENDE KREDITTORDRE"));
    EXPECT_FALSE(run.source.Connected());
    EXPECT_TRUE(QFile::exists(run.folder.filePath(QStringLiteral("ZoppgjorLog.txt"))));

    ImportMissingCreditOrders(run.engine, kFromDate);
    EXPECT_EQ(backOffice(kOrders).size(), 1u);
}

// The lines that an order has at the back office differ from the receipt's: by their item, customer and quantity.
TEST_F(CreditOrderRepair, ASecondWalkOverWhatTheBackOfficeHoldsOtherwiseAsksAndMakesNothing) {
    onTill("INSERT VARE (VA_ID, VA_NAVN, VA_PRIS, VA_MVASATS) VALUES ('77', 'Gammelt nummer', 2, 25)");
    inBackOffice("INSERT VareAlias (Vr_Id, Vr_Va_Id) VALUES ('77', '100001')");
    creditSale(102, 4999);
    line(1022, 102, "77", "1, 50, 0");
    line(1013, 101, "100002", "-1.5, 50, 0");
    line(1014, 101, "100003", "0.25, 50, 0");
    QStringList questions;
    run.engine.OnAskOperator = [&](const QString& text) {
        questions << text.section(QLatin1Char(' '), 0, 1);
        return false;
    };
    ImportMissingCreditOrders(run.engine, kFromDate);
    EXPECT_EQ(run.errors(), QStringList());
    EXPECT_EQ(questions, QStringList());
    const auto all = [this] {
        return backOffice("SELECT OL_Or_ID, RTRIM(OL_Va_ID), OL_Levert FROM ORDRELINJE ORDER BY OL_ID");
    };
    const Rows made = all();
    EXPECT_EQ(made.size(), 6U);

    ImportMissingCreditOrders(run.engine, kFromDate);

    EXPECT_EQ(all(), made);
    EXPECT_TRUE(questions.contains(QStringLiteral("Bong 101")) && questions.contains(QStringLiteral("Bong 102")));
    run.engine.SetRunAsService(true);
    ImportMissingCreditOrders(run.engine, kFromDate);
    run.engine.SetRunAsService(false);
    EXPECT_EQ(all(), made);
}

TEST_F(CreditOrderRepair, LinkedReceiptIsAskedAboutOnceForAllItsLines) {
    inBackOffice("UPDATE PosOrdre SET Pos_Or_Kreditt_Or_Id = 88 WHERE Pos_Or_Id = 101");
    int asked = 0;
    bool answer = false;
    run.engine.OnAskOperator = [&](const QString& text) {
        ++asked;
        EXPECT_TRUE(text.contains(QStringLiteral("finnes på Torvik ordre 88."))) << text.toStdString();
        return answer;
    };
    EXPECT_EQ(missing(), QStringList());
    EXPECT_EQ(asked, 1);
    answer = true;
    EXPECT_EQ(missing(), QStringList({"101"}));
    EXPECT_EQ(asked, 2);
}

TEST_F(CreditOrderRepair, ItemThatCannotBeResolvedMakesNothing) {
    onTill("INSERT VARE (VA_ID, VA_NAVN, VA_PRIS, VA_MVASATS) VALUES ('77', 'Ukjent', 2, 25)");
    line(1013, 101, "77", "1, 50, 0");
    ImportMissingCreditOrders(run.engine, kFromDate);
    EXPECT_EQ(run.errors(), QStringList({"En feil oppstod i TTorvikPOS.CreateCreditOrdersEx (avd. 101, kasse 1). Feil: "
                                         "Finner ikke varenummer 77 eller erstatningsnummer "}));
    EXPECT_EQ(backOffice(kOrders), Rows());
    EXPECT_EQ(backOffice("SELECT COUNT(*) FROM ORDRELINJE"), Rows({"0"}));
    EXPECT_EQ(run.log().last(), QStringLiteral("fullføRT OPPRETTING AV MANGLENDE KREDITTORDRE"));
}

TEST_F(CreditOrderRepair, NumberBelowOneIsAnErrorAndMakesNothing) {
    const QString failure =
        QStringLiteral("En feil oppstod når kredittordre 101 skulle opprettes for avdelingsnummer 101, kassenummer 1");
    inBackOffice("ALTER PROCEDURE GetID @Navn varchar(30) AS SELECT -1 AS Id");
    EXPECT_EQ(failureOf([&] { CreateCreditOrder(visit(), 101); }), failure);
    inBackOffice("ALTER PROCEDURE GetID @Navn varchar(30) AS SELECT 0 AS Id");
    inBackOffice("ALTER PROCEDURE GetspID @Navn varchar(30), @Id int OUTPUT AS SET @Id = 0");
    EXPECT_EQ(failureOf([&] { CreateCreditOrder(visit(), 101); }), failure);
    EXPECT_EQ(backOffice(kOrders), Rows());
}

TEST_F(CreditOrderRepair, QuotesInNamesItemsAndReferencesStandAsTheyAre) {
    onTill(
        "UPDATE ANSATT SET AN_NAVN = 'Kari O''Hara 50%1 :x' WHERE AN_ID = '100'\n"
        "UPDATE ORDRE SET OR_REKVISISJONSNUMMER = 'R''1 %s' WHERE OR_ID = 101\n"
        "INSERT VARE (VA_ID, VA_NAVN, VA_PRIS, VA_MVASATS) VALUES ('A''1', 'Mor''s', 2, 25)");
    inBackOffice("INSERT Vare (Va_Id, Va_Navn, Va_Kostpris, Va_Pris) VALUES ('A''1', 'Mor''s', 1, 2)");
    run.engine.LoadVareTable();
    line(1013, 101, "A''1", "1, 50, 0");
    ImportMissingCreditOrders(run.engine, kFromDate);
    EXPECT_EQ(run.errors(), QStringList());
    EXPECT_EQ(backOffice(kOrders), Rows({"4001 | Bong 101 ved Kari O'Hara 50%1 :x | Rekv.nr.: R'1 %s "}));
    EXPECT_EQ(backOffice("SELECT RTRIM(OL_Va_ID), OL_Navn FROM ORDRELINJE WHERE OL_Va_ID LIKE 'A%'"),
              Rows({"A'1 | Mor's"}));
}

TEST_F(CreditOrderRepair, WhatWasMadeBeforeAFailureStands) {
    onTill("INSERT VARE (VA_ID, VA_NAVN, VA_PRIS, VA_MVASATS) VALUES ('77', 'Ukjent', 2, 25)");
    creditSale(102, 4001);
    line(1023, 102, "77", "1, 50, 0");
    ImportMissingCreditOrders(run.engine, kFromDate);
    EXPECT_EQ(run.errors().size(), 1);
    EXPECT_EQ(backOffice("SELECT Or_VaarRef FROM ORDRE"), Rows({"Bong 101 ved Kari Ødegård"}));
    EXPECT_EQ(backOffice("SELECT COUNT(*) FROM ORDRELINJE"), Rows({"2"}));
}

TEST_F(CreditOrderRepair, BackOfficeSessionThatARunBeforeHasLostIsOpenedAgain) {
    run.target.Close();
    ImportMissingCreditOrders(run.engine, kFromDate);
    EXPECT_EQ(run.errors(), QStringList());
    EXPECT_EQ(backOffice("SELECT Or_VaarRef FROM ORDRE"), Rows({"Bong 101 ved Kari Ødegård"}));
}

TEST(CreditOrderRepairWalk, TillThatCannotBeReachedIsPassedOverAndDepartmentsAreWaitedBetween) {
    ChainRun run({.departments = 2, .tills = 4, .days = 0});
    TORVIK_NEEDS_SANDBOX(run.chain);
    run.target.Open();
    run.chain.till(0).stopListening();  // 101/1

    ImportMissingCreditOrders(run.engine, kFromDate);

    EXPECT_EQ(run.errors().filter(QStringLiteral("Klarte ikke å koble til (avd. ")),
              QStringList({"Klarte ikke å koble til (avd. 101, kasse 1)"}));
    EXPECT_EQ(run.log().filter(QStringLiteral("Venter i 0 sekunder på neste forsøk")).size(), 1);
    EXPECT_EQ(run.log().last(), QStringLiteral("fullføRT OPPRETTING AV MANGLENDE KREDITTORDRE"));
}

TEST(CreditOrderRepairWalk, CancelEndsItWithTheAbortsText) {
    ChainRun run({.departments = 2, .tills = 4, .days = 0});
    run.target.Open();
    int tills = 0;
    run.engine.OnProgress = [&](QObject*, int, const QString&) {
        ++tills;
        run.engine.SetCancelRequest(true);
    };
    ImportMissingCreditOrders(run.engine, kFromDate);
    EXPECT_EQ(tills, 1);
    EXPECT_EQ(run.errors(),
              QStringList({"En feil oppstod i rutinen TTorvikPos.ImportMissingCreditOrders: Operasjonen ble "
                           "avbrutt"}));
}

}  // namespace
}  // namespace torvik::test
