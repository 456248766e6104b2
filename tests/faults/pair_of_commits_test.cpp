// The moment between the two commits of a pair, and around it: what stands afterwards, and that the next run makes
// good. What it does not make good is at the end: docs/failures.md lists it.
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
    const auto next = copy->program();
    next->fetch();
    EXPECT_EQ(next->errors(), QStringList());
    EXPECT_EQ(copy->standingPairs() + copy->notes(), 0U);
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

// Whether the pair stands on the till and at the back office right after the run with the fault.
std::pair<bool, bool> sidesThatStand(const RecordedRequest& at, Fault fault, std::size_t pair) {
    const RecordedRun& run = FaultStage::unfetched().run();
    const auto copy = FaultStage::unfetched().copy();
    EXPECT_EQ(runWithFault(*copy, at, fault).struck, at.text);
    const ChainState state = readState(copy->chain);
    const ChainState with = stateAfter(run, {.pairs = pair + 1}, true);
    const ChainState without = stateAfter(run, {.pairs = pair}, true);
    const auto stands = [](const TableLines& tables, const TableLines& whole, const TableLines& none) {
        const bool all = tables == whole;
        EXPECT_TRUE(all || tables == none) << difference(none, tables);
        return all;
    };
    return {stands(state.tills[0], with.tills[0], without.tills[0]),
            stands(state.backOffice, with.backOffice, without.backOffice)};
}

constexpr std::pair kBoth{true, true};
constexpr std::pair kTillAhead{true, false};
constexpr std::pair kNeither{false, false};

TEST(PairOfCommits, WhatTheBackOfficeDoesNotCommitIsTakenBackOnTheTillAndFetchedAgain) {
    for (const std::size_t pair : {std::size_t{0}, std::size_t{1}, std::size_t{2}})
        for (const Fault fault : {Fault::Fails, Fault::Deadlocks, Fault::DropsBefore}) {
            SCOPED_TRACE(nameOf(fault) + ", pair " + std::to_string(pair));
            EXPECT_EQ(sidesThatStand(backOfficeCommit(pair), fault, pair), kTillAhead);
            EXPECT_EQ(lostBy(backOfficeCommit(pair), fault), Tables());
        }
}

TEST(PairOfCommits, BackOfficeThatIsLostAtTheTillsCommitLosesNothing) {
    for (const std::size_t pair : {std::size_t{0}, std::size_t{1}}) {
        EXPECT_EQ(sidesThatStand(tillCommit(pair), Fault::OtherSideDrops, pair), kTillAhead);
        EXPECT_EQ(lostBy(tillCommit(pair), Fault::OtherSideDrops), Tables());
    }
}

TEST(PairOfCommits, TillCommitWhoseAnswerIsLostIsLookedUpAndThePairStands) {
    for (const std::size_t pair : {std::size_t{0}, std::size_t{1}, std::size_t{2}}) {
        EXPECT_EQ(sidesThatStand(tillCommit(pair), Fault::DropsAfter, pair), kBoth) << pair;
        EXPECT_EQ(lostBy(tillCommit(pair), Fault::DropsAfter), Tables());
    }
}

TEST(PairOfCommits, TillCommitThatNeverArrivedIsLookedUpAndNothingStands) {
    for (const std::size_t pair : {std::size_t{0}, std::size_t{1}, std::size_t{2}}) {
        EXPECT_EQ(sidesThatStand(tillCommit(pair), Fault::DropsBefore, pair), kNeither) << pair;
        EXPECT_EQ(lostBy(tillCommit(pair), Fault::DropsBefore), Tables());
    }
}

// The till cannot be asked: the back office is rolled back, and the next run finds out.
TEST(PairOfCommits, TillCommitThatCannotBeLookedUpIsLeftToTheNextRun) {
    const FaultStage& stage = FaultStage::unfetched();
    for (const std::size_t pair : {std::size_t{0}, std::size_t{1}}) {
        const auto copy = stage.copy();
        const RecordedRequest& at = tillCommit(pair);
        sandbox::FaultRule cut;
        cut.skip = at.place - 1;
        cut.action = sandbox::FaultAction::DropAfter;
        copy->chain.till(0).faults().add(cut);
        {
            const RequestWatch watch(copy->chain,
                                     [&](std::size_t server, std::uint64_t place, const sandbox::RequestInfo&) {
                                         if (server == kFirstTill && place == at.place)
                                             copy->chain.till(0).stopListening();
                                     });
            copy->program()->fetch();
        }
        copy->chain.till(0).faults().clear();
        copy->chain.till(0).startListening();
        EXPECT_EQ(copy->standingPairs(), 1U);
        EXPECT_EQ(copy->notes(), 1U);
        EXPECT_EQ(readState(copy->chain).tills[0], stage.run().states[pair + 1].tills[0]);

        expectNextRunMakesGood(stage, *copy, {});
    }
}

TEST(PairOfCommits, BackOfficeCommitInDoubtLosesNothing) {
    EXPECT_EQ(sidesThatStand(backOfficeCommit(0), Fault::DropsAfter, 0), kBoth);
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
    const auto running = copy->program();
    FaultProgram& program = *running;
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
            return;
        }
    FAIL() << "the recorded run sends no batch of gift cards";
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
