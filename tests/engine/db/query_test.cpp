// A query's text, parameters and replies: what Open and ExecSQL read, hold and raise.
#include "engine/db/query.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include "engine/db/errors.h"
#include "engine/db/stored_proc.h"
#include "tests/support/qt_print.h"
#include "tests/support/sandbox_wire.h"

namespace torvik::db {
namespace {

class QueryTest : public test::OverTheWire {
protected:
    QueryTest() { server.run(QStringLiteral("CREATE TABLE T (a int NOT NULL PRIMARY KEY, b varchar(20) NULL)")); }

    // Opens query and gives the number of the error that this raised; 0 when none.
    static int errorOfOpen(Query& query) {
        try {
            query.Open();
        } catch (const StatementError& e) {
            EXPECT_FALSE(query.Active());
            return e.Number;
        }
        return 0;
    }

    void fillT(int rows) {
        server.run(QStringLiteral("DECLARE @i int SET @i = 0 SET NOCOUNT ON WHILE @i < %1 BEGIN "
                                  "INSERT T VALUES (@i, 'x') SET @i = @i + 1 END SET NOCOUNT OFF")
                       .arg(rows));
    }

    void walk() {
        while (!query.Eof()) query.Next();
    }

    Query query{&server.session()};
};

TORVIK_OVER_THE_WIRE(QueryTest);

TEST_P(QueryTest, LinesCanBeClearedAppendedAndReplaced) {
    query.SQL.clear();
    query.SQL << QStringLiteral("SELECT 1 AS a -- first") << QStringLiteral("WHERE 1 = 0");
    query.SQL[1] = QStringLiteral("ORDER BY a");
    query.Open();
    EXPECT_EQ(query.RecordCount(), 1);
}

TEST_P(QueryTest, OpeningAnOpenQueryRunsItAgainOnlyWithANewText) {
    query.SQL = {QStringLiteral("SELECT a FROM T")};
    query.Open();
    server.run(QStringLiteral("INSERT T VALUES (1, 'en')"));
    query.Open();
    EXPECT_EQ(query.RecordCount(), 0);
    query.SQL = {QStringLiteral("SELECT b FROM T")};
    query.Open();
    EXPECT_EQ(query.Fields(0).AsString(), QStringLiteral("en"));
}

TEST_P(QueryTest, ABatchOfSeveralStatementsAndControlFlowIsOneBatch) {
    query.ParamCheck = false;
    query.SQL = {QStringLiteral("DECLARE @i int"),
                 QStringLiteral("SET @i = 0"),
                 QStringLiteral("WHILE @i < 3"),
                 QStringLiteral("BEGIN"),
                 QStringLiteral("  INSERT T VALUES (@i, 'x:y')"),
                 QStringLiteral("  SET @i = @i + 1"),
                 QStringLiteral("END"),
                 QStringLiteral("IF EXISTS (SELECT * FROM T WHERE a = 7) DELETE FROM T ELSE UPDATE T SET b = 'z'")};
    query.ExecSQL();
    EXPECT_EQ(query.RowsAffected(), 6);
    EXPECT_EQ(server.rows(QStringLiteral("SELECT * FROM T")), "a | b\n0 | z\n1 | z\n2 | z\n");
}

TEST_P(QueryTest, AScriptWithColonsInLiteralsRunsWithParamCheckOff) {
    query.ParamCheck = false;
    query.SQL = {QStringLiteral("INSERT T VALUES (1, 'kl. 10:30') -- se :dette")};
    query.ExecSQL();
    EXPECT_EQ(server.rows(QStringLiteral("SELECT b FROM T")), "b\nkl. 10:30\n");
    EXPECT_TRUE(query.Params().All().empty());
}

TEST_P(QueryTest, ParametersStandWhereverTheirNameDoes) {
    server.run(QStringLiteral("INSERT T VALUES (1, 'en') INSERT T VALUES (2, 'to') INSERT T VALUES (3, 'tre')"));
    query.SQL = {QStringLiteral("SELECT b FROM T WHERE a = :Id OR (:Id > 1 AND b = :Navn) ORDER BY a")};
    query.ParamByName(QStringLiteral("id")) = 2;
    query.ParamByName(QStringLiteral("Navn")) = "tre";
    query.Open();
    EXPECT_EQ(query.RecordCount(), 2);
    query.Close();
    query.ParamByName(QStringLiteral("Id")) = 1;
    query.Open();
    EXPECT_EQ(query.RecordCount(), 1);
    EXPECT_THROW(static_cast<void>(query.ParamByName(QStringLiteral("Avd"))), UsageError);
}

TEST_P(QueryTest, ParametersOfEveryKindArriveUnchanged) {
    const QUuid id = QUuid::createUuid();
    const std::pair<const char*, Value> cases[] = {
        {"int", 42},
        {"bigint", 5'000'000'000},
        {"bit", true},
        {"float", 0.1},
        {"decimal(38, 4)", *Decimal::fromText(u"-1234567890123456789012345678901234.5678")},
        {"nvarchar(50)", "blåbærsyltetøy ☕"},
        {"varchar(50)", ""},
        {"nvarchar(max)", QString(9000, u'ø')},
        {"varbinary(8000)", QByteArray("\0\x01\xFF", 3)},
        {"varbinary(max)", QByteArray(20000, 'b')},
        {"uniqueidentifier", id},
        {"datetime", DateTime(QDate(2024, 2, 29), QTime(23, 59, 59, 997))},
        {"datetime", DateTime(QDate(1900, 1, 1), QTime(0, 0, 0, 3))},
        {"datetime2(7)", DateTime::fromTicks(QDate(2024, 2, 29), 863'999'999'999)},
        {"int", Value()},
    };
    for (const auto& [type, value] : cases) {
        query.Close();
        query.SQL = {QStringLiteral("DECLARE @v %1 SET @v = :v SELECT @v AS v").arg(QLatin1String(type))};
        query.ParamByName(QStringLiteral("v")) = value;
        query.Open();
        EXPECT_TRUE(query.Fields(0).AsValue() == value) << type << ": " << query.Fields(0).AsString().toStdString();
    }
}

TEST_P(QueryTest, AParametersTypeConvertsItsText) {
    query.SQL = {QStringLiteral("SELECT :a + 1 AS a")};
    query.ParamByName(QStringLiteral("a")) = " 41 ";
    query.ParamByName(QStringLiteral("a")).SetType(FieldType::Integer);
    query.Open();
    EXPECT_EQ(query.Fields(0).AsInteger(), 42);
}

TEST_P(QueryTest, OpenPassesOverCountsAndMessagesToTheFirstRowSet) {
    query.SQL = {
        QStringLiteral("INSERT T VALUES (1, 'a') PRINT 'hei' UPDATE T SET b = 'c' SELECT b FROM T SELECT 1 AS x")};
    query.Open();
    EXPECT_EQ(query.FieldNames(), QStringList{QStringLiteral("b")});
    EXPECT_EQ(query.FieldByName(QStringLiteral("B")).AsString(), QStringLiteral("c"));
}

TEST_P(QueryTest, AnErrorAnywhereInTheReplyIsRaised) {
    server.run(QStringLiteral("INSERT T VALUES (1, 'a')"));
    query.SQL = {QStringLiteral("INSERT T VALUES (1, 'b') SELECT * FROM T")};
    EXPECT_EQ(errorOfOpen(query), 2627) << "before the rows";
    query.SQL = {QStringLiteral("SELECT 1 / (1 - a) AS a FROM T")};
    EXPECT_EQ(errorOfOpen(query), 8134) << "among the rows";
    query.SQL = {QStringLiteral("SELECT * FROM T INSERT T VALUES (1, 'b')")};
    EXPECT_EQ(errorOfOpen(query), 2627) << "behind the rows";
}

TEST_P(QueryTest, ABatchGoesOnBehindAFailedStatementAndIsReadToItsEnd) {
    query.SQL = {QStringLiteral("INSERT T VALUES (1, 'a')"), QStringLiteral("INSERT T VALUES (1, 'b')"),
                 QStringLiteral("INSERT T VALUES (NULL, 'c')"), QStringLiteral("INSERT T VALUES (2, 'd')")};
    try {
        query.ExecSQL();
        FAIL() << "no error";
    } catch (const StatementError& e) {
        EXPECT_EQ(e.Number, 2627);
        EXPECT_EQ(e.Line, 2);
        EXPECT_EQ(e.Messages.size(), 2);
        EXPECT_EQ(e.Messages.last().Number, 515);
        EXPECT_EQ(e.text().count(u'\n'), 1);
    }
    EXPECT_EQ(server.rows(QStringLiteral("SELECT a, b FROM T")), "a | b\n1 | a\n2 | d\n");
}

TEST_P(QueryTest, AnErrorOfTheFirstStatementLeavesTheRestRunning) {
    query.SQL = {QStringLiteral("INSERT T VALUES (NULL, 'a')"), QStringLiteral("WAITFOR DELAY '00:00:00.050'"),
                 QStringLiteral("INSERT T VALUES (2, 'b')")};
    EXPECT_THROW(query.ExecSQL(), StatementError);
    EXPECT_EQ(server.rows(QStringLiteral("SELECT a FROM T")), "a\n2\n");
}

TEST_P(QueryTest, ABatchWithoutRowsCannotBeOpened) {
    query.SQL = {QStringLiteral("INSERT T VALUES (1, 'a')")};
    EXPECT_THROW(query.Open(), StatementError);
    EXPECT_FALSE(query.Active());
    EXPECT_EQ(server.rows(QStringLiteral("SELECT a FROM T")), "a\n1\n");
}

TEST_P(QueryTest, AnEmptyTextIsRefused) {
    EXPECT_THROW(query.Open(), UsageError);
    EXPECT_THROW(query.ExecSQL(), UsageError);
}

TEST_P(QueryTest, AnyNumberOfQueriesCanBeOpenOnOneSession) {
    server.run(QStringLiteral("INSERT T VALUES (1, 'a') INSERT T VALUES (2, 'b') INSERT T VALUES (3, 'c')"));
    query.SQL = {QStringLiteral("SELECT a FROM T ORDER BY a")};
    qint64 sum = 0;
    for (query.Open(); !query.Eof(); query.Next()) {
        Query inner(&server.session());
        inner.SQL = {QStringLiteral("SELECT a FROM T WHERE a <= :a")};
        inner.ParamByName(QStringLiteral("a")) = query.Fields(0).AsInteger();
        for (inner.Open(); !inner.Eof(); inner.Next()) sum += inner.Fields(0).AsInteger();
    }
    EXPECT_EQ(sum, 1 + 3 + 6);
}

TEST_P(QueryTest, AnEmptyResultHasColumnsAndNoRows) {
    query.SQL = {QStringLiteral("SELECT a, b FROM T")};
    query.Open();
    EXPECT_TRUE(query.Active());
    EXPECT_TRUE(query.IsEmpty());
    EXPECT_TRUE(query.Eof());
    EXPECT_EQ(query.FieldNames(), (QStringList{QStringLiteral("a"), QStringLiteral("b")}));
}

TEST_P(QueryTest, TheConnectionIsChangedOnlyWhileClosed) {
    const auto other = server.connect();
    query.SQL = {QStringLiteral("SELECT @@SPID AS spid")};
    query.Open();
    const qint64 first = query.Fields(0).AsInteger();
    EXPECT_THROW(query.SetConnection(other.get()), UsageError);
    query.Close();
    query.SetConnection(other.get());
    query.Open();
    EXPECT_NE(query.Fields(0).AsInteger(), first);
}

TEST_P(QueryTest, AnOpenQueryOutlivesItsSession) {
    auto other = server.connect();
    query.SetConnection(other.get());
    query.SQL = {QStringLiteral("SELECT 7 AS a")};
    query.Open();
    other.reset();
    EXPECT_EQ(query.Fields(0).AsInteger(), 7);
    query.Close();
    EXPECT_THROW(query.Open(), UsageError);
}

TEST_P(QueryTest, RowsOfManyBlocksComeInOrder) {
    server.run(
        QStringLiteral("DECLARE @i int SET @i = 0 SET NOCOUNT ON WHILE @i < 2500 BEGIN "
                       "INSERT T VALUES (@i, 'rad ' + CONVERT(varchar(10), @i)) SET @i = @i + 1 END"));
    query.SQL = {QStringLiteral("SELECT * FROM T ORDER BY a")};
    query.Open();
    ASSERT_EQ(query.RecordCount(), 2500);
    int row = 0;
    for (; !query.Eof(); query.Next(), ++row) {
        ASSERT_EQ(query.Fields(0).AsInteger(), row);
        ASSERT_EQ(query.Fields(1).AsString(), QStringLiteral("rad %1").arg(row));
    }
    EXPECT_EQ(row, 2500);
    EXPECT_TRUE(query.Locate(QStringLiteral("a;b"), {2400, "rad 2400"}));
    EXPECT_EQ(query.RecNo(), 2401);
}

TEST_P(QueryTest, WalkingAnOpenQueryCostsNoRoundTrip) {
    TORVIK_NEEDS_SANDBOX(server);
    server.run(QStringLiteral("INSERT T VALUES (1, 'a') INSERT T VALUES (2, 'b') INSERT T VALUES (3, 'c')"));
    query.SQL = {QStringLiteral("SELECT a, b FROM T ORDER BY a")};
    query.Open();
    const auto requests = server.faults().requests();
    query.Last();
    EXPECT_EQ(query.FieldByName(QStringLiteral("b")).AsString(), QStringLiteral("c"));
    Bookmark last = query.GetBookmark();
    query.First();
    EXPECT_EQ(query.Fields(0).AsInteger(), 1);
    EXPECT_TRUE(query.Locate(QStringLiteral("a;b"), {2, "b"}));
    EXPECT_FALSE(query.Locate(QStringLiteral("b"), "x"));
    EXPECT_EQ(query.RecNo(), 2) << "what is not found leaves the row";
    query.GotoBookmark(last);
    DataSet::FreeBookmark(last);
    EXPECT_EQ(query.RecNo(), query.RecordCount());
    query.Next();
    EXPECT_TRUE(query.Eof());
    EXPECT_EQ(server.faults().requests(), requests);
}

TEST_P(QueryTest, AUnidirectionalQueryHoldsABlockAndGivesWayToOthers) {
    server.run(
        QStringLiteral("DECLARE @i int SET @i = 0 SET NOCOUNT ON WHILE @i < 3000 BEGIN "
                       "INSERT T VALUES (@i, 'x') SET @i = @i + 1 END"));
    query.SQL = {QStringLiteral("SELECT a FROM T ORDER BY a")};
    query.UniDirectional = true;
    qint64 sum = 0;
    for (query.Open(); !query.Eof(); query.Next()) {
        sum += query.Fields(0).AsInteger();
        if (query.RecNo() != 1500) continue;
        EXPECT_EQ(server.rows(QStringLiteral("SELECT COUNT(*) AS n FROM T")), "n\n3000\n");
    }
    EXPECT_EQ(sum, 2999 * 3000 / 2);
    EXPECT_EQ(query.RecordCount(), 3000);
    EXPECT_THROW(query.First(), UsageError);
}

TEST_P(QueryTest, ACountedQueryTellsItsRowsBeforeTheyAreRead) {
    server.run(
        QStringLiteral("CREATE TABLE Mange (a int) DECLARE @i int SET @i = 0 SET NOCOUNT ON WHILE @i < 1500 BEGIN "
                       "INSERT Mange VALUES (@i) SET @i = @i + 1 END"));
    query.UniDirectional = query.CountRows = true;
    query.SQL = {QStringLiteral("SELECT a FROM Mange -- alle"), QStringLiteral("WHERE a >= :Fra ORDER BY a")};
    query.ParamByName(QStringLiteral("Fra")) = 100;
    query.Open();
    EXPECT_EQ(query.RecordCount(), 1400);
    EXPECT_TRUE(query.RowCountKnown());
    int rows = 0;
    for (; !query.Eof(); query.Next()) ++rows;
    EXPECT_EQ(rows, 1400);
    EXPECT_EQ(query.RecordCount(), 1400);
}

TEST_P(QueryTest, ColumnsOfTheSameNameAreTheFirstHoweverOftenAsked) {
    query.SQL = {QStringLiteral("SELECT 1 AS a, 2 AS b, 3 AS a, 4 AS A")};
    query.Open();
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(query.FieldByName(QStringLiteral("a")).AsInteger(), 1);
        EXPECT_EQ(query.FieldByName(QStringLiteral("A")).AsInteger(), 1);
        EXPECT_EQ(query.FieldByName(QStringLiteral("B")).AsInteger(), 2);
    }
}

TEST_P(QueryTest, ANameIsTheSameColumnWhateverWasAskedBefore) {
    query.SQL = {QStringLiteral("SELECT 1 AS a, 2 AS A, 3 AS b")};
    query.Open();
    EXPECT_EQ(query.FieldByName(QStringLiteral("A")).AsInteger(), 1);
    EXPECT_EQ(query.FieldByName(QStringLiteral("a")).AsInteger(), 1);
    EXPECT_EQ(query.FieldByName(QStringLiteral("A")).AsInteger(), 1);
    query.SQL = {QStringLiteral("SELECT 1 AS A, 2 AS a")};
    query.Open();
    EXPECT_EQ(query.FieldByName(QStringLiteral("a")).AsInteger(), 1);
}

TEST_P(QueryTest, RollbackDropsTheRestOfAUnidirectionalQuery) {
    fillT(3000);
    query.SQL = {QStringLiteral("SELECT a FROM T ORDER BY a")};
    query.UniDirectional = true;
    server.session().StartTransaction();
    query.Open();
    server.session().Rollback();
    EXPECT_THROW(walk(), StatementError);
    EXPECT_LE(query.RecordCount(), 1000);
    EXPECT_EQ(server.rows(QStringLiteral("SELECT COUNT(*) AS n FROM T")), "n\n3000\n");
}

TEST_P(QueryTest, ClosingTheSessionDropsTheRestOfAUnidirectionalQuery) {
    fillT(3000);
    query.SQL = {QStringLiteral("SELECT a FROM T ORDER BY a")};
    query.UniDirectional = true;
    query.Open();
    server.session().Close();
    EXPECT_THROW(walk(), ConnectionError);
    EXPECT_LE(query.RecordCount(), 1000);
}

// The first row sets' buffers are given back to the system at once, so that a driver that still wrote there would end
// the program.
TEST_P(QueryTest, RowSetsOfOtherShapesAreReadIntoBuffersOfTheirOwn) {
    mallopt(M_MMAP_THRESHOLD, 64 * 1024);
    server.run(
        QStringLiteral("CREATE PROCEDURE Flere AS "
                       "SELECT CAST('x' AS nchar(4000)) AS a, CAST('y' AS nchar(4000)) AS b, 3 AS c "
                       "SELECT CAST('lang' AS text) AS t, 7 AS n, 8 AS m "
                       "SELECT 9 AS alene "
                       "SELECT CAST('y' AS nchar(4000)) AS b RETURN 5"));
    StoredProc call(&server.session());
    call.StoredProcName = QStringLiteral("Flere");
    call.ExecProc();
    EXPECT_EQ(call.ReturnValue(), 5);
    query.SQL = {QStringLiteral("EXEC Flere")};
    query.Open();
    EXPECT_EQ(query.text("a"), QStringLiteral("x"));
    EXPECT_EQ(query.integer("c"), 3);
    query.ExecSQL();
    mallopt(M_MMAP_THRESHOLD, 128 * 1024);
}

TEST_P(QueryTest, AUnidirectionalQueryRaisesTheErrorBehindItsRows) {
    server.run(QStringLiteral("INSERT T VALUES (1, 'a')"));
    query.SQL = {QStringLiteral("SELECT a FROM T INSERT T VALUES (1, 'b')")};
    query.UniDirectional = true;
    query.Open();
    EXPECT_EQ(query.Fields(0).AsInteger(), 1);
    EXPECT_THROW(query.Next(), StatementError);
}

}  // namespace
}  // namespace torvik::db
