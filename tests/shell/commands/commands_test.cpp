// The window's commands: where they stand, what they ask and in which order, one run at a time, and the cancel in
// reach.
#include "shell/commands/command.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QSet>
#include <QToolBar>

#include "engine/db/query.h"
#include "engine/status/oppgjor_status.h"
#include "logging/program_file.h"
#include "shell/dialogs/sync_preferences.h"
#include "shell/start/application_folder.h"
#include "tests/shell/modal.h"
#include "tests/shell/window_over_a_chain.h"
#include "tests/support/chain_session.h"
#include "tests/support/qt_print.h"

namespace torvik {
namespace {

TEST(CommandRows, NamesCaptionsAndShortcutsAreUnique) {
    QSet<QString> names;
    QSet<QString> captions;
    QSet<QString> shortcuts;
    for (const CommandRow& row : commandRows()) {
        for (const auto& [set, text] : {std::pair{&names, row.name}, std::pair{&captions, row.caption}}) {
            EXPECT_FALSE(set->contains(QString::fromUtf8(text))) << text;
            set->insert(QString::fromUtf8(text));
        }
        if (!*row.shortcut) continue;
        EXPECT_FALSE(shortcuts.contains(QString::fromUtf8(row.shortcut))) << row.shortcut;
        shortcuts << QString::fromUtf8(row.shortcut);
    }
}

class Commands : public test::WindowOverAChain {
protected:
    [[nodiscard]] static QStringList captions(const QList<QAction*>& actions) {
        QStringList all;
        for (const QAction* action : actions)
            if (!action->isSeparator() && !action->text().isEmpty()) all << action->text();
        return all;
    }
    [[nodiscard]] static QStringList messages(const ILogPane* pane) {
        QStringList texts;
        for (const QString& line : pane->Lines()) texts << line.section(QStringLiteral("  : "), 1);
        return texts;
    }
    // Does this once, when the log's last line ends so.
    static void at(MainWindow& window, const QString& line, std::function<void()> action) {
        TTorvikPos& engine = window.TorvikPos1();
        engine.Seam.pumpMessages = [&engine, line, action = std::move(action), pump = engine.Seam.pumpMessages,
                                    done = false]() mutable {
            pump();
            if (done || engine.Log->Lines().isEmpty() || !engine.Log->Lines().last().endsWith(line)) return;
            done = true;
            action();
        };
    }
    [[nodiscard]] qint64 backOffice(const char* sql) const {
        const auto session = test::backOfficeSession(chain);
        db::Query query(session.get());
        query.SQL = QStringList{QString::fromUtf8(sql)};
        query.Open();
        return query.Fields(0).AsInteger();
    }
};

constexpr char kWaiting[] = "SELECT COUNT(*) FROM PosOppgjor WHERE Pos_Op_Status < 8 AND Pos_Op_Type = 'NORMAL'";

TEST_F(Commands, StandInTheirMenusAndTheToolBar) {
    MainWindow window(path(), store);
    const QList<QAction*> menus = window.menuBar()->actions();
    EXPECT_EQ(captions(menus),
              (QStringList{QStringLiteral("&Fil"), QStringLiteral("TorvikPosSync"), QStringLiteral("&Hjelp")}));
    EXPECT_EQ(captions(menus[0]->menu()->actions()),
              (QStringList{QStringLiteral("Innstillinger..."), QStringLiteral("Lagre standard innstillinger"),
                           QStringLiteral("Vis i systemstatus felt (System Tray)"), QStringLiteral("&Avslutt")}));
    EXPECT_EQ(captions(menus[1]->menu()->actions()).first(), QStringLiteral("Ta oppgjør manuelt"));
    EXPECT_EQ(captions(menus[2]->menu()->actions()),
              (QStringList{QStringLiteral("&Innhold"), QStringLiteral("Kontroller oppsett"),
                           QStringLiteral("Om TorvikPosSync")}));
    const QStringList bar = captions(window.findChild<QToolBar*>(QStringLiteral("commands"))->actions());
    EXPECT_EQ(bar.first(), QStringLiteral("Avbryt"));
    EXPECT_TRUE(bar.contains(QStringLiteral("Ta oppgjør manuelt")));
    EXPECT_EQ(bar.last(), QStringLiteral("Hent kredittordrer etter kriterier"));
}

TEST_F(Commands, SecondRunIsRefusedWithItsLineAndTheFirstGoesOn) {
    MainWindow window(path(), store);
    window.show();
    allTills(window);
    int asked = 0;
    window.Ask.Date = [&](const QString&) {
        ++asked;
        return std::optional(QDate(2026, 1, 1));
    };
    at(window, QStringLiteral("Transaksjon startet for måldatabase"), [&] {
        click(window, "btnNils");
        click(window, "actiOppgjorManually");
    });
    click(window, "actiOppgjorManually");
    EXPECT_EQ(messages(window.TorvikPos1().ErrorLog),
              (QStringList{QStringLiteral("Det er allerede en kjøring i gang"),
                           QStringLiteral("Det er allerede en kjøring i gang")}));
    EXPECT_EQ(asked, 0) << "refused before anything is asked";
    EXPECT_EQ(messages(window.TorvikPos1().Log).count(QStringLiteral("Fullført oppgjør")), 1);
    EXPECT_GT(backOffice(kWaiting), 0);
}

TEST_F(Commands, CancelIsInReachDuringARunAndSaysWhyItIsNotOtherwise) {
    MainWindow window(path(), store);
    window.show();
    allTills(window);
    const auto* cancel = window.findChild<QAction*>(QStringLiteral("actiCancel"));
    EXPECT_FALSE(cancel->isEnabled());
    EXPECT_EQ(cancel->toolTip(), QStringLiteral("Ingen kjøring er i gang"));
    at(window, QStringLiteral("Transaksjon startet for måldatabase"), [&] { click(window, "actiCancel"); });
    click(window, "actiOppgjorManually");
    EXPECT_TRUE(messages(window.TorvikPos1().Log).contains(QStringLiteral("Avbrutt av bruker")));
    EXPECT_FALSE(cancel->isEnabled());
    EXPECT_FALSE(window.TorvikPos1().AutoCommunicate());

    click(window, "actiOppgjorManually");
    EXPECT_EQ(messages(window.TorvikPos1().Log).count(QStringLiteral("Avbrutt av bruker")), 1)
        << "the cancel was the first run's alone";
    EXPECT_EQ(messages(window.TorvikPos1().Log).last(), QStringLiteral("Fullført oppgjør"));
}

// An armed clock would tick into the run and take the back office's session from under it.
TEST_F(Commands, AutomaticRunCannotBeArmedDuringARun) {
    MainWindow window(path(), store);
    window.show();
    allTills(window);
    auto* arming = window.findChild<QCheckBox*>(QStringLiteral("cbAutoStart"));
    bool armed = true;
    at(window, QStringLiteral("Transaksjon startet for måldatabase"), [&] {
        arming->click();
        armed = window.TorvikPos1().AutoCommunicate();
    });
    click(window, "actiOppgjorManually");
    EXPECT_FALSE(armed);
    EXPECT_FALSE(window.TorvikPos1().AutoCommunicate());
    arming->click();
    EXPECT_TRUE(window.TorvikPos1().AutoCommunicate()) << "the operator's again";
}

TEST_F(Commands, FetchOffersOldTillsAndTheOthersAll) {
    MainWindow window(path(), store);
    window.show();
    QList<TSyncVersions> asked;
    window.Ask.SelectTills = [&](TKasseCollection&, const TSyncVersions& versions) {
        asked << versions;
        return false;
    };
    window.Ask.Date = [](const QString&) { return std::optional(QDate(2026, 1, 1)); };
    click(window, "actiOppgjorManually");
    click(window, "btnNils");
    EXPECT_EQ(asked,
              (QList<TSyncVersions>{TSyncVersions{svTorvikPosSync}, TSyncVersions{svTorvikPosSync, svDotNetV1}}));
}

TEST_F(Commands, FetchAccumulatesWhenThePreferenceIsOn) {
    store.write("Smtp/AutomaticAccumulate", true);
    MainWindow window(path(), store);
    window.show();
    allTills(window);
    click(window, "actiOppgjorManually");
    EXPECT_EQ(messages(window.TorvikPos1().Log).count(QStringLiteral("Foretar automatisk akkumulering")), 1);
    EXPECT_EQ(backOffice(kWaiting), 0);
}

TEST_F(Commands, FailedAccumulationOfAFetchIsAnErrorLine) {
    store.write("Smtp/AutomaticAccumulate", true);
    chain.runInBackOffice("DROP PROCEDURE AccumulatePosData");
    MainWindow window(path(), store);
    window.show();
    allTills(window);
    click(window, "actiOppgjorManually");
    ASSERT_EQ(window.TorvikPos1().ErrorLog->Lines().size(), 1);
    EXPECT_TRUE(messages(window.TorvikPos1().ErrorLog)[0].startsWith(
        QStringLiteral("Klarte ikke Ã¥ akkumulere. Feil: Could not find stored procedure 'AccumulatePosData'.")));
}

TEST_F(Commands, RepairAsksForTheDateFirstAndEndsWithoutAWordWithoutOne) {
    store.write("cbAutoStart", true);
    MainWindow window(path(), store);
    window.show();
    QStringList asked;
    window.Ask.SelectTills = [&](TKasseCollection&, const TSyncVersions&) {
        asked << QStringLiteral("kasser");
        return false;
    };
    window.Ask.Date = [&](const QString& label) -> std::optional<QDate> {
        asked << label;
        return std::nullopt;
    };
    click(window, "btnNils");
    EXPECT_EQ(asked, QStringList{QStringLiteral("Ta med ordrer fra og med dato:")});
    EXPECT_TRUE(window.TorvikPos1().AutoCommunicate()) << "nothing has begun";
    EXPECT_EQ(window.TorvikPos1().Log->Lines(), QStringList());

    window.Ask.Date = [&](const QString& label) {
        asked << label;
        return std::optional(QDate(2026, 1, 1));
    };
    click(window, "btnNils");
    EXPECT_EQ(asked.last(), QStringLiteral("kasser"));
    EXPECT_FALSE(window.TorvikPos1().AutoCommunicate());
}

TEST_F(Commands, RepairWorksOnTheChosenTills) {
    MainWindow window(path(), store);
    window.show();
    allTills(window);
    click(window, "actiOppgjorManually");
    window.Ask.Date = [](const QString&) { return std::optional(QDate(2000, 1, 1)); };
    const qsizetype before = window.TorvikPos1().Log->Lines().size();
    click(window, "btnNils");
    EXPECT_GT(window.TorvikPos1().Log->Lines().size(), before);
    EXPECT_EQ(window.TorvikPos1().ErrorLog->Lines(), QStringList());
}

TEST_F(Commands, PreferencesOpenTheirDialogAlsoDuringARun) {
    MainWindow window(path(), store);
    window.show();
    allTills(window);
    int opened = 0;
    at(window, QStringLiteral("Transaksjon startet for måldatabase"), [&] {
        test::whenAsked<TfrmSyncPreferences>([&](TfrmSyncPreferences& shown) {
            ++opened;
            test::child<QCheckBox>(shown, "cbSendPriceAndCustomer").click();
            test::press(shown, "ok");
        });
        click(window, "actiPreferences");
    });
    click(window, "actiOppgjorManually");
    EXPECT_EQ(opened, 1);
    EXPECT_TRUE(store.read("Smtp/SendPriceAndCustomer").toBool());
    EXPECT_FALSE(window.TorvikPos1().SendCustomerAndPrice);
    EXPECT_EQ(messages(window.TorvikPos1().Log).last(), QStringLiteral("Fullført oppgjør"));
}

TEST_F(Commands, AboutTellsTheVersionAndOpensTheHelp) {
    MainWindow window(path(), store);
    window.show();
    QString text;
    for (const bool help : {false, true}) {
        test::whenAsked<QMessageBox>([&](QMessageBox& box) {
            text = box.text();
            for (QAbstractButton* button : box.buttons())
                if ((button->text() == QStringLiteral("Hjelp")) == help) QTest::mouseClick(button, Qt::LeftButton);
        });
        click(window, "actiAbout");
    }
    EXPECT_EQ(text, QStringLiteral("TorvikPosSync utveksler data mellom Torvik BackOffice og TorvikPOS "
                                   "kasseapparater.\n\nVersjon %1")
                        .arg(QCoreApplication::applicationVersion()));
    EXPECT_EQ(messages(window.TorvikPos1().ErrorLog),
              QStringList{QStringLiteral("Finner ikke filen %1").arg(helpFile(programFile()))});
}

TEST_F(Commands, ExitClosesTheWindow) {
    MainWindow window(path(), store);
    window.show();
    click(window, "FileExit1");
    QCoreApplication::processEvents();
    EXPECT_FALSE(window.isVisible());
}

}  // namespace
}  // namespace torvik
