// The tills of the back office at a glance: which there are, of which department, where their databases are.
#pragma once

#include <QWidget>

class QTableView;
class QStandardItemModel;

namespace torvik {

namespace db {
class Session;
}

class TillList : public QWidget {
    Q_OBJECT

public:
    explicit TillList(QWidget* parent = nullptr);

    // Lists the active tills; raises what the query raises.
    void load(db::Session& session);

private:
    QStandardItemModel* model_;
    QTableView* view_ = nullptr;
};

}  // namespace torvik
