// Words to the operator while there is no window yet: why the program cannot start.
#pragma once

#include <QString>
#include <functional>

namespace torvik {

using ShowMessage = std::function<void(const QString& message)>;

// Writes the message to standard error and shows it in a box. The box closes by itself after ten seconds, so that a
// program that nobody watches, started by the log-on, ends all the same; where there is no screen there is no box.
void showStartMessage(const QString& message);

}  // namespace torvik
