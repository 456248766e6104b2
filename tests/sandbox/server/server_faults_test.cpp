// The faults that a server can be told to show, each seen from a client.
#include <atomic>

#include "tests/sandbox/server/server_fixture.h"

namespace sandbox::test {
namespace {

using tds::LoginFields;
using tds::TdsClient;

Message fault(int number, const std::string& text, int severity = 16) {
    Message m;
    m.number = number;
    m.severity = severity;
    m.text = text;
    return m;
}

FaultRule rule(FaultAction action, std::uint64_t number = 0) {
    FaultRule r;
    r.action = action;
    r.match.number = number;
    return r;
}

class ServerFaults : public ::testing::Test {
protected:
    Server server{serverOptions()};
    Faults& faults = server.faults();

    void makeTable() {
        TdsClient client = loggedIn(server);
        (void)client.batch("CREATE DATABASE shop");
        (void)client.batch("CREATE TABLE shop.dbo.t (a int)");
    }
    std::string rowsOfTable() {
        TdsClient client = loggedIn(server);
        return client.batch("SELECT COUNT(*) AS n FROM shop.dbo.t").at(1);
    }
};

TEST_F(ServerFaults, NextLoginsAreRefusedWithTheErrorGiven) {
    faults.refuseLogins(2, fault(17809, "Could not connect because the maximum number has been reached.", 10));
    for (int i = 0; i < 2; ++i) {
        TdsClient client(server.port());
        const Lines reply = client.login({});
        EXPECT_TRUE(reply.at(0).starts_with("error 17809 10 1 1 Could not connect"));
        EXPECT_EQ(reply.at(1), "error 18456 14 1 1 Login failed for user 'sa'.");
        EXPECT_TRUE(client.closes());
    }
    (void)loggedIn(server);
}

TEST_F(ServerFaults, OneUserIsRefusedUntilAllowed) {
    faults.refuseUser("POS");
    LoginFields f;
    f.user = "pos";
    f.password = "Pos-1";
    EXPECT_TRUE(TdsClient(server.port()).login(f).front().starts_with("error 18456"));
    (void)loggedIn(server);
    faults.allowUser("pos");
    EXPECT_EQ(TdsClient(server.port()).login(f).back(), "done");
}

TEST_F(ServerFaults, HangingLoginIsNeverAnswered) {
    faults.hangLogins(1);
    TdsClient hanging(server.port());
    hanging.sendBytes(std::vector<std::uint8_t>{0x12, 1, 0, 9, 0, 0, 0, 0, 0xFF});
    TdsClient next = loggedIn(server);
    EXPECT_EQ(next.batch("SELECT 1 AS a").back(), "done 1");
    EXPECT_FALSE(hanging.closes(std::chrono::milliseconds(100)));
    EXPECT_EQ(server.connectionCount(), 2U);
}

TEST_F(ServerFaults, ConnectionIsCutBeforeTheRequestIsRun) {
    makeTable();
    TdsClient client = loggedIn(server);
    FaultRule r = rule(FaultAction::DropBefore);
    r.match.textContains = "insert";
    faults.add(r);
    EXPECT_EQ(client.batch("SELECT 1 AS a").back(), "done 1");
    EXPECT_EQ(client.batch("INSERT shop.dbo.t VALUES (1)"), (Lines{"closed"}));
    EXPECT_EQ(rowsOfTable(), "row 0");
}

TEST_F(ServerFaults, ConnectionIsCutAfterTheRequestWasRun) {
    makeTable();
    TdsClient client = loggedIn(server);
    faults.add(rule(FaultAction::DropAfter, 3));
    EXPECT_EQ(client.batch("SELECT 1 AS a").back(), "done 1");
    EXPECT_EQ(client.batch("SELECT 1 AS a").back(), "done 1");
    EXPECT_EQ(client.batch("INSERT shop.dbo.t VALUES (1)"), (Lines{"closed"}));
    EXPECT_EQ(rowsOfTable(), "row 1");
}

TEST_F(ServerFaults, CommitThatGotNoAnswerIsACommit) {
    makeTable();
    TdsClient client = loggedIn(server);
    FaultRule r = rule(FaultAction::DropAfter);
    r.match.textContains = "COMMIT";
    faults.add(r);
    (void)client.batch("BEGIN TRANSACTION INSERT shop.dbo.t VALUES (1)");
    EXPECT_EQ(client.batch("COMMIT TRANSACTION"), (Lines{"closed"}));
    EXPECT_EQ(rowsOfTable(), "row 1");
}

TEST_F(ServerFaults, RuleAimsAtOneProgram) {
    FaultRule r = rule(FaultAction::DropBefore);
    r.match.program = "Unlucky";
    faults.add(r);
    TdsClient lucky = loggedIn(server, "lucky");
    TdsClient unlucky = loggedIn(server, "unlucky");
    EXPECT_EQ(lucky.batch("SELECT 1 AS a").back(), "done 1");
    EXPECT_EQ(unlucky.batch("SELECT 1 AS a"), (Lines{"closed"}));
}

TEST_F(ServerFaults, RuleSkipsAndCounts) {
    FaultRule r = rule(FaultAction::Fail);
    r.message = fault(1222, "Lock request time out period exceeded.");
    r.skip = 1;
    r.times = 2;
    faults.add(r);
    TdsClient client = loggedIn(server);
    std::string seen;
    for (int i = 0; i < 5; ++i) seen += client.batch("SELECT 1 AS a").front().starts_with("error 1222") ? 'F' : '.';
    EXPECT_EQ(seen, ".FF..");
}

TEST_F(ServerFaults, FailedRequestCanLoseItsTransaction) {
    makeTable();
    TdsClient client = loggedIn(server);
    (void)client.batch("BEGIN TRANSACTION INSERT shop.dbo.t VALUES (1)");
    FaultRule r = rule(FaultAction::Fail);
    r.message = fault(1205, "Transaction was deadlocked.", 13);
    r.rollBack = true;
    faults.add(r);
    const Lines reply = client.batch("SELECT 1 AS a");
    EXPECT_EQ(reply.back(), "done error");
    EXPECT_EQ(client.batch("SELECT @@TRANCOUNT AS n").at(1), "row 0");
    EXPECT_EQ(rowsOfTable(), "row 0");
}

TEST_F(ServerFaults, FatalErrorClosesTheConnection) {
    FaultRule r = rule(FaultAction::Fail);
    r.message = fault(596, "Cannot continue the execution because the session is in the kill state.", 21);
    faults.add(r);
    TdsClient client = loggedIn(server);
    EXPECT_TRUE(client.batch("SELECT 1 AS a").front().starts_with("error 596 21"));
    EXPECT_TRUE(client.closes());
}

TEST_F(ServerFaults, HangingRequestIsNotAnsweredUntilDropped) {
    faults.add(rule(FaultAction::Hang));
    TdsClient client = loggedIn(server);
    client.sendBatch("SELECT 1 AS a");
    client.send(tds::PacketType::Attention, {});
    ASSERT_TRUE(eventually([&] { return faults.requests() == 1; }));
    EXPECT_FALSE(client.closes(std::chrono::milliseconds(50)));
    server.dropConnections();
    EXPECT_EQ(server.connectionCount(), 0U);
    EXPECT_TRUE(client.closes());
}

TEST_F(ServerFaults, DelayedRequestIsAnsweredLater) {
    TdsClient client = loggedIn(server);
    faults.delayRequests(std::chrono::milliseconds(60));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(client.batch("SELECT 1 AS a").back(), "done 1");
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(60));
}

TEST_F(ServerFaults, DelayEndsWithAnAttention) {
    TdsClient client = loggedIn(server);
    faults.delayRequests(std::chrono::minutes(5));
    client.sendBatch("SELECT 1 AS a");
    client.send(tds::PacketType::Attention, {});
    EXPECT_EQ(client.reply(), (Lines{"done error"}));
    EXPECT_EQ(client.reply(), (Lines{"done attention"}));
}

TEST_F(ServerFaults, ConnectionIsCutAtAByteOfTheReply) {
    TdsClient client = loggedIn(server);
    faults.dropAfterBytes(100000);
    EXPECT_EQ(client.batch("SELECT 1 AS a").back(), "done 1");
    EXPECT_EQ(client.batch("WHILE 1 = 1 SELECT REPLICATE('x', 8000) AS x"), (Lines{"closed"}));
    EXPECT_EQ(loggedIn(server).batch("SELECT 1 AS a").back(), "done 1");
}

TEST_F(ServerFaults, ConnectionIsCutBetweenTwoStatements) {
    makeTable();
    TdsClient client = loggedIn(server);
    faults.dropAfterStatements(2);
    EXPECT_EQ(client.batch("INSERT shop.dbo.t VALUES (1)\nINSERT shop.dbo.t VALUES (2)\nINSERT shop.dbo.t VALUES (3)"),
              (Lines{"closed"}));
    EXPECT_EQ(rowsOfTable(), "row 2");
}

TEST_F(ServerFaults, BatchIsEndedBetweenTwoStatements) {
    makeTable();
    TdsClient client = loggedIn(server);
    faults.dropAfterStatements(1, fault(9002, "The transaction log for database 'shop' is full.", 17));
    const Lines reply = client.batch("INSERT shop.dbo.t VALUES (1)\nINSERT shop.dbo.t VALUES (2)");
    EXPECT_EQ(reply, (Lines{"done 1 more", "error 9002 17 1 1 The transaction log for database 'shop' is full.",
                            "done error"}));
    EXPECT_EQ(rowsOfTable(), "row 1");
}

TEST_F(ServerFaults, FirstStatementOfOneProgramCanFail) {
    faults.dropAfterStatements(0, fault(9002, "The transaction log is full.", 17), "till");
    TdsClient other = loggedIn(server, "other");
    TdsClient till = loggedIn(server, "till");
    EXPECT_EQ(other.batch("SELECT 1 AS a").back(), "done 1");
    EXPECT_EQ(till.batch("SELECT 1 AS a"), (Lines{"error 9002 17 1 1 The transaction log is full.", "done error"}));
    EXPECT_EQ(till.batch("SELECT 1 AS a").back(), "done 1");
}

TEST_F(ServerFaults, ClearTakesAllBack) {
    faults.refuseLogins(5, fault(1, "no"));
    faults.refuseUser("sa");
    faults.hangLogins(5);
    faults.add(rule(FaultAction::DropBefore));
    faults.dropAfterBytes(0);
    faults.dropAfterStatements(1);
    faults.delayRequests(std::chrono::minutes(5));
    faults.clear();
    EXPECT_EQ(loggedIn(server).batch("SELECT 1 AS a").back(), "done 1");
}

TEST_F(ServerFaults, ObserversSeeEachRequest) {
    TdsClient client = loggedIn(server, "counter");
    std::vector<std::string> seen;
    const int observer = faults.observe([&](const RequestInfo& r) {
        seen.push_back(std::to_string(r.number) + " " + r.program + " " + r.user + " " + r.database + ": " + r.text);
    });
    (void)client.batch("SELECT 1 AS a");
    Type text;
    text.id = TypeId::NVarChar;
    text.length = 100;
    (void)client.call(10, {{"", text, std::string("SELECT 2 AS b"), false}});
    faults.forget(observer);
    (void)client.batch("SELECT 3 AS c");
    EXPECT_EQ(seen, (Lines{"1 counter sa master: SELECT 1 AS a", "2 counter sa master: sp_executesql SELECT 2 AS b"}));
    EXPECT_EQ(faults.requests(), 3U);
    ASSERT_EQ(server.connections().size(), 1U);
    EXPECT_EQ(server.connections().at(0).requests, 3U);
    EXPECT_EQ(server.connections().at(0).statements, faults.statements());
}

TEST_F(ServerFaults, DroppedConnectionsSessionsHaveEndedWhenDropReturns) {
    makeTable();
    TdsClient client = loggedIn(server, "till sync");
    TdsClient other = loggedIn(server, "other");
    (void)client.batch("BEGIN TRANSACTION INSERT shop.dbo.t VALUES (1)");
    server.dropConnections("Till Sync");
    EXPECT_TRUE(client.closes());
    EXPECT_EQ(other.batch("SELECT COUNT(*) AS n FROM shop.dbo.t").at(1), "row 0");
    server.dropConnections();
    EXPECT_EQ(server.connectionCount(), 0U);
}

TEST_F(ServerFaults, StoppedListenerRefusesAndStartsAgainOnItsPort) {
    TdsClient before = loggedIn(server);
    const std::uint16_t port = server.port();
    server.stopListening();
    EXPECT_THROW(TdsClient refused(port), std::runtime_error);
    EXPECT_EQ(before.batch("SELECT 1 AS a").back(), "done 1");
    server.startListening();
    EXPECT_EQ(server.port(), port);
    EXPECT_EQ(loggedIn(server).batch("SELECT 1 AS a").back(), "done 1");
}

// Statements of one connection: those of batches, procedures, bulk loads and transaction requests alike.
class StatementFaults : public ServerFaults {
protected:
    StatementFaults() {
        makeTable();
        TdsClient client = loggedIn(server);
        (void)client.batch("USE shop");
        (void)client.batch(
            "CREATE PROCEDURE three AS SET NOCOUNT ON INSERT t VALUES (1) IF 1 = 1 INSERT t VALUES (2) "
            "INSERT t VALUES (3)");
    }
    void meetStatement(FaultAction action, std::uint64_t number, const Message& message = {}) {
        FaultRule r = rule(action, number);
        r.level = FaultLevel::Statement;
        r.match.program = "till";
        r.message = message;
        faults.add(r);
    }
};

TEST_F(StatementFaults, ConnectionIsCutBeforeTheStatementOfAProcedure) {
    meetStatement(FaultAction::DropBefore, 4);  // EXEC, SET, INSERT, INSERT
    EXPECT_EQ(loggedIn(server, "till").batch("EXEC shop..three"), (Lines{"closed"}));
    EXPECT_EQ(rowsOfTable(), "row 1");
}

TEST_F(StatementFaults, ConnectionIsCutAfterTheStatementOfAProcedure) {
    meetStatement(FaultAction::DropAfter, 4);
    EXPECT_EQ(loggedIn(server, "till").batch("EXEC shop..three"), (Lines{"closed"}));
    EXPECT_EQ(rowsOfTable(), "row 2");
}

TEST_F(StatementFaults, FailedStatementIsLikeOneThatFailsByItself) {
    meetStatement(FaultAction::Fail, 1, fault(547, "The INSERT statement conflicted with a constraint."));
    EXPECT_EQ(loggedIn(server, "till").batch("INSERT shop..t VALUES (1)\nSELECT @@ERROR AS e"),
              (Lines{"error 547 16 1 1 The INSERT statement conflicted with a constraint.",
                     "info 3621 0 0 1 The statement has been terminated.", "done more error", "cols e int not null",
                     "row 547", "done 1"}));
    EXPECT_EQ(rowsOfTable(), "row 0");
}

TEST_F(StatementFaults, FailedStatementIsCaught) {
    meetStatement(FaultAction::Fail, 2, fault(9002, "The transaction log is full.", 17));
    EXPECT_EQ(loggedIn(server, "till")
                  .batch("BEGIN TRY EXEC shop..three END TRY BEGIN CATCH SELECT ERROR_NUMBER() AS n "
                         "END CATCH")
                  .at(1),
              "row 9002");
}

TEST_F(StatementFaults, CommitAsARequestIsAStatement) {
    for (const FaultAction action : {FaultAction::DropBefore, FaultAction::DropAfter}) {
        faults.clear();
        meetStatement(action, 3);
        TdsClient client = loggedIn(server, "till");
        tds::Writer begin, commit;
        tds::appendHeaders(begin);
        begin.u16(5), begin.u8(0), begin.u8(0);
        tds::appendHeaders(commit, 1);
        commit.u16(7), commit.u8(0), commit.u8(0);
        client.send(tds::PacketType::TransactionManager, begin.view());
        (void)client.reply();
        (void)client.batch("INSERT shop..t VALUES (1)");
        client.send(tds::PacketType::TransactionManager, commit.view());
        EXPECT_EQ(client.reply(), (Lines{"closed"}));
        EXPECT_EQ(rowsOfTable(), action == FaultAction::DropBefore ? "row 0" : "row 1");
    }
}

TEST_F(StatementFaults, RuleAimsAtOneDatabaseAndCountsOnTheWholeServer) {
    FaultRule r = rule(FaultAction::Fail);
    r.level = FaultLevel::Statement;
    r.match.database = "shop";
    r.skip = 1;
    r.message = fault(1222, "Lock request time out period exceeded.");
    faults.add(r);
    LoginFields shop;
    shop.database = "shop";
    TdsClient first(server.port()), second(server.port());
    (void)first.login(shop);
    (void)second.login(shop);
    EXPECT_EQ(loggedIn(server).batch("SELECT 1 AS a").back(), "done 1");
    EXPECT_EQ(first.batch("SELECT 1 AS a").back(), "done 1");
    EXPECT_TRUE(second.batch("SELECT 1 AS a").front().starts_with("error 1222"));
    EXPECT_EQ(second.batch("SELECT 1 AS a").back(), "done 1");
}

TEST_F(ServerFaults, FullDiskFailsWritingStatementsUntilThereIsRoom) {
    makeTable();
    TdsClient client = loggedIn(server);
    (void)client.batch("USE shop CREATE TABLE #mine (a int)");
    (void)client.batch("BEGIN TRANSACTION");
    faults.fillDisk(1);
    EXPECT_EQ(client.batch("INSERT t VALUES (1)").back(), "done 1");
    EXPECT_EQ(client.batch("INSERT t VALUES (2)").front(),
              "error 9002 17 2 1 The transaction log for database 'shop' is full due to 'NOTHING'.");
    EXPECT_EQ(client.batch("INSERT #mine SELECT a FROM t").back(), "done 1");
    EXPECT_EQ(client.batch("SELECT @@TRANCOUNT AS n").at(1), "row 1");
    faults.freeDisk();
    EXPECT_EQ(client.batch("INSERT t VALUES (3)").back(), "done 1");
    EXPECT_EQ(client.batch("COMMIT").back(), "done");
    EXPECT_EQ(rowsOfTable(), "row 2");
}

TEST_F(ServerFaults, LogTellsRequestsTheirStatementsAndHowTheyEnded) {
    makeTable();
    faults.keepLog();
    TdsClient client = loggedIn(server);
    (void)client.batch("USE shop IF 1 = 1 INSERT t VALUES (1)");
    (void)client.batch("SELECT * FROM missing");
    FaultRule r = rule(FaultAction::DropAfter);
    r.match.textContains = "delete";
    faults.add(r);
    EXPECT_EQ(client.batch("DELETE t"), (Lines{"closed"}));
    Lines seen;
    for (const LoggedRequest& logged : faults.log()) {
        seen.push_back(logged.request.text + (logged.failed ? " failed" : "") + (logged.cut ? " cut" : ""));
        for (const std::string& text : logged.statements) seen.push_back("- " + text);
    }
    EXPECT_EQ(seen, (Lines{"USE shop IF 1 = 1 INSERT t VALUES (1)", "- USE shop", "- INSERT t VALUES (1)",
                           "SELECT * FROM missing failed", "- SELECT * FROM missing", "DELETE t cut", "- DELETE t"}));
}

}  // namespace
}  // namespace sandbox::test
