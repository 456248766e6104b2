// The dialog in which a script is written or loaded.
#include "shell/fleet/sql_script_dialog.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QFileSystemModel>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QSplitter>
#include <QTemporaryDir>
#include <QTreeView>

#include "shell/settings/settings_store.h"
#include "tests/shell/modal.h"
#include "tests/support/pump.h"
#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

const QStringList kTills{"avd 101 kasse 1 (Sentrum)", "avd 101 kasse 2 (Sentrum)"};

class SqlScriptDialog : public testing::Test {
protected:
    SqlScriptDialog() { QDir().mkpath(program()); }

    [[nodiscard]] QString program() const { return folder.filePath(QStringLiteral("program")); }
    QString file(const QString& name, const QByteArray& content) const {
        QFile made(program() + u'/' + name);
        EXPECT_TRUE(made.open(QIODevice::WriteOnly));
        made.write(content);
        return made.fileName();
    }
    [[nodiscard]] std::unique_ptr<TfrmSQLScript> dialog() {
        return std::make_unique<TfrmSQLScript>(store, program() + u'/', kTills);
    }
    static QPlainTextEdit& script(TfrmSQLScript& dialog) { return child<QPlainTextEdit>(dialog, "script"); }
    static QWidget& fileSide(TfrmSQLScript& dialog) { return *child<QTreeView>(dialog, "files").parentWidget(); }

    QTemporaryDir folder;
    SettingsStore store{folder.filePath(QStringLiteral("settings.ini"))};
};

TEST_F(SqlScriptDialog, BeginsWithItsHintAndWantsRows) {
    const auto shown = dialog();
    EXPECT_EQ(shown->windowTitle(), "SQL Script");
    EXPECT_EQ(shown->lines(), QStringList{"-- Skriv SQL setningen her, og klikk deretter OK"});
    QStringList labels;
    for (const QLabel* label : shown->findChildren<QLabel*>()) labels << label->text();
    EXPECT_TRUE(labels.contains("Dobbelklikk på skriptet for å vise til høyre"));
    EXPECT_TRUE(labels.contains("&SQL script som skal kjøres mot kassene:"));
    EXPECT_EQ(child<QCheckBox>(*shown, "returnsData").text(), "Returnèr data");
    EXPECT_TRUE(child<QCheckBox>(*shown, "returnsData").isChecked());
    EXPECT_EQ(script(*shown).lineWrapMode(), QPlainTextEdit::NoWrap);
    QTest::keyClick(&script(*shown), Qt::Key_Tab);
    EXPECT_TRUE(script(*shown).toPlainText().contains('\t'));
}

TEST_F(SqlScriptDialog, GivesItsLinesAndWhetherRowsAreWanted) {
    const auto shown = dialog();
    whenAsked<TfrmSQLScript>([](TfrmSQLScript& asked) {
        script(asked).setPlainText("SELECT 1\nGO\n");
        child<QCheckBox>(asked, "returnsData").setChecked(false);
        press(asked, "ok");
    });
    const auto answer = shown->Execute();
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->lines, (QStringList{"SELECT 1", "GO"}));
    EXPECT_FALSE(answer->returnsData);
}

TEST_F(SqlScriptDialog, GivesNothingForAvbryt) {
    const auto shown = dialog();
    whenAsked<TfrmSQLScript>([](TfrmSQLScript& asked) { press(asked, "cancel"); });
    EXPECT_FALSE(shown->Execute());
}

TEST_F(SqlScriptDialog, EmptyMemoHasNoLines) {
    const auto shown = dialog();
    script(*shown).clear();
    EXPECT_EQ(shown->lines(), QStringList());
    script(*shown).setPlainText("\n\n");
    EXPECT_EQ(shown->lines(), (QStringList{"", ""}));
}

TEST_F(SqlScriptDialog, TellsHowManyTillsAndWhichBeforeAScriptChangesThem) {
    const auto shown = dialog();
    const auto& effect = child<QLabel>(*shown, "effect");
    EXPECT_EQ(child<QPlainTextEdit>(*shown, "tills").toPlainText(), kTills.join(", "));
    script(*shown).setPlainText("SELECT * FROM VARE");
    EXPECT_EQ(effect.text(), "Skriptet kjøres mot 2 kasser:");
    script(*shown).setPlainText("SELECT 1\nDELETE FROM VARE");
    EXPECT_EQ(effect.text(), "<b>Skriptet kan endre data på 2 kasser:</b>");
    TfrmSQLScript one(store, program(), {kTills.first()});
    EXPECT_EQ(child<QLabel>(one, "effect").text(), "Skriptet kjøres mot 1 kasse:");
}

TEST_F(SqlScriptDialog, DoubleClickLoadsAScriptInTheCodingItHas) {
    const struct {
        const char* name;
        QByteArray content;
    } files[]{{"a.sql", "SELECT 'bl\xE5'\r\nGO\r\n"}, {"b.TXT", "SELECT 'bl\xC3\xA5'\nGO"}};
    for (const auto& [name, content] : files) {
        file(QString::fromUtf8(name), content);
        const auto shown = dialog();
        shown->show();
        auto& tree = child<QTreeView>(*shown, "files");
        auto& model = *qobject_cast<QFileSystemModel*>(tree.model());
        const QModelIndex at = model.index(program() + u'/' + QString::fromUtf8(name));
        ASSERT_TRUE(pumpUntil([&] { return tree.visualRect(at).isValid(); })) << name;
        QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, tree.visualRect(at).center());
        QTest::mouseDClick(tree.viewport(), Qt::LeftButton, {}, tree.visualRect(at).center());
        EXPECT_EQ(shown->lines(), (QStringList{"SELECT 'blå'", "GO"})) << name;
    }
}

TEST_F(SqlScriptDialog, OtherFilesAreRefusedWithAMessage) {
    const auto shown = dialog();
    QString told;
    whenAsked<QMessageBox>([&](QMessageBox& box) {
        told = box.text();
        box.accept();
    });
    shown->openFile(file("liste.csv", "x"));
    EXPECT_EQ(told, "Kun filer med endelsen .txt og .sql kan åpnes her");
    EXPECT_EQ(shown->lines(), QStringList{"-- Skriv SQL setningen her, og klikk deretter OK"});
}

TEST_F(SqlScriptDialog, FileThatCannotBeReadIsTold) {
    const auto shown = dialog();
    QString told;
    whenAsked<QMessageBox>([&](QMessageBox& box) {
        told = box.text();
        box.accept();
    });
    shown->openFile(program() + "/borte.sql");
    EXPECT_TRUE(told.startsWith("Klarte ikke å lese ")) << told.toStdString();
}

TEST_F(SqlScriptDialog, TreeIsRootedInTheProgramsFolderOrShowsAllLevels) {
    const auto shown = dialog();
    auto& tree = child<QTreeView>(*shown, "files");
    const auto& model = *qobject_cast<QFileSystemModel*>(tree.model());
    EXPECT_EQ(model.filePath(tree.rootIndex()), program());
    auto& all = child<QCheckBox>(*shown, "fromDesktop");
    EXPECT_EQ(all.text(), "Vis alle nivåer, fra skriverbordet");
    all.setChecked(true);
    EXPECT_FALSE(tree.rootIndex().isValid());
    all.setChecked(false);
    EXPECT_EQ(model.filePath(tree.rootIndex()), program());
}

TEST_F(SqlScriptDialog, F8OpensAndClosesTheTree) {
    const auto shown = dialog();
    shown->show();
    shown->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(shown.get()));
    QTest::keyClick(&script(*shown), Qt::Key_F8);
    EXPECT_FALSE(fileSide(*shown).isVisible());
    QTest::keyClick(&script(*shown), Qt::Key_F8);
    EXPECT_TRUE(fileSide(*shown).isVisible());
}

TEST_F(SqlScriptDialog, SizeAndStateAreKept) {
    const QString opened = file("sist.sql", "SELECT 1");
    {
        const auto shown = dialog();
        shown->show();
        shown->resize(1100, 700);
        child<QCheckBox>(*shown, "fromDesktop").setChecked(true);
        shown->openFile(opened);
        shown->findChild<QSplitter*>()->setSizes({333, 700});
    }
    EXPECT_TRUE(store.save());
    QFile kept(folder.filePath("settings.ini"));
    ASSERT_TRUE(kept.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(kept.readAll());
    for (const char* each :
         {"[TfrmSQLScript]", "Width=1100", "Height=700", "BrowseFromDesktop=true", "RecentPath=", "FileBrowserWidth="})
        EXPECT_TRUE(text.contains(QString::fromUtf8(each))) << each << " in\n" << text.toStdString();

    const auto again = dialog();
    EXPECT_EQ(again->size(), QSize(1100, 700));
    EXPECT_TRUE(child<QCheckBox>(*again, "fromDesktop").isChecked());
    const auto& tree = child<QTreeView>(*again, "files");
    EXPECT_EQ(qobject_cast<QFileSystemModel*>(tree.model())->filePath(tree.currentIndex()), opened);
}

}  // namespace
}  // namespace torvik::test
