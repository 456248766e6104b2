// Reads that go together leave what reads one by one leave: the same tables, the same lines, the same failures.
#include <gtest/gtest.h>

#include <QDate>
#include <algorithm>
#include <regex>

#include "tests/faults/chain_state.h"
#include "tests/support/chain_run.h"
#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

using sandbox::chain::ChainOptions;

// What two runs leave and tell, with the reads together or one by one, on a chain of its own.
struct Left {
    ChainState tables;
    std::string log;
    std::string errors;
};

// Of moments of a run, where they stand in a column that else tells those of sales.
void forgetToday(TableLines& tables) {
    const std::regex moment(QDate::currentDate().toString(Qt::ISODate).toStdString() + R"( \d\d:\d\d:\d\d\.\d{3})");
    for (auto& [name, lines] : tables)
        for (std::string& line : lines) line = std::regex_replace(line, moment, "now");
}

ChainState stateOf(sandbox::chain::DemoChain& chain) {
    ChainState state = readState(chain);
    forgetToday(state.backOffice);
    for (TableLines& till : state.tills) forgetToday(till);
    return state;
}

using Choose = std::function<void(TTorvikPos&)>;

Left leftBy(const ChainOptions& options, bool together, const std::string& onFirstTill, const Choose& choose) {
    ChainRun run(options);
    if (!onFirstTill.empty()) run.chain.runInTill(0, onFirstTill);
    run.engine.ReadsTogether = together;
    if (choose) choose(run.engine);
    run.fetch();
    run.fetch();  // with nothing new
    return {stateOf(run.chain), run.log().join(u'\n').toStdString(), run.errors().join(u'\n').toStdString()};
}

// Gives what the run with the reads together has left.
Left expectTheSame(const ChainOptions& options, const std::string& onFirstTill = {}, const Choose& choose = {}) {
    Left together = leftBy(options, true, onFirstTill, choose);
    const Left oneByOne = leftBy(options, false, onFirstTill, choose);
    EXPECT_EQ(together.errors, oneByOne.errors);
    EXPECT_EQ(together.log, oneByOne.log);
    EXPECT_EQ(difference(oneByOne.tables, together.tables), "");
    return together;
}

TEST(ReadsTogether, LeaveAChainOfEveryVersionAsReadsOneByOneDo) {
    expectTheSame(
        {.departments = 2, .tills = 6, .days = 1, .versions = {137, 149, 158, 188, 198, 229}, .everyKind = true});
}

TEST(ReadsTogether, LeaveASingleBackOfficeAsReadsOneByOneDo) {
    expectTheSame({.departments = 1, .tills = 1, .days = 1}, {},
                  [](TTorvikPos& engine) { engine.IsEnterprise = false; });
}

TEST(ReadsTogether, LeaveGiftCardsAndCreditNotesAsReadsOneByOneDo) {
    expectTheSame({.departments = 1, .tills = 2, .days = 1}, {}, [](TTorvikPos& engine) {
        engine.IncludeGiftVoucherOnOppgjor = engine.IncludeCreditCouponOnOppgjor = true;
    });
}

struct Lack {
    const char* name;
    const char* batch;   // on the first till
    const char* failed;  // what the run says of it
};

class TillThatLacks : public testing::TestWithParam<Lack> {};

// The till refuses what was sent together, and the step that cannot be done says so with its own name and number.
TEST_P(TillThatLacks, FailsAsItDoesOneByOne) {
    const Left left = expectTheSame({.departments = 1, .tills = 2, .days = 1}, GetParam().batch);
    EXPECT_NE(left.errors.find(GetParam().failed), std::string::npos) << left.errors;
}

constexpr Lack kLacks[] = {
    {"AColumn", "ALTER TABLE ORDRELINJE DROP COLUMN OL_KORREKSJON", "Ordrelinje feilet (p=15): Invalid column name"},
    {"ATable", "DROP TABLE VAREMOTTAKLINJE", "Varemottaklinje feilet (p=27): Invalid object name"},
    {"ALastTable", "DROP TABLE TIMERPRKODE", "TimerPrKode feilet (p=41): Invalid object name"},
    {"AVersionThatIsANumber", "UPDATE INNSTILLINGER SET IN_DBVERSION = 'ny'", "'ny' is not a valid integer value"},
    {"TheColumnOfTheVersion", "EXEC sp_rename 'INNSTILLINGER.IN_DBVERSION', 'IN_VERSJON', 'COLUMN'",
     "Invalid column name 'in_dbversion'"},
    {"TheReleaseTime", "ALTER TABLE INNSTILLINGER DROP COLUMN IN_KLAR_HENT_TIMER",
     "Oppdater Timer feilet (p=43): Invalid column name"},
};

INSTANTIATE_TEST_SUITE_P(Each, TillThatLacks, testing::ValuesIn(kLacks),
                         [](const auto& test) { return std::string(test.param.name); });

// The till's BEGIN TRANSACTION rides with the first questions of the steps: before it, and behind it.
TEST(ReadsTogether, ABeginThatRodeInARefusedBatchIsBegunAnew) {
    for (const auto level : {sandbox::FaultLevel::Request, sandbox::FaultLevel::Statement}) {
        ChainRun run({.departments = 1, .tills = 1, .days = 1});
        TORVIK_NEEDS_SANDBOX(run.chain);
        sandbox::FaultRule refusal;
        refusal.match.textContains = "SELECT IN_DBVERSION FROM INNSTILLINGER";
        refusal.level = level;
        refusal.skip = 1;  // the question behind the login
        refusal.action = sandbox::FaultAction::Fail;
        refusal.message = {.number = 50000, .severity = 16, .state = 1, .text = "Made to fail"};
        run.chain.till(0).faults().add(refusal);
        run.chain.till(0).faults().keepLog();

        run.fetch();

        EXPECT_EQ(run.errors(), QStringList());
        EXPECT_TRUE(run.postedWhole());
        const auto log = run.chain.till(0).faults().log();
        EXPECT_TRUE(std::any_of(log.begin(), log.end(), [](const sandbox::LoggedRequest& request) {
            return request.failed && request.request.text.find("BEGIN TRANSACTION") != std::string::npos;
        }));
    }
}

// A till that is cut in the middle of what it was asked together: nothing of the pair stands, the next till is fetched,
// and the next run makes good.
TEST(ReadsTogether, ATillThatIsLostInTheMiddleIsFetchedByTheNextRun) {
    for (const char* read : {"FROM Oppgjor WHERE OP_ID >=", "FROM ORDRE,ORDRELINJE", "FROM TIMERPRKODE"}) {
        ChainRun run({.departments = 1, .tills = 2, .days = 1});
        TORVIK_NEEDS_SANDBOX(run.chain);
        sandbox::FaultRule cut;
        cut.match.textContains = read;
        cut.level = sandbox::FaultLevel::Statement;
        cut.action = sandbox::FaultAction::DropBefore;
        run.chain.till(0).faults().add(cut);

        run.fetch();
        EXPECT_TRUE(run.errors().join(u'\n').contains(QStringLiteral("feilet (p="))) << read;
        EXPECT_TRUE(run.posted({1})) << read;
        EXPECT_EQ(run.tillValue(0, "SELECT COUNT(*) FROM OPPGJOR WHERE OP_OPPDATERTTIDSPUNKT IS NOT NULL"), "0");

        run.errorPane.Clear();
        run.fetch();
        EXPECT_EQ(run.errors(), QStringList()) << read;
        EXPECT_TRUE(run.postedWhole()) << read;
    }
}

}  // namespace
}  // namespace torvik::test
