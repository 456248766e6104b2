// Whoever works by the keyboard comes through the window and through each dialog as he reads them, and is stuck
// nowhere.
#include "tests/shell/tab_order.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QCheckBox>
#include <QComboBox>
#include <QTabWidget>

#include "engine/status/oppgjor_status.h"
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
#include "shell/status/till_story_dialog.h"
#include "tests/shell/modal.h"
#include "tests/shell/window_over_a_chain.h"
#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

class TabOrder : public WindowOverAChain {
protected:
    static QStringList faultsOf(QWidget& window) {
        window.show();
        QApplication::processEvents();
        const QStringList faults = faultsOfTabOrder(window);
        window.hide();
        return faults;
    }
};

TEST_F(TabOrder, OfTheWindowIsReadingOrderInEveryPane) {
    MainWindow window(path(), store);
    window.show();
    window.resize(1280, 720);
    allTills(window);
    window.Ask.SqlScript = [](SettingsStore&, const QString&, const QStringList&) {
        return std::optional(SqlScriptAnswer{{QStringLiteral("SELECT * FROM BETALINGFORM")}, true});
    };
    click(window, "actiRunSQL");
    auto& panes = child<QTabWidget>(window, "panes");
    for (int pane = 0; pane < panes.count(); ++pane) {
        panes.setCurrentIndex(pane);
        QApplication::processEvents();
        EXPECT_EQ(faultsOfTabOrder(window), QStringList()) << panes.tabText(pane).toStdString();
    }
    for (const char* tick : {"cbEndrevarenr", "cbIncludeTelling"}) child<QCheckBox>(window, tick).setChecked(true);
    child<QComboBox>(window, "cbVarer").setCurrentIndex(1);
    EXPECT_EQ(faultsOfTabOrder(window), QStringList()) << "with all settings enabled";
}

TEST_F(TabOrder, OfThePreferencesIsReadingOrderOnEveryTab) {
    MainWindow window(path(), store);
    auto& preferences = *window.findChild<TfrmSyncPreferences*>();
    for (const char* tick : {"cbActive", "cbDeleteItems"}) child<QCheckBox>(preferences, tick).setChecked(true);
    auto& tabs = child<QTabWidget>(preferences, "preferences");
    preferences.show();
    for (int tab = 0; tab < tabs.count(); ++tab) {
        tabs.setCurrentIndex(tab);
        QApplication::processEvents();
        EXPECT_EQ(faultsOfTabOrder(preferences), QStringList()) << tabs.tabText(tab).toStdString();
    }
}

TEST_F(TabOrder, OfTheChoiceOfTillsIsReadingOrder) {
    MainWindow window(path(), store);
    window.show();
    QStringList faults{QStringLiteral("not asked")};
    whenAsked<TfrmVelgInternkundeKasse>(
        [&faults](TfrmVelgInternkundeKasse& shown) {
            press(shown, "all");
            faults = faultsOfTabOrder(shown);
            press(shown, "cancel");
        },
        [](TfrmVelgInternkundeKasse& shown) { return shown.isActiveWindow(); });
    TKasseCollection tills;
    EXPECT_FALSE(window.Ask.SelectTills(tills, TSyncVersions{svTorvikPosSync}));
    EXPECT_EQ(faults, QStringList());
}

TEST_F(TabOrder, OfThePromptsIsReadingOrder) {
    TfrmOppgiDato date(QDate(2026, 3, 4));
    EXPECT_EQ(faultsOf(date), QStringList());
    TfrmNullstillUtvalg reset;
    EXPECT_EQ(faultsOf(reset), QStringList());
    PairDecisionDialog pair({.Avdeling = QStringLiteral("101"),
                             .Kassenr = QStringLiteral("1"),
                             .What = QStringLiteral("oppgjør 41"),
                             .Machine = QStringLiteral("KONTOR-2"),
                             .Began = QStringLiteral("04.03.2026 04:12:07"),
                             .Till = {QStringLiteral("Oppgjør 41 er merket som hentet")},
                             .BackOffice = {QStringLiteral("Oppgjør 41 finnes ikke")}});
    EXPECT_EQ(faultsOf(pair), QStringList());
}

TEST_F(TabOrder, OfTheDialogsOfTheFleetIsReadingOrder) {
    TfrmKopierFil copy([] { return std::optional<QString>(); });
    for (QCheckBox* tick : copy.findChildren<QCheckBox*>()) tick->setChecked(true);
    EXPECT_EQ(faultsOf(copy), QStringList());
    TfrmSQLScript script(store, path(), {QStringLiteral("avd 101 kasse 1")});
    EXPECT_EQ(faultsOf(script), QStringList());
    for (const bool html : {false, true}) {
        TfrmNyMelding message(path(), QDateTime(QDate(2026, 3, 7), QTime(9, 0)), {});
        child<QCheckBox>(message, "cbDisplayOnPosFront").setChecked(true);
        child<QCheckBox>(message, "cbHtml").setChecked(html);
        EXPECT_EQ(faultsOf(message), QStringList()) << (html ? "HTML" : "text");
    }
    TfrmTorvikPosIniViewerDlg viewer(path(), [](const QString&) {});
    viewer.Init();
    viewer.OnTorvikPosIni(QStringLiteral("101"), QStringLiteral("1"), {QStringLiteral("[Kasse]")},
                          QStringLiteral("Torvik"));
    EXPECT_EQ(faultsOf(viewer), QStringList());
    TfrmProgress progress;
    EXPECT_EQ(faultsOf(progress), QStringList());
}

TEST_F(TabOrder, OfTheReportsIsReadingOrder) {
    SetupReport report;
    report.add({QStringLiteral("Back office"), CheckOutcome::Good, QStringLiteral("Server: KONTOR")});
    report.finish();
    EXPECT_EQ(faultsOf(report), QStringList());
    auto* story = new TillStoryDialog({.Title = QStringLiteral("Avdeling 101"),
                                       .State = QStringLiteral("Feilet"),
                                       .ErrorLines = {QStringLiteral("en linje")},
                                       .NextRun = QStringLiteral("Begynner igjen")},
                                      nullptr);
    EXPECT_EQ(faultsOf(*story), QStringList());
    delete story;
}

}  // namespace
}  // namespace torvik::test
