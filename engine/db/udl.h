// The data-link file ("Torvik.UDL") that says where the back office's database is. Format: docs/sessions.md.
#pragma once

#include <QString>

namespace torvik::db {

// The lines of a UTF-16 data-link file that are neither empty, comments (";") nor sections ("["), each with its line
// ending: in a normal file the one connection string. Raises UsageError when the file is missing, corrupt or not
// UTF-16.
[[nodiscard]] QString ReadUdlFile(const QString& path);

}  // namespace torvik::db
