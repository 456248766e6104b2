// Whether a mail server answers: connects, reads its greeting, and leaves without sending anything.
#pragma once

#include <QString>
#include <functional>

namespace torvik {

// The greeting's first line; raises EngineError with the reason when none comes within six seconds. Calls `pump` all
// the time.
[[nodiscard]] QString greetingOf(const QString& server, int port, const std::function<void()>& pump);

}  // namespace torvik
