// The window over a demo chain, on Qt's offscreen platform: its commands are clicked, its settings are read and kept.
#include "shell/main_window.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QCoreApplication>
#include <QSpinBox>
#include <QTabWidget>
#include <QTreeView>

#include "engine/avdeling.h"
#include "engine/oppgjor_status.h"
#include "tests/shell/window_over_a_chain.h"

namespace torvik {
namespace {

using test::WindowOverAChain;

TEST_F(WindowOverAChain, TitleTellsTheInstallationAndTheDatabase) {
    MainWindow window(path(), store);
    EXPECT_EQ(window.windowTitle(),
              QStringLiteral("TorvikPosSync Enterprise Server: TorvikBackOffice, database: TorvikBackOffice"));
}

TEST_F(WindowOverAChain, MarkerFileMakesItASingleBackOffice) {
    QFile marker(folder.filePath(QStringLiteral("backoffice")));
    ASSERT_TRUE(marker.open(QIODevice::WriteOnly));
    MainWindow window(path(), store);
    EXPECT_FALSE(window.TorvikPos1().IsEnterprise);
    EXPECT_TRUE(window.windowTitle().startsWith(QStringLiteral("TorvikPosSync BackOffice ")));
}

TEST_F(WindowOverAChain, FetchCommandShowsEveryTillWithItsLines) {
    MainWindow window(path(), store);
    window.show();
    allTills(window);

    click(window, "actiOppgjorManually");
    QCoreApplication::processEvents();

    const auto* tree = window.findChild<QTreeView*>(QStringLiteral("statusTree"));
    ASSERT_EQ(tree->model()->rowCount(), 2);
    EXPECT_GT(tree->model()->rowCount(tree->model()->index(0, 0)), 5);
    EXPECT_EQ(window.TorvikPos1().ffraOppgjorStatus->memOppgjorStatus.Row(0).StatusIcon, 1);
    const auto* panes = window.findChild<QTabWidget*>(QStringLiteral("panes"));
    EXPECT_TRUE(panes->tabText(1).startsWith(QStringLiteral("Logg ("))) << panes->tabText(1).toStdString();
    EXPECT_FALSE(window.findChild<QAction*>(QStringLiteral("actiCancel"))->isEnabled());
}

TEST_F(WindowOverAChain, ErrorsOnlyHidesTheLinesOfAGoodRun) {
    MainWindow window(path(), store);
    window.show();
    allTills(window);
    click(window, "actiOppgjorManually");
    window.findChild<QCheckBox*>(QStringLiteral("errorsOnly"))->setChecked(true);
    QCoreApplication::processEvents();
    const auto* tree = window.findChild<QTreeView*>(QStringLiteral("statusTree"));
    EXPECT_EQ(tree->model()->rowCount(tree->model()->index(0, 0)), 0);
}

TEST_F(WindowOverAChain, EmptySelectionIsAnErrorInRed) {
    MainWindow window(path(), store);
    window.SelectTills = [](TKasseCollection&) { return true; };
    click(window, "actiOppgjorManually");
    ASSERT_FALSE(window.TorvikPos1().ErrorLog->Lines().isEmpty());
    EXPECT_TRUE(window.TorvikPos1().ErrorLog->Lines().last().endsWith(QStringLiteral("Det er ikke valgt noen kasser")));
}

TEST_F(WindowOverAChain, AbortedSelectionEndsTheCommandWithoutAWord) {
    MainWindow window(path(), store);
    window.SelectTills = [](TKasseCollection&) { return false; };
    click(window, "actiOppgjorManually");
    EXPECT_EQ(window.TorvikPos1().Log->Lines(), QStringList());
}

TEST_F(WindowOverAChain, SettingsAreReadWhenTheWindowIsFirstShown) {
    store.write("Timeout", 17);
    store.write("KunHent", true);
    store.write("cbAutoStart", true);
    MainWindow window(path(), store);
    EXPECT_FALSE(window.TorvikPos1().AutoCommunicate());
    window.show();
    EXPECT_TRUE(window.TorvikPos1().AutoCommunicate());
    EXPECT_EQ(window.TorvikPos1().RetryWaitTime, 17);
    EXPECT_TRUE(window.TorvikPos1().ReceiveDataOnly);
}

TEST_F(WindowOverAChain, ManualCommandDisarmsTheAutomaticRun) {
    store.write("cbAutoStart", true);
    MainWindow window(path(), store);
    window.show();
    window.SelectTills = [](TKasseCollection&) { return false; };
    click(window, "actiOppgjorManually");
    EXPECT_FALSE(window.TorvikPos1().AutoCommunicate());
}

TEST_F(WindowOverAChain, SavedSettingsComeBack) {
    {
        MainWindow window(path(), store);
        window.show();
        window.findChild<QSpinBox*>(QStringLiteral("edTimeout"))->setValue(33);
        click(window, "actiSaveRegistry");
    }
    EXPECT_EQ(store.read("Timeout").toInt(), 33);
}

TEST_F(WindowOverAChain, BrokenDataLinkStopsTheStart) {
    QFile file(folder.filePath(QStringLiteral("Torvik.UDL")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("Provider=SQLOLEDB.1");
    file.close();
    EXPECT_THROW(MainWindow(path(), store), std::exception);
}

}  // namespace
}  // namespace torvik
