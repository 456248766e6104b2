// The window over a demo chain, on Qt's offscreen platform: its commands are clicked, its settings are read and kept.
#include "shell/main_window.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QCheckBox>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSpinBox>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTreeView>

#include "engine/avdeling.h"
#include "engine/oppgjor_status.h"
#include "sandbox/chain/demo_chain.h"
#include "shell/main_threads.h"
#include "shell/settings.h"
#include "tests/engine/scripted_worker.h"
#include "tests/support/qt_print.h"

namespace torvik {
namespace {

class WindowOverAChain : public testing::Test {
protected:
    WindowOverAChain()
        : chain({.chain = {.departments = 2, .tills = 2, .days = 1}}),
          store(folder.filePath(QStringLiteral("settings.ini"))) {
        QDir::setCurrent(folder.path());
        writeDataLink(QString::fromStdString(chain.dataLink()));
        store.write("Timeout", 1);
    }
    ~WindowOverAChain() override { QDir::setCurrent(QDir::rootPath()); }

    void writeDataLink(const QString& text) {
        QFile file(folder.filePath(QStringLiteral("Torvik.UDL")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        const QString content =
            QChar(0xFEFF) + QStringLiteral("[oledb]\r\n; comment\r\n") + text + QStringLiteral("\r\n");
        file.write(reinterpret_cast<const char*>(content.utf16()), content.size() * 2);
    }
    [[nodiscard]] QString path() const { return folder.path() + QLatin1Char('/'); }

    static void click(MainWindow& window, const char* action) {
        auto* found = window.findChild<QAction*>(QString::fromUtf8(action));
        ASSERT_NE(found, nullptr) << action;
        ASSERT_TRUE(found->isEnabled()) << action;
        found->trigger();
    }
    static void allTills(MainWindow& window) {
        window.SelectTills = [](TKasseCollection& tills) {
            for (int department : {1001, 1002}) {
                TKasseItem& item = tills.Add();
                item.Ik_Ku_ID = department;
                item.Kassenr = QStringLiteral("1         ");
            }
            return true;
        };
    }

    QTemporaryDir folder;
    sandbox::chain::DemoChain chain;
    SettingsStore store;
};

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

TEST_F(WindowOverAChain, ClosingSavesTheTextOfThePanes) {
    MainWindow window(path(), store);
    window.show();
    window.TorvikPos1().AddLog(QStringLiteral("en linje"));
    window.close();
    QFile log(folder.filePath(QStringLiteral("TorvikPos.log")));
    ASSERT_TRUE(log.open(QIODevice::ReadOnly));
    EXPECT_TRUE(log.readAll().trimmed().endsWith("  : en linje"));
}

TEST_F(WindowOverAChain, ClosingWhileAWorkerRunsShowsTheWarningAndCloses) {
    QStringList messages;
    std::atomic<bool> ended = false;
    {
        MainWindow window(path(), store);
        window.show();
        window.Threads().ShowMessage = [&](const QString& text) { messages.append(text); };
        auto* worker = new test::ScriptedWorker(true, window.Threads().MainThreadList, [&](auto& self) {
            test::untilTerminated(self);
            ended = true;
        });
        worker->ResumeToItsJob();
        window.close();
        EXPECT_FALSE(window.isVisible());
        EXPECT_EQ(messages, QStringList{QStringLiteral("Du kan ikke avslutte programmet, fordi det er fortsatt 1 "
                                                       "prosesser (trÃ¥der) aktive")});
    }
    EXPECT_TRUE(ended) << "the window ends its workers as it goes";
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
