// The faults after which the next run does not make good, one test for each: docs/failures.md lists them. All others
// are in the tests of the transfer and of the postings.
#include <gtest/gtest.h>

#include "tests/faults/fault_case.h"
#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

using Tables = std::vector<std::string>;

// The tables of the back office that differ for good from those of a run without a fault.
Tables lostBy(const RecordedRequest& at, Fault fault) {
    const FaultStage& stage = FaultStage::unfetched();
    const auto copy = stage.copy();
    EXPECT_EQ(runWithFault(*copy, at, fault).struck, at.text);
    FaultProgram next(copy->chain.dataLink());
    next.fetch();
    EXPECT_EQ(next.errors(), QStringList());
    const ChainState good = stage.run().states.back();
    const ChainState state = readState(copy->chain);
    EXPECT_EQ(difference(good.tills[0], state.tills[0]) + difference(good.tills[1], state.tills[1]), "");
    return differingTables(good.backOffice, state.backOffice);
}

const RecordedRequest& backOfficeCommit(std::size_t pair) {
    const RecordedRun& run = FaultStage::unfetched().run();
    return run.requests[run.pairs[pair].backOfficeCommits];
}

const RecordedRequest& tillCommit(std::size_t pair) {
    const RecordedRun& run = FaultStage::unfetched().run();
    return run.requests[run.pairs[pair].tillCommits];
}

const Tables kOfATransfer{"POSGAVEKORT", "POSTilgodelapp", "PosTimer", "PosTimerPrKode"};
const Tables kOfASettlement{"Butikksalg", "Ledignummer",    "ORDRE",   "ORDRELINJE",
                            "PosOrdre",   "Varebeholdning", "timesalg"};

TEST(PairOfCommits, TransferThatTheBackOfficeDoesNotCommitLosesVouchersAndTimeEntries) {
    EXPECT_EQ(lostBy(backOfficeCommit(0), Fault::Fails), kOfATransfer);
    EXPECT_EQ(lostBy(backOfficeCommit(0), Fault::DropsBefore), kOfATransfer);
}

TEST(PairOfCommits, SettlementThatTheBackOfficeDoesNotCommitLosesItsPosting) {
    EXPECT_EQ(lostBy(backOfficeCommit(1), Fault::Fails), kOfASettlement);
    EXPECT_EQ(lostBy(backOfficeCommit(2), Fault::DropsBefore), kOfASettlement);
}

TEST(PairOfCommits, TillCommitInDoubtIsRolledBackAtTheBackOffice) {
    EXPECT_EQ(lostBy(tillCommit(0), Fault::DropsAfter), kOfATransfer);
    EXPECT_EQ(lostBy(tillCommit(1), Fault::DropsAfter), kOfASettlement);
}

TEST(PairOfCommits, BackOfficeCommitInDoubtLosesNothing) {
    EXPECT_EQ(lostBy(backOfficeCommit(0), Fault::DropsAfter), Tables());
    EXPECT_EQ(lostBy(backOfficeCommit(1), Fault::DropsAfter), Tables());
}

// A session that is lost without a statement under way is found before either side commits.
TEST(PairOfCommits, NeitherSideCommitsWhenOneIsLost) {
    const RecordedRun& run = FaultStage::unfetched().run();
    for (const std::size_t pair : {std::size_t{0}, std::size_t{1}})
        for (const Fault fault : {Fault::OtherSideDrops, Fault::Deadlocks})
            for (std::size_t back = 1; back <= 2; ++back)
                EXPECT_EQ(lostBy(run.requests[run.pairs[pair].tillCommits - back], fault), Tables())
                    << nameOf(fault) << ", pair " << pair << ", " << back << " before the commit";
}

TEST(OtherExceptions, HourlyTurnoverOfASettlementThatIsPostedTwiceAddsUp) {
    const auto copy = FaultStage::unfetched().copy();
    FaultProgram program(copy->chain.dataLink());
    program.fetch();
    const ChainState once = readState(copy->chain);
    // As on a till that has been restored from a backup.
    copy->chain.runInTill(0, "UPDATE OPPGJOR SET OP_OPPDATERTTIDSPUNKT = NULL WHERE OP_ID = 1");

    program.fetch();

    EXPECT_EQ(program.errors(), QStringList());
    const ChainState twice = readState(copy->chain);
    EXPECT_EQ(differingTables(once.backOffice, twice.backOffice), Tables{"timesalg"});
    EXPECT_EQ(difference(once.tills[0], twice.tills[0]), "");
}

TEST(OtherExceptions, ABatchOfGiftCardsThatIsRefusedIsGivenUp) {
    const RecordedRun& run = FaultStage::unfetched().run();
    for (const RecordedRequest& request : run.requests)
        if (request.text.find("INSERT INTO POSGAVEKORT") != std::string::npos) {
            EXPECT_EQ(lostBy(request, Fault::Fails), Tables{"POSGAVEKORT"});
            EXPECT_EQ(lostBy(request, Fault::Deadlocks), Tables());
            break;
        }
}

TEST(OtherExceptions, TheNumberOfUnsettledSalesStandsWhenTheTransferFails) {
    const RecordedRun& run = FaultStage::unfetched().run();
    const auto copy = FaultStage::unfetched().copy();
    copy->chain.runInBackOffice(
        "UPDATE Internkundekasse SET Ikk_AntIkkeOppgjorteSalg = 99, Ikk_SistHentetOppgjor = NULL");

    EXPECT_FALSE(runWithFault(*copy, run.requests[run.pairs.front().begins + 1], Fault::Fails).errors.isEmpty());

    EXPECT_EQ(difference(stateAfter(run, {.pairs = 0}, true), readState(copy->chain)), "");
}

}  // namespace
}  // namespace torvik::test
