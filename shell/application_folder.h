// Where the program's files are: beside the executable, unless "deploy.ini" there names another folder.
#pragma once

#include <QString>

namespace torvik {

// The application folder with a separator at its end, worked out once for each folder given: value `folder` (default
// ".") of section `deploy` in executableFolder's "deploy.ini", where there is one, combined with that folder.
[[nodiscard]] QString applicationFolder(const QString& executableFolder);

// Of the running executable.
[[nodiscard]] QString applicationFolder();

}  // namespace torvik
