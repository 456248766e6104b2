// The program's icons, drawn rather than loaded, so that they are sharp at any size.
#pragma once

#include <QIcon>

namespace torvik {

[[nodiscard]] QIcon applicationIcon();
// Of the commands.
[[nodiscard]] QIcon fetchIcon();
[[nodiscard]] QIcon sendIcon();
[[nodiscard]] QIcon cancelIcon();

// Of the till that a run is at.
[[nodiscard]] QIcon runningIcon();
// For a TKasseLogSeverity value or a till's StatusIcon: a grey ring (0), a green tick (1), a yellow triangle (2), a red
// cross (3).
[[nodiscard]] QIcon statusIcon(int status);

}  // namespace torvik
