// The dialog "Kontroller oppsett": a row for each check, with a tick, a triangle or a cross, as they are found.
#pragma once

#include <QDialog>

#include "shell/setup/setup_check.h"

class QLabel;
class QPushButton;
class QTreeWidget;

namespace torvik {

class SetupReport : public QDialog {
    Q_OBJECT

public:
    explicit SetupReport(QWidget* parent = nullptr);

    void add(const CheckResult& result);
    // Says how many found something, and lets the dialog be closed by its button.
    void finish();

Q_SIGNALS:
    void abandoned();  // closed before it was finished

public:
    void reject() override;

private:
    QTreeWidget* rows_;
    QLabel* summary_;
    QPushButton* close_;
    int bad_ = 0;
    bool finished_ = false;
};

}  // namespace torvik
