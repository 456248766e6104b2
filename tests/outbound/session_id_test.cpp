// The number of a send: no two sends have one at the same time, and none takes over rows that a failed one has left.
#include "outbound/driver/session_id.h"

#include <gtest/gtest.h>

#include "engine/base/abort.h"
#include "tests/outbound/till_send.h"
#include "tests/support/sandbox_requests.h"

namespace torvik::test {
namespace {

class SessionIDs : public testing::Test {
protected:
    SessionIDs() {
        send.run.target.Open();
        other.SetConnectString(send.run.target.ConnectString());
        other.Open();
    }
    // Draws these in turn, and then the last of them again and again.
    static std::function<int()> drawing(QList<int> numbers) {
        return [numbers]() mutable { return numbers.size() > 1 ? numbers.takeFirst() : numbers.front(); };
    }
    TillSend send{213};
    db::Session other;
};

TEST_F(SessionIDs, OneThatAnotherSendHoldsIsDrawnAgain) {
    const SendSessionID first(send.run.target, drawing({17}));
    EXPECT_EQ(first.text(), QStringLiteral("17"));
    const SendSessionID second(other, drawing({17, 17, 18}));
    EXPECT_EQ(second.text(), QStringLiteral("18"));
}

TEST_F(SessionIDs, OneIsFreeAgainBehindItsSend) {
    { const SendSessionID first(send.run.target, drawing({17})); }
    const SendSessionID second(other, drawing({17, 18}));
    EXPECT_EQ(second.text(), QStringLiteral("17"));
}

TEST_F(SessionIDs, OneIsFreeAgainWhenItsSessionIsLost) {
    auto first = std::make_unique<SendSessionID>(send.run.target, drawing({17}));
    send.run.target.Close();
    const SendSessionID second(other, drawing({17}));  // the server hears of it soon
    EXPECT_EQ(second.text(), QStringLiteral("17"));
}

TEST_F(SessionIDs, OneWhoseRowsAFailedSendHasLeftIsDrawnAgainAndNotHeld) {
    send.inBackOffice(
        "INSERT VareEksport (Ve_SesjonID, Ve_InsDato, Ve_Va_ID, Ve_Va_Navn, Ve_Pris, Ve_Va_Utgaatt, "
        "Ve_Varegruppe) VALUES ('17', GETDATE(), 'X', 'Rest', 1, 0, '')");
    const SendSessionID first(send.run.target, drawing({17, 18}));
    EXPECT_EQ(first.text(), QStringLiteral("18"));
    send.inBackOffice("DELETE VareEksport");
    const SendSessionID second(other, drawing({17, 19}));
    EXPECT_EQ(second.text(), QStringLiteral("17"));
}

// Another copy's choice of a whole register holds what it writes for minutes: nobody waits for it to draw a number.
TEST_F(SessionIDs, AreDrawnWithoutWaitingForTheItemsOfOthers) {
    TORVIK_NEEDS_SANDBOX(send.run.chain);
    Requests asked(send.run.chain.backOffice());
    const SendSessionID drawn(other, drawing({17}));
    const QStringList draws = asked.with(QStringLiteral("FROM VareEksport"));
    ASSERT_EQ(draws.size(), 1);
    EXPECT_EQ(draws[0].count(QStringLiteral("FROM VareEksport (NOLOCK) WHERE Ve_SesjonID = '17'")), 1);
}

TEST_F(SessionIDs, AreWaitedForAsLongAsTheBackOfficeNeeds) {
    TORVIK_NEEDS_SANDBOX(send.run.chain);
    delayBeyondTheUsualTimeout(send.run.chain.backOffice(), "TorvikPosSync.SesjonID.17");
    const SendSessionID drawn(other, drawing({17}));
    EXPECT_EQ(drawn.text(), QStringLiteral("17"));
}

TEST_F(SessionIDs, AreNotDrawnForEver) {
    const SendSessionID first(send.run.target, drawing({17}));
    EXPECT_THROW(SendSessionID(other, drawing({17})), EngineError);
}

TEST_F(SessionIDs, OfASendIsItsOwnWhileItLastsAndFreeAfterAFailureToo) {
    send.dm.RandomSessionID = drawing({17});
    bool heldDuring = false;
    send.dm.OnProgress = [&](QObject*, int, const QString& text) {
        if (text.contains(QStringLiteral("LEVERANDOR")))
            heldDuring = SendSessionID(other, drawing({17, 18})).text() == u"18";
    };
    send.onTill("DROP TABLE MERSALGVARE");
    EXPECT_NE(send.send(), QString());
    EXPECT_TRUE(heldDuring);
    send.inBackOffice("DELETE VareEksport");
    EXPECT_EQ(SendSessionID(other, drawing({17, 18})).text(), QStringLiteral("17"));
}

}  // namespace
}  // namespace torvik::test
