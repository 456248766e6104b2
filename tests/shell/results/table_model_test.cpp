// Rows in memory as views read them: shared, one table below the other, and as many as there are.
#include "shell/results/table_model.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QClipboard>
#include <QElapsedTimer>
#include <QScrollBar>
#include <QTest>

#include "engine/base/abort.h"
#include "shell/results/grid.h"
#include "tests/shell/results/tables.h"
#include "tests/support/qt_print.h"

namespace torvik::test {
namespace {

QStringList shown(const TableModel& model) {
    QStringList rows;
    for (int row = 0; row < model.rowCount(); ++row) {
        QStringList cells;
        for (int column = 0; column < model.columnCount(); ++column)
            cells << model.index(row, column).data().toString();
        rows << cells.join(u'|');
    }
    return rows;
}

const Columns kTwo{{"Id", db::FieldType::Integer}, {"Navn", db::FieldType::Text}};

TEST(TableModels, ShowTheRowsOfTheirTablesBelowEachOther) {
    TableModel model;
    EXPECT_EQ(shown(model), QStringList());
    model.setTables({table(kTwo, {{1, "a"}, {2, {}}}), table(kTwo, {}), table(kTwo, {{3, "c"}})});
    EXPECT_EQ(shown(model), (QStringList{"1|a", "2|", "3|c"}));
    EXPECT_EQ(model.headerData(1, Qt::Horizontal, Qt::DisplayRole).toString(), "Navn");
    EXPECT_EQ(model.index(2, 0).data(TableModel::ValueRole).value<db::Value>(), db::Value(3));
    model.setTables({table(kTwo, {{9, "x"}})});
    EXPECT_EQ(shown(model), QStringList{"9|x"});
}

TEST(TableModels, GoByTheColumnsPlaces) {
    TableModel model;
    model.setTables({table(kTwo, {{1, "a"}}), table({{"Annet", db::FieldType::Text}}, {{"7"}})});
    EXPECT_EQ(shown(model), (QStringList{"1|a", "7|"}));
}

TEST(TableModels, RefuseTablesThatDoNotFitTheFirstAndShowWhatTheyShowed) {
    TableModel model;
    model.setTables({table(kTwo, {{1, "a"}})});
    const auto wide =
        table({{"a", db::FieldType::Integer}, {"b", db::FieldType::Text}, {"c", db::FieldType::Text}}, {});
    const auto word = table({{"Id", db::FieldType::Text}}, {{"1"}, {"en"}});
    for (const auto& misfit : {wide, word})
        EXPECT_THROW(model.setTables({table(kTwo, {{2, "b"}}), misfit}), EngineError);
    EXPECT_EQ(shown(model), QStringList{"1|a"});
}

TEST(TableModels, ShowEachValueOnOneLineAndLongOnesCut) {
    EXPECT_EQ(cellText({}), "");
    EXPECT_EQ(cellText("a\r\nb\tc"), "a  b c");
    EXPECT_EQ(cellText(true), "True");
    EXPECT_EQ(cellText(QByteArray("\x01\xAB", 2)), "0x01AB");
    EXPECT_EQ(cellText(QByteArray(33, '\x0F')), "0x" + QString("0F").repeated(32) + "…");
    EXPECT_EQ(cellText(QString(301, 'x')), QString(300, 'x') + "…");
}

TEST(Grids, TakeTheChosenRowsToTheClipboard) {
    Grid grid;
    TableModel model;
    model.setTables({table(kTwo, {{1, "a"}, {2, "b\nc"}, {3, "d"}})});
    grid.setModel(&model);
    QApplication::clipboard()->setText("før");
    QTest::keyClick(&grid, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(), "før") << "nothing is chosen";
    grid.selectRow(2);
    grid.selectionModel()->select(model.index(1, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    QTest::keyClick(&grid, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(), "Id\tNavn\n2\tb c\n3\td\n");
}

TEST(Grids, ScrollThroughAMillionRowsAtOnce) {
    constexpr int kMany = 1'000'000;
    constexpr int kSteps = 200;
    constexpr int kMostMs = 10'000;  // a debug build on a busy machine; a copy of every cell takes longer by far
    auto million = std::make_shared<db::MemTable>();
    million->AddColumn("Id", db::FieldType::Integer);
    million->Open();
    for (int i = 0; i < kMany; ++i) {
        million->Append();
        million->Fields(0) = i;
        million->Post();
    }
    Grid grid;
    TableModel model;
    QElapsedTimer clock;
    clock.start();
    model.setTables({million});
    grid.setModel(&model);
    grid.fitColumns();
    grid.resize(600, 400);
    grid.show();
    for (int step = 0; step <= kSteps; ++step) {
        grid.verticalScrollBar()->setValue(grid.verticalScrollBar()->maximum() / kSteps * step);
        QApplication::processEvents();
    }
    grid.scrollToBottom();
    QApplication::processEvents();
    EXPECT_LT(clock.elapsed(), kMostMs);
    EXPECT_EQ(grid.indexAt(QPoint(5, grid.viewport()->height() - 15)).data().toString(), "999999");
}

}  // namespace
}  // namespace torvik::test
