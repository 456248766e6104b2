// The status frame as the operator sees it: the tree of tills and their log lines, the messages of the chosen till, the
// sums, and the switch that shows errors only.
#pragma once

#include <QWidget>

class QLabel;
class QModelIndex;
class QPlainTextEdit;
class QTimer;
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
    void spanLines(const QModelIndex& till, int first);
    void expandTills();
    void fitSoon();
    void fitColumns();

    TfraOppgjorStatus& status_;
    StatusTreeModel* model_;
    QTreeView* tree_;
    QTimer* fit_;
    QPlainTextEdit* melding_;
    QLabel* sums_;
    QLabel* empty_;
};

}  // namespace torvik
