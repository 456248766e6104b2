// The stock counts of a chain on their way into the back office: what both ends hold afterwards, and what a till that
// fails means for itself and for the others.
#include <QFile>
#include <mutex>

#include "engine/base/abort.h"
#include "engine/db/meanwhile.h"
#include "engine/office/application_lock.h"
#include "tests/inbound/stock_counts/counting_chain.h"
#include "tests/support/chain_session.h"

namespace torvik::test {
namespace {

using sandbox::FaultAction;

class StockCounts : public CountingChain {};

TEST_F(StockCounts, EveryTillsCountIsTheBackOfficesAndIsMarked) {
    count();
    EXPECT_TRUE(counted({0, 1, 2}));
    for (std::size_t till = 0; till < 3; ++till)
        EXPECT_EQ(marks(till), (Rows{"1 | NORMAL | nei | 0", "2 | VARETELLING | ja | 0"})) << till;
    EXPECT_EQ(run.errors(), QStringList());
    expectNoPair();

    QStringList expected{QStringLiteral("STARTER VARETELLING"),
                         QStringLiteral("Laster inn vare tabellen (kan ta litt tid) ..."),
                         QStringLiteral("Laster inn varealias tabellen (kan ta litt tid) ..."),
                         QStringLiteral("Lastet %1 varer for referanseintegritet")
                             .arg(QString::fromStdString(run.backOfficeValue("SELECT COUNT(*) FROM Vare"))),
                         QStringLiteral("Antall kasser som skal behandles: 3")};
    for (int till = 0; till < 3; ++till)
        expected << QStringLiteral("Transaksjon startet for kildedatabase")
                 << QStringLiteral("Transaksjon startet for måldatabase")
                 << QStringLiteral("Det er lagt 3 poster i nipponordrelinje")
                 << QStringLiteral("Transaksjon commit for kildedatabase")
                 << QStringLiteral("Transaksjon commit for måldatabase");
    expected << QStringLiteral("fullføRT VARETELLING");
    EXPECT_EQ(run.log(), expected);
    EXPECT_TRUE(QFile::exists(run.folder.filePath(QStringLiteral("ZoppgjorLog.txt"))));
}

TEST_F(StockCounts, StageHoldsTheLastTillsCountAlone) {
    count();
    const auto& till = run.chain.model().tills[1];  // department 102: the last of the roster
    sandbox::chain::TableData lines{"nipponordrelinje", {"Nl_Nh_Id", "RTRIM(Nl_Va_ID)", "Nl_Antall", "Nl_Soner"}, {}};
    for (const auto& order : till.orders)
        if (order.settlement && typeOf(till, *order.settlement) == "VARETELLING")
            for (const auto& line : order.lines)
                lines.rows.push_back({sandbox::chain::integer(3), line.item, line.quantity, std::monostate{}});
    EXPECT_TRUE(run.backOfficeHolds(lines));
    EXPECT_EQ(
        run.backOfficeRows("SELECT Nh_ID, Nh_Ku_ID, Nh_Prislapp, Nh_Or_ID, CASE WHEN Nh_Key BETWEEN 0 AND 9999998 "
                           "THEN 'nøkkel' END FROM nipponordrehode"),
        Rows{"3 | 1002 | 0 | 0 | nøkkel"});
}

TEST_F(StockCounts, SecondRunFindsNothingAndEachTillIsAnErrorLine) {
    count();
    run.logPane.Clear();
    const std::string before = run.everything();
    count();
    EXPECT_EQ(run.everything(), before);
    QStringList expected;
    for (int till = 0; till < 3; ++till)
        expected << QStringLiteral("<<<  Ingen varetelling å hente >>>")
                 << QStringLiteral("Transaksjon rollback for måldatabase")
                 << QStringLiteral("Transaksjon rollback for kildedatabase")
                 << QStringLiteral("Ingen varetelling å hente");
    EXPECT_EQ(run.errors(), expected);
    EXPECT_EQ(run.log().last(), QStringLiteral("fullføRT VARETELLING"));
    expectNoPair();
}

TEST_F(StockCounts, SingleBackOfficeKnowsACountByItsStatus) {
    run.engine.IsEnterprise = false;
    onTill(0, "UPDATE OPPGJOR SET OP_OPPDATERTTIDSPUNKT = '20260101' WHERE OP_TYPE = 'VARETELLING'");
    onTill(1, "UPDATE OPPGJOR SET OP_STATUS = 1 WHERE OP_TYPE = 'VARETELLING'");
    count();
    EXPECT_TRUE(counted({0, 2}));
    EXPECT_EQ(marks(0), (Rows{"1 | NORMAL | nei | 0", "2 | VARETELLING | ja | 1"}));
    EXPECT_EQ(marks(1), (Rows{"1 | NORMAL | nei | 0", "2 | VARETELLING | nei | 1"}));
    EXPECT_EQ(marks(2), (Rows{"1 | NORMAL | nei | 0", "2 | VARETELLING | nei | 1"}));
}

TEST_F(StockCounts, OrdersThatAreNotDoneAreNotCounted) {
    onTill(0, "UPDATE ORDRE SET OR_STATUS = 1 WHERE OR_OP_ID = 2");
    count();
    EXPECT_TRUE(counted({1, 2}));
    EXPECT_EQ(marks(0)[1], "2 | VARETELLING | nei | 0");
}

// One line each of two settlements, mixed in the till's order of rows.
TEST_F(StockCounts, TwoCountsOfATillGoInOneHeadAndBothAreMarked) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    onTill(
        0,
        "INSERT OPPGJOR (OP_ID, OP_AN_ID, OP_TIDSPUNKT, OP_TYPE, OP_STATUS) SELECT 77, OP_AN_ID, OP_TIDSPUNKT, OP_TYPE, 0 "
        "FROM OPPGJOR WHERE OP_ID = 2 "
        "INSERT ORDRE (OR_ID, OR_KU_ID, OR_OP_ID, OR_AN_ID, OR_TIDSPUNKT, OR_TIDSPUNKTFERDIG, OR_STATUS) SELECT 7000, OR_KU_ID, 77, OR_AN_ID, "
        "OR_TIDSPUNKT, OR_TIDSPUNKTFERDIG, 0 FROM ORDRE WHERE OR_OP_ID = 2 "
        "UPDATE ORDRELINJE SET OL_OR_ID = 7000 WHERE OL_ID = (SELECT MIN(OL_ID) + 1 FROM ORDRELINJE JOIN ORDRE ON OL_OR_ID "
        "= OR_ID WHERE OR_OP_ID = 2)");
    Requests heads(run.chain.backOffice());
    count();
    EXPECT_TRUE(counted({0, 1, 2}));
    EXPECT_EQ(marks(0), (Rows{"1 | NORMAL | nei | 0", "2 | VARETELLING | ja | 0", "77 | VARETELLING | ja | 0"}));
    EXPECT_EQ(heads.count(QStringLiteral("insert into nipponordrehode")), 3) << "one a till";
    expectNoPair();
}

// 3 lines stand already.
TEST_F(StockCounts, LinesGoThirtyTwoAtATime) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    for (const int more : {29, 30, 61, 62}) {
        onTill(0,
               "DELETE ORDRELINJE WHERE OL_ID > 9000 UPDATE OPPGJOR SET OP_OPPDATERTTIDSPUNKT = NULL WHERE OP_ID = 2");
        for (int line = 1; line <= more; ++line)
            onTill(
                0,
                "INSERT ORDRELINJE (OL_ID, OL_OR_ID, OL_VA_ID, OL_ANTALL, OL_RABATT, OL_SALGSPRIS, OL_KOSTPRIS, OL_MVASATS, "
                "OL_MERSALG) SELECT " +
                    std::to_string(9000 + line) +
                    ", OL_OR_ID, OL_VA_ID, 1, 0, 1, 0, 25, 0 FROM ORDRELINJE WHERE OL_ID = (SELECT MIN(OL_ID) FROM "
                    "ORDRELINJE JOIN ORDRE ON OL_OR_ID = OR_ID WHERE OR_OP_ID = 2)");
        run.logPane.Clear();
        Requests lines(run.chain.backOffice());
        count();
        const int batches = (3 + more + 31) / 32;
        // The other tills have been counted by then, but for the first time round.
        EXPECT_EQ(lines.count(QStringLiteral("insert into nipponordrelinje")), batches + (more == 29 ? 2 : 0)) << more;
        EXPECT_TRUE(run.log().contains(QStringLiteral("Det er lagt %1 poster i nipponordrelinje").arg(3 + more)));
    }
}

TEST_F(StockCounts, QuantitiesAreExactAndItemsHaveTheirQuotes) {
    inBackOffice("INSERT Vare (Va_Id, Va_Navn, Va_Kostpris, Va_Pris) VALUES ('O''H', 'Irsk', 1, 2)");
    onTill(
        0,
        "INSERT VARE (VA_ID, VA_NAVN, VA_PRIS) VALUES ('O''H', 'Irsk', 1) UPDATE ORDRELINJE SET OL_VA_ID = 'O''H', OL_ANTALL "
        "= 1234567.25 WHERE OL_OR_ID IN (SELECT OR_ID FROM ORDRE WHERE OR_OP_ID = 2)");
    count();
    EXPECT_EQ(
        run.backOfficeRows("SELECT RTRIM(Vt_Va_Id), Vt_Antall FROM Varetelling WHERE Vt_Ik_Ku_Id = 1001 AND Vt_Va_Id = "
                           "'O''H'"),
        Rows{"O'H | 3703701.75"});
}

// The text of the version is compared: "99" is above "117". No zone is taken over whatever the till has.
TEST_F(StockCounts, ZonesAreAskedForByTheVersionOfTheTillBeforeAndNeverTaken) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    const struct {
        const char* version;
        int asked;
    } kCases[] = {{"116", 0}, {"117", 3}, {"213", 3}, {"99", 3}, {"1", 0}};
    for (const auto& one : kCases) {
        for (std::size_t till = 0; till < 3; ++till) onTill(till, "UPDATE OPPGJOR SET OP_OPPDATERTTIDSPUNKT = NULL");
        onTill(0, std::string("UPDATE INNSTILLINGER SET IN_DBVERSION = '") + one.version + "'");
        run.target.Open();
        run.engine.Avdeling->Close();
        run.engine.Avdeling->Open();
        ASSERT_TRUE(run.engine.ConnectSource());
        int asked = 0;
        std::mutex mutex;
        std::vector<int> observers;
        for (std::size_t till = 0; till < 3; ++till)
            observers.push_back(run.chain.till(till).faults().observe([&](const sandbox::RequestInfo& request) {
                const std::lock_guard lock(mutex);
                if (request.text.find(
                        "Ol_Salgspris,Or_Op_Id, ( select ols_soner from ordrelinjesoner where ols_ol_id=ol_id ) ols_soner\r\n") !=
                    std::string::npos)
                    ++asked;
            }));
        count();
        for (std::size_t till = 0; till < 3; ++till) run.chain.till(till).faults().forget(observers[till]);
        EXPECT_EQ(asked, one.asked) << one.version;
        EXPECT_EQ(run.backOfficeValue("SELECT COUNT(*) FROM nipponordrelinje WHERE Nl_Soner IS NOT NULL"), "0");
    }
    EXPECT_EQ(run.errors(), QStringList());
}

TEST_F(StockCounts, PeriodThatIsNoNumberLeavesEverythingAsItWas) {
    run.engine.VaretellingPeriode = QStringLiteral("mars");
    const std::string before = run.everything();
    count();
    EXPECT_EQ(run.everything(), before);
    EXPECT_EQ(run.errors().count(QStringLiteral("Perioden for varetelling er ikke et tall: 'mars'")), 3);
    expectNoPair();
}

TEST_F(StockCounts, TillThatIsOffIsAnErrorLineAndTheOthersAreCounted) {
    inBackOffice(
        "UPDATE Internkundekasse SET Ikk_Database = 'finnes_ikke' WHERE Ikk_Ik_Ku_Id = 1001 AND Ikk_Kassenummer = '1'");
    count();
    EXPECT_TRUE(counted({1, 2}));
    ASSERT_EQ(run.errors().size(), 1);
    EXPECT_TRUE(run.errors()[0].contains(QStringLiteral("finnes_ikke")));
}

TEST_F(StockCounts, TillThatRefusesTheMarkIsNotCounted) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    run.chain.till(0).faults().add(refusal("update oppgjor set op_oppdaterttidspunkt"));
    count();
    EXPECT_TRUE(counted({1, 2}));
    EXPECT_EQ(marks(0)[1], "2 | VARETELLING | nei | 0");
    EXPECT_EQ(run.errors(),
              (QStringList{QStringLiteral("<<<  ikke nå >>>"), QStringLiteral("Transaksjon rollback for måldatabase"),
                           QStringLiteral("Transaksjon rollback for kildedatabase"), QStringLiteral("ikke nå")}));
    count();
    EXPECT_TRUE(counted({0, 1, 2}));
}

TEST_F(StockCounts, ConnectionThatBreaksLeavesTheTillForTheNextRun) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    for (const char* place : {"FROM ordre JOIN", "update oppgjor set op_oppdaterttidspunkt", "COMMIT TRANSACTION"}) {
        inBackOffice("DELETE Varetelling");
        for (std::size_t till = 0; till < 3; ++till) onTill(till, "UPDATE OPPGJOR SET OP_OPPDATERTTIDSPUNKT = NULL");
        run.chain.till(0).faults().add(cut(place, FaultAction::DropBefore));
        count();
        EXPECT_TRUE(counted({1, 2})) << place;
        EXPECT_EQ(marks(0)[1], "2 | VARETELLING | nei | 0") << place;
        EXPECT_TRUE(run.errors().contains(QStringLiteral("Transaksjon rollback for måldatabase"))) << place;
        count();
        EXPECT_TRUE(counted({0, 1, 2})) << place;
        expectNoPair();
    }
}

// Required: what the stage and the hand-over refuse is told, and the count is marked all the same.
TEST_F(StockCounts, RefusalsOnTheWayAreToldAndTheCountIsMarked) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    const struct {
        const char* statement;
        std::set<std::size_t> counted;
    } kCases[] = {{"delete from nipponordrelinje", {0, 1, 2}},
                  {"insert into nipponordrehode", {1, 2}},
                  {"insert into nipponordrelinje", {1, 2}},
                  {"exec NipponToVaretell", {1, 2}}};
    for (const auto& one : kCases) {
        inBackOffice("DELETE Varetelling");
        for (std::size_t till = 0; till < 3; ++till) onTill(till, "UPDATE OPPGJOR SET OP_OPPDATERTTIDSPUNKT = NULL");
        run.logPane.Clear();
        run.errorPane.Clear();
        run.chain.backOffice().faults().add(refusal(one.statement));
        count();
        EXPECT_TRUE(counted(one.counted)) << one.statement;
        EXPECT_EQ(marks(0)[1], "2 | VARETELLING | ja | 0") << one.statement;
        EXPECT_EQ(run.errors().first(), QStringLiteral("ikke nå")) << one.statement;
        EXPECT_TRUE(run.errors().last().startsWith(
            QStringLiteral("Varetellingen (avd. 101, kasse 1) er merket som hentet, men ")))
            << run.errors().last().toStdString();
    }
}

TEST_F(StockCounts, ServiceRefusesATillWhoseCountTheBackOfficeDoesNotTake) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    run.engine.SetRunAsService(true);
    run.chain.backOffice().faults().add(refusal("exec NipponToVaretell"));
    count();
    run.engine.SetRunAsService(false);
    EXPECT_TRUE(counted({1, 2}));
    EXPECT_EQ(marks(0)[1], "2 | VARETELLING | nei | 0");
}

// The statement's failure is told and passed over, but the server has ended the transaction with it.
TEST_F(StockCounts, TransactionThatTheBackOfficeHasEndedMarksNothing) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    sandbox::FaultRule deadlock = refusal("exec NipponToVaretell");
    deadlock.message.number = 1205;
    deadlock.message.text = "vranglås";
    deadlock.rollBack = true;
    run.chain.backOffice().faults().add(deadlock);
    count();
    EXPECT_TRUE(counted({1, 2}));
    EXPECT_EQ(marks(0)[1], "2 | VARETELLING | nei | 0");
    count();
    EXPECT_TRUE(counted({0, 1, 2}));
    expectNoPair();
}

TEST_F(StockCounts, TillThatCommittedAloneIsTakenBackAndCountedAgain) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    for (const bool inChain : {true, false}) {
        run.engine.IsEnterprise = inChain;
        inBackOffice("DELETE Varetelling");
        run.chain.backOffice().faults().add(refusal("COMMIT TRANSACTION"));
        count();
        EXPECT_TRUE(counted({1, 2}));
        EXPECT_EQ(marks(0)[1], inChain ? "2 | VARETELLING | ja | 0" : "2 | VARETELLING | ja | 1");
        EXPECT_TRUE(run.errors().contains(QStringLiteral("<<<  Ingen transaksjon >>>"))) << "the till's own line";
        run.logPane.Clear();
        count();
        EXPECT_TRUE(counted({0, 1, 2}));
        expectNoPair();
        EXPECT_EQ(run.log().filter(QStringLiteral("Avbrutt varetelling fra")).size(), 1);
    }
}

TEST_F(StockCounts, CancelTakesEffectBehindTheTill) {
    run.engine.Seam.pumpMessages = [this] {
        if (!run.log().isEmpty() && run.log().last().startsWith(QStringLiteral("Det er lagt")))
            run.engine.SetCancelRequest(true);
    };
    EXPECT_THROW(count(), EAbort);
    EXPECT_TRUE(counted({0}));
    EXPECT_EQ(marks(2)[1], "2 | VARETELLING | nei | 0");
    EXPECT_EQ(run.log().mid(run.log().size() - 2),
              (QStringList{QStringLiteral("Avbrutt av bruker"),
                           QStringLiteral("Ferdige kasser da kjøringen ble avbrutt: avd. 101 kasse 1")}));
    expectNoPair();
}

TEST_F(StockCounts, EndOfTheProgramInAStatementMarksNothing) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    sandbox::FaultRule slow;
    slow.match.textContains = "exec NipponToVaretell";
    slow.action = FaultAction::Delay;
    slow.delay = std::chrono::seconds(2);
    run.chain.backOffice().faults().add(slow);
    const db::Meanwhile window([this] {
        if (!run.log().isEmpty() && run.log().last().startsWith(QStringLiteral("Det er lagt")))
            run.engine.Parts().Control.Abandon();
    });
    EXPECT_THROW(count(), EAbort);
    EXPECT_TRUE(counted({}));
    EXPECT_EQ(marks(0)[1], "2 | VARETELLING | nei | 0");
    expectNoPair();
}

TEST_F(StockCounts, CancelOfTheFetchBeforeHoldsHereToo) {
    run.engine.SetCancelRequest(true);
    const std::string before = run.everything();
    EXPECT_THROW(count(), EAbort);
    EXPECT_EQ(run.everything(), before);
}

TEST_F(StockCounts, AnotherCopysCountsKeepThisOneOut) {
    const auto other = backOfficeSession(run.chain);
    const std::string before = run.everything();
    {
        const ApplicationLock stage(*other, ApplicationLock::OfStockCounts());
        ASSERT_TRUE(stage.Held());
        EXPECT_THROW(count(), EngineError);
    }
    EXPECT_EQ(run.everything(), before);
    count();
    EXPECT_TRUE(counted({0, 1, 2}));
    EXPECT_TRUE(ApplicationLock(*other, ApplicationLock::OfStockCounts()).Held()) << "let go at the end";
}

TEST_F(StockCounts, WhatWasCountedBeforeInThePeriodIsAddedTo) {
    count();
    for (std::size_t till = 0; till < 3; ++till) onTill(till, "UPDATE OPPGJOR SET OP_OPPDATERTTIDSPUNKT = NULL");
    run.engine.VaretellingPeriode = QStringLiteral("202604");
    inBackOffice("DELETE Varetelling");
    count();
    EXPECT_TRUE(counted({0, 1, 2}, 202604));
}

}  // namespace
}  // namespace torvik::test
