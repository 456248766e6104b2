#include "engine/status/oppgjor_status.h"

#include <gtest/gtest.h>

#include "engine/base/abort.h"
#include "engine/status/till_state.h"
#include "tests/engine/signal_count.h"
#include "tests/support/qt_print.h"

namespace torvik {
namespace {

const QString kAvd = QStringLiteral("12");
const QString kKasse = QStringLiteral("1");

// SetStatus of one till with what the case leaves open filled in.
void setStatus(TfraOppgjorStatus& frame, TOppgjorStatusType type, TOKStatus ok, const QString& message = {},
               int daysSinceBackup = -1, QTime used = QTime(0, 1, 2)) {
    frame.SetStatus(7, kAvd, QStringLiteral("Storgata"), kKasse, type, ok, message, used, daysSinceBackup);
}

const OppgjorStatusRow& theRow(const TfraOppgjorStatus& frame) {
    return frame.memOppgjorStatus.Row(0);
}

TEST(SetStatus, MakesARowWithStatusIconZero) {
    TfraOppgjorStatus frame;
    setStatus(frame, ostDoNotSet, oksTrue);
    ASSERT_EQ(frame.memOppgjorStatus.RecordCount(), 1);
    const OppgjorStatusRow& row = theRow(frame);
    EXPECT_EQ(row.Avdnr, kAvd);
    EXPECT_EQ(row.AvdnrSort, 12);
    EXPECT_EQ(row.Ik_Ku_Id, 7);
    EXPECT_EQ(row.AvdNavn, QStringLiteral("Storgata"));
    EXPECT_EQ(row.Kassenr, kKasse);
    EXPECT_EQ(row.StatusIcon, 0);
    EXPECT_EQ(row.Hentet, std::nullopt);
    EXPECT_EQ(row.Sendt, std::nullopt);
    EXPECT_EQ(row.TidBrukt, QTime(0, 1, 2));
    EXPECT_EQ(row.Melding, QString());
}

TEST(SetStatus, MessagesPileUpEachEndingInAComma) {
    TfraOppgjorStatus frame;
    setStatus(frame, ostHentet, oksFalse, QStringLiteral("A"));
    setStatus(frame, ostHentet, oksFalse, QStringLiteral("B"));
    EXPECT_EQ(frame.memOppgjorStatus.RecordCount(), 1);
    EXPECT_EQ(theRow(frame).Melding, QStringLiteral("A,B,"));
}

TEST(SetStatus, MessageIsAppendedAsGivenBehindTheTrimmedText) {
    TfraOppgjorStatus frame;
    setStatus(frame, ostDoNotSet, oksNull, QStringLiteral(" A "));
    EXPECT_EQ(theRow(frame).Melding, QStringLiteral(" A ,"));
    setStatus(frame, ostDoNotSet, oksNull, QStringLiteral("B "));
    EXPECT_EQ(theRow(frame).Melding, QStringLiteral("A ,B ,"));
}

TEST(SetStatus, BlankMessageLeavesTheColumn) {
    TfraOppgjorStatus frame;
    setStatus(frame, ostHentet, oksTrue, QStringLiteral("A"));
    setStatus(frame, ostHentet, oksTrue, QStringLiteral("   "));
    EXPECT_EQ(theRow(frame).Melding, QStringLiteral("A,"));
}

TEST(SetStatus, NegativeDaysSinceBackupKeepTheLastValue) {
    TfraOppgjorStatus frame;
    setStatus(frame, ostHentet, oksTrue, {}, -1);
    EXPECT_EQ(theRow(frame).DagerSidenBackup, std::nullopt);
    setStatus(frame, ostHentet, oksTrue, {}, 0);
    EXPECT_EQ(theRow(frame).DagerSidenBackup, 0);
    setStatus(frame, ostHentet, oksTrue, {}, 3);
    setStatus(frame, ostHentet, oksTrue, {}, -1);
    EXPECT_EQ(theRow(frame).DagerSidenBackup, 3);
}

TEST(SetStatus, TypeSaysWhichColumnTheValueGoesTo) {
    TfraOppgjorStatus frame;
    setStatus(frame, ostHentet, oksTrue);
    setStatus(frame, ostSendt, oksFalse);
    EXPECT_EQ(theRow(frame).Hentet, true);
    EXPECT_EQ(theRow(frame).Sendt, false);
    setStatus(frame, ostDoNotSet, oksNull);
    EXPECT_EQ(theRow(frame).Hentet, true);
    setStatus(frame, ostHentetNull, oksTrue);
    EXPECT_EQ(theRow(frame).Hentet, std::nullopt) << "null whatever the value is";
    setStatus(frame, ostSendt, oksNull);
    EXPECT_EQ(theRow(frame).Sendt, std::nullopt);
}

TEST(SetStatus, KeyIsDepartmentAndTillExactly) {
    TfraOppgjorStatus frame;
    for (const char16_t* kassenr : {u"1", u"1 ", u"2", u"1"}) {
        frame.SetStatus(7, kAvd, {}, QString::fromUtf16(kassenr), ostDoNotSet, oksNull, {}, QTime(), -1);
    }
    EXPECT_EQ(frame.memOppgjorStatus.RecordCount(), 3);
}

TEST(SetStatus, DepartmentThatIsNoNumberRaisesAndLeavesNoRow) {
    TfraOppgjorStatus frame;
    EXPECT_THROW(frame.SetStatus(7, QStringLiteral("A1"), {}, kKasse, ostHentet, oksTrue, {}, QTime(), -1),
                 EngineError);
    EXPECT_THROW(frame.UpdateStatus(7, QStringLiteral(""), {}, kKasse, {}), EngineError);
    EXPECT_EQ(frame.memOppgjorStatus.RecordCount(), 0);
}

TEST(SetStatus, RedrawsOnceAndShowsTheRow) {
    TfraOppgjorStatus frame;
    const test::SignalCount inserted(&frame.memOppgjorStatus, &QAbstractItemModel::rowsInserted);
    const test::SignalCount changed(&frame.memOppgjorStatus, &QAbstractItemModel::dataChanged);
    const test::SignalCount expanded(&frame, &TfraOppgjorStatus::RowExpanded);
    setStatus(frame, ostHentet, oksTrue, QStringLiteral("A"));
    EXPECT_EQ(inserted.count(), 1);
    EXPECT_EQ(changed.count(), 0);
    setStatus(frame, ostHentet, oksTrue, QStringLiteral("B"));
    EXPECT_EQ(inserted.count(), 1);
    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(expanded.count(), 2);
}

TEST(SetStatus, LongTextsAreCutToTheirColumns) {
    TfraOppgjorStatus frame;
    setStatus(frame, ostHentet, oksTrue, QString(300, u'x'));
    EXPECT_EQ(theRow(frame).Melding, QString(255, u'x'));
}

TEST(UpdateStatus, SetsBothColumnsToTrueOrFalse) {
    TfraOppgjorStatus frame;
    frame.UpdateStatus(7, kAvd, QStringLiteral("Storgata"), kKasse, {ostSendt});
    ASSERT_EQ(frame.memOppgjorStatus.RecordCount(), 1);
    EXPECT_EQ(theRow(frame).Sendt, true);
    EXPECT_EQ(theRow(frame).Hentet, false);
    EXPECT_EQ(theRow(frame).AvdnrSort, 12);

    frame.UpdateStatus(8, kAvd, QStringLiteral("Annet navn"), kKasse, {ostHentet});
    ASSERT_EQ(frame.memOppgjorStatus.RecordCount(), 1);
    EXPECT_EQ(theRow(frame).Sendt, false);
    EXPECT_EQ(theRow(frame).Hentet, true);
    EXPECT_EQ(theRow(frame).AvdNavn, QStringLiteral("Storgata")) << "a known row keeps its identity";
    EXPECT_EQ(theRow(frame).Ik_Ku_Id, 7);
}

TEST(UpdateColumns, ChangeTheRowOfAKnownTill) {
    TfraOppgjorStatus frame;
    setStatus(frame, ostHentet, oksTrue);
    const db::DateTime settled(QDate(2026, 2, 3), QTime(21, 0));
    frame.UpdateSisteOppgjor(kAvd, kKasse, settled);
    frame.UpdateOpplastMbps(kAvd, kKasse, 12.345);
    frame.UpdateNonReconsiledSales(kAvd, kKasse, 4);
    EXPECT_EQ(theRow(frame).SisteOppgjor, settled);
    EXPECT_EQ(theRow(frame).AntSalgIkkeOppgjort, 4);
    const OppgjorStatusTable& table = frame.memOppgjorStatus;
    EXPECT_EQ(table.data(table.index(0, OppgjorStatusTable::Opplast_mbps)).toString(), QStringLiteral("12.35"));
}

TEST(UpdateColumns, PassOverAnUnknownTill) {
    TfraOppgjorStatus frame;
    frame.UpdateSisteOppgjor(kAvd, kKasse, db::DateTime(QDateTime::currentDateTime()));
    frame.UpdateOpplastMbps(kAvd, kKasse, 1);
    frame.UpdateNonReconsiledSales(kAvd, kKasse, 1);
    EXPECT_EQ(frame.memOppgjorStatus.RecordCount(), 0);
    EXPECT_TRUE(frame.memOppgjorStatus.Active());
}

TEST(StatusFrame, ClearEmptiesAndReopensBothTables) {
    TfraOppgjorStatus frame;
    setStatus(frame, ostHentet, oksTrue);
    frame.memLogEntries.Append({LogEntryRow{}});
    frame.Clear();
    EXPECT_EQ(frame.memOppgjorStatus.RecordCount(), 0);
    EXPECT_EQ(frame.memLogEntries.RecordCount(), 0);
    EXPECT_TRUE(frame.memOppgjorStatus.Active());
    EXPECT_TRUE(frame.memLogEntries.Active());
    setStatus(frame, ostHentet, oksTrue);
    EXPECT_EQ(theRow(frame).RecId, 1);
}

TEST(StatusFrame, CaptionsOfTheGrids) {
    const OppgjorStatusTable master;
    QStringList captions;
    for (int column = 0; column < OppgjorStatusTable::ColumnCount; ++column) {
        if (!OppgjorStatusTable::IsHidden(column))
            captions.append(master.headerData(column, Qt::Horizontal).toString());
    }
    EXPECT_EQ(captions.join(u'|'),
              QStringLiteral("Avdnr|AvdNavn|Kassenr|Hentet|Sendt|Tid brukt|Ant. dgr. siden backup|Status|"
                             "Siste oppgjør|Ant. ikke oppgjorte salg|Opp Mbps"));
    const LogEntryTable detail;
    captions.clear();
    for (int column = 0; column < LogEntryTable::ColumnCount; ++column) {
        if (!LogEntryTable::IsHidden(column)) captions.append(detail.headerData(column, Qt::Horizontal).toString());
    }
    EXPECT_EQ(captions.join(u'|'), QStringLiteral("Type|Tidspunkt|Melding"));
    EXPECT_EQ(TfraOppgjorStatus::NoDataText(), QStringLiteral("<Ikke noe data å vise>"));
}

TEST(StatusFrame, FooterSums) {
    TfraOppgjorStatus frame;
    for (int till = 1; till <= 3; ++till) {
        const QString kassenr = QString::number(till);
        frame.SetStatus(1, kAvd, {}, kassenr, ostDoNotSet, oksNull, {}, QTime(10, 0, till), -1);
        frame.UpdateNonReconsiledSales(kAvd, kassenr, till);
    }
    const OppgjorStatusSums all = frame.memOppgjorStatus.Sums();
    EXPECT_EQ(all.TidBruktText(), QStringLiteral("30:00:06"));
    EXPECT_EQ(all.Count, 3);
    EXPECT_EQ(all.AntSalgIkkeOppgjort, 6);
    EXPECT_EQ(frame.memOppgjorStatus.Sums({0, 1}).GroupText(), QStringLiteral("20:00:03, 2"));
}

class DetailFilter : public testing::Test {
protected:
    DetailFilter() {
        frame.memLogEntries.Append({
            {.Ik_Ku_Id = 1, .Kassenr = kKasse, .Severity = kls_OK, .Msg = QStringLiteral("ok")},
            {.Ik_Ku_Id = 1, .Kassenr = kKasse, .Severity = kls_Error, .Msg = QStringLiteral("feil")},
            {.Ik_Ku_Id = 2, .Kassenr = kKasse, .Severity = kls_Warning, .Msg = QStringLiteral("advarsel")},
        });
    }
    [[nodiscard]] QStringList detailOf(int ikKuId) {
        QStringList shown;
        for (const int row : frame.memLogEntries.RowsOf(ikKuId, kKasse)) shown.append(frame.memLogEntries.Row(row).Msg);
        return shown;
    }

    TfraOppgjorStatus frame;
};

TEST_F(DetailFilter, TillWithoutErrorsShowsAnEmptyDetail) {
    frame.SetErrorsOnly(true);
    EXPECT_EQ(detailOf(2), QStringList());
    EXPECT_EQ(detailOf(1), QStringList{QStringLiteral("feil")});
    EXPECT_EQ(frame.memLogEntries.RowsOf(1, kKasse), std::vector<int>{1});
}

TEST_F(DetailFilter, TurningItOffShowsAll) {
    frame.SetErrorsOnly(true);
    EXPECT_EQ(detailOf(1).size(), 1);
    frame.SetErrorsOnly(false);
    EXPECT_EQ(detailOf(1).size(), 2);
    EXPECT_EQ(detailOf(2), QStringList{QStringLiteral("advarsel")});
}

class States : public testing::Test {
protected:
    // A till with this icon.
    void till(int department, int icon) {
        const QString avdnr = QString::number(department);
        frame.SetStatus(department, avdnr, {}, kKasse, ostDoNotSet, oksNull, {}, QTime(), -1);
        icons.push_back(icon);
        frame.memOppgjorStatus.PostIcons(icons);
    }
    TfraOppgjorStatus frame;
    std::vector<int> icons;
};

TEST_F(States, AreCountedByIconAndTheRunningTillByItself) {
    till(1, kls_OK);
    till(2, kls_Error);
    till(3, klsNone);
    till(4, kls_OK);
    till(5, klsNone);
    frame.BeginTill(QStringLiteral("5"), kKasse);
    EXPECT_EQ(CountTillStates(frame), (std::array{1, 1, 1, 2})) << "failed, running, waiting, done";
    EXPECT_EQ(TillStateOf(frame, 4), TillState::Running);
    frame.EndTill();
    EXPECT_EQ(CountTillStates(frame), (std::array{1, 0, 2, 2}));
}

TEST_F(States, RunningRowIsToldWhenItMovesAndFallsWithTheTable) {
    till(1, klsNone);
    till(2, klsNone);
    std::vector<std::pair<int, int>> told;
    QObject::connect(&frame, &TfraOppgjorStatus::RunningRowChanged, &frame,
                     [&](int before, int now) { told.emplace_back(before, now); });
    frame.BeginTill(QStringLiteral("2"), kKasse);
    frame.BeginTill(QStringLiteral("1"), kKasse);
    frame.BeginTill(QStringLiteral("1"), kKasse);
    frame.Clear();
    EXPECT_EQ(frame.RunningRow(), -1);
    frame.BeginTill(QStringLiteral("9"), kKasse);
    EXPECT_EQ(frame.RunningRow(), -1) << "a till without a row";
    EXPECT_EQ(told, (std::vector<std::pair<int, int>>{{-1, 1}, {1, 0}, {0, -1}}));
}

TEST_F(States, IconsThatDoNotChangeAreNotTold) {
    till(1, kls_OK);
    till(2, kls_Error);
    int first = -1;
    int last = -1;
    QObject::connect(&frame.memOppgjorStatus, &QAbstractItemModel::dataChanged, &frame,
                     [&](const QModelIndex& from, const QModelIndex& to) {
                         first = from.row();
                         last = to.row();
                     });
    frame.memOppgjorStatus.PostIcons({kls_OK, kls_Error});
    EXPECT_EQ(first, -1);
    frame.memOppgjorStatus.PostIcons({kls_OK, kls_OK});
    EXPECT_EQ(first, 1);
    EXPECT_EQ(last, 1);
}

}  // namespace
}  // namespace torvik
