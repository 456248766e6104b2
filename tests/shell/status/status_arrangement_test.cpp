// The status as the operator arranges it: how far the run is, filters, groups with their sums, sorting, what follows
// the run, and the grid taken elsewhere.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTreeView>

#include "engine/base/abort.h"
#include "engine/status/oppgjor_status.h"
#include "shell/status/status_tree_model.h"
#include "shell/status/status_view.h"
#include "tests/shell/modal.h"
#include "tests/support/qt_print.h"

namespace torvik {
namespace {

using test::child;

// Four tills of three departments: 10/1 failed, 10/2 done, 9/1 done, 100/1 waits.
class Arranged : public testing::Test {
protected:
    Arranged() {
        view.resize(1100, 700);
        view.show();
        till(10, 1, oksFalse, kls_Error, 4);
        till(10, 2, oksTrue, kls_OK, 7);
        till(9, 1, oksTrue, kls_OK, 3);
        till(100, 1, oksNull, klsNone, 0);
    }
    void till(int department, int number, TOKStatus fetched, int icon, int unsettled) {
        const QString avdnr = QString::number(department);
        const QString kassenr = QString::number(number);
        frame.SetStatus(1000 + department, avdnr, QStringLiteral("Butikk %1").arg(department), kassenr, ostHentet,
                        fetched, QStringLiteral("melding %1/%2").arg(avdnr, kassenr), QTime(0, 1, number), -1);
        frame.UpdateNonReconsiledSales(avdnr, kassenr, unsettled);
        setIcon(frame.memOppgjorStatus.Locate(avdnr, kassenr), icon);
    }
    void setIcon(int row, int icon) {
        icons.resize(static_cast<std::size_t>(frame.memOppgjorStatus.RecordCount()));
        icons[static_cast<std::size_t>(row)] = icon;
        frame.memOppgjorStatus.PostIcons(icons);
    }
    [[nodiscard]] QTreeView& tree() { return child<QTreeView>(view, "statusTree"); }
    // "10/1 10/2", groups as "[caption: tills]".
    [[nodiscard]] QString shown(const QModelIndex& above = {}) {
        const auto& model = static_cast<const StatusTreeModel&>(*tree().model());
        QStringList all;
        for (int row = 0; row < model.rowCount(above); ++row) {
            const QModelIndex each = model.index(row, 0, above);
            if (model.kindOf(each) == StatusTreeModel::Kind::Group) {
                all << u'[' + each.data().toString() + QStringLiteral(": ") + shown(each) + u']';
            } else {
                all << each.siblingAtColumn(StatusTreeModel::Avdeling).data().toString() + u'/' +
                           each.siblingAtColumn(StatusTreeModel::Kasse).data().toString();
            }
        }
        return all.join(u' ');
    }
    void groupBy(const char* caption) {
        auto& group = child<QComboBox>(view, "group");
        group.setCurrentIndex(group.findText(QString::fromUtf8(caption)));
    }
    void clickHeader(int column) { Q_EMIT tree().header()->sectionClicked(column); }
    // Once the window has had its turn.
    [[nodiscard]] QString highlighted() {
        QCoreApplication::processEvents();
        const QModelIndex current = tree().currentIndex();
        return current.siblingAtColumn(StatusTreeModel::Avdeling).data().toString() + u'/' +
               current.siblingAtColumn(StatusTreeModel::Kasse).data().toString();
    }
    [[nodiscard]] QString melding() { return child<QPlainTextEdit>(view, "melding").toPlainText(); }

    TfraOppgjorStatus frame;
    StatusView view{frame};
    std::vector<int> icons;
};

TEST_F(Arranged, ButtonsTellHowManyTillsAreInEachState) {
    EXPECT_EQ(child<QPushButton>(view, "stateDone").text(), QStringLiteral("Ferdig: 2"));
    EXPECT_EQ(child<QPushButton>(view, "stateFailed").text(), QStringLiteral("Feilet: 1"));
    EXPECT_EQ(child<QPushButton>(view, "stateRunning").text(), QStringLiteral("Pågår: 0"));
    EXPECT_EQ(child<QPushButton>(view, "stateWaiting").text(), QStringLiteral("Venter: 1"));
    frame.BeginTill(QStringLiteral("100"), QStringLiteral("1"));
    EXPECT_EQ(child<QPushButton>(view, "stateRunning").text(), QStringLiteral("Pågår: 1"));
    EXPECT_EQ(child<QPushButton>(view, "stateWaiting").text(), QStringLiteral("Venter: 0"));
}

TEST_F(Arranged, ButtonShowsTheTillsOfItsStateAlone) {
    EXPECT_EQ(shown(), QStringLiteral("100/1 10/1 10/2 9/1"));
    test::press(view, "stateFailed");
    EXPECT_EQ(shown(), QStringLiteral("10/1"));
    test::press(view, "stateDone");
    EXPECT_FALSE(child<QPushButton>(view, "stateFailed").isChecked());
    EXPECT_EQ(shown(), QStringLiteral("10/2 9/1"));
    setIcon(0, kls_OK);
    EXPECT_EQ(shown(), QStringLiteral("10/1 10/2 9/1")) << "a till joins as it is done";
    setIcon(1, kls_Error);
    EXPECT_EQ(shown(), QStringLiteral("10/1 9/1")) << "and leaves when it has failed";
    test::press(view, "stateDone");
    EXPECT_EQ(shown(), QStringLiteral("100/1 10/1 10/2 9/1"));
}

TEST_F(Arranged, FailedTillsStandFirstWhereTheOperatorAsksForIt) {
    child<QCheckBox>(view, "failedFirst").click();
    EXPECT_EQ(shown(), QStringLiteral("10/1 100/1 10/2 9/1"));
    setIcon(2, kls_Error);
    EXPECT_EQ(shown(), QStringLiteral("10/1 9/1 100/1 10/2"));
    child<QCheckBox>(view, "failedFirst").click();
    EXPECT_EQ(shown(), QStringLiteral("100/1 10/1 10/2 9/1"));
}

TEST_F(Arranged, HeaderSortsUpwardsDownwardsAndBackToTheRunsOrder) {
    clickHeader(StatusTreeModel::Avdeling);
    EXPECT_EQ(shown(), QStringLiteral("9/1 10/1 10/2 100/1")) << "a number, not a text";
    clickHeader(StatusTreeModel::Avdeling);
    EXPECT_EQ(shown(), QStringLiteral("100/1 10/1 10/2 9/1"));
    clickHeader(StatusTreeModel::IkkeOppgjort);
    EXPECT_EQ(shown(), QStringLiteral("100/1 9/1 10/1 10/2"));
    frame.UpdateNonReconsiledSales(QStringLiteral("100"), QStringLiteral("1"), 5);
    EXPECT_EQ(shown(), QStringLiteral("9/1 10/1 100/1 10/2")) << "a row moves with its value";
    clickHeader(StatusTreeModel::IkkeOppgjort);
    clickHeader(StatusTreeModel::IkkeOppgjort);
    EXPECT_EQ(shown(), QStringLiteral("100/1 10/1 10/2 9/1"));
    EXPECT_FALSE(tree().header()->isSortIndicatorShown());
}

TEST_F(Arranged, GroupsHaveTheirTillsAndSums) {
    groupBy("Avdeling");
    EXPECT_EQ(shown(), QStringLiteral("[Avdeling 100 Butikk 100: 100/1] [Avdeling 10 Butikk 10: 10/1 10/2] "
                                      "[Avdeling 9 Butikk 9: 9/1]"));
    const QModelIndex ten = tree().model()->index(1, 0);
    EXPECT_EQ(ten.siblingAtColumn(StatusTreeModel::IkkeOppgjort).data().toInt(), 11);
    EXPECT_EQ(ten.siblingAtColumn(StatusTreeModel::TidBrukt).data().toString(), QStringLiteral("00:02:03, 2"));
    EXPECT_TRUE(tree().isExpanded(ten));
    frame.UpdateNonReconsiledSales(QStringLiteral("10"), QStringLiteral("1"), 0);
    EXPECT_EQ(ten.siblingAtColumn(StatusTreeModel::IkkeOppgjort).data().toInt(), 7);
}

TEST_F(Arranged, TillsGoFromGroupToGroupAsTheirStateDoes) {
    groupBy("Status");
    EXPECT_EQ(shown(), QStringLiteral("[Feilet: 10/1] [Venter: 100/1] [Ferdig: 10/2 9/1]"));
    frame.BeginTill(QStringLiteral("100"), QStringLiteral("1"));
    EXPECT_EQ(shown(), QStringLiteral("[Feilet: 10/1] [Pågår: 100/1] [Ferdig: 10/2 9/1]"));
    frame.EndTill();
    setIcon(3, kls_Error);
    EXPECT_EQ(shown(), QStringLiteral("[Feilet: 100/1 10/1] [Ferdig: 10/2 9/1]"));
    test::press(view, "stateFailed");
    EXPECT_EQ(shown(), QStringLiteral("[Feilet: 100/1 10/1]"));
    groupBy("Hentet");
    EXPECT_EQ(shown(), QStringLiteral("[Hentet: Nei: 10/1] [Hentet: ikke ennå: 100/1]"));
    groupBy("Ingen gruppering");
    EXPECT_EQ(shown(), QStringLiteral("100/1 10/1"));
}

TEST_F(Arranged, LinesComeUnderTheirTillInAGroupAndBehindAFilter) {
    groupBy("Avdeling");
    test::press(view, "stateDone");
    frame.memLogEntries.Append({{.Ik_Ku_Id = 1010, .Kassenr = QStringLiteral("1"), .Msg = QStringLiteral("skjult")},
                                {.Ik_Ku_Id = 1009, .Kassenr = QStringLiteral("1"), .Msg = QStringLiteral("synlig")}});
    const QModelIndex nine = tree().model()->index(0, 0, tree().model()->index(1, 0));
    ASSERT_EQ(tree().model()->rowCount(nine), 1);
    EXPECT_TRUE(tree().model()->index(0, 0, nine).data().toString().endsWith(QStringLiteral("synlig")));
    EXPECT_EQ(tree().model()->index(0, 0, nine).parent(), nine);
    test::press(view, "stateDone");
    EXPECT_EQ(tree().model()->rowCount(tree().model()->index(0, 0, tree().model()->index(1, 0))), 1);
}

TEST_F(Arranged, HighlightFollowsTheRunUntilTheOperatorChoosesAndTheMemoIsOfTheHighlightedRow) {
    EXPECT_EQ(highlighted(), QStringLiteral("100/1")) << "the row set last";
    EXPECT_EQ(melding(), QStringLiteral("melding 100/1,"));
    till(9, 1, oksTrue, kls_OK, 3);
    EXPECT_EQ(highlighted(), QStringLiteral("9/1"));

    const QRect ten = tree().visualRect(tree().model()->index(1, StatusTreeModel::Navn));
    QTest::mouseClick(tree().viewport(), Qt::LeftButton, {}, ten.center());
    EXPECT_EQ(highlighted(), QStringLiteral("10/1"));
    till(9, 1, oksTrue, kls_OK, 3);
    EXPECT_EQ(highlighted(), QStringLiteral("10/1")) << "the operator reads it";
    EXPECT_EQ(melding(), QStringLiteral("melding 10/1,"));

    frame.Clear();
    till(9, 1, oksTrue, kls_OK, 3);
    EXPECT_EQ(highlighted(), QStringLiteral("9/1")) << "the next run is followed again";
}

TEST_F(Arranged, ClipboardHasTheGridAsItIsShown) {
    child<QCheckBox>(view, "failedFirst").click();
    tree().setFocus();
    view.copyToClipboard();
    EXPECT_EQ(QGuiApplication::clipboard()->text(),
              QStringLiteral(
                  "Status\tAvdnr\tAvdNavn\tKassenr\tHentet\tSendt\tSiste oppgjør\tAnt. ikke oppgjorte salg\tAnt. dgr. "
                  "siden backup\tTid brukt\tOpp Mbps\n"
                  "Feil\t10\tButikk 10\t1\tNei\t\t\t4\t\t00:01:01\t\n"
                  "Ingen\t100\tButikk 100\t1\t\t\t\t0\t\t00:01:01\t\n"
                  "OK\t10\tButikk 10\t2\tJa\t\t\t7\t\t00:01:02\t\n"
                  "OK\t9\tButikk 9\t1\tJa\t\t\t3\t\t00:01:01\t\n"));
}

TEST_F(Arranged, SpreadsheetHasTheTillsAndTheirLines) {
    frame.memLogEntries.Append({{.Ik_Ku_Id = 1010,
                                 .Kassenr = QStringLiteral("1"),
                                 .Severity = kls_Error,
                                 .DateAndTime = QDateTime(QDate(2026, 3, 4), QTime(5, 6, 7)),
                                 .Msg = QStringLiteral("Linjen på <kassen> & æøå")}});
    QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("status.xlsx"));
    view.AskExportFile = [&] { return file; };
    view.exportToSpreadsheet();
    const auto part = [&](const char* name) {
        QProcess unzip;
        unzip.start(QStringLiteral("unzip"), {QStringLiteral("-p"), file, QString::fromUtf8(name)});
        unzip.waitForFinished();
        return QString::fromUtf8(unzip.readAllStandardOutput());
    };
    const QString strings = part("xl/sharedStrings.xml");
    for (const QString& text :
         {QStringLiteral("Ant. ikke oppgjorte salg"), QStringLiteral("Butikk 100"), QStringLiteral("melding 10/1,"),
          QStringLiteral("04.03.2026 05:06:07"), QStringLiteral("Linjen på &lt;kassen&gt; &amp; æøå")})
        EXPECT_TRUE(strings.contains(text)) << text.toStdString();
    EXPECT_EQ(part("xl/worksheets/sheet1.xml").count(QStringLiteral("<row ")), 5) << "captions and four tills";
    EXPECT_EQ(part("xl/worksheets/sheet2.xml").count(QStringLiteral("<row ")), 2);
}

TEST_F(Arranged, SpreadsheetThatCannotBeWrittenIsAnError) {
    view.AskExportFile = [] { return QStringLiteral("/finnes/ikke/status.xlsx"); };
    EXPECT_THROW(view.exportToSpreadsheet(), EngineError);
}

}  // namespace
}  // namespace torvik
