#include <gtest/gtest.h>

#include "engine/base/abort.h"
#include "engine/db/errors.h"
#include "engine/db/mem_table.h"
#include "tests/engine/small_chain.h"

namespace torvik {
namespace {

class ReferenceTables : public testing::Test {
protected:
    void SetUp() override {
        chain.run(chain.kBackOffice, QStringLiteral("INSERT INTO Vare VALUES ('  100'), ('abc'), ('900')"));
        chain.run(chain.kBackOffice, QStringLiteral("INSERT INTO VareAlias VALUES ('200', '100'), ('gml', 'abc')"));
        chain.target.Open();
        chain.engine.LoadVareTable();
        chain.engine.LoadVareAliasTable();
        chain.log.Clear();
    }
    [[nodiscard]] QString resolved(const char* number) {
        chain.log.Clear();
        return chain.engine.ResolveVaId(QString::fromUtf8(number));
    }

    test::SmallChain chain;
};

TEST_F(ReferenceTables, LoadingTellsThatItTakesTime) {
    chain.engine.LoadVareTable();
    chain.engine.LoadVareAliasTable();
    EXPECT_EQ(chain.messages(), (QStringList{QStringLiteral("Laster inn vare tabellen (kan ta litt tid) ..."),
                                             QStringLiteral("Laster inn varealias tabellen (kan ta litt tid) ...")}));
    EXPECT_EQ(chain.engine.VareTable().RecordCount(), 3);
    EXPECT_EQ(chain.engine.VareAliasTable().RecordCount(), 2);
}

TEST_F(ReferenceTables, KnownItemIsItselfTrimmedAndWithoutALine) {
    EXPECT_EQ(resolved(" 100 "), QStringLiteral("100"));
    EXPECT_EQ(resolved("ABC"), QStringLiteral("ABC")) << "found whatever its case, and kept as it came";
    EXPECT_EQ(chain.messages(), QStringList());
}

TEST_F(ReferenceTables, AliasGivesItsItem) {
    EXPECT_EQ(resolved("200"), QStringLiteral("100"));
    EXPECT_EQ(chain.messages(), QStringList{QStringLiteral("Varenummer 200 er endret til 100.")});
    EXPECT_EQ(resolved("GML"), QStringLiteral("abc"));
}

TEST_F(ReferenceTables, UnknownItemBecomesTheReplacement) {
    chain.engine.ReplacementVa_Id = QStringLiteral(" 900 ");
    EXPECT_EQ(resolved("777"), QStringLiteral("900"));
    EXPECT_EQ(chain.messages(), QStringList{QStringLiteral("Varenummer 777 er endret til 900.")});
}

TEST_F(ReferenceTables, ReplacementMayBeAnAlias) {
    chain.engine.ReplacementVa_Id = QStringLiteral("200");
    EXPECT_EQ(resolved("777"), QStringLiteral("100"));
    EXPECT_EQ(chain.messages(), QStringList{QStringLiteral("Varenummer 777 er endret til 100.")});
}

TEST_F(ReferenceTables, NeitherItemNorReplacementRaises) {
    chain.engine.ReplacementVa_Id = QStringLiteral(" 888 ");
    try {
        (void)resolved("777");
        FAIL() << "no exception";
    } catch (const EngineError& error) {
        EXPECT_EQ(ErrorText(error), QStringLiteral("Finner ikke varenummer 777 eller erstatningsnummer 888"));
    }
}

TEST_F(ReferenceTables, TablesThatAreNotLoadedAreAnErrorAndNotAnUnknownItem) {
    TTorvikPos fresh;
    EXPECT_THROW((void)fresh.ResolveVaId(QStringLiteral("100")), db::UsageError);
}

TEST_F(ReferenceTables, LoadingAgainReplacesWhatWasLoaded) {
    chain.run(chain.kBackOffice, QStringLiteral("DELETE FROM Vare WHERE Va_Id = 'abc'"));
    chain.engine.LoadVareTable();
    EXPECT_EQ(chain.engine.VareTable().RecordCount(), 2);
    chain.run(chain.kBackOffice, QStringLiteral("DELETE FROM VareAlias"));
    chain.engine.LoadVareAliasTable();
    EXPECT_TRUE(chain.engine.VareAliasTable().IsEmpty());
    EXPECT_THROW((void)resolved("200"), EngineError);
}

TEST_F(ReferenceTables, CheckCostsNoRoundTrip) {
    const auto before = chain.server.faults().requests();
    (void)resolved("100");
    (void)resolved("200");
    EXPECT_EQ(chain.server.faults().requests(), before);
}

}  // namespace
}  // namespace torvik
