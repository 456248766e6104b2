// Handles events until something has come about.
#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

namespace torvik::test {

// False when it has not within the time.
template <typename Condition>
[[nodiscard]] bool pumpUntil(Condition condition, int milliseconds = 20000) {
    const QDeadlineTimer deadline(milliseconds);
    QTimer look;  // brings the loop round when no event does
    look.start(5);
    while (!condition()) {
        if (deadline.hasExpired()) return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

}  // namespace torvik::test
