// A grid's rows as a spreadsheet and as text.
#include "shell/results/export.h"

#include <gmock/gmock.h>

#include <QFile>
#include <QTemporaryDir>

#include "engine/base/abort.h"
#include "shell/results/table_model.h"
#include "tests/shell/results/tables.h"
#include "tests/shell/sheet/xls_reader.h"
#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

using db::FieldType;

class Exports : public testing::Test {
protected:
    [[nodiscard]] QString file(const char* name = "sql.xls") const { return folder.filePath(QString::fromUtf8(name)); }
    [[nodiscard]] static QByteArray bytes(const QString& name) {
        QFile read(name);
        return read.open(QIODevice::ReadOnly) ? read.readAll() : QByteArray("no file");
    }

    QTemporaryDir folder;
    TableModel model;
};

TEST_F(Exports, SpreadsheetHoldsEachValueAsItsKind) {
    model.setTables({table({{"Heltall", FieldType::Integer},
                            {"Beløp", FieldType::Decimal},
                            {"Tall", FieldType::Float},
                            {"Ja", FieldType::Bool},
                            {"Dato", FieldType::DateTime},
                            {"Tekst", FieldType::Text},
                            {"Bilde", FieldType::Bytes}},
                           {{42, db::Decimal{1250, 2}, 0.1, false, db::DateTime(QDate(2026, 3, 7), QTime(12, 0)),
                             "0042", QByteArray("\x01\xAB", 2)},
                            {{}, {}, {}, {}, {}, {}, {}}})});
    EXPECT_EQ(writeSpreadsheet(model, file()).text(), "");
    EXPECT_EQ(readXls(file()), (QStringList{"Ark1: 2 x 7", "0,0 bold Heltall", "0,1 bold Beløp", "0,2 bold Tall",
                                            "0,3 bold Ja", "0,4 bold Dato", "0,5 bold Tekst", "0,6 bold Bilde",
                                            "1,0 number 42.0", "1,1 number 12.5", "1,2 number 0.1", "1,3 bool 0",
                                            "1,4 date 2026-03-07 12:00:00.000", "1,5 text 0042", "1,6 text 0x01AB"}));
}

TEST_F(Exports, SpreadsheetHoldsAsTextWhatItWouldRound) {
    model.setTables({table({{"a", FieldType::Integer}, {"b", FieldType::Decimal}, {"c", FieldType::DateTime}},
                           {{999999999999999, db::Decimal{999999999999999, 2}, db::DateTime(QDate(1900, 3, 1))},
                            {1234567890123456, db::Decimal{1234567890123456, 2}, db::DateTime(QDate(1900, 2, 28))}})});
    EXPECT_EQ(writeSpreadsheet(model, file()).text(), "");
    EXPECT_EQ(readXls(file()).mid(4), (QStringList{"1,0 number 999999999999999.0", "1,1 number 9999999999999.99",
                                                   "1,2 date 1900-03-01 00:00:00.000", "2,0 text 1234567890123456",
                                                   "2,1 text 12345678901234.56", "2,2 text 28.02.1900"}));
}

TEST_F(Exports, RowsThatASheetDoesNotHoldGoToTheNextAndAreTold) {
    auto many = std::make_shared<db::MemTable>();
    many->AddColumn("n", FieldType::Integer);
    many->Open();
    const auto add = [&](int from, int to) {
        for (int i = from; i < to; ++i) {
            many->Append();
            many->Fields(0) = i;
            many->Post();
        }
    };
    add(0, 65535);
    model.setTables({many});
    EXPECT_EQ(writeSpreadsheet(model, file()).text(), "") << "with its captions just what a sheet holds";
    EXPECT_EQ(readXls(file(), {"--counts"}), QStringList{"Ark1: 65536 x 1"});

    add(65535, 131071);
    model.setTables({many});
    EXPECT_EQ(writeSpreadsheet(model, file()).text(),
              "Resultatet har 131071 rader. Et ark har plass til 65535, så radene står på 3 ark.");
    const QStringList all = readXls(file());
    EXPECT_EQ(all.filter("Ark"), (QStringList{"Ark1: 65536 x 1", "Ark2: 65536 x 1", "Ark3: 2 x 1"}));
    EXPECT_EQ(all.filter("bold").size(), 3);
    EXPECT_EQ(all.last(), "1,0 number 131070.0");
}

TEST_F(Exports, TextThatACellDoesNotHoldIsCutAndTold) {
    model.setTables({table({{"a", FieldType::Text}}, {{QString(32768, 'x')}, {QString(32767, 'y')}})});
    EXPECT_EQ(writeSpreadsheet(model, file()).text(),
              "1 tekster er lengre enn de 32767 tegnene en celle har plass til, og er kortet ned.");
    EXPECT_EQ(readXls(file()).mid(2),
              (QStringList{"1,0 text " + QString(32767, 'x'), "2,0 text " + QString(32767, 'y')}));
}

TEST_F(Exports, MoreColumnsThanASheetHoldsAreRefused) {
    auto wide = std::make_shared<db::MemTable>();
    for (int i = 0; i < 257; ++i) wide->AddColumn("c" + QString::number(i), FieldType::Integer);
    wide->Open();
    model.setTables({wide});
    EXPECT_THROW(static_cast<void>(writeSpreadsheet(model, file())), EngineError);
    EXPECT_FALSE(QFile::exists(file()));
}

TEST_F(Exports, TextHasItsCellsBetweenTabsAndItsLinesBetweenBars) {
    model.setTables({table({{"Nr", FieldType::Integer}, {"Navn", FieldType::Text}, {"Pris", FieldType::Decimal}},
                           {{1, "Blåbær", db::Decimal{1250, 2}}, {2, "a\tb\r\nc", {}}, {3, {}, {}}})});
    writeText(model, file("a.txt"));
    EXPECT_EQ(bytes(file("a.txt")).toStdString(), "|Nr\tNavn\tPris|\n|1\tBlåbær\t12.5|\n|2\ta b c\t|\n|3\t\t|\n");
}

TEST_F(Exports, TellWhatCannotBeWritten) {
    model.setTables({table({{"a", FieldType::Text}}, {})});
    EXPECT_THROW(writeText(model, file("finnes/ikke.txt")), EngineError);
    EXPECT_THROW(static_cast<void>(writeSpreadsheet(model, file("finnes/ikke.xls"))), EngineError);
}

}  // namespace
}  // namespace torvik::test
