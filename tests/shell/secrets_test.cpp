// No password leaves the program: neither one that works nor one that a server has refused stands in any file that it
// writes or in anything that it sends to the log server.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QDirIterator>
#include <QLineEdit>
#include <QPlainTextEdit>

#include "engine/db/session.h"
#include "logging/setup_logging.h"
#include "shell/fleet/ini_viewer.h"
#include "shell/fleet/kopier_fil.h"
#include "shell/fleet/sql_script_dialog.h"
#include "tests/shell/modal.h"
#include "tests/shell/shown_texts.h"
#include "tests/shell/window_over_a_chain.h"
#include "tests/support/http_server.h"
#include "tests/support/samba_server.h"

namespace torvik {
namespace {

class Secrets : public test::WindowOverAChain {
protected:
    Secrets() {
        QFile ini(folder.filePath(QStringLiteral("TorvikPosSync.ini")));
        EXPECT_TRUE(ini.open(QIODevice::WriteOnly));
        ini.write("[Logging]\nSeqUrl=" + QByteArray::fromStdString(logServer.url()) + "\nSeqApiKey=Logg-Nokkel-1\n");
        ini.close();
        SetupLogging(QStringLiteral("TorvikPosSync"), ini.fileName(),
                     folder.filePath(QStringLiteral("Log/TorvikPosSync.log")), {});
    }
    ~Secrets() override { GlobalLogger().ClearSinks(); }

    // All that was written below the folder, but for what the operator wrote, and all that the log server got.
    [[nodiscard]] QHash<QString, QByteArray> everything() {
        GlobalLogger().ClearSinks();
        QHash<QString, QByteArray> all;
        for (QDirIterator files(folder.path(), QDir::Files, QDirIterator::Subdirectories); files.hasNext();) {
            QFile file(files.next());
            const QString name = QDir(folder.path()).relativeFilePath(file.fileName());
            if (name == u"Torvik.UDL" || name == u"TorvikPosSync.ini") continue;
            EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
            all.insert(name, file.readAll());
        }
        for (const test::HttpRequest& request : logServer.taken())
            all[QStringLiteral("log server")] += QByteArray::fromStdString(request.body) + '\n';
        return all;
    }

    test::HttpServer logServer;
};

TEST_F(Secrets, AreInNoFileAndNotAtTheLogServer) {
    chain.runInBackOffice("UPDATE Internkundekasse SET Ikk_Passord = 'sesam-sesam' WHERE Ikk_Ik_Ku_Id = 1002");
    {
        MainWindow window(path(), store);
        TTorvikPos& engine = window.TorvikPos1();
        engine.Seam.tempFolder = [this] { return folder.path(); };
        window.show();
        allTills(window);
        engine.OnAutoStart(&engine);
        click(window, "actiOppgjorManually");
        engine.OnAutoStartDone(&engine);
        window.Ask.SqlScript = [](SettingsStore&, const QString&, const QStringList&) {
            return std::optional(SqlScriptAnswer{{QStringLiteral("SELECT * FROM FINNES_IKKE")}, true});
        };
        window.Ask.Message = [](const QString&) { return std::optional(InstantMessage{}); };
        for (const char* each : {"actiRunSQL", "actiSendMessage", "actiHealthCheck"}) click(window, each);
        engine.TargetConnection()->Close();
        engine.TargetConnection()->SetPassword(QStringLiteral("Galt-Passord-1"));
        click(window, "actiOppgjorManually");
        click(window, "actiSaveRegistry");
        window.close();
    }
    const QHash<QString, QByteArray> all = everything();

    EXPECT_TRUE(all[QStringLiteral("TorvikPosError.log")].contains("avdelingsnummer 102 kassenummer 1)"));
    EXPECT_TRUE(all[QStringLiteral("TorvikPosError.log")].contains("Login failed for user 'sa'"));
    EXPECT_TRUE(all[QStringLiteral("log server")].contains("avdelingsnummer 102 kassenummer 1)"));
    EXPECT_TRUE(all.contains(QStringLiteral("settings.ini")));
    EXPECT_TRUE(all.contains(QStringLiteral("ZoppgjorLog.txt")));
    EXPECT_GE(all.size(), 8) << "two panes, twice as text and twice as rich text, two logs, settings";
    for (const char* secret : {"Torvik-Sandbox-1", "Pos-1", "sesam-sesam", "Galt-Passord-1", "Logg-Nokkel-1"})
        for (auto each = all.cbegin(); each != all.cend(); ++each)
            EXPECT_FALSE(each->contains(secret)) << secret << " in " << each.key().toStdString();
}

// The share's login, the operator's in its place, and one that the share refuses.
TEST_F(Secrets, OfFileSharesAreInNoFileAndNotAtTheLogServer) {
    const test::SambaServer samba;
    {
        MainWindow window(path(), store);
        window.TorvikPos1().Seam.tempFolder = [this] { return folder.path(); };
        window.show();
        allTills(window);
        window.Ask.Copy.Share = [&samba] { return samba.share(); };
        FileCopyAnswer answer{.share = QStringLiteral("C$"),
                              .folder = QStringLiteral("\\"),
                              .localFile = folder.filePath(QStringLiteral("TorvikPosSync.ini"))};
        window.Ask.FileCopy = [&answer](const QString&) { return answer; };
        click(window, "actiSendFile");
        answer.overridesLogin = true;
        answer.userName = QStringLiteral("Hemmelig-Bruker-1");
        answer.password = QStringLiteral("Galt-Passord-2");
        click(window, "actiSendFile");
        click(window, "actiSaveRegistry");
        window.close();
    }
    const QHash<QString, QByteArray> all = everything();

    EXPECT_TRUE(all[QStringLiteral("TorvikPos.log")].contains("rt kopiering"));
    EXPECT_TRUE(all[QStringLiteral("TorvikPosError.log")].contains("ikke kunne lages"));
    EXPECT_TRUE(all.contains(QStringLiteral("settings.ini")));
    for (const char* secret : {"Torvik-Sandbox-1", "Pos-1", "Hemmelig-Bruker-1", "Galt-Passord-2"})
        for (auto each = all.cbegin(); each != all.cend(); ++each)
            EXPECT_FALSE(each->contains(secret)) << secret << " in " << each.key().toStdString();
}

// Every command on the fleet, with logins of databases and shares that are taken and that are refused.
TEST_F(Secrets, OfTheFleetAreInNoFileNoEventNoRowAndNoText) {
    const test::SambaServer samba;
    const auto put = [this](const char* name) {
        QFile made(folder.filePath(QString::fromUtf8(name)));
        EXPECT_TRUE(made.open(QIODevice::WriteOnly));
        made.write("[Kasse]\r\n");
    };
    for (const char* name : {"TorvikPOS.ZIP", "TorvikPOS_Change.ini", "prisliste.txt"}) put(name);
    chain.runInBackOffice("UPDATE Internkundekasse SET Ikk_Passord = 'sesam-sesam' WHERE Ikk_Ik_Ku_Id = 1002");
    test::ShownTexts shown;
    {
        MainWindow window(path(), store);
        TTorvikPos& engine = window.TorvikPos1();
        engine.Seam.tempFolder = [this] { return folder.path(); };
        window.show();
        allTills(window);
        window.Ask.Copy.Share = [&samba] { return samba.share(); };
        window.Ask.ChooseFile = [this](const QString&, const QString& pattern) { return folder.filePath(pattern); };
        window.Ask.Text = [](const QString&, const QString&, const QString& preset) { return preset; };
        window.Ask.Message = [](const QString&) {
            return std::optional(InstantMessage{.Tittel = "Åpent", .Til = "Alle", .Fra = "Kontoret"});
        };
        const auto run = [&](const char* command) {
            click(window, command);
            shown.read(window);
        };
        const auto copyAs = [this](const char* user, const char* password) {
            test::whenAsked<TfrmKopierFil>([=, this](TfrmKopierFil& dialog) {
                const auto type = [&dialog](const char* field, const QString& text) {
                    test::child<QLineEdit>(dialog, field).setText(text);
                };
                type("teFolder", QStringLiteral("\\"));
                type("teLocalFile", folder.filePath(QStringLiteral("prisliste.txt")));
                test::child<QCheckBox>(dialog, "cbOverrideUsername").setChecked(true);
                type("teUserName", QString::fromUtf8(user));
                type("tePassword", QString::fromUtf8(password));
                test::press(dialog, "ok");
            });
        };
        for (const char* command : {"actiSendFile", "actiSpeedTest"}) {
            copyAs(test::SambaServer::kUser, test::SambaServer::kPassword);
            run(command);
            copyAs("Hemmelig-Bruker-1", "Galt-Passord-2");
            run(command);
        }
        test::whenAsked<TfrmSQLScript>([](TfrmSQLScript& dialog) {
            test::child<QPlainTextEdit>(dialog, "script").setPlainText("SELECT * FROM INNSTILLINGER");
            test::press(dialog, "ok");
        });
        run("actiRunSQL");
        for (const char* command :
             {"actiSendMessage", "actiHealthCheck", "actiSendProgramUpdate", "actiSendIniFileChanges"})
            run(command);
        test::whenAsked<TfrmTorvikPosIniViewerDlg>([&](TfrmTorvikPosIniViewerDlg& viewer) {
            shown.read(viewer);
            test::press(viewer, "close");
        });
        run("actiViewTorvikPOSini");
        click(window, "actiSaveRegistry");
        window.close();
    }
    QHash<QString, QByteArray> all = everything();
    all[QStringLiteral("the windows")] = shown.all().join(u'\n').toUtf8();

    const QByteArray lines = all[QStringLiteral("TorvikPos.log")];
    for (const char* words :
         {"STARTER FILKOPIERING", "STARTER HASTIGHETSTEST", "STARTER SQL SCRIPT", "STARTER HELSESJEKK",
          "STARTER OPPGRADERINGER", "STARTER OPPDATERING AV", "STARTER HENTING AV TORVIKPOS.INI"})
        EXPECT_TRUE(lines.contains(words)) << words;
    EXPECT_TRUE(all[QStringLiteral("TorvikPosError.log")].contains("ikke kunne lages")) << "a share has refused";
    EXPECT_TRUE(all[QStringLiteral("TorvikPosError.log")].contains("AvdID 102, Oppdateringen feilet"));
    EXPECT_FALSE(all[QStringLiteral("log server")].isEmpty());
    const QByteArray texts = all[QStringLiteral("the windows")];
    EXPECT_TRUE(texts.contains("-1.00") || texts.contains("0.00")) << "the status frame's rows are among them";
    for (const char* window : {"TfrmKopierFil", "TfrmSQLScript", "TfrmProgress"})
        EXPECT_TRUE(shown.windows().contains(QString::fromUtf8(window))) << window;
    for (const char* secret : {"Torvik-Sandbox-1", "Pos-1", "sesam-sesam", "Hemmelig-Bruker-1", "Galt-Passord-2"})
        for (auto each = all.cbegin(); each != all.cend(); ++each)
            EXPECT_FALSE(each->contains(secret)) << secret << " in " << each.key().toStdString();
}

}  // namespace
}  // namespace torvik
