#include "engine/roster/kasse_collection.h"

#include <gtest/gtest.h>

#include "tests/support/qt_print.h"

namespace torvik {
namespace {

TKasseItem& addTill(TKasseCollection& tills, int id, const QString& kassenr, bool taken = false) {
    TKasseItem& till = tills.Add();
    till.Ik_Ku_ID = id;
    till.Kassenr = kassenr;
    till.Avdnr = QString::number(id);
    till.AvdNavn = QStringLiteral("Storgata %1").arg(id);
    till.Taken = taken;
    return till;
}

TEST(KasseCollection, NewItemHasTheInitialValues) {
    TKasseCollection tills;
    const TKasseItem& till = tills.Add();
    EXPECT_EQ(till.Ik_Ku_ID, -1);
    EXPECT_EQ(till.Avdnr, QString());
    EXPECT_FALSE(till.Taken);
    EXPECT_TRUE(till.OppgjorStatus.empty());
    EXPECT_EQ(till.LogItems.Count(), 0);
    EXPECT_EQ(till.SyncVersion, svTorvikPosSync);
}

TEST(KasseCollection, CopyItemsLeavesStatusLogAndSyncVersionBehind) {
    TKasseCollection source;
    TKasseItem& till = addTill(source, 7, QStringLiteral("2"), true);
    till.OppgjorStatus.insert(ostHentet);
    till.LogItems.AddLogEntry(kls_Error, 0, QStringLiteral("x"), QDateTime());
    till.SyncVersion = svDotNetV1;

    TKasseCollection copy;
    addTill(copy, 99, QStringLiteral("9"));
    copy.CopyItems(source);

    ASSERT_EQ(copy.Count(), 1);
    EXPECT_EQ(copy[0].Ik_Ku_ID, 7);
    EXPECT_EQ(copy[0].Kassenr, QStringLiteral("2"));
    EXPECT_EQ(copy[0].Avdnr, QStringLiteral("7"));
    EXPECT_EQ(copy[0].AvdNavn, QStringLiteral("Storgata 7"));
    EXPECT_TRUE(copy[0].Taken);
    EXPECT_TRUE(copy[0].OppgjorStatus.empty());
    EXPECT_EQ(copy[0].LogItems.Count(), 0);
    EXPECT_EQ(copy[0].SyncVersion, svTorvikPosSync);
}

TEST(KasseCollection, CopyNextAvailableItemsClaimsFreeTillsInOrder) {
    TKasseCollection source;
    addTill(source, 1, QStringLiteral("1"));
    addTill(source, 2, QStringLiteral("1"), true);
    addTill(source, 3, QStringLiteral("1"));
    addTill(source, 4, QStringLiteral("1"));

    TKasseCollection share;
    share.CopyNextAvailableItems(source, 2);

    ASSERT_EQ(share.Count(), 2);
    EXPECT_EQ(share[0].Ik_Ku_ID, 1);
    EXPECT_EQ(share[1].Ik_Ku_ID, 3);
    EXPECT_FALSE(share[0].Taken);
    EXPECT_TRUE(source[0].Taken);
    EXPECT_EQ(source.NotTakenCount(), 1);

    share.CopyNextAvailableItems(source, 2);
    ASSERT_EQ(share.Count(), 1);
    EXPECT_EQ(share[0].Ik_Ku_ID, 4);
    EXPECT_EQ(source.NotTakenCount(), 0);
}

TEST(KasseCollection, CopyCountZeroClaimsEveryFreeTill) {
    TKasseCollection source;
    for (int id : {1, 2, 3}) addTill(source, id, QStringLiteral("1"));
    TKasseCollection share;
    share.CopyNextAvailableItems(source, 0);
    EXPECT_EQ(share.Count(), 3);
    EXPECT_EQ(source.NotTakenCount(), 0);
}

TEST(KasseCollection, AddLogItemComparesTheTillNumberUntrimmed) {
    const QDateTime now(QDate(2026, 1, 2), QTime(3, 4));
    TKasseCollection tills([&] { return now; });
    addTill(tills, 1, QStringLiteral("01        "));
    addTill(tills, 1, QStringLiteral("01"));

    tills.AddLogItem(1, QStringLiteral("01        "), kls_Warning, 0, QStringLiteral("advarsel"));
    tills.AddLogItem(2, QStringLiteral("01"), kls_Warning, 0, QStringLiteral("annen avdeling"));

    ASSERT_EQ(tills[0].LogItems.Count(), 1);
    EXPECT_EQ(tills[0].LogItems[0].Severity, kls_Warning);
    EXPECT_EQ(tills[0].LogItems[0].Msg, QStringLiteral("advarsel"));
    EXPECT_EQ(tills[0].LogItems[0].TimeStamp, now);
    EXPECT_TRUE(tills[0].LogItems[0].New);
    EXPECT_EQ(tills[1].LogItems.Count(), 0);
}

TEST(KasseCollection, AddOppgjorStatusReachesEveryEqualItem) {
    TKasseCollection tills;
    addTill(tills, 1, QStringLiteral("1"));
    addTill(tills, 1, QStringLiteral("1"));
    addTill(tills, 1, QStringLiteral("2"));
    tills.AddOppgjorStatus(1, QStringLiteral("1"), ostSendt);
    tills.AddOppgjorStatus(1, QStringLiteral("1"), ostHentet);
    EXPECT_EQ(tills[0].OppgjorStatus, (TOppgjorStatus{ostHentet, ostSendt}));
    EXPECT_EQ(tills[1].OppgjorStatus, (TOppgjorStatus{ostHentet, ostSendt}));
    EXPECT_TRUE(tills[2].OppgjorStatus.empty());
}

TEST(KasseLogSeverity, HasItsNumberAndText) {
    EXPECT_EQ(SeverityText(klsNone), QStringLiteral("Ingen"));
    EXPECT_EQ(SeverityText(kls_OK), QStringLiteral("OK"));
    EXPECT_EQ(SeverityText(kls_Warning), QStringLiteral("Advarsel"));
    EXPECT_EQ(SeverityText(kls_Error), QStringLiteral("Feil"));
    EXPECT_EQ(SeverityText(4), QString());
    EXPECT_EQ(SeverityText(-1), QString());
}

}  // namespace
}  // namespace torvik
