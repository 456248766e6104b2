// The run status as the operator sees it: the tree of tills with their lines, the sums, the messages and the switch.
#include "shell/status/status_view.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QTreeView>

#include "engine/status/oppgjor_status.h"
#include "engine/torvik_pos.h"
#include "shell/status/status_tree_model.h"
#include "tests/support/qt_print.h"

namespace torvik {
namespace {

class Status : public testing::Test {
protected:
    Status() {
        view.resize(900, 600);
        view.show();
        engine.Tasks = {taHent};
    }
    // A till of the work list, with its row.
    TKasseItem& till(int department, const QString& kassenr = QStringLiteral("1")) {
        TKasseItem& item = tills.Add();
        item.Ik_Ku_ID = 1000 + department;
        item.Kassenr = kassenr;
        status(department, ostDoNotSet, oksNull, {}, kassenr);
        return item;
    }
    void status(int department, TOppgjorStatusType type, TOKStatus ok, const QString& message = {},
                const QString& kassenr = QStringLiteral("1")) {
        frame.SetStatus(1000 + department, QString::number(department), QStringLiteral("Storgata"), kassenr, type, ok,
                        message, QTime(0, 0, 5), -1);
    }
    static void line(TKasseItem& item, TKasseLogSeverity severity, const QString& text) {
        item.LogItems.AddLogEntry(severity, 0, text, QDateTime(QDate(2026, 3, 4), QTime(5, 6, 7)));
    }
    void show() { engine.ShowKasseLogs(false, tills, true, &frame); }

    // "10/1: a, b | 9/1:" in the order shown.
    [[nodiscard]] QString shown() const {
        const QAbstractItemModel& model = *tree().model();
        QStringList rows;
        for (int row = 0; row < model.rowCount(); ++row) {
            const QModelIndex top = model.index(row, 0);
            QStringList lines;
            for (int i = 0; i < model.rowCount(top); ++i)
                lines.append(model.index(i, 0, top).data().toString().section(QStringLiteral("   "), 1));
            rows.append(model.index(row, StatusTreeModel::Avdeling).data().toString() + u'/' +
                        model.index(row, StatusTreeModel::Kasse).data().toString() + QStringLiteral(": ") +
                        lines.join(u", "));
        }
        return rows.join(u" | ");
    }
    [[nodiscard]] QTreeView& tree() const { return *view.findChild<QTreeView*>(QStringLiteral("statusTree")); }
    [[nodiscard]] QLabel& empty() const { return *tree().findChild<QLabel*>(); }
    [[nodiscard]] QString melding() const {
        return view.findChild<QPlainTextEdit*>(QStringLiteral("melding"))->toPlainText();
    }

    TTorvikPos engine;
    TfraOppgjorStatus& frame = *engine.ffraOppgjorStatus;
    StatusView view{frame};
    TKasseCollection tills;
};

TEST_F(Status, TillsStandByDepartmentNumberDownwardsWhereverTheyAreAdded) {
    for (int department : {9, 100, 10}) till(department);
    till(10, QStringLiteral("2"));
    EXPECT_EQ(shown(), QStringLiteral("100/1:  | 10/1:  | 10/2:  | 9/1: "));
}

TEST_F(Status, LinesComeUnderTheirTillInOrder) {
    TKasseItem& nine = till(9);
    TKasseItem& ten = till(10, QStringLiteral("1         "));
    line(nine, kls_OK, QStringLiteral("a"));
    line(ten, kls_OK, QStringLiteral("b"));
    show();
    line(nine, kls_Error, QStringLiteral("c"));
    show();
    EXPECT_EQ(shown(), QStringLiteral("10/1         : b | 9/1: a, c"));
    till(11);
    EXPECT_EQ(shown(), QStringLiteral("11/1:  | 10/1         : b | 9/1: a, c")) << "a till above moves no lines";
}

TEST_F(Status, LineShowsItsIconTimeAndTextOverAllColumns) {
    TKasseItem& nine = till(9);
    line(nine, kls_Warning, QStringLiteral("advarsel"));
    show();
    const QModelIndex top = tree().model()->index(0, 0);
    const QModelIndex first = tree().model()->index(0, 0, top);
    EXPECT_EQ(first.data().toString(), QStringLiteral("05:06:07   advarsel"));
    EXPECT_FALSE(first.data(Qt::DecorationRole).value<QIcon>().isNull());
    EXPECT_TRUE(tree().isFirstColumnSpanned(0, top));
    EXPECT_EQ(first.parent(), top);
}

TEST_F(Status, RowShowsTheStateOfItsTill) {
    till(9);
    status(9, ostHentet, oksTrue);
    frame.UpdateSisteOppgjor(QStringLiteral("9"), QStringLiteral("1"), db::DateTime(QDate(2026, 3, 3), QTime(21, 0)));
    frame.UpdateNonReconsiledSales(QStringLiteral("9"), QStringLiteral("1"), 4);
    frame.UpdateOpplastMbps(QStringLiteral("9"), QStringLiteral("1"), 2.5);
    show();
    QStringList cells;
    for (int column = 0; column < StatusTreeModel::ColumnCount; ++column)
        cells.append(tree().model()->headerData(column, Qt::Horizontal).toString() + u'=' +
                     tree().model()->index(0, column).data().toString());
    EXPECT_EQ(cells.join(u'|'),
              QStringLiteral("Status=|Avdnr=9|AvdNavn=Storgata|Kassenr=1|Hentet=Ja|Sendt=|"
                             "Siste oppgjør=03.03.2026 21:00:00|Ant. ikke oppgjorte salg=4|Ant. dgr. siden backup=|"
                             "Tid brukt=00:00:05|Opp Mbps=2.50"));
    EXPECT_EQ(tree().model()->index(0, 0).data(Qt::ToolTipRole).toString(), QStringLiteral("OK"));
}

TEST_F(Status, ErrorsOnlyShowsErrorsOfOldAndNewLinesAndTurnedOffAll) {
    TKasseItem& nine = till(9);
    TKasseItem& ten = till(10);
    line(nine, kls_OK, QStringLiteral("ok"));
    line(nine, kls_Error, QStringLiteral("feil"));
    line(ten, kls_Warning, QStringLiteral("advarsel"));
    show();
    auto* errorsOnly = view.findChild<QCheckBox*>(QStringLiteral("errorsOnly"));
    EXPECT_EQ(errorsOnly->text(), QStringLiteral("Vis kun feil detaljer"));
    EXPECT_EQ(qobject_cast<QGroupBox*>(errorsOnly->parentWidget())->title(), QStringLiteral("Visningsalternativer"));
    errorsOnly->setChecked(true);
    EXPECT_EQ(shown(), QStringLiteral("10/1:  | 9/1: feil"));
    line(ten, kls_OK, QStringLiteral("ok"));
    line(ten, kls_Error, QStringLiteral("feil"));
    show();
    EXPECT_EQ(shown(), QStringLiteral("10/1: feil | 9/1: feil"));
    errorsOnly->setChecked(false);
    EXPECT_EQ(shown(), QStringLiteral("10/1: advarsel, ok, feil | 9/1: ok, feil"));
}

TEST_F(Status, EmptyFrameSaysSo) {
    EXPECT_TRUE(empty().isVisible());
    EXPECT_EQ(empty().text(), QStringLiteral("<Ikke noe data å vise>"));
    till(9);
    EXPECT_FALSE(empty().isVisible());
    frame.Clear();
    EXPECT_TRUE(empty().isVisible());
    EXPECT_EQ(shown(), QString());
}

TEST_F(Status, SumsOfAllTills) {
    till(9);
    till(10);
    frame.UpdateNonReconsiledSales(QStringLiteral("9"), QStringLiteral("1"), 4);
    frame.UpdateNonReconsiledSales(QStringLiteral("10"), QStringLiteral("1"), 3);
    const auto* sums = view.findChild<QLabel*>(QStringLiteral("sums"));
    EXPECT_EQ(sums->text(), QStringLiteral("Antall: 2     Ant. ikke oppgjorte salg: 7     Tid brukt: 00:00:10"));
}

TEST_F(Status, ExpandAndCollapseAll) {
    TKasseItem& nine = till(9);
    TKasseItem& ten = till(10);
    line(nine, kls_OK, QStringLiteral("a"));
    line(ten, kls_OK, QStringLiteral("b"));
    show();
    const auto expanded = [this](int row) { return tree().isExpanded(tree().model()->index(row, 0)); };
    EXPECT_TRUE(expanded(0) && expanded(1)) << "showing the lines expands all";
    frame.CollapseAll();
    EXPECT_FALSE(expanded(0) || expanded(1));
    frame.ExpandAll();
    EXPECT_TRUE(expanded(0) && expanded(1));
}

TEST_F(Status, RowThatIsSetIsOpenWhateverWasClosedBefore) {
    TKasseItem& nine = till(9);
    line(till(10), kls_OK, QStringLiteral("a"));
    line(nine, kls_OK, QStringLiteral("b"));
    show();
    frame.CollapseAll();
    status(9, ostHentet, oksTrue);
    EXPECT_FALSE(tree().isExpanded(tree().model()->index(0, 0)));
    EXPECT_TRUE(tree().isExpanded(tree().model()->index(1, 0))) << "department 9 stands last";
}

TEST_F(Status, NumbersStandToTheRight) {
    till(9);
    for (int column = 0; column < StatusTreeModel::ColumnCount; ++column) {
        const bool number = column == StatusTreeModel::IkkeOppgjort || column == StatusTreeModel::Backup;
        const auto alignment = tree().model()->index(0, column).data(Qt::TextAlignmentRole);
        EXPECT_EQ(alignment.toInt() & Qt::AlignRight, number ? Qt::AlignRight : 0) << column;
    }
}

TEST_F(Status, MessagesOfTheTillUnderWayAndOfTheChosenOne) {
    till(9);
    till(10);
    status(9, ostHentet, oksFalse, QStringLiteral("feilet"));
    QCoreApplication::processEvents();  // as each line of log does
    EXPECT_EQ(melding(), QStringLiteral("feilet,"));
    tree().setCurrentIndex(tree().model()->index(0, 0));
    EXPECT_EQ(melding(), QString());
    tree().setCurrentIndex(tree().model()->index(1, 0));
    EXPECT_EQ(melding(), QStringLiteral("feilet,"));
}

TEST_F(Status, PreviewHasAtMostFiveLinesOfTheMessages) {
    till(9);
    for (int i = 0; i < 12; ++i)
        status(9, ostDoNotSet, oksNull, QStringLiteral("melding nummer %1 med noen ord").arg(i + 10));
    const QString preview = tree().model()->index(0, StatusTreeModel::Navn).data(Qt::ToolTipRole).toString();
    EXPECT_TRUE(preview.startsWith(QStringLiteral("melding nummer 10 med noen ord,"))) << preview.toStdString();
    EXPECT_LE(preview.count(u'\n'), 4);
    EXPECT_GE(preview.count(u'\n'), 2);
}

TEST_F(Status, ManyTillsWithManyLinesAreListedRowByRow) {
    int resets = 0;
    QObject::connect(tree().model(), &QAbstractItemModel::modelReset, &view, [&] { ++resets; });
    constexpr int kTills = 40;
    for (int department = 1; department <= kTills; ++department) till(department);
    for (int i = 0; i < kTills; ++i) {
        for (int number = 0; number < 20; ++number) line(tills[i], kls_OK, QStringLiteral("linje"));
        status(i + 1, ostHentet, oksTrue, QStringLiteral("Oppgjør"));
        show();
    }
    EXPECT_EQ(resets, 0);
    EXPECT_EQ(tree().model()->rowCount(tree().model()->index(kTills - 1, 0)), 20);
}

}  // namespace
}  // namespace torvik
