// A slow server while a thread has something to do: its turns, and that calls end as they do without.
#include "engine/db/meanwhile.h"

#include <gtest/gtest.h>

#include "engine/db/bulk_loader.h"
#include "engine/db/errors.h"
#include "engine/db/query.h"
#include "tests/support/sandbox_wire.h"

namespace torvik::db {
namespace {

constexpr auto kSlow = std::chrono::milliseconds(300);
// One each 10 ms at best; a busy machine gives fewer.
constexpr int kSomeTurns = 5;

class SlowServer : public test::OverTheWire {
protected:
    SlowServer() { server.run(QStringLiteral("CREATE TABLE T (a int PRIMARY KEY)")); }

    int turns = 0;
    Meanwhile meanwhile{[this] { ++turns; }};
};

TORVIK_OVER_THE_WIRE(SlowServer);

TEST_P(SlowServer, StatementGivesTurnsToTheThreadThatWaits) {
    const auto waiting = std::this_thread::get_id();
    std::thread::id turned;
    const Meanwhile own([&] {
        turned = std::this_thread::get_id();
        ++turns;
    });
    server.run(QStringLiteral("INSERT T VALUES (1) WAITFOR DELAY '00:00:00.300' INSERT T VALUES (2)"));
    EXPECT_GE(turns, kSomeTurns);
    EXPECT_EQ(turned, waiting);
    EXPECT_EQ(server.rows(QStringLiteral("SELECT COUNT(*) AS n FROM T")), "n\n2\n");
}

TEST_P(SlowServer, LoginGivesTurns) {
    TORVIK_NEEDS_SANDBOX(server);
    Session session;
    session.SetConnectString(server.connectString());
    session.SetConnectionTimeout(1);
    server.faults().hangLogins(1);
    EXPECT_THROW(session.Open(), ConnectionError);
    EXPECT_GE(turns, kSomeTurns);
}

TEST_P(SlowServer, RowsOfAnOpenQueryGiveTurns) {
    Query query(&server.session());
    query.SQL = {QStringLiteral("SELECT 1 AS a WAITFOR DELAY '00:00:00.300' SELECT 2 AS b")};
    query.Open();
    EXPECT_EQ(query.Fields(0).AsInteger(), 1);
    EXPECT_GE(turns, kSomeTurns);
}

TEST_P(SlowServer, BulkCopyGivesTurns) {
    TORVIK_NEEDS_SANDBOX(server);
    server.run(QStringLiteral("CREATE TABLE Target (a int PRIMARY KEY, b int)"));
    QStringList rows;
    for (int i = 0; i < 900; ++i) rows.append(QStringLiteral("(%1,%1)").arg(i));
    server.run(QStringLiteral("CREATE TABLE Source (a int PRIMARY KEY, b int) INSERT Source VALUES ") +
               rows.join(QLatin1Char(',')));
    const std::unique_ptr<Session> session = server.connect();
    Query source(session.get());
    source.SQL = {QStringLiteral("SELECT a, b FROM Source")};
    source.Open();
    sandbox::FaultRule rule;
    rule.match.kind = sandbox::RequestKind::Bulk;
    rule.action = sandbox::FaultAction::Delay;
    rule.delay = kSlow;
    server.faults().add(rule);
    const int before = turns;
    BulkLoader loader(&server.session());
    loader.TableName = QStringLiteral("Target");
    EXPECT_EQ(loader.LoadFromDataSet(source), 900);
    EXPECT_GE(turns - before, kSomeTurns);
}

TEST_P(SlowServer, FailureIsRaisedWhereTheStatementWasCalled) {
    try {
        server.run(QStringLiteral("WAITFOR DELAY '00:00:00.100' SELECT a FROM Missing"));
        FAIL() << "no error";
    } catch (const StatementError& e) {
        EXPECT_EQ(e.Number, 208);
    }
    server.run(QStringLiteral("INSERT T VALUES (1)"));  // the session goes on
}

TEST_P(SlowServer, TurnMayUseAnotherSession) {
    Session other;
    other.SetConnectString(server.connectString());
    other.Open();
    int rows = -1;
    const Meanwhile own([&] {
        if (rows >= 0) return;
        Query query(&other);
        query.SQL = {QStringLiteral("SELECT 7 AS a")};
        query.Open();
        rows = query.Fields(0).AsInteger();
    });
    server.run(QStringLiteral("WAITFOR DELAY '00:00:00.300'"));
    EXPECT_EQ(rows, 7);
}

TEST_P(SlowServer, AnotherThreadHasNoTurns) {
    std::thread([&] {
        Session session;
        session.SetConnectString(server.connectString());
        session.Open();
        Query query(&session);
        query.SQL = {QStringLiteral("WAITFOR DELAY '00:00:00.100'")};
        query.ExecSQL();
    }).join();
    EXPECT_EQ(turns, 0);
}

TEST_P(SlowServer, TheOneBeforeComesBackAfterIt) {
    int inner = 0;
    {
        const Meanwhile own([&] { ++inner; });
        server.run(QStringLiteral("WAITFOR DELAY '00:00:00.200'"));
    }
    const int innerBefore = inner;
    const int outerBefore = turns;
    server.run(QStringLiteral("WAITFOR DELAY '00:00:00.300'"));
    EXPECT_GT(inner, 0);
    EXPECT_EQ(inner, innerBefore);
    EXPECT_GE(turns - outerBefore, kSomeTurns);
}

}  // namespace
}  // namespace torvik::db
