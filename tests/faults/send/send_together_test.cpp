// A send whose statements go together leaves what one leaves that sends each by itself: the same tables and procedures,
// the same lines, the same failures at the same steps.
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>

#include "engine/db/query.h"
#include "outbound/exports/send_steps.h"
#include "tests/faults/send/send_stage.h"
#include "tests/support/chain_session.h"
#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

using Choose = std::function<void(TTorvikPos&)>;
using Procedures = std::map<std::string, std::string>;  // text by name

struct Left {
    ChainState tables;
    std::vector<Procedures> procedures;  // of each till
    std::string log;
    std::string errors;
};

std::string withoutSession(const QStringList& lines) {
    static const std::regex number(R"(SessionID: \d+)");
    return std::regex_replace(lines.join(u'\n').toStdString(), number, "SessionID: n");
}

Procedures proceduresOf(const sandbox::chain::DemoChain& chain, std::size_t till) {
    const auto session = tillSession(chain, till);
    db::Query query(session.get());
    query.SQL = {
        QStringLiteral("SELECT o.name, m.definition FROM sysobjects o JOIN sys.sql_modules m "
                       "ON m.object_id = o.id WHERE o.xtype = 'P'")};
    Procedures all;
    for (query.Open(); !query.Eof(); query.Next())
        all[query.text("name").toStdString()] = query.text("definition").toStdString();
    return all;
}

// One send over a chain.
Left sendOnce(ChainCopy& copy, bool together, const Choose& choose = {}) {
    const auto program = sendProgram(copy);
    program->engine.ReadsTogether = together;
    if (choose) choose(program->engine);
    EXPECT_EQ(program->send(), QString());
    Left left{readState(copy.chain), {}, withoutSession(program->log()), withoutSession(program->errors())};
    for (std::size_t till = 0; till < copy.chain.model().tills.size(); ++till)
        left.procedures.push_back(proceduresOf(copy.chain, till));
    return left;
}

void expectTheSame(const Left& together, const Left& oneByOne) {
    EXPECT_EQ(together.errors, oneByOne.errors);
    EXPECT_EQ(together.log, oneByOne.log);
    EXPECT_EQ(together.procedures, oneByOne.procedures);
    EXPECT_EQ(difference(oneByOne.tables, together.tables), "");
}

void changesOnly(TTorvikPos& engine) {
    engine.VareOppdateringUtvalg = vopEndrede;
    engine.SetDeleteItemsOnSend(false);
}

constexpr const char* kADaysChanges = R"sql(
UPDATE Vare SET Va_Navn = 'Endret' WHERE Va_Id LIKE '%3'
UPDATE Pris SET Ps_Prisen = Ps_Prisen + 1, Ps_UpdDato = CONVERT(varchar(8), GETDATE(), 112) WHERE Ps_Va_Id LIKE '%3'
UPDATE POSGRUNN SET Pos_Gr_Navn = 'Endret grunn' WHERE Pos_Gr_Id = 1
UPDATE Leverandor SET Le_Navn = 'Endret' WHERE Le_Id = 1
)sql";

// A whole send, a send of changes with something changed, and one with nothing changed.
void expectThreeSendsTheSame(ChainCopy& together, ChainCopy& oneByOne) {
    const auto expectASendTheSame = [&](const Choose& choose) {
        const Left left = sendOnce(together, true, choose);
        EXPECT_EQ(left.errors, "");
        expectTheSame(left, sendOnce(oneByOne, false, choose));
    };
    expectASendTheSame({});
    for (ChainCopy* copy : {&together, &oneByOne}) copy->chain.runInBackOffice(kADaysChanges);
    expectASendTheSame(changesOnly);
    expectASendTheSame(changesOnly);
}

TEST(SendTogether, LeavesWhatSingleStatementsLeave) {
    const auto together = SendStage::get().copy();
    const auto oneByOne = SendStage::get().copy();
    expectThreeSendsTheSame(*together, *oneByOne);
}

// A till on either side of every version at which a step differs.
TEST(SendTogether, LeavesTillsOfEveryVersionAsSingleStatementsDo) {
    const sandbox::chain::ChainOptions options{
        .departments = 3,
        .tills = 13,
        .days = 1,
        .items = 12,
        .tillItems = 5,
        .ordersADay = 2,
        .versions = {71, 72, 110, 117, 119, 149, 178, 192, 198, 211, 213, 225, 229},
        .everyKind = true};
    const ChainFolder folder;
    sandbox::chain::DemoChain({.chain = options, .dataDir = folder.files()});
    ChainCopy together(folder.files(), options);
    ChainCopy oneByOne(folder.files(), options);
    expectThreeSendsTheSame(together, oneByOne);
}

// What goes together, and is refused once: the send goes on with single statements and leaves what a good one leaves.
TEST(SendTogether, WhatIsRefusedTogetherOnceIsDoneOneByOne) {
    struct Part {
        std::size_t server;
        const char* text;
    };
    for (const Part& part : {Part{kFirstTill, "where name='KUPONG"}, Part{kFirstTill, "OBJECT_ID(N'PRODUKTIMPORT')"},
                             Part{kFirstTill, "INSERT INTO VAREGRUPPEIMPORT"}, Part{kBackOffice, "FROM leverandor"},
                             Part{kBackOffice, "FROM POSGRUNN"}, Part{kBackOffice, "From POSTIMEPROFIL"}})
        for (const auto level : {sandbox::FaultLevel::Request, sandbox::FaultLevel::Statement}) {
            const auto copy = SendStage::get().copy();
            sandbox::FaultRule refusal;
            refusal.match.textContains = part.text;
            refusal.level = level;
            refusal.action = sandbox::FaultAction::Fail;
            refusal.message = {.number = 50000, .severity = 16, .state = 1, .text = "Made to fail"};
            serverOf(copy->chain, part.server).faults().add(refusal);
            serverOf(copy->chain, part.server).faults().keepLog();

            const Left left = sendOnce(*copy, true);

            const auto log = serverOf(copy->chain, part.server).faults().log();
            EXPECT_TRUE(std::any_of(log.begin(), log.end(), [](const auto& request) { return request.failed; }))
                << part.text;
            EXPECT_EQ(left.errors, "") << part.text;
            EXPECT_EQ(difference(SendStage::get().run().end, left.tables), "") << part.text;
        }
}

struct Hindrance {
    const char* name;
    const char* batch;   // on the first till
    const char* failed;  // what the run says of it
};

class HinderedTill : public testing::TestWithParam<Hindrance> {};

// Where all work tables were made at once, those of the steps behind the failing one have lost what an earlier send had
// left in them. Nobody else reads them.
void forgetWorkTables(ChainState& state) {
    for (TableLines& till : state.tills)
        for (const SendStep& step : sendSteps())
            for (const Action& action : *step.what)
                if (const auto* create = std::get_if<CreateTables>(&action))
                    for (const WorkTable* table : create->tables) till.erase(table->name);
}

TEST_P(HinderedTill, FailsAtTheSameStepAndIsLeftTheSame) {
    const auto left = [](bool together) {
        const auto copy = SendStage::get().copy();
        copy->chain.runInTill(0, GetParam().batch);
        return sendOnce(*copy, together);
    };
    Left together = left(true);
    Left oneByOne = left(false);
    EXPECT_NE(together.errors.find(GetParam().failed), std::string::npos) << together.errors;
    for (Left* one : {&together, &oneByOne}) forgetWorkTables(one->tables);
    expectTheSame(together, oneByOne);
}

constexpr Hindrance kHindrances[] = {
    {"AVersionThatIsNoNumber", "UPDATE INNSTILLINGER SET IN_DBVERSION = 'ny'", "'ny' is not a valid integer value"},
    {"ATableThatIsAskedForAhead", "DROP TABLE MERSALGVARE",
     "TorvikToPOS failed: Mersalgvare SessionID: n Invalid object name"},
    {"AViewInThePlaceOfTheFirstWorkTable", "EXEC('CREATE VIEW PRODUKTIMPORT AS SELECT 1 AS a')",
     "TorvikToPOS failed: Kassevare SessionID: n There is already an object named 'PRODUKTIMPORT'"},
    {"AViewInThePlaceOfALaterWorkTable",
     "IF OBJECT_ID('RabattkortImport') IS NOT NULL DROP TABLE RabattkortImport "
     "EXEC('CREATE VIEW RabattkortImport AS SELECT 1 AS a')",
     "TorvikToPOS failed: Rabattkortimport SessionID: n There is already an object named 'RabattkortImport'"},
    {"AColumnOfAMerge", "ALTER TABLE TIMEPROFIL DROP COLUMN TP_STEMPLINGSREGEL",
     "TorvikToPOS failed: Rabattmatrise SessionID: n Invalid column name 'TP_STEMPLINGSREGEL'"},
    {"AViewInThePlaceOfAProcedure",
     "IF OBJECT_ID('InsertRabattMatrise') IS NOT NULL DROP PROCEDURE InsertRabattMatrise "
     "EXEC('CREATE VIEW InsertRabattMatrise AS SELECT 1 AS a')",
     "TorvikToPOS failed: Rabattmatrise SessionID: n There is already an object named 'InsertRabattMatrise'"},
    {"AViewInThePlaceOfTheThirdProcedureOfFive",
     "IF OBJECT_ID('InsertLeverandor') IS NOT NULL DROP PROCEDURE InsertLeverandor "
     "IF OBJECT_ID('InsertDelvare') IS NOT NULL DROP PROCEDURE InsertDelvare "
     "EXEC('CREATE VIEW InsertLeverandor AS SELECT 1 AS a')",
     "TorvikToPOS failed: Vare SessionID: n There is already an object named 'InsertLeverandor'"},
    {"ATableOfAProcedure", "DROP TABLE DELVARE", "TorvikToPOS failed: Vare SessionID: n Invalid object name"},
    {"ATableOfTheVouchers", "EXEC sp_rename 'GAVEKORT', 'GAVEKORTENE'",
     "TorvikToPOS failed: Gavekort SessionID: n Invalid object name"},
};

INSTANTIATE_TEST_SUITE_P(Each, HinderedTill, testing::ValuesIn(kHindrances),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace torvik::test
