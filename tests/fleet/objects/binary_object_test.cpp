// Files in a till's BINARYOBJECT: the columns that older tills lack, the row's number and columns, and the file's bytes
// whole or not at all.
#include "fleet/objects/binary_object.h"

#include <gmock/gmock.h>

#include "engine/db/errors.h"
#include "engine/run/run_parts.h"
#include "tests/fleet/support/fleet_run.h"

namespace torvik::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kColumns[] =
    "SELECT c.name, t.name, c.length, c.isnullable FROM syscolumns c JOIN systypes t ON t.xusertype = c.xusertype "
    "WHERE c.id = OBJECT_ID('BINARYOBJECT') ORDER BY c.colid";
constexpr qsizetype kPiece = qsizetype{4} << 20;

class BinaryObjects : public testing::Test {
protected:
    explicit BinaryObjects(int version = 213) : run(FleetRun::oneTill(version)) {
        run.engine.Avdeling->Open();
        EXPECT_TRUE(run.engine.ConnectSource());
    }

    void write(const QByteArray& content, const QString& type = QStringLiteral("TORVIKPOS")) {
        writeBinaryObject(run.source, run.engine.Seam,
                          {.file = run.file(QStringLiteral("fil"), content),
                           .type = type,
                           .query = QStringLiteral("SELECT * FROM BINARYOBJECT WHERE 1=0")});
    }
    [[nodiscard]] std::vector<std::string> rows(const std::string& sql) const { return run.tillRows(0, sql); }

    FleetRun run;
};

class BinaryObjectsOfOldTill : public BinaryObjects {
protected:
    BinaryObjectsOfOldTill() : BinaryObjects(71) {}
};

TEST_F(BinaryObjectsOfOldTill, GetTheColumnsThatAreMissing) {
    EnsureBinaryObjectColumns(run.source);
    EXPECT_THAT(rows(kColumns),
                ElementsAre("BO_ID | int | 4 | 1", "BO_OBJECT | image | 16 | 1", "BO_TYPE | varchar | 20 | 1",
                            "BO_DATETIME | datetime | 8 | 1", "BO_DIRECTION | bit | 1 | 1", "BO_STATUS | int | 4 | 1"));
}

TEST_F(BinaryObjectsOfOldTill, KeepTheRowsThatTheyHave) {
    run.chain.runInTill(0, "INSERT INTO BINARYOBJECT (BO_ID, BO_OBJECT) VALUES (4, 0x0102)");
    EnsureBinaryObjectColumns(run.source);
    EXPECT_THAT(run.objects(0), ElementsAre("4 | NULL | NULL | NULL | 0x0102"));
}

TEST_F(BinaryObjectsOfOldTill, GetANumberTooWhereEvenThatIsMissing) {
    run.chain.runInTill(0, "DROP TABLE BINARYOBJECT");
    run.chain.runInTill(0, "CREATE TABLE BINARYOBJECT (BO_OBJECT image NULL)");
    EnsureBinaryObjectColumns(run.source);
    EXPECT_THAT(rows("SELECT name FROM syscolumns WHERE id = OBJECT_ID('BINARYOBJECT') ORDER BY colid"),
                ElementsAre("BO_OBJECT", "BO_ID", "BO_TYPE", "BO_DATETIME", "BO_DIRECTION", "BO_STATUS"));
}

TEST_F(BinaryObjectsOfOldTill, NeverGetTheBytesColumn) {
    run.chain.runInTill(0, "DROP TABLE BINARYOBJECT");
    run.chain.runInTill(0, "CREATE TABLE BINARYOBJECT (BO_ID int NULL)");
    EnsureBinaryObjectColumns(run.source);
    EXPECT_THROW(write("x"), db::StatementError);
    EXPECT_THAT(rows("SELECT BO_ID FROM BINARYOBJECT"), IsEmpty());
}

// Without the columns being ensured first.
TEST_F(BinaryObjectsOfOldTill, SetOnlyTheColumnsThatTheTableHas) {
    write("abc");
    EXPECT_THAT(rows("SELECT * FROM BINARYOBJECT"), ElementsAre("1 | 0x616263"));
}

TEST_F(BinaryObjects, WithAllColumnsAreLeftAlone) {
    const auto before = rows(kColumns);
    EnsureBinaryObjectColumns(run.source);
    EXPECT_EQ(rows(kColumns), before);
    EXPECT_EQ(before.size(), 6U);
}

TEST_F(BinaryObjects, BeginAtOneInAnEmptyTable) {
    write("abc");
    EXPECT_THAT(run.objects(0), ElementsAre("1 | TORVIKPOS | 0 | 0 | 0x616263"));
}

TEST_F(BinaryObjects, BeginAtOneWhereNoRowHasANumber) {
    run.chain.runInTill(0, "INSERT INTO BINARYOBJECT (BO_ID, BO_TYPE) VALUES (NULL, 'ANNET')");
    write("abc");
    EXPECT_THAT(rows("SELECT BO_ID FROM BINARYOBJECT WHERE BO_TYPE = 'TORVIKPOS'"), ElementsAre("1"));
}

TEST_F(BinaryObjects, TakeTheNumberBehindTheHighestOfAnyType) {
    run.chain.runInTill(0, "INSERT INTO BINARYOBJECT (BO_ID, BO_TYPE) VALUES (41, 'ANNET')");
    run.chain.runInTill(0, "INSERT INTO BINARYOBJECT (BO_ID, BO_TYPE) VALUES (7, 'TORVIKPOS')");
    write("abc");
    EXPECT_THAT(rows("SELECT MAX(BO_ID) FROM BINARYOBJECT"), ElementsAre("42"));
}

TEST_F(BinaryObjects, TellTheLocalTimeOfTheWriting) {
    run.engine.Seam.now = [] { return QDateTime(QDate(2026, 3, 29), QTime(2, 30, 1)); };
    write("abc");
    EXPECT_THAT(rows("SELECT BO_DATETIME FROM BINARYOBJECT"), ElementsAre("2026-03-29 02:30:01.000"));
}

TEST_F(BinaryObjects, MayHaveATypeWithAQuote) {
    write("abc", QStringLiteral("DET'TE"));
    EXPECT_THAT(rows("SELECT BO_TYPE FROM BINARYOBJECT"), ElementsAre("DET'TE"));
}

TEST_F(BinaryObjects, HoldTheFileByteForByteHoweverManyPiecesItIs) {
    for (const qsizetype size :
         {qsizetype{0}, qsizetype{1}, kPiece - 1, kPiece, kPiece + 1, 2 * kPiece, 5 * kPiece + 7}) {
        run.chain.runInTill(0, "DELETE BINARYOBJECT");
        const QByteArray content = FleetRun::bytes(size);
        write(content);
        EXPECT_TRUE(run.objectOf(0, "TORVIKPOS") == content) << size;
    }
}

// The till's software looks at the table at any moment.
TEST_F(BinaryObjects, AreWrittenByOneStatementOutsideAnyTransaction) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    run.chain.till(0).faults().keepLog();
    write(FleetRun::bytes(2 * kPiece));
    int writes = 0;
    for (const auto& each : run.chain.till(0).faults().log()) {
        EXPECT_NE(each.request.kind, sandbox::RequestKind::Transaction) << each.request.text;
        for (const std::string& statement : each.statements)
            if (statement.find("INSERT INTO BINARYOBJECT") != std::string::npos) ++writes;
    }
    EXPECT_EQ(writes, 1);
}

TEST_F(BinaryObjects, AreNotThereWhenTheLineIsCutAtAnyPiece) {
    TORVIK_NEEDS_SANDBOX(run.chain);
    const QByteArray content = FleetRun::bytes(3 * kPiece);
    for (std::uint64_t skip = 0; skip < 3; ++skip) {
        run.chain.till(0).faults().add({.match = {.textContains = "INSERT INTO #FIL"}, .skip = skip});
        EXPECT_THROW(write(content), db::ConnectionError) << skip;
        EXPECT_THAT(run.objects(0), IsEmpty()) << skip;
        ASSERT_TRUE(run.engine.ConnectSource());
    }
    run.chain.till(0).faults().add({.match = {.textContains = "INSERT INTO BINARYOBJECT"}});
    EXPECT_THROW(write(content), db::ConnectionError);
    EXPECT_THAT(run.objects(0), IsEmpty());
    ASSERT_TRUE(run.engine.ConnectSource());
    write(content);
    EXPECT_TRUE(run.objectOf(0, "TORVIKPOS") == content) << "the pieces of before are not in the way";
}

TEST_F(BinaryObjects, AreNotWrittenOfAFileThatCannotBeRead) {
    const BinaryObject missing{.file = run.folder.filePath(QStringLiteral("mangler")),
                               .type = QStringLiteral("TORVIKPOS"),
                               .query = QStringLiteral("SELECT * FROM BINARYOBJECT WHERE 1=0")};
    EXPECT_THROW(writeBinaryObject(run.source, run.engine.Seam, missing), std::exception);
    EXPECT_THAT(run.objects(0), IsEmpty());
}

TEST_F(BinaryObjects, KeepTheWindowAliveBetweenThePieces) {
    int pumps = 0;
    run.engine.Seam.pumpMessages = [&pumps] { ++pumps; };
    write(FleetRun::bytes(3 * kPiece));
    EXPECT_GE(pumps, 3);
}

TEST_F(BinaryObjects, AreNotWrittenOfAFileThatGrowsMeanwhile) {
    const QString file = run.file(QStringLiteral("vokser"), FleetRun::bytes(2 * kPiece));
    run.engine.Seam.pumpMessages = [&file] {
        QFile growing(file);
        ASSERT_TRUE(growing.open(QIODevice::Append));
        growing.write("mer");
    };
    EXPECT_THROW(
        writeBinaryObject(
            run.source, run.engine.Seam,
            {.file = file, .type = QStringLiteral("TORVIKPOS"), .query = QStringLiteral("SELECT * FROM BINARYOBJECT")}),
        std::exception);
    EXPECT_THAT(run.objects(0), IsEmpty());
}

}  // namespace
}  // namespace torvik::test
