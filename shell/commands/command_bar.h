// The commands as the operator meets them: an action for each row of the table, in the menus, and in the tool bar the
// cancel and the group "Manuell:". Owned by the window.
#pragma once

#include <QObject>
#include <functional>

class QAction;
class QMainWindow;
class QWidget;

namespace torvik {

class TTorvikPos;
struct CommandRow;

class CommandBar : public QObject {
    Q_OBJECT

public:
    // Makes menus and tool bar in the window; those rows that the engine has an operation for. run does a row's
    // command.
    CommandBar(QMainWindow& window, TTorvikPos& engine, std::function<void(const CommandRow&)> run);

    // Whether there is a run that "Avbryt" would end.
    void setCancelEnabled(bool enabled);
    [[nodiscard]] QAction& cancel() const { return *cancel_; }
    // Where "Avbryt" stands in the tool bar.
    [[nodiscard]] QWidget& cancelButton() const { return *cancelButton_; }

private:
    [[nodiscard]] QAction* actionOf(const CommandRow& row);
    [[nodiscard]] QAction* cancelAction(TTorvikPos& engine);

    QMainWindow& window_;
    std::function<void(const CommandRow&)> run_;
    QAction* cancel_;
    QWidget* cancelButton_ = nullptr;
};

}  // namespace torvik
