// A workbook of the ".xls" kind (BIFF8), which every spreadsheet program opens without a question, made in memory sheet
// by sheet and cell by cell and written at the end. See [MS-XLS].
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QHash>
#include <QString>
#include <vector>

namespace torvik {

class XlsWorkbook {
public:
    static constexpr int kRows = 65536;  // that a sheet holds
    static constexpr int kColumns = 256;
    static constexpr int kLetters = 32767;  // that a cell holds

    // Begins a sheet; cells go to the sheet begun last. Its name: 31 letters at most, unique.
    void beginSheet(const QString& name);
    // Cells come row by row, from the left. A text longer than a cell holds is cut.
    void text(int row, int column, const QString& value, bool bold = false);
    void number(int row, int column, double value);
    void boolean(int row, int column, bool value);
    // From 01.03.1900 on; days before that have no number of their own in such a sheet.
    void dateTime(int row, int column, const QDate& date, const QTime& time);
    // Raises EngineError with the file's name when it cannot be written.
    void write(const QString& file) const;

private:
    struct Sheet {
        QString name;
        QByteArray cells;
        int rows = 0;
        int columns = 0;
    };
    void cell(int record, int row, int column, int format, const QByteArray& content);
    [[nodiscard]] quint32 sharedText(const QString& value);

    std::vector<Sheet> sheets_;
    QHash<QString, quint32> placeOf_;  // of a text among the shared ones
    std::vector<QString> texts_;
    quint32 textCells_ = 0;
};

}  // namespace torvik
