// A grid's rows taken elsewhere: as a spreadsheet and as text, all of them, in the model's order. The model's cells are
// read through TableModel::ValueRole.
#pragma once

#include <QString>

class QAbstractItemModel;

namespace torvik {

// What the operator has to know of a spreadsheet: how many sheets the rows took, for a sheet holds 65,536 lines with
// its captions, and whether a text was longer than a cell holds, and was cut.
struct SpreadsheetNote {
    int rows = 0;
    int sheets = 1;
    int cutTexts = 0;

    // Empty when there is nothing to tell.
    [[nodiscard]] QString text() const;
};

// Whole numbers and decimals that a spreadsheet would round, and days that it does not count, are texts. Raises
// EngineError, and leaves the file as it was, when there are more columns than a sheet holds or the file cannot be
// written.
[[nodiscard]] SpreadsheetNote writeSpreadsheet(const QAbstractItemModel& model, const QString& file);

// A line of captions and a line a row, in UTF-8: each between "|" and "|", with tabs between the cells. Ends of lines
// and tabs within a cell are blanks. Raises EngineError, and leaves the file as it was, when it cannot be written.
void writeText(const QAbstractItemModel& model, const QString& file);

}  // namespace torvik
