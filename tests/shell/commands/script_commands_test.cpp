// The commands that ask or tell the tills something by SQL, pressed in the real window.
#include <gtest/gtest.h>

#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QTabWidget>

#include "engine/db/query.h"
#include "sandbox/chain/upkeep.h"
#include "shell/commands/command.h"
#include "shell/fleet/ny_melding.h"
#include "shell/fleet/sql_script_dialog.h"
#include "shell/results/grid.h"
#include "shell/results/health_view.h"
#include "shell/results/script_results.h"
#include "shell/results/sql_script_result.h"
#include "shell/results/table_model.h"
#include "tests/shell/modal.h"
#include "tests/shell/sheet/xls_reader.h"
#include "tests/shell/window_over_a_chain.h"
#include "tests/support/chain_session.h"
#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

const QString kTill = QStringLiteral("SELECT rtrim(IN_AVDNR) Avd, rtrim(IN_KASSENR) Kasse FROM INNSTILLINGER");

class ScriptCommands : public WindowOverAChain {
protected:
    ScriptCommands() : window(path(), store) {
        window.show();
        allTills(window);
        window.TorvikPos1().Seam.tempFolder = [this] { return folder.path(); };
        window.Ask.ShowMessage = [this](const QString& text) { told << text; };
        window.Ask.OpenFile = [this](const QString& file) { opened << file; };
    }

    void answerScript(const QStringList& lines, bool returnsData = true) {
        window.Ask.SqlScript = [this, lines, returnsData](SettingsStore&, const QString& where,
                                                          const QStringList& tills) {
            EXPECT_EQ(where, path());
            asked << tills;
            return std::optional(SqlScriptAnswer{lines, returnsData});
        };
    }
    void runScript(const QStringList& lines, bool returnsData = true) {
        answerScript(lines, returnsData);
        click(window, "actiRunSQL");
    }
    [[nodiscard]] QTabWidget& panes() { return child<QTabWidget>(window, "panes"); }
    [[nodiscard]] QTabWidget& pages() { return child<QTabWidget>(window, "scriptPages"); }
    [[nodiscard]] QStringList captions() {
        QStringList all;
        for (int i = 0; i < pages().count(); ++i) all << pages().tabText(i);
        return all;
    }
    // The rows on a page.
    [[nodiscard]] QStringList rowsOf(int page) { return rowsOf(*pages().widget(page)->findChild<Grid*>()); }
    [[nodiscard]] static QStringList rowsOf(const Grid& grid) {
        QStringList all;
        for (int row = 0; row < grid.model()->rowCount(); ++row) {
            QStringList cells;
            for (int column = 0; column < grid.model()->columnCount(); ++column)
                cells << grid.model()->index(row, column).data().toString();
            all << cells.join(u'|');
        }
        return all;
    }
    [[nodiscard]] QAction& entry(const char* name) {
        return *pages().widget(pages().count() - 1)->findChild<QAction*>(QString::fromUtf8(name));
    }
    [[nodiscard]] QStringList messages(const ILogPane* pane) const {
        QStringList texts;
        for (const QString& line : pane->Lines()) {
            const QString text = line.section(QStringLiteral("  : "), 1);
            if (!text.startsWith(u"Venter i ") && !text.startsWith(u"Database versjon ")) texts << text;
        }
        return texts;
    }
    [[nodiscard]] QStringList errors() { return messages(window.TorvikPos1().ErrorLog); }
    [[nodiscard]] QString atTill(std::size_t till, const char* sql) {
        const auto session = test::tillSession(chain, till);
        db::Query query(session.get());
        query.SQL = QStringList{QString::fromUtf8(sql)};
        query.Open();
        return query.Fields(0).AsString();
    }

    MainWindow window;
    QList<QStringList> asked;
    QStringList told;
    QStringList opened;
};

TEST_F(ScriptCommands, ScriptGivesAPageATillAndASummary) {
    bool busy = false;
    window.TorvikPos1().OnProgress = [&](QObject*, int, const QString&) {
        busy = window.cursor().shape() == Qt::BusyCursor &&
               panes().tabText(panes().currentIndex()) == "Sql script resultat";
    };
    runScript({kTill});
    EXPECT_EQ(captions(), (QStringList{"Avd 101, kasse 1", "Avd 102, kasse 1", "Oppsummering"}));
    EXPECT_EQ(rowsOf(0), QStringList{"101|1"});
    EXPECT_EQ(rowsOf(1), QStringList{"102|1"});
    EXPECT_EQ(rowsOf(2), (QStringList{"101|1", "102|1"}));
    EXPECT_EQ(pages().currentIndex(), 2);
    EXPECT_TRUE(busy);
    EXPECT_NE(window.cursor().shape(), Qt::BusyCursor);
    EXPECT_FALSE(window.TorvikPos1().OnSqlScriptReturnDataEvent);
    EXPECT_EQ(asked.size(), 1);
    EXPECT_EQ(asked.first().size(), 2);
    EXPECT_EQ(errors(), QStringList());
}

TEST_F(ScriptCommands, NextScriptBeginsWithoutPages) {
    runScript({kTill});
    runScript({"SELECT 5 AS n"});
    EXPECT_EQ(captions(), (QStringList{"Avd 101, kasse 1", "Avd 102, kasse 1", "Oppsummering"}));
    EXPECT_EQ(rowsOf(2), (QStringList{"5", "5"}));
}

TEST_F(ScriptCommands, ScriptWithoutRowsGivesAnEmptySummary) {
    runScript({"UPDATE BETALINGFORM SET BF_SKUFF = 7"}, false);
    EXPECT_EQ(captions(), QStringList{"Oppsummering"});
    EXPECT_EQ(rowsOf(0), QStringList());
    EXPECT_FALSE(entry("pmiLagreAlleSomExcel").isEnabled());
    for (std::size_t till : {0, 1}) EXPECT_EQ(atTill(till, "SELECT MIN(BF_SKUFF) FROM BETALINGFORM"), "7");
}

TEST_F(ScriptCommands, SummaryOfOneTillIsItsRowsOnce) {
    chain.till(1).stopListening();
    runScript({kTill});
    EXPECT_EQ(captions(), (QStringList{"Avd 101, kasse 1", "Oppsummering"}));
    EXPECT_EQ(rowsOf(1), QStringList{"101|1"});
}

TEST_F(ScriptCommands, ResultsThatDoNotFitTogetherAreToldAndSummedByNobody) {
    runScript(
        {"IF EXISTS (SELECT * FROM INNSTILLINGER WHERE IN_AVDNR = '101') SELECT 1 AS a ELSE SELECT 1 AS a, 2 AS b"});
    EXPECT_EQ(errors(), QStringList{"Resultatene har ikke de samme kolonnene: 2 kolonner mot 1 i det første"});
    EXPECT_EQ(captions().last(), "Oppsummering");
    EXPECT_EQ(rowsOf(2), QStringList());
    EXPECT_EQ(rowsOf(1), QStringList{"1|2"});
    EXPECT_NE(window.cursor().shape(), Qt::BusyCursor);
    EXPECT_FALSE(window.TorvikPos1().OnSqlScriptReturnDataEvent);
}

TEST_F(ScriptCommands, SummaryAloneHasTheMenu) {
    runScript({kTill});
    for (int page : {0, 1}) EXPECT_EQ(pages().widget(page)->findChild<Grid*>()->actions().size(), 0) << page;
    QStringList entries;
    for (const QAction* each : pages().widget(2)->findChild<Grid*>()->actions()) entries << each->text();
    EXPECT_EQ(entries, (QStringList{"Åpne i Excel", "Lagre som...", "Lagre alle som Excel ark..."}));
    EXPECT_TRUE(entry("pmiLagreAlleSomExcel").isEnabled());
    entry("pmiLagreAlleSomExcel").trigger();
    EXPECT_EQ(opened, QStringList()) << "nothing is behind it";
}

TEST_F(ScriptCommands, SummaryIsOpenedAsASpreadsheet) {
    runScript({kTill});
    entry("pmiOpenInExcel").trigger();
    EXPECT_EQ(opened, QStringList{path() + "sql.xls"});
    EXPECT_EQ(readXls(path() + "sql.xls"), (QStringList{"Ark1: 3 x 2", "0,0 bold Avd", "0,1 bold Kasse", "1,0 text 101",
                                                        "1,1 text 1", "2,0 text 102", "2,1 text 1"}));
    EXPECT_EQ(told, QStringList());
}

TEST_F(ScriptCommands, SpreadsheetThatCannotBeWrittenIsToldAndNotOpened) {
    runScript({kTill});
    QDir().mkpath(path() + "sql.xls");
    entry("pmiOpenInExcel").trigger();
    ASSERT_EQ(errors().size(), 1);
    EXPECT_TRUE(errors().first().startsWith("Klarte ikke å skrive " + path() + "sql.xls"));
    EXPECT_EQ(opened, QStringList());
}

TEST_F(ScriptCommands, SummaryIsSavedAsText) {
    runScript({kTill});
    QStringList question;
    window.Ask.SaveFile = [&](const QString& title, const QString& filter, const QString& suffix) {
        question = {title, filter, suffix};
        return std::optional(folder.filePath("liste.txt"));
    };
    entry("pmiSaveAs").trigger();
    EXPECT_EQ(question, (QStringList{"Lagre tekstfil som...", "Tekst filer (*.txt);;Alle files (*.*)", "txt"}));
    QFile text(folder.filePath("liste.txt"));
    ASSERT_TRUE(text.open(QIODevice::ReadOnly));
    EXPECT_EQ(QString::fromUtf8(text.readAll()), "|Avd\tKasse|\n|101\t1|\n|102\t1|\n");
    window.Ask.SaveFile = [](const QString&, const QString&, const QString&) { return std::nullopt; };
    entry("pmiSaveAs").trigger();
    EXPECT_EQ(errors(), QStringList());
}

TEST_F(ScriptCommands, ScriptIsWrittenAndSentByTheRealDialog) {
    whenAsked<TfrmSQLScript>([](TfrmSQLScript& dialog) {
        EXPECT_TRUE(child<QPlainTextEdit>(dialog, "tills").toPlainText().contains(", "));
        child<QPlainTextEdit>(dialog, "script").setPlainText(kTill);
        press(dialog, "ok");
    });
    click(window, "actiRunSQL");
    EXPECT_EQ(rowsOf(2), (QStringList{"101|1", "102|1"}));
}

TEST_F(ScriptCommands, NothingHappensWhenTheOperatorThinksBetterOfIt) {
    runScript({kTill});
    const QStringList before = window.TorvikPos1().Log->Lines();
    window.Ask.SqlScript = [](SettingsStore&, const QString&, const QStringList&) { return std::nullopt; };
    click(window, "actiRunSQL");
    window.Ask.Message = [](const QString&) { return std::nullopt; };
    click(window, "actiSendMessage");
    window.Ask.SelectTills = [](TKasseCollection&, const TSyncVersions& versions) {
        EXPECT_EQ(versions, kAllTills);
        return false;
    };
    for (const char* each : {"actiRunSQL", "actiSendMessage", "actiHealthCheck"}) click(window, each);
    EXPECT_EQ(window.TorvikPos1().Log->Lines(), before);
    EXPECT_EQ(captions().size(), 3) << "the pages of before stand";
}

TEST_F(ScriptCommands, MessageIsWrittenConfirmedAndSentByTheRealDialog) {
    whenAsked<TfrmNyMelding>([](TfrmNyMelding& dialog) {
        child<QLineEdit>(dialog, "edMe_Tittel").setText("Åpent");
        child<QLineEdit>(dialog, "edMe_Til").setText("Alle");
        child<QLineEdit>(dialog, "edMe_Fra").setText("Kontoret");
        child<QPlainTextEdit>(dialog, "meMelding").setPlainText("Det er 'slutt'");
        whenAsked<QMessageBox>([](QMessageBox& box) {
            EXPECT_EQ(box.text(), "Skal meldingen sendes?");
            for (QAbstractButton* button : box.buttons())
                if (button->text() == "Ja") button->click();
        });
        press(dialog, "ok");
    });
    click(window, "actiSendMessage");
    for (std::size_t till : {0, 1})
        EXPECT_EQ(atTill(till,
                         "SELECT rtrim(ME_TITTEL) + '|' + ME_TIL + '|' + ME_FRA + '|' + CAST(ME_TEKST AS varchar(99)) "
                         "FROM MELDING"),
                  "Åpent|Alle|Kontoret|Det er 'slutt'");
    EXPECT_EQ(errors(), QStringList());
}

TEST_F(ScriptCommands, MessageWithoutATitleIsToldAndTheDialogStays) {
    QString fault;
    whenAsked<TfrmNyMelding>([&](TfrmNyMelding& dialog) {
        whenAsked<QMessageBox>([&](QMessageBox& box) {
            fault = box.text();
            box.accept();
        });
        press(dialog, "ok");
        EXPECT_TRUE(dialog.isVisible());
        press(dialog, "cancel");
    });
    click(window, "actiSendMessage");
    EXPECT_EQ(fault, "Meldingen må ha en tittel.");
    EXPECT_EQ(window.TorvikPos1().Log->Lines(), QStringList());
}

TEST_F(ScriptCommands, HealthCheckShowsItsListsInFront) {
    giveUpkeep(chain);
    chain.runInTill(1, "UPDATE msdb.dbo.sysjobservers SET last_run_outcome = 0");
    click(window, "actiHealthCheck");
    EXPECT_EQ(panes().tabText(panes().currentIndex()), "Helsetilstand");
    auto& view = *window.findChild<HealthView*>();
    const QStringList jobs = rowsOf(child<Grid>(view, "failedJobs"));
    ASSERT_EQ(jobs.size(), 2);
    EXPECT_TRUE(jobs[0].startsWith("102|") && jobs[0].endsWith("|1|Nattlig backup")) << jobs[0].toStdString();
    EXPECT_TRUE(jobs[1].endsWith("|1|Reindeksering"));
    const QStringList backups = rowsOf(child<Grid>(view, "lastBackupDates"));
    for (std::size_t till : {0, 1})
        EXPECT_EQ(backups.filter(QString::fromStdString(chain.model().tills[till].database)).size(), 1);
    EXPECT_EQ(messages(window.TorvikPos1().Log),
              (QStringList{"STARTER HELSESJEKK", "Antall kasser som skal behandles: 2", "fullføRT HELSESJEKK"}));
    EXPECT_NE(window.cursor().shape(), Qt::BusyCursor);
    click(window, "actiHealthCheck");
    EXPECT_EQ(rowsOf(child<Grid>(view, "failedJobs")), jobs) << "and not twice";
}

}  // namespace
}  // namespace torvik::test
