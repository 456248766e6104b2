// The connection is cut, or falls silent, in the middle of each kind of operation: the right exception comes in time,
// the session knows where it stands, and no text shows a password.
#include <gtest/gtest.h>

#include <functional>

#include "engine/db/bulk_loader.h"
#include "engine/db/errors.h"
#include "engine/db/query.h"
#include "engine/db/script.h"
#include "engine/db/stored_proc.h"
#include "engine/db/table.h"
#include "tests/support/qt_print.h"
#include "tests/support/sandbox_wire.h"

namespace torvik::db {
namespace {

using sandbox::FaultAction;
using sandbox::RequestKind;

constexpr int kTimeout = 1;  // seconds

void addRow(Table& table, int a) {
    table.Append();
    table.FieldByName(QStringLiteral("a")) = a;
    table.FieldByName(QStringLiteral("b")) = QStringLiteral("rad %1").arg(a);
    table.Post();
}

struct Operation {
    const char* name;
    // Which request is met.
    const char* text;
    std::optional<RequestKind> kind;
    std::function<void(Session&)> run;
};

void PrintTo(const Operation& operation, std::ostream* out) {
    *out << operation.name;
}

// Opens it anew, with so many seconds for all that a server answers at once.
void openWithin(Session& session, int seconds) {
    session.Close();
    session.SetConnectionTimeout(seconds);
    session.Open();
}

void postRows(Session& session, int count) {
    Table table(&session);
    table.CommandTimeout = kTimeout;
    table.SetTableName(QStringLiteral("T"));
    table.Open();
    for (int i = 0; i < count; ++i) addRow(table, i);
    table.Close();
}

const std::vector<Operation>& operations() {
    static const std::vector<Operation> all = {
        {"open",
         "SELECT * FROM Mange",
         {},
         [](Session& session) {
             Query query(&session);
             query.CommandTimeout = kTimeout;
             query.SQL = {QStringLiteral("SELECT * FROM Mange")};
             query.Open();
         }},
        {"exec",
         "UPDATE Mange",
         {},
         [](Session& session) {
             Query query(&session);
             query.CommandTimeout = kTimeout;
             query.SQL = {QStringLiteral("UPDATE Mange SET a = a")};
             query.ExecSQL();
         }},
        {"script",
         "UPDATE Mange",
         {},
         [](Session& session) {
             Script script(&session);
             script.CommandTimeout = kTimeout;
             script.SQL = {QStringLiteral("UPDATE Mange SET a = a")};
             script.Execute();
         }},
        {"procedure",
         "EXEC",
         {},
         [](Session& session) {
             StoredProc call(&session);
             call.CommandTimeout = kTimeout;
             call.StoredProcName = QStringLiteral("Gjor");
             call.ExecProc();
         }},
        {"edit",
         "UPDATE Mange",
         {},
         [](Session& session) {
             Query query(&session);
             query.CommandTimeout = kTimeout;
             query.CursorType = ReadMode::KeySet;
             query.SQL = {QStringLiteral("SELECT a, b FROM Mange WHERE a = 1")};
             query.Open();
             query.Edit();
             query.FieldByName(QStringLiteral("b")) = "y";
             query.Post();
         }},
        {"few_posted_rows", "INSERT INTO T", {}, [](Session& session) { postRows(session, 3); }},
        {"many_posted_rows", "", RequestKind::Bulk, [](Session& session) { postRows(session, 2000); }},
        {"bulk_load", "", RequestKind::Bulk,
         [](Session& session) {
             Query source(&session);
             source.SQL = {QStringLiteral("SELECT a, b FROM Mange")};
             source.Open();
             BulkLoader loader(&session);
             loader.CommandTimeout = kTimeout;
             loader.TableName = QStringLiteral("T");
             loader.LoadFromDataSet(source);
         }},
        {"begin",
         "BEGIN TRANSACTION",
         {},
         [](Session& session) {
             openWithin(session, kTimeout);
             session.StartTransaction();
         }},
    };
    return all;
}

class LostConnection : public testing::TestWithParam<std::tuple<test::Wire, Operation>> {
protected:
    LostConnection() {
        server.run(QStringLiteral(
            "CREATE TABLE Mange (a int PRIMARY KEY, b varchar(400)) CREATE TABLE T (a int, b varchar(400)) "
            "DECLARE @i int SET @i = 0 SET NOCOUNT ON WHILE @i < 3000 BEGIN INSERT Mange VALUES (@i, "
            "REPLICATE('x', 400)) SET @i = @i + 1 END"));
        server.run(QStringLiteral("CREATE PROCEDURE Gjor AS UPDATE Mange SET a = a"));
    }

    void add(FaultAction action) {
        sandbox::FaultRule rule;
        rule.match.textContains = operation.text;
        rule.match.kind = operation.kind;
        rule.action = action;
        server.faults().add(rule);
    }

    // Runs the operation, which must fail with a lost connection, and looks at what is left.
    void expectLost() {
        try {
            operation.run(server.session());
            ADD_FAILURE() << "went well";
        } catch (const ConnectionError& e) {
            EXPECT_EQ(e.Why, ConnectionError::Reason::Lost) << e.what();
            EXPECT_FALSE(e.text().contains(server.settings().Password)) << e.what();
            EXPECT_FALSE(e.Statement.contains(server.settings().Password));
        } catch (const std::exception& e) {
            ADD_FAILURE() << "another error: " << e.what();
        }
        EXPECT_FALSE(server.session().Connected());
        EXPECT_FALSE(server.session().InTransaction());
        server.faults().clear();
        server.session().Open();
        EXPECT_EQ(server.rows(QStringLiteral("SELECT COUNT(*) AS n FROM Mange")), "n\n3000\n");
    }

    const Operation& operation = std::get<1>(GetParam());
    test::SandboxServer server{std::get<0>(GetParam())};
};

TEST_P(LostConnection, CutBeforeTheServerActs) {
    TORVIK_NEEDS_SANDBOX(server);
    add(FaultAction::DropBefore);
    expectLost();
    EXPECT_EQ(server.rows(QStringLiteral("SELECT COUNT(*) AS n FROM T")), "n\n0\n");
}

TEST_P(LostConnection, CutBeforeTheServerAnswers) {
    TORVIK_NEEDS_SANDBOX(server);
    add(FaultAction::DropAfter);
    expectLost();
}

// The cancel is not answered either.
TEST_P(LostConnection, AServerThatFallsSilentIsGivenUp) {
    TORVIK_NEEDS_SANDBOX(server);
    add(FaultAction::Hang);
    expectLost();
}

INSTANTIATE_TEST_SUITE_P(All, LostConnection,
                         testing::Combine(testing::Values(test::Wire::Plain, test::Wire::Tls),
                                          testing::ValuesIn(operations())),
                         [](const auto& test) {
                             return test::wireName(std::get<0>(test.param)) + "_" + std::get<1>(test.param).name;
                         });

class CutAmongRows : public test::OverTheWire {};

TORVIK_OVER_THE_WIRE(CutAmongRows);

TEST_P(CutAmongRows, AHalfReadReplyIsNoShorterResult) {
    TORVIK_NEEDS_SANDBOX(server);
    server.run(
        QStringLiteral("CREATE TABLE Mange (a int, b varchar(400)) DECLARE @i int SET @i = 0 SET NOCOUNT ON WHILE "
                       "@i < 2000 BEGIN INSERT Mange VALUES (@i, REPLICATE('x', 400)) SET @i = @i + 1 END"));
    for (const std::uint64_t bytes : {1, 100, 40'000, 700'000}) {
        for (const bool unidirectional : {false, true}) {
            server.session().Open();
            Query query(&server.session());
            query.UniDirectional = unidirectional;
            query.SQL = {QStringLiteral("SELECT * FROM Mange")};
            server.faults().dropAfterBytes(bytes);
            const auto walk = [&] {
                query.Open();
                while (!query.Eof()) query.Next();
            };
            EXPECT_THROW(walk(), ConnectionError) << bytes;
            EXPECT_FALSE(server.session().Connected());
        }
    }
}

// What the server should have answered at once, and how it does not: never, not even a cancel, or too late.
class SilentTransaction : public testing::TestWithParam<std::tuple<test::Wire, FaultAction>> {
protected:
    SilentTransaction() {
        server.run(QStringLiteral("CREATE TABLE T (a int PRIMARY KEY)"));
        openWithin(server.session(), kTimeout);
        server.session().StartTransaction();
        server.run(QStringLiteral("INSERT T VALUES (1)"));
    }

    void doNotAnswer(const char* text) {
        sandbox::FaultRule rule;
        rule.match.textContains = text;
        rule.action = std::get<1>(GetParam());
        rule.delay = std::chrono::seconds(30);
        server.faults().add(rule);
    }
    // The connection is given up, and the server has rolled back.
    void expectLost() {
        EXPECT_FALSE(server.session().Connected());
        EXPECT_THROW(server.run(QStringLiteral("SELECT 1")), ConnectionError);
        server.faults().clear();
        server.session().Open();
        server.run(QStringLiteral("INSERT T VALUES (1)"));  // waits for the rollback
        EXPECT_EQ(server.rows(QStringLiteral("SELECT COUNT(*) AS n FROM T")), "n\n1\n");
    }

    test::SandboxServer server{std::get<0>(GetParam())};
};

INSTANTIATE_TEST_SUITE_P(All, SilentTransaction,
                         testing::Combine(testing::Values(test::Wire::Plain, test::Wire::Tls),
                                          testing::Values(FaultAction::Hang, FaultAction::Delay)),
                         [](const auto& test) {
                             return test::wireName(std::get<0>(test.param)) +
                                    (std::get<1>(test.param) == FaultAction::Hang ? "_Never" : "_TooLate");
                         });

TEST_P(SilentTransaction, RollbackWithoutAnAnswerIsQuietAndGivesTheConnectionUp) {
    TORVIK_NEEDS_SANDBOX(server);
    doNotAnswer("ROLLBACK TRANSACTION");
    EXPECT_NO_THROW(server.session().Rollback());
    expectLost();
}

TEST_P(SilentTransaction, ASessionThatDoesNotSayWhetherItIsInATransactionIsGivenUp) {
    TORVIK_NEEDS_SANDBOX(server);
    doNotAnswer("SELECT @@TRANCOUNT");
    EXPECT_FALSE(server.session().InTransaction());
    expectLost();
}

}  // namespace
}  // namespace torvik::db
