// The window while a server lets it wait: it is painted, and "Avbryt" is taken; everything else waits its turn, so that
// nothing comes in between two statements of a run that did not come in there before. Owned by the window.
#pragma once

#include <QObject>
#include <QPointer>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "engine/db/meanwhile.h"

class QAction;
class QEvent;
class QWidget;

namespace torvik {

class ServerWait : public QObject {
    Q_OBJECT

public:
    // For the main thread, as long as it lives. cancel is the action, and cancelButton its button, that are taken
    // during a wait. Both must outlive this. closeAsked: the operator closes the button's window during a wait; the
    // close itself comes when the wait is over.
    ServerWait(QAction& cancel, QWidget& cancelButton, std::function<void()> closeAsked);
    ~ServerWait() override;

    bool eventFilter(QObject* receiver, QEvent* event) override;

private:
    void turn();
    [[nodiscard]] bool waits(QObject* receiver, const QEvent& event) const;
    [[nodiscard]] bool isCancel(QObject* receiver, const QEvent& event) const;
    [[nodiscard]] bool isOfWindow(const QObject* receiver) const;

    QAction& cancel_;
    QWidget& cancelButton_;
    std::function<void()> closeAsked_;
    std::vector<std::pair<QPointer<QObject>, std::unique_ptr<QEvent>>> held_;
    bool inTurn_ = false;
    db::Meanwhile meanwhile_;  // the last to come and the first to go
};

}  // namespace torvik
