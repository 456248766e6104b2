// A spreadsheet file that is written row by row: each sheet begins with its captions in bold, which stay in sight. The
// status and the grids are exported with it.
#pragma once

#include <xlsxwriter.h>

#include <QString>
#include <QStringList>

namespace torvik {

class Workbook {
public:
    // Overwrites the file, when it is closed.
    explicit Workbook(QString file);
    ~Workbook();
    Workbook(const Workbook&) = delete;
    Workbook& operator=(const Workbook&) = delete;

    void sheet(const char* name, const QStringList& captions);
    void nextRow() { ++row_; }
    // A text longer than a cell holds is cut, with "..." at its end.
    void text(int column, const QString& value);
    void number(int column, double value);
    void boolean(int column, bool value);
    // Writes the file; raises EngineError with its name when it cannot be written.
    void close();

private:
    QString file_;
    lxw_workbook* book_;
    lxw_format* bold_;
    lxw_worksheet* sheet_ = nullptr;
    lxw_row_t row_ = 0;
};

}  // namespace torvik
