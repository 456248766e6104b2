// The roster's query text, without a server: which line says what after each filter.
#include <gtest/gtest.h>

#include "engine/db/query.h"
#include "tests/engine/fake_surroundings.h"

namespace torvik {
namespace {

class RosterText : public testing::Test {
protected:
    [[nodiscard]] QString line(int number) const { return roster().Qry().SQL.at(number); }
    [[nodiscard]] TAvdeling& roster() const { return *f.engine.Avdeling; }
    static std::shared_ptr<TKasseCollection> list(std::initializer_list<std::pair<int, const char16_t*>> tills) {
        auto workList = std::make_shared<TKasseCollection>();
        for (const auto& [id, kassenr] : tills) {
            TKasseItem& till = workList->Add();
            till.Ik_Ku_ID = id;
            till.Kassenr = QString::fromUtf16(kassenr);
        }
        return workList;
    }

    test::FakeEngine f;
};

TEST_F(RosterText, HasTenLines) {
    EXPECT_EQ(
        roster().Qry().SQL,
        (QStringList{QStringLiteral("SELECT Ku_Navn,Ku_Adresse1,Ik_Ku_Id,Ik_Avdelingsnummer,Ik_Modemtelefon,"
                                    "Ik_AntallKasser,Ik_KasseBong1,Ik_KasseBong2,Ik_KasseBong3,Ik_KasseBong4,"
                                    "Ik_Foretaksnummer,Ik_Properties, Ik_Butikktype, InternkundeKasse.*"),
                     QStringLiteral("FROM Kunde,Internkunde,KasseType,Internkundekasse"),
                     QStringLiteral("WHERE Ikk_Ik_Ku_Id=Ik_Ku_Id and Ik_Ku_Id=Ku_Id and Ikk_Kt_Id=Kt_Id AND Kt_Navn "
                                    "like '%TorvikPOS%'"),
                     QStringLiteral("AND Ikk_Aktiv=1"), QStringLiteral("AND ku_id>0"), QStringLiteral(" "),
                     QStringLiteral(" "), QStringLiteral(" "), QStringLiteral(" "),
                     QStringLiteral("ORDER BY Ik_Avdelingsnummer")}));
}

TEST_F(RosterText, DisplayActiveOnly) {
    roster().SetDisplayActiveOnly(false);
    EXPECT_EQ(line(3), QString());
    roster().SetDisplayActiveOnly(true);
    EXPECT_EQ(line(3), QStringLiteral("AND Ikk_Aktiv=1"));
}

TEST_F(RosterText, KuIdBelowOneGivesABlank) {
    roster().SetKu_Id(12);
    EXPECT_EQ(line(4), QStringLiteral("AND Ku_Id=12"));
    roster().SetKu_Id(0);
    EXPECT_EQ(line(4), QStringLiteral(" "));
}

TEST_F(RosterText, TextFilters) {
    roster().SetIkk_Kassenummer(QStringLiteral("2"));
    roster().SetButikktyper(QStringLiteral("1,4"));
    roster().SetExcludePosListSQL(QStringLiteral("AND Ikk_Server<>'x' -- %1"));
    EXPECT_EQ(line(5), QStringLiteral("AND Ikk_Kassenummer='2'"));
    EXPECT_EQ(line(6), QStringLiteral("AND Ik_Butikktype in (1,4)"));
    EXPECT_EQ(line(7), QStringLiteral("AND Ikk_Server<>'x' -- %1"));
    roster().SetIkk_Kassenummer({});
    roster().SetButikktyper({});
    roster().SetExcludePosListSQL({});
    for (int number : {5, 6, 7}) EXPECT_EQ(line(number), QStringLiteral(" "));
}

TEST_F(RosterText, ColonsOfAnOperatorsConditionAreNoParameters) {
    roster().SetExcludePosListSQL(QStringLiteral("AND Ikk_Server<>:nei"));
    EXPECT_TRUE(roster().Qry().Params().All().empty());
}

TEST_F(RosterText, ClearFilterDropsTheInitialConditionAndKeepsTypesAndExclusion) {
    roster().SetButikktyper(QStringLiteral("1"));
    roster().SetExcludePosListSQL(QStringLiteral("AND 1=1"));
    roster().SetIkk_Kassenummer(QStringLiteral("2"));
    roster().SetDisplayActiveOnly(false);
    roster().ClearFilter();
    EXPECT_EQ(line(3), QStringLiteral("AND Ikk_Aktiv=1"));
    EXPECT_EQ(line(4), QStringLiteral(" "));
    EXPECT_EQ(line(5), QStringLiteral(" "));
    EXPECT_EQ(line(6), QStringLiteral("AND Ik_Butikktype in (1)"));
    EXPECT_EQ(line(7), QStringLiteral("AND 1=1"));
}

TEST_F(RosterText, WorkListOfOneTillHasBracketsAndNoOr) {
    roster().SetKasseCollection(list({{7, u"01  "}}));
    EXPECT_EQ(line(4), QStringLiteral(" AND ((Ku_Id=7 AND Ikk_Kassenummer='01') )"));
}

TEST_F(RosterText, WorkListOfSeveralTillsIsJoinedByOr) {
    roster().SetKasseCollection(list({{7, u"1"}, {8, u"2"}}));
    EXPECT_EQ(line(4),
              QStringLiteral(" AND ((Ku_Id=7 AND Ikk_Kassenummer='1') OR (Ku_Id=8 AND Ikk_Kassenummer='2') )"));
}

TEST_F(RosterText, EmptyWorkListMeansAllTills) {
    roster().SetKasseCollection(list({}));
    EXPECT_EQ(line(4), QString());
}

TEST_F(RosterText, NoWorkListLeavesTheClearedFilter) {
    roster().SetKasseCollection(nullptr);
    EXPECT_EQ(line(4), QStringLiteral(" "));
    EXPECT_EQ(roster().KasseCollection(), nullptr);
}

TEST_F(RosterText, ChosenDepartmentKeepsItsFilterWhenAWorkListIsSet) {
    roster().SetKu_Id(5);
    roster().SetDisplayActiveOnly(false);
    const auto workList = list({{7, u"1"}});
    roster().SetKasseCollection(workList);
    EXPECT_EQ(line(4), QStringLiteral("AND Ku_Id=5"));
    EXPECT_EQ(line(3), QString());
    EXPECT_EQ(roster().KasseCollection(), workList);
}

TEST_F(RosterText, GettersOfAClosedRosterAreEmpty) {
    EXPECT_EQ(roster().Avdelingsnummer(), QString());
    EXPECT_EQ(roster().Ikk_Kassenummer(), QString());
}

}  // namespace
}  // namespace torvik
