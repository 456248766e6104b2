// The two prompts: a date, and what a reset is to clear.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QDateEdit>
#include <QGroupBox>
#include <QLabel>

#include "shell/dialogs/nullstill_utvalg.h"
#include "shell/dialogs/oppgi_dato.h"
#include "tests/shell/modal.h"
#include "tests/support/qt_print.h"

namespace torvik {
namespace {

using test::child;

TEST(DatePrompt, GivesTheDateOfItsField) {
    TfrmOppgiDato prompt(QDate(2026, 3, 4));
    EXPECT_EQ(prompt.windowTitle(), QStringLiteral("Oppgi dato"));
    EXPECT_EQ(prompt.findChild<QLabel*>()->text(), QStringLiteral("Dato:"));
    prompt.SetLabel(QStringLiteral("Ta med ordrer fra og med dato:"));
    EXPECT_EQ(prompt.findChild<QLabel*>()->text(), QStringLiteral("Ta med ordrer fra og med dato:"));
    test::whenAsked<TfrmOppgiDato>([](TfrmOppgiDato& shown) {
        EXPECT_EQ(shown.focusWidget(), &child<QDateEdit>(shown, "date")) << "the keyboard is not where the date is";
        child<QDateEdit>(shown, "date").setDate(QDate(2026, 2, 28));
        QTest::keyClick(&shown, Qt::Key_Return);
    });
    EXPECT_EQ(prompt.Execute(), std::optional(QDate(2026, 2, 28)));
}

TEST(DatePrompt, GivesNothingForAvbryt) {
    TfrmOppgiDato prompt(QDate(2026, 3, 4));
    test::whenAsked<TfrmOppgiDato>([](TfrmOppgiDato& shown) { test::press(shown, "cancel"); });
    EXPECT_EQ(prompt.Execute(), std::nullopt);
}

TEST(ResetPrompt, HasSalesAlwaysAndTheOthersByChoice) {
    TfrmNullstillUtvalg prompt;
    EXPECT_EQ(prompt.windowTitle(), QStringLiteral("Nullstilling av kasse"));
    EXPECT_EQ(prompt.findChild<QGroupBox*>()->title(), QStringLiteral("Oppgi omfang av nullstilling "));
    EXPECT_EQ(child<QLabel>(prompt, "synchronise").text(),
              QStringLiteral("Data må synkroniseres til kasse før den brukes."));
    struct Box {
        const char* name;
        QString label;
        bool ticked;
        bool enabled;
    };
    for (const Box& box : {Box{"cbSalg", QStringLiteral("Salg og oppgjør"), true, false},
                           Box{"cbVare", QStringLiteral("Vare register"), false, true},
                           Box{"cbKunde", QStringLiteral("Kunde register"), false, true},
                           Box{"cbAnsatt", QStringLiteral("Ekspeditør register"), false, true}}) {
        EXPECT_EQ(child<QCheckBox>(prompt, box.name).text(), box.label);
        EXPECT_EQ(child<QCheckBox>(prompt, box.name).isChecked(), box.ticked) << box.name;
        EXPECT_EQ(child<QCheckBox>(prompt, box.name).isEnabled(), box.enabled) << box.name;
    }
    test::whenAsked<TfrmNullstillUtvalg>([](TfrmNullstillUtvalg& shown) {
        EXPECT_FALSE(child(shown, "synchronise").isVisible());
        child<QCheckBox>(shown, "cbVare").click();
        child<QCheckBox>(shown, "cbAnsatt").click();
        test::press(shown, "ok");
    });
    EXPECT_EQ(prompt.Execute(), (TInitializeItems{nutvOppgjor, nutvVare, nutvAnsatt}));
}

TEST(ResetPrompt, GivesTheEmptySetForAvbryt) {
    TfrmNullstillUtvalg prompt;
    test::whenAsked<TfrmNullstillUtvalg>([](TfrmNullstillUtvalg& shown) {
        child<QCheckBox>(shown, "cbKunde").click();
        test::press(shown, "cancel");
    });
    EXPECT_TRUE(prompt.Execute().empty());
}

}  // namespace
}  // namespace torvik
