#include "engine/office/application_lock.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <optional>

#include "engine/db/query.h"
#include "engine/db/session.h"
#include "tests/engine/small_chain.h"

namespace torvik {
namespace {

class LockOfTwoCopies : public testing::Test {
protected:
    LockOfTwoCopies() {
        for (db::Session* session : {&one, &other}) {
            session->SetConnectString(chain.connectString(chain.kBackOffice));
            session->Open();
        }
    }
    test::SmallChain chain;
    db::Session one;
    db::Session other;
    const QString name = ApplicationLock::OfTill(3, QStringLiteral("1"));
};

TEST_F(LockOfTwoCopies, IsHeldByOneAndLetGoAtItsEnd) {
    std::optional<ApplicationLock> first(std::in_place, one, name);
    EXPECT_TRUE(first->Held());
    EXPECT_FALSE(ApplicationLock(other, name).Held());
    first.reset();
    EXPECT_TRUE(ApplicationLock(other, name).Held());
}

TEST_F(LockOfTwoCopies, OneThatWasRefusedLetsNothingGo) {
    const ApplicationLock first(one, name);
    { const ApplicationLock refused(other, name); }
    EXPECT_FALSE(ApplicationLock(other, name).Held());
}

TEST_F(LockOfTwoCopies, GoesWithItsSession) {
    const ApplicationLock first(one, name);
    one.Close();
    // The server sees the end of a session a moment later.
    QElapsedTimer since;
    since.start();
    bool granted = false;
    while (!granted && since.elapsed() < 10000) granted = ApplicationLock(other, name).Held();
    EXPECT_TRUE(granted);
}

TEST_F(LockOfTwoCopies, StandsThroughTransactionsThatEnd) {
    const ApplicationLock first(one, name);
    one.StartTransaction();
    one.Commit();
    one.StartTransaction();
    one.Rollback();
    EXPECT_FALSE(ApplicationLock(other, name).Held());
}

TEST_F(LockOfTwoCopies, OtherNamesKeepNobodyOut) {
    const ApplicationLock first(one, name);
    EXPECT_TRUE(ApplicationLock(other, ApplicationLock::OfTill(3, QStringLiteral("2"))).Held());
    EXPECT_TRUE(ApplicationLock(other, ApplicationLock::OfTill(4, QStringLiteral("1"))).Held());
    EXPECT_TRUE(ApplicationLock(other, ApplicationLock::OfStockCounts()).Held());
}

TEST_F(LockOfTwoCopies, TillNumberMayHoldAnApostrophe) {
    const QString odd = ApplicationLock::OfTill(3, QStringLiteral("O'H %1"));
    const ApplicationLock first(one, odd);
    EXPECT_TRUE(first.Held());
    EXPECT_FALSE(ApplicationLock(other, odd).Held());
}

}  // namespace
}  // namespace torvik
