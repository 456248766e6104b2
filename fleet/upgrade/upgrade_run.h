// A new version of the till software to the chosen tills: into the till's database where the till is new enough, else
// as a file on its share. The till's software finds it and restarts into it. See docs/fleet.md.
#pragma once

#include <QString>

#include "fleet/copy/copy_window.h"

namespace torvik {

class RunParts;

// To every till of the roster. TorvikPOSPath: the folder on the share. A till that is served through its database is
// told of by no line. A till's failure is told and stops nothing; raises a cancel, and what befalls the roster itself.
void UpgradeTorvikPOS(RunParts& parts, const QString& ANewVersionZipFile, const QString& TorvikPOSPath,
                      bool UseSqlIfPossible, const CopyTools& tools);

}  // namespace torvik
