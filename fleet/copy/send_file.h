// One file to the shares of the chosen tills, and the speed of each till's line. See docs/fleet.md.
#pragma once

#include <QString>

#include "fleet/copy/copy_window.h"

namespace torvik {

class RunParts;

struct FileToSend {
    QString AFileToCopy;
    QString AResource;      // the share, such as "C$"
    QString TorvikPOSPath;  // the folder in it
    bool DeleteAfterCopy = false;
};

// To every till of the roster. A till's failure is told and stops nothing; one that cannot be reached is passed over
// without a word. Raises a cancel, and what befalls the roster itself.
void SendFile(RunParts& parts, const FileToSend& file, const CopyTools& tools);

// Megabits a second, of whole seconds; -1 where either is 0. size is of 32 bits, so that files from 2 GiB up have a
// speed that says nothing.
[[nodiscard]] double uploadMbps(qint64 milliseconds, qint32 size);

}  // namespace torvik
