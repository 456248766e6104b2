// The reset of a chain's tills: every table of a till before and after, what is asked and told, and what a till that
// fails means for itself and for the others.
#include "outbound/reset/till_reset.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <set>

#include "engine/base/abort.h"
#include "engine/db/query.h"
#include "engine/roster/avdeling.h"
#include "inbound/pairs/pair_intent.h"
#include "inbound/stock_counts/stock_count_run.h"
#include "tests/support/chain_run.h"
#include "tests/support/qt_print.h"
#include "tests/support/sandbox_requests.h"

namespace torvik::test {
namespace {

using Tables = std::map<std::string, ChainRun::Table>;
using Rows = std::vector<std::string>;

// What goes with each choice, the till's own cascades included.
const std::set<std::string> kSales{"BETALINGSIGNATUR",
                                   "GENERELLSIGNATUR",
                                   "LOGG",
                                   "ORDRE",
                                   "KASSEUTTAK",
                                   "VAREMOTTAKLINJE",
                                   "VAREMOTTAK",
                                   "EKSTRAANSATTOPPGJOR",
                                   "REKLAMASJONLINJE",
                                   "REKLAMASJON",
                                   "VEDLEGG",
                                   "OPPGJOR",
                                   "GAVEKORT",
                                   "TILGODELAPP",
                                   "TIMER",
                                   "MELDING",
                                   "MELDINGVEDLEGG",
                                   "BETALING",
                                   "BETALINGBANKINFO",
                                   "KUPONGORDRELINJE",
                                   "OPPGJORBETALING",
                                   "OPPGJORLINJE",
                                   "OPPGJORSIGNATUR",
                                   "ORDREGRUNN",
                                   "ORDRELINJE",
                                   "ORDRELINJEGRUNN",
                                   "ORDRELINJESONER",
                                   "ORDRELINJETEKST",
                                   "ORDRERETUR",
                                   "ORDRESIGNATUR",
                                   "TIMERPRKODE",
                                   "UTBETALING",
                                   "VAREBESTILLING",
                                   "VAREBESTILLINGLINJE",
                                   "VippsBetaling"};
const std::set<std::string> kItems{"MERSALGVARE",
                                   "GAVEKORTVARE",
                                   "VAREGRUPPE",
                                   "VAREALIAS",
                                   "PLUMEDLEM",
                                   "PLU",
                                   "VARE",
                                   "BEHOLDNINGSTRANSAKSJONER",
                                   "DELVARE",
                                   "INTERNFLYTTINGLINJE",
                                   "PRISTILBUDLINJE",
                                   "VARETELLINGLINJE"};
const std::set<std::string> kCustomers{"RABATTKORTKUNDE", "KUNDE"};
const std::set<std::string> kStaff{"ADGANGSKORT", "ARBEIDSPLAN", "ANSATT"};
const std::set<std::string> kItemsOfSettings{"IN_SMARTKORT_VA_ID", "IN_FAKTURAGEBYR_VA_ID", "IN_MIFARE_VA_ID",
                                             "IN_BONUS_VA_ID", "IN_BETALING_VA_ID"};
constexpr char kMark[] = "IN_NUMMERSERIER_SYNKRONISERT";

const QString kReminder = QStringLiteral(
    "Husk å slett alle filer og mapper i mappene:\nReceipt, Attachment, Bank, Creditslip, Log, Report, Returnslip, \nZ");

// The till's tables as they must be: some empty, the settings with values of their own, all else as before.
Tables without(Tables before, std::initializer_list<std::set<std::string>> gone,
               const std::set<std::string>& released) {
    for (const auto& names : gone)
        for (const std::string& name : names)
            if (const auto table = before.find(name); table != before.end()) table->second.rows.clear();
    auto& settings = before.at("INNSTILLINGER");
    for (std::size_t column = 0; column < settings.columns.size(); ++column) {
        if (released.contains(settings.columns[column])) settings.rows[0][column] = "NULL";
        if (settings.columns[column] == kMark) settings.rows[0][column] = "0";
    }
    return before;
}

std::string shown(Tables tables) {
    std::string text;
    for (auto& [name, table] : tables) {
        std::sort(table.rows.begin(), table.rows.end());
        text += name + "\n";
        for (const auto& row : table.rows) {
            for (const std::string& cell : row) text += " | " + cell;
            text += "\n";
        }
    }
    return text;
}

// Two tills of one department: 1 without a reset of its own, 2 with one, which here only leaves a note.
class TillReset : public testing::Test {
protected:
    TillReset() : run({.departments = 1, .tills = 2, .days = 1, .versions = {149, 213}, .everyKind = true}) {
        joinReset(run.engine);
        run.chain.runInTill(1, "DROP PROCEDURE ResetDB CREATE TABLE Nullstilt (Nr int IDENTITY(1, 1), Annet int)");
        run.chain.runInTill(1, "CREATE PROCEDURE ResetDB AS INSERT Nullstilt (Annet) VALUES (1)");
        for (int till = 0; till < 2; ++till)
            run.chain.runInTill(
                till,
                "UPDATE INNSTILLINGER SET IN_NUMMERSERIER_SYNKRONISERT = 1, IN_SMARTKORT_VA_ID = V, "
                "IN_FAKTURAGEBYR_VA_ID = V, IN_MIFARE_VA_ID = V, IN_BONUS_VA_ID = V, IN_BETALING_VA_ID = "
                "V FROM (SELECT MIN(VA_ID) V FROM VARE) vare");
        run.engine.OnAskOperator = [this](const QString& text) {
            asked << text;
            return answer;
        };
        run.engine.OnTellOperator = [this](const QString& text) { told << text; };
        run.engine.InitializeItems = TInitializeItems{nutvOppgjor};
    }

    // As the command in the window does it, over both tills.
    void reset(int Ku_Id = -1, const QString& till = {}) {
        run.target.Close();
        run.target.Open();
        run.engine.Avdeling->ClearFilter();
        run.engine.Avdeling->SetKasseCollection(std::make_shared<TKasseCollection>());
        run.engine.InitializeTorvikPOS(Ku_Id, till);
    }
    void expectFirst(const Tables& expected) const { EXPECT_EQ(shown(run.tillTables(0)), shown(expected)); }
    void refuse(std::size_t till, const std::string& text, sandbox::FaultAction action = sandbox::FaultAction::Fail) {
        sandbox::FaultRule rule;
        rule.match.textContains = text;
        rule.action = action;
        rule.message = {.number = 50000, .severity = 16, .state = 1, .text = "ikke nå"};
        run.chain.till(till).faults().add(rule);
    }

    ChainRun run;
    bool answer = true;
    QStringList asked;
    QStringList told;
};

TEST_F(TillReset, EmptiesSalesAndLeavesTheRegisters) {
    const Tables before = run.tillTables(0);
    ASSERT_FALSE(before.at("ORDRE").rows.empty());
    const std::string office = run.backOfficeValue("SELECT COUNT(*) FROM Vare");
    reset();
    expectFirst(without(before, {kSales}, {}));
    EXPECT_EQ(run.backOfficeValue("SELECT COUNT(*) FROM Vare"), office);
    EXPECT_EQ(asked,
              QStringList{QStringLiteral("Dette vil slette alle bonger, oppgjør og logger (2 kasser). Vil du gjøre "
                                         "dette \nnå ?")});
    EXPECT_EQ(told, (QStringList{kReminder, kReminder}));
    EXPECT_EQ(run.log(), (QStringList{QStringLiteral("STARTER NULLSTILLING AV KASSE..."),
                                      QStringLiteral("fullføRT NULLSTILLING AV KASSE..."),
                                      QStringLiteral("fullføRT NULLSTILLING AV KASSE...")}));
    EXPECT_EQ(run.errors(), QStringList());
}

TEST_F(TillReset, TillThatResetsItselfIsLeftToDoSo) {
    const Tables before = run.tillTables(1);
    run.engine.InitializeItems = TInitializeItems{nutvOppgjor, nutvAnsatt};
    run.chain.runInTill(
        1,
        "ALTER TABLE ORDRE DROP CONSTRAINT FK_ORDRE_ANSATT ALTER TABLE OPPGJOR DROP CONSTRAINT "
        "FK_OPPGJOR_ANSATT ALTER TABLE EKSTRAANSATTOPPGJOR DROP CONSTRAINT FK_EKSTRAANSATTOPPGJOR_ANSATT "
        "ALTER TABLE TIMER DROP CONSTRAINT FK_TIMER_ANSATT");
    reset(1001, QStringLiteral("2"));
    Tables expected = without(before, {{"BETALINGSIGNATUR", "GENERELLSIGNATUR"}, kStaff}, {});
    expected.at("Nullstilt").rows = {{"1", "1"}};
    EXPECT_EQ(shown(run.tillTables(1)), shown(expected));
    EXPECT_EQ(run.errors(), QStringList());
}

TEST_F(TillReset, ItemsGoWithAllThatHangsOnThem) {
    run.engine.InitializeItems = TInitializeItems{nutvOppgjor, nutvVare};
    const Tables before = run.tillTables(0);
    reset(1001, QStringLiteral("1"));
    expectFirst(without(before, {kSales, kItems}, kItemsOfSettings));
    EXPECT_EQ(run.errors(), QStringList());
}

TEST_F(TillReset, CustomersAloneLeaveItemsAndStaff) {
    run.engine.InitializeItems = TInitializeItems{nutvKunde};
    const Tables before = run.tillTables(0);
    reset(1001, QStringLiteral("1"));
    expectFirst(without(before, {kSales, kCustomers}, {}));
}

TEST_F(TillReset, StaffGoWithCardsAndPlans) {
    run.engine.InitializeItems = TInitializeItems{nutvAnsatt};
    const Tables before = run.tillTables(0);
    reset(1001, QStringLiteral("1"));
    expectFirst(without(before, {kSales, kStaff}, {}));
}

TEST_F(TillReset, TillThatLacksTablesIsReset) {
    run.chain.runInTill(
        0,
        "DROP TABLE MELDINGVEDLEGG DROP TABLE MELDING DROP TABLE TIMERPRKODE DROP TABLE TIMER DROP TABLE "
        "VEDLEGG DROP TABLE KASSEUTTAK DROP TABLE PLUMEDLEM DROP TABLE PLU");
    run.engine.InitializeItems = TInitializeItems{nutvOppgjor, nutvVare, nutvKunde, nutvAnsatt};
    const Tables before = run.tillTables(0);
    reset(1001, QStringLiteral("1"));
    expectFirst(without(before, {kSales, kItems, kCustomers, kStaff}, kItemsOfSettings));
    EXPECT_EQ(run.errors(), QStringList());
}

TEST_F(TillReset, OneTillAloneIsResetWhereItIsNamed) {
    const Tables other = run.tillTables(1);
    reset(1001, QStringLiteral("1"));
    EXPECT_EQ(shown(run.tillTables(1)), shown(other));
    EXPECT_EQ(run.tillValue(0, "SELECT COUNT(*) FROM ORDRE"), "0");
    EXPECT_TRUE(asked[0].contains(QStringLiteral("(1 kasser)")));
}

TEST_F(TillReset, NoLeavesAllTillsUntouchedAndLogsNothing) {
    answer = false;
    const std::string before = run.everything();
    reset();
    EXPECT_EQ(run.everything(), before);
    EXPECT_EQ(run.log(), QStringList());
    EXPECT_EQ(told, QStringList());
    run.engine.OnAskOperator = nullptr;
    reset();
    EXPECT_EQ(run.everything(), before) << "nobody to ask";
}

TEST_F(TillReset, ServiceDoesNothing) {
    run.engine.SetRunAsService(true);
    const std::string before = run.everything();
    reset();
    run.engine.SetRunAsService(false);
    EXPECT_EQ(run.everything(), before);
    EXPECT_EQ(asked, QStringList());
    EXPECT_EQ(run.log(), QStringList());
}

// In the first till's transaction the last statement fails: none of the others stands.
TEST_F(TillReset, FailedTillIsRolledBackWholeAndTheNextIsReset) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    run.chain.runInTill(0,
                        "CREATE TABLE Holder (Nr int, An char(10) REFERENCES ANSATT (AN_ID)) INSERT Holder SELECT 1, "
                        "MIN(AN_ID) FROM ANSATT");
    run.engine.InitializeItems = TInitializeItems{nutvOppgjor, nutvAnsatt};
    run.chain.runInTill(
        1,
        "DELETE BETALINGSIGNATUR DELETE ORDRE DELETE EKSTRAANSATTOPPGJOR DELETE TIMER DELETE LOGG DELETE KASSEUTTAK DELETE VAREMOTTAKLINJE DELETE VAREMOTTAK "
        "DELETE VEDLEGG DELETE OPPGJOR");
    const Tables before = run.tillTables(0);
    Requests second(run.chain.till(1));
    reset();
    expectFirst(before);
    ASSERT_EQ(run.errors().size(), 1);
    EXPECT_TRUE(run.errors()[0].contains(QStringLiteral("REFERENCE constraint"))) << run.errors()[0].toStdString();
    EXPECT_EQ(told.size(), 1) << "of the till that was reset alone";
    EXPECT_EQ(run.tillValue(1, "SELECT COUNT(*) FROM ANSATT"), "0");
    // The list still holds the failed till's text.
    const QStringList batch = second.with(QStringLiteral("EXEC ResetDB"));
    ASSERT_EQ(batch.size(), 1);
    EXPECT_EQ(batch[0].count(QStringLiteral("EXEC ResetDB")), 2);
    EXPECT_EQ(run.tillRows(1, "SELECT COUNT(*) FROM Nullstilt"), Rows{"2"});
}

TEST_F(TillReset, TillThatTakesLongIsWaitedFor) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    delayBeyondTheUsualTimeout(run.chain.till(0), "EXEC ResetDB");
    reset(1001, QStringLiteral("1"));
    EXPECT_EQ(run.errors(), QStringList());
    EXPECT_EQ(run.tillValue(0, "SELECT COUNT(*) FROM ORDRE"), "0");
}

TEST_F(TillReset, BatchGrowsWithEachTillThatIsConnectedTo) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    run.chain.runInBackOffice(
        "UPDATE Internkundekasse SET Ikk_Database = "
        "'finnes_ikke' WHERE Ikk_Kassenummer = '1'");
    Requests second(run.chain.till(1));
    reset();
    ASSERT_EQ(run.errors().size(), 1);
    EXPECT_TRUE(run.errors()[0].contains(QStringLiteral("finnes_ikke")));
    EXPECT_EQ(told.size(), 1);
    const QStringList batch = second.with(QStringLiteral("EXEC ResetDB"));
    ASSERT_EQ(batch.size(), 1);
    EXPECT_EQ(batch[0].count(QStringLiteral("EXEC ResetDB")), 1);
}

TEST_F(TillReset, ConnectionThatBreaksLeavesTheTillAsItWas) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    const Tables before = run.tillTables(0);
    for (const char* place : {"EXEC ResetDB", "COMMIT TRANSACTION"}) {
        run.errorPane.Clear();
        told.clear();
        refuse(0, place, sandbox::FaultAction::DropBefore);
        reset();
        expectFirst(before);
        EXPECT_EQ(run.errors().size(), 1) << place;
        EXPECT_EQ(told.size(), 1) << place;
    }
}

TEST_F(TillReset, CommitWithoutAnAnswerIsNotToldAsDone) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    refuse(0, "COMMIT TRANSACTION", sandbox::FaultAction::DropAfter);
    reset();
    EXPECT_EQ(run.errors().size(), 1);
    EXPECT_EQ(told.size(), 1);
    EXPECT_EQ(run.log().count(QStringLiteral("fullføRT NULLSTILLING AV KASSE...")), 1);
}

TEST_F(TillReset, CancelTakesEffectBetweenTills) {
    const Tables other = run.tillTables(1);
    run.engine.OnTellOperator = [this](const QString&) { run.engine.SetCancelRequest(true); };
    EXPECT_THROW(reset(), EAbort);
    EXPECT_EQ(run.tillValue(0, "SELECT COUNT(*) FROM ORDRE"), "0");
    EXPECT_EQ(shown(run.tillTables(1)), shown(other));
}

// What the till has marked as fetched would be gone, and the back office does not have it.
TEST_F(TillReset, TillOfAPairThatAnotherMachineHasLeftIsRefused) {
    run.target.Open();
    PairIntents(run.target, 1001, QStringLiteral("1"))
        .write({QUuid::createUuid(), QStringLiteral("overføring"), QUuid::createUuid(), QStringLiteral("HK-01"), {}});
    const Tables before = run.tillTables(0);
    reset();
    expectFirst(before);
    ASSERT_EQ(run.errors().size(), 1);
    EXPECT_TRUE(run.errors()[0].startsWith(
        QStringLiteral("Kassen (avd. 101, kasse 1) betjenes ikke, fordi maskin HK-01 ikke har fullført overføring")));
    EXPECT_EQ(told.size(), 1);
}

// A count of which the till committed alone: taken back on the way, and not to be lost by the reset.
TEST_F(TillReset, TillOfWhichAFetchWasTakenBackIsRefusedOnce) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    joinStockCounts(run.engine, run.joinPoints.NoteFolder);
    run.engine.VaretellingPeriode = QStringLiteral("202603");
    run.target.Open();
    sandbox::FaultRule rule;
    rule.match.textContains = "COMMIT TRANSACTION";
    rule.action = sandbox::FaultAction::Fail;
    rule.message = {.number = 50000, .severity = 16, .state = 1, .text = "ikke nå"};
    run.chain.backOffice().faults().add(rule);
    run.engine.ExecuteVaretelling();
    run.errorPane.Clear();
    const char* open = "SELECT COUNT(*) FROM OPPGJOR WHERE OP_TYPE = 'VARETELLING' AND OP_OPPDATERTTIDSPUNKT IS NULL";
    ASSERT_EQ(run.tillValue(0, open), "0") << "the till is ahead";

    reset();
    EXPECT_EQ(run.tillValue(0, open), "1");
    EXPECT_EQ(run.errors(),
              QStringList{QStringLiteral("Kassen (avd. 101, kasse 1) nullstilles ikke, fordi en avbrutt "
                                         "innhenting nettopp er avklart. Hent oppgjør og varetelling først")});
    EXPECT_EQ(told.size(), 1) << "of the other till";
    reset();
    EXPECT_EQ(run.tillValue(0, "SELECT COUNT(*) FROM OPPGJOR"), "0");
}

// Before 137 a till has no mark for its series, and the server refuses the whole batch for it.
TEST_F(TillReset, TillWithoutTheMarkIsRefusedByItsServer) {
    run.chain.runInTill(0, "ALTER TABLE INNSTILLINGER DROP COLUMN IN_NUMMERSERIER_SYNKRONISERT");
    const Tables before = run.tillTables(0);
    reset(1001, QStringLiteral("1"));
    expectFirst(before);
    EXPECT_EQ(run.errors(), QStringList{QStringLiteral("Invalid column name 'IN_NUMMERSERIER_SYNKRONISERT'.")});
}

}  // namespace
}  // namespace torvik::test
