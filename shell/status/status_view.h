// The status frame as the operator sees it: how far the run is, the tree of tills and their log lines, what it is
// arranged by, the messages of the highlighted till, and the sums. docs/run-status.md tells what is shown.
#pragma once

#include <QWidget>
#include <functional>

class QAction;
class QComboBox;
class QLabel;
class QModelIndex;
class QPlainTextEdit;
class QTimer;
class QTreeView;

namespace torvik {

class StateBar;
class StatusTreeModel;
class TfraOppgjorStatus;

class StatusView : public QWidget {
    Q_OBJECT

public:
    explicit StatusView(TfraOppgjorStatus& status, QWidget* parent = nullptr);

    // Where the spreadsheet goes; empty when the operator thinks better of it. A file dialog, unless replaced.
    std::function<QString()> AskExportFile;

    // The widths and the order of the columns, as the operator has set them; empty while they fit themselves.
    [[nodiscard]] QByteArray columns() const;
    // What is not of this grid, or empty, leaves it as it is.
    void restoreColumns(const QByteArray& columns);

    void copyToClipboard() const;
    // Asks for a file and writes the spreadsheet; raises EngineError when it cannot.
    void exportToSpreadsheet();

private:
    [[nodiscard]] QWidget* createOptions();
    void createTree();
    void connectStatus();
    void connectTree();
    void showMenu(const QPoint& at);
    // False for a till that has none.
    bool showStory(const QModelIndex& index);
    void toggle(const QModelIndex& index);
    void arrangeBy(const std::function<void(struct StatusArrangement&)>& change);
    void sortBy(int column);
    void showCounts();
    void showMelding();
    void followSoon();
    void follow(int statusRow);
    void spanLines(const QModelIndex& till, int first);
    void rowsCame(const QModelIndex& above, int first);
    void expandTills(const QModelIndex& above);
    void fitSoon();
    void fitColumns();
    void standardColumns();

    TfraOppgjorStatus& status_;
    StatusTreeModel* model_;
    StateBar* states_;
    QTreeView* tree_;
    QAction* story_ = nullptr;
    QTimer* fit_;
    QPlainTextEdit* melding_;
    QLabel* sums_;
    QLabel* empty_;
    bool following_ = true;  // the highlight goes with the run, until the operator chooses a row
    bool followsSoon_ = false;
    bool moving_ = false;      // the highlight, by itself
    bool fitting_ = false;     // the columns, by themselves
    bool columnsSet_ = false;  // by the operator: they fit themselves no more
};

}  // namespace torvik
