// Where the program's files are: beside the executable, unless "deploy.ini" there names another folder. The help file
// is always beside the executable.
#pragma once

#include <QString>

namespace torvik {

// The application folder with a separator at its end: value `folder` (default ".") of section `deploy` in
// executableFolder's "deploy.ini", where there is one, combined with that folder.
[[nodiscard]] QString applicationFolder(const QString& executableFolder);

// Of the running executable; worked out once.
[[nodiscard]] QString applicationFolder();

// "TorvikPosSync.hlp" beside "TorvikPosSync" or "TorvikPosSync.exe".
[[nodiscard]] QString helpFile(const QString& executable);

}  // namespace torvik
