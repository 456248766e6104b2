// Settings as they are kept: defaults, wrong types, the user's own store alone; and the application folder.
#include "shell/settings/settings_store.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTime>

#include "shell/start/application_folder.h"

namespace torvik {
namespace {

class Settings : public testing::Test {
protected:
    void write(const char* name, const QByteArray& content) const {
        QFile file(folder.filePath(QString::fromUtf8(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    QTemporaryDir folder;
};

TEST_F(Settings, MissingValueIsTheRowsDefault) {
    const SettingsStore store(folder.filePath(QStringLiteral("none.ini")));
    EXPECT_EQ(store.read("Smtp/StartSendingTime").toTime(), QTime(3, 0));
    EXPECT_EQ(store.read("AutoStartTime").toTime(), QTime(4, 0));
    EXPECT_EQ(store.read("Timeout").toInt(), 5);
    EXPECT_EQ(store.read("ProductsToSync").toInt(), 2);
    EXPECT_TRUE(store.read("IncludeDTS").toBool());
}

TEST_F(Settings, ValueOfTheWrongTypeLeavesThatSettingAtItsDefault) {
    write("s.ini", "[General]\nTimeout=often\nKunHent=perhaps\nProductsToSync=1\n");
    const SettingsStore store(folder.filePath(QStringLiteral("s.ini")));
    EXPECT_EQ(store.read("Timeout").toInt(), 5);
    EXPECT_FALSE(store.read("KunHent").toBool());
    EXPECT_EQ(store.read("ProductsToSync").toInt(), 1);
}

TEST_F(Settings, PreferencesStandInASectionOfTheirOwn) {
    const QString path = folder.filePath(QStringLiteral("s.ini"));
    SettingsStore store(path);
    store.write("Smtp/Receipients", QStringLiteral("a@b.no,c@d.no"));
    ASSERT_TRUE(store.save());
    EXPECT_EQ(QSettings(path, QSettings::IniFormat).value(QStringLiteral("Smtp/Receipients")).toString(),
              QStringLiteral("a@b.no,c@d.no"));
}

TEST_F(Settings, HelpFileStandsBesideTheExecutable) {
    EXPECT_EQ(helpFile(QStringLiteral("/opt/t/TorvikPosSync")), QStringLiteral("/opt/t/TorvikPosSync.hlp"));
    EXPECT_EQ(helpFile(QStringLiteral("C:/t/TorvikPosSync.exe")), QStringLiteral("C:/t/TorvikPosSync.hlp"));
}

TEST_F(Settings, DeployFileWithoutAFolderMeansTheExecutables) {
    write("deploy.ini", "[deploy]\n");
    EXPECT_EQ(applicationFolder(folder.path()), folder.path() + QLatin1Char('/'));
}

TEST_F(Settings, DeployFileMayNameAnAbsoluteFolder) {
    write("deploy.ini", "[deploy]\nfolder=/srv/torvik/./x/..\n");
    EXPECT_EQ(applicationFolder(folder.path()), QStringLiteral("/srv/torvik/"));
}

TEST_F(Settings, DeployFileMovesTheApplicationFolder) {
    EXPECT_EQ(applicationFolder(folder.path()), folder.path() + QLatin1Char('/'));
    write("deploy.ini", "[deploy]\nfolder=..\\data\n");
    EXPECT_EQ(applicationFolder(folder.path()),
              QDir::cleanPath(folder.path() + QStringLiteral("/../data")) + QLatin1Char('/'));
}

}  // namespace
}  // namespace torvik
