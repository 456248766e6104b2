// The health of the chosen tills: one pass that asks each till's server for its failed jobs and the age of its backups.
// See docs/fleet.md.
#pragma once

#include <memory>

#include "fleet/health/health_status.h"

namespace torvik {

class RunParts;

// Of every till of the roster. A till that cannot be reached or asked is told of by an error line and stops nothing;
// what it had told before that stays. Raises a cancel, and what befalls the roster itself.
[[nodiscard]] std::unique_ptr<THealthSummary> CheckPosHealthStatus(RunParts& parts);

}  // namespace torvik
