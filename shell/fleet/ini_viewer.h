// The tills' ini files as they are fetched, side by side and each one whole; and as a spreadsheet.
#pragma once

#include <QDialog>
#include <functional>

#include "shell/fleet/ini_table.h"

class QPlainTextEdit;
class QTableView;

namespace torvik {

class TfrmTorvikPosIniViewerDlg : public QDialog {
    Q_OBJECT

public:
    // folder: the application's, with a separator at its end; the spreadsheet goes there. openFile: the system's
    // "open".
    TfrmTorvikPosIniViewerDlg(QString folder, std::function<void(const QString& file)> openFile,
                              QWidget* parent = nullptr);

    // Empties the table.
    void Init();
    // One till's file has come.
    void OnTorvikPosIni(const QString& AvdNr, const QString& Kassenr, const QStringList& Lines, const QString& Navn);

    [[nodiscard]] const IniTable& memKasse() const { return memKasse_; }

private:
    void showWhole(const QModelIndex& current);
    // Writes the grid over the spreadsheet of before and opens it; raises EngineError when it cannot be written.
    void exportToExcel() const;

    QString folder_;
    std::function<void(const QString&)> openFile_;
    IniTable memKasse_;
    QTableView* grid_;
    QPlainTextEdit* whole_;
};

}  // namespace torvik
