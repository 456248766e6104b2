// The walk over the steps of a send, what it tells of its progress, and its failures.
#include <gmock/gmock.h>

#include <QFile>

#include "engine/base/failure_kind.h"
#include "outbound/exports/send_steps.h"
#include "tests/outbound/till_send.h"
#include "tests/support/sandbox_requests.h"

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

// The choice of a whole register, and its merge, take as long as they need.
class SlowServer : public testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(OfASend, SlowServer,
                         testing::Values("KasseVareAlle", "FROM VareEksport (NOLOCK), Vare", "exec InsertVaregruppe"));

TEST_P(SlowServer, IsWaitedFor) {
    TillSend send;
    TORVIK_NEEDS_SANDBOX(send.run.chain);
    send.dm.RandomSessionID = [&] {
        for (sandbox::Server* server : {&send.run.chain.backOffice(), &send.run.chain.till(0)})
            delayBeyondTheUsualTimeout(*server, GetParam());
        return 17;
    };
    EXPECT_EQ(send.send(), QString());
}

// What a failure means is asked behind the words that a send adds to it.
TEST(SendToATill, FailureKeepsItsKind) {
    TillSend send;
    TORVIK_NEEDS_SANDBOX(send.run.chain);
    const auto kindWhen = [&](sandbox::FaultAction action) {
        sandbox::FaultRule rule;
        rule.match.textContains = "DELETE FROM MersalgVare";
        rule.action = action;
        rule.message = {.number = 50000, .severity = 16, .state = 1, .text = "Made to fail"};
        send.run.chain.till(0).faults().add(rule);
        EXPECT_EQ(send.send().section(u' ', 0, 2), QStringLiteral("TorvikToPOS failed: Mersalgvare"));
        return classify(send.failure);
    };
    EXPECT_EQ(kindWhen(sandbox::FaultAction::Fail), FailureKind::Refused);
    EXPECT_EQ(kindWhen(sandbox::FaultAction::DropBefore), FailureKind::ConnectionLost);
    send.dm.CheckForCancel = true;
    EXPECT_TRUE(send.send().contains(QStringLiteral("Avbrutt av bruker. Avbrutt oppgave: ")));
    EXPECT_EQ(classify(send.failure), FailureKind::Other) << "this cancel is no silent abort";
}

// Gift cards are merged in a transaction that locks them: a till that does not take it back is not left with it.
TEST(SendToATill, TransactionThatTheTillDoesNotTakeBackGoesWithTheSession) {
    TillSend send;
    TORVIK_NEEDS_SANDBOX(send.run.chain);
    const auto refuse = [&](const char* text) {
        sandbox::FaultRule rule;
        rule.match.textContains = text;
        rule.level = sandbox::FaultLevel::Statement;
        rule.action = sandbox::FaultAction::Fail;
        rule.message = {.number = 50000, .severity = 16, .state = 1, .text = "Made to fail"};
        send.run.chain.till(0).faults().add(rule);
    };
    send.dm.RandomSessionID = [] { return 4711; };
    send.dm.OnLog = [&](const QString& line) {
        if (!line.contains(QLatin1String("i tabellen PRISTILBUDLINJE"))) return;  // the last load before the merge
        refuse("commit transaction");
        refuse("ROLLBACK TRANSACTION");
    };
    EXPECT_EQ(send.send(), QStringLiteral("TorvikToPOS failed: Gavekort SessionID: 4711 Made to fail"));
    EXPECT_FALSE(send.run.source.Connected());
    EXPECT_EQ(send.till("SELECT COUNT(*) FROM master..sysprocesses WHERE open_tran > 0"), Rows{"0"});
}

}  // namespace
}  // namespace torvik::test
