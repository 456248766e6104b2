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
    const int before = turns;
    std::thread([&] {
        Session session;
        session.SetConnectString(server.connectString());
        session.Open();
        Query query(&session);
        query.SQL = {QStringLiteral("WAITFOR DELAY '00:00:00.100'")};
        query.ExecSQL();
    }).join();
    EXPECT_EQ(turns, before);
}

class Ended : public std::exception {};

class CancelledStatement : public SlowServer {
protected:
    int rowsOfT() { return std::stoi(server.rows(QStringLiteral("SELECT COUNT(*) AS n FROM T")).substr(2)); }

    bool wanted = true;
    StatementCancel cancel{[this] { return std::exchange(wanted, false); }, [] { throw Ended(); }};
};

TORVIK_OVER_THE_WIRE(CancelledStatement);

TEST_P(CancelledStatement, EndsOnTheServerAtOnceAndLeavesTheTransaction) {
    server.session().StartTransaction();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_THROW(server.run(QStringLiteral("INSERT T VALUES (1) WAITFOR DELAY '00:00:30' INSERT T VALUES (2)")), Ended);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    EXPECT_TRUE(server.session().InTransaction());
    EXPECT_EQ(rowsOfT(), 1);
    server.session().Rollback();
    EXPECT_EQ(rowsOfT(), 0);
}

TEST_P(CancelledStatement, EndsBetweenTheRowsOfAQuery) {
    Query query(&server.session());
    query.SQL = {QStringLiteral("SELECT 1 AS a WAITFOR DELAY '00:00:30' SELECT 2 AS b")};
    EXPECT_THROW(query.Open(), Ended);
    EXPECT_FALSE(query.Active());
    EXPECT_EQ(rowsOfT(), 0);
}

TEST_P(CancelledStatement, CommitIsNotOne) {
    TORVIK_NEEDS_SANDBOX(server);
    wanted = false;
    server.session().StartTransaction();
    server.run(QStringLiteral("INSERT T VALUES (1)"));
    sandbox::FaultRule rule;
    rule.match.textContains = "COMMIT";
    rule.action = sandbox::FaultAction::Delay;
    rule.delay = kSlow;
    server.faults().add(rule);
    wanted = true;
    server.session().Commit();
    EXPECT_TRUE(std::exchange(wanted, false)) << "was asked";
    EXPECT_EQ(rowsOfT(), 1);
}

TEST_P(CancelledStatement, WhateverTheMomentTheNextStatementRunsWhole) {
    for (int i = 0; i < 40; ++i) {
        const auto after = std::chrono::steady_clock::now() + std::chrono::milliseconds(i);
        StatementCancel own([&] { return std::chrono::steady_clock::now() >= after; }, [] { throw Ended(); });
        try {
            for (int more = 0; more < 100; ++more)
                server.run(QStringLiteral("WAITFOR DELAY '00:00:00.0%1' SELECT 1 AS a SELECT 2 AS b").arg(20 + i % 9));
            FAIL() << "never cancelled";
        } catch (const Ended&) {
        }
        StatementCancel none([] { return false; }, [] {});
        server.run(QStringLiteral("INSERT T VALUES (%1)").arg(i));
        ASSERT_EQ(rowsOfT(), i + 1);
    }
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
    EXPECT_GT(turns, outerBefore);
}

}  // namespace
}  // namespace torvik::db
