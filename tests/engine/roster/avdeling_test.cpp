#include "engine/roster/avdeling.h"

#include <gtest/gtest.h>

#include "engine/db/errors.h"
#include "engine/db/query.h"
#include "tests/engine/small_chain.h"

namespace torvik {
namespace {

class Roster : public testing::Test {
protected:
    // "1/1 1/2": department number and till number of each row, in order.
    [[nodiscard]] QString rows() const {
        QStringList rows;
        db::Query& query = roster().Qry();
        for (query.First(); !query.Eof(); query.Next())
            rows.append(roster().Avdelingsnummer() + u'/' + roster().Ikk_Kassenummer());
        return rows.join(u' ');
    }
    [[nodiscard]] QString opened() const {
        roster().Close();
        roster().Open();
        return rows();
    }
    [[nodiscard]] TAvdeling& roster() const { return *chain.engine.Avdeling; }

    void SetUp() override {
        chain.target.Open();
        chain.department({.id = 11, .number = QStringLiteral("1"), .storeType = 1, .priority = 2});
        chain.department({.id = 12, .number = QStringLiteral("2"), .storeType = 2, .priority = 1, .stockFactor = 1.0});
        chain.department({.id = 13, .number = QStringLiteral("3"), .storeType = 3, .priority = 1, .stockFactor = 2.0});
        chain.till({.department = 11, .number = QStringLiteral("1")});
        chain.till({.department = 12, .number = QStringLiteral("1")});
        chain.till({.department = 13, .number = QStringLiteral("1")});
    }

    test::SmallChain chain;
};

TEST_F(Roster, HoldsTheActiveTillsOfTheRightTypeInDepartmentOrder) {
    chain.till({.department = 11, .number = QStringLiteral("2"), .active = false});
    chain.till({.department = 11, .number = QStringLiteral("3"), .type = QStringLiteral("Annen kasse")});
    EXPECT_EQ(opened(), QStringLiteral("1/1 2/1 3/1"));
}

TEST_F(Roster, InactiveTillComesOnlyWhenAskedFor) {
    chain.till({.department = 11, .number = QStringLiteral("2"), .active = false});
    roster().SetKu_Id(11);
    EXPECT_EQ(opened(), QStringLiteral("1/1"));
    roster().SetDisplayActiveOnly(false);
    EXPECT_EQ(roster().Qry().RecordCount(), 2) << "an open roster is read again at once";
    EXPECT_EQ(opened().split(u' ').size(), 2);
}

TEST_F(Roster, OpenWithoutADepartmentClearsTheOtherFilters) {
    roster().SetIkk_Kassenummer(QStringLiteral("9"));
    EXPECT_EQ(opened(), QStringLiteral("1/1 2/1 3/1"));
}

TEST_F(Roster, ReverseOrderTurnsTheDepartmentNumberRound) {
    chain.engine.ReverseProcessingOrder = true;
    EXPECT_EQ(opened(), QStringLiteral("3/1 2/1 1/1"));
}

TEST_F(Roster, PriorityColumnsComeFirstAndAreNeverReversed) {
    chain.engine.UsePlukkPrioritet = true;
    EXPECT_EQ(opened(), QStringLiteral("3/1 2/1 1/1"));
    chain.run(chain.kBackOffice, QStringLiteral("UPDATE Internkunde SET Ik_PlukkPrioritet=1, Ik_FaktorForLagernivaa=0"
                                                " WHERE Ik_Ku_Id IN (11,12)"));
    EXPECT_EQ(opened(), QStringLiteral("3/1 1/1 2/1"));
    chain.engine.ReverseProcessingOrder = true;
    EXPECT_EQ(opened(), QStringLiteral("3/1 2/1 1/1"));
}

TEST_F(Roster, WorkListChoosesItsTills) {
    auto workList = std::make_shared<TKasseCollection>();
    TKasseItem& till = workList->Add();
    till.Ik_Ku_ID = 12;
    till.Kassenr = QStringLiteral("1         ");
    roster().SetKasseCollection(workList);
    EXPECT_EQ(opened(), QStringLiteral("2/1"));
    TKasseItem& other = workList->Add();
    other.Ik_Ku_ID = 13;
    other.Kassenr = QStringLiteral("1");
    EXPECT_EQ(opened(), QStringLiteral("2/1 3/1")) << "opening applies the list again";
    workList->Clear();
    EXPECT_EQ(opened(), QStringLiteral("1/1 2/1 3/1")) << "an empty list means all tills";
}

TEST_F(Roster, StoreTypesAndExclusionStayInForce) {
    roster().SetButikktyper(QStringLiteral("1,2"));
    EXPECT_EQ(opened(), QStringLiteral("1/1 2/1"));
    roster().SetExcludePosListSQL(QStringLiteral("AND Ik_Ku_Id <> 11"));
    EXPECT_EQ(rows(), QStringLiteral("2/1"));
    roster().ClearFilter();
    EXPECT_EQ(opened(), QStringLiteral("2/1"));
}

TEST_F(Roster, AvdelingListHasOneLineForEachTill) {
    chain.till({.department = 11, .number = QStringLiteral("2")});
    QStringList names{QStringLiteral("gammel")};
    roster().AvdelingList(names);
    EXPECT_EQ(names.join(u'|'), QStringLiteral("Storgata 11|Storgata 11|Storgata 12|Storgata 13"));
}

TEST_F(Roster, GetIkKuIdFindsTheDepartmentAndKeepsTheRow) {
    roster().Open();
    roster().Qry().Next();
    EXPECT_EQ(roster().GetIk_Ku_Id(QStringLiteral(" 3 ")), 13);
    EXPECT_EQ(roster().GetIk_Ku_Id(QStringLiteral("99")), -1);
    EXPECT_EQ(roster().Avdelingsnummer(), QStringLiteral("2"));
}

TEST_F(Roster, GetIkKuIdOpensAClosedRoster) {
    EXPECT_EQ(roster().GetIk_Ku_Id(QStringLiteral("2")), 12);
    EXPECT_TRUE(roster().Qry().Active());
}

TEST_F(Roster, EmptyRosterHasNoDepartmentAndEmptyNumbers) {
    chain.run(chain.kBackOffice, QStringLiteral("DELETE FROM Internkundekasse"));
    EXPECT_EQ(opened(), QString());
    EXPECT_EQ(roster().Avdelingsnummer(), QString());
    EXPECT_EQ(roster().Ikk_Kassenummer(), QString());
    EXPECT_EQ(roster().GetIk_Ku_Id(QStringLiteral("1")), -1);
}

TEST_F(Roster, TillNumberWithTrailingBlanksMatchesInSqlAndInTheTillsLogOnlyAsItStands) {
    auto workList = std::make_shared<TKasseCollection>();
    for (const char16_t* kassenr : {u"1", u"1         "}) {
        TKasseItem& till = workList->Add();
        till.Ik_Ku_ID = 12;
        till.Kassenr = QString::fromUtf16(kassenr);
    }
    roster().SetKasseCollection(workList);
    EXPECT_EQ(opened(), QStringLiteral("2/1"));
    roster().Qry().First();
    chain.engine.AddLog(QStringLiteral("linje"));
    EXPECT_EQ((*workList)[0].LogItems.Count(), 0);
    EXPECT_EQ((*workList)[1].LogItems.Count(), 1);
}

TEST_F(Roster, FilterOfATillNumber) {
    chain.till({.department = 11, .number = QStringLiteral("2")});
    roster().SetKu_Id(11);  // a chosen department keeps its filters through Open
    roster().SetIkk_Kassenummer(QStringLiteral("2"));
    EXPECT_EQ(opened(), QStringLiteral("1/2"));
    roster().SetIkk_Kassenummer({});
    EXPECT_EQ(roster().Qry().RecordCount(), 2);
}

TEST_F(Roster, WorkListSetWhileADepartmentIsChosenDoesNotFilter) {
    roster().SetKu_Id(11);
    auto workList = std::make_shared<TKasseCollection>();
    workList->Add().Ik_Ku_ID = 12;
    roster().SetKasseCollection(workList);
    EXPECT_EQ(opened(), QStringLiteral("1/1"));
}

TEST_F(Roster, FailingQueryRaisesToTheCaller) {
    roster().SetExcludePosListSQL(QStringLiteral("AND finnes_ikke = 1"));
    try {
        roster().Open();
        FAIL() << "opened";
    } catch (const db::StatementError& e) {
        EXPECT_EQ(e.Number, 207);
    }
    EXPECT_FALSE(roster().Qry().Active());
}

TEST_F(Roster, ConnectionStringOfBothLogins) {
    roster().Open();
    EXPECT_EQ(roster().GetSourceConnectionString(),
              QStringLiteral("Provider=SQLOLEDB.1;Password=hemmelig;Persist Security Info=True;User ID=sa;"
                             "Initial Catalog=Borte;Data Source=127.0.0.1,1;Application Name=05:07:07"));
    chain.run(chain.kBackOffice, QStringLiteral("UPDATE Internkundekasse SET Ikk_AutentiseringType=1"));
    (void)opened();
    roster().Qry().First();
    EXPECT_EQ(roster().GetSourceConnectionString(),
              QStringLiteral("Provider=SQLOLEDB.1;Integrated Security=SSPI;Persist Security Info=False;"
                             "Initial Catalog=Borte;Data Source=127.0.0.1,1;Application Name=05:07:07"));
}

}  // namespace
}  // namespace torvik
