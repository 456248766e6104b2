// The pane "Sql script resultat": a page for each till that gave rows, and one with all of them. Owned by the window;
// the command that runs a script fills it.
#pragma once

#include <QWidget>
#include <functional>
#include <vector>

class QTabWidget;

namespace torvik {

namespace db {
class Query;
}
class TSqlScriptResult;

// What taking rows elsewhere needs of the window.
struct ExportTools {
    QString folder;                                             // the application's, with a separator at its end
    std::function<void(const QString&)> openFile;               // with the system's program for it
    std::function<void(const QString&)> tell;                   // a message to the operator
    std::function<QString()> askTextFile;                       // a name to save text under; empty: no
    std::function<void(const std::function<void()>&)> guarded;  // does it as a command is done
};

class ScriptResults : public QWidget {
    Q_OBJECT

public:
    explicit ScriptResults(ExportTools tools, QWidget* parent = nullptr);

    // All results and their pages go.
    void clear();
    // A page for the till of the roster's row, with the rows of the open data.
    void OnSqlScriptReturnData(db::Query& Data, db::Query& Roster);
    // The page "Oppsummering" with the rows of all tills, in front. Raises EngineError when they do not fit together;
    // the page is empty then.
    void showSummary();

    std::vector<TSqlScriptResult*> SqlScriptCollection;

private:
    [[nodiscard]] QWidget* addPage(const QString& caption);
    void giveMenu(TSqlScriptResult& summary);
    void openInExcel(const TSqlScriptResult& summary);
    void saveAsText(const TSqlScriptResult& summary);

    ExportTools tools_;
    QTabWidget* pages_;
};

}  // namespace torvik
