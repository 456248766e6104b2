// Opening, closing and losing a session, its settings, and its transaction.
#include "engine/db/session.h"

#include <gtest/gtest.h>

#include "engine/db/errors.h"
#include "engine/db/query.h"
#include "tests/support/qt_print.h"
#include "tests/support/sandbox_wire.h"

namespace torvik::db {
namespace {

using test::SandboxServer;

void execute(Session& session, const QString& batch, int timeout = 30) {
    Query query(&session);
    query.ParamCheck = false;
    query.CommandTimeout = timeout;
    query.SQL = QStringList{batch};
    query.ExecSQL();
}

// Opens a session with the server's settings as the caller changed them, and gives why that failed.
ConnectionError failureOf(ConnectSettings settings) {
    Session session;
    session.SetConnectString(oleDbFromSettings(settings));
    try {
        session.Open();
    } catch (const ConnectionError& e) {
        EXPECT_FALSE(session.Connected());
        EXPECT_FALSE(settings.Password.size() > 3 && e.text().contains(settings.Password)) << "shows the password";
        return e;
    }
    return {ConnectionError::Reason::Refused, QStringLiteral("(opened)")};
}

class SessionOverTheWire : public test::OverTheWire {};

TORVIK_OVER_THE_WIRE(SessionOverTheWire);

TEST_P(SessionOverTheWire, SettingsCannotBeChangedWhileOpen) {
    Session& session = server.session();
    EXPECT_THROW(session.SetServer(QStringLiteral("x")), UsageError);
    EXPECT_THROW(session.SetDatabase(QStringLiteral("x")), UsageError);
    EXPECT_THROW(session.SetUsername(QStringLiteral("x")), UsageError);
    EXPECT_THROW(session.SetPassword(QStringLiteral("x")), UsageError);
    EXPECT_THROW(session.SetAuthentication(Auth::Windows), UsageError);
    EXPECT_THROW(session.SetProvider(ProviderKind::Direct), UsageError);
    EXPECT_THROW(session.SetConnectString(QString()), UsageError);
    EXPECT_THROW(session.SetMultipleActiveResultSets(false), UsageError);
    EXPECT_THROW(session.SetTrustServerCertificate(true), UsageError);
    EXPECT_THROW(session.SetConnectionTimeout(1), UsageError);
    session.Close();
    session.SetDatabase(QStringLiteral("master"));
    session.Open();
    EXPECT_EQ(server.rows(QStringLiteral("SELECT DB_NAME() AS navn")), "navn\nmaster\n");
}

TEST(Session, TheConnectStringSetsTheValuesAndIsGivenBack) {
    Session session;
    const QString text = QStringLiteral("Provider=SQLNCLI11;Data Source=k1;Initial Catalog=Kasse;User ID=u;Password=p");
    session.SetConnectString(text);
    EXPECT_EQ(session.ConnectString(), text);
    EXPECT_EQ(session.Server(), QStringLiteral("k1"));
    EXPECT_EQ(session.Provider(), ProviderKind::NativeClient);
    session.SetServer(QStringLiteral("k2"));
    EXPECT_EQ(settingsFromOleDb(session.ConnectString()).Server, QStringLiteral("k2"));
    EXPECT_EQ(settingsFromOleDb(session.ConnectString()).Password, QStringLiteral("p"));
}

TEST(Session, ALoginIsNeverAskedFor) {
    Session session;
    session.SetLoginPrompt(false);
    EXPECT_FALSE(session.LoginPrompt());
    EXPECT_THROW(session.SetLoginPrompt(true), UsageError);
}

TEST_P(SessionOverTheWire, ClosingAClosedOneAndOpeningAnOpenOneDoNothing) {
    server.session().Open();
    EXPECT_TRUE(server.session().Connected());
    server.session().Close();
    server.session().Close();
    EXPECT_FALSE(server.session().Connected());
    EXPECT_THROW(server.run(QStringLiteral("SELECT 1")), UsageError);
}

TEST_P(SessionOverTheWire, TheServerSeesTheApplicationName) {
    const auto session = server.connect(QStringLiteral("10:22:022"));
    EXPECT_EQ(server.rows(QStringLiteral("SELECT RTRIM(program_name) AS program FROM master..sysprocesses "
                                         "WHERE spid = @@SPID"),
                          *session),
              "program\n10:22:022\n");
}

TEST_P(SessionOverTheWire, EachFailureToConnectIsItsOwn) {
    ConnectSettings wrong = server.settings();
    wrong.Password = QStringLiteral("galt passord");
    const ConnectionError login = failureOf(wrong);
    EXPECT_EQ(login.Why, ConnectionError::Reason::LoginFailed);
    EXPECT_EQ(login.Number, 18456);

    wrong = server.settings();
    wrong.Database = QStringLiteral("finnes_ikke");
    const ConnectionError database = failureOf(wrong);
    EXPECT_EQ(database.Why, ConnectionError::Reason::UnknownDatabase);
    EXPECT_EQ(database.Number, 4060);
    EXPECT_TRUE(database.text().contains(u"finnes_ikke"));

    wrong = server.settings();
    wrong.Server = QStringLiteral("127.0.0.1,1");
    const ConnectionError refused = failureOf(wrong);
    EXPECT_EQ(refused.Why, ConnectionError::Reason::Unreachable);
    EXPECT_TRUE(refused.text().contains(u"127.0.0.1,1"));

    wrong.Server = QStringLiteral("kasse.invalid");
    const ConnectionError unknown = failureOf(wrong);
    EXPECT_EQ(unknown.Why, ConnectionError::Reason::UnknownHost);
    EXPECT_TRUE(unknown.text().contains(u"kasse.invalid"));

    wrong = server.settings();
    wrong.Provider = ProviderKind::Compact;
    EXPECT_EQ(failureOf(wrong).Why, ConnectionError::Reason::NoDriver);
}

TEST_P(SessionOverTheWire, ConnectionTimeoutEndsTheWaitForASilentServer) {
    TORVIK_NEEDS_SANDBOX(server);
    server.faults().hangLogins(1);
    ConnectSettings settings = server.settings();
    settings.ConnectionTimeout = 1;
    EXPECT_EQ(failureOf(settings).Why, ConnectionError::Reason::Unreachable);
}

TEST(Session, APasswordOfSpecialCharactersIsPassedAsItStands) {
    for (const char* password : {"a;b", "a}b", "{a}", "a\"b'c", " blank ", "a=b", "æøå", "x}"}) {
        sandbox::ServerOptions options;
        options.saPassword = password;
        options.tls = sandbox::TlsMode::NotSupported;
        const sandbox::Server server(options);
        Session session;
        session.SetServer(QStringLiteral("127.0.0.1,%1").arg(server.port()));
        session.SetUsername(QStringLiteral("sa"));
        session.SetPassword(QString::fromUtf8(password));
        EXPECT_NO_THROW(session.Open()) << password;
    }
}

TEST_P(SessionOverTheWire, ALostConnectionIsToldApartAndLeavesTheSessionNotConnected) {
    TORVIK_NEEDS_SANDBOX(server);
    server.server().dropConnections();
    try {
        server.run(QStringLiteral("SELECT 1"));
        FAIL() << "ran";
    } catch (const ConnectionError& e) {
        EXPECT_EQ(e.Why, ConnectionError::Reason::Lost);
    }
    EXPECT_FALSE(server.session().Connected());
    EXPECT_FALSE(server.session().InTransaction());
    EXPECT_THROW(server.run(QStringLiteral("SELECT 1")), ConnectionError);
    server.session().Open();
    EXPECT_EQ(server.rows(QStringLiteral("SELECT 1 AS en")), "en\n1\n");
}

TEST_P(SessionOverTheWire, AnErrorThatEndsTheConnectionKeepsTheServersText) {
    try {
        server.run(QStringLiteral("RAISERROR('Serveren stopper', 20, 1) WITH LOG"));
        FAIL() << "ran";
    } catch (const ConnectionError& e) {
        EXPECT_TRUE(e.text().startsWith(u"Serveren stopper")) << e.what();
    }
    EXPECT_FALSE(server.session().Connected());
}

TEST_P(SessionOverTheWire, AFailedStatementLeavesTheSessionUsable) {
    try {
        server.run(QStringLiteral("SELECT 1\r\nSELECT * FROM Finnes_ikke"));
        FAIL() << "ran";
    } catch (const StatementError& e) {
        EXPECT_EQ(e.Number, 208);
        EXPECT_EQ(e.Severity, 16);
        EXPECT_EQ(e.Line, 2);
        EXPECT_EQ(e.text(), QStringLiteral("Invalid object name 'Finnes_ikke'."));
        EXPECT_TRUE(e.Statement.contains(u"Finnes_ikke"));
    }
    EXPECT_TRUE(server.session().Connected());
    EXPECT_EQ(server.rows(QStringLiteral("SELECT 1 AS en")), "en\n1\n");
}

TEST_P(SessionOverTheWire, TwoSessionsHaveTransactionsOfTheirOwn) {
    server.run(QStringLiteral("CREATE TABLE T (a int PRIMARY KEY)"));
    const auto other = server.connect();
    server.session().StartTransaction();
    EXPECT_TRUE(server.session().InTransaction());
    EXPECT_FALSE(other->InTransaction());
    server.run(QStringLiteral("INSERT T VALUES (1)"));
    server.session().Commit();
    EXPECT_FALSE(server.session().InTransaction());
    EXPECT_EQ(server.rows(QStringLiteral("SELECT a FROM T"), *other), "a\n1\n");
}

TEST_P(SessionOverTheWire, RollbackLeavesNothing) {
    server.run(QStringLiteral("CREATE TABLE T (a int PRIMARY KEY)"));
    server.session().StartTransaction();
    server.run(QStringLiteral("INSERT T VALUES (1)"));
    server.session().Rollback();
    EXPECT_FALSE(server.session().InTransaction());
    EXPECT_EQ(server.rows(QStringLiteral("SELECT a FROM T")), "a\n");
    server.session().Rollback();
}

TEST_P(SessionOverTheWire, OneTransactionASession) {
    server.session().StartTransaction();
    EXPECT_THROW(server.session().StartTransaction(), UsageError);
    EXPECT_TRUE(server.session().InTransaction());
}

TEST_P(SessionOverTheWire, ClosingRollsBack) {
    server.run(QStringLiteral("CREATE TABLE T (a int PRIMARY KEY)"));
    const auto other = server.connect();
    server.session().StartTransaction();
    server.run(QStringLiteral("INSERT T VALUES (1)"));
    server.session().Close();
    EXPECT_EQ(server.rows(QStringLiteral("SELECT a FROM T"), *other), "a\n");
}

TEST_P(SessionOverTheWire, InTransactionSeesWhatStatementsDo) {
    server.run(QStringLiteral("BEGIN TRANSACTION"));
    EXPECT_TRUE(server.session().InTransaction());
    server.run(QStringLiteral("COMMIT TRANSACTION"));
    EXPECT_FALSE(server.session().InTransaction());
}

TEST_P(SessionOverTheWire, AnErrorThatRollsBackOnTheServerIsNoticedAndRollbackIsQuiet) {
    server.session().StartTransaction();
    EXPECT_THROW(server.run(QStringLiteral("SELECT CONVERT(int, 'abc')")), StatementError);
    EXPECT_FALSE(server.session().InTransaction());
    EXPECT_NO_THROW(server.session().Rollback());
}

TEST_P(SessionOverTheWire, AStatementErrorLeavesTheTransactionOpen) {
    server.run(QStringLiteral("CREATE TABLE T (a int PRIMARY KEY)"));
    server.session().StartTransaction();
    server.run(QStringLiteral("INSERT T VALUES (1)"));
    EXPECT_THROW(server.run(QStringLiteral("INSERT T VALUES (1)")), StatementError);
    EXPECT_TRUE(server.session().InTransaction());
    server.session().Commit();
    EXPECT_EQ(server.rows(QStringLiteral("SELECT a FROM T")), "a\n1\n");
}

TEST_P(SessionOverTheWire, CommitWithoutATransactionIsTheServersError) {
    try {
        server.session().Commit();
        FAIL() << "committed";
    } catch (const StatementError& e) {
        EXPECT_EQ(e.Number, 3902);
    }
}

TEST_P(SessionOverTheWire, ACommitWithoutAnAnswerIsInDoubt) {
    TORVIK_NEEDS_SANDBOX(server);
    for (const auto action : {sandbox::FaultAction::DropBefore, sandbox::FaultAction::DropAfter}) {
        server.run(QStringLiteral("IF OBJECT_ID('T') IS NOT NULL DROP TABLE T CREATE TABLE T (a int PRIMARY KEY)"));
        server.session().StartTransaction();
        server.run(QStringLiteral("INSERT T VALUES (1)"));
        sandbox::FaultRule rule;
        rule.match.textContains = "COMMIT TRANSACTION";
        rule.action = action;
        server.faults().add(rule);
        EXPECT_THROW(server.session().Commit(), CommitInDoubt);
        EXPECT_FALSE(server.session().Connected());
        server.session().Open();
        const bool committed = action == sandbox::FaultAction::DropAfter;
        EXPECT_EQ(server.rows(QStringLiteral("SELECT COUNT(*) AS n FROM T")), committed ? "n\n1\n" : "n\n0\n");
    }
}

TEST_P(SessionOverTheWire, RollbackOverALostConnectionIsQuiet) {
    TORVIK_NEEDS_SANDBOX(server);
    server.session().StartTransaction();
    server.server().dropConnections();
    EXPECT_NO_THROW(server.session().Rollback());
    EXPECT_FALSE(server.session().Connected());
}

TEST_P(SessionOverTheWire, CommandTimeoutCancelsOnTheServerAndTheSessionGoesOn) {
    server.run(QStringLiteral("CREATE TABLE T (a int PRIMARY KEY)"));
    EXPECT_THROW(execute(server.session(), QStringLiteral("WAITFOR DELAY '00:00:30' INSERT T VALUES (1)"), 1),
                 TimeoutError);
    EXPECT_TRUE(server.session().Connected());
    EXPECT_EQ(server.rows(QStringLiteral("SELECT COUNT(*) AS n FROM T")), "n\n0\n");
}

TEST_P(SessionOverTheWire, AServerThatDoesNotEvenAnswerACancelIsALostConnection) {
    TORVIK_NEEDS_SANDBOX(server);
    sandbox::FaultRule rule;
    rule.match.textContains = "SELECT 77";
    rule.action = sandbox::FaultAction::Hang;
    server.faults().add(rule);
    EXPECT_THROW(execute(server.session(), QStringLiteral("SELECT 77"), 1), ConnectionError);
    EXPECT_FALSE(server.session().Connected());
}

}  // namespace
}  // namespace torvik::db
