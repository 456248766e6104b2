// Reads that go in one batch: whose rows are whose, when they count as whole, and who is told of a failure.
#include "engine/db/batched_reads.h"

#include <gtest/gtest.h>

#include "engine/db/errors.h"
#include "engine/db/planned_reads.h"
#include "engine/db/query.h"
#include "engine/db/table.h"
#include "engine/db/table_shapes.h"
#include "tests/support/qt_print.h"
#include "tests/support/sandbox_requests.h"
#include "tests/support/sandbox_server.h"

namespace torvik::db {
namespace {

const QString kOne = QStringLiteral("SELECT a FROM T WHERE a = 1");
const QString kAll = QStringLiteral("SELECT a FROM Mange ORDER BY a");
const QString kMissing = QStringLiteral("SELECT a FROM Finnes_ikke");
const QString kTexts = QStringLiteral("SELECT a, b FROM T ORDER BY a");
constexpr int kMany = 3000;

class BatchedReadsTest : public testing::Test {
protected:
    BatchedReadsTest() {
        server.run(
            QStringLiteral("CREATE TABLE T (a int NOT NULL PRIMARY KEY, b varchar(20) NULL)\n"
                           "INSERT T VALUES (1, 'en'), (2, 'to')"));
        server.run(QStringLiteral("CREATE TABLE Mange (a int PRIMARY KEY) DECLARE @i int SET @i = 0 SET NOCOUNT ON "
                                  "WHILE @i < %1 BEGIN INSERT Mange VALUES (@i) SET @i = @i + 1 END SET NOCOUNT OFF")
                       .arg(kMany));
    }

    void send(const QStringList& texts) {
        for (const QString& text : texts) reads.AddRead(text);
        reads.Send();
    }
    std::vector<qint64> rest() {
        std::vector<qint64> values;
        for (; !reads.Eof(); reads.Next()) values.push_back(reads.Fields(0).AsInteger());
        return values;
    }
    // The number of the error that opening the next read raises; 0 when none.
    int errorOfNext(const QString& text) {
        try {
            reads.OpenNext(text);
        } catch (const StatementError& e) {
            return e.Number;
        }
        return 0;
    }

    test::SandboxServer server;
    BatchedReads reads{server.session()};
};

TEST_F(BatchedReadsTest, ComeInTheirOrderEachWithItsOwnColumns) {
    send({kOne, kTexts, kAll});
    reads.OpenNext(kOne);
    EXPECT_EQ(rest(), std::vector<qint64>({1}));
    reads.OpenNext(kTexts);
    EXPECT_EQ(reads.FieldNames(), QStringList({QStringLiteral("a"), QStringLiteral("b")}));
    EXPECT_EQ(reads.RecordCount(), 2);
    EXPECT_EQ(rest(), std::vector<qint64>({1, 2}));
    reads.OpenNext(kAll);
    EXPECT_EQ(reads.RecordCount(), kMany);
}

TEST_F(BatchedReadsTest, AreOneRequest) {
    TORVIK_NEEDS_SANDBOX(server);
    const std::uint64_t before = server.faults().requests();
    send({kOne, kTexts, kAll});
    for (const QString& text : {kOne, kTexts, kAll}) reads.OpenNext(text);
    EXPECT_EQ(server.faults().requests(), before + 1);
}

TEST_F(BatchedReadsTest, NoRowsAreTakenForAnotherRead) {
    send({kOne, kAll});
    EXPECT_THROW(reads.OpenNext(kAll), UsageError);
    reads.OpenNext(kOne);
    EXPECT_THROW(reads.OpenNext(kOne), UsageError);
}

TEST_F(BatchedReadsTest, AnEmptyReadIsOneToo) {
    const QString none = QStringLiteral("SELECT a FROM T WHERE 1 = 0");
    send({none, kOne});
    reads.OpenNext(none);
    EXPECT_TRUE(reads.Eof());
    reads.OpenNext(kOne);
    EXPECT_EQ(rest(), std::vector<qint64>({1}));
}

TEST_F(BatchedReadsTest, AFailureIsToldAtItsTurnAndLeavesTheSessionUsable) {
    send({kOne, kMissing, kAll});
    EXPECT_EQ(errorOfNext(kOne), 0);
    EXPECT_EQ(errorOfNext(kMissing), 208);
    EXPECT_THROW(reads.OpenNext(kAll), UsageError);
    EXPECT_EQ(server.rows(QStringLiteral("SELECT COUNT(*) AS n FROM T")), "n\n2\n");
}

TEST_F(BatchedReadsTest, AMissingColumnIsToldBeforeAnythingIsRead) {
    reads.AddRead(kOne);
    reads.AddRead(QStringLiteral("SELECT Finnes_ikke FROM T"));
    EXPECT_THROW(reads.Send(), StatementError);
}

// The statement has given rows and goes no further; what follows it in the batch runs.
TEST_F(BatchedReadsTest, RowsThatBreakOffAreNeverWhole) {
    const QString overflow = QStringLiteral("SELECT CONVERT(tinyint, a) a FROM Mange ORDER BY a");
    for (const auto rows : {BatchedReads::Rows::Held, BatchedReads::Rows::Streamed}) {
        EXPECT_THROW(
            {
                send({overflow, kOne});
                reads.OpenNext(overflow, rows);
                while (!reads.Eof()) reads.Next();
            },
            StatementError);
        reads.Close();
    }
}

TEST_F(BatchedReadsTest, RowsThatBreakOffTellTheServersError) {
    const QString overflow = QStringLiteral("SELECT CONVERT(tinyint, a) a FROM Mange ORDER BY a");
    int number = 0;
    try {
        send({overflow, kOne});
        reads.OpenNext(overflow);
    } catch (const StatementError& e) {
        number = e.Number;
    }
    EXPECT_EQ(number, 220);
}

TEST_F(BatchedReadsTest, StreamedRowsAreReadAsTheyAreWalked) {
    const QString twice = QStringLiteral("SELECT a FROM Mange WHERE a < 2000 ORDER BY a");
    send({kAll, twice});
    reads.OpenNext(kAll, BatchedReads::Rows::Streamed);
    EXPECT_LT(reads.RecordCount(), kMany);
    EXPECT_EQ(rest().size(), std::size_t{kMany});
    EXPECT_EQ(reads.RecordCount(), kMany);
    reads.OpenNext(twice);
    EXPECT_EQ(reads.RecordCount(), 2000);
}

TEST_F(BatchedReadsTest, RowsThatNobodyWalksArePassedOver) {
    send({kAll, kOne});
    reads.OpenNext(kAll, BatchedReads::Rows::Streamed);
    reads.OpenNext(kOne);
    EXPECT_EQ(rest(), std::vector<qint64>({1}));
}

TEST_F(BatchedReadsTest, AnotherUseOfTheSessionReadsTheRestFirst) {
    send({kAll, kOne, kMissing});
    reads.OpenNext(kAll, BatchedReads::Rows::Streamed);
    server.run(QStringLiteral("UPDATE T SET a = 9 WHERE a = 1"));
    EXPECT_EQ(rest().size(), std::size_t{kMany});
    reads.OpenNext(kOne);
    EXPECT_EQ(rest(), std::vector<qint64>({1}));
    EXPECT_EQ(errorOfNext(kMissing), 208);
}

TEST_F(BatchedReadsTest, ARollbackDropsWhatIsNotRead) {
    server.session().StartTransaction();
    send({kAll, kOne});
    reads.OpenNext(kAll, BatchedReads::Rows::Streamed);
    server.session().Rollback();
    EXPECT_THROW(rest(), StatementError);
    EXPECT_THROW(reads.OpenNext(kOne), StatementError);
}

TEST_F(BatchedReadsTest, ASessionThatIsClosedDropsWhatIsNotRead) {
    send({kAll, kOne});
    reads.OpenNext(kAll, BatchedReads::Rows::Streamed);
    server.session().Close();
    EXPECT_THROW(rest(), ConnectionError);
    EXPECT_THROW(reads.OpenNext(kOne), ConnectionError);
}

TEST_F(BatchedReadsTest, AConnectionThatIsCutIsToldByTheReadThatMeetsIt) {
    TORVIK_NEEDS_SANDBOX(server);
    server.faults().dropAfterStatements(4);
    reads.CommandTimeout = 10;
    EXPECT_THROW(
        {
            send({kOne, kTexts, kAll});
            for (const QString& text : {kOne, kTexts, kAll}) reads.OpenNext(text);
        },
        ConnectionError);
    EXPECT_FALSE(server.session().Connected());
}

TEST_F(BatchedReadsTest, StatementsRunWhereTheyStand) {
    reads.AddRead(kOne);
    reads.AddStatement(QStringLiteral("DELETE T WHERE a = 1"));
    reads.AddRead(kTexts);
    reads.Send();
    reads.OpenNext(kOne);
    EXPECT_EQ(rest(), std::vector<qint64>({1}));
    reads.OpenNext(kTexts);
    EXPECT_EQ(rest(), std::vector<qint64>({2}));
}

TEST_F(BatchedReadsTest, BeginATransactionUnlessThereIsOne) {
    reads.AddBegin();
    send({kOne});
    reads.OpenNext(kOne);
    EXPECT_TRUE(server.session().StillInTransaction());
    reads.Close();
    reads.AddBegin();
    EXPECT_THROW(send({kOne}), UsageError);
    server.session().Rollback();
    EXPECT_FALSE(server.session().StillInTransaction());
}

TEST_F(BatchedReadsTest, TellTheSessionOfItsTransaction) {
    TORVIK_NEEDS_SANDBOX(server);
    reads.AddBegin();
    send({kOne, kTexts});
    for (const QString& text : {kOne, kTexts}) reads.OpenNext(text);
    const std::uint64_t before = server.faults().requests();
    EXPECT_TRUE(server.session().InTransaction());
    EXPECT_EQ(server.faults().requests(), before);
}

class PlannedReadsTest : public BatchedReadsTest {
protected:
    std::vector<qint64> valuesOf(PlannedReads& planned, const QString& text) {
        query.SQL = {text};
        std::vector<qint64> values;
        for (DataSet& rows = planned.Open(query); !rows.Eof(); rows.Next())
            values.push_back(rows.Fields(0).AsInteger());
        return values;
    }
    int errorOf(PlannedReads& planned, const QString& text) {
        try {
            static_cast<void>(valuesOf(planned, text));
        } catch (const StatementError& e) {
            return e.Number;
        }
        return 0;
    }

    Query query{&server.session()};
};

TEST_F(PlannedReadsTest, ARefusedBatchIsReadOneByOneUpToTheFailingRead) {
    PlannedReads planned(server.session());
    const QString noColumn = QStringLiteral("SELECT Finnes_ikke FROM T");
    for (const QString& text : {kOne, kTexts, noColumn, kAll}) planned.Plan({text});
    EXPECT_EQ(valuesOf(planned, kOne), std::vector<qint64>({1}));
    EXPECT_EQ(valuesOf(planned, kTexts), std::vector<qint64>({1, 2}));
    EXPECT_EQ(errorOf(planned, noColumn), 207);
    EXPECT_EQ(valuesOf(planned, kAll).size(), std::size_t{kMany});
}

TEST_F(PlannedReadsTest, AReadThatWasNotPlannedIsMadeByItself) {
    PlannedReads planned(server.session());
    planned.Plan({kOne});
    EXPECT_EQ(valuesOf(planned, kTexts), std::vector<qint64>({1, 2}));
    EXPECT_EQ(valuesOf(planned, kOne), std::vector<qint64>({1}));
}

TEST_F(PlannedReadsTest, WhatTheServerHasRolledBackIsNotReadAgain) {
    TORVIK_NEEDS_SANDBOX(server);
    sandbox::FaultRule deadlock;
    deadlock.match.textContains = "FROM T WHERE";
    deadlock.action = sandbox::FaultAction::Fail;
    deadlock.message = {.number = 1205, .severity = 13, .state = 1, .text = "Deadlock"};
    deadlock.rollBack = true;
    server.session().StartTransaction();
    server.faults().add(deadlock);
    PlannedReads planned(server.session(), PlannedReads::Within::Transaction);
    for (const QString& text : {kOne, kTexts}) planned.Plan({text});
    EXPECT_EQ(errorOf(planned, kOne), 1205);
}

TEST_F(PlannedReadsTest, AnErrorThatEndsTheTransactionIsNotReadAgain) {
    TORVIK_NEEDS_SANDBOX(server);
    sandbox::FaultRule ended;
    ended.match.textContains = "FROM T WHERE";
    ended.action = sandbox::FaultAction::Fail;
    ended.message = {.number = 50000, .severity = 16, .state = 1, .text = "Made to fail"};
    ended.rollBack = true;
    server.session().StartTransaction();
    server.faults().add(ended);
    PlannedReads planned(server.session(), PlannedReads::Within::Transaction);
    for (const QString& text : {kOne, kTexts}) planned.Plan({text});
    EXPECT_EQ(errorOf(planned, kOne), 50000);
}

TEST_F(BatchedReadsTest, ATableWhoseShapeIsKnownIsOpenedWithoutAQuestion) {
    TORVIK_NEEDS_SANDBOX(server);
    TableShapes shapes;
    const auto open = [&] {
        const std::uint64_t before = server.faults().requests();
        Table table(&server.session());
        table.SetTableName(QStringLiteral("T"));
        table.SetShapes(&shapes);
        table.Open();
        EXPECT_EQ(table.FieldCount(), 2);
        return server.faults().requests() - before;
    };
    EXPECT_EQ(open(), 1U);
    EXPECT_EQ(open(), 0U);
    shapes.Forget();
    EXPECT_EQ(open(), 1U);
}

}  // namespace
}  // namespace torvik::db
