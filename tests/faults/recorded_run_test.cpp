// The run from which the faults are aimed: it reaches every step of the transfer and every statement of a posting, it
// has rows for each, and it is the same run each time. Without this the other tests here would prove less than they
// say.
#include <gtest/gtest.h>

#include <set>

#include "inbound/transfer/maps/table_map.h"
#include "inbound/transfer/transfer_steps.h"
#include "tests/faults/fault_stage.h"
#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

TEST(RecordedRun, SendsRequestsForEveryStepOfTheTransfer) {
    std::set<int> sent;
    for (const RecordedRequest& request : FaultStage::unfetched().run().requests) sent.insert(request.p);
    for (const TransferStep& step : transferSteps()) EXPECT_TRUE(sent.contains(step.p)) << "p=" << step.p;
}

TEST(RecordedRun, CarriesRowsForEveryTable) {
    std::string texts;
    for (const RecordedRequest& request : FaultStage::unfetched().run().requests) texts += request.text + "\n";
    for (const TableMap* map : allTableMaps())
        EXPECT_NE(texts.find(std::string("INSERT INTO ") + map->target + " "), std::string::npos) << map->target;
}

TEST(RecordedRun, HasAPairOfCommitsForTheTransferAndForEachSettlement) {
    const RecordedRun& run = FaultStage::unfetched().run();
    EXPECT_EQ(run.errors, QStringList());
    EXPECT_EQ(run.pairsOf(kFirstTill), 3U);
    EXPECT_EQ(run.pairsOf(kSecondTill), 3U);
    for (const RecordedPair& pair : run.pairs) {
        EXPECT_LT(pair.begins, pair.tillCommits);
        EXPECT_LT(pair.tillCommits, pair.backOfficeCommits);
    }
}

TEST(RecordedRun, PostsCreditOrdersStatisticsHoursAndStock) {
    const RecordedRun& run = FaultStage::unfetched().run();
    for (std::size_t pair = 1; pair <= 2; ++pair)
        for (const char* table : {"ORDRE", "ORDRELINJE", "Butikksalg", "timesalg", "Varebeholdning", "PosOrdre"})
            EXPECT_NE(run.states[pair].backOffice.at(table), run.states[pair + 1].backOffice.at(table))
                << table << " by settlement " << pair;
}

TEST(RecordedRun, IsTheSameEachTime) {
    const RecordedRun& first = FaultStage::unfetched().run();
    const auto copy = FaultStage::unfetched().copy();
    const RecordedRun second = record(copy->chain, *copy->program());

    ASSERT_EQ(second.requests.size(), first.requests.size());
    for (std::size_t i = 0; i < first.requests.size(); ++i)
        ASSERT_EQ(second.requests[i].text, first.requests[i].text) << "request " << i;
    EXPECT_EQ(difference(first.states.back(), second.states.back()), "");
}

TEST(RecordedRun, ARunAfterAGoodRunChangesNothing) {
    const auto copy = FaultStage::unfetched().copy();
    const auto program = copy->program();
    program->fetch();
    const ChainState after = readState(copy->chain);
    EXPECT_EQ(copy->standingPairs() + copy->notes(), 0U);

    program->fetch();

    EXPECT_EQ(program->errors(), QStringList());
    EXPECT_EQ(difference(after, readState(copy->chain)), "");
}

}  // namespace
}  // namespace torvik::test
