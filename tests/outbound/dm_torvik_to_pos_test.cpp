// The walk over the steps of a send, what it tells of its progress, and its failures.
#include <gmock/gmock.h>

#include <QFile>

#include "outbound/exports/send_steps.h"
#include "tests/outbound/till_send.h"

namespace torvik::test {
namespace {

using testing::ElementsAre;

TEST(SendSteps, StandInTheirOrder) {
    int last = 0;
    for (const SendStep& step : sendSteps()) {
        EXPECT_GT(step.number, last);
        last = step.number;
        EXPECT_FALSE(step.what->empty()) << step.number;
    }
    EXPECT_EQ(last, 49);
}

class SendToATillOfVersion : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Schemas, SendToATillOfVersion,
                         testing::Values(71, 72, 110, 117, 119, 149, 178, 192, 211, 213, 225, 229));

TEST_P(SendToATillOfVersion, RunsToItsEnd) {
    TillSend send(GetParam());
    send.dm.SendPriceAndCustomer = true;
    send.dm.DeleteItem = true;
    EXPECT_EQ(send.send(), QString());
    EXPECT_EQ(send.dm.CurrentTransformation(), QStringLiteral("ExportTime"));
}

TEST(SendToATill, FailureNamesTheStepTheSessionAndTheFirstFailure) {
    TillSend send;
    send.dm.RandomSessionID = [] { return 4711; };
    send.inBackOffice("ALTER TABLE VareEksport DROP COLUMN Ve_Prislapp");
    EXPECT_EQ(send.send(),
              QStringLiteral("TorvikToPOS failed: Kassevare SessionID: 4711 Invalid column name 'Ve_Prislapp'."));
}

}  // namespace
}  // namespace torvik::test
