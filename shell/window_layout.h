// How the operator has arranged the program's windows: the size and place of each, splitters, columns, the tab in
// front. Kept without a command, in a store of its own; the main window restores it as it is made and keeps it as it
// closes, a dialog whenever it is shown and hidden.
#pragma once

#include <QObject>

class QDialog;
class QWidget;

namespace torvik {

class SettingsStore;
class StatusView;

class WindowLayout : public QObject {
    Q_OBJECT

public:
    // Dialogs of the window are followed from now on. All must outlive it.
    WindowLayout(SettingsStore& store, QWidget& window, StatusView& status);

    // False when the window has never been kept; its size is then for the caller to choose.
    [[nodiscard]] bool restore();
    void keep();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void dialogShown(QDialog& dialog);
    void dialogHidden(const QDialog& dialog);

    SettingsStore& store_;
    QWidget& window_;
    StatusView& status_;
};

}  // namespace torvik
