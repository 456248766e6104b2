// How a script is cut, and which scripts an operator is warned of.
#include "fleet/scripts/script_batches.h"

#include <gtest/gtest.h>

#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

using Batches = std::vector<QStringList>;

TEST(ScriptBatches, EndAtGoWhichIsTheirLastLineAndAtTheEnd) {
    EXPECT_EQ(scriptBatches({"SELECT 1", "GO", "SELECT 2", "SELECT 3"}),
              (Batches{{"SELECT 1", "GO"}, {"SELECT 2", "SELECT 3"}}));
    EXPECT_EQ(scriptBatches({"SELECT 1", "SELECT 2"}), (Batches{{"SELECT 1", "SELECT 2"}}));
}

TEST(ScriptBatches, NoEmptyOneFollowsAGoAtTheEnd) {
    EXPECT_EQ(scriptBatches({"SELECT 1", "GO"}), (Batches{{"SELECT 1", "GO"}}));
}

TEST(ScriptBatches, GoMayHaveBlanksAndAnyCaseButNothingBehind) {
    EXPECT_EQ(scriptBatches({"a", " go\t", "b", "gO", "c"}), (Batches{{"a", " go\t"}, {"b", "gO"}, {"c"}}));
    EXPECT_EQ(scriptBatches({"a", "GO -- slutt", "b"}), (Batches{{"a", "GO -- slutt", "b"}}));
}

TEST(ScriptBatches, EmptyScriptHasNone) {
    EXPECT_EQ(scriptBatches({}), Batches());
}

TEST(ChangesData, IsAboutWordsThatDo) {
    for (const char* script :
         {"insert VARE SELECT 1", "UPDATE VARE SET a = 1", "DELETE VARE", "SELECT * INTO t FROM VARE", "EXEC p",
          "execute p", "CREATE TABLE t (a int)", "ALTER TABLE t ADD b int", "DROP TABLE t", "TRUNCATE TABLE t",
          "MERGE t USING s ON 1 = 1", "DBCC CHECKIDENT (t)", "BACKUP DATABASE d"})
        EXPECT_TRUE(changesData({"SELECT 1", script})) << script;
}

TEST(ChangesData, IsNotAboutLiteralsNamesAndComments) {
    for (const char* script : {"SELECT 'DELETE'", "SELECT [UPDATE] FROM t", "-- DROP TABLE t", "/* EXEC p */ SELECT 1",
                               "SELECT va_update, updated FROM t", "SELECT * FROM VARE", ""})
        EXPECT_FALSE(changesData({script})) << script;
}

}  // namespace
}  // namespace torvik::test
