// The dialog that asks for a file and its place on the tills' shares, and the little window of a copy.
#include "shell/fleet/kopier_fil.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>

#include "shell/fleet/progress.h"
#include "tests/shell/modal.h"
#include "tests/support/qt_print.h"

namespace torvik {
namespace {

using test::child;

class FileCopyDialog : public testing::Test {
protected:
    [[nodiscard]] QString text(const char* name) { return child<QLineEdit>(dialog, name).text(); }
    [[nodiscard]] QString info() { return child<QLabel>(dialog, "lblInfo").text(); }

    std::optional<QString> chosen;
    TfrmKopierFil dialog{[this] { return chosen; }};
};

TEST_F(FileCopyDialog, BeginsWithTheUsualPlace) {
    EXPECT_EQ(dialog.windowTitle(), "Kopier fil til TorvikPOS");
    EXPECT_EQ(text("teResource"), "C$");
    EXPECT_EQ(text("teFolder"), "\\TorvikPOS\\");
    EXPECT_EQ(text("teLocalFile"), "");
    EXPECT_FALSE(child<QCheckBox>(dialog, "cbOverrideUsername").isChecked());
    EXPECT_EQ(info(), "<PC navn>\\C$\\TorvikPOS\\");
    QStringList labels;
    for (const QLabel* label : dialog.findChildren<QLabel*>())
        if (label->objectName().isEmpty()) labels << label->text();
    labels.sort();
    QStringList expected{"Navn på \"share\" på mål PC, f.eks. C$",
                         "Navn på katalog i \"share\" som oppgitt ovenfor",
                         "Navn på lokal fil som skal sendes:",
                         "Brukernavn:",
                         "Passord",
                         "Filen kopieres til:"};
    expected.sort();
    EXPECT_EQ(labels, expected);
    EXPECT_EQ(child<QCheckBox>(dialog, "cbOverrideUsername").text(), "Overstyr brukernavn og passord:");
}

TEST_F(FileCopyDialog, TellsTheTargetAtEveryChange) {
    child<QLineEdit>(dialog, "teResource").setText("D$");
    EXPECT_EQ(info(), "<PC navn>\\D$\\TorvikPOS\\");
    child<QLineEdit>(dialog, "teFolder").setText("\\Ny\\");
    EXPECT_EQ(info(), "<PC navn>\\D$\\Ny\\");
    child<QLineEdit>(dialog, "teLocalFile").setText("/tmp/mappe/fil.dat");
    EXPECT_EQ(info(), "<PC navn>\\D$\\Ny\\fil.dat");
}

TEST_F(FileCopyDialog, ChoosesALocalFileAndKeepsItWhenThatIsCancelled) {
    chosen = QStringLiteral("/tmp/a.dat");
    test::press(dialog, "browse");
    EXPECT_EQ(text("teLocalFile"), "/tmp/a.dat");
    chosen.reset();
    test::press(dialog, "browse");
    EXPECT_EQ(text("teLocalFile"), "/tmp/a.dat");
}

TEST_F(FileCopyDialog, TakesALoginOnlyWhenItIsToOverride) {
    test::whenAsked<TfrmKopierFil>([](TfrmKopierFil& shown) {
        EXPECT_FALSE(child(shown, "teUserName").isEnabled());
        EXPECT_FALSE(child(shown, "tePassword").isEnabled());
        child<QCheckBox>(shown, "cbOverrideUsername").setChecked(true);
        EXPECT_EQ(shown.focusWidget(), &child(shown, "teUserName"));
        EXPECT_EQ(child<QLineEdit>(shown, "tePassword").echoMode(), QLineEdit::Password);
        QTest::keyClicks(&child(shown, "teUserName"), "kasse");
        QTest::keyClicks(&child(shown, "tePassword"), "ord-1");
        child<QLineEdit>(shown, "teLocalFile").setText("/tmp/a.dat");
        test::press(shown, "ok");
    });
    const auto answer = dialog.Execute();
    ASSERT_TRUE(answer);
    EXPECT_EQ((QStringList{answer->share, answer->folder, answer->localFile, answer->userName, answer->password}),
              (QStringList{"C$", "\\TorvikPOS\\", "/tmp/a.dat", "kasse", "ord-1"}));
    EXPECT_TRUE(answer->overridesLogin);
    child<QCheckBox>(dialog, "cbOverrideUsername").setChecked(false);
    EXPECT_FALSE(child(dialog, "tePassword").isEnabled());
}

TEST_F(FileCopyDialog, GivesNothingForAvbryt) {
    test::whenAsked<TfrmKopierFil>([](TfrmKopierFil& shown) { test::press(shown, "cancel"); });
    EXPECT_FALSE(dialog.Execute());
}

TEST(CopyProgress, ShowsHowFarItIsAndCancelsByItsButtonAndItsClosing) {
    TfrmProgress window;
    window.show();
    EXPECT_EQ(window.position(), 0);
    EXPECT_FALSE(window.isModal());
    window.setProgress(40, QStringLiteral("Kopiert 4.00 bytes av totalt 10.00 bytes (40%)"));
    EXPECT_EQ(window.position(), 40);
    EXPECT_EQ(child<QProgressBar>(window, "bar").value(), 40);
    EXPECT_EQ(child<QLabel>(window, "text").text(), "Kopiert 4.00 bytes av totalt 10.00 bytes (40%)");
    EXPECT_EQ(window.Cancel, 0);
    test::press(window, "cancel");
    EXPECT_EQ(window.Cancel, -1);
    window.Cancel = 0;
    window.close();
    EXPECT_EQ(window.Cancel, -1);
}

}  // namespace
}  // namespace torvik
