// Reads values of an ini file in UTF-8, with backslashes and commas as they stand (which QSettings would spoil).
#pragma once

#include <QString>

namespace torvik {

// The value, or `fallback` where the file, the section or the key is missing.
[[nodiscard]] QString iniValue(const QString& file, const char* section, const char* key, const QString& fallback);

}  // namespace torvik
