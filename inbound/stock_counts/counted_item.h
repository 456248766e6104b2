// The back office's item number for one that was counted at a till: a number that the back office does not know is
// asked for, or replaced where nobody can be asked. Used by the stock counts.
#pragma once

#include <QString>

namespace torvik {

struct TillVisit;

// Raises EngineError where there is none, or the operator breaks the count off; a cancel that comes while he is asked
// raises the silent abort.
[[nodiscard]] QString ResolveCountedItem(const TillVisit& visit, const QString& number);

}  // namespace torvik
