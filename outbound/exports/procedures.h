// The procedures that merge the item register on the till. One step (item_merge.cpp) installs and runs them all, since
// each needs the ones before it: items their groups and suppliers, aliases and parts their items.
#pragma once

#include "outbound/exports/exports.h"

namespace torvik {

extern const Procedure kInsertVaregruppe;
extern const Procedure kInsertLeverandor;
extern const Procedure kInsertVare;
extern const Procedure kInsertVareAlias;
extern const Procedure kInsertDelvare;

}  // namespace torvik
