// Shapes of tables that are asked for together, behind the batch that makes the tables.
#include "engine/db/table_shapes.h"

#include <gtest/gtest.h>

#include "engine/db/errors.h"
#include "engine/db/table.h"
#include "tests/support/qt_print.h"
#include "tests/support/sandbox_requests.h"
#include "tests/support/sandbox_wire.h"

namespace torvik::db {
namespace {

class TableShapesTest : public test::OverTheWire {
protected:
    void post(const char* name) {
        Table table(&server.session());
        table.SetShapes(&shapes);
        table.Options.FewRoundTrips = true;
        table.SetTableName(QString::fromUtf8(name));
        table.Open();
        for (const int a : {1, 2}) {
            table.Append();
            table.FieldByName(QStringLiteral("a")) = a;
            table.FieldByName(QStringLiteral("b")) = QStringLiteral("rad %1").arg(a);
            table.Post();
        }
        table.Close();
    }

    TableShapes shapes;
};

TORVIK_OVER_THE_WIRE(TableShapesTest);

const QStringList kBoth{QStringLiteral("FORST"), QStringLiteral("ANDRE")};
const auto kMakeBoth = QStringLiteral(
    "CREATE TABLE ANDRE (b varchar(20), c int IDENTITY(7, 1), a int NULL) "
    "CREATE TABLE FORST (a int, b varchar(20) NOT NULL, d int DEFAULT 5)");

TEST_P(TableShapesTest, AreAskedForInTheRoundTripThatMakesTheTablesAndServeInAnySpelling) {
    TORVIK_NEEDS_SANDBOX(server);
    test::Requests requests(server.server());
    shapes.AskBehind(server.session(), kMakeBoth, kBoth, 30);
    post("Forst");
    post("andre");
    EXPECT_EQ(requests.count(QString()), 3) << "the tables, and a block of rows each";
    EXPECT_EQ(server.rows(QStringLiteral("SELECT * FROM FORST")), "a | b | d\n1 | rad 1 | 5\n2 | rad 2 | 5\n");
    EXPECT_EQ(server.rows(QStringLiteral("SELECT * FROM ANDRE")), "b | c | a\nrad 1 | 7 | 1\nrad 2 | 8 | 2\n");
}

TEST_P(TableShapesTest, AreNotKnownBehindABatchThatFailed) {
    TORVIK_NEEDS_SANDBOX(server);
    server.run(QStringLiteral("CREATE TABLE FORST (x int)"));
    EXPECT_THROW(shapes.AskBehind(server.session(), kMakeBoth, kBoth, 30), StatementError);
    server.run(QStringLiteral("DROP TABLE FORST CREATE TABLE FORST (a int, b varchar(20))"));
    post("FORST");
    EXPECT_EQ(server.rows(QStringLiteral("SELECT * FROM FORST")), "a | b\n1 | rad 1\n2 | rad 2\n");
}

TEST_P(TableShapesTest, OfATableThatIsNotThereFail) {
    try {
        shapes.AskBehind(server.session(), QStringLiteral("CREATE TABLE FORST (a int)"), kBoth, 30);
        FAIL() << "asked";
    } catch (const StatementError& e) {
        EXPECT_EQ(e.Number, 208);
    }
}

}  // namespace
}  // namespace torvik::db
