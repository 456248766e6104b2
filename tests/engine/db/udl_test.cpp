// The data-link file: which lines are its text, and which files are refused with which words.
#include "engine/db/udl.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include "engine/db/connect_string.h"
#include "engine/db/errors.h"
#include "tests/support/data_link.h"
#include "tests/support/qt_print.h"

namespace torvik::db {
namespace {

class UdlFile {
public:
    explicit UdlFile(const QByteArray& content) : path_(folder_.filePath(QStringLiteral("Torvik.UDL"))) {
        QFile file(path_);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    [[nodiscard]] const QString& path() const { return path_; }

private:
    QTemporaryDir folder_;
    QString path_;
};

QString refusal(const QString& path) {
    try {
        static_cast<void>(ReadUdlFile(path));
    } catch (const UsageError& e) {
        return e.text();
    }
    return QStringLiteral("(read)");
}

TEST(Udl, CommentsAndSectionLeaveTheBareConnectionString) {
    const UdlFile file(
        test::markedUtf16(QStringLiteral("[oledb]\r\n; Everything after this line is an OLE DB initstring\r\n"
                                         "Provider=SQLOLEDB.1;Data Source=æøå,1433;Initial Catalog=Kjede\r\n")));
    EXPECT_EQ(ReadUdlFile(file.path()),
              QStringLiteral("Provider=SQLOLEDB.1;Data Source=æøå,1433;Initial Catalog=Kjede\r\n"));
}

TEST(Udl, EmptyLinesGoAndALastLineNeedsNoEnd) {
    const UdlFile file(test::markedUtf16(QStringLiteral("\n\n[oledb]\n;x\nData Source=a")));
    EXPECT_EQ(ReadUdlFile(file.path()), QStringLiteral("Data Source=a\r\n"));
}

TEST(Udl, WhatIsReadCanBeAssigned) {
    const UdlFile file(
        test::markedUtf16(QStringLiteral("[oledb]\r\nProvider=SQLOLEDB.1;Password=p;User ID=sa;Initial "
                                         "Catalog=Kjede;Data Source=hk\\sql\r\n")));
    const ConnectSettings settings = settingsFromOleDb(ReadUdlFile(file.path()));
    EXPECT_EQ(settings.Server, QStringLiteral("hk\\sql"));
    EXPECT_EQ(settings.Database, QStringLiteral("Kjede"));
}

TEST(Udl, EightBitTextIsNotValid) {
    const UdlFile file("[oledb]\r\nProvider=SQLOLEDB.1\r\n");
    EXPECT_EQ(refusal(file.path()), QStringLiteral("The file UDL file \"%1\" is not valid.").arg(file.path()));
}

TEST(Udl, BigEndianTextIsNotValid) {
    const UdlFile file(QByteArray("\xFE\xFF\x00[", 4));
    EXPECT_EQ(refusal(file.path()), QStringLiteral("The file UDL file \"%1\" is not valid.").arg(file.path()));
}

TEST(Udl, FilesOfNoneOrOneByteAreCorrupt) {
    for (const QByteArray& content : {QByteArray(), QByteArray("\xFF")}) {
        const UdlFile file(content);
        EXPECT_EQ(refusal(file.path()), QStringLiteral("The UDL file \"%1\" is corrupt.").arg(file.path()));
    }
}

TEST(Udl, AMissingFileDoesNotExist) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("Torvik.UDL"));
    EXPECT_EQ(refusal(path), QStringLiteral("The UDL file \"%1\" does not exist.").arg(path));
}

}  // namespace
}  // namespace torvik::db
