// See server_wait.h.
#include "shell/server_wait.h"

#include <QAction>
#include <QApplication>
#include <QMouseEvent>
#include <QWidget>
#include <QWindow>

namespace torvik {

ServerWait::ServerWait(QAction& cancel, QWidget& cancelButton, std::function<void()> closeAsked)
    : cancel_(cancel),
      cancelButton_(cancelButton),
      closeAsked_(std::move(closeAsked)),
      meanwhile_([this] { turn(); }) {}

ServerWait::~ServerWait() = default;

// One look at what has come. What was held back is put at the end of the queue, from where the next turn of the message
// loop takes it, in its order.
void ServerWait::turn() {
    inTurn_ = true;
    QCoreApplication::instance()->installEventFilter(this);
    QCoreApplication::processEvents();
    QCoreApplication::instance()->removeEventFilter(this);
    inTurn_ = false;
    for (auto& [receiver, event] : std::exchange(held_, {}))
        if (receiver) QCoreApplication::postEvent(receiver, event.release());
}

bool ServerWait::eventFilter(QObject* receiver, QEvent* event) {
    if (!inTurn_ || !waits(receiver, *event) || isCancel(receiver, *event)) return false;
    if (event->type() == QEvent::Close && isOfWindow(receiver)) closeAsked_();
    // A timer comes again by itself.
    if (event->type() != QEvent::Timer) held_.emplace_back(receiver, event->clone());
    event->accept();
    return true;
}

// Input is held where it reaches the window, before it is given to a widget; a worker's call to the main thread and a
// timer that may start something, where they are delivered. What widgets draw with has its timers, and Qt's own queued
// calls go through: of ours only the end of the program comes as one.
bool ServerWait::waits(QObject* receiver, const QEvent& event) const {
    switch (event.type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
        case QEvent::Wheel:
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
        case QEvent::ContextMenu:
        case QEvent::TouchBegin:
        case QEvent::TouchUpdate:
        case QEvent::TouchEnd:
        case QEvent::TouchCancel:
        case QEvent::TabletPress:
        case QEvent::TabletRelease:
        case QEvent::Drop:
        case QEvent::Close: return receiver->isWindowType();
        case QEvent::Shortcut: return true;
        case QEvent::Timer: return !receiver->isWidgetType();
        default: return event.type() >= QEvent::User;
    }
}

bool ServerWait::isCancel(QObject* receiver, const QEvent& event) const {
    if (event.type() == QEvent::Shortcut) return receiver == &cancel_;
    if (!isOfWindow(receiver)) return false;
    if (event.type() == QEvent::KeyPress || event.type() == QEvent::KeyRelease) return cancelButton_.hasFocus();
    if (const auto* mouse = dynamic_cast<const QMouseEvent*>(&event))
        return cancelButton_.isVisible() &&
               cancelButton_.rect().contains(cancelButton_.mapFromGlobal(mouse->globalPosition().toPoint()));
    return false;
}

bool ServerWait::isOfWindow(const QObject* receiver) const {
    return receiver == static_cast<QObject*>(cancelButton_.window()->windowHandle());
}

}  // namespace torvik
