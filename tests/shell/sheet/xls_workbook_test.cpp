// Spreadsheets of our own making, as an independent reader finds them.
#include "shell/sheet/xls_workbook.h"

#include <gmock/gmock.h>

#include <QFile>
#include <QTemporaryDir>

#include "engine/base/abort.h"
#include "tests/shell/sheet/xls_reader.h"
#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

using testing::ElementsAre;

class XlsWorkbooks : public testing::Test {
protected:
    [[nodiscard]] QString file() const { return folder.filePath(QStringLiteral("bok.xls")); }
    [[nodiscard]] QStringList written(const QStringList& options = {}) const {
        book.write(file());
        return readXls(file(), options);
    }

    QTemporaryDir folder;
    XlsWorkbook book;
};

TEST_F(XlsWorkbooks, HoldEveryKindOfCell) {
    book.beginSheet("Ark1");
    book.text(0, 0, "Navn", true);
    book.text(1, 0, "blåbær");
    book.text(1, 1, "日本 € 🙂");
    book.number(1, 2, -12.5);
    book.boolean(1, 3, true);
    book.dateTime(1, 4, QDate(2026, 3, 7), QTime(9, 5, 4, 250));
    book.text(2, 0, "");
    book.text(2, 1, "0042");
    EXPECT_EQ(written(), (QStringList{"Ark1: 3 x 5", "0,0 bold Navn", "1,0 text blåbær", "1,1 text 日本 € 🙂",
                                      "1,2 number -12.5", "1,3 bool 1", "1,4 date 2026-03-07 09:05:04.250", "2,0 text ",
                                      "2,1 text 0042"}));
}

TEST_F(XlsWorkbooks, HoldSeveralSheetsAndEmptyOnes) {
    for (const char* name : {"Ark1", "Tom", "Ark3"}) book.beginSheet(QString::fromUtf8(name));
    book.number(0, 0, 3);
    EXPECT_EQ(written(), (QStringList{"Ark1: 0 x 0", "Tom: 0 x 0", "Ark3: 1 x 1", "0,0 number 3.0"}));
}

// Records hold 8,224 bytes at most; every place in a text is once the place where one ends.
TEST_F(XlsWorkbooks, HoldTextsThatBreakOffAtTheEndOfARecord) {
    book.beginSheet("Ark1");
    QStringList expected{"Ark1: 40 x 1"};
    for (int row = 0; row < 40; ++row) {
        const QString text = QString(1000 + row, u'a') + (row % 2 ? QStringLiteral("ø") : QStringLiteral("Ω"));
        book.text(row, 0, text);
        expected << QStringLiteral("%1,0 text %2").arg(row).arg(text);
    }
    EXPECT_EQ(written(), expected);
}

TEST_F(XlsWorkbooks, HoldTextsLongerThanARecordAndCutThoseLongerThanACell) {
    const QString longest = QString(XlsWorkbook::kLetters - 1, u'Ω') + u'x';
    book.beginSheet("Ark1");
    book.text(0, 0, longest);
    book.text(1, 0, longest + u'y');
    book.text(2, 0, QString(20000, u'n'));
    EXPECT_EQ(written(), (QStringList{"Ark1: 3 x 1", "0,0 text " + longest, "1,0 text " + longest,
                                      "2,0 text " + QString(20000, u'n')}));
}

// So many that the container's header does not name all its tables.
TEST_F(XlsWorkbooks, HoldAsManyRowsAsASheetDoes) {
    for (const char* name : {"Ark1", "Ark2"}) {
        book.beginSheet(QString::fromUtf8(name));
        for (int row = 0; row < XlsWorkbook::kRows; ++row)
            for (int column = 0; column < 5; ++column) book.number(row, column, row + column);
    }
    EXPECT_EQ(written({"--counts"}), (QStringList{"Ark1: 65536 x 5", "Ark2: 65536 x 5"}));
    constexpr qint64 kNamedByTheHeader = qint64{109} * 128 * 512;  // bytes of its tables' sectors
    EXPECT_GT(QFile(file()).size(), kNamedByTheHeader);
}

TEST_F(XlsWorkbooks, LeaveTheFileAsItWasWhenTheyCannotBeWritten) {
    book.beginSheet("Ark1");
    EXPECT_THROW(book.write(folder.filePath("finnes/ikke.xls")), EngineError);
}

}  // namespace
}  // namespace torvik::test
