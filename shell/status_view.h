// The status frame as the operator sees it: the tree of tills and their log lines, the messages of the chosen till, the
// sums, and the switch that shows errors only.
#pragma once

#include <QWidget>

class QLabel;
class QPlainTextEdit;
class QTreeView;

namespace torvik {

class StatusTreeModel;
class TfraOppgjorStatus;

class StatusView : public QWidget {
    Q_OBJECT

public:
    explicit StatusView(TfraOppgjorStatus& status, QWidget* parent = nullptr);

private:
    void showSums();
    void showMelding();
    void showTree();

    TfraOppgjorStatus& status_;
    StatusTreeModel* model_;
    QTreeView* tree_;
    QPlainTextEdit* melding_;
    QLabel* sums_;
    QLabel* empty_;
};

}  // namespace torvik
