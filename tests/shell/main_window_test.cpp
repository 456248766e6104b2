// The window over a demo chain, on Qt's offscreen platform: its commands are clicked, its settings are read and kept.
#include "shell/main_window.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QCoreApplication>
#include <QDate>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QSpinBox>
#include <QSystemTrayIcon>
#include <QTabWidget>
#include <QTextBlock>
#include <QTime>
#include <QTreeView>

#include "engine/db/errors.h"
#include "engine/roster/avdeling.h"
#include "engine/status/oppgjor_status.h"
#include "logging/program_file.h"
#include "shell/settings/settings_panel.h"
#include "shell/start/application_folder.h"
#include "tests/shell/window_over_a_chain.h"
#include "tests/support/recording_sink.h"

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
    window.Ask.SelectTills = [](TKasseCollection&, const TSyncVersions&) { return true; };
    click(window, "actiOppgjorManually");
    window.TorvikPos1().AddLog(QStringLiteral("neste"), true);

    const auto panes = window.findChildren<QPlainTextEdit*>(QStringLiteral("lines"));
    ASSERT_EQ(panes.size(), 2);
    for (const QPlainTextEdit* pane : panes) {
        const QTextBlock next = pane->document()->lastBlock();
        const QTextBlock error = next.previous();
        EXPECT_TRUE(error.text().endsWith(QStringLiteral("Det er ikke valgt noen kasser")))
            << error.text().toStdString();
        EXPECT_EQ(error.begin().fragment().charFormat().foreground().color(), QColor(Qt::red));
        EXPECT_TRUE(next.text().endsWith(QStringLiteral("neste")));
        EXPECT_EQ(next.begin().fragment().charFormat().foreground().style(), Qt::NoBrush) << "the colour is put back";
    }
}

TEST_F(WindowOverAChain, AbortedSelectionEndsTheCommandWithoutAWord) {
    MainWindow window(path(), store);
    window.Ask.SelectTills = [](TKasseCollection&, const TSyncVersions&) { return false; };
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
    window.Ask.SelectTills = [](TKasseCollection&, const TSyncVersions&) { return false; };
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

TEST_F(WindowOverAChain, HiddenThreadsSettingStillDivertsTheLog) {
    MainWindow window(path(), store);
    window.show();
    auto* threads = window.findChild<QCheckBox*>(QStringLiteral("cbUseThreads"));
    ASSERT_NE(threads, nullptr);
    EXPECT_EQ(threads->text(), QStringLiteral("Tillat flere tråder (threads)"));
    EXPECT_FALSE(threads->isVisible());
    threads->click();
    EXPECT_TRUE(window.TorvikPos1().AllowMultiThreading);
    threads->click();
    EXPECT_FALSE(window.TorvikPos1().AllowMultiThreading);
}

TEST_F(WindowOverAChain, MissingDataLinkIsToldBeforeItStopsTheStart) {
    const QString udl = path() + QStringLiteral("Torvik.UDL");
    ASSERT_TRUE(QFile::remove(udl));
    QStringList told;
    const auto tell = [&told](const QString& message) { told << message; };
    try {
        MainWindow(path(), store, tell);
        FAIL() << "it started";
    } catch (const db::UsageError& e) {
        EXPECT_EQ(e.text(), QStringLiteral("The UDL file \"%1\" does not exist.").arg(udl));
    }
    EXPECT_EQ(told, QStringList{QStringLiteral("Filen %1 finnes ikke. Kan ikke koble til databasen").arg(udl)});
}

TEST_F(WindowOverAChain, BrokenDataLinkStopsTheStartWithoutAMessage) {
    QFile file(folder.filePath(QStringLiteral("Torvik.UDL")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("Provider=SQLOLEDB.1");
    file.close();
    EXPECT_THROW(MainWindow(path(), store, [](const QString& message) { ADD_FAILURE() << message.toStdString(); }),
                 db::UsageError);
}

TEST_F(WindowOverAChain, EngineStartsWithTheWindowsSettings) {
    QFile ini(folder.filePath(QStringLiteral("TorvikPosSync.ini")));
    ASSERT_TRUE(ini.open(QIODevice::WriteOnly));
    ini.write("[Filter]\nButikktyper=1,7\n");
    ini.close();
    store.write("Smtp/SendPriceAndCustomer", true);
    store.write("Smtp/SynchonizedRun", true);
    store.write("Smtp/StartSendingTime", QTime(5, 30));
    MainWindow window(path(), store);
    const TTorvikPos& engine = window.TorvikPos1();
    EXPECT_TRUE(engine.IncludeGiftVoucherOnOppgjor);
    EXPECT_FALSE(engine.FlagAsSentAfterUpdate);
    EXPECT_EQ(engine.SourceAuthMethod, amTrusted);
    EXPECT_TRUE(engine.IncludeDTS_TorvikPOS);
    EXPECT_TRUE(engine.IncludeExtraSaleProducts);
    EXPECT_EQ(engine.RetryWaitTime, 5);
    EXPECT_EQ(engine.StartTime, QTime(4, 0));
    EXPECT_EQ(engine.VareOppdateringUtvalg, vopAlle);
    EXPECT_EQ(engine.VaretellingPeriode, QDate::currentDate().toString(QStringLiteral("yyyyMM")));
    EXPECT_TRUE(engine.SendCustomerAndPrice);
    EXPECT_TRUE(engine.SynchonizedRun);
    EXPECT_EQ(engine.StartSendingTime, QTime(5, 30));
    EXPECT_EQ(engine.Avdeling->Butikktyper(), QStringLiteral("1,7"));
    EXPECT_TRUE(QDir(folder.filePath(QStringLiteral("Log"))).exists());
    EXPECT_EQ(window.findChild<QLabel*>(QStringLiteral("version"))->text(),
              QStringLiteral("Versjon %1").arg(QCoreApplication::applicationVersion()));
}

TEST_F(WindowOverAChain, OnlyASingleBackOfficeOffersSettlementsOnly) {
    {
        MainWindow window(path(), store);
        window.show();
        EXPECT_FALSE(window.findChild<QCheckBox*>(QStringLiteral("cbKunOppgjor"))->isVisible());
    }
    QFile marker(folder.filePath(QStringLiteral("backoffice")));
    ASSERT_TRUE(marker.open(QIODevice::WriteOnly));
    MainWindow window(path(), store);
    window.show();
    EXPECT_TRUE(window.findChild<QCheckBox*>(QStringLiteral("cbKunOppgjor"))->isVisible());
}

// The demo chain's back office is at level 130.
TEST_F(WindowOverAChain, DtsIsUntickedAndDisabledFromCompatibilityLevel91) {
    store.write("IncludeDTS", true);
    MainWindow window(path(), store);
    const auto* dts = window.findChild<QCheckBox*>(QStringLiteral("cbIncludeSladrerull"));
    EXPECT_TRUE(dts->isChecked());
    window.show();
    EXPECT_FALSE(dts->isChecked());
    EXPECT_FALSE(dts->isEnabled());
    EXPECT_FALSE(window.TorvikPos1().IncludeDTS_TorvikPOS);
}

TEST_F(WindowOverAChain, ClickOnTheTrayIconShowsAndHidesTheWindowAndReadsTheSettingsOnce) {
    store.write("cbAutoStart", true);
    MainWindow window(path(), store);
    auto* icon = window.findChild<QSystemTrayIcon*>();
    ASSERT_NE(icon, nullptr);
    EXPECT_TRUE(icon->isVisible());
    EXPECT_EQ(icon->toolTip(), QStringLiteral("TorvikPosSync"));
    EXPECT_FALSE(window.TorvikPos1().AutoCommunicate());

    Q_EMIT icon->activated(QSystemTrayIcon::Trigger);
    EXPECT_TRUE(window.isVisible());
    EXPECT_TRUE(window.TorvikPos1().AutoCommunicate());
    Q_EMIT icon->activated(QSystemTrayIcon::Context);
    EXPECT_TRUE(window.isVisible());
    Q_EMIT icon->activated(QSystemTrayIcon::Trigger);
    EXPECT_FALSE(window.isVisible());
    EXPECT_TRUE(window.TorvikPos1().AutoCommunicate());

    window.TorvikPos1().SetAutoCommunicate(false);
    Q_EMIT icon->activated(QSystemTrayIcon::Trigger);
    EXPECT_FALSE(window.TorvikPos1().AutoCommunicate());
}

TEST_F(WindowOverAChain, SettingOfTheWrongTypeLeavesOnlyItselfAtItsDefault) {
    store.write("Timeout", QStringLiteral("ofte"));
    store.write("ProductsToSync", 7);
    store.write("HentSisteForst", true);
    MainWindow window(path(), store);
    window.show();
    EXPECT_EQ(window.TorvikPos1().RetryWaitTime, 5);
    EXPECT_EQ(window.TorvikPos1().VareOppdateringUtvalg, vopAlle);
    EXPECT_TRUE(window.TorvikPos1().ReverseProcessingOrder);
}

TEST_F(WindowOverAChain, StartsWithoutItsListOfTillsAndSaysWhy) {
    chain.runInBackOffice("EXEC sp_rename 'KasseType', 'KasseTypeBorte'");
    MainWindow window(path(), store);
    ASSERT_EQ(window.TorvikPos1().ErrorLog->Lines().size(), 1);
    EXPECT_TRUE(
        window.TorvikPos1().ErrorLog->Lines()[0].endsWith(QStringLiteral("  : Invalid object name 'KasseType'.")));
}

// The start does not ask for it; the run that needs it names it and ends.
TEST_F(WindowOverAChain, StartsWithoutInnstillingerAndTheRunNamesIt) {
    chain.runInBackOffice("EXEC sp_rename 'Innstillinger', 'InnstillingerBorte'");
    MainWindow window(path(), store);
    window.show();
    EXPECT_EQ(window.TorvikPos1().ErrorLog->Lines(), QStringList());
    allTills(window);
    click(window, "actiOppgjorManually");
    EXPECT_TRUE(window.TorvikPos1().ErrorLog->Lines().join(u'\n').contains(QStringLiteral("nnstillinger'"),
                                                                           Qt::CaseInsensitive))
        << window.TorvikPos1().ErrorLog->Lines().join(u'\n').toStdString();
    EXPECT_TRUE(window.isVisible());
}

TEST_F(WindowOverAChain, PaneThatCannotBeSavedDoesNotKeepTheWindowOpen) {
    ASSERT_TRUE(QDir().mkdir(folder.filePath(QStringLiteral("TorvikPos.log"))));
    const test::RecordedLog log;
    MainWindow window(path(), store);
    window.show();
    EXPECT_TRUE(window.close());
    EXPECT_FALSE(window.isVisible());
    ASSERT_EQ(log.lines().size(), 1);
    EXPECT_TRUE(log.lines()[0].startsWith(QStringLiteral("ERR Klarte ikke å lagre {Fil} Fil=")))
        << log.lines()[0].toStdString();
    EXPECT_TRUE(QFile::exists(folder.filePath(QStringLiteral("TorvikPosError.log"))));
}

TEST_F(WindowOverAChain, SettingsThatCannotBeSavedAreToldInTheErrorPane) {
    QFile inTheWay(folder.filePath(QStringLiteral("fil")));
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    SettingsStore nowhere(folder.filePath(QStringLiteral("fil/settings.ini")));
    MainWindow window(path(), nowhere);
    window.show();
    click(window, "actiSaveRegistry");
    ASSERT_EQ(window.TorvikPos1().ErrorLog->Lines().size(), 1);
    EXPECT_TRUE(
        window.TorvikPos1().ErrorLog->Lines()[0].endsWith(QStringLiteral("  : Klarte ikke å lagre innstillingene")));
}

TEST_F(WindowOverAChain, ProgressStandsInTheStatusBarWithMessagesPumpedBeforeAndAfter) {
    MainWindow window(path(), store);
    window.show();
    TTorvikPos& engine = window.TorvikPos1();
    const auto* text = window.findChild<QLabel*>(QStringLiteral("progressText"));
    const auto* bar = window.findChild<QProgressBar*>();
    EXPECT_FALSE(bar->isVisible()) << "there is none yet";
    QStringList atPumps;
    engine.Seam.pumpMessages = [&] { atPumps.append(text->text()); };
    engine.OnProgress(&engine, 37, QStringLiteral("halvveis"));
    EXPECT_EQ(atPumps, (QStringList{QString(), QStringLiteral("halvveis")}));
    EXPECT_TRUE(bar->isVisible());
    EXPECT_EQ(bar->value(), 37);
}

TEST_F(WindowOverAChain, DtsProgressStandsInTheStatusBar) {
    MainWindow window(path(), store);
    window.TorvikPos1().OnDtsProgress(nullptr, QStringLiteral("Kopier"), QStringLiteral("12 rader"), 40);
    EXPECT_EQ(window.findChild<QLabel*>(QStringLiteral("progressText"))->text(), QStringLiteral("Kopier:   12 rader"));
}

TEST_F(WindowOverAChain, HelpThatIsMissingIsToldInTheErrorPane) {
    MainWindow window(path(), store);
    window.Ask.OpenFile = [](const QString& file) { ADD_FAILURE() << file.toStdString(); };
    click(window, "HelpContents1");
    ASSERT_EQ(window.TorvikPos1().ErrorLog->Lines().size(), 1);
    EXPECT_TRUE(window.TorvikPos1().ErrorLog->Lines()[0].endsWith(
        QStringLiteral("  : Finner ikke filen %1").arg(helpFile(programFile()))));
}

}  // namespace
}  // namespace torvik
