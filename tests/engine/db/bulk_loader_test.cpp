// The bulk loader: rows by column name from one session's query to another's table.
#include "engine/db/bulk_loader.h"

#include <gtest/gtest.h>

#include "engine/db/errors.h"
#include "engine/db/query.h"
#include "engine/db/script.h"
#include "engine/db/table_shapes.h"
#include "tests/support/qt_print.h"
#include "tests/support/sandbox_requests.h"
#include "tests/support/sandbox_wire.h"

namespace torvik::db {
namespace {

class BulkLoaderTest : public test::OverTheWire {
protected:
    BulkLoaderTest() {
        server.run(
            QStringLiteral("CREATE TABLE Kilde (a int, b varchar(20), c decimal(9,2)) "
                           "CREATE TABLE Mal (c decimal(9,2), extra int DEFAULT 4, b varchar(20), a int PRIMARY KEY)"));
        loader.TableName = QStringLiteral("Mal");
        source.SQL = {QStringLiteral("SELECT a, b, c FROM Kilde ORDER BY a")};
    }

    void fill(int rows) {
        Script script(&server.session());
        script.SQL = {QStringLiteral("DECLARE @i int SET @i = 0 SET NOCOUNT ON WHILE @i < %1 BEGIN INSERT Kilde VALUES "
                                     "(@i, 'rad', @i * 0.5) SET @i = @i + 1 END")
                          .arg(rows)};
        script.Execute();
    }

    // What progress tells, each percentage once as long as it stays.
    void note(int percent) {
        if (percents.isEmpty() || percents.last() != percent) percents += percent;
    }
    static QList<int> everyPercent() {
        QList<int> all;
        for (int percent = 0; percent <= 100; ++percent) all += percent;
        return all;
    }

    QList<int> percents;
    std::unique_ptr<Session> target = server.connect();
    Query source{&server.session()};
    BulkLoader loader{target.get()};
};

TORVIK_OVER_THE_WIRE(BulkLoaderTest);

TEST_P(BulkLoaderTest, AllRowsGoByColumnName) {
    fill(3);
    source.Open();
    EXPECT_EQ(loader.LoadFromDataSet(source), 3);
    EXPECT_EQ(server.rows(QStringLiteral("SELECT * FROM Mal ORDER BY a")),
              "c | extra | b | a\n0.00 | 4 | rad | 0\n0.50 | 4 | rad | 1\n1.00 | 4 | rad | 2\n");
}

TEST_P(BulkLoaderTest, ProgressComesAtEveryPercentUpTo100) {
    fill(200);
    source.Open();
    loader.OnProgress = [&](BulkLoader&, int percent) { note(percent); };
    loader.LoadFromDataSet(source);
    EXPECT_EQ(percents, everyPercent());
}

TEST_P(BulkLoaderTest, WhatProgressThrowsStopsTheLoadAndUndoesTheBatch) {
    fill(200);
    source.Open();
    loader.OnProgress = [](BulkLoader&, int percent) {
        if (percent == 50) throw UsageError(QStringLiteral("Avbrutt av bruker."));
    };
    EXPECT_THROW(loader.LoadFromDataSet(source), UsageError);
    EXPECT_FALSE(target->InTransaction());
    EXPECT_EQ(server.rows(QStringLiteral("SELECT COUNT(*) AS n FROM Mal")), "n\n0\n");
}

TEST_P(BulkLoaderTest, WhatProgressThrowsBehindSeveralBlocksUndoesThemToo) {
    fill(4500);
    source.UniDirectional = source.CountRows = true;
    source.Open();
    loader.OnProgress = [](BulkLoader&, int percent) {
        if (percent == 80) throw UsageError(QStringLiteral("Avbrutt av bruker."));
    };
    EXPECT_THROW(loader.LoadFromDataSet(source), UsageError);
    EXPECT_FALSE(target->InTransaction());
    EXPECT_EQ(server.rows(QStringLiteral("SELECT COUNT(*) AS n FROM Mal")), "n\n0\n");
}

// Row 500 of the first block is in the table already; row 1500 holds no number.
TEST_P(BulkLoaderTest, ABlocksFailureComesBeforeThatOfARowBehindIt) {
    fill(2500);
    server.run(QStringLiteral("INSERT Mal (a) VALUES (500)"));
    source.SQL = {QStringLiteral("SELECT a, CASE WHEN a = 1500 THEN 'x' ELSE '1' END AS c FROM Kilde ORDER BY a")};
    source.Open();
    EXPECT_THROW(loader.LoadFromDataSet(source), StatementError);
    EXPECT_FALSE(target->InTransaction());
    EXPECT_EQ(server.rows(QStringLiteral("SELECT a FROM Mal")), "a\n500\n");
}

TEST_P(BulkLoaderTest, ARowsFailureUndoesTheBlocksBeforeIt) {
    fill(2500);
    source.SQL = {QStringLiteral("SELECT a, CASE WHEN a = 1500 THEN 'x' ELSE '1' END AS c FROM Kilde ORDER BY a")};
    source.Open();
    EXPECT_THROW(loader.LoadFromDataSet(source), UsageError);
    EXPECT_FALSE(target->InTransaction());
    EXPECT_EQ(server.rows(QStringLiteral("SELECT a FROM Mal")), "a\n");
}

TEST_P(BulkLoaderTest, BatchesAreCommittedOneByOne) {
    fill(25);
    server.run(QStringLiteral("INSERT Mal (a) VALUES (22)"));
    source.Open();
    loader.Options.RowsPerBatch = 10;
    EXPECT_THROW(loader.LoadFromDataSet(source), StatementError);
    EXPECT_EQ(server.rows(QStringLiteral("SELECT COUNT(*) AS n FROM Mal")), "n\n21\n");
}

TEST_P(BulkLoaderTest, InTheCallersTransactionNothingIsCommitted) {
    fill(5);
    source.Open();
    target->StartTransaction();
    loader.Options.RowsPerBatch = 2;
    EXPECT_EQ(loader.LoadFromDataSet(source), 5);
    EXPECT_TRUE(target->InTransaction());
    target->Rollback();
    EXPECT_EQ(server.rows(QStringLiteral("SELECT COUNT(*) AS n FROM Mal")), "n\n0\n");
}

TEST_P(BulkLoaderTest, AnEmptySourceLoadsNothing) {
    source.Open();
    int percent = -1;
    loader.OnProgress = [&](BulkLoader&, int now) { percent = now; };
    EXPECT_EQ(loader.LoadFromDataSet(source), 0);
    EXPECT_EQ(percent, 100);
}

TEST_P(BulkLoaderTest, AStreamedSourceIsLoadedWithoutBeingHeld) {
    fill(2500);
    source.UniDirectional = true;
    source.Open();
    EXPECT_EQ(loader.LoadFromDataSet(source), 2500);
    EXPECT_EQ(server.rows(QStringLiteral("SELECT COUNT(*) AS n, SUM(a) AS s FROM Mal")), "n | s\n2500 | 3123750\n");
    EXPECT_THROW(source.First(), UsageError) << "its first rows are gone";
}

TEST_P(BulkLoaderTest, AStreamedSourceThatCountsItsRowsHasPercents) {
    fill(2500);
    source.UniDirectional = source.CountRows = true;
    source.Open();
    EXPECT_EQ(source.RecordCount(), 2500);
    loader.OnProgress = [&](BulkLoader&, int percent) { note(percent); };
    loader.LoadFromDataSet(source);
    EXPECT_EQ(percents, everyPercent());
    EXPECT_EQ(source.RecordCount(), 2500);
}

TEST_P(BulkLoaderTest, AStreamedSourceThatDoesNotIsAtNothingUntilTheEnd) {
    fill(2500);
    source.UniDirectional = true;
    source.Open();
    loader.OnProgress = [&](BulkLoader&, int percent) { note(percent); };
    loader.LoadFromDataSet(source);
    EXPECT_EQ(percents, (QList<int>{0, 100}));
}

TEST_P(BulkLoaderTest, TheCallbackMayUseBothSessions) {
    fill(2500);
    source.UniDirectional = true;
    source.Open();
    loader.OnProgress = [&](BulkLoader&, int) {
        EXPECT_EQ(server.rows(QStringLiteral("SELECT 1 AS en")), "en\n1\n");
        EXPECT_EQ(server.rows(QStringLiteral("SELECT 1 AS en"), *target), "en\n1\n");
    };
    EXPECT_EQ(loader.LoadFromDataSet(source), 2500);
    EXPECT_EQ(server.rows(QStringLiteral("SELECT COUNT(*) AS n FROM Mal")), "n\n2500\n");
}

TEST_P(BulkLoaderTest, ASourceOnTheLoadersOwnSessionIsLoaded) {
    fill(2500);
    loader.SetConnection(&server.session());
    source.Open();
    EXPECT_EQ(loader.LoadFromDataSet(source), 2500);
    source.Close();
    source.UniDirectional = true;
    source.Open();
    EXPECT_THROW(loader.LoadFromDataSet(source), UsageError);
}

TEST_P(BulkLoaderTest, RowsThatTheServerDidNotTakeAreMissed) {
    fill(3);
    source.Open();
    // Once the catalogue has been asked, whose answer ROWCOUNT would cut.
    loader.OnProgress = [&](BulkLoader&, int) {
        Script limit(target.get());
        limit.SQL = {QStringLiteral("SET ROWCOUNT 2")};
        limit.Execute();
    };
    try {
        loader.LoadFromDataSet(source);
        FAIL() << "loaded";
    } catch (const StatementError& e) {
        EXPECT_EQ(e.text(), QStringLiteral("Of 3 rows for table Mal the server has taken 2"));
    }
    EXPECT_EQ(server.rows(QStringLiteral("SELECT a FROM Mal")), "a\n");
}

TEST_P(BulkLoaderTest, AValueThatIsNoneOfItsColumnsIsNamed) {
    source.SQL = {QStringLiteral("SELECT 1 AS a, 'x' AS c")};
    source.Open();
    try {
        loader.LoadFromDataSet(source);
        FAIL() << "loaded";
    } catch (const UsageError& e) {
        EXPECT_EQ(e.text(), QStringLiteral("'x' is not a valid decimal value for field 'c' in row 1"));
    }
    EXPECT_FALSE(target->InTransaction());
}

TEST_P(BulkLoaderTest, ASourceColumnThatTheTableLacksIsNamed) {
    source.SQL = {QStringLiteral("SELECT 1 AS a, 2 AS ukjent")};
    source.Open();
    try {
        loader.LoadFromDataSet(source);
        FAIL() << "loaded";
    } catch (const UsageError& e) {
        EXPECT_TRUE(e.text().contains(u"ukjent"));
    }
}

class BulkLoaderFewTrips : public BulkLoaderTest {
protected:
    BulkLoaderFewTrips() {
        loader.Options.FewRoundTrips = true;
        loader.Shapes = &shapes;
        source.SQL = {QStringLiteral("SELECT a, b, c FROM Kilde ORDER BY a")};
    }

    // So many rows, numbered from 0; `count` is a multiple of 500.
    void fillMany(int count) {
        fill(500);
        for (int rows = 500; rows < count; rows += 500)
            server.run(QStringLiteral("INSERT Kilde SELECT a + %1, b, c FROM Kilde WHERE a < 500").arg(rows));
    }

    [[nodiscard]] qint64 load() {
        source.Close();
        source.Open();
        return loader.LoadFromDataSet(source);
    }

    // Of the rows loaded: how many, how many of them differ, the least, the greatest.
    [[nodiscard]] std::string loaded() {
        return server.rows(QStringLiteral("SELECT COUNT(*) n, COUNT(DISTINCT a) d, MIN(a) fra, MAX(a) til FROM Mal"));
    }

    void failStatement(const char* text, int times = 1) {
        sandbox::FaultRule rule;
        rule.match.textContains = text;
        rule.level = sandbox::FaultLevel::Statement;
        rule.times = times;
        rule.action = sandbox::FaultAction::Fail;
        rule.message.number = 50000;
        rule.message.severity = 16;
        rule.message.text = "ikke nå";
        server.faults().add(rule);
    }

    TableShapes shapes;
};

TORVIK_OVER_THE_WIRE(BulkLoaderFewTrips);

TEST_P(BulkLoaderFewTrips, RowsForOneStatementAreOneRoundTripOnceTheTableIsKnown) {
    TORVIK_NEEDS_SANDBOX(server);
    fill(3);
    EXPECT_EQ(load(), 3);
    server.run(QStringLiteral("DELETE Mal"));
    test::Requests requests(server.server());
    source.Close();
    source.Open();
    requests.forget();
    EXPECT_EQ(loader.LoadFromDataSet(source), 3);
    EXPECT_EQ(requests.count(QString()), 1);
    EXPECT_EQ(loaded(), "n | d | fra | til\n3 | 3 | 0 | 2\n");
}

TEST_P(BulkLoaderFewTrips, AnEmptySourceAsksAKnownTableNothing) {
    TORVIK_NEEDS_SANDBOX(server);
    EXPECT_EQ(load(), 0);
    source.Close();
    source.Open();
    test::Requests requests(server.server());
    EXPECT_EQ(loader.LoadFromDataSet(source), 0);
    EXPECT_EQ(requests.count(QString()), 0);
}

TEST_P(BulkLoaderFewTrips, AWholeBatchIsOneCopy) {
    fillMany(21'000);
    server.run(QStringLiteral("DELETE Kilde WHERE a >= 20007"));
    int copies = 0;
    int observer = 0;
    if (server.isSandbox())
        observer = server.faults().observe(
            [&](const sandbox::RequestInfo& request) { copies += request.kind == sandbox::RequestKind::Bulk; });
    EXPECT_EQ(load(), 20'007);
    if (server.isSandbox()) {
        server.faults().forget(observer);
        EXPECT_EQ(copies, 2) << "the last seven go by INSERT";
    }
    EXPECT_EQ(loaded(), "n | d | fra | til\n20007 | 20007 | 0 | 20006\n");
}

TEST_P(BulkLoaderFewTrips, ABadRowOfALargeBlockLeavesNothingOfItsBatchAndIsTold) {
    fillMany(12'000);
    server.run(QStringLiteral("INSERT Mal (a) VALUES (11700)"));
    try {
        static_cast<void>(load());
        FAIL() << "loaded";
    } catch (const StatementError& e) {
        EXPECT_EQ(e.Number, 2627);
    }
    EXPECT_EQ(loaded(), "n | d | fra | til\n10001 | 10001 | 0 | 11700\n");
    EXPECT_FALSE(target->InTransaction());
}

TEST_P(BulkLoaderFewTrips, ABadRowOfASmallBatchLeavesNothingAndIsTold) {
    fill(5);
    server.run(QStringLiteral("INSERT Mal (a) VALUES (3)"));
    try {
        static_cast<void>(load());
        FAIL() << "loaded";
    } catch (const StatementError& e) {
        EXPECT_EQ(e.Number, 2627);
    }
    EXPECT_EQ(loaded(), "n | d | fra | til\n1 | 1 | 3 | 3\n");
    EXPECT_FALSE(target->InTransaction());
}

// A letter outside the column's code page goes by INSERT; those before and behind it arrive all the same.
TEST_P(BulkLoaderFewTrips, ARowThatBulkCopyDoesNotTakeLosesNoOther) {
    fillMany(3'000);
    server.run(QStringLiteral("ALTER TABLE Kilde ADD d nvarchar(20) NULL"));
    server.run(QStringLiteral("UPDATE Kilde SET d = N'rad'"));
    server.run(QStringLiteral("UPDATE Kilde SET d = NCHAR(1046) WHERE a IN (17, 1500, 2999)"));
    source.SQL = {QStringLiteral("SELECT a, d AS b FROM Kilde ORDER BY a")};
    EXPECT_EQ(load(), 3'000);
    EXPECT_EQ(loaded(), "n | d | fra | til\n3000 | 3000 | 0 | 2999\n");
    EXPECT_EQ(server.rows(QStringLiteral("SELECT a, b FROM Mal WHERE b <> 'rad' ORDER BY a")),
              "a | b\n17 | ?\n1500 | ?\n2999 | ?\n");
}

TEST_P(BulkLoaderFewTrips, OfABatchInOneRoundTripThatTheServerDidNotTakeWholeNothingStands) {
    fill(3);
    static_cast<void>(load());
    server.run(QStringLiteral("DELETE Mal"));
    Script limit(target.get());
    limit.SQL = {QStringLiteral("SET ROWCOUNT 2")};
    limit.Execute();
    try {
        static_cast<void>(load());
        FAIL() << "loaded";
    } catch (const StatementError& e) {
        EXPECT_EQ(e.text(), QStringLiteral("Of 3 rows for table Mal the server has taken 2"));
    }
    EXPECT_EQ(server.rows(QStringLiteral("SELECT a FROM Mal")), "a\n");
    EXPECT_FALSE(target->InTransaction());
}

TEST_P(BulkLoaderFewTrips, ABatchThatIsRefusedOnceIsSentAgain) {
    TORVIK_NEEDS_SANDBOX(server);
    fill(3);
    for (const char* statement : {"BEGIN TRANSACTION", "INSERT INTO Mal", "COMMIT TRANSACTION"}) {
        server.run(QStringLiteral("DELETE Mal"));
        failStatement(statement);
        EXPECT_EQ(load(), 3) << statement;
        EXPECT_EQ(loaded(), "n | d | fra | til\n3 | 3 | 0 | 2\n") << statement;
        EXPECT_FALSE(target->InTransaction()) << statement;
    }
}

// The rows are in when the question for their number fails: they are taken back before they are sent again.
TEST_P(BulkLoaderFewTrips, ABatchWhoseCountFailsIsNotInTwice) {
    TORVIK_NEEDS_SANDBOX(server);
    server.run(QStringLiteral("CREATE TABLE UtenNokkel (a int, b varchar(20), c decimal(9,2))"));
    loader.TableName = QStringLiteral("UtenNokkel");
    fill(3);
    failStatement("SELECT @torvik_rows");
    EXPECT_EQ(load(), 3);
    EXPECT_EQ(server.rows(QStringLiteral("SELECT COUNT(*) AS n FROM UtenNokkel")), "n\n3\n");
}

}  // namespace
}  // namespace torvik::db
