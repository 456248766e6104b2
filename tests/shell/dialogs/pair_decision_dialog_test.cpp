// What the operator is told of a pair that another machine has left half done, and what each answer means.
#include <gtest/gtest.h>

#include <QLabel>
#include <QPlainTextEdit>

#include "shell/dialogs/pair_decision_dialog.h"
#include "tests/shell/modal.h"
#include "tests/support/qt_print.h"

namespace torvik {
namespace {

using test::child;

PairQuestion question(bool canTakeBack) {
    return {.Avdeling = QStringLiteral("101"),
            .Kassenr = QStringLiteral("2"),
            .What = QStringLiteral("oppgjør 17"),
            .Machine = QStringLiteral("HK-02"),
            .Began = QStringLiteral("2026-03-04 04:00:10"),
            .Till = {QStringLiteral("Oppgjør 17 er merket som hentet")},
            .BackOffice = {QStringLiteral("Oppgjør 17 finnes ikke"), QStringLiteral("Begynt, ikke fullført")},
            .CanTakeBack = canTakeBack};
}

PairDecision answered(bool canTakeBack, const std::function<void(PairDecisionDialog&)>& answer) {
    PairDecisionDialog dialog(question(canTakeBack));
    test::whenAsked<PairDecisionDialog>(answer);
    return dialog.Execute();
}

TEST(PairDecisionDialog, ShowsTheTillTheMachineAndWhatBothEndsHold) {
    PairDecisionDialog dialog(question(true));
    const QString text = dialog.findChild<QLabel*>()->text();
    for (const char* part : {"HK-02", "oppgjør 17", "avdeling 101, kasse 2", "2026-03-04 04:00:10"})
        EXPECT_TRUE(text.contains(QString::fromUtf8(part))) << part;
    EXPECT_EQ(child<QPlainTextEdit>(dialog, "till").toPlainText(), QStringLiteral("Oppgjør 17 er merket som hentet"));
    EXPECT_EQ(child<QPlainTextEdit>(dialog, "backOffice").toPlainText(),
              QStringLiteral("Oppgjør 17 finnes ikke\nBegynt, ikke fullført"));
}

TEST(PairDecisionDialog, EachButtonIsItsAnswer) {
    EXPECT_EQ(answered(true, [](PairDecisionDialog& shown) { test::press(shown, "takeBack"); }),
              PairDecision::TakeBack);
    EXPECT_EQ(answered(true, [](PairDecisionDialog& shown) { test::press(shown, "letStand"); }),
              PairDecision::LetStand);
    EXPECT_EQ(answered(true, [](PairDecisionDialog& shown) { test::press(shown, "refuse"); }), PairDecision::Refuse);
}

TEST(PairDecisionDialog, EnterEscapeAndClosingChangeNothing) {
    EXPECT_EQ(answered(true, [](PairDecisionDialog& shown) { QTest::keyClick(&shown, Qt::Key_Return); }),
              PairDecision::Refuse);
    EXPECT_EQ(answered(true, [](PairDecisionDialog& shown) { QTest::keyClick(&shown, Qt::Key_Escape); }),
              PairDecision::Refuse);
    EXPECT_EQ(answered(true, [](PairDecisionDialog& shown) { shown.close(); }), PairDecision::Refuse);
}

TEST(PairDecisionDialog, TakingBackIsOfferedOnlyWhereItCanBeDoneAndTellsWhy) {
    EXPECT_EQ(
        answered(
            false,
            [](PairDecisionDialog& shown) {
                EXPECT_FALSE(child<QPushButton>(shown, "takeBack").isEnabled());
                EXPECT_TRUE(
                    child<QPushButton>(shown, "takeBack").toolTip().contains(QStringLiteral("den andre maskinen")));
                test::press(shown, "letStand");
            }),
        PairDecision::LetStand);
}

}  // namespace
}  // namespace torvik
