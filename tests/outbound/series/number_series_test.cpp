// The number series of a chain's tills: what each till's table, identity and mark hold afterwards, and what a till that
// fails means for itself and for the others.
#include "outbound/series/number_series.h"

#include <gmock/gmock.h>

#include "engine/base/abort.h"
#include "engine/db/query.h"
#include "engine/roster/avdeling.h"
#include "inbound/pairs/pair_intent.h"
#include "tests/support/chain_run.h"
#include "tests/support/qt_print.h"
#include "tests/support/sandbox_requests.h"

namespace torvik::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Rows = std::vector<std::string>;

// Three tills; the roster has them in the order 101/1, 101/2, 102/1, the chain as 0, 2 and 1. The back office's word is
// the test's own: the table Neste.
class NumberSeries : public testing::Test {
protected:
    NumberSeries() : run({.departments = 2, .tills = 3, .days = 1, .items = 5, .ordersADay = 2, .versions = {213}}) {
        joinNumberSeries(run.engine);
        run.chain.runInBackOffice(
            "CREATE TABLE Neste (Ik_Ku_Id int, Kassenr varchar(10), Navn varchar(30), Neste int)");
        run.chain.runInBackOffice("DROP PROCEDURE POSLedigID");
        run.chain.runInBackOffice(
            "CREATE PROCEDURE POSLedigID @Ik_Ku_Id int, @Kassenr varchar(10) AS SELECT Navn AS LI_ATTRIBUTT, Neste AS "
            "LI_NESTELEDIGEID FROM Neste WHERE Neste.Ik_Ku_Id = @Ik_Ku_Id AND Neste.Kassenr = @Kassenr ORDER BY Neste");
        for (std::size_t till = 0; till < 3; ++till)
            run.chain.runInTill(
                till,
                "DELETE LEDIGID INSERT LEDIGID VALUES ('OP_ID', 10), ('OR_ID', 500) UPDATE INNSTILLINGER SET "
                "IN_NUMMERSERIER_SYNKRONISERT = 0");
    }

    void next(const std::string& till, const std::string& name, int number) {
        run.chain.runInBackOffice("INSERT Neste SELECT Ik_Ku_Id, '" + till.substr(4) + "', '" + name + "', " +
                                  std::to_string(number) + " FROM Internkunde WHERE Ik_Avdelingsnummer = '" +
                                  till.substr(0, 3) + "'");
    }
    // As the command in the window does it, over all tills.
    void update() {
        run.target.Close();
        run.target.Open();
        run.engine.Avdeling->ClearFilter();
        run.engine.Avdeling->SetKasseCollection(std::make_shared<TKasseCollection>());
        run.engine.UpdateLedigID();
    }
    // The till's whole table, and the mark.
    [[nodiscard]] Rows series(std::size_t till) const {
        Rows rows = run.tillRows(till, "SELECT LI_ATTRIBUTT, LI_NESTELEDIGEID FROM LEDIGID ORDER BY LI_ATTRIBUTT");
        rows.push_back(run.tillValue(till, "SELECT IN_NUMMERSERIER_SYNKRONISERT FROM INNSTILLINGER"));
        return rows;
    }
    [[nodiscard]] std::string identity() const { return run.tillValue(0, "SELECT IDENT_CURRENT('OPPGJORLINJE')"); }

    ChainRun run;
};

TEST_F(NumberSeries, AreRaisedMadeAndNeverLowered) {
    next("101/1", "OP_ID", 11);
    next("101/1", "OR_ID", 499);
    next("101/1", "VM_ID", 77);
    next("101/1", "VB_ID", 1);
    next("102/1", "OR_ID", 500);
    update();
    EXPECT_THAT(series(0), ElementsAre("OP_ID | 11", "OR_ID | 500", "VB_ID | 1", "VM_ID | 77", "1"));
    EXPECT_THAT(series(1), ElementsAre("OP_ID | 10", "OR_ID | 500", "1"));
    EXPECT_THAT(series(2), ElementsAre("OP_ID | 10", "OR_ID | 500", "1")) << "no row for it: nothing but the mark";
    EXPECT_EQ(run.errors(), QStringList());
    EXPECT_EQ(run.log(), (QStringList{
                             QStringLiteral("STARTER OPPDATERING AV ID"),
                             QStringLiteral("Antall kasser som skal behandles: 3"),
                             QStringLiteral("Oppdaterer nummerserie for avd. 101 kasse 1"),
                             QStringLiteral("exec ok"),
                             QStringLiteral("Database versjon 213"),
                             QStringLiteral("Uendret verdi på VB_ID"),
                             QStringLiteral("Endrer verdien på OP_ID fra nr. 10 til nr. 11"),
                             QStringLiteral("Ny verdi på VM_ID : 77"),
                             QStringLiteral("Uendret verdi på OR_ID"),
                             QStringLiteral("Venter i 0 sekunder på neste forsøk"),
                             QStringLiteral("Oppdaterer nummerserie for avd. 101 kasse 2"),
                             QStringLiteral("exec ok"),
                             QStringLiteral("Database versjon 213"),
                             QStringLiteral("Venter i 0 sekunder på neste forsøk"),
                             QStringLiteral("Oppdaterer nummerserie for avd. 102 kasse 1"),
                             QStringLiteral("exec ok"),
                             QStringLiteral("Database versjon 213"),
                             QStringLiteral("Uendret verdi på OR_ID"),
                             QStringLiteral("fullføRT OPPDATERING AV ID"),
                         }));
}

TEST_F(NumberSeries, NamesThatDifferInCaseAreOneSeries) {
    next("101/1", " op_id", 12);
    next("101/1", "nY_Id", 3);
    next("101/1", "NY_ID ", 5);
    update();
    EXPECT_THAT(series(0), ElementsAre("nY_Id | 5", "OP_ID | 12", "OR_ID | 500", "1"));
    EXPECT_EQ(run.log().filter(QStringLiteral("verdi")),
              (QStringList{QStringLiteral("Ny verdi på nY_Id : 3"),
                           QStringLiteral("Endrer verdien på nY_Id fra nr. 3 til nr. 5"),
                           QStringLiteral("Endrer verdien på OP_ID fra nr. 10 til nr. 12")}));
}

TEST_F(NumberSeries, SettlementLinesMoveTheirIdentityToo) {
    run.chain.runInTill(0, "DBCC CHECKIDENT ('OPPGJORLINJE', RESEED, 40) INSERT LEDIGID VALUES ('OPL_ID', 900)");
    next("101/1", "opl_id", 40);
    update();
    EXPECT_EQ(identity(), "40") << "as it is";
    run.chain.runInBackOffice("UPDATE Neste SET Neste = 39");
    update();
    EXPECT_EQ(identity(), "40") << "never back";
    run.chain.runInBackOffice("UPDATE Neste SET Neste = 41");
    update();
    EXPECT_EQ(identity(), "41") << "although the series itself stands higher";
    EXPECT_THAT(series(0), ElementsAre("OP_ID | 10", "OPL_ID | 900", "OR_ID | 500", "1"));
    next("101/1", "OPX_ID", 5000);
    update();
    EXPECT_EQ(identity(), "41") << "no other series does";
}

TEST_F(NumberSeries, IdentityThatHasGivenOutNothingIsItsSeed) {
    run.chain.runInTill(0, "DELETE OPPGJORLINJE TRUNCATE TABLE OPPGJORLINJE");
    ASSERT_EQ(identity(), "1");
    next("101/1", "OPL_ID", 1);
    update();
    EXPECT_EQ(identity(), "1");
    run.chain.runInBackOffice("UPDATE Neste SET Neste = 2");
    update();
    run.chain.runInTill(0,
                        "INSERT OPPGJORLINJE (OPL_OP_ID, OPL_PE_ID, OPL_VEKSLEPENGER, OPL_OPPTALT, OPL_FAKTISK) SELECT "
                        "MIN(OP_ID), MIN(PE_ID), 0, 0, 0 FROM OPPGJOR, PENGEENHET");
    EXPECT_EQ(run.tillValue(0, "SELECT OPL_ID FROM OPPGJORLINJE"), "2");
}

TEST_F(NumberSeries, TillWithoutTheMarkIsRaisedAllTheSame) {
    run.chain.runInTill(0, "ALTER TABLE INNSTILLINGER DROP COLUMN IN_NUMMERSERIER_SYNKRONISERT");
    next("101/1", "OP_ID", 11);
    update();
    EXPECT_EQ(run.errors(), QStringList());
    EXPECT_THAT(run.tillRows(0, "SELECT LI_ATTRIBUTT, LI_NESTELEDIGEID FROM LEDIGID ORDER BY LI_ATTRIBUTT"),
                ElementsAre("OP_ID | 11", "OR_ID | 500"));
}

// The till has given out numbers since its table was read.
TEST_F(NumberSeries, NumberThatTheTillHasPassedMeanwhileStays) {
    next("101/1", "OP_ID", 20);
    run.engine.Seam.pumpMessages = [this, done = false]() mutable {
        if (done || run.log().isEmpty() || !run.log().last().startsWith(QStringLiteral("Endrer verdien på OP_ID")))
            return;
        done = true;
        run.chain.runInTill(0, "UPDATE LEDIGID SET LI_NESTELEDIGEID = 25 WHERE LI_ATTRIBUTT = 'OP_ID'");
    };
    update();
    EXPECT_THAT(series(0), ElementsAre("OP_ID | 25", "OR_ID | 500", "1"));
}

TEST_F(NumberSeries, BackOfficeThatFailsLeavesTheTillUntouched) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    next("101/1", "OP_ID", 11);
    next("102/1", "OP_ID", 12);
    sandbox::FaultRule refuse;
    refuse.match.textContains = "exec POSLedigID 1001,'1'";
    refuse.action = sandbox::FaultAction::Fail;
    refuse.message = {.number = 50000, .severity = 16, .state = 1, .text = "ikke nå"};
    run.chain.backOffice().faults().add(refuse);
    const auto logins = run.chain.till(0).faults().logins();
    update();
    EXPECT_EQ(run.chain.till(0).faults().logins(), logins);
    EXPECT_EQ(run.errors(), QStringList{QStringLiteral("Feil ved oppdatering av ID, avd. 101, kasse 1 (ikke nå)")});
    EXPECT_THAT(series(0), ElementsAre("OP_ID | 10", "OR_ID | 500", "0"));
    EXPECT_THAT(series(1), ElementsAre("OP_ID | 12", "OR_ID | 500", "1"));
    EXPECT_EQ(run.log().last(), QStringLiteral("fullføRT OPPDATERING AV ID"));
}

TEST_F(NumberSeries, BackOfficeThatTakesLongIsWaitedFor) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    next("101/1", "OP_ID", 11);
    delayBeyondTheUsualTimeout(run.chain.backOffice(), "exec POSLedigID 1001,'1'");
    update();
    EXPECT_EQ(run.errors(), QStringList());
    EXPECT_THAT(series(0), ElementsAre("OP_ID | 11", "OR_ID | 500", "1"));
}

TEST_F(NumberSeries, TillThatIsOffIsToldAndTheOthersAreRaised) {
    run.engine.RetryCount = 2;
    run.chain.runInBackOffice(
        "UPDATE Internkundekasse SET Ikk_Database = 'finnes_ikke' WHERE Ikk_Ik_Ku_Id = 1001 AND Ikk_Kassenummer = '1'");
    next("101/2", "OP_ID", 11);
    update();
    EXPECT_EQ(run.errors(),
              QStringList{QStringLiteral("Feil ved oppdatering av ID, avd. 101, kasse 1 (Klarte ikke koble til "
                                         "avd.101 kasse 1)")});
    EXPECT_THAT(series(2), ElementsAre("OP_ID | 11", "OR_ID | 500", "1"));
    EXPECT_EQ(run.log().count(QStringLiteral("Venter i 0 sekunder på neste forsøk")), 3) << "one between two attempts";
}

TEST_F(NumberSeries, WhatWasRaisedBeforeAFailureStandsAndTheNextRunDoesTheRest) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    next("101/1", "OP_ID", 11);
    next("101/1", "OR_ID", 501);
    next("101/1", "VM_ID", 900);
    for (const auto action : {sandbox::FaultAction::Fail, sandbox::FaultAction::DropBefore}) {
        run.chain.runInTill(
            0,
            "DELETE LEDIGID INSERT LEDIGID VALUES ('OP_ID', 10), ('OR_ID', 500) UPDATE INNSTILLINGER SET "
            "IN_NUMMERSERIER_SYNKRONISERT = 0");
        run.errorPane.Clear();
        sandbox::FaultRule refuse;
        refuse.match.textContains = "update ledigid";
        refuse.action = action;
        refuse.skip = 1;
        refuse.message = {.number = 50000, .severity = 16, .state = 1, .text = "ikke nå"};
        run.chain.till(0).faults().add(refuse);
        update();
        EXPECT_THAT(series(0), ElementsAre("OP_ID | 11", "OR_ID | 500", "0"));
        ASSERT_EQ(run.errors().size(), 1);
        EXPECT_TRUE(run.errors()[0].startsWith(QStringLiteral("Feil ved oppdatering av ID, avd. 101, kasse 1 (")));
        EXPECT_THAT(series(1).back(), "1");
        update();
        EXPECT_THAT(series(0), ElementsAre("OP_ID | 11", "OR_ID | 501", "VM_ID | 900", "1"));
    }
}

TEST_F(NumberSeries, CancelIsTakenByTheWaitBetweenTwoTills) {
    run.engine.RetryWaitTime = 1;
    run.engine.Seam.pumpMessages = [this] {
        if (run.log().contains(QStringLiteral("exec ok"))) run.engine.SetCancelRequest(true);
    };
    EXPECT_THROW(update(), EAbort);
    EXPECT_EQ(series(0).back(), "1") << "the till was served to its end";
    EXPECT_EQ(series(2).back(), "0");
    EXPECT_EQ(run.log().mid(run.log().size() - 2),
              (QStringList{QStringLiteral("Avbrutt av bruker"),
                           QStringLiteral("Ferdige kasser da kjøringen ble avbrutt: avd. 101 kasse 1")}));
}

TEST_F(NumberSeries, TillOfAPairThatAnotherMachineHasLeftIsRefused) {
    next("101/1", "OP_ID", 11);
    run.target.Open();
    PairIntents(run.target, 1001, QStringLiteral("1"))
        .write({QUuid::createUuid(), QStringLiteral("overføring"), QUuid::createUuid(), QStringLiteral("HK-01"), {}});
    update();
    EXPECT_THAT(series(0), ElementsAre("OP_ID | 10", "OR_ID | 500", "0"));
    ASSERT_EQ(run.errors().size(), 1);
    EXPECT_TRUE(
        run.errors()[0].startsWith(QStringLiteral("Feil ved oppdatering av ID, avd. 101, kasse 1 (Kassen (avd. 101, "
                                                  "kasse 1) betjenes ikke, fordi maskin HK-01")));
    EXPECT_EQ(series(1).back(), "1");
}

// The made-up back office's own procedure: a till that has lost its numbers gets them back.
TEST(NumberSeriesOfTheChain, ResetTillGoesOnBehindWhatTheBackOfficeHolds) {
    ChainRun run({.departments = 1, .tills = 1, .days = 2, .versions = {213}});
    joinNumberSeries(run.engine);
    run.fetch();
    const auto& till = run.chain.model().tills[0];
    run.chain.runInTill(0, "DELETE LEDIGID");
    run.engine.UpdateLedigID();
    int orders = 0;
    for (const auto& order : till.orders)
        if (order.settlement) orders = std::max(orders, order.id);
    EXPECT_EQ(run.tillValue(0, "SELECT LI_NESTELEDIGEID FROM LEDIGID WHERE LI_ATTRIBUTT = 'OR_ID'"),
              std::to_string(orders + 1));
    EXPECT_EQ(run.tillValue(0, "SELECT LI_NESTELEDIGEID FROM LEDIGID WHERE LI_ATTRIBUTT = 'OP_ID'"),
              std::to_string(till.settlements.back().id + 1));
    EXPECT_EQ(run.errors(), QStringList());
}

}  // namespace
}  // namespace torvik::test
