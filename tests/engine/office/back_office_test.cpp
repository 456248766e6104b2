#include <gtest/gtest.h>

#include "engine/db/errors.h"
#include "tests/engine/small_chain.h"

namespace torvik {
namespace {

class TargetHelpers : public testing::Test {
protected:
    void SetUp() override { chain.target.Open(); }
    void run(const char* sql) { chain.run(chain.kBackOffice, QString::fromUtf8(sql)); }

    test::SmallChain chain;
};

TEST_F(TargetHelpers, DbVersionIsReadOnce) {
    EXPECT_EQ(chain.engine.TargetDBVersion(), 12.5);
    run("UPDATE Innstillinger SET in_dbversjon = 13");
    EXPECT_EQ(chain.engine.TargetDBVersion(), 12.5);
    EXPECT_EQ(chain.requestsWith("select in_dbversjon from innstillinger"), 1);
}

TEST_F(TargetHelpers, ServerAndDatabaseName) {
    EXPECT_EQ(chain.engine.GetTargetServerAndDatabaseName(), QStringLiteral("Server: BAKROM, database: Torvik"));
}

TEST_F(TargetHelpers, GetTargetIdAsksTheProcedure) {
    run("CREATE PROCEDURE GetID @navn varchar(30) AS SELECT CASE @navn WHEN 'ORDRE' THEN 4711 ELSE 1 END AS ID");
    EXPECT_EQ(chain.engine.GetTargetId(QStringLiteral("ORDRE")), 4711);
    EXPECT_EQ(chain.engine.GetTargetId(QStringLiteral("annet")), 1);
}

class InvoiceAtBackOffice : public TargetHelpers {
protected:
    void SetUp() override {
        TargetHelpers::SetUp();
        chain.department({.id = 1, .number = QStringLiteral("1"), .properties = 1});
        chain.department({.id = 2, .number = QStringLiteral("2"), .properties = 2});
    }
    // "10" for departments 1 and 2.
    [[nodiscard]] QString answers(bool enterprise) {
        chain.engine.IsEnterprise = enterprise;
        QString bits;
        for (const char16_t* department : {u"1", u"2"})
            bits += chain.engine.IsFakturaVedBackOffice(QString::fromUtf16(department)) ? u'1' : u'0';
        return bits;
    }
};

TEST_F(InvoiceAtBackOffice, RuleColumnDecidesWhereItExists) {
    run("ALTER TABLE Internkunde ADD Ik_Fakturaregel int");
    EXPECT_EQ(answers(false), QStringLiteral("00")) << "null is no";
    run("UPDATE Internkunde SET Ik_Fakturaregel = Ik_Ku_Id");
    EXPECT_EQ(answers(false), QStringLiteral("01")) << "1 is no, anything else yes";
    EXPECT_EQ(answers(true), QStringLiteral("10")) << "a chain installation turns it round";
}

TEST_F(InvoiceAtBackOffice, DepartmentThatIsNotThereCountsAsNo) {
    run("ALTER TABLE Internkunde ADD Ik_Fakturaregel int");
    chain.engine.IsEnterprise = false;
    EXPECT_FALSE(chain.engine.IsFakturaVedBackOffice(QStringLiteral("99")));
    chain.engine.IsEnterprise = true;
    EXPECT_TRUE(chain.engine.IsFakturaVedBackOffice(QStringLiteral("99")));
}

// The server compiles the whole batch before it runs any of it, so the branch for older back offices is never reached.
TEST_F(InvoiceAtBackOffice, BackOfficeWithoutTheRuleColumnRefusesTheBatch) {
    try {
        (void)answers(false);
        FAIL() << "no exception";
    } catch (const db::StatementError& error) {
        EXPECT_EQ(error.Number, 207) << error.what();
    }
}

}  // namespace
}  // namespace torvik
