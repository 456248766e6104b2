// How a run ends before its time, and the engine's own error. A run's catch-all handlers see an EAbort like any other
// exception; the top-level handler of the program shows nothing for it.
#pragma once

#include <QString>
#include <exception>
#include <stdexcept>

namespace torvik {

// A failure the engine itself finds; what() is the Norwegian text in UTF-8.
class EngineError : public std::runtime_error {
public:
    explicit EngineError(const QString& message) : std::runtime_error(message.toStdString()) {}
};

// The silent abort, raised by a cancel.
class EAbort : public std::exception {
public:
    [[nodiscard]] const char* what() const noexcept override { return "Operasjonen ble avbrutt"; }
};

// Declared for the handlers that name it; nothing raises it, a cancel is an EAbort.
class TCancelException : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The text of any exception as the logs show it.
[[nodiscard]] inline QString ErrorText(const std::exception& error) {
    return QString::fromUtf8(error.what());
}

}  // namespace torvik
