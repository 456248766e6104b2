// The table object: rows sent in blocks that behave as if sent one by one.
#include "engine/db/table.h"

#include <gtest/gtest.h>

#include "engine/db/errors.h"
#include "engine/db/query.h"
#include "tests/support/qt_print.h"
#include "tests/support/sandbox_wire.h"

namespace torvik::db {
namespace {

class TableTest : public test::OverTheWire {
protected:
    void open(const char* create) {
        server.run(QString::fromUtf8(create));
        table.SetTableName(QStringLiteral("T"));
        table.Open();
    }

    void add(int a, const Value& b) {
        table.Append();
        table.FieldByName(QStringLiteral("a")) = a;
        table.FieldByName(QStringLiteral("b")) = b;
        table.Post();
    }

    // Another session, in a transaction that has made the change and is still open.
    auto sessionThatLocks(const char* change) {
        auto other = server.connect();
        other->StartTransaction();
        Query query(other.get());
        query.SQL = {QString::fromUtf8(change)};
        query.ExecSQL();
        return other;
    }

    // Requests that the server got while f ran.
    template <typename F>
    std::uint64_t requestsDuring(F f) {
        const std::uint64_t before = server.faults().requests();
        f();
        return server.faults().requests() - before;
    }

    Table table{&server.session()};
};

TORVIK_OVER_THE_WIRE(TableTest);

constexpr const char* kTwoColumns = "CREATE TABLE T (id int IDENTITY, a int NOT NULL, b varchar(10) NULL)";

TEST_P(TableTest, RowsArriveInOrderWhenClosed) {
    open(kTwoColumns);
    for (int i = 0; i < 2500; ++i) add(i, QStringLiteral("r%1").arg(i));
    table.Close();
    EXPECT_EQ(
        server.rows(QStringLiteral("SELECT COUNT(*) AS n, MIN(a) AS fra, MAX(a) AS til FROM T WHERE id = a + 1 AND b = "
                                   "'r' + CONVERT(varchar(10), a)")),
        "n | fra | til\n2500 | 0 | 2499\n");
}

TEST_P(TableTest, ATableThatGetsNoRowsCostsOneRequest) {
    open(kTwoColumns);
    TORVIK_NEEDS_SANDBOX(server);
    table.Close();
    EXPECT_EQ(requestsDuring([&] {
                  table.Open();
                  table.Close();
              }),
              1U);
}

TEST_P(TableTest, RowsTravelInBlocks) {
    open(kTwoColumns);
    TORVIK_NEEDS_SANDBOX(server);
    EXPECT_LE(requestsDuring([&] {
                  for (int i = 0; i < 1000; ++i) add(i, "x");
                  table.Flush();
              }),
              8U);
    EXPECT_EQ(table.PostedRows(), 1000);
    EXPECT_EQ(table.SentRows(), 1000);
}

TEST_P(TableTest, ColumnsNotSetGetTheirDefaultsAndSetNullsStayNull) {
    open("CREATE TABLE T (id int IDENTITY(5, 1), a int NOT NULL, b varchar(10) NULL DEFAULT 'std', c int DEFAULT 3)");
    add(1, "x");
    add(2, Value());
    table.Append();
    table.FieldByName(QStringLiteral("a")) = 3;
    table.Post();
    add(4, "y");
    table.Close();
    EXPECT_EQ(server.rows(QStringLiteral("SELECT * FROM T ORDER BY id")),
              "id | a | b | c\n5 | 1 | x | 3\n6 | 2 | NULL | 3\n7 | 3 | std | 3\n8 | 4 | y | 3\n");
}

TEST_P(TableTest, ARowOfDefaultsOnly) {
    open("CREATE TABLE T (id int IDENTITY, a int DEFAULT 9)");
    for (int i = 0; i < 2; ++i) {
        table.Append();
        table.Post();
    }
    table.Close();
    EXPECT_EQ(server.rows(QStringLiteral("SELECT * FROM T")), "id | a\n1 | 9\n2 | 9\n");
}

TEST_P(TableTest, ValuesOfEveryKindArriveUnchanged) {
    open(
        "CREATE TABLE T (a decimal(18,4), b money, c datetime, d uniqueidentifier, e bit, f float, g text, h image, "
        "i char(3), j bigint, k smalldatetime, l real)");
    const QUuid id = QUuid::createUuid();
    const QList<Value> values{*Decimal::fromText(u"-12345678901234.5678"),
                              *Decimal::fromText(u"0.1234"),
                              DateTime(QDate(2024, 2, 29), QTime(23, 59, 59, 997)),
                              id,
                              true,
                              0.1,
                              QString(20000, u'å'),
                              QByteArray(20000, '\xFE'),
                              "æ  ",
                              9'223'372'036'854'775'807LL,
                              DateTime(QDate(2024, 2, 29), QTime(12, 30)),
                              0.5};
    for (int row = 0; row < 2; ++row) {
        table.Append();
        for (int i = 0; i < table.FieldCount(); ++i) table.Fields(i) = row == 0 ? values[i] : Value();
        table.Post();
    }
    table.Close();
    Query query(&server.session());
    query.SQL = {QStringLiteral("SELECT * FROM T ORDER BY j DESC")};
    query.Open();
    ASSERT_EQ(query.RecordCount(), 2);
    for (int i = 0; i < query.FieldCount(); ++i) {
        EXPECT_TRUE(query.ValueAt(0, i) == values[i]) << query.Fields(i).Name().toStdString();
        EXPECT_TRUE(query.ValueAt(1, i).isNull()) << query.Fields(i).Name().toStdString();
    }
}

TEST_P(TableTest, TheErrorIsThatOfTheFailingRowAndTheRowsBeforeItStand) {
    open("CREATE TABLE T (a int NOT NULL PRIMARY KEY, b varchar(10) NULL)");
    add(1, "en");
    add(2, "to");
    add(2, "igjen");
    add(3, "tre");
    try {
        table.Close();
        FAIL() << "closed";
    } catch (const StatementError& e) {
        EXPECT_EQ(e.Number, 2627);
        EXPECT_EQ(e.Messages.size(), 1);
    }
    EXPECT_FALSE(table.Active());
    EXPECT_EQ(server.rows(QStringLiteral("SELECT a FROM T")), "a\n1\n2\n");
}

TEST_P(TableTest, TheSameInsideATransactionLeavesItOpen) {
    open("CREATE TABLE T (a int NOT NULL PRIMARY KEY, b varchar(10) NULL)");
    server.session().StartTransaction();
    add(1, "en");
    add(1, "igjen");
    EXPECT_THROW(table.Flush(), StatementError);
    EXPECT_TRUE(server.session().InTransaction());
    server.session().Commit();
    EXPECT_EQ(server.rows(QStringLiteral("SELECT a FROM T")), "a\n1\n");
}

TEST_P(TableTest, AnErrorThatEndsTheTransactionLeavesNothingOfTheBlock) {
    open("CREATE TABLE T (a int NOT NULL PRIMARY KEY, b varchar(10) NULL)");
    server.run(QStringLiteral("SET XACT_ABORT ON"));
    server.session().StartTransaction();
    add(1, "en");
    add(1, "igjen");
    EXPECT_THROW(table.Flush(), StatementError);
    EXPECT_FALSE(server.session().InTransaction());
    EXPECT_EQ(server.rows(QStringLiteral("SELECT a FROM T")), "a\n");
}

TEST_P(TableTest, ATextThatIsTooLongIsTheServersError) {
    open(kTwoColumns);
    add(1, "12345678901");
    try {
        table.Flush();
        FAIL() << "taken";
    } catch (const StatementError& e) {
        EXPECT_TRUE(e.Number == 8152 || e.Number == 2628) << e.Number;
    }
}

TEST_P(TableTest, AnyOtherUseOfTheSessionSendsTheRowsFirst) {
    open(kTwoColumns);
    add(1, "x");
    EXPECT_EQ(server.rows(QStringLiteral("SELECT a FROM T")), "a\n1\n");
    add(2, "y");
    Table other(&server.session());
    other.SetTableName(QStringLiteral("T"));
    other.Open();
    EXPECT_EQ(table.SentRows(), 2);
}

TEST_P(TableTest, AnErrorSurfacesAtTheNextUseOfTheSession) {
    open(kTwoColumns);
    table.Append();
    table.FieldByName(QStringLiteral("a")).Clear();
    table.Post();
    EXPECT_THROW(server.run(QStringLiteral("INSERT T (a) VALUES (7)")), StatementError);
    EXPECT_EQ(server.rows(QStringLiteral("SELECT a FROM T")), "a\n");
}

TEST_P(TableTest, CommitSendsAndRollbackForgets) {
    open(kTwoColumns);
    server.session().StartTransaction();
    add(1, "x");
    server.session().Commit();
    server.session().StartTransaction();
    add(2, "y");
    server.session().Rollback();
    table.Close();
    EXPECT_EQ(server.rows(QStringLiteral("SELECT a FROM T")), "a\n1\n");
}

TEST_P(TableTest, DestructionSendsWhatWasPosted) {
    server.run(QString::fromUtf8(kTwoColumns));
    {
        Table inner(&server.session());
        inner.SetTableName(QStringLiteral("T"));
        inner.Open();
        inner.Append();
        inner.FieldByName(QStringLiteral("a")) = 1;
        inner.Post();
    }
    EXPECT_EQ(server.rows(QStringLiteral("SELECT a FROM T")), "a\n1\n");
}

TEST_P(TableTest, ABlockThatWaitsTooLongIsCancelledAndLeavesNothing) {
    open("CREATE TABLE T (a int NOT NULL PRIMARY KEY, b varchar(10) NULL)");
    const auto other = sessionThatLocks("INSERT T VALUES (1, 'x')");
    table.CommandTimeout = 1;
    add(0, "null");
    add(1, "en");
    EXPECT_THROW(table.Flush(), TimeoutError);
    other->Rollback();
    table.Close();
    EXPECT_EQ(server.rows(QStringLiteral("SELECT a FROM T")), "a\n");
}

// FreeTDS cannot cancel a bulk copy.
TEST_P(TableTest, ALargeBlockThatWaitsTooLongCostsTheConnectionAndLeavesNothing) {
    open("CREATE TABLE T (a int NOT NULL PRIMARY KEY, b varchar(10) NULL)");
    const auto other = sessionThatLocks("INSERT T VALUES (1, 'x')");
    table.CommandTimeout = 1;
    for (int i = 0; i < 900; ++i) add(i, "x");
    EXPECT_THROW(table.Flush(), ConnectionError);
    EXPECT_FALSE(server.session().Connected());
    other->Rollback();
    EXPECT_EQ(server.rows(QStringLiteral("SELECT a FROM T"), *other), "a\n");
}

TEST_P(TableTest, ALostConnectionIsTold) {
    open(kTwoColumns);
    TORVIK_NEEDS_SANDBOX(server);
    add(1, "x");
    server.server().dropConnections();
    EXPECT_THROW(table.Close(), ConnectionError);
    EXPECT_FALSE(table.Active());
}

TEST_P(TableTest, AMissingTableIsTheServersError) {
    table.SetTableName(QStringLiteral("Finnes_ikke"));
    try {
        table.Open();
        FAIL() << "opened";
    } catch (const StatementError& e) {
        EXPECT_EQ(e.Number, 208);
    }
}

TEST_P(TableTest, ColumnsAreKnownFromTheServer) {
    open(kTwoColumns);
    EXPECT_NE(table.FindField(QStringLiteral("A")), nullptr);
    EXPECT_EQ(table.FindField(QStringLiteral("c")), nullptr);
    EXPECT_THROW(table.SetTableName(QStringLiteral("U")), UsageError);
    EXPECT_THROW(table.Edit(), UsageError);
    EXPECT_THROW(table.Delete(), UsageError);
}

TEST_P(TableTest, RowsThatWaitWhenTheirTransactionDiesAreGoneWithIt) {
    open(kTwoColumns);
    TORVIK_NEEDS_SANDBOX(server);
    Session& session = server.session();
    session.StartTransaction();
    server.run(QStringLiteral("UPDATE T SET b = b"));  // so that nobody knows without asking
    add(1, "x");
    server.server().dropConnections();
    if (session.InTransaction()) session.Rollback();
    EXPECT_FALSE(session.Connected());
    session.Open();
    table.Close();
    EXPECT_EQ(server.rows(QStringLiteral("SELECT a FROM T")), "a\n");
}

// The rows are in when the question for their number fails: sending them again would put them in twice.
TEST_P(TableTest, ABlockWhoseErrorMayHaveLeftRowsIsTakenBackBeforeItIsSentAgain) {
    open(kTwoColumns);
    TORVIK_NEEDS_SANDBOX(server);
    server.run(QStringLiteral("SET NOCOUNT ON"));
    sandbox::FaultRule rule;
    rule.match.textContains = "SELECT @@ROWCOUNT";
    rule.level = sandbox::FaultLevel::Statement;  // the INSERT before it has run
    rule.action = sandbox::FaultAction::Fail;
    rule.message.number = 50000;
    rule.message.severity = 16;
    rule.message.text = "ikke nå";
    for (const bool inTransaction : {false, true}) {
        if (inTransaction) server.session().StartTransaction();
        server.run(QStringLiteral("DELETE FROM T"));
        const int met = server.faults().add(rule);
        for (int i = 0; i < 400; ++i) add(i, "x");  // as many as go in one INSERT
        table.Flush();
        server.faults().remove(met);
        if (inTransaction) server.session().Commit();
        EXPECT_FALSE(server.session().InTransaction());
        EXPECT_EQ(server.rows(QStringLiteral("SELECT COUNT(*) AS n, COUNT(DISTINCT a) AS ulike FROM T")),
                  "n | ulike\n400 | 400\n")
            << inTransaction;
    }
}

TEST_P(TableTest, RowsThatTheServerDidNotTakeAreMissed) {
    open(kTwoColumns);
    add(-1, "x");
    table.Flush();  // the catalogue is asked before ROWCOUNT cuts its answer
    for (const bool inTransaction : {false, true}) {
        if (inTransaction) server.session().StartTransaction();
        server.run(QStringLiteral("SET ROWCOUNT 2"));
        for (int i = 0; i < 3; ++i) add(i, "x");
        try {
            table.Flush();
            ADD_FAILURE() << "sent";
        } catch (const StatementError& e) {
            EXPECT_EQ(e.text(), QStringLiteral("Of 3 rows for table T the server has taken 2"));
        }
        server.run(QStringLiteral("SET ROWCOUNT 0"));
        EXPECT_EQ(server.session().InTransaction(), inTransaction);
        server.session().Rollback();
        EXPECT_EQ(table.SentRows(), 1);
        EXPECT_EQ(server.rows(QStringLiteral("SELECT a FROM T")), "a\n-1\n");
    }
}

TEST_P(TableTest, RowsForAViewAreSentOneByOne) {
    server.run(QStringLiteral("CREATE TABLE Under (a int NOT NULL, b varchar(10) NULL)"));
    server.run(QStringLiteral("CREATE VIEW T AS SELECT a, b FROM Under"));
    table.SetTableName(QStringLiteral("T"));
    table.Open();
    TORVIK_NEEDS_SANDBOX(server);
    int inserts = 0;
    const int observer = server.faults().observe([&](const sandbox::RequestInfo& request) {
        inserts += request.text.find("INSERT INTO T") != std::string::npos;
    });
    for (int i = 0; i < 3; ++i) add(i, "x");
    table.Flush();
    server.faults().forget(observer);
    EXPECT_EQ(inserts, 3);
    EXPECT_EQ(server.rows(QStringLiteral("SELECT a FROM Under ORDER BY a")), "a\n0\n1\n2\n");
}

}  // namespace
}  // namespace torvik::db
