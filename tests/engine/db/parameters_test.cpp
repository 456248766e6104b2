// Where ":name" is a parameter and where it is not.
#include "engine/db/parameters.h"

#include <gtest/gtest.h>

#include "engine/db/errors.h"
#include "tests/support/qt_print.h"

namespace torvik::db {
namespace {

TEST(Parameters, EachOccurrenceBecomesAMark) {
    const ScannedText scanned = scanParameters(QStringLiteral("select * from T where a=:Id and (b=:Id or c>:Dato)"));
    EXPECT_EQ(scanned.Text, QStringLiteral("select * from T where a=? and (b=? or c>?)"));
    EXPECT_EQ(scanned.Names, (QStringList{QStringLiteral("Id"), QStringLiteral("Id"), QStringLiteral("Dato")}));
}

TEST(Parameters, LiteralsNamesCommentsAndDoubleColonsAreLeftAlone) {
    for (const char* text :
         {"select 'kl. 10:Id'", "select 'it''s :Id'", "select [a:Id], \"b:Id\"", "select 1 -- :Id",
          "select /* :Id /* :x */ :y */ 1", "select geography::Parse(1)", "select 12:30", "a : b", "select ':Id"}) {
        const ScannedText scanned = scanParameters(QLatin1String(text));
        EXPECT_EQ(scanned.Text, QLatin1String(text));
        EXPECT_TRUE(scanned.Names.isEmpty()) << text;
    }
}

TEST(Parameters, ACommentEndsWithItsLine) {
    const ScannedText scanned = scanParameters(QStringLiteral("-- it's :a\r\nselect :b"));
    EXPECT_EQ(scanned.Text, QStringLiteral("-- it's :a\r\nselect ?"));
    EXPECT_EQ(scanned.Names, QStringList{QStringLiteral("b")});
}

TEST(Parameters, NorwegianLettersAreLetters) {
    EXPECT_EQ(scanParameters(QStringLiteral("select :Beløp_1")).Names, QStringList{QStringLiteral("Beløp_1")});
}

TEST(Parameters, ANewTextKeepsTheValuesOfNamesItHas) {
    Parameters parameters;
    parameters.Reset({QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("A")});
    ASSERT_EQ(parameters.All().size(), 2U);
    parameters.ByName(QStringLiteral("B")) = 7;
    parameters.Reset({QStringLiteral("b"), QStringLiteral("c")});
    EXPECT_EQ(parameters.ByName(QStringLiteral("b")).AsInteger(), 7);
    EXPECT_TRUE(parameters.ByName(QStringLiteral("c")).IsNull());
    EXPECT_THROW(static_cast<void>(parameters.ByName(QStringLiteral("a"))), UsageError);
}

}  // namespace
}  // namespace torvik::db
