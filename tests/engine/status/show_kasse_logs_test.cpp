#include <gtest/gtest.h>

#include "engine/status/oppgjor_status.h"
#include "tests/engine/fake_surroundings.h"
#include "tests/engine/signal_count.h"

namespace torvik {
namespace {

const QString kAvd = QStringLiteral("12");

class ShowKasseLogs : public testing::Test {
protected:
    ShowKasseLogs() {
        till.Ik_Ku_ID = 7;
        till.Kassenr = QStringLiteral("1   ");
        f.engine.Tasks = {taHent};
    }
    void log(TKasseLogSeverity severity, const QString& message = QStringLiteral("linje")) {
        till.LogItems.AddLogEntry(severity, 0, message, QDateTime(QDate(2026, 1, 2), QTime(23, 4, 5)));
    }
    void status(TOppgjorStatusType type, TOKStatus ok) {
        frame.SetStatus(7, kAvd, {}, QStringLiteral("1"), type, ok, {}, QTime(), -1);
    }
    void show(bool clearFirst = false, bool onlyNew = true) {
        f.engine.ShowKasseLogs(clearFirst, tills, onlyNew, &frame);
    }
    [[nodiscard]] int icon() const { return frame.memOppgjorStatus.Row(0).StatusIcon; }

    test::FakeEngine f;
    TfraOppgjorStatus frame;
    TKasseCollection tills;
    TKasseItem& till = tills.Add();
};

TEST_F(ShowKasseLogs, CopiesNewItemsWithTheTrimmedTillNumber) {
    log(kls_Warning, QStringLiteral("melding"));
    show();
    ASSERT_EQ(frame.memLogEntries.RecordCount(), 1);
    const LogEntryRow& row = frame.memLogEntries.Row(0);
    EXPECT_EQ(row.Ik_Ku_Id, 7);
    EXPECT_EQ(row.Kassenr, QStringLiteral("1"));
    EXPECT_EQ(row.Severity, kls_Warning);
    EXPECT_EQ(row.Msg, QStringLiteral("melding"));
    EXPECT_EQ(row.MsgNo, 0);
    EXPECT_FALSE(till.LogItems[0].New);
    const LogEntryTable& table = frame.memLogEntries;
    EXPECT_EQ(table.data(table.index(0, LogEntryTable::DateAndTime)).toString(), QStringLiteral("23:04:05"));
    EXPECT_EQ(table.data(table.index(0, LogEntryTable::Severity)).toString(), QStringLiteral("Advarsel"));
}

TEST_F(ShowKasseLogs, OnlyNewTwiceAddsNothingTheSecondTime) {
    log(kls_OK);
    show();
    show();
    EXPECT_EQ(frame.memLogEntries.RecordCount(), 1);
    log(kls_OK);
    show();
    EXPECT_EQ(frame.memLogEntries.RecordCount(), 2);
}

TEST_F(ShowKasseLogs, ClearFirstWithoutOnlyNewShowsEverythingAgain) {
    log(kls_OK);
    log(kls_OK);
    show();
    show(true, false);
    EXPECT_EQ(frame.memLogEntries.RecordCount(), 2);
    show(true, true);
    EXPECT_EQ(frame.memLogEntries.RecordCount(), 0);
}

TEST_F(ShowKasseLogs, WithoutAFrameOnlyMarksTheItemsAsShown) {
    log(kls_OK);
    f.engine.ShowKasseLogs(false, tills, true, nullptr);
    EXPECT_FALSE(till.LogItems[0].New);
    EXPECT_TRUE(f.log.Lines().isEmpty());
}

TEST_F(ShowKasseLogs, TillsOfTheListKeepTheirOrderAndTheirLines) {
    TKasseItem& other = tills.Add();
    other.Ik_Ku_ID = 8;
    other.Kassenr = QStringLiteral("3");
    other.LogItems.AddLogEntry(kls_Error, 17, QStringLiteral("c"), QDateTime(QDate(2026, 1, 2), QTime(1, 2, 3)));
    log(kls_OK, QStringLiteral("a"));
    log(klsNone, QStringLiteral("b"));
    show();
    QStringList rows;
    for (int i = 0; i < frame.memLogEntries.RecordCount(); ++i) {
        const LogEntryRow& row = frame.memLogEntries.Row(i);
        rows.append(QStringLiteral("%1 %2/%3 %4 %5 %6 %7")
                        .arg(QString::number(row.RecId), QString::number(row.Ik_Ku_Id), row.Kassenr,
                             QString::number(row.Severity), QString::number(row.MsgNo),
                             row.DateAndTime.toString(u"hh:mm:ss"), row.Msg));
    }
    EXPECT_EQ(rows, (QStringList{QStringLiteral("1 7/1 1 0 23:04:05 a"), QStringLiteral("2 7/1 0 0 23:04:05 b"),
                                 QStringLiteral("3 8/3 3 17 01:02:03 c")}));
}

TEST_F(ShowKasseLogs, ErrorOfAnEarlierRoundStillGivesIconThree) {
    status(ostHentet, oksTrue);
    log(kls_Error);
    show();
    log(kls_OK);
    show();
    EXPECT_EQ(icon(), 3);
    show(true, true);
    EXPECT_EQ(icon(), 1) << "until the lines are cleared";
}

TEST_F(ShowKasseLogs, ErrorsOnlyFilterChangesNoIcon) {
    status(ostHentet, oksTrue);
    log(kls_Error);
    log(kls_OK);
    frame.SetErrorsOnly(true);
    show();
    EXPECT_EQ(icon(), 3);
    EXPECT_EQ(frame.memLogEntries.RecordCount(), 2) << "the filter hides lines and drops none";
}

TEST_F(ShowKasseLogs, KeepsTheCurrentRowAndExpandsAll) {
    status(ostHentet, oksTrue);
    frame.SetStatus(8, QStringLiteral("13"), {}, QStringLiteral("1"), ostDoNotSet, oksNull, {}, QTime(), -1);
    frame.SetCurrentRow(0);
    const test::SignalCount expanded(&frame, &TfraOppgjorStatus::AllExpanded);
    const test::SignalCount changed(&frame.memOppgjorStatus, &QAbstractItemModel::dataChanged);
    show();
    EXPECT_EQ(frame.CurrentRow(), 0);
    EXPECT_EQ(expanded.count(), 1);
    EXPECT_EQ(changed.count(), 1) << "both icons in one change";
}

TEST_F(ShowKasseLogs, ErrorLineOfTheTillGivesIconThreeWhateverTheStatus) {
    status(ostHentet, oksTrue);
    log(kls_Error);
    show();
    EXPECT_EQ(icon(), 3);
}

TEST_F(ShowKasseLogs, ErrorLineOfAnotherTillDoesNotCount) {
    status(ostHentet, oksTrue);
    TKasseItem& other = tills.Add();
    other.Ik_Ku_ID = 7;
    other.Kassenr = QStringLiteral("2");
    other.LogItems.AddLogEntry(kls_Error, 0, QStringLiteral("feil"), QDateTime());
    show();
    EXPECT_EQ(icon(), 1);
}

TEST_F(ShowKasseLogs, WarningDoesNotChangeTheIcon) {
    status(ostHentet, oksTrue);
    log(kls_Warning);
    show();
    EXPECT_EQ(icon(), 1);
}

TEST_F(ShowKasseLogs, FailedFetchIsNoFailureWhenTheRunDoesNotFetch) {
    status(ostHentet, oksFalse);
    f.engine.Tasks = {taSend};
    status(ostSendt, oksTrue);
    show();
    EXPECT_EQ(icon(), 1);
}

struct IconCase {
    TOKStatus hentet;
    TOKStatus sendt;
    TTasks tasks;
    int icon;
};

class StatusIcon : public ShowKasseLogs, public testing::WithParamInterface<IconCase> {};

TEST_P(StatusIcon, FollowsStatusAndTasks) {
    status(ostHentet, GetParam().hentet);
    status(ostSendt, GetParam().sendt);
    f.engine.Tasks = GetParam().tasks;
    show();
    EXPECT_EQ(icon(), GetParam().icon);
}

INSTANTIATE_TEST_SUITE_P(Rules, StatusIcon,
                         testing::Values(IconCase{oksNull, oksNull, {taHent}, 0},           // waiting
                                         IconCase{oksTrue, oksNull, {taHent}, 1},           // fetched
                                         IconCase{oksFalse, oksNull, {taHent}, 3},          // failed
                                         IconCase{oksTrue, oksNull, {taHent, taSend}, 0},   // not sent yet
                                         IconCase{oksTrue, oksFalse, {taHent, taSend}, 3},  // sending failed
                                         IconCase{oksTrue, oksTrue, {taHent, taSend}, 1},   // all done
                                         IconCase{oksNull, oksFalse, {taHent, taSend}, 3},  // failure before waiting
                                         IconCase{oksNull, oksTrue, {taSend}, 1},           // sending alone
                                         IconCase{oksFalse, oksFalse, {}, 1}));             // no task at all

}  // namespace
}  // namespace torvik
