// The dialog in which the operator chooses the tills of a command: every active till of the back office, of every type.
// Questions::SelectTills opens it.
#pragma once

#include <QDialog>

#include "engine/roster/kasse_collection.h"

class QLabel;
class QPushButton;
class QTableWidget;

namespace torvik {

namespace db {
class Session;
}

class TfrmVelgInternkundeKasse : public QDialog {
    Q_OBJECT

public:
    explicit TfrmVelgInternkundeKasse(db::Session& session, QWidget* parent = nullptr);

    TSyncVersions fSyncVersions{svTorvikPosSync};  // which tills are offered
    void SetMultiSelect(bool on);

    // Clears the collection, shows the dialog, and fills it with the chosen tills. False when the answer was not OK.
    // Raises what the query raises.
    [[nodiscard]] bool Execute(TKasseCollection& KasseCollection);
    // The same, with the tills chosen beforehand that the price offer has been sent to.
    [[nodiscard]] bool Execute(TKasseCollection& KasseCollection, int pristilbudId);

private:
    void load();
    void selectTillsOf(int pristilbudId);
    [[nodiscard]] bool ask(TKasseCollection& KasseCollection);
    void showCount();
    [[nodiscard]] QList<int> selectedRows() const;

    db::Session& session_;
    QTableWidget* grid_;
    QLabel* prompt_;
    QLabel* count_;
    QPushButton* ok_;
};

}  // namespace torvik
