#include "engine/torvik_pos.h"

#include <gtest/gtest.h>

#include <QPointer>
#include <QTimer>
#include <array>

#include "engine/base/abort.h"
#include "engine/db/mem_table.h"
#include "engine/db/query.h"
#include "engine/db/session.h"
#include "tests/engine/fake_surroundings.h"

namespace torvik {
namespace {

using test::FakeEngine;

TEST(TorvikPos, StartsWithTheDesignsValues) {
    const TTorvikPos engine;
    EXPECT_FALSE(engine.AutoCommunicate());
    EXPECT_EQ(engine.RetryCount, 2);
    EXPECT_EQ(engine.RetryWaitTime, 20);
    EXPECT_EQ(engine.SourceAuthMethod, amSQL);
    EXPECT_EQ(engine.VareOppdateringUtvalg, vopIngen);
    EXPECT_EQ(engine.InitializeItems, TInitializeItems{nutvOppgjor});
    EXPECT_TRUE(engine.IncludeExtraSaleProducts);
    EXPECT_TRUE(engine.AddToLogItems);
    EXPECT_TRUE(engine.Tasks.empty());
    EXPECT_EQ(engine.StartTime, QTime(0, 0));
    EXPECT_EQ(engine.StartSendingTime, QTime(0, 0));
    EXPECT_EQ(engine.DagerSidenEndring, 0);
    for (const bool off :
         {engine.FlagAsSentAfterUpdate, engine.IncludeVaretellingOnOppgjor, engine.IncludeNummertype,
          engine.IncludeGiftVoucherOnOppgjor, engine.IncludeCreditCouponOnOppgjor, engine.IncludeDTS_TorvikPOS,
          engine.Cancelled, engine.CancelRequest(), engine.AllowMultiThreading, engine.OnlyOppgjor,
          engine.ReverseProcessingOrder, engine.UsePlukkPrioritet, engine.ReceiveDataOnly, engine.SendCustomerAndPrice,
          engine.SynchonizedRun, engine.RunAsService(), engine.OverrideSourceUserNameAndPassword, engine.TimerBusy()})
        EXPECT_FALSE(off);
    for (const QString& text :
         {engine.VaretellingPeriode, engine.DbVersion(), engine.ReplacementVa_Id,
          engine.ReplacementForNonExistingItemNumber, engine.OverrideSourceUserName, engine.OverrideSourcePassword})
        EXPECT_EQ(text, QString());
    EXPECT_EQ(engine.DeleteItemsWeekDays + engine.Logbuffer, QStringList());
    EXPECT_FALSE(engine.VareTable().Active() || engine.VareAliasTable().Active());
    EXPECT_NE(engine.Log, nullptr);
    EXPECT_EQ(engine.ErrorLog, nullptr);
    EXPECT_EQ(engine.NonVisualLog, nullptr);
    EXPECT_EQ(engine.NonVisualErrorLog, nullptr);
    EXPECT_EQ(engine.ThreadList, nullptr);
    EXPECT_EQ(engine.StatusParent, nullptr);
    EXPECT_NE(engine.ffraOppgjorStatus, nullptr);
    EXPECT_EQ(engine.qryGeneralTarget().CommandTimeout, 600);
    EXPECT_EQ(engine.Avdeling->Qry().CommandTimeout, 600);
    ASSERT_NE(engine.Avdeling->KasseCollection(), nullptr);
    EXPECT_EQ(engine.Avdeling->KasseCollection()->Count(), 0);
}

TEST(TorvikPos, NumbersOfTheEnumerations) {
    EXPECT_EQ((std::array<int, 2>{amTrusted, amSQL}), (std::array<int, 2>{0, 1}));
    EXPECT_EQ((std::array<int, 3>{vopIngen, vopEndrede, vopAlle}), (std::array<int, 3>{0, 1, 2}));
    EXPECT_EQ((std::array<int, 2>{taHent, taSend}), (std::array<int, 2>{0, 1}));
    EXPECT_EQ((std::array<int, 4>{nutvOppgjor, nutvVare, nutvKunde, nutvAnsatt}), (std::array<int, 4>{0, 1, 2, 3}));
    EXPECT_EQ((std::array<int, 4>{ostDoNotSet, ostHentet, ostSendt, ostHentetNull}), (std::array<int, 4>{0, 1, 2, 3}));
    EXPECT_EQ((std::array<int, 2>{svTorvikPosSync, svDotNetV1}), (std::array<int, 2>{0, 1}));
}

TEST(TorvikPos, ClockTicksEveryThirtySecondsWhileTheAutomaticRunIsArmed) {
    TTorvikPos engine;
    const auto* clock = engine.findChild<QTimer*>();
    ASSERT_NE(clock, nullptr);
    EXPECT_EQ(clock->interval(), 30000);
    EXPECT_FALSE(clock->isActive());
    engine.SetAutoCommunicate(true);
    EXPECT_TRUE(clock->isActive());
    engine.SetAutoCommunicate(false);
    EXPECT_FALSE(clock->isActive());
}

TEST(TorvikPos, RunAsServiceIsRememberedBeyondTheEngine) {
    {
        TTorvikPos engine;
        engine.SetRunAsService(true);
    }
    EXPECT_TRUE(TTorvikPos::LastRunAsService());
    TTorvikPos engine;
    EXPECT_FALSE(engine.RunAsService());
    engine.SetRunAsService(false);
    EXPECT_FALSE(TTorvikPos::LastRunAsService());
}

TEST(TorvikPos, GoesWithItsOwner) {
    auto owner = std::make_unique<QObject>();
    const QPointer<TTorvikPos> engine = new TTorvikPos(owner.get());
    owner.reset();
    EXPECT_TRUE(engine.isNull());
}

TEST(TorvikPos, SecondNameOfTheItemSelectionIsTheSameValue) {
    TTorvikPos engine;
    engine.SetSQLVareOppdateringUtvalg(vopAlle);
    EXPECT_EQ(engine.VareOppdateringUtvalg, vopAlle);
}

TEST(TorvikPos, GeneralQueryFollowsTheTargetSession) {
    TTorvikPos engine;
    db::Session session;
    engine.SetTargetConnection(&session);
    EXPECT_EQ(engine.qryGeneralTarget().Connection(), &session);
    engine.SetTargetConnection(nullptr);
    EXPECT_EQ(engine.qryGeneralTarget().Connection(), nullptr);
}

TEST(TorvikPos, TargetFragmentsOfTheConnection) {
    TTorvikPos engine;
    db::Session session;
    session.SetServer(QStringLiteral("srv\\sql"));
    session.SetDatabase(QStringLiteral("Torvik"));
    session.SetUsername(QStringLiteral("sa"));
    session.SetPassword(QStringLiteral("p%1"));
    engine.SetTargetConnection(&session);
    EXPECT_EQ(engine.TargetServerName(), QStringLiteral("Data Source=srv\\sql"));
    EXPECT_EQ(engine.TargetCatalog(), QStringLiteral("Catalog=Torvik"));
    EXPECT_EQ(engine.TargetUserName(), QStringLiteral("User ID=sa"));
    EXPECT_EQ(engine.TargetPassword(), QStringLiteral("Password=p%1"));
}

TEST(TorvikPos, OperationThatIsNotThereIsAnErrorThatNamesIt) {
    TTorvikPos engine;
    EXPECT_THROW(engine.ExecuteDTSToPos(), EngineError);
    EXPECT_THROW(engine.ExecuteVaretelling(), EngineError);
    RunParts* sent = nullptr;
    engine.OnExecuteDTSToPos = [&](RunParts& parts) { sent = &parts; };
    engine.ExecuteDTSToPos();
    EXPECT_EQ(sent, &engine.Parts());
}

struct WeekdayCase {
    int dayOfMarch;  // 2 March 2026 is a Monday
    const char16_t* number;
};

class DeleteItemsDay : public testing::TestWithParam<WeekdayCase> {};

TEST_P(DeleteItemsDay, WeekdayIsMondayOneToSundaySeven) {
    FakeEngine f;
    f.around.now = QDateTime(QDate(2026, 3, GetParam().dayOfMarch), QTime(12, 0));
    const QString today = QString::fromUtf16(GetParam().number);
    for (const char16_t* day : {u"1", u"2", u"3", u"4", u"5", u"6", u"7"}) {
        const QString number = QString::fromUtf16(day);
        f.engine.DeleteItemsWeekDays = QStringList{number, number};
        EXPECT_EQ(f.engine.DeleteItemsThisDay(), number == today) << number.toStdString();
    }
}

INSTANTIATE_TEST_SUITE_P(Week, DeleteItemsDay,
                         testing::Values(WeekdayCase{2, u"1"}, WeekdayCase{3, u"2"}, WeekdayCase{4, u"3"},
                                         WeekdayCase{5, u"4"}, WeekdayCase{6, u"5"}, WeekdayCase{7, u"6"},
                                         WeekdayCase{8, u"7"}));

TEST(DeleteItemsOption, OnSendNeedsBothTheOptionAndTheDay) {
    FakeEngine f;  // a Wednesday
    f.engine.DeleteItemsWeekDays = QStringList{QStringLiteral("3")};
    EXPECT_FALSE(f.engine.DeleteItemsOnSend());
    f.engine.SetDeleteItemsOnSend(true);
    EXPECT_TRUE(f.engine.DeleteItemsOnSend());
    f.engine.DeleteItemsWeekDays = QStringList{QStringLiteral("7")};
    EXPECT_FALSE(f.engine.DeleteItemsOnSend());
}

}  // namespace
}  // namespace torvik
