// The tills' ini files side by side: what stands in the columns, the whole text of one, and the spreadsheet.
#include "shell/fleet/ini_viewer.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QPlainTextEdit>
#include <QProcess>
#include <QTableView>
#include <QTemporaryDir>

#include "engine/base/abort.h"
#include "tests/shell/modal.h"
#include "tests/support/qt_print.h"

namespace torvik {
namespace {

using test::child;

class IniViewer : public testing::Test {
protected:
    // The row's cells as text; a truth value as "ja" or "nei".
    [[nodiscard]] QStringList row(int row) const {
        QStringList cells;
        for (int column = 0; column < IniTable::ColumnCount; ++column) {
            const QVariant value = dialog.memKasse().index(row, column).data(Qt::EditRole);
            cells << (value.typeId() == QMetaType::Bool ? value.toBool() ? "ja" : "nei" : value.toString());
        }
        return cells;
    }
    void receive(const QStringList& lines, const QString& kassenr = QStringLiteral("1")) {
        dialog.OnTorvikPosIni(QStringLiteral("101"), kassenr, lines, QStringLiteral("Kjeden AS Storgata 1"));
    }

    QTemporaryDir folder;
    QStringList opened;
    TfrmTorvikPosIniViewerDlg dialog{folder.path() + u'/', [this](const QString& file) { opened << file; }};
};

TEST_F(IniViewer, HasTheSettingsAndTheWholeTextOfATill) {
    receive({"[CEDevice]", "Enabled=1", "[Labels]", "PrinterName=Zebra", "[Bankterminal]", "TerminalType=6",
             "[General]", "BankTerminalIsActive=1"});
    EXPECT_EQ(row(0), (QStringList{"101", "1", "Kjeden AS Storgata 1", "ja", "Zebra", "Baxi", "ja",
                                   "[CEDevice]\nEnabled=1\n[Labels]\nPrinterName=Zebra\n[Bankterminal]\n"
                                   "TerminalType=6\n[General]\nBankTerminalIsActive=1\n"}));
}

TEST_F(IniViewer, HasTheUsualValuesWhereAFileHasNone) {
    receive({});
    EXPECT_EQ(row(0), (QStringList{"101", "1", "Kjeden AS Storgata 1", "nei", "", "Ingen", "nei", ""}));
}

TEST_F(IniViewer, NamesTheTerminals) {
    const QStringList names{"Ingen", "Bopos",    "Point",    "SteriaPAY", "Babs Paylink", "Autodetect",
                            "Baxi",  "Paypoint", "Baxi.NET", "Verifone",  "Ukjent"};
    for (int type = 0; type < names.size(); ++type) EXPECT_EQ(IniTable::terminalName(type), names[type]);
    EXPECT_EQ(IniTable::terminalName(-1), "Ukjent");
    receive({"[Bankterminal]", "TerminalType=10"});
    EXPECT_EQ(row(0)[IniTable::TerminalType], "Ukjent");
}

TEST_F(IniViewer, CutsAPrinterNameAt100CharactersBeforeItTrimsIt) {
    receive({"[Labels]", "PrinterName=" + QString(97, u'x') + "   yz"});
    EXPECT_EQ(row(0)[IniTable::LabelPrinterName], QString(97, u'x'));
}

TEST_F(IniViewer, CutsANameAt50Characters) {
    dialog.OnTorvikPosIni("101", "1", {}, QString(60, u'n'));
    EXPECT_EQ(row(0)[IniTable::Navn], QString(50, u'n'));
}

TEST_F(IniViewer, StandsInBands) {
    QStringList bands;
    for (int column = 0; column < IniTable::ColumnCount; ++column)
        bands << dialog.memKasse().headerData(column, Qt::Horizontal).toString().section(u'\n', 0, 0);
    EXPECT_EQ(bands, (QStringList{"Avdeling", "Avdeling", "Avdeling", "Håndterminal", "Håndterminal", "Bankterminal",
                                  "Bankterminal", "Komplett TorvikPOS.ini"}));
}

TEST_F(IniViewer, ShowsTheWholeTextOfTheTillThatIsChosen) {
    receive({"[A]", "b=1"}, "1");
    receive({"[C]", "d=2"}, "2");
    dialog.show();
    EXPECT_EQ(child<QPlainTextEdit>(dialog, "whole").toPlainText(), "[A]\nb=1\n");
    child<QTableView>(dialog, "grid").selectRow(1);
    EXPECT_EQ(child<QPlainTextEdit>(dialog, "whole").toPlainText(), "[C]\nd=2\n");
    dialog.Init();
    EXPECT_EQ(dialog.memKasse().rowCount(), 0);
    EXPECT_EQ(child<QPlainTextEdit>(dialog, "whole").toPlainText(), "");
}

TEST_F(IniViewer, WritesTheSpreadsheetOverThatOfBeforeAndOpensIt) {
    const QString file = folder.filePath(QStringLiteral("TorvikPOS konfigurasjon.xlsx"));
    QFile before(file);
    ASSERT_TRUE(before.open(QIODevice::WriteOnly));
    before.write("gammelt");
    before.close();
    receive({"[Labels]", "PrinterName=Zebra på lager"}, "1");
    receive({"[A]", "lang=" + QString(40000, u'x')}, "2");
    test::press(dialog, "openInExcel");
    EXPECT_EQ(opened, QStringList{file});
    const auto part = [&](const char* name) {
        QProcess unzip;
        unzip.start(QStringLiteral("unzip"), {QStringLiteral("-p"), file, QString::fromUtf8(name)});
        unzip.waitForFinished();
        return QString::fromUtf8(unzip.readAllStandardOutput());
    };
    const QString strings = part("xl/sharedStrings.xml");
    EXPECT_TRUE(strings.contains("Zebra på lager"));
    EXPECT_TRUE(strings.contains("xxx...")) << "a text that no cell holds is cut, and told so";
    EXPECT_EQ(part("xl/worksheets/sheet1.xml").count(QStringLiteral("<row ")), 3) << "captions and two tills";
    EXPECT_TRUE(part("xl/workbook.xml").contains("TorvikPOS konfigurasjon"));
}

}  // namespace
}  // namespace torvik
