// Settings as rows: defaults, wrong types, and the application folder.
#include "shell/settings.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QSet>
#include <QTemporaryDir>
#include <QTime>

#include "shell/application_folder.h"

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

TEST_F(Settings, NamesAreUniqueAndDefaultsAreOfTheirType) {
    const SettingsStore store(folder.filePath(QStringLiteral("none.ini")));
    QSet<QString> names;
    for (const SettingRow& row : windowSettings()) {
        EXPECT_FALSE(names.contains(QString::fromUtf8(row.name))) << row.name;
        names << QString::fromUtf8(row.name);
        EXPECT_TRUE(store.read(row.name).isValid()) << row.name;
    }
    EXPECT_EQ(store.read("AutoStartTime").toTime(), QTime(4, 0));
    EXPECT_EQ(store.read("Timeout").toInt(), 5);
}

TEST_F(Settings, ValueOfTheWrongTypeLeavesThatSettingAtItsDefault) {
    write("s.ini", "[General]\nTimeout=often\nKunHent=perhaps\nProductsToSync=1\n");
    const SettingsStore store(folder.filePath(QStringLiteral("s.ini")));
    EXPECT_EQ(store.read("Timeout").toInt(), 5);
    EXPECT_FALSE(store.read("KunHent").toBool());
    EXPECT_EQ(store.read("ProductsToSync").toInt(), 1);
}

TEST_F(Settings, DeployFileMovesTheApplicationFolder) {
    EXPECT_EQ(applicationFolder(folder.path()), folder.path() + QLatin1Char('/'));
    write("deploy.ini", "[deploy]\nfolder=..\\data\n");
    EXPECT_EQ(applicationFolder(folder.path()),
              QDir::cleanPath(folder.path() + QStringLiteral("/../data")) + QLatin1Char('/'));
}

}  // namespace
}  // namespace torvik
