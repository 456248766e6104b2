// The commands that work on the tills' files: what they ask, in which order, what they call, and what they leave.
#include <gmock/gmock.h>

#include <QTabWidget>
#include <QToolBar>

#include "engine/db/query.h"
#include "engine/status/oppgjor_status.h"
#include "logging/setup_logging.h"
#include "shell/commands/command.h"
#include "shell/fleet/ini_viewer.h"
#include "tests/shell/modal.h"
#include "tests/shell/window_over_a_chain.h"
#include "tests/support/chain_session.h"
#include "tests/support/qt_print.h"
#include "tests/support/samba_server.h"

namespace torvik {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class FleetCommands : public test::WindowOverAChain {
protected:
    FleetCommands() : window(path(), store) {
        window.show();
        allTills(window);
        window.TorvikPos1().RetryWaitTime = 0;
        window.Ask.SelectTills = [this, all = window.Ask.SelectTills](TKasseCollection& tills,
                                                                      const TSyncVersions& versions) {
            asked << (versions == kAllTills ? "alle kasser" : "gamle kasser");
            return all(tills, versions);
        };
        window.Ask.ChooseFile = [this](const QString& text, const QString& pattern) {
            asked << text + u'|' + pattern;
            return chosen;
        };
        window.Ask.Text = [this](const QString& title, const QString& label, const QString& first) {
            asked << title + u'|' + label + u'|' + first;
            return typed;
        };
        window.Ask.FileCopy = [this](const QString& caption) {
            asked << caption;
            return copy;
        };
    }

    QString file(const QString& name, const QByteArray& content) {
        QFile made(folder.filePath(name));
        EXPECT_TRUE(made.open(QIODevice::WriteOnly));
        made.write(content);
        return made.fileName();
    }
    [[nodiscard]] QStringList log() {
        QStringList texts;
        for (const QString& line : window.TorvikPos1().Log->Lines()) {
            const QString text = line.section(QStringLiteral("  : "), 1);
            if (!text.startsWith(u"Venter i ") && !text.startsWith(u"Database versjon ")) texts << text;
        }
        return texts;
    }
    [[nodiscard]] QByteArray tillObject(std::size_t till, const char* type) const {
        const auto session = test::tillSession(chain, till);
        db::Query query(session.get());
        query.SQL = QStringList{
            QStringLiteral("SELECT BO_OBJECT FROM BINARYOBJECT WHERE BO_TYPE='%1'").arg(QString::fromUtf8(type))};
        query.Open();
        return query.Fields(0).AsBytes();
    }

    MainWindow window;
    QStringList asked;
    std::optional<QString> chosen;
    std::optional<QString> typed = QStringLiteral("\\TorvikPOS\\");
    std::optional<FileCopyAnswer> copy;
};

TEST_F(FleetCommands, StandInTheMenuInTheirOrder) {
    QStringList names;
    for (const CommandRow& row : commandRows())
        if (row.menu == CommandMenu::Commands) names << QString::fromUtf8(row.name);
    const QStringList order{
        "actiOppgjorManually", "actiSendVarer",          "actiSendProgramUpdate", "actiRunSQL",
        "actiSendMessage",     "actiHealthCheck",        "actiSendFile",          "dxBtnHentVaretelling",
        "actiSpeedTest",       "actiSendIniFileChanges", "actiViewTorvikPOSini"};
    QStringList found;
    for (const QString& name : names)
        if (order.contains(name)) found << name;
    EXPECT_EQ(found, order);
}

TEST_F(FleetCommands, ProgramUpdateAsksForTillsArchiveAndFolderAndDelivers) {
    chosen = file("TorvikPOS.zip", "PK-ny");
    window.TorvikPos1().ffraOppgjorStatus->SetStatus(1, "1", "x", "1", ostHentet, oksTrue, "", {}, -1);
    click(window, "actiSendProgramUpdate");
    EXPECT_THAT(asked, ElementsAre("alle kasser", "TorvikPOS.zip filer (TorvikPOS.zip)|TorvikPOS.ZIP",
                                   "TorvikPOS katalog|Oppgi katalogen hvor TorvikPOS er installert|\\TorvikPOS\\"));
    EXPECT_THAT(log(), ElementsAre("STARTER OPPGRADERINGER", "FULLFÃ˜RT OPPGRADERINGER"));
    EXPECT_EQ(tillObject(0, "TORVIKPOS"), "PK-ny");
    EXPECT_EQ(tillObject(1, "TORVIKPOS"), "PK-ny");
    EXPECT_EQ(window.TorvikPos1().ffraOppgjorStatus->memOppgjorStatus.RecordCount(), 0) << "the frame is emptied";
    EXPECT_FALSE(window.TorvikPos1().AutoCommunicate());
}

TEST_F(FleetCommands, ProgramUpdateEndsWithoutAWordWhereverItIsCancelled) {
    click(window, "actiSendProgramUpdate");
    EXPECT_EQ(asked.size(), 2);
    chosen = file("TorvikPOS.zip", "PK-ny");
    typed.reset();
    click(window, "actiSendProgramUpdate");
    window.Ask.SelectTills = [](TKasseCollection&, const TSyncVersions&) { return false; };
    click(window, "actiSendProgramUpdate");
    EXPECT_THAT(log(), IsEmpty());
    EXPECT_EQ(tillObject(0, "TORVIKPOS"), "");
}

TEST_F(FleetCommands, SendFileCopiesByTheOverridingLoginAndForgetsIt) {
    const test::SambaServer samba;
    window.Ask.Copy.Share = [&samba] { return samba.share(); };
    db::Session& office = *window.TorvikPos1().TargetConnection();
    db::Query kept(&office);
    kept.SQL = QStringList{QStringLiteral("CREATE TABLE #beholdt (a int)")};
    kept.ExecSQL();
    copy = FileCopyAnswer{.share = QStringLiteral("C$"),
                          .folder = QStringLiteral("\\"),
                          .localFile = file("nytt.dat", "innhold"),
                          .overridesLogin = true,
                          .userName = QString::fromUtf8(test::SambaServer::kUser),
                          .password = QString::fromUtf8(test::SambaServer::kPassword)};
    click(window, "actiSendFile");
    EXPECT_THAT(asked, ElementsAre("alle kasser", "Kopier fil til TorvikPOS"));
    EXPECT_EQ(samba.content("C$", "nytt.dat"), "innhold");
    EXPECT_EQ(log().first(), "STARTER FILKOPIERING");
    EXPECT_EQ(log().last(), QStringLiteral("FULLFÃ˜RT FILKOPIERING"));
    EXPECT_EQ(log().filter("Fullført kopiering").size(), 2);
    EXPECT_FALSE(window.TorvikPos1().OverrideSourceUserNameAndPassword);
    EXPECT_EQ(window.TorvikPos1().OverrideSourcePassword, "");
    kept.SQL = QStringList{QStringLiteral("SELECT COUNT(*) FROM #beholdt")};
    EXPECT_NO_THROW(kept.Open()) << "the back office's session is the one of before";
    EXPECT_EQ(window.TorvikPos1().ffraOppgjorStatus->memOppgjorStatus.RecordCount(), 2);
}

TEST_F(FleetCommands, SpeedTestShowsTheSpeedOfEachLineAndLeavesNoCopy) {
    const test::SambaServer samba;
    window.Ask.Copy.Share = [&samba] { return samba.share(); };
    TTorvikPos& engine = window.TorvikPos1();
    copy = FileCopyAnswer{.share = QStringLiteral("C$"),
                          .folder = QStringLiteral("\\"),
                          .localFile = file("prøve.dat", QByteArray(1'000'000, 'x')),
                          .overridesLogin = true,
                          .userName = QString::fromUtf8(test::SambaServer::kUser),
                          .password = QString::fromUtf8(test::SambaServer::kPassword)};
    const struct {
        qint64 milliseconds;
        double speed;  // a megabyte in two whole seconds is four megabits a second
    } copies[]{{2999, 4.0}, {999, -1.0}};
    for (const auto& [milliseconds, speed] : copies) {
        engine.Seam.tickCount = [now = qint64{0}, milliseconds]() mutable { return now += milliseconds; };
        click(window, "actiSpeedTest");
        ASSERT_EQ(engine.ffraOppgjorStatus->memOppgjorStatus.RecordCount(), 2);
        for (int till : {0, 1})
            EXPECT_EQ(engine.ffraOppgjorStatus->memOppgjorStatus.Row(till).Opplast_mbps, speed) << milliseconds;
    }
    EXPECT_THAT(asked, ElementsAre("alle kasser", "Hastighetstest", "alle kasser", "Hastighetstest"));
    EXPECT_THAT(samba.files("C$"), IsEmpty());
    EXPECT_EQ(log().first(), "STARTER HASTIGHETSTEST");
    EXPECT_EQ(log().last(), QStringLiteral("FULLFÃ˜RT HASTIGHETSTEST"));
    EXPECT_FALSE(engine.OverrideSourceUserNameAndPassword);
    EXPECT_EQ(engine.OverrideSourcePassword, "");
}

TEST_F(FleetCommands, SpeedTestEndsWithoutAWordWhenCancelledAndNamesAFileThatIsNotThere) {
    click(window, "actiSpeedTest");
    EXPECT_THAT(log(), IsEmpty());
    copy = FileCopyAnswer{.share = QStringLiteral("C$"), .folder = {}, .localFile = QStringLiteral("/finnes/ikke.dat")};
    click(window, "actiSpeedTest");
    EXPECT_THAT(log(), ElementsAre("Finner ikke filen /finnes/ikke.dat"));
}

TEST_F(FleetCommands, SendFileNamesAFileThatIsNotThere) {
    copy = FileCopyAnswer{.share = QStringLiteral("C$"), .folder = {}, .localFile = QStringLiteral("/finnes/ikke.dat")};
    click(window, "actiSendFile");
    EXPECT_THAT(log(), ElementsAre("Finner ikke filen /finnes/ikke.dat"));
    copy.reset();
    click(window, "actiSendFile");
    EXPECT_EQ(log().size(), 1);
}

TEST_F(FleetCommands, SendFileShowsTheWindowOfTheCopyAndItsButtonCancels) {
    const test::SambaServer samba;
    window.Ask.Copy.Share = [&samba] { return samba.share(); };
    copy = FileCopyAnswer{.share = QStringLiteral("C$"),
                          .folder = QStringLiteral("\\"),
                          .localFile = file("nytt.dat", QByteArray(12 << 20, 'x'))};
    int shown = 0;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, [&] {
        for (QWidget* each : QApplication::topLevelWidgets())
            if (each->objectName() == u"TfrmProgress" && each->isVisible()) {
                ++shown;
                test::press(*each, "cancel");
            }
    });
    look.start(0);
    click(window, "actiSendFile");
    EXPECT_GE(shown, 2) << "one for each till";
    EXPECT_THAT(samba.files("C$"), IsEmpty());
    EXPECT_EQ(log().filter("Feil ved kopiering til kasse").size(), 2);
}

TEST_F(FleetCommands, IniChangesAskForTillsAndFileAndDeliver) {
    chosen = file("TorvikPOS_Change.ini", "[Kasse]\r\nNavn=Bl\xE5\r\n");
    click(window, "actiSendIniFileChanges");
    EXPECT_THAT(asked,
                ElementsAre("alle kasser", "TorvikPOS_Change.ini filer (TorvikPOS_Change.ini)|TorvikPOS_Change.ini"));
    EXPECT_EQ(log().first(), "STARTER OPPDATERING AV TORVIKPOS.INI");
    EXPECT_EQ(log().last(), QStringLiteral("FULLFÃ˜RT OPPDATERING AV TORVIKPOS.INI"));
    EXPECT_EQ(tillObject(1, "TORVIKPOS_CHANGE.INI"), QByteArray("[Kasse]\r\nNavn=Bl\xE5\r\n"));
}

TEST_F(FleetCommands, IniChangesThatCannotBeReadStopBeforeTheFirstTill) {
    chosen = QStringLiteral("/finnes/TorvikPOS_Change.ini");
    click(window, "actiSendIniFileChanges");
    ASSERT_EQ(log().size(), 1);
    EXPECT_TRUE(log().first().startsWith(u"Klarte ikke å lese /finnes/TorvikPOS_Change.ini"));
}

TEST_F(FleetCommands, ViewerShowsEveryTillsFileAndStaysUntilItIsRead) {
    chain.runInTill(1,
                    "INSERT INTO BINARYOBJECT (BO_ID, BO_TYPE, BO_DIRECTION, BO_STATUS, BO_OBJECT) VALUES "
                    "(1, 'TORVIKPOS.INI', 1, 0, 0x5B4C6162656C735D0D0A5072696E7465724E616D653D5A656272610D0A)");
    QStringList printers;
    QString caption;
    test::whenAsked<TfrmTorvikPosIniViewerDlg>([&](TfrmTorvikPosIniViewerDlg& viewer) {
        caption = viewer.windowTitle();
        for (int row = 0; row < viewer.memKasse().rowCount(); ++row)
            printers << viewer.memKasse().index(row, IniTable::LabelPrinterName).data().toString();
        test::press(viewer, "close");
    });
    click(window, "actiViewTorvikPOSini");
    EXPECT_EQ(caption, "TorvikPOS konfigurasjon");
    EXPECT_THAT(printers, ElementsAre("", "Zebra"));
    EXPECT_EQ(log().first(), "STARTER HENTING AV TORVIKPOS.INI");
    EXPECT_EQ(log().last(), QStringLiteral("fullføRT HENTING AV TORVIKPOS.INI"));
    EXPECT_FALSE(window.TorvikPos1().OnTorvikPosIniReceivedEvent) << "taken away with the dialog";
}

TEST_F(FleetCommands, ViewerClearsTheResultsOfAScript) {
    window.Ask.SqlScript = [](SettingsStore&, const QString&, const QStringList&) {
        return std::optional(SqlScriptAnswer{{QStringLiteral("SELECT 1 Antall")}, true});
    };
    click(window, "actiRunSQL");
    const auto* pages = window.findChild<QTabWidget*>(QStringLiteral("scriptPages"));
    EXPECT_EQ(pages->count(), 3);
    test::whenAsked<TfrmTorvikPosIniViewerDlg>([](TfrmTorvikPosIniViewerDlg& viewer) { test::press(viewer, "close"); });
    click(window, "actiViewTorvikPOSini");
    EXPECT_EQ(pages->count(), 0);
}

}  // namespace
}  // namespace torvik
