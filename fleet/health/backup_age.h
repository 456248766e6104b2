// How old the backups of the till are that is being visited: what a fetch tells of them in the run status. Joined to
// the fetch where the program is put together.
#pragma once

namespace torvik {

struct TillVisit;

// Days since the last full backup of the till's first database by name; -1 for a server that has none. Raises what the
// question raises.
[[nodiscard]] int DaysSinceLastBackup(const TillVisit& visit);

}  // namespace torvik
