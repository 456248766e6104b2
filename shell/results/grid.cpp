// Rows of one height, so that the view never measures them.
#include "shell/results/grid.h"

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QKeyEvent>
#include <algorithm>

namespace torvik {

namespace {

constexpr int kRowMargin = 8;
constexpr int kRowsMeasured = 100;
constexpr int kWidest = 400;

}  // namespace

Grid::Grid(QWidget* parent) : QTableView(parent) {
    setEditTriggers(NoEditTriggers);
    setTabKeyNavigation(false);  // Tab goes on to the next control
    setSelectionBehavior(SelectRows);
    setAlternatingRowColors(true);
    setWordWrap(false);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + kRowMargin);
    horizontalHeader()->setResizeContentsPrecision(kRowsMeasured);
    horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    horizontalHeader()->setHighlightSections(false);
}

void Grid::fitColumns() {
    resizeColumnsToContents();
    for (int column = 0; column < horizontalHeader()->count(); ++column)
        if (columnWidth(column) > kWidest) setColumnWidth(column, kWidest);
}

QString Grid::chosenText() const {
    if (!selectionModel()) return {};
    QModelIndexList chosen = selectionModel()->selectedRows();
    if (chosen.isEmpty()) return {};
    std::sort(chosen.begin(), chosen.end());
    const auto lineOf = [this](const auto& cell) {
        QStringList cells;
        for (int column = 0; column < model()->columnCount(); ++column) cells << cell(column);
        return cells.join(u'\t') + u'\n';
    };
    QString text = lineOf([this](int column) { return model()->headerData(column, Qt::Horizontal).toString(); });
    for (const QModelIndex& row : chosen)
        text += lineOf([&row](int column) { return row.siblingAtColumn(column).data().toString(); });
    return text;
}

void Grid::copy() const {
    const QString text = chosenText();
    if (!text.isEmpty()) QApplication::clipboard()->setText(text);
}

// The view itself would take the current cell alone.
void Grid::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Copy)) {
        copy();
        return;
    }
    QTableView::keyPressEvent(event);
}

}  // namespace torvik
