// A log as a text file: whole, or the one before it.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "engine/base/abort.h"
#include "engine/log/log_pane.h"
#include "tests/support/full_disk.h"

namespace torvik {
namespace {

QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
}

TEST(SaveTextLines, WritesALineEachInUtf8AndReplacesTheFile) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("PosToTorvikLog.txt"));
    SaveTextLines(path, {QStringLiteral("gammel")});

    SaveTextLines(path, {QStringLiteral("Kjøring startet"), QString(), QStringLiteral("ferdig")});

    EXPECT_EQ(contents(path), "Kjøring startet\n\nferdig\n");
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList{QStringLiteral("PosToTorvikLog.txt")});
}

TEST(SaveTextLines, AFullDiskLeavesTheFileBeforeAndIsAnErrorThatNamesIt) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("PosToTorvikLog.txt"));
    SaveTextLines(path, {QStringLiteral("gammel")});
    {
        const test::FullDisk full(4096);
        try {
            SaveTextLines(path, QStringList(200, QString(100, u'x')));
            ADD_FAILURE() << "20,000 letters found room";
        } catch (const EngineError& e) {
            EXPECT_TRUE(QString::fromUtf8(e.what()).startsWith(QStringLiteral("Klarte ikke å skrive %1: ").arg(path)))
                << e.what();
        }
    }
    EXPECT_EQ(contents(path), "gammel\n");
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList{QStringLiteral("PosToTorvikLog.txt")});
}

TEST(SaveTextLines, AFolderThatIsNotThereIsAnErrorThatNamesTheFile) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("borte/PosToTorvikLog.txt"));
    try {
        SaveTextLines(path, {});
        ADD_FAILURE() << "a file without a folder";
    } catch (const EngineError& e) {
        EXPECT_TRUE(QString::fromUtf8(e.what()).contains(path)) << e.what();
    }
}

}  // namespace
}  // namespace torvik
