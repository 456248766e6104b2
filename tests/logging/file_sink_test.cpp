// The file sinks on real files: one line an event, a file a day, and what they survive.
#include "logging/file_sink.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "logging/logger.h"
#include "logging/rolling_file_sink.h"
#include "tests/support/full_disk.h"
#include "tests/support/time_zone.h"

namespace torvik {
namespace {

const QDateTime kMoment(QDate(2026, 3, 1), QTime(8, 15, 30, 250), Qt::UTC);

std::shared_ptr<ILogEntry> event(const QString& text) {
    return std::make_shared<TLogEntry>(TLogLevel::llInformation, text, std::span<const LogArg>(), nullptr, kMoment);
}

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
}

class FileSinks : public testing::Test {
protected:
    [[nodiscard]] QString path(const char* name) const { return folder.filePath(QString::fromUtf8(name)); }
    [[nodiscard]] QStringList files() const { return QDir(folder.path()).entryList(QDir::Files, QDir::Name); }

    const test::TimeZone utc{"UTC"};
    QTemporaryDir folder;
};

TEST_F(FileSinks, AppendALineAnEventAsUtf8WithCarriageReturnAndLineFeed) {
    TFileSink sink(path("a.log"));
    sink.Write(event(QStringLiteral("Hentet oppgjør")));
    sink.Write(event(QStringLiteral("SLUTT")));
    EXPECT_EQ(contentOf(path("a.log")),
              "2026-03-01T08:15:30.250Z INF Hentet oppgjør\r\n2026-03-01T08:15:30.250Z INF SLUTT\r\n");
}

TEST_F(FileSinks, MakeTheWholePathOfFolders) {
    TFileSink sink(path("Log/2026/3/a.log"));
    sink.Write(event(QStringLiteral("Hei")));
    EXPECT_TRUE(contentOf(path("Log/2026/3/a.log")).endsWith("INF Hei\r\n"));
}

TEST_F(FileSinks, AreMuteWhenTheFolderCannotBeMade) {
    QFile inTheWay(path("Log"));
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    inTheWay.close();
    TFileSink sink(path("Log/a.log"));
    sink.Write(event(QStringLiteral("borte")));
    EXPECT_EQ(files(), QStringList{"Log"});

    ASSERT_TRUE(inTheWay.remove());  // too late for this sink
    sink.Write(event(QStringLiteral("borte")));
    EXPECT_EQ(files(), QStringList());
}

TEST_F(FileSinks, LoseTheLineThatCannotBeWrittenAndGoOnWithTheNext) {
    ASSERT_TRUE(QDir().mkdir(path("a.log")));  // a folder in the file's place
    TFileSink sink(path("a.log"));
    sink.Write(event(QStringLiteral("borte")));
    ASSERT_TRUE(QDir().rmdir(path("a.log")));
    sink.Write(event(QStringLiteral("her")));
    EXPECT_EQ(contentOf(path("a.log")), "2026-03-01T08:15:30.250Z INF her\r\n");
}

TEST_F(FileSinks, LeaveNoHalfLineWhenTheDiskIsFull) {
    TFileSink sink(path("a.log"));
    sink.Write(event(QStringLiteral("en")));
    {
        const test::FullDisk full(static_cast<rlim_t>(contentOf(path("a.log")).size()) + 10);
        sink.Write(event(QStringLiteral("borte")));
    }
    sink.Write(event(QStringLiteral("to")));
    EXPECT_EQ(contentOf(path("a.log")), "2026-03-01T08:15:30.250Z INF en\r\n2026-03-01T08:15:30.250Z INF to\r\n");
}

TEST_F(FileSinks, RollToANewFileWithTheFirstEventAfterMidnight) {
    QDateTime now(QDate(2026, 2, 28), QTime(23, 59, 59, 999));
    TRollingFileSink sink(path("TorvikPosSync.log"), [&now] { return now; });
    sink.Write(event(QStringLiteral("før")));
    now = now.addMSecs(1);
    EXPECT_EQ(files(), QStringList{"TorvikPosSync_20260228.log"});
    sink.Write(event(QStringLiteral("etter")));
    sink.SyncAndClose();
    EXPECT_EQ(files(), (QStringList{"TorvikPosSync_20260228.log", "TorvikPosSync_20260301.log"}));
    EXPECT_TRUE(contentOf(path("TorvikPosSync_20260228.log")).endsWith("INF før\r\n"));
    EXPECT_TRUE(contentOf(path("TorvikPosSync_20260301.log")).endsWith("INF etter\r\n"));
}

TEST_F(FileSinks, KeepTheFolderOfTheBaseNameWhenTheYearChanges) {
    QDateTime now(QDate(2026, 12, 31), QTime(12, 0));
    TRollingFileSink sink(path("Log/2026/12/TorvikPosSync.log"), [&now] { return now; });
    sink.Write(event(QStringLiteral("i fjor")));
    now = now.addDays(40);
    sink.Write(event(QStringLiteral("i år")));
    EXPECT_TRUE(contentOf(path("Log/2026/12/TorvikPosSync_20270209.log")).endsWith("INF i år\r\n"));
}

TEST_F(FileSinks, TryTheFolderAgainAtTheNextRollOver) {
    QFile inTheWay(path("Log"));
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    inTheWay.close();
    QDateTime now(QDate(2026, 3, 1), QTime(12, 0));
    TRollingFileSink sink(path("Log/a.log"), [&now] { return now; });
    sink.Write(event(QStringLiteral("stum")));
    ASSERT_TRUE(inTheWay.remove());
    sink.Write(event(QStringLiteral("stum ut dagen")));
    EXPECT_FALSE(QDir(path("Log")).exists());
    now = now.addDays(1);
    sink.Write(event(QStringLiteral("her")));
    EXPECT_EQ(contentOf(path("Log/a_20260302.log")), "2026-03-01T08:15:30.250Z INF her\r\n");
}

TEST_F(FileSinks, NameADaysFileWhateverTheExtension) {
    const auto now = [] { return QDateTime(QDate(2026, 3, 1), QTime(12, 0)); };
    for (const char* name : {"uten", "a.b.log", ".log"})
        TRollingFileSink(path(name), now).Write(event(QStringLiteral("Hei")));
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name),
              (QStringList{"_20260301.log", "a.b_20260301.log", "uten_20260301"}));
}

}  // namespace
}  // namespace torvik
