// The statements that empty one till, as one batch: tables of data, in the order in which foreign keys let them go.
#pragma once

#include <QStringList>

#include "engine/base/torvik_pos_types.h"

namespace torvik {

// The batch's lines. Sales, settlements and logs always go; items, customers and staff where they are chosen.
[[nodiscard]] QStringList ResetBatch(const TInitializeItems& items);

}  // namespace torvik
