// Whole settlement runs over a demo chain, measured against the chain's own model.
#include <gtest/gtest.h>

#include "engine/roster/avdeling.h"
#include "engine/status/oppgjor_status.h"
#include "sandbox/chain/chain_builder.h"
#include "sandbox/chain/posted_rows.h"
#include "tests/support/chain_run.h"

namespace torvik::test {
namespace {

using sandbox::chain::ChainOptions;

TEST(Fetch, EverySettlementOfEveryTillReachesTheBackOffice) {
    ChainRun run;
    EXPECT_FALSE(run.postedWhole());

    run.fetch();

    EXPECT_EQ(run.errors(), QStringList());
    EXPECT_TRUE(run.postedWhole());
    for (std::size_t till = 0; till < run.chain.model().tills.size(); ++till)
        EXPECT_EQ(run.tillValue(
                      till, "SELECT COUNT(*) FROM OPPGJOR WHERE OP_TYPE = 'NORMAL' AND OP_OPPDATERTTIDSPUNKT IS NULL"),
                  "0");
    EXPECT_EQ(run.backOfficeValue("SELECT COUNT(*) FROM PosOppgjor WHERE Pos_Op_Synkronisert IS NULL"), "0");
}

TEST(Fetch, StagingTablesAndStartMarksAreGoneAfterIt) {
    ChainRun run;
    run.fetch();
    for (const char* table : {"Temp_Oppgjor_Import", "Temp_Ordre_Import", "Temp_Ordrelinje_Import",
                              "Temp_Betaling_Import", "temp_POSVEDLEGG_import", "Temp_Grunn_Import"})
        EXPECT_EQ(run.backOfficeValue(std::string("SELECT COUNT(*) FROM ") + table), "0") << table;
    EXPECT_EQ(run.backOfficeValue("SELECT COUNT(*) FROM dts_logg WHERE dl_dlt_id = 0"), "0");
    EXPECT_EQ(run.backOfficeValue("SELECT COUNT(*) FROM dts_logg WHERE dl_dlt_id = 7"),
              std::to_string(run.chain.model().tills.size()));
}

TEST(Fetch, SecondRunFetchesNothingAndChangesNothing) {
    ChainRun run;
    run.fetch();
    const std::string before = run.backOfficeValue("SELECT MAX(Pos_Op_Synkronisert) FROM PosOppgjor");

    run.fetch();

    EXPECT_EQ(run.errors(), QStringList());
    EXPECT_TRUE(run.postedWhole());
    EXPECT_EQ(run.backOfficeValue("SELECT MAX(Pos_Op_Synkronisert) FROM PosOppgjor"), before);
    EXPECT_EQ(run.engine.ffraOppgjorStatus->memOppgjorStatus.Row(0).Melding,
              QStringLiteral("Ikke noe noe oppgjør å hente. Status OK.,"));
}

TEST(Fetch, NewSalesAfterARunAreFetchedByTheNext) {
    ChainRun run;
    run.fetch();
    run.chain.sellAnotherDay(0);
    run.chain.sellAnotherDay(3);

    run.fetch();

    EXPECT_EQ(run.errors(), QStringList());
    EXPECT_TRUE(run.postedWhole());
}

TEST(Fetch, TillsOfEverySchemaVersionAreFetchedWhole) {
    ChainRun run({.departments = 2, .tills = 9, .days = 1, .versions = {137, 138, 149, 158, 178, 188, 198, 213, 229}});

    run.fetch();

    EXPECT_EQ(run.errors(), QStringList());
    EXPECT_TRUE(run.postedWhole());
}

TEST(Fetch, TillBelow137FailsAtItsOrderLinesAndTheOthersAreFetched) {
    ChainRun run({.departments = 1, .tills = 3, .days = 1, .versions = {71, 119, 229}});

    run.fetch();

    for (const char* till : {"1", "2"})
        EXPECT_EQ(run.errors()
                      .filter(QStringLiteral("Feil ved overføring til avd 1001 kassenr %1. Ordrelinje feilet (p=15): "
                                             "Invalid column name")
                                  .arg(QString::fromUtf8(till)))
                      .isEmpty(),
                  false)
            << till;
    EXPECT_TRUE(run.posted({2}));
}

TEST(Fetch, EveryKindOfSaleAndSideRecordArrives) {
    ChainRun run({.departments = 2, .tills = 4, .days = 2, .versions = {137, 149, 198, 229}, .everyKind = true});

    run.fetch();
    run.chain.sellAnotherDay(3);
    run.fetch();

    EXPECT_EQ(run.errors(), QStringList());
    EXPECT_TRUE(run.postedWhole());
    EXPECT_EQ(run.backOfficeValue("SELECT COUNT(*) FROM PosUtbetaling"), "7");
}

// The back office knows a credit order again by its moment, its receipt with the clerk, and its requisition: where two
// tills have all of them in common, the second sale is taken for the first.
TEST(Fetch, TwoTillsThatSellOnCreditInTheSameMillisecondWithTheSameReceiptAndClerkMakeOneOrder) {
    using sandbox::chain::Order;
    sandbox::chain::Chain chain = sandbox::chain::chain()
                                      .departments(1)
                                      .tills(2)
                                      .days(1)
                                      .till(1)
                                      .withCreditSale()
                                      .till(2)
                                      .withCreditSale()
                                      .build();
    Order& first = chain.tills[0].orders.back();
    Order& second = chain.tills[1].orders.back();
    ASSERT_NE(first.time.milliseconds, second.time.milliseconds) << "each till sells at moments of its own";
    for (Order* order : {&first, &second}) {
        order->id = 9001;
        order->time = first.time;
        order->employee = first.employee;
        order->requisition = first.requisition;
    }
    ChainRun run(std::move(chain));

    run.fetch();

    EXPECT_EQ(run.errors(), QStringList());
    EXPECT_TRUE(run.postedWhole());
    EXPECT_EQ(run.backOfficeValue("SELECT COUNT(*) FROM ORDRE"), "1");
    EXPECT_EQ(run.backOfficeValue("SELECT COUNT(*) FROM ORDRELINJE"), std::to_string(first.lines.size()));
    EXPECT_EQ(run.backOfficeValue("SELECT COUNT(*) FROM PosOrdre WHERE Pos_Or_Kreditt_Or_Id IS NOT NULL"), "1");
    EXPECT_EQ(run.log().filter(QStringLiteral("fra kredittsalg bong nr 9001 er opprettet tidligere")).size(), 1);
}

TEST(Fetch, UnsettledSalesStayOnTheTillAndAreCounted) {
    ChainRun run({.departments = 1, .tills = 1, .days = 1});
    run.fetch();
    EXPECT_EQ(run.tillValue(0, "SELECT COUNT(*) FROM ORDRE WHERE OR_OP_ID IS NULL"), "1");
    EXPECT_EQ(run.backOfficeValue("SELECT Ikk_AntIkkeOppgjorteSalg FROM Internkundekasse"), "1");
    EXPECT_EQ(run.engine.ffraOppgjorStatus->memOppgjorStatus.Row(0).AntSalgIkkeOppgjort, 1);
}

TEST(Fetch, ASingleBackOfficeTakesTheStaffAndMarksByStatus) {
    ChainRun run({.departments = 1, .tills = 1, .days = 1});
    run.engine.IsEnterprise = false;
    run.chain.runInBackOffice("DELETE FROM InternKundeAnsatt");

    run.fetch();

    EXPECT_EQ(run.errors(), QStringList());
    EXPECT_EQ(run.backOfficeValue("SELECT COUNT(*) FROM InternKundeAnsatt"), "3");
    EXPECT_EQ(run.tillValue(0, "SELECT COUNT(*) FROM OPPGJOR WHERE OP_TYPE = 'NORMAL' AND OP_STATUS = 0"), "0");
    EXPECT_TRUE(run.log().contains(
        QStringLiteral("Kredittordre for avdeling 101 blir ikke opprettet. Må faktureres i Enterprise ved HK.")));
}

}  // namespace
}  // namespace torvik::test
