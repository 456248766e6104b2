// The rules of nested transactions and save points, without a server.
#include <gtest/gtest.h>

#include "sandbox/store/values/error.h"
#include "sandbox/tsql/run/transaction_state.h"

namespace sandbox {
namespace {

using Step = TransactionStep;

template <class Action>
int raised(Action action) {
    try {
        action();
    } catch (const SqlError& e) {
        return e.messages.front().number;
    }
    return 0;
}

TEST(TransactionState, OnlyTheOutermostBeginAndCommitReachTheStorage) {
    TransactionState t;
    EXPECT_EQ(t.begin(""), Step::Begin);
    EXPECT_EQ(t.begin("inner"), Step::None);
    EXPECT_EQ(t.count(), 2);
    EXPECT_EQ(t.commit(), Step::None);
    EXPECT_EQ(t.commit(), Step::Commit);
    EXPECT_EQ(t.count(), 0);
}

TEST(TransactionState, RollbackEndsEveryLevel) {
    TransactionState t;
    t.begin("");
    t.begin("");
    EXPECT_EQ(t.rollback(""), Step::Rollback);
    EXPECT_EQ(t.count(), 0);
    EXPECT_EQ(raised([&] { t.rollback(""); }), 3903);
    EXPECT_EQ(raised([&] { t.commit(); }), 3902);
}

TEST(TransactionState, RollbackByTheOutermostNameOnly) {
    TransactionState t;
    t.begin("outer");
    t.begin("inner");
    EXPECT_EQ(raised([&] { t.rollback("inner"); }), 6401);
    EXPECT_EQ(raised([&] { t.rollback("OUTER"); }), 6401);
    EXPECT_EQ(t.count(), 2);
    EXPECT_EQ(t.rollback("outer"), Step::Rollback);
}

TEST(TransactionState, SavePointsKeepTheCountAndTheLatestOfANameWins) {
    TransactionState t;
    EXPECT_EQ(raised([&] { t.save("a"); }), 628);
    t.begin("");
    t.save("a");
    t.save("b");
    EXPECT_EQ(t.save("a"), Step::Save);
    EXPECT_EQ(t.savePoint(), 3u);
    EXPECT_EQ(t.rollback("a"), Step::RollbackToSave);
    EXPECT_EQ(t.savePoint(), 3u);
    EXPECT_EQ(t.rollback("b"), Step::RollbackToSave);
    EXPECT_EQ(t.savePoint(), 2u);
    EXPECT_EQ(t.rollback("a"), Step::RollbackToSave);
    EXPECT_EQ(t.savePoint(), 1u);
    EXPECT_EQ(t.count(), 1);
}

TEST(TransactionState, ADoomedTransactionCanOnlyBeRolledBackWhole) {
    TransactionState t;
    t.doom();
    EXPECT_EQ(t.xactState(), 0);
    t.begin("");
    t.save("here");
    t.doom();
    EXPECT_EQ(t.xactState(), -1);
    EXPECT_EQ(raised([&] { t.commit(); }), 3930);
    EXPECT_EQ(raised([&] { t.rollback("here"); }), 3931);
    EXPECT_EQ(raised([&] { t.begin(""); }), 3930);
    EXPECT_EQ(t.rollback(""), Step::Rollback);
    EXPECT_EQ(t.xactState(), 0);
}

}  // namespace
}  // namespace sandbox
