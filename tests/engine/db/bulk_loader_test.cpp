// The bulk loader: rows by column name from one session's query to another's table.
#include "engine/db/bulk_loader.h"

#include <gtest/gtest.h>

#include "engine/db/errors.h"
#include "engine/db/query.h"
#include "engine/db/script.h"
#include "tests/support/qt_print.h"
#include "tests/support/sandbox_server.h"

namespace torvik::db {
namespace {

class BulkLoaderTest : public testing::Test {
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

    test::SandboxServer server;
    std::unique_ptr<Session> target = server.connect();
    Query source{&server.session()};
    BulkLoader loader{target.get()};
};

TEST_F(BulkLoaderTest, AllRowsGoByColumnName) {
    fill(3);
    source.Open();
    EXPECT_EQ(loader.LoadFromDataSet(source), 3);
    EXPECT_EQ(server.rows(QStringLiteral("SELECT * FROM Mal ORDER BY a")),
              "c | extra | b | a\n0.00 | 4 | rad | 0\n0.50 | 4 | rad | 1\n1.00 | 4 | rad | 2\n");
}

TEST_F(BulkLoaderTest, ProgressGoesUpTo100) {
    fill(200);
    source.Open();
    QList<int> percents;
    loader.OnProgress = [&](BulkLoader&, int percent) { percents += percent; };
    loader.LoadFromDataSet(source);
    EXPECT_TRUE(std::is_sorted(percents.begin(), percents.end()));
    EXPECT_EQ(percents.last(), 100);
}

TEST_F(BulkLoaderTest, WhatProgressThrowsStopsTheLoadAndUndoesTheBatch) {
    fill(200);
    source.Open();
    loader.OnProgress = [](BulkLoader&, int percent) {
        if (percent == 50) throw UsageError(QStringLiteral("Avbrutt av bruker."));
    };
    EXPECT_THROW(loader.LoadFromDataSet(source), UsageError);
    EXPECT_FALSE(target->InTransaction());
    EXPECT_EQ(server.rows(QStringLiteral("SELECT COUNT(*) AS n FROM Mal")), "n\n0\n");
}

TEST_F(BulkLoaderTest, BatchesAreCommittedOneByOne) {
    fill(25);
    server.run(QStringLiteral("INSERT Mal (a) VALUES (22)"));
    source.Open();
    loader.Options.RowsPerBatch = 10;
    EXPECT_THROW(loader.LoadFromDataSet(source), StatementError);
    EXPECT_EQ(server.rows(QStringLiteral("SELECT COUNT(*) AS n FROM Mal")), "n\n21\n");
}

TEST_F(BulkLoaderTest, InTheCallersTransactionNothingIsCommitted) {
    fill(5);
    source.Open();
    target->StartTransaction();
    loader.Options.RowsPerBatch = 2;
    EXPECT_EQ(loader.LoadFromDataSet(source), 5);
    EXPECT_TRUE(target->InTransaction());
    target->Rollback();
    EXPECT_EQ(server.rows(QStringLiteral("SELECT COUNT(*) AS n FROM Mal")), "n\n0\n");
}

TEST_F(BulkLoaderTest, AnEmptySourceLoadsNothing) {
    source.Open();
    int percent = -1;
    loader.OnProgress = [&](BulkLoader&, int now) { percent = now; };
    EXPECT_EQ(loader.LoadFromDataSet(source), 0);
    EXPECT_EQ(percent, 100);
}

TEST_F(BulkLoaderTest, AStreamedSourceIsLoadedWithoutBeingHeld) {
    fill(2500);
    source.UniDirectional = true;
    source.Open();
    EXPECT_EQ(loader.LoadFromDataSet(source), 2500);
    EXPECT_EQ(server.rows(QStringLiteral("SELECT COUNT(*) AS n, SUM(a) AS s FROM Mal")), "n | s\n2500 | 3123750\n");
}

TEST_F(BulkLoaderTest, ASourceColumnThatTheTableLacksIsNamed) {
    source.SQL = {QStringLiteral("SELECT 1 AS a, 2 AS ukjent")};
    source.Open();
    try {
        loader.LoadFromDataSet(source);
        FAIL() << "loaded";
    } catch (const UsageError& e) {
        EXPECT_TRUE(e.text().contains(u"ukjent"));
    }
}

}  // namespace
}  // namespace torvik::db
