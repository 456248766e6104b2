// The line that ends a batch in the tools of SQL Server, and the batch without it.
#include "engine/db/batch_separators.h"

#include <gtest/gtest.h>

#include "tests/support/qt_print.h"

namespace torvik::db {
namespace {

TEST(BatchSeparators, AreGoAloneInAnyCaseWithBlanksAround) {
    for (const char* line : {"GO", "go", "Go", "  go\t", "gO "}) EXPECT_TRUE(isBatchSeparator(line)) << line;
    for (const char* line : {"", "GO -- slutt", "GO;", "GO 5", "GOTO slutt", "-- GO", "G O"})
        EXPECT_FALSE(isBatchSeparator(line)) << line;
}

TEST(BatchSeparators, GoAndEveryOtherLineStays) {
    EXPECT_EQ(withoutBatchSeparators({"SELECT 1", "GO", "", "SELECT 2", " go "}),
              (QStringList{"SELECT 1", "", "SELECT 2"}));
    EXPECT_EQ(withoutBatchSeparators({"GO"}), QStringList());
    EXPECT_EQ(withoutBatchSeparators({}), QStringList());
}

TEST(BatchSeparators, StayWhereTheyArePartOfALiteralANameOrAComment) {
    for (const QStringList& whole : {QStringList{"SELECT 'a", "GO", "b'"}, QStringList{"/* a", "GO", "*/ SELECT 1"},
                                     QStringList{"SELECT 1 [a", "GO", "b]"}, QStringList{"SELECT 'a''", "GO", "'"}})
        EXPECT_EQ(withoutBatchSeparators(whole), whole) << whole.join(u'|').toStdString();
}

TEST(BatchSeparators, GoBehindALiteralOrACommentThatHasEnded) {
    EXPECT_EQ(withoutBatchSeparators({"SELECT 'a", "'", "GO"}), (QStringList{"SELECT 'a", "'"}));
    EXPECT_EQ(withoutBatchSeparators({"-- it's", "GO", "SELECT 1 -- 'x", "GO"}),
              (QStringList{"-- it's", "SELECT 1 -- 'x"}));
    EXPECT_EQ(withoutBatchSeparators({"SELECT 'a'", "GO"}), (QStringList{"SELECT 'a'"}));
}

}  // namespace
}  // namespace torvik::db
