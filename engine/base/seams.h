// What the engine takes from its surroundings: the clock, sleeping, the message loop and the temporary folder.
// The defaults are the real ones; tests put their own in place, so that no test sleeps.
#pragma once

#include <QDateTime>
#include <QString>
#include <functional>

namespace torvik {

struct Seams {
    Seams();

    std::function<QDateTime()> now;       // local date and time
    std::function<qint64()> tickCount;    // milliseconds from any fixed start, never turned back
    std::function<void(int)> sleep;       // blocks for so many milliseconds, handling nothing
    std::function<void()> pumpMessages;   // handles the events that are pending
    std::function<void(int)> pumpFor;     // handles events as they come, for at most so many milliseconds
    std::function<QString()> tempFolder;  // where SaveOppgjorLog writes
};

// "dd.mm.yyyy hh:mm:ss", whatever the locale.
[[nodiscard]] QString LogTime(const QDateTime& time);

}  // namespace torvik
