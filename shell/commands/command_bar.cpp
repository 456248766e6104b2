// Actions made of the rows, in the rows' order.
#include "shell/commands/command_bar.h"

#include <QAction>
#include <QLabel>
#include <QMainWindow>
#include <QMenuBar>
#include <QToolBar>

#include "engine/torvik_pos.h"
#include "shell/commands/command.h"
#include "shell/look/icons.h"

namespace torvik {

CommandBar::CommandBar(QMainWindow& window, TTorvikPos& engine, std::function<void(const CommandRow&)> run)
    : window_(window), run_(std::move(run)), cancel_(cancelAction(engine)) {
    QMenu* menus[] = {window.menuBar()->addMenu(QStringLiteral("&Fil")),
                      window.menuBar()->addMenu(QStringLiteral("TorvikPosSync")),
                      window.menuBar()->addMenu(QStringLiteral("&Hjelp"))};
    QToolBar* bar = window.addToolBar(QStringLiteral("Kommandoer"));
    bar->setObjectName(QStringLiteral("commands"));
    bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    bar->setMovable(false);
    bar->addAction(cancel_);
    cancelButton_ = bar->widgetForAction(cancel_);
    bar->addSeparator();
    auto* group = new QLabel(QStringLiteral(" Manuell: "));
    bar->addWidget(group);
    for (const CommandRow& row : commandRows()) {
        if (row.offered && !row.offered(engine)) continue;
        QAction* action = actionOf(row);
        if (row.menu != CommandMenu::None) {
            QMenu* menu = menus[static_cast<int>(row.menu)];
            if (row.separatedBefore) menu->addSeparator();
            menu->addAction(action);
        }
        if (row.button) bar->addAction(action);
    }
}

QAction* CommandBar::actionOf(const CommandRow& row) {
    auto* action = new QAction(QString::fromUtf8(row.caption), &window_);
    action->setObjectName(QString::fromUtf8(row.name));
    action->setShortcut(QKeySequence(QString::fromUtf8(row.shortcut)));
    action->setCheckable(row.checkable);
    if (row.icon) action->setIcon(row.icon());
    connect(action, &QAction::triggered, this, [this, &row] { run_(row); });
    return action;
}

QAction* CommandBar::cancelAction(TTorvikPos& engine) {
    auto* action = new QAction(cancelIcon(), QStringLiteral("Avbryt"), &window_);
    action->setObjectName(QStringLiteral("actiCancel"));
    action->setShortcut(QKeySequence(QStringLiteral("Shift+Esc")));
    connect(action, &QAction::triggered, this, [&engine] { engine.SetCancelRequest(true); });
    action->setEnabled(false);
    return action;
}

// A disabled command says why.
void CommandBar::setCancelEnabled(bool enabled) {
    cancel_->setEnabled(enabled);
    cancel_->setToolTip(enabled ? QStringLiteral("Avbryt kjøringen (Skift+Esc)")
                                : QStringLiteral("Ingen kjøring er i gang"));
}

}  // namespace torvik
