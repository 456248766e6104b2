// Items that the back office no longer has leave the till: what points to them is moved to one replacement item or
// goes, and each row that is touched is noted in VareDeleteLogg. One procedure on the till does it, in one transaction.
#include <QStringList>

#include "outbound/exports/exports.h"

namespace torvik {

namespace {

// Despite its name it holds the items to keep: every number of the back office.
constexpr Piece kCreateVareDelete[] = {
    {R"(IF EXISTS (SELECT 1 FROM  SYSOBJECTS WHERE  ID = OBJECT_ID('VareDelete') AND TYPE = 'U')
  DROP TABLE VareDelete
CREATE TABLE VareDelete (Vad_ID  char(15) not null)
CREATE INDEX VAD_ID ON VareDelete (Vad_ID))"}};

constexpr Piece kItemsToKeep[] = {{"select Va_id AS Vad_ID from Vare"}};

constexpr Piece kDropSlettVarer[] = {
    {R"(IF EXISTS (SELECT 1 FROM SYSOBJECTS WHERE ID = OBJECT_ID('SlettVarer') AND TYPE = 'P')
DROP PROCEDURE SlettVarer)"}};

constexpr Piece kCreateVareDeleteLogg[] = {
    {R"(IF NOT EXISTS (SELECT 1 FROM SYSOBJECTS WHERE ID = OBJECT_ID('dbo.VareDeleteLogg') AND TYPE = 'U')
CREATE TABLE [dbo].[VareDeleteLogg](
[Vdl_Va_Id] [char](15) NULL,
[Vdl_Vdlt_Id] [int] NULL,
[Vdl_Reference] [varchar](20) NULL,
[Vdl_Time] [datetime] NULL))"}};

// What becomes of the rows that name an item that is gone.
enum class Becomes { Moved, Deleted };

// Which of the two tests an item has to pass to count as gone.
enum class Gone { NoItemAndNoAlias, NoItem };

// Which of a row's two statements are followed by the test of @@ERROR. Where one is not, XACT_ABORT does its work.
enum class Tested { Both, LogOnly, Neither };

struct Reference {
    const char* table;
    const char* column;
    int kind;  // Vdl_Vdlt_Id
    const char* key;
    Becomes becomes;
    Gone gone = Gone::NoItemAndNoAlias;
    Tested tested = Tested::Both;
    const char* condition = "";        // of both statements
    const char* deleteCondition = "";  // of the delete alone
};

// In this order. Kinds 4 and 12 each stand for two tables, as the log's readers know them.
constexpr Reference kReferences[] = {
    {"INTERNFLYTTINGLINJE", "IFL_VA_ID", 1, "IFL_ID", Becomes::Moved},
    {"ORDRELINJE", "OL_VA_ID", 2, "OL_ID", Becomes::Moved},
    {"VAREBESTILLINGLINJE", "VBL_VA_ID", 3, "VBL_ID", Becomes::Moved},
    {"VAREMOTTAKLINJE", "VML_VA_ID", 4, "VML_ID", Becomes::Moved},
    {"VARETELLINGLINJE", "VL_VA_ID", 5, "VL_ID", Becomes::Moved},
    // Stock transactions of a number that is an alias go too.
    {"BEHOLDNINGSTRANSAKSJONER", "BHT_VA_ID", 4, "BHT_ID", Becomes::Deleted, Gone::NoItem, Tested::LogOnly},
    {"DELVARE", "DV_HOVED_VA_ID", 6, "DV_DELVARE_VA_ID", Becomes::Deleted},
    {"DELVARE", "DV_DELVARE_VA_ID", 7, "DV_HOVED_VA_ID", Becomes::Deleted},
    {"MERSALGVARE", "MSV_VA_ID", 8, "MSV_VA_ID", Becomes::Deleted},
    {"PLUMEDLEM", "PLM_VA_ID", 9, "PLM_VA_ID", Becomes::Deleted},
    {"VAREGRUPPE", "VG_VA_ID", 10, "VG_HOVED_VG_VA_ID", Becomes::Deleted},
    {"VAREGRUPPE", "VG_HOVED_VG_VA_ID", 11, "VG_VA_ID", Becomes::Deleted, Gone::NoItemAndNoAlias, Tested::Both,
     "AND VG_HOVED_VG_VA_ID IS NOT NULL"},
    {"REKLAMASJONLINJE", "REKL_VA_ID", 13, "REKL_ID", Becomes::Deleted},
    // The second test is spelled in its own way.
    {"VAREALIAS", "VR_VA_ID", 12, "VR_VA_ID", Becomes::Deleted, Gone::NoItem, Tested::Neither,
     "AND NOT EXISTS (SELECT 1 FROM Varealias WHERE VR_ID = Vr_VA_ID )"},
    // A gift-card item is noted as gone, and stays.
    {"VARE", "VA_ID", 12, "VA_ID", Becomes::Deleted, Gone::NoItemAndNoAlias, Tested::Both, "",
     "AND NOT EXISTS (SELECT 1 FROM GAVEKORTVARE WHERE GAV_VA_ID = VA_ID )"},
};

constexpr char kHead[] = R"(CREATE PROCEDURE SlettVarer @VaID CHAR(15) AS
SET XACT_ABORT ON
DECLARE @err int, @DeleteCount int
BEGIN TRAN
SET @DeleteCount = 0)";

constexpr char kLog[] = R"(INSERT INTO VareDeleteLogg SELECT %1,%2,%3,GETDATE()
FROM %4 WHERE)";

constexpr char kMove[] = R"(UPDATE %1 SET %2 = @VaID
WHERE)";

constexpr char kDelete[] = R"(DELETE FROM %1
WHERE)";

constexpr char kNoItem[] = "NOT EXISTS (SELECT 1 FROM VareDelete WHERE Vad_Id = %1 )";
constexpr char kNoAlias[] = "AND NOT EXISTS (SELECT 1 FROM Varealias WHERE VR_ID = %1 )";

constexpr char kTest[] = R"(SELECT @err = @@ERROR
if @err != 0 goto HANDLE_ERROR)";

constexpr char kTestAndCount[] = R"(SELECT @err = @@ERROR, @DeleteCount=@@ROWCOUNT
if @err != 0 goto HANDLE_ERROR)";

constexpr char kTail[] = R"(DROP TABLE VareDelete
COMMIT TRAN
RETURN @DeleteCount
HANDLE_ERROR:
ROLLBACK TRAN
RETURN -1)";

QString goneRows(const Reference& reference) {
    const QString column = QString::fromUtf8(reference.column);
    QStringList tests{QString::fromUtf8(kNoItem).arg(column)};
    if (reference.gone == Gone::NoItemAndNoAlias) tests << QString::fromUtf8(kNoAlias).arg(column);
    if (*reference.condition) tests << QString::fromUtf8(reference.condition);
    return tests.join(QLatin1Char('\n'));
}

// The number of items deleted is counted behind the last delete.
bool countsItems(const Reference& reference) {
    return &reference == &std::end(kReferences)[-1];
}

QStringList statementsFor(const Reference& reference) {
    const QString table = QString::fromUtf8(reference.table);
    const QString column = QString::fromUtf8(reference.column);
    const QString rows = goneRows(reference);
    QStringList lines;
    lines << QString::fromUtf8(kLog).arg(column, QString::number(reference.kind), QString::fromUtf8(reference.key),
                                         table)
          << rows;
    if (reference.tested != Tested::Neither) lines << QString::fromUtf8(kTest);
    lines << (reference.becomes == Becomes::Moved ? QString::fromUtf8(kMove).arg(table, column)
                                                  : QString::fromUtf8(kDelete).arg(table))
          << rows;
    if (*reference.deleteCondition) lines << QString::fromUtf8(reference.deleteCondition);
    if (reference.tested == Tested::Both) lines << QString::fromUtf8(countsItems(reference) ? kTestAndCount : kTest);
    return lines;
}

QString createSlettVarer() {
    QStringList lines{QString::fromUtf8(kHead)};
    for (const Reference& reference : kReferences) lines << statementsFor(reference);
    lines << QString::fromUtf8(kTail);
    return lines.join(QLatin1Char('\n'));
}

constexpr Piece kExecSlettVarer[] = {{"Exec SlettVarer '%s'", kAlways, {Arg::ReplaceItemNumber}}};

constexpr Action kDeletion[] = {
    TillBatch{kCreateVareDelete},
    SetTransformation{"VareDelete"},
    LoadTable{"VAREDELETE", "VAREDELETE", kItemsToKeep},
    SetTransformation{"DeleteVare"},
    TillBatch{kDropSlettVarer},
    TillBatch{kCreateVareDeleteLogg},
    BuiltTillBatch{createSlettVarer},
    TillBatch{kExecSlettVarer},
};

}  // namespace

constinit const Actions kDeleteItems{kDeletion};

}  // namespace torvik
