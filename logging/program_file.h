// What the running program knows of its own file, without an application object: logging is set up before there is one.
#pragma once

#include <QString>

namespace torvik {

// Full path of the executable.
[[nodiscard]] QString programFile();

// The version of the executable; raises std::runtime_error when it has none.
[[nodiscard]] QString programVersion();

}  // namespace torvik
