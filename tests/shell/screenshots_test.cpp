// Every window and state as a picture, in the folder "screenshots" of the build: to be looked at, and for the pages in
// docs (scripts/pictures copies them there). Here they only have to fit: nothing is cut off at 1280 x 720.
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStyle>
#include <QTabWidget>
#include <QTreeView>

#include "engine/db/session.h"
#include "engine/status/oppgjor_status.h"
#include "sandbox/chain/upkeep.h"
#include "shell/dialogs/nullstill_utvalg.h"
#include "shell/dialogs/oppgi_dato.h"
#include "shell/dialogs/pair_decision_dialog.h"
#include "shell/dialogs/sync_preferences.h"
#include "shell/dialogs/velg_internkunde_kasse.h"
#include "shell/fleet/ini_viewer.h"
#include "shell/fleet/kopier_fil.h"
#include "shell/fleet/ny_melding.h"
#include "shell/fleet/progress.h"
#include "shell/fleet/sql_script_dialog.h"
#include "shell/setup/setup_report.h"
#include "shell/status/status_tree_model.h"
#include "shell/status/till_story_dialog.h"
#include "tests/shell/modal.h"
#include "tests/shell/window_over_a_chain.h"
#include "tests/support/pump.h"

namespace torvik {
namespace {

constexpr QSize kSmallScreen(1280, 720);

class Screenshots : public test::WindowOverAChain {
protected:
    // Saves the picture, and finds texts that have less room than they need.
    static void take(QWidget& widget, const char* name) {
        QApplication::processEvents();
        const QDir folder(QStringLiteral(TORVIK_SCREENSHOTS));
        folder.mkpath(QStringLiteral("."));
        EXPECT_TRUE(widget.grab().save(folder.filePath(QString::fromUtf8(name) + QStringLiteral(".png"))));
        for (const QWidget* child : widget.findChildren<QWidget*>()) {
            const auto* label = qobject_cast<const QLabel*>(child);
            const auto* button = qobject_cast<const QAbstractButton*>(child);
            if (!child->isVisible() || (!button && (!label || label->text().isEmpty()))) continue;
            if (button && button->text().isEmpty()) continue;
            EXPECT_GE(child->width(), child->minimumSizeHint().width())
                << name << ": " << (button ? button->text() : label->text()).toStdString();
        }
    }
    static void chooseTab(MainWindow& window, int tab) {
        window.findChild<QTabWidget*>(QStringLiteral("panes"))->setCurrentIndex(tab);
    }
};

TEST_F(Screenshots, MainWindowFitsASmallScreenInEveryState) {
    giveUpkeep(chain);
    chain.till(1).stopListening();
    MainWindow window(path(), store);
    window.show();
    window.resize(kSmallScreen);
    QApplication::processEvents();
    EXPECT_LE(window.width(), kSmallScreen.width());
    EXPECT_LE(window.height(), kSmallScreen.height());
    take(window, "window-at-rest");

    allTills(window);
    bool taken = false;
    TTorvikPos& engine = window.TorvikPos1();
    engine.Seam.pumpMessages = [&, pump = engine.Seam.pumpMessages] {
        pump();
        if (taken || engine.ffraOppgjorStatus->memLogEntries.RecordCount() == 0) return;
        taken = true;
        take(window, "window-running");
    };
    click(window, "actiOppgjorManually");
    take(window, "window");
    auto& tree = test::child<QTreeView>(window, "statusTree");
    tree.setFocus();
    tree.setCurrentIndex(tree.model()->index(0, 0));
    QTest::keyClick(&tree, Qt::Key_Return);
    auto* story = window.findChild<TillStoryDialog*>();
    ASSERT_NE(story, nullptr);
    take(*story, "story");
    story->close();
    chooseTab(window, 1);
    take(window, "window-log");
    chooseTab(window, 2);
    take(window, "window-errors");
    chooseTab(window, 0);
    test::child<QComboBox>(window, "group").setCurrentIndex(2);
    test::child<QCheckBox>(window, "failedFirst").click();
    take(window, "window-grouped");
}

TEST_F(Screenshots, MainWindowOnADarkDesktop) {
    const QPalette light = QApplication::palette();
    QPalette dark(QColor(0x35, 0x35, 0x35));
    dark.setColor(QPalette::Base, QColor(0x23, 0x23, 0x23));
    dark.setColor(QPalette::AlternateBase, QColor(0x2d, 0x2d, 0x2d));
    QApplication::style()->polish(dark);  // as it does with the desktop's own
    QApplication::setPalette(dark);
    {
        chain.till(1).stopListening();
        MainWindow window(path(), store);
        window.show();
        window.resize(kSmallScreen);
        allTills(window);
        click(window, "actiOppgjorManually");
        take(window, "window-dark");
        auto& preferences = *window.findChild<TfrmSyncPreferences*>();
        preferences.show();
        test::child<QTabWidget>(preferences, "preferences").setCurrentIndex(3);
        take(preferences, "preferences-dark");
    }
    QApplication::setPalette(light);
}

TEST_F(Screenshots, LongNamesOfStores) {
    chain.runInBackOffice(
        "UPDATE Kunde SET Ku_Navn = 'Kristiansund Storsenter Nordlandet Sport og Fritid AS', Ku_Adresse1 = "
        "'Kristiansund Storsenter Nordlandet Sport og Fritid' WHERE Ku_Id IN (1001, 1002)");
    chain.till(1).stopListening();
    MainWindow window(path(), store);
    window.show();
    window.resize(kSmallScreen);
    allTills(window);
    click(window, "actiOppgjorManually");
    auto& tree = test::child<QTreeView>(window, "statusTree");
    // The columns fit themselves now and then; the status holds 30 characters of a name.
    const int name = tree.fontMetrics().horizontalAdvance(QStringLiteral("Kristiansund Storsenter Nordla"));
    EXPECT_TRUE(test::pumpUntil([&] { return tree.header()->sectionSize(StatusTreeModel::Navn) >= name; }));
    take(window, "window-long-names");
    tree.setFocus();
    tree.setCurrentIndex(tree.model()->index(0, 0));
    QTest::keyClick(&tree, Qt::Key_Return);
    auto* story = window.findChild<TillStoryDialog*>();
    ASSERT_NE(story, nullptr);
    take(*story, "story-long-names");
    story->close();
    TKasseCollection tills;
    MainWindow another(path(), store);
    test::whenAsked<TfrmVelgInternkundeKasse>([](TfrmVelgInternkundeKasse& shown) {
        take(shown, "tills-long-names");
        test::press(shown, "cancel");
    });
    EXPECT_FALSE(another.Ask.SelectTills(tills, TSyncVersions{svTorvikPosSync}));
}

TEST_F(Screenshots, ResultsOfScriptsAndTheHealthCheck) {
    giveUpkeep(chain);
    MainWindow window(path(), store);
    window.show();
    window.resize(kSmallScreen);
    allTills(window);
    window.Ask.SqlScript = [](SettingsStore&, const QString&, const QStringList&) {
        return std::optional(SqlScriptAnswer{
            {QStringLiteral("SELECT BF_ID, BF_NAVN, BF_SKUFF, IN_AVDNR, IN_KASSENR FROM BETALINGFORM, INNSTILLINGER")},
            true});
    };
    click(window, "actiRunSQL");
    take(window, "window-script");
    chain.runInTill(1, "UPDATE msdb.dbo.sysjobservers SET last_run_outcome = 0");
    click(window, "actiHealthCheck");
    take(window, "window-health");
}

TEST_F(Screenshots, DialogsOfTheFleet) {
    MainWindow window(path(), store);
    window.show();
    for (const char* name : {"prisliste.sql", "skuff.sql", "les meg.txt"})
        EXPECT_TRUE(QFile(folder.filePath(QString::fromUtf8(name))).open(QIODevice::WriteOnly));
    TfrmSQLScript script(store, path(), {QStringLiteral("avd 101 kasse 1"), QStringLiteral("avd 102 kasse 1")},
                         &window);
    test::child<QPlainTextEdit>(script, "script")
        .setPlainText(QStringLiteral("UPDATE BETALINGFORM\nSET BF_SKUFF = 1\nWHERE BF_NAVN = 'Kontant'\nGO"));
    script.show();
    const auto& files = test::child<QTreeView>(script, "files");
    EXPECT_TRUE(QTest::qWaitFor([&files] { return files.model()->rowCount(files.rootIndex()) > 0; }));
    take(script, "script");
    TfrmNyMelding message(path(), QDateTime(QDate(2026, 3, 7), QTime(9, 0)), {}, &window);
    for (const auto& [field, text] : {std::pair("edMe_Tittel", "Åpningstider i påsken"), std::pair("edMe_Til", "Alle"),
                                      std::pair("edMe_Fra", "Kontoret")})
        test::child<QLineEdit>(message, field).setText(QString::fromUtf8(text));
    test::child<QPlainTextEdit>(message, "meMelding")
        .setPlainText(QStringLiteral("Onsdag: 09-15\nTorsdag til mandag: stengt"));
    test::child<QCheckBox>(message, "cbDisplayOnPosFront").setChecked(true);
    message.show();
    take(message, "message");
    message.hide();
    test::child<QCheckBox>(message, "cbHtml").setChecked(true);
    message.show();
    take(message, "message-html");

    TfrmTorvikPosIniViewerDlg viewer(
        path(), [](const QString&) {}, &window);
    viewer.show();
    viewer.OnTorvikPosIni(QStringLiteral("101"), QStringLiteral("1"),
                          {"[General]", "BankTerminalIsActive=1", "", "[Bankterminal]", "TerminalType=8", "",
                           "[CEDevice]", "Enabled=1", "", "[Labels]", "PrinterName=Zebra GK420d"},
                          QStringLiteral("Torvik Åmot Storgata 1"));
    viewer.OnTorvikPosIni(QStringLiteral("102"), QStringLiteral("1"), {"[Bankterminal]", "TerminalType=6"},
                          QStringLiteral("Torvik Bærum Sandvikaveien 210"));
    take(viewer, "ini-viewer");
    TfrmKopierFil copy([] { return std::optional<QString>(); }, &window);
    test::child<QLineEdit>(copy, "teLocalFile").setText(QStringLiteral("/srv/utsending/prisliste.pdf"));
    copy.show();
    take(copy, "copy-file");
    TfrmProgress progress(&window);
    progress.show();
    progress.setProgress(41, QStringLiteral("Kopiert 123731968.00 bytes av totalt 300000000.00 bytes (41%)"));
    take(progress, "copy-progress");
}

TEST_F(Screenshots, Dialogs) {
    MainWindow window(path(), store);
    window.show();
    auto& preferences = *window.findChild<TfrmSyncPreferences*>();
    preferences.show();
    for (int tab = 0; tab < 6; ++tab) {
        test::child<QTabWidget>(preferences, "preferences").setCurrentIndex(tab);
        take(preferences, QStringLiteral("preferences-%1").arg(tab + 1).toUtf8().constData());
    }
    preferences.hide();

    TfrmOppgiDato date(QDate(2026, 3, 4));
    date.SetLabel(QStringLiteral("Ta med ordrer fra og med dato:"));
    date.show();
    take(date, "date");
    TfrmNullstillUtvalg reset;
    reset.show();
    take(reset, "reset");

    TKasseCollection tills;
    test::whenAsked<TfrmVelgInternkundeKasse>([](TfrmVelgInternkundeKasse& shown) {
        test::press(shown, "all");
        take(shown, "tills");
        test::press(shown, "cancel");
    });
    EXPECT_FALSE(window.Ask.SelectTills(tills, TSyncVersions{svTorvikPosSync}));

    SetupReport report;
    report.show();
    report.add({QStringLiteral("Back office"), CheckOutcome::Good, QStringLiteral("Server: KONTOR, database: Torvik")});
    report.add(
        {QStringLiteral("Automatisk start kl. 02:30"), CheckOutcome::Warning, QStringLiteral("Velg en annen time")});
    report.add({QStringLiteral("Avdeling 1001, kasse 1"), CheckOutcome::Bad, QStringLiteral("Unable to connect")});
    report.finish();
    take(report, "setup");

    PairDecisionDialog pair({.Avdeling = QStringLiteral("101"),
                             .Kassenr = QStringLiteral("1"),
                             .What = QStringLiteral("oppgjør 41"),
                             .Machine = QStringLiteral("KONTOR-2"),
                             .Began = QStringLiteral("04.03.2026 04:12:07"),
                             .Till = {QStringLiteral("Oppgjør 41 er merket som hentet")},
                             .BackOffice = {QStringLiteral("Oppgjør 41 finnes ikke")}});
    pair.show();
    take(pair, "pair");

    test::whenAsked<QMessageBox>([](QMessageBox& about) {
        take(about, "about");
        about.close();
    });
    click(window, "actiAbout");
}

}  // namespace
}  // namespace torvik
